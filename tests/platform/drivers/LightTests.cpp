// Lighting and fog against their closed forms. Faces are flat, so the first corner's light is the whole face's.
#include "platform/drivers/DriversUnderTest.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"
#include "platform/drivers/reference/ReferenceDriver.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace lumora::test
{

namespace
{

constexpr int Side = 16;
constexpr double Degree = std::numbers::pi / 180;

class Light : public EveryDriver
{
protected:
    /// The color in the middle of a face that looks at the camera (towards -z) from depth 0.5; its first corner,
    /// where it is lit, is at the origin of x and y.
    Channels LitBy(const std::vector<LightState>& lights, SurfaceMaterial material = {},
                   std::uint32_t color = 0xFFFFFFFF)
    {
        MeshMaker maker;
        maker.color = color;
        maker.Group(material);
        const float far = 40;
        maker.Polygon({{0, 0, 0.5F}, {far, 0, 0.5F}, {far, far, 0.5F}, {0, far, 0.5F}});
        auto mesh = std::make_shared<DrawMesh>(*maker.Make());
        mesh->faceNormalZ = {-1}; // y goes down in this pass, so the computed one points away
        pass_.lights = lights;
        Canvas canvas{Side, Side};
        DrawPicture(*driver_, canvas, pass_, {Flat(Item(mesh))});
        return ChannelsOf(canvas.At(8, 8));
    }

    PassState pass_ = PixelPass(Side, Side);
};
LUMORA_FOR_EVERY_DRIVER(Light);

LightState PointAt(Double3 position, double constant = 1, double linear = 0, double quadratic = 0)
{
    return {LightKind::Point, {1, 1, 1}, position, {}, 8, constant, linear, quadratic};
}

TEST_P(Light, falls_off_with_the_cosine_of_its_angle)
{
    for (const double angle : {0.0, 20.0, 45.0, 60.0, 85.0, 90.0, 120.0, 180.0})
    {
        const Double3 direction{std::sin(angle * Degree), 0, std::cos(angle * Degree)};
        const double expected = 255 * std::max(0.0, std::cos(angle * Degree));
        EXPECT_NEAR(LitBy({DirectionalLight(direction)}).green, expected, 1) << angle;
    }
}

TEST_P(Light, multiplies_the_vertex_color_and_adds_the_emissive_one_up_to_full)
{
    const SurfaceMaterial material{0, {}, {0.1F, 0, 0.25F}};
    const Channels color =
        LitBy({AmbientLight(0.25F), DirectionalLight({0, 0, 1}, {0.5F, 5, 0})}, material, 0xFF80FF40);
    EXPECT_NEAR(color.red, 0.1 * 255 + 128 * 0.75, 1);
    EXPECT_EQ(color.green, 255);
    EXPECT_NEAR(color.blue, 0.25 * 255 + 64 * 0.25, 1);
}

TEST_P(Light, weakens_with_distance_and_ends_at_its_range)
{
    for (const double distance : {0.5, 1.0, 3.0, 7.0, 9.0})
    {
        const double expected = distance > 8 ? 0 : 255 / (1 + 0.5 * distance + 0.25 * distance * distance);
        EXPECT_NEAR(LitBy({PointAt({0, 0, 0.5 - distance}, 1, 0.5, 0.25)}).green, expected, 1) << distance;
    }
    EXPECT_EQ(LitBy({PointAt({0, 0, -3}, 0)}).green, 255) << "no attenuation at all is full light";
    EXPECT_EQ(LitBy({PointAt({0, 0, 0.5})}).green, 0) << "a light in the surface itself has no direction";
}

TEST_P(Light, of_a_spot_falls_off_between_its_cones)
{
    for (const double penumbra : {60.0, 20.0}) // the second one ends sharply
        for (const double angle : {0.0, 9.0, 11.0, 15.0, 22.5, 29.0, 31.0, 80.0})
        {
            // Straight above the corner, turned away from it by `angle`: the incidence stays 1.
            LightState light = PointAt({0, 0, -4});
            light.kind = LightKind::Spot;
            light.direction = {0, std::sin(angle * Degree), std::cos(angle * Degree)};
            light.umbra = 20 * Degree;
            light.penumbra = penumbra * Degree;
            const double half = penumbra / 2;
            const double expected = angle <= 10 ? 255 : angle >= half ? 0 : 255 * (half - angle) / (half - 10);
            EXPECT_NEAR(LitBy({light}).green, expected, 1) << angle << " of " << penumbra;
        }
}

TEST_P(Light, makes_a_highlight_that_is_brightest_in_the_mirror_direction)
{
    SurfaceMaterial material{10, {0.5F, 1, 0.25F}};
    for (const double angle : {0.0, 15.0, 30.0, 60.0})
    {
        // Seen along the normal, the half-way vector is at half the light's angle.
        const Double3 direction{std::sin(angle * Degree), 0, std::cos(angle * Degree)};
        const double highlight = std::pow(std::cos(angle / 2 * Degree), 10);
        const Channels color = LitBy({DirectionalLight(direction)}, material, 0xFF000000);
        EXPECT_NEAR(color.red, 255 * 0.5 * highlight, 1) << angle;
        EXPECT_NEAR(color.green, 255 * highlight, 1) << angle;
        EXPECT_NEAR(color.blue, 255 * 0.25 * highlight, 1) << angle;
    }
    EXPECT_EQ(LitBy({DirectionalLight({0, 0, -1})}, material, 0xFF000000).green, 0) << "lit from behind";
    EXPECT_EQ(LitBy({AmbientLight(1)}, material, 0xFF000000).green, 0) << "ambient light has no highlight";
    material.power = 0;
    EXPECT_EQ(LitBy({DirectionalLight({0, 0, 1})}, material, 0xFF000000).green, 0);
}

TEST_P(Light, highlights_follow_the_eye_when_asked_to)
{
    const SurfaceMaterial material{20};
    pass_.orthographic = false;
    pass_.eye = {3, 0, -3.5}; // 36.87 degrees off the normal at the first corner
    const double offAxis = std::atan2(3.0, 4.0);
    const LightState light = DirectionalLight({0, 0, 1});
    EXPECT_EQ(LitBy({light}, material, 0xFF000000).green, 255) << "along the view direction";
    pass_.viewDependentSpecular = true;
    EXPECT_NEAR(LitBy({light}, material, 0xFF000000).green, 255 * std::pow(std::cos(offAxis / 2), 20), 1);
    pass_.orthographic = true;
    EXPECT_EQ(LitBy({light}, material, 0xFF000000).green, 255) << "an orthographic eye is infinitely far";
}

TEST_P(Light, turns_normals_with_a_squashed_frame)
{
    // A slope of 45 degrees, pressed to a quarter of its depth: its normal (0, 1, -1) becomes (0, 1, -4).
    DrawItem item = Item(OneFace({{-20, 40, 20}, {20, 40, 20}, {20, 0, -20}, {-20, 0, -20}}));
    item.world.m[2][2] = 0.25;
    PassState pass = OrthographicPass(Side, Side, {{0, 10, -50}, {0, 10, 0}, 4});
    const std::vector<LightState> lights{DirectionalLight({0, 0, 1})};
    pass.lights = lights;
    for (const bool isMirrored : {false, true})
    {
        Canvas canvas{Side, Side};
        item.world.m[0][0] = isMirrored ? -1 : 1;
        DrawPicture(*driver_, canvas, pass, {item});
        const double facing = 4 / std::sqrt(17);
        EXPECT_NEAR(ChannelsOf(canvas.At(8, 8)).green, 255 * facing, 1) << isMirrored;
    }
}

// --- fog ---

TEST_P(Light, fog_hides_by_eye_space_depth)
{
    const Vector fogColor{0.2F, 0.4F, 0.6F};
    const std::vector<FogState> fogs{{FogMode::None, fogColor, 2, 10, 0.2},
                                     {FogMode::Linear, fogColor, 2, 10, 0.2},
                                     {FogMode::Exponential, fogColor, 2, 10, 0.2},
                                     {FogMode::ExponentialSquared, fogColor, 2, 10, 0.2},
                                     {FogMode::Linear, fogColor, 5, 5, 0}}; // a wall
    for (const double depth : {1.5, 4.0, 7.0, 12.0})
    {
        const std::array<double, 5> visible{1, std::clamp((10 - depth) / 8, 0.0, 1.0), std::exp(-0.2 * depth),
                                            std::exp(-0.04 * depth * depth), depth < 5 ? 1.0 : 0.0};
        for (std::size_t i = 0; i < fogs.size(); ++i)
        {
            const DrawItem item = Unlit(Item(Quad(-99, -99, 99, 99, static_cast<float>(depth), 0xFFFF8000)));
            for (const bool isOrthographic : {false, true})
            {
                const CameraPlace place{{0, 0, 0}, {0, 0, 1}, 1, 1, 50};
                PassState pass =
                    isOrthographic ? OrthographicPass(Side, Side, place) : PerspectivePass(Side, Side, place);
                pass.fog = fogs[i];
                Canvas canvas{Side, Side};
                DrawPicture(*driver_, canvas, pass, {item});
                const Channels color = ChannelsOf(canvas.At(1, 14)); // in a corner: depth, not distance, counts
                EXPECT_NEAR(color.red, 255 * visible[i] + 51 * (1 - visible[i]), 1) << depth << " mode " << i;
                EXPECT_NEAR(color.green, 128 * visible[i] + 102 * (1 - visible[i]), 1) << depth << " mode " << i;
                EXPECT_NEAR(color.blue, 153 * (1 - visible[i]), 1) << depth << " mode " << i;
            }
        }
    }
}

TEST(MonochromeLight, takes_the_luminance_of_every_light_and_leaves_surfaces_colored)
{
    PassState pass = PixelPass(Side, Side);
    LightState ambient = AmbientLight(0);
    ambient.color = {0, 0, 0.5F};
    const std::vector<LightState> lights{ambient, DirectionalLight({0, 0, 1}, {1, 0, 0})};
    pass.lights = lights;
    auto mesh = std::make_shared<DrawMesh>(*Quad(-9, 90, 90, -9, 0.5F, 0xFFFF8000));
    mesh->faceNormalZ = {-1};
    Canvas canvas{Side, Side};
    DrawPicture(*MakeReferenceDriver({true}), canvas, pass, {Flat(Item(mesh))});
    const double white = 0.299 + 0.5 * 0.114;
    EXPECT_NEAR(ChannelsOf(canvas.At(8, 8)).red, 255 * white, 1);
    EXPECT_NEAR(ChannelsOf(canvas.At(8, 8)).green, 128 * white, 1);
    EXPECT_EQ(ChannelsOf(canvas.At(8, 8)).blue, 0);
}

} // namespace

} // namespace lumora::test
