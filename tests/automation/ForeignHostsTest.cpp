// One session in three languages: the C and the Python host print what C++ computes by itself, and draw the same bytes.
#include "platform/directdraw/DeviceContext.h"
#include "platform/drivers/StandardDrivers.h"
#include "platform/headless/HostedViewport.h"
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

template<typename... Values>
std::string Line(const char* format, Values... values)
{
    std::array<char, 256> line{};
    std::snprintf(line.data(), line.size(), format, values...);
    return line.data() + std::string{"\n"};
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

    std::string lines = Line("field of view %.4f", viewport.FieldOfView());
    lines += Line("movement %.4f %.4f %.4f", left.x, left.y, left.z);
    lines += Line("camera %.4f %.4f %.4f", camera.x, camera.y, camera.z);
    lines += Line("events %d, last at %.4f %.4f %.4f", moves, last.x, last.y, last.z);
    lines += Line("screen %.4f %.4f %.4f %.4f", screen.w, screen.x, screen.y, screen.z);
    lines += "faces 5\nsame scene yes\n";
    lines += Line("pixel %06X", hosted->PixelAt(160, 120));
    lines += "error 383\n";
    SavePicture(picture, hosted->Picture());
    return lines;
}

class ForeignHosts : public testing::Test
{
protected:
    void Compare(const std::string& program) const
    {
        EXPECT_EQ(OutputOf(program + " " LUMORA_LIBRARY " " + (folder_ / "foreign.png")),
                  OwnSession(folder_ / "own.png"));
        EXPECT_FALSE(folder_.Read("own.png").empty());
        EXPECT_TRUE(folder_.Read("own.png") == folder_.Read("foreign.png")) << "the pictures differ";
    }

    const tests::TemporaryFolder folder_;
};

} // namespace

TEST_F(ForeignHosts, a_c_program_gets_what_cpp_gets)
{
    Compare(LUMORA_C_HOST);
}

TEST_F(ForeignHosts, a_python_program_gets_what_cpp_gets)
{
    if (std::string{LUMORA_PYTHON}.empty())
        GTEST_SKIP() << "no Python 3";
    Compare(LUMORA_PYTHON " -B " LUMORA_PYTHON_HOST);
}

TEST(PythonBinding, keeps_its_promises_beside_a_thread_that_collects_garbage)
{
    if (std::string{LUMORA_PYTHON}.empty())
        GTEST_SKIP() << "no Python 3";
    EXPECT_EQ(OutputOf(LUMORA_PYTHON " -B " LUMORA_BINDING_TEST " " LUMORA_LIBRARY " 2>&1"), "all released\n");
}

} // namespace lumora::test
