#include "platform/scenegraph/frames/Color.h"

namespace lumora
{

namespace
{

std::uint32_t ByteOf(float component)
{
    if (!(component > 0)) // NaN too
        return 0;
    return component >= 1 ? 255 : static_cast<std::uint32_t>(component * 255.0F + 0.5F);
}

} // namespace

Color CreateColorRGBA(float red, float green, float blue, float alpha)
{
    return ByteOf(alpha) << 24 | ByteOf(red) << 16 | ByteOf(green) << 8 | ByteOf(blue);
}

} // namespace lumora
