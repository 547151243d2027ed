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
    texels.reserve((image.pixels.size() + static_cast<std::size_t>(image.height)) * 8 / 3 + 512);
    width[0] = image.width;
    height[0] = image.height;
    AddLevel(
        [&](int x, int y)
        {
            return image.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                                static_cast<std::size_t>(x)];
        });
    while (width[levelCount - 1] > 1 || height[levelCount - 1] > 1)
        Halve();
}

/// `at(x, y)` is a texel. The level's sides are known.
template<typename At>
void MipChain::AddLevel(At at)
{
    const int columns = width[levelCount];
    const int rows = height[levelCount];
    offset[levelCount] = static_cast<std::int32_t>(texels.size() / 2);
    for (int y = 0; y < rows; ++y)
    {
        const int below = y + 1 < rows ? y + 1 : 0;
        for (int x = 0; x <= columns; ++x)
        {
            texels.push_back(at(x < columns ? x : 0, y));
            texels.push_back(at(x < columns ? x : 0, below));
        }
    }
    ++levelCount;
}

/// The next level, from the last one.
void MipChain::Halve()
{
    const int fineWidth = width[levelCount - 1];
    const int fineHeight = height[levelCount - 1];
    const auto fine = static_cast<std::size_t>(offset[levelCount - 1]);
    const auto texel = [&](int x, int y)
    {
        return texels[2 * (fine +
                           static_cast<std::size_t>(std::min(y, fineHeight - 1)) *
                               (static_cast<std::size_t>(fineWidth) + 1) +
                           static_cast<std::size_t>(std::min(x, fineWidth - 1)))];
    };
    width[levelCount] = std::max(1, fineWidth / 2);
    height[levelCount] = std::max(1, fineHeight / 2);
    AddLevel(
        [&](int x, int y)
        {
            return Average(texel(2 * x, 2 * y), texel(2 * x + 1, 2 * y), texel(2 * x, 2 * y + 1),
                           texel(2 * x + 1, 2 * y + 1));
        });
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
