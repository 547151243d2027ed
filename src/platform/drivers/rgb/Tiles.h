// The tile stage: a tile's bins, unit after unit, into its color and depth.
#pragma once

#include "platform/drivers/AveragingKernels.h"
#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/TileSort.h"

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

/// Room for one tile for each thread, in its near cache.
struct TileScratch
{
    alignas(64) std::uint32_t colors[TilePixels];
    float depths[TilePixels];
    float blockFarthest[BlocksPerTile];
    std::uint8_t isDepthClear;
};

/// Where a tile goes once it is drawn.
struct TileOutput
{
    PixelView target;
    bool takesColors = true; ///< the target; otherwise the first thing in the bins clears all of it
    /// Null when nobody needs the depths. Then the first thing in the bins clears all of them.
    DepthStore* depth = nullptr;
    /// Without pixels when no averages are wanted.
    PixelView averages;
    int factor = 1; ///< a divisor of TileSize
    averaging::Kernels averagingKernels{};
};

/// Bins that are drawn together.
struct TileInput
{
    std::span<const Bins> inOrder; ///< one after the other
    std::span<const Bins> sorted;  ///< after that, all of them by their keys
};

/// Draws what all bins have for one tile. `sort` has room for what is sorted.
void DrawTile(const Batch& batch, const TileInput& input, std::uint32_t tile, const TileOutput& output,
              TileScratch& scratch, TileSort& sort);

} // namespace lumora::rgb
