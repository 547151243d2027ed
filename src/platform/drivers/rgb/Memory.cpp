#include "platform/drivers/rgb/Memory.h"

#include "platform/drivers/rgb/Clipping.h"
#include "platform/drivers/rgb/Planner.h"
#include "platform/drivers/rgb/Setup.h"
#include "platform/drivers/rgb/TileSort.h"
#include "platform/drivers/rgb/Tiles.h"

#include <tuple>

namespace lumora::rgb
{

namespace
{

constexpr std::size_t BytesPerVertex = sizeof(ScreenPosition) + sizeof(CoordinateBlock) + 2 * sizeof(ColorBlock);
constexpr std::size_t BytesPerFace = 2 * sizeof(ColorBlock);
constexpr std::size_t BytesPerPair = sizeof(std::uint32_t) + sizeof(std::uint16_t);
constexpr std::size_t BytesPerTile = TilePixels * sizeof(float) + BlocksPerTile * sizeof(float) + 1;
constexpr std::size_t Fixed = std::size_t{1} << 20;

// Buffers grow by half.
constexpr std::size_t Grown(std::size_t bytes)
{
    return bytes + bytes / 2;
}

static_assert(BytesPerVertex == 64 && BytesPerTile == 16641);

} // namespace

void WorkCounts::Include(const WorkCounts& other)
{
    const auto take = [](std::size_t& own, std::size_t others) { own = std::max(own, others); };
    take(threads, other.threads);
    take(tiles, other.tiles);
    take(vertices, other.vertices);
    take(faces, other.faces);
    take(facings, other.facings);
    take(points, other.points);
    take(meshVertices, other.meshVertices);
    take(states, other.states);
    take(units, other.units);
    take(recorded, other.recorded);
    take(passes, other.passes);
    take(lights, other.lights);
    take(meshes, other.meshes);
    take(meshFaces, other.meshFaces);
    take(meshGroups, other.meshGroups);
    take(meshTriangles, other.meshTriangles);
    take(textures, other.textures);
    take(texels, other.texels);
}

std::size_t BatchBytes(const WorkCounts& counts)
{
    return BytesPerVertex * counts.vertices + BytesPerFace * counts.faces + counts.facings;
}

std::size_t MostPairs(const RgbLimits& limits)
{
    return std::max<std::size_t>(1, limits.roundBytes / 16 / BytesPerPair);
}

std::size_t UnitBytes(const WorkCounts& counts, const RgbLimits& limits)
{
    // One primitive may come on top; clipping makes up to ten triangles of it, and each is in all tiles at most.
    constexpr std::size_t MostCorners = std::tuple_size_v<decltype(ClipPolygon::corners)>;
    const std::size_t pairs = MostPairs(limits) + 2 * LineSurvivors::Capacity + (MostCorners - 2) * counts.tiles;
    const std::size_t records = MostRecords + (MostCorners - 2) * TriangleSurvivors::Capacity;
    const std::size_t offsets = counts.tiles + 1;
    return Grown(pairs * BytesPerPair + records * (sizeof(Record) + sizeof(std::uint32_t)) +
                 (MostLocalVertices + MostCorners) * BytesPerVertex + offsets * sizeof(std::uint32_t));
}

std::size_t MostBytes(const WorkCounts& counts, const RgbLimits& limits)
{
    const std::size_t sortedOffsets = Grown(Planner::SortedUnitsPerThread * (counts.tiles + 1) * sizeof(std::uint32_t));
    const std::size_t perThread = sizeof(TileScratch) + sizeof(TileSort) + UnitBytes(counts, limits) + sortedOffsets;
    const std::size_t batch = BytesPerVertex * counts.vertices + BytesPerFace * counts.faces + counts.facings +
                              7 * counts.points + 2 * counts.meshVertices;
    // Lists double as they grow.
    const std::size_t lists = 2 * (sizeof(Part) + sizeof(DrawState) + 4 * sizeof(Segment)) * counts.states +
                              160 * counts.units + 3 * (2 * sizeof(RecordedItem) + 64) * counts.recorded +
                              3 * sizeof(Pass) * counts.passes + 3 * sizeof(LightValues) * counts.lights;
    const std::size_t others = 256 * counts.meshes + sizeof(std::uint32_t) * counts.meshFaces +
                               sizeof(MeshFacts::GroupFacts) * counts.meshGroups +
                               4 * sizeof(float) * counts.meshTriangles + 8 * counts.texels + 2048 * counts.textures;
    return Fixed + BytesPerTile * counts.tiles + perThread * counts.threads + 4 * limits.roundBytes + batch + lists +
           others;
}

} // namespace lumora::rgb
