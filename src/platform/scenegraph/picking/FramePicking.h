// Rays through a hierarchy: what frames and viewports share when they pick.
#pragma once

#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/picking/PickedArray.h"
#include "platform/scenegraph/picking/SceneIndex.h"

#include <vector>

namespace lumora
{

/// A ray in the world in which the roots stand; distances are counted in lengths of `direction`.
using WorldRay = rays::LocalRay;

/// What to look for.
struct PickQuery
{
    WorldRay ray;
    RayPickFlags flags = RayPickFlags::Primitives;
    double limit = rays::Missed; ///< the farthest distance of a hit
};

/// What a ray meets at and below `top`: nearest first, equal distances in the order of the traversal. Frames whose
/// transform is singular or not finite have nothing to meet.
///
/// Nodes of the scene's tree, visuals and hits wait together for their turn, ordered by the least distance each may
/// have; whatever comes before a hit is looked into before the hit is told. Of a mesh only the nearest hit is searched
/// for until that one was told and more are wanted.
class ScenePick : public HitSource
{
public:
    ScenePick(std::shared_ptr<Frame> top, const PickQuery& query);
    ~ScenePick() override;
    ScenePick(const ScenePick&) = delete;
    ScenePick& operator=(const ScenePick&) = delete;

    std::optional<PickHit> Next() override;

    /// Finds all that is still to come, and needs the scene no more.
    void Settle();

protected:
    /// What a hit at a distance reports as its position.
    virtual Vector PositionAt(double distance) const = 0;

private:
    enum class Kind : std::uint8_t
    {
        Node,
        Visual, // by its box in the world
        Mesh,   // by its own box
        RestOf, // all hits of a mesh but the first
        Hit,
    };

    struct Waiting
    {
        double distance = 0;
        std::uint32_t reference = 0; // to a node or an entry
        Kind kind = Kind::Node;
        bool isFirst = false;       // hit of its mesh, which may have more
        std::uint32_t triangle = 0; // of a hit
        std::uint32_t face = 0;
    };

    bool ComesAfter(const Waiting& a, const Waiting& b) const;
    void Push(const Waiting& item);
    Waiting Pop();
    std::optional<Waiting> NextHit();
    PickHit Described(const Waiting& hit) const;
    void OpenNode(const Waiting& node);
    void OpenVisual(const Waiting& visual);
    void OpenMesh(const Waiting& mesh);
    void OpenRest(const Waiting& rest);
    WorldRay LocalRay(std::uint32_t entry) const;
    bool IsBelowTop(const Frame& frame) const;
    void Leave();

    std::shared_ptr<Frame> top_;
    std::shared_ptr<Frame> root_; // keeps the index
    rays::SceneIndex* index_;     // nothing once settled
    PickQuery query_;
    std::optional<rays::BoxRay> boxRay_;
    std::vector<Waiting> waiting_; // a heap
    std::vector<PickHit> settled_; // the last one first
};

} // namespace lumora
