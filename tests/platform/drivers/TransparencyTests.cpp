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
    return Unlit(Item(Quad(-20, 40, 40, -20, z, color, std::move(texture))));
}

class TransparencyOf : public EveryDriver
{
protected:
    Canvas Draw(Transparency mode, const std::vector<DrawItem>& items)
    {
        StartPicture(canvas_);
        DrawOnePass(mode, items);
        driver_->Finish();
        return canvas_;
    }

    void StartPicture(Canvas& canvas)
    {
        driver_->SetTarget(canvas.View());
        driver_->Clear({true, true}, canvas.View().Bounds(), 0);
    }

    void DrawOnePass(Transparency mode, const std::vector<DrawItem>& items)
    {
        PassState pass = PixelPass(Side, Side);
        pass.transparency = mode;
        DrawPass(pass, items);
    }

    void DrawPass(const PassState& pass, const std::vector<DrawItem>& items)
    {
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

    Canvas canvas_{Side, Side};
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
    EXPECT_EQ(canvas.CountNot(0x0000FF) + canvas.CountNot(0xFF0000), Side * Side);
}

TEST_P(TransparencyOf, two_faces_shows_what_its_mode_says)
{
    using enum Transparency;
    const auto texture = MakeTexture(1, 1, {0x80FF0000});
    const DrawItem red = Pane(0.3F, HalfRed);
    const DrawItem green = Pane(0.6F, HalfGreen);
    const DrawItem wall = Pane(0.5F, 0xFF0000FF);
    constexpr double Rest = 1 - Half;
    const struct
    {
        const char* what;
        Transparency mode;
        std::vector<DrawItem> items;
        double red, green, blue;
    } rows[] = {
        {"blended, the farther one first", Blended, {green, red}, Half, Half * Rest, 0},
        {"blended, hidden by its depth", Blended, {red, green}, Half, 0, 0},
        {"sorted", Sorted, {green, red}, Half, Half * Rest, 0},
        {"sorted, the nearer one first", Sorted, {red, green}, Half, Half * Rest, 0},
        {"sorted before an opaque one", Sorted, {red, wall}, Half, 0, Rest},
        {"sorted behind an opaque one", Sorted, {wall, Pane(0.7F, HalfRed)}, 0, 0, 1},
        {"a texture's alpha", Sorted, {Pane(0.3F, 0xFFFFFFFF, texture), green}, Half, Half * Rest, 0},
        {"both alphas multiplied", Blended, {Pane(0.3F, 0x80FFFFFF, texture)}, Half * Half, 0, 0},
        {"opaque, blended", Blended, {Pane(0.3F, 0xFFFF0000), Pane(0.6F, 0xFF00FF00)}, 1, 0, 0},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        ExpectColor(Draw(row.mode, row.items), 255 * row.red, 255 * row.green, 255 * row.blue);
    }
    const int stippled = Draw(Stippled, {Pane(0.3F, 0x80FFFFFF, texture)}).CountNot(0);
    EXPECT_NEAR(stippled, Side * Side / 4, Side * Side / 16);
}

TEST_P(TransparencyOf, sorted_faces_of_equal_depth_keep_their_order)
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

TEST_P(TransparencyOf, sorted_faces_compare_by_eye_space_depth_across_projections)
{
    // The same depth on the screen means different distances in the two passes: distance decides the order.
    StartPicture(canvas_);
    const auto draw = [&](const PassState& pass, float z, std::uint32_t color)
    { DrawPass(pass, {Unlit(Item(Quad(-50, -50, 50, 50, z, color)))}); };
    const CameraPlace place{{0, 0, 0}, {0, 0, 1}, 1, 1, 10};
    // Perspective: distance 4 is depth 0.83. Orthographic: distance 6 is depth 0.56, nearer on the screen.
    draw(PerspectivePass(Side, Side, place), 4, HalfRed);
    draw(OrthographicPass(Side, Side, place), 6, HalfGreen);
    driver_->Finish();
    ExpectColor(canvas_, 255 * Half, 255 * Half * (1 - Half), 0);
}

TEST_P(TransparencyOf, sorted_faces_are_finished_by_clear_with_the_old_depths)
{
    StartPicture(canvas_);
    DrawOnePass(Transparency::Sorted, {Pane(0.4F, HalfRed), Pane(0.3F, 0xFF0000FF)});
    driver_->Clear({false, true}, canvas_.View().Bounds(), 0);
    driver_->Finish();
    ExpectColor(canvas_, 0, 0, 255);
}

TEST_P(TransparencyOf, sorted_faces_are_finished_by_a_new_target_in_the_old_one)
{
    Canvas second{Side, Side};
    StartPicture(canvas_);
    DrawOnePass(Transparency::Sorted, {Pane(0.4F, HalfRed)});
    StartPicture(second);
    driver_->Finish();
    ExpectColor(canvas_, 255 * Half, 0, 0);
    EXPECT_EQ(second.CountNot(0), 0);
}

TEST_P(TransparencyOf, sorted_faces_are_drawn_with_the_state_of_their_own_pass)
{
    StartPicture(canvas_);
    PassState pass = PixelPass(Side, Side);
    pass.scissor = {0, 0, 4, 4};
    pass.fog = {FogMode::Linear, {0, 0, 1}, -1, 0, 0}; // everything is hidden by fog
    DrawPass(pass, {Pane(0.5F, HalfRed)});
    DrawPass(PixelPass(Side, Side), {});
    driver_->Finish();
    EXPECT_EQ(canvas_.CountNot(0), 16);
    EXPECT_NEAR(ChannelsOf(canvas_.At(1, 1)).blue, 128, 1);
}

TEST_P(TransparencyOf, lines_and_points_are_blended_at_once_and_hide_what_is_farther)
{
    // A pixel in the middle of a side, and a corner.
    for (const auto& [fill, x] : {std::pair{FillStyle::Wireframe, 7}, std::pair{FillStyle::Points, 2}})
    {
        const auto face = OneFace({{2, 2, 0.3F}, {12, 2, 0.3F}, {2, 12, 0.3F}}, HalfRed);
        const DrawItem lines = Filled(Unlit(Item(face)), fill);
        // Drawn first, they write depth: the wall behind them is hidden even though they are translucent.
        for (const Transparency mode : {Transparency::Blended, Transparency::Sorted})
        {
            EXPECT_EQ(Draw(mode, {lines, Pane(0.6F, 0xFF00FF00)}).At(x, 2), 0x800000U);
            EXPECT_EQ(Draw(mode, {Pane(0.1F, 0xFF00FF00), lines}).CountNot(0x00FF00), 0) << "nothing shines through";
        }
    }
}

} // namespace

} // namespace lumora::test
