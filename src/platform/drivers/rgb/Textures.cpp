#include "platform/drivers/rgb/Textures.h"

#include <algorithm>

namespace lumora::rgb
{

namespace
{

/// The mean of four colors, each channel rounded to a byte.
std::uint32_t Average(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8)
    {
        const auto channel = [shift](std::uint32_t color) { return (color >> shift) & 0xFFU; };
        result |= (channel(a) + channel(b) + channel(c) + channel(d) + 2) / 4 << shift;
    }
    return result;
}

std::size_t BytesOf(const MipChain& chain)
{
    return sizeof(MipChain) + chain.texels.capacity() * sizeof(std::uint32_t);
}

std::size_t TexelsOf(const MipChain& chain)
{
    return static_cast<std::size_t>(chain.width[0]) * static_cast<std::size_t>(chain.height[0]);
}

} // namespace

bool IsUsable(const TextureImage* image)
{
    constexpr int LongestSide = 1 << 15; // keeps every level's offset within 31 bits
    return image != nullptr && image->width > 0 && image->height > 0 && image->width <= LongestSide &&
           image->height <= LongestSide &&
           image->pixels.size() == static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height);
}

MipChain::MipChain(const TextureImage& image)
{
    texels.reserve((image.pixels.size() + static_cast<std::size_t>(image.height)) * 4 / 3 + 256);
    width[0] = image.width;
    height[0] = image.height;
    for (int y = 0; y < image.height; ++y)
    {
        const auto row = image.pixels.begin() + std::ptrdiff_t{y} * image.width;
        texels.insert(texels.end(), row, row + image.width);
        texels.push_back(*row);
    }
    for (levelCount = 1; width[levelCount - 1] > 1 || height[levelCount - 1] > 1; ++levelCount)
        AddLevel();
}

/// Halves the last level.
void MipChain::AddLevel()
{
    const int fineWidth = width[levelCount - 1];
    const int fineHeight = height[levelCount - 1];
    const auto fine = static_cast<std::size_t>(offset[levelCount - 1]);
    const auto texel = [&](int x, int y)
    {
        return texels[fine +
                      static_cast<std::size_t>(std::min(y, fineHeight - 1)) *
                          (static_cast<std::size_t>(fineWidth) + 1) +
                      static_cast<std::size_t>(std::min(x, fineWidth - 1))];
    };
    const int coarseWidth = std::max(1, fineWidth / 2);
    const int coarseHeight = std::max(1, fineHeight / 2);
    offset[levelCount] = static_cast<std::int32_t>(texels.size());
    width[levelCount] = coarseWidth;
    height[levelCount] = coarseHeight;
    for (int y = 0; y < coarseHeight; ++y)
    {
        const std::size_t first = texels.size();
        for (int x = 0; x < coarseWidth; ++x)
            texels.push_back(Average(texel(2 * x, 2 * y), texel(2 * x + 1, 2 * y), texel(2 * x, 2 * y + 1),
                                     texel(2 * x + 1, 2 * y + 1)));
        texels.push_back(texels[first]);
    }
}

const MipChain* TextureCache::Find(const TextureImage& image)
{
    Entry& entry = entries_[image.identity];
    entry.lastUse = ++clock_;
    if (entry.chain == nullptr)
    {
        entry.chain = std::make_unique<const MipChain>(image);
        bytes_ += BytesOf(*entry.chain);
        texels_ += TexelsOf(*entry.chain);
    }
    return entry.chain.get();
}

void TextureCache::Trim()
{
    while (bytes_ > byteLimit_ && !entries_.empty())
    {
        const auto oldest = std::ranges::min_element(entries_, {}, [](const auto& e) { return e.second.lastUse; });
        bytes_ -= BytesOf(*oldest->second.chain);
        texels_ -= TexelsOf(*oldest->second.chain);
        entries_.erase(oldest);
    }
}

} // namespace lumora::rgb
