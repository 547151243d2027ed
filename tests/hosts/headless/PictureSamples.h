// Picture files in memory, sound and otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumora::samples
{

using FileBytes = std::vector<std::uint8_t>;

/// The colour, 0x00RRGGBB, of each pixel of the sound samples below but the GIF: 16 by 12, smooth enough for JPEG.
inline constexpr int Width = 16;
inline constexpr int Height = 12;
std::uint32_t PixelAt(int x, int y);

/// The same of the grey JPEG: how bright the pixel is.
std::uint32_t GreyAt(int x, int y);

FileBytes Png();
FileBytes Jpeg();

/// JPEG files as another encoder writes them. The plain CMYK file stores ink, the one with Adobe's mark its inverse.
enum class JpegKind
{
    Progressive,
    Grey,
    Cmyk,
    AdobeYcck
};
FileBytes JpegOf(JpegKind kind);

FileBytes Bmp();
FileBytes TgaRunLength();

/// 2 by 2: red, green, blue, white.
FileBytes Gif();

/// A PNG file whose header says `width` by `height` (8-bit grey) and whose packed data unpacks to `unpacked` zeros.
FileBytes PngPromising(std::uint32_t width, std::uint32_t height, std::size_t unpacked);

/// A progressive JPEG file with `scans` more scans than it needs.
FileBytes JpegWithScans(int scans);

} // namespace lumora::samples
