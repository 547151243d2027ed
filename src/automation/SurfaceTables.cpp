// Surfaces, what makes them, and what draws on them: a row for each member.
#include "automation/PackedNumbers.h"
#include "automation/SceneTables.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Blit.h"

#include <algorithm>

namespace lumora::automation
{

namespace
{

// A rectangle of four zeros is the whole surface.
std::optional<PixelRect> RectOrWhole(const PixelRect& rect)
{
    return rect == PixelRect{} ? std::nullopt : std::optional{rect};
}

DeviceContext ContextOf(const std::shared_ptr<Picture>& picture)
{
    if (!picture || !picture->Handle())
        throw RuntimeError{error::InvalidPicture, "DeviceContext", "There is no picture with pixels to draw"};
    return DeviceContext{picture->Handle()->Pixels()};
}

const DeviceContext& Needed(const std::shared_ptr<DeviceContext>& source)
{
    if (!source)
        throw RuntimeError{error::ObjectNotSet, "DeviceContext", "There is no device context to copy from"};
    return *source;
}

Surface& Needed(const std::shared_ptr<Surface>& source)
{
    if (!source)
        throw RuntimeError{error::ObjectNotSet, "Surface", "There is no surface to copy from"};
    return *source;
}

// Access to a surface's pixels for the length of one member, under the rules of every other user of it.
class PixelAccess
{
public:
    explicit PixelAccess(Surface& surface) : lock_(surface.LockShared()) {}

    const PixelView& Pixels() const { return lock_->pixels; }

    std::uint32_t& At(std::int32_t x, std::int32_t y) const { return Part(x, y, 1, 1).pixels[0]; }

    /// Error 9 for a block that is empty or reaches outside.
    PixelView Part(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) const
    {
        const PixelView& all = Pixels();
        if (left < 0 || top < 0 || width < 1 || height < 1 || width > all.width - left || height > all.height - top)
            throw RuntimeError{error::SubscriptOutOfRange, "Surface",
                               "Subscript out of range: the surface has " + std::to_string(all.width) + " by " +
                                   std::to_string(all.height) + " pixels"};
        return {all.Row(top) + left, width, height, all.pitch};
    }

private:
    std::shared_ptr<const SurfaceLock> lock_;
};

std::size_t CountOf(const PixelView& pixels)
{
    return static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
}

SharedNumbers<std::uint32_t> LockSurface(Surface& surface)
{
    std::shared_ptr<const SurfaceLock> lock = surface.LockShared();
    const auto count = static_cast<std::size_t>(lock->pixels.pitch) * static_cast<std::size_t>(lock->pixels.height);
    std::uint32_t* const pixels = lock->pixels.pixels;
    return {{pixels, count}, std::move(lock)};
}

std::vector<std::uint32_t> ReadPixels(Surface& surface, std::int32_t left, std::int32_t top, std::int32_t width,
                                      std::int32_t height)
{
    const PixelAccess access{surface};
    const PixelView part = access.Part(left, top, width, height);
    std::vector<std::uint32_t> pixels;
    pixels.reserve(CountOf(part));
    for (int y = 0; y < height; ++y)
        pixels.insert(pixels.end(), part.Row(y), part.Row(y) + width);
    return pixels;
}

void WritePixels(Surface& surface, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height,
                 const Numbers<std::uint32_t>& pixels)
{
    const PixelAccess access{surface};
    const PixelView part = access.Part(left, top, width, height);
    if (pixels.View().size() != CountOf(part))
        throw RuntimeError{error::SubscriptOutOfRange, "Surface",
                           "There must be " + std::to_string(CountOf(part)) + " pixels, not " +
                               std::to_string(pixels.View().size())};
    const PixelView given{const_cast<std::uint32_t*>(pixels.View().data()), width, height, width};
    CopyBlock(given, part, {given.Bounds(), part.Bounds()}, part.Bounds()); // they may be this surface's own
}

// Width and height are not given for the primary surface, which has the screen's.
std::shared_ptr<Surface> CreateSurface(DirectDraw& directDraw, std::int32_t width, std::int32_t height,
                                       std::uint32_t caps)
{
    constexpr std::uint32_t CapsGiven = 1;
    constexpr std::uint32_t SizeGiven = 2 | 4;
    SurfaceDescription description;
    description.flags = (caps != 0 ? CapsGiven : 0) | (width != 0 || height != 0 ? SizeGiven : 0);
    description.width = width;
    description.height = height;
    description.caps = caps;
    return directDraw.CreateSurface(description);
}

std::vector<MemberRow<Surface>> SurfaceRows()
{
    return {
        Property(
            "Width", [](const Surface& surface) { return std::int32_t{surface.Width()}; }, "pixels"),
        Property(
            "Height", [](const Surface& surface) { return std::int32_t{surface.Height()}; }, "pixels"),
        Property(
            "Pitch", [](Surface& surface) { return static_cast<std::int32_t>(surface.Pixels().pitch); },
            "pixels from one row to the next; 0 for the screen, whose pixels cannot be reached"),
        Property(
            "Caps", [](const Surface& surface) { return surface.Description().caps; }, "sum of capability bits"),
        Property("IsFree", &Surface::IsFree, "False while it is locked or its device context is out"),
        Method("GetDC", "", &Surface::GetDC,
               "a context to draw with, until ReleaseDC or until it is released; one at a time"),
        Method("ReleaseDC", "Context", &Surface::ReleaseDC,
               "gives the context back; drawing with it does nothing then"),
        Method("Lock", "", &LockSurface,
               "the surface's own pixels, Pitch for each row, until Unlock or until they are released"),
        Method("Unlock", "", &Surface::Unlock, "ends the lock; the pixels stay where they are while they are held"),
        Method(
            "Fill", "Left, Top, Right, Bottom, Pixel",
            [](Surface& surface, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
               std::uint32_t pixel) {
                surface.Fill(RectOrWhole({left, top, right, bottom}), pixel);
            },
            "fills a rectangle (four zeros: all) with 0x00RRGGBB"),
        Method(
            "Blt", "Left, Top, Right, Bottom, Source, SourceLeft, SourceTop, SourceRight, SourceBottom, Flags",
            [](Surface& surface, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
               const std::shared_ptr<Surface>& source, std::int32_t sourceLeft, std::int32_t sourceTop,
               std::int32_t sourceRight, std::int32_t sourceBottom, std::uint32_t flags)
            {
                surface.Blt(RectOrWhole({left, top, right, bottom}), Needed(source),
                            RectOrWhole({sourceLeft, sourceTop, sourceRight, sourceBottom}), flags);
            },
            "copies a rectangle of a surface onto one of this, stretching; four zeros are all of it, flags 0 or "
            "0x1000000"),
        Method(
            "PixelAt", "X, Y",
            [](Surface& surface, std::int32_t x, std::int32_t y) { return PixelAccess{surface}.At(x, y) & 0xFFFFFFU; },
            "0x00RRGGBB"),
        Method(
            "SetPixel", "X, Y, Pixel",
            [](Surface& surface, std::int32_t x, std::int32_t y, std::uint32_t pixel)
            { PixelAccess{surface}.At(x, y) = pixel; },
            "0x00RRGGBB"),
        Method("ReadPixels", "Left, Top, Width, Height", &ReadPixels, "a copy of a block, row by row, 0x00RRGGBB"),
        Method("WritePixels", "Left, Top, Width, Height, Pixels", &WritePixels,
               "replaces a block by as many pixels, row by row"),
        Method("SetClipper", "Clipper", &Surface::SetClipper, "clips what goes to the screen to a window"),
        Method(
            "Save", "Path",
            [](Surface& surface, const std::string& path) { SavePicture(path, PixelAccess{surface}.Pixels()); },
            "writes a PNG file"),
    };
}

std::vector<MemberRow<DeviceContext>> ContextRows()
{
    using Context = DeviceContext;
    return {
        Property(
            "Width", [](const Context& context) { return std::int32_t{context.Width()}; },
            "pixels; 0 once it was given back"),
        Property(
            "Height", [](const Context& context) { return std::int32_t{context.Height()}; }, "pixels"),
        Property("IsAttached", &Context::IsAttached, "False once it was given back"),
        Method("SetPixel", "X, Y, Color", &Context::SetPixel, "a color has red in its low byte: 0x00BBGGRR"),
        Method("GetPixel", "X, Y", &Context::GetPixel, "0x00BBGGRR; 0 outside"),
        Method("Line", "X1, Y1, X2, Y2, Color", &Context::Line, "up to, not including, the last point"),
        Method(
            "FillRectangle", "Left, Top, Right, Bottom, Color",
            [](Context& context, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
               std::uint32_t color) {
                context.FillRectangle({left, top, right, bottom}, color);
            },
            "right and bottom are outside"),
        Method(
            "FrameRectangle", "Left, Top, Right, Bottom, Color",
            [](Context& context, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
               std::uint32_t color) {
                context.FrameRectangle({left, top, right, bottom}, color);
            },
            "the outline, one pixel wide"),
        Method(
            "WriteText", "X, Y, Text, Color, Scale",
            [](Context& context, std::int32_t x, std::int32_t y, const std::string& text, std::uint32_t color,
               std::int32_t scale) { context.WriteText(x, y, text, color, scale); },
            "letters in cells of 6 by 10 pixels times the scale, 1 to 64"),
        Method(
            "TextExtent", "Text, Scale, Width, Height",
            [](Context&, const std::string& text, std::int32_t scale, std::int32_t& width, std::int32_t& height)
            {
                const PixelRect extent = Context::TextExtent(text, scale);
                width = extent.Width();
                height = extent.Height();
            },
            "how many pixels a text covers"),
        Method(
            "BitBlt", "X, Y, Width, Height, Source, SourceX, SourceY",
            [](Context& context, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
               const std::shared_ptr<Context>& source, std::int32_t sourceX, std::int32_t sourceY)
            { context.BitBlt(x, y, width, height, Needed(source), sourceX, sourceY); },
            "copies a block of another context, clipped on both sides"),
        Method(
            "DrawPicture", "X, Y, Picture",
            [](Context& context, std::int32_t x, std::int32_t y, const std::shared_ptr<Picture>& picture)
            {
                const Context source = ContextOf(picture);
                context.BitBlt(x, y, source.Width(), source.Height(), source, 0, 0);
            },
            "copies a picture pixel for pixel"),
        Method(
            "StretchPicture", "Left, Top, Right, Bottom, Picture",
            [](Context& context, std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom,
               const std::shared_ptr<Picture>& picture)
            {
                const Context source = ContextOf(picture);
                context.StretchBlt({left, top, right, bottom}, source, source.Pixels().Bounds());
            },
            "copies a picture onto a rectangle, by the nearest pixel"),
    };
}

} // namespace

template<>
const MemberTable<Surface>& TableOf<Surface>()
{
    static const MemberTable<Surface> table{"Surface", SurfaceRows()};
    return table;
}

template<>
const MemberTable<DeviceContext>& TableOf<DeviceContext>()
{
    static const MemberTable<DeviceContext> table{"DeviceContext", ContextRows()};
    return table;
}

template<>
const MemberTable<DirectDraw>& TableOf<DirectDraw>()
{
    static const MemberTable<DirectDraw> table{
        "DirectDraw",
        {
            Method(
                "SetCooperativeLevel", "Window, Level",
                [](DirectDraw& directDraw, std::int32_t window, std::uint32_t level)
                { directDraw.SetCooperativeLevel(window, level); },
                "level 8, the normal one"),
            Method("CreateSurface", "Width, Height, Caps", &CreateSurface,
                   "black pixels; caps 0 for plain ones, or 512 with no size for the screen"),
            Method("CreateClipper", "Flags", &DirectDraw::CreateClipper, "flags 0"),
            Method("WaitForVerticalBlank", "Flags", &DirectDraw::WaitForVerticalBlank,
                   "returns at the start of the next one; flags 1"),
        }};
    return table;
}

template<>
const MemberTable<Clipper>& TableOf<Clipper>()
{
    static const MemberTable<Clipper> table{
        "Clipper",
        {
            Method(
                "SetHWnd", "Flags, Window",
                [](Clipper& clipper, std::uint32_t flags, std::int32_t window) { clipper.SetHWnd(flags, window); },
                "the window to clip to; flags 0"),
            Property(
                "HasWindow", [](const Clipper& clipper) { return clipper.Window() != nullptr; },
                "whether a window was given and is still there"),
        }};
    return table;
}

} // namespace lumora::automation
