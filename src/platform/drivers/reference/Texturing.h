// Textures with their mip levels, sampled with the six filters.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/reference/Vertex.h"

#include <cstdint>
#include <vector>

namespace lumora::reference
{

/// A place on a texture and how fast it moves over the screen, in texels of the finest level.
struct Footprint
{
    double u = 0;
    double v = 0;
    double texelsPerPixel = 0; ///< the longer of the two screen derivatives
};

/// A picture, its half, its quarter and so on down to 1 by 1.
class MipChain
{
public:
    explicit MipChain(const TextureImage& image);

    Color4 Sample(TextureFilter filter, const Footprint& footprint) const;

    int Width() const { return levels_.front().width; }
    int Height() const { return levels_.front().height; }

private:
    struct Level
    {
        int width = 0;
        int height = 0;
        std::vector<std::uint32_t> pixels;

        Color4 Texel(double column, double row) const;
        Color4 Nearest(double u, double v) const;
        Color4 Linear(double u, double v) const;
    };

    static Level Half(const Level& level);
    const Level& Nearest(double level) const;
    template<typename Look>
    Color4 BetweenLevels(double level, Look look) const;

    std::vector<Level> levels_;
};

/// False for an image without pixels, or whose size and pixels contradict each other: it is drawn as no texture.
bool IsUsable(const TextureImage* image);

} // namespace lumora::reference
