// What a movement of the mouse does to the camera: a step in walk mode, a velocity in fly mode.
#include "camera/CameraMath.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <cmath>
#include <optional>

namespace lumora
{

namespace
{

// Per unit (twip) of movement: scene units, radians, field of view; and each of them a second for velocities.
constexpr float MoveStep = 0.002F;
constexpr float TurnStep = 0.0002F;
constexpr float MoveVelocity = 0.01F;
constexpr float TurnVelocity = 0.001F;
constexpr float ZoomStep = 0.0002F;
constexpr float ZoomStepFlat = 0.002F;
constexpr float ZoomVelocity = 0.0001F;
constexpr float ZoomVelocityFlat = 0.001F;

// The pair of actions of a drag that was begun with these modifiers; nothing with Alt.
struct ActionPair
{
    tdlNavigation x;
    tdlNavigation y;
};

std::optional<ActionPair> ActionsOf(const Properties& properties, std::int16_t shift)
{
    switch (shift)
    {
    case 0:
        return ActionPair{properties.NavMouseX, properties.NavMouseY};
    case 1:
        return ActionPair{properties.NavMouseShiftX, properties.NavMouseShiftY};
    case 2:
        return ActionPair{properties.NavMouseCtrlX, properties.NavMouseCtrlY};
    case 3:
        return ActionPair{properties.NavMouseShiftCtrlX, properties.NavMouseShiftCtrlY};
    default:
        return std::nullopt;
    }
}

} // namespace

void Viewport::DispatchMouseNavigation(float& DeltaX, float& DeltaY)
{
    if (drag_.NavButton == 0 || drag_.NavButton != properties_.NavMouseButton)
        return;
    const auto actions = ActionsOf(properties_, drag_.NavShift);
    if (!actions)
        return;
    ApplyMouseNavigationAction(actions->x, DeltaX);
    ApplyMouseNavigationAction(actions->y, DeltaY);
}

// Small movements are dead in fly mode, so that a camera can be held still.
void Viewport::ApplyMouseNavigationAction(tdlNavigation Action, float Amount)
{
    const bool walking = properties_.MouseNavigationMode == tdlWalk;
    const auto sensitivity = static_cast<float>(properties_.NavMouseSensitivity);
    if (!walking && sensitivity != 0 && !(std::abs(Amount) > sensitivity))
        return;
    const Trap trap{Source};
    trap([&] { walking ? StepCamera(Action, Amount) : SetCameraFlying(Action, Amount); });
}

// Gliding turns go about the camera's place or the scene's origin point; advancing ones know no origin but store it.
std::optional<Turning> Viewport::TurningOf(tdlNavigation action) const
{
    const bool glides = properties_.MouseNavigationMethod == tdlGlide;
    const tdlNavigationMethod method = glides ? tdlGlide : tdlAdvance;
    if (action >= tdlRotateX && action <= tdlRotateZ)
        return Turning{action - tdlRotateX, glides ? camera_.Position : Vector{}, method};
    if (action >= tdlEncircleX && action <= tdlEncircleZ)
        return Turning{action - tdlEncircleX, SceneOrigin(), method};
    return std::nullopt;
}

void Viewport::StepCamera(tdlNavigation action, float amount)
{
    const tdlNavigationMethod method = properties_.MouseNavigationMethod;
    if (const auto turning = TurningOf(action))
    {
        const Vector angles = WithComponent({}, turning->axis, -TurnStep * amount);
        const auto [x, y, z] = turning->origin;
        AddCameraRotation(angles.x, angles.y, angles.z, x, y, z, turning->method);
    }
    switch (action)
    {
    case tdlMoveX:
        AddCameraMovement({-MoveStep * amount, 0, 0}, method);
        break;
    case tdlMoveY:
        AddCameraMovement({0, MoveStep * amount, 0}, method);
        break;
    case tdlMoveZ:
        AddCameraMovement({0, 0, MoveStep * amount}, method);
        break;
    case tdlZoom:
        AddCameraZoom((properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE ? ZoomStep : ZoomStepFlat) * amount);
        break;
    default:
        break;
    }
}

void Viewport::SetCameraFlying(tdlNavigation action, float amount)
{
    const tdlNavigationMethod method = properties_.MouseNavigationMethod;
    const auto move = [&](int axis, float speed)
    {
        const Vector v = WithComponent(camera_.Velocity, axis, speed);
        SetCameraVelocity(v.x, v.y, v.z, method);
    };
    if (auto turning = TurningOf(action))
    {
        if (action == tdlRotateX)
            *turning = {0, camera_.Position, method};
        const Vector r = WithComponent(camera_.RotationalVelocity, turning->axis, -TurnVelocity * amount);
        const auto [x, y, z] = turning->origin;
        SetCameraRotationalVelocity(r.x, r.y, r.z, x, y, z, turning->method);
    }
    switch (action)
    {
    case tdlMoveX:
        move(0, -MoveVelocity * amount);
        break;
    case tdlMoveY:
        move(1, MoveVelocity * amount);
        break;
    case tdlMoveZ:
        move(2, MoveVelocity * amount);
        break;
    case tdlZoom:
        SetCameraZoomVelocity(
            (properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE ? ZoomVelocity : ZoomVelocityFlat) * amount);
        break;
    default:
        break;
    }
}

} // namespace lumora
