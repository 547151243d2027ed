#include "platform/drivers/rgb/Clipping.h"

#include <cmath>
#include <utility>

namespace lumora::rgb
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
        return p.z;
    case 1:
        return p.w - p.z;
    case 2:
        return p.w + p.x;
    case 3:
        return p.w - p.x;
    case 4:
        return p.w + p.y;
    default:
        return p.w - p.y;
    }
}

ColorBlock Mix(const ColorBlock& a, const ColorBlock& b, float t)
{
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t,
            a.alpha + (b.alpha - a.alpha) * t};
}

/// Always from the inner end, so that two triangles at an edge, which walk it in opposite directions, meet.
ClipVertex Crossing(int plane, const ClipVertex& inside, const ClipVertex& outside)
{
    const double in = Distance(plane, inside.position);
    const double t = in / (in - Distance(plane, outside.position));
    const auto mix = [t](double from, double to) { return from + (to - from) * t; };
    const auto single = static_cast<float>(t);
    const auto mixSingle = [single](float from, float to) { return from + (to - from) * single; };
    const Double4& a = inside.position;
    const Double4& b = outside.position;
    const CoordinateBlock& from = inside.coordinates;
    const CoordinateBlock& to = outside.coordinates;
    return {{mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.w, b.w)},
            Mix(inside.color, outside.color, single),
            Mix(inside.highlight, outside.highlight, single),
            {mixSingle(from.u, to.u), mixSingle(from.v, to.v), mixSingle(from.eyeDepth, to.eyeDepth), 0},
            nullptr};
}

void ClipToPlane(int plane, ClipPolygon& polygon)
{
    ClipPolygon result;
    for (int i = 0; i < polygon.count; ++i)
    {
        const ClipVertex& current = polygon.corners[i];
        const ClipVertex& next = polygon.corners[i + 1 == polygon.count ? 0 : i + 1];
        const bool currentInside = Distance(plane, current.position) >= 0;
        const bool nextInside = Distance(plane, next.position) >= 0;
        if (result.count + 2 > static_cast<int>(result.corners.size()))
            break; // rounding can make a polygon concave; no more corners than fit
        if (currentInside)
            result.corners[result.count++] = current;
        if (currentInside && !nextInside)
            result.corners[result.count++] = Crossing(plane, current, next);
        if (!currentInside && nextInside)
            result.corners[result.count++] = Crossing(plane, next, current);
    }
    polygon = result;
}

} // namespace

bool IsFinite(const Double4& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z) && std::isfinite(p.w);
}

bool IsInside(const Double4& position)
{
    for (int plane = 0; plane < PlaneCount; ++plane)
        if (!(Distance(plane, position) >= 0))
            return false;
    return IsFinite(position);
}

void ClipTriangle(ClipPolygon& polygon)
{
    for (int plane = 0; plane < PlaneCount && polygon.count > 0; ++plane)
    {
        bool isCut = false;
        for (int i = 0; i < polygon.count; ++i)
            isCut = isCut || !(Distance(plane, polygon.corners[i].position) >= 0);
        if (isCut)
            ClipToPlane(plane, polygon);
    }
}

bool ClipLine(ClipVertex& from, ClipVertex& to)
{
    if (!IsFinite(from.position) || !IsFinite(to.position))
        return false;
    for (int plane = 0; plane < PlaneCount; ++plane)
    {
        const bool fromInside = Distance(plane, from.position) >= 0;
        const bool toInside = Distance(plane, to.position) >= 0;
        if (!fromInside && !toInside)
            return false;
        if (!toInside)
            to = Crossing(plane, from, to);
        else if (!fromInside)
            from = Crossing(plane, to, from);
    }
    return true;
}

bool ToScreen(const PassState& pass, const Double4& p, ScreenPosition& screen)
{
    constexpr double Limit = GuardBand - 1;
    if (!(p.w > 0))
        return false;
    const double x = pass.centreX + pass.halfWidth * (p.x / p.w);
    const double y = pass.centreY - pass.halfHeight * (p.y / p.w);
    const auto inverseW = static_cast<float>(1 / p.w);
    if (!(std::abs(x) < Limit && std::abs(y) < Limit) || !std::isfinite(inverseW))
        return false;
    const auto snapped = [](double place) { return static_cast<std::int32_t>(std::floor(place * SubPixels + 0.5)); };
    const double depth = p.z / p.w;
    screen = {snapped(x), snapped(y), static_cast<float>(depth > 0 ? (depth < 1 ? depth : 1.0) : 0.0), inverseW};
    return true;
}

} // namespace lumora::rgb
