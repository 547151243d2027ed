#include "platform/scenegraph/rays/BoxTree.h"

#include <bit>
#include <cstring>

namespace lumora::rays
{

namespace
{

constexpr float Infinity = std::numeric_limits<float>::infinity();

} // namespace

Node::Node() : parent(NoReference), laneAbove(0)
{
    for (int plane = 0; plane < 6; ++plane)
        std::fill_n(planes[plane], Width, plane % 2 == 0 ? Infinity : -Infinity);
    std::fill_n(child, Width, NoReference);
}

void Node::SetLane(int lane, const float (&lower)[3], const float (&upper)[3])
{
    for (int axis = 0; axis < 3; ++axis)
    {
        planes[2 * axis][lane] = lower[axis];
        planes[2 * axis + 1][lane] = upper[axis];
    }
}

double ScaleFor(double reach)
{
    int exponent = 0;
    std::frexp(reach, &exponent);
    return std::ldexp(1.0, -std::clamp(exponent, -1000, 1000));
}

std::optional<BoxRay> Prepared(const LocalRay& ray, const BoxTree& tree)
{
    const double reach = tree.bounds.Reach();
    const Interval within = Within(tree.bounds.Grown(1e-8 * reach), ray);
    if (tree.bounds.IsEmpty() || within.IsEmpty())
        return std::nullopt;
    const double direction[3] = {ray.direction.x, ray.direction.y, ray.direction.z};
    const double origin[3] = {ray.origin.x, ray.origin.y, ray.origin.z};
    const double most = std::max({std::abs(direction[0]), std::abs(direction[1]), std::abs(direction[2])});
    BoxRay result;
    result.start = within.first;
    result.rate = most * tree.scale;
    if (!(result.rate > 0) || !std::isfinite(result.rate) || !std::isfinite(result.start))
        return std::nullopt;
    for (int axis = 0; axis < 3; ++axis)
    {
        // Nothing moves noticeably within the tree at a speed of 1e-18.
        const double slope = direction[axis] / most;
        const double speed = std::abs(slope) > 1e-18 ? slope : std::copysign(1e-18, slope);
        const double place = (origin[axis] + direction[axis] * result.start) * tree.scale;
        const double far = (std::abs(origin[axis]) + std::abs(direction[axis] * result.start)) * tree.scale;
        // A Single's rounding of the place, a double's of what lies far away, and the slowness above.
        const double margin = 4 * 0x1p-24 * std::abs(place) + 16 * 0x1p-53 * far + 1e-12;
        const double ahead = speed > 0 ? margin : -margin;
        result.nearOrigin[axis] = static_cast<float>(place + ahead);
        result.farOrigin[axis] = static_cast<float>(place - ahead);
        result.nearInverse[axis] = static_cast<float>(1 / speed);
        result.farInverse[axis] = static_cast<float>((1 + 1e-6) / speed);
        result.nearPlane[axis] = 2 * axis + (speed > 0 ? 0 : 1);
        result.farPlane[axis] = 2 * axis + (speed > 0 ? 1 : 0);
    }
    return result;
}

} // namespace lumora::rays
