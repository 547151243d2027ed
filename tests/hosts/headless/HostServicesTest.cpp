// What the host offers besides its window: cursor, clock, members, notes, and failures on request.
#include "base/Faults.h"
#include "hosts/headless/Errors.h"
#include "hosts/headless/HeadlessHost.h"
#include "platform/container/MemoryPropertyBag.h"

#include <gtest/gtest.h>

namespace lumora::headless
{

TEST(VirtualScreen, blanks_sixty_times_a_second_and_the_clock_wraps)
{
    VirtualScreen screen;
    const std::uint32_t start = screen.Milliseconds();
    for (int i = 0; i < 60; ++i)
    {
        const std::uint32_t before = screen.Milliseconds();
        screen.WaitForVerticalBlank();
        const std::uint32_t passed = screen.Milliseconds() - before;
        EXPECT_TRUE(passed == 16 || passed == 17) << passed;
    }
    EXPECT_EQ(screen.Milliseconds() - start, 1000U);
    EXPECT_EQ(screen.VerticalBlankCount(), 60);
    screen.AdvanceClock(5); // in the middle of a frame: only the rest of it passes
    screen.WaitForVerticalBlank();
    EXPECT_EQ(screen.Milliseconds() - start, 1017U);
    screen.AdvanceClock(0xFFFFFFFF);
    EXPECT_EQ(screen.Milliseconds() - start, 1016U);
}

TEST(HeadlessHost, finds_late_bound_members_whatever_their_case)
{
    HeadlessHost host;
    EXPECT_EQ(ErrorOf([&] { host.LateBoundMember("blnRealUserMode"); }), error::MemberNotFound);
    host.SetLateBoundMember("blnRealUserMode", false);
    EXPECT_FALSE(VariantToBoolean(host.LateBoundMember("BLNREALUSERMODE")));
    host.RemoveLateBoundMember("BlnRealUserMode");
    EXPECT_EQ(ErrorOf([&] { host.LateBoundMember("blnRealUserMode"); }), error::MemberNotFound);
}

TEST(HeadlessHost, converts_positions_from_its_own_unit)
{
    HeadlessHost host;
    EXPECT_EQ(host.PositionToPixelsX(300), 300);
    host.SetPositionUnit(PositionUnit::Twips);
    host.Display().SetTwipsPerPixel(15, 12);
    EXPECT_EQ(host.PositionToPixelsX(300), 20);
    EXPECT_EQ(host.PositionToPixelsY(300), 25);
}

TEST(HeadlessHost, shows_what_of_the_control_lies_on_the_screen)
{
    HeadlessHost host;
    host.MoveWindow(-10, 1000);
    host.ControlArea().SetBackColor(0xFF);
    const PixelView picture = host.ControlPicture();
    EXPECT_EQ(picture.width, 630);
    EXPECT_EQ(picture.height, 80);
    EXPECT_EQ(picture.Row(79)[629] & 0xFFFFFF, 0xFF0000U);
    host.MoveWindow(1920, 0);
    EXPECT_EQ(ErrorOf([&] { host.ControlPicture(); }), error::InvalidCall);
}

TEST(HeadlessHost, takes_its_faults_along)
{
    {
        HeadlessHost host;
        host.FailNext("Screen.Width", 1, 7);
    }
    EXPECT_EQ(ErrorOf([] { faults::Point("Screen.Width"); }), 0);
}

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
    std::string names;
    for (const auto& [name, value] : bag.Entries())
        names += name + " ";
    EXPECT_EQ(names, "Speed Icon Text ");
    EXPECT_EQ(VariantToObject(bag.ReadProperty("Icon", {})), picture);
}

} // namespace lumora::headless
