#include "platform/scenegraph/frames/Texture.h"

#include "platform/scenegraph/frames/Checks.h"

#include <algorithm>
#include <atomic>

namespace lumora
{

Texture::Texture(int width, int height, std::span<const std::uint32_t> pixels)
{
    if (width < 1 || height < 1 || width > MaximumSide || height > MaximumSide)
        RaiseBadValue("Texture", "The sides of a texture must be in 1 .. " + std::to_string(MaximumSide));
    if (pixels.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
        RaiseBadValue("Texture", "The number of pixels is not width times height");

    static std::atomic<std::uint64_t> lastIdentity{0};
    auto image = std::make_shared<TextureImage>();
    image->identity = ++lastIdentity;
    image->width = width;
    image->height = height;
    image->hasTranslucency = std::ranges::any_of(pixels, [](std::uint32_t pixel) { return pixel >> 24 != 255; });
    image->pixels.assign(pixels.begin(), pixels.end());
    image_ = std::move(image);
}

} // namespace lumora
