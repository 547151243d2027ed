#include "base/Matrix.h"

#include <utility>

namespace lumora
{

std::optional<Matrix4> Inverse(const Matrix4& matrix)
{
    Matrix4 left = matrix;
    Matrix4 right = Matrix4::Identity();
    // Gauss-Jordan with partial pivoting.
    for (int column = 0; column < 4; ++column)
    {
        int pivot = column;
        for (int row = column + 1; row < 4; ++row)
            if (std::abs(left.m[row][column]) > std::abs(left.m[pivot][column]))
                pivot = row;
        const double size = left.m[pivot][column];
        if (size == 0.0 || !std::isfinite(size))
            return std::nullopt;
        std::swap(left.m[pivot], left.m[column]);
        std::swap(right.m[pivot], right.m[column]);
        for (int c = 0; c < 4; ++c)
        {
            left.m[column][c] /= size;
            right.m[column][c] /= size;
        }
        for (int row = 0; row < 4; ++row)
        {
            const double factor = row == column ? 0.0 : left.m[row][column];
            if (factor == 0.0)
                continue;
            for (int c = 0; c < 4; ++c)
            {
                left.m[row][c] -= factor * left.m[column][c];
                right.m[row][c] -= factor * right.m[column][c];
            }
        }
    }
    for (const auto& row : right.m)
        for (const double value : row)
            if (!std::isfinite(value))
                return std::nullopt;
    return right;
}

Matrix4 NormalMatrix(const Matrix4& affine)
{
    const Double3 x = affine.Row(0);
    const Double3 y = affine.Row(1);
    const Double3 z = affine.Row(2);
    const double sign = Dot(Cross(x, y), z) < 0 ? -1.0 : 1.0;
    return Matrix4::FromAxes(Cross(y, z) * sign, Cross(z, x) * sign, Cross(x, y) * sign, {});
}

} // namespace lumora
