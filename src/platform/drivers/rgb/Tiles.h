// The tile stage: a tile's bins, unit after unit, into its color and depth.
#pragma once

#include "platform/drivers/rgb/Frame.h"

#include <cstddef>
#include <span>

namespace lumora::rgb
{

/// The depth buffer, tile by tile so that each is one stretch of memory.
class DepthStore
{
public:
    /// All tiles of a target; everything is at the farthest depth.
    void Reset(std::uint32_t tileCount);

    float* Depths(std::uint32_t tile) { return depths_.Data() + std::size_t{tile} * TilePixels; }
    float* BlockFarthest(std::uint32_t tile) { return blocks_.Data() + std::size_t{tile} * BlocksPerTile; }

    /// Whether all of a tile is at the farthest depth, whatever its memory holds.
    std::uint8_t& IsClear(std::uint32_t tile) { return isClear_[tile]; }

    std::size_t HeldBytes() const
    {
        return depths_.CapacityInBytes() + blocks_.CapacityInBytes() + isClear_.CapacityInBytes();
    }

private:
    Buffer<float> depths_;
    Buffer<float> blocks_;
    Buffer<std::uint8_t> isClear_;
};

/// Draws what all of `bins` have for one tile. `colors` is room for the tile's pixels.
void DrawTile(const Batch& batch, std::span<Bins> bins, std::uint32_t tile, const PixelView& target, DepthStore& depth,
              std::uint32_t* colors);

} // namespace lumora::rgb
