// The set-up stage: from a work unit's primitives to bins.
#pragma once

#include "platform/drivers/rgb/Frame.h"

namespace lumora::rgb
{

/// Most primitives in a work unit of what is drawn at once: clipping makes at most ten triangles of one, and a record's
/// number has 16 bits.
inline constexpr std::uint32_t MostPrimitives = 4096;

/// Most records in bins, and vertices made by clipping.
inline constexpr std::size_t MostRecords = std::size_t{1} << 16;
inline constexpr std::size_t MostLocalVertices = std::size_t{3} << 15;

/// Fills `bins` with the primitives of `unit` from a place on, until they are all there or the bins are full: their
/// primitives enter `mostPairs` tiles, or there are as many as may be. One primitive more may overshoot. Of sorted
/// units only those within `keys` count. Answers where it stopped: a place behind the last segment when all are there.
UnitPlace SetUpUnit(const Batch& batch, const WorkUnit& unit, UnitPlace from, const KeyRange& keys,
                    std::size_t mostPairs, Bins& bins);

} // namespace lumora::rgb
