// Lines and points into a tile: exact stepping, shaded a vector of pixels at once. Included inside a namespace, once.

/// Up to LaneCount pixels of a line, collected to be shaded together.
struct PixelGroup
{
    int count = 0;
    int pixel[LaneCount]{};            ///< in the tile
    std::int32_t covered[LaneCount]{}; ///< from the line's start along its major axis, 1/256 pixel
    float rank[LaneCount]{};
};

template<Blending B, Fog F>
LANES_INLINE void FlushPixels(const TileView& tile, const DrawState& state, const Attributes& a, float length,
                              PixelGroup& group)
{
    float depths[LaneCount]{};
    std::uint32_t colors[LaneCount]{};
    for (int i = 0; i < group.count; ++i)
    {
        depths[i] = tile.depths[group.pixel[i]];
        colors[i] = tile.colors[group.pixel[i]];
    }
    const Floats along = ToFloats(Load(group.covered)) / Splat(length);
    const Floats zero = Splat(0.0F);
    const Floats depth = Least(Splat(a.depth.base) + along * Splat(a.depth.toSecond), Splat(FarthestDepth));
    Mask mask = Both(LanesWithin(0, 0, group.count), IsLessOrEqual(depth, Load(depths)));
    group.count = 0;
    if (!IsAny(mask))
        return;
    const Ints below = Load(colors);
    Ints pixels = below;
    mask = ShadePixels<Surface::Plain, B, F, Interpolation::Perspective>(state, a, along, zero, mask, below,
                                                                         Load(group.rank), pixels);
    float newDepths[LaneCount];
    std::uint32_t newColors[LaneCount];
    std::int32_t drawn[LaneCount];
    Store(depth, newDepths);
    Store(pixels, newColors);
    Store(Choose(mask, Splat(1), Splat(0)), drawn);
    for (int i = 0; i < LaneCount; ++i)
        if (drawn[i] != 0)
        {
            tile.depths[group.pixel[i]] = newDepths[i];
            tile.colors[group.pixel[i]] = newColors[i];
        }
}

LANES_INLINE void AddPixel(PixelGroup& group, int x, int y, std::int32_t covered)
{
    group.pixel[group.count] = y * TileSize + x;
    group.covered[group.count] = covered;
    group.rank[group.count] = static_cast<float>(StippleRank[y & 3][x & 3]);
    ++group.count;
}

inline std::int64_t FloorDivided(std::int64_t dividend, std::int64_t divisor)
{
    const std::int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

template<Blending B, Fog F>
void DrawPoint(const TileView& tile, const DrawState& state, const ScreenPosition& at, const PixelRect& limits,
               const Attributes& a)
{
    const int x = ((at.x + SubPixels / 2) >> SubPixelShift) - tile.left;
    const int y = ((at.y + SubPixels / 2) >> SubPixelShift) - tile.top;
    if (x < limits.left || x >= limits.right || y < limits.top || y >= limits.bottom)
        return;
    PixelGroup group;
    AddPixel(group, x, y, 0);
    FlushPixels<B, F>(tile, state, a, 1.0F, group);
}

template<Blending B, Fog F>
void DrawLine(const TileView& tile, const DrawState& state, const ScreenPosition& start, const ScreenPosition& end,
              const PixelRect& limits, const Attributes& a)
{
    const std::int64_t dx = std::int64_t{end.x} - start.x;
    const std::int64_t dy = std::int64_t{end.y} - start.y;
    const bool isXMajor = std::abs(dx) >= std::abs(dy);
    const std::int64_t from = isXMajor ? start.x : start.y;
    const std::int64_t length = isXMajor ? dx : dy;
    const std::int64_t rise = isXMajor ? dy : dx;
    const std::int64_t first = (std::min(from, from + length) + SubPixels - 1) >> SubPixelShift;
    const std::int64_t last = (std::max(from, from + length) + SubPixels - 1) >> SubPixelShift;
    if (first == last)
        return DrawPoint<B, F>(tile, state, start, limits, a);

    const int majorOrigin = isXMajor ? tile.left : tile.top;
    const int minorOrigin = isXMajor ? tile.top : tile.left;
    const std::int64_t low = std::max<std::int64_t>(first, majorOrigin + (isXMajor ? limits.left : limits.top));
    const std::int64_t high = std::min<std::int64_t>(last, majorOrigin + (isXMajor ? limits.right : limits.bottom));
    const int minorLow = isXMajor ? limits.top : limits.left;
    const int minorHigh = isXMajor ? limits.bottom : limits.right;
    // minor = floor((numerator at low + step * (m - low)) / divisor), carried on as quotient and remainder.
    const std::int64_t divisor = std::abs(length) * SubPixels;
    const std::int64_t direction = length < 0 ? -rise : rise;
    const std::int64_t numerator =
        ((isXMajor ? start.y : start.x) + SubPixels / 2) * std::abs(length) + direction * (low * SubPixels - from);
    std::int64_t minor = FloorDivided(numerator, divisor);
    std::int64_t remainder = numerator - minor * divisor;
    const std::int64_t wholeStep = FloorDivided(direction * SubPixels, divisor);
    const std::int64_t restStep = direction * SubPixels - wholeStep * divisor;
    PixelGroup group;
    for (std::int64_t major = low; major < high; ++major)
    {
        const int along = static_cast<int>(major - majorOrigin);
        const int across = static_cast<int>(minor - minorOrigin);
        if (across >= minorLow && across < minorHigh)
        {
            AddPixel(group, isXMajor ? along : across, isXMajor ? across : along,
                     static_cast<std::int32_t>(major * SubPixels - from));
            if (group.count == LaneCount)
                FlushPixels<B, F>(tile, state, a, static_cast<float>(length), group);
        }
        minor += wholeStep;
        remainder += restStep;
        if (remainder >= divisor)
        {
            remainder -= divisor;
            ++minor;
        }
    }
    if (group.count != 0)
        FlushPixels<B, F>(tile, state, a, static_cast<float>(length), group);
}

template<Blending B, Fog F>
void DrawLines(const TileView& tile, const Batch& batch, const Bins& bins, const DrawState& state,
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
        const ScreenPosition& start = positions[record.vertex[0] & ~Record::Local];
        const ScreenPosition& end = positions[record.vertex[1] & ~Record::Local];
        Attributes a;
        SetAttributes<Surface::Plain, B, F>(a, batch, bins, state, record, start, end, start);
        if (state.primitive == Primitive::Points)
            DrawPoint<B, F>(tile, state, start, limits, a);
        else
            DrawLine<B, F>(tile, state, start, end, limits, a);
    }
}
