// Frames: rays and boxes. Rays are taken into each frame's own coordinates; meshes never move.
#include "platform/scenegraph/picking/FramePicking.h"

#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/FrameTraversal.h"
#include "platform/scenegraph/frames/Rotation.h"

#include <algorithm>
#include <bit>

namespace lumora
{

namespace
{

constexpr const char* Source = "Frame";

// The frames from `top` down to `holder`.
std::vector<std::shared_ptr<Frame>> PathTo(const Frame& top, Frame& holder)
{
    std::size_t length = 1;
    for (const Frame* frame = &holder; frame != &top; frame = frame->Above())
        ++length;
    std::vector<std::shared_ptr<Frame>> path(length);
    for (Frame* frame = &holder; length-- > 0; frame = frame->Above())
        path[length] = frame->shared_from_this();
    return path;
}

// What of a mesh a pick looks for, said in terms of obstacles.
Obstacle SoughtOf(const MeshBuilder& mesh, RayPickFlags flags)
{
    switch (flags)
    {
    case RayPickFlags::BoundingBoxes:
        return mesh.GetObstacle();
    case RayPickFlags::AllBoxes:
        return Obstacle::Box;
    case RayPickFlags::Primitives:
        break;
    }
    return Obstacle::Faces;
}

// Places on faces in the reference frame's coordinates; of boxes and obstacles the distance alone.
class FramePick : public ScenePick
{
public:
    FramePick(std::shared_ptr<Frame> top, const PickQuery& query, const WorldRay& ownRay)
        : ScenePick(std::move(top), query), onlyDistance_(query.flags != RayPickFlags::Primitives), ownRay_(ownRay)
    {
    }

protected:
    Vector PositionAt(double distance) const override
    {
        return onlyDistance_ ? Vector{0, 0, static_cast<float>(distance)}
                             : (ownRay_.origin + ownRay_.direction * distance).ToVector();
    }

private:
    bool onlyDistance_;
    WorldRay ownRay_; // as the caller counts
};

} // namespace

// The search.

ScenePick::ScenePick(std::shared_ptr<Frame> top, const PickQuery& query)
    : top_(std::move(top)), root_(top_->Root()), index_(&rays::SceneIndex::Of(*root_)), query_(query)
{
    index_->Refresh();
    waiting_.reserve(32);
    boxRay_ = rays::Prepared(query_.ray, index_->Tree());
    if (boxRay_)
        for (const rays::Reference root : index_->Roots())
            Push({0, root, Kind::Node});
    index_->Open(*this);
}

ScenePick::~ScenePick()
{
    Leave();
}

void ScenePick::Leave()
{
    if (index_ != nullptr)
        index_->Close(*this);
    index_ = nullptr;
    waiting_ = {};
    root_.reset();
}

// What may hold a hit comes before hits at the same distance, which come in the order of the scene.
bool ScenePick::ComesAfter(const Waiting& a, const Waiting& b) const
{
    if (a.distance != b.distance)
        return a.distance > b.distance;
    if (a.kind != Kind::Hit || b.kind != Kind::Hit)
        return a.kind > b.kind;
    if (a.reference != b.reference)
        return index_->ComesBefore(b.reference, a.reference);
    return a.triangle > b.triangle;
}

void ScenePick::Push(const Waiting& item)
{
    waiting_.push_back(item);
    std::ranges::push_heap(waiting_, [this](const Waiting& a, const Waiting& b) { return ComesAfter(a, b); });
}

ScenePick::Waiting ScenePick::Pop()
{
    std::ranges::pop_heap(waiting_, [this](const Waiting& a, const Waiting& b) { return ComesAfter(a, b); });
    const Waiting item = waiting_.back();
    waiting_.pop_back();
    return item;
}

std::optional<ScenePick::Waiting> ScenePick::NextHit()
{
    while (!waiting_.empty())
    {
        const Waiting item = Pop();
        switch (item.kind)
        {
        case Kind::Node:
            OpenNode(item);
            break;
        case Kind::Visual:
            OpenVisual(item);
            break;
        case Kind::Mesh:
            OpenMesh(item);
            break;
        case Kind::RestOf:
            OpenRest(item);
            break;
        case Kind::Hit:
            if (item.isFirst)
                Push({item.distance, item.reference, Kind::RestOf, false, item.triangle, item.face});
            return item;
        }
    }
    return std::nullopt;
}

void ScenePick::OpenNode(const Waiting& item)
{
    const rays::Node& node = index_->Tree().nodes[item.reference];
    alignas(32) float entry[rays::Node::Width];
    std::uint32_t lanes = rays::BestKernels().meetNode(node, *boxRay_, boxRay_->UpTo(query_.limit), entry);
    for (; lanes != 0; lanes &= lanes - 1)
    {
        const int lane = std::countr_zero(lanes);
        const rays::Reference child = node.child[lane];
        if (child == rays::NoReference)
            continue;
        const bool isLeaf = (child & rays::LeafBit) != 0;
        Push({boxRay_->From(entry[lane]), child & ~rays::LeafBit, isLeaf ? Kind::Visual : Kind::Node});
    }
}

bool ScenePick::IsBelowTop(const Frame& frame) const
{
    const Frame* above = &frame;
    while (above != nullptr && above != top_.get())
        above = above->Above();
    return above != nullptr;
}

WorldRay ScenePick::LocalRay(std::uint32_t entry) const
{
    const Matrix4& toLocal = (*index_)[entry].toLocal;
    return {TransformPoint(query_.ray.origin, toLocal), TransformDirection(query_.ray.direction, toLocal)};
}

void ScenePick::OpenVisual(const Waiting& visual)
{
    const auto& entry = (*index_)[visual.reference];
    if (top_ != root_ && !IsBelowTop(*entry.frame))
        return;
    const Obstacle sought = SoughtOf(*entry.mesh, query_.flags);
    if (sought == Obstacle::None)
        return;
    const bool onlyBox = sought == Obstacle::Box;
    const rays::DoubleBox box{entry.mesh->Bounds().minimum, entry.mesh->Bounds().maximum};
    const rays::Interval within =
        rays::Within(onlyBox ? box : box.Grown(rays::PickMargin(box)), LocalRay(visual.reference));
    const double distance = onlyBox && within.first == 0 ? within.last : within.first;
    if (within.IsEmpty() || distance > query_.limit)
        return;
    const Waiting found{distance, visual.reference, onlyBox ? Kind::Hit : Kind::Mesh};
    if (!onlyBox && (waiting_.empty() || distance < waiting_.front().distance))
        OpenMesh(found); // its turn already
    else
        Push(found);
}

void ScenePick::OpenMesh(const Waiting& item)
{
    MeshBuilder& builder = *(*index_)[item.reference].mesh;
    const auto mesh = builder.Compiled();
    const rays::TriangleHit hit = builder.Rays().Nearest(*mesh, LocalRay(item.reference));
    const bool hasMore = query_.flags == RayPickFlags::Primitives;
    if (hit.distance <= query_.limit && hit.distance < rays::Missed)
        Push({hit.distance, item.reference, Kind::Hit, hasMore, hit.triangle, mesh->triangleFace[hit.triangle]});
}

// One hit for each face, the nearest of its triangles (which follow each other).
void ScenePick::OpenRest(const Waiting& rest)
{
    MeshBuilder& builder = *(*index_)[rest.reference].mesh;
    const auto mesh = builder.Compiled();
    const auto hits = builder.Rays().All(*mesh, LocalRay(rest.reference));
    for (std::size_t i = 0; i < hits.size();)
    {
        const std::uint32_t face = mesh->triangleFace[hits[i].triangle];
        rays::TriangleHit nearest = hits[i];
        for (++i; i < hits.size() && mesh->triangleFace[hits[i].triangle] == face; ++i)
            nearest = std::min(nearest, hits[i]);
        if (face != rest.face && nearest.distance <= query_.limit)
            Push({nearest.distance, rest.reference, Kind::Hit, false, nearest.triangle, face});
    }
}

PickHit ScenePick::Described(const Waiting& hit) const
{
    const auto& entry = (*index_)[hit.reference];
    return {entry.mesh->shared_from_this(),
            PathTo(*top_, *entry.frame),
            {static_cast<std::int32_t>(hit.face), PositionAt(hit.distance)}};
}

std::optional<PickHit> ScenePick::Next()
{
    if (index_ != nullptr)
    {
        if (const auto hit = NextHit())
            return Described(*hit);
        Leave();
    }
    if (settled_.empty())
        return std::nullopt;
    PickHit hit = std::move(settled_.back());
    settled_.pop_back();
    return hit;
}

void ScenePick::Settle()
{
    while (const auto hit = NextHit())
        settled_.push_back(Described(*hit));
    std::ranges::reverse(settled_);
    Leave();
}

// Frames.

std::shared_ptr<PickedArray> Frame::RayPick(const std::shared_ptr<Frame>& reference, const Ray& ray, RayPickFlags flags)
{
    faults::Point("Frame.RayPick");
    RequireFinite(Source, ray.direction);
    RequireFinite(Source, ray.origin);
    if (flags > RayPickFlags::AllBoxes)
        RaiseBadValue(Source, "There are no such flags of picking");
    const Double3 origin{ray.origin};
    const Double3 direction = UnitOf(ray.direction);
    if (Dot(direction, direction) == 0)
        RaiseBadValue(Source, "The ray has no direction");

    Frame* space = SpaceOf(reference);
    const Matrix4 toWorld = space != nullptr ? space->WorldTransform() : Matrix4::Identity();
    const WorldRay worldRay{TransformPoint(origin, toWorld), TransformDirection(direction, toWorld)};
    return std::make_shared<PickedArray>(
        std::make_unique<FramePick>(shared_from_this(), PickQuery{worldRay, flags}, WorldRay{origin, direction}));
}

Box Frame::Bounds(const std::shared_ptr<Frame>& reference)
{
    faults::Point("Frame.Bounds");
    Frame* space = SpaceOf(reference);
    Box result;
    const auto include = [&](Frame& frame)
    {
        if (frame.Visuals().empty())
            return;
        const Matrix4 transform = Between(&frame, space);
        for (const auto& visual : frame.Visuals())
        {
            const auto* mesh = dynamic_cast<const MeshBuilder*>(visual.get());
            if (mesh == nullptr || mesh->Bounds().IsEmpty())
                continue;
            for (int corner = 0; corner < 8; ++corner)
                result.Include(TransformPoint(mesh->Bounds().Corner(corner), transform).ToVector());
        }
    };
    VisitFrames(*this, include);
    return result;
}

} // namespace lumora
