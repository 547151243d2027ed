// Cuts primitives to the view volume -w <= x <= w, -w <= y <= w, 0 <= z <= w.
#pragma once

#include "platform/drivers/reference/Vertex.h"

#include <array>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace lumora::reference
{

/// The visible part of a triangle, a convex polygon; empty when nothing is visible or a position is not finite.
/// Triangles that share an edge are cut at the very same points of it.
std::vector<ClipVertex> ClipTriangle(std::span<const ClipVertex, 3> triangle);

/// The visible part of a line, if any, from the end nearer to `start`.
std::optional<std::pair<ClipVertex, ClipVertex>> ClipLine(const ClipVertex& start, const ClipVertex& end);

/// Whether a point is in the view volume. False for a position that is not finite.
bool IsVisible(const ClipVertex& point);

} // namespace lumora::reference
