#include "properties/PropertyGroups.h"

namespace lumora
{

namespace
{

// Rows of the property table from this one on.
struct Group
{
    std::string_view first;
    std::string_view heading;
};

constexpr Group Groups[] = {
    {"Direct3DDevice", "Device"},
    {"BackColor", "Window"},
    {"Scene", "Scene"},
    {"NavMouseButton", "Navigation"},
    {"NavControlPrimary", "On-screen controls"},
    {"NavMouseSensitivity", "Mouse navigation"},
    {"AntiAlias", "Picture"},
    {"NavMouseX", "Mouse navigation"},
    {"ProjectionType", "Picture"},
    {"CenterNavigation", "Mouse navigation"},
    {"TextureQuality", "Picture"},
    {"ConstrainX", "For the program"},
    {"BackgroundTexture", "Picture"},
    {"BackClippingPlane", "Camera"},
    {"ViewportID", "For the program"},
    {"SceneOriginX", "Camera"},
    {"ViewportState", "Device"},
    {"CollisionDetection", "Collision and limits"},
    {"KeyVelocityMove", "Keys"},
    {"CameraMinX", "Collision and limits"},
    {"KeyMoveForward", "Keys"},
    {"Camera", "Device"},
};

} // namespace

std::string_view GroupOf(const PropertyRow& row)
{
    std::string_view heading;
    for (const PropertyRow& above : PropertyTable())
    {
        for (const Group& group : Groups)
            if (group.first == above.name)
                heading = group.heading;
        if (above.name == row.name)
            break;
    }
    return heading;
}

} // namespace lumora
