// What drawing needs to know of a mesh beyond its arrays, found once and kept while the mesh lives.
#pragma once

#include "platform/drivers/DrawMesh.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace lumora::rgb
{

/// The planes that triangles lie in, scaled so that the largest number of each is 1 or -1: normal (x, y, z), which is
/// the cross product of the sides from the first corner to the others, and its product with that corner. All 0 where
/// that product is too close to 0 for its sign to be sure.
struct TrianglePlanes
{
    explicit TrianglePlanes(const DrawMesh& mesh);

    std::vector<float> rows[4];
};

struct MeshFacts
{
    /// A stretch of numbers.
    struct Range
    {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };
    struct GroupFacts
    {
        Range vertices; ///< all that the group uses lie in here
        Range faces;
        bool isAllTranslucent = false; ///< every vertex that its triangles use has an alpha below 255
    };

    explicit MeshFacts(const DrawMesh& mesh);

    std::vector<GroupFacts> groups;
    std::vector<std::uint32_t> faceVertices; ///< the first vertex of each face's first triangle
    bool hasOneMaterial = true;

    /// For lines and points. Nothing at the first call: a mesh that changes with every picture does not pay for them.
    const TrianglePlanes* PlanesOf(const DrawMesh& mesh) const;

    std::size_t HeldBytes() const;

private:
    mutable std::unique_ptr<const TrianglePlanes> planes_;
    mutable bool mayNeedPlanes_ = false;
};

/// Whether every number in the mesh names something that is there.
bool IsConsistent(const DrawMesh& mesh);

/// Facts by mesh: 4 bytes a face and 16 a group for each mesh that is alive, and 16 a triangle of those drawn as lines
/// or points more than once.
class MeshFactsCache
{
public:
    /// Nothing when the mesh is not consistent. The answer lives as long as the mesh, or until Sweep.
    const MeshFacts* Find(const std::shared_ptr<const DrawMesh>& mesh);

    /// Forgets meshes that are gone.
    void Sweep();

    std::size_t Count() const { return entries_.size(); }
    std::size_t FaceCount() const; ///< of the meshes it knows
    std::size_t GroupCount() const;
    std::size_t TriangleCount() const;
    std::size_t HeldBytes() const;

private:
    struct Entry
    {
        std::weak_ptr<const DrawMesh> mesh;
        std::unique_ptr<const MeshFacts> facts;
    };

    std::unordered_map<const DrawMesh*, Entry> entries_;
    std::size_t sizeAfterSweep_ = 0;
};

} // namespace lumora::rgb
