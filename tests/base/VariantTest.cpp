// Values that are reached by name, and what they turn into.
#include "base/Variant.h"

#include "hosts/headless/Errors.h"

#include <gtest/gtest.h>

namespace lumora
{

namespace
{

const Variant SomeObject = std::make_shared<Object>();
const Variant Empty;

} // namespace

TEST(Variant, turns_into_whole_numbers_like_automation_does_or_says_why_not)
{
    struct Row
    {
        Variant value;
        std::int32_t whole;
        std::int32_t number = 0; // of the error: a value without meaning is told from one out of range
    };
    for (const auto& [value, whole, number] : {
             Row{Empty, 0},
             Row{true, -1},
             Row{2.5F, 2},
             Row{3.5, 4},
             Row{std::string{"-12.5"}, -12},
             Row{std::string{"1e3"}, 1000},
             Row{3e9, 0, error::Overflow},
             Row{std::string{"2147483648"}, 0, error::Overflow},
             Row{std::string{"1e999"}, 0, error::Overflow},
             Row{std::string{"12 apples"}, 0, error::TypeMismatch},
             Row{std::string{}, 0, error::TypeMismatch},
             Row{std::string{"nan"}, 0, error::TypeMismatch},
             Row{std::string{"inf"}, 0, error::TypeMismatch},
             Row{SomeObject, 0, error::TypeMismatch},
             Row{ObjectReference{}, 0, error::TypeMismatch},
         })
    {
        std::int32_t converted = 0;
        EXPECT_EQ(ErrorOf([&, &tried = value] { converted = VariantToLong(tried); }), number) << value.index();
        EXPECT_EQ(converted, whole) << value.index();
    }
}

TEST(Variant, is_true_when_it_is_a_number_other_than_zero)
{
    for (const Variant& value :
         {Variant{7}, Variant{-1}, Variant{0.001}, Variant{std::string{"True"}}, Variant{std::string{"2"}}})
        EXPECT_TRUE(VariantToBoolean(value)) << value.index();
    for (const Variant& value :
         {Empty, Variant{0}, Variant{0.0F}, Variant{std::string{"False"}}, Variant{std::string{"0"}}})
        EXPECT_FALSE(VariantToBoolean(value)) << value.index();
    EXPECT_EQ(ErrorOf([] { VariantToBoolean(std::string{"yes"}); }), error::TypeMismatch);
}

TEST(Variant, texts_read_back_as_the_number_they_came_from)
{
    EXPECT_EQ(VariantToString(1.571F), "1.571");
    EXPECT_EQ(VariantToString(true), "True");
    EXPECT_EQ(VariantToString(Empty), "");
    for (const double number : {0.1, 1.0 / 3, -1e-300, 123456789.0})
        EXPECT_EQ(VariantToDouble(VariantToString(number)), number);
    EXPECT_EQ(ErrorOf([] { VariantToString(SomeObject); }), error::TypeMismatch);
}

} // namespace lumora
