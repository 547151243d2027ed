// What planning needs to know of a mesh, found once and kept, close together, while the mesh lives.
#pragma once

#include "platform/drivers/DrawMesh.h"
#include "platform/drivers/rgb/Frame.h"

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
    struct GroupFacts
    {
        Range triangles;
        Range edges;
        Range vertices; ///< all that the group uses lie in here
        Range faces;
        const SurfaceMaterial* material = nullptr;
        const TextureImage* texture = nullptr; ///< nothing where it cannot be used
        bool isTranslucent = false;            ///< by its colors, or as the mesh says
        bool isAllTranslucent = false;         ///< every vertex that its triangles use has an alpha below 255
    };

    explicit MeshFacts(const DrawMesh& mesh);

    std::vector<GroupFacts> groups;
    std::vector<std::uint32_t> faceVertices; ///< the first vertex of each face's first triangle
    std::uint32_t vertexCount = 0;
    std::uint32_t faceCount = 0;
    std::uint32_t triangleCount = 0;
    bool hasOneMaterial = true;
    bool areAllTextured = true;   ///< or none of them is
    bool hasTranslucency = false; ///< in a color or a texture

    /// For lines and points. Nothing at the first call: a mesh that changes with every picture does not pay for them.
    const TrianglePlanes* PlanesOf(const DrawMesh& mesh) const;

    std::size_t HeldBytes() const;

private:
    mutable std::unique_ptr<const TrianglePlanes> planes_;
    mutable bool mayNeedPlanes_ = false;
};

/// Whether every number in the mesh names something that is there.
bool IsConsistent(const DrawMesh& mesh);

/// Facts by mesh: 4 bytes a face and about 60 a group for each mesh that is alive, and 16 a triangle of those drawn as
/// lines or points more than once. Pictures mostly show the same meshes in the same order, so that the one after the
/// last one found is tried before all are searched.
class MeshFactsCache
{
public:
    /// Nothing when the mesh is not consistent. The answer and the mesh live until Release.
    const MeshFacts* Find(const std::shared_ptr<const DrawMesh>& mesh);

    /// Lets go of the meshes that were found.
    void Release();

    /// Forgets meshes that are gone.
    void Sweep();

    std::size_t Count() const { return numbers_.size(); }
    std::size_t FaceCount() const { return faceCount_; } ///< of the meshes it knows
    std::size_t GroupCount() const { return groupCount_; }
    std::size_t TriangleCount() const { return triangleCount_; }
    std::size_t HeldBytes() const;

private:
    struct Entry
    {
        const DrawMesh* address = nullptr;
        std::weak_ptr<const DrawMesh> mesh;
        std::unique_ptr<const MeshFacts> facts;
        std::uint64_t lastHold = 0;
    };

    Entry& EntryOf(const DrawMesh* mesh);
    /// Adds to what is counted, or takes away.
    void Count(const Entry& entry, bool isNew);

    std::vector<Entry> entries_; ///< in the order in which they were first found
    std::unordered_map<const DrawMesh*, std::uint32_t> numbers_;
    std::vector<std::shared_ptr<const DrawMesh>> held_; ///< each once since Release
    std::uint64_t hold_ = 1;                            ///< number of this hold
    std::size_t last_ = 0;                              ///< the entry found last
    std::size_t faceCount_ = 0;
    std::size_t groupCount_ = 0;
    std::size_t triangleCount_ = 0;
    std::size_t sizeAfterSweep_ = 0;
};

} // namespace lumora::rgb
