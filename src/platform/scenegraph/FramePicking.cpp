// Frames: rays and boxes. The ray is taken into each frame's own coordinates, so a frame that moves costs nothing.
#include "platform/scenegraph/FramePicking.h"

#include "platform/automation/Faults.h"
#include "platform/scenegraph/Checks.h"
#include "platform/scenegraph/FrameTraversal.h"
#include "platform/scenegraph/Rotation.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace lumora
{

namespace
{

constexpr const char* Source = "Frame";

// Rays that meet a side shared by two triangles must not slip between them.
constexpr double EdgeSlack = 1e-9;

constexpr double Missed = std::numeric_limits<double>::infinity();

struct Interval
{
    double first = 0;
    double last = std::numeric_limits<double>::infinity();
    bool IsEmpty() const { return !(first <= last); }
};

void Narrow(Interval& interval, double origin, double direction, double minimum, double maximum)
{
    if (direction == 0)
    {
        if (origin < minimum || origin > maximum)
            interval.last = -1;
        return;
    }
    const double a = (minimum - origin) / direction;
    const double b = (maximum - origin) / direction;
    interval.first = std::max(interval.first, std::min(a, b));
    interval.last = std::min(interval.last, std::max(a, b));
}

// Where the ray is in the box, from its origin on; nothing when it misses.
std::optional<Interval> Meets(const Box& box, const WorldRay& ray, double margin)
{
    if (box.IsEmpty())
        return std::nullopt;
    Interval interval;
    Narrow(interval, ray.origin.x, ray.direction.x, box.minimum.x - margin, box.maximum.x + margin);
    Narrow(interval, ray.origin.y, ray.direction.y, box.minimum.y - margin, box.maximum.y + margin);
    Narrow(interval, ray.origin.z, ray.direction.z, box.minimum.z - margin, box.maximum.z + margin);
    return interval.IsEmpty() ? std::nullopt : std::optional{interval};
}

double MarginOf(const Box& box)
{
    const Vector size = box.maximum - box.minimum;
    const Vector far{std::max(std::abs(box.minimum.x), std::abs(box.maximum.x)),
                     std::max(std::abs(box.minimum.y), std::abs(box.maximum.y)),
                     std::max(std::abs(box.minimum.z), std::abs(box.maximum.z))};
    return 1e-9 * (double{size.x} + size.y + size.z + far.x + far.y + far.z);
}

// Möller and Trumbore: both sides of the triangle count; parallel rays and triangles without area are missed. The
// distance, or Missed.
double MeetsTriangle(const WorldRay& ray, Double3 a, Double3 b, Double3 c)
{
    const Double3 ab = b - a;
    const Double3 ac = c - a;
    const Double3 p = Cross(ray.direction, ac);
    const double determinant = Dot(ab, p);
    if (determinant == 0 || !std::isfinite(determinant))
        return Missed;
    const double inverse = 1.0 / determinant;
    const Double3 from = ray.origin - a;
    const double u = Dot(from, p) * inverse;
    if (!(u >= -EdgeSlack && u <= 1 + EdgeSlack))
        return Missed;
    const Double3 q = Cross(from, ab);
    const double v = Dot(ray.direction, q) * inverse;
    if (!(v >= -EdgeSlack && u + v <= 1 + EdgeSlack))
        return Missed;
    const double t = Dot(ac, q) * inverse;
    return t >= 0 && std::isfinite(t) ? t : Missed;
}

struct FaceHit
{
    std::uint32_t face;
    double distance;
};

// One hit for each face, the nearest of its triangles (which follow each other).
void FindFaces(const DrawMesh& mesh, const WorldRay& ray, std::vector<FaceHit>& hits)
{
    const auto at = [&](std::uint32_t vertex) { return Double3{mesh.x[vertex], mesh.y[vertex], mesh.z[vertex]}; };
    for (std::uint32_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle)
    {
        const std::uint32_t* corner = &mesh.indices[3 * std::size_t{triangle}];
        const double distance = MeetsTriangle(ray, at(corner[0]), at(corner[1]), at(corner[2]));
        if (distance == Missed)
            continue;
        const std::uint32_t face = mesh.triangleFace[triangle];
        if (!hits.empty() && hits.back().face == face)
            hits.back().distance = std::min(hits.back().distance, distance);
        else
            hits.push_back({face, distance});
    }
}

class HitCollector
{
public:
    HitCollector(const WorldRay& ray, RayPickFlags flags) : ray_(ray), flags_(flags) {}

    void Visit(Frame& frame)
    {
        if (frame.Visuals().empty())
            return;
        const Matrix4& world = frame.WorldTransform();
        const auto inverse = IsFinite(world) ? Inverse(world) : std::nullopt;
        if (!inverse)
            return;
        const WorldRay local{TransformPoint(ray_.origin, *inverse), TransformDirection(ray_.direction, *inverse)};
        for (const auto& visual : frame.Visuals())
            if (auto* mesh = dynamic_cast<MeshBuilder*>(visual.get()); mesh != nullptr)
                VisitMesh(frame, visual, *mesh, local);
    }

    std::vector<SceneHit> Take()
    {
        std::ranges::stable_sort(hits_, {}, &SceneHit::distance);
        return std::move(hits_);
    }

private:
    void VisitMesh(Frame& frame, const std::shared_ptr<Visual>& visual, MeshBuilder& mesh, const WorldRay& local)
    {
        const Box& box = mesh.Bounds();
        if (flags_ == RayPickFlags::BoundingBoxes)
        {
            if (const auto within = Meets(box, local, 0))
                hits_.push_back({visual, &frame, 0, within->first});
            return;
        }
        if (!Meets(box, local, MarginOf(box)))
            return;
        faces_.clear();
        FindFaces(*mesh.Compiled(), local, faces_);
        for (const FaceHit& hit : faces_)
            hits_.push_back({visual, &frame, hit.face, hit.distance});
    }

    WorldRay ray_;
    RayPickFlags flags_;
    std::vector<SceneHit> hits_;
    std::vector<FaceHit> faces_; // of the mesh in work
};

} // namespace

std::vector<SceneHit> FindHits(Frame& top, const WorldRay& ray, RayPickFlags flags)
{
    HitCollector collector{ray, flags};
    VisitFrames(top, [&](Frame& frame) { collector.Visit(frame); });
    return collector.Take();
}

std::vector<std::shared_ptr<Frame>> PathTo(Frame& top, Frame& holder)
{
    std::vector<std::shared_ptr<Frame>> path{holder.shared_from_this()};
    while (path.back().get() != &top)
        path.push_back(path.back()->Parent());
    std::ranges::reverse(path);
    return path;
}

std::shared_ptr<PickedArray> Frame::RayPick(const std::shared_ptr<Frame>& reference, const Ray& ray, RayPickFlags flags)
{
    faults::Point("Frame.RayPick");
    RequireFinite(Source, ray.direction);
    RequireFinite(Source, ray.origin);
    if (flags != RayPickFlags::Primitives && flags != RayPickFlags::BoundingBoxes)
        RaiseBadValue(Source, "There are no such flags of picking");
    const Double3 origin{ray.origin};
    const Double3 direction = UnitOf(ray.direction);
    if (Dot(direction, direction) == 0)
        RaiseBadValue(Source, "The ray has no direction");

    Frame* space = SpaceOf(reference);
    const Matrix4 toWorld = space != nullptr ? space->WorldTransform() : Matrix4::Identity();
    const WorldRay worldRay{TransformPoint(origin, toWorld), TransformDirection(direction, toWorld)};
    std::vector<PickHit> picked;
    for (SceneHit& hit : FindHits(*this, worldRay, flags))
    {
        const bool isBox = flags == RayPickFlags::BoundingBoxes;
        const Vector position =
            isBox ? Vector{0, 0, static_cast<float>(hit.distance)} : (origin + direction * hit.distance).ToVector();
        picked.push_back(
            {std::move(hit.visual), PathTo(*this, *hit.holder), {static_cast<std::int32_t>(hit.face), position}});
    }
    return std::make_shared<PickedArray>(std::move(picked));
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
