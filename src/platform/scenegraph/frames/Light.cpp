#include "platform/scenegraph/frames/Light.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Rotation.h"

#include <limits>

namespace lumora
{

namespace
{
constexpr const char* Source = "Light";
}

Light::Light(LightKind kind, Vector color) : kind_(kind), color_(color), range_(std::numeric_limits<float>::max())
{
    RequireFinite(Source, color);
}

void Light::SetColor(float red, float green, float blue)
{
    faults::Point("Light.SetColor");
    RequireFinite(Source, {red, green, blue});
    color_ = {red, green, blue};
}

void Light::SetRange(float range)
{
    faults::Point("Light.SetRange");
    RequireFiniteNotNegative(Source, {range});
    range_ = range;
}

void Light::SetAttenuation(float constant, float linear, float quadratic)
{
    faults::Point("Light.SetAttenuation");
    RequireFiniteNotNegative(Source, {constant, linear, quadratic});
    attenuation_ = {constant, linear, quadratic};
}

void Light::SetCone(float umbra, float penumbra)
{
    faults::Point("Light.SetCone");
    RequireFiniteNotNegative(Source, {umbra, penumbra});
    umbra_ = umbra;
    penumbra_ = penumbra;
}

LightState Light::In(const Matrix4& world) const
{
    const Double3 forward = UnitOf(world.Row(2));
    LightState state;
    state.kind = kind_;
    state.color = color_;
    state.position = world.Row(3);
    state.direction = Dot(forward, forward) > 0 ? forward : Double3{0, 0, 1}; // a frame scaled to nothing
    state.range = range_;
    state.constantAttenuation = attenuation_.x;
    state.linearAttenuation = attenuation_.y;
    state.quadraticAttenuation = attenuation_.z;
    state.umbra = umbra_;
    state.penumbra = penumbra_;
    return state;
}

} // namespace lumora
