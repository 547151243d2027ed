// The stored camera record. The camera's frame is the truth about place and orientation; these are copies.
#pragma once

#include "base/Vector.h"
#include "properties/Enumerations.h"

namespace lumora
{

/// Positions and directions are relative to the scene's frame.
struct CameraState
{
    Vector Position;
    Vector Direction{0, 0, 1};
    Vector Up{0, 1, 0};
    tdlOrientation ViewOrientation = tdlFrontView; ///< last passed to InitializeCameraPositionAndOrientation

    // Stored for the host to apply; nothing in the control reads them.
    Vector Velocity; ///< scene units a second
    tdlNavigationMethod VelocityMethod = tdlGlide;
    Vector RotationalVelocity; ///< radians a second about x, y, z
    Vector RotationOrigin;
    tdlNavigationMethod RotationMethod = tdlGlide;
    float ZoomVelocity = 0; ///< field-of-view units a second
};

/// A turn about one of the axes x, y, z (0 to 2).
struct Turning
{
    int axis;
    Vector origin;
    tdlNavigationMethod method;
};

} // namespace lumora
