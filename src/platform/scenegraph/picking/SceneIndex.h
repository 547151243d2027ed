// The visuals at and below a root in a tree by where they stand in the world, kept up with what moves.
#pragma once

#include "platform/scenegraph/bvh/BoxTree.h"
#include "platform/scenegraph/frames/HierarchyListener.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <cstdint>
#include <vector>

namespace lumora
{
class ScenePick;
} // namespace lumora

namespace lumora::rays
{

/// Made for a root when it is first picked in, and notified by frames and meshes of every change. A change costs a
/// note; the next pick takes the notes up: boxes of what moved are fitted into the tree where they are, and the tree is
/// built anew when much changed or once as many changes as there are visuals have worn it. About 300 bytes for each
/// visual.
///
/// Who changes a frame or a mesh says so before (BeforeChange), so that unfinished picks answer for the scene they
/// were cast into.
class SceneIndex final : public HierarchyListener, public MeshListener
{
public:
    static constexpr std::uint32_t None = ListenerSlot::NoEntry;

    /// The index of the frame's root, made at need.
    static SceneIndex& Of(Frame& frame);

    /// One mesh in one frame. Links lead to entries.
    struct Entry
    {
        Frame* frame = nullptr; ///< nothing where the entry is free
        MeshBuilder* mesh = nullptr;
        Matrix4 toLocal;    ///< from the world to the mesh
        DoubleBox worldBox; ///< empty where nothing can be hit
        std::uint64_t order = 0;
        std::uint32_t nextOfFrame = None;
        std::uint32_t nextOfMesh = None;
        std::uint32_t previousOfMesh = None;
        std::uint32_t node = None; ///< place in the tree
        std::uint32_t lane = 0;
        bool isStale = false;
    };

    explicit SceneIndex(Frame& root);
    ~SceneIndex() override;
    SceneIndex(const SceneIndex&) = delete;
    SceneIndex& operator=(const SceneIndex&) = delete;

    /// Finishes the picks that are under way.
    void BeforeChange() override;
    void OnMoved(Frame& frame) override;
    void OnFramesAdded(Frame& top) override;
    void OnFramesRemoved(Frame& top) override;
    void OnVisualAdded(Frame& frame, const std::shared_ptr<Visual>& visual) override;
    void OnVisualRemoved(Frame& frame, const std::shared_ptr<Visual>& visual) override;
    void OnReshaped(std::uint32_t firstEntry) override;

    // For picks.

    /// Takes up all changes.
    void Refresh();
    const BoxTree& Tree() const { return tree_; }

    /// Nodes to begin at.
    const std::vector<Reference>& Roots() const { return roots_; }
    const Entry& operator[](std::uint32_t entry) const { return entries_[entry]; }

    /// Whether the first entry comes before the other one when the scene is walked.
    bool ComesBefore(std::uint32_t entry, std::uint32_t other);

    void Open(ScenePick& pick) { openPicks_.push_back(&pick); }
    void Close(ScenePick& pick) { std::erase(openPicks_, &pick); }

private:
    void AddEntry(Frame& frame, MeshBuilder& mesh);
    void RemoveEntry(std::uint32_t entry);
    void LinkToMesh(std::uint32_t entry);
    void UnlinkFromMesh(std::uint32_t entry);
    void MarkStale(std::uint32_t entry);
    void Measure(Entry& entry);
    bool MustRebuild(const std::vector<std::uint32_t>& changed) const;
    void Rebuild();
    void Place(std::uint32_t entry);
    void FindLooseLane(std::uint32_t entry);
    void StoreBox(const Entry& entry);
    void FitAbove(std::uint32_t node);
    void Number();
    bool IsLast(const Frame& frame) const;

    Frame& root_;
    std::vector<Entry> entries_;
    std::vector<std::uint32_t> free_;
    std::vector<std::uint32_t> stale_;
    std::vector<ScenePick*> openPicks_;
    BoxTree tree_;
    std::vector<Reference> roots_;
    std::size_t builtNodes_ = 0; ///< the others hold what came since, side by side
    std::size_t wear_ = 0;       ///< changes since the tree was built
    std::uint64_t lastOrder_ = 0;
    bool isOrderStale_ = false;
};

} // namespace lumora::rays
