// A few small pictures that somebody looked at, drawn through the control by the rgb driver, exact to the bit.
//
// A picture that changed on purpose is looked at (the failure says where it was kept) and copied into golden/.
#include "support/Pictures.h"
#include "viewport/LiveControl.h"

#include <cmath>
#include <fstream>
#include <numbers>

using namespace lumora;
using namespace lumora::test;

namespace
{

constexpr int Width = 160;
constexpr int Height = 120;

std::shared_ptr<MeshBuilder> Ball(float radius, Color color, float power)
{
    constexpr int Rings = 12;
    constexpr int Segments = 24;
    const auto mesh = MeshBuilder::Make();
    std::vector<Vector> vertices;
    for (int ring = 0; ring <= Rings; ++ring)
        for (int segment = 0; segment < Segments; ++segment)
        {
            const double latitude = std::numbers::pi * ring / Rings;
            const double longitude = 2 * std::numbers::pi * segment / Segments;
            vertices.push_back(Double3{radius * std::sin(latitude) * std::cos(longitude), radius * std::cos(latitude),
                                       radius * std::sin(latitude) * std::sin(longitude)}
                                   .ToVector());
        }
    std::vector<std::int32_t> faces;
    for (int ring = 0; ring < Rings; ++ring)
        for (int segment = 0; segment < Segments; ++segment)
        {
            const int next = (segment + 1) % Segments;
            for (const int index : {4, ring * Segments + segment, ring * Segments + next, (ring + 1) * Segments + next,
                                    (ring + 1) * Segments + segment})
                faces.push_back(index);
        }
    faces.push_back(0);
    mesh->AddFaces(vertices, {}, faces);
    mesh->SetColor(color);
    mesh->SetMaterial(std::make_shared<Material>(power));
    return mesh;
}

std::shared_ptr<MeshBuilder> Box(Vector half)
{
    const auto mesh = MeshBuilder::Make();
    std::vector<Vector> vertices;
    for (int corner = 0; corner < 8; ++corner)
        vertices.push_back(lumora::Box{-half, half}.Corner(corner));
    const std::int32_t faces[] = {4, 0, 2, 3, 1, 4, 5, 7, 6, 4, 4, 4, 6, 2, 0, 4,
                                  1, 3, 7, 5, 4, 2, 6, 7, 3, 4, 4, 0, 1, 5, 0};
    mesh->AddFaces(vertices, {}, faces);
    const Color colors[] = {0xFFC04040, 0xFF40C040, 0xFF4060D0, 0xFFD0B040, 0xFFE0E0E0, 0xFF606060};
    mesh->SetFaceColors(colors);
    return mesh;
}

std::shared_ptr<MeshBuilder> Ground()
{
    const auto mesh = MeshBuilder::Make();
    const Vector corners[] = {{-6, -1, -6}, {-6, -1, 6}, {6, -1, 6}, {6, -1, -6}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0};
    mesh->AddFaces(corners, {}, face);
    const float uv[] = {0, 6, 0, 0, 6, 0, 6, 6};
    mesh->SetTextureCoordinates(uv);
    const std::uint32_t checks[] = {0xFFB0A890, 0xFF504838, 0xFF504838, 0xFFB0A890};
    mesh->SetTexture(std::make_shared<Texture>(2, 2, checks));
    return mesh;
}

std::shared_ptr<Frame> StillLife()
{
    const auto scene = Frame::Make();
    scene->SetSceneBackgroundRGB(0.25F, 0.3F, 0.4F);
    scene->AddLight(std::make_shared<Light>(LightKind::Ambient, Vector{0.3F, 0.3F, 0.3F}));
    const auto lamp = Frame::Make(scene);
    lamp->SetOrientation(scene, {1, -2, 1.5F}, {0, 0, 1});
    lamp->AddLight(std::make_shared<Light>(LightKind::Directional, Vector{0.7F, 0.7F, 0.65F}));
    scene->AddVisual(Ground());
    const auto ball = Frame::Make(scene);
    ball->SetPosition(scene, -1.1F, 0, 0.3F);
    ball->AddVisual(Ball(1, 0xFFD06030, 20));
    const auto box = Frame::Make(scene);
    box->SetPosition(scene, 1.2F, -0.3F, 0);
    box->SetOrientation(scene, {1, 0, 2}, {0, 1, 0});
    box->AddVisual(Box({0.7F, 0.7F, 0.7F}));
    return scene;
}

void Draw(LiveControl& control, const std::shared_ptr<Frame>& scene)
{
    control->SetScene(scene);
    control->SetTextureQuality(D3DRMTEXTURE_LINEARMIPLINEAR);
    control->SetFieldOfView(0.45F);
    control->SetCameraPosition(0.5F, 2.2F, -5.5F);
    control->SetCameraOrientation(-0.5F, -2.5F, 5.5F, 0, 1, 0);
    control->RenderScene();
}

void ExpectGolden(LiveControl& control, const std::string& name)
{
    const PixelView actual = control.Host().ControlPicture();
    const std::string path = std::string{LUMORA_GOLDEN_PICTURES} + "/" + name + ".png";
    if (!std::ifstream{path})
    {
        FAIL() << path << " is missing; look at " << testsupport::KeepPicture(name, actual) << " and put it there";
    }
    const auto golden = LoadPicture(path)->Handle();
    EXPECT_TRUE(testsupport::SamePicture(actual, golden->Pixels())) << name;
}

TEST(GoldenPicture, lit_shapes_on_a_textured_ground)
{
    LiveControl control{UsualSettings(), MakeHost(Width, Height)};
    Draw(control, StillLife());
    ExpectGolden(control, "still-life");
}

TEST(GoldenPicture, flat_faces_with_all_edges_over_them)
{
    LiveControl control{UsualSettings(), MakeHost(Width, Height)};
    control->SetCoolMode(1);
    Draw(control, StillLife());
    ExpectGolden(control, "edges-over-flat");
}

TEST(GoldenPicture, glass_in_fog_averaged_over_sixteen_samples)
{
    LiveControl control{ExposedSettings(tdl4X), MakeHost(Width, Height)};
    const auto scene = StillLife();
    const auto glass = Frame::Make(scene);
    glass->SetPosition(scene, 0.2F, 0.1F, -1.2F);
    glass->AddVisual(Ball(0.8F, 0x6080E0FF, 40));
    scene->SetSceneFogMode(FogMode::Exponential);
    scene->SetSceneFogColor(0.25F, 0.3F, 0.4F);
    scene->SetSceneFogParams(0, 1, 0.08F);
    scene->SetSceneFogEnable(1);
    Draw(control, scene);
    ExpectGolden(control, "glass-in-fog");
}

} // namespace
