// The records that every module of the geometry kernel shares, and the limits they keep.
//
// Numbers are stored as Singles; arithmetic between two stores is double precision. Angles are radians. A face's
// corners run clockwise seen from its front (left-handed), so its normal is (b - a) x (c - a).
#pragma once

#include "base/Vector.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lumora
{

/// Points in order. Functions take any contiguous list of vectors; an empty one is refused with error 9.
using VertexList = std::vector<Vector>;
using VertexSpan = std::span<const Vector>;

/// The corners before, at and after one of a polygon's.
using Triple = std::array<Vector, 3>;

/// For each face its vertex count n, then n entries: a vertex index, followed by a normal index when the list is built
/// against normals. A single 0 ends the list. Indices count from 0.
using FaceList = std::vector<std::int32_t>;

/// Four vertex indices, in order around the quad.
using Quad = std::array<std::int32_t, 4>;

using BoundingBox = Box;

/// The full turn that the kernel's rotations and angle sums use.
inline constexpr float FullTurn = 6.283186F;

/// The most samples of a curve and the most points of a sweep's grid. More is refused with error 7, before anything is
/// allocated.
inline constexpr std::int32_t MaximumVertices = 1 << 22;

/// The most interpolations that one curve may take, a few seconds' worth. More is refused with error 5.
inline constexpr double MaximumCurveWork = 5e8;

} // namespace lumora
