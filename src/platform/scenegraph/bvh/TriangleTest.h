// The one test of a ray against a triangle, in double precision. Everything faster only decides which triangles need
// it.
#pragma once

#include "base/Matrix.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumora::rays
{

/// A ray in a mesh's own coordinates; distances are counted in lengths of `direction`.
struct LocalRay
{
    Double3 origin;
    Double3 direction;
};

inline constexpr double Missed = std::numeric_limits<double>::infinity();

/// The ray prepared for triangles: space is sheared so that the ray becomes the line x = y = 0, along the axis on which
/// it moves most. Every corner is projected on its own, by the same arithmetic in whichever triangle it stands, so two
/// triangles that share a side see it in the same place and no ray passes between them.
struct ShearedRay
{
    int axis[3];      ///< which coordinate serves as x, y and z
    double origin[3]; ///< in that order too
    double shearX;
    double shearY;
    double lengthZ; ///< of the direction along z
};

inline ShearedRay Sheared(const LocalRay& ray)
{
    const double origin[3] = {ray.origin.x, ray.origin.y, ray.origin.z};
    const double direction[3] = {ray.direction.x, ray.direction.y, ray.direction.z};
    int z = 0;
    for (int axis = 1; axis < 3; ++axis)
        if (std::abs(direction[axis]) > std::abs(direction[z]))
            z = axis;
    const int x = (z + 1) % 3;
    const int y = (z + 2) % 3;
    return {{x, y, z},
            {origin[x], origin[y], origin[z]},
            direction[x] / direction[z],
            direction[y] / direction[z],
            direction[z]};
}

/// The distance at which the ray meets the triangle, from either side, sides and corners included; Missed beyond
/// `limit`, behind the origin, for triangles seen edge-on and for corners that are not finite.
///
/// The signs of the three areas are never wrong: rounding can only make one 0, which counts as met. That alone would
/// take lines that merely continue a triangle's side, hence the question whether the ray is within the corners' extent.
/// The vector code computes the same operations in the same order: all of them answer the same bits.
inline double MeetsTriangle(const ShearedRay& ray, const float (&a)[3], const float (&b)[3], const float (&c)[3],
                            double limit)
{
    double x[3];
    double y[3];
    double z[3];
    const float* corners[3] = {a, b, c};
    for (int i = 0; i < 3; ++i)
    {
        z[i] = corners[i][ray.axis[2]] - ray.origin[2];
        x[i] = (corners[i][ray.axis[0]] - ray.origin[0]) - ray.shearX * z[i];
        y[i] = (corners[i][ray.axis[1]] - ray.origin[1]) - ray.shearY * z[i];
    }
    const double u = x[2] * y[1] - y[2] * x[1];
    const double v = x[0] * y[2] - y[0] * x[2];
    const double w = x[1] * y[0] - y[1] * x[0];
    if (!(u >= 0 && v >= 0 && w >= 0) && !(u <= 0 && v <= 0 && w <= 0))
        return Missed;
    const bool isWithin = std::min({x[0], x[1], x[2]}) <= 0 && std::max({x[0], x[1], x[2]}) >= 0 &&
                          std::min({y[0], y[1], y[2]}) <= 0 && std::max({y[0], y[1], y[2]}) >= 0;
    const double area = u + v + w;
    if (!isWithin || !(std::abs(area) > 0) || !(std::abs(area) < Missed))
        return Missed;
    const double t = (u * z[0] + v * z[1] + w * z[2]) / (area * ray.lengthZ);
    return t >= 0 && t <= limit && t < Missed ? t : Missed;
}

struct Interval
{
    double first = 0;
    double last = std::numeric_limits<double>::infinity();
    bool IsEmpty() const { return !(first <= last); }
};

/// A box of doubles. Empty until something is included.
struct DoubleBox
{
    Double3 minimum{Missed, Missed, Missed};
    Double3 maximum{-Missed, -Missed, -Missed};

    bool IsEmpty() const { return !(minimum.x <= maximum.x); }
    void Include(const DoubleBox& other)
    {
        minimum = {std::min(minimum.x, other.minimum.x), std::min(minimum.y, other.minimum.y),
                   std::min(minimum.z, other.minimum.z)};
        maximum = {std::max(maximum.x, other.maximum.x), std::max(maximum.y, other.maximum.y),
                   std::max(maximum.z, other.maximum.z)};
    }
    /// The farthest that any of it lies from 0 along an axis.
    double Reach() const
    {
        return std::max({std::abs(minimum.x), std::abs(minimum.y), std::abs(minimum.z), std::abs(maximum.x),
                         std::abs(maximum.y), std::abs(maximum.z)});
    }
    DoubleBox Grown(double margin) const
    {
        const Double3 by{margin, margin, margin};
        return {minimum - by, maximum + by};
    }
};

/// How far outside a mesh's box a hit on the mesh can seem to be.
inline double PickMargin(const DoubleBox& box)
{
    const Double3 size = box.maximum - box.minimum;
    return 1e-9 * (size.x + size.y + size.z + std::max(std::abs(box.minimum.x), std::abs(box.maximum.x)) +
                   std::max(std::abs(box.minimum.y), std::abs(box.maximum.y)) +
                   std::max(std::abs(box.minimum.z), std::abs(box.maximum.z)));
}

inline void Narrow(Interval& interval, double origin, double direction, double minimum, double maximum)
{
    if (direction == 0)
    {
        if (origin < minimum || origin > maximum)
            interval.last = -1;
        return;
    }
    const double a = (minimum - origin) / direction;
    const double b = (maximum - origin) / direction;
    interval.first = std::max(interval.first, std::min(a, b));
    interval.last = std::min(interval.last, std::max(a, b));
}

/// Where the ray is in the box, from its origin on; empty when it misses.
inline Interval Within(const DoubleBox& box, const LocalRay& ray)
{
    Interval interval;
    Narrow(interval, ray.origin.x, ray.direction.x, box.minimum.x, box.maximum.x);
    Narrow(interval, ray.origin.y, ray.direction.y, box.minimum.y, box.maximum.y);
    Narrow(interval, ray.origin.z, ray.direction.z, box.minimum.z, box.maximum.z);
    return interval;
}

} // namespace lumora::rays
