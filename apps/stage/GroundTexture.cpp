// Shadows are splashed into a map of light, one soft ellipse for each round thing, then mixed with the tiles.
#include "stage/GroundTexture.h"

#include "platform/scenegraph/frames/Color.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumora::stage
{

namespace
{

constexpr int Pixels = 1024;
constexpr double Reflection = 0.30; // the part of the mirrored scene that shines through
constexpr float TileSide = 0.8F;
constexpr float JointHalf = 0.012F;

double Smooth(double low, double high, double value)
{
    const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// Light that reaches each pixel of the square, 0..1.
class LightMap
{
public:
    explicit LightMap(float side) : side_(side), light_(static_cast<std::size_t>(Pixels) * Pixels, 1.0F) {}

    double PlaceOf(int pixel) const { return ((pixel + 0.5) / Pixels - 0.5) * side_; }
    float At(int x, int z) const { return light_[static_cast<std::size_t>(z) * Pixels + static_cast<std::size_t>(x)]; }

    // The shadow of a sphere: dark where the ray to the light passes through it, softer the higher it floats.
    void CastShadow(const Occluder& occluder, Double3 toLight)
    {
        const double distance = occluder.centre.y / toLight.y;
        const Double3 foot = Double3{occluder.centre} - toLight * distance;
        const double soft = occluder.radius * 0.25 + distance * 0.10;
        const double reach = (occluder.radius + soft) / toLight.y;
        Darken(foot, reach,
               [&](double x, double z)
               {
                   const Double3 from = Double3{x, 0, z} - occluder.centre;
                   const double along = Dot(from, toLight);
                   const double miss = std::sqrt(std::max(0.0, Dot(from, from) - along * along));
                   const double shade = 1 - Smooth(occluder.radius - soft, occluder.radius + soft, miss);
                   return 1 - shade * 0.62 * occluder.strength;
               });
    }

    // Where something stands on the ground, light from all around has a hard time.
    void CastContact(const Occluder& occluder)
    {
        const double reach = occluder.radius * 1.7;
        const double height = occluder.centre.y / occluder.radius;
        const double strength = 0.5 * occluder.strength * Smooth(2.2, 0.9, height);
        if (strength > 0)
            Darken({occluder.centre.x, 0, occluder.centre.z}, reach,
                   [&](double x, double z)
                   {
                       const double off = std::hypot(x - occluder.centre.x, z - occluder.centre.z);
                       return 1 - strength * (1 - Smooth(0, reach, off));
                   });
    }

private:
    int PixelOf(double place) const
    {
        return static_cast<int>(std::clamp((place / side_ + 0.5) * Pixels, 0.0, static_cast<double>(Pixels)));
    }

    template<typename Light>
    void Darken(Double3 middle, double reach, Light light)
    {
        for (int z = PixelOf(middle.z - reach); z < PixelOf(middle.z + reach); ++z)
            for (int x = PixelOf(middle.x - reach); x < PixelOf(middle.x + reach); ++x)
            {
                float& there = light_[static_cast<std::size_t>(z) * Pixels + static_cast<std::size_t>(x)];
                there = std::min(there, static_cast<float>(light(PlaceOf(x), PlaceOf(z))));
            }
    }

    float side_;
    std::vector<float> light_;
};

// Two near tones, a thin joint between the tiles.
Vector TileColor(double x, double z)
{
    const double column = std::floor(x / TileSide);
    const double row = std::floor(z / TileSide);
    const double inX = std::abs(x - std::round(x / TileSide) * TileSide);
    const double inZ = std::abs(z - std::round(z / TileSide) * TileSide);
    const double joint = 1 - Smooth(JointHalf * 0.5, JointHalf * 2.2, std::min(inX, inZ));
    const bool light = std::fmod(std::abs(column + row), 2.0) < 0.5;
    const Vector tone = light ? Vector{0.80F, 0.77F, 0.75F} : Vector{0.52F, 0.53F, 0.60F};
    return tone * static_cast<float>(1 - 0.35 * joint);
}

} // namespace

std::shared_ptr<Texture> MakeGroundTexture(float side, float fadeEnd, std::span<const Occluder> occluders, Vector light)
{
    LightMap map{side};
    const Double3 toLight = -Normalized(light);
    for (const Occluder& occluder : occluders)
    {
        map.CastShadow(occluder, toLight);
        map.CastContact(occluder);
    }
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(Pixels) * Pixels);
    for (int row = 0; row < Pixels; ++row)
        for (int column = 0; column < Pixels; ++column)
        {
            const double x = map.PlaceOf(column);
            const double z = map.PlaceOf(row);
            const float lit = map.At(column, row);
            const Vector tile = TileColor(x, z);
            const double fade = 1 - Smooth(fadeEnd * 0.38, fadeEnd, std::hypot(x, z));
            // Shadows are bluer than light, and hide what shines through.
            const double alpha = fade * (1 - Reflection * (0.4 + 0.6 * lit));
            pixels[static_cast<std::size_t>(row) * Pixels + static_cast<std::size_t>(column)] =
                CreateColorRGBA(tile.x * lit, tile.y * lit, tile.z * (0.12F + 0.88F * lit), static_cast<float>(alpha));
        }
    return std::make_shared<Texture>(Pixels, Pixels, pixels);
}

} // namespace lumora::stage
