#include "geometry/modGenerateSurfaceFaces.h"

#include "geometry/Steps.h"
#include "geometry/modVector.h"

#include <algorithm>
#include <limits>

namespace lumora
{

namespace
{

constexpr const char* Source = "modGenerateSurfaceFaces";
constexpr std::int32_t EntriesPerQuad = 1 + 2 * 4;

void RequireGrid(VertexSpan grid, std::int32_t columns, std::int32_t rows)
{
    const std::int64_t count = std::int64_t{columns} * rows;
    if (count > std::numeric_limits<std::int32_t>::max() / EntriesPerQuad - 1)
        throw RuntimeError{error::Overflow, Source, "The grid has more quads than a face list can hold"};
    if (static_cast<std::size_t>(count) > grid.size())
        throw RuntimeError{error::SubscriptOutOfRange, Source,
                           "The grid has " + std::to_string(grid.size()) + " vertices and needs " +
                               std::to_string(count)};
}

void Write(FaceList& faces, std::int32_t& cursor, std::span<const std::int32_t> corners)
{
    if (cursor < 0 || static_cast<std::size_t>(cursor) + 1 + 2 * corners.size() > faces.size())
        throw RuntimeError{error::SubscriptOutOfRange, Source, "The face list has no room for another quad"};
    auto entry = faces.begin() + cursor;
    *entry++ = static_cast<std::int32_t>(corners.size());
    for (const std::int32_t corner : corners)
    {
        *entry++ = corner;
        *entry++ = 0;
    }
    cursor = static_cast<std::int32_t>(entry - faces.begin());
}

Vector VertexAt(VertexSpan grid, std::int32_t index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= grid.size())
        throw RuntimeError{error::SubscriptOutOfRange, Source, "The grid has no vertex " + std::to_string(index)};
    return grid[static_cast<std::size_t>(index)];
}

FaceList MakeFaceList(VertexSpan grid, std::int32_t columns, std::int32_t rows, const SurfaceOptions& options)
{
    const std::int32_t quadRows = options.wrap ? rows : rows - 1;
    const std::int32_t quadColumns = columns - 1;
    if (rows < 1 || quadRows < 1 || quadColumns < 1)
        return {0};
    RequireGrid(grid, columns, rows);
    FaceList faces(static_cast<std::size_t>(quadRows) * static_cast<std::size_t>(quadColumns) * EntriesPerQuad + 1);
    std::int32_t cursor = 0;
    for (std::int32_t r = 0; r < quadRows; ++r)
        for (std::int32_t c = 0; c < quadColumns; ++c)
        {
            const std::int32_t here = r * columns + c;
            const std::int32_t below = (r + 1 == rows ? 0 : r + 1) * columns + c;
            Quad quad{here, below, below + 1, here + 1};
            if (options.reverse)
                std::ranges::reverse(quad);
            if (options.dropCoincident)
                AppendQuad(grid, quad, faces, cursor);
            else
                Write(faces, cursor, quad);
        }
    faces.resize(static_cast<std::size_t>(cursor) + 1);
    faces.back() = 0;
    return faces;
}

} // namespace

void GenerateSurfaceFaces(MeshBuilder& mesh, VertexSpan grid, std::int32_t columns, std::int32_t rows,
                          const SurfaceOptions& options)
{
    constexpr Vector Normal[] = {{0, 0, 1}};
    NamingErrors(Source, [&] { mesh.AddFaces(grid, Normal, MakeFaceList(grid, columns, rows, options)); });
}

void AppendQuad(VertexSpan grid, const Quad& quad, FaceList& faces, std::int32_t& cursor)
{
    std::array<std::int32_t, 4> kept;
    std::size_t count = 0;
    Vector previous = VertexAt(grid, quad[3]);
    for (const std::int32_t corner : quad)
    {
        const Vector position = VertexAt(grid, corner);
        if (!VectorsEqual(position, previous))
            kept[count++] = corner;
        previous = position;
    }
    if (count >= 3)
        Write(faces, cursor, {kept.data(), count});
}

} // namespace lumora
