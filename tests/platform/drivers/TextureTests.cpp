// Texture filters against pictures that are known beforehand.
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace lumora::test
{

namespace
{

constexpr std::uint32_t White = 0xFFFFFFFF;
constexpr std::uint32_t Black = 0xFF000000;
constexpr std::array AllFilters{TextureFilter::Nearest,          TextureFilter::Linear,
                                TextureFilter::MipNearest,       TextureFilter::MipLinear,
                                TextureFilter::LinearMipNearest, TextureFilter::LinearMipLinear};

class Texture : public EveryDriver
{
protected:
    /// The texture over `pixelsWide` by `pixelsHigh` pixels from the top-left one on, repeated as often as told. The
    /// picture ends with the last pixel that is covered.
    Canvas Show(const std::shared_ptr<const TextureImage>& texture, TextureFilter filter, double pixelsWide,
                double pixelsHigh, float repeat = 1, std::uint32_t color = White)
    {
        const int width = std::max(1, static_cast<int>(pixelsWide));
        const int height = std::max(1, static_cast<int>(pixelsHigh));
        PassState pass = PixelPass(width, height);
        pass.filter = filter;
        const auto mesh = Quad(-0.5F, static_cast<float>(pixelsHigh - 0.5), static_cast<float>(pixelsWide - 0.5), -0.5F,
                               0.5F, color, texture, repeat);
        Canvas canvas{width, height};
        DrawPicture(*driver_, canvas, pass, {Unlit(Item(mesh))}, 0x00FF00);
        return canvas;
    }
};
LUMORA_FOR_EVERY_DRIVER(Texture);

TEST_P(Texture, shows_every_texel_times_the_vertex_color_at_its_own_size)
{
    const auto texture = Ramp(13, 9);
    for (const TextureFilter filter : AllFilters)
    {
        const Canvas canvas = Show(texture, filter, 13, 9, 1, 0xFFFF80FF);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 13; ++x)
            {
                const Channels color = ChannelsOf(canvas.At(x, y));
                const Channels texel = ChannelsOf(texture->pixels[y * 13 + x]);
                ASSERT_NEAR(color.red, texel.red, 1) << x << ", " << y << " filter " << static_cast<int>(filter);
                ASSERT_NEAR(color.green, texel.green * 128 / 255.0, 1)
                    << x << ", " << y << " filter " << static_cast<int>(filter);
            }
    }
}

TEST_P(Texture, nearest_repeats_texels_and_linear_blends_them_when_enlarged)
{
    const auto texture = MakeTexture(2, 1, {Black, White});
    const Canvas nearest = Show(texture, TextureFilter::Nearest, 16, 1);
    const Canvas linear = Show(texture, TextureFilter::Linear, 16, 1);
    for (int x = 0; x < 16; ++x)
    {
        EXPECT_EQ(nearest.At(x, 0), x < 8 ? 0U : 0xFFFFFFU) << x;
        // Texel centres are at 4 and 12 pixels; beyond them the texture wraps to the other one.
        const double centre = x + 0.5;
        const double white = centre < 4 ? (4 - centre) / 8 : centre < 12 ? (centre - 4) / 8 : 1 - (centre - 12) / 8;
        EXPECT_NEAR(ChannelsOf(linear.At(x, 0)).green, 255 * white, 1) << x;
    }
}

/// How far from grey the pixels are at most.
int Contrast(const Canvas& canvas)
{
    int contrast = 0;
    for (int y = 0; y < canvas.Height(); ++y)
        for (int x = 0; x < canvas.Width(); ++x)
            contrast = std::max(contrast, std::abs(ChannelsOf(canvas.At(x, y)).green - 128));
    return contrast;
}

TEST_P(Texture, chooses_the_level_by_the_longer_derivative_and_rounds_it)
{
    // Cells of 4 texels keep full contrast up to level 2 and are grey from level 3 on.
    const auto texture = Checkerboard(64, 4, White, Black);
    const auto contrastAt = [&](TextureFilter filter, double levelX, double levelY)
    { return Contrast(Show(texture, filter, 64 / std::exp2(levelX), 64 / std::exp2(levelY))); };
    EXPECT_GE(contrastAt(TextureFilter::MipNearest, 2.4, 2.4), 127);
    EXPECT_LE(contrastAt(TextureFilter::MipNearest, 2.6, 2.6), 1);
    EXPECT_LE(contrastAt(TextureFilter::MipNearest, 1, 3), 1) << "y is minified more";
    EXPECT_LE(contrastAt(TextureFilter::MipNearest, 3, 1), 1) << "x is minified more";
    EXPECT_LE(contrastAt(TextureFilter::MipLinear, 2.6, 2.6), 1);
    EXPECT_NEAR(contrastAt(TextureFilter::LinearMipNearest, 2.25, 2.25), 128 * 0.75, 2);
    EXPECT_NEAR(contrastAt(TextureFilter::LinearMipNearest, 2.5, 2.5), 128 * 0.5, 2);
    EXPECT_GE(contrastAt(TextureFilter::MipNearest, -3, -3), 127) << "enlarged";
    for (auto filter = std::ranges::find(AllFilters, TextureFilter::MipNearest); filter != AllFilters.end(); ++filter)
        EXPECT_LE(contrastAt(*filter, 6, 6), 1) << "the coarsest level";
}

TEST_P(Texture, averages_levels_of_odd_sizes_without_the_last_texel)
{
    // 3 by 2: the half is 1 by 1, the mean of four, 63.75.
    const auto texture = MakeTexture(3, 2, {Black, Black, White, Black, White, White});
    EXPECT_EQ(Show(texture, TextureFilter::MipNearest, 1, 1).At(0, 0), 0x404040U);
}

TEST_P(Texture, adds_the_highlight_after_the_texel)
{
    // A black texture shows nothing of the diffuse light and all of the highlight.
    MeshMaker maker;
    maker.Group({4, {1, 0.5F, 0}}, MakeTexture(1, 1, {Black}));
    const Vector towardsEye{0, 0, -1};
    maker.Face(
        {{{0, 0, 0.5F}, 0, 0, towardsEye}, {{40, 0, 0.5F}, 0, 0, towardsEye}, {{0, 40, 0.5F}, 0, 0, towardsEye}});
    PassState pass = PixelPass(16, 16);
    const std::vector<LightState> lights{AmbientLight(1), DirectionalLight({0, 0, 1})};
    pass.lights = lights;
    Canvas canvas{16, 16};
    DrawPicture(*driver_, canvas, pass, {Item(maker.Make())});
    EXPECT_EQ(canvas.At(8, 8), 0xFF8000U);
}

TEST_P(Texture, is_mapped_in_perspective)
{
    // A floor from depth 2 to depth 8: v is linear in depth, which is 1 / (distance below the horizon).
    constexpr int Rows = 200;
    PassState pass = PerspectivePass(Rows, Rows, {{0, 1, 0}, {0, 1, 1}, 1, 1, 50});
    pass.filter = TextureFilter::Nearest;
    MeshMaker maker;
    maker.Group({}, Ramp(1, 256));
    maker.Face({{{-50, 0, 8}, 0, 0.75F}, {{50, 0, 8}, 0, 0.75F}, {{50, 0, 2}, 0, 0.25F}, {{-50, 0, 2}, 0, 0.25F}});
    Canvas canvas{Rows, Rows};
    DrawPicture(*driver_, canvas, pass, {Unlit(Item(maker.Make()))});
    for (int y = 115; y < 148; ++y)
    {
        const double part = (1 / (2 * (y + 0.5) / Rows - 1) - 2) / 6;
        EXPECT_NEAR(ChannelsOf(canvas.At(100, y)).green, std::floor(256 * (0.25 + 0.5 * part)), 2) << y;
    }
}

TEST_P(Texture, survives_images_and_coordinates_that_make_no_sense)
{
    auto empty = std::make_shared<TextureImage>();
    EXPECT_EQ(Show(empty, TextureFilter::LinearMipLinear, 4, 4).At(1, 1), 0xFFFFFFU) << "drawn as no texture";
    auto tooShort = std::make_shared<TextureImage>(*Ramp(8, 8));
    tooShort->identity += 1U << 30;
    tooShort->pixels.resize(3);
    EXPECT_EQ(Show(tooShort, TextureFilter::Linear, 4, 4).At(1, 1), 0xFFFFFFU) << "drawn as no texture";
    for (const float repeat : {1e30F, INFINITY, NAN})
        for (const TextureFilter filter : AllFilters)
            Show(Ramp(8, 8), filter, 8, 8, repeat);
}

} // namespace

} // namespace lumora::test
