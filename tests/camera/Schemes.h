// What drags of the middle button do, as a person is told: a row for each way to press.
#pragma once

#include "camera/Desk.h"

#include <vector>

namespace lumora::test
{

// What one movement does, in the words of the scheme.
enum class Does
{
    Nothing,
    WalkAlongTheView,
    Orbit,
    PanLevel,
    PanInThePicture,
    TurnAndWalkLevel,
    Zoom,
};

struct Scheme
{
    const char* name;
    D3DRMPROJECTIONTYPE projection;
    bool onPlate;
    std::vector<std::int16_t> held;
    Does does;
};

/// `x` and `y` in twips to the right and down.
inline void Obey(Does does, float x, float y, Vector origin, RuleCamera& camera, float& field)
{
    const Vector vertical{0, 1, 0};
    switch (does)
    {
    case Does::Nothing:
        break;
    case Does::WalkAlongTheView:
        camera.Advance({0, 0, -0.002F * y});
        break;
    case Does::Orbit:
        camera.Turn(vertical, 0.0002F * x, origin);
        camera.Turn(camera.Axis(0), 0.0002F * y, origin);
        break;
    case Does::PanLevel:
        camera.Glide({0.002F * x, -0.002F * y, 0});
        break;
    case Does::PanInThePicture:
        camera.Advance({0.002F * x, -0.002F * y, 0});
        break;
    case Does::TurnAndWalkLevel:
        camera.Turn(vertical, 0.0002F * x, camera.position);
        camera.Glide({0, 0, -0.002F * y});
        break;
    case Does::Zoom:
        field += 0.002F * y;
        break;
    }
}

inline constexpr auto Perspective = D3DRMPROJECT_PERSPECTIVE;
inline constexpr auto Orthographic = D3DRMPROJECT_ORTHOGRAPHIC;
using headless::key::Alt;
using headless::key::Control;
using headless::key::Shift;

inline const Scheme Schemes[] = {
    {"perspective, nothing", Perspective, false, {}, Does::WalkAlongTheView},
    {"perspective, nothing, Shift", Perspective, false, {Shift}, Does::PanLevel},
    {"perspective, nothing, Ctrl", Perspective, false, {Control}, Does::TurnAndWalkLevel},
    {"perspective, nothing, Shift+Ctrl", Perspective, false, {Shift, Control}, Does::WalkAlongTheView},
    {"perspective, nothing, Alt", Perspective, false, {Alt}, Does::Nothing},
    {"perspective, nothing, Shift+Alt", Perspective, false, {Shift, Alt}, Does::Nothing},
    {"perspective, object", Perspective, true, {}, Does::Orbit},
    {"perspective, object, Shift", Perspective, true, {Shift}, Does::PanLevel},
    {"perspective, object, Ctrl", Perspective, true, {Control}, Does::TurnAndWalkLevel},
    {"perspective, object, Shift+Ctrl", Perspective, true, {Shift, Control}, Does::WalkAlongTheView},
    {"perspective, object, Alt", Perspective, true, {Alt}, Does::Nothing},
    {"orthographic, nothing", Orthographic, false, {}, Does::PanInThePicture},
    {"orthographic, nothing, Shift", Orthographic, false, {Shift}, Does::PanInThePicture},
    {"orthographic, nothing, Ctrl", Orthographic, false, {Control}, Does::Zoom},
    {"orthographic, nothing, Shift+Ctrl", Orthographic, false, {Shift, Control}, Does::Zoom},
    {"orthographic, nothing, Alt", Orthographic, false, {Alt}, Does::Nothing},
    {"orthographic, object", Orthographic, true, {}, Does::Zoom},
    {"orthographic, object, Shift", Orthographic, true, {Shift}, Does::PanInThePicture},
    {"orthographic, object, Ctrl", Orthographic, true, {Control}, Does::Zoom},
    {"orthographic, object, Shift+Ctrl", Orthographic, true, {Shift, Control}, Does::Zoom},
    {"orthographic, object, Alt", Orthographic, true, {Alt}, Does::Nothing},
};

} // namespace lumora::test
