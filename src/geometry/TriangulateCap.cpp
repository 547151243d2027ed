// The part of modSweep that closes ends: ear clipping.
//
// Passes go over the corners in their order and clip what they may. Nearly all corners of a pass would be refused for
// the reason they were refused before, so each remembers it: its triangle (until a neighbour goes) or the point that
// lies in the way (until that goes). Only corners whose reason has gone are looked at again, and points that may lie
// in an ear are looked up in a tree; the outcome is that of asking every corner about every point in every pass.
#include "geometry/PointTree.h"
#include "geometry/Steps.h"
#include "geometry/modBounding.h"
#include "geometry/modColinear.h"
#include "geometry/modFace.h"
#include "geometry/modNormal.h"
#include "geometry/modSweep.h"
#include "geometry/modVector.h"
#include "platform/scenegraph/frames/Rotation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <set>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modSweep"};
constexpr float NormalTolerance = 0.001F;

// A point that IsPointInPolygon finds inside a triangle lies, seen along the triangle's normal, within it or sees an
// edge under half a turn less at most 0.1: the two angles lost at the edge's ends are no more than what its sum of
// angles may lack. A little is added for rounding.
constexpr double LensAngle = 0.105;

// Ears' normals differ from the polygon's by 0.001 in each axis at most: this much of a height shifts a point sideways.
constexpr double TiltMargin = 0.004;

// In comparisons of a point with a region.
constexpr std::int64_t WorkOfQuickTest = 4;
constexpr std::int64_t WorkOfExactTest = 16;

bool Near(Vector a, Vector b)
{
    const auto near = [](float p, float q)
    { return static_cast<float>(std::abs(double{p} - double{q})) <= NormalTolerance; };
    return near(a.x, b.x) && near(a.y, b.y) && near(a.z, b.z);
}

// Whether IsPointInPolygon could be true: the same sum of angles, quicker, and allowing for what Singles and the
// snapping of arc cosines make of three angles.
bool MaySeeAllAround(const Triple& triple, Double3 point)
{
    constexpr double Least = 2 * std::numbers::pi - 0.1 - 0.02;
    const Double3 a = UnitOf(triple[0] - point);
    const Double3 b = UnitOf(triple[1] - point);
    const Double3 c = UnitOf(triple[2] - point);
    const auto angle = [](Double3 from, Double3 to) { return std::acos(std::clamp(Dot(from, to), -1.0, 1.0)); };
    return angle(a, b) + angle(b, c) + angle(c, a) >= Least;
}

class CapClipper
{
public:
    CapClipper(RetainedMode& root, VertexSpan polygon, MeshBuilder& mesh)
        : root_(root), polygon_(polygon), mesh_(mesh), left_(polygon.size()), before_(polygon.size()),
          after_(polygon.size()), gone_(polygon.size()), obstacle_(polygon.size(), Nothing), waiting_(polygon.size())
    {
        const auto count = static_cast<std::int32_t>(polygon.size());
        for (std::int32_t i = 0; i < count; ++i)
        {
            Of(before_, i) = i == 0 ? count - 1 : i - 1;
            Of(after_, i) = i + 1 == count ? 0 : i + 1;
        }
    }

    void Run()
    {
        Centre();
        AskAll();
        while (left_ >= 4 && work_ <= MaximumCapWork)
        {
            if (Pass())
                continue;
            if (loose_)
                break;
            loose_ = true;
            AskAll();
        }
        EmitRest();
    }

private:
    static constexpr std::int32_t Nothing = -1;

    template<typename T>
    static T& Of(std::vector<T>& list, std::int32_t i)
    {
        return list[static_cast<std::size_t>(i)];
    }

    Vector Point(std::int32_t i) const { return points_[static_cast<std::size_t>(i)]; }

    void Centre()
    {
        const Vector centre = ResultOf(OnError, [&] { return GetBoundingBox(polygon_); }).Centre();
        points_.reserve(polygon_.size());
        for (const Vector corner : polygon_)
            points_.push_back(corner - centre);
        normal_ = ResultOf(OnError, [&] { return GetPolygonNormal(root_, points_); });
        if (normal_ != Vector{})
            PlantTree();
    }

    void PlantTree()
    {
        const Double3 up = UnitOf(normal_);
        const Double3 right = UnitOf(Cross(up, std::abs(up.x) < 0.6 ? Double3{1, 0, 0} : Double3{0, 1, 0}));
        const Double3 forward = Cross(right, up);
        std::vector<PlanePoint> flat;
        flat.reserve(points_.size());
        double height = 0;
        double extent = 0;
        for (const Double3 p : points_)
        {
            flat.push_back({Dot(p, right), Dot(p, forward)});
            height = std::max(height, std::abs(Dot(p, up)));
            extent = std::max({extent, std::abs(flat.back().x), std::abs(flat.back().y)});
        }
        margin_ = TiltMargin * height + 1e-6 * extent;
        flat_ = flat;
        tree_.emplace(std::move(flat));
    }

    void AskAll()
    {
        std::int32_t corner = anyLeft_;
        for (std::size_t i = 0; i < left_; ++i, corner = Of(after_, corner))
            pending_.insert(corner);
    }

    // Once over the corners, in their order. Answers whether one went.
    bool Pass()
    {
        bool clipped = false;
        auto at = pending_.begin();
        while (left_ >= 4 && at != pending_.end() && work_ <= MaximumCapWork)
        {
            const std::int32_t corner = *at;
            at = pending_.erase(at);
            if (!MayGo(corner))
                continue;
            Clip(corner);
            clipped = true;
            at = pending_.upper_bound(corner);
        }
        return clipped;
    }

    bool MayGo(std::int32_t i)
    {
        const Triple triple{Point(Of(before_, i)), Point(i), Point(Of(after_, i))};
        ++work_;
        if (VectorsEqual(triple[0], triple[2]) ||
            ResultOf(OnError, [&] { return loose_ ? IsColinear(root_, triple) : IsColinearStrict(root_, triple); }))
            return true;
        if (!Near(ResultOf(OnError, [&] { return GetTriangleNormal(root_, triple); }), normal_))
            return false;
        Of(obstacle_, i) = FindObstacle(i, triple);
        if (Of(obstacle_, i) == Nothing)
            return true;
        Of(waiting_, Of(obstacle_, i)).push_back(i);
        return false;
    }

    // Some other point in the ear.
    std::int32_t FindObstacle(std::int32_t i, const Triple& triple)
    {
        const std::int32_t before = Of(before_, i);
        const std::int32_t after = Of(after_, i);
        const auto isInside = [&](std::int32_t other)
        {
            if (other == before || other == i || other == after)
                return false;
            work_ += WorkOfQuickTest;
            if (!MaySeeAllAround(triple, Point(other)))
                return false;
            work_ += WorkOfExactTest;
            return ResultOf(OnError, [&] { return IsPointInPolygon(root_, triple, Point(other), Corners::Excluded); });
        };
        if (tree_)
            return tree_->Find({Of(flat_, before), Of(flat_, i), Of(flat_, after), LensAngle, margin_}, work_,
                               isInside);
        // A polygon that encloses no area has no plane to look at it in.
        for (std::int32_t other = Of(after_, after); other != before; other = Of(after_, other))
            if (isInside(other))
                return other;
        return Nothing;
    }

    void Clip(std::int32_t i)
    {
        const std::int32_t before = Of(before_, i);
        const std::int32_t after = Of(after_, i);
        AddFace({before, i, after});
        Of(after_, before) = after;
        Of(before_, after) = before;
        --left_;
        anyLeft_ = after;
        if (tree_)
            tree_->Remove(i);
        gone_[static_cast<std::size_t>(i)] = true;
        pending_.insert(before);
        pending_.insert(after);
        for (const std::int32_t corner : Of(waiting_, i))
            if (!gone_[static_cast<std::size_t>(corner)] && Of(obstacle_, corner) == i)
                pending_.insert(corner);
    }

    void EmitRest()
    {
        if (left_ < 3)
            return;
        std::vector<std::int32_t> corners;
        std::int32_t corner = 0;
        while (gone_[static_cast<std::size_t>(corner)])
            ++corner;
        for (std::size_t i = 0; i < left_; ++i, corner = Of(after_, corner))
            corners.push_back(corner);
        AddFace(corners);
    }

    void AddFace(const std::vector<std::int32_t>& corners)
    {
        const auto face = ResultOf(OnError, [&] { return mesh_.CreateFace(); });
        for (const std::int32_t corner : corners)
        {
            const Vector p = polygon_[static_cast<std::size_t>(corner)];
            OnError([&] { face->AddVertex(p.x, p.y, p.z); });
        }
    }

    RetainedMode& root_;
    VertexSpan polygon_;
    MeshBuilder& mesh_;
    VertexList points_; // around their middle
    Vector normal_;
    std::vector<PlanePoint> flat_; // seen along the normal
    double margin_ = 0;
    std::optional<PointTree> tree_;

    std::size_t left_;
    std::int32_t anyLeft_ = 0;
    std::vector<std::int32_t> before_;
    std::vector<std::int32_t> after_;
    std::vector<bool> gone_;
    std::set<std::int32_t> pending_;                 // corners to be asked
    std::vector<std::int32_t> obstacle_;             // the point in each corner's way
    std::vector<std::vector<std::int32_t>> waiting_; // corners that each point was in the way of
    bool loose_ = false;
    std::int64_t work_ = 0;
};

} // namespace

void TriangulateCap(RetainedMode& root, VertexSpan polygon, MeshBuilder& mesh)
{
    OnError([&] { RequireVertices(polygon, 1, "The polygon"); });
    OnError([&] { RequireCount(static_cast<std::int64_t>(polygon.size()), "The number of corners"); });
    CapClipper{root, polygon, mesh}.Run();
}

} // namespace lumora
