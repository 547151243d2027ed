// Drawing with device-context colours: single pixels, lines, rectangles and blocks, all clipped to the picture.
#include "platform/directdraw/DeviceContext.h"

#include "platform/directdraw/Blit.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumora
{

namespace
{

/// Device contexts keep red in the low byte, pixels keep blue there; the way back is the same.
std::uint32_t SwapRedAndBlue(std::uint32_t color)
{
    return (color & 0x0000FF00) | (color & 0xFF) << 16 | (color >> 16 & 0xFF);
}

bool IsInside(const PixelView& view, int x, int y)
{
    return x >= 0 && y >= 0 && x < view.width && y < view.height;
}

/// The fourth byte stays: it is alpha in a bitmap and nothing in a surface.
void WriteColor(std::uint32_t& pixel, std::uint32_t color)
{
    pixel = (pixel & 0xFF000000) | color;
}

/// Far corners may lie beyond the range of coordinates; nothing is visible there.
int Saturated(std::int64_t coordinate)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(coordinate, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

PixelRect RectAt(int x, int y, int width, int height)
{
    return {x, y, Saturated(std::int64_t{x} + width), Saturated(std::int64_t{y} + height)};
}

/// Steps of a line along its longer direction that stay within 0 .. size - 1.
struct StepRange
{
    std::int64_t first;
    std::int64_t end;
};

StepRange VisibleSteps(int start, bool forward, std::int64_t steps, int size)
{
    const std::int64_t first = forward ? -std::int64_t{start} : std::int64_t{start} - (size - 1);
    return {std::max<std::int64_t>(first, 0), std::min(first + size, steps)};
}

} // namespace

void DeviceContext::SetPixel(int x, int y, ColorRef color)
{
    if (IsInside(pixels_, x, y))
        WriteColor(pixels_.Row(y)[x], SwapRedAndBlue(color));
}

ColorRef DeviceContext::GetPixel(int x, int y) const
{
    return IsInside(pixels_, x, y) ? SwapRedAndBlue(pixels_.Row(y)[x]) : 0;
}

void DeviceContext::Line(int x1, int y1, int x2, int y2, ColorRef color)
{
    const std::int64_t across = std::int64_t{x2} - x1;
    const std::int64_t down = std::int64_t{y2} - y1;
    const bool flat = std::abs(across) >= std::abs(down);
    const std::int64_t along = flat ? across : down;
    const std::int64_t aside = flat ? down : across;
    const std::int64_t steps = std::abs(along);
    // Only the visible steps are taken, so that a line to far away costs no more than the picture is wide.
    const StepRange range =
        flat ? VisibleSteps(x1, across > 0, steps, Width()) : VisibleSteps(y1, down > 0, steps, Height());
    for (std::int64_t step = range.first; step < range.end; ++step)
    {
        const double drift = static_cast<double>(step) * static_cast<double>(aside) / static_cast<double>(steps);
        const std::int64_t main = (flat ? x1 : y1) + (along > 0 ? step : -step);
        const std::int64_t other = (flat ? y1 : x1) + static_cast<std::int64_t>(std::floor(drift + 0.5));
        SetPixel(Saturated(flat ? main : other), Saturated(flat ? other : main), color);
    }
}

void DeviceContext::FillRectangle(const PixelRect& rect, ColorRef color)
{
    const PixelRect visible = Intersection(rect, pixels_.Bounds());
    if (visible.IsEmpty())
        return;
    const std::uint32_t word = SwapRedAndBlue(color);
    for (int y = visible.top; y < visible.bottom; ++y)
        for (int x = visible.left; x < visible.right; ++x)
            WriteColor(pixels_.Row(y)[x], word);
}

void DeviceContext::BitBlt(int x, int y, int width, int height, const DeviceContext& source, int sourceX, int sourceY)
{
    // What lies outside the source is left out first, so that the block cannot reach beyond the coordinates' range.
    const std::int64_t left = std::max<std::int64_t>({0, -std::int64_t{x}, -std::int64_t{sourceX}});
    const std::int64_t top = std::max<std::int64_t>({0, -std::int64_t{y}, -std::int64_t{sourceY}});
    const std::int64_t right =
        std::min<std::int64_t>({width, std::int64_t{Width()} - x, source.Width() - std::int64_t{sourceX}});
    const std::int64_t bottom =
        std::min<std::int64_t>({height, std::int64_t{Height()} - y, source.Height() - std::int64_t{sourceY}});
    if (right <= left || bottom <= top)
        return;
    const auto block = [&](std::int64_t originX, std::int64_t originY)
    {
        return RectAt(static_cast<int>(originX + left), static_cast<int>(originY + top), static_cast<int>(right - left),
                      static_cast<int>(bottom - top));
    };
    CopyBlock(source.pixels_, pixels_, {block(sourceX, sourceY), block(x, y)}, pixels_.Bounds());
}

void DeviceContext::StretchBlt(const PixelRect& destination, const DeviceContext& source, const PixelRect& sourceRect)
{
    CopyBlock(source.pixels_, pixels_, {sourceRect, destination}, pixels_.Bounds());
}

} // namespace lumora
