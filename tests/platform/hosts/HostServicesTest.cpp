// What the host offers besides its window: cursor, clock, members, notes, and failures on request.
#include "platform/automation/Faults.h"
#include "platform/headless/HeadlessHost.h"
#include "platform/headless/MemoryPropertyBag.h"
#include "platform/hosts/Errors.h"

#include <functional>
#include <gtest/gtest.h>

namespace lumora::headless
{

TEST(VirtualScreen, hides_the_cursor_while_its_counter_is_negative)
{
    VirtualScreen screen;
    EXPECT_EQ(screen.ShowCursor(false), -1);
    EXPECT_EQ(screen.ShowCursor(false), -2);
    EXPECT_EQ(screen.ShowCursor(true), -1);
    EXPECT_FALSE(screen.IsCursorVisible());
    EXPECT_EQ(screen.ShowCursor(true), 0);
    EXPECT_TRUE(screen.IsCursorVisible());
}

TEST(VirtualScreen, keeps_the_cursor_on_the_screen)
{
    VirtualScreen screen{640, 480};
    EXPECT_EQ(screen.GetCursorPos(), (ScreenPoint{320, 240}));
    screen.SetCursorPos(-5, 5000);
    EXPECT_EQ(screen.GetCursorPos(), (ScreenPoint{0, 479}));
}

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

TEST(HeadlessHost, takes_its_faults_along)
{
    {
        HeadlessHost host;
        host.FailNext("Screen.Width", 1, 7);
    }
    EXPECT_EQ(ErrorOf([] { faults::Point("Screen.Width"); }), 0);
}

TEST(HeadlessHost, of_two_on_one_screen_the_later_lies_above)
{
    const auto screen = std::make_shared<VirtualScreen>(300, 200);
    HeadlessHost lower{nullptr, screen, {10, 10, 110, 110}};
    HeadlessHost upper{nullptr, screen, {60, 60, 160, 160}};
    upper.ControlArea().SetBackColor(0xFF0000);
    EXPECT_EQ(screen->PixelAt(80, 80), 0x0000FFU);
    lower.ControlArea().SetBackColor(0x0000FF);
    EXPECT_EQ(screen->PixelAt(80, 80), 0x0000FFU);
    EXPECT_EQ(screen->PixelAt(20, 20), 0xFF0000U);
}

} // namespace lumora::headless
