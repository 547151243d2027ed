// Convex polygons become fans; others lose one ear after the other (ears that no reflex corner lies in).
#include "platform/scenegraph/mesh/Triangulate.h"

#include <algorithm>
#include <cmath>

namespace lumora
{

namespace
{

struct Point
{
    double x;
    double y;
    friend bool operator==(const Point&, const Point&) = default;
};

double Turn(Point a, Point b, Point c)
{
    return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

// The polygon seen along its normal's largest part, so that its turns are positive.
std::vector<Point> Flattened(std::span<const Double3> corners, Double3 normal)
{
    const double ax = std::abs(normal.x);
    const double ay = std::abs(normal.y);
    const double az = std::abs(normal.z);
    std::vector<Point> points;
    points.reserve(corners.size());
    for (const Double3 corner : corners)
    {
        const Double3 p = corner - corners.front();
        Point point = az >= ax && az >= ay ? Point{p.x, p.y} : ax >= ay ? Point{p.y, p.z} : Point{p.z, p.x};
        const double facing = az >= ax && az >= ay ? normal.z : ax >= ay ? normal.x : normal.y;
        if (facing < 0)
            std::swap(point.x, point.y);
        points.push_back(point);
    }
    return points;
}

// Every corner turns left and the outline goes round once: along x it goes forth and back a single time.
bool IsConvex(const std::vector<Point>& points)
{
    const std::size_t count = points.size();
    int reversals = 0;
    double direction = 0;
    double firstDirection = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        const Point& a = points[i];
        const Point& b = points[(i + 1) % count];
        if (!(Turn(a, b, points[(i + 2) % count]) > 0))
            return false;
        const double step = b.x - a.x;
        if (step == 0)
            continue;
        if (direction == 0)
            firstDirection = step;
        else if ((step > 0) != (direction > 0))
            ++reversals;
        direction = step;
    }
    if ((direction > 0) != (firstDirection > 0))
        ++reversals;
    return reversals <= 2;
}

class EarClipper
{
public:
    EarClipper(std::span<const Double3> corners, std::vector<Point> points, std::vector<CornerTriple>& triangles)
        : corners_(corners), points_(std::move(points)), triangles_(triangles), before_(points_.size()),
          after_(points_.size())
    {
        const auto count = static_cast<std::uint32_t>(points_.size());
        for (std::uint32_t i = 0; i < count; ++i)
        {
            before_[i] = i == 0 ? count - 1 : i - 1;
            after_[i] = i + 1 == count ? 0 : i + 1;
        }
        for (std::uint32_t i = 0; i < count; ++i)
            if (!(TurnAt(i) > 0))
                reflex_.push_back(i);
    }

    void Run()
    {
        std::uint32_t at = 0;
        std::size_t left = points_.size();
        std::size_t refused = 0;
        while (left > 3)
        {
            // A full round without an ear: what is left touches or crosses itself, so less is asked for.
            const int leniency = static_cast<int>(std::min<std::size_t>(refused / left, 3));
            if (!IsEar(at, leniency))
            {
                at = after_[at];
                ++refused;
                continue;
            }
            Emit(before_[at], at, after_[at]);
            at = Unlink(at);
            --left;
            refused = 0;
            if (budget_ < 0)
                return EmitRest(at);
        }
        Emit(before_[at], at, after_[at]);
    }

private:
    double TurnAt(std::uint32_t i) const { return Turn(points_[before_[i]], points_[i], points_[after_[i]]); }

    // Leniency 0: nothing of the outline in or on the ear; 1: nothing inside; 2: any corner that turns left; 3: any.
    bool IsEar(std::uint32_t i, int leniency)
    {
        if (leniency >= 3)
            return true;
        if (!(TurnAt(i) > 0))
            return false;
        return leniency == 2 || !HoldsReflexCorner(i, leniency == 0);
    }

    bool HoldsReflexCorner(std::uint32_t i, bool countBoundary)
    {
        const Point a = points_[before_[i]];
        const Point b = points_[i];
        const Point c = points_[after_[i]];
        budget_ -= static_cast<std::int64_t>(reflex_.size());
        for (const std::uint32_t other : reflex_)
        {
            const Point p = points_[other];
            if (p == a || p == b || p == c)
                continue;
            const double ab = Turn(a, b, p);
            const double bc = Turn(b, c, p);
            const double ca = Turn(c, a, p);
            if (countBoundary ? ab >= 0 && bc >= 0 && ca >= 0 : ab > 0 && bc > 0 && ca > 0)
                return true;
        }
        return false;
    }

    // Takes a corner out and answers the one to go on with: two on, so that the cuts spread around the outline.
    std::uint32_t Unlink(std::uint32_t i)
    {
        const std::uint32_t a = before_[i];
        const std::uint32_t c = after_[i];
        after_[a] = c;
        before_[c] = a;
        std::erase_if(reflex_, [&](std::uint32_t r) { return r == i || ((r == a || r == c) && TurnAt(r) > 0); });
        return after_[c];
    }

    void Emit(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        if (!HasNoArea(corners_[a], corners_[b], corners_[c]))
            triangles_.push_back({a, b, c});
    }

    void EmitRest(std::uint32_t first)
    {
        for (std::uint32_t b = after_[first]; after_[b] != first; b = after_[b])
            Emit(first, b, after_[b]);
    }

    std::span<const Double3> corners_;
    std::vector<Point> points_;
    std::vector<CornerTriple>& triangles_;
    std::vector<std::uint32_t> before_;
    std::vector<std::uint32_t> after_;
    std::vector<std::uint32_t> reflex_;
    std::int64_t budget_ = 200'000'000; // comparisons; an outline made to defeat the search ends as a fan
};

} // namespace

bool HasNoArea(Double3 a, Double3 b, Double3 c)
{
    const Double3 ab = b - a;
    const Double3 ac = c - a;
    const Double3 across = Cross(ab, ac);
    return !(Dot(across, across) > 1e-20 * Dot(ab, ab) * Dot(ac, ac));
}

void Triangulate(std::span<const Double3> corners, Double3 normal, std::vector<CornerTriple>& triangles)
{
    const auto count = static_cast<std::uint32_t>(corners.size());
    if (count < 3 || Dot(normal, normal) == 0)
        return;
    std::vector<Point> points = Flattened(corners, normal);
    if (!IsConvex(points))
        return EarClipper{corners, std::move(points), triangles}.Run();
    for (std::uint32_t i = 1; i + 1 < count; ++i)
        if (!HasNoArea(corners[0], corners[i], corners[i + 1]))
            triangles.push_back({0, i, i + 1});
}

} // namespace lumora
