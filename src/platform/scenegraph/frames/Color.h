// Packed colours, 0xAARRGGBB.
#pragma once

#include "base/Vector.h"

#include <cstdint>

namespace lumora
{

using Color = std::uint32_t;

/// Packs components of 0..1 (clamped; NaN counts as 0).
Color CreateColorRGBA(float red, float green, float blue, float alpha = 1.0F);

inline std::uint32_t AlphaOf(Color color)
{
    return color >> 24;
}

/// Red, green, blue as 0..1.
inline Vector ColorComponents(Color color)
{
    return {static_cast<float>((color >> 16) & 255) / 255.0F, static_cast<float>((color >> 8) & 255) / 255.0F,
            static_cast<float>(color & 255) / 255.0F};
}

} // namespace lumora
