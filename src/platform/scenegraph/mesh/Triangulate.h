// Polygons into triangles.
#pragma once

#include "base/Matrix.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lumora
{

/// Three corners of a polygon, in its winding.
using CornerTriple = std::array<std::uint32_t, 3>;

/// Cuts a polygon, convex or not, into triangles of its own winding and appends them to `triangles`. `normal` is the
/// polygon's; triangles without area are left out. Polygons that cross themselves give some triangles of their corners.
void Triangulate(std::span<const Double3> corners, Double3 normal, std::vector<CornerTriple>& triangles);

/// Whether three points span no area that could be seen.
bool HasNoArea(Double3 a, Double3 b, Double3 c);

} // namespace lumora
