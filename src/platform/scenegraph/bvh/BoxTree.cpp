#include "platform/scenegraph/bvh/BoxTree.h"

#include <bit>
#include <cstring>

namespace lumora::rays
{

namespace
{

constexpr float Infinity = std::numeric_limits<float>::infinity();

// Where a ray enters a box, or infinity when it misses. The box has room for what multiplying by inverses rounds.
double StartIn(const DoubleBox& box, const double (&origin)[3], const double (&direction)[3])
{
    const double minimum[3] = {box.minimum.x, box.minimum.y, box.minimum.z};
    const double maximum[3] = {box.maximum.x, box.maximum.y, box.maximum.z};
    Interval within;
    for (int axis = 0; axis < 3; ++axis)
    {
        if (direction[axis] == 0)
        {
            Narrow(within, origin[axis], 0, minimum[axis], maximum[axis]);
            continue;
        }
        const double inverse = 1 / direction[axis];
        const double a = (minimum[axis] - origin[axis]) * inverse;
        const double b = (maximum[axis] - origin[axis]) * inverse;
        within.first = std::max(within.first, std::min(a, b));
        within.last = std::min(within.last, std::max(a, b));
    }
    return within.IsEmpty() ? Missed : within.first;
}

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
    if (tree.bounds.IsEmpty())
        return std::nullopt;
    const DoubleBox bounds = tree.bounds.Grown(1e-8 * tree.bounds.Reach());
    const double direction[3] = {ray.direction.x, ray.direction.y, ray.direction.z};
    const double origin[3] = {ray.origin.x, ray.origin.y, ray.origin.z};
    const double most = std::max({std::abs(direction[0]), std::abs(direction[1]), std::abs(direction[2])});
    BoxRay result;
    result.start = StartIn(bounds, origin, direction);
    result.rate = most * tree.scale;
    if (!(result.rate > 0) || !std::isfinite(result.rate) || !std::isfinite(result.start))
        return std::nullopt;
    for (int axis = 0; axis < 3; ++axis)
    {
        // Nothing moves noticeably within the tree at a speed of 1e-18.
        const double inverse = std::copysign(std::min(most / std::abs(direction[axis]), 1e18), direction[axis]);
        const double place = (origin[axis] + direction[axis] * result.start) * tree.scale;
        const double far = (std::abs(origin[axis]) + std::abs(direction[axis] * result.start)) * tree.scale;
        // A Single's rounding of the place, a double's of what lies far away, and the slowness above.
        const double margin = 4 * 0x1p-24 * std::abs(place) + 16 * 0x1p-53 * far + 1e-12;
        const double ahead = inverse > 0 ? margin : -margin;
        result.nearOrigin[axis] = static_cast<float>(place + ahead);
        result.farOrigin[axis] = static_cast<float>(place - ahead);
        result.nearInverse[axis] = static_cast<float>(inverse);
        result.farInverse[axis] = static_cast<float>((1 + 1e-6) * inverse);
        result.nearPlane[axis] = 2 * axis + (inverse > 0 ? 0 : 1);
        result.farPlane[axis] = 2 * axis + (inverse > 0 ? 1 : 0);
    }
    return result;
}

} // namespace lumora::rays
