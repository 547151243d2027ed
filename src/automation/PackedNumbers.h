// Lists as texts of numbers, and pictures made of one colour: what callers without arrays and pixels give.
#pragma once

#include "platform/container/Picture.h"
#include "platform/math/Vector.h"

#include <string_view>
#include <vector>

namespace lumora::automation
{

/// Numbers separated by blanks (or commas), three a vector. Error 13 for what is not a number and for a count that
/// three does not divide; error 6 for numbers out of range.
std::vector<Vector> VectorsIn(std::string_view text);

/// Error 13 for what is not a whole number, error 6 outside 32 bits.
std::vector<std::int32_t> WholeNumbersIn(std::string_view text);

/// A picture filled with 0xAARRGGBB. DDInvalidParams for sides that a bitmap cannot have, error 7 for more than 2^26
/// pixels.
std::shared_ptr<Picture> NewPicture(std::int32_t width, std::int32_t height, std::uint32_t color);

} // namespace lumora::automation
