// Textured triangles in small boxes: what is covered and not hidden is collected over several triangles, and textures
// are read for full vectors. Included inside a namespace, once.

/// A row for each number that a fragment needs of its triangle, with a place for each triangle of a vector.
struct FragmentTable
{
    enum Row
    {
        InverseW, // of an attribute: three rows
        SecondW = InverseW + 3,
        ThirdW,
        U,
        V = U + 3,
        EyeDepth = V + 3,
        Colors = EyeDepth + 3,
        Highlights = Colors + 4 * 3,
        Steps = Highlights + 3 * 3,
        Count = Steps + 4,
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
struct FragmentValues
{
    const FragmentTable& table;
    LaneOrder order;
    AttributeLanes inverseW, u, v, eyeDepth;
    Floats secondW, thirdW;

    LANES_INLINE FragmentValues(const FragmentTable& from, Ints triangles)
        : table(from), order(LaneOrderOf(triangles)), inverseW(At(FragmentTable::InverseW)), u(At(FragmentTable::U)),
          v(At(FragmentTable::V)), eyeDepth(At(FragmentTable::EyeDepth)), secondW(Row(FragmentTable::SecondW)),
          thirdW(Row(FragmentTable::ThirdW))
    {
    }

    LANES_INLINE AttributeLanes Color(int channel) const { return At(FragmentTable::Colors + 3 * channel); }
    LANES_INLINE AttributeLanes Highlight(int channel) const { return At(FragmentTable::Highlights + 3 * channel); }
    LANES_INLINE WeightSteps<Floats> Steps() const
    {
        const int row = FragmentTable::Steps;
        return {Row(row), Row(row + 1), Row(row + 2), Row(row + 3)};
    }

private:
    LANES_INLINE Floats Row(int row) const { return ByLane(table.rows[row], order); }
    LANES_INLINE AttributeLanes At(int row) const { return {Row(row), Row(row + 1), Row(row + 2)}; }
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

LANES_INLINE void SetColors(FragmentTable& table, int row, int channels, float scale,
                            const ColorBlock (&blocks)[3][LaneCount])
{
    const BlockLanes corners[3] = {BlockLanes{blocks[0]}, BlockLanes{blocks[1]}, BlockLanes{blocks[2]}};
    for (int i = 0; i < channels; ++i)
        table.Set(row + 3 * i, corners[0].value[i] * Splat(scale), corners[1].value[i] * Splat(scale),
                  corners[2].value[i] * Splat(scale));
}

template<bool Fog>
void FillTable(FragmentTable& table, const Batch& batch, const DrawState& state, const RecordLanes& records,
               const TriangleLanes& t)
{
    alignas(64) ColorBlock blocks[3][LaneCount];
    alignas(64) CoordinateBlock coordinates[3][LaneCount];
    for (int lane = 0; lane < LaneCount; ++lane)
        for (int corner = 0; corner < 3; ++corner)
        {
            const Record& record = *records.record[lane];
            const std::uint32_t vertex = record.vertex[corner] & ~Record::Local;
            blocks[corner][lane] =
                state.isFlat ? batch.faces.colors[record.face] : records.blocks[lane]->colors[vertex];
            coordinates[corner][lane] = records.blocks[lane]->coordinates[vertex];
        }
    SetColors(table, FragmentTable::Colors, 4, 1.0F, blocks);
    const BlockLanes places[3] = {BlockLanes{coordinates[0]}, BlockLanes{coordinates[1]}, BlockLanes{coordinates[2]}};
    table.Set(FragmentTable::U, places[0].value[0], places[1].value[0], places[2].value[0]);
    table.Set(FragmentTable::V, places[0].value[1], places[1].value[1], places[2].value[1]);
    if constexpr (Fog)
        table.Set(FragmentTable::EyeDepth, places[0].value[2], places[1].value[2], places[2].value[2]);
    const Floats w[3] = {LoadCorners(t.corner[0]).inverseW, LoadCorners(t.corner[1]).inverseW,
                         LoadCorners(t.corner[2]).inverseW};
    table.Set(FragmentTable::InverseW, w[0], w[1], w[2]);
    Store(w[1], table.rows[FragmentTable::SecondW]);
    Store(w[2], table.rows[FragmentTable::ThirdW]);
    const Floats step = Load(t.step);
    float(*steps)[LaneCount] = table.rows + FragmentTable::Steps;
    Store(ToFloats(Load(t.perX[1])) * step, steps[0]);
    Store(ToFloats(Load(t.perY[1])) * step, steps[1]);
    Store(ToFloats(Load(t.perX[2])) * step, steps[2]);
    Store(ToFloats(Load(t.perY[2])) * step, steps[3]);
    if (!state.hasHighlight)
        return;
    for (int lane = 0; lane < LaneCount; ++lane)
        for (int corner = 0; corner < 3; ++corner)
        {
            const Record& record = *records.record[lane];
            const std::uint32_t vertex = record.vertex[corner] & ~Record::Local;
            blocks[corner][lane] =
                state.isFlat ? batch.faces.highlights[record.face] : records.blocks[lane]->highlights[vertex];
        }
    SetColors(table, FragmentTable::Highlights, 3, 255.0F, blocks);
}

/// Pixels of a vector of triangles, one triangle after the other. Whether they are hidden is decided already, but where
/// holes decide whether depth is written.
struct Fragments
{
    static constexpr int Enough = 64;
    static constexpr int Room = Enough + 34 * 34 + 2 * LaneCount;

    int count = 0;
    std::int32_t pixel[Room];    ///< in the tile
    std::int32_t triangle[Room]; ///< its lane
    float second[Room], third[Room];
    float depth[Room]; ///< only where there are holes

    /// What the last vector holds beyond the last fragment.
    void Pad()
    {
        for (int i = count; i < count + LaneCount; ++i)
        {
            pixel[i] = triangle[i] = 0;
            second[i] = third[i] = depth[i] = 0;
        }
    }
};

template<Blending B>
void CollectSmall(const TileView& tile, const TriangleLanes& t, int lane, Fragments& to)
{
    Attribute depthOf;
    depthOf.Set(t.corner[0][lane].depth, t.corner[1][lane].depth, t.corner[2][lane].depth);
    const Floats step = Splat(t.step[lane]);
    const Floats restSecond = Splat(t.restSecond[lane]);
    const Floats restThird = Splat(t.restThird[lane]);
    const int left = t.left[lane];
    const int right = t.right[lane];
    int drawn = 0;
    for (int x = left; x < right; x += LaneCount)
    {
        x = std::min(x, TileSize - LaneCount); // no vector may reach beyond the tile
        const Mask columns = LanesWithin(x, std::max(left, drawn), right);
        drawn = x + LaneCount;
        const Ints place = LaneNumbers() + Splat(x);
        Ints value[3];
        for (int i = 0; i < 3; ++i)
            value[i] = place * Splat(t.perX[i][lane]) + Splat(t.start[i][lane] + t.perY[i][lane] * t.top[lane]);
        for (int y = t.top[lane]; y < t.bottom[lane]; ++y)
        {
            Mask mask = Except(columns, IsLess(value[0] | value[1] | value[2], Splat(0)));
            const Floats second = ToFloats(value[1]) * step + restSecond;
            const Floats third = ToFloats(value[2]) * step + restThird;
            const Floats depth =
                Least(Splat(depthOf.base) + second * Splat(depthOf.toSecond) + third * Splat(depthOf.toThird),
                      Splat(FarthestDepth));
            float* depths = tile.depths + y * TileSize + x;
            const Floats depthThere = Load(depths);
            mask = Both(mask, IsLessOrEqual(depth, depthThere));
            for (int i = 0; i < 3; ++i)
                value[i] = value[i] + Splat(t.perY[i][lane]);
            if (!IsAny(mask))
                continue;
            if constexpr (B == Blending::Opaque || B == Blending::Blended)
                Store(Choose(mask, depth, depthThere), depths);
            const ChosenLanes chosen = FindChosen(mask);
            StoreChosen(place + Splat(y * TileSize), chosen, to.pixel + to.count);
            StoreChosen(BitsOf(second), chosen, reinterpret_cast<std::int32_t*>(to.second + to.count));
            StoreChosen(BitsOf(third), chosen, reinterpret_cast<std::int32_t*>(to.third + to.count));
            if constexpr (B == Blending::Stippled)
                StoreChosen(BitsOf(depth), chosen, reinterpret_cast<std::int32_t*>(to.depth + to.count));
            Store(Splat(lane), to.triangle + to.count);
            to.count += static_cast<int>(chosen.count);
        }
    }
}

/// How many fragments from `first` on, at most a vector, lie on different pixels.
inline int DistinctPixels(const Fragments& fragments, int first, int most)
{
    if (fragments.triangle[first] == fragments.triangle[first + most - 1])
        return most;
    for (int i = first + 1; i < first + most; ++i)
        for (int j = first; j < i; ++j)
            if (fragments.pixel[i] == fragments.pixel[j])
                return i - first;
    return most;
}

/// Shades what was collected, and forgets it.
template<Blending B, bool Fog>
void ShadeFragments(const TileView& tile, const DrawState& state, const FragmentTable& table, Fragments& fragments)
{
    constexpr bool IsBlended = B == Blending::Blended || B == Blending::Veiled;
    fragments.Pad();
    for (int first = 0, count = 0; first < fragments.count; first += count)
    {
        count = std::min(LaneCount, fragments.count - first);
        if constexpr (IsBlended)
            count = DistinctPixels(fragments, first, count);
        const std::int32_t* pixel = fragments.pixel + first;
        Ints below = Splat(0);
        if constexpr (IsBlended)
            below = Gather(tile.colors, Load(pixel));
        const Floats second = Load(fragments.second + first);
        const Floats third = Load(fragments.third + first);
        Floats rank = second;
        if constexpr (B == Blending::Stippled)
        {
            const Ints three = Splat(3);
            const Ints row = ShiftedRight<TileShift>(Load(pixel)) & three;
            rank = Gather(StippleRows[0], row * Splat(12) + (Load(pixel) & three));
        }
        Ints shaded = below;
        const Mask mask = ShadePixels<true, B, Fog, Interpolation::Perspective>(
            state, FragmentValues{table, Load(fragments.triangle + first)}, second, third, LanesWithin(0, 0, count),
            below, rank, shaded);
        std::uint32_t colors[LaneCount];
        Store(shaded, colors);
        const std::uint32_t drawn = B == Blending::Stippled ? LaneBits(mask) : 0;
        for (int i = 0; i < count; ++i)
        {
            if constexpr (B == Blending::Stippled)
            {
                if ((drawn >> i & 1) == 0 || !(fragments.depth[first + i] <= tile.depths[pixel[i]]))
                    continue;
                tile.depths[pixel[i]] = fragments.depth[first + i];
            }
            tile.colors[pixel[i]] = colors[i];
        }
    }
    fragments.count = 0;
}
