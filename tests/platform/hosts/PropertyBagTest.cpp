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

} // namespace lumora::headless
