// What a container keeps for its control.
#include "platform/headless/MemoryPropertyBag.h"

#include <gtest/gtest.h>

namespace lumora::headless
{

namespace
{

std::string NamesIn(const MemoryPropertyBag& bag)
{
    std::string names;
    for (const auto& [name, value] : bag.Entries())
        names += name + " ";
    return names;
}

} // namespace

TEST(PropertyBag, keeps_only_what_differs_from_its_default)
{
    const auto picture = std::make_shared<Object>();
    MemoryPropertyBag bag;
    bag.WriteProperty("Back", 1000.0F, 1000);
    bag.WriteProperty("Flag", true, -1);
    bag.WriteProperty("Path", std::string{}, std::string{});
    bag.WriteProperty("Icon", ObjectReference{}, ObjectReference{});
    EXPECT_TRUE(bag.Entries().empty());
    bag.WriteProperty("Speed", 1.571F, 1.571); // the nearest Single is not the Double
    bag.WriteProperty("Icon", picture, ObjectReference{});
    bag.WriteProperty("Text", std::string{"1"}, 1);
    EXPECT_EQ(NamesIn(bag), "Speed Icon Text ");
    EXPECT_EQ(VariantToObject(bag.ReadProperty("Icon", {})), picture);
}

TEST(PropertyBag, answers_the_default_for_what_it_lacks_and_keeps_types)
{
    MemoryPropertyBag bag;
    bag.WriteProperty("Long", 7, 0);
    bag.WriteProperty("Single", 7.0F, 0);
    EXPECT_EQ(bag.ReadProperty("Missing", 3.5), Variant{3.5});
    EXPECT_EQ(bag.ReadProperty("Long", 0), Variant{7});
    EXPECT_EQ(bag.ReadProperty("Single", 0), Variant{7.0F});
}

TEST(PropertyBag, overwrites_in_place_and_forgets_what_became_the_default)
{
    MemoryPropertyBag bag;
    bag.WriteProperty("A", 1, 0);
    bag.WriteProperty("B", 2, 0);
    bag.WriteProperty("C", 3, 0);
    bag.WriteProperty("A", 4, 0);
    EXPECT_EQ(NamesIn(bag), "A B C ");
    bag.WriteProperty("B", 0, 0);
    EXPECT_EQ(NamesIn(bag), "A C ");
    EXPECT_EQ(bag.ReadProperty("A", 0), Variant{4});
}

} // namespace lumora::headless
