// Small triangles whose colors are linear on the screen: depth and every channel are planes, set up for a vector of
// triangles at once. Included inside a namespace, once.

/// Colors or highlights of all corners of a vector of triangles.
struct CornerColors
{
    AttributeLanes channel[4];

    /// Red, green and blue are multiplied by `scale`.
    LANES_INLINE CornerColors(Buffer<ColorBlock> VertexBlocks::*which, float scale, const Batch& batch,
                              const DrawState& state, const RecordLanes& records)
    {
        const ColorBlock* faces = (batch.faces.*which).Data();
        const auto corner = [&](int number) LANES_LAMBDA
        {
            if (state.isFlat)
                return BlockLanes{[&](int lane) LANES_LAMBDA { return faces + records.record[lane]->face; }};
            return BlockLanes{[&](int lane) LANES_LAMBDA
                              { return (records.blocks[lane]->*which).Data() + records.Vertex(lane, number); }};
        };
        const BlockLanes corners[3] = {corner(0), corner(1), corner(2)};
        for (int i = 0; i < 4; ++i)
        {
            const Floats scales = Splat(i == 3 ? 1.0F : scale);
            channel[i].Set(corners[0].value[i] * scales, corners[1].value[i] * scales, corners[2].value[i] * scales);
        }
    }
};

/// The weights of corners 1 and 2 of a vector of small triangles, over the tile.
struct WeightPlanes
{
    /// Weights may change by this much a pixel. Steeper triangles are thinner than an eighth of a pixel, and rounding
    /// would show in their planes.
    static constexpr float Steepest = 128.0F;

    struct Plane
    {
        Floats start, perX, perY;
    };
    Plane second, third;

    LANES_INLINE explicit WeightPlanes(const TriangleLanes& t)
    {
        const Floats step = Load(t.step);
        const auto plane = [&](int edge, const float* rest) LANES_LAMBDA
        {
            return Plane{ToFloats(Load(t.start[edge])) * step + Load(rest), ToFloats(Load(t.perX[edge])) * step,
                         ToFloats(Load(t.perY[edge])) * step};
        };
        second = plane(1, t.restSecond);
        third = plane(2, t.restThird);
    }

    LANES_INLINE Mask IsGentle(const TriangleLanes& t) const
    {
        const Floats width = ToFloats(Load(t.right) - Load(t.left));
        const Floats height = ToFloats(Load(t.bottom) - Load(t.top));
        const Floats steepest = Greatest(Absolute(second.perX) * width + Absolute(second.perY) * height,
                                         Absolute(third.perX) * width + Absolute(third.perY) * height);
        return IsLessOrEqual(steepest, Splat(Steepest));
    }
    LANES_INLINE Plane Of(const AttributeLanes& a) const
    {
        return {a.base + second.start * a.toSecond + third.start * a.toThird,
                second.perX * a.toSecond + third.perX * a.toThird, second.perY * a.toSecond + third.perY * a.toThird};
    }
};

/// What a vector of triangles interpolates: at the first pixel to visit, and how much more the next pixels to the right
/// and down have. Channels are 0..255, alpha 0..1.
struct PlaneTable
{
    enum Row
    {
        Depth,
        Red,
        Green,
        Blue,
        Alpha,
        Count
    };

    alignas(64) float start[Count][LaneCount], perX[Count][LaneCount], perY[Count][LaneCount];

    /// Answers the lanes whose planes are right. Off the screen's plane the error of a weight is at most a quarter of
    /// the relative difference of the corners' distances, and counts as much as the colors differ: what is left is
    /// below a quarter of a step of 255.
    LANES_INLINE std::uint32_t Fill(const CornerColors& colors, const TriangleLanes& t)
    {
        const WeightPlanes weights{t};
        Floats range = Splat(0.0F);
        for (int channel = 0; channel < 4; ++channel)
        {
            const AttributeLanes& color = colors.channel[channel];
            const Floats change = Greatest(Absolute(color.toSecond), Absolute(color.toThird));
            range = Greatest(range, channel == 3 ? change * Splat(FullRange) : change);
            Set(Red + channel, weights.Of(color));
        }
        AttributeLanes depth;
        depth.Set(Load(t.depth[0]), Load(t.depth[1]), Load(t.depth[2]));
        Set(Depth, weights.Of(depth));
        const Floats w[3] = {Load(t.inverseW[0]), Load(t.inverseW[1]), Load(t.inverseW[2])};
        const Floats least = Least(w[0], Least(w[1], w[2]));
        const Floats greatest = Greatest(w[0], Greatest(w[1], w[2]));
        return LaneBits(Both(IsLessOrEqual((greatest - least) * range, least), weights.IsGentle(t)));
    }

    LANES_INLINE void Set(int row, const WeightPlanes::Plane& plane)
    {
        Store(plane.start, start[row]);
        Store(plane.perX, perX[row]);
        Store(plane.perY, perY[row]);
    }
};

/// A vector of pixels that goes down row by row.
struct PlaneRow
{
    Floats value[PlaneTable::Count];
    Floats perY[PlaneTable::Count];

    template<int Count>
    LANES_INLINE void Start(const PlaneTable& table, int lane, Floats x)
    {
        for (int i = 0; i < Count; ++i)
        {
            perY[i] = Splat(table.perY[i][lane]);
            value[i] = Splat(table.start[i][lane]) + Splat(table.perX[i][lane]) * x;
        }
    }
    template<int Count>
    LANES_INLINE void Step()
    {
        for (int i = 0; i < Count; ++i)
            value[i] = value[i] + perY[i];
    }
    LANES_INLINE Floats Depth() const { return Least(value[PlaneTable::Depth], Splat(FarthestDepth)); }
    LANES_INLINE ColorLanes Color() const
    {
        return {value[PlaneTable::Red], value[PlaneTable::Green], value[PlaneTable::Blue], value[PlaneTable::Alpha]};
    }
};

/// Tests and stores a vector of pixels of one row.
template<Blending B>
LANES_INLINE void DrawRow(const TileView& tile, const PlaneRow& row, int x, int y, Mask mask)
{
    const int pixel = y * TileSize + x;
    const Floats depth = row.Depth();
    const Floats depthThere = Load(tile.depths + pixel);
    mask = Both(mask, IsLessOrEqual(depth, depthThere));
    if (!IsAny(mask))
        return;
    const Ints below = Load(tile.colors + pixel);
    Floats rank = depth;
    if constexpr (B == Blending::Stippled)
        rank = Load(StippleRows[y & 3] + (x & 3));
    Ints pixels = below;
    mask = Compose<B>(row.Color(), mask, below, rank, pixels);
    if constexpr (B != Blending::Veiled)
        Store(Choose(mask, depth, depthThere), tile.depths + pixel);
    Store(Choose(mask, pixels, below), tile.colors + pixel);
}

/// A small triangle in masked rows.
template<Blending B>
void DrawRows(const TileView& tile, const TriangleLanes& t, const PlaneTable& planes, int lane)
{
    constexpr int Count = B == Blending::Opaque ? PlaneTable::Alpha : PlaneTable::Count;
    const int top = t.top[lane];
    const int bottom = t.bottom[lane];
    const int right = t.right[lane];
    int left = t.left[lane];
    while (left < right)
    {
        const int x = std::min(left, TileSize - LaneCount); // no vector may reach beyond the tile
        const Ints place = LaneNumbers() + Splat(x - t.left[lane]);
        PlaneRow row;
        row.Start<Count>(planes, lane, ToFloats(place));
        Ints value[3], perY[3];
        for (int i = 0; i < 3; ++i)
        {
            perY[i] = Splat(t.perY[i][lane]);
            value[i] = place * Splat(t.perX[i][lane]) + Splat(t.start[i][lane]);
        }
        const Mask columns = LanesWithin(x, left, right);
        for (int y = top; y < bottom; ++y)
        {
            const Mask mask = Except(columns, IsLess(value[0] | value[1] | value[2], Splat(0)));
            DrawRow<B>(tile, row, x, y, mask);
            row.Step<Count>();
            for (int i = 0; i < 3; ++i)
                value[i] = value[i] + perY[i];
        }
        left = x + LaneCount;
    }
}
