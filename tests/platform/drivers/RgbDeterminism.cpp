// The RGB driver's pictures are the same to the byte, however many threads draw and whatever instructions they use.
#include "platform/drivers/DriverScenes.h"
#include "platform/drivers/TestMeshes.h"
#include "platform/drivers/rgb/RgbDriver.h"

#include <gtest/gtest.h>
#include <ostream>

namespace lumora::test
{

namespace
{

constexpr int Width = 500; // neither whole tiles nor whole vectors
constexpr int Height = 390;

/// Large enough that helpers take part.
struct LargeScene
{
    std::string name;
    std::vector<DrawItem> items;
    Transparency transparency = Transparency::Sorted;
    TextureFilter filter = TextureFilter::Linear;
    FogMode fog = FogMode::None;

    friend std::ostream& operator<<(std::ostream& out, const LargeScene& self) { return out << self.name; }
};

DrawItem Placed(std::shared_ptr<const DrawMesh> mesh, Double3 place = {}, FillStyle fill = FillStyle::Solid)
{
    return Filled(Item(std::move(mesh), Matrix4::FromAxes({0.8, 0, -0.6}, {0, 1, 0}, {0.6, 0, 0.8}, place)), fill);
}

/// Two colors by turns, in a few distances, often in the same one.
std::vector<DrawItem> Panes(int count)
{
    const auto pane = [](std::uint32_t color) {
        return OneFace({{-0.4F, -0.4F, 0}, {0, 0.4F, 0}, {0.4F, -0.4F, 0}}, color);
    };
    const std::shared_ptr<const DrawMesh> colors[] = {pane(0x40FF2010), pane(0x4010FF20)};
    std::vector<DrawItem> items;
    for (int i = 0; i < count; ++i)
        items.push_back(Placed(colors[i % 2], {0.2 * (i % 11) - 1, 0, i % 3 == 0 ? 0.3 : 0.1 * (i % 7)}));
    return items;
}

/// Side by side, at distances so near each other that hardly any depth between the nearest and the farthest is free.
std::vector<DrawItem> Tiles(int columns, int rows)
{
    constexpr double Step = 1e-6;
    const Double3 ahead = Normalized(Double3{0, -0.5, 4}); // as the camera looks
    const Double3 up = Normalized(Double3{0, 4, 0.5});
    const auto tile = OneFace({{-0.03F, -0.03F, 0}, {0, 0.03F, 0}, {0.03F, -0.03F, 0}}, 0x80FFC040);
    std::vector<DrawItem> items;
    for (int i = 0; i < columns * rows; ++i)
        items.push_back(Placed(tile, Double3{0.05 * (i % columns - columns / 2), 0, 0} +
                                         up * (0.05 * (i / columns - rows / 2)) + ahead * (Step * (i * 7 % 60))));
    return items;
}

std::vector<LargeScene> LargeScenes()
{
    const SurfaceMaterial shiny{20};
    const auto sphere = Sphere(1.5F, 100, 100, 0xFFB09070, shiny);
    const auto textured = Sphere(1.5F, 100, 100, 0xFFFFFFFF, shiny, Ramp(37, 50, 0x40));
    const auto opaque = Confetti(15000, 4, 1.5F, 0xFF, 1);
    const auto glass = Confetti(15000, 4, 0.7F, 0x60, 2);
    const auto checks = Checkerboard(64, 8, 0xFF000000, 0xFFFFFFFF);
    const auto glassBall = Sphere(1.8F, 60, 60, 0x80FFFFFF, shiny, Ramp(37, 50, 0x40));
    constexpr FillStyle Lines = FillStyle::Wireframe;
    constexpr FillStyle Points = FillStyle::Points;
    using enum Transparency;
    using enum TextureFilter;
    return {
        {"smooth", {Placed(sphere), Placed(opaque)}},
        {"dense", {Placed(Sphere(1.5F, 400, 400, 0xFFB09070, shiny))}},
        {"flat_in_fog", {Flat(Placed(sphere)), Flat(Placed(opaque))}, Sorted, Linear, FogMode::Exponential},
        {"sorted", {Placed(sphere), Placed(glass)}},
        {"sorted_at_few_distances", Panes(2000)},
        {"sorted_hardly_apart", Tiles(50, 40)},
        {"blended", {Placed(sphere), Placed(glass)}, Blended},
        {"stippled_mips", {Placed(textured), Placed(glass)}, Stippled, LinearMipLinear},
        {"mips_of_glass", {Placed(textured), Placed(Floor(30, 70, 0xFFFFFFFF, checks), {0, -1, 0})}, Sorted, MipLinear},
        {"wireframe", {Placed(sphere, {}, Lines), Placed(glass, {}, Lines)}, Blended},
        {"textured_glass_in_fog", {Placed(sphere), Placed(glassBall)}, Blended, Linear, FogMode::Linear},
        {"points_in_fog", {Placed(sphere, {}, Points), Placed(opaque, {}, Points)}, Sorted, Linear, FogMode::Linear},
    };
}

Canvas Drawn(const LargeScene& scene, const RgbOptions& options)
{
    const std::unique_ptr<Driver> driver = MakeRgbDriver(options);
    Canvas canvas{Width, Height};
    PassState pass =
        PerspectivePass(Width, Height, {.eye = {0, 0.5, -4}, .target = {}, .field = 0.7, .front = 1, .back = 30});
    const Double3 toCentre = Normalized(Double3{-2, -3, 4});
    const std::vector<LightState> lights{AmbientLight(0.2F),
                                         DirectionalLight({1, -1, 1}),
                                         {LightKind::Spot, {1, 1, 1}, {2, 3, -4}, toCentre, 50, 1, 0, 0, 0.3, 1}};
    pass.lights = lights;
    pass.transparency = scene.transparency;
    pass.filter = scene.filter;
    pass.viewDependentSpecular = true;
    pass.cull = CullMode::CounterClockwise;
    pass.fog = {scene.fog, {0.5F, 0.6F, 0.7F}, 3, 9, 0.2};
    DrawPicture(*driver, canvas, pass, scene.items, 0x102030);
    return canvas;
}

std::vector<RgbOptions> Variants()
{
    std::vector<RgbOptions> variants;
    for (const SimdLevel level : AvailableSimdLevels())
        for (const int threads : {1, 2, 4})
            variants.push_back({threads, false, level});
    variants.back().limits = {1U << 10, std::size_t{1} << 30, std::size_t{1} << 14, 0}; // many rounds and batches
    variants.push_back(variants.back());
    variants.back().threads = 1;
    return variants;
}

class RgbDeterminism : public ::testing::TestWithParam<LargeScene>
{
};

TEST_P(RgbDeterminism, draws_the_same_bytes_with_any_threads_and_instructions)
{
    const Canvas expected = Drawn(GetParam(), {1, false, SimdLevel::Plain});
    EXPECT_GT(expected.CountNot(0x102030), Width * Height / 20);
    for (const RgbOptions& options : Variants())
        EXPECT_EQ(CountDifferent(Drawn(GetParam(), options), expected), 0)
            << options.threads << " threads, level " << static_cast<int>(options.simd);
}

INSTANTIATE_TEST_SUITE_P(Scenes, RgbDeterminism, ::testing::ValuesIn(LargeScenes()),
                         [](const auto& suite) { return suite.param.name; });

class RgbLevels : public ::testing::TestWithParam<DriverScene>
{
};

TEST_P(RgbLevels, draw_the_same_bytes)
{
    const Canvas expected = DrawScene(*MakeRgbDriver({1, false, SimdLevel::Plain}), GetParam());
    for (const SimdLevel level : AvailableSimdLevels())
        EXPECT_EQ(CountDifferent(DrawScene(*MakeRgbDriver({1, false, level}), GetParam()), expected), 0)
            << "level " << static_cast<int>(level);
}

INSTANTIATE_TEST_SUITE_P(Scenes, RgbLevels, ::testing::ValuesIn(DriverScenes()),
                         [](const auto& suite) { return suite.param.name; });

} // namespace

} // namespace lumora::test
