// A grid of vertices into quads.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

namespace lumora
{

struct SurfaceOptions
{
    bool reverse = false;        ///< wind every quad the other way
    bool wrap = false;           ///< join the last row to the first; columns never wrap
    bool dropCoincident = false; ///< leave out repeated corners (AppendQuad)
};

/// Adds the quads between the rows and columns of `grid` (vertex (row, column) at row · columns + column) to the mesh,
/// in one call and with the one normal (0, 0, 1). A quad's corners are (r, c), (r + 1, c), (r + 1, c + 1), (r, c + 1):
/// it faces whoever sees the rows going down and the columns going right.
///
/// Errors, with source "modGenerateSurfaceFaces" and the mesh as it was: 6 when the face list could not be indexed with
/// 32 bits, 9 when the grid is shorter than rows · columns, and what MeshBuilder::AddFaces raises. No quads come of
/// fewer than two columns or rows; the vertices are still added.
void GenerateSurfaceFaces(MeshBuilder& mesh, VertexSpan grid, std::int32_t columns, std::int32_t rows,
                          const SurfaceOptions& options);

/// Writes a quad's entries (the count, then vertex and normal index 0 of each corner) at `cursor`, which moves on
/// behind them. A corner that equals (VectorsEqual) the one before it is left out, so that a quad at a pole becomes a
/// triangle; nothing is written of a quad with fewer than three corners left. `faces` must have the room.
///
/// Errors, with source "modGenerateSurfaceFaces": 9 for an index outside the grid or no room at the cursor.
void AppendQuad(VertexSpan grid, const Quad& quad, FaceList& faces, std::int32_t& cursor);

} // namespace lumora
