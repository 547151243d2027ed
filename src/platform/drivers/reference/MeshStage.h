// The first stage: vertices of an item, placed in clip space and lit.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/reference/Lighting.h"
#include "platform/drivers/reference/Vertex.h"

#include <array>
#include <cstdint>
#include <vector>

namespace lumora::reference
{

/// A pass as the driver keeps it: `state.lights` is empty, the lights are in `illumination`.
struct Pass
{
    PassState state;
    Illumination illumination;
};

/// One item of a pass. Both must outlive this.
class MeshStage
{
public:
    MeshStage(const DrawItem& item, const Pass& pass);

    /// The corners of a solid triangle. Without a texture its highlight is part of the diffuse color.
    std::array<ClipVertex, 3> Triangle(const DrawMesh::Group& group, std::uint32_t triangle, bool textured) const;

    /// The ends of an edge, never textured.
    std::array<ClipVertex, 2> Edge(const DrawMesh::Group& group, const DrawMesh::Edge& edge) const;

    /// A vertex, never textured, lit with its own normal however faces are lit.
    ClipVertex Point(const DrawMesh::Group& group, std::uint32_t vertex) const;

    /// Whether the winding that a triangle's corners have in front of the eye is left out. One without area is left
    /// out too unless nothing is.
    bool IsCulled(std::uint32_t triangle) const;

private:
    SurfacePoint PointOfVertex(std::uint32_t vertex) const;
    Shade ShadeOf(const DrawMesh::Group& group, const SurfacePoint& point) const;
    Shade ShadeOfFace(const DrawMesh::Group& group, std::uint32_t face) const;
    ClipVertex Place(std::uint32_t vertex, const Shade& shade, bool textured) const;
    Double3 MeshPosition(std::uint32_t vertex) const;
    Double3 WorldNormal(double x, double y, double z) const;

    const DrawItem& item_;
    const DrawMesh& mesh_;
    const Pass& pass_;
    Matrix4 normalMatrix_;
    Matrix4 meshToCamera_;
    std::vector<std::uint32_t> firstTriangleOfFace_;
};

} // namespace lumora::reference
