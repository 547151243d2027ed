// Conversions between kinds of numbers.
#include "base/Numbers.h"

#include "hosts/headless/Errors.h"

#include <cfenv>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace lumora
{

namespace
{

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(Numbers, agree_with_the_nearest_even_of_the_machine_at_every_quarter)
{
    for (int quarter = -4000; quarter <= 4000; ++quarter)
        EXPECT_EQ(ToLong(quarter / 4.0), std::lrint(quarter / 4.0)) << quarter / 4.0;
    EXPECT_EQ(ToLong(0.49999999999999994), 0) << "the largest value below a half, which adding a half would round up";
    EXPECT_EQ(ToLong(-2.5000000000000004), -3);
}

TEST(Numbers, do_not_follow_the_rounding_mode_of_the_thread)
{
    std::fesetround(FE_UPWARD);
    const std::int32_t rounded = ToLong(2.25);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(rounded, 2);
}

TEST(Numbers, overflow_just_outside_the_range_of_the_type)
{
    EXPECT_EQ(ToLong(2147483647.4999998), 2147483647);
    EXPECT_EQ(ToLong(-2147483648.5), -2147483647 - 1);
    EXPECT_EQ(ToInteger(32767.499999999996), 32767);
    EXPECT_EQ(ToInteger(-32768.5), -32768);
    for (const double value : {2147483647.5, -2147483648.5000005, 1e300, -1e300, Infinity, -Infinity, NotANumber})
        EXPECT_EQ(ErrorOf([=] { ToLong(value); }), error::Overflow);
    for (const double value : {32767.5, -32768.500000000007, 65536.0, Infinity, NotANumber})
        EXPECT_EQ(ErrorOf([=] { ToInteger(value); }), error::Overflow);
}

TEST(Numbers, fit_into_a_single_up_to_its_largest_value)
{
    EXPECT_EQ(ToSingle(0.1), 0.1F);
    EXPECT_EQ(ToSingle(std::numeric_limits<float>::max()), std::numeric_limits<float>::max());
    EXPECT_EQ(ToSingle(1e-300), 0.0F);
    for (const double value : {3.5e38, -3.5e38, Infinity, NotANumber})
        EXPECT_EQ(ErrorOf([=] { ToSingle(value); }), error::Overflow);
}

TEST(Numbers, division_tells_a_zero_divisor_from_an_overflow)
{
    EXPECT_EQ(Divide(7, -2), -3.5);
    EXPECT_EQ(ErrorOf([] { Divide(1, 0); }), error::DivisionByZero);
    EXPECT_EQ(ErrorOf([] { Divide(-1, -0.0); }), error::DivisionByZero);
    EXPECT_EQ(ErrorOf([] { Divide(0, 0); }), error::Overflow);
    EXPECT_EQ(ErrorOf([] { Divide(1e300, 1e-300); }), error::Overflow);
}

} // namespace lumora
