// A picture's size in the unit that hosts measure pictures in.
#include "platform/pictures/Picture.h"

#include "platform/pictures/Bitmap.h"

namespace lumora
{

namespace
{

constexpr int HimetricPerInch = 2540;
constexpr int PixelsPerInch = 96;

std::int32_t ToHimetric(int pixels)
{
    return (pixels * HimetricPerInch + PixelsPerInch / 2) / PixelsPerInch;
}

} // namespace

std::int32_t Picture::Width() const
{
    return bitmap_ ? ToHimetric(bitmap_->Width()) : 0;
}

std::int32_t Picture::Height() const
{
    return bitmap_ ? ToHimetric(bitmap_->Height()) : 0;
}

} // namespace lumora
