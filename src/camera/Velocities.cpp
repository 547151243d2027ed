#include "camera/Velocities.h"

#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

struct Velocities
{
    Vector movement;
    tdlNavigationMethod movementMethod = tdlGlide;
    Vector rotation;
    Vector origin;
    tdlNavigationMethod rotationMethod = tdlGlide;
    float zoom = 0;
};

Velocities StoredIn(Viewport& control)
{
    Velocities stored;
    Vector& move = stored.movement;
    Vector& turn = stored.rotation;
    Vector& about = stored.origin;
    control.GetCameraVelocity(move.x, move.y, move.z, stored.movementMethod);
    control.GetCameraRotationalVelocity(turn.x, turn.y, turn.z, about.x, about.y, about.z, stored.rotationMethod);
    control.GetCameraZoomVelocity(stored.zoom);
    return stored;
}

} // namespace

bool IsCameraMoving(Viewport& control)
{
    const Velocities stored = StoredIn(control);
    return stored.movement != Vector{} || stored.rotation != Vector{} || stored.zoom != 0;
}

void ApplyCameraVelocities(Viewport& control, float seconds)
{
    const Velocities stored = StoredIn(control);
    const Vector move = stored.movement * seconds;
    const Vector turn = stored.rotation * seconds;
    if (move != Vector{})
        control.AddCameraMovement(move, stored.movementMethod);
    if (turn != Vector{})
        control.AddCameraRotation(turn.x, turn.y, turn.z, stored.origin.x, stored.origin.y, stored.origin.z,
                                  stored.rotationMethod);
    if (stored.zoom * seconds != 0)
        control.AddCameraZoom(stored.zoom * seconds);
}

} // namespace lumora
