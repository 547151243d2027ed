#include "geometry/modBSpline.h"

#include "base/Matrix.h"
#include "base/Numbers.h"
#include "geometry/Steps.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "modBSpline";

/// The basis functions that are not zero at a parameter: those of `order` control points, or fewer at the ends.
struct LocalBasis
{
    std::size_t first = 0; // control point of the first value
    std::vector<double> values;
    std::vector<double> work;
};

double Ratio(double numerator, double factor, double denominator)
{
    return factor != 0 ? numerator * factor / denominator : 0; // repeated knots: a zero factor, never 0 / 0
}

// The recursion of Cox and de Boor over the part of the knots where something can differ from zero.
void EvaluateBasis(std::size_t order, double t, std::span<const std::int32_t> knots, LocalBasis& basis)
{
    const std::size_t pointCount = knots.size() - order;
    if (t == knots.back())
    {
        basis.first = pointCount - 1;
        basis.values.assign(1, 1.0);
        return;
    }
    const auto above = static_cast<std::size_t>(std::ranges::upper_bound(knots, t) - knots.begin());
    if (above == 0 || above == knots.size())
    {
        basis.values.clear();
        return;
    }
    const std::size_t span = above - 1; // knots[span] <= t < knots[span + 1]
    const std::size_t first = span + 1 >= order ? span + 1 - order : 0;
    std::vector<double>& work = basis.work;
    work.assign(span - first + 2, 0.0);
    work[span - first] = 1;
    for (std::size_t q = 2; q <= order; ++q)
        for (std::size_t i = first; i <= span; ++i)
        {
            if (i + q >= knots.size())
                break;
            const double rising = Ratio(t - knots[i], work[i - first], knots[i + q - 1] - knots[i]);
            const double falling = Ratio(knots[i + q] - t, work[i - first + 1], knots[i + q] - knots[i + 1]);
            work[i - first] = rising + falling;
        }
    basis.first = first;
    basis.values.assign(work.begin(),
                        work.begin() + static_cast<std::ptrdiff_t>(std::min(span + 1, pointCount) - first));
}

// The values become shares of their weighted sum, stored as Singles.
void Weigh(LocalBasis& basis, std::span<const float> weights)
{
    double sum = 0;
    for (std::size_t i = 0; i < basis.values.size(); ++i)
        sum += basis.values[i] * weights[basis.first + i];
    for (std::size_t i = 0; i < basis.values.size(); ++i)
        basis.values[i] = sum == 0 ? 0.0 : ToSingle(basis.values[i] * weights[basis.first + i] / sum);
}

Vector Combined(const LocalBasis& basis, VertexSpan points)
{
    Double3 sum;
    for (std::size_t i = 0; i < basis.values.size(); ++i)
        sum = sum + Double3{points[basis.first + i]} * basis.values[i];
    return {ToSingle(sum.x), ToSingle(sum.y), ToSingle(sum.z)};
}

void RequireOrder(std::int32_t order, std::int32_t sampleCount)
{
    if (order < 1)
        throw RuntimeError{error::SubscriptOutOfRange, Source, "The order of a B-spline is 1 or more"};
    if (static_cast<double>(order) * order * sampleCount > MaximumCurveWork)
        throw RuntimeError{error::InvalidCall, Source,
                           "A B-spline of order " + std::to_string(order) + " with " + std::to_string(sampleCount) +
                               " samples takes too long; a lower order does not"};
}

VertexList Sample(VertexSpan points, std::int32_t order, std::span<const float> weights, std::int32_t sampleCount)
{
    RequireVertices(points, 1, "The list of control points");
    RequireCount(sampleCount, "The number of samples");
    RequireOrder(order, sampleCount);
    if (weights.size() != points.size())
        throw RuntimeError{error::SubscriptOutOfRange, Source, "There must be one weight for each control point"};
    RequireCount(static_cast<std::int64_t>(points.size()), "The number of control points");

    constexpr double Snapping = 0.000005;
    const std::vector<std::int32_t> knots = OpenUniformKnots(static_cast<std::int32_t>(points.size()), order);
    const auto end = static_cast<float>(knots.back());
    VertexList samples;
    if (sampleCount == 0)
        return samples;
    const float step = ToSingle(Divide(end, sampleCount - 1.0));
    samples.reserve(static_cast<std::size_t>(sampleCount));
    LocalBasis basis;
    float t = 0;
    for (std::int32_t s = 1; s <= sampleCount; ++s)
    {
        if (s == sampleCount || double{end} - double{t} < Snapping)
            t = end;
        EvaluateBasis(static_cast<std::size_t>(order), t, knots, basis);
        Weigh(basis, weights);
        samples.push_back(Combined(basis, points));
        t += step;
    }
    return samples;
}

} // namespace

VertexList EvaluateBSplineCurve(VertexSpan points, std::span<const float> weights, std::int32_t sampleCount)
{
    return RationalBSpline(points, 3, weights, sampleCount);
}

VertexList RationalBSpline(VertexSpan points, std::int32_t order, std::span<const float> weights,
                           std::int32_t sampleCount)
{
    return NamingErrors(Source, [&] { return Sample(points, order, weights, sampleCount); });
}

std::vector<float> RationalBasis(std::int32_t order, float t, std::span<const std::int32_t> knots,
                                 std::span<const float> weights)
{
    return NamingErrors(Source,
                        [&]
                        {
                            RequireOrder(order, 1);
                            if (knots.size() != weights.size() + static_cast<std::size_t>(order) || weights.empty())
                                throw RuntimeError{
                                    error::SubscriptOutOfRange, Source,
                                    "A B-spline has as many knots as control points and its order together"};
                            LocalBasis basis;
                            EvaluateBasis(static_cast<std::size_t>(order), t, knots, basis);
                            Weigh(basis, weights);
                            std::vector<float> all(weights.size());
                            for (std::size_t i = 0; i < basis.values.size(); ++i)
                                all[basis.first + i] = static_cast<float>(basis.values[i]);
                            return all;
                        });
}

std::vector<std::int32_t> OpenUniformKnots(std::int32_t pointCount, std::int32_t order)
{
    return NamingErrors(Source,
                        [&]
                        {
                            RequireCount(pointCount, "The number of control points");
                            RequireCount(order, "The order");
                            RequireCount(std::int64_t{pointCount} + order, "The number of knots");
                            std::vector<std::int32_t> knots(static_cast<std::size_t>(pointCount + order));
                            for (std::int32_t i = 2; i <= pointCount + order; ++i)
                            {
                                const auto at = static_cast<std::size_t>(i) - 1;
                                knots[at] = knots[at - 1] + (i > order && i < pointCount + 2 ? 1 : 0);
                            }
                            return knots;
                        });
}

} // namespace lumora
