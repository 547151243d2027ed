// The two that draw, and what they draw: one mesh, one directional light with ambient light, z-buffer, back faces
// culled, in one of several modes.
#pragma once

#include "Loads.h"
#include "base/Matrix.h"
#include "parallel/SimdLevel.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lumora::bench
{

inline constexpr float AmbientPart = 0.25F;
inline constexpr float LightPart = 0.75F;
inline constexpr std::uint32_t Background = 0x203040;

/// The way the light travels.
inline Double3 LightDirection()
{
    return Normalized(Double3{0.4, -0.5, 0.8});
}

/// The camera at the origin looks along z. Depth 0..1.
Matrix4 Projection(int width, int height);

enum class Mode
{
    Gouraud,
    Wireframe,
    Sorted,   ///< all faces half transparent, farthest first
    Textured, ///< linear filter, no mip levels
};

/// A picture's size, what it shows and how the mesh is turned in it.
struct View
{
    int width = 1280;
    int height = 720;
    double angle = 0;
    Mode mode = Mode::Gouraud;
    int samples = 1;       ///< per pixel and side: drawn that much larger, then averaged
    int visuals = 1;       ///< the RGB driver's: so many small copies of the mesh, side by side
    bool isUnseen = false; ///< the copies stand behind the camera

    Matrix4 World() const;
};

class Painter
{
public:
    virtual ~Painter() = default;
    virtual void Load(const Mesh& mesh) = 0;
    /// Returns when every pixel is drawn.
    virtual void Draw(const View& view) = 0;
    /// The last picture, 0x00RRGGBB, from the top row.
    virtual std::vector<std::uint32_t> Pixels(const View& view) = 0;
    virtual std::string Name() const = 0;
};

std::unique_ptr<Painter> MakeRgbPainter(int threads, SimdLevel simd);

/// Through EGL without a window. Raises std::runtime_error where that cannot be had.
std::unique_ptr<Painter> MakeOpenGlPainter();

} // namespace lumora::bench
