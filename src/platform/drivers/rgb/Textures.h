// Textures with their mip levels, kept between frames.
#pragma once

#include "platform/drivers/DrawMesh.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace lumora::rgb
{

/// All levels of an image in one array, so that one gather reaches them all. Each row ends with its first texel once
/// more: the right neighbour of a texel is the next one.
struct MipChain
{
    static constexpr int MostLevels = 32;

    explicit MipChain(const TextureImage& image);

    std::vector<std::uint32_t> texels;
    int levelCount = 0;
    // One entry for each level, as vectors gather them.
    std::int32_t offset[MostLevels]{};
    std::int32_t width[MostLevels]{};
    std::int32_t height[MostLevels]{};

private:
    void AddLevel();
};

/// False for nothing and for an image whose pixels do not fill its sides.
bool IsUsable(const TextureImage* image);

/// Mip chains by image identity. Those not used lately go once all together are larger than a limit.
class TextureCache
{
public:
    explicit TextureCache(std::size_t byteLimit) : byteLimit_(byteLimit) {}

    /// Lives until Trim.
    const MipChain* Find(const TextureImage& image);

    /// Ends a frame: drops the longest unused ones above the limit.
    void Trim();

    std::size_t Count() const { return entries_.size(); }
    std::size_t HeldBytes() const { return bytes_; }
    std::size_t TexelCount() const { return texels_; } ///< of the images themselves

private:
    struct Entry
    {
        std::unique_ptr<const MipChain> chain;
        std::uint64_t lastUse = 0;
    };

    std::unordered_map<std::uint64_t, Entry> entries_;
    std::size_t byteLimit_;
    std::size_t bytes_ = 0;
    std::size_t texels_ = 0;
    std::uint64_t clock_ = 0;
};

} // namespace lumora::rgb
