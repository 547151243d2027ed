// What a driver draws: a mesh compiled to arrays, and the images on it. Immutable once built, shared by all.
#pragma once

#include "base/Vector.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace lumora
{

/// A texture's pixels: 0xAARRGGBB, rows from top to bottom, v 0 at the top row. Immutable once shared.
struct TextureImage
{
    std::uint64_t identity = 0; ///< unique in the process: what a driver caches by
    int width = 0;
    int height = 0;
    bool hasTranslucency = false; ///< some alpha is below 255
    std::vector<std::uint32_t> pixels;
};

/// How a surface answers light. Colours are red, green, blue in 0..1.
struct SurfaceMaterial
{
    float power = 0; ///< exponent of the highlight; 0 is no highlight
    Vector specular{1, 1, 1};
    Vector emissive{0, 0, 0};

    friend bool operator==(const SurfaceMaterial&, const SurfaceMaterial&) = default;
};

/// A mesh in the form that drivers draw and picks search. Coordinates are the mesh's own.
///
/// Every face is one polygon of the mesh builder; it is cut into triangles that keep its winding (clockwise seen
/// from the front). Vertices are split where normal, texture coordinates or colour differ.
struct DrawMesh
{
    /// Consecutive triangles and edges of one material and texture.
    struct Group
    {
        std::uint32_t firstTriangle = 0;
        std::uint32_t triangleCount = 0;
        std::uint32_t firstEdge = 0;
        std::uint32_t edgeCount = 0;
        SurfaceMaterial material;
        std::shared_ptr<const TextureImage> texture; ///< may be nothing
        bool translucent = false;                    ///< some colour's alpha is below 255, or the texture's
    };

    static constexpr std::uint32_t NoFace = 0xFFFFFFFF;

    /// A side of a face, drawn once however many faces share it.
    struct Edge
    {
        std::uint32_t vertexA = 0;
        std::uint32_t vertexB = 0;
        std::uint32_t triangleA = 0;      ///< a triangle of the first face at this edge: its winding culls the edge
        std::uint32_t triangleB = NoFace; ///< of the second face, or NoFace
    };

    std::uint64_t identity = 0; ///< unique in the process: a changed mesh is compiled to another one

    // Vertices, one entry each. Normals have unit length. u and v are empty when no group has a texture.
    std::vector<float> x, y, z;
    std::vector<float> normalX, normalY, normalZ;
    std::vector<float> u, v;
    std::vector<std::uint32_t> color; ///< 0xAARRGGBB

    // Faces: unit normals for flat shading.
    std::vector<float> faceNormalX, faceNormalY, faceNormalZ;

    // Triangles: three vertex indices each, and the face each was cut from.
    std::vector<std::uint32_t> indices;
    std::vector<std::uint32_t> triangleFace;

    std::vector<Edge> edges;
    std::vector<Group> groups;
    Box bounds;

    std::uint32_t VertexCount() const { return static_cast<std::uint32_t>(x.size()); }
    std::uint32_t TriangleCount() const { return static_cast<std::uint32_t>(triangleFace.size()); }
};

} // namespace lumora
