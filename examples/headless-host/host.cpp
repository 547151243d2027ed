// A host program in memory: a control, a scene of one square, a picture.
//
// Without CMake: g++ $(pkg-config --cflags LumoraViewport) host.cpp $(pkg-config --libs LumoraViewport)
#include "hosts/headless/HostedViewport.h"
#include "platform/drivers/standard/StandardDrivers.h"

using namespace lumora;

namespace
{

std::shared_ptr<Frame> Square()
{
    const auto square = MeshBuilder::Make();
    const Vector corners[] = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0}; // four corners, clockwise seen from the front
    square->AddFaces(corners, {}, face);
    square->SetColorRGB(1.0F, 0.6F, 0.2F);
    const auto scene = Frame::Make();
    scene->AddVisual(square);
    return scene;
}

} // namespace

int main()
{
    const auto host = std::make_shared<headless::HeadlessHost>(StandardDrivers());
    const auto form = headless::HostedViewport::Live(host); // creates the control and loads its settings, all defaults
    Viewport& viewport = form->Control();

    viewport.SetScene(Square());                                   // frames, meshes, lights: platform/scenegraph
    viewport.InitializeCameraPositionAndOrientation(tdlFrontView); // 15 units away, looking at the scene's origin
    viewport.SetFieldOfView(0.1F);                                 // half the width of the front plane, scene units
    viewport.CameraMoved.Connect([](auto&...) { /* the camera is somewhere else */ });
    viewport.SetEnabled(true); // draws; RenderScene draws again whenever you like
    SavePicture("square.png", form->Picture());
}
