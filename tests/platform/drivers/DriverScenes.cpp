// Scenes in which two drivers must draw the same picture, and how far they may differ.
#include "platform/drivers/DriverScenes.h"

#include "platform/drivers/TestMeshes.h"

#include <cmath>
#include <numbers>

namespace lumora::test
{

namespace
{

using Mesh = std::shared_ptr<const DrawMesh>;
using Passes = std::vector<ScenePass>;

Matrix4 MovedTo(Double3 place)
{
    return Matrix4::FromAxes({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, place);
}

/// About y, then about x, by odd angles so that no edge falls together with a row of pixels.
Matrix4 Turned(double aboutY, double aboutX, Double3 place = {})
{
    const Matrix4 y = Matrix4::FromAxes({std::cos(aboutY), 0, -std::sin(aboutY)}, {0, 1, 0},
                                        {std::sin(aboutY), 0, std::cos(aboutY)}, {});
    const Matrix4 x = Matrix4::FromAxes({1, 0, 0}, {0, std::cos(aboutX), std::sin(aboutX)},
                                        {0, -std::sin(aboutX), std::cos(aboutX)}, place);
    return y * x;
}

ScenePass Perspective(const CameraPlace& place = {})
{
    ScenePass pass{PerspectivePass(SceneWidth, SceneHeight, place), {}, {}};
    pass.lights = {AmbientLight(0.2F), DirectionalLight({0.4, -0.8, 0.7}, {0.9F, 0.85F, 0.8F})};
    pass.state.cull = CullMode::CounterClockwise;
    return pass;
}

ScenePass Orthographic(CameraPlace place = {})
{
    ScenePass pass = Perspective(place);
    place.field = 2.6;
    pass.state = OrthographicPass(SceneWidth, SceneHeight, place);
    pass.state.cull = CullMode::CounterClockwise;
    return pass;
}

ScenePass TwoSided(ScenePass pass, Transparency transparency = PassState{}.transparency)
{
    pass.state.cull = CullMode::None;
    pass.state.transparency = transparency;
    return pass;
}

Passes With(ScenePass pass, std::vector<DrawItem> items)
{
    pass.items = std::move(items);
    return {std::move(pass)};
}

SurfaceMaterial Shiny(float power)
{
    return {power, {0.9F, 0.9F, 0.7F}, {0.03F, 0, 0.06F}};
}

Mesh Ball(float power = 0)
{
    return Sphere(1.5F, 16, 24, 0xFFC06040, Shiny(power));
}

LightState PointLight(Double3 place, Vector color)
{
    return {LightKind::Point, color, place, {}, 20, 0.4, 0.2, 0.1};
}

LightState SpotLight(Double3 place, Double3 direction, Vector color)
{
    return {LightKind::Spot, color, place, Normalized(direction), 20, 1, 0, 0, 0.5, 0.9};
}

// --- solid ---

Passes CubeScene(ScenePass pass, DrawItem (*style)(DrawItem))
{
    return With(std::move(pass), {style(Item(Cube(1.1F), Turned(0.61, 0.43)))});
}

Passes SphereScene(ScenePass pass, float power, bool gouraud)
{
    DrawItem ball = Item(Ball(power), Turned(0.2, 0.3));
    ball.gouraud = gouraud;
    return With(std::move(pass), {ball});
}

Passes InsideOfACube()
{
    ScenePass pass = Perspective();
    pass.state.cull = CullMode::Clockwise;
    return With(pass, {Item(Cube(1.4F), Turned(0.37, 0.29))});
}

Passes SquashedAndMirrored()
{
    Matrix4 squash = Matrix4::Identity();
    squash.m[0][0] = -1.5;
    squash.m[1][1] = 0.5;
    squash.m[2][0] = 0.4;
    return With(TwoSided(Perspective()), {Item(Ball(12), squash * Turned(0.3, 0.5))});
}

Passes TinyTriangles()
{
    return With(TwoSided(Perspective()), {Unlit(Item(Confetti(6000, 1.7F, 0.02F, 0xFF, 7)))});
}

Passes MiddlingTriangles()
{
    return With(TwoSided(Perspective()), {Flat(Unlit(Item(Confetti(400, 1.8F, 0.5F, 0xFF, 11))))});
}

/// Slivers of one and a half 1/256 by 1/256 pixel, the least that holds a pixel's centre inside, there at its centroid:
/// their weights change by hundreds of thousands from one pixel to the next.
Passes Needles()
{
    constexpr double Unit = 2.6 / (SceneWidth / 2.0) / 256; // 1/256 pixel of the orthographic pass
    MeshMaker maker;
    const auto needle = [&](int x, int y, Vector first, Vector second)
    {
        const Vector centre{static_cast<float>((x - (SceneWidth - 1) / 2.0) * 256 * Unit),
                            static_cast<float>(((SceneHeight - 1) / 2.0 - y) * 256 * Unit), 0};
        const auto unit = static_cast<float>(Unit);
        maker.Face({{centre + first * unit, 0, 0, {}, 0xFFFF2020},
                    {centre + second * unit, 0, 0, {}, 0xFF20FF20},
                    {centre - (first + second) * unit, 0, 0, {}, 0xFF4040FF}});
    };
    for (int i = 0; i < 800; ++i)
    {
        const float signX = i % 2 == 0 ? 1.0F : -1.0F;
        const float signY = i / 2 % 2 == 0 ? 1.0F : -1.0F;
        // Neighbours among Fibonacci's numbers: their determinant is 1 or -1.
        Vector first{2584 * signX, 1597 * signY, 0};
        Vector second{1597 * signX, 987 * signY, 0};
        if (i / 4 % 2 == 0)
            first = {first.y, first.x, 0}, second = {second.y, second.x, 0};
        needle(30 + i * 37 % 260, 30 + i * 53 % 180, first, second);
    }
    return With(TwoSided(Orthographic()), {Unlit(Item(maker.Make()))});
}

/// Floor, ceiling and wall, each one triangle that crosses all planes of the view volume and the eye's own.
Passes HugeTriangles()
{
    MeshMaker maker;
    const auto face = [&](Vector a, Vector b, Vector c) {
        maker.Face({{a, 0, 0, {}, 0xFFFF2020}, {b, 0, 0, {}, 0xFF20FF20}, {c, 0, 0, {}, 0xFF4040FF}});
    };
    face({-500, -1.2F, -300}, {0, -1.6F, 700}, {600, -0.9F, -250});
    face({-400, 1, 500}, {-300, 1.3F, -400}, {700, 2, 300});
    face({1.5F, -300, -200}, {2.5F, 400, -100}, {3, 20, 600});
    ScenePass pass = TwoSided(Perspective());
    pass.state.fog = {FogMode::Linear, {0.9F, 0.9F, 1}, 2, 60, 0};
    return With(pass, {Unlit(Item(maker.Make()))});
}

Passes OffCentreAndScissored()
{
    ScenePass pass = Perspective();
    pass.state.centreX = 110.5;
    pass.state.centreY = 90.25;
    pass.state.halfWidth = 100.5;
    pass.state.halfHeight = 80;
    pass.state.scissor = {35, 22, 301, 131};
    return With(pass, {Item(Ball(8), MovedTo({0.2, 0.1, -0.6})), Item(Cube(0.8F), Turned(0.6, 0.9, {1.3, 0.2, -1.1}))});
}

// --- light ---

Passes ManyLights()
{
    ScenePass pass = Perspective();
    pass.state.viewDependentSpecular = true;
    pass.lights = {AmbientLight(0.1F), DirectionalLight({1, -1, 0.4}, {0.5F, 0.1F, 0.1F}),
                   PointLight({-2, 2, -2}, {0.2F, 1.4F, 0.3F}),
                   SpotLight({2, 1, -4}, {-0.5, -0.2, 1}, {0.4F, 0.5F, 2})};
    return With(pass, {Item(Sphere(1.5F, 40, 60, 0xFFE0E0E0, Shiny(20)))});
}

Passes SpotOnFloor()
{
    ScenePass pass = Perspective({{0, 3, -6}, {0, 0, 0}});
    pass.lights = {AmbientLight(0.15F), SpotLight({-1, 3, -1}, {0.3, -1, 0.4}, {1, 0.9F, 0.6F}),
                   PointLight({2.5, 0.7, 1}, {0.3F, 0.4F, 1})};
    return With(pass, {Item(Floor(4, 60, 0xFFFFFFFF))});
}

// --- texture ---

Passes FloorToTheHorizon(TextureFilter filter)
{
    ScenePass pass = Perspective({{0.3, 1.2, -6}, {0.1, 0.2, 4}});
    pass.state.filter = filter;
    pass.state.cull = CullMode::None;
    return With(pass,
                {Unlit(Item(Floor(80, 20, 0xFFFFFFFF, Checkerboard(64, 8, 0xFFF0D060, 0xFF304080)), Turned(0.3, 0)))});
}

Passes TexturedBall()
{
    ScenePass pass = Perspective();
    pass.state.filter = TextureFilter::LinearMipLinear;
    return With(pass, {Item(Sphere(1.6F, 20, 30, 0xFFFFE0C0, Shiny(16), Checkerboard(128, 8, 0xFFFFFFFF, 0xFF2060A0)),
                            Turned(0.9, 0.4))});
}

Passes TexturedCubeCloseUp(TextureFilter filter)
{
    ScenePass pass = Perspective({{0.4, 0.5, -2.1}, {0, 0, 0}, 0.5, 0.6});
    pass.state.filter = filter;
    return With(pass, {Item(Cube(1, 0xFF, Ramp(7, 5)), Turned(0.5, 0.3))});
}

Passes TranslucentTexture(Transparency transparency)
{
    const ScenePass pass = TwoSided(Perspective(), transparency);
    return With(pass, {Item(Ball(), MovedTo({0, 0, 2})),
                       Unlit(Item(Cube(0.9F, 0xE0, Ramp(32, 32, 0x20)), Turned(0.6, 0.35, {0.2, 0, -0.5})))});
}

// --- transparency ---

/// Three panes through each other, a ball behind them, submitted nearest first.
Passes CrossedPanes(Transparency transparency)
{
    const ScenePass pass = TwoSided(Perspective(), transparency);
    const auto pane = [](std::uint32_t color, double aboutY, double aboutX, double z) {
        return Unlit(Item(Quad(-1.3F, -1.2F, 1.4F, 1.1F, 0, color), Turned(aboutY, aboutX, {0, 0, z})));
    };
    return With(pass, {pane(0x80FF4040, 0.5, 0.2, -0.8), pane(0x6040FF40, -0.7, 0.1, -0.3),
                       pane(0xA04040FF, 0.1, -0.6, 0.2), Item(Ball(), MovedTo({0.4, 0.2, 2.5}))});
}

Passes TranslucentConfetti()
{
    return With(TwoSided(Perspective()), {Item(Ball(10)), Unlit(Item(Confetti(250, 1.8F, 0.5F, 0x70, 5)))});
}

/// What waits from the first pass is sorted with the second pass's and drawn over both.
Passes PanesOverTwoPasses()
{
    ScenePass first = Perspective();
    first.items = {Unlit(Item(Quad(-1.5F, -0.5F, 1.2F, 1.2F, -1, 0x80FFFF20))), Item(Cube(0.7F), Turned(0.6, 0.5))};
    ScenePass second = Orthographic();
    second.items = {Unlit(Item(Quad(-0.6F, -1.3F, 1.6F, 0.4F, -2, 0x9020C0FF))),
                    Item(Ball(), MovedTo({0.9, 0.2, 1.5}))};
    return {first, second};
}

// --- fog ---

Passes Fogged(FogMode mode)
{
    ScenePass pass = Perspective({{0, 1.4, -6}, {0, 0.3, 3}});
    pass.state.fog = {mode, {0.7F, 0.75F, 0.8F}, 4, 30, mode == FogMode::Exponential ? 0.07 : 0.05};
    pass.state.cull = CullMode::None;
    std::vector<DrawItem> items{Item(Floor(60, 12, 0xFF60A040))};
    for (int i = 0; i < 6; ++i)
        items.push_back(Item(Cube(0.7F), Turned(0.4 + i, 0.2, {-2.5 + 1.3 * i, 0.8, -2.0 + 4 * i})));
    return With(pass, items);
}

// --- lines and points ---

Passes WireCube(CullMode cull)
{
    ScenePass pass = Perspective();
    pass.state.cull = cull;
    return With(pass, {Unlit(Filled(Item(Cube(1.3F), Turned(0.7, 0.5)), FillStyle::Wireframe))});
}

Passes FoggedFlatWireBall()
{
    ScenePass pass = Perspective();
    pass.state.fog = {FogMode::Linear, {1, 0, 0}, 3.5, 6.5, 0};
    return With(pass, {Flat(Filled(Item(Ball(10), Turned(0.2, 0.3)), FillStyle::Wireframe))});
}

Passes WiresThroughTheEye()
{
    ScenePass pass = Perspective({{0.3, 0.4, -0.5}, {0, 0, 1}});
    pass.state.cull = CullMode::None;
    return With(pass, {Unlit(Filled(Item(Cube(2), Turned(0.4, 0.3)), FillStyle::Wireframe)),
                       Unlit(Filled(Item(Confetti(30, 6, 20, 0xFF, 9)), FillStyle::Wireframe))});
}

Passes TranslucentWires(Transparency transparency)
{
    const ScenePass pass = TwoSided(Perspective(), transparency);
    return With(pass, {Item(Ball(), MovedTo({0.5, 0, 1})),
                       Unlit(Filled(Item(Confetti(60, 1.6F, 1, 0x80, 13)), FillStyle::Wireframe))});
}

Passes BallOfPoints()
{
    return With(Perspective(), {Filled(Item(Sphere(1.8F, 60, 90, 0xFFFFC080), Turned(0.2, 0.3)), FillStyle::Points)});
}

/// Several triangles to a pixel, most of which cover no pixel centre.
std::vector<ScenePass> DenseScan()
{
    return With(Perspective(), {Item(Sphere(1.5F, 250, 350, 0xFF90C0A0, Shiny(12)))});
}

/// Two triangles, one of which is translucent.
Mesh Pied()
{
    MeshMaker maker;
    maker.Group({});
    for (const auto& [left, color] : {std::pair{-0.9F, 0xFFFF8030U}, std::pair{-0.3F, 0x6030FF80U}})
        maker.Face({{{left, -0.9F, 0.0F}, 0, 0, {}, color},
                    {{left, 0.9F, 0.3F}, 0, 0, {}, color},
                    {{left + 1.2F, 0.0F, 0.0F}, 0, 0, {}, color}});
    return maker.Make();
}

/// Small items close together: each differs from those before and after it in one thing, and looks come again.
Passes AssortedItems(Transparency transparency)
{
    const auto checks = Checkerboard(8, 2, 0xFFFF4020, 0xFFFFFFFF);
    const DrawItem pied = Item(Pied());
    const DrawItem glass = Item(Cube(0.2F, 0x80));
    const DrawItem cube = Item(Cube(0.2F));
    const DrawItem matte = Item(Sphere(0.25F, 8, 8, 0xFFFFFFFF, {}, checks));
    const DrawItem shiny = Item(Sphere(0.25F, 8, 8, 0xFFFFFFFF, Shiny(8), checks));
    const DrawItem veil = Item(Cube(0.2F, 0xFF, Ramp(16, 16, 0x40)));
    const DrawItem looks[] = {pied,         glass,
                              cube,         pied,
                              cube,         Filled(cube, FillStyle::Wireframe),
                              cube,         Flat(cube),
                              cube,         matte,
                              shiny,        matte,
                              Unlit(shiny), shiny,
                              Flat(shiny),  Filled(shiny, FillStyle::Points),
                              veil,         matte,
                              glass};
    ScenePass pass = TwoSided(Perspective(), transparency);
    constexpr int Columns = 15;
    for (int i = 0; i < 10 * Columns + 1; ++i)
    {
        pass.items.push_back(looks[i % (10 * Columns) % std::size(looks)]); // the last one as the first
        pass.items.back().world =
            Turned(0.3 * i, 0.2 * i, {i % Columns * 0.3 - 2, i / Columns * 0.3 - 1.3, 0.1 * (i % 5) - 0.04 * i});
    }
    return {pass};
}

/// Texels and mip levels are chosen by rounding: a hair's difference can pick another one along a whole row, and at the
/// horizon one texel stands for thousands.
constexpr Tolerance TexelTolerance{2, 0.005, 24, 0.001};

} // namespace

const std::vector<DriverScene>& DriverScenes()
{
    static const std::vector<DriverScene> scenes{
        {"cube_unlit", [] { return CubeScene(Perspective(), Unlit); }, {}},
        {"cube_flat", [] { return CubeScene(Perspective(), Flat); }, {}},
        {"cube_orthographic", [] { return CubeScene(Orthographic(), Flat); }, {}},
        {"cube_inside", InsideOfACube, {}},
        {"ball_gouraud", [] { return SphereScene(Perspective(), 0, true); }, {}},
        {"ball_flat", [] { return SphereScene(Perspective(), 0, false); }, {}},
        {"ball_highlight", [] { return SphereScene(Perspective(), 25, true); }, {}},
        {"ball_flat_highlight", [] { return SphereScene(Perspective(), 25, false); }, {}},
        {"ball_orthographic_highlight", [] { return SphereScene(Orthographic(), 25, true); }, {}},
        {"squashed_and_mirrored", SquashedAndMirrored, {}},
        {"tiny_triangles", TinyTriangles, {}},
        {"dense_scan", DenseScan, {}},
        {"middling_triangles", MiddlingTriangles, {}},
        {"needles", Needles, {}},
        {"huge_triangles", HugeTriangles, {}},
        {"off_centre_and_scissored", OffCentreAndScissored, {}},
        {"many_lights", ManyLights, {}},
        {"spot_on_floor", SpotOnFloor, {}},
        {"floor_nearest", [] { return FloorToTheHorizon(TextureFilter::Nearest); }, TexelTolerance},
        {"floor_linear", [] { return FloorToTheHorizon(TextureFilter::Linear); }, TexelTolerance},
        {"floor_mip_nearest", [] { return FloorToTheHorizon(TextureFilter::MipNearest); }, TexelTolerance},
        {"floor_mip_linear", [] { return FloorToTheHorizon(TextureFilter::MipLinear); }, TexelTolerance},
        {"floor_linear_mip_nearest", [] { return FloorToTheHorizon(TextureFilter::LinearMipNearest); }, TexelTolerance},
        {"floor_linear_mip_linear", [] { return FloorToTheHorizon(TextureFilter::LinearMipLinear); }, TexelTolerance},
        {"textured_ball", TexturedBall, TexelTolerance},
        {"textured_cube_nearest", [] { return TexturedCubeCloseUp(TextureFilter::Nearest); }, TexelTolerance},
        {"textured_cube_linear", [] { return TexturedCubeCloseUp(TextureFilter::Linear); }, {}},
        {"translucent_texture_sorted", [] { return TranslucentTexture(Transparency::Sorted); }, {}},
        {"translucent_texture_stippled", [] { return TranslucentTexture(Transparency::Stippled); }, TexelTolerance},
        {"panes_sorted", [] { return CrossedPanes(Transparency::Sorted); }, {}},
        {"panes_blended", [] { return CrossedPanes(Transparency::Blended); }, {}},
        {"panes_stippled", [] { return CrossedPanes(Transparency::Stippled); }, {}},
        {"panes_over_two_passes", PanesOverTwoPasses, {}},
        {"translucent_confetti", TranslucentConfetti, {}},
        {"fog_linear", [] { return Fogged(FogMode::Linear); }, {}},
        {"fog_exponential", [] { return Fogged(FogMode::Exponential); }, {}},
        {"fog_exponential_squared", [] { return Fogged(FogMode::ExponentialSquared); }, {}},
        {"wire_cube", [] { return WireCube(CullMode::None); }, {}},
        {"wire_cube_culled", [] { return WireCube(CullMode::CounterClockwise); }, {}},
        {"wire_ball_flat_fogged", FoggedFlatWireBall, {}},
        {"wires_through_the_eye", WiresThroughTheEye, {}},
        {"wires_translucent_blended", [] { return TranslucentWires(Transparency::Blended); }, {}},
        {"wires_translucent_stippled", [] { return TranslucentWires(Transparency::Stippled); }, {}},
        {"points", BallOfPoints, {}},
        {"assorted_sorted", [] { return AssortedItems(Transparency::Sorted); }, TexelTolerance},
        {"assorted_blended", [] { return AssortedItems(Transparency::Blended); }, TexelTolerance},
    };
    return scenes;
}

Canvas DrawScene(Driver& driver, const DriverScene& scene)
{
    Canvas canvas{SceneWidth, SceneHeight};
    driver.SetTarget(canvas.View());
    driver.Clear({true, true}, canvas.View().Bounds(), SceneBackground);
    for (ScenePass& pass : scene.passes())
    {
        pass.state.lights = pass.lights;
        driver.Begin(pass.state);
        for (const DrawItem& item : pass.items)
            driver.Draw(item);
        driver.End();
    }
    driver.Finish();
    return canvas;
}

} // namespace lumora::test
