// The edges of a compiled mesh: each side of its faces once, however many faces share it.
#pragma once

#include "platform/scenegraph/mesh/MeshCorners.h"
#include "platform/scenegraph/mesh/MeshData.h"

#include <span>
#include <vector>

namespace lumora
{

/// Where the faces of a mesh have gone in its compiled form.
struct DrawnFaces
{
    static constexpr std::uint32_t None = 0xFFFFFFFF;

    std::vector<std::uint32_t> firstTriangle; ///< of each face, or None where it is not drawn

    // By corner; both stay empty where all faces are triangles.
    std::vector<std::uint32_t> vertex;       ///< the compiled one
    std::vector<std::uint32_t> sideTriangle; ///< at the side that begins at the corner

    std::uint32_t VertexOf(const DrawMesh& mesh, std::uint32_t face, std::uint32_t corner) const
    {
        return vertex.empty() ? mesh.indices[3 * std::size_t{firstTriangle[face]} + (corner - 3 * face)]
                              : vertex[corner];
    }
    std::uint32_t SideTriangleOf(std::uint32_t face, std::uint32_t corner) const
    {
        return sideTriangle.empty() ? firstTriangle[face] : sideTriangle[corner];
    }
};

/// The order in which faces are drawn, group after group.
struct FaceOrder
{
    std::vector<std::uint32_t> faces;            ///< empty when as they are
    std::vector<std::uint32_t> groupFaces = {0}; ///< first place of each group, and the end

    std::uint32_t FaceAt(std::uint32_t place) const { return faces.empty() ? place : faces[place]; }
};

/// Fills in the edges of `mesh` and of its groups. `around` lists corners in the order of drawing.
void FindEdges(const MeshData& data, const VertexCorners& around, const FaceOrder& order, const DrawnFaces& drawn,
               DrawMesh& mesh);

} // namespace lumora
