// The value type of everything that is reached by name: property bags and late-bound members.
#pragma once

#include "base/NumberBuffer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

namespace lumora
{

/// Base of every object that a Variant can hold.
class Object
{
public:
    virtual ~Object() = default;
};

using ObjectReference = std::shared_ptr<Object>;

/// Empty, Boolean, Integer (16-bit), Long (32-bit), Single, Double, String (UTF-8), an object reference (possibly
/// nothing), or many numbers.
using Variant = std::variant<std::monostate, bool, std::int16_t, std::int32_t, float, double, std::string,
                             ObjectReference, NumberBuffer>;

/// Conversions with the rules of automation: numbers round to nearest with halves to even; non-zero is True;
/// True is -1; a string converts when the whole of it is a number. Error 13 when the value has no such meaning,
/// error 6 when it is out of range.
std::int16_t VariantToInteger(const Variant& value);
std::int32_t VariantToLong(const Variant& value);
float VariantToSingle(const Variant& value);
double VariantToDouble(const Variant& value);
bool VariantToBoolean(const Variant& value);
std::string VariantToString(const Variant& value);
ObjectReference VariantToObject(const Variant& value);

/// Equal values; numbers compare numerically whatever their types. Buffers are equal when they are the same memory.
bool VariantsEqual(const Variant& left, const Variant& right);

} // namespace lumora
