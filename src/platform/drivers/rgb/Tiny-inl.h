// Tiny triangles, of which a dense scan has one or two for each pixel: a lane for each triangle instead of one for each
// pixel. Their pixels come out of the vectors one triangle after the other, so that the order of submission holds.
// Included inside a namespace, once.

inline constexpr int MostTinyPixels = 4; ///< in the box of a tiny triangle

/// The candidates of a vector of tiny triangles: the n-th pixel of each one's box.
struct TinyPixels
{
    float depth[MostTinyPixels][LaneCount];
    std::uint32_t color[MostTinyPixels][LaneCount];
    std::int32_t pixel[MostTinyPixels][LaneCount]; ///< in the tile
    std::uint32_t covered[MostTinyPixels];         ///< a bit for each lane
};

/// A bit for each triangle that is tiny and may be interpolated on the screen.
LANES_INLINE std::uint32_t FindTiny(const TriangleLanes& t, bool isConstant)
{
    constexpr float FullRange = 255.0F;
    const Ints width = Load(t.right) - Load(t.left);
    const Ints height = Load(t.bottom) - Load(t.top);
    const Ints zero = Splat(0);
    const Ints most = Splat(MostTinyPixels);
    Mask tiny = Both(IsLess(zero, Load(t.isSmall)), Both(IsLess(zero, width), IsLess(zero, height)));
    tiny = Except(tiny, Either(IsLess(most, width), Either(IsLess(most, height), IsLess(most, width * height))));
    if (!isConstant)
    {
        const Floats w[3] = {LoadCorners(t.corner[0]).inverseW, LoadCorners(t.corner[1]).inverseW,
                             LoadCorners(t.corner[2]).inverseW};
        const Floats least = Least(w[0], Least(w[1], w[2]));
        const Floats greatest = Greatest(w[0], Greatest(w[1], w[2]));
        tiny = Both(tiny, IsLessOrEqual((greatest - least) * Splat(FullRange), least));
    }
    return LaneBits(tiny);
}

/// ColorAttributes for each lane.
struct ColorLanes
{
    Floats base[3], toSecond[3], toThird[3];

    explicit ColorLanes(const ColorBlock (&corners)[3][LaneCount])
    {
        const Floats scale = Splat(255.0F);
        Floats alpha;
        LoadQuads(&corners[0][0].red, base[0], base[1], base[2], alpha);
        LoadQuads(&corners[1][0].red, toSecond[0], toSecond[1], toSecond[2], alpha);
        LoadQuads(&corners[2][0].red, toThird[0], toThird[1], toThird[2], alpha);
        for (int i = 0; i < 3; ++i)
        {
            base[i] = base[i] * scale;
            toSecond[i] = toSecond[i] * scale - base[i];
            toThird[i] = toThird[i] * scale - base[i];
        }
    }

    Ints Pixels(Floats second, Floats third) const
    {
        const auto byte = [&](int i) LANES_LAMBDA
        { return Truncated(base[i] + second * toSecond[i] + third * toThird[i] + Splat(0.5F)); };
        return ShiftedLeft<16>(byte(0)) | ShiftedLeft<8>(byte(1)) | byte(2);
    }
};

/// `count`: of pixels in the largest box.
LANES_INLINE void ShadeTiny(const TriangleLanes& t, const ColorLanes& color, int count, TinyPixels& to)
{
    const Floats depth0 = LoadCorners(t.corner[0]).depth;
    const Floats toSecond = LoadCorners(t.corner[1]).depth - depth0;
    const Floats toThird = LoadCorners(t.corner[2]).depth - depth0;
    const Floats step = Load(t.step);
    const Floats restSecond = Load(t.restSecond);
    const Floats restThird = Load(t.restThird);
    const Ints left = Load(t.left);
    const Ints right = Load(t.right);
    const Ints bottom = Load(t.bottom);
    Ints x = left;
    Ints y = Load(t.top);
    Ints value[3], perX[3], toNextRow[3];
    for (int i = 0; i < 3; ++i)
    {
        perX[i] = Load(t.perX[i]);
        const Ints perY = Load(t.perY[i]);
        value[i] = Load(t.start[i]) + perX[i] * x + perY * y;
        toNextRow[i] = perY - perX[i] * (right - left - Splat(1));
    }
    for (int n = 0; n < count; ++n)
    {
        const Floats second = ToFloats(value[1]) * step + restSecond;
        const Floats third = ToFloats(value[2]) * step + restThird;
        Store(Least(depth0 + second * toSecond + third * toThird, Splat(FarthestDepth)), to.depth[n]);
        Store(color.Pixels(second, third), to.color[n]);
        Store(ShiftedLeft<TileShift>(y) + x, to.pixel[n]);
        to.covered[n] = LaneBits(Except(IsLess(y, bottom), IsLess(value[0] | value[1] | value[2], Splat(0))));
        x = x + Splat(1);
        const Mask isRowDone = IsEqual(x, right);
        for (int i = 0; i < 3; ++i)
            value[i] = value[i] + Choose(isRowDone, toNextRow[i], perX[i]);
        y = Choose(isRowDone, y + Splat(1), y);
        x = Choose(isRowDone, left, x);
    }
}

LANES_INLINE void StoreTiny(const TileView& tile, const TinyPixels& from, int lane, int count)
{
    for (int n = 0; n < count; ++n)
    {
        const std::int32_t pixel = from.pixel[n][lane];
        if ((from.covered[n] >> lane & 1) == 0 || !(from.depth[n][lane] <= tile.depths[pixel]))
            continue;
        tile.depths[pixel] = from.depth[n][lane];
        tile.colors[pixel] = from.color[n][lane];
    }
}
