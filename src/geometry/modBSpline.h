// B-spline curves over an open uniform knot vector: they start at the first control point and end at the last.
//
// n is the number of control points, k the order (degree + 1). Errors leave with source "modBSpline".
#pragma once

#include "geometry/Records.h"

namespace lumora
{

/// `sampleCount` points of the rational B-spline of order 3 over `points`, evenly parameterised; with equal weights an
/// ordinary quadratic B-spline. Two control points, or one, have no range of parameters: every sample is the last.
///
/// Errors: as RationalBSpline.
VertexList EvaluateBSplineCurve(VertexSpan points, std::span<const float> weights, std::int32_t sampleCount);

/// The same for any order of 1 or more. The parameter advances in Singles; the last sample is the last control point.
///
/// Errors: 9 without control points, with another number of weights, an order below 1 or a negative count; 11 (6 when
/// the knots are all 0) for a single sample; 6 for a sample that is no finite Single; 7 for a count, or an order,
/// beyond MaximumVertices; 5 when the order's square for each sample is more than MaximumCurveWork.
VertexList RationalBSpline(VertexSpan points, std::int32_t order, std::span<const float> weights,
                           std::int32_t sampleCount);

/// The n rational basis values at parameter `t`; their sum is 1, or all are 0 where the weighted sum vanishes. `knots`
/// never fall and are n + k; n is the number of weights.
///
/// Errors: 9 for an order below 1 or a knot vector of another length, 6 for a value that is no finite Single, 5
/// for an order whose square is more than MaximumCurveWork.
std::vector<float> RationalBasis(std::int32_t order, float t, std::span<const std::int32_t> knots,
                                 std::span<const float> weights);

/// The n + k knots: k times 0, then up by 1 to n - k + 1, which stands k times. All 0 when n < k. For n = 5 and k = 3:
/// 0, 0, 0, 1, 2, 3, 3, 3.
///
/// Errors: 9 for negative counts, 7 when n + k is beyond MaximumVertices.
std::vector<std::int32_t> OpenUniformKnots(std::int32_t pointCount, std::int32_t order);

} // namespace lumora
