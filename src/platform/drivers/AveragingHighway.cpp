// Averaging once for each instruction set that Highway compiles for; the processor decides at run time.
//
// Blue and red lie in the two halves of a 32-bit lane, green in the half of another: a half has room for the sum of all
// samples (16 * 255), so that columns are added lane by lane and neighbours by taking even and odd lanes apart.
#include "parallel/HighwayLevels.h"
#include "platform/drivers/AveragingKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/drivers/AveragingHighway.cpp"
// The order matters.
// clang-format off
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

// Highway's own emulation is left out: the plain kernels do its work.
#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
HWY_BEFORE_NAMESPACE();
namespace lumora::averaging
{
namespace HWY_NAMESPACE
{

namespace hn = hwy::HWY_NAMESPACE;

using Tag32 = hn::ScalableTag<std::uint32_t>;
using Tag16 = hn::Repartition<std::uint16_t, Tag32>;
using Pixels = hn::Vec<Tag32>;
using Halves = hn::Vec<Tag16>;

/// Sums of the samples of some pixels.
struct Sums
{
    Halves blueRed;
    Halves green;
};

/// A vector of pixels, each the sum of `factor` rows.
template<int Factor>
HWY_INLINE Sums SumColumns(const std::uint32_t* source, std::ptrdiff_t pitch)
{
    constexpr Tag32 Lanes;
    constexpr Tag16 Parts;
    const Halves lowBytes = hn::Set(Parts, 255);
    const auto rowOf = [&](int y) HWY_ATTR { return hn::BitCast(Parts, hn::LoadU(Lanes, source + y * pitch)); };
    const Halves first = rowOf(0);
    Sums sums{hn::And(first, lowBytes), hn::ShiftRight<8>(first)};
    for (int y = 1; y < Factor; ++y)
    {
        const Halves row = rowOf(y);
        sums.blueRed = hn::Add(sums.blueRed, hn::And(row, lowBytes));
        sums.green = hn::Add(sums.green, hn::ShiftRight<8>(row));
    }
    return sums;
}

/// Adds neighbours: lanes 0 and 1, 2 and 3 and so on of `low`, then of `high`.
HWY_INLINE Halves AddPairs(Halves low, Halves high)
{
    constexpr Tag32 Lanes;
    const Pixels first = hn::BitCast(Lanes, low);
    const Pixels second = hn::BitCast(Lanes, high);
    return hn::Add(hn::BitCast(Tag16{}, hn::ConcatEven(Lanes, second, first)),
                   hn::BitCast(Tag16{}, hn::ConcatOdd(Lanes, second, first)));
}

HWY_INLINE Sums AddPairs(const Sums& low, const Sums& high)
{
    return {AddPairs(low.blueRed, high.blueRed), AddPairs(low.green, high.green)};
}

/// To nearest, halves to even: what lies half way is lifted over when the quotient is odd.
template<int Shift>
HWY_INLINE Halves NearestQuotient(Halves sum)
{
    constexpr Tag16 Parts;
    const Halves odd = hn::And(hn::ShiftRight<Shift>(sum), hn::Set(Parts, 1));
    return hn::ShiftRight<Shift>(hn::Add(hn::Add(sum, odd), hn::Set(Parts, (1 << (Shift - 1)) - 1)));
}

template<int Shift>
HWY_INLINE Pixels AveragesOf(const Sums& sums)
{
    constexpr Tag32 Lanes;
    const Pixels blueRed = hn::BitCast(Lanes, NearestQuotient<Shift>(sums.blueRed));
    const Pixels green = hn::BitCast(Lanes, NearestQuotient<Shift>(sums.green));
    // Above green lies the fourth byte, which nobody wants.
    return hn::Or(blueRed, hn::And(hn::ShiftLeft<8>(green), hn::Set(Lanes, 0xFF00)));
}

void AverageTwo(const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target)
{
    constexpr Tag32 Lanes;
    const int step = static_cast<int>(hn::Lanes(Lanes));
    int i = 0;
    for (; i + step <= count; i += step, source += 2 * step)
        hn::StoreU(AveragesOf<2>(AddPairs(SumColumns<2>(source, pitch), SumColumns<2>(source + step, pitch))), Lanes,
                   target + i);
    PlainKernels().two(source, pitch, count - i, target + i);
}

void AverageFour(const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target)
{
    constexpr Tag32 Lanes;
    const int step = static_cast<int>(hn::Lanes(Lanes));
    int i = 0;
    for (; i + step <= count; i += step, source += 4 * step)
    {
        const Sums left = AddPairs(SumColumns<4>(source, pitch), SumColumns<4>(source + step, pitch));
        const Sums right = AddPairs(SumColumns<4>(source + 2 * step, pitch), SumColumns<4>(source + 3 * step, pitch));
        hn::StoreU(AveragesOf<4>(AddPairs(left, right)), Lanes, target + i);
    }
    PlainKernels().four(source, pitch, count - i, target + i);
}

} // namespace HWY_NAMESPACE
} // namespace lumora::averaging
HWY_AFTER_NAMESPACE();
#endif

#if HWY_ONCE
namespace lumora::averaging
{

namespace
{

struct Set
{
    SimdLevel level;
    std::int64_t target;
    Kernels kernels;
};

// Best first.
constexpr Set Sets[] = {
#if HWY_TARGETS & HWY_AVX3
    {SimdLevel::Avx512, HWY_AVX3, {N_AVX3::AverageTwo, N_AVX3::AverageFour}},
#endif
#if HWY_TARGETS & HWY_AVX2
    {SimdLevel::Avx2, HWY_AVX2, {N_AVX2::AverageTwo, N_AVX2::AverageFour}},
#endif
#if HWY_TARGETS & HWY_SSE4
    {SimdLevel::Sse4, HWY_SSE4, {N_SSE4::AverageTwo, N_SSE4::AverageFour}},
#endif
#if HWY_TARGETS & HWY_NEON
    {SimdLevel::Neon, HWY_NEON, {N_NEON::AverageTwo, N_NEON::AverageFour}},
#endif
};

} // namespace

Kernels HighwayKernels(SimdLevel level)
{
    for (const Set& set : Sets)
        if ((hwy::SupportedTargets() & set.target) != 0 && (level == SimdLevel::Best || level == set.level))
            return set.kernels;
    return {};
}

} // namespace lumora::averaging
#endif
