// Bins by tile: a counting sort keeps the order of submission within each tile.
#include "platform/drivers/rgb/Frame.h"

namespace lumora::rgb
{

std::size_t Bins::HeldBytes() const
{
    return local.HeldBytes() + records.CapacityInBytes() + keys.CapacityInBytes() + pairs.CapacityInBytes() +
           offsets.CapacityInBytes() + references.CapacityInBytes();
}

void Bins::Clear()
{
    local.positions.Clear();
    local.coordinates.Clear();
    local.colors.Clear();
    local.highlights.Clear();
    records.Clear();
    keys.Clear();
    pairs.Clear();
    references.Clear();
    coveredPixels = 0;
    hasOneState = true;
}

void Bins::Close(std::uint32_t tileCount)
{
    offsets.Resize(std::size_t{tileCount} + 1);
    std::fill_n(offsets.Data(), offsets.Size(), 0U);
    for (const std::uint32_t pair : pairs.Items())
        ++offsets[pair >> 16];
    mostInTile = 0;
    std::uint32_t end = 0;
    for (std::uint32_t tile = 0; tile <= tileCount; ++tile)
    {
        mostInTile = std::max(mostInTile, offsets[tile]);
        end = offsets[tile] += end;
    }
    // Backwards, each tile's offset sinks from its end to its start.
    references.Resize(pairs.Size());
    for (std::size_t i = pairs.Size(); i-- > 0;)
        references[--offsets[pairs[i] >> 16]] = static_cast<std::uint16_t>(pairs[i]);
}

} // namespace lumora::rgb
