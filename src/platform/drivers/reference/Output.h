// The last stage: a fragment becomes a pixel, or not.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/reference/Rasterizer.h"
#include "platform/drivers/reference/Texturing.h"

#include <vector>

namespace lumora::reference
{

/// Pixels that belong to the caller, and their depths.
struct Target
{
    PixelView pixels;
    std::vector<double> depths;

    double& DepthAt(int x, int y) { return depths[static_cast<std::size_t>(y) * pixels.width + x]; }
};

/// How a primitive's fragments are put on the screen.
struct OutputRules
{
    FogState fog;
    TextureFilter filter = TextureFilter::Linear;
    bool stippled = false; ///< holes instead of a blend
    bool writesDepth = true;
};

/// `texture` may be nothing.
void Output(Target& target, const OutputRules& rules, const MipChain* texture, const Fragment& fragment);

} // namespace lumora::reference
