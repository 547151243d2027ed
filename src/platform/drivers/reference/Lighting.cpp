// The lighting equations, one point at a time.
#include "platform/drivers/reference/Lighting.h"

#include <algorithm>
#include <cmath>

namespace lumora::reference
{

namespace
{

/// What of one light arrives at a point.
struct Arrival
{
    Double3 toLight; ///< unit length
    double strength = 0;
};

double SpotStrength(const LightState& light, Double3 toLight)
{
    const double angle = std::acos(std::clamp(-Dot(light.direction, toLight), -1.0, 1.0));
    if (angle <= light.umbra / 2)
        return 1;
    if (angle >= light.penumbra / 2)
        return 0;
    return (light.penumbra / 2 - angle) / (light.penumbra / 2 - light.umbra / 2);
}

double DistanceStrength(const LightState& light, double distance)
{
    if (!(distance <= light.range))
        return 0;
    const double divisor = light.constantAttenuation + light.linearAttenuation * distance +
                           light.quadraticAttenuation * distance * distance;
    return divisor > 0 ? 1 / divisor : 1;
}

Arrival ArrivalAt(const LightState& light, Double3 position)
{
    if (light.kind == LightKind::Directional)
        return {-light.direction, 1};
    const Double3 way = light.position - position;
    const Double3 toLight = Normalized(way);
    const double strength = DistanceStrength(light, Length(way));
    return {toLight, light.kind == LightKind::Spot ? strength * SpotStrength(light, toLight) : strength};
}

Double3 DirectionToEye(const Illumination& illumination, Double3 position)
{
    return illumination.eyeIsNear ? Normalized(illumination.eye - position) : -illumination.viewDirection;
}

} // namespace

Color4 ToColor4(std::uint32_t argb)
{
    const auto channel = [&](int shift) { return static_cast<double>((argb >> shift) & 0xFFU) / 255.0; };
    return {{channel(16), channel(8), channel(0)}, channel(24)};
}

Illumination IlluminationOf(const PassState& pass, bool monochrome)
{
    Illumination result{{pass.lights.begin(), pass.lights.end()},
                        pass.eye,
                        pass.viewDirection,
                        pass.viewDependentSpecular && !pass.orthographic};
    if (!monochrome)
        return result;
    for (LightState& light : result.lights)
    {
        const float luminance = 0.299F * light.color.x + 0.587F * light.color.y + 0.114F * light.color.z;
        light.color = {luminance, luminance, luminance};
    }
    return result;
}

Shade Lit(const Illumination& illumination, const SurfaceMaterial& material, const SurfacePoint& point)
{
    const Double3 toEye = DirectionToEye(illumination, point.position);
    Double3 received;
    Double3 highlight;
    for (const LightState& light : illumination.lights)
    {
        if (light.kind == LightKind::Ambient)
        {
            received = received + light.color;
            continue;
        }
        const Arrival arrival = ArrivalAt(light, point.position);
        const double incidence = Dot(point.normal, arrival.toLight);
        if (!(incidence > 0) || arrival.strength == 0)
            continue;
        received = received + Double3{light.color} * (arrival.strength * incidence);
        if (!(material.power > 0))
            continue;
        const double mirrored = std::max(0.0, Dot(point.normal, Normalized(arrival.toLight + toEye)));
        highlight = highlight + Double3{light.color} * (arrival.strength * std::pow(mirrored, material.power));
    }
    const Color4 color = ToColor4(point.color);
    return {{Clamp01(Double3{material.emissive} + Product(color.color, received)), color.alpha},
            Clamp01(Product(highlight, Double3{material.specular}))};
}

Shade Unlit(const SurfacePoint& point)
{
    return {ToColor4(point.color), {}};
}

} // namespace lumora::reference
