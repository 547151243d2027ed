#include "stage/Placing.h"

#include "viewport/Viewport.h"

#include <cmath>

namespace lumora::stage
{

namespace
{

void AddLight(const std::shared_ptr<Frame>& parent, LightKind kind, Vector color, Vector direction)
{
    const auto frame = Frame::Make(parent);
    frame->SetOrientation(parent, direction, {0, 1, 0});
    frame->AddLight(std::make_shared<Light>(kind, color));
}

} // namespace

// A main light over the viewer's left shoulder, a weak cool one from the right, and some from everywhere. The one from
// behind draws rims, and gives form to models whose faces are wound the wrong way.
std::shared_ptr<Frame> AddCameraLights(const std::shared_ptr<Frame>& parent)
{
    const auto lights = Frame::Make(parent);
    AddLight(lights, LightKind::Ambient, {0.28F, 0.29F, 0.32F}, {0, 0, 1});
    AddLight(lights, LightKind::Directional, {0.98F, 0.95F, 0.90F}, {0.55F, -0.6F, 1});
    AddLight(lights, LightKind::Directional, {0.16F, 0.18F, 0.22F}, {-1, 0.25F, 0.6F});
    AddLight(lights, LightKind::Directional, {0.42F, 0.42F, 0.44F}, {0.5F, -0.7F, -1});
    return lights;
}

std::int32_t ToBackColor(Vector color)
{
    const auto channel = [](float part) { return static_cast<std::int32_t>(std::lround(part * 255)); };
    return channel(color.z) * 65536 + channel(color.y) * 256 + channel(color.x);
}

bool IsOrthographic(std::int32_t projection)
{
    return projection == D3DRMPROJECT_ORTHOGRAPHIC || projection == D3DRMPROJECT_RIGHTHANDORTHOGRAPHIC;
}

Standpoint StandpointOf(Viewport& viewport)
{
    const Orientation orientation = viewport.GetCameraOrientation();
    return {viewport.GetCameraPosition(), orientation.direction, orientation.up};
}

void StandAt(Viewport& viewport, const Standpoint& standpoint)
{
    const auto& [position, direction, up] = standpoint;
    viewport.SetCameraPosition(position.x, position.y, position.z);
    viewport.SetCameraOrientation(direction.x, direction.y, direction.z, up.x, up.y, up.z);
}

Vector AsSeen(const Viewport& viewport, Vector direction)
{
    const std::int32_t projection = viewport.ProjectionType();
    const bool isRightHanded =
        projection == D3DRMPROJECT_RIGHTHANDPERSPECTIVE || projection == D3DRMPROJECT_RIGHTHANDORTHOGRAPHIC;
    return isRightHanded ? -direction : direction;
}

} // namespace lumora::stage
