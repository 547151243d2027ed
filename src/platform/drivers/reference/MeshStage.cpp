// The first stage: vertices of an item, placed in clip space and lit.
#include "platform/drivers/reference/MeshStage.h"

#include <algorithm>
#include <cmath>

namespace lumora::reference
{

namespace
{

std::vector<std::uint32_t> FirstTriangles(const DrawMesh& mesh)
{
    std::vector<std::uint32_t> result(mesh.faceNormalX.size(), DrawMesh::NoFace);
    for (std::uint32_t triangle = mesh.TriangleCount(); triangle-- > 0;)
        result[mesh.triangleFace[triangle]] = triangle;
    return result;
}

} // namespace

MeshStage::MeshStage(const DrawItem& item, const Pass& pass)
    : item_(item), mesh_(*item.mesh), pass_(pass), normalMatrix_(NormalMatrix(item.world)),
      meshToCamera_(item.world * pass.state.worldToCamera), firstTriangleOfFace_(FirstTriangles(mesh_))
{
}

std::array<ClipVertex, 3> MeshStage::Triangle(const DrawMesh::Group& group, std::uint32_t triangle, bool textured) const
{
    const Shade face = item_.gouraud ? Shade{} : ShadeOfFace(group, mesh_.triangleFace[triangle]);
    std::array<ClipVertex, 3> result;
    for (std::uint32_t corner = 0; corner < 3; ++corner)
    {
        const std::uint32_t vertex = mesh_.indices[3 * triangle + corner];
        result[corner] = Place(vertex, item_.gouraud ? ShadeOf(group, PointOfVertex(vertex)) : face, textured);
    }
    return result;
}

std::array<ClipVertex, 2> MeshStage::Edge(const DrawMesh::Group& group, const DrawMesh::Edge& edge) const
{
    if (item_.gouraud)
        return {Point(group, edge.vertexA), Point(group, edge.vertexB)};
    const Shade face = ShadeOfFace(group, mesh_.triangleFace[edge.triangleA]);
    return {Place(edge.vertexA, face, false), Place(edge.vertexB, face, false)};
}

ClipVertex MeshStage::Point(const DrawMesh::Group& group, std::uint32_t vertex) const
{
    return Place(vertex, ShadeOf(group, PointOfVertex(vertex)), false);
}

bool MeshStage::IsCulled(std::uint32_t triangle) const
{
    if (pass_.state.cull == CullMode::None)
        return false;
    std::array<Double3, 3> rows;
    for (std::uint32_t corner = 0; corner < 3; ++corner)
    {
        const Double4 p = Place(mesh_.indices[3 * triangle + corner], {}, false).position;
        rows[corner] = {p.x, p.y, p.w};
    }
    // Above 0 for counter-clockwise: y goes up in clip space.
    const double winding = Dot(rows[0], Cross(rows[1], rows[2]));
    return pass_.state.cull == CullMode::Clockwise ? !(winding > 0) : !(winding < 0);
}

Double3 MeshStage::MeshPosition(std::uint32_t vertex) const
{
    return {mesh_.x[vertex], mesh_.y[vertex], mesh_.z[vertex]};
}

Double3 MeshStage::WorldNormal(double x, double y, double z) const
{
    return Normalized(TransformDirection({x, y, z}, normalMatrix_));
}

SurfacePoint MeshStage::PointOfVertex(std::uint32_t vertex) const
{
    return {TransformPoint(MeshPosition(vertex), item_.world),
            WorldNormal(mesh_.normalX[vertex], mesh_.normalY[vertex], mesh_.normalZ[vertex]), mesh_.color[vertex]};
}

Shade MeshStage::ShadeOf(const DrawMesh::Group& group, const SurfacePoint& point) const
{
    return item_.lit ? Lit(pass_.illumination, group.material, point) : Unlit(point);
}

Shade MeshStage::ShadeOfFace(const DrawMesh::Group& group, std::uint32_t face) const
{
    SurfacePoint point = PointOfVertex(mesh_.indices[3 * firstTriangleOfFace_[face]]);
    point.normal = WorldNormal(mesh_.faceNormalX[face], mesh_.faceNormalY[face], mesh_.faceNormalZ[face]);
    return ShadeOf(group, point);
}

ClipVertex MeshStage::Place(std::uint32_t vertex, const Shade& shade, bool textured) const
{
    const Double3 position = MeshPosition(vertex);
    const Double4 camera = Transform(Double4{position.x, position.y, position.z, 1}, meshToCamera_);
    ClipVertex result{Transform(camera, pass_.state.cameraToClip), {shade.diffuse, {}, camera.z, 0, 0}};
    if (!textured)
    {
        result.attributes.diffuse.color = Clamp01(shade.diffuse.color + shade.highlight);
        return result;
    }
    result.attributes.highlight = shade.highlight;
    if (!mesh_.u.empty())
    {
        result.attributes.u = mesh_.u[vertex];
        result.attributes.v = mesh_.v[vertex];
    }
    return result;
}

} // namespace lumora::reference
