// Which way round triangles are seen, exact enough for lines and points: their edges must not come and go.
#pragma once

#include "base/Matrix.h"
#include "platform/drivers/rgb/Frame.h"

#include <algorithm>
#include <cmath>

namespace lumora::rgb
{

/// Tells the winding of triangles in front of the eye, before clipping: the determinant of the corners' clip-space x, y
/// and w. Above 0 is counter-clockwise, since y goes up in clip space.
///
/// By Cauchy and Binet it is the normal times (eye + a corner * weight), both made of minors of the matrix: no corner
/// has to be transformed.
struct WindingRule
{
    Double3 eye;
    double weight;

    explicit WindingRule(const Matrix4& toClip)
    {
        const auto minor = [&](int a, int b, int c)
        {
            const auto row = [&](int i) { return Double3{toClip.m[i][0], toClip.m[i][1], toClip.m[i][3]}; };
            return Dot(row(a), Cross(row(b), row(c)));
        };
        eye = {minor(1, 2, 3), -minor(0, 2, 3), minor(0, 1, 3)};
        weight = minor(0, 1, 2);
    }
    double Of(Double3 a, Double3 b, Double3 c) const { return Dot(Cross(b - a, c - a), eye + a * weight); }

    bool IsCulled(const DrawMesh& mesh, std::uint32_t triangle, bool cullsClockwise) const
    {
        const auto corner = [&](std::size_t number)
        {
            const std::uint32_t v = mesh.indices[3 * std::size_t{triangle} + number];
            return Double3{mesh.x[v], mesh.y[v], mesh.z[v]};
        };
        const double winding = Of(corner(0), corner(1), corner(2));
        return !(cullsClockwise ? winding > 0 : winding < 0);
    }
};

} // namespace lumora::rgb
