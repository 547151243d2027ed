// Lanes of up to eight numbers through Highway. Included inside a namespace, once for each instruction set.
//
// Every operation is exact or rounds once, so that all instruction sets, and PlainLanes-inl.h, compute the same bytes.

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::CappedTag<float, 8>;
using IntTag = hn::Rebind<std::int32_t, FloatTag>;
inline constexpr FloatTag AsFloat{};
inline constexpr IntTag AsInt{};
inline constexpr int LaneCount = static_cast<int>(hn::MaxLanes(FloatTag{}));

using Floats = hn::Vec<FloatTag>;
using Ints = hn::Vec<IntTag>;
using Mask = hn::Mask<FloatTag>;

HWY_INLINE Floats Splat(float value)
{
    return hn::Set(AsFloat, value);
}
HWY_INLINE Ints Splat(std::int32_t value)
{
    return hn::Set(AsInt, value);
}
HWY_INLINE Ints LaneNumbers()
{
    return hn::Iota(AsInt, 0);
}

HWY_INLINE Floats Load(const float* from)
{
    return hn::LoadU(AsFloat, from);
}
HWY_INLINE Ints Load(const std::int32_t* from)
{
    return hn::LoadU(AsInt, from);
}
HWY_INLINE Ints Load(const std::uint32_t* from)
{
    return hn::LoadU(AsInt, reinterpret_cast<const std::int32_t*>(from));
}
HWY_INLINE void Store(Floats v, float* to)
{
    hn::StoreU(v, AsFloat, to);
}
HWY_INLINE void Store(Ints v, std::int32_t* to)
{
    hn::StoreU(v, AsInt, to);
}
HWY_INLINE void Store(Ints v, std::uint32_t* to)
{
    hn::StoreU(v, AsInt, reinterpret_cast<std::int32_t*>(to));
}

template<int Bits>
HWY_INLINE Ints ShiftedLeft(Ints a)
{
    return hn::ShiftLeft<Bits>(a);
}
/// Keeps the sign.
template<int Bits>
HWY_INLINE Ints ShiftedRight(Ints a)
{
    return hn::ShiftRight<Bits>(a);
}

// Nobody may rely on the answer for NaN.
HWY_INLINE Floats Least(Floats a, Floats b)
{
    return hn::Min(a, b);
}
HWY_INLINE Floats Greatest(Floats a, Floats b)
{
    return hn::Max(a, b);
}
HWY_INLINE Ints Least(Ints a, Ints b)
{
    return hn::Min(a, b);
}
HWY_INLINE Ints Greatest(Ints a, Ints b)
{
    return hn::Max(a, b);
}
HWY_INLINE Floats SquareRoot(Floats a)
{
    return hn::Sqrt(a);
}
/// For values that fit 32 bits.
HWY_INLINE Floats RoundedDown(Floats a)
{
    return hn::Floor(a);
}
/// Towards 0, for values that fit 32 bits.
HWY_INLINE Ints Truncated(Floats a)
{
    // Highway's own conversion repairs numbers that do not fit, which costs more than the conversion.
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    return Ints{_mm256_cvttps_epi32(a.raw)};
#elif HWY_TARGET == HWY_SSE4
    return Ints{_mm_cvttps_epi32(a.raw)};
#else
    return hn::ConvertTo(AsInt, a);
#endif
}
HWY_INLINE Floats ToFloats(Ints a)
{
    return hn::ConvertTo(AsFloat, a);
}
HWY_INLINE Ints BitsOf(Floats a)
{
    return hn::BitCast(AsInt, a);
}
HWY_INLINE Floats FloatsOfBits(Ints a)
{
    return hn::BitCast(AsFloat, a);
}

// Masks are those of float lanes; Highway's own operators compare floats.
HWY_INLINE Mask IsLess(Floats a, Floats b)
{
    return hn::Lt(a, b);
}
HWY_INLINE Mask IsLess(Ints a, Ints b)
{
    return hn::RebindMask(AsFloat, hn::Lt(a, b));
}
HWY_INLINE Mask IsLessOrEqual(Floats a, Floats b)
{
    return hn::Le(a, b);
}
HWY_INLINE Mask IsEqual(Ints a, Ints b)
{
    return hn::RebindMask(AsFloat, hn::Eq(a, b));
}
HWY_INLINE Mask Both(Mask a, Mask b)
{
    return hn::And(a, b);
}
HWY_INLINE Mask Either(Mask a, Mask b)
{
    return hn::Or(a, b);
}
/// a and not b.
HWY_INLINE Mask Except(Mask a, Mask b)
{
    return hn::AndNot(b, a);
}
HWY_INLINE bool IsAny(Mask m)
{
    return !hn::AllFalse(AsFloat, m);
}
HWY_INLINE bool IsAll(Mask m)
{
    return hn::AllTrue(AsFloat, m);
}
HWY_INLINE Mask AllLanes()
{
    return hn::FirstN(AsFloat, static_cast<std::size_t>(LaneCount));
}
HWY_INLINE Floats Choose(Mask m, Floats yes, Floats no)
{
    return hn::IfThenElse(m, yes, no);
}
HWY_INLINE Ints Choose(Mask m, Ints yes, Ints no)
{
    return hn::IfThenElse(hn::RebindMask(AsInt, m), yes, no);
}

/// The two whole numbers at the start of each record of `Stride` whole numbers. Single loads: on processors whose
/// gather is a loop in disguise they are several times faster, elsewhere as fast. They meet in registers, since what
/// is stored piece by piece cannot be loaded as a whole until it has reached the cache.
template<int Stride>
HWY_INLINE void LoadPairs(const std::int32_t* base, Ints index, Ints& first, Ints& second)
{
    alignas(32) std::int32_t places[LaneCount];
    hn::Store(index, AsInt, places);
    const auto from = [&](int lane) HWY_ATTR
    { return base + std::size_t{static_cast<std::uint32_t>(places[lane])} * Stride; };
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_SSE4
    const auto two = [&](int lane) HWY_ATTR
    {
        const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from(lane)));
        return _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(from(lane + 1)));
    };
#if HWY_TARGET == HWY_SSE4
    const __m128 low = two(0);
    const __m128 high = two(2);
    first = Ints{_mm_castps_si128(_mm_shuffle_ps(low, high, 0x88))};
    second = Ints{_mm_castps_si128(_mm_shuffle_ps(low, high, 0xDD))};
#else
    const __m256 low = _mm256_set_m128(two(4), two(0));
    const __m256 high = _mm256_set_m128(two(6), two(2));
    first = Ints{_mm256_castps_si256(_mm256_shuffle_ps(low, high, 0x88))};
    second = Ints{_mm256_castps_si256(_mm256_shuffle_ps(low, high, 0xDD))};
#endif
#else
    std::int32_t pairs[2 * LaneCount];
    for (int lane = 0; lane < LaneCount; ++lane)
        std::memcpy(pairs + 2 * lane, from(lane), 2 * sizeof(std::int32_t));
    hn::LoadInterleaved2(AsInt, pairs, first, second);
#endif
}
HWY_INLINE Floats Gather(const float* base, Ints index)
{
    return hn::GatherIndex(AsFloat, base, index);
}
HWY_INLINE Ints Gather(const std::int32_t* base, Ints index)
{
    return hn::GatherIndex(AsInt, base, index);
}
HWY_INLINE Ints Gather(const std::uint32_t* base, Ints index)
{
    return hn::GatherIndex(AsInt, reinterpret_cast<const std::int32_t*>(base), index);
}
/// The same by indices in memory. Single loads, as in LoadPairs.
HWY_INLINE Floats Gather(const float* base, const std::int32_t* index)
{
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    const auto four = [&](const std::int32_t* of) HWY_ATTR
    { return _mm_setr_ps(base[of[0]], base[of[1]], base[of[2]], base[of[3]]); };
    return Floats{_mm256_set_m128(four(index + 4), four(index))};
#else
    return Gather(base, Load(index));
#endif
}
/// Three times LaneCount numbers, every third one to each.
HWY_INLINE void LoadTriples(const std::uint32_t* from, Ints& a, Ints& b, Ints& c)
{
    hn::LoadInterleaved3(AsInt, reinterpret_cast<const std::int32_t*>(from), a, b, c);
}
HWY_INLINE void StoreQuads(Floats a, Floats b, Floats c, Floats d, float* to)
{
    hn::StoreInterleaved4(a, b, c, d, AsFloat, to);
}
/// Four floats from each of LaneCount places: from(lane).
template<typename From>
HWY_INLINE void LoadQuads(From from, Floats& a, Floats& b, Floats& c, Floats& d)
{
    constexpr hn::CappedTag<float, 4> quad;
    const auto quads = [&](int i) HWY_ATTR
    {
        if constexpr (LaneCount == 8)
            return hn::Combine(AsFloat, hn::LoadU(quad, from(i + 4)), hn::LoadU(quad, from(i)));
        else
            return hn::LoadU(quad, from(i));
    };
    const Floats q0 = quads(0);
    const Floats q1 = quads(1);
    const Floats q2 = quads(2);
    const Floats q3 = quads(3);
    // Within each half of a vector.
    constexpr hn::Repartition<std::uint64_t, FloatTag> pair;
    const auto ab01 = hn::BitCast(pair, hn::InterleaveLower(AsFloat, q0, q1));
    const auto ab23 = hn::BitCast(pair, hn::InterleaveLower(AsFloat, q2, q3));
    const auto cd01 = hn::BitCast(pair, hn::InterleaveUpper(AsFloat, q0, q1));
    const auto cd23 = hn::BitCast(pair, hn::InterleaveUpper(AsFloat, q2, q3));
    a = hn::BitCast(AsFloat, hn::InterleaveLower(pair, ab01, ab23));
    b = hn::BitCast(AsFloat, hn::InterleaveUpper(pair, ab01, ab23));
    c = hn::BitCast(AsFloat, hn::InterleaveLower(pair, cd01, cd23));
    d = hn::BitCast(AsFloat, hn::InterleaveUpper(pair, cd01, cd23));
}
/// Byte `Which` of each whole number, from the lowest.
template<int Which>
HWY_INLINE Floats ByteAt(Ints a)
{
    constexpr std::uint8_t Zero = 0x80;
    constexpr hn::Repartition<std::uint8_t, FloatTag> bytes;
    alignas(16) static constexpr std::uint8_t Order[16] = {Which,     Zero, Zero, Zero, Which + 4,  Zero, Zero, Zero,
                                                           Which + 8, Zero, Zero, Zero, Which + 12, Zero, Zero, Zero};
    return hn::ConvertTo(
        AsFloat, hn::BitCast(AsInt, hn::TableLookupBytesOr0(hn::BitCast(bytes, a), hn::LoadDup128(bytes, Order))));
}
/// Numbers below LaneCount, ready to be looked up by.
using LaneOrder = decltype(hn::IndicesFromVec(AsFloat, Ints{}));

HWY_INLINE LaneOrder LaneOrderOf(Ints numbers)
{
    return hn::IndicesFromVec(AsFloat, numbers);
}
/// One of LaneCount floats for each lane.
HWY_INLINE Floats ByLane(const float* from, LaneOrder order)
{
    return hn::TableLookupLanes(Load(from), order);
}
/// A bit for each lane, from the lowest.
HWY_INLINE std::uint32_t LaneBits(Mask m)
{
    std::uint8_t bits[8]{};
    hn::StoreMaskBits(AsFloat, m, bits);
    return bits[0];
}
/// Which lanes of a mask are chosen. Highway's own compression copies its table to the stack at each call, with this
/// compiler.
struct ChosenLanes
{
    const std::int32_t* order;
    std::uint32_t count;
};

HWY_INLINE ChosenLanes FindChosen(Mask m)
{
    const std::uint32_t bits = LaneBits(m);
    return {LaneOrders[static_cast<std::uint8_t>(bits)], static_cast<std::uint32_t>(std::popcount(bits))};
}
/// Stores the chosen lanes one after the other; writes LaneCount numbers.
HWY_INLINE void StoreChosen(Ints v, const ChosenLanes& chosen, std::int32_t* to)
{
    Store(hn::TableLookupLanes(v, hn::SetTableIndices(AsInt, chosen.order)), to);
}
