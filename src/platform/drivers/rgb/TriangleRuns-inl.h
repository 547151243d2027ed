// A tile's stretches of triangles, a vector at a time: small ones in rows or as fragments, others one by one. Included
// inside a namespace, once.

template<bool IsTextured, Blending B, bool Fog>
class TriangleRun
{
public:
    TriangleRun(const TileView& tile, const Batch& batch, const Primitives& primitives, const DrawState& state)
        : tile_(tile), batch_(batch), primitives_(primitives), state_(state)
    {
    }

    LANES_INLINE void Draw(const RecordLanes& records, const TriangleLanes& t)
    {
        const std::uint32_t drawn = ((1U << records.count) - 1) & ~t.empty;
        const std::uint32_t small = drawn & t.small;
        std::uint32_t planes = 0;
        if constexpr (HasPlanes)
            if (small != 0)
                planes = small & planes_.Fill({&VertexBlocks::colors, FullRange, batch_, state_, records}, t);
        const std::uint32_t rows = planes & t.wide;
        const std::uint32_t listed = small & ~rows;
        if (listed != 0)
            spans_.Find(t, MostRows(t, listed));
        if ((small & ~planes) != 0)
            FillTable<IsTextured, Fog>(table_, batch_, state_, records, t);
        for (std::uint32_t left = drawn; left != 0; left &= left - 1)
        {
            const int lane = std::countr_zero(left);
            const std::uint32_t bit = 1U << lane;
            if ((listed & bit) != 0)
            {
                List(t, lane, (planes & bit) != 0);
                continue;
            }
            DrawListed(t);
            if constexpr (HasPlanes)
                if ((rows & bit) != 0)
                {
                    DrawRows<B>(tile_, t, planes_, lane);
                    continue;
                }
            DrawAlone<IsTextured, B, Fog>(tile_, batch_, primitives_, state_, records, t, lane);
        }
        DrawListed(t);
    }

private:
    static constexpr bool HasPlanes = !IsTextured && !Fog; ///< where colors may be linear on the screen

    LANES_INLINE static int MostRows(const TriangleLanes& t, std::uint32_t lanes)
    {
        int rows = 0;
        for (; lanes != 0; lanes &= lanes - 1)
        {
            const int lane = std::countr_zero(lanes);
            rows = std::max(rows, t.bottom[lane] - t.top[lane]);
        }
        return rows;
    }

    LANES_INLINE void List(const TriangleLanes& t, int lane, bool isPlane)
    {
        if (isPlane != arePlanes_ || fragments_.count >= Fragments::Enough)
            DrawListed(t);
        arePlanes_ = isPlane;
        fragments_.Add(t, spans_, lane);
    }

    LANES_INLINE void DrawListed(const TriangleLanes& t)
    {
        if (fragments_.count == 0)
            return;
        if constexpr (HasPlanes)
            if (arePlanes_)
                return DrawFragments<B>(tile_, t, planes_, fragments_);
        DrawFragments<IsTextured, B, Fog>(tile_, state_, t, table_, fragments_);
    }

    const TileView& tile_;
    const Batch& batch_;
    const Primitives& primitives_;
    const DrawState& state_;
    bool arePlanes_ = false; ///< what is listed
    Spans spans_;
    PlaneTable planes_;
    FragmentTable table_;
    Fragments fragments_;
};

template<bool IsTextured, Blending B, bool Fog>
void DrawTriangles(const TileView& tile, const Batch& batch, const Primitives& primitives, const DrawState& state,
                   const std::uint16_t* references, std::size_t count)
{
    const PixelRect limits = LimitsIn(tile, state);
    TriangleRun<IsTextured, B, Fog> run{tile, batch, primitives, state};
    TriangleLanes t;
    for (std::size_t first = 0; first < count; first += LaneCount)
    {
        const RecordLanes records = LoadRecords(batch, primitives, references + first, count - first);
        if (first + LaneCount < count)
            PrefetchRecords<IsTextured || Fog>(batch, primitives, references + first + LaneCount,
                                               count - first - LaneCount);
        SetUpLanes(t, records, tile, limits);
        run.Draw(records, t);
    }
}
