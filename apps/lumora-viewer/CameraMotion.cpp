#include "lumora-viewer/CameraMotion.h"

#include "base/RuntimeError.h"
#include "camera/Velocities.h"
#include "hosts/qt/ViewportWidget.h"

#include <QScreen>
#include <algorithm>
#include <chrono>
#include <utility>

namespace lumora::viewer
{

namespace
{

// After a pause, a dialog for example, the camera goes on where it was instead of catching up.
constexpr double LongestStep = 0.1; // seconds

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

CameraMotion::CameraMotion(ViewportWidget& widget, Clock clock) : widget_(widget), clock_(std::move(clock))
{
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.callOnTimeout([this] { Step(); });
    QObject::connect(&widget, &ViewportWidget::KeyDown, &timer_, [this] { Start(); });
    QObject::connect(&widget, &ViewportWidget::UpdatePositions, &timer_, [this] { Apply(); });
}

double CameraMotion::SystemClock()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void CameraMotion::Start()
{
    if (timer_.isActive() || !IsCameraMoving(widget_.viewport()))
        return;
    const QScreen* const screen = widget_.screen();
    const double rate = screen ? screen->refreshRate() : 0;
    timer_.start(rate >= 1 ? static_cast<int>(1000 / rate) : 16);
    applied_ = clock_();
}

void CameraMotion::Apply()
{
    Start(); // a drag that flies
    if (!timer_.isActive())
        return;
    const double now = clock_();
    const double elapsed = now - std::exchange(applied_, now);
    Viewport& control = widget_.viewport();
    const Vector before = control.GetCameraPosition();
    ApplyCameraVelocities(control, static_cast<float>(std::min(elapsed, LongestStep)));
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
