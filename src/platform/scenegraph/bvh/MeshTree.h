// The triangles of one mesh in a tree, and the vector code that searches it.
#pragma once

#include "platform/drivers/DrawMesh.h"
#include "platform/scenegraph/bvh/BoxTree.h"

#include <vector>

namespace lumora::rays
{

/// Up to four triangles of a leaf, by coordinate; lanes without a triangle hold corners that are no numbers.
struct alignas(16) TriangleBlock
{
    static constexpr int Width = 4;

    float corner[3][3][Width]; ///< corner, axis, triangle
    std::uint32_t triangle[Width];
};

/// Owns what it needs of the mesh's coordinates: 60 to 70 bytes for each triangle, below 160 for any mesh; while it is
/// built 32 more.
struct MeshTree
{
    BoxTree boxes;
    LargeArray<TriangleBlock> blocks;

    std::size_t ByteSize() const;
};

/// Triangles with corners that are not finite are left out: no ray meets them.
MeshTree BuildMeshTree(const DrawMesh& mesh);

struct TriangleHit
{
    double distance = Missed;
    std::uint32_t triangle = 0;

    /// Nearest first, equal distances in the order of the mesh.
    friend bool operator<(const TriangleHit& a, const TriangleHit& b)
    {
        return a.distance < b.distance || (a.distance == b.distance && a.triangle < b.triangle);
    }
};

/// A plane linear in the coordinates of a vertex, for all vertices alike.
struct SideTest
{
    float alongX[3]; ///< factors of x, y, z
    float alongY[3];
    float offsetX;
    float offsetY;
    float margin;
};

/// What is compiled for each instruction set. All answer the same.
struct Kernels
{
    /// Lowers `nearest` to the first of the hits.
    void (*findNearest)(const MeshTree& tree, const ShearedRay& triangles, const BoxRay& boxes, TriangleHit& nearest);

    /// Adds all hits, in any order.
    void (*findAll)(const MeshTree& tree, const ShearedRay& triangles, const BoxRay& boxes,
                    std::vector<TriangleHit>& hits);

    /// The lanes of a node that the ray meets up to `limit`, as bits, and where it enters them.
    std::uint32_t (*meetNode)(const Node& node, const BoxRay& ray, float limit, float* entry);

    /// For each vertex a bit for each of eight half planes around the ray it lies surely within. A triangle all of
    /// whose corners share one is not met.
    void (*findSides)(const float* x, const float* y, const float* z, std::size_t count, const SideTest& test,
                      std::uint8_t* sides);
};

/// Without vector instructions.
const Kernels& PlainKernels();

/// The best for this processor.
const Kernels& BestKernels();

} // namespace lumora::rays
