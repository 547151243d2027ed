#include "platform/scenegraph/drawing/DrawList.h"

#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/FrameTraversal.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace lumora
{

namespace
{

// Frames that are looked at to find out whether something comes last, before building anew is cheaper.
constexpr int SearchBudget = 64;

// The first of a frame's entries.
std::uint32_t FirstOf(const Frame& frame)
{
    return frame.Slot(ListenerKind::Drawing).firstEntry;
}

// Whether all corners of the box lie beyond one and the same plane of the view.
bool IsOutside(const Box& box, const Matrix4& toClip)
{
    unsigned outsideAll = 0x3F;
    for (int corner = 0; corner < 8 && outsideAll != 0; ++corner)
    {
        const Double3 p{box.Corner(corner)};
        const Double4 clip = Transform({p.x, p.y, p.z, 1}, toClip);
        outsideAll &= (clip.x < -clip.w ? 1U : 0U) | (clip.x > clip.w ? 2U : 0U) | (clip.y < -clip.w ? 4U : 0U) |
                      (clip.y > clip.w ? 8U : 0U) | (clip.z < 0 ? 16U : 0U) | (clip.z > clip.w ? 32U : 0U);
    }
    return outsideAll != 0;
}

} // namespace

// The six planes of a view in the world: inside, factors * point + offset is positive.
struct DrawList::Planes
{
    struct Plane
    {
        double factor[3];
        double offset;
        int farthest[3]; // of a box's sides, those that lie farthest inside
        int nearest[3];
    };

    Plane planes[6];
    // Roundings: per unit of a coordinate, and at all.
    double slackPerUnit = 0;
    double slack = 0;

    explicit Planes(const Matrix4& worldToClip)
    {
        for (int i = 0; i < 6; ++i)
        {
            const bool isNear = i == 4; // z >= 0; the others are w + x, w - x, w + y, w - y and w - z
            const double sign = i % 2 == 0 ? 1 : -1;
            const auto column = [&](int row)
            { return (isNear ? 0 : worldToClip.m[row][3]) + sign * worldToClip.m[row][i / 2]; };
            Plane& plane = planes[i];
            for (int axis = 0; axis < 3; ++axis)
            {
                plane.factor[axis] = column(axis);
                plane.farthest[axis] = plane.factor[axis] >= 0 ? axis + 3 : axis;
                plane.nearest[axis] = plane.factor[axis] >= 0 ? axis : axis + 3;
            }
            plane.offset = column(3);
        }
        for (int column = 0; column < 4; ++column)
        {
            for (int row = 0; row < 3; ++row)
                slackPerUnit = std::max(slackPerUnit, 1e-13 * std::abs(worldToClip.m[row][column]));
            slack = std::max(slack, 1e-13 * std::abs(worldToClip.m[3][column]));
        }
    }
};

// What ends early, for want of memory or of an order, leaves the list to be built anew.
class DrawList::RebuildUnlessDone
{
public:
    explicit RebuildUnlessDone(DrawList& list) : list_(list) {}
    ~RebuildUnlessDone()
    {
        if (!isDone_)
            list_.RequireRebuild();
    }
    RebuildUnlessDone(const RebuildUnlessDone&) = delete;
    RebuildUnlessDone& operator=(const RebuildUnlessDone&) = delete;

    void IsDone() { isDone_ = true; }

private:
    DrawList& list_;
    bool isDone_ = false;
};

DrawList& DrawList::Of(Frame& frame)
{
    Frame& root = frame.RootFrame();
    auto& own = root.OwnListener(ListenerKind::Drawing);
    if (!own)
        own = std::make_unique<DrawList>(root);
    return static_cast<DrawList&>(*own);
}

DrawList::DrawList(Frame& root) : root_(root)
{
    OnFramesAdded(root);
}

DrawList::~DrawList()
{
    OnFramesRemoved(root_);
    RequireRebuild();
}

MeshBuilder* DrawList::MeshOf(const std::shared_ptr<Visual>& visual)
{
    return dynamic_cast<MeshBuilder*>(visual.get());
}

// Changes.

void DrawList::MarkStale(std::uint32_t place) noexcept
{
    if (isStale_[place] != 0)
        return;
    isStale_[place] = 1;
    stale_.push_back(place); // AddLast made room
}

void DrawList::OnMeshChanged(std::uint32_t slot) noexcept
{
    Mesh& mesh = meshes_[slot];
    if (mesh.isChanged)
        return;
    mesh.isChanged = true;
    changedMeshes_.push_back(slot); // FreeSlot made room
}

// From now on meshes may go, or be edited on another thread, without a word to this list.
void DrawList::RequireRebuild() noexcept
{
    mustRebuild_ = true;
    for (Mesh& mesh : meshes_)
    {
        if (mesh.builder != nullptr)
            mesh.builder->RemoveListener(*this);
        mesh.builder = nullptr;
    }
}

void DrawList::OnMoved(Frame& frame) noexcept
{
    if (mustRebuild_)
        return;
    for (std::uint32_t place = FirstOf(frame); place != None; place = entries_[place].nextOfFrame)
        MarkStale(place);
}

void DrawList::OnFramesAdded(Frame& top)
{
    bool hasVisuals = false;
    const auto take = [&](Frame& frame)
    {
        frame.Slot(ListenerKind::Drawing) = {this, None};
        hasVisuals = hasVisuals || !frame.Visuals().empty();
        areLightsStale_ = areLightsStale_ || !frame.Lights().empty();
    };
    VisitFrames(top, take);
    if (mustRebuild_ || !hasVisuals)
        return;
    RebuildUnlessDone adding{*this};
    if (!IsLast(top))
        return;
    const auto add = [&](Frame& frame)
    {
        for (const auto& visual : frame.Visuals())
            if (MeshBuilder* mesh = MeshOf(visual); mesh != nullptr)
                AddLast(frame, *mesh);
    };
    VisitFrames(top, add);
    adding.IsDone();
}

void DrawList::OnFramesRemoved(Frame& top)
{
    const auto leave = [&](Frame& frame)
    {
        if (!mustRebuild_)
            for (std::uint32_t place = FirstOf(frame); place != None; place = entries_[place].nextOfFrame)
            {
                Vacate(place);
                entries_[place].frame = nullptr;
            }
        frame.Slot(ListenerKind::Drawing) = {};
        areLightsStale_ = areLightsStale_ || !frame.Lights().empty();
    };
    VisitFrames(top, leave);
    RebuildWhereWorn();
}

void DrawList::OnVisualAdded(Frame& frame, const std::shared_ptr<Visual>& visual)
{
    MeshBuilder* mesh = MeshOf(visual);
    if (mesh == nullptr || mustRebuild_)
        return;
    RebuildUnlessDone adding{*this};
    if (TakeVacant(frame, *mesh))
        return adding.IsDone();
    int budget = SearchBudget;
    for (const auto& child : frame.Children())
        if (IsVacantOrTaken(*child, budget))
            return;
    if (!IsLast(frame))
        return;
    AddLast(frame, *mesh);
    adding.IsDone();
}

void DrawList::OnVisualRemoved(Frame& frame, const std::shared_ptr<Visual>& visual)
{
    if (mustRebuild_)
        return;
    for (std::uint32_t place = FirstOf(frame); place != None; place = entries_[place].nextOfFrame)
        if (entries_[place].mesh != None && meshes_[entries_[place].mesh].builder == visual.get())
        {
            Vacate(place);
            return RebuildWhereWorn();
        }
}

void DrawList::Vacate(std::uint32_t place)
{
    Entry& entry = entries_[place];
    if (entry.mesh == None)
        return;
    if (Mesh& mesh = meshes_[entry.mesh]; --mesh.uses == 0)
    {
        mesh.builder->RemoveListener(*this);
        const bool isListed = mesh.isChanged;
        mesh = {};
        mesh.isChanged = isListed;
        freeMeshes_.push_back(entry.mesh);
    }
    entry.mesh = None;
    MarkStale(place);
    ++vacant_;
}

void DrawList::RebuildWhereWorn() noexcept
{
    constexpr std::size_t Few = 64;
    if (!mustRebuild_ && vacant_ > Few + entries_.size() / 2)
        RequireRebuild();
}

// A frame's new visual comes after its others, whose places must not lie behind the vacant one.
bool DrawList::TakeVacant(const Frame& frame, MeshBuilder& mesh)
{
    std::uint32_t found = None;
    for (std::uint32_t place = FirstOf(frame); place != None; place = entries_[place].nextOfFrame)
    {
        if (entries_[place].mesh != None)
            found = None;
        else if (found == None)
            found = place;
    }
    if (found == None)
        return false;
    entries_[found].mesh = PlaceOfMesh(mesh);
    --vacant_;
    MarkStale(found);
    return true;
}

void DrawList::AddLast(Frame& frame, MeshBuilder& mesh)
{
    const auto place = static_cast<std::uint32_t>(entries_.size());
    const std::uint32_t number = PlaceOfMesh(mesh);
    entries_.emplace_back();
    entries_.back().frame = &frame;
    entries_.back().mesh = number;
    boxes_.emplace_back();
    isStale_.push_back(0);
    stale_.reserve(entries_.capacity());
    if (place % BlockSize == 0)
        blocks_.emplace_back();
    std::uint32_t* link = &frame.Slot(ListenerKind::Drawing).firstEntry;
    while (*link != None)
        link = &entries_[*link].nextOfFrame;
    *link = place;
    MarkStale(place);
}

std::uint32_t DrawList::FreeSlot()
{
    if (freeMeshes_.empty())
    {
        const auto added = static_cast<std::uint32_t>(meshes_.size());
        meshes_.emplace_back();
        changedMeshes_.reserve(meshes_.capacity());
        freeMeshes_.reserve(meshes_.capacity());
        freeMeshes_.push_back(added);
    }
    return freeMeshes_.back();
}

std::uint32_t DrawList::PlaceOfMesh(MeshBuilder& mesh)
{
    std::uint32_t place = mesh.EntryIn(*this);
    if (place == None)
    {
        place = FreeSlot();
        mesh.RecordOf(*this).entry = place;
        freeMeshes_.pop_back();
        Mesh& entry = meshes_[place];
        entry.builder = &mesh;
        entry.box = mesh.Bounds();
        entry.quality = mesh.Quality();
    }
    ++meshes_[place].uses;
    return place;
}

// Order.

// Whether a frame at or below `top` has an entry, be it a vacant one; also when that takes too long to find out.
bool DrawList::IsVacantOrTaken(const Frame& top, int& budget)
{
    std::vector<const Frame*> waiting{&top};
    while (!waiting.empty())
    {
        const Frame& frame = *waiting.back();
        waiting.pop_back();
        budget -= 1 + static_cast<int>(std::min<std::size_t>(frame.Children().size(), SearchBudget));
        if (FirstOf(frame) != None || budget < 0)
            return true;
        for (const auto& child : frame.Children())
            waiting.push_back(child.get());
    }
    return false;
}

// Whether nothing that has an entry comes after the frame and what is below it when the scene is walked.
bool DrawList::IsLast(const Frame& frame) const
{
    int budget = SearchBudget;
    for (const Frame* below = &frame; below != &root_; below = below->Above())
    {
        const auto& siblings = below->Above()->Children();
        for (auto after = siblings.rbegin(); after->get() != below; ++after)
            if (IsVacantOrTaken(**after, budget))
                return false;
        if (--budget < 0)
            return false;
    }
    return true;
}

void DrawList::Rebuild()
{
    RebuildUnlessDone building{*this};
    entries_.clear();
    boxes_.clear();
    isStale_.clear();
    stale_.clear();
    blocks_.clear();
    meshes_.clear();
    freeMeshes_.clear();
    changedMeshes_.clear();
    materials_.clear();
    vacant_ = 0;
    const auto add = [&](Frame& frame)
    {
        frame.Slot(ListenerKind::Drawing).firstEntry = None;
        for (const auto& visual : frame.Visuals())
            if (MeshBuilder* mesh = MeshOf(visual); mesh != nullptr)
                AddLast(frame, *mesh);
    };
    VisitFrames(root_, add);
    building.IsDone();
    mustRebuild_ = false;
}

// Where everything stands.

void DrawList::ReviewMeshes()
{
    bool isAnyReshaped = false;
    for (const std::uint32_t slot : changedMeshes_)
    {
        Mesh& mesh = meshes_[slot];
        mesh.isChanged = false;
        if (mesh.builder == nullptr)
            continue;
        mesh.isCompiled = false;
        mesh.quality = mesh.builder->Quality();
        const Box& box = mesh.builder->Bounds();
        mesh.isReshaped = box.minimum != mesh.box.minimum || box.maximum != mesh.box.maximum;
        mesh.box = box;
        isAnyReshaped = isAnyReshaped || mesh.isReshaped;
    }
    if (isAnyReshaped)
        for (std::uint32_t place = 0; place < entries_.size(); ++place)
            if (entries_[place].mesh != None && meshes_[entries_[place].mesh].isReshaped)
                MarkStale(place);
    for (const std::uint32_t slot : changedMeshes_)
        meshes_[slot].isReshaped = false;
    changedMeshes_.clear();
}

// Meshes look up for themselves whether it is one of theirs that changed.
void DrawList::ReviewMaterials()
{
    bool isAnyChanged = false;
    for (auto item = materials_.begin(); item != materials_.end();)
    {
        DrawnMaterial& drawn = item->second;
        isAnyChanged = isAnyChanged || drawn.revision != drawn.material->Revision();
        drawn.revision = drawn.material->Revision();
        const bool isUnused = drawn.material.use_count() == 1;
        item = isUnused ? materials_.erase(item) : std::next(item);
    }
    if (!isAnyChanged)
        return;
    for (Mesh& mesh : meshes_)
        mesh.isCompiled = false;
}

void DrawList::NoteMaterials(const MeshBuilder& mesh)
{
    mesh.VisitMaterials(
        [&](const std::shared_ptr<Material>& material) {
            materials_.try_emplace(material.get(), DrawnMaterial{material, material->Revision()});
        });
}

DrawList::WorldBox DrawList::WorldBoxOf(const Box& box, const Matrix4& world)
{
    const double minimum[3] = {box.minimum.x, box.minimum.y, box.minimum.z};
    const double maximum[3] = {box.maximum.x, box.maximum.y, box.maximum.z};
    WorldBox result;
    for (int axis = 0; axis < 3; ++axis)
    {
        double low = world.m[3][axis];
        double high = low;
        double size = std::abs(low);
        for (int row = 0; row < 3; ++row)
        {
            const double a = minimum[row] * world.m[row][axis];
            const double b = maximum[row] * world.m[row][axis];
            low += std::min(a, b);
            high += std::max(a, b);
            size += std::max(std::abs(a), std::abs(b));
        }
        // More than rounding to single precision takes away.
        result.side[axis] = static_cast<float>(low - 2e-7 * size);
        result.side[axis + 3] = static_cast<float>(high + 2e-7 * size);
    }
    return result;
}

void DrawList::Measure(std::uint32_t place)
{
    isStale_[place] = 0;
    Entry& entry = entries_[place];
    Block& block = blocks_[place / BlockSize];
    const std::uint64_t bit = std::uint64_t{1} << place % BlockSize;
    block.isStale = true;
    block.drawn &= ~bit;
    if (entry.mesh == None)
        return;
    const Box& box = meshes_[entry.mesh].box;
    entry.world = entry.frame->WorldTransform();
    if (box.IsEmpty() || !IsFinite(entry.world))
        return;
    boxes_[place] = WorldBoxOf(box, entry.world);
    block.drawn |= bit;
}

void DrawList::MeasureBlock(std::uint32_t number)
{
    Block& block = blocks_[number];
    block.isStale = false;
    bool isFirst = true;
    for (std::uint64_t rest = block.drawn; rest != 0; rest &= rest - 1)
    {
        const auto lowest = static_cast<std::uint32_t>(std::countr_zero(rest));
        const WorldBox& box = boxes_[number * BlockSize + lowest];
        for (int axis = 0; axis < 3; ++axis)
        {
            float& low = block.box.side[axis];
            float& high = block.box.side[axis + 3];
            low = isFirst ? box.side[axis] : std::min(low, box.side[axis]);
            high = isFirst ? box.side[axis + 3] : std::max(high, box.side[axis + 3]);
        }
        isFirst = false;
    }
}

void DrawList::Refresh()
{
    if (mustRebuild_)
        Rebuild();
    ReviewMeshes();
    ReviewMaterials();
    if (stale_.empty())
        return;
    if (stale_.size() > entries_.size() / 4) // in the order of memory
    {
        for (std::uint32_t place = 0; place < entries_.size(); ++place)
            if (isStale_[place] != 0)
                Measure(place);
    }
    else
    {
        for (const std::uint32_t place : stale_)
            Measure(place);
    }
    stale_.clear();
    for (std::uint32_t number = 0; number < blocks_.size(); ++number)
        if (blocks_[number].isStale)
            MeasureBlock(number);
}

// Drawing.

const std::vector<Frame*>& DrawList::FramesWithLights()
{
    if (!areLightsStale_)
        return framesWithLights_;
    framesWithLights_.clear();
    const auto collect = [&](Frame& frame)
    {
        if (!frame.Lights().empty())
            framesWithLights_.push_back(&frame);
    };
    VisitFrames(root_, collect);
    areLightsStale_ = false;
    return framesWithLights_;
}

DrawList::Side DrawList::SideOf(const WorldBox& box, const Planes& planes)
{
    double reach = 0;
    for (const float side : box.side)
        reach = std::max<double>(reach, std::abs(side));
    const double slack = planes.slackPerUnit * reach + planes.slack;
    bool isInside = true;
    for (const Planes::Plane& plane : planes.planes)
    {
        const auto distance = [&](const int(&sides)[3])
        {
            return plane.factor[0] * box.side[sides[0]] + plane.factor[1] * box.side[sides[1]] +
                   plane.factor[2] * box.side[sides[2]] + plane.offset;
        };
        if (distance(plane.farthest) < -slack)
            return Side::Outside;
        isInside = isInside && distance(plane.nearest) > slack;
    }
    return isInside ? Side::Inside : Side::Crossing;
}

// The stretch of entries that the subtree has: from the first of the first frame that has some to the last of the last.
DrawList::Stretch DrawList::StretchOf(const Frame& top) const
{
    if (&top == &root_)
        return {0, static_cast<std::uint32_t>(entries_.size())};
    struct Step
    {
        const Frame* frame;
        std::size_t rest; // children not yet looked at
    };
    std::vector<const Frame*> forth{&top};
    while (!forth.empty() && FirstOf(*forth.back()) == None)
    {
        const auto& children = forth.back()->Children();
        forth.pop_back();
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            forth.push_back(child->get());
    }
    if (forth.empty())
        return {0, 0};
    // The frames of the same walk from its end: children before their parent, the last one first.
    std::vector<Step> back{{&top, top.Children().size()}};
    while (back.back().rest != 0 || FirstOf(*back.back().frame) == None)
    {
        if (back.back().rest == 0)
        {
            back.pop_back();
            continue;
        }
        const Frame* child = back.back().frame->Children()[--back.back().rest].get();
        back.push_back({child, child->Children().size()});
    }
    std::uint32_t last = FirstOf(*back.back().frame);
    while (entries_[last].nextOfFrame != None)
        last = entries_[last].nextOfFrame;
    return {FirstOf(*forth.back()), last + 1};
}

const std::vector<std::uint32_t>& DrawList::FindSeen(Frame& top, const Matrix4& worldToClip)
{
    Refresh();
    seen_.clear();
    const Planes planes{worldToClip};
    const Stretch stretch = StretchOf(top);
    for (std::uint32_t first = stretch.first / BlockSize * BlockSize; first < stretch.end; first += BlockSize)
    {
        std::uint64_t among = ~std::uint64_t{0};
        if (first < stretch.first)
            among <<= stretch.first - first;
        if (stretch.end - first < BlockSize)
            among &= (std::uint64_t{1} << (stretch.end - first)) - 1;
        AddSeen(first / BlockSize, among, planes, worldToClip);
    }
    CompileSeen();
    return seen_;
}

void DrawList::AddSeen(std::uint32_t number, std::uint64_t among, const Planes& planes, const Matrix4& worldToClip)
{
    const Block& block = blocks_[number];
    const std::uint64_t drawn = block.drawn & among;
    if (drawn == 0)
        return;
    const Side sideOfBlock = SideOf(block.box, planes);
    if (sideOfBlock == Side::Outside)
        return;
    for (std::uint64_t rest = drawn; rest != 0; rest &= rest - 1)
    {
        const std::uint32_t place = number * BlockSize + static_cast<std::uint32_t>(std::countr_zero(rest));
        const Side side = sideOfBlock == Side::Inside ? Side::Inside : SideOf(boxes_[place], planes);
        const Entry& entry = entries_[place];
        if (side == Side::Inside ||
            (side == Side::Crossing && !IsOutside(meshes_[entry.mesh].box, entry.world * worldToClip)))
            seen_.push_back(place);
    }
}

void DrawList::CompileSeen()
{
    for (const std::uint32_t place : seen_)
    {
        Mesh& mesh = meshes_[entries_[place].mesh];
        if (mesh.isCompiled)
            continue;
        mesh.compiled.reset(); // the builder's own goes first where it has changed
        mesh.compiled = mesh.builder->Compiled();
        mesh.triangleCount = mesh.compiled->TriangleCount();
        NoteMaterials(*mesh.builder);
        mesh.isCompiled = true;
    }
}

} // namespace lumora
