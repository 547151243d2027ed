// The last stage: a fragment becomes a pixel, or not.
#include "platform/drivers/reference/Output.h"

#include "platform/drivers/reference/Lighting.h"

#include <algorithm>
#include <cmath>

namespace lumora::reference
{

namespace
{

double VisiblePart(const FogState& fog, double depth)
{
    switch (fog.mode)
    {
    case FogMode::Linear:
        return Clamp01((fog.end - depth) / (fog.end - fog.start));
    case FogMode::Exponential:
        return Clamp01(std::exp(-fog.density * depth));
    case FogMode::ExponentialSquared:
        return Clamp01(std::exp(-(fog.density * depth) * (fog.density * depth)));
    case FogMode::None:
        break;
    }
    return 1;
}

Footprint FootprintOf(const MipChain& texture, const Fragment& fragment)
{
    const double width = texture.Width();
    const double height = texture.Height();
    const double perX = std::hypot(fragment.uPerX * width, fragment.vPerX * height);
    const double perY = std::hypot(fragment.uPerY * width, fragment.vPerY * height);
    return {fragment.attributes.u, fragment.attributes.v, std::max(perX, perY)};
}

Color4 SurfaceColor(const OutputRules& rules, const MipChain* texture, const Fragment& fragment)
{
    const Color4& diffuse = fragment.attributes.diffuse;
    const Double3& highlight = fragment.attributes.highlight;
    if (texture == nullptr)
        return {Clamp01(diffuse.color + highlight), diffuse.alpha};
    const Color4 texel = texture->Sample(rules.filter, FootprintOf(*texture, fragment));
    return {Clamp01(Product(texel.color, diffuse.color) + highlight), texel.alpha * diffuse.alpha};
}

std::uint32_t ToByte(double value)
{
    return static_cast<std::uint32_t>(std::floor(255 * Clamp01(value) + 0.5));
}

std::uint32_t ToPixel(Double3 color)
{
    return ToByte(color.x) << 16 | ToByte(color.y) << 8 | ToByte(color.z);
}

} // namespace

void Output(Target& target, const OutputRules& rules, const MipChain* texture, const Fragment& fragment)
{
    double& depth = target.DepthAt(fragment.x, fragment.y);
    const double ownDepth = Clamp01(fragment.depth);
    if (!(ownDepth <= depth))
        return;
    const Color4 surface = SurfaceColor(rules, texture, fragment);
    if (rules.stippled && !(surface.alpha * 16 > StippleRank[fragment.y & 3][fragment.x & 3]))
        return;
    const double visible = VisiblePart(rules.fog, fragment.attributes.eyeDepth);
    const Double3 color = surface.color * visible + Double3{rules.fog.color} * (1 - visible);
    std::uint32_t& pixel = target.pixels.Row(fragment.y)[fragment.x];
    const double opacity = rules.stippled ? 1 : Clamp01(surface.alpha);
    pixel = ToPixel(color * opacity + ToColor4(pixel).color * (1 - opacity));
    if (rules.writesDepth)
        depth = ownDepth;
}

} // namespace lumora::reference
