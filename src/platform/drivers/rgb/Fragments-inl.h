// Triangles in small boxes: the pixels that they cover are listed over several triangles, and everything about them is
// computed for full vectors. Included inside a namespace, once.
//
// The list is in order of submission, and pixels leave the vectors in the order of the list.

/// A row for each number that a fragment needs of its triangle, with a place for each triangle of a vector.
struct FragmentTable
{
    enum Row
    {
        // Edges of corners 1 and 2, in whole numbers below 2^24.
        Start,
        PerX = Start + 2,
        PerY = PerX + 2,
        // From edge functions to weights.
        Step = PerY + 2,
        Rests,
        // Attributes take three rows.
        Depth = Rests + 2,
        InverseW = Depth + 3,
        SecondW = InverseW + 3,
        ThirdW,
        IsLinear, ///< 1, or 0 where perspective shows
        Colors,
        U = Colors + 4 * 3,
        V = U + 3,
        EyeDepth = V + 3,
        Highlights = EyeDepth + 3,
        Count = Highlights + 3 * 3,
    };

    alignas(64) float rows[Count][LaneCount];

    void Set(int row, Floats first, Floats second, Floats third)
    {
        AttributeLanes attribute;
        attribute.Set(first, second, third);
        Store(attribute.base, rows[row]);
        Store(attribute.toSecond, rows[row + 1]);
        Store(attribute.toThird, rows[row + 2]);
    }
};

/// The same for each fragment of a vector, as shading reads it.
class FragmentValues
{
public:
    AttributeLanes inverseW, u, v, eyeDepth;
    Floats secondW, thirdW;

    LANES_INLINE FragmentValues(const FragmentTable& from, Ints triangles)
        : table_(from), order_(LaneOrderOf(triangles))
    {
        inverseW = Attribute(FragmentTable::InverseW);
        u = Attribute(FragmentTable::U);
        v = Attribute(FragmentTable::V);
        eyeDepth = Attribute(FragmentTable::EyeDepth);
        secondW = Row(FragmentTable::SecondW);
        thirdW = Row(FragmentTable::ThirdW);
    }

    LANES_INLINE Floats Row(int row) const { return ByLane(table_.rows[row], order_); }
    LANES_INLINE AttributeLanes Attribute(int row) const { return {Row(row), Row(row + 1), Row(row + 2)}; }
    LANES_INLINE AttributeLanes Color(int channel) const { return Attribute(FragmentTable::Colors + 3 * channel); }
    LANES_INLINE AttributeLanes Highlight(int channel) const
    {
        return Attribute(FragmentTable::Highlights + 3 * channel);
    }
    LANES_INLINE Mask IsLinear() const { return IsLess(Splat(0.5F), Row(FragmentTable::IsLinear)); }
    LANES_INLINE WeightSteps<Floats> Steps() const
    {
        const Floats step = Row(FragmentTable::Step);
        return {Row(FragmentTable::PerX) * step, Row(FragmentTable::PerY) * step, Row(FragmentTable::PerX + 1) * step,
                Row(FragmentTable::PerY + 1) * step};
    }
    /// The weight of corner 1 (0) or 2 (1).
    LANES_INLINE Floats Weight(int which, Floats x, Floats y) const
    {
        const Floats edge = Row(FragmentTable::Start + which) + Row(FragmentTable::PerX + which) * x +
                            Row(FragmentTable::PerY + which) * y; // exact
        return edge * Row(FragmentTable::Step) + Row(FragmentTable::Rests + which);
    }

private:
    const FragmentTable& table_;
    LaneOrder order_;
};

/// Blocks of one corner of a vector of triangles, as lanes.
struct BlockLanes
{
    Floats value[4];

    template<typename Block>
    LANES_INLINE explicit BlockLanes(const Block (&blocks)[LaneCount])
    {
        static_assert(sizeof(Block) == 4 * sizeof(float));
        LoadQuads(reinterpret_cast<const float*>(blocks), value[0], value[1], value[2], value[3]);
    }
};

/// Color blocks of all corners into the table. Answers the largest change of a channel from corner 0 to another.
template<int Channels>
LANES_INLINE Floats SetColors(FragmentTable& table, int row, float scale, const ColorBlock (&blocks)[3][LaneCount])
{
    const BlockLanes corners[3] = {BlockLanes{blocks[0]}, BlockLanes{blocks[1]}, BlockLanes{blocks[2]}};
    Floats range = Splat(0.0F);
    for (int i = 0; i < Channels; ++i)
    {
        const Floats scales = Splat(i == 3 ? 1.0F : scale);
        AttributeLanes color;
        color.Set(corners[0].value[i] * scales, corners[1].value[i] * scales, corners[2].value[i] * scales);
        Store(color.base, table.rows[row + 3 * i]);
        Store(color.toSecond, table.rows[row + 3 * i + 1]);
        Store(color.toThird, table.rows[row + 3 * i + 2]);
        range = Greatest(range, Greatest(Absolute(color.toSecond), Absolute(color.toThird)));
    }
    return range;
}

/// What every fragment needs.
LANES_INLINE void FillEdges(FragmentTable& table, const TriangleLanes& t)
{
    for (int i = 0; i < 2; ++i)
    {
        Store(ToFloats(Load(t.start[i + 1])), table.rows[FragmentTable::Start + i]);
        Store(ToFloats(Load(t.perX[i + 1])), table.rows[FragmentTable::PerX + i]);
        Store(ToFloats(Load(t.perY[i + 1])), table.rows[FragmentTable::PerY + i]);
    }
    Store(Load(t.step), table.rows[FragmentTable::Step]);
    Store(Load(t.restSecond), table.rows[FragmentTable::Rests]);
    Store(Load(t.restThird), table.rows[FragmentTable::Rests + 1]);
}

/// Answers whether every triangle may be interpolated on the screen.
template<bool IsTextured, bool Fog>
bool FillTable(FragmentTable& table, const Batch& batch, const DrawState& state, const RecordLanes& records,
               const TriangleLanes& t)
{
    alignas(64) ColorBlock blocks[3][LaneCount];
    for (int lane = 0; lane < LaneCount; ++lane)
        for (int corner = 0; corner < 3; ++corner)
            blocks[corner][lane] = state.isFlat ? batch.faces.colors[records.record[lane]->face]
                                                : records.blocks[lane]->colors[records.Vertex(lane, corner)];
    const Floats range = SetColors<4>(table, FragmentTable::Colors, IsTextured ? 1.0F : 255.0F, blocks);
    FillEdges(table, t);
    const CornerLanes corners[3] = {LoadCorners(t.corner[0]), LoadCorners(t.corner[1]), LoadCorners(t.corner[2])};
    table.Set(FragmentTable::Depth, corners[0].depth, corners[1].depth, corners[2].depth);
    table.Set(FragmentTable::InverseW, corners[0].inverseW, corners[1].inverseW, corners[2].inverseW);
    Store(corners[1].inverseW, table.rows[FragmentTable::SecondW]);
    Store(corners[2].inverseW, table.rows[FragmentTable::ThirdW]);
    if constexpr (IsTextured || Fog)
    {
        alignas(64) CoordinateBlock coordinates[3][LaneCount];
        for (int lane = 0; lane < LaneCount; ++lane)
            for (int corner = 0; corner < 3; ++corner)
                coordinates[corner][lane] = records.blocks[lane]->coordinates[records.Vertex(lane, corner)];
        const BlockLanes places[3] = {BlockLanes{coordinates[0]}, BlockLanes{coordinates[1]},
                                      BlockLanes{coordinates[2]}};
        table.Set(FragmentTable::U, places[0].value[0], places[1].value[0], places[2].value[0]);
        table.Set(FragmentTable::V, places[0].value[1], places[1].value[1], places[2].value[1]);
        table.Set(FragmentTable::EyeDepth, places[0].value[2], places[1].value[2], places[2].value[2]);
    }
    if (IsTextured && state.hasHighlight)
    {
        for (int lane = 0; lane < LaneCount; ++lane)
            for (int corner = 0; corner < 3; ++corner)
                blocks[corner][lane] = state.isFlat ? batch.faces.highlights[records.record[lane]->face]
                                                    : records.blocks[lane]->highlights[records.Vertex(lane, corner)];
        SetColors<3>(table, FragmentTable::Highlights, 255.0F, blocks);
    }
    if constexpr (IsTextured)
        return false;
    const Floats least = Least(corners[0].inverseW, Least(corners[1].inverseW, corners[2].inverseW));
    const Floats greatest = Greatest(corners[0].inverseW, Greatest(corners[1].inverseW, corners[2].inverseW));
    const Mask isLinear = IsLessOrEqual((greatest - least) * (Fog ? Splat(FullRange) : range), least);
    Store(Choose(isLinear, Splat(1.0F), Splat(0.0F)), table.rows[FragmentTable::IsLinear]);
    return IsAll(isLinear);
}

/// The columns that small triangles cover in each of their rows.
struct Spans
{
    static constexpr int MostRows = SmallBox / SubPixels + 2;

    std::int32_t first[MostRows][LaneCount]; ///< in the tile
    std::int32_t count[MostRows][LaneCount];

    /// `rows`: of the highest triangle.
    ///
    /// An edge's whole numbers v + n * perX change their sign at n = v / |perX|. Adding a half keeps the quotient at
    /// least 2^-14 away from whole numbers, and single precision is closer than that wherever it is within the box.
    LANES_INLINE void Find(const TriangleLanes& t, int rows)
    {
        constexpr float Steep = 1.0e6F; // an edge along the row: all of it, or none
        const Floats zero = Splat(0.0F);
        const Floats one = Splat(1.0F);
        const Ints left = Load(t.left);
        const Ints top = Load(t.top);
        const Floats width = ToFloats(Load(t.right) - left);
        Ints value[3], perY[3];
        Floats inverse[3];
        Mask isRising[3];
        for (int i = 0; i < 3; ++i)
        {
            const Ints perX = Load(t.perX[i]);
            perY[i] = Load(t.perY[i]);
            value[i] = Load(t.start[i]) + perX * left + perY[i] * top;
            isRising[i] = IsLess(Splat(0), perX);
            inverse[i] = Choose(IsEqual(perX, Splat(0)), Splat(Steep), one / Absolute(ToFloats(perX)));
        }
        for (int row = 0; row < rows; ++row)
        {
            Floats low = zero;
            Floats high = width;
            for (int i = 0; i < 3; ++i)
            {
                const Floats steps = RoundedDown((ToFloats(value[i]) + Splat(0.5F)) * inverse[i]);
                low = Greatest(low, Choose(isRising[i], zero - steps, zero));
                high = Least(high, Choose(isRising[i], width, steps + one));
                value[i] = value[i] + perY[i];
            }
            low = Least(low, width);
            Store(left + Truncated(low), first[row]);
            Store(Truncated(Greatest(high, zero) - low), count[row]);
        }
    }
};

/// Pixels of a vector of triangles, one triangle after the other.
struct Fragments
{
    static constexpr int Enough = 128;
    static constexpr int Room = Enough + Spans::MostRows * Spans::MostRows + 2 * LaneCount;

    int count = 0;
    std::int32_t pixel[Room];    ///< in the tile
    std::int32_t triangle[Room]; ///< its lane

    LANES_INLINE void Add(const TriangleLanes& t, const Spans& spans, int lane)
    {
        const int before = count;
        const int rows = t.bottom[lane] - t.top[lane];
        for (int row = 0; row < rows; ++row)
        {
            const int covered = spans.count[row][lane];
            if (covered <= 0)
                continue;
            const int place = (t.top[lane] + row) * TileSize + spans.first[row][lane];
            for (int done = 0; done < covered; done += LaneCount)
                Store(LaneNumbers() + Splat(place + done), pixel + count + done);
            count += covered;
        }
        for (int i = before; i < count; i += LaneCount)
            Store(Splat(lane), triangle + i);
    }

    /// What the last vector holds beyond the last fragment.
    LANES_INLINE void Pad()
    {
        Store(Splat(0), pixel + count);
        Store(Splat(0), triangle + count);
    }
};

/// How many of up to a vector of fragments, from the first on, lie on different pixels. One primitive's always do.
inline int CountDistinct(const std::int32_t* pixel, const std::int32_t* primitive, int most)
{
    if (primitive[0] == primitive[most - 1])
        return most;
    for (int i = 1; i < most; ++i)
        for (int j = 0; j < i; ++j)
            if (pixel[i] == pixel[j])
                return i;
    return most;
}

/// The places of pixels in the stipple.
LANES_INLINE Floats StippleRankOf(Ints pixel)
{
    const Ints three = Splat(3);
    const Ints row = ShiftedRight<TileShift>(pixel) & three;
    return Gather(StippleRows[0], row * Splat(12) + (pixel & three));
}

/// Pixels go out one after the other: where two of a vector lie on each other, the depth that the first wrote counts.
template<bool WritesDepth>
LANES_INLINE void StoreFragments(const TileView& tile, const std::int32_t* pixel, int count, Floats depth, Ints color)
{
    float depths[LaneCount];
    std::uint32_t colors[LaneCount];
    Store(depth, depths);
    Store(color, colors);
    for (int i = 0; i < count; ++i)
    {
        const auto at = static_cast<std::uint32_t>(pixel[i]);
        if (!(depths[i] <= tile.depths[at]))
            continue;
        if constexpr (WritesDepth)
            tile.depths[at] = depths[i];
        tile.colors[at] = colors[i];
    }
}

inline constexpr float NeverDrawn = 2.0F; ///< a depth beyond all

/// Tests, shades and stores what was listed, and empties the list.
template<bool IsTextured, Blending B, bool Fog, Interpolation P>
void DrawFragments(const TileView& tile, const DrawState& state, const FragmentTable& table, Fragments& fragments)
{
    constexpr bool IsBlended = B == Blending::Blended || B == Blending::Veiled;
    // Where shading costs more than a look at the depth that is there.
    constexpr bool LooksFirst = IsTextured || IsBlended || Fog;
    fragments.Pad();
    for (int first = 0, count = 0; first < fragments.count; first += count)
    {
        count = std::min(LaneCount, fragments.count - first);
        if constexpr (IsBlended)
            count = CountDistinct(fragments.pixel + first, fragments.triangle + first, count);
        const Ints pixel = Load(fragments.pixel + first);
        const FragmentValues values{table, Load(fragments.triangle + first)};
        const Floats x = ToFloats(pixel & Splat(TileSize - 1));
        const Floats y = ToFloats(ShiftedRight<TileShift>(pixel));
        const Floats second = values.Weight(0, x, y);
        const Floats third = values.Weight(1, x, y);
        Floats depth = Least(At<Interpolation::Linear>(values.Attribute(FragmentTable::Depth), {second, third, second}),
                             Splat(FarthestDepth));
        Mask mask = AllLanes();
        if constexpr (LooksFirst)
        {
            mask = IsLessOrEqual(depth, Gather(tile.depths, pixel));
            if (!IsAny(mask))
                continue;
        }
        Ints below = pixel;
        if constexpr (IsBlended)
            below = Gather(tile.colors, pixel);
        Floats rank = depth;
        if constexpr (B == Blending::Stippled)
            rank = StippleRankOf(pixel);
        Ints shaded = below;
        mask = ShadePixels<IsTextured, B, Fog, P>(state, values, second, third, mask, below, rank, shaded);
        if constexpr (B == Blending::Stippled)
            depth = Choose(mask, depth, Splat(NeverDrawn));
        StoreFragments<B != Blending::Veiled>(tile, fragments.pixel + first, count, depth, shaded);
    }
    fragments.count = 0;
}
