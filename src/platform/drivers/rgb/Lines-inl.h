// Lines and points into a tile: exact stepping, shaded a vector of pixels at once. Included inside a namespace, once.
//
// Pixels are listed over several primitives, in order of submission, and leave the vectors in that order.

/// Pixels of several lines, and for each number that they need of their line a row with a place for each line.
struct LinePixels
{
    static constexpr int MostLines = LaneCount;
    static constexpr int Room = MostLines * TileSize + 2 * LaneCount;

    enum Row
    {
        // Attributes take two rows.
        Depth,
        InverseW = Depth + 2,
        SecondW = InverseW + 2,
        Length, ///< along the major axis
        EyeDepth,
        Colors = EyeDepth + 2,
        RowCount = Colors + 4 * 2,
    };

    alignas(64) float rows[RowCount][LaneCount];
    // Of what the rows are made.
    alignas(64) ScreenPosition ends[2][LaneCount];
    alignas(64) ColorBlock colors[2][LaneCount];
    int lineCount = 0;
    int count = 0;
    std::int32_t pixel[Room];   ///< in the tile
    std::int32_t line[Room];    ///< its lane
    std::int32_t covered[Room]; ///< from the line's start along its major axis, 1/256 pixel

    /// The next line's first pixels in the lists are its.
    LANES_INLINE void AddListed(int pixels)
    {
        for (int i = 0; i < pixels; i += LaneCount)
            Store(Splat(lineCount), line + count + i);
        count += pixels;
    }
    LANES_INLINE void Set(int row, Floats first, Floats second)
    {
        Store(first, rows[row]);
        Store(second - first, rows[row + 1]);
    }
    LANES_INLINE void FillRows()
    {
        const CornerLanes corners[2] = {LoadCorners([&](int lane) LANES_LAMBDA { return ends[0] + lane; }),
                                        LoadCorners([&](int lane) LANES_LAMBDA { return ends[1] + lane; })};
        Set(Depth, corners[0].depth, corners[1].depth);
        Set(InverseW, corners[0].inverseW, corners[1].inverseW);
        Store(corners[1].inverseW, rows[SecondW]);
        const BlockLanes from{[&](int lane) LANES_LAMBDA { return colors[0] + lane; }};
        const BlockLanes to{[&](int lane) LANES_LAMBDA { return colors[1] + lane; }};
        for (int i = 0; i < 4; ++i)
        {
            const Floats scale = Splat(i == 3 ? 1.0F : FullRange);
            Set(Colors + 2 * i, from.value[i] * scale, to.value[i] * scale);
        }
    }
    LANES_INLINE void Pad()
    {
        Store(Splat(0), pixel + count);
        Store(Splat(0), line + count);
        Store(Splat(0), covered + count);
    }
};

/// What shading reads of lines: corner 1 is the end, corner 2 counts for nothing.
class LineValues
{
public:
    AttributeLanes inverseW, eyeDepth, u, v;
    Floats secondW, thirdW;

    LANES_INLINE LineValues(const LinePixels& from, Ints lines) : from_(from), order_(LaneOrderOf(lines))
    {
        inverseW = Attribute(LinePixels::InverseW);
        eyeDepth = Attribute(LinePixels::EyeDepth);
        u = v = eyeDepth; // nobody's
        secondW = Row(LinePixels::SecondW);
        thirdW = Splat(0.0F);
    }
    LANES_INLINE Floats Row(int row) const { return ByLane(from_.rows[row], order_); }
    LANES_INLINE AttributeLanes Attribute(int row) const { return {Row(row), Row(row + 1), Splat(0.0F)}; }
    LANES_INLINE AttributeLanes Color(int channel) const { return Attribute(LinePixels::Colors + 2 * channel); }

private:
    const LinePixels& from_;
    LaneOrder order_;
};

/// Shades and stores what was listed, and empties the list.
template<Blending B, bool Fog>
void DrawLinePixels(const TileView& tile, const DrawState& state, LinePixels& list)
{
    list.Pad();
    list.FillRows();
    for (int first = 0, count = 0; first < list.count; first += count)
    {
        count = std::min(LaneCount, list.count - first);
        if constexpr (B == Blending::Blended)
            count = CountDistinct(list.pixel + first, list.line + first, count);
        const Ints pixel = Load(list.pixel + first);
        const LineValues values{list, Load(list.line + first)};
        const Floats zero = Splat(0.0F);
        const Floats along = ToFloats(Load(list.covered + first)) / values.Row(LinePixels::Length);
        Floats depth =
            Least(values.Row(LinePixels::Depth) + along * values.Row(LinePixels::Depth + 1), Splat(FarthestDepth));
        Mask mask = IsLessOrEqual(depth, Gather(tile.depths, pixel));
        if (!IsAny(mask))
            continue;
        const Ints below = B == Blending::Blended ? Gather(tile.colors, pixel) : pixel;
        const Floats rank = B == Blending::Stippled ? StippleRankOf(pixel) : zero;
        Ints shaded = below;
        mask = ShadePixels<false, B, Fog, Interpolation::Perspective>(state, values, along, zero, mask, below, rank,
                                                                      shaded);
        if constexpr (B == Blending::Stippled)
            depth = Choose(mask, depth, Splat(NeverDrawn));
        StoreFragments<true>(tile, list.pixel + first, count, depth, shaded);
    }
    list.count = list.lineCount = 0;
}

template<typename Whole>
inline Whole FloorDivided(Whole dividend, Whole divisor)
{
    const Whole quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

LANES_INLINE void ListPoint(const TileView& tile, const ScreenPosition& at, const PixelRect& limits, LinePixels& list)
{
    const int x = ((at.x + SubPixels / 2) >> SubPixelShift) - tile.left;
    const int y = ((at.y + SubPixels / 2) >> SubPixelShift) - tile.top;
    list.rows[LinePixels::Length][list.lineCount] = 1.0F;
    if (x >= limits.left && x < limits.right && y >= limits.top && y < limits.bottom)
    {
        list.pixel[list.count] = y * TileSize + x;
        list.covered[list.count] = 0;
        list.AddListed(1);
    }
}

/// `Whole`: 32 bits hold everything about a line of up to 64 pixels, since places count from the tile.
template<typename Whole>
LANES_INLINE void ListLine(const TileView& tile, const ScreenPosition& start, const ScreenPosition& end,
                           const PixelRect& limits, LinePixels& list)
{
    const Whole startX = Whole{start.x} - tile.left * SubPixels;
    const Whole startY = Whole{start.y} - tile.top * SubPixels;
    const Whole dx = Whole{end.x} - start.x;
    const Whole dy = Whole{end.y} - start.y;
    const bool isXMajor = std::abs(dx) >= std::abs(dy);
    const Whole from = isXMajor ? startX : startY;
    const Whole length = isXMajor ? dx : dy;
    const Whole rise = isXMajor ? dy : dx;
    const Whole first = (std::min(from, from + length) + SubPixels - 1) >> SubPixelShift;
    const Whole last = (std::max(from, from + length) + SubPixels - 1) >> SubPixelShift;
    if (first == last)
        return ListPoint(tile, start, limits, list);
    list.rows[LinePixels::Length][list.lineCount] = static_cast<float>(length);
    const auto low = static_cast<int>(std::max<Whole>(first, isXMajor ? limits.left : limits.top));
    const auto high = static_cast<int>(std::min<Whole>(last, isXMajor ? limits.right : limits.bottom));
    if (low >= high)
        return;
    const int minorLow = isXMajor ? limits.top : limits.left;
    const int minorHigh = isXMajor ? limits.bottom : limits.right;
    // minor = floor((numerator at low + step * (m - low)) / divisor), carried on as quotient and remainder.
    const Whole divisor = std::abs(length) * SubPixels;
    const Whole direction = length < 0 ? -rise : rise;
    const Whole numerator =
        ((isXMajor ? startY : startX) + SubPixels / 2) * std::abs(length) + direction * (low * SubPixels - from);
    Whole minor = FloorDivided(numerator, divisor);
    Whole remainder = numerator - minor * divisor;
    // The minor axis takes at most one whole step for each of the major one's.
    const Whole wholeStep = direction < 0 ? -1 : direction == std::abs(length) ? 1 : 0;
    const Whole restStep = direction * SubPixels - wholeStep * divisor;
    const int majorPixel = isXMajor ? 1 : TileSize;
    const int minorPixel = isXMajor ? TileSize : 1;
    const auto minorCount = static_cast<std::uint32_t>(minorHigh - minorLow);
    std::int32_t* const pixel = list.pixel + list.count;
    std::int32_t* const covered = list.covered + list.count;
    int across = static_cast<int>(minor);
    int at = low * majorPixel + across * minorPixel;
    auto distance = static_cast<std::int32_t>(low * SubPixels - from);
    int listed = 0;
    for (int major = low; major < high; ++major)
    {
        // Without a branch: what is not within the limits is written over.
        pixel[listed] = at;
        covered[listed] = distance;
        listed += static_cast<std::uint32_t>(across - minorLow) < minorCount ? 1 : 0;
        remainder += restStep;
        const bool carries = remainder >= divisor;
        remainder -= carries ? divisor : 0;
        const int step = static_cast<int>(wholeStep) + (carries ? 1 : 0);
        across += step;
        at += majorPixel + step * minorPixel;
        distance += SubPixels;
    }
    list.AddListed(listed);
}

/// What the pixels of the next line interpolate.
template<bool Fog>
LANES_INLINE void SetLine(LinePixels& list, const Batch& batch, const VertexBlocks& blocks, const DrawState& state,
                          const Record& record, const ScreenPosition& start, const ScreenPosition& end)
{
    const std::uint32_t a = record.vertex[0] & ~Record::Local;
    const std::uint32_t b = record.vertex[1] & ~Record::Local;
    list.ends[0][list.lineCount] = start;
    list.ends[1][list.lineCount] = end;
    list.colors[0][list.lineCount] = state.isFlat ? batch.faces.colors[record.face] : blocks.colors[a];
    list.colors[1][list.lineCount] = state.isFlat ? batch.faces.colors[record.face] : blocks.colors[b];
    if constexpr (Fog)
    {
        const float eyeDepth = blocks.coordinates[a].eyeDepth;
        list.rows[LinePixels::EyeDepth][list.lineCount] = eyeDepth;
        list.rows[LinePixels::EyeDepth + 1][list.lineCount] = blocks.coordinates[b].eyeDepth - eyeDepth;
    }
}

template<Blending B, bool Fog>
void DrawLines(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state,
               const std::uint16_t* references, std::size_t count)
{
    constexpr std::int32_t Short = TileSize * SubPixels;
    const PixelRect& area = state.area;
    const PixelRect limits =
        Intersection({area.left - tile.left, area.top - tile.top, area.right - tile.left, area.bottom - tile.top},
                     {0, 0, TileSize, TileSize});
    LinePixels list;
    std::fill_n(list.rows[0], LinePixels::RowCount * LaneCount, 0.0F);
    std::fill_n(list.ends[0], 2 * LaneCount, ScreenPosition{});
    std::fill_n(list.colors[0], 2 * LaneCount, ColorBlock{});
    for (std::size_t i = 0; i < count; ++i)
    {
        const Record& record = bins.records[references[i]];
        const VertexBlocks& blocks = BlocksOf(batch, bins, record.vertex[0]);
        const ScreenPosition& start = blocks.positions[record.vertex[0] & ~Record::Local];
        const ScreenPosition& end = blocks.positions[record.vertex[1] & ~Record::Local];
        const int before = list.count;
        if (state.primitive == Primitive::Points)
            ListPoint(tile, start, limits, list);
        else if (std::abs(end.x - start.x) <= Short && std::abs(end.y - start.y) <= Short)
            ListLine<std::int32_t>(tile, start, end, limits, list);
        else
            ListLine<std::int64_t>(tile, start, end, limits, list);
        if (list.count == before)
            continue;
        SetLine<Fog>(list, batch, blocks, state, record, start, end);
        if (++list.lineCount == LinePixels::MostLines)
            DrawLinePixels<B, Fog>(tile, state, list);
    }
    DrawLinePixels<B, Fog>(tile, state, list);
}
