// The one copy loop behind blits, device contexts and what hosts show on their screens.
#pragma once

#include "platform/pictures/PixelView.h"

#include <cstdint>

namespace lumora
{

/// A block of pixels on its way from one picture to another.
struct BlitBlock
{
    PixelRect source;
    PixelRect destination;
};

/// True when both rectangles have an area and neither side is beyond 2^30: what CopyBlock can compute with.
bool IsCopyable(const BlitBlock& block);

/// Copies `block.source` of `source` onto `block.destination` of `target`. Destination pixel i of a row shows source
/// pixel floor((i + 0.5) * source width / destination width); rows go likewise. Only pixels within `clip` change;
/// parts outside either picture are left out. Both may be the same memory: what is read is as it was before.
/// A block that is not copyable copies nothing. OutOfMemory when overlapping pixels cannot be kept aside.
void CopyBlock(const PixelView& source, const PixelView& target, const BlitBlock& block, const PixelRect& clip);

/// Fills the part of `area` that lies in `target`.
void FillBlock(const PixelView& target, const PixelRect& area, std::uint32_t color);

} // namespace lumora
