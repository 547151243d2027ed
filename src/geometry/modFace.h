// A polygon's corners, the angles at them, and whether a point lies within.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// Whether a triangle's own corners count as inside.
enum class Corners
{
    Included,
    Excluded,
};

/// The corners before, at and after `index`, cyclically. Error 9 for an index outside the list; source "modFace".
Triple GetVertexTriple(VertexSpan vertices, std::int32_t index);

/// The angle at the middle point, 0..π radians. A side of no length is taken to stand at a right angle. Source of
/// errors: "modFace".
float GetVertexAngle(RetainedMode& root, const Triple& triple);

/// Whether `point` sees the polygon all around: whether the angles that its edges subtend there sum up to a full turn
/// within 0.1. So points a little outside an edge, or off the plane, count as inside. Corners::Excluded answers false
/// for a point that equals (VectorsEqual) one of the first three corners; it is meant for triangles.
///
/// Error 9 for an empty list, or one shorter than three when corners are excluded; source "modFace".
bool IsPointInPolygon(RetainedMode& root, VertexSpan vertices, Vector point, Corners corners);

} // namespace lumora
