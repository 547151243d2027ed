// The one interface behind which every Direct3D driver draws.
//
// All drivers answer the same equations, so that `reference` can judge the others:
//
// - Device coordinates: x right, y down, whole numbers are pixel centres; pixel (0, 0) is the top-left one.
//   Screen positions are rounded to 1/256 of a pixel (nearest, halves up) before anything is rasterised, and winding
//   and coverage are exact from there on. A triangle covers a pixel when its centre lies inside, or on a top or left
//   edge (top-left rule). Attributes are interpolated at pixel centres between the rounded positions.
// - A vertex goes through world, camera and clip space (row vectors, left-handed). What is kept has
//   -w <= x <= w, -w <= y <= w, 0 <= z <= w. Depth is z / w, linear on the screen, tested less-or-equal.
//   What has a vertex that is not finite, or no area, is not drawn.
// - Colours, texture coordinates and fog depth are interpolated perspective-correctly: the picture does not depend
//   on where a triangle was clipped. Where the depth range of a triangle makes the difference invisible (below half
//   a step of 255) a driver may interpolate linearly on the screen.
// - Gouraud lights each vertex with its normal; flat lights each face once with the face's normal at the first vertex
//   of the face's first triangle and gives all its triangles that colour, taking colour and alpha of that vertex.
//   Phong is drawn as Gouraud.
// - Lit colour: diffuse = clamp(emissive + vertex color * (ambient + sum of a * max(0, N.L) * light)),
//   highlight = clamp(sum of a * max(0, N.H)^power * light * specular) over lights with N.L > 0 when power > 0, where H
//   is the unit vector between L and the direction to the eye (PassState::viewDependentSpecular says which).
//   Attenuation a is 1 for directional light; for point and spot 1 / (c + l d + q d^2), 1 where that divisor is not
//   above 0, and 0 beyond the range; spots fall off linearly in the angle from 1 at half the umbra angle to 0 at half
//   the penumbra angle. Lighting off: diffuse is the vertex color, no highlight.
// - Monochrome light (a driver's option): the color of every light is replaced by its luminance, 0.299 red +
//   0.587 green + 0.114 blue in all three channels. Vertex, emissive, specular, texture and fog colors stay.
// - Pixel: untextured, the vertex sum clamp(diffuse + highlight) is interpolated; textured,
//   clamp(texel * diffuse + highlight) with both interpolated. Alpha is vertex alpha times texel alpha.
// - Fog: per pixel, f = visible part by the eye-space depth z: linear (end - z) / (end - start), exponential
//   e^-(density z), exponential squared e^-(density z)^2, clamped to 0..1; color = f * color + (1 - f) * fog color.
// - Texture coordinates wrap. Linear filters blend the four nearest texel centres; mip levels are 2 by 2 box averages,
//   each channel rounded to a byte (halves up); an odd last row or column falls away, a side never gets shorter than 1.
//   The level is log2 of the larger of the two screen derivatives' lengths in texels, taken at the pixel's centre and
//   clamped to the levels there are; nearest level = floor(level + 0.5). Nearest and Linear use level 0 only.
// - Transparency: a solid triangle is translucent when one of the alphas it is drawn with is below 255 or its texture
//   has translucency. Sorted keeps translucent triangles, shaded, until Finish, Clear or SetTarget; they are drawn by
//   the mean camera-space z of their three vertices (before clipping), farthest first, equal ones in order of
//   submission. Opaque triangles are drawn at once.
// - A channel becomes a byte as floor(255 value + 0.5). A blend reads the byte that is there as byte / 255.
//
// Lines and points:
//
// - They take no texture, test and write depth, and are fogged. Stippled mode draws them with holes, the two other
//   modes blend them at once in order of submission.
// - A line is cut to the view volume first; its ends are then rounded to 1/256 of a pixel as all positions are. It is
//   x-major when |dx| >= |dy|, else y-major. It draws one pixel for each whole major coordinate m with
//   min <= m < max of its ends' major coordinates; the minor coordinate is the line's exact one at m, rounded to the
//   nearest whole number, halves up. Where no m fits it draws the pixel nearest to its start (both coordinates rounded
//   halves up). Depth is linear between the ends, colors are perspective-correct.
// - Wireframe draws each of a group's edges from vertexA to vertexB; one is left out when every face at it is culled.
//   Gouraud interpolates between the two vertices; flat takes the color of triangleA's face.
// - Points draws a vertex, as the pixel nearest to it (halves up), once for every group that uses it in a triangle that
//   is not culled, in the order in which the group's triangles name them; always lit with the vertex's own normal.
// - Here the face of a triangle is culled by its winding before clipping: clockwise when the determinant of its three
//   clip-space rows (x, y, w) is below 0. A face seen from its edge (0) is culled unless the cull mode is None.
#pragma once

#include "base/Matrix.h"
#include "platform/drivers/DrawMesh.h"
#include "platform/pictures/PixelView.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace lumora
{

enum class LightKind
{
    Ambient,
    Directional, ///< from infinitely far, along `direction`
    Point,
    Spot,
};

/// A light in world space.
struct LightState
{
    LightKind kind = LightKind::Directional;
    Vector color{1, 1, 1}; ///< red, green, blue; may exceed 1
    Double3 position;
    Double3 direction; ///< the way the light travels, unit length
    double range = 0;  ///< scene units; beyond it the light does not reach
    double constantAttenuation = 1;
    double linearAttenuation = 0;
    double quadraticAttenuation = 0;
    double umbra = 0;    ///< full angle of the bright cone, radians
    double penumbra = 0; ///< full angle of the whole cone, radians
};

enum class FogMode
{
    None,
    Exponential,
    ExponentialSquared,
    Linear,
};

struct FogState
{
    FogMode mode = FogMode::None;
    Vector color;
    double start = 0; ///< eye-space depths, for Linear
    double end = 1;
    double density = 0; ///< per scene unit, for the exponential modes
};

/// Which faces are left out, by their winding on the screen (Direct3D numbers).
enum class CullMode : std::uint32_t
{
    None = 1,
    Clockwise = 2,
    CounterClockwise = 3,
};

/// Filters of textures (retained-mode numbers).
enum class TextureFilter : std::uint32_t
{
    Nearest = 0,
    Linear = 1,
    MipNearest = 2,       ///< nearest texel of the nearest level
    MipLinear = 3,        ///< linear within the nearest level
    LinearMipNearest = 4, ///< nearest texels of two levels, blended
    LinearMipLinear = 5,  ///< linear within two levels, blended
};

enum class Transparency
{
    Stippled, ///< opaque with holes: drawn where alpha * 16 > StippleRank[y mod 4][x mod 4]
    Blended,  ///< in submission order, writing depth
    Sorted,   ///< kept until Finish or Clear, then drawn farthest first, depth tested and not written
};

/// The places of a 4 by 4 ordered-dither cell in the order in which growing alpha fills them.
inline constexpr int StippleRank[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

enum class FillStyle
{
    Points,
    Wireframe,
    Solid,
};

/// Everything that is the same for all items of a pass.
struct PassState
{
    Matrix4 worldToCamera = Matrix4::Identity();
    Matrix4 cameraToClip = Matrix4::Identity();
    Double3 eye;           ///< world space
    Double3 viewDirection; ///< world space, unit length: what the camera looks along
    bool orthographic = false;

    // Device x = centreX + halfWidth * clip.x / w, device y = centreY - halfHeight * clip.y / w.
    double centreX = 0;
    double centreY = 0;
    double halfWidth = 0;
    double halfHeight = 0;
    PixelRect scissor; ///< only these pixels are drawn

    std::span<const LightState> lights; ///< valid during Begin only; a driver copies what it keeps
    FogState fog;
    CullMode cull = CullMode::None;
    TextureFilter filter = TextureFilter::Linear;
    Transparency transparency = Transparency::Sorted;
    /// The highlight is seen from the eye's true place; otherwise from infinitely far against `viewDirection`.
    /// With an orthographic projection both are the same.
    bool viewDependentSpecular = false;
};

/// One mesh at one place.
struct DrawItem
{
    std::shared_ptr<const DrawMesh> mesh;
    Matrix4 world = Matrix4::Identity();
    FillStyle fill = FillStyle::Solid;
    bool gouraud = true; ///< else flat
    bool lit = true;
    bool isInView = false; ///< whoever draws has looked: no need to compare the mesh's box with the view
};

/// Parts of a target that Clear fills.
struct ClearParts
{
    bool color = false;
    bool depth = false;
};

/// Bytes that a driver has allocated for itself: the pixels it draws into and the meshes are others'.
struct DriverMemory
{
    std::size_t held = 0;  ///< now, by the capacity of its buffers
    std::size_t bound = 0; ///< what the driver's formula allows for all it was asked to draw so far; 0: it states none
};

/// Draws into one surface at a time. Not thread-safe: calls come from the user interface's thread, though a driver may
/// share its work out. Errors are RuntimeError with a Direct3D result code (RMBadDevice: lost, worth a retry).
class Driver
{
public:
    virtual ~Driver() = default;

    /// Draws into `target` from now on, with a depth buffer of its size; what was drawn before is finished first.
    /// The pixels stay the caller's and must live until the next SetTarget or the end of the driver.
    /// Error RMBadAlloc when the buffers cannot be had.
    virtual void SetTarget(const PixelView& target) = 0;

    /// Fills `area` (clipped to the target) with `color` (0x00RRGGBB) and the farthest depth. Translucent faces that
    /// wait to be sorted are drawn first.
    virtual void Clear(ClearParts parts, const PixelRect& area, std::uint32_t color) = 0;

    /// Starts a pass. Passes do not nest.
    virtual void Begin(const PassState& pass) = 0;

    /// Draws one item of the pass; the driver may put the work off until Finish, and hold the mesh until the next
    /// picture begins.
    virtual void Draw(const DrawItem& item) = 0;

    virtual void End() = 0;

    /// Draws what still waits. On return every pixel is in the target.
    virtual void Finish() = 0;

    /// Nothing for a driver that keeps no account.
    virtual DriverMemory Memory() const { return {}; }

    /// Ends a picture as Finish does (faces that wait are not sorted together with later ones), but the driver may put
    /// the drawing off until one of the two Finish functions or SetTarget.
    virtual void FinishLater() { Finish(); }

    /// Draws what still waits and puts the averages of the target's blocks of `factor` by `factor` pixels (1 to 16)
    /// into `averages`, with the bytes of BlockAverager. The target itself may be left behind: its pixels come with the
    /// next Finish, and a Clear of all its color and depth before that spares them altogether. `averages` is written
    /// during this call only.
    /// False when the driver has no way to do better than a caller that calls Finish and averages the target, which is
    /// what must be done then.
    virtual bool FinishAveraged(const PixelView& /*averages*/, int /*factor*/) { return false; }
};

} // namespace lumora
