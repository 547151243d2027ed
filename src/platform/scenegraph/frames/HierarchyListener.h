// Who follows the changes of a hierarchy: the visible list of pictures and the tree of picks.
#pragma once

#include <cstdint>
#include <memory>

namespace lumora
{

class Frame;
class Visual;

/// What a root may have one listener of each.
enum class ListenerKind : std::uint8_t
{
    Picking, ///< unfinished picks read the scene as it was, so it is notified before anything changes
    Drawing,
};

inline constexpr ListenerKind ListenerKinds[] = {ListenerKind::Picking, ListenerKind::Drawing};

/// Owned by a root, notified by every frame at and below it. A frame that leaves takes what is below it along, and says
/// so once; a frame whose world transform is known to be out of date says so no second time. Calls come on the thread
/// that changes the scene and must not change it.
class HierarchyListener
{
public:
    virtual ~HierarchyListener() = default;

    /// Before the hierarchy or a transform changes. The scene is whole.
    virtual void BeforeChange() {}

    /// The frame's world transform is out of date. Those below it follow with calls of their own.
    virtual void OnMoved(Frame& frame) = 0;

    /// `top` was put into the hierarchy with all that is below it; the listener takes its slots there.
    virtual void OnFramesAdded(Frame& top) = 0;

    /// `top` is about to leave, and gives back the slots there.
    virtual void OnFramesRemoved(Frame& top) = 0;

    virtual void OnVisualAdded(Frame& frame, const std::shared_ptr<Visual>& visual) = 0;
    virtual void OnVisualRemoved(Frame& frame, const std::shared_ptr<Visual>& visual) = 0;

    /// Lights were put into a frame or taken out of one.
    virtual void OnLightsChanged() {}
};

/// A frame's place with one listener.
struct ListenerSlot
{
    static constexpr std::uint32_t NoEntry = 0xFFFFFFFF;

    HierarchyListener* listener = nullptr; ///< of the root above; nothing before it has one
    std::uint32_t firstEntry = NoEntry;    ///< the listener's own: where this frame's visuals begin
};

} // namespace lumora
