// Lines and points into a tile. Included inside a namespace, once.
//
// Everything about lines is set up for a vector of them at once. Their pixels are then listed, line after line in the
// order of submission, and placed, shaded and stored in full vectors, however short the lines are.
//
// Along its major axis a line takes a pixel for each step. Across it, step k is floor((rest + rise * k) / length)
// pixels from step 0. These are whole numbers of 1/256 pixel: a step moves the exact place by a whole number of them
// over the length, so that smaller parts never count.

/// Lines of up to this length are set up in 32 bits, and single precision tells where they are across.
///
/// Near the tile such a line is less than 2^8 pixels across from anywhere, and two roundings make that wrong by less
/// than 2^-15. Quotients to which half a step of 1 / length was added are at least that far from whole numbers.
inline constexpr std::int32_t ShortLine = TileSize * SubPixels;

/// A vector of lines, and their pixels within the tile.
struct LineList
{
    static constexpr int Room = LaneCount * TileSize + 2 * LaneCount;
    static constexpr int LaneShift = std::countr_zero(static_cast<unsigned>(LaneCount));

    enum Row
    {
        // The pixel in the tile at step 0, and what a step along and one across add to it.
        FirstPixel,
        Along,
        Across,
        // As above.
        Rest,
        Rise,
        InverseLength,
        // Along the major axis and signed: the way from the line's start to step 0, and to its end.
        Covered,
        Length,
        // Attributes take two rows.
        Depth,
        InverseW = Depth + 2,
        SecondW = InverseW + 2,
        EyeDepth,
        Colors = EyeDepth + 2,
        RowCount = Colors + 4 * 2,
    };

    alignas(64) float rows[RowCount][LaneCount];
    // Of what the rows are made.
    alignas(64) ScreenPosition ends[2][LaneCount];
    alignas(64) ColorBlock colors[2][LaneCount];
    std::int32_t firstStep[LaneCount], stepCount[LaneCount]; ///< of the pixels within the limits
    bool hasLong;

    int count = 0;
    std::int32_t places[Room]; ///< step << LaneShift | line

    // The vector of them that is being drawn.
    std::int32_t pixels[LaneCount]; ///< in the tile
    std::uint32_t depths[LaneCount], drawn[LaneCount];

    LANES_INLINE void Set(int row, Floats first, Floats second)
    {
        Store(first, rows[row]);
        Store(second - first, rows[row + 1]);
    }

    LANES_INLINE void ListPixels(int lines)
    {
        count = 0;
        for (int line = 0; line < lines; ++line)
        {
            const int first = firstStep[line] << LaneShift | line;
            for (int done = 0; done < stepCount[line]; done += LaneCount)
                Store(ShiftedLeft<LaneShift>(LaneNumbers() + Splat(done)) + Splat(first), places + count + done);
            count += stepCount[line];
        }
        if (count != 0)
            Store(Splat(places[count - 1]), places + count); // what the last vector holds beyond the last pixel
    }
};

/// Place and steps of any line.
LANES_NOINLINE void SetLine(LineList& list, int lane, const TileView& tile, const PixelRect& limits)
{
    const LineSteps line{list.ends[0][lane], list.ends[1][lane], tile.left, tile.top};
    const PixelRect turned = line.Turned(limits);
    const std::int64_t low = std::max<std::int64_t>(line.first, turned.left);
    const std::int64_t high = std::min<std::int64_t>(line.stop, turned.right);
    const std::int64_t across = line.Across(low);
    const std::int64_t rest = line.Numerator(low) - across * line.length;
    // The first step at which the line has come to some place across.
    const auto stepAt = [&](std::int64_t pixel)
    {
        const std::int64_t left = (pixel - across) * line.length - rest;
        return line.rise > 0 ? FloorDivided(left + line.rise - 1, line.rise) : FloorDivided(-left, -line.rise) + 1;
    };
    std::int64_t begin = 0;
    std::int64_t end = high - low;
    if (line.rise != 0)
    {
        begin = std::max(begin, stepAt(line.rise > 0 ? turned.top : turned.bottom));
        end = std::min(end, stepAt(line.rise > 0 ? turned.bottom : turned.top));
    }
    else if (across < turned.top || across >= turned.bottom)
    {
        end = 0;
    }
    const std::int64_t alongStep = line.isXMajor ? 1 : TileSize;
    const std::int64_t acrossStep = line.isXMajor ? TileSize : 1;
    const auto set = [&](LineList::Row row, std::int64_t value) { list.rows[row][lane] = static_cast<float>(value); };
    set(LineList::FirstPixel, low * alongStep + across * acrossStep);
    set(LineList::Along, alongStep);
    set(LineList::Across, acrossStep);
    set(LineList::Rest, rest);
    set(LineList::Rise, line.rise);
    set(LineList::Covered, line.isPoint ? 0 : low * SubPixels - line.from);
    set(LineList::Length, line.isPoint ? 1 : line.way);
    list.rows[LineList::InverseLength][lane] = 1.0F / static_cast<float>(line.length);
    list.firstStep[lane] = static_cast<std::int32_t>(begin);
    list.stepCount[lane] = static_cast<std::int32_t>(std::max<std::int64_t>(end - begin, 0));
    list.hasLong = list.hasLong || line.length > ShortLine;
}

/// Places and steps of a vector of lines. Answers those, a bit for each, that are long or leave the limits across: they
/// have to be set one by one.
LANES_INLINE std::uint32_t SetShortLines(LineList& list, const CornerLanes& start, const CornerLanes& end,
                                         const TileView& tile, const PixelRect& limits)
{
    const Ints zero = Splat(0);
    const Ints one = Splat(1);
    const Ints half = Splat(SubPixels / 2);
    const Ints almostOne = Splat(SubPixels - 1);
    const Floats halfStep = Splat(0.5F);
    const Ints dx = end.x - start.x;
    const Ints dy = end.y - start.y;
    const Ints width = Greatest(dx, zero - dx);
    const Ints height = Greatest(dy, zero - dy);
    const Mask isYMajor = IsLess(width, height);
    const Ints startX = start.x - Splat(tile.left * SubPixels);
    const Ints startY = start.y - Splat(tile.top * SubPixels);
    const Ints from = Choose(isYMajor, startY, startX);
    const Ints way = Choose(isYMajor, dy, dx);
    const Ints side = Choose(isYMajor, dx, dy);
    const Ints beside = Choose(isYMajor, startX, startY) + half;
    const Ints lowest = ShiftedRight<SubPixelShift>(Least(from, from + way) + almostOne);
    const Ints highest = ShiftedRight<SubPixelShift>(Greatest(from, from + way) + almostOne);
    const Mask isPoint = IsEqual(lowest, highest);
    const Ints nearest = ShiftedRight<SubPixelShift>(from + half);
    const Ints length = Choose(isPoint, one, Greatest(width, height));
    const Ints rise = Choose(isPoint, zero, Choose(IsLess(way, zero), zero - side, side));
    const Ints low =
        Greatest(Choose(isPoint, nearest, lowest), Choose(isYMajor, Splat(limits.top), Splat(limits.left)));
    const Ints high =
        Least(Choose(isPoint, nearest + one, highest), Choose(isYMajor, Splat(limits.bottom), Splat(limits.right)));
    const Ints covered = Choose(isPoint, zero, ShiftedLeft<SubPixelShift>(low) - from);
    const Ints place = ShiftedRight<SubPixelShift>(beside * length + rise * covered);
    const Floats inverse = Splat(1.0F) / ToFloats(length);
    const Ints across = Truncated(RoundedDown((ToFloats(place) + halfStep) * inverse));
    const Ints rest = place - across * length;
    const Ints lastRest = rest + rise * (high - low - one);
    const Ints lastAcross = across + Truncated(RoundedDown((ToFloats(lastRest) + halfStep) * inverse));
    const Ints alongStep = Choose(isYMajor, Splat(TileSize), one);
    const Ints acrossStep = Choose(isYMajor, one, Splat(TileSize));
    Store(ToFloats(low * alongStep + across * acrossStep), list.rows[LineList::FirstPixel]);
    Store(ToFloats(alongStep), list.rows[LineList::Along]);
    Store(ToFloats(acrossStep), list.rows[LineList::Across]);
    Store(ToFloats(rest), list.rows[LineList::Rest]);
    Store(ToFloats(rise), list.rows[LineList::Rise]);
    Store(inverse, list.rows[LineList::InverseLength]);
    Store(ToFloats(covered), list.rows[LineList::Covered]);
    Store(ToFloats(Choose(isPoint, one, way)), list.rows[LineList::Length]);
    Store(zero, list.firstStep);
    Store(Greatest(high - low, zero), list.stepCount);
    const Ints leastAcross = Choose(isYMajor, Splat(limits.left), Splat(limits.top));
    const Ints greatestAcross = Choose(isYMajor, Splat(limits.right - 1), Splat(limits.bottom - 1));
    const Mask leaves =
        Either(IsLess(Least(across, lastAcross), leastAcross), IsLess(greatestAcross, Greatest(across, lastAcross)));
    return LaneBits(Either(IsLess(Splat(ShortLine), length), Both(leaves, IsLess(low, high))));
}

LANES_INLINE void SetUpLines(LineList& list, int lines, const TileView& tile, const PixelRect& limits)
{
    const CornerLanes start = LoadCorners([&](int lane) LANES_LAMBDA { return list.ends[0] + lane; });
    const CornerLanes end = LoadCorners([&](int lane) LANES_LAMBDA { return list.ends[1] + lane; });
    list.Set(LineList::Depth, start.depth, end.depth);
    list.Set(LineList::InverseW, start.inverseW, end.inverseW);
    Store(end.inverseW, list.rows[LineList::SecondW]);
    const BlockLanes startColor{[&](int lane) LANES_LAMBDA { return list.colors[0] + lane; }};
    const BlockLanes endColor{[&](int lane) LANES_LAMBDA { return list.colors[1] + lane; }};
    for (int i = 0; i < 4; ++i)
    {
        const Floats scale = Splat(i == 3 ? 1.0F : FullRange);
        list.Set(LineList::Colors + 2 * i, startColor.value[i] * scale, endColor.value[i] * scale);
    }
    list.hasLong = false;
    std::uint32_t others = SetShortLines(list, start, end, tile, limits) & ((1U << lines) - 1);
    for (; others != 0; others &= others - 1)
        SetLine(list, std::countr_zero(others), tile, limits);
}

/// A value at a line's start, and how much more its end has.
struct LineAttribute
{
    Floats base, toSecond;
};

template<Interpolation>
LANES_INLINE Floats At(const LineAttribute& a, const Weights& weights)
{
    return a.base + weights.second * a.toSecond;
}

/// What shading reads of lines: corner 1 is the end, there is no corner 2.
class LineValues
{
public:
    LineAttribute inverseW, eyeDepth;
    Floats secondW, thirdW;

    LANES_INLINE LineValues(const LineList& from, Ints lines) : from_(from), order_(LaneOrderOf(lines))
    {
        inverseW = Attribute(LineList::InverseW);
        eyeDepth = Attribute(LineList::EyeDepth);
        secondW = thirdW = Row(LineList::SecondW);
    }
    LANES_INLINE Floats Row(int row) const { return ByLane(from_.rows[row], order_); }
    LANES_INLINE LineAttribute Attribute(int row) const { return {Row(row), Row(row + 1)}; }
    LANES_INLINE LineAttribute Color(int channel) const { return Attribute(LineList::Colors + 2 * channel); }

    /// The pixels in the tile.
    LANES_INLINE Ints PixelsAt(Ints step) const
    {
        const Floats along = ToFloats(step);
        const Floats rest = Row(LineList::Rest);
        const Floats rise = Row(LineList::Rise);
        Floats across = RoundedDown((rest + rise * along + Splat(0.5F)) * Row(LineList::InverseLength));
        if (from_.hasLong)
        {
            // Off by one at most.
            const Ints length = Truncated(Absolute(Row(LineList::Length)));
            const Ints left = Truncated(rest) + Truncated(rise) * step - Truncated(across) * length;
            const Floats one = Splat(1.0F);
            across = Choose(IsLess(left, Splat(0)), across - one, Choose(IsLess(left, length), across, across + one));
        }
        return Truncated(Row(LineList::FirstPixel) + Row(LineList::Along) * along + Row(LineList::Across) * across);
    }

private:
    const LineList& from_;
    LaneOrder order_;
};

/// StoreFragments without a branch: where lines cross each other nobody can tell which pixels are hidden. Depths are
/// not negative, so that their bits are in their order.
LANES_INLINE void StoreLinePixels(float* depths, std::uint32_t* colors, const LineList& list, int count)
{
    for (int i = 0; i < count; ++i)
    {
        float& depthThere = depths[list.pixels[i]];
        std::uint32_t& colorThere = colors[list.pixels[i]];
        const std::uint32_t farther = std::bit_cast<std::uint32_t>(depthThere) - list.depths[i];
        const auto isHidden = static_cast<std::uint32_t>(static_cast<std::int32_t>(farther) >> 31); // 0 or all ones
        depthThere = std::bit_cast<float>(list.depths[i] + (farther & isHidden));
        colorThere = list.drawn[i] ^ ((list.drawn[i] ^ colorThere) & isHidden);
    }
}

/// Shades and stores what was listed.
template<Blending B, bool Fog>
LANES_INLINE void DrawLinePixels(const TileView& to, const DrawState& state, LineList& list)
{
    const TileView tile = to; // a copy that no store can change
    // Where shading costs more than a look at the depth that is there.
    constexpr bool LooksFirst = B != Blending::Opaque || Fog;
    const Ints laneBits = Splat(LaneCount - 1);
    for (int first = 0, count = 0; first < list.count; first += count)
    {
        count = std::min(LaneCount, list.count - first);
        const Ints place = Load(list.places + first);
        const Ints step = ShiftedRight<LineList::LaneShift>(place);
        const LineValues values{list, place & laneBits};
        const Ints pixel = values.PixelsAt(step);
        Store(pixel, list.pixels);
        if constexpr (B == Blending::Blended)
        {
            std::int32_t lines[LaneCount];
            Store(place & laneBits, lines);
            count = CountDistinct(list.pixels, lines, count);
        }
        const Floats zero = Splat(0.0F);
        const Floats along =
            (values.Row(LineList::Covered) + ToFloats(ShiftedLeft<SubPixelShift>(step))) / values.Row(LineList::Length);
        Floats depth = values.Row(LineList::Depth) + along * values.Row(LineList::Depth + 1);
        depth = Greatest(Least(depth, Splat(FarthestDepth)), zero);
        Mask mask = AllLanes();
        if constexpr (LooksFirst)
        {
            mask = IsLessOrEqual(depth, Gather(tile.depths, pixel));
            if (!IsAny(mask))
                continue;
        }
        const Ints below = B == Blending::Blended ? Gather(tile.colors, pixel) : pixel;
        const Floats rank = B == Blending::Stippled ? StippleRankOf(pixel) : zero;
        Ints shaded = below;
        mask = ShadePixels<false, B, Fog, Interpolation::Perspective>(state, values, along, zero, mask, below, rank,
                                                                      shaded);
        if constexpr (B == Blending::Stippled)
            depth = Choose(mask, depth, Splat(NeverDrawn));
        Store(BitsOf(depth), list.depths);
        Store(shaded, list.drawn);
        StoreLinePixels(tile.depths, tile.colors, list, count);
    }
}

/// A vector of lines as they are in the bins.
template<bool Fog>
LANES_INLINE void LoadLines(LineList& list, const Batch& batch, const Primitives& primitives, const DrawState& state,
                            const std::uint16_t* references, int lines)
{
    for (int line = 0; line < lines; ++line)
    {
        const Record& record = primitives.records[references[line]];
        const VertexBlocks& blocks = BlocksOf(batch, primitives, record.vertex[0]);
        for (int end = 0; end < 2; ++end)
        {
            const std::uint32_t vertex = record.vertex[end] & ~Record::Local;
            list.ends[end][line] = blocks.positions[vertex];
            list.colors[end][line] = state.isFlat ? batch.faces.colors[record.face] : blocks.colors[vertex];
        }
        if constexpr (Fog)
        {
            const float eyeDepth = blocks.coordinates[record.vertex[0] & ~Record::Local].eyeDepth;
            list.rows[LineList::EyeDepth][line] = eyeDepth;
            list.rows[LineList::EyeDepth + 1][line] =
                blocks.coordinates[record.vertex[1] & ~Record::Local].eyeDepth - eyeDepth;
        }
    }
}

template<Blending B, bool Fog>
void DrawLines(const TileView& tile, const Batch& batch, const Primitives& primitives, const DrawState& state,
               const std::uint16_t* references, std::size_t count)
{
    const PixelRect limits = LimitsIn(tile, state);
    LineList list;
    std::fill_n(list.rows[0], LineList::RowCount * LaneCount, 0.0F);
    std::fill_n(list.ends[0], 2 * LaneCount, ScreenPosition{});
    std::fill_n(list.colors[0], 2 * LaneCount, ColorBlock{});
    for (std::size_t first = 0; first < count; first += LaneCount)
    {
        const int lines = static_cast<int>(std::min<std::size_t>(LaneCount, count - first));
        LoadLines<Fog>(list, batch, primitives, state, references + first, lines);
        SetUpLines(list, lines, tile, limits);
        list.ListPixels(lines);
        DrawLinePixels<B, Fog>(tile, state, list);
    }
}
