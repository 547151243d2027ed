// What keeps the camera where it may be, and the on-screen controls where they are seen.
#include "base/Numbers.h"
#include "camera/CameraMath.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

#include <algorithm>

namespace lumora
{

void Viewport::ApplyPositionConstraints()
{
    const Trap trap{Source};
    const Vector before = camera_.Position;
    if (properties_.PositionConstraints == tdlBoundaries)
        camera_.Position =
            ClampedToBox(before, {properties_.CameraMinX, properties_.CameraMinY, properties_.CameraMinZ},
                         {properties_.CameraMaxX, properties_.CameraMaxY, properties_.CameraMaxZ});
    if (properties_.PositionConstraints == tdlDistance)
        trap(
            [&]
            {
                const float distance = Required(drawing_.RetainedMode).VectorModulus(before);
                camera_.Position = PulledInside(before, distance, properties_.CameraMaxDistance);
            });
    if (camera_.Position == before)
        return;
    const Vector inside = camera_.Position;
    trap([&] { Required(drawing_.CameraFrame).SetPosition(drawing_.SceneFrame, inside.x, inside.y, inside.z); });
}

// Without room between the planes nothing is seen and no place is known: a host may set the front plane before the back
// one, or a person resize the window meanwhile.
void Viewport::PlaceNavControls()
{
    if (!widgets_.NavControlsScene || !drawing_.RMViewport)
        return;
    if (drawing_.RMViewport->GetBack() <= drawing_.RMViewport->GetFront())
        return;
    const Trap trap{Source};
    double width = 0;
    double height = 0;
    trap([&] { ClientSizePixels(width, height); });
    const auto wholeWidth = static_cast<double>(ToLong(width));
    const auto wholeHeight = static_cast<double>(ToLong(height));
    if (wholeWidth < 1 || wholeHeight < 1)
        return;
    const bool perspective = properties_.ProjectionType == D3DRMPROJECT_PERSPECTIVE;
    const bool orthographic = properties_.ProjectionType == D3DRMPROJECT_ORTHOGRAPHIC;
    const auto tilt = static_cast<float>(1.5 - static_cast<float>(wholeWidth / wholeHeight)); // below 0 when wide
    const auto frame = widgets_.NavControlFrame;
    const auto root = widgets_.NavControlsScene;
    float scale = 0;
    if (perspective)
    {
        scale = static_cast<float>(600 / std::max(wholeWidth, wholeHeight));
        trap([&] { frame->SetOrientation(root, camera_.Direction, camera_.Up); });
        trap([&] { frame->AddRotation(CombineType::Before, {0, 1, 0}, CameraPi / 20); });
        if (tilt < 0)
            trap([&] { frame->AddRotation(CombineType::Before, {1, 0, 0}, tilt * CameraPi / 25); });
    }
    const tdlOrientation view = camera_.ViewOrientation;
    const bool mirrored = view == tdlRearView || view == tdlLeftView || view == tdlBottomView;
    const float screenX = orthographic && mirrored ? 60 : 6;
    const auto screenY = static_cast<float>(height - 8 + (orthographic ? 4 : 0));
    Vector place;
    trap([&] { place = drawing_.RMViewport->InverseTransform({screenX, screenY, 0, 1}); });
    if (orthographic)
        place = InFrontOfView(place, view);
    trap([&] { frame->SetPosition(root, place.x, place.y, place.z); });
    trap([&] { frame->AddTranslation(CombineType::Before, 0, 0, 0.026F * scale); });
    if (tilt < 0)
        trap([&] { frame->AddTranslation(CombineType::Before, 0, 0, tilt * -0.0075F); });
}

} // namespace lumora
