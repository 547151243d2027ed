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

bool UsesMips(TextureFilter filter)
{
    return filter != TextureFilter::Nearest && filter != TextureFilter::Linear;
}

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

TEST_P(Texture, shows_every_texel_as_it_is_at_its_own_size)
{
    const auto texture = Ramp(13, 9);
    for (const TextureFilter filter : AllFilters)
    {
        const Canvas canvas = Show(texture, filter, 13, 9);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 13; ++x)
            {
                const Channels color = ChannelsOf(canvas.At(x, y));
                const Channels texel = ChannelsOf(texture->pixels[y * 13 + x]);
                ASSERT_NEAR(color.red, texel.red, 1) << x << ", " << y << " filter " << static_cast<int>(filter);
                ASSERT_NEAR(color.green, texel.green, 1) << x << ", " << y << " filter " << static_cast<int>(filter);
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

TEST_P(Texture, wraps_in_both_directions)
{
    const auto texture = Checkerboard(4, 1, 0xFFFF0000, 0xFF0000FF);
    const Canvas canvas = Show(texture, TextureFilter::Nearest, 12, 12, 3);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 12; ++x)
            ASSERT_EQ(canvas.At(x, y), (x + y) % 2 == 0 ? 0xFF0000U : 0x0000FFU) << x << ", " << y;
}

TEST_P(Texture, mip_filters_turn_a_fine_checkerboard_grey)
{
    const auto texture = Checkerboard(64, 1, White, Black);
    for (const TextureFilter filter : AllFilters)
    {
        const Canvas canvas = Show(texture, filter, 8, 8);
        for (int x = 0; x < 8; ++x)
        {
            const int grey = ChannelsOf(canvas.At(x, 3)).green;
            if (UsesMips(filter))
            {
                EXPECT_NEAR(grey, 128, 1) << static_cast<int>(filter);
            }
            else if (filter == TextureFilter::Nearest)
            {
                EXPECT_TRUE(grey == 0 || grey == 255) << grey;
            }
        }
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
    EXPECT_LE(contrastAt(TextureFilter::LinearMipLinear, 6, 6), 1) << "the coarsest level";
}

TEST_P(Texture, averages_levels_of_odd_sizes_without_the_last_texel)
{
    // 3 by 1: the half is 1 by 1, the mean of the first two.
    const auto texture = MakeTexture(3, 1, {0xFF000000, 0xFF640000, 0xFFFF0000});
    const Canvas canvas = Show(texture, TextureFilter::MipNearest, 1, 1);
    EXPECT_NEAR(ChannelsOf(canvas.At(0, 0)).red, 50, 1);
}

TEST_P(Texture, multiplies_the_vertex_color)
{
    const auto texture = MakeTexture(1, 1, {0xFF80FF40});
    for (const TextureFilter filter : AllFilters)
    {
        const Channels color = ChannelsOf(Show(texture, filter, 5, 5, 1, 0xFFFF8040).At(2, 2));
        EXPECT_NEAR(color.red, 128, 1);
        EXPECT_NEAR(color.green, 128, 1);
        EXPECT_NEAR(color.blue, 16, 1);
    }
}

TEST_P(Texture, adds_the_highlight_after_the_texel)
{
    // A black texture shows nothing of the diffuse light and all of the highlight.
    SurfaceMaterial material;
    material.power = 4;
    material.specular = {1, 0.5F, 0};
    MeshMaker maker;
    maker.Group(material, MakeTexture(1, 1, {Black}));
    const Vector towardsEye{0, 0, -1};
    maker.Face({{{0, 0, 0.5F}, 0, 0, towardsEye, {}},
                {{20, 0, 0.5F}, 1, 0, towardsEye, {}},
                {{20, 20, 0.5F}, 1, 1, towardsEye, {}},
                {{0, 20, 0.5F}, 0, 1, towardsEye, {}}});
    PassState pass = PixelPass(16, 16);
    const std::vector<LightState> lights{AmbientLight(1), DirectionalLight({0, 0, 1})};
    pass.lights = lights;
    Canvas canvas{16, 16};
    DrawPicture(*driver_, canvas, pass, {Item(maker.Make())});
    EXPECT_EQ(canvas.At(8, 8), 0xFF8000U);
}

TEST_P(Texture, is_mapped_in_perspective_as_the_colors_between_corners_are)
{
    // A floor from depth 2 to depth 8: v and color are linear in depth, which is 1 / (distance below the horizon).
    constexpr int Rows = 200;
    PassState pass = PerspectivePass(Rows, Rows, {{0, 1, 0}, {0, 1, 1}, 1, 1, 50});
    pass.filter = TextureFilter::Nearest;
    for (const auto& texture : {Ramp(1, 256), std::shared_ptr<const TextureImage>{}})
    {
        MeshMaker maker;
        maker.Group({}, texture);
        const std::uint32_t nearColor = texture ? White : Black;
        maker.Face({{{-50, 0, 8}, 0, 0.75F, {}, White},
                    {{50, 0, 8}, 0, 0.75F, {}, White},
                    {{50, 0, 2}, 0, 0.25F, {}, nearColor},
                    {{-50, 0, 2}, 0, 0.25F, {}, nearColor}});
        Canvas canvas{Rows, Rows};
        DrawPicture(*driver_, canvas, pass, {Unlit(Item(maker.Make()))}, 0x0000FF);
        for (int y = 115; y < 148; ++y)
        {
            const double part = (1 / (2 * (y + 0.5) / Rows - 1) - 2) / 6;
            const double expected = texture ? std::floor(256 * (0.25 + 0.5 * part)) : 255 * part;
            EXPECT_NEAR(ChannelsOf(canvas.At(100, y)).green, expected, texture ? 2 : 1) << y;
        }
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
