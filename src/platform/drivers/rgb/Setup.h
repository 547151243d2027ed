// The set-up stage: from a work unit's primitives to bins.
#pragma once

#include "platform/drivers/rgb/Frame.h"

namespace lumora::rgb
{

/// Most primitives in a work unit: clipping makes at most seven triangles of one, and a record's number has 16 bits.
inline constexpr std::uint32_t MostPrimitives = 4096;
static_assert(MostPrimitives <= 1U << SortedPlace::PlaceBits);

/// Fills `bins` with the primitives of `unit` from a place on, until they are all there or enter `mostPairs` tiles; one
/// primitive more may overshoot. Answers where it stopped: a place behind the last segment when all are there.
UnitPlace SetUpUnit(const Batch& batch, const WorkUnit& unit, UnitPlace from, std::size_t mostPairs, Bins& bins);

/// Fills `collected` with those translucent triangles of `unit` that may be seen.
void CollectSorted(const Batch& batch, const WorkUnit& unit, CollectedTriangles& collected);

} // namespace lumora::rgb
