// Double-precision vectors and row-vector matrices: what frames and drivers compute with between two Singles.
//
// A point p is a row: p' = p * M, so "A then B" is A * B. The axes of a frame are rows 0 to 2, its origin is row 3.
#pragma once

#include "base/Vector.h"

#include <array>
#include <optional>

namespace lumora
{

struct Double3
{
    double x = 0;
    double y = 0;
    double z = 0;

    Double3() = default;
    constexpr Double3(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    Double3(Vector v) : x(v.x), y(v.y), z(v.z) {} // NOLINT: widening loses nothing

    Vector ToVector() const { return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)}; }

    friend Double3 operator+(Double3 a, Double3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Double3 operator-(Double3 a, Double3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Double3 operator*(Double3 v, double s) { return {v.x * s, v.y * s, v.z * s}; }
    friend Double3 operator-(Double3 v) { return {-v.x, -v.y, -v.z}; }
};

inline double Dot(Double3 a, Double3 b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Double3 Cross(Double3 a, Double3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Length(Double3 v)
{
    return std::sqrt(Dot(v, v));
}

/// Unit length; a zero vector stays zero.
inline Double3 Normalized(Double3 v)
{
    const double length = Length(v);
    return length > 0 ? v * (1.0 / length) : v;
}

struct Double4
{
    double x = 0;
    double y = 0;
    double z = 0;
    double w = 0;
};

/// 4 by 4, row vectors.
struct Matrix4
{
    std::array<std::array<double, 4>, 4> m{};

    static Matrix4 Identity()
    {
        Matrix4 result;
        for (int i = 0; i < 4; ++i)
            result.m[i][i] = 1.0;
        return result;
    }

    static Matrix4 FromAxes(Double3 x, Double3 y, Double3 z, Double3 origin)
    {
        return {{{{x.x, x.y, x.z, 0}, {y.x, y.y, y.z, 0}, {z.x, z.y, z.z, 0}, {origin.x, origin.y, origin.z, 1}}}};
    }

    Double3 Row(int row) const { return {m[row][0], m[row][1], m[row][2]}; }
    void SetRow(int row, Double3 v)
    {
        m[row][0] = v.x;
        m[row][1] = v.y;
        m[row][2] = v.z;
    }

    friend bool operator==(const Matrix4&, const Matrix4&) = default;
    friend Matrix4 operator*(const Matrix4& a, const Matrix4& b)
    {
        Matrix4 result;
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                result.m[r][c] =
                    a.m[r][0] * b.m[0][c] + a.m[r][1] * b.m[1][c] + a.m[r][2] * b.m[2][c] + a.m[r][3] * b.m[3][c];
        return result;
    }
};

/// p * M of a point (w 1), without the division by w.
inline Double4 Transform(Double4 p, const Matrix4& t)
{
    const auto column = [&](int c) { return p.x * t.m[0][c] + p.y * t.m[1][c] + p.z * t.m[2][c] + p.w * t.m[3][c]; };
    return {column(0), column(1), column(2), column(3)};
}

/// A point through an affine matrix.
inline Double3 TransformPoint(Double3 p, const Matrix4& t)
{
    return {p.x * t.m[0][0] + p.y * t.m[1][0] + p.z * t.m[2][0] + t.m[3][0],
            p.x * t.m[0][1] + p.y * t.m[1][1] + p.z * t.m[2][1] + t.m[3][1],
            p.x * t.m[0][2] + p.y * t.m[1][2] + p.z * t.m[2][2] + t.m[3][2]};
}

/// A direction through an affine matrix: the origin row is left out.
inline Double3 TransformDirection(Double3 d, const Matrix4& t)
{
    return {d.x * t.m[0][0] + d.y * t.m[1][0] + d.z * t.m[2][0], d.x * t.m[0][1] + d.y * t.m[1][1] + d.z * t.m[2][1],
            d.x * t.m[0][2] + d.y * t.m[1][2] + d.z * t.m[2][2]};
}

/// The inverse, or nothing when the matrix is singular (a frame scaled to zero) or not finite.
std::optional<Matrix4> Inverse(const Matrix4& matrix);

/// The matrix that takes normals along when points go through `affine`: the transpose of its inverse's 3 by 3 part,
/// computed as cofactors so that a flattened (singular) frame still has one. Mirrored frames keep normals outward.
/// The result's length is arbitrary: normalise what comes out.
Matrix4 NormalMatrix(const Matrix4& affine);

} // namespace lumora
