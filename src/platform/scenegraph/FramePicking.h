// Rays through a hierarchy: what frames and viewports share when they pick.
#pragma once

#include "platform/scenegraph/Frame.h"
#include "platform/scenegraph/MeshBuilder.h"

#include <vector>

namespace lumora
{

/// A ray in the world in which the roots stand; distances are counted in lengths of `direction`.
struct WorldRay
{
    Double3 origin;
    Double3 direction;
};

struct SceneHit
{
    std::shared_ptr<Visual> visual;
    Frame* holder = nullptr;
    std::uint32_t face = 0;
    double distance = 0;
};

/// What the ray meets at and below `top`: nearest first, equal distances in the order of the traversal. Frames whose
/// transform is singular or not finite have nothing to meet.
std::vector<SceneHit> FindHits(Frame& top, const WorldRay& ray, RayPickFlags flags);

/// The frames from `top` down to `holder`.
std::vector<std::shared_ptr<Frame>> PathTo(Frame& top, Frame& holder);

} // namespace lumora
