// The kernels once for each instruction set that Highway compiles for; the processor decides at run time.
#include "parallel/HighwayLevels.h"
#include "platform/drivers/rgb/KernelSets.h"
#include "platform/drivers/rgb/LineSteps.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Winding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/drivers/rgb/KernelsHighway.cpp"
// The order matters.
// clang-format off
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#define LANES_INLINE HWY_INLINE
#define LANES_NOINLINE HWY_NOINLINE
#define LANES_LAMBDA HWY_ATTR

// Highway's own emulation is left out: the plain kernels do its work.
#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
#ifndef LUMORA_RGB_LANE_ORDERS
#define LUMORA_RGB_LANE_ORDERS
namespace lumora::rgb
{

/// For each mask of up to eight lanes the numbers of its lanes, then zeros.
struct LaneOrderTable
{
    alignas(32) std::int32_t orders[256][8]{};

    constexpr LaneOrderTable()
    {
        for (int mask = 0; mask < 256; ++mask)
            for (int lane = 0, place = 0; lane < 8; ++lane)
                if ((mask >> lane & 1) != 0)
                    orders[mask][place++] = lane;
    }
    const std::int32_t* operator[](std::uint8_t mask) const { return orders[mask]; }
};

static constexpr LaneOrderTable LaneOrders;

} // namespace lumora::rgb
#endif

HWY_BEFORE_NAMESPACE();
namespace lumora::rgb
{
namespace HWY_NAMESPACE
{
// The order matters.
// clang-format off
#include "platform/drivers/rgb/HighwayLanes-inl.h"
#include "platform/drivers/rgb/KernelParts-inl.h"
// clang-format on
} // namespace HWY_NAMESPACE
} // namespace lumora::rgb
HWY_AFTER_NAMESPACE();
#endif

#undef LANES_INLINE
#undef LANES_NOINLINE
#undef LANES_LAMBDA

#if HWY_ONCE
namespace lumora::rgb
{

namespace
{

struct Set
{
    SimdLevel level;
    std::int64_t target;
    const Kernels& (*kernels)();
};

// Best first.
constexpr Set Sets[] = {
#if HWY_TARGETS & HWY_AVX3
    {SimdLevel::Avx512, HWY_AVX3, N_AVX3::KernelsOfThisSet},
#endif
#if HWY_TARGETS & HWY_AVX2
    {SimdLevel::Avx2, HWY_AVX2, N_AVX2::KernelsOfThisSet},
#endif
#if HWY_TARGETS & HWY_SSE4
    {SimdLevel::Sse4, HWY_SSE4, N_SSE4::KernelsOfThisSet},
#endif
#if HWY_TARGETS & HWY_NEON
    {SimdLevel::Neon, HWY_NEON, N_NEON::KernelsOfThisSet},
#endif
};

} // namespace

const Kernels* HighwayKernels(SimdLevel level)
{
    for (const Set& set : Sets)
        if ((hwy::SupportedTargets() & set.target) != 0 && (level == SimdLevel::Best || level == set.level))
            return &set.kernels();
    return nullptr;
}

} // namespace lumora::rgb
#endif
