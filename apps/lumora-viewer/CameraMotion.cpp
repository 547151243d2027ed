#include "lumora-viewer/CameraMotion.h"

#include "camera/Velocities.h"
#include "platform/automation/RuntimeError.h"
#include "platform/qt/ViewportWidget.h"

#include <QScreen>
#include <algorithm>

namespace lumora::viewer
{

namespace
{

// After a pause, a dialog for example, the camera goes on where it was instead of catching up.
constexpr float LongestStep = 0.1F; // seconds

// A velocity remembers the point to turn about. One that turns the camera on the spot keeps doing so while the camera
// moves.
void TurnOnTheSpot(Viewport& control, const Vector& before)
{
    Vector turn;
    Vector origin;
    tdlNavigationMethod method{};
    control.GetCameraRotationalVelocity(turn.x, turn.y, turn.z, origin.x, origin.y, origin.z, method);
    const Vector now = control.GetCameraPosition();
    if (origin == before && now != before)
        control.SetCameraRotationalVelocity(turn.x, turn.y, turn.z, now.x, now.y, now.z, method);
}

} // namespace

CameraMotion::CameraMotion(ViewportWidget& widget) : widget_(widget)
{
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.callOnTimeout([this] { Step(); });
    QObject::connect(&widget, &ViewportWidget::KeyDown, &timer_, [this] { Start(); });
    QObject::connect(&widget, &ViewportWidget::UpdatePositions, &timer_, [this] { Apply(); });
}

void CameraMotion::Start()
{
    if (timer_.isActive() || !IsCameraMoving(widget_.viewport()))
        return;
    const QScreen* const screen = widget_.screen();
    const double rate = screen ? screen->refreshRate() : 0;
    timer_.start(rate >= 1 ? static_cast<int>(1000 / rate) : 16);
    clock_.start();
}

void CameraMotion::Apply()
{
    Start(); // a drag that flies
    if (!timer_.isActive())
        return;
    const auto elapsed = static_cast<float>(static_cast<double>(clock_.nsecsElapsed()) * 1e-9);
    clock_.start();
    Viewport& control = widget_.viewport();
    const Vector before = control.GetCameraPosition();
    ApplyCameraVelocities(control, std::min(elapsed, LongestStep));
    TurnOnTheSpot(control, before);
}

void CameraMotion::Step()
{
    bool moving = false;
    IgnoringErrors([&] { moving = widget_.isVisible() && widget_.Enabled() && IsCameraMoving(widget_.viewport()); });
    if (moving)
        widget_.RenderScene();
    else
        timer_.stop();
}

} // namespace lumora::viewer
