// Number conversions with the rules of automation: nearest, halves to even, error 6 outside the range.
#pragma once

#include <cstdint>

namespace lumora
{

/// The nearest 32-bit whole number, halves to even. Error 6 (overflow) outside its range and for NaN.
std::int32_t ToLong(double value);

/// The nearest 32-bit pattern: as ToLong for negative numbers, and up to 4294967295 for others.
std::uint32_t ToBits(double value);

/// The nearest 16-bit whole number, halves to even. Error 6 (overflow) outside its range and for NaN.
std::int16_t ToInteger(double value);

/// The nearest Single. Error 6 (overflow) when the magnitude is beyond its range, infinite or NaN.
float ToSingle(double value);

/// dividend / divisor. Error 11 for a zero divisor; error 6 when 0 / 0 or a result beyond Double.
double Divide(double dividend, double divisor);

} // namespace lumora
