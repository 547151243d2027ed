// Keys and fly mode: the control stores velocities, the viewer applies them.
#pragma once

#include "base/Vector.h"

#include <QTimer>
#include <functional>

namespace lumora
{
class ViewportWidget;
}

namespace lumora::viewer
{

/// Draws one picture after the other while the camera has a velocity, each with the camera as far on as time went by.
/// While it has none, nothing runs.
class CameraMotion
{
public:
    /// Seconds since some moment.
    using Clock = std::function<double()>;

    /// `widget` must live longer.
    explicit CameraMotion(ViewportWidget& widget, Clock clock = SystemClock);

    bool IsRunning() const { return timer_.isActive(); }

private:
    static double SystemClock();

    void Apply();
    void Step();
    void Start();

    ViewportWidget& widget_;
    Clock clock_;
    QTimer timer_;
    double applied_ = 0; ///< when the velocities last were, by the clock
};

} // namespace lumora::viewer
