#include "lumora-viewer/StageView.h"

#include <algorithm>

namespace lumora::viewer
{

namespace
{

// Walking back from a stage must not make it vanish.
constexpr float LeastBack = 1000;

} // namespace

void StageView::Show(stage::Stage stage)
{
    Viewport& control = widget_.viewport();
    control.SetScene(stage.scene);
    stage_ = std::move(stage);
    if (cameraLights_)
        control.Camera()->DeleteChild(cameraLights_);
    cameraLights_ = stage_.hasLights ? nullptr : stage::AddCameraLights(control.Camera());
    const std::int32_t color = stage::ToBackColor(stage_.background);
    if (control.BackColor() == ownBackColor_)
        control.SetBackColor(color);
    ownBackColor_ = color;
    Place(stage::ThreeQuarterDirection, {0, 1, 0});
}

void StageView::LookFrom(tdlOrientation view)
{
    Viewport& control = widget_.viewport();
    control.InitializeCameraPositionAndOrientation(view);
    LookAtAll();
}

void StageView::LookAtAll()
{
    const stage::Standpoint now = stage::StandpointOf(widget_.viewport());
    Place(stage::AsSeen(widget_.viewport(), now.direction), now.up);
}

void StageView::Project(D3DRMPROJECTIONTYPE projection)
{
    Viewport& control = widget_.viewport();
    const stage::Standpoint now = stage::StandpointOf(control);
    const Vector direction = stage::AsSeen(control, now.direction);
    control.SetProjectionType(projection);
    Place(direction, now.up);
}

// An empty model is looked at as if it were a point.
void StageView::Place(Vector direction, Vector up)
{
    Viewport& control = widget_.viewport();
    const QSize size = widget_.PictureSize();
    const stage::FramingOptions options{direction,
                                        up,
                                        stage::IsOrthographic(control.ProjectionType()),
                                        std::max(size.width(), 1),
                                        std::max(size.height(), 1),
                                        std::nullopt};
    std::vector<Vector> focus = stage::CornersOf(stage_.focus);
    if (focus.empty())
        focus.push_back({});
    const stage::Framing framing = stage::ForWalking(
        stage::FramePoints(focus, stage::CornersOf(stage_.extent), options), direction, options.orthographic);
    control.SetBackClippingPlane(std::max(framing.back, framing.front + LeastBack));
    control.SetFrontClippingPlane(framing.front);
    control.SetFieldOfView(framing.field);
    stage::StandAt(control, {framing.position, stage::AsSeen(control, direction), up});
    widget_.RenderScene();
}

} // namespace lumora::viewer
