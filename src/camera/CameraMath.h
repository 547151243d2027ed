// Arithmetic of the camera that needs no control.
#pragma once

#include "base/Vector.h"
#include "platform/scenegraph/frames/Frame.h"
#include "properties/Enumerations.h"

namespace lumora
{

/// 3.141593 in single precision: the number that camera motion calls pi.
inline constexpr float CameraPi = 3.141593F;

/// `vector` with component 0 (x), 1 (y) or 2 (z) replaced.
constexpr Vector WithComponent(Vector vector, int axis, float value)
{
    (axis == 0 ? vector.x : axis == 1 ? vector.y : vector.z) = value;
    return vector;
}

/// The orientation of a camera levelled for gliding: direction in the horizontal plane, up along the y axis with the
/// sign that the camera's up has. Looking straight up or down it faces (1, 0, 1) instead of nowhere.
Orientation Levelled(const Orientation& camera);

/// What FieldOfView becomes when it falls by `zoom`: not below 0.1, or 0.05 for orthographic results below that.
/// Error 6 when the difference is not a number.
float ZoomedField(float field, float zoom, D3DRMPROJECTIONTYPE projection);

struct CameraPlacement
{
    Vector position;
    Orientation orientation;
};

/// Where each axis view puts the camera: 15 units from the origin in perspective, else 1000. Values outside the
/// enumeration are the left view.
CameraPlacement PlacementOf(tdlOrientation view, D3DRMPROJECTIONTYPE projection);

/// `position` with each component below its minimum set to it, then each above its maximum set to that: with a minimum
/// above its maximum the maximum wins.
Vector ClampedToBox(Vector position, Vector minimum, Vector maximum);

/// `position` pulled straight towards the origin onto the sphere, when it is farther than `radius`.
Vector PulledInside(Vector position, float distance, float radius);

/// `place` with the component along the view's axis moved to where the on-screen controls of an orthographic view
/// stand: 90 units from the origin, on the camera's side of the scene for the six views.
Vector InFrontOfView(Vector place, tdlOrientation view);

} // namespace lumora
