// The tightest camera in closed form.
#include "stage/Framing.h"

#include "base/RuntimeError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace lumora::stage
{

namespace
{

// Half the view's extent along the larger side at distance 1: a view of 40 degrees.
constexpr double HalfAngleTangent = 0.364;

// Directions of a camera in double precision.
struct Axes
{
    Double3 right;
    Double3 up;
    Double3 forward;
};

// A point seen along the axes, from the origin.
struct Seen
{
    double x;
    double y;
    double z;
};

// What the picture shows of the plane at distance 1 (perspective) or of any plane for a field of 1 (orthographic):
// half widths, margin taken off.
struct HalfExtent
{
    double x;
    double y;
};

Axes AxesOf(const FramingOptions& options)
{
    const Double3 forward = Normalized(options.direction);
    const Double3 right = Normalized(Cross(options.up, forward));
    return {right, Cross(forward, right), forward};
}

std::vector<Seen> See(std::span<const Vector> points, const Axes& axes)
{
    std::vector<Seen> seen;
    seen.reserve(points.size());
    for (const Vector& point : points)
        seen.push_back({Dot(point, axes.right), Dot(point, axes.up), Dot(point, axes.forward)});
    return seen;
}

HalfExtent VisibleHalf(const FramingOptions& options)
{
    const double larger = std::max(options.width, options.height);
    const double inner = 1.0 - FramingMargin;
    return {inner * options.width / larger, inner * options.height / larger};
}

struct Range
{
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void Include(double value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    double Middle() const { return (low + high) / 2; }
    double Half() const { return (high - low) / 2; }
};

// One screen axis of a perspective camera at (a, e), a across and e along: a point (x, z) is visible when
// |x - a| <= t (z - e). All are for a in [max(x - t z) + t e, min(x + t z) - t e]; the camera is nearest where that
// interval is a single place.
struct Fit
{
    double across;
    double along;
};

template<typename Across>
Fit FitAxis(std::span<const Seen> points, double t, Across across)
{
    Range lower;
    Range upper;
    for (const Seen& point : points)
    {
        lower.Include(across(point) - t * point.z);
        upper.Include(across(point) + t * point.z);
    }
    return {(lower.high + upper.low) / 2, (upper.low - lower.high) / (2 * t)};
}

// A camera in its own axes.
struct Stand
{
    Seen at;
    double field; // half extent along the larger side at distance 1, or of every plane when orthographic
};

Stand PerspectiveStand(std::span<const Seen> focus, const FramingOptions& options, double nearest, double radius)
{
    const HalfExtent half = VisibleHalf(options);
    const Fit horizontal = FitAxis(focus, half.x * HalfAngleTangent, [](const Seen& point) { return point.x; });
    const Fit vertical = FitAxis(focus, half.y * HalfAngleTangent, [](const Seen& point) { return point.y; });
    const double along = std::min({horizontal.along, vertical.along, nearest - radius * 0.02});
    return {{horizontal.across, vertical.across, along}, HalfAngleTangent};
}

Stand OrthographicStand(std::span<const Seen> focus, const FramingOptions& options, double nearest, double radius)
{
    const HalfExtent half = VisibleHalf(options);
    Range x;
    Range y;
    for (const Seen& point : focus)
    {
        x.Include(point.x);
        y.Include(point.y);
    }
    double field = std::max(x.Half() / half.x, y.Half() / half.y);
    if (!(field > 0))
        field = radius;
    return {{x.Middle(), y.Middle(), nearest - 2 * radius}, field};
}

float Narrow(double value)
{
    if (!(std::abs(value) <= std::numeric_limits<float>::max()))
        throw RuntimeError{error::RMBadValue, "Framing", "The scene is too large to be framed."};
    return static_cast<float>(value);
}

float NarrowDistance(double value)
{
    return std::max(Narrow(value), std::numeric_limits<float>::min());
}

} // namespace

Framing FramePoints(std::span<const Vector> focus, std::span<const Vector> extent, const FramingOptions& options)
{
    if (focus.empty())
        throw RuntimeError{error::RMBadValue, "Framing", "There is nothing in the scene to be framed."};
    const Axes axes = AxesOf(options);
    const std::vector<Seen> seen = See(focus, axes);
    Range sides[3];
    for (const Seen& point : seen)
    {
        sides[0].Include(point.x);
        sides[1].Include(point.y);
        sides[2].Include(point.z);
    }
    const double diagonal = std::hypot(sides[0].Half(), sides[1].Half(), sides[2].Half());
    const double radius = diagonal > 0 ? diagonal : 1.0;
    const Stand stand = options.orthographic ? OrthographicStand(seen, options, sides[2].low, radius)
                                             : PerspectiveStand(seen, options, sides[2].low, radius);

    Range depths{sides[2]};
    for (const Seen& point : See(extent, axes))
        depths.Include(point.z);
    // What stands around the focus may reach behind the camera: the front plane then keeps a part of the distance.
    const double focusDistance = sides[2].low - stand.at.z;
    const double front = std::max((depths.low - stand.at.z) * 0.95, focusDistance * 0.2);
    const double back = (depths.high - stand.at.z) * 1.05 + radius * 0.01;

    const Double3 position = axes.right * stand.at.x + axes.up * stand.at.y + axes.forward * stand.at.z;
    Framing framing;
    framing.position = {Narrow(position.x), Narrow(position.y), Narrow(position.z)};
    framing.front = options.front ? *options.front : NarrowDistance(front);
    framing.back = NarrowDistance(back);
    framing.field = NarrowDistance(options.orthographic ? stand.field : stand.field * framing.front);
    return framing;
}

Framing ForWalking(const Framing& framing, Vector direction, bool orthographic)
{
    constexpr float UsualField = 0.5F;
    constexpr double ViewDistance = 1000;
    Framing suited = framing;
    if (!orthographic)
    {
        suited.field = std::min(framing.field, UsualField);
        suited.front = framing.front * suited.field / framing.field;
        return suited;
    }
    const Double3 forward = Normalized(direction);
    const double farther = ViewDistance + Dot(framing.position, forward);
    suited.position = (Double3{framing.position} - forward * farther).ToVector();
    suited.back = NarrowDistance(framing.back + farther);
    suited.front = 1;
    return suited;
}

std::vector<Vector> CornersOf(const Box& box)
{
    std::vector<Vector> corners;
    if (!box.IsEmpty())
        for (int i = 0; i < 8; ++i)
            corners.push_back(box.Corner(i));
    return corners;
}

std::vector<Vector> TurnedCornersOf(const Box& box)
{
    std::vector<Vector> points;
    if (box.IsEmpty())
        return points;
    constexpr int Steps = 64;
    const Vector centre = box.Centre();
    // Outside the circle, so that the polygon of these points has the whole circle within.
    const double radius =
        std::hypot(box.maximum.x - centre.x, box.maximum.z - centre.z) / std::cos(std::numbers::pi / Steps);
    for (int i = 0; i < Steps; ++i)
    {
        const double angle = 2 * std::numbers::pi * i / Steps;
        const auto x = static_cast<float>(centre.x + radius * std::cos(angle));
        const auto z = static_cast<float>(centre.z + radius * std::sin(angle));
        points.push_back({x, box.minimum.y, z});
        points.push_back({x, box.maximum.y, z});
    }
    return points;
}

Standpoint Turned(const Standpoint& standpoint, Vector centre, double angle)
{
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const auto turn = [&](Vector v) {
        return Vector{static_cast<float>(v.x * cosine + v.z * sine), v.y,
                      static_cast<float>(v.z * cosine - v.x * sine)};
    };
    return {turn(standpoint.position - centre) + centre, turn(standpoint.direction), turn(standpoint.up)};
}

} // namespace lumora::stage
