// Coverage by exact edge functions; attributes by barycentric coordinates, weighted with 1 / w.
#include "platform/drivers/reference/Rasterizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace lumora::reference
{

namespace
{

constexpr std::int64_t SubPixels = 256;

/// Keeps the products of edge functions far from overflow; no surface is this large.
constexpr double LargestCoordinate = 1 << 21;

std::int64_t FloorDivide(std::int64_t dividend, std::int64_t divisor)
{
    const std::int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

std::int64_t CeilDivide(std::int64_t dividend, std::int64_t divisor)
{
    return -FloorDivide(-dividend, divisor);
}

/// The pixel nearest to a place in 1/256 pixel, halves up.
std::int64_t NearestPixel(std::int64_t place)
{
    return FloorDivide(place + SubPixels / 2, SubPixels);
}

bool Contains(const PixelRect& area, std::int64_t x, std::int64_t y)
{
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

/// A side of a clockwise triangle. Positive inside.
struct Side
{
    std::int64_t x, y, dx, dy;

    Side(const ScreenVertex& from, const ScreenVertex& to) : x(from.x), y(from.y), dx(to.x - from.x), dy(to.y - from.y)
    {
    }

    std::int64_t At(std::int64_t px, std::int64_t py) const { return dx * (py - y) - dy * (px - x); }
    bool IsTopOrLeft() const { return dy < 0 || (dy == 0 && dx > 0); }
    bool Covers(std::int64_t value) const { return value > 0 || (value == 0 && IsTopOrLeft()); }
};

/// A clockwise triangle with everything that is the same for all its pixels.
class TriangleWalk
{
public:
    explicit TriangleWalk(const ScreenTriangle& triangle)
        : corners_(triangle), sides_{Side{triangle[1], triangle[2]}, Side{triangle[2], triangle[0]},
                                     Side{triangle[0], triangle[1]}},
          area_(static_cast<double>(SignedArea(triangle)))
    {
    }

    std::optional<Fragment> At(int x, int y) const
    {
        std::array<double, 3> weights{};
        for (int i = 0; i < 3; ++i)
        {
            const std::int64_t value = sides_[i].At(x * SubPixels, y * SubPixels);
            if (!sides_[i].Covers(value))
                return std::nullopt;
            weights[i] = static_cast<double>(value) / area_;
        }
        return FragmentAt(x, y, weights);
    }

private:
    Fragment FragmentAt(int x, int y, const std::array<double, 3>& weights) const
    {
        Fragment result{x, y, 0, {{{}, 0}, {}, 0, 0, 0}};
        double inverseW = 0;
        for (int i = 0; i < 3; ++i)
        {
            result.depth += weights[i] * corners_[i].depth;
            inverseW += weights[i] * corners_[i].inverseW;
            result.attributes = result.attributes + corners_[i].attributes * (weights[i] * corners_[i].inverseW);
        }
        result.attributes = result.attributes * (1 / inverseW);
        for (int i = 0; i < 3; ++i)
        {
            // Derivative of sum(weight u / w) / sum(weight / w), whose weights change linearly over the screen.
            const double scale = static_cast<double>(SubPixels) / area_ * corners_[i].inverseW / inverseW;
            const double perX = static_cast<double>(-sides_[i].dy) * scale;
            const double perY = static_cast<double>(sides_[i].dx) * scale;
            const double du = corners_[i].attributes.u - result.attributes.u;
            const double dv = corners_[i].attributes.v - result.attributes.v;
            result.uPerX += perX * du;
            result.vPerX += perX * dv;
            result.uPerY += perY * du;
            result.vPerY += perY * dv;
        }
        return result;
    }

    const ScreenTriangle& corners_;
    std::array<Side, 3> sides_;
    double area_;
};

/// The whole pixels between the smallest and largest of the corners, within [low, high); first == end for none.
std::pair<int, int> PixelSpan(std::initializer_list<std::int64_t> places, int low, int high)
{
    const std::int64_t first = std::max<std::int64_t>(CeilDivide(std::min(places), SubPixels), low);
    const std::int64_t end = std::min<std::int64_t>(FloorDivide(std::max(places), SubPixels) + 1, high);
    return first < end ? std::pair{static_cast<int>(first), static_cast<int>(end)} : std::pair{0, 0};
}

Fragment Between(const ScreenVertex& start, const ScreenVertex& end, double t)
{
    const double startWeight = (1 - t) * start.inverseW;
    const double endWeight = t * end.inverseW;
    Fragment result;
    result.depth = start.depth * (1 - t) + end.depth * t;
    result.attributes = (start.attributes * startWeight + end.attributes * endWeight) * (1 / (startWeight + endWeight));
    return result;
}

} // namespace

std::optional<ScreenVertex> ToScreen(const PassState& pass, const ClipVertex& vertex)
{
    const Double4& p = vertex.position;
    if (!(p.w > 0))
        return std::nullopt;
    const double x = pass.centreX + pass.halfWidth * (p.x / p.w);
    const double y = pass.centreY - pass.halfHeight * (p.y / p.w);
    const double inverseW = 1 / p.w;
    if (!(std::abs(x) < LargestCoordinate && std::abs(y) < LargestCoordinate) || !std::isfinite(inverseW))
        return std::nullopt;
    const auto snapped = [](double place) { return static_cast<std::int64_t>(std::floor(place * SubPixels + 0.5)); };
    return ScreenVertex{snapped(x), snapped(y), Clamp01(p.z / p.w), inverseW, vertex.attributes};
}

std::int64_t SignedArea(const ScreenTriangle& t)
{
    return (t[1].x - t[0].x) * (t[2].y - t[0].y) - (t[1].y - t[0].y) * (t[2].x - t[0].x);
}

void RasterizeTriangle(const ScreenTriangle& triangle, const PixelRect& area, const FragmentSink& sink)
{
    const std::int64_t signedArea = SignedArea(triangle);
    if (signedArea == 0)
        return;
    const ScreenTriangle clockwise = signedArea > 0 ? triangle : ScreenTriangle{triangle[0], triangle[2], triangle[1]};
    const TriangleWalk walk{clockwise};
    const auto [left, right] = PixelSpan({triangle[0].x, triangle[1].x, triangle[2].x}, area.left, area.right);
    const auto [top, bottom] = PixelSpan({triangle[0].y, triangle[1].y, triangle[2].y}, area.top, area.bottom);
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x)
            if (const std::optional<Fragment> fragment = walk.At(x, y))
                sink(*fragment);
}

void RasterizeLine(const ScreenVertex& start, const ScreenVertex& end, const PixelRect& area, const FragmentSink& sink)
{
    const std::int64_t dx = end.x - start.x;
    const std::int64_t dy = end.y - start.y;
    const bool isXMajor = std::abs(dx) >= std::abs(dy);
    const std::int64_t from = isXMajor ? start.x : start.y;
    const std::int64_t length = isXMajor ? dx : dy;
    const std::int64_t minorFrom = isXMajor ? start.y : start.x;
    const std::int64_t rise = isXMajor ? dy : dx;
    const std::int64_t first = CeilDivide(std::min(from, from + length), SubPixels);
    const std::int64_t last = CeilDivide(std::max(from, from + length), SubPixels);
    if (first == last)
    {
        RasterizePoint(start, area, sink);
        return;
    }
    for (std::int64_t major = first; major < last; ++major)
    {
        // minor = floor(minorFrom + rise * covered / length + half a pixel), without rounding on the way.
        const std::int64_t covered = major * SubPixels - from;
        const std::int64_t divisor = std::abs(length);
        const std::int64_t climbed = length < 0 ? -rise * covered : rise * covered;
        const std::int64_t minor = FloorDivide((minorFrom + SubPixels / 2) * divisor + climbed, divisor * SubPixels);
        const std::int64_t x = isXMajor ? major : minor;
        const std::int64_t y = isXMajor ? minor : major;
        if (!Contains(area, x, y))
            continue;
        Fragment fragment = Between(start, end, static_cast<double>(covered) / static_cast<double>(length));
        fragment.x = static_cast<int>(x);
        fragment.y = static_cast<int>(y);
        sink(fragment);
    }
}

void RasterizePoint(const ScreenVertex& point, const PixelRect& area, const FragmentSink& sink)
{
    const std::int64_t x = NearestPixel(point.x);
    const std::int64_t y = NearestPixel(point.y);
    if (!Contains(area, x, y))
        return;
    Fragment fragment = Between(point, point, 0);
    fragment.x = static_cast<int>(x);
    fragment.y = static_cast<int>(y);
    sink(fragment);
}

} // namespace lumora::reference
