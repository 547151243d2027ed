#include "hosts/qt/QtValues.h"

#include "base/Numbers.h"
#include "platform/pictures/Bitmap.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace lumora
{

QImage ToImage(const std::shared_ptr<Picture>& picture)
{
    if (!picture || !picture->Handle())
        return {};
    const PixelView pixels = picture->Handle()->Pixels();
    return QImage{reinterpret_cast<const uchar*>(pixels.pixels), pixels.width, pixels.height,
                  static_cast<qsizetype>(pixels.pitch) * 4, QImage::Format_ARGB32}
        .copy();
}

std::shared_ptr<Picture> ToPicture(const QImage& image)
{
    if (image.isNull())
        return nullptr;
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    const auto bitmap = std::make_shared<Bitmap>(pixels.width(), pixels.height());
    const PixelView target = bitmap->Pixels();
    for (int y = 0; y < target.height; ++y)
        std::copy_n(reinterpret_cast<const std::uint32_t*>(pixels.constScanLine(y)), target.width, target.Row(y));
    return std::make_shared<Picture>(bitmap);
}

double ToShortDouble(float value)
{
    if (!std::isfinite(value))
        return value;
    std::array<char, 32> digits; // the longest Single takes 15
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    double shortest = value;
    std::from_chars(digits.data(), written.ptr, shortest);
    return shortest;
}

float QtValue<float>::In(double value)
{
    return ToSingle(value);
}

} // namespace lumora
