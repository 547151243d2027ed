// Copying and filling blocks of pixels, clipped on both sides.
#include "platform/pictures/Blit.h"

#include "base/RuntimeError.h"

#include <algorithm>
#include <array>
#include <functional>
#include <new>
#include <utility>
#include <vector>

namespace lumora
{

namespace
{

constexpr std::int64_t LargestExtent = std::int64_t{1} << 30;

std::int64_t Extent(int from, int to)
{
    return std::int64_t{to} - from;
}

bool IsCopyable(const PixelRect& rect)
{
    const std::int64_t width = Extent(rect.left, rect.right);
    const std::int64_t height = Extent(rect.top, rect.bottom);
    return width > 0 && height > 0 && width <= LargestExtent && height <= LargestExtent;
}

/// One direction of a stretch: which source pixel a destination pixel shows.
struct Axis
{
    int sourceFrom;
    std::int64_t sourceExtent;
    int destinationFrom;
    std::int64_t destinationExtent;

    std::int64_t SourceOf(int destination) const
    {
        const std::int64_t i = Extent(destinationFrom, destination);
        return sourceFrom + (2 * i + 1) * sourceExtent / (2 * destinationExtent);
    }
};

/// The part of [from, to) whose source pixels lie in 0 .. size - 1. The mapping never falls, so the part is one run.
void TrimToSource(const Axis& axis, int size, int& from, int& to)
{
    const auto firstWith = [&](std::int64_t source)
    {
        int low = from;
        int high = to;
        while (low < high)
        {
            const int middle = low + (high - low) / 2;
            if (axis.SourceOf(middle) < source)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    };
    const int begin = firstWith(0);
    to = firstWith(size);
    from = begin;
}

bool ShareMemory(const PixelView& a, const PixelView& b)
{
    const std::less<const std::uint32_t*> before;
    const auto end = [](const PixelView& view) { return view.Row(view.height - 1) + view.width; };
    return before(a.pixels, end(b)) && before(b.pixels, end(a));
}

/// Columns that are stretched at a time: their places in the source fit on the stack.
constexpr int StripWidth = 1024;

/// One strip of a stretch. A row that shows the same source row as the one above is a copy
/// of it.
void StretchStrip(const PixelView& source, const PixelView& target, const Axis& across, const Axis& down,
                  const PixelRect& strip)
{
    std::array<int, StripWidth> columns;
    const int width = strip.Width();
    for (int i = 0; i < width; ++i)
        columns[static_cast<std::size_t>(i)] = static_cast<int>(across.SourceOf(strip.left + i));
    std::int64_t shown = -1;
    for (int y = strip.top; y < strip.bottom; ++y)
    {
        std::uint32_t* const to = target.Row(y) + strip.left;
        const std::int64_t row = down.SourceOf(y);
        if (row == std::exchange(shown, row))
        {
            std::copy_n(target.Row(y - 1) + strip.left, width, to);
            continue;
        }
        const std::uint32_t* const from = source.Row(static_cast<int>(row));
        for (int i = 0; i < width; ++i)
            to[i] = from[columns[static_cast<std::size_t>(i)]];
    }
}

/// Rows of `visible`, each from its source row; source and target do not overlap.
void CopyRows(const PixelView& source, const PixelView& target, const Axis& across, const Axis& down,
              const PixelRect& visible)
{
    if (across.sourceExtent == across.destinationExtent)
    {
        for (int y = visible.top; y < visible.bottom; ++y)
            std::copy_n(source.Row(static_cast<int>(down.SourceOf(y))) + across.SourceOf(visible.left), visible.Width(),
                        target.Row(y) + visible.left);
        return;
    }
    for (int left = visible.left; left < visible.right; left += StripWidth)
        StretchStrip(source, target, across, down,
                     {left, visible.top, std::min(left + StripWidth, visible.right), visible.bottom});
}

/// The rows and columns that `visible` reads, copied out so that writing cannot change them.
void CopyRowsThroughMemory(const PixelView& source, const PixelView& target, Axis across, Axis down,
                           const PixelRect& visible)
{
    const int left = static_cast<int>(across.SourceOf(visible.left));
    const int top = static_cast<int>(down.SourceOf(visible.top));
    const int width = static_cast<int>(across.SourceOf(visible.right - 1)) + 1 - left;
    const int height = static_cast<int>(down.SourceOf(visible.bottom - 1)) + 1 - top;
    std::vector<std::uint32_t> kept(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const PixelView copy{kept.data(), width, height, width};
    for (int y = 0; y < height; ++y)
        std::copy_n(source.Row(top + y) + left, width, copy.Row(y));
    across.sourceFrom -= left;
    down.sourceFrom -= top;
    CopyRows(copy, target, across, down, visible);
}

} // namespace

bool IsCopyable(const BlitBlock& block)
{
    return IsCopyable(block.source) && IsCopyable(block.destination);
}

void CopyBlock(const PixelView& source, const PixelView& target, const BlitBlock& block, const PixelRect& clip)
{
    if (!IsCopyable(block))
        return;
    const auto& [from, to] = block;
    const Axis across{from.left, Extent(from.left, from.right), to.left, Extent(to.left, to.right)};
    const Axis down{from.top, Extent(from.top, from.bottom), to.top, Extent(to.top, to.bottom)};
    PixelRect visible = Intersection(Intersection(to, clip), target.Bounds());
    if (visible.IsEmpty())
        return;
    TrimToSource(across, source.width, visible.left, visible.right);
    TrimToSource(down, source.height, visible.top, visible.bottom);
    if (visible.IsEmpty())
        return;
    try
    {
        if (ShareMemory(source, target))
            CopyRowsThroughMemory(source, target, across, down, visible);
        else
            CopyRows(source, target, across, down, visible);
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::OutOfMemory, "DirectDraw", "There is not enough memory to copy this picture"};
    }
}

void FillBlock(const PixelView& target, const PixelRect& area, std::uint32_t color)
{
    const PixelRect visible = Intersection(area, target.Bounds());
    if (visible.IsEmpty())
        return;
    for (int y = visible.top; y < visible.bottom; ++y)
        std::fill_n(target.Row(y) + visible.left, visible.Width(), color);
}

} // namespace lumora
