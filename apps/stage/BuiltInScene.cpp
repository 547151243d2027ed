// A knot on a plinth between a glass ball, crystals, arches and pieces from the lathe. The floor is half clear and
// everything stands a second time below it, upside down: that is its polish.
#include "stage/BuiltInScene.h"

#include "stage/GroundTexture.h"
#include "stage/Shapes.h"
#include "stage/TurnedPieces.h"

#include <cmath>
#include <numbers>

namespace lumora::stage
{

namespace
{

constexpr double Turn = 2 * std::numbers::pi;
constexpr Vector Sunlight{0.62F, -0.80F, 0.48F}; // the way it travels: from the left, above and before
constexpr float GroundSide = 30;
constexpr float GroundFade = 14;
constexpr float SkyRadius = 60;
constexpr Vector Horizon{0.20F, 0.19F, 0.25F};

constexpr Vector KnotCentre{0, 2.15F, 0};
constexpr Vector BallCentre{-2.75F, 0.95F, 0.15F};
constexpr float BallRadius = 0.95F;
constexpr float ArchRadii[] = {3.55F, 3.95F, 4.35F};
constexpr float ArchDepth = 1.9F;
constexpr float ArchThickness = 0.11F;

struct Look
{
    Vector color;
    float alpha = 1;
    float power = 0; // of the highlight
    float shine = 0.6F;
    Vector emissive{};
};

void Dress(MeshBuilder& mesh, const Look& look)
{
    mesh.SetColor(CreateColorRGBA(look.color.x, look.color.y, look.color.z, look.alpha));
    const auto material = std::make_shared<Material>(look.power);
    material->SetSpecular(look.shine, look.shine, look.shine);
    material->SetEmissive(look.emissive.x, look.emissive.y, look.emissive.z);
    mesh.SetMaterial(material);
}

// Adds the shape, and its mirror image below the floor.
void Place(const std::shared_ptr<Frame>& scene, const Shape& shape, const Look& look)
{
    for (const bool mirrored : {false, true})
    {
        const auto mesh = ToMesh(mirrored ? MirroredBelow(shape) : shape);
        Dress(*mesh, look);
        scene->AddVisual(mesh);
    }
}

// A (2, 3) torus knot, about 2.5 units wide, standing upright.
Vector KnotAt(double t)
{
    const double angle = Turn * t;
    const double ring = 0.78 + 0.34 * std::cos(3 * angle);
    return KnotCentre + Vector{static_cast<float>(ring * std::cos(2 * angle)),
                               static_cast<float>(ring * std::sin(2 * angle)),
                               static_cast<float>(0.42 * std::sin(3 * angle))};
}

Vector ArchAt(float radius, double t)
{
    const double angle = std::numbers::pi * t;
    return {static_cast<float>(-radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)), ArchDepth};
}

void AddKnot(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    constexpr int Beads = 90;
    constexpr float Thickness = 0.21F;
    Place(scene, MakeTube(KnotAt, Thickness, 28, 280), {{0.93F, 0.46F, 0.20F}, 1, 28, 0.75F});
    for (int i = 0; i < Beads; ++i)
        occluders.push_back({KnotAt(static_cast<double>(i) / Beads), Thickness});
}

void AddPlinth(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    const std::vector<Vector> profile{{1.25F, 0, 0},     {1.25F, 0.16F, 0}, {1.22F, 0.22F, 0}, {1.12F, 0.26F, 0},
                                      {1.02F, 0.30F, 0}, {0.98F, 0.36F, 0}, {0.98F, 0.54F, 0}, {0.96F, 0.60F, 0},
                                      {0.90F, 0.63F, 0}, {0.80F, 0.64F, 0}, {0.40F, 0.64F, 0}, {0.001F, 0.64F, 0}};
    Place(scene, MakeLathe(profile, 96), {{0.86F, 0.84F, 0.82F}, 1, 18, 0.3F});
    for (const float height : {0.0F, 0.15F, 0.3F, 0.45F, 0.6F})
        occluders.push_back({{0, height, 0}, height < 0.25F ? 1.27F : 1.0F});
}

void AddGlassBall(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    Place(scene, Moved(MakeIcosahedron(0.46F), BallCentre), {{1.0F, 0.78F, 0.28F}, 1, 12, 0.5F, {0.30F, 0.18F, 0.04F}});
    Place(scene, Moved(MakeSphere(BallRadius, 72, 40), BallCentre), {{0.35F, 0.78F, 0.80F}, 0.36F, 60, 1});
    occluders.push_back({BallCentre, BallRadius, 0.55F});
    occluders.push_back({BallCentre, 0.44F});
}

void AddCrystals(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    struct Crystal
    {
        Vector foot;
        Vector lean; // of the axis
        float radius;
        float height;
        Vector color;
    };
    const Crystal crystals[] = {
        {{2.75F, 0, 0.35F}, {0.05F, 1, 0.08F}, 0.36F, 1.15F, {0.55F, 0.42F, 0.90F}},
        {{3.25F, 0, 0.05F}, {0.38F, 1, -0.10F}, 0.27F, 0.80F, {0.42F, 0.50F, 0.95F}},
        {{2.30F, 0, 0.00F}, {-0.42F, 1, -0.18F}, 0.25F, 0.70F, {0.70F, 0.40F, 0.85F}},
        {{2.85F, 0, -0.35F}, {0.10F, 1, -0.48F}, 0.22F, 0.55F, {0.50F, 0.62F, 0.98F}},
        {{2.35F, 0, 0.75F}, {-0.30F, 1, 0.40F}, 0.20F, 0.50F, {0.62F, 0.36F, 0.78F}},
    };
    for (const Crystal& crystal : crystals)
    {
        Shape shape = MakeCrystal(crystal.radius, crystal.height, crystal.radius * 1.3F);
        const Double3 up = Normalized(crystal.lean);
        const Double3 right = Normalized(Cross(up, Double3{0, 0, 1}));
        const Matrix4 pose = Matrix4::FromAxes(right, up, Cross(right, up), {});
        for (Vector& position : shape.positions)
        {
            const bool atFoot = position.y < 0;
            Double3 leaning = TransformPoint(position + Vector{0, crystal.height * 0.85F, 0}, pose);
            if (atFoot) // along the axis to the floor
                leaning = leaning - up * (leaning.y / up.y);
            position = leaning.ToVector() + crystal.foot;
        }
        for (Vector& normal : shape.normals)
            normal = TransformDirection(normal, pose).ToVector();
        Place(scene, shape, {crystal.color, 1, 30, 0.9F, crystal.color * 0.10F});
        for (float part = 0.1F; part < 1.9F; part += 0.2F)
            occluders.push_back({crystal.foot + (up * (crystal.height * part)).ToVector(), crystal.radius * 0.9F});
    }
}

void AddArches(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    constexpr Vector Colors[] = {{0.95F, 0.80F, 0.52F}, {0.36F, 0.66F, 0.66F}, {0.24F, 0.36F, 0.62F}};
    constexpr int Beads = 200;
    for (int i = 0; i < 3; ++i)
    {
        const auto curve = [radius = ArchRadii[i]](double t) { return ArchAt(radius, t); };
        Place(scene, MakeTube(curve, ArchThickness, 20, 96), {Colors[i], 1, 24, 0.5F});
        for (int bead = 0; bead <= Beads; ++bead)
            occluders.push_back({curve(static_cast<double>(bead) / Beads), ArchThickness});
    }
}

void AddMarbles(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    const struct
    {
        float x;
        float z;
        float radius;
        Vector color;
    } marbles[] = {
        {-1.45F, -1.75F, 0.30F, {0.90F, 0.30F, 0.27F}}, {-0.70F, -2.25F, 0.20F, {0.95F, 0.75F, 0.25F}},
        {1.30F, -1.80F, 0.36F, {0.22F, 0.62F, 0.48F}},  {1.95F, -1.30F, 0.22F, {0.92F, 0.90F, 0.86F}},
        {0.45F, -2.55F, 0.16F, {0.30F, 0.48F, 0.85F}},
    };
    for (const auto& marble : marbles)
    {
        const Vector centre{marble.x, marble.radius, marble.z};
        Place(scene, Moved(MakeSphere(marble.radius, 48, 28), centre), {marble.color, 1, 40, 0.9F});
        occluders.push_back({centre, marble.radius});
    }
}

void AddTurnedPieces(const std::shared_ptr<Frame>& scene, std::vector<Occluder>& occluders)
{
    constexpr Vector VaseFoot{-3.35F, 0, -1.30F};
    constexpr Vector HornFoot{-3.0F, 0, -3.4F};
    constexpr Vector PawnFoot{4.85F, 0, -0.85F};
    Place(scene, Moved(MakeVase(), VaseFoot), {{0.30F, 0.47F, 0.78F}, 1, 50, 0.9F});
    Place(scene, Moved(MakeHorn(), HornFoot), {{0.90F, 0.66F, 0.30F}, 1, 30, 0.8F});
    Place(scene, Moved(MakePawn(), PawnFoot), {{0.85F, 0.33F, 0.36F}, 1, 36, 0.8F});
    const struct
    {
        Vector centre;
        float radius;
    } shades[] = {{VaseFoot + Vector{0, 0.35F, 0}, 0.46F},   {VaseFoot + Vector{0, 0.75F, 0}, 0.22F},
                  {VaseFoot + Vector{0, 1.15F, 0}, 0.28F},   {HornFoot + Vector{0, 0.2F, 0}, 0.32F},
                  {HornFoot + Vector{0, 0.6F, 0}, 0.26F},    {HornFoot + Vector{0, 1.1F, 0}, 0.2F},
                  {HornFoot + Vector{0.3F, 1.5F, 0}, 0.15F}, {PawnFoot + Vector{0, 0.1F, 0}, 0.42F},
                  {PawnFoot + Vector{0, 0.5F, 0}, 0.28F},    {PawnFoot + Vector{0, 0.85F, 0}, 0.18F},
                  {PawnFoot + Vector{0, 1.2F, 0}, 0.25F}};
    for (const auto& shade : shades)
        occluders.push_back({shade.centre, shade.radius});
}

void AddGround(const std::shared_ptr<Frame>& scene, const std::vector<Occluder>& occluders)
{
    constexpr int Cells = 48; // small enough to be sorted right against the glass
    const auto mesh = ToMesh(MakeGrid(Cells, Cells,
                                      [](double u, double v)
                                      {
                                          return SurfacePoint{{static_cast<float>(u - 0.5) * GroundSide, 0,
                                                               static_cast<float>(v - 0.5) * GroundSide},
                                                              {0, 1, 0}};
                                      }));
    mesh->SetTexture(MakeGroundTexture(GroundSide, GroundFade, occluders, Sunlight));
    Dress(*mesh, {{1, 1, 1}});
    scene->AddVisual(mesh);
}

// Colours of the sky by height, from straight below to straight above.
std::shared_ptr<Texture> MakeSkyTexture()
{
    struct Stop
    {
        double height; // sine of the elevation
        Vector color;
    };
    constexpr Stop Stops[] = {
        {-1.0, {0.08F, 0.085F, 0.12F}}, {-0.5, {0.14F, 0.14F, 0.19F}}, {-0.22, {0.30F, 0.28F, 0.37F}},
        {0.0, {0.90F, 0.68F, 0.57F}},   {0.10, {0.70F, 0.57F, 0.62F}}, {0.35, {0.25F, 0.27F, 0.42F}},
        {1.0, {0.06F, 0.08F, 0.18F}},
    };
    constexpr int Height = 512;
    std::vector<std::uint32_t> pixels;
    for (int row = 0; row < Height; ++row)
    {
        const double height = std::cos(std::numbers::pi * (row + 0.5) / Height);
        std::size_t upper = 1;
        while (upper + 1 < std::size(Stops) && Stops[upper].height < height)
            ++upper;
        const Stop& low = Stops[upper - 1];
        const Stop& high = Stops[upper];
        const auto part = static_cast<float>((height - low.height) / (high.height - low.height));
        const Vector color = low.color + (high.color - low.color) * part;
        pixels.push_back(CreateColorRGBA(color.x, color.y, color.z));
    }
    return std::make_shared<Texture>(1, Height, pixels);
}

void AddSky(const std::shared_ptr<Frame>& scene)
{
    const auto mesh = ToMesh(MakeSphere(SkyRadius, 48, 48));
    mesh->SetTexture(MakeSkyTexture());
    Dress(*mesh, {.color = {1, 1, 1}, .emissive = {1, 1, 1}});
    scene->AddVisual(mesh);
}

void AddLight(const std::shared_ptr<Frame>& scene, LightKind kind, Vector color, Vector direction)
{
    const auto frame = Frame::Make(scene);
    frame->SetOrientation(scene, direction, {0, 1, 0});
    frame->AddLight(std::make_shared<Light>(kind, color));
}

void AddLights(const std::shared_ptr<Frame>& scene)
{
    AddLight(scene, LightKind::Ambient, {0.26F, 0.27F, 0.33F}, {0, 0, 1});
    AddLight(scene, LightKind::Directional, {0.80F, 0.74F, 0.66F}, Sunlight);
    AddLight(scene, LightKind::Directional, {0.16F, 0.20F, 0.28F}, {-0.9F, -0.35F, 0.4F});
    AddLight(scene, LightKind::Directional, {0.24F, 0.17F, 0.15F}, {-0.2F, -0.25F, -1});
}

} // namespace

Stage MakeBuiltInScene(Sky sky)
{
    Stage stage;
    stage.scene = Frame::Make();
    std::vector<Occluder> occluders;
    if (sky == Sky::Evening)
        AddSky(stage.scene);
    AddArches(stage.scene, occluders);
    AddPlinth(stage.scene, occluders);
    AddKnot(stage.scene, occluders);
    AddGlassBall(stage.scene, occluders);
    AddCrystals(stage.scene, occluders);
    AddMarbles(stage.scene, occluders);
    AddTurnedPieces(stage.scene, occluders);
    AddGround(stage.scene, occluders);
    AddLights(stage.scene);
    stage.focus = {{-4.0F, 0, -2.1F}, {4.1F, 4.35F, 1.6F}};
    stage.extent = stage.scene->Bounds(nullptr);
    stage.hasLights = true;
    stage.background = Horizon;
    return stage;
}

} // namespace lumora::stage
