// Drawing on a surface or bitmap with colours whose low byte is red.
#pragma once

#include "platform/pictures/Bitmap.h"
#include "platform/pictures/PixelView.h"

#include <string_view>

namespace lumora
{

/// A colour value of device contexts: blue * 65536 + green * 256 + red.
using ColorRef = std::uint32_t;

/// Draws into pixels that belong to a surface or a bitmap, clipped to them. Once its surface has taken it back it has
/// no pixels and drawing does nothing. A bitmap must outlive the contexts made for it.
class DeviceContext : public Object
{
public:
    explicit DeviceContext(const PixelView& pixels) : pixels_(pixels) {}

    int Width() const { return pixels_.width; }
    int Height() const { return pixels_.height; }

    /// Outside: nothing, and black is read.
    void SetPixel(int x, int y, ColorRef color);
    ColorRef GetPixel(int x, int y) const;

    /// From the first point up to, not including, the last: one pixel a step along the longer direction.
    void Line(int x1, int y1, int x2, int y2, ColorRef color);

    /// Filled; right and bottom are outside.
    void FillRectangle(const PixelRect& rect, ColorRef color);

    /// The rectangle's outline, one pixel wide, within it.
    void FrameRectangle(const PixelRect& rect, ColorRef color);

    /// The largest `scale` of texts.
    static constexpr int MaximumTextScale = 64;

    /// Writes from (x, y), the first cell's top-left corner, to the right; a line feed goes back to x in the next line.
    /// What lies under the letters stays between their strokes. `text` is UTF-8, of which ASCII has glyphs and every
    /// other character shows as a frame; a cell is 6 by 10 pixels times `scale`. DDInvalidParams for a scale outside
    /// 1 .. MaximumTextScale.
    void WriteText(int x, int y, std::string_view text, ColorRef color, int scale);

    /// The size of what WriteText covers, pixels: the longest line's cells, and a cell's height for each line.
    static PixelRect TextExtent(std::string_view text, int scale);

    /// Copies a block of another context, unscaled, clipped on both sides. Overlapping copies within one picture are
    /// exact.
    void BitBlt(int x, int y, int width, int height, const DeviceContext& source, int sourceX, int sourceY);

    /// Copies a block of another context onto one of another size, by the nearest pixel.
    void StretchBlt(const PixelRect& destination, const DeviceContext& source, const PixelRect& sourceRect);

    const PixelView& Pixels() const { return pixels_; }

    /// False once its surface has taken it back.
    bool IsAttached() const { return pixels_.pixels != nullptr; }

private:
    friend class Surface;
    void Release() { pixels_ = {}; }
    void WriteGlyph(int x, int y, char character, ColorRef color, int scale);

    PixelView pixels_;
};

} // namespace lumora
