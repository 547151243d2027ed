// Surfaces: how they are made, copied, shown and shared.
#include "platform/directdraw/DirectDraw.h"

#include "hosts/headless/Errors.h"
#include "hosts/headless/VirtualScreen.h"
#include "hosts/headless/VirtualWindow.h"
#include "platform/directdraw/DeviceContext.h"
#include "support/Pictures.h"

#include <climits>
#include <gtest/gtest.h>

namespace lumora
{

namespace
{

constexpr std::uint32_t AllGiven = 7;
constexpr std::uint32_t CapsGiven = 1;

class DirectDrawSurfaces : public testing::Test
{
protected:
    std::shared_ptr<Surface> NewSurface(int width, int height)
    {
        return directDraw_->CreateSurface({124, AllGiven, height, width, surfacecaps::OffscreenPlain});
    }

    std::shared_ptr<Surface> NewPrimary()
    {
        return directDraw_->CreateSurface({124, CapsGiven, 0, 0, surfacecaps::PrimarySurface});
    }

    /// A surface on which every pixel has a colour of its own.
    std::shared_ptr<Surface> NewNumberedSurface(int width, int height)
    {
        auto surface = NewSurface(width, height);
        const PixelView pixels = surface->Pixels();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                pixels.Row(y)[x] = NumberedPixel(x, y);
        return surface;
    }

    static std::uint32_t NumberedPixel(int x, int y) { return static_cast<std::uint32_t>(y * 1000 + x + 1); }

    std::shared_ptr<headless::VirtualScreen> screen_ = std::make_shared<headless::VirtualScreen>(200, 150);
    std::shared_ptr<DirectDraw> directDraw_ = DirectDraw::Create(screen_);
};

/// The source pixel whose extent, stretched, contains the middle of destination pixel `i`.
int NearestByMeasuring(int i, int sourceSize, int destinationSize)
{
    for (int s = 0; s < sourceSize; ++s)
        if ((2 * i + 1) * sourceSize < 2 * (s + 1) * destinationSize)
            return s;
    return -1;
}

} // namespace

TEST_F(DirectDrawSurfaces, are_made_from_complete_descriptions_only)
{
    struct Row
    {
        const char* what;
        SurfaceDescription description;
        std::int32_t number;
    };
    constexpr std::uint32_t Plain = surfacecaps::OffscreenPlain;
    constexpr std::uint32_t Primary = surfacecaps::PrimarySurface;
    for (const auto& [what, description, number] : {
             Row{"longest", {124, 7, 1, Surface::MaximumSide, Plain}, 0},
             Row{"primary", {124, 1, 0, 0, Primary}, 0},
             Row{"record of another size", {108, 7, 10, 10, Plain}, error::DDInvalidParams},
             Row{"no width", {124, 3, 10, 10, Plain}, error::DDInvalidParams},
             Row{"empty", {124, 7, 0, 10, Plain}, error::DDInvalidParams},
             Row{"negative", {124, 7, 10, INT_MIN, Plain}, error::DDInvalidParams},
             Row{"too wide", {124, 7, 1, Surface::MaximumSide + 1, Plain}, error::DDInvalidParams},
             Row{"too many pixels", {124, 7, 8193, 32768, Plain}, error::OutOfMemory},
         })
        EXPECT_EQ(ErrorOf([&, &tried = description] { directDraw_->CreateSurface(tried); }), number) << what;
}

TEST_F(DirectDrawSurfaces, stretch_by_the_pixel_nearest_to_each_middle_within_the_rectangle)
{
    for (const auto& [from, to] :
         {std::pair{7, 7}, {1, 9}, {4, 8}, {8, 4}, {9, 2}, {13, 7}, {7, 13}, {3, 100}, {101, 3}})
    {
        const auto source = NewNumberedSurface(from + 2, 2 * from + 4);
        const auto target = NewSurface(to + 5, 3 * to + 6);
        target->Blt(PixelRect{3, 4, 3 + to, 4 + 3 * to}, *source, PixelRect{2, 1, 2 + from, 1 + 2 * from},
                    Surface::BltWait);
        for (int y = -4; y < 3 * to + 2; ++y)
            for (int x = -3; x < to + 2; ++x)
            {
                const bool isInside = x >= 0 && x < to && y >= 0 && y < 3 * to;
                const std::uint32_t expected = isInside ? NumberedPixel(2 + NearestByMeasuring(x, from, to),
                                                                        1 + NearestByMeasuring(y, 2 * from, 3 * to))
                                                        : 0;
                ASSERT_EQ(target->Pixels().Row(y + 4)[x + 3], expected)
                    << from << " to " << to << " at " << x << ", " << y;
            }
    }
}

TEST_F(DirectDrawSurfaces, refuse_rectangles_that_are_empty_or_outside)
{
    const auto source = NewNumberedSurface(10, 8);
    const auto target = NewSurface(20, 16);
    for (const PixelRect& bad :
         {PixelRect{0, 0, 11, 8}, PixelRect{-1, 0, 5, 5}, PixelRect{0, 0, 5, 9}, PixelRect{3, 3, 3, 5},
          PixelRect{5, 5, 2, 7}, PixelRect{INT_MIN, INT_MIN, INT_MAX, INT_MAX}})
    {
        EXPECT_EQ(ErrorOf([&] { target->Blt({}, *source, bad, 0); }), error::DDInvalidRect);
        EXPECT_EQ(ErrorOf([&] { source->Blt(bad, *target, {}, 0); }), error::DDInvalidRect);
    }
    EXPECT_EQ(ErrorOf([&] { target->Blt({}, *source, {}, 0x400); }), error::DDInvalidParams);
    EXPECT_TRUE(testsupport::SamePicture(target->Pixels(), NewSurface(20, 16)->Pixels()));
    EXPECT_TRUE(testsupport::SamePicture(source->Pixels(), NewNumberedSurface(10, 8)->Pixels()));
}

TEST_F(DirectDrawSurfaces, copy_overlapping_parts_as_if_through_another_surface)
{
    struct Row
    {
        const char* way;
        PixelRect source;
        PixelRect destination;
    };
    for (const auto& [way, from, to] : {
             Row{"down and right", {0, 0, 20, 20}, {5, 7, 25, 27}},
             Row{"up and left", {5, 7, 25, 27}, {0, 0, 20, 20}},
             Row{"up and right", {0, 9, 20, 29}, {3, 2, 23, 22}},
             Row{"right in one row", {0, 4, 20, 5}, {1, 4, 21, 5}},
             Row{"onto itself", {2, 3, 22, 23}, {2, 3, 22, 23}},
             Row{"larger", {5, 5, 15, 15}, {0, 0, 30, 30}},
             Row{"smaller", {0, 0, 30, 30}, {5, 5, 15, 15}},
         })
    {
        const auto direct = NewNumberedSurface(30, 30);
        const auto detour = NewNumberedSurface(30, 30);
        detour->Blt(to, *NewNumberedSurface(30, 30), from, 0);
        direct->Blt(to, *direct, from, 0);
        EXPECT_TRUE(testsupport::SamePicture(direct->Pixels(), detour->Pixels())) << way;
    }
}

TEST_F(DirectDrawSurfaces, are_busy_while_somebody_holds_their_pixels)
{
    const auto held = NewSurface(8, 8);
    const auto other = NewSurface(8, 8);
    const auto expectBusy = [&](const char* why)
    {
        EXPECT_EQ(ErrorOf([&] { held->Blt({}, *other, {}, 0); }), error::DDSurfaceBusy) << why;
        EXPECT_EQ(ErrorOf([&] { other->Blt({}, *held, {}, 0); }), error::DDSurfaceBusy) << why;
        EXPECT_EQ(ErrorOf([&] { held->GetDC(); }), error::DDSurfaceBusy) << why;
        EXPECT_EQ(ErrorOf([&] { held->Lock(); }), error::DDSurfaceBusy) << why;
    };
    held->Lock();
    expectBusy("locked");
    held->Unlock();
    EXPECT_EQ(ErrorOf([&] { held->Unlock(); }), error::DDInvalidParams);
    auto context = held->GetDC();
    expectBusy("context out");
    held->ReleaseDC(context);
    EXPECT_EQ(ErrorOf([&] { held->ReleaseDC(context); }), error::DDInvalidParams);
    EXPECT_EQ(ErrorOf([&] { held->Blt({}, *other, {}, 0); }), 0);
}

TEST_F(DirectDrawSurfaces, take_nothing_more_through_a_context_that_was_released)
{
    auto surface = NewSurface(8, 8);
    const auto released = surface->GetDC();
    surface->ReleaseDC(released);
    released->SetPixel(1, 1, 0xFFFFFF);
    EXPECT_EQ(surface->Pixels().Row(1)[1], 0U);
    const auto orphaned = surface->GetDC();
    surface.reset();
    orphaned->FillRectangle({0, 0, 8, 8}, 0xFFFFFF); // must not reach freed memory
    EXPECT_EQ(orphaned->Width(), 0);
}

TEST_F(DirectDrawSurfaces, on_the_primary_show_within_the_clippers_window_only_and_know_when_it_is_gone)
{
    auto window = headless::VirtualWindow::Create(screen_, {50, 40, 90, 70});
    const WindowHandle handle = window->Handle();
    const auto clipper = directDraw_->CreateClipper(0);
    clipper->SetHWnd(0, handle);
    const auto primary = NewPrimary();
    primary->SetClipper(clipper);
    const auto picture = NewSurface(60, 60);
    DeviceContext{picture->Pixels()}.FillRectangle({0, 0, 60, 60}, 0x0000FF);
    primary->Blt(PixelRect{30, 30, 80, 100}, *picture, {}, Surface::BltWait);
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 200; ++x)
        {
            const bool inWindow = x >= 50 && x < 90 && y >= 40 && y < 70;
            const std::uint32_t expected = !inWindow ? headless::VirtualScreen::DesktopColor : x < 80 ? 0xFF0000 : 0;
            ASSERT_EQ(screen_->PixelAt(x, y), expected) << x << ", " << y;
        }
    window.reset();
    EXPECT_EQ(ErrorOf([&] { primary->Blt({}, *picture, {}, 0); }), error::DDInvalidParams);
    EXPECT_EQ(ErrorOf([&] { clipper->SetHWnd(0, handle); }), error::DDInvalidParams);
    EXPECT_EQ(ErrorOf([&] { directDraw_->SetCooperativeLevel(handle, 8); }), error::DDInvalidParams);
}

} // namespace lumora
