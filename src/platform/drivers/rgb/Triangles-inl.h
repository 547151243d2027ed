// Triangles into a tile, by exact edge functions. Included inside a namespace, once.
//
// An edge function is a whole number of 1/256 by 1/256 pixels. Between pixels it changes by multiples of 256, so its
// low byte is the same for all pixels of a triangle: coverage needs only the rest, which fits 32 bits within a tile.
// The top-left rule is folded in: an edge that does not own its pixels starts one lower, and a pixel is covered when
// no edge function is negative.
//
// Everything about small triangles is set up for a vector of them at once.
//
// Triangles in a box of up to 64 pixels are drawn by Planes-inl.h and Fragments-inl.h. Larger ones are drawn here by
// blocks of 8 by 8 pixels, with weights linear in x and y: blocks outside are left out, those inside need no edge
// tests, and those behind everything drawn are hidden.

inline constexpr std::int32_t SmallBox = 64 * SubPixels;
inline constexpr std::int32_t ManyPixels = 12; ///< in a box: from here on whole rows are cheaper than single pixels
inline constexpr float FullRange = 255.0F;     ///< of a color channel

/// An edge, opposite to the corner of its number; values are per tile.
struct Edge
{
    std::int32_t perX, perY; ///< for one pixel
    std::int32_t start;      ///< at the tile's first pixel
};

/// A vector of triangles in a tile. Edges, step and rests are those of small triangles only; start and rests belong to
/// the first pixel to visit.
struct TriangleLanes
{
    float depth[3][LaneCount], inverseW[3][LaneCount];                                 ///< of the corners
    std::int32_t left[LaneCount], top[LaneCount], right[LaneCount], bottom[LaneCount]; ///< the pixels to visit
    float firstX[LaneCount], firstY[LaneCount];                                        ///< left and top
    std::uint32_t small, wide, empty; ///< a bit for each lane; wide: many pixels to visit
    std::int32_t start[3][LaneCount], perX[3][LaneCount], perY[3][LaneCount];
    float step[LaneCount]; ///< of a corner's weight for one step of its edge
    float restSecond[LaneCount], restThird[LaneCount];
};

LANES_INLINE const VertexBlocks& BlocksOf(const Batch& batch, const Primitives& primitives, std::uint32_t vertex)
{
    return (vertex & Record::Local) != 0 ? primitives.local : batch.vertices;
}

/// All that varies over a primitive of three corners, which need not be different ones.
template<bool IsTextured, Blending B, bool Fog>
LANES_INLINE void SetAttributes(Attributes& to, const Batch& batch, const Primitives& primitives,
                                const DrawState& state, const Record& record, const ScreenPosition& a,
                                const ScreenPosition& b, const ScreenPosition& c)
{
    const VertexBlocks& blocks = BlocksOf(batch, primitives, record.vertex[0]);
    const std::uint32_t v[3] = {record.vertex[0] & ~Record::Local, record.vertex[1] & ~Record::Local,
                                record.vertex[2] & ~Record::Local};
    to.depth.Set(a.depth, b.depth, c.depth);
    to.inverseW.Set(a.inverseW, b.inverseW, c.inverseW);
    to.secondW = b.inverseW;
    to.thirdW = c.inverseW;
    constexpr float Scale = IsTextured ? 1.0F : 255.0F;
    if (state.isFlat)
    {
        const ColorBlock& face = batch.faces.colors[record.face];
        to.color.Set(face, face, face, Scale);
    }
    else
        to.color.Set(blocks.colors[v[0]], blocks.colors[v[1]], blocks.colors[v[2]], Scale);
    if constexpr (IsTextured || Fog)
    {
        const CoordinateBlock& first = blocks.coordinates[v[0]];
        const CoordinateBlock& second = blocks.coordinates[v[1]];
        const CoordinateBlock& third = blocks.coordinates[v[2]];
        to.u.Set(first.u, second.u, third.u);
        to.v.Set(first.v, second.v, third.v);
        to.eyeDepth.Set(first.eyeDepth, second.eyeDepth, third.eyeDepth);
    }
    if constexpr (IsTextured)
    {
        const ColorBlock& first = state.isFlat ? batch.faces.highlights[record.face] : blocks.highlights[v[0]];
        const ColorBlock& second = state.isFlat ? first : blocks.highlights[v[1]];
        const ColorBlock& third = state.isFlat ? first : blocks.highlights[v[2]];
        to.highlight.Set(first, second, third, 255.0F);
    }
}

/// Whether interpolation on the screen is off by less than a quarter of a step of 255. The error of a weight is at most
/// a quarter of the relative difference of the corners' distances, and counts as much as the colors differ.
LANES_INLINE bool IsNearlyFlat(float a, float b, float c, float range)
{
    const float least = std::min(a, std::min(b, c));
    const float greatest = std::max(a, std::max(b, c));
    return (greatest - least) * range <= least;
}

/// Tests, shades and stores a vector of pixels.
template<bool IsTextured, Blending B, bool Fog, Interpolation P>
LANES_INLINE void DrawPixels(const TileView& tile, const DrawState& state, const Attributes& a, int x, int y, Mask mask,
                             Floats depth, Floats second, Floats third)
{
    const int pixel = y * TileSize + x;
    const Floats depthThere = Load(tile.depths + pixel);
    mask = Both(mask, IsLessOrEqual(depth, depthThere));
    if (!IsAny(mask))
        return;
    const Ints below = Load(tile.colors + pixel);
    Floats rank = depth;
    if constexpr (B == Blending::Stippled)
        rank = Load(StippleRows[y & 3] + (x & 3));
    Ints pixels = below;
    mask = ShadePixels<IsTextured, B, Fog, P>(state, a, second, third, mask, below, rank, pixels);
    if constexpr (B != Blending::Veiled)
        Store(Choose(mask, depth, depthThere), tile.depths + pixel);
    Store(Choose(mask, pixels, below), tile.colors + pixel);
}

/// What of a state's area lies in a tile, from the tile's first pixel.
LANES_INLINE PixelRect LimitsIn(const TileView& tile, const DrawState& state)
{
    const PixelRect& area = state.area;
    return Intersection({area.left - tile.left, area.top - tile.top, area.right - tile.left, area.bottom - tile.top},
                        {0, 0, TileSize, TileSize});
}

LANES_INLINE Mask LanesWithin(int x, int left, int right)
{
    const Ints place = LaneNumbers() + Splat(x);
    return Except(IsLess(place, Splat(right)), IsLess(place, Splat(left)));
}

/// A value that is linear on the screen, from the tile's first pixel.
struct Plane
{
    float start, perX, perY;

    float Row(int y) const { return start + perY * static_cast<float>(y); }
    float At(int x, int y) const { return Row(y) + perX * static_cast<float>(x); }
};

/// Depth with the limits of its triangle: rounding of steep planes must not leave them.
struct DepthPlane
{
    Plane plane;
    float nearest, farthest;

    // Rounding keeps order, so the extremes of a block are those of its corners.
    float NearestIn(int x, int y) const
    {
        const int last = BlockSize - 1;
        const float value = plane.At(plane.perX < 0 ? x + last : x, plane.perY < 0 ? y + last : y);
        return std::min(std::max(value, nearest), farthest);
    }
    float FarthestIn(int x, int y) const
    {
        const int last = BlockSize - 1;
        const float value = plane.At(plane.perX > 0 ? x + last : x, plane.perY > 0 ? y + last : y);
        return std::min(std::max(value, nearest), farthest);
    }
};

struct LargeTriangle
{
    Edge edges[3];
    Plane second, third;
    DepthPlane depth;
};

template<bool IsTextured, Blending B, bool Fog, Interpolation P, bool IsInside>
void DrawBlock(const TileView& tile, const DrawState& state, const PixelRect& box, const Attributes& a,
               const LargeTriangle& large, int left, int top)
{
    const Floats zero = Splat(0.0F);
    const Floats one = Splat(1.0F);
    const Floats lanes = ToFloats(LaneNumbers());
    const int firstY = IsInside ? top : std::max(top, box.top);
    const int lastY = IsInside ? top + BlockSize : std::min(top + BlockSize, box.bottom);
    for (int y = firstY; y < lastY; ++y)
        for (int x = left; x < left + BlockSize; x += LaneCount)
        {
            Mask mask = AllLanes();
            if constexpr (!IsInside)
            {
                Ints value = Splat(0);
                for (const Edge& edge : large.edges)
                    value =
                        value | (LaneNumbers() * Splat(edge.perX) + Splat(edge.start + edge.perX * x + edge.perY * y));
                mask = Except(LanesWithin(x, box.left, box.right), IsLess(value, Splat(0)));
                if (!IsAny(mask))
                    continue;
            }
            const Floats place = lanes + Splat(static_cast<float>(x));
            const Floats depth = Least(Greatest(Splat(large.depth.plane.Row(y)) + Splat(large.depth.plane.perX) * place,
                                                Splat(large.depth.nearest)),
                                       Splat(large.depth.farthest));
            Floats second = zero;
            Floats third = zero;
            if constexpr (P != Interpolation::Constant)
            {
                second = Splat(large.second.Row(y)) + Splat(large.second.perX) * place;
                third = Splat(large.third.Row(y)) + Splat(large.third.perX) * place;
                second = Least(Greatest(second, zero), one);
                third = Least(Greatest(third, zero), one - second);
            }
            DrawPixels<IsTextured, B, Fog, P>(tile, state, a, x, y, mask, depth, second, third);
        }
}

template<bool IsTextured, Blending B, bool Fog, Interpolation P>
void DrawLarge(const TileView& tile, const DrawState& state, const PixelRect& box, const Attributes& a,
               const LargeTriangle& large)
{
    constexpr int Last = BlockSize - 1;
    const int firstX = box.left & ~Last;
    const int firstY = box.top & ~Last;
    for (int y = firstY; y < box.bottom; y += BlockSize)
        for (int x = firstX; x < box.right; x += BlockSize)
        {
            std::int32_t highest = 0; // negative when some edge is negative in the whole block
            std::int32_t lowest = 0;  // negative when some edge is negative somewhere in it
            for (const Edge& edge : large.edges)
            {
                const std::int32_t value = edge.start + edge.perX * x + edge.perY * y;
                highest |= value + std::max(edge.perX, 0) * Last + std::max(edge.perY, 0) * Last;
                lowest |= value + std::min(edge.perX, 0) * Last + std::min(edge.perY, 0) * Last;
            }
            float& farthest = tile.blockFarthest[(y >> BlockShift) * BlocksPerRow + (x >> BlockShift)];
            if (highest < 0 || large.depth.NearestIn(x, y) > farthest)
                continue;
            const bool isInBox = x >= box.left && x + Last < box.right && y >= box.top && y + Last < box.bottom;
            if (lowest < 0 || !isInBox)
            {
                DrawBlock<IsTextured, B, Fog, P, false>(tile, state, box, a, large, x, y);
                continue;
            }
            // Beside a texture's cost the edge tests do not matter: one loop for both is enough.
            DrawBlock<IsTextured, B, Fog, P, !IsTextured>(tile, state, box, a, large, x, y);
            if constexpr (B == Blending::Opaque || B == Blending::Blended)
                farthest = std::min(farthest, large.depth.FarthestIn(x, y));
        }
}

/// The edge from one corner to the next, and its function at the tile's first pixel. False where the whole tile lies
/// outside.
LANES_INLINE bool SetEdge(Edge& edge, double& atTile, const ScreenPosition& from, const ScreenPosition& to,
                          const TileView& tile)
{
    constexpr std::int64_t Limit = std::int64_t{1} << 30;
    const std::int64_t dx = std::int64_t{to.x} - from.x;
    const std::int64_t dy = std::int64_t{to.y} - from.y;
    const std::int64_t value =
        dx * (std::int64_t{tile.top} * SubPixels - from.y) - dy * (std::int64_t{tile.left} * SubPixels - from.x);
    const std::int64_t owned = dy < 0 || (dy == 0 && dx > 0) ? value : value - 1;
    const std::int64_t start = owned >> SubPixelShift;
    atTile = static_cast<double>(value);
    edge = {static_cast<std::int32_t>(-dy), static_cast<std::int32_t>(dx), static_cast<std::int32_t>(start)};
    if (start >= Limit)
        edge = {0, 0, static_cast<std::int32_t>(Limit)}; // the tile lies inside of it
    return start > -Limit;
}

template<bool IsTextured, Blending B, bool Fog, Interpolation P>
void SetUpAndDrawLarge(const TileView& tile, const DrawState& state, const PixelRect& box,
                       const ScreenPosition* const (&corners)[3], Attributes& a)
{
    const ScreenPosition& c0 = *corners[0];
    const ScreenPosition& c1 = *corners[1];
    const ScreenPosition& c2 = *corners[2];
    LargeTriangle large;
    double atTile[3];
    if (!SetEdge(large.edges[0], atTile[0], c1, c2, tile) || !SetEdge(large.edges[1], atTile[1], c2, c0, tile) ||
        !SetEdge(large.edges[2], atTile[2], c0, c1, tile))
        return;
    const std::int64_t area = (std::int64_t{c1.x} - c0.x) * (std::int64_t{c2.y} - c0.y) -
                              (std::int64_t{c1.y} - c0.y) * (std::int64_t{c2.x} - c0.x);
    const double inverseArea = 1.0 / static_cast<double>(area);
    const double perPixel = SubPixels * inverseArea;
    a.steps.secondPerX = static_cast<float>((c2.y - c0.y) * perPixel);
    a.steps.secondPerY = static_cast<float>((c0.x - c2.x) * perPixel);
    a.steps.thirdPerX = static_cast<float>((c0.y - c1.y) * perPixel);
    a.steps.thirdPerY = static_cast<float>((c1.x - c0.x) * perPixel);
    const double second = atTile[1] * inverseArea;
    const double third = atTile[2] * inverseArea;
    large.second = {static_cast<float>(second), a.steps.secondPerX, a.steps.secondPerY};
    large.third = {static_cast<float>(third), a.steps.thirdPerX, a.steps.thirdPerY};
    large.depth.plane = {static_cast<float>(a.depth.base + second * a.depth.toSecond + third * a.depth.toThird),
                         a.steps.secondPerX * a.depth.toSecond + a.steps.thirdPerX * a.depth.toThird,
                         a.steps.secondPerY * a.depth.toSecond + a.steps.thirdPerY * a.depth.toThird};
    large.depth.nearest = std::min(c0.depth, std::min(c1.depth, c2.depth));
    large.depth.farthest = std::max(c0.depth, std::max(c1.depth, c2.depth));
    DrawLarge<IsTextured, B, Fog, P>(tile, state, box, a, large);
}

/// A vector of records, from the first on. Lanes beyond the last repeat it.
struct RecordLanes
{
    const Record* record[LaneCount];
    const VertexBlocks* blocks[LaneCount];
    int count; ///< of lanes in use

    std::uint32_t Vertex(int lane, int corner) const { return record[lane]->vertex[corner] & ~Record::Local; }
    const ScreenPosition* Position(int lane, int corner) const
    {
        return blocks[lane]->positions.Data() + Vertex(lane, corner);
    }
};

/// Blocks of four numbers as lanes.
struct BlockLanes
{
    Floats value[4];

    /// `at(lane)` is a block's place.
    template<typename At>
    LANES_INLINE explicit BlockLanes(At at)
    {
        LoadQuads([&](int lane) LANES_LAMBDA { return reinterpret_cast<const float*>(at(lane)); }, value[0], value[1],
                  value[2], value[3]);
    }
};

/// Asks for what LoadRecords will read a vector later: the vertices of a tile lie all over the batch.
template<bool HasCoordinates>
LANES_INLINE void PrefetchRecords(const Batch& batch, const Primitives& primitives, const std::uint16_t* references,
                                  std::size_t count)
{
    const std::size_t most = std::min<std::size_t>(LaneCount, count);
    for (std::size_t i = 0; i < most; ++i)
    {
        const Record& record = primitives.records[references[i]];
        const VertexBlocks& blocks = BlocksOf(batch, primitives, record.vertex[0]);
        for (const std::uint32_t vertex : record.vertex)
        {
            const std::uint32_t number = vertex & ~Record::Local;
            __builtin_prefetch(blocks.positions.Data() + number);
            __builtin_prefetch(blocks.colors.Data() + number);
            if constexpr (HasCoordinates)
                __builtin_prefetch(blocks.coordinates.Data() + number);
        }
    }
}

LANES_INLINE RecordLanes LoadRecords(const Batch& batch, const Primitives& primitives, const std::uint16_t* references,
                                     std::size_t count)
{
    RecordLanes r;
    r.count = static_cast<int>(std::min<std::size_t>(LaneCount, count));
    for (int lane = 0; lane < LaneCount; ++lane)
    {
        const Record& record = primitives.records[references[std::min(lane, r.count - 1)]];
        r.record[lane] = &record;
        r.blocks[lane] = &BlocksOf(batch, primitives, record.vertex[0]);
    }
    return r;
}

struct CornerLanes
{
    Ints x, y;
    Floats depth, inverseW;
};

/// `at(lane)` is a position's place.
template<typename At>
LANES_INLINE CornerLanes LoadCorners(At at)
{
    const BlockLanes blocks{at};
    return {BitsOf(blocks.value[0]), BitsOf(blocks.value[1]), blocks.value[2], blocks.value[3]};
}

/// What follows from the corners. Where a triangle is not small the 32 bits of its edges overflow, and nobody uses
/// them.
void SetUpLanes(TriangleLanes& t, const RecordLanes& records, const TileView& tile, const PixelRect& limits)
{
    Ints x[3], y[3];
    for (int i = 0; i < 3; ++i)
    {
        const CornerLanes corner = LoadCorners([&](int lane) LANES_LAMBDA { return records.Position(lane, i); });
        x[i] = corner.x;
        y[i] = corner.y;
        Store(corner.depth, t.depth[i]);
        Store(corner.inverseW, t.inverseW[i]);
    }
    const Ints left = Least3(x);
    const Ints right = Greatest3(x);
    const Ints top = Least3(y);
    const Ints bottom = Greatest3(y);
    const Ints almostOne = Splat(SubPixels - 1);
    const Ints fromX = Greatest(ShiftedRight<SubPixelShift>(left + almostOne) - Splat(tile.left), Splat(limits.left));
    const Ints fromY = Greatest(ShiftedRight<SubPixelShift>(top + almostOne) - Splat(tile.top), Splat(limits.top));
    const Ints toX = Least(ShiftedRight<SubPixelShift>(right) + Splat(1 - tile.left), Splat(limits.right));
    const Ints toY = Least(ShiftedRight<SubPixelShift>(bottom) + Splat(1 - tile.top), Splat(limits.bottom));
    Store(fromX, t.left);
    Store(fromY, t.top);
    Store(ToFloats(fromX), t.firstX);
    Store(ToFloats(fromY), t.firstY);
    Store(toX, t.right);
    Store(toY, t.bottom);
    const Ints smallBox = Splat(SmallBox + 1);
    t.small = LaneBits(Both(IsLess(right - left, smallBox), IsLess(bottom - top, smallBox)));
    const Ints one = Splat(1);
    t.empty = LaneBits(Either(IsLess(toX, fromX + one), IsLess(toY, fromY + one)));
    t.wide = LaneBits(IsLess(Splat(ManyPixels - 1), (toX - fromX) * (toY - fromY)));

    const Ints area = (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]);
    const Floats inverseArea = Splat(1.0F) / ToFloats(area);
    Store(inverseArea * Splat(static_cast<float>(SubPixels)), t.step);
    const Ints firstX = ShiftedLeft<SubPixelShift>(fromX + Splat(tile.left));
    const Ints firstY = ShiftedLeft<SubPixelShift>(fromY + Splat(tile.top));
    for (int i = 0; i < 3; ++i)
    {
        const int from = (i + 1) % 3;
        const int to = (i + 2) % 3;
        const Ints dx = x[to] - x[from];
        const Ints dy = y[to] - y[from];
        const Ints value = dx * (firstY - y[from]) - dy * (firstX - x[from]);
        const Mask isTopOrLeft = Either(IsLess(dy, Splat(0)), Both(IsEqual(dy, Splat(0)), IsLess(Splat(0), dx)));
        const Ints start = ShiftedRight<SubPixelShift>(Choose(isTopOrLeft, value, value - Splat(1)));
        Store(start, t.start[i]);
        Store(Splat(0) - dy, t.perX[i]);
        Store(dx, t.perY[i]);
        if (i != 0)
            Store(ToFloats(value - ShiftedLeft<SubPixelShift>(start)) * inverseArea,
                  i == 1 ? t.restSecond : t.restThird);
    }
}

/// A triangle that is not small. Chooses the cheapest interpolation that is right.
template<bool IsTextured, Blending B, bool Fog>
LANES_INLINE void DrawAlone(const TileView& tile, const Batch& batch, const Primitives& primitives,
                            const DrawState& state, const RecordLanes& records, const TriangleLanes& t, int lane)
{
    Attributes a;
    const PixelRect box{t.left[lane], t.top[lane], t.right[lane], t.bottom[lane]};
    const ScreenPosition* const corners[3] = {records.Position(lane, 0), records.Position(lane, 1),
                                              records.Position(lane, 2)};
    SetAttributes<IsTextured, B, Fog>(a, batch, primitives, state, *records.record[lane], *corners[0], *corners[1],
                                      *corners[2]);
    if constexpr (IsTextured)
        SetUpAndDrawLarge<IsTextured, B, Fog, Interpolation::Perspective>(tile, state, box, corners, a);
    else if (const float range = Fog ? FullRange : a.color.Range(); range == 0)
        SetUpAndDrawLarge<IsTextured, B, Fog, Interpolation::Constant>(tile, state, box, corners, a);
    else if (IsNearlyFlat(corners[0]->inverseW, corners[1]->inverseW, corners[2]->inverseW, range))
        SetUpAndDrawLarge<IsTextured, B, Fog, Interpolation::Linear>(tile, state, box, corners, a);
    else
        SetUpAndDrawLarge<IsTextured, B, Fog, Interpolation::Perspective>(tile, state, box, corners, a);
}
