// Normals of triangles and polygons.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// The unit normal of the first three vertices, along (v1 - v0) x (v2 - v1): towards whoever sees them clockwise
/// (left-handed). Zero when they span no area. Error 9 for fewer than three; source "modNormal".
Vector GetTriangleNormal(RetainedMode& root, VertexSpan vertices);

/// The unit normal of the whole polygon, which need not be convex nor quite plane: the sum of the cross products of
/// consecutive corners. Zero when the corners enclose no area. Error 9 for an empty list, and what the vector
/// operations raise for corners that are not finite; source "modNormal".
Vector GetPolygonNormal(RetainedMode& root, VertexSpan vertices);

} // namespace lumora
