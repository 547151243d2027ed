// The visuals of a hierarchy side by side in the order of drawing, with where they stand in the world, kept up with
// what changes.
#pragma once

#include "platform/scenegraph/frames/HierarchyListener.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace lumora
{

/// Made for a root when it is first drawn, and notified by frames and by the meshes it holds of every change, which
/// costs a note; the next picture takes the notes up. Materials, which threads may share, are only read: their
/// revisions are compared at each picture. Meshes that it does not hold are any other thread's to build and edit. What
/// did not change is not looked at again, and what stands side by side out of view is passed over 64 visuals at a time.
/// A visual that comes in the middle has the list built anew; one that comes last does not. About 180 bytes for each
/// visual and 130 for each mesh.
class DrawList final : public HierarchyListener, public MeshListener
{
public:
    static constexpr std::uint32_t None = ListenerSlot::NoEntry;

    /// The list of the frame's root, made at need.
    static DrawList& Of(Frame& frame);

    explicit DrawList(Frame& root);
    ~DrawList() override;
    DrawList(const DrawList&) = delete;
    DrawList& operator=(const DrawList&) = delete;

    void OnMoved(Frame& frame) noexcept override;
    void OnFramesAdded(Frame& top) override;
    void OnFramesRemoved(Frame& top) override;
    void OnVisualAdded(Frame& frame, const std::shared_ptr<Visual>& visual) override;
    void OnVisualRemoved(Frame& frame, const std::shared_ptr<Visual>& visual) override;
    void OnLightsChanged() override { areLightsStale_ = true; }

    void OnMeshChanged(std::uint32_t slot) noexcept override;

    // For drawing.

    /// Frames with lights, in the order in which the scene is walked.
    const std::vector<Frame*>& FramesWithLights();

    /// One visual to draw. The mesh is compiled.
    struct Seen
    {
        const Matrix4& world;
        const std::shared_ptr<const DrawMesh>& mesh;
        std::uint32_t quality; ///< the mesh's own
        std::uint32_t triangleCount;
    };

    /// Takes up all changes and finds what may be seen of `top` and below it: the places of those visuals whose box
    /// does not lie beyond one plane of the view, in order. Valid until the next call.
    const std::vector<std::uint32_t>& FindSeen(Frame& top, const Matrix4& worldToClip);

    Seen operator[](std::uint32_t place) const
    {
        const Entry& entry = entries_[place];
        const Mesh& mesh = meshes_[entry.mesh];
        return {entry.world, mesh.compiled, mesh.quality, mesh.triangleCount};
    }

private:
    /// One mesh in one frame. Its place is its number. A vacant one has no mesh; while its frame is still there, the
    /// frame's next visual may take it.
    struct Entry
    {
        Matrix4 world;
        Frame* frame = nullptr;
        std::uint32_t mesh = None;
        std::uint32_t nextOfFrame = None;
    };

    struct Mesh
    {
        MeshBuilder* builder = nullptr; ///< nothing where the place is free
        std::uint32_t uses = 0;
        std::uint32_t quality = 0;
        std::uint32_t triangleCount = 0;
        bool isChanged = false; ///< listed among the changed ones
        bool isReshaped = false;
        bool isCompiled = false; ///< since it, or a material, changed
        Box box;
        std::shared_ptr<const DrawMesh> compiled;
    };

    /// A material of meshes that were compiled here, at the revision they have.
    struct DrawnMaterial
    {
        std::shared_ptr<Material> material;
        std::uint64_t revision;
    };

    class RebuildUnlessDone;

    /// Minimum and maximum in the world, rounded outwards.
    struct WorldBox
    {
        float side[6];
    };

    static constexpr std::uint32_t BlockSize = 64;

    /// Entries side by side.
    struct Block
    {
        WorldBox box{};          ///< around those that are drawn
        std::uint64_t drawn = 0; ///< a bit for each entry that has something to draw
        bool isStale = true;
    };

    struct Planes;
    enum class Side : std::uint8_t
    {
        Outside,
        Crossing,
        Inside,
    };

    struct Stretch
    {
        std::uint32_t first;
        std::uint32_t end;
    };

    static MeshBuilder* MeshOf(const std::shared_ptr<Visual>& visual);
    static WorldBox WorldBoxOf(const Box& box, const Matrix4& world);
    static Side SideOf(const WorldBox& box, const Planes& planes);
    static bool IsVacantOrTaken(const Frame& top, int& budget);
    bool IsLast(const Frame& frame) const;
    void AddLast(Frame& frame, MeshBuilder& mesh);
    bool TakeVacant(const Frame& frame, MeshBuilder& mesh);
    void Vacate(std::uint32_t place);
    void RequireRebuild() noexcept;
    void RebuildWhereWorn() noexcept;
    std::uint32_t FreeSlot();
    std::uint32_t PlaceOfMesh(MeshBuilder& mesh);
    void MarkStale(std::uint32_t place) noexcept;
    void Rebuild();
    void ReviewMeshes();
    void ReviewMaterials();
    void NoteMaterials(const MeshBuilder& mesh);
    void Measure(std::uint32_t place);
    void MeasureBlock(std::uint32_t number);
    void Refresh();
    Stretch StretchOf(const Frame& top) const;
    void AddSeen(std::uint32_t block, std::uint64_t among, const Planes& planes, const Matrix4& worldToClip);
    void CompileSeen();

    Frame& root_;
    std::vector<Entry> entries_;
    std::vector<WorldBox> boxes_;       ///< of the entries
    std::vector<std::uint8_t> isStale_; ///< of the entries
    std::vector<std::uint32_t> stale_;  ///< those entries
    std::vector<Block> blocks_;
    std::vector<Mesh> meshes_;
    std::vector<std::uint32_t> freeMeshes_;
    std::vector<std::uint32_t> changedMeshes_; ///< since the last picture
    std::unordered_map<const Material*, DrawnMaterial> materials_;
    std::vector<std::uint32_t> seen_;
    std::vector<Frame*> framesWithLights_;
    std::size_t vacant_ = 0;
    bool mustRebuild_ = true; ///< nothing but the list of lights means anything then, and no mesh reports here
    bool areLightsStale_ = true;
};

} // namespace lumora
