// The render quality that three properties make together.
#pragma once

#include "properties/Properties.h"

namespace lumora
{

/// The bitwise or of ShadeMode, LightMode and FillMode.
inline std::uint32_t CombinedQuality(const Properties& properties)
{
    return static_cast<std::uint32_t>(properties.ShadeMode) | static_cast<std::uint32_t>(properties.LightMode) |
           static_cast<std::uint32_t>(properties.FillMode);
}

} // namespace lumora
