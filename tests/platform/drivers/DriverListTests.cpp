// How drivers are found by position and by identifier.
#include "hosts/headless/Errors.h"
#include "platform/drivers/DriverList.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/drivers/standard/StandardDrivers.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <set>

namespace lumora::test
{

namespace
{

TEST(DriverList, creates_the_first_driver_with_the_identifier_and_refuses_others)
{
    int created = 0;
    const auto counting = [&](int number)
    { return [&created, number] { return created = number, MakeReferenceDriver(); }; };
    const DriverList list{{{"one", {1, 0, 0, {}}, "", "", counting(1)},
                           {"two", {2, 0, 0, {0, 7}}, "", "", counting(2)},
                           {"again", {2, 0, 0, {0, 7}}, "", "", counting(3)}}};
    EXPECT_NE(list.Create({2, 0, 0, {0, 7}}), nullptr);
    EXPECT_EQ(created, 2);
    EXPECT_EQ(list.At(2).identifierName, "again");
    for (const int position : {-1, 3})
        EXPECT_EQ(ErrorOf([&] { list.At(position); }), error::SubscriptOutOfRange);
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(list.Create({})); }), error::DDInvalidParams);
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

TEST(StandardDrivers, creates_each_or_says_that_there_is_no_hardware)
{
    const std::shared_ptr<const DriverList> list = StandardDrivers();
    for (int i = 0; i < list->Count(); ++i) // the first one is the hardware
    {
        const auto number = ErrorOf([&] { EXPECT_NE(list->Create(list->At(i).guid), nullptr); });
        EXPECT_TRUE(number == 0 || (i == 0 && number == error::DDNo3D)) << list->At(i).name << ": " << number;
    }
}

} // namespace

} // namespace lumora::test
