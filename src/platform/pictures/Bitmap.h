// Pictures in memory, as hosts and files give them.
#pragma once

#include "base/Variant.h"
#include "platform/pictures/PixelView.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace lumora
{

/// 32-bit pixels, rows from top to bottom, 0xAARRGGBB (alpha 255 where a picture has none).
class Bitmap : public Object
{
public:
    /// The largest side, in pixels.
    static constexpr int MaximumSide = 16384;

    /// Black, opaque. DDInvalidParams unless both sides are in 1 .. MaximumSide.
    Bitmap(int width, int height);

    int Width() const { return width_; }
    int Height() const { return height_; }
    PixelView Pixels() { return {pixels_.data(), width_, height_, width_}; }
    const std::vector<std::uint32_t>& Data() const { return pixels_; }

private:
    int width_;
    int height_;
    std::vector<std::uint32_t> pixels_;
};

} // namespace lumora
