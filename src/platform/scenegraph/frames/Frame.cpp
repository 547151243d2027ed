// Frames: the hierarchy, what hangs on it, and the cached world transforms.
#include "platform/scenegraph/frames/Frame.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"

#include <algorithm>

namespace lumora
{

namespace
{

constexpr const char* Source = "Frame";

template<typename T>
bool AddOnce(std::vector<std::shared_ptr<T>>& list, const std::shared_ptr<T>& object, const char* what)
{
    RequireObject(Source, object, what);
    const bool isNew = std::ranges::find(list, object) == list.end();
    if (isNew)
        list.push_back(object);
    return isNew;
}

template<typename T>
void Remove(std::vector<std::shared_ptr<T>>& list, const std::shared_ptr<T>& object, const char* what)
{
    RequireObject(Source, object, what);
    const auto place = std::ranges::find(list, object);
    if (place == list.end())
        throw RuntimeError{error::RMNotFound, Source, std::string{what} + " is not in this frame"};
    list.erase(place);
}

// Calls `notify` with each listener that has slots in the frame.
template<typename Notify>
void ForEachListener(Frame& frame, Notify&& notify)
{
    for (const ListenerKind kind : ListenerKinds)
        if (HierarchyListener* listener = frame.Slot(kind).listener; listener != nullptr)
            notify(*listener);
}

} // namespace

Frame::Frame() = default;

std::shared_ptr<Frame> Frame::Make(const std::shared_ptr<Frame>& parent)
{
    std::shared_ptr<Frame> frame{new Frame};
    if (parent)
        parent->Attach(frame);
    return frame;
}

// Takes the hierarchy apart from the top: a chain of any length goes without recursion. Children that somebody else
// still holds become roots.
Frame::~Frame()
{
    DropOwnListeners();
    std::vector<std::shared_ptr<Frame>> leaving = std::move(children_);
    for (const auto& child : leaving)
        child->parent_ = nullptr;
    while (!leaving.empty())
    {
        const std::shared_ptr<Frame> frame = std::move(leaving.back());
        leaving.pop_back();
        if (frame.use_count() > 1)
        {
            frame->InvalidateWorld();
            continue;
        }
        for (auto& child : frame->children_)
        {
            child->parent_ = nullptr;
            leaving.push_back(std::move(child));
        }
        frame->children_.clear();
    }
}

Frame& Frame::RootFrame()
{
    Frame* frame = this;
    while (frame->parent_ != nullptr)
        frame = frame->parent_;
    return *frame;
}

std::shared_ptr<Frame> Frame::Root()
{
    return RootFrame().shared_from_this();
}

void Frame::AddChild(const std::shared_ptr<Frame>& child)
{
    faults::Point("Frame.AddChild");
    RequireObject(Source, child, "The child");
    for (const Frame* frame = this; frame != nullptr; frame = frame->parent_)
        if (frame == child.get())
            RaiseBadValue(Source, "A frame cannot be put below itself");
    Attach(child);
}

void Frame::Attach(const std::shared_ptr<Frame>& child)
{
    const std::shared_ptr<Frame> kept = child; // the caller's reference may be the old parent's own
    BeforeChange();
    kept->BeforeChange();
    kept->DropOwnListeners(); // a root's; it is none any more
    ForEachListener(*kept, [&](HierarchyListener& listener) { listener.OnFramesRemoved(*kept); });
    children_.push_back(kept);
    if (Frame* old = kept->parent_; old != nullptr)
    {
        // Searched from the end: what was added last usually leaves first. In this frame itself the new entry is last.
        auto& siblings = old->children_;
        const auto end = siblings.rbegin() + (old == this ? 1 : 0);
        siblings.erase(std::next(std::find(end, siblings.rend(), kept)).base());
    }
    kept->parent_ = this;
    kept->InvalidateWorld();
    ForEachListener(*this, [&](HierarchyListener& listener) { listener.OnFramesAdded(*kept); });
}

void Frame::DeleteChild(const std::shared_ptr<Frame>& child)
{
    faults::Point("Frame.DeleteChild");
    const std::shared_ptr<Frame> kept = child;
    BeforeChange();
    Remove(children_, kept, "The child");
    ForEachListener(*this, [&](HierarchyListener& listener) { listener.OnFramesRemoved(*kept); });
    kept->parent_ = nullptr;
    kept->InvalidateWorld();
}

void Frame::AddVisual(const std::shared_ptr<Visual>& visual)
{
    faults::Point("Frame.AddVisual");
    BeforeChange();
    if (AddOnce(visuals_, visual, "The visual"))
        ForEachListener(*this, [&](HierarchyListener& listener) { listener.OnVisualAdded(*this, visual); });
}

void Frame::DeleteVisual(const std::shared_ptr<Visual>& visual)
{
    faults::Point("Frame.DeleteVisual");
    const std::shared_ptr<Visual> kept = visual;
    BeforeChange();
    Remove(visuals_, kept, "The visual");
    ForEachListener(*this, [&](HierarchyListener& listener) { listener.OnVisualRemoved(*this, kept); });
}

void Frame::AddLight(const std::shared_ptr<Light>& light)
{
    faults::Point("Frame.AddLight");
    AddOnce(lights_, light, "The light");
    ForEachListener(*this, [](HierarchyListener& listener) { listener.OnLightsChanged(); });
}

void Frame::DeleteLight(const std::shared_ptr<Light>& light)
{
    faults::Point("Frame.DeleteLight");
    Remove(lights_, light, "The light");
    ForEachListener(*this, [](HierarchyListener& listener) { listener.OnLightsChanged(); });
}

// Before the scene changes in any way that picks would notice.
void Frame::BeforeChange()
{
    ForEachListener(*this, [](HierarchyListener& listener) { listener.BeforeChange(); });
}

void Frame::DropOwnListeners()
{
    for (auto& listener : ownListeners_)
        listener.reset();
}

// Frames whose world transform is known to be out of date are so for their listeners, too.
void Frame::OnMoved()
{
    worldIsCurrent_ = false;
    ForEachListener(*this, [&](HierarchyListener& listener) { listener.OnMoved(*this); });
}

void Frame::InvalidateWorld()
{
    if (!worldIsCurrent_)
        return;
    OnMoved();
    if (children_.empty())
        return;
    std::vector<Frame*> waiting{this};
    while (!waiting.empty())
    {
        const Frame* frame = waiting.back();
        waiting.pop_back();
        for (const auto& child : frame->children_)
        {
            if (!child->worldIsCurrent_)
                continue;
            child->OnMoved();
            waiting.push_back(child.get());
        }
    }
}

const Matrix4& Frame::WorldTransform()
{
    if (worldIsCurrent_)
        return world_;
    std::vector<Frame*> stale;
    for (Frame* frame = parent_; frame != nullptr && !frame->worldIsCurrent_; frame = frame->parent_)
        stale.push_back(frame);
    const auto refresh = [](Frame& frame)
    {
        frame.world_ = frame.parent_ != nullptr ? frame.local_ * frame.parent_->world_ : frame.local_;
        frame.worldIsCurrent_ = true;
    };
    for (; !stale.empty(); stale.pop_back())
        refresh(*stale.back());
    refresh(*this);
    return world_;
}

} // namespace lumora
