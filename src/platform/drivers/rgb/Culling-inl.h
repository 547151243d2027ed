// The first half of triangle set-up: facing, pixel-centre culling and tile ranges, a vector of triangles at once.
// Included inside a namespace, once.

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
