// What a pick found.
#pragma once

#include "base/Vector.h"
#include "platform/scenegraph/frames/SceneObject.h"

#include <memory>
#include <optional>
#include <vector>

namespace lumora
{

class Frame;

/// A ray: `direction` need not have unit length.
struct Ray
{
    Vector direction;
    Vector origin;
};

/// Flags of RayPick.
enum class RayPickFlags : std::uint32_t
{
    Primitives = 0,    ///< exact hits on faces
    BoundingBoxes = 1, ///< obstacles: bounding boxes only, but for meshes that say otherwise (Obstacle)
    AllBoxes = 2,      ///< bounding boxes only, of every mesh
};

struct PickDescription
{
    std::int32_t faceIndex = 0;
    Vector position; ///< what it means depends on the pick: see Frame::RayPick and RMViewport::Pick
};

struct PickHit
{
    std::shared_ptr<Visual> visual;
    std::vector<std::shared_ptr<Frame>> framePath; ///< from the picked frame down to the one that holds the visual
    PickDescription description;
};

/// Where hits come from, one after the other.
class HitSource
{
public:
    virtual ~HitSource() = default;

    /// The next hit, or nothing after the last.
    virtual std::optional<PickHit> Next() = 0;
};

/// Hits, nearest first; equal distances in the order of the traversal. They are searched for as they are asked for, and
/// are those of the scene at the time of the pick: what would change the scene has the search finished first.
class PickedArray : public Object
{
public:
    PickedArray() = default;
    explicit PickedArray(std::unique_ptr<HitSource> source) : source_(std::move(source)) {}

    /// Searches for all hits. Whether there is one at all, HasPick(0) answers sooner.
    std::int32_t GetSize() const;

    /// Whether there is a hit of this index; searches no further.
    bool HasPick(std::int32_t index) const;

    /// Searches no further than this hit. Error 9 outside 0 .. GetSize() - 1. The hit stays where it is as long as the
    /// array.
    const PickHit& GetPick(std::int32_t index) const;

private:
    bool Reach(std::size_t count) const;

    mutable std::vector<std::unique_ptr<PickHit>> hits_; // stay where they are while more come
    mutable std::unique_ptr<HitSource> source_;          // nothing once all hits are there
};

} // namespace lumora
