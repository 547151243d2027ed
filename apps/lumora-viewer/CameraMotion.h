// Keys and fly mode: the control stores velocities, the viewer applies them.
#pragma once

#include "platform/math/Vector.h"

#include <QElapsedTimer>
#include <QTimer>

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
    /// `widget` must live longer.
    explicit CameraMotion(ViewportWidget& widget);

    bool IsRunning() const { return timer_.isActive(); }

private:
    void Apply();
    void Step();
    void Start();

    ViewportWidget& widget_;
    QTimer timer_;
    QElapsedTimer clock_; ///< since the velocities were last applied
};

} // namespace lumora::viewer
