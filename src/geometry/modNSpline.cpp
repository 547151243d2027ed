#include "geometry/modNSpline.h"

#include "base/Numbers.h"
#include "geometry/Steps.h"

#include <algorithm>
#include <numeric>

namespace lumora
{

namespace
{

constexpr const char* Source = "modNSpline";

std::uint32_t AnimationOptions(const NSplineOptions& options)
{
    return animation::Position | (options.linear ? animation::LinearPosition : animation::SplinePosition) |
           (options.closed ? animation::Closed : animation::Open);
}

std::vector<float> KeyTimes(std::size_t count, const NSplineOptions& options)
{
    if (options.useTimes)
    {
        if (options.times.size() < count)
            throw RuntimeError{error::SubscriptOutOfRange, Source, "There are fewer key times than control points"};
        return {options.times.begin(), options.times.begin() + static_cast<std::ptrdiff_t>(count)};
    }
    std::vector<float> times;
    times.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        times.push_back(ToSingle(Divide(static_cast<double>(i), static_cast<double>(count - 1))));
    return times;
}

// Rounding at each step lets an early key reach beyond a later one.
std::int32_t EndTime(std::span<const float> times)
{
    std::int32_t end = 0;
    for (const float time : times)
        if (time > static_cast<double>(end))
            end = ToLong(time);
    return end;
}

// In the order of their times, so that none has to be squeezed in; of equal ones the last is the one that counts.
void AddKeys(Animation& animation, VertexSpan points, std::span<const float> times)
{
    std::vector<std::size_t> order(points.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    if (std::ranges::none_of(times, [](float time) { return time != time; }))
        std::ranges::stable_sort(order, {}, [&](std::size_t i) { return times[i]; });
    for (const std::size_t i : order)
        animation.AddPositionKey(times[i], points[i].x, points[i].y, points[i].z);
}

VertexList Sample(RetainedMode& root, VertexSpan points, std::int32_t sampleCount, const NSplineOptions& options)
{
    RequireVertices(points, 1, "The list of control points");
    RequireCount(static_cast<std::int64_t>(points.size()), "The number of control points");
    RequireCount(sampleCount, "The number of samples");
    const std::vector<float> times = KeyTimes(points.size(), options);
    const std::int32_t end = options.useTimes ? EndTime(times) : 1;

    const auto scratch = root.CreateFrame(nullptr);
    const auto moved = root.CreateFrame(scratch);
    const auto animation = root.CreateAnimation();
    animation->SetFrame(moved);
    animation->SetOptions(AnimationOptions(options));
    AddKeys(*animation, points, times);
    VertexList samples;
    samples.reserve(static_cast<std::size_t>(sampleCount));
    for (std::int32_t j = 0; j < sampleCount; ++j)
    {
        animation->SetTime(ToSingle(Divide(j, sampleCount - 1.0) * end));
        samples.push_back(moved->GetPosition(scratch));
    }
    return samples;
}

} // namespace

VertexList EvaluateNSpline(RetainedMode& root, VertexSpan points, std::int32_t sampleCount,
                           const NSplineOptions& options)
{
    return NamingErrors(Source, [&] { return Sample(root, points, sampleCount, options); });
}

} // namespace lumora
