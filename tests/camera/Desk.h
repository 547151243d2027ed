// A person at the mouse of a live control, and a camera moved by the written rules alone.
#pragma once

#include "camera/Space.h"
#include "viewport/LiveControl.h"

#include <string>
#include <vector>

namespace lumora::test
{

using headless::mousebutton::Left;
using headless::mousebutton::Middle;

inline constexpr float TwipsPerPixel = 15;

/// The camera of the written rules: what moves and turns do to it, in plain arithmetic.
struct RuleCamera : Pose
{
    void Advance(Vector d) { position = position + Axis(0) * d.x + Axis(1) * d.y + Axis(2) * d.z; }

    void Glide(Vector d)
    {
        const Vector level = Unit({direction.x, 0, direction.z});
        const Vector upward{0, up.y < 0 ? -1.0F : 1.0F, 0};
        position = position + Cross(upward, level) * d.x + upward * d.y + level * d.z;
    }

    void Turn(Vector axis, float angle, Vector origin)
    {
        position = origin + TurnedAbout(position - origin, axis, angle);
        direction = TurnedAbout(direction, axis, angle);
        up = TurnedAbout(up, axis, angle);
    }
};

inline void ExpectCameraOf(Viewport& control, const Pose& expected, const std::string& what)
{
    ExpectNear(control.GetCameraPosition(), expected.position, what + ", position", 2e-4F);
    ExpectNear(control.GetCameraOrientation().direction, expected.direction, what + ", direction", 2e-5F);
    ExpectNear(control.GetCameraOrientation().up, expected.up, what + ", up", 2e-5F);
}

inline void StandIn(Viewport& control, const Pose& pose)
{
    control.SetCameraPosition(pose.position.x, pose.position.y, pose.position.z);
    control.SetCameraOrientation(pose.direction.x, pose.direction.y, pose.direction.z, pose.up.x, pose.up.y, pose.up.z);
}

/// A camera that looks down at an angle, and a plate that faces it straight ahead, 40 pixels wide in a control of 200
/// by 200 pixels.
struct DeskScene
{
    static constexpr int Side = 200;

    void PutInto(Viewport& control, D3DRMPROJECTIONTYPE projection)
    {
        control.SetScene(scene);
        control.SetCenterNavigation(true);
        control.SetProjectionType(projection);
        if (projection != D3DRMPROJECT_PERSPECTIVE)
            control.SetFieldOfView(5);
        control.SetSceneOriginX(7);
        StandIn(control, rules);
        const Vector place = rules.position + rules.direction * 10;
        plate->SetPosition(scene, place.x, place.y, place.z);
        plate->SetOrientation(scene, rules.direction, rules.up);
        plate->AddVisual(Square(0, 0, 0, 1, 0xFFFFFFFF));
    }

    RuleCamera rules{{{1, 2, 3}, {0.48F, -0.6F, 0.64F}, {0.36F, 0.8F, 0.48F}}};
    std::shared_ptr<Frame> scene = AmbientScene(1);
    std::shared_ptr<Frame> plate = Frame::Make(scene);
};

/// A live control with centre navigation and the scene above. Writes down what the control raises.
class Desk : public DeskScene
{
public:
    explicit Desk(D3DRMPROJECTIONTYPE projection = D3DRMPROJECT_PERSPECTIVE)
        : control(UsualSettings(), MakeHost(Side, Side))
    {
        PutInto(control.Control(), projection);
        Listen();
    }

    void Stand(const Pose& pose) { StandIn(control.Control(), pose); }

    headless::HeadlessHost& Host() { return control.Host(); }
    ScreenPoint Cursor() { return Host().Display().Cursor(); }

    void Press(std::int16_t button, bool onPlate = false)
    {
        const PixelRect& client = Host().ControlArea().ClientRect();
        const int inset = onPlate ? Side / 2 : 5;
        pressed = {client.left + inset, client.top + inset};
        Host().PressButton(button, pressed.x, pressed.y);
    }

    /// 40 milliseconds later.
    void Move(int x, int y)
    {
        Host().AdvanceTime(40);
        Host().MoveMouseBy(x, y);
    }

    void Release(std::int16_t button) { Host().ReleaseButton(button); }

    void ExpectCamera(const Pose& expected, const std::string& what)
    {
        ExpectCameraOf(control.Control(), expected, what);
    }

    Vector SceneOrigin() { return {control->SceneOriginX(), control->SceneOriginY(), control->SceneOriginZ()}; }
    std::vector<std::string> TakeRaised() { return std::exchange(raised, {}); }

    LiveControl control;
    std::vector<std::string> raised; ///< but for CameraMoved and UpdatePositions
    int cameraMoves = 0;
    ScreenPoint pressed;

private:
    void Listen()
    {
        const auto note = [this](const char* name)
        { return [this, name](auto& button, auto&...) { raised.push_back(name + (" " + std::to_string(button))); }; };
        control->MouseDown.Connect(note("MouseDown"));
        control->MouseMove.Connect(note("MouseMove"));
        control->MouseUp.Connect(note("MouseUp"));
        control->KeyDown.Connect(note("KeyDown"));
        control->KeyUp.Connect(note("KeyUp"));
        control->BeginNavigating.Connect(note("BeginNavigating"));
        control->EndNavigating.Connect([this] { raised.emplace_back("EndNavigating"); });
        control->CameraMoved.Connect([this](auto&...) { ++cameraMoves; });
    }
};

struct Velocities
{
    Vector movement;
    Vector rotation;
    Vector origin;
    float zoom = 0;
    tdlNavigationMethod movementMethod = tdlGlide;
    tdlNavigationMethod rotationMethod = tdlGlide;
};

inline Velocities VelocitiesOf(Viewport& control)
{
    Velocities v;
    control.GetCameraVelocity(v.movement.x, v.movement.y, v.movement.z, v.movementMethod);
    control.GetCameraRotationalVelocity(v.rotation.x, v.rotation.y, v.rotation.z, v.origin.x, v.origin.y, v.origin.z,
                                        v.rotationMethod);
    control.GetCameraZoomVelocity(v.zoom);
    return v;
}

} // namespace lumora::test
