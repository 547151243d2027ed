// The one formula by which vectors and frames turn.
#pragma once

#include "base/Matrix.h"

#include <algorithm>
#include <cmath>

namespace lumora
{

/// Unit length however small or large the vector is; a zero vector stays zero.
inline Double3 UnitOf(Double3 v)
{
    const double size = std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
    return size > 0 ? Normalized({v.x / size, v.y / size, v.z / size}) : v;
}

/// `v` about `unitAxis` by `angle` radians: q v q⁻¹ with q = (cos θ/2, sin θ/2 · axis), written out.
inline Double3 Turned(Double3 v, Double3 unitAxis, double angle)
{
    const double cosine = std::cos(angle);
    return v * cosine + Cross(unitAxis, v) * std::sin(angle) + unitAxis * (Dot(unitAxis, v) * (1.0 - cosine));
}

inline Matrix4 RotationMatrix(Double3 unitAxis, double angle)
{
    return Matrix4::FromAxes(Turned({1, 0, 0}, unitAxis, angle), Turned({0, 1, 0}, unitAxis, angle),
                             Turned({0, 0, 1}, unitAxis, angle), {});
}

} // namespace lumora
