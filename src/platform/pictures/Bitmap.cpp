// Pictures in memory: checked sizes, black to begin with.
#include "platform/pictures/Bitmap.h"

#include "base/RuntimeError.h"

#include <new>

namespace lumora
{

namespace
{

constexpr std::uint32_t OpaqueBlack = 0xFF000000;

} // namespace

Bitmap::Bitmap(int width, int height) : width_(width), height_(height)
{
    if (width < 1 || height < 1 || width > MaximumSide || height > MaximumSide)
        throw RuntimeError{error::DDInvalidParams, "Bitmap",
                           "A bitmap's sides must be between 1 and " + std::to_string(MaximumSide) + " pixels"};
    try
    {
        pixels_.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), OpaqueBlack);
    }
    catch (const std::bad_alloc&)
    {
        throw RuntimeError{error::OutOfMemory, "Bitmap", "There is not enough memory for this bitmap"};
    }
}

} // namespace lumora
