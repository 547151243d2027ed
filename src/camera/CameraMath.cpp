#include "camera/CameraMath.h"

#include "base/Numbers.h"

namespace lumora
{

namespace
{

constexpr float Nearly0 = 0.00001F;
constexpr double PerspectiveDistance = 15;
constexpr double OtherDistance = 1000;
constexpr float SmallestField = 0.1F;
constexpr float SmallestOrthographicField = 0.05F;

void RaiseTo(float& component, float minimum)
{
    if (component < minimum)
        component = minimum;
}

void LowerTo(float& component, float maximum)
{
    if (component > maximum)
        component = maximum;
}

} // namespace

Orientation Levelled(const Orientation& camera)
{
    Vector direction{camera.direction.x, 0, camera.direction.z};
    if (direction.x == 0 && direction.z == 0)
        direction = {Nearly0, 0, Nearly0};
    const float upward = camera.up.y < 0 ? -1.0F : 1.0F;
    return {direction, {0, upward, 0}};
}

float ZoomedField(float field, float zoom, D3DRMPROJECTIONTYPE projection)
{
    const float zoomed = ToSingle(static_cast<double>(field) - zoom);
    if (projection == D3DRMPROJECT_ORTHOGRAPHIC && zoomed < SmallestOrthographicField)
        return SmallestOrthographicField;
    return zoomed < SmallestField ? SmallestField : zoomed;
}

CameraPlacement PlacementOf(tdlOrientation view, D3DRMPROJECTIONTYPE projection)
{
    const auto d = static_cast<float>(projection == D3DRMPROJECT_PERSPECTIVE ? PerspectiveDistance : OtherDistance);
    switch (view)
    {
    case tdlFrontView:
        return {{0, 0, -d}, {{0, 0, 1}, {0, 1, 0}}};
    case tdlRearView:
        return {{0, 0, d}, {{0, 0, -1}, {0, 1, 0}}};
    case tdlTopView:
        return {{0, d, 0}, {{0, -1, 0}, {0, 0, 1}}};
    case tdlBottomView:
        return {{0, -d, 0}, {{0, 1, 0}, {0, 0, 1}}};
    case tdlRightView:
        return {{d, 0, 0}, {{-1, 0, 0}, {0, 1, 0}}};
    case tdlLeftView:
        break;
    }
    return {{-d, 0, 0}, {{1, 0, 0}, {0, 1, 0}}};
}

Vector ClampedToBox(Vector position, Vector minimum, Vector maximum)
{
    RaiseTo(position.x, minimum.x);
    RaiseTo(position.y, minimum.y);
    RaiseTo(position.z, minimum.z);
    LowerTo(position.x, maximum.x);
    LowerTo(position.y, maximum.y);
    LowerTo(position.z, maximum.z);
    return position;
}

Vector PulledInside(Vector position, float distance, float radius)
{
    return distance > radius ? position * ToSingle(Divide(radius, distance)) : position;
}

Vector InFrontOfView(Vector place, tdlOrientation view)
{
    constexpr float Distance = 90;
    switch (view)
    {
    case tdlFrontView:
        return {place.x, place.y, -Distance};
    case tdlRearView:
        return {place.x, place.y, Distance};
    case tdlRightView:
        return {Distance, place.y, place.z};
    case tdlLeftView:
        return {-Distance, place.y, place.z};
    case tdlTopView:
        return {place.x, Distance, place.z};
    case tdlBottomView:
        break;
    }
    return {place.x, -Distance, place.z};
}

} // namespace lumora
