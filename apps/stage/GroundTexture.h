// The picture on the built-in scene's ground: tiles, and the shadows that lie on them.
#pragma once

#include "base/Matrix.h"
#include "platform/scenegraph/frames/Texture.h"

#include <span>

namespace lumora::stage
{

/// Something round that keeps light from the ground.
struct Occluder
{
    Vector centre;
    float radius;
    float strength = 1; ///< how dark its shadow is, 0..1
};

/// A square of `side` scene units around the origin, its u along x and its v along z. Shadows fall along `light`
/// (y below 0). It is clear as glass from `fadeEnd` units on.
std::shared_ptr<Texture> MakeGroundTexture(float side, float fadeEnd, std::span<const Occluder> occluders,
                                           Vector light);

} // namespace lumora::stage
