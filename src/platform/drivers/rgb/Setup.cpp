// Primitives one by one: what is left of triangles after the vector culling, lines, points and clears.
#include "platform/drivers/rgb/Setup.h"

#include "platform/drivers/rgb/Clipping.h"
#include "platform/drivers/rgb/LineSteps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <tuple>

namespace lumora::rgb
{

namespace
{

/// A stretch of pixels as tiles. Both ends belong to it.
struct TileRange
{
    int left, top, right, bottom;

    explicit TileRange(const PixelRect& pixels)
        : left(pixels.left >> TileShift), top(pixels.top >> TileShift), right((pixels.right - 1) >> TileShift),
          bottom((pixels.bottom - 1) >> TileShift)
    {
    }
    bool IsOne() const { return left == right && top == bottom; }
};

/// The pixels whose centres a box of 1/256 pixels holds.
PixelRect PixelsIn(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    const auto up = [](std::int32_t place) { return (place + SubPixels - 1) >> SubPixelShift; };
    const auto down = [](std::int32_t place) { return place >> SubPixelShift; };
    return {up(left), up(top), down(right) + 1, down(bottom) + 1};
}

std::int64_t Cross(const ScreenPosition& a, const ScreenPosition& b, std::int64_t x, std::int64_t y)
{
    return (std::int64_t{b.x} - a.x) * (y - a.y) - (std::int64_t{b.y} - a.y) * (x - a.x);
}

bool IsTranslucent(const Batch& batch, const DrawState& state, const Part& part, std::uint32_t triangle)
{
    if (state.isTextureTranslucent || state.isAllTranslucent)
        return true;
    const DrawMesh& mesh = *part.mesh;
    if (state.isFlat)
        return batch.faces.colors[mesh.triangleFace[triangle] + part.faceBase].alpha < 1;
    const std::uint32_t* indices = mesh.indices.data() + 3 * std::size_t{triangle};
    return std::any_of(indices, indices + 3,
                       [&](std::uint32_t vertex) { return batch.vertices.colors[vertex + part.vertexBase].alpha < 1; });
}

/// Larger floats become smaller keys.
std::uint32_t DescendingKey(float value)
{
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(value + 0.0F);
    return (bits & 0x80000000U) != 0 ? bits : ~bits & 0x7FFFFFFFU;
}

/// A triangle's mean camera-space z, times three.
double DepthSum(const Part& part, const std::uint32_t* indices)
{
    const DrawMesh& mesh = *part.mesh;
    double x = 0;
    double y = 0;
    double z = 0;
    for (int corner = 0; corner < 3; ++corner)
    {
        x += mesh.x[indices[corner]];
        y += mesh.y[indices[corner]];
        z += mesh.z[indices[corner]];
    }
    return x * part.toDepth[0] + y * part.toDepth[1] + z * part.toDepth[2] + 3 * part.toDepth[3];
}

class UnitSetup
{
public:
    UnitSetup(const Batch& batch, std::size_t mostPairs, Bins& bins) : batch_(batch), mostPairs_(mostPairs), bins_(bins)
    {
    }

    bool IsFull() const
    {
        return bins_.pairs.Size() >= mostPairs_ || bins_.records.Size() + MostOfOne > MostRecords ||
               bins_.local.positions.Size() >= MostLocalVertices;
    }

    /// Answers how many primitives were set up: all, or fewer once the bins are full.
    std::uint32_t Run(const Segment& segment)
    {
        SetState(segment.state);
        part_ = segment.part;
        switch (State().primitive)
        {
        case Primitive::Clear:
            AddClear();
            break;
        case Primitive::Triangles:
            return AddTriangles(segment);
        case Primitive::Lines:
            return AddLines(segment);
        case Primitive::Points:
            AddPoints(segment);
            break;
        }
        return segment.count;
    }

    /// The same of a sorted segment's translucent triangles within `keys`.
    std::uint32_t RunSorted(const Segment& segment, const KeyRange& keys)
    {
        SetState(segment.state);
        part_ = segment.part;
        return ForSurvivors(segment,
                            [&](std::uint32_t kept, std::uint32_t first) { return AddSorted(kept, first, keys); });
    }

private:
    static constexpr auto Unfinished = static_cast<std::uint32_t>(TriangleSurvivors::Unfinished);
    static constexpr std::size_t MostOfOne =
        std::tuple_size_v<decltype(ClipPolygon::corners)> - 2; ///< that clipping makes of a triangle

    void SetState(std::uint32_t state)
    {
        state_ = state;
        bins_.NoteState(state);
    }
    const DrawState& State() const { return batch_.states[state_]; }
    const Part& CurrentPart() const { return batch_.parts[part_]; }
    const DrawMesh& Mesh() const { return *CurrentPart().mesh; }

    void AddClear()
    {
        const PixelRect& area = State().area;
        const std::uint32_t record = Append({{0, 0, 0}, 0, state_});
        AddToTiles(record, TileRange{area});
        bins_.coveredPixels += static_cast<std::uint64_t>(area.Width()) * static_cast<std::uint64_t>(area.Height()) / 8;
    }

    std::uint32_t AddTriangles(const Segment& segment)
    {
        return ForSurvivors(segment,
                            [&](std::uint32_t kept, std::uint32_t first) { return AddSurvivors(kept, first); });
    }

    /// Culls a segment's triangles. add(kept, first) adds those in survivors_, which are counted from `first`, and
    /// answers how many before the bins were full. Answers how many triangles of the segment are done.
    template<typename Add>
    std::uint32_t ForSurvivors(const Segment& segment, Add add)
    {
        const std::uint32_t* indices = Mesh().indices.data() + 3 * std::size_t{segment.first};
        for (std::uint32_t first = 0; first < segment.count; first += TriangleSurvivors::Capacity)
        {
            const std::uint32_t count = std::min(TriangleSurvivors::Capacity, segment.count - first);
            const std::uint32_t kept =
                batch_.kernels->cullTriangles(indices + 3 * std::size_t{first}, count, CurrentPart().vertexBase,
                                              batch_.vertices.positions.Data(), State(), survivors_);
            bins_.coveredPixels += 16 * std::uint64_t{kept} + survivors_.coveredPixels / 2;
            const std::uint32_t added = add(kept, segment.first + first);
            if (added < kept) // the last one added was the last to have room
                return first + static_cast<std::uint32_t>(survivors_.triangle[added - 1]) + 1;
            if (IsFull())
                return first + count;
        }
        return segment.count;
    }

    /// Answers how many were added before the bins were full.
    std::uint32_t AddSurvivors(std::uint32_t count, std::uint32_t firstTriangle)
    {
        bins_.records.Reserve(bins_.records.Size() + MostOfOne * count);
        const bool isPlain = !State().sortsTranslucent && !State().isFlat;
        const auto tilesPerRow = static_cast<std::uint32_t>(batch_.tilesPerRow);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            const auto tiles = static_cast<std::uint32_t>(survivors_.tiles[i]);
            if (isPlain && IsOneTile(tiles)) // nearly all of a scan
            {
                AddToOneTile(i, tiles, tilesPerRow);
                continue;
            }
            const std::uint32_t triangle = firstTriangle + static_cast<std::uint32_t>(survivors_.triangle[i]);
            if (!State().sortsTranslucent || !IsTranslucent(batch_, State(), CurrentPart(), triangle))
                AddSurvivor(survivors_.Corners(i).data(), triangle, tiles);
            if (IsFull())
                return i + 1;
        }
        return count;
    }

    static bool IsOneTile(std::uint32_t tiles) { return (tiles & 0xFFFF) == tiles >> 16 && tiles != Unfinished; }

    /// A survivor without a face, where Reserve made room for its record.
    void AddToOneTile(std::uint32_t survivor, std::uint32_t tiles, std::uint32_t tilesPerRow)
    {
        const auto number = static_cast<std::uint32_t>(bins_.records.Size());
        const std::array<std::uint32_t, 3> corners = survivors_.Corners(survivor);
        bins_.records.AppendReserved({{corners[0], corners[1], corners[2]}, 0, state_});
        bins_.pairs.Append((((tiles >> 8) & 0xFF) * tilesPerRow + (tiles & 0xFF)) << 16 | number);
    }

    /// Answers how many were added, or left out, before the bins were full.
    std::uint32_t AddSorted(std::uint32_t count, std::uint32_t firstTriangle, const KeyRange& keys)
    {
        const Part& part = CurrentPart();
        const std::uint32_t* indices = Mesh().indices.data();
        bins_.records.Reserve(bins_.records.Size() + MostOfOne * count);
        bins_.keys.Reserve(bins_.keys.Size() + MostOfOne * count);
        const DrawState& state = State();
        const auto tilesPerRow = static_cast<std::uint32_t>(batch_.tilesPerRow);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            const std::uint32_t triangle = firstTriangle + static_cast<std::uint32_t>(survivors_.triangle[i]);
            const auto depth = static_cast<float>(DepthSum(part, indices + 3 * std::size_t{triangle}));
            const std::uint32_t key = DescendingKey(depth);
            if (!std::isfinite(depth) || !keys.Contains(key) || !IsTranslucent(batch_, state, part, triangle))
                continue;
            const auto tiles = static_cast<std::uint32_t>(survivors_.tiles[i]);
            if (!state.isFlat && IsOneTile(tiles))
                AddToOneTile(i, tiles, tilesPerRow);
            else
                AddSurvivor(survivors_.Corners(i).data(), triangle, tiles);
            while (bins_.keys.Size() < bins_.records.Size())
                bins_.keys.AppendReserved(key);
            if (IsFull())
                return i + 1;
        }
        return count;
    }

    void AddSurvivor(const std::uint32_t* vertex, std::uint32_t triangle, std::uint32_t tiles)
    {
        if (tiles == Unfinished)
            return AddTriangle(vertex[0], vertex[1], vertex[2], triangle);
        AddSmall({{vertex[0], vertex[1], vertex[2]}, FaceOf(triangle), state_}, tiles);
    }

    void AddSmall(const Record& record, std::uint32_t tiles)
    {
        const std::uint32_t number = Append(record);
        const std::uint32_t left = tiles & 0xFF;
        const std::uint32_t top = (tiles >> 8) & 0xFF;
        if ((tiles & 0xFFFF) == tiles >> 16)
            return bins_.pairs.Append((top * static_cast<std::uint32_t>(batch_.tilesPerRow) + left) << 16 | number);
        const std::uint32_t right = (tiles >> 16) & 0xFF;
        const std::uint32_t bottom = tiles >> 24;
        for (std::uint32_t y = top; y <= bottom; ++y)
            for (std::uint32_t x = left; x <= right; ++x)
                bins_.pairs.Append((y * static_cast<std::uint32_t>(batch_.tilesPerRow) + x) << 16 | number);
    }

    std::uint32_t FaceOf(std::uint32_t triangle) const
    {
        return State().isFlat ? Mesh().triangleFace[triangle] + CurrentPart().faceBase : 0;
    }

    /// Any triangle, given by indices of the batch's vertices.
    void AddTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t triangle)
    {
        const ScreenPosition* positions = batch_.vertices.positions.Data();
        if (positions[a].x != NotPlaced && positions[b].x != NotPlaced && positions[c].x != NotPlaced)
            return AddPlaced({{a, b, c}, FaceOf(triangle), state_}, positions[a], positions[b], positions[c]);
        ClipPolygon polygon;
        polygon.count = 3;
        polygon.corners[0] = ToClip(a, FaceOf(triangle));
        polygon.corners[1] = ToClip(b, FaceOf(triangle));
        polygon.corners[2] = ToClip(c, FaceOf(triangle));
        for (int i = 0; i < 3; ++i)
            if (!IsFinite(polygon.corners[i].position))
                return;
        ClipTriangle(polygon);
        AddPolygon(polygon, FaceOf(triangle));
    }

    void AddPolygon(const ClipPolygon& polygon, std::uint32_t face)
    {
        const auto first = static_cast<std::uint32_t>(bins_.local.positions.Size());
        for (int i = 0; i < polygon.count; ++i)
            if (!AppendLocal(polygon.corners[i]))
                return;
        const ScreenPosition* positions = bins_.local.positions.Data() + first;
        const std::uint32_t base = first | Record::Local;
        for (std::uint32_t i = 2; i < static_cast<std::uint32_t>(polygon.count); ++i)
            AddPlaced({{base, base + i - 1, base + i}, face, state_}, positions[0], positions[i - 1], positions[i]);
    }

    ClipVertex ToClip(std::uint32_t vertex, std::uint32_t face) const
    {
        const Part& part = CurrentPart();
        const VertexBlocks& blocks = State().isFlat ? batch_.faces : batch_.vertices;
        const std::uint32_t color = State().isFlat ? face : vertex;
        const std::uint32_t v = vertex - part.vertexBase;
        const DrawMesh& mesh = Mesh();
        ClipVertex result{Transform(Double4{mesh.x[v], mesh.y[v], mesh.z[v], 1}, part.toClip), blocks.colors[color]};
        if (part.splitsHighlight)
            result.highlight = blocks.highlights[color];
        if (part.needsCoordinates)
            result.coordinates = batch_.vertices.coordinates[vertex];
        if (batch_.vertices.positions[vertex].x != NotPlaced)
            result.placed = &batch_.vertices.positions[vertex];
        return result;
    }

    bool AppendLocal(const ClipVertex& vertex)
    {
        ScreenPosition screen{};
        if (vertex.placed != nullptr)
            screen = *vertex.placed;
        else if (!ToScreen(CurrentPart().pass->state, vertex.position, screen))
            return false;
        VertexBlocks& local = bins_.local;
        local.positions.Append(screen);
        local.coordinates.Append(vertex.coordinates);
        local.colors.Append(vertex.color);
        local.highlights.Append(vertex.highlight);
        return true;
    }

    /// A triangle whose corners are all on the screen or near it.
    void AddPlaced(Record record, const ScreenPosition& a, const ScreenPosition& b, const ScreenPosition& c)
    {
        const DrawState& state = State();
        const std::int64_t area = Cross(a, b, c.x, c.y);
        if (area == 0 || state.cull == (area > 0 ? CullMode::Clockwise : CullMode::CounterClockwise))
            return;
        const auto [left, right] = std::minmax({a.x, b.x, c.x});
        const auto [top, bottom] = std::minmax({a.y, b.y, c.y});
        const PixelRect pixels = Intersection(PixelsIn(left, top, right, bottom), state.area);
        if (pixels.IsEmpty())
            return;
        if (area < 0)
            std::swap(record.vertex[1], record.vertex[2]);
        const TileRange tiles{pixels};
        const std::uint32_t number = Append(record);
        bins_.coveredPixels +=
            16 + static_cast<std::uint64_t>(pixels.Width()) * static_cast<std::uint64_t>(pixels.Height()) / 2;
        if (tiles.right - tiles.left < 2 && tiles.bottom - tiles.top < 2)
            AddToTiles(number, tiles);
        else
            AddToTouchedTiles(number, tiles, area > 0 ? std::array{a, b, c} : std::array{a, c, b});
    }

    void AddToTouchedTiles(std::uint32_t number, const TileRange& tiles, const std::array<ScreenPosition, 3>& corners)
    {
        constexpr std::int64_t Reach = (TileSize - 1) * SubPixels;
        for (int y = tiles.top; y <= tiles.bottom; ++y)
            for (int x = tiles.left; x <= tiles.right; ++x)
            {
                const std::int64_t left = std::int64_t{x} * TileSize * SubPixels;
                const std::int64_t top = std::int64_t{y} * TileSize * SubPixels;
                bool isOutside = false;
                for (int side = 0; side < 3; ++side)
                {
                    const ScreenPosition& from = corners[side];
                    const ScreenPosition& to = corners[side == 2 ? 0 : side + 1];
                    // The tile's corner that lies farthest inside.
                    isOutside = isOutside || Cross(from, to, to.y > from.y ? left : left + Reach,
                                                   to.x > from.x ? top + Reach : top) < 0;
                }
                if (!isOutside)
                    bins_.pairs.Append(TileNumber(x, y) << 16 | number);
            }
    }

    std::uint32_t AddLines(const Segment& segment)
    {
        const Part& part = CurrentPart();
        const DrawMesh::Edge* edges = Mesh().edges.data() + segment.first;
        const std::uint8_t* isCulled =
            State().cull == CullMode::None ? nullptr : batch_.isCulled.Data() + part.facingBase;
        for (std::uint32_t first = 0; first < segment.count; first += LineSurvivors::Capacity)
        {
            const std::uint32_t count = std::min(LineSurvivors::Capacity, segment.count - first);
            const EdgeStretch stretch{
                edges + first,       count,        isCulled,          part.vertexBase, batch_.vertices.positions.Data(),
                part.pass->viewport, State().area, batch_.tilesPerRow};
            const std::uint32_t kept = batch_.kernels->cullEdges(stretch, lines_);
            bins_.coveredPixels += lines_.coveredPixels;
            const std::uint32_t done = AddLineSurvivors(kept, edges + first);
            if (done < kept)
                return first + static_cast<std::uint32_t>(lines_.edge[done - 1]) + 1;
            if (IsFull())
                return first + count;
        }
        return segment.count;
    }

    /// Answers how many were added before the bins were full.
    std::uint32_t AddLineSurvivors(std::uint32_t count, const DrawMesh::Edge* edges)
    {
        const std::uint32_t state = state_;
        const bool isFlat = State().isFlat;
        std::uint32_t i = 0;
        while (i < count)
        {
            // Lines in one or two tiles are nearly all.
            bins_.records.Reserve(bins_.records.Size() + count - i);
            bins_.pairs.Reserve(bins_.pairs.Size() + 2 * std::size_t{count - i});
            Record* records = bins_.records.Data();
            std::uint32_t* pairs = bins_.pairs.Data();
            std::size_t number = bins_.records.Size();
            std::size_t pair = bins_.pairs.Size();
            for (; i < count && lines_.tile[i] != LineSurvivors::Unfinished; ++i, ++number)
            {
                const auto a = static_cast<std::uint32_t>(lines_.a[i]);
                const auto b = static_cast<std::uint32_t>(lines_.b[i]);
                const std::uint32_t face = isFlat ? FaceOf(edges[lines_.edge[i]].triangleA) : 0;
                records[number] = {{a, b, a}, face, state};
                pairs[pair] = static_cast<std::uint32_t>(lines_.tile[i]) << 16 | static_cast<std::uint32_t>(number);
                pairs[pair + 1] =
                    static_cast<std::uint32_t>(lines_.secondTile[i]) << 16 | static_cast<std::uint32_t>(number);
                pair += lines_.tile[i] == lines_.secondTile[i] ? 1 : 2;
            }
            bins_.records.Resize(number);
            bins_.pairs.Resize(pair);
            if (i < count)
                AddLine(static_cast<std::uint32_t>(lines_.a[i]), static_cast<std::uint32_t>(lines_.b[i]),
                        FaceOf(edges[lines_.edge[i]].triangleA));
            ++i;
            if (IsFull())
                return std::min(i, count);
        }
        return count;
    }

    void AddLine(std::uint32_t a, std::uint32_t b, std::uint32_t face)
    {
        const ScreenPosition& from = batch_.vertices.positions[a];
        const ScreenPosition& to = batch_.vertices.positions[b];
        if (IsInViewport(from) && IsInViewport(to))
            return AddPlacedLine({{a, b, a}, face, state_}, from, to);
        ClipVertex start = ToClip(a, face);
        ClipVertex end = ToClip(b, face);
        const auto first = static_cast<std::uint32_t>(bins_.local.positions.Size()) | Record::Local;
        if (!ClipLine(start, end) || !AppendLocal(start) || !AppendLocal(end))
            return;
        const ScreenPosition* ends = bins_.local.positions.Data() + (first & ~Record::Local);
        AddPlacedLine({{first, first + 1, first}, face, state_}, ends[0], ends[1]);
    }

    bool IsInViewport(const ScreenPosition& p) const
    {
        const PixelRect& viewport = CurrentPart().pass->viewport;
        return p.x >= viewport.left && p.x <= viewport.right && p.y >= viewport.top && p.y <= viewport.bottom;
    }

    void AddPlacedLine(const Record& record, const ScreenPosition& from, const ScreenPosition& to)
    {
        const LineSteps line{from, to, 0, 0};
        const PixelRect limits = line.Turned(State().area);
        const int first = static_cast<int>(std::max<std::int64_t>(line.first, limits.left));
        const int last = static_cast<int>(std::min<std::int64_t>(line.stop, limits.right)) - 1;
        constexpr std::uint32_t None = ~0U;
        std::uint32_t number = None;
        for (int along = first >> TileShift; along <= last >> TileShift && first <= last; ++along)
        {
            // Where the line runs in this row or column of tiles.
            const auto begin = static_cast<int>(line.Across(std::max(first, along << TileShift)));
            const auto end = static_cast<int>(line.Across(std::min(last, (along << TileShift) + TileSize - 1)));
            const int top = std::max(std::min(begin, end), limits.top);
            const int bottom = std::min(std::max(begin, end), limits.bottom - 1);
            for (int across = top >> TileShift; across <= bottom >> TileShift && top <= bottom; ++across)
            {
                if (number == None)
                    number = Append(record);
                bins_.pairs.Append((line.isXMajor ? TileNumber(along, across) : TileNumber(across, along)) << 16 |
                                   number);
            }
        }
        if (number != None)
            bins_.coveredPixels += static_cast<std::uint64_t>(LineWork + 4 * (last - first));
    }

    void AddPoints(const Segment& segment)
    {
        for (const std::uint32_t vertex : batch_.pointVertices.Items().subspan(segment.first, segment.count))
        {
            std::uint32_t number = vertex + CurrentPart().vertexBase;
            ScreenPosition place = batch_.vertices.positions[number];
            if (!IsInViewport(place) || place.x == NotPlaced)
            {
                const ClipVertex point = ToClip(number, 0);
                number = static_cast<std::uint32_t>(bins_.local.positions.Size()) | Record::Local;
                if (!IsInside(point.position) || !AppendLocal(point))
                    continue;
                place = bins_.local.positions[number & ~Record::Local];
            }
            const int x = (place.x + SubPixels / 2) >> SubPixelShift;
            const int y = (place.y + SubPixels / 2) >> SubPixelShift;
            const PixelRect& area = State().area;
            if (x < area.left || x >= area.right || y < area.top || y >= area.bottom)
                continue;
            bins_.pairs.Append(TileNumber(x >> TileShift, y >> TileShift) << 16 |
                               Append({{number, number, number}, 0, state_}));
            bins_.coveredPixels += 32;
        }
    }

    std::uint32_t Append(const Record& record)
    {
        bins_.records.Append(record);
        return static_cast<std::uint32_t>(bins_.records.Size() - 1);
    }

    std::uint32_t TileNumber(int x, int y) const { return static_cast<std::uint32_t>(y * batch_.tilesPerRow + x); }

    void AddToTiles(std::uint32_t number, const TileRange& tiles)
    {
        for (int y = tiles.top; y <= tiles.bottom; ++y)
            for (int x = tiles.left; x <= tiles.right; ++x)
                bins_.pairs.Append(TileNumber(x, y) << 16 | number);
    }

    const Batch& batch_;
    std::size_t mostPairs_;
    Bins& bins_;
    std::uint32_t state_ = 0;
    std::uint32_t part_ = 0;
    TriangleSurvivors survivors_;
    LineSurvivors lines_;
};

} // namespace

UnitPlace SetUpUnit(const Batch& batch, const WorkUnit& unit, UnitPlace from, const KeyRange& keys,
                    std::size_t mostPairs, Bins& bins)
{
    bins.Clear();
    UnitSetup setup{batch, mostPairs, bins};
    const std::span<const Segment> segments = batch.SegmentsOf(unit);
    UnitPlace place = from;
    while (place.segment < segments.size() && !setup.IsFull())
    {
        Segment rest = segments[place.segment];
        rest.first += place.primitive;
        rest.count -= place.primitive;
        const std::uint32_t done = unit.isSorted ? setup.RunSorted(rest, keys) : setup.Run(rest);
        place = done < rest.count ? UnitPlace{place.segment, place.primitive + done} : UnitPlace{place.segment + 1, 0};
    }
    bins.Close(batch.tileCount);
    return place;
}

} // namespace lumora::rgb
