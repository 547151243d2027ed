// What a press of the navigation button means: it depends on what lies under the cursor.
#include "base/Numbers.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

// A press picks what a person sees: everything in the scene; of the on-screen controls only those that can be dragged,
// so that an arrow's tip lets the shaft behind it be grabbed.
constexpr PickFilter AnythingSeen{.Wireframe = true, .ZeroAppData = true};
constexpr PickFilter Draggable{.Wireframe = true, .ZeroAppData = false};

constexpr std::int16_t ShiftAndControl = 3;

} // namespace

ScreenPoint Viewport::PixelOf(float X, float Y) const
{
    const Trap trap{Source};
    const auto window = container_->Window();
    ScreenPoint pixel;
    trap([&] { pixel.x = ToLong(window->ScaleToPixelsX(X)); });
    trap([&] { pixel.y = ToLong(window->ScaleToPixelsY(Y)); });
    return pixel;
}

PickResult Viewport::PickNavControl(float X, float Y)
{
    PickResult picked;
    const bool shown = properties_.NavControlPrimary || properties_.NavControlGlide || properties_.NavControlAdvance;
    if (!shown || !widgets_.NavControlsScene || !drawing_.RMViewport)
        return picked;
    const ScreenPoint pixel = PixelOf(X, Y);
    PickFromCameraIn(widgets_.NavControlsScene, pixel.x, pixel.y, Draggable, picked);
    return picked;
}

std::shared_ptr<Frame> Viewport::PickSceneFrame(float X, float Y)
{
    RequireRunning();
    if (!drawing_.SceneFrame || !drawing_.RMViewport)
        return nullptr;
    PickResult picked;
    const ScreenPoint pixel = PixelOf(X, Y);
    PickSceneWithFallback(pixel.x, pixel.y, AnythingSeen, picked);
    return picked.PickedFrame;
}

Vector Viewport::SceneOrigin() const
{
    return {properties_.SceneOriginX, properties_.SceneOriginY, properties_.SceneOriginZ};
}

void Viewport::SetSceneOrigin(Vector origin)
{
    const Trap trap{Source};
    trap([&] { SetSceneOriginX(origin.x); });
    trap([&] { SetSceneOriginY(origin.y); });
    trap([&] { SetSceneOriginZ(origin.z); });
}

// In perspective a plain drag on empty space walks, on an object it orbits about it; Shift pans, Ctrl turns and walks.
// In the other projections a drag pans, on an object it zooms.
void Viewport::ApplyCenterNavigation(const std::shared_ptr<Frame>& picked, std::int16_t Shift)
{
    if (properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE)
        ApplyPerspectiveScheme(picked, Shift);
    else
        ApplyOrthographicScheme(picked);
}

void Viewport::ApplyPerspectiveScheme(const std::shared_ptr<Frame>& picked, std::int16_t Shift)
{
    const Trap trap{Source};
    if (picked)
    {
        trap([&] { SetNavMouseX(tdlEncircleY); });
        trap([&] { SetNavMouseY(tdlEncircleX); });
        Vector origin;
        if (picked != drawing_.SceneFrame)
            trap([&] { origin = picked->GetPosition(drawing_.SceneFrame); });
        SetSceneOrigin(origin);
        trap([&] { SetMouseNavigationMethod(tdlGlide); });
    }
    else
    {
        trap([&] { SetNavMouseX(tdlNavigationDisable); });
        trap([&] { SetNavMouseY(tdlMoveZ); });
        trap([&] { SetMouseNavigationMethod(tdlAdvance); });
    }
    trap([&] { SetMouseNavigationMode(tdlWalk); });
    if (Shift == ShiftAndControl)
        trap([&] { SetMouseNavigationMethod(tdlAdvance); });
    else if (Shift != 0)
        trap([&] { SetMouseNavigationMethod(tdlGlide); });
    trap([&] { SetNavMouseShiftX(tdlMoveX); });
    trap([&] { SetNavMouseShiftY(tdlMoveY); });
    trap([&] { SetNavMouseCtrlX(tdlRotateY); });
    trap([&] { SetNavMouseCtrlY(tdlMoveZ); });
    trap([&] { SetNavMouseShiftCtrlX(tdlNavigationDisable); });
    trap([&] { SetNavMouseShiftCtrlY(tdlMoveZ); });
}

void Viewport::ApplyOrthographicScheme(const std::shared_ptr<Frame>& picked)
{
    const Trap trap{Source};
    trap([&] { SetNavMouseX(picked ? tdlNavigationDisable : tdlMoveX); });
    trap([&] { SetNavMouseY(picked ? tdlZoom : tdlMoveY); });
    trap([&] { SetMouseNavigationMode(tdlWalk); });
    trap([&] { SetNavMouseCtrlX(tdlNavigationDisable); });
    trap([&] { SetNavMouseCtrlY(tdlZoom); });
    trap([&] { SetNavMouseShiftX(tdlMoveX); });
    trap([&] { SetNavMouseShiftY(tdlMoveY); });
    trap([&] { SetNavMouseShiftCtrlX(tdlNavigationDisable); });
    trap([&] { SetNavMouseShiftCtrlY(tdlZoom); });
    trap([&] { SetMouseNavigationMethod(tdlAdvance); });
}

} // namespace lumora
