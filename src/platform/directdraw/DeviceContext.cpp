// Drawing with device-context colours: single pixels, lines, rectangles and blocks, all clipped to the picture.
#include "platform/directdraw/DeviceContext.h"

#include "base/RuntimeError.h"
#include "platform/directdraw/TextGlyphs.h"
#include "platform/pictures/Blit.h"

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

void RequireTextScale(int scale)
{
    if (scale < 1 || scale > DeviceContext::MaximumTextScale)
        throw RuntimeError{error::DDInvalidParams, "DeviceContext",
                           "A text's scale is 1 to " + std::to_string(DeviceContext::MaximumTextScale) + ", not " +
                               std::to_string(scale)};
}

/// Calls `visit(column, line, character)` for each cell of a text; a character of several bytes has one cell.
template<typename Visit>
void VisitCells(std::string_view text, Visit&& visit)
{
    const auto goesOn = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    std::int64_t column = 0;
    std::int64_t line = 0;
    for (const char character : text)
    {
        if (character == '\n')
        {
            column = 0;
            ++line;
        }
        else if (!goesOn(character))
            visit(column++, line, character);
    }
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

void DeviceContext::FrameRectangle(const PixelRect& rect, ColorRef color)
{
    if (rect.IsEmpty())
        return;
    FillRectangle({rect.left, rect.top, rect.right, rect.top + 1}, color);
    FillRectangle({rect.left, rect.bottom - 1, rect.right, rect.bottom}, color);
    FillRectangle({rect.left, rect.top, rect.left + 1, rect.bottom}, color);
    FillRectangle({rect.right - 1, rect.top, rect.right, rect.bottom}, color);
}

void DeviceContext::WriteText(int x, int y, std::string_view text, ColorRef color, int scale)
{
    RequireTextScale(scale);
    VisitCells(text,
               [&](std::int64_t column, std::int64_t line, char character)
               {
                   const std::int64_t left = x + column * CellWidth * scale;
                   const std::int64_t top = y + line * CellHeight * scale;
                   if (left >= Width() || top >= Height() || left + CellWidth * scale <= 0 ||
                       top + CellHeight * scale <= 0)
                       return;
                   WriteGlyph(static_cast<int>(left), static_cast<int>(top), character, color, scale);
               });
}

void DeviceContext::WriteGlyph(int x, int y, char character, ColorRef color, int scale)
{
    for (int row = 0; row < GlyphHeight; ++row)
        for (int column = 0; column < GlyphWidth; ++column)
            if (HasInk(character, column, row))
                FillRectangle(RectAt(x + column * scale, y + row * scale, scale, scale), color);
}

PixelRect DeviceContext::TextExtent(std::string_view text, int scale)
{
    RequireTextScale(scale);
    std::int64_t columns = 0;
    VisitCells(text, [&](std::int64_t column, std::int64_t, char) { columns = std::max(columns, column + 1); });
    const std::int64_t lines = text.empty() ? 0 : 1 + std::ranges::count(text, '\n');
    return {0, 0, Saturated(columns * CellWidth * scale), Saturated(lines * CellHeight * scale)};
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
