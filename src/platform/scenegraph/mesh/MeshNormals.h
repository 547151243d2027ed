// Normals made from the faces around a vertex.
#pragma once

#include "platform/scenegraph/mesh/MeshCorners.h"
#include "platform/scenegraph/mesh/MeshData.h"

namespace lumora
{

/// The crease angle of meshes that bring no normals, radians.
inline constexpr double StandardCreaseAngle = 0.5;

/// The unit normal of a face (the mean of its turns, so that it need not be plane); zero when it has no area.
Vector FaceNormal(const MeshData& data, std::size_t face);
std::vector<Vector> FaceNormals(const MeshData& data);

struct CornerNormals
{
    std::vector<Vector> normals;         ///< unit vectors; equal ones at a vertex are listed once
    std::vector<std::uint32_t> ofCorner; ///< which of them each corner has
};

/// A normal for each corner: the mean, weighted by angle, of the faces around its vertex whose normals are within
/// `creaseAngle` radians of its own face's.
CornerNormals MakeCornerNormals(const MeshData& data, const VertexCorners& around,
                                const std::vector<Vector>& faceNormals, double creaseAngle);

} // namespace lumora
