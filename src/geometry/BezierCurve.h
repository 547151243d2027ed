// Bezier curves.
#pragma once

#include "geometry/Records.h"

namespace lumora
{

/// `sampleCount` evenly parameterised points of the one Bezier curve of degree n - 1 over n control points, from the
/// first control point to the last; a single sample is the first one. By de Casteljau's construction, in double
/// precision.
///
/// Errors, with source "MyDll_CreateBezierCurve": 9 without control points or with a negative count, 7 beyond
/// MaximumVertices, 6 for a sample that is no finite Single, 5 when n (n - 1) / 2 interpolations for each sample are
/// more than MaximumCurveWork (a B-spline has no such limit).
VertexList MyDll_CreateBezierCurve(VertexSpan points, std::int32_t sampleCount);

} // namespace lumora
