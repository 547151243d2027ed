// What dragging an on-screen control does: a step for each movement, or a velocity that follows the whole drag.
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <optional>

namespace lumora
{

namespace
{

// Per unit (twip) of movement: scene units, radians, field of view; and each of them a second for velocities.
constexpr float Move = 0.002F;
constexpr float Turn = 0.0002F;
constexpr float StripVelocity = 0.01F;
constexpr float StripTurnVelocity = 0.001F;
constexpr float Zoom = 0.0002F;
constexpr float ZoomFlat = 0.002F;
constexpr float ZoomVelocity = 0.0001F;
constexpr float ZoomVelocityFlat = 0.001F;

// What arrows and knob turn about the scene's origin point; nothing for the other controls.
std::optional<Vector> ArrowTurn(std::int32_t id, float dx, float dy)
{
    switch (id)
    {
    case navcontrol::XArrow:
        return Vector{-Turn * dy, 0, 0};
    case navcontrol::YArrow:
        return Vector{0, -Turn * dx, 0};
    case navcontrol::ZArrow:
        return Vector{0, 0, -Turn * dx};
    case navcontrol::Knob:
        return Vector{-Turn * dy, -Turn * dx, 0};
    default:
        return std::nullopt;
    }
}

tdlNavigationMode ModeOf(const Properties& properties, std::int32_t navControl)
{
    switch (navControl)
    {
    case navcontrol::GlideStrip:
        return properties.NavControlGlideMode;
    case navcontrol::AdvanceStrip:
        return properties.NavControlAdvanceMode;
    case navcontrol::ZoomStrip:
        return properties.MouseNavigationMode;
    default:
        return properties.NavControlPrimaryMode;
    }
}

} // namespace

void Viewport::NavigateWithNavControl(float& DeltaX, float& DeltaY)
{
    const std::int32_t id = drag_.ActiveNavControl;
    if (id < navcontrol::XArrow || id > navcontrol::ZoomStrip)
        return;
    const Trap trap{Source};
    if (ModeOf(properties_, id) != tdlWalk)
    {
        trap([&] { FlyByNavControl(id, DeltaX, DeltaY); });
        return;
    }
    trap([&] { StepByNavControl(id, DeltaX, DeltaY); });
    DeltaX = 0;
    DeltaY = 0;
}

void Viewport::StepByNavControl(std::int32_t id, float dx, float dy)
{
    const bool perspective = properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE;
    const auto turnAbout = [&](Vector angles, Vector origin, tdlNavigationMethod method)
    { AddCameraRotation(angles.x, angles.y, angles.z, origin.x, origin.y, origin.z, method); };
    if (const auto turn = ArrowTurn(id, dx, dy))
        turnAbout(*turn, SceneOrigin(), tdlGlide);
    switch (id)
    {
    case navcontrol::HorizontalPlate:
        AddCameraMovement({-Move * dx, 0, Move * dy}, perspective ? tdlGlide : tdlAdvance);
        break;
    case navcontrol::OrthographicPlate:
        AddCameraMovement({-Move * dx, Move * dy, 0}, perspective ? tdlGlide : tdlAdvance);
        break;
    case navcontrol::VerticalTriangle:
        if (perspective)
            AddCameraMovement({0, Move * dy, 0}, tdlGlide);
        else
            AddCameraMovement({0, Move * dy, -Move * dx}, tdlAdvance);
        break;
    case navcontrol::GlideStrip:
        AddCameraMovement({0, 0, Move * dy}, tdlGlide);
        turnAbout({0, -Turn * dx, 0}, camera_.Position, tdlGlide);
        break;
    case navcontrol::AdvanceStrip:
        AddCameraMovement({0, 0, Move * dy}, tdlAdvance);
        turnAbout({0, -Turn * dx, 0}, {}, tdlAdvance);
        break;
    case navcontrol::ZoomStrip:
        AddCameraZoom((perspective ? Zoom : ZoomFlat) * dy);
        break;
    default:
        break;
    }
}

void Viewport::FlyByNavControl(std::int32_t id, float dx, float dy)
{
    const bool perspective = properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE;
    const auto turnAbout = [&](Vector speeds, Vector origin, tdlNavigationMethod method)
    { SetCameraRotationalVelocity(speeds.x, speeds.y, speeds.z, origin.x, origin.y, origin.z, method); };
    if (const auto turn = ArrowTurn(id, dx, dy))
        turnAbout(*turn, SceneOrigin(), tdlGlide);
    switch (id)
    {
    case navcontrol::HorizontalPlate: // x in the opposite sense of a step's
        SetCameraVelocity(Move * dx, 0, Move * dy, tdlGlide);
        break;
    case navcontrol::OrthographicPlate:
        SetCameraVelocity(-Move * dx, Move * dy, 0, tdlGlide);
        break;
    case navcontrol::VerticalTriangle:
        SetCameraVelocity(0, Move * dy, -Move * dx, tdlGlide);
        break;
    case navcontrol::GlideStrip:
        SetCameraVelocity(0, 0, StripVelocity * dy, tdlGlide);
        turnAbout({0, -StripTurnVelocity * dx, 0}, camera_.Position, tdlGlide);
        break;
    case navcontrol::AdvanceStrip:
        SetCameraVelocity(0, 0, StripVelocity * dy, tdlAdvance);
        turnAbout({0, -StripTurnVelocity * dx, 0}, {}, tdlAdvance);
        break;
    case navcontrol::ZoomStrip:
        SetCameraZoomVelocity((perspective ? ZoomVelocity : ZoomVelocityFlat) * dy);
        break;
    default:
        break;
    }
}

} // namespace lumora
