// One session in three languages: the C and the Python host print what C++ computes by itself, and draw the same bytes.
#include "hosts/headless/HostedViewport.h"
#include "platform/directdraw/DeviceContext.h"
#include "platform/drivers/standard/StandardDrivers.h"
#include "platform/scenegraph/RetainedMode.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <cstdio>
#include <gtest/gtest.h>

namespace lumora::test
{

namespace
{

std::string OutputOf(const std::string& command)
{
    std::FILE* program = popen(command.c_str(), "r");
    std::string output;
    std::array<char, 1024> part{};
    while (std::fgets(part.data(), part.size(), program) != nullptr)
        output += part.data();
    return pclose(program) == 0 ? output : output + "(failed)";
}

std::shared_ptr<MeshBuilder> Pyramid()
{
    const Vector corners[] = {{-1, 0, -1}, {1, 0, -1}, {1, 0, 1}, {-1, 0, 1}, {0, 2, 0}};
    const std::int32_t faces[] = {3, 0, 4, 1, 3, 1, 4, 2, 3, 2, 4, 3, 3, 3, 4, 0, 4, 0, 1, 2, 3, 0};
    auto mesh = MeshBuilder::Make();
    mesh->AddFaces(corners, {}, faces);
    mesh->GenerateNormals(0);
    mesh->GetFace(0)->SetColor(0xFFE04030);
    mesh->GetFace(3)->SetColor(0xFF3060E0);
    return mesh;
}

void DrawLabel(Surface& surface)
{
    constexpr PixelRect Plate{8, 8, 128, 36};
    const auto context = surface.GetDC();
    context->FillRectangle(Plate, 0x402810);
    context->WriteText(Plate.left + 7, Plate.top + 5, "Pyramid 1", 0xFFFFFF, 2);
    context->FrameRectangle(Plate, 0x20A0FF);
    surface.ReleaseDC(context);
}

// The session as a C++ program has it, without any late binding; what the others should print.
std::string OwnSession(const std::string& picture)
{
    const auto host = std::make_shared<headless::HeadlessHost>(StandardDrivers());
    host->ResizeWindow(320, 240);
    const auto hosted = headless::HostedViewport::Live(host);
    Viewport& viewport = hosted->Control();
    const auto scene = Frame::Make();
    const auto pyramid = Frame::Make(scene);
    pyramid->AddVisual(Pyramid());
    pyramid->AddRotation(CombineType::After, {0, 1, 0}, 0.6F);
    const auto lamp = Frame::Make(scene);
    lamp->SetPosition(nullptr, 3, 5, -4);
    lamp->AddLight(std::make_shared<Light>(LightKind::Point, Vector{1, 1, 1}));
    scene->SetSceneBackgroundRGB(0.1F, 0.15F, 0.2F);

    int moves = 0;
    Vector last;
    viewport.CameraMoved.Connect(
        [&](float& x, float& y, float& z, float&, float&, float&, float&, float&, float&)
        {
            ++moves;
            last = {x, y, z};
        });
    viewport.DDSurfaceAvailable.Connect([&] { DrawLabel(*viewport.DirectDrawSurface()); });
    viewport.SetExposeDDSurface(true);
    viewport.SetScene(scene);
    viewport.SetEnabled(true);
    viewport.SetFieldOfView(0.7F);
    viewport.SetCameraPosition(0, 1, -5);
    const Vector left = viewport.AddCameraMovement({0.5F, 0.25F, 1}, tdlAdvance);
    viewport.RenderScene();
    const Vector camera = viewport.GetCameraPosition();
    Vector4 screen;
    viewport.ViewportTransform(0, 1, 0, screen.w, screen.x, screen.y, screen.z);

    std::array<char, 512> lines{};
    std::snprintf(lines.data(), lines.size(),
                  "field of view %.4f\nmovement %.4f %.4f %.4f\ncamera %.4f %.4f %.4f\n"
                  "events %d, last at %.4f %.4f %.4f\nscreen %.4f %.4f %.4f %.4f\n"
                  "faces 5\nsame scene yes\npixel %06X\nerror 383\n",
                  viewport.FieldOfView(), left.x, left.y, left.z, camera.x, camera.y, camera.z, moves, last.x, last.y,
                  last.z, screen.w, screen.x, screen.y, screen.z, hosted->PixelAt(160, 120));
    SavePicture(picture, hosted->Picture());
    return lines.data();
}

void Compare(const std::string& program)
{
    const tests::TemporaryFolder folder;
    EXPECT_EQ(OutputOf(program + " " LUMORA_LIBRARY " " + (folder / "foreign.png")), OwnSession(folder / "own.png"));
    EXPECT_FALSE(folder.Read("own.png").empty());
    EXPECT_TRUE(folder.Read("own.png") == folder.Read("foreign.png")) << "the pictures differ";
}

} // namespace

TEST(ForeignHosts, in_c_get_what_cpp_gets)
{
    Compare(LUMORA_C_HOST);
}

TEST(ForeignHosts, in_python_get_what_cpp_gets_also_beside_a_thread_that_collects_garbage)
{
    if (std::string{LUMORA_PYTHON}.empty())
        GTEST_SKIP() << "no Python 3";
    Compare(LUMORA_PYTHON " -B " LUMORA_PYTHON_HOST);
    EXPECT_EQ(OutputOf(LUMORA_PYTHON " -B " LUMORA_BINDING_TEST " " LUMORA_LIBRARY " 2>&1"), "all released\n");
}

} // namespace lumora::test
