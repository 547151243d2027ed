// Drawing through device contexts: colours, clipping, and lines that go far outside.
#include "platform/directdraw/DeviceContext.h"

#include "platform/pictures/Bitmap.h"
#include "support/Pictures.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace lumora
{

namespace
{

constexpr ColorRef White = 0xFFFFFF;

/// Pixels with a margin around the part that contexts may draw on.
class Canvas
{
public:
    explicit Canvas(int width, int height, int margin = 0)
        : margin_(margin), bitmap_(width + 2 * margin, height + 2 * margin)
    {
    }

    PixelView Inner()
    {
        const PixelView all = bitmap_.Pixels();
        return {all.Row(margin_) + margin_, all.width - 2 * margin_, all.height - 2 * margin_, all.pitch};
    }

    PixelView All() { return bitmap_.Pixels(); }

    int CountColored()
    {
        return static_cast<int>(std::ranges::count_if(bitmap_.Data(), [](auto pixel) { return pixel != 0xFF000000; }));
    }

    void Number()
    {
        const PixelView view = All();
        for (int y = 0; y < view.height; ++y)
            for (int x = 0; x < view.width; ++x)
                view.Row(y)[x] = 0xFF000000U | static_cast<std::uint32_t>(y * 1000 + x + 1);
    }

private:
    int margin_;
    Bitmap bitmap_;
};

} // namespace

TEST(DeviceContext, keeps_red_in_the_low_byte_and_the_fourth_byte_untouched)
{
    Canvas canvas{2, 1};
    DeviceContext context{canvas.Inner()};
    context.SetPixel(0, 0, 0x112233);
    context.FillRectangle({1, 0, 2, 1}, 0xAA0000FF);
    EXPECT_EQ(canvas.Inner().Row(0)[0], 0xFF332211);
    EXPECT_EQ(canvas.Inner().Row(0)[1], 0xFFFF0000);
    EXPECT_EQ(context.GetPixel(0, 0), 0x112233U);
}

TEST(DeviceContext, reads_black_and_draws_nothing_outside)
{
    Canvas canvas{4, 3, 2};
    DeviceContext context{canvas.Inner()};
    for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {4, 0}, {0, 3}, {INT_MIN, INT_MAX}})
    {
        context.SetPixel(x, y, White);
        EXPECT_EQ(context.GetPixel(x, y), 0U);
    }
    EXPECT_EQ(canvas.CountColored(), 0);
    context.FillRectangle({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, White);
    EXPECT_EQ(canvas.CountColored(), 4 * 3);
}

TEST(DeviceContext, lines_take_one_pixel_a_step_beside_the_true_line_and_leave_out_the_last)
{
    std::mt19937 random{7}; // NOLINT: the same lines every time
    std::uniform_int_distribution<int> coordinate{0, 59};
    for (int round = 0; round < 300; ++round)
    {
        Canvas canvas{60, 60};
        DeviceContext context{canvas.Inner()};
        const int x1 = coordinate(random);
        const int y1 = coordinate(random);
        const int x2 = coordinate(random);
        const int y2 = coordinate(random);
        context.Line(x1, y1, x2, y2, White);
        const int across = std::abs(x2 - x1);
        const int down = std::abs(y2 - y1);
        ASSERT_EQ(canvas.CountColored(), std::max(across, down));
        EXPECT_EQ(context.GetPixel(x2, y2), 0U);
        for (int y = 0; y < 60; ++y)
            for (int x = 0; x < 60; ++x)
                if (context.GetPixel(x, y) != 0)
                {
                    // Distance from the line, measured along the shorter direction.
                    const double area = std::abs((x2 - x1) * (y - y1) - (y2 - y1) * (x - x1));
                    EXPECT_LE(area / std::max(across, down), 0.5);
                    EXPECT_LE(std::abs(x - x1), across);
                    EXPECT_LE(std::abs(y - y1), down);
                }
    }
}

TEST(DeviceContext, lines_are_cut_at_the_edges_without_bending)
{
    std::mt19937 random{11}; // NOLINT
    std::uniform_int_distribution<int> coordinate{-100, 200};
    for (int round = 0; round < 200; ++round)
    {
        Canvas whole{100, 80, 100};
        Canvas cut{100, 80};
        const int x1 = coordinate(random);
        const int y1 = coordinate(random);
        const int x2 = coordinate(random);
        const int y2 = std::min(coordinate(random), 179);
        DeviceContext{whole.All()}.Line(x1 + 100, std::min(y1, 179) + 100, x2 + 100, y2 + 100, White);
        DeviceContext{cut.Inner()}.Line(x1, std::min(y1, 179), x2, y2, White);
        ASSERT_TRUE(testsupport::SamePicture(cut.Inner(), whole.Inner()));
    }
}

TEST(DeviceContext, lines_from_far_away_cost_no_more_than_what_is_seen)
{
    Canvas canvas{100, 100};
    DeviceContext context{canvas.Inner()};
    context.Line(INT_MIN, INT_MIN, INT_MAX, INT_MAX, White);
    EXPECT_EQ(canvas.CountColored(), 100);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(context.GetPixel(i, i), White);
    context.Line(INT_MAX, 5, INT_MIN, 5, 0xFF);
    EXPECT_EQ(context.GetPixel(99, 5), 0xFFU);
}

TEST(DeviceContext, blocks_are_clipped_on_both_sides)
{
    struct Row
    {
        int x, y, width, height, sourceX, sourceY;
    };
    Canvas source{20, 16};
    source.Number();
    const DeviceContext from{source.Inner()};
    for (const auto& [x, y, width, height, sourceX, sourceY] : {
             Row{2, 3, 5, 4, 1, 2},
             Row{-3, -2, 10, 10, 0, 0},
             Row{0, 0, 10, 10, -4, -6},
             Row{25, 20, 100, 100, 15, 12},
             Row{5, 5, INT_MAX, INT_MAX, 3, 3},
             Row{INT_MIN, 0, INT_MAX, 5, 0, 0},
             Row{0, 0, INT_MAX, INT_MAX, INT_MIN, INT_MIN},
             Row{4, 4, 0, 5, 0, 0},
             Row{4, 4, -5, -5, 8, 8},
         })
    {
        Canvas target{30, 24, 3};
        DeviceContext{target.Inner()}.BitBlt(x, y, width, height, from, sourceX, sourceY);
        Canvas expected{30, 24, 3};
        for (int row = 0; row < 24; ++row)
            for (int column = 0; column < 30; ++column)
            {
                const std::int64_t i = std::int64_t{column} - x;
                const std::int64_t j = std::int64_t{row} - y;
                const std::int64_t sx = i + sourceX;
                const std::int64_t sy = j + sourceY;
                if (i >= 0 && j >= 0 && i < width && j < height && sx >= 0 && sy >= 0 && sx < 20 && sy < 16)
                    expected.Inner().Row(row)[column] = source.Inner().Row(static_cast<int>(sy))[sx];
            }
        EXPECT_TRUE(testsupport::SamePicture(target.All(), expected.All())) << x << ", " << y;
    }
}

TEST(DeviceContext, stretched_blocks_leave_out_what_the_source_lacks)
{
    Canvas source{10, 10};
    source.Number();
    Canvas target{40, 40};
    DeviceContext to{target.Inner()};
    to.StretchBlt({0, 0, 40, 40}, DeviceContext{source.Inner()}, {-5, -5, 15, 15}); // two pixels each
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x)
        {
            const bool inside = x >= 10 && x < 30 && y >= 10 && y < 30;
            EXPECT_EQ(target.Inner().Row(y)[x], inside ? source.Inner().Row(y / 2 - 5)[x / 2 - 5] : 0xFF000000);
        }
    to.StretchBlt({INT_MIN, INT_MIN, INT_MAX, INT_MAX}, DeviceContext{source.Inner()}, {0, 0, 10, 10});
    to.StretchBlt({0, 0, 40, 40}, DeviceContext{source.Inner()}, {9, 9, 3, 3});
    EXPECT_EQ(target.Inner().Row(0)[0], 0xFF000000);
}

} // namespace lumora
