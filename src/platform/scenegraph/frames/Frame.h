// A node of the scene: a coordinate system with children, visuals and lights.
#pragma once

#include "base/Matrix.h"
#include "platform/scenegraph/frames/Color.h"
#include "platform/scenegraph/frames/HierarchyListener.h"
#include "platform/scenegraph/frames/Light.h"
#include "platform/scenegraph/frames/SceneObject.h"

#include <array>
#include <memory>
#include <vector>

namespace lumora
{

class PickedArray;
struct Ray;
enum class RayPickFlags : std::uint32_t;

/// Where a frame looks, as unit vectors in a reference frame's coordinates.
struct Orientation
{
    Vector direction{0, 0, 1}; ///< the frame's z axis
    Vector up{0, 1, 0};        ///< the frame's y axis
};

/// How AddTranslation, AddRotation, AddScale and AddTransform meet the transform that is there.
enum class CombineType : std::int32_t
{
    Replace = 0,
    Before = 1, ///< in the frame's own axes
    After = 2,  ///< in the parent's axes, about the parent's origin
};

/// Axis about which LookAt does not rotate.
enum class FrameConstraint : std::int32_t
{
    Z = 0,
    Y = 1,
    X = 2,
};

/// Fog and background of a scene; they belong to the root frame, whichever of its frames is asked.
struct SceneSettings
{
    Vector backgroundColor; ///< red, green, blue in 0..1
    bool fogEnabled = false;
    FogMode fogMode = FogMode::Linear;
    Vector fogColor{1, 1, 1};
    float fogStart = 1; ///< eye-space depth where linear fog begins
    float fogEnd = 100; ///< where it hides everything
    float fogDensity = 1;
};

/// A coordinate system, left-handed, row vectors. Frames are created by RetainedMode (or MakeFrame) and shared;
/// a parent keeps its children, a child knows its parent weakly.
///
/// `reference` arguments say in which frame's coordinates the numbers are; nothing is the root of this frame's
/// hierarchy. Frames in different hierarchies relate through their roots, which coincide: all roots stand in one world,
/// at their own local transform, which is the identity until somebody moves a root. For a root itself, nothing as
/// reference is that world.
/// A reference that was scaled to nothing raises RMBadValue where its transform has to be inverted.
/// Numbers that are not finite raise RMBadValue and change nothing; a nothing frame where one is needed raises
/// RMBadObject.
class Frame : public SceneObject, public std::enable_shared_from_this<Frame>
{
public:
    /// A frame below `parent` (nothing: a root).
    static std::shared_ptr<Frame> Make(const std::shared_ptr<Frame>& parent = nullptr);
    ~Frame() override;

    // Hierarchy.

    /// The parent, without a share in it.
    Frame* Above() const { return parent_; }

    std::shared_ptr<Frame> Parent() const { return parent_ != nullptr ? parent_->shared_from_this() : nullptr; }
    std::shared_ptr<Frame> Root();
    const std::vector<std::shared_ptr<Frame>>& Children() const { return children_; }
    const std::vector<std::shared_ptr<Visual>>& Visuals() const { return visuals_; }
    const std::vector<std::shared_ptr<Light>>& Lights() const { return lights_; }

    /// Puts `child` last below this frame, out of the parent it had; its local transform stays. RMBadObject for nothing
    /// RMBadValue when this frame is `child` or lies below it (a cycle).
    void AddChild(const std::shared_ptr<Frame>& child);

    /// RMNotFound when `child` is not a child of this frame.
    void DeleteChild(const std::shared_ptr<Frame>& child);

    /// A visual may be shown by many frames; adding it to the same frame again changes nothing.
    void AddVisual(const std::shared_ptr<Visual>& visual);
    void DeleteVisual(const std::shared_ptr<Visual>& visual);
    void AddLight(const std::shared_ptr<Light>& light);
    void DeleteLight(const std::shared_ptr<Light>& light);

    // Place.

    void SetPosition(const std::shared_ptr<Frame>& reference, float x, float y, float z);
    Vector GetPosition(const std::shared_ptr<Frame>& reference);

    /// Turns the z axis along `direction` and the y axis as near to `up` as it goes; keeps position and scale.
    /// A zero `direction`, or an `up` parallel to it, raises RMBadValue.
    void SetOrientation(const std::shared_ptr<Frame>& reference, Vector direction, Vector up);
    Orientation GetOrientation(const std::shared_ptr<Frame>& reference);

    /// Faces `target`'s origin. The constrained axis is the one about which nothing turns: Z keeps the roll (up stays
    /// as near to the old up as it can), Y keeps the direction's horizontal part, X its vertical part (in `reference`).
    /// A target at this frame's own place changes nothing.
    void LookAt(const std::shared_ptr<Frame>& target, const std::shared_ptr<Frame>& reference,
                FrameConstraint constraint);

    void AddTranslation(CombineType combine, float x, float y, float z);

    /// Turns by `angle` radians about `axis` by the formula of VectorRotate; a zero axis changes nothing.
    void AddRotation(CombineType combine, Vector axis, float angle);
    void AddScale(CombineType combine, float x, float y, float z);

    /// `matrix` must be affine.
    void AddTransform(CombineType combine, const Matrix4& matrix);

    /// Relative to the parent.
    const Matrix4& LocalTransform() const { return local_; }

    /// Relative to the world in which the roots stand; kept until a frame on the way up changes.
    const Matrix4& WorldTransform();

    /// World transform of this frame seen from `reference`.
    Matrix4 TransformTo(const std::shared_ptr<Frame>& reference);

    // The scene.

    void SetSceneBackgroundRGB(float red, float green, float blue);

    /// 1 = on.
    std::int32_t GetSceneFogEnable();
    void SetSceneFogEnable(std::int32_t enable);
    void SetSceneFogMode(FogMode mode);
    void SetSceneFogColor(float red, float green, float blue);

    /// Eye-space depths for linear fog and density per scene unit for the exponential modes.
    void SetSceneFogParams(float start, float end, float density);

    /// The settings of this frame's root.
    const SceneSettings& Scene();

    // Searching.

    /// Visuals at and below this frame that a ray meets; `ray` is in `reference`'s coordinates.
    ///
    /// With Primitives, position is the point on the face in `reference`'s coordinates, one hit per face.
    /// With AllBoxes, one hit per visual whose box (of its own axes) is met: position is (0, 0, t), t the distance from
    /// the origin along the unit ray to where it enters the box or, from within the box, leaves it; the face index is
    /// 0. With BoundingBoxes, the same for visuals that stand in the way with their box; those that do so with their
    /// faces have one hit where the ray meets the nearest of them, with its index, and those that do not have none.
    /// RMBadValue for a zero or not finite direction.
    std::shared_ptr<PickedArray> RayPick(const std::shared_ptr<Frame>& reference, const Ray& ray, RayPickFlags flags);

    /// The box around all visuals at and below this frame, in `reference`'s coordinates.
    Box Bounds(const std::shared_ptr<Frame>& reference);

    // For use within this library: who follows this hierarchy.

    /// The frame at the top.
    Frame& RootFrame();

    /// This frame's place with its root's listener.
    ListenerSlot& Slot(ListenerKind kind) { return slots_[static_cast<std::size_t>(kind)]; }
    const ListenerSlot& Slot(ListenerKind kind) const { return slots_[static_cast<std::size_t>(kind)]; }

    /// The listener that this root owns, or nothing. It takes its slots when it is made.
    std::unique_ptr<HierarchyListener>& OwnListener(ListenerKind kind)
    {
        return ownListeners_[static_cast<std::size_t>(kind)];
    }

private:
    Frame();
    SceneSettings& RootSettings();
    void Attach(const std::shared_ptr<Frame>& child);
    void BeforeChange();
    void DropOwnListeners();
    void SetLocal(const Matrix4& local);
    void SetAxes(Frame* space, Double3 direction, Double3 up);
    void Combine(CombineType combine, const Matrix4& matrix);
    void InvalidateWorld();
    void OnMoved();

    // A space is a frame, or no frame for the world in which the roots stand.
    Frame* SpaceOf(const std::shared_ptr<Frame>& reference);
    static Matrix4 Between(Frame* from, Frame* to);

    Frame* parent_ = nullptr; // it owns this frame, and says so when it goes
    std::vector<std::shared_ptr<Frame>> children_;
    std::vector<std::shared_ptr<Visual>> visuals_;
    std::vector<std::shared_ptr<Light>> lights_;
    Matrix4 local_ = Matrix4::Identity();
    Matrix4 world_ = Matrix4::Identity();
    bool worldIsCurrent_ = true;              // false for everything below a frame for which it is false
    std::unique_ptr<SceneSettings> settings_; // only roots have used ones

    std::array<std::unique_ptr<HierarchyListener>, std::size(ListenerKinds)> ownListeners_; // of a root
    std::array<ListenerSlot, std::size(ListenerKinds)> slots_;
};

} // namespace lumora
