// How drivers are found by position and by identifier.
#include "platform/drivers/DriverList.h"
#include "platform/drivers/StandardDrivers.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/hosts/Errors.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <set>

namespace lumora::test
{

namespace
{

TEST(DriverList, creates_the_first_driver_with_the_identifier)
{
    int created = 0;
    const auto counting = [&](int number)
    {
        return [&created, number]
        {
            created = number;
            return MakeReferenceDriver();
        };
    };
    const DriverList list{{{"one", {1, 0, 0, {}}, "", "", counting(1)},
                           {"two", {2, 0, 0, {0, 7}}, "", "", counting(2)},
                           {"again", {2, 0, 0, {0, 7}}, "", "", counting(3)}}};
    EXPECT_NE(list.Create({2, 0, 0, {0, 7}}), nullptr);
    EXPECT_EQ(created, 2);
    EXPECT_EQ(list.At(2).identifierName, "again");
}

TEST(DriverList, refuses_positions_and_identifiers_that_it_does_not_have)
{
    const DriverList empty;
    const DriverList one{{{"one", {1, 0, 0, {}}, "", "", [] { return MakeReferenceDriver(); }}}};
    EXPECT_EQ(ErrorOf([&] { empty.At(0); }), error::SubscriptOutOfRange);
    EXPECT_EQ(ErrorOf([&] { one.At(-1); }), error::SubscriptOutOfRange);
    EXPECT_EQ(ErrorOf([&] { one.At(1); }), error::SubscriptOutOfRange);
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(one.Create({})); }), error::DDInvalidParams);
}

std::string Written(const Guid& guid)
{
    char text[40];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", guid.data1, guid.data2,
                  guid.data3, guid.data4[0], guid.data4[1], guid.data4[2], guid.data4[3], guid.data4[4], guid.data4[5],
                  guid.data4[6], guid.data4[7]);
    return text;
}

TEST(StandardDrivers, carry_the_published_identifiers)
{
    const std::shared_ptr<const DriverList> list = StandardDrivers();
    const std::vector<std::pair<std::string, std::string>> expected{
        {"IID_IDirect3DHALDevice", "84E63DE0-46AA-11CF-816F-0000C020156E"},
        {"IID_IDirect3DRGBDevice", "A4665C60-2673-11CF-A31A-00AA00B93356"},
        {"IID_IDirect3DRefDevice", "50936643-13E9-11D1-89AA-00A0C9054129"},
        {"IID_IDirect3DRampDevice", "F2086B20-259F-11CF-A31A-00AA00B93356"}};
    std::vector<std::pair<std::string, std::string>> found;
    std::set<std::string> texts;
    for (int i = 0; i < list->Count(); ++i)
    {
        found.emplace_back(list->At(i).identifierName, Written(list->At(i).guid));
        texts.insert({list->At(i).name, list->At(i).description});
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(texts.size(), 8U) << "a person can tell them apart";
}

TEST(StandardDrivers, creates_every_software_driver)
{
    const std::shared_ptr<const DriverList> list = StandardDrivers();
    for (int i = 1; i < list->Count(); ++i) // the first one is the hardware
        EXPECT_NE(list->Create(list->At(i).guid), nullptr) << list->At(i).name;
}

TEST(StandardDrivers, says_that_there_is_no_hardware_where_there_is_none)
{
    const std::int32_t number =
        ErrorOf([] { static_cast<void>(StandardDrivers()->Create(StandardDrivers()->At(0).guid)); });
    EXPECT_TRUE(number == 0 || number == error::DDNo3D) << number;
}

} // namespace

} // namespace lumora::test
