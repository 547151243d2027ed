// A host program in memory: a control, a scene of one square, a picture.
#include "platform/drivers/StandardDrivers.h"
#include "platform/headless/HostedViewport.h"

using namespace lumora;

int main()
{
    const auto host = std::make_shared<headless::HeadlessHost>(StandardDrivers());
    const auto form = headless::HostedViewport::Live(host); // creates the control and loads its settings, all defaults
    Viewport& viewport = form->Control();

    const auto scene = Frame::Make();
    const auto square = MeshBuilder::Make();
    const Vector corners[] = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}};
    const std::int32_t face[] = {4, 0, 1, 2, 3, 0};
    square->AddFaces(corners, {}, face);
    square->SetColorRGB(1.0F, 0.6F, 0.2F);
    scene->AddVisual(square);

    viewport.SetScene(scene);
    viewport.InitializeCameraPositionAndOrientation(tdlFrontView); // 15 units away, looking at the scene's origin
    viewport.SetFieldOfView(0.1F);
    viewport.SetEnabled(true); // draws; from now on RenderScene draws whenever the host likes
    SavePicture("square.png", host->Display().Pixels());
}
