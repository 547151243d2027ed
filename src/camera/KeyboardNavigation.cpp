// Keys as camera velocities. They are only stored: the host applies them.
#include "camera/CameraMath.h"
#include "viewport/Handlers.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <algorithm>
#include <array>

namespace lumora
{

/// What a key property does to one component of a velocity.
struct KeyAction
{
    enum class Kind
    {
        Move,
        Rotate,
        Encircle,
        Zoom,
    };

    tdlNavKey Properties::*key;
    Kind kind;
    int axis;
    float sign; ///< of the speed that the key sets
};

namespace
{

using Kind = KeyAction::Kind;

// In the order in which a key is looked for when it goes down. The two keys of one component follow each other, so that
// the same order finds the component when a key comes up.
constexpr std::array<KeyAction, 20> Actions{{
    {&Properties::KeyMoveBack, Kind::Move, 2, -1},
    {&Properties::KeyMoveForward, Kind::Move, 2, 1},
    {&Properties::KeyMoveLeft, Kind::Move, 0, -1},
    {&Properties::KeyMoveRight, Kind::Move, 0, 1},
    {&Properties::KeyMoveUp, Kind::Move, 1, 1},
    {&Properties::KeyMoveDown, Kind::Move, 1, -1},
    {&Properties::KeyRotateXCCW, Kind::Rotate, 0, -1},
    {&Properties::KeyRotateXCW, Kind::Rotate, 0, 1},
    {&Properties::KeyRotateYCCW, Kind::Rotate, 1, -1},
    {&Properties::KeyRotateYCW, Kind::Rotate, 1, 1},
    {&Properties::KeyRotateZCCW, Kind::Rotate, 2, -1},
    {&Properties::KeyRotateZCW, Kind::Rotate, 2, 1},
    {&Properties::KeyEncircleXCCW, Kind::Encircle, 0, -1},
    {&Properties::KeyEncircleXCW, Kind::Encircle, 0, 1},
    {&Properties::KeyEncircleYCCW, Kind::Encircle, 1, -1},
    {&Properties::KeyEncircleYCW, Kind::Encircle, 1, 1},
    {&Properties::KeyEncircleZCCW, Kind::Encircle, 2, -1},
    {&Properties::KeyEncircleZCW, Kind::Encircle, 2, 1},
    {&Properties::KeyZoomIn, Kind::Zoom, 0, 1},
    {&Properties::KeyZoomOut, Kind::Zoom, 0, -1},
}};

float SpeedOf(const Properties& properties, Kind kind)
{
    switch (kind)
    {
    case Kind::Move:
        return properties.KeyVelocityMove;
    case Kind::Zoom:
        return properties.KeyVelocityZoom;
    default:
        return properties.KeyVelocityRotate;
    }
}

// The first action of a key; nothing for key code 0, which is what a disabled action is set to.
const KeyAction* ActionOf(const Properties& properties, std::int16_t code)
{
    const auto isItsKey = [&](const KeyAction& action) { return properties.*action.key == code; };
    const auto* action = std::ranges::find_if(Actions, isItsKey);
    return code == tdlNavKeyDisable || action == Actions.end() ? nullptr : action;
}

} // namespace

void Viewport::OnKeyDown(std::int16_t KeyCode, std::int16_t Shift)
{
    if (Handle("KeyDown", [&] { NavigateByKeyDown(KeyCode); }))
        Handle("KeyDown", [&] { KeyDown.Raise(KeyCode, Shift); });
}

void Viewport::OnKeyUp(std::int16_t KeyCode, std::int16_t Shift)
{
    if (Handle("KeyUp", [&] { NavigateByKeyUp(KeyCode); }))
        Handle("KeyUp", [&] { KeyUp.Raise(KeyCode, Shift); });
}

// Encircling keys turn about the scene's origin point while they are held; released ones leave the camera's own place.
void Viewport::NavigateByKeyDown(std::int16_t KeyCode)
{
    const KeyAction* action = ActionOf(properties_, KeyCode);
    if (action == nullptr)
        return;
    const Vector origin = action->kind == Kind::Encircle ? SceneOrigin() : camera_.Position;
    StoreKeyVelocity(*action, action->sign * SpeedOf(properties_, action->kind), origin);
}

void Viewport::NavigateByKeyUp(std::int16_t KeyCode)
{
    if (const KeyAction* action = ActionOf(properties_, KeyCode))
        StoreKeyVelocity(*action, 0, camera_.Position);
}

void Viewport::StoreKeyVelocity(const KeyAction& action, float value, Vector rotationOrigin)
{
    const tdlNavigationMethod method = properties_.KeyNavigationMethod;
    const auto [x, y, z] = rotationOrigin;
    switch (action.kind)
    {
    case Kind::Move:
    {
        const Vector v = WithComponent(camera_.Velocity, action.axis, value);
        SetCameraVelocity(v.x, v.y, v.z, method);
        break;
    }
    case Kind::Rotate:
    case Kind::Encircle:
    {
        const Vector r = WithComponent(camera_.RotationalVelocity, action.axis, value);
        SetCameraRotationalVelocity(r.x, r.y, r.z, x, y, z, method);
        break;
    }
    case Kind::Zoom:
        SetCameraZoomVelocity(value);
        break;
    }
}

} // namespace lumora
