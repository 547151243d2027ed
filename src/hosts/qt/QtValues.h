// How values of the control cross to Qt and back.
#pragma once

#include "base/RuntimeError.h"
#include "platform/pictures/Picture.h"

#include <QImage>
#include <QPixmap>
#include <QString>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace lumora
{

/// A copy of a picture; a null image for nothing.
QImage ToImage(const std::shared_ptr<Picture>& picture);

/// A copy; nothing for a null image. DDInvalidParams when a side is above Bitmap::MaximumSide.
std::shared_ptr<Picture> ToPicture(const QImage& image);

/// The nearest double with the fewest digits that is read back as this number: forms show and store 1.571, not
/// 1.5709999799728394.
double ToShortDouble(float value);

// Most types are the same on both sides.
template<typename Type>
struct QtValue
{
    using Other = Type;
    static Other Out(Type value) { return value; }
    static Type In(Other value)
    {
        // What form loaders make of names that they do not know.
        if constexpr (std::is_enum_v<Type>)
            if (static_cast<std::int32_t>(value) == -1)
                throw RuntimeError{error::InvalidPropertyValue, "Viewport", "no value of its enumeration"};
        return value;
    }
};

template<>
struct QtValue<std::int16_t>
{
    using Other = int;
    static Other Out(std::int16_t value) { return value; }
};

template<>
struct QtValue<float>
{
    using Other = double;
    static Other Out(float value) { return ToShortDouble(value); }
    static float In(double value); ///< error 6 outside the range of Single
};

template<>
struct QtValue<std::string>
{
    using Other = QString;
    static Other Out(const std::string& value) { return QString::fromStdString(value); }
    static std::string In(const QString& value) { return value.toStdString(); }
};

template<>
struct QtValue<std::shared_ptr<Picture>>
{
    using Other = QPixmap;
    static Other Out(const std::shared_ptr<Picture>& value) { return QPixmap::fromImage(ToImage(value)); }
    static std::shared_ptr<Picture> In(const QPixmap& value) { return ToPicture(value.toImage()); }
};

} // namespace lumora
