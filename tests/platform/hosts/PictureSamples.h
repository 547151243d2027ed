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

/// The same of the grey JPEG.
std::uint32_t GreyAt(int x, int y);

FileBytes Png();
FileBytes Jpeg();

/// JPEG files as another encoder writes them. Of the CMYK files, plain ones store ink; those with Adobe's mark store
/// light, the inverse.
enum class JpegKind
{
    Progressive,
    Grey,
    Cmyk,
    AdobeCmyk,
    AdobeYcck
};
FileBytes JpegOf(JpegKind kind);

FileBytes Bmp();
FileBytes TgaRunLength();

/// 2 by 2: red, green, blue, white.
FileBytes Gif();

/// A PNG file whose header says `width` by `height` (8-bit grey) and whose packed data unpacks to `unpacked` zeros.
FileBytes PngPromising(std::uint32_t width, std::uint32_t height, std::size_t unpacked);

/// A 54-byte BMP header without pixels.
FileBytes BmpPromising(std::int32_t width, std::int32_t height);

/// A progressive JPEG file with `scans` more scans than it needs.
FileBytes JpegWithScans(int scans);

} // namespace lumora::samples
