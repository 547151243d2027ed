// Plain vector arithmetic for tests that work out for themselves where a camera must be.
#pragma once

#include "base/Vector.h"

#include <cmath>
#include <gtest/gtest.h>

namespace lumora::test
{

inline float Dot(Vector a, Vector b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vector Cross(Vector a, Vector b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline Vector Unit(Vector v)
{
    return v * (1 / std::sqrt(Dot(v, v)));
}

/// `v` turned about the unit vector `axis`: the component along it stays, the rest turns in its plane. In left-handed
/// space positive angles take z to x about y.
inline Vector TurnedAbout(Vector v, Vector axis, float angle)
{
    const Vector along = axis * Dot(v, axis);
    const Vector across = v - along;
    return along + across * std::cos(angle) + Cross(axis, across) * std::sin(angle);
}

/// Where a camera is and where it looks; its axes are right, up and direction.
struct Pose
{
    Vector position;
    Vector direction{0, 0, 1};
    Vector up{0, 1, 0};

    Vector Axis(int axis) const { return axis == 0 ? Cross(up, direction) : axis == 1 ? up : direction; }
};

inline void ExpectNear(Vector actual, Vector expected, const std::string& what, float tolerance = 1e-4F)
{
    const Vector off = actual - expected;
    EXPECT_LT(std::sqrt(Dot(off, off)), tolerance)
        << what << ": (" << actual.x << ", " << actual.y << ", " << actual.z << ") instead of (" << expected.x << ", "
        << expected.y << ", " << expected.z << ")";
}

} // namespace lumora::test
