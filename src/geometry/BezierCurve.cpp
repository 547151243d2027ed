#include "geometry/BezierCurve.h"

#include "base/Matrix.h"
#include "base/Numbers.h"
#include "geometry/Steps.h"

namespace lumora
{

namespace
{

constexpr const char* Source = "MyDll_CreateBezierCurve";

void RequireAffordable(std::size_t points, std::int32_t samples)
{
    const auto count = static_cast<double>(points);
    if (count * (count - 1) / 2 * samples > MaximumCurveWork)
        throw RuntimeError{error::InvalidCall, Source,
                           "A Bezier curve with " + std::to_string(points) + " control points and " +
                               std::to_string(samples) + " samples takes too long; a B-spline does not"};
}

// Replaces the points by those between neighbours until one is left.
Vector PointAt(VertexSpan points, double t, std::vector<Double3>& between)
{
    between.assign(points.begin(), points.end());
    for (std::size_t left = between.size() - 1; left > 0; --left)
        for (std::size_t i = 0; i < left; ++i)
            between[i] = between[i] * (1 - t) + between[i + 1] * t;
    const Double3 point = between.front();
    return {ToSingle(point.x), ToSingle(point.y), ToSingle(point.z)};
}

} // namespace

VertexList MyDll_CreateBezierCurve(VertexSpan points, std::int32_t sampleCount)
{
    return NamingErrors(
        Source,
        [&]
        {
            RequireVertices(points, 1, "The list of control points");
            RequireCount(sampleCount, "The number of samples");
            RequireAffordable(points.size(), sampleCount);
            VertexList samples;
            samples.reserve(static_cast<std::size_t>(sampleCount));
            std::vector<Double3> between;
            for (std::int32_t s = 0; s < sampleCount; ++s)
                samples.push_back(PointAt(points, s == 0 ? 0.0 : static_cast<double>(s) / (sampleCount - 1), between));
            return samples;
        });
}

} // namespace lumora
