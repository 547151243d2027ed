// The first half of set-up: facing, pixel-centre culling and tile ranges of triangles, and the pixels that lines reach,
// a vector at once. Included inside a namespace, once.

/// Triangles no longer than this per side (1/256 pixel): their area fits 32 bits.
inline constexpr std::int32_t LargestSide = 1 << 14;

struct CullLanes
{
    Ints x[3], y[3];
};

LANES_INLINE Ints Least3(const Ints* v)
{
    return Least(Least(v[0], v[1]), v[2]);
}
LANES_INLINE Ints Greatest3(const Ints* v)
{
    return Greatest(Greatest(v[0], v[1]), v[2]);
}

/// Which triangles cover none of the up to four pixel centres in their boxes. `turned` ones are counter-clockwise. The
/// same whole numbers as in the tiles.
LANES_INLINE Mask CoversNone(const CullLanes& t, Mask turned, Ints firstX, Ints firstY, Ints lastX, Ints lastY)
{
    const Ints x[3] = {t.x[0], Choose(turned, t.x[2], t.x[1]), Choose(turned, t.x[1], t.x[2])};
    const Ints y[3] = {t.y[0], Choose(turned, t.y[2], t.y[1]), Choose(turned, t.y[1], t.y[2])};
    const Ints left = ShiftedLeft<SubPixelShift>(firstX);
    const Ints top = ShiftedLeft<SubPixelShift>(firstY);
    const Mask isWide = IsLess(firstX, lastX);
    const Mask isHigh = IsLess(firstY, lastY);
    const Ints zero = Splat(0);
    Ints outside[4] = {zero, zero, zero, zero}; // negative where an edge is
    for (int from = 0; from < 3; ++from)
    {
        const int to = from == 2 ? 0 : from + 1;
        const Ints dx = x[to] - x[from];
        const Ints dy = y[to] - y[from];
        const Mask owns = Either(IsLess(dy, zero), Both(IsEqual(dy, zero), IsLess(zero, dx)));
        const Ints value = dx * (top - y[from]) - dy * (left - x[from]) - Choose(owns, zero, Splat(1));
        const Ints toRight = Choose(isWide, zero - ShiftedLeft<SubPixelShift>(dy), zero);
        const Ints below = value + Choose(isHigh, ShiftedLeft<SubPixelShift>(dx), zero);
        outside[0] = outside[0] | value;
        outside[1] = outside[1] | (value + toRight);
        outside[2] = outside[2] | below;
        outside[3] = outside[3] | (below + toRight);
    }
    return Both(Both(IsLess(outside[0], zero), IsLess(outside[1], zero)),
                Both(IsLess(outside[2], zero), IsLess(outside[3], zero)));
}

std::uint32_t CullTriangles(const std::uint32_t* indices, std::uint32_t count, std::uint32_t vertexBase,
                            const ScreenPosition* positions, const DrawState& state, TriangleSurvivors& survivors)
{
    const auto* places = reinterpret_cast<const std::int32_t*>(positions);
    const Ints base = Splat(static_cast<std::int32_t>(vertexBase));
    const Mask nobody = Except(AllLanes(), AllLanes());
    const Mask noClockwise = state.cull == CullMode::Clockwise ? AllLanes() : nobody;
    const Mask noCounterClockwise = state.cull == CullMode::CounterClockwise ? AllLanes() : nobody;
    std::uint32_t kept = 0;
    Ints covered = Splat(0);
    for (std::uint32_t i = 0; i < count; i += LaneCount)
    {
        Ints v[3];
        Mask valid = AllLanes();
        std::uint32_t start = i;
        if (count - i >= static_cast<std::uint32_t>(LaneCount))
        {
            LoadTriples(indices + 3 * std::size_t{i}, v[0], v[1], v[2]);
        }
        else if (i != 0) // the last whole vector: its first lanes are done
        {
            const std::uint32_t done = LaneCount - (count - i);
            start = i - done;
            LoadTriples(indices + 3 * std::size_t{start}, v[0], v[1], v[2]);
            valid = IsLess(Splat(static_cast<std::int32_t>(done) - 1), LaneNumbers());
        }
        else
        {
            std::uint32_t padded[3 * LaneCount]{};
            std::copy_n(indices + 3 * std::size_t{i}, 3 * (count - i), padded);
            LoadTriples(padded, v[0], v[1], v[2]);
            valid = IsLess(LaneNumbers(), Splat(static_cast<std::int32_t>(count - i)));
        }
        CullLanes t;
        for (int corner = 0; corner < 3; ++corner)
        {
            v[corner] = v[corner] + base;
            LoadPairs<sizeof(ScreenPosition) / sizeof(std::int32_t)>(places, v[corner], t.x[corner], t.y[corner]);
        }
        const Ints left = Least3(t.x);
        const Ints right = Greatest3(t.x);
        const Ints top = Least3(t.y);
        const Ints bottom = Greatest3(t.y);
        // A corner that is not placed has the least x there is.
        Mask unfinished = IsEqual(left, Splat(NotPlaced));
        unfinished = Either(unfinished, IsLess(Splat(LargestSide), right - left));
        unfinished = Either(unfinished, IsLess(Splat(LargestSide), bottom - top));

        // The pixels whose centres the box holds, within the area.
        const Ints firstX = Greatest(ShiftedRight<SubPixelShift>(left + Splat(SubPixels - 1)), Splat(state.area.left));
        const Ints lastX = Least(ShiftedRight<SubPixelShift>(right), Splat(state.area.right - 1));
        const Ints firstY = Greatest(ShiftedRight<SubPixelShift>(top + Splat(SubPixels - 1)), Splat(state.area.top));
        const Ints lastY = Least(ShiftedRight<SubPixelShift>(bottom), Splat(state.area.bottom - 1));
        const Mask holdsNone = Either(IsLess(lastX, firstX), IsLess(lastY, firstY));

        const Ints area = (t.x[1] - t.x[0]) * (t.y[2] - t.y[0]) - (t.y[1] - t.y[0]) * (t.x[2] - t.x[0]);
        const Mask clockwise = IsLess(Splat(0), area);
        const Mask counterClockwise = IsLess(area, Splat(0));
        const Mask faces = Either(Except(clockwise, noClockwise), Except(counterClockwise, noCounterClockwise));
        Mask keep = Both(valid, Either(unfinished, Except(faces, holdsNone)));
        if (!IsAny(keep))
            continue;
        const Mask turn = Except(counterClockwise, unfinished);
        const Mask isTiny =
            Except(Except(Both(keep, IsLess(lastX - firstX, Splat(2))), unfinished), IsLess(Splat(1), lastY - firstY));
        if (IsAny(isTiny))
        {
            keep = Except(keep, Both(isTiny, CoversNone(t, turn, firstX, firstY, lastX, lastY)));
            if (!IsAny(keep))
                continue;
        }

        Ints tiles = ShiftedRight<TileShift>(firstX) | ShiftedLeft<8>(ShiftedRight<TileShift>(firstY));
        tiles =
            tiles | ShiftedLeft<16>(ShiftedRight<TileShift>(lastX)) | ShiftedLeft<24>(ShiftedRight<TileShift>(lastY));
        const ChosenLanes chosen = FindChosen(keep);
        StoreChosen(v[0], chosen, survivors.a + kept);
        StoreChosen(Choose(turn, v[2], v[1]), chosen, survivors.b + kept);
        StoreChosen(Choose(turn, v[1], v[2]), chosen, survivors.c + kept);
        StoreChosen(LaneNumbers() + Splat(static_cast<std::int32_t>(start)), chosen, survivors.triangle + kept);
        StoreChosen(Choose(unfinished, Splat(TriangleSurvivors::Unfinished), tiles), chosen, survivors.tiles + kept);
        const Ints pixels = (lastX - firstX + Splat(1)) * (lastY - firstY + Splat(1));
        covered = covered + Choose(Except(keep, unfinished), pixels, Splat(0));
        kept += chosen.count;
    }
    std::int32_t coveredByLane[LaneCount];
    Store(covered, coveredByLane);
    survivors.coveredPixels = 0;
    for (const std::int32_t pixels : coveredByLane)
        survivors.coveredPixels += static_cast<std::uint32_t>(pixels);
    return kept;
}

/// The numbers of edges at which some triangle is not culled.
inline std::uint32_t ListSeenEdges(const EdgeStretch& stretch, std::int32_t* seen)
{
    const std::uint8_t* const isCulled = stretch.isCulled;
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < stretch.count; ++i)
    {
        // Without a branch: what is culled is written over.
        const DrawMesh::Edge& edge = stretch.edges[i];
        const std::uint32_t other = edge.triangleB == DrawMesh::NoFace ? edge.triangleA : edge.triangleB;
        seen[kept] = static_cast<std::int32_t>(i);
        kept += 1U - (isCulled[edge.triangleA] & isCulled[other]);
    }
    return kept;
}

struct LineBox
{
    Ints left, top, right, bottom;
};

/// The pixels that lines draw lie in these boxes, and reach all their sides but for the ends across.
LANES_INLINE LineBox BoxOf(Ints startX, Ints startY, Ints endX, Ints endY)
{
    const Ints zero = Splat(0);
    const Ints half = Splat(SubPixels / 2);
    const Ints almostOne = Splat(SubPixels - 1);
    const Ints dx = endX - startX;
    const Ints dy = endY - startY;
    const Mask isYMajor = IsLess(Greatest(dx, zero - dx), Greatest(dy, zero - dy));
    const Ints left = Least(startX, endX);
    const Ints right = Greatest(startX, endX);
    const Ints top = Least(startY, endY);
    const Ints bottom = Greatest(startY, endY);
    // Along the major axis the end is not drawn.
    const Ints from = Choose(isYMajor, top, left);
    const Ints to = Choose(isYMajor, bottom, right);
    const Mask isPoint =
        IsEqual(ShiftedRight<SubPixelShift>(from + almostOne), ShiftedRight<SubPixelShift>(to + almostOne));
    const Ints aboveX = Choose(isYMajor, half, almostOne);
    const Ints aboveY = Choose(isYMajor, almostOne, half);
    const Ints belowX = Choose(isYMajor, half, Splat(-1));
    const Ints belowY = Choose(isYMajor, Splat(-1), half);
    const Ints pointX = ShiftedRight<SubPixelShift>(startX + half);
    const Ints pointY = ShiftedRight<SubPixelShift>(startY + half);
    return {Choose(isPoint, pointX, ShiftedRight<SubPixelShift>(left + aboveX)),
            Choose(isPoint, pointY, ShiftedRight<SubPixelShift>(top + aboveY)),
            Choose(isPoint, pointX, ShiftedRight<SubPixelShift>(right + belowX)),
            Choose(isPoint, pointY, ShiftedRight<SubPixelShift>(bottom + belowY))};
}

LANES_INLINE Mask IsWithin(Ints x, Ints y, const PixelRect& area)
{
    const Mask outsideX = Either(IsLess(x, Splat(area.left)), IsLess(Splat(area.right), x));
    const Mask outsideY = Either(IsLess(y, Splat(area.top)), IsLess(Splat(area.bottom), y));
    return Except(AllLanes(), Either(outsideX, outsideY));
}

std::uint32_t CullEdges(const EdgeStretch& stretch, LineSurvivors& survivors)
{
    constexpr int EdgeStride = sizeof(DrawMesh::Edge) / sizeof(std::int32_t);
    constexpr int PositionStride = sizeof(ScreenPosition) / sizeof(std::int32_t);
    const auto* ends = reinterpret_cast<const std::int32_t*>(stretch.edges);
    const auto* places = reinterpret_cast<const std::int32_t*>(stretch.positions);
    const PixelRect& area = stretch.area;
    const Ints base = Splat(static_cast<std::int32_t>(stretch.vertexBase));
    std::uint32_t seen = stretch.count;
    if (stretch.isCulled != nullptr)
        seen = ListSeenEdges(stretch, survivors.edge);
    else
        std::iota(survivors.edge, survivors.edge + stretch.count, 0);
    Store(Splat(0), survivors.edge + seen); // what the last vector looks up beyond the last
    std::uint32_t kept = 0;
    Ints covered = Splat(0);
    for (std::uint32_t i = 0; i < seen; i += LaneCount)
    {
        const Ints edge = Load(survivors.edge + i);
        Ints a, b, startX, startY, endX, endY;
        LoadPairs<EdgeStride>(ends, edge, a, b);
        a = a + base;
        b = b + base;
        LoadPairs<PositionStride>(places, a, startX, startY);
        LoadPairs<PositionStride>(places, b, endX, endY);
        const Mask isInView = Both(IsWithin(startX, startY, stretch.viewport), IsWithin(endX, endY, stretch.viewport));
        LineBox box = BoxOf(startX, startY, endX, endY);
        box.left = Greatest(box.left, Splat(area.left));
        box.top = Greatest(box.top, Splat(area.top));
        box.right = Least(box.right, Splat(area.right - 1));
        box.bottom = Least(box.bottom, Splat(area.bottom - 1));
        const Mask isEmpty = Either(IsLess(box.right, box.left), IsLess(box.bottom, box.top));
        const Mask isThere = IsLess(LaneNumbers(), Splat(static_cast<std::int32_t>(seen - i)));
        const Mask keep = Except(isThere, Both(isInView, isEmpty));
        const Ints left = ShiftedRight<TileShift>(box.left);
        const Ints top = ShiftedRight<TileShift>(box.top);
        const Ints right = ShiftedRight<TileShift>(box.right);
        const Ints bottom = ShiftedRight<TileShift>(box.bottom);
        const Mask isSmall = IsLess((right - left) + (bottom - top), Splat(2));
        const Mask isFinished = Both(isInView, isSmall);
        const Ints perRow = Splat(stretch.tilesPerRow);
        const Ints none = Splat(LineSurvivors::Unfinished);
        const ChosenLanes chosen = FindChosen(keep);
        StoreChosen(a, chosen, survivors.a + kept);
        StoreChosen(b, chosen, survivors.b + kept);
        StoreChosen(edge, chosen, survivors.edge + kept);
        StoreChosen(Choose(isFinished, top * perRow + left, none), chosen, survivors.tile + kept);
        StoreChosen(Choose(isFinished, bottom * perRow + right, none), chosen, survivors.secondTile + kept);
        const Ints sides = box.right - box.left + box.bottom - box.top;
        covered = covered + Choose(Both(keep, isFinished), ShiftedLeft<2>(sides) + Splat(LineWork), Splat(0));
        kept += chosen.count;
    }
    std::int32_t coveredByLane[LaneCount];
    Store(covered, coveredByLane);
    survivors.coveredPixels = std::accumulate(coveredByLane, coveredByLane + LaneCount, std::uint64_t{0});
    return kept;
}
