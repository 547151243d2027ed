// What drawing needs to know of a mesh beyond its arrays, found once and kept while the mesh lives.
#pragma once

#include "platform/drivers/DrawMesh.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace lumora::rgb
{

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
};

/// Whether every number in the mesh names something that is there.
bool IsConsistent(const DrawMesh& mesh);

/// Facts by mesh: 4 bytes a face and 16 a group for each mesh that is alive.
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
