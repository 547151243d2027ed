// Triangles in small boxes: the pixels that they cover are listed over several triangles, and everything about them is
// computed for full vectors. Included inside a namespace, once.
//
// The list is in order of submission, and pixels leave the vectors in the order of the list.
//
// What is not linear on the screen has weights from the exact edge functions: however thin the triangle is, they are
// right.

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
        Colors,
        U = Colors + 4 * 3,
        V = U + 3,
        EyeDepth = V + 3,
        Highlights = EyeDepth + 3,
        Count = Highlights + 3 * 3,
    };

    alignas(64) float rows[Count][LaneCount];

    void Set(int row, const AttributeLanes& attribute)
    {
        Store(attribute.base, rows[row]);
        Store(attribute.toSecond, rows[row + 1]);
        Store(attribute.toThird, rows[row + 2]);
    }
    void Set(int row, Floats first, Floats second, Floats third)
    {
        AttributeLanes attribute;
        attribute.Set(first, second, third);
        Set(row, attribute);
    }
};

/// The places of a vector of fragments, from the first pixel that their triangles visit.
struct FragmentPlaces
{
    Floats x, y;

    LANES_INLINE FragmentPlaces(Ints pixel, const TriangleLanes& t, LaneOrder order)
        : x(ToFloats(pixel & Splat(TileSize - 1)) - ByLane(t.firstX, order)),
          y(ToFloats(ShiftedRight<TileShift>(pixel)) - ByLane(t.firstY, order))
    {
    }
};

/// The same for each fragment of a vector, as shading reads it.
class FragmentValues
{
public:
    AttributeLanes inverseW, u, v, eyeDepth;
    Floats secondW, thirdW;

    LANES_INLINE FragmentValues(const FragmentTable& from, LaneOrder order) : table_(from), order_(order)
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
    LANES_INLINE WeightSteps<Floats> Steps() const
    {
        const Floats step = Row(FragmentTable::Step);
        return {Row(FragmentTable::PerX) * step, Row(FragmentTable::PerY) * step, Row(FragmentTable::PerX + 1) * step,
                Row(FragmentTable::PerY + 1) * step};
    }
    /// The weight of corner 1 (0) or 2 (1).
    LANES_INLINE Floats Weight(int which, const FragmentPlaces& at) const
    {
        const Floats edge = Row(FragmentTable::Start + which) + Row(FragmentTable::PerX + which) * at.x +
                            Row(FragmentTable::PerY + which) * at.y; // exact
        return edge * Row(FragmentTable::Step) + Row(FragmentTable::Rests + which);
    }

private:
    const FragmentTable& table_;
    LaneOrder order_;
};

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

/// Everything but colors and highlights.
template<bool IsTextured, bool Fog>
LANES_INLINE void FillPlaces(FragmentTable& table, const RecordLanes& records, const TriangleLanes& t)
{
    const Floats w[3] = {Load(t.inverseW[0]), Load(t.inverseW[1]), Load(t.inverseW[2])};
    table.Set(FragmentTable::Depth, Load(t.depth[0]), Load(t.depth[1]), Load(t.depth[2]));
    table.Set(FragmentTable::InverseW, w[0], w[1], w[2]);
    Store(w[1], table.rows[FragmentTable::SecondW]);
    Store(w[2], table.rows[FragmentTable::ThirdW]);
    if constexpr (IsTextured || Fog)
    {
        const auto corner = [&](int number) LANES_LAMBDA
        {
            return BlockLanes{[&](int lane) LANES_LAMBDA
                              { return records.blocks[lane]->coordinates.Data() + records.Vertex(lane, number); }};
        };
        const BlockLanes places[3] = {corner(0), corner(1), corner(2)};
        table.Set(FragmentTable::U, places[0].value[0], places[1].value[0], places[2].value[0]);
        table.Set(FragmentTable::V, places[0].value[1], places[1].value[1], places[2].value[1]);
        table.Set(FragmentTable::EyeDepth, places[0].value[2], places[1].value[2], places[2].value[2]);
    }
}

/// Asks for the texels at the corners of a vector of triangles: they lie all over the texture, and the fragments would
/// wait for one after the other. Which mip level that would be is not known here.
LANES_INLINE void PrefetchTexels(const MipChain& texture, const FragmentTable& table)
{
    const LevelLanes level = FinestLevel(texture);
    const Floats base[2] = {Load(table.rows[FragmentTable::U]), Load(table.rows[FragmentTable::V])};
    for (int corner = 0; corner < 3; ++corner)
    {
        Floats u = base[0];
        Floats v = base[1];
        if (corner != 0)
        {
            u = u + Load(table.rows[FragmentTable::U + corner]);
            v = v + Load(table.rows[FragmentTable::V + corner]);
        }
        std::int32_t place[LaneCount];
        Store(NearestTexel(level, u - RoundedDown(u), v - RoundedDown(v)), place);
        for (int lane = 0; lane < LaneCount; ++lane)
            __builtin_prefetch(texture.texels.data() + place[lane]);
    }
}

template<bool IsTextured, bool Fog>
void FillTable(FragmentTable& table, const Batch& batch, const DrawState& state, const RecordLanes& records,
               const TriangleLanes& t)
{
    const CornerColors colors{&VertexBlocks::colors, IsTextured ? 1.0F : FullRange, batch, state, records};
    for (int i = 0; i < 4; ++i)
        table.Set(FragmentTable::Colors + 3 * i, colors.channel[i]);
    if (IsTextured && state.hasHighlight)
    {
        const CornerColors highlights{&VertexBlocks::highlights, FullRange, batch, state, records};
        for (int i = 0; i < 3; ++i)
            table.Set(FragmentTable::Highlights + 3 * i, highlights.channel[i]);
    }
    FillEdges(table, t);
    FillPlaces<IsTextured, Fog>(table, records, t);
    if constexpr (IsTextured)
        if (!HasLevels(state.surface))
            PrefetchTexels(*state.texture, table);
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
    /// least 2^-15 away from whole numbers, and single precision is closer than that wherever it is within the box.
    LANES_INLINE void Find(const TriangleLanes& t, int rows)
    {
        constexpr float Steep = 1.0e6F; // an edge along the row: all of it, or none
        const Floats zero = Splat(0.0F);
        const Floats one = Splat(1.0F);
        const Ints left = Load(t.left);
        const Floats width = ToFloats(Load(t.right) - left);
        Ints value[3], perY[3];
        Floats inverse[3];
        Mask isRising[3];
        for (int i = 0; i < 3; ++i)
        {
            const Ints perX = Load(t.perX[i]);
            perY[i] = Load(t.perY[i]);
            value[i] = Load(t.start[i]);
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
            Store(Truncated(Greatest(high - low, zero)), count[row]);
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
        const int rows = t.bottom[lane] - t.top[lane];
        int place = t.top[lane] * TileSize;
        int end = count;
        for (int row = 0; row < rows; ++row, place += TileSize)
        {
            // One vector, full or empty, costs less than a guess whether it is needed.
            const int covered = spans.count[row][lane];
            const Ints first = LaneNumbers() + Splat(place + spans.first[row][lane]);
            Store(first, pixel + end);
            for (int done = LaneCount; done < covered; done += LaneCount)
                Store(first + Splat(done), pixel + end + done);
            end += covered;
        }
        for (int i = count; i < end; i += LaneCount)
            Store(Splat(lane), triangle + i);
        count = end;
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

/// Shades and stores up to a vector of fragments, from `first` on. `shade(mask, below, rank, pixels)` as Compose.
template<Blending B, typename Shade>
LANES_INLINE void DrawVector(const TileView& tile, const Fragments& fragments, int first, int count, Ints pixel,
                             Mask mask, Floats depth, Shade shade)
{
    Ints below = pixel;
    if constexpr (B == Blending::Blended || B == Blending::Veiled)
        below = Gather(tile.colors, pixel);
    Floats rank = depth;
    if constexpr (B == Blending::Stippled)
        rank = StippleRankOf(pixel);
    Ints shaded = below;
    mask = shade(mask, below, rank, shaded);
    if constexpr (B == Blending::Stippled)
        depth = Choose(mask, depth, Splat(NeverDrawn));
    StoreFragments<B != Blending::Veiled>(tile, fragments.pixel + first, count, depth, shaded);
}

/// How many fragments from `first` on make up the next vector.
template<Blending B>
LANES_INLINE int NextCount(const Fragments& fragments, int first)
{
    const int count = std::min(LaneCount, fragments.count - first);
    if constexpr (B == Blending::Blended || B == Blending::Veiled)
        return CountDistinct(fragments.pixel + first, fragments.triangle + first, count);
    return count;
}

/// Tests, shades and stores what was listed, and empties the list.
template<bool IsTextured, Blending B, bool Fog>
void DrawFragments(const TileView& tile, const DrawState& state, const TriangleLanes& t, const FragmentTable& table,
                   Fragments& fragments)
{
    fragments.Pad();
    for (int first = 0, count = 0; first < fragments.count; first += count)
    {
        count = NextCount<B>(fragments, first);
        const Ints pixel = Load(fragments.pixel + first);
        const LaneOrder order = LaneOrderOf(Load(fragments.triangle + first));
        const FragmentValues values{table, order};
        const FragmentPlaces places{pixel, t, order};
        const Floats second = values.Weight(0, places);
        const Floats third = values.Weight(1, places);
        const Floats depth =
            Least(At<Interpolation::Linear>(values.Attribute(FragmentTable::Depth), {second, third, second}),
                  Splat(FarthestDepth));
        const Mask mask = IsLessOrEqual(depth, Gather(tile.depths, fragments.pixel + first));
        if (!IsAny(mask))
            continue;
        DrawVector<B>(tile, fragments, first, count, pixel, mask, depth,
                      [&](Mask drawn, Ints below, Floats rank, Ints& pixels) LANES_LAMBDA
                      {
                          return ShadePixels<IsTextured, B, Fog, Interpolation::Perspective>(
                              state, values, second, third, drawn, below, rank, pixels);
                      });
    }
    fragments.count = 0;
}

/// The same for triangles whose colors are linear on the screen.
template<Blending B>
void DrawFragments(const TileView& tile, const TriangleLanes& t, const PlaneTable& planes, Fragments& fragments)
{
    fragments.Pad();
    for (int first = 0, count = 0; first < fragments.count; first += count)
    {
        count = NextCount<B>(fragments, first);
        const Ints pixel = Load(fragments.pixel + first);
        const LaneOrder order = LaneOrderOf(Load(fragments.triangle + first));
        const FragmentPlaces places{pixel, t, order};
        const auto at = [&](int row) LANES_LAMBDA
        {
            return ByLane(planes.start[row], order) + ByLane(planes.perX[row], order) * places.x +
                   ByLane(planes.perY[row], order) * places.y;
        };
        const Floats depth = Least(at(PlaneTable::Depth), Splat(FarthestDepth));
        Mask mask = AllLanes();
        if constexpr (B == Blending::Blended || B == Blending::Veiled) // dearer than a look at the depth
        {
            mask = IsLessOrEqual(depth, Gather(tile.depths, fragments.pixel + first));
            if (!IsAny(mask))
                continue;
        }
        DrawVector<B>(tile, fragments, first, count, pixel, mask, depth,
                      [&](Mask drawn, Ints below, Floats rank, Ints& pixels) LANES_LAMBDA
                      {
                          const ColorLanes color{at(PlaneTable::Red), at(PlaneTable::Green), at(PlaneTable::Blue),
                                                 B == Blending::Opaque ? depth : at(PlaneTable::Alpha)};
                          return Compose<B>(color, drawn, below, rank, pixels);
                      });
    }
    fragments.count = 0;
}
