// Pictures and property bags: a row for each member.
#include "automation/SceneTables.h"
#include "platform/pictures/Bitmap.h"

namespace lumora::automation
{

namespace
{

Bitmap& BitmapOf(const Picture& picture)
{
    if (!picture.Handle())
        throw RuntimeError{error::InvalidPicture, "Picture", "This picture has no pixels"};
    return *picture.Handle();
}

std::uint32_t& PixelOf(Picture& picture, std::int32_t x, std::int32_t y)
{
    const PixelView pixels = BitmapOf(picture).Pixels();
    if (x < 0 || y < 0 || x >= pixels.width || y >= pixels.height)
        throw RuntimeError{error::SubscriptOutOfRange, "Picture", "Subscript out of range: no such pixel"};
    return pixels.Row(y)[x];
}

std::size_t CountOf(const PixelView& pixels)
{
    return static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
}

const MemoryPropertyBag::Entry& EntryOf(const MemoryPropertyBag& bag, std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= bag.Entries().size())
        throw RuntimeError{error::SubscriptOutOfRange, "PropertyBag", "Subscript out of range: no such entry"};
    return bag.Entries()[static_cast<std::size_t>(index)];
}

} // namespace

template<>
const MemberTable<Picture>& TableOf<Picture>()
{
    static const MemberTable<Picture> table{
        "Picture",
        {
            Property("Width", &Picture::Width, "0.01 mm at 96 pixels an inch"),
            Property("Height", &Picture::Height, "0.01 mm at 96 pixels an inch"),
            Property(
                "PixelWidth", [](const Picture& picture) { return std::int32_t{BitmapOf(picture).Width()}; }, "pixels"),
            Property(
                "PixelHeight", [](const Picture& picture) { return std::int32_t{BitmapOf(picture).Height()}; },
                "pixels"),
            Method(
                "PixelAt", "X, Y",
                [](Picture& picture, std::int32_t x, std::int32_t y) -> std::uint32_t
                { return PixelOf(picture, x, y); },
                "0xAARRGGBB"),
            Method(
                "SetPixel", "X, Y, Color",
                [](Picture& picture, std::int32_t x, std::int32_t y, std::uint32_t color)
                { PixelOf(picture, x, y) = color; },
                "0xAARRGGBB"),
            Method(
                "Save", "Path",
                [](Picture& picture, const std::string& path) { SavePicture(path, BitmapOf(picture).Pixels()); },
                "writes a PNG file"),
            Property(
                "Pixels",
                [](Picture& picture)
                {
                    const PixelView pixels = BitmapOf(picture).Pixels();
                    return SharedNumbers<std::uint32_t>{{pixels.pixels, CountOf(pixels)}, picture.Handle()};
                },
                "the picture's own pixels, row by row, 0xAARRGGBB: what is written into them is in the picture"),
        }};
    return table;
}

template<>
const MemberTable<Object>& TableOf<Object>()
{
    static const MemberTable<Object> table{"Object", {}};
    return table;
}

template<>
const MemberTable<MemoryPropertyBag>& TableOf<MemoryPropertyBag>()
{
    using Bag = MemoryPropertyBag;
    static const MemberTable<Bag> table{
        "PropertyBag",
        {
            Property(
                "Count", [](const Bag& bag) { return static_cast<std::int32_t>(bag.Entries().size()); },
                "how many entries there are"),
            Method(
                "NameAt", "Index",
                [](Bag& bag, std::int32_t index) -> std::string { return EntryOf(bag, index).first; },
                "an entry's name, in the order of writing"),
            Method(
                "ValueAt", "Index", [](Bag& bag, std::int32_t index) -> Variant { return EntryOf(bag, index).second; },
                "an entry's value"),
            Method(
                "Read", "Name, DefaultValue",
                [](Bag& bag, const std::string& name, const Variant& otherwise)
                { return bag.ReadProperty(name, otherwise); },
                "the entry of this name, or the default"),
            Method(
                "Write", "Name, Value",
                [](Bag& bag, const std::string& name, const Variant& value) { bag.Set(name, value); },
                "stores an entry"),
            Method(
                "Remove", "Name", [](Bag& bag, const std::string& name) { bag.Remove(name); }, "forgets an entry"),
        }};
    return table;
}

} // namespace lumora::automation
