// The three ways to draw what can be seen through.
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"

#include <cmath>
#include <gtest/gtest.h>

namespace lumora::test
{

namespace
{

constexpr int Side = 16;

DrawItem Pane(float z, std::uint32_t color, std::shared_ptr<const TextureImage> texture = nullptr)
{
    DrawItem item;
    item.mesh = Quad(-20, 40, 40, -20, z, color, std::move(texture));
    item.lit = false;
    return item;
}

class TransparencyOf : public EveryDriver
{
protected:
    Canvas Draw(Transparency mode, const std::vector<DrawItem>& items)
    {
        PassState pass = PixelPass(Side, Side);
        pass.transparency = mode;
        Canvas canvas{Side, Side};
        DrawPicture(*driver_, canvas, pass, items);
        return canvas;
    }

    void DrawOnePass(Transparency mode, const std::vector<DrawItem>& items)
    {
        PassState pass = PixelPass(Side, Side);
        pass.transparency = mode;
        driver_->Begin(pass);
        for (const DrawItem& item : items)
            driver_->Draw(item);
        driver_->End();
    }

    static void ExpectColor(const Canvas& canvas, double red, double green, double blue)
    {
        const Channels color = ChannelsOf(canvas.At(8, 8));
        EXPECT_NEAR(color.red, red, 1.01);
        EXPECT_NEAR(color.green, green, 1.01);
        EXPECT_NEAR(color.blue, blue, 1.01);
    }
};
LUMORA_FOR_EVERY_DRIVER(TransparencyOf);

// Half red before half green on black, and the other way round.
constexpr std::uint32_t HalfRed = 0x80FF0000;
constexpr std::uint32_t HalfGreen = 0x8000FF00;
constexpr double Half = 128 / 255.0;

TEST_P(TransparencyOf, stippled_faces_cover_a_share_of_pixels_equal_to_alpha)
{
    int last = -1;
    for (int alpha = 0; alpha <= 255; ++alpha)
    {
        const Canvas canvas =
            Draw(Transparency::Stippled, {Pane(0.5F, static_cast<std::uint32_t>(alpha) << 24 | 0xFFFFFF)});
        const int share = canvas.CountNot(0);
        EXPECT_NEAR(share, Side * Side * alpha / 255.0, Side * Side / 16.0) << alpha;
        EXPECT_GE(share, last) << alpha;
        last = share;
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x)
                ASSERT_TRUE(canvas.At(x, y) == 0 || canvas.At(x, y) == 0xFFFFFF) << "no blend";
    }
    EXPECT_EQ(last, Side * Side);
    EXPECT_EQ(Draw(Transparency::Stippled, {Pane(0.5F, 0x00FFFFFF)}).CountNot(0), 0);
}

TEST_P(TransparencyOf, stippled_faces_hide_what_lies_behind_where_they_are)
{
    const Canvas canvas = Draw(Transparency::Stippled, {Pane(0.3F, 0x80FF0000), Pane(0.6F, 0xFF0000FF)});
    int red = 0;
    int blue = 0;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x)
        {
            red += canvas.At(x, y) == 0xFF0000 ? 1 : 0;
            blue += canvas.At(x, y) == 0x0000FF ? 1 : 0;
        }
    EXPECT_EQ(red + blue, Side * Side);
    EXPECT_NEAR(red, Side * Side / 2, Side * Side / 16);
}

TEST_P(TransparencyOf, blended_faces_are_drawn_in_order_and_write_depth)
{
    ExpectColor(Draw(Transparency::Blended, {Pane(0.6F, HalfGreen), Pane(0.3F, HalfRed)}), 255 * Half,
                255 * Half * (1 - Half), 0);
    ExpectColor(Draw(Transparency::Blended, {Pane(0.3F, HalfRed), Pane(0.6F, HalfGreen)}), 255 * Half, 0, 0);
}

TEST_P(TransparencyOf, sorted_faces_are_drawn_farthest_first_whatever_their_order)
{
    const double green = 255 * Half * (1 - Half);
    ExpectColor(Draw(Transparency::Sorted, {Pane(0.6F, HalfGreen), Pane(0.3F, HalfRed)}), 255 * Half, green, 0);
    ExpectColor(Draw(Transparency::Sorted, {Pane(0.3F, HalfRed), Pane(0.6F, HalfGreen)}), 255 * Half, green, 0);
    // Equal depths keep their order.
    ExpectColor(Draw(Transparency::Sorted, {Pane(0.5F, HalfGreen), Pane(0.5F, HalfRed)}), 255 * Half, green, 0);
}

TEST_P(TransparencyOf, sorted_faces_of_equal_depth_keep_their_order_in_a_crowd)
{
    constexpr std::uint32_t HalfBlue = 0x800000FF;
    for (const int others : {6, 40, 400}) // hardly farther
    {
        std::vector<DrawItem> items{Pane(0.9F, HalfBlue), Pane(0.5F, HalfGreen)};
        for (int i = 1; i <= others; ++i)
            items.push_back(Pane(0.5F + 1.0e-5F * static_cast<float>(1 + i * 7 % others), HalfBlue));
        items.push_back(Pane(0.5F, HalfRed));
        const double blue = 255 * (1 - Half) * (1 - Half);
        ExpectColor(Draw(Transparency::Sorted, items), 255 * Half, 255 * Half * (1 - Half), blue);
    }
}

TEST_P(TransparencyOf, sorted_faces_are_hidden_by_opaque_ones_and_shine_over_later_ones)
{
    const DrawItem wall = Pane(0.5F, 0xFF0000FF);
    ExpectColor(Draw(Transparency::Sorted, {Pane(0.3F, HalfRed), wall}), 255 * Half, 0, 255 * (1 - Half));
    ExpectColor(Draw(Transparency::Sorted, {wall, Pane(0.7F, HalfRed)}), 0, 0, 255);
}

TEST_P(TransparencyOf, sorted_faces_wait_over_passes_until_finish)
{
    Canvas canvas{Side, Side};
    driver_->SetTarget(canvas.View());
    driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    DrawOnePass(Transparency::Sorted, {Pane(0.2F, HalfRed)});
    DrawOnePass(Transparency::Sorted, {Pane(0.7F, 0xFF0000FF), Pane(0.4F, HalfGreen)});
    driver_->Finish();
    const double rest = 1 - Half;
    ExpectColor(canvas, 255 * Half, 255 * Half * rest, 255 * rest * rest);
}

TEST_P(TransparencyOf, sorted_faces_compare_by_eye_space_depth_across_projections)
{
    // The same depth on the screen means different distances in the two passes: distance decides the order.
    Canvas canvas{Side, Side};
    driver_->SetTarget(canvas.View());
    driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    const auto draw = [&](const PassState& pass, float z, std::uint32_t color)
    {
        DrawItem item;
        item.mesh = Quad(-50, -50, 50, 50, z, color);
        item.lit = false;
        driver_->Begin(pass);
        driver_->Draw(item);
        driver_->End();
    };
    const CameraPlace place{{0, 0, 0}, {0, 0, 1}, 1, 1, 10};
    // Perspective: distance 4 is depth 0.83. Orthographic: distance 6 is depth 0.56, nearer on the screen.
    draw(PerspectivePass(Side, Side, place), 4, HalfRed);
    draw(OrthographicPass(Side, Side, place), 6, HalfGreen);
    driver_->Finish();
    ExpectColor(canvas, 255 * Half, 255 * Half * (1 - Half), 0);
}

TEST_P(TransparencyOf, sorted_faces_are_finished_by_clear_with_the_old_depths)
{
    Canvas canvas{Side, Side};
    driver_->SetTarget(canvas.View());
    driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    DrawOnePass(Transparency::Sorted, {Pane(0.4F, HalfRed), Pane(0.3F, 0xFF0000FF)});
    driver_->Clear({false, true}, canvas.View().Bounds(), 0);
    driver_->Finish();
    ExpectColor(canvas, 0, 0, 255);
}

TEST_P(TransparencyOf, sorted_faces_are_finished_by_a_new_target_in_the_old_one)
{
    Canvas first{Side, Side};
    Canvas second{Side, Side};
    driver_->SetTarget(first.View());
    driver_->Clear({true, true}, first.View().Bounds(), 0);
    DrawOnePass(Transparency::Sorted, {Pane(0.4F, HalfRed)});
    driver_->SetTarget(second.View());
    driver_->Clear({true, true}, second.View().Bounds(), 0);
    driver_->Finish();
    ExpectColor(first, 255 * Half, 0, 0);
    EXPECT_EQ(second.CountNot(0), 0);
}

TEST_P(TransparencyOf, sorted_faces_are_drawn_with_the_state_of_their_own_pass)
{
    Canvas canvas{Side, Side};
    driver_->SetTarget(canvas.View());
    driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    PassState pass = PixelPass(Side, Side);
    pass.scissor = {0, 0, 4, 4};
    pass.fog = {FogMode::Linear, {0, 0, 1}, -1, 0, 0}; // everything is hidden by fog
    driver_->Begin(pass);
    driver_->Draw(Pane(0.5F, HalfRed));
    driver_->End();
    driver_->Begin(PixelPass(Side, Side));
    driver_->End();
    driver_->Finish();
    EXPECT_EQ(canvas.CountNot(0), 16);
    EXPECT_NEAR(ChannelsOf(canvas.At(1, 1)).blue, 128, 1);
}

TEST_P(TransparencyOf, textures_make_their_faces_translucent)
{
    const auto glass = MakeTexture(1, 1, {0x80FF0000});
    const double rest = 1 - Half;
    ExpectColor(Draw(Transparency::Sorted, {Pane(0.3F, 0xFFFFFFFF, glass), Pane(0.6F, HalfGreen)}), 255 * Half,
                255 * Half * rest, 0);
    // Both alphas multiply.
    ExpectColor(Draw(Transparency::Blended, {Pane(0.3F, 0x80FFFFFF, glass)}), 255 * Half * Half, 0, 0);
    const int stippled = Draw(Transparency::Stippled, {Pane(0.3F, 0x80FFFFFF, glass)}).CountNot(0);
    EXPECT_NEAR(stippled, Side * Side / 4, Side * Side / 16);
}

TEST_P(TransparencyOf, opaque_faces_write_depth_in_every_mode)
{
    for (const Transparency mode : {Transparency::Stippled, Transparency::Blended, Transparency::Sorted})
        ExpectColor(Draw(mode, {Pane(0.3F, 0xFFFF0000), Pane(0.6F, 0xFF00FF00)}), 255, 0, 0);
}

TEST_P(TransparencyOf, lines_and_points_are_blended_at_once)
{
    // A pixel in the middle of a side, and a corner.
    for (const auto& [fill, x] : {std::pair{FillStyle::Wireframe, 7}, std::pair{FillStyle::Points, 2}})
    {
        DrawItem lines;
        lines.mesh = OneFace({{2, 2, 0.3F}, {12, 2, 0.3F}, {2, 12, 0.3F}}, HalfRed);
        lines.lit = false;
        lines.fill = fill;
        // Drawn first, they write depth: the wall behind them is hidden even though they are translucent.
        for (const Transparency mode : {Transparency::Blended, Transparency::Sorted})
            EXPECT_EQ(Draw(mode, {lines, Pane(0.6F, 0xFF00FF00)}).At(x, 2), 0x800000U);
    }
}

} // namespace

} // namespace lumora::test
