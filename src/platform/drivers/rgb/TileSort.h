// Puts what was sorted of a tile into the order of drawing: each tile orders its own primitives, in a near cache, while
// other threads order and draw other tiles.
#pragma once

#include "platform/drivers/rgb/Frame.h"

#include <cstddef>
#include <span>

namespace lumora::rgb
{

/// A primitive in a tile's order.
struct SortedRecord
{
    static constexpr int RecordBits = 16; ///< as many as records in bins; of these there are a few for each thread

    std::uint32_t key;
    std::uint32_t number; ///< of its bins, and of its record there: equal keys go by that

    static std::uint32_t NumberOf(std::size_t bins, std::uint32_t record)
    {
        return static_cast<std::uint32_t>(bins) << RecordBits | record;
    }
    std::uint32_t Bins() const { return number >> RecordBits; }
    std::uint32_t Record() const { return number & ((1U << RecordBits) - 1); }
};

/// One thread's room for a tile's order.
class TileSort
{
public:
    /// What a primitive in the fullest tile takes.
    static constexpr std::size_t BytesPerPrimitive = 2 * sizeof(SortedRecord);

    /// Room for tiles of up to `count` primitives.
    void Reserve(std::size_t count);

    /// What all of `bins` have for a tile, smallest key first, equal ones in order of submission. Valid until the next
    /// call. There must be room.
    std::span<const SortedRecord> Sort(std::span<const Bins> bins, std::uint32_t tile);

    std::size_t HeldBytes() const { return listed_.CapacityInBytes() + sorted_.CapacityInBytes(); }

private:
    Buffer<SortedRecord> listed_; ///< in order of submission
    Buffer<SortedRecord> sorted_;
};

} // namespace lumora::rgb
