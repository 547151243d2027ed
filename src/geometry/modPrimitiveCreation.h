// Closed solids about the y axis, centred on the origin and one unit high: profiles revolved once and welded.
//
// n is the number of points along the profile from top to bottom, 2 or more; `steps` the number of divisions around the
// axis. All faces look outward.
//
// Errors, with source "modPrimitiveCreation": 6 for n = 1, where the profile has no spacing (11 for a cone), 9 for n
// below 1 or negative steps, 11 for steps of 0, 7 beyond MaximumVertices (Records.h), and what the mesh raises.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// A new mesh: a sphere of radius 0.5, its poles at the top and the bottom. Closed for n and steps of 3 or more.
std::shared_ptr<MeshBuilder> CreateSphere(RetainedMode& root, std::int32_t n, std::int32_t steps);

/// A new mesh: a cone frustum of height 1 and bottom radius 0.5 with its discs. Its top radius is `topRadiusPercent` of
/// 0.5: 0 gives a pointed cone (without an upper disc), 100 a cylinder. Closed for steps of 3 or more.
std::shared_ptr<MeshBuilder> CreateCone(RetainedMode& root, std::int32_t n, std::int32_t steps,
                                        std::int32_t topRadiusPercent);

/// What CreateCone answers.
std::shared_ptr<MeshBuilder> BuildConeMesh(RetainedMode& root, std::int32_t n, std::int32_t steps,
                                           std::int32_t topRadiusPercent);

enum class TurnSense
{
    Clockwise,
    CounterClockwise, ///< by positive angles
};

/// Adds one face of `count` corners to the mesh: `rim` and what it becomes when turned about an axis through the origin
/// by equal parts of a full turn. The axis is (axis.x, axis.y, -axis.z). Without corners (`count` of 0 or less) the
/// face is an empty one.
void CreateDisc(RetainedMode& root, MeshBuilder& mesh, Vector rim, Vector axis, std::int32_t count, TurnSense sense);

} // namespace lumora
