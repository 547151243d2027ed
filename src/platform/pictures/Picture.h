// A picture object as hosts hand them over.
#pragma once

#include "base/Variant.h"
#include "platform/pictures/PixelView.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace lumora
{

class Bitmap;

class Picture : public Object
{
public:
    explicit Picture(std::shared_ptr<Bitmap> bitmap) : bitmap_(std::move(bitmap)) {}

    const std::shared_ptr<Bitmap>& Handle() const { return bitmap_; }

    /// HIMETRIC units (0.01 mm) at 96 pixels an inch.
    std::int32_t Width() const;
    std::int32_t Height() const;

private:
    std::shared_ptr<Bitmap> bitmap_;
};

/// Decodes a picture file (PNG, JPEG, uncompressed BMP, GIF's first frame, TGA). The file's size (256 MB) and its
/// dimensions (Bitmap::MaximumSide each, 8192 by 8192 pixels in all) are checked before anything is decoded, and
/// decoding takes no more memory than such dimensions need. FileNotFound when it cannot be read; InvalidPicture when it
/// is not a whole picture, with the reason, or when the library was built without picture files.
std::shared_ptr<Picture> LoadPicture(const std::string& path);

/// The same for a file's contents; `name` is what errors call it.
std::shared_ptr<Picture> DecodePicture(std::span<const std::uint8_t> file, const std::string& name);

/// Writes a PNG file of `pixels` (alpha ignored). PathFileAccess when it cannot be written; InvalidCall for no pixels
/// or more than 8192 by 8192 in all; InvalidPicture when the library was built without picture files.
void SavePicture(const std::string& path, const PixelView& pixels);

} // namespace lumora
