// Textures with their mip levels, sampled with the six filters.
#include "platform/drivers/reference/Texturing.h"

#include "platform/drivers/reference/Lighting.h"

#include <algorithm>
#include <cmath>

namespace lumora::reference
{

namespace
{

/// A whole number wrapped to 0 .. count - 1; 0 for one that is not finite.
std::size_t Wrapped(double index, int count)
{
    const double remainder = std::fmod(index, count);
    if (!std::isfinite(remainder))
        return 0;
    return static_cast<std::size_t>(remainder < 0 ? remainder + count : remainder);
}

Color4 Mix(Color4 a, Color4 b, double t)
{
    return a * (1 - t) + b * t;
}

/// The mean of four colors, each channel rounded to a byte.
std::uint32_t Average(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8)
    {
        const auto channel = [shift](std::uint32_t color) { return (color >> shift) & 0xFFU; };
        result |= (channel(a) + channel(b) + channel(c) + channel(d) + 2) / 4 << shift;
    }
    return result;
}

} // namespace

bool IsUsable(const TextureImage* image)
{
    return image != nullptr && image->width > 0 && image->height > 0 &&
           image->pixels.size() == static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height);
}

MipChain::MipChain(const TextureImage& image)
{
    levels_.push_back({image.width, image.height, image.pixels});
    while (levels_.back().width > 1 || levels_.back().height > 1)
        levels_.push_back(Half(levels_.back()));
}

MipChain::Level MipChain::Half(const Level& level)
{
    Level half{std::max(1, level.width / 2), std::max(1, level.height / 2), {}};
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x)
        {
            const auto at = [&](int column, int row)
            {
                return level.pixels[static_cast<std::size_t>(std::min(row, level.height - 1)) * level.width +
                                    std::min(column, level.width - 1)];
            };
            half.pixels.push_back(
                Average(at(2 * x, 2 * y), at(2 * x + 1, 2 * y), at(2 * x, 2 * y + 1), at(2 * x + 1, 2 * y + 1)));
        }
    return half;
}

Color4 MipChain::Level::Texel(double column, double row) const
{
    return ToColor4(pixels[Wrapped(row, height) * width + Wrapped(column, width)]);
}

Color4 MipChain::Level::Nearest(double u, double v) const
{
    return Texel(std::floor(u * width), std::floor(v * height));
}

Color4 MipChain::Level::Linear(double u, double v) const
{
    const double x = u * width - 0.5;
    const double y = v * height - 0.5;
    if (!std::isfinite(x) || !std::isfinite(y))
        return Texel(0, 0);
    const double left = std::floor(x);
    const double top = std::floor(y);
    return Mix(Mix(Texel(left, top), Texel(left + 1, top), x - left),
               Mix(Texel(left, top + 1), Texel(left + 1, top + 1), x - left), y - top);
}

const MipChain::Level& MipChain::Nearest(double level) const
{
    return levels_[static_cast<std::size_t>(std::floor(level + 0.5))];
}

template<typename Look>
Color4 MipChain::BetweenLevels(double level, Look look) const
{
    const auto finer = static_cast<std::size_t>(std::floor(level));
    const std::size_t coarser = std::min(finer + 1, levels_.size() - 1);
    return Mix(look(levels_[finer]), look(levels_[coarser]), level - std::floor(level));
}

Color4 MipChain::Sample(TextureFilter filter, const Footprint& footprint) const
{
    const double u = footprint.u;
    const double v = footprint.v;
    const double coarsest = static_cast<double>(levels_.size() - 1);
    const double level = footprint.texelsPerPixel > 1 ? std::min(std::log2(footprint.texelsPerPixel), coarsest) : 0.0;
    const auto nearest = [&](const Level& in) { return in.Nearest(u, v); };
    const auto linear = [&](const Level& in) { return in.Linear(u, v); };
    switch (filter)
    {
    case TextureFilter::Nearest:
        return nearest(levels_.front());
    case TextureFilter::MipNearest:
        return nearest(Nearest(level));
    case TextureFilter::MipLinear:
        return linear(Nearest(level));
    case TextureFilter::LinearMipNearest:
        return BetweenLevels(level, nearest);
    case TextureFilter::LinearMipLinear:
        return BetweenLevels(level, linear);
    case TextureFilter::Linear:
        break;
    }
    return linear(levels_.front());
}

} // namespace lumora::reference
