// Lanes without vector instructions: the same operations as HighwayLanes-inl.h, one lane after the other. A compiler
// may still turn the loops into vectors. Included inside a namespace, once.

inline constexpr int LaneCount = 8;

template<typename T>
struct Lanes
{
    T lane[LaneCount];
};

using Floats = Lanes<float>;
using Ints = Lanes<std::int32_t>;
struct Mask
{
    std::int32_t lane[LaneCount]; ///< 0 or -1
};

template<typename R, typename F>
inline R EachLane(F f)
{
    R result;
    for (int i = 0; i < LaneCount; ++i)
        result.lane[i] = f(i);
    return result;
}

inline Floats Splat(float value)
{
    return EachLane<Floats>([=](int) { return value; });
}
inline Ints Splat(std::int32_t value)
{
    return EachLane<Ints>([=](int) { return value; });
}
inline Ints LaneNumbers()
{
    return EachLane<Ints>([](int i) { return i; });
}

inline Floats Load(const float* from)
{
    return EachLane<Floats>([=](int i) { return from[i]; });
}
inline Ints Load(const std::int32_t* from)
{
    return EachLane<Ints>([=](int i) { return from[i]; });
}
inline Ints Load(const std::uint32_t* from)
{
    return EachLane<Ints>([=](int i) { return static_cast<std::int32_t>(from[i]); });
}
inline void Store(const Floats& v, float* to)
{
    for (int i = 0; i < LaneCount; ++i)
        to[i] = v.lane[i];
}
inline void Store(const Ints& v, std::int32_t* to)
{
    for (int i = 0; i < LaneCount; ++i)
        to[i] = v.lane[i];
}
inline void Store(const Ints& v, std::uint32_t* to)
{
    for (int i = 0; i < LaneCount; ++i)
        to[i] = static_cast<std::uint32_t>(v.lane[i]);
}

inline Floats operator+(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] + b.lane[i]; });
}
inline Floats operator-(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] - b.lane[i]; });
}
inline Floats operator*(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] * b.lane[i]; });
}
inline Floats operator/(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] / b.lane[i]; });
}

// Whole numbers wrap around.
inline std::int32_t Wrapped(std::uint32_t value)
{
    return static_cast<std::int32_t>(value);
}
inline Ints operator+(const Ints& a, const Ints& b)
{
    return EachLane<Ints>(
        [&](int i) { return Wrapped(static_cast<std::uint32_t>(a.lane[i]) + static_cast<std::uint32_t>(b.lane[i])); });
}
inline Ints operator-(const Ints& a, const Ints& b)
{
    return EachLane<Ints>(
        [&](int i) { return Wrapped(static_cast<std::uint32_t>(a.lane[i]) - static_cast<std::uint32_t>(b.lane[i])); });
}
inline Ints operator*(const Ints& a, const Ints& b)
{
    return EachLane<Ints>(
        [&](int i) { return Wrapped(static_cast<std::uint32_t>(a.lane[i]) * static_cast<std::uint32_t>(b.lane[i])); });
}
inline Ints operator&(const Ints& a, const Ints& b)
{
    return EachLane<Ints>([&](int i) { return a.lane[i] & b.lane[i]; });
}
inline Ints operator|(const Ints& a, const Ints& b)
{
    return EachLane<Ints>([&](int i) { return a.lane[i] | b.lane[i]; });
}
template<int Bits>
inline Ints ShiftedLeft(const Ints& a)
{
    return EachLane<Ints>([&](int i) { return Wrapped(static_cast<std::uint32_t>(a.lane[i]) << Bits); });
}
/// Keeps the sign.
template<int Bits>
inline Ints ShiftedRight(const Ints& a)
{
    return EachLane<Ints>([&](int i) { return a.lane[i] >> Bits; });
}

// What vector instructions answer for NaN: the second.
inline Floats Least(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] < b.lane[i] ? a.lane[i] : b.lane[i]; });
}
inline Floats Greatest(const Floats& a, const Floats& b)
{
    return EachLane<Floats>([&](int i) { return a.lane[i] > b.lane[i] ? a.lane[i] : b.lane[i]; });
}
inline Ints Least(const Ints& a, const Ints& b)
{
    return EachLane<Ints>([&](int i) { return a.lane[i] < b.lane[i] ? a.lane[i] : b.lane[i]; });
}
inline Ints Greatest(const Ints& a, const Ints& b)
{
    return EachLane<Ints>([&](int i) { return a.lane[i] > b.lane[i] ? a.lane[i] : b.lane[i]; });
}
inline Floats SquareRoot(const Floats& a)
{
    return EachLane<Floats>([&](int i) { return std::sqrt(a.lane[i]); });
}
/// For values that fit 32 bits.
inline Floats RoundedDown(const Floats& a)
{
    return EachLane<Floats>([&](int i) { return std::floor(a.lane[i]); });
}
/// Towards 0, for values that fit 32 bits; lanes that nobody will use may hold others.
inline Ints Truncated(const Floats& a)
{
    constexpr float Limit = 2147483648.0F;
    return EachLane<Ints>(
        [&](int i)
        {
            const bool fits = a.lane[i] >= -Limit && a.lane[i] < Limit;
            return fits ? static_cast<std::int32_t>(a.lane[i]) : std::numeric_limits<std::int32_t>::min();
        });
}
inline Floats ToFloats(const Ints& a)
{
    return EachLane<Floats>([&](int i) { return static_cast<float>(a.lane[i]); });
}
inline Ints BitsOf(const Floats& a)
{
    return EachLane<Ints>([&](int i) { return std::bit_cast<std::int32_t>(a.lane[i]); });
}
inline Floats FloatsOfBits(const Ints& a)
{
    return EachLane<Floats>([&](int i) { return std::bit_cast<float>(a.lane[i]); });
}

inline Mask IsLess(const Floats& a, const Floats& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] < b.lane[i] ? -1 : 0; });
}
inline Mask IsLessOrEqual(const Floats& a, const Floats& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] <= b.lane[i] ? -1 : 0; });
}
inline Mask IsLess(const Ints& a, const Ints& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] < b.lane[i] ? -1 : 0; });
}
inline Mask IsEqual(const Ints& a, const Ints& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] == b.lane[i] ? -1 : 0; });
}
inline Mask Both(const Mask& a, const Mask& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] & b.lane[i]; });
}
inline Mask Either(const Mask& a, const Mask& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] | b.lane[i]; });
}
/// a and not b.
inline Mask Except(const Mask& a, const Mask& b)
{
    return EachLane<Mask>([&](int i) { return a.lane[i] & ~b.lane[i]; });
}
inline bool IsAny(const Mask& m)
{
    std::int32_t any = 0;
    for (int i = 0; i < LaneCount; ++i)
        any |= m.lane[i];
    return any != 0;
}
inline bool IsAll(const Mask& m)
{
    std::int32_t all = -1;
    for (int i = 0; i < LaneCount; ++i)
        all &= m.lane[i];
    return all != 0;
}
inline Mask AllLanes()
{
    return EachLane<Mask>([](int) { return -1; });
}
inline Floats Choose(const Mask& m, const Floats& yes, const Floats& no)
{
    return EachLane<Floats>([&](int i) { return m.lane[i] != 0 ? yes.lane[i] : no.lane[i]; });
}
inline Ints Choose(const Mask& m, const Ints& yes, const Ints& no)
{
    return EachLane<Ints>([&](int i) { return m.lane[i] != 0 ? yes.lane[i] : no.lane[i]; });
}

/// The two whole numbers at the start of each record of `Stride` whole numbers.
template<int Stride>
inline void LoadPairs(const std::int32_t* base, const Ints& index, Ints& first, Ints& second)
{
    for (int i = 0; i < LaneCount; ++i)
    {
        const std::int32_t* from = base + std::size_t{static_cast<std::uint32_t>(index.lane[i])} * Stride;
        first.lane[i] = from[0];
        second.lane[i] = from[1];
    }
}
inline Floats Gather(const float* base, const Ints& index)
{
    return EachLane<Floats>([&](int i) { return base[index.lane[i]]; });
}
inline Floats Gather(const float* base, const std::int32_t* index)
{
    return Gather(base, Load(index));
}
inline Ints Gather(const std::int32_t* base, const Ints& index)
{
    return EachLane<Ints>([&](int i) { return base[index.lane[i]]; });
}
inline Ints Gather(const std::uint32_t* base, const Ints& index)
{
    return EachLane<Ints>([&](int i) { return static_cast<std::int32_t>(base[index.lane[i]]); });
}
/// Three times LaneCount numbers, every third one to each.
inline void LoadTriples(const std::uint32_t* from, Ints& a, Ints& b, Ints& c)
{
    for (int i = 0; i < LaneCount; ++i)
    {
        a.lane[i] = static_cast<std::int32_t>(from[3 * i]);
        b.lane[i] = static_cast<std::int32_t>(from[3 * i + 1]);
        c.lane[i] = static_cast<std::int32_t>(from[3 * i + 2]);
    }
}
inline void StoreQuads(const Floats& a, const Floats& b, const Floats& c, const Floats& d, float* to)
{
    for (int i = 0; i < LaneCount; ++i)
    {
        to[4 * i] = a.lane[i];
        to[4 * i + 1] = b.lane[i];
        to[4 * i + 2] = c.lane[i];
        to[4 * i + 3] = d.lane[i];
    }
}
/// Four floats from each of LaneCount places: from(lane).
template<typename From>
inline void LoadQuads(From from, Floats& a, Floats& b, Floats& c, Floats& d)
{
    for (int i = 0; i < LaneCount; ++i)
    {
        const float* quad = from(i);
        a.lane[i] = quad[0];
        b.lane[i] = quad[1];
        c.lane[i] = quad[2];
        d.lane[i] = quad[3];
    }
}
/// Byte `Which` of each whole number, from the lowest.
template<int Which>
inline Floats ByteAt(const Ints& a)
{
    return EachLane<Floats>(
        [&](int i) { return static_cast<float>(static_cast<std::uint32_t>(a.lane[i]) >> (8 * Which) & 0xFF); });
}
/// Numbers below LaneCount, ready to be looked up by.
using LaneOrder = Ints;

inline LaneOrder LaneOrderOf(const Ints& numbers)
{
    return numbers;
}
/// One of LaneCount floats for each lane.
inline Floats ByLane(const float* from, const LaneOrder& order)
{
    return EachLane<Floats>([&](int i) { return from[order.lane[i]]; });
}
/// A bit for each lane, from the lowest.
inline std::uint32_t LaneBits(const Mask& m)
{
    std::uint32_t bits = 0;
    for (int i = 0; i < LaneCount; ++i)
        bits |= m.lane[i] != 0 ? 1U << i : 0U;
    return bits;
}
/// Which lanes of a mask are chosen.
struct ChosenLanes
{
    Mask mask;
    std::uint32_t count;
};

inline ChosenLanes FindChosen(const Mask& m)
{
    std::uint32_t count = 0;
    for (int i = 0; i < LaneCount; ++i)
        count += m.lane[i] != 0 ? 1 : 0;
    return {m, count};
}
/// Stores the chosen lanes one after the other; may write LaneCount numbers.
inline void StoreChosen(const Ints& v, const ChosenLanes& chosen, std::int32_t* to)
{
    for (int i = 0; i < LaneCount; ++i)
        if (chosen.mask.lane[i] != 0)
            *to++ = v.lane[i];
}
