// The lighting equations, one point at a time.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/reference/Vertex.h"

#include <cstdint>
#include <vector>

namespace lumora::reference
{

/// The lights of a pass and where they are seen from.
struct Illumination
{
    std::vector<LightState> lights;
    Double3 eye;
    Double3 viewDirection;
    bool eyeIsNear = false; ///< highlights are seen from `eye`, not from infinitely far
};

/// A point of a surface in world space.
struct SurfacePoint
{
    Double3 position;
    Double3 normal; ///< unit length
    std::uint32_t color = 0;
};

struct Shade
{
    Color4 diffuse;
    Double3 highlight;
};

/// 0xAARRGGBB as numbers in 0..1.
Color4 ToColor4(std::uint32_t argb);

Illumination IlluminationOf(const PassState& pass, bool monochrome);

/// The light that `point` sends to the eye.
Shade Lit(const Illumination& illumination, const SurfaceMaterial& material, const SurfacePoint& point);

/// The vertex color alone.
Shade Unlit(const SurfacePoint& point);

} // namespace lumora::reference
