// Which pixels of the screen belong to whom.
#include "hosts/headless/VirtualWindow.h"

#include "hosts/headless/Errors.h"
#include "platform/pictures/Bitmap.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <random>

namespace lumora::headless
{

namespace
{

constexpr std::uint32_t Red = 0xFF0000;
constexpr std::int32_t GreenBackColor = 0x40FF10; // red is the low byte of a control's colors
constexpr std::uint32_t Green = 0x10FF40;

bool Holds(const PixelRect& rect, int x, int y)
{
    return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;
}

/// Shows one colour in the whole client area and well beyond it.
void PaintPlain(VirtualWindow& window, std::uint32_t color)
{
    PixelRect around = window.ScreenRect();
    around = {around.left - 20, around.top - 20, around.right + 20, around.bottom + 20};
    std::vector<std::uint32_t> pixels(9, color);
    window.Present({pixels.data(), 3, 3, 3}, around);
}

int CountPixels(const VirtualScreen& screen, std::uint32_t color)
{
    int count = 0;
    for (int y = 0; y < screen.Height(); ++y)
        for (int x = 0; x < screen.Width(); ++x)
            count += screen.PixelAt(x, y) == color;
    return count;
}

} // namespace

TEST(VirtualWindow, presents_only_where_nothing_covers_it_and_the_screen_reaches)
{
    const auto screen = std::make_shared<VirtualScreen>(120, 90);
    std::mt19937 random{3}; // NOLINT: the same machine every time
    const auto upTo = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const auto anywhere = [&]
    {
        const int left = upTo(160) - 40;
        const int top = upTo(120) - 40;
        return PixelRect{left, top, left + upTo(70), top + upTo(60)};
    };
    std::vector<std::shared_ptr<VirtualWindow>> windows;
    for (int round = 0; round < 200; ++round)
    {
        // Somebody rearranges the windows, then every one of them paints, in any order.
        const int action = upTo(6);
        if (windows.size() < 3 || (action == 0 && windows.size() < 8))
            windows.push_back(VirtualWindow::Create(screen, anywhere()));
        const auto& window = windows[static_cast<std::size_t>(upTo(static_cast<int>(windows.size())))];
        if (action == 1)
            window->Raise();
        if (action == 2)
            window->Lower();
        if (action == 3)
            window->SetClientRect(anywhere());
        if (action == 4)
            window->SetBorderStyle(static_cast<std::int16_t>(upTo(2)));
        if (action == 5 && windows.size() > 3)
            windows.erase(windows.begin());
        std::vector<VirtualWindow*> order = screen->Windows();
        std::ranges::shuffle(order, random);
        for (VirtualWindow* const each : order)
            PaintPlain(*each, 0x100000U + static_cast<std::uint32_t>(each->Handle()));
        for (int y = 0; y < 90; ++y)
            for (int x = 0; x < 120; ++x)
            {
                std::uint32_t expected = VirtualScreen::DesktopColor;
                for (const VirtualWindow* const each : screen->Windows())
                    if (Holds(each->ClientRect(), x, y))
                        expected = 0x100000U + static_cast<std::uint32_t>(each->Handle());
                    else if (Holds(each->OuterRect(), x, y))
                        expected = 0;
                ASSERT_EQ(screen->PixelAt(x, y), expected) << "round " << round << " at " << x << ", " << y;
            }
    }
}

TEST(VirtualWindow, takes_its_picture_along_when_moved_and_resized_and_leaves_the_desktop_behind)
{
    const auto screen = std::make_shared<VirtualScreen>(100, 100);
    const auto window = VirtualWindow::Create(screen, {10, 10, 40, 40});
    window->SetBackColor(GreenBackColor);
    auto cover = VirtualWindow::Create(screen, {30, 10, 50, 40});
    PaintPlain(*window, Red);
    window->SetClientRect({10, 50, 40, 80});
    EXPECT_EQ(screen->PixelAt(12, 12), VirtualScreen::DesktopColor);
    EXPECT_EQ(screen->PixelAt(12, 52), Red);
    EXPECT_EQ(screen->PixelAt(35, 52), Green); // was covered: nothing to take along
    EXPECT_EQ(screen->PixelAt(35, 12), 0U);    // the cover stays
    EXPECT_EQ(CountPixels(*screen, Red), 20 * 30);
    cover.reset();
    EXPECT_EQ(screen->PixelAt(35, 12), VirtualScreen::DesktopColor);
    VirtualWindow::Create(screen, {10, 50, 20, 60}).reset(); // comes to light again: unpainted
    EXPECT_EQ(screen->PixelAt(12, 52), Green);
    PaintPlain(*window, Red);
    EXPECT_EQ(CountPixels(*screen, Red), 30 * 30);
    window->SetClientRect({10, 50, 60, 70}); // wider, and less high
    EXPECT_EQ(CountPixels(*screen, Red), 30 * 20);
    EXPECT_EQ(CountPixels(*screen, Green), 20 * 20);
    EXPECT_EQ(screen->PixelAt(12, 75), VirtualScreen::DesktopColor);
}

TEST(VirtualWindow, shows_a_picture_from_its_top_left_over_the_back_colour)
{
    const auto screen = std::make_shared<VirtualScreen>(100, 100);
    const auto window = VirtualWindow::Create(screen, {10, 10, 40, 40});
    const auto bitmap = std::make_shared<Bitmap>(5, 50);
    std::fill_n(bitmap->Pixels().pixels, 250, 0xFFFF0000);
    window->SetBackColor(GreenBackColor);
    window->SetPicture(std::make_shared<Picture>(bitmap));
    EXPECT_EQ(CountPixels(*screen, Red), 5 * 30); // cut at the window's bottom
    EXPECT_EQ(screen->PixelAt(10, 10), Red);
    EXPECT_EQ(screen->PixelAt(15, 10), Green);
    window->SetPicture(nullptr);
    EXPECT_EQ(CountPixels(*screen, Green), 30 * 30);
}

TEST(VirtualWindow, measures_its_client_area_in_its_scale_mode)
{
    struct Row
    {
        ScaleMode mode;
        double width;
        double height;
    };
    const auto screen = std::make_shared<VirtualScreen>();
    const auto window = VirtualWindow::Create(screen, {100, 100, 740, 580});
    window->SetBorderStyle(1); // takes nothing from the client area
    for (const auto& [mode, width, height] :
         {Row{ScaleMode::Twips, 9600, 7200}, Row{ScaleMode::Points, 480, 360}, Row{ScaleMode::Pixels, 640, 480}})
    {
        window->SetScaleMode(mode);
        EXPECT_EQ(window->ScaleWidth(), width);
        EXPECT_EQ(window->ScaleHeight(), height);
        EXPECT_EQ(window->ScaleToPixelsX(width), 640);
        EXPECT_EQ(window->ScaleToPixelsY(height / 2), 240);
    }
    screen->SetTwipsPerPixel(12, 10); // 120 and 144 pixels an inch
    window->SetScaleMode(ScaleMode::Twips);
    EXPECT_EQ(window->ScaleWidth(), 640 * 12);
    EXPECT_EQ(window->ScaleToPixelsY(1440), 144);
}

TEST(VirtualWindow, refuses_places_nobody_could_see)
{
    const auto screen = std::make_shared<VirtualScreen>(100, 100);
    const auto window = VirtualWindow::Create(screen, {10, 10, 40, 40});
    for (const PixelRect& bad : {PixelRect{10, 10, 9, 40}, PixelRect{0, 0, 16385, 1},
                                 PixelRect{INT_MIN, 0, INT_MIN + 5, 5}, PixelRect{INT_MIN, INT_MIN, INT_MAX, INT_MAX}})
        EXPECT_EQ(ErrorOf([&] { window->SetClientRect(bad); }), error::InvalidCall);
    EXPECT_EQ(window->ScreenRect(), (PixelRect{10, 10, 40, 40}));
    window->SetClientRect({500, 500, 540, 540});
    EXPECT_TRUE(window->VisibleRegion().empty());
    PaintPlain(*window, Red);
    EXPECT_EQ(CountPixels(*screen, VirtualScreen::DesktopColor), 100 * 100);
}

TEST(VirtualWindow, is_found_by_its_handle_as_long_as_it_lives)
{
    const auto screen = std::make_shared<VirtualScreen>();
    auto window = VirtualWindow::Create(screen, {0, 0, 10, 10});
    const auto other = VirtualWindow::Create(screen, {0, 0, 10, 10});
    const WindowHandle first = window->Handle();
    EXPECT_NE(first, other->Handle());
    EXPECT_EQ(ControlWindow::FromHandle(first), window);
    EXPECT_EQ(ErrorOf([&] { window->SetHandle(other->Handle()); }), error::InvalidCall);
    window->SetHandle(70000);
    EXPECT_EQ(ControlWindow::FromHandle(first), nullptr);
    EXPECT_EQ(ControlWindow::FromHandle(70000), window);
    window.reset();
    EXPECT_EQ(ControlWindow::FromHandle(70000), nullptr);
}

TEST(VirtualWindow, handles_fit_sixteen_bits_however_many_windows_come_and_go)
{
    const auto screen = std::make_shared<VirtualScreen>(10, 10);
    const auto lasting = VirtualWindow::Create(screen, {0, 0, 1, 1});
    for (int i = 0; i < 40000; ++i)
    {
        const WindowHandle handle = VirtualWindow::Create(screen, {0, 0, 1, 1})->Handle();
        ASSERT_TRUE(handle >= 1000 && handle <= 32767 && handle != lasting->Handle());
    }
}

} // namespace lumora::headless
