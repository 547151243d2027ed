// Sets of pixels as lists of rectangles that do not overlap.
#pragma once

#include "platform/pictures/PixelView.h"

#include <vector>

namespace lumora::headless
{

using Region = std::vector<PixelRect>;

/// What of `region` lies outside `hole`.
Region Subtract(const Region& region, const PixelRect& hole);
Region Subtract(Region region, const Region& holes);

/// What of `region` lies within `area`.
Region Intersect(const Region& region, const PixelRect& area);

bool Contains(const Region& region, int x, int y);

} // namespace lumora::headless
