// The boundary to the picture libraries: bytes in, pixels out, within a stated amount of memory.
#pragma once

#include "platform/pictures/PictureHeader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace lumora::picturecodec
{

/// What the file's header promises; a problem when no decoder knows it, or when it is damaged.
Header ReadHeader(std::span<const std::uint8_t> file);

struct Release
{
    void operator()(std::uint8_t* bytes) const;
};

/// Red, green, blue and alpha bytes of every pixel, rows from top to bottom.
using Bytes = std::unique_ptr<std::uint8_t[], Release>;

struct Decoded
{
    Bytes bytes; ///< nothing when the file could not be decoded
    Size size;
    std::string problem;
};

/// Decodes with at most `memory` bytes allocated at any time. A file that ends before its picture does is not
/// decoded.
Decoded Decode(std::span<const std::uint8_t> file, std::size_t memory);

struct Encoded
{
    Bytes bytes; ///< nothing when there was not enough memory
    std::size_t count = 0;
};

/// A PNG file of red, green and blue bytes. 3 * width * height must be below 2^31 - height.
Encoded EncodePng(std::span<const std::uint8_t> rgb, Size size);

} // namespace lumora::picturecodec
