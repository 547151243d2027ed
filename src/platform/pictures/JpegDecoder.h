// JPEG files through libjpeg-turbo. Needs nothing else of this library, so that other programs can be built with it.
#pragma once

#include "platform/pictures/PictureHeader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace lumora::picturecodec
{

/// Whether the bytes begin as a JPEG file does.
bool IsJpeg(std::span<const std::uint8_t> file);

/// Reads up to the first scan.
Header ReadJpegHeader(std::span<const std::uint8_t> file);

/// Decodes grey, RGB, YCbCr, CMYK and YCCK files of 8 bits into `pixels`: red, green, blue and alpha (255) bytes, rows
/// from top to bottom, as many as the header promises. The decoder's own arrays of the whole picture take at most
/// `memory` bytes, and a few rows come on top. Empty when all went well, else what is wrong; what `pixels` holds then
/// is of no use. A file that ends before its picture does is wrong. One that is odd is not: cameras write such files.
std::string DecodeJpeg(std::span<const std::uint8_t> file, std::span<std::uint8_t> pixels, std::size_t memory);

} // namespace lumora::picturecodec
