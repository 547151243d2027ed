#include "base/Numbers.h"

#include "base/RuntimeError.h"

#include <cmath>
#include <limits>

namespace lumora
{

namespace
{

[[noreturn]] void RaiseOverflow()
{
    throw RuntimeError{error::Overflow, "automation", "Overflow"};
}

// std::nearbyint follows the thread's rounding mode, which a host may have changed; this does not.
double NearestHalvesToEven(double value)
{
    const double below = std::floor(value);
    const double fraction = value - below;
    if (fraction < 0.5)
        return below;
    if (fraction > 0.5)
        return below + 1.0;
    return std::fmod(below, 2.0) == 0.0 ? below : below + 1.0;
}

template<typename Whole>
Whole ToWhole(double value)
{
    const double nearest = NearestHalvesToEven(value);
    // Written so that NaN fails the test.
    if (!(nearest >= std::numeric_limits<Whole>::min() && nearest <= std::numeric_limits<Whole>::max()))
        RaiseOverflow();
    return static_cast<Whole>(nearest);
}

} // namespace

std::int32_t ToLong(double value)
{
    return ToWhole<std::int32_t>(value);
}

std::uint32_t ToBits(double value)
{
    return value > 0 ? ToWhole<std::uint32_t>(value) : static_cast<std::uint32_t>(ToLong(value));
}

std::int16_t ToInteger(double value)
{
    return ToWhole<std::int16_t>(value);
}

float ToSingle(double value)
{
    const auto single = static_cast<float>(value);
    if (!std::isfinite(single))
        RaiseOverflow();
    return single;
}

double Divide(double dividend, double divisor)
{
    if (divisor == 0.0)
    {
        if (dividend == 0.0)
            RaiseOverflow();
        throw RuntimeError{error::DivisionByZero, "automation", "Division by zero"};
    }
    const double quotient = dividend / divisor;
    if (!std::isfinite(quotient))
        RaiseOverflow();
    return quotient;
}

} // namespace lumora
