// Sutherland-Hodgman in clip space, one plane after the other.
#include "platform/drivers/reference/Clipping.h"

#include <algorithm>
#include <cmath>

namespace lumora::reference
{

namespace
{

constexpr int PlaneCount = 6;

/// Negative outside.
double Distance(int plane, const Double4& p)
{
    switch (plane)
    {
    case 0:
        return p.w + p.x;
    case 1:
        return p.w - p.x;
    case 2:
        return p.w + p.y;
    case 3:
        return p.w - p.y;
    case 4:
        return p.z;
    default:
        return p.w - p.z;
    }
}

bool IsFinitePosition(const ClipVertex& vertex)
{
    const Double4& p = vertex.position;
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z) && std::isfinite(p.w);
}

ClipVertex Blend(const ClipVertex& a, const ClipVertex& b, double t)
{
    const auto mix = [t](double from, double to) { return from + (to - from) * t; };
    return {{mix(a.position.x, b.position.x), mix(a.position.y, b.position.y), mix(a.position.z, b.position.z),
             mix(a.position.w, b.position.w)},
            a.attributes * (1 - t) + b.attributes * t};
}

/// Always computed from the inner end: the two triangles at an edge, which walk it in opposite directions, meet.
ClipVertex Crossing(int plane, const ClipVertex& inside, const ClipVertex& outside)
{
    const double in = Distance(plane, inside.position);
    const double out = Distance(plane, outside.position);
    return Blend(inside, outside, in / (in - out));
}

std::vector<ClipVertex> ClipToPlane(int plane, const std::vector<ClipVertex>& polygon)
{
    std::vector<ClipVertex> result;
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const ClipVertex& current = polygon[i];
        const ClipVertex& next = polygon[(i + 1) % polygon.size()];
        const bool currentInside = Distance(plane, current.position) >= 0;
        const bool nextInside = Distance(plane, next.position) >= 0;
        if (currentInside)
            result.push_back(current);
        if (currentInside && !nextInside)
            result.push_back(Crossing(plane, current, next));
        if (!currentInside && nextInside)
            result.push_back(Crossing(plane, next, current));
    }
    return result;
}

} // namespace

std::vector<ClipVertex> ClipTriangle(std::span<const ClipVertex, 3> triangle)
{
    if (!std::ranges::all_of(triangle, IsFinitePosition))
        return {};
    std::vector<ClipVertex> polygon{triangle.begin(), triangle.end()};
    for (int plane = 0; plane < PlaneCount && !polygon.empty(); ++plane)
        polygon = ClipToPlane(plane, polygon);
    return polygon;
}

std::optional<std::pair<ClipVertex, ClipVertex>> ClipLine(const ClipVertex& start, const ClipVertex& end)
{
    if (!IsFinitePosition(start) || !IsFinitePosition(end))
        return std::nullopt;
    ClipVertex from = start;
    ClipVertex to = end;
    for (int plane = 0; plane < PlaneCount; ++plane)
    {
        const bool fromInside = Distance(plane, from.position) >= 0;
        const bool toInside = Distance(plane, to.position) >= 0;
        if (!fromInside && !toInside)
            return std::nullopt;
        if (!toInside)
            to = Crossing(plane, from, to);
        else if (!fromInside)
            from = Crossing(plane, to, from);
    }
    return std::pair{from, to};
}

bool IsVisible(const ClipVertex& point)
{
    for (int plane = 0; plane < PlaneCount; ++plane)
        if (!(Distance(plane, point.position) >= 0))
            return false;
    return IsFinitePosition(point);
}

} // namespace lumora::reference
