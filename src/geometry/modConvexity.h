// Whether a polygon is convex.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// How far, in each component, a corner's normal may be from the polygon's.
enum class Flatness
{
    Strict, ///< 0.001
    Loose,  ///< 0.01
};

/// Whether every corner of the polygon turns the same way, in one plane: whether the normal of each corner with its
/// neighbours is the whole polygon's. Colinear corners have none, so a polygon with one is not convex; one that goes
/// round several times (a pentagram) is. Error 9 for an empty list; source "modConvexity".
bool IsPolygonConvex(RetainedMode& root, VertexSpan vertices, Flatness flatness);

} // namespace lumora
