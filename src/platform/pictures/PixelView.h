// A rectangle of 32-bit pixels in memory that somebody else owns.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumora
{

/// A rectangle of whole pixels: left and top belong to it, right and bottom do not.
struct PixelRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

inline PixelRect Intersection(const PixelRect& a, const PixelRect& b)
{
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top, a.right < b.right ? a.right : b.right,
            a.bottom < b.bottom ? a.bottom : b.bottom};
}

/// Rows from top to bottom, `pitch` pixels apart. A pixel is 0x00RRGGBB: bytes blue, green, red and one that
/// nobody reads.
struct PixelView
{
    std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t pitch = 0; ///< in pixels

    std::uint32_t* Row(int y) const { return pixels + y * pitch; }
    PixelRect Bounds() const { return {0, 0, width, height}; }
};

} // namespace lumora
