#include "platform/scenegraph/picking/SceneIndex.h"

#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/FrameTraversal.h"
#include "platform/scenegraph/picking/FramePicking.h"

#include <algorithm>

namespace lumora::rays
{

namespace
{

// A box in the world around a box of a mesh, grown by what computing with its corners may round.
DoubleBox WorldBoxOf(const DoubleBox& local, const Matrix4& world)
{
    double low[3];
    double high[3];
    const double minimum[3] = {local.minimum.x, local.minimum.y, local.minimum.z};
    const double maximum[3] = {local.maximum.x, local.maximum.y, local.maximum.z};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        low[axis] = high[axis] = world.m[3][axis];
        double size = std::abs(low[axis]);
        for (std::size_t row = 0; row < 3; ++row)
        {
            const double a = minimum[row] * world.m[row][axis];
            const double b = maximum[row] * world.m[row][axis];
            low[axis] += std::min(a, b);
            high[axis] += std::max(a, b);
            size += std::max(std::abs(a), std::abs(b));
        }
        low[axis] -= 1e-12 * size;
        high[axis] += 1e-12 * size;
    }
    return {{low[0], low[1], low[2]}, {high[0], high[1], high[2]}};
}

float RoundedDown(double value)
{
    const auto result = static_cast<float>(value);
    return result > value ? std::nextafter(result, -INFINITY) : result;
}

float RoundedUp(double value)
{
    const auto result = static_cast<float>(value);
    return result < value ? std::nextafter(result, INFINITY) : result;
}

struct ScaledBox
{
    float lower[3];
    float upper[3];
};

ScaledBox Scaled(const DoubleBox& box, double scale)
{
    return {
        {RoundedDown(box.minimum.x * scale), RoundedDown(box.minimum.y * scale), RoundedDown(box.minimum.z * scale)},
        {RoundedUp(box.maximum.x * scale), RoundedUp(box.maximum.y * scale), RoundedUp(box.maximum.z * scale)}};
}

// The first of a frame's entries.
std::uint32_t& FirstOf(Frame& frame)
{
    return frame.Slot(ListenerKind::Picking).firstEntry;
}

} // namespace

SceneIndex& SceneIndex::Of(Frame& frame)
{
    Frame& root = frame.RootFrame();
    auto& own = root.OwnListener(ListenerKind::Picking);
    if (!own)
        own = std::make_unique<SceneIndex>(root);
    return static_cast<SceneIndex&>(*own);
}

SceneIndex::SceneIndex(Frame& root) : root_(root)
{
    OnFramesAdded(root);
}

SceneIndex::~SceneIndex()
{
    OnFramesRemoved(root_);
}

// Changes.

void SceneIndex::BeforeChange()
{
    while (!openPicks_.empty())
        openPicks_.back()->Settle();
}

void SceneIndex::OnFramesAdded(Frame& top)
{
    const auto add = [&](Frame& frame)
    {
        frame.Slot(ListenerKind::Picking) = {this, None};
        for (const auto& visual : frame.Visuals())
            if (auto* mesh = dynamic_cast<MeshBuilder*>(visual.get()); mesh != nullptr)
                AddEntry(frame, *mesh);
    };
    const std::uint64_t before = lastOrder_;
    VisitFrames(top, add);
    isOrderStale_ = isOrderStale_ || (lastOrder_ != before && !IsLast(top));
}

void SceneIndex::OnFramesRemoved(Frame& top)
{
    const auto remove = [&](Frame& frame)
    {
        std::uint32_t& first = FirstOf(frame);
        while (first != None)
        {
            const std::uint32_t entry = first;
            first = entries_[entry].nextOfFrame;
            RemoveEntry(entry);
        }
        frame.Slot(ListenerKind::Picking) = {};
    };
    VisitFrames(top, remove);
}

void SceneIndex::OnVisualAdded(Frame& frame, const std::shared_ptr<Visual>& visual)
{
    auto* mesh = dynamic_cast<MeshBuilder*>(visual.get());
    if (mesh == nullptr)
        return;
    AddEntry(frame, *mesh);
    isOrderStale_ = isOrderStale_ || !frame.Children().empty() || !IsLast(frame);
}

void SceneIndex::OnVisualRemoved(Frame& frame, const std::shared_ptr<Visual>& visual)
{
    for (std::uint32_t* link = &FirstOf(frame); *link != None; link = &entries_[*link].nextOfFrame)
    {
        if (entries_[*link].mesh != visual.get())
            continue;
        const std::uint32_t entry = *link;
        *link = entries_[entry].nextOfFrame;
        RemoveEntry(entry);
        return;
    }
}

void SceneIndex::AddEntry(Frame& frame, MeshBuilder& mesh)
{
    if (free_.empty())
    {
        free_.push_back(static_cast<std::uint32_t>(entries_.size()));
        entries_.emplace_back();
    }
    const std::uint32_t id = free_.back();
    free_.pop_back();
    Entry& entry = entries_[id];
    entry = Entry{};
    entry.frame = &frame;
    entry.mesh = &mesh;
    entry.order = ++lastOrder_;
    // Last in its frame's list, so that the list is in the order of the frame's visuals.
    std::uint32_t* link = &FirstOf(frame);
    while (*link != None)
        link = &entries_[*link].nextOfFrame;
    *link = id;
    LinkToMesh(id);
    MarkStale(id);
}

void SceneIndex::RemoveEntry(std::uint32_t id)
{
    UnlinkFromMesh(id);
    Entry& entry = entries_[id];
    entry.frame = nullptr;
    entry.mesh = nullptr;
    entry.worldBox = {};
    if (entry.node != None)
    {
        StoreBox(entry);
        tree_.nodes[entry.node].child[entry.lane] = NoReference;
        FitAbove(entry.node);
        entry.node = None;
        ++wear_;
    }
    if (!entry.isStale) // the list of stale ones frees the others
        free_.push_back(id);
}

// A mesh knows for each index the first of its entries.
void SceneIndex::LinkToMesh(std::uint32_t id)
{
    Entry& entry = entries_[id];
    std::uint32_t& first = entry.mesh->RecordOf(*this).entry;
    entry.nextOfMesh = first;
    if (first != None)
        entries_[first].previousOfMesh = id;
    first = id;
}

void SceneIndex::UnlinkFromMesh(std::uint32_t id)
{
    const Entry& entry = entries_[id];
    if (entry.nextOfMesh != None)
        entries_[entry.nextOfMesh].previousOfMesh = entry.previousOfMesh;
    if (entry.previousOfMesh != None)
        entries_[entry.previousOfMesh].nextOfMesh = entry.nextOfMesh;
    else if (entry.nextOfMesh != None)
        entry.mesh->RecordOf(*this).entry = entry.nextOfMesh;
    else
        entry.mesh->RemoveListener(*this);
}

void SceneIndex::OnReshaped(std::uint32_t firstEntry)
{
    for (std::uint32_t entry = firstEntry; entry != None; entry = entries_[entry].nextOfMesh)
        MarkStale(entry);
}

void SceneIndex::OnMoved(Frame& frame)
{
    for (std::uint32_t entry = FirstOf(frame); entry != None; entry = entries_[entry].nextOfFrame)
        MarkStale(entry);
}

void SceneIndex::MarkStale(std::uint32_t entry)
{
    if (entries_[entry].isStale)
        return;
    entries_[entry].isStale = true;
    stale_.push_back(entry);
}

// Order.

// Whether nothing comes after the frame and what is below it when the scene is walked.
bool SceneIndex::IsLast(const Frame& frame) const
{
    for (const Frame* below = &frame; below != &root_; below = below->Above())
        if (below->Above()->Children().back().get() != below)
            return false;
    return true;
}

void SceneIndex::Number()
{
    lastOrder_ = 0;
    const auto number = [&](Frame& frame)
    {
        for (std::uint32_t entry = FirstOf(frame); entry != None; entry = entries_[entry].nextOfFrame)
            entries_[entry].order = ++lastOrder_;
    };
    VisitFrames(root_, number);
    isOrderStale_ = false;
}

bool SceneIndex::ComesBefore(std::uint32_t entry, std::uint32_t other)
{
    if (isOrderStale_)
        Number();
    return entries_[entry].order < entries_[other].order;
}

// The tree.

void SceneIndex::Measure(Entry& entry)
{
    entry.worldBox = {};
    entry.mesh->RecordOf(*this).isNotified = false;
    const Box& box = entry.mesh->Bounds();
    const Matrix4& world = entry.frame->WorldTransform();
    const auto inverse = IsFinite(world) ? Inverse(world) : std::nullopt;
    if (box.IsEmpty() || !inverse)
        return;
    entry.toLocal = *inverse;
    const DoubleBox local{box.minimum, box.maximum};
    entry.worldBox = WorldBoxOf(local.Grown(PickMargin(local)), world);
    if (!std::isfinite(entry.worldBox.Reach()))
        entry.worldBox = {};
}

void SceneIndex::Refresh()
{
    if (stale_.empty())
        return;
    wear_ += stale_.size();
    std::vector<std::uint32_t> changed;
    changed.swap(stale_);
    for (const std::uint32_t id : changed)
    {
        Entry& entry = entries_[id];
        entry.isStale = false;
        if (entry.frame != nullptr)
            Measure(entry);
        else
            free_.push_back(id);
    }
    if (MustRebuild(changed))
        return Rebuild();
    for (const std::uint32_t id : changed)
        if (entries_[id].frame != nullptr)
            Place(id);
}

// When the tree is worn, when much came that has no place in it, and when something lies far outside its scale.
bool SceneIndex::MustRebuild(const std::vector<std::uint32_t>& changed) const
{
    if (wear_ >= entries_.size() - free_.size())
        return true;
    std::size_t loose = Node::Width * (tree_.nodes.size() - builtNodes_);
    for (const std::uint32_t id : changed)
    {
        const Entry& entry = entries_[id];
        if (entry.frame == nullptr || entry.worldBox.IsEmpty())
            continue;
        loose += entry.node == None ? 1 : 0;
        if (entry.worldBox.Reach() * tree_.scale > 16)
            return true;
    }
    return loose > 32 + builtNodes_ / 32;
}

void SceneIndex::Rebuild()
{
    tree_.bounds = {};
    for (const Entry& entry : entries_)
        if (entry.frame != nullptr && !entry.worldBox.IsEmpty())
            tree_.bounds.Include(entry.worldBox);
    tree_.scale = tree_.bounds.IsEmpty() ? 1 : ScaleFor(tree_.bounds.Reach());
    LargeArray<BoxItem> items;
    items.reserve(entries_.size());
    for (std::uint32_t id = 0; id < entries_.size(); ++id)
    {
        Entry& entry = entries_[id];
        entry.node = None;
        if (entry.frame == nullptr || entry.worldBox.IsEmpty())
            continue;
        const ScaledBox box = Scaled(entry.worldBox, tree_.scale);
        BoxItem item{{box.lower[0], box.lower[1], box.lower[2], 0}, {box.upper[0], box.upper[1], box.upper[2], 0}};
        item.SetId(id);
        items.push_back(item);
    }
    TreeBuilder{items, 1, [](void*, const Leaf& leaf) { return leaf.first->Id(); }, nullptr}.Build(tree_);
    builtNodes_ = tree_.nodes.size();
    wear_ = 0;
    roots_.clear();
    if (items.size() == 1) // a leaf needs a lane to be moved in
    {
        builtNodes_ = 0;
        return FindLooseLane(items.front().Id());
    }
    if (tree_.root != NoReference)
        roots_.push_back(tree_.root);
    for (std::uint32_t node = 0; node < builtNodes_; ++node)
        for (std::uint32_t lane = 0; lane < Node::Width; ++lane)
            if (const Reference child = tree_.nodes[node].child[lane]; child != NoReference && (child & LeafBit) != 0)
            {
                entries_[child & ~LeafBit].node = node;
                entries_[child & ~LeafBit].lane = lane;
            }
}

void SceneIndex::Place(std::uint32_t id)
{
    const Entry& entry = entries_[id];
    if (!entry.worldBox.IsEmpty())
        tree_.bounds.Include(entry.worldBox);
    if (entry.node == None)
        return entry.worldBox.IsEmpty() ? void() : FindLooseLane(id);
    StoreBox(entry);
    FitAbove(entry.node);
}

// What came since the tree was built stands in nodes of its own beside it.
void SceneIndex::FindLooseLane(std::uint32_t id)
{
    Entry& entry = entries_[id];
    const auto isFree = [&](std::uint32_t node)
    {
        const auto& child = tree_.nodes[node].child;
        const auto* place = std::find(child, child + Node::Width, NoReference);
        entry.lane = static_cast<std::uint32_t>(place - child);
        return entry.lane < Node::Width;
    };
    entry.node = static_cast<std::uint32_t>(builtNodes_);
    while (entry.node < tree_.nodes.size() && !isFree(entry.node))
        ++entry.node;
    if (entry.node == tree_.nodes.size())
    {
        tree_.nodes.emplace_back();
        roots_.push_back(entry.node);
        entry.lane = 0;
    }
    tree_.nodes[entry.node].child[entry.lane] = LeafBit | id;
    StoreBox(entry);
}

void SceneIndex::StoreBox(const Entry& entry)
{
    const ScaledBox box = Scaled(entry.worldBox, tree_.scale);
    tree_.nodes[entry.node].SetLane(static_cast<int>(entry.lane), box.lower, box.upper);
}

// Fits the boxes of the nodes above to what is in them, up to where nothing changes.
void SceneIndex::FitAbove(std::uint32_t index)
{
    while (tree_.nodes[index].parent != NoReference)
    {
        const Node& node = tree_.nodes[index];
        Node& above = tree_.nodes[node.parent];
        bool changes = false;
        for (int plane = 0; plane < 6; ++plane)
        {
            const float* values = node.planes[plane];
            const float outermost = plane % 2 == 0 ? *std::min_element(values, values + Node::Width)
                                                   : *std::max_element(values, values + Node::Width);
            float& known = above.planes[plane][node.laneAbove];
            changes = changes || known != outermost;
            known = outermost;
        }
        if (!changes)
            return;
        index = node.parent;
    }
}

} // namespace lumora::rays
