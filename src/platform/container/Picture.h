// A picture object as hosts hand them over.
#pragma once

#include "platform/automation/Variant.h"
#include "platform/drivers/PixelView.h"

#include <memory>
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

/// Decodes a picture file (PNG, JPEG, BMP, GIF's first frame, TGA). Dimensions are checked against
/// Bitmap::MaximumSide before anything is decoded. FileNotFound when it cannot be read; InvalidPicture when it is not
/// a picture, with the reason.
std::shared_ptr<Picture> LoadPicture(const std::string& path);

/// Writes a PNG file of `pixels` (alpha ignored). Error 75 when it cannot be written.
void SavePicture(const std::string& path, const PixelView& pixels);

} // namespace lumora
