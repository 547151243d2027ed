// Cutting rectangles out of rectangles.
#include "hosts/headless/Region.h"

#include <algorithm>

namespace lumora::headless
{

Region Subtract(const Region& region, const PixelRect& hole)
{
    Region left;
    const auto keep = [&](const PixelRect& part)
    {
        if (!part.IsEmpty())
            left.push_back(part);
    };
    for (const PixelRect& rect : region)
    {
        const PixelRect cut = Intersection(rect, hole);
        if (cut.IsEmpty())
        {
            left.push_back(rect);
            continue;
        }
        keep({rect.left, rect.top, rect.right, cut.top});
        keep({rect.left, cut.top, cut.left, cut.bottom});
        keep({cut.right, cut.top, rect.right, cut.bottom});
        keep({rect.left, cut.bottom, rect.right, rect.bottom});
    }
    return left;
}

Region Subtract(Region region, const Region& holes)
{
    for (const PixelRect& hole : holes)
        region = Subtract(region, hole);
    return region;
}

Region Intersect(const Region& region, const PixelRect& area)
{
    Region common;
    for (const PixelRect& rect : region)
        if (const PixelRect part = Intersection(rect, area); !part.IsEmpty())
            common.push_back(part);
    return common;
}

bool Contains(const Region& region, int x, int y)
{
    return std::ranges::any_of(region, [=](const PixelRect& rect)
                               { return x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom; });
}

} // namespace lumora::headless
