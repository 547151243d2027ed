// Triangles into a tile, by exact edge functions. Included inside a namespace, once.
//
// An edge function is a whole number of 1/256 by 1/256 pixels. Between pixels it changes by multiples of 256, so its
// low byte is the same for all pixels of a triangle: coverage needs only the rest, which fits 32 bits within a tile.
// The top-left rule is folded in: an edge that does not own its pixels starts one lower, and a pixel is covered when
// no edge function is negative.
//
// Triangles in a box of up to 16 pixels are drawn as masked rows, with weights from the exact edge functions: however
// thin the triangle is, they are right. Larger ones are drawn by blocks of 8 by 8 pixels, with weights linear in x and
// y: blocks outside are left out, those inside need no edge tests, and those behind everything drawn are hidden.

inline constexpr std::int32_t SmallBox = 16 * SubPixels;

/// An edge, opposite to the corner of its number; values are per tile.
struct Edge
{
    std::int32_t perX, perY; ///< for one pixel
    std::int32_t start;      ///< at the tile's first pixel
};

struct TriangleView
{
    const ScreenPosition* corner[3];
    const Record* record;
    PixelRect box; ///< the pixels to visit, in the tile
};

LANES_INLINE const VertexBlocks& BlocksOf(const Batch& batch, const Bins& bins, std::uint32_t vertex)
{
    return (vertex & Record::Local) != 0 ? bins.local : batch.vertices;
}

LANES_INLINE void SetColor(Attributes& to, const ColorBlock& a, const ColorBlock& b, const ColorBlock& c, float scale)
{
    to.red.Set(a.red * scale, b.red * scale, c.red * scale);
    to.green.Set(a.green * scale, b.green * scale, c.green * scale);
    to.blue.Set(a.blue * scale, b.blue * scale, c.blue * scale);
    to.alpha.Set(a.alpha, b.alpha, c.alpha);
}

/// All that varies over a primitive of three corners, which need not be different ones.
template<Surface S, Blending B, bool Fog>
LANES_INLINE void SetAttributes(Attributes& to, const Batch& batch, const Bins& bins, const DrawState& state,
                                const Record& record, const ScreenPosition& a, const ScreenPosition& b,
                                const ScreenPosition& c)
{
    const VertexBlocks& blocks = BlocksOf(batch, bins, record.vertex[0]);
    const std::uint32_t v[3] = {record.vertex[0] & ~Record::Local, record.vertex[1] & ~Record::Local,
                                record.vertex[2] & ~Record::Local};
    to.depth.Set(a.depth, b.depth, c.depth);
    to.inverseW.Set(a.inverseW, b.inverseW, c.inverseW);
    to.secondW = b.inverseW;
    to.thirdW = c.inverseW;
    constexpr float Scale = S == Surface::Plain ? 255.0F : 1.0F;
    const ColorBlock* faceColor = state.isFlat ? &batch.faces.colors[record.face] : nullptr;
    if (faceColor != nullptr)
        SetColor(to, *faceColor, *faceColor, *faceColor, Scale);
    else
        SetColor(to, blocks.colors[v[0]], blocks.colors[v[1]], blocks.colors[v[2]], Scale);
    if constexpr (S != Surface::Plain || Fog)
    {
        const CoordinateBlock& first = blocks.coordinates[v[0]];
        const CoordinateBlock& second = blocks.coordinates[v[1]];
        const CoordinateBlock& third = blocks.coordinates[v[2]];
        to.u.Set(first.u, second.u, third.u);
        to.v.Set(first.v, second.v, third.v);
        to.eyeDepth.Set(first.eyeDepth, second.eyeDepth, third.eyeDepth);
    }
    if constexpr (S != Surface::Plain)
    {
        const ColorBlock& first = state.isFlat ? batch.faces.highlights[record.face] : blocks.highlights[v[0]];
        const ColorBlock& second = state.isFlat ? first : blocks.highlights[v[1]];
        const ColorBlock& third = state.isFlat ? first : blocks.highlights[v[2]];
        to.highlightRed.Set(first.red * 255.0F, second.red * 255.0F, third.red * 255.0F);
        to.highlightGreen.Set(first.green * 255.0F, second.green * 255.0F, third.green * 255.0F);
        to.highlightBlue.Set(first.blue * 255.0F, second.blue * 255.0F, third.blue * 255.0F);
    }
}

/// Whether the corners' distances are so alike that interpolation on the screen is off by less than a quarter of a step
/// of 255: the error of a weight is at most a quarter of the relative difference.
LANES_INLINE bool IsNearlyFlat(float a, float b, float c)
{
    const float least = std::min(a, std::min(b, c));
    const float greatest = std::max(a, std::max(b, c));
    return greatest - least <= 0.0039F * least;
}

/// Tests, shades and stores a vector of pixels.
template<Surface S, Blending B, bool Fog, Interpolation P>
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
    mask = ShadePixels<S, B, Fog, P>(state, a, second, third, mask, below, rank, pixels);
    if constexpr (B != Blending::Veiled)
        Store(Choose(mask, depth, depthThere), tile.depths + pixel);
    Store(Choose(mask, pixels, below), tile.colors + pixel);
}

LANES_INLINE Mask LanesWithin(int x, int left, int right)
{
    const Ints place = LaneNumbers() + Splat(x);
    return Except(IsLess(place, Splat(right)), IsLess(place, Splat(left)));
}

template<Surface S, Blending B, bool Fog, Interpolation P>
void DrawSmall(const TileView& tile, const DrawState& state, const TriangleView& t, const Attributes& a,
               const Edge (&edges)[3], const float (&rest)[3], float inverseArea)
{
    const Floats step = Splat(static_cast<float>(SubPixels) * inverseArea);
    const Floats restSecond = Splat(rest[1] * inverseArea);
    const Floats restThird = Splat(rest[2] * inverseArea);
    const Ints lanes = LaneNumbers();
    const Ints along[3] = {lanes * Splat(edges[0].perX), lanes * Splat(edges[1].perX), lanes * Splat(edges[2].perX)};
    const int firstX = t.box.left & ~(LaneCount - 1);
    for (int x = firstX; x < t.box.right; x += LaneCount)
    {
        const Mask columns = LanesWithin(x, t.box.left, t.box.right);
        Ints value[3];
        for (int i = 0; i < 3; ++i)
            value[i] = along[i] + Splat(edges[i].start + edges[i].perX * x + edges[i].perY * t.box.top);
        for (int y = t.box.top; y < t.box.bottom; ++y)
        {
            const Mask mask = Except(columns, IsLess(value[0] | value[1] | value[2], Splat(0)));
            if (IsAny(mask))
            {
                const Floats second = ToFloats(value[1]) * step + restSecond;
                const Floats third = ToFloats(value[2]) * step + restThird;
                const Floats depth =
                    Least(At<Interpolation::Linear>(a.depth, {second, third, second}), Splat(FarthestDepth));
                DrawPixels<S, B, Fog, P>(tile, state, a, x, y, mask, depth, second, third);
            }
            for (int i = 0; i < 3; ++i)
                value[i] = value[i] + Splat(edges[i].perY);
        }
    }
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

template<Surface S, Blending B, bool Fog, Interpolation P, bool IsInside>
void DrawBlock(const TileView& tile, const DrawState& state, const TriangleView& t, const Attributes& a,
               const LargeTriangle& large, int left, int top)
{
    const Floats zero = Splat(0.0F);
    const Floats one = Splat(1.0F);
    const Floats lanes = ToFloats(LaneNumbers());
    const int firstY = IsInside ? top : std::max(top, t.box.top);
    const int lastY = IsInside ? top + BlockSize : std::min(top + BlockSize, t.box.bottom);
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
                mask = Except(LanesWithin(x, t.box.left, t.box.right), IsLess(value, Splat(0)));
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
            DrawPixels<S, B, Fog, P>(tile, state, a, x, y, mask, depth, second, third);
        }
}

template<Surface S, Blending B, bool Fog, Interpolation P>
void DrawLarge(const TileView& tile, const DrawState& state, const TriangleView& t, const Attributes& a,
               const LargeTriangle& large)
{
    constexpr int Last = BlockSize - 1;
    const int firstX = t.box.left & ~Last;
    const int firstY = t.box.top & ~Last;
    for (int y = firstY; y < t.box.bottom; y += BlockSize)
        for (int x = firstX; x < t.box.right; x += BlockSize)
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
            const bool isInBox = x >= t.box.left && x + Last < t.box.right && y >= t.box.top && y + Last < t.box.bottom;
            if (lowest < 0 || !isInBox)
            {
                DrawBlock<S, B, Fog, P, false>(tile, state, t, a, large, x, y);
                continue;
            }
            // Beside a texture's cost the edge tests do not matter: one loop for both is enough.
            DrawBlock<S, B, Fog, P, S == Surface::Plain>(tile, state, t, a, large, x, y);
            if constexpr (B == Blending::Opaque || B == Blending::Blended)
                farthest = std::min(farthest, large.depth.FarthestIn(x, y));
        }
}

/// The edge from one corner to the next, with the low byte of its function in `rest`. False where the whole tile lies
/// outside.
LANES_INLINE bool SetEdge(Edge& edge, float& rest, double& atTile, const ScreenPosition& from, const ScreenPosition& to,
                          const TileView& tile)
{
    constexpr std::int64_t Limit = std::int64_t{1} << 30;
    const std::int64_t dx = std::int64_t{to.x} - from.x;
    const std::int64_t dy = std::int64_t{to.y} - from.y;
    const std::int64_t value =
        dx * (std::int64_t{tile.top} * SubPixels - from.y) - dy * (std::int64_t{tile.left} * SubPixels - from.x);
    const std::int64_t owned = dy < 0 || (dy == 0 && dx > 0) ? value : value - 1;
    const std::int64_t start = owned >> SubPixelShift;
    rest = static_cast<float>(value - start * SubPixels);
    atTile = static_cast<double>(value);
    edge = {static_cast<std::int32_t>(-dy), static_cast<std::int32_t>(dx), static_cast<std::int32_t>(start)};
    if (start >= Limit)
        edge = {0, 0, static_cast<std::int32_t>(Limit)}; // the tile lies inside of it
    return start > -Limit;
}

/// The pixels of a triangle's box that the tile and the state let draw, in the tile.
LANES_INLINE PixelRect BoxOf(const TriangleView& t, const PixelRect& limits, const TileView& tile)
{
    const ScreenPosition* const(&c)[3] = t.corner;
    const int left = std::min(c[0]->x, std::min(c[1]->x, c[2]->x));
    const int right = std::max(c[0]->x, std::max(c[1]->x, c[2]->x));
    const int top = std::min(c[0]->y, std::min(c[1]->y, c[2]->y));
    const int bottom = std::max(c[0]->y, std::max(c[1]->y, c[2]->y));
    return Intersection({((left + SubPixels - 1) >> SubPixelShift) - tile.left,
                         ((top + SubPixels - 1) >> SubPixelShift) - tile.top, (right >> SubPixelShift) + 1 - tile.left,
                         (bottom >> SubPixelShift) + 1 - tile.top},
                        limits);
}

template<Surface S, Blending B, bool Fog, Interpolation P>
void DrawOne(const TileView& tile, const DrawState& state, const TriangleView& t, Attributes& a)
{
    const ScreenPosition& c0 = *t.corner[0];
    const ScreenPosition& c1 = *t.corner[1];
    const ScreenPosition& c2 = *t.corner[2];
    LargeTriangle large;
    float rest[3];
    double atTile[3];
    if (!SetEdge(large.edges[0], rest[0], atTile[0], c1, c2, tile) ||
        !SetEdge(large.edges[1], rest[1], atTile[1], c2, c0, tile) ||
        !SetEdge(large.edges[2], rest[2], atTile[2], c0, c1, tile))
        return;
    const std::int64_t area = (std::int64_t{c1.x} - c0.x) * (std::int64_t{c2.y} - c0.y) -
                              (std::int64_t{c1.y} - c0.y) * (std::int64_t{c2.x} - c0.x);
    const double inverseArea = 1.0 / static_cast<double>(area);
    const double perPixel = SubPixels * inverseArea;
    a.secondPerX = static_cast<float>((c2.y - c0.y) * perPixel);
    a.secondPerY = static_cast<float>((c0.x - c2.x) * perPixel);
    a.thirdPerX = static_cast<float>((c0.y - c1.y) * perPixel);
    a.thirdPerY = static_cast<float>((c1.x - c0.x) * perPixel);
    const auto [left, right] = std::minmax({c0.x, c1.x, c2.x});
    const auto [top, bottom] = std::minmax({c0.y, c1.y, c2.y});
    if (right - left <= SmallBox && bottom - top <= SmallBox)
        return DrawSmall<S, B, Fog, P>(tile, state, t, a, large.edges, rest, static_cast<float>(inverseArea));
    const double second = atTile[1] * inverseArea;
    const double third = atTile[2] * inverseArea;
    large.second = {static_cast<float>(second), a.secondPerX, a.secondPerY};
    large.third = {static_cast<float>(third), a.thirdPerX, a.thirdPerY};
    large.depth.plane = {static_cast<float>(a.depth.base + second * a.depth.toSecond + third * a.depth.toThird),
                         a.secondPerX * a.depth.toSecond + a.thirdPerX * a.depth.toThird,
                         a.secondPerY * a.depth.toSecond + a.thirdPerY * a.depth.toThird};
    large.depth.nearest = std::min(c0.depth, std::min(c1.depth, c2.depth));
    large.depth.farthest = std::max(c0.depth, std::max(c1.depth, c2.depth));
    DrawLarge<S, B, Fog, P>(tile, state, t, a, large);
}

template<Surface S, Blending B, bool Fog>
void DrawTriangles(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state,
                   const std::uint16_t* references, std::size_t count)
{
    const PixelRect& area = state.area;
    const PixelRect limits =
        Intersection({area.left - tile.left, area.top - tile.top, area.right - tile.left, area.bottom - tile.top},
                     {0, 0, TileSize, TileSize});
    for (std::size_t i = 0; i < count; ++i)
    {
        const Record& record = bins.records[references[i]];
        const ScreenPosition* positions = BlocksOf(batch, bins, record.vertex[0]).positions.Data();
        TriangleView t;
        t.record = &record;
        for (int corner = 0; corner < 3; ++corner)
            t.corner[corner] = positions + (record.vertex[corner] & ~Record::Local);
        t.box = BoxOf(t, limits, tile);
        if (t.box.IsEmpty())
            continue;
        const ScreenPosition& c0 = *t.corner[0];
        const ScreenPosition& c1 = *t.corner[1];
        const ScreenPosition& c2 = *t.corner[2];
        Attributes a;
        SetAttributes<S, B, Fog>(a, batch, bins, state, record, c0, c1, c2);
        if constexpr (S == Surface::Plain)
        {
            if (state.isFlat && !Fog)
                DrawOne<S, B, Fog, Interpolation::Constant>(tile, state, t, a);
            else if (IsNearlyFlat(c0.inverseW, c1.inverseW, c2.inverseW))
                DrawOne<S, B, Fog, Interpolation::Linear>(tile, state, t, a);
            else
                DrawOne<S, B, Fog, Interpolation::Perspective>(tile, state, t, a);
        }
        else
            DrawOne<S, B, Fog, Interpolation::Perspective>(tile, state, t, a);
    }
}
