// What a pick found.
#pragma once

#include "platform/math/Vector.h"
#include "platform/scenegraph/SceneObject.h"

#include <memory>
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
    BoundingBoxes = 1, ///< bounding boxes only
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

/// Hits, nearest first; equal distances in the order of the traversal.
class PickedArray : public Object
{
public:
    PickedArray() = default;
    explicit PickedArray(std::vector<PickHit> hits) : hits_(std::move(hits)) {}

    std::int32_t GetSize() const;

    /// Error 9 outside 0 .. GetSize() - 1.
    const PickHit& GetPick(std::int32_t index) const;

private:
    std::vector<PickHit> hits_;
};

} // namespace lumora
