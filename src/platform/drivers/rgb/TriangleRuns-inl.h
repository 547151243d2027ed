// A tile's stretches of triangles, a vector at a time: small ones as fragments, large ones one by one. Included inside
// a namespace, once.

template<bool IsTextured, Blending B, bool Fog>
class TriangleRun
{
public:
    TriangleRun(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state)
        : tile_(tile), batch_(batch), bins_(bins), state_(state)
    {
    }

    LANES_INLINE void Draw(const RecordLanes& records, const TriangleLanes& t)
    {
        int rows = 0;
        for (int lane = 0; lane < records.count; ++lane)
            if (t.isSmall[lane] != 0)
                rows = std::max(rows, t.bottom[lane] - t.top[lane]);
        if (rows > 0)
        {
            spans_.Find(t, rows);
            isLinear_ = FillTable<IsTextured, Fog>(table_, batch_, state_, records, t);
        }
        for (int lane = 0; lane < records.count; ++lane)
        {
            if (t.IsEmpty(lane))
                continue;
            if (t.isSmall[lane] != 0)
            {
                fragments_.Add(t, spans_, lane);
                if (fragments_.count >= Fragments::Enough)
                    DrawListed();
                continue;
            }
            DrawListed();
            DrawLargeOne<IsTextured, B, Fog>(tile_, batch_, bins_, state_, *records.record[lane], t, lane);
        }
        DrawListed();
    }

private:
    LANES_INLINE void DrawListed()
    {
        if (fragments_.count == 0)
            return;
        if constexpr (IsTextured)
            DrawFragments<true, B, Fog, Interpolation::Perspective>(tile_, state_, table_, fragments_);
        else if (isLinear_)
            DrawFragments<false, B, Fog, Interpolation::Linear>(tile_, state_, table_, fragments_);
        else
            DrawFragments<false, B, Fog, Interpolation::Mixed>(tile_, state_, table_, fragments_);
    }

    const TileView& tile_;
    const Batch& batch_;
    const Bins& bins_;
    const DrawState& state_;
    bool isLinear_ = false;
    Spans spans_;
    FragmentTable table_;
    Fragments fragments_;
};

template<bool IsTextured, Blending B, bool Fog>
void DrawTriangles(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state,
                   const std::uint16_t* references, std::size_t count)
{
    const PixelRect& area = state.area;
    const PixelRect limits =
        Intersection({area.left - tile.left, area.top - tile.top, area.right - tile.left, area.bottom - tile.top},
                     {0, 0, TileSize, TileSize});
    TriangleRun<IsTextured, B, Fog> run{tile, batch, bins, state};
    TriangleLanes t;
    for (std::size_t first = 0; first < count; first += LaneCount)
    {
        const RecordLanes records = LoadRecords(batch, bins, references + first, count - first, t);
        SetUpLanes(t, tile, limits);
        run.Draw(records, t);
    }
}
