// A tile's stretches of triangles, a vector at a time, and which way each is drawn. Included inside a namespace, once.

/// Computes the pixels of the triangles whose bits are set. Answers how many a triangle has at most.
LANES_INLINE int SetUpTiny(const Batch& batch, const DrawState& state, const RecordLanes& records,
                           const TriangleLanes& t, TinyPixels& pixels)
{
    alignas(64) ColorBlock colors[3][LaneCount];
    int most = 0;
    for (int lane = 0; lane < LaneCount; ++lane)
    {
        const Record& record = *records.record[lane];
        for (int corner = 0; corner < 3; ++corner)
            colors[corner][lane] = state.isFlat ? batch.faces.colors[record.face]
                                                : records.blocks[lane]->colors[record.vertex[corner] & ~Record::Local];
        most = std::max(most, (t.right[lane] - t.left[lane]) * (t.bottom[lane] - t.top[lane]));
    }
    most = std::min(most, MostTinyPixels);
    ShadeTiny(t, ColorLanes{colors}, most, pixels);
    return most;
}

/// Triangles without a texture.
template<Blending B, bool Fog>
class PlainRun
{
public:
    PlainRun(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state)
        : tile_(tile), batch_(batch), bins_(bins), state_(state)
    {
    }

    LANES_INLINE void Draw(const RecordLanes& records, const TriangleLanes& t)
    {
        std::uint32_t tiny = 0;
        int mostPixels = 0;
        if constexpr (B == Blending::Opaque && !Fog)
        {
            tiny = FindTiny(t, state_.isFlat);
            if (tiny != 0)
                mostPixels = SetUpTiny(batch_, state_, records, t, pixels_);
        }
        for (int lane = 0; lane < records.count; ++lane)
        {
            if ((tiny >> lane & 1) != 0)
                StoreTiny(tile_, pixels_, lane, mostPixels);
            else if (!t.IsEmpty(lane))
                DrawAlone<false, B, Fog>(tile_, batch_, bins_, state_, *records.record[lane], t, lane);
        }
    }

private:
    const TileView& tile_;
    const Batch& batch_;
    const Bins& bins_;
    const DrawState& state_;
    TinyPixels pixels_;
};

template<Blending B, bool Fog>
class TexturedRun
{
public:
    TexturedRun(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state)
        : tile_(tile), batch_(batch), bins_(bins), state_(state)
    {
    }

    LANES_INLINE void Draw(const RecordLanes& records, const TriangleLanes& t)
    {
        if (IsAny(IsLess(Splat(0), Load(t.isSmall))))
            FillTable<Fog>(table_, batch_, state_, records, t);
        for (int lane = 0; lane < records.count; ++lane)
        {
            if (t.IsEmpty(lane))
                continue;
            const bool isSmall = t.isSmall[lane] != 0;
            if (isSmall)
                CollectSmall<B>(tile_, t, lane, fragments_);
            if (!isSmall || fragments_.count >= Fragments::Enough)
                ShadeFragments<B, Fog>(tile_, state_, table_, fragments_);
            if (!isSmall)
                DrawAlone<true, B, Fog>(tile_, batch_, bins_, state_, *records.record[lane], t, lane);
        }
        ShadeFragments<B, Fog>(tile_, state_, table_, fragments_);
    }

private:
    const TileView& tile_;
    const Batch& batch_;
    const Bins& bins_;
    const DrawState& state_;
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
    std::conditional_t<IsTextured, TexturedRun<B, Fog>, PlainRun<B, Fog>> run{tile, batch, bins, state};
    TriangleLanes t;
    for (std::size_t first = 0; first < count; first += LaneCount)
    {
        const RecordLanes records = LoadRecords(batch, bins, references + first, count - first, t);
        SetUpLanes(t, tile, limits);
        run.Draw(records, t);
    }
}
