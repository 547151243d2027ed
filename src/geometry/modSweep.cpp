#include "geometry/modSweep.h"

#include "base/Numbers.h"
#include "geometry/ArcCos.h"
#include "geometry/BezierCurve.h"
#include "geometry/Steps.h"
#include "geometry/modBSpline.h"
#include "geometry/modConvexity.h"
#include "geometry/modGenerateSurfaceFaces.h"
#include "geometry/modNormal.h"
#include "geometry/modVector.h"

#include <algorithm>
#include <cmath>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modSweep"};

void AddFace(MeshBuilder& mesh, VertexSpan corners)
{
    const auto face = ResultOf(OnError, [&] { return mesh.CreateFace(); });
    for (const Vector corner : corners)
        OnError([&] { face->AddVertex(corner.x, corner.y, corner.z); });
}

// Of the rotation that takes `normal` to `direction`: zero where there is nothing to turn.
Vector TurnAxis(RetainedMode& root, Vector normal, Vector direction)
{
    const auto cross = [&](Vector a, Vector b)
    { return ResultOf(OnError, [&] { return root.VectorCrossProduct(a, b); }); };
    Vector axis = cross(normal, direction);
    const bool opposite = ResultOf(OnError, [&] { return root.VectorDotProduct(normal, direction); }) < 0;
    if (axis == Vector{} && opposite)
        axis = cross(normal, std::abs(normal.x) < 0.5F ? Vector{1, 0, 0} : Vector{0, 1, 0});
    return ResultOf(OnError, [&] { return root.VectorNormalize(axis); });
}

class Sweeper
{
public:
    Sweeper(RetainedMode& root, const Sweep& sweep)
        : root_(root), sweep_(sweep), profile_(sweep.profile), hasPath_(sweep.path.size() > 1)
    {
    }

    std::shared_ptr<MeshBuilder> Run()
    {
        OnError([&] { Measure(); });
        const float scale = ResultOf(OnError, [&] { return ScalePerSample(); });
        auto mesh = ResultOf(OnError, [&] { return root_.CreateMeshBuilder(); });
        const std::int32_t room = (Rows() - 1) * sweep_.steps;
        OnError([&] { mesh->ReserveSpace(room, room, room); });

        vertices_.resize(profile_.size() * columns_);
        if (hasPath_)
        {
            OnError([&] { path_ = ResampledPath(); });
            PlaceAlongPath(scale);
        }
        TurnVertices();
        const SurfaceOptions surface{sweep_.reverse, sweep_.wrap, sweep_.dropCoincident};
        OnError([&] { GenerateSurfaceFaces(*mesh, vertices_, sweep_.steps + 1, Rows(), surface); });
        if (sweep_.caps)
            CapEnds(*mesh);
        return mesh;
    }

private:
    std::int32_t Rows() const { return static_cast<std::int32_t>(profile_.size()); }
    Vector& At(std::size_t point, std::size_t sample) { return vertices_[point * columns_ + sample]; }

    void Measure()
    {
        RequireVertices(profile_, 1, "The profile");
        RequireCount(sweep_.steps, "The number of steps");
        RequireCount(static_cast<std::int64_t>(profile_.size()), "The number of profile points");
        if (sweep_.steps == 0)
            throw RuntimeError{error::DivisionByZero, "modSweep", "A sweep takes one step or more"};
        columns_ = static_cast<std::size_t>(sweep_.steps) + 1;
        RequireCount(static_cast<std::int64_t>(profile_.size() * columns_), "Profile points times samples");
    }

    float ScalePerSample() const
    {
        constexpr float Least = 0.01F;
        const double factor = std::pow(double{sweep_.endScale}, Divide(1, sweep_.steps));
        if (std::isnan(factor))
            throw RuntimeError{error::InvalidCall, "modSweep",
                               "The end scale has no root of as many steps: it is negative or not a number"};
        return std::max(ToSingle(factor), Least);
    }

    VertexList ResampledPath()
    {
        const std::int32_t count = sweep_.steps + 1;
        switch (sweep_.curveMethod)
        {
        case CurveMethod::Bezier:
            return MyDll_CreateBezierCurve(sweep_.path, count);
        case CurveMethod::BSpline:
            return EvaluateBSplineCurve(sweep_.path, std::vector<float>(sweep_.path.size(), 1.0F), count);
        default:
            return EvaluateNSpline(root_, sweep_.path, count, sweep_.curve);
        }
    }

    // Where the first row is taken to come from.
    Vector BeforePath()
    {
        if (!sweep_.startAlongProfileNormal)
            return path_[0] * 2 - path_[1];
        return path_[0] - ResultOf(OnError, [&] { return GetPolygonNormal(root_, profile_); });
    }

    // Fills in the rows, still around the origin. Each turns the one before a little, so that none twists.
    void PlaceAlongPath(float scale)
    {
        PlacedProfile row{profile_, {}};
        tangents_.reserve(columns_);
        Vector previous = BeforePath();
        for (std::size_t s = 0; s < columns_; ++s)
        {
            if (profile_.size() >= 3)
                row = ResultOf(OnError, [&] { return PlaceProfile(root_, row.vertices, path_[s], previous, scale); });
            tangents_.push_back(row.normal);
            for (std::size_t j = 0; j < profile_.size(); ++j)
                At(j, s) = row.vertices[j];
            previous = path_[s];
        }
    }

    Vector AxisOf(std::size_t sample) const
    {
        if (sweep_.axis != Vector{})
            return sweep_.axis;
        return hasPath_ ? tangents_[sample] : Vector{0, 0, 1};
    }

    void TurnVertices()
    {
        for (std::size_t j = 0; j < profile_.size(); ++j)
            for (std::size_t s = 0; s < columns_; ++s)
            {
                Vector v = hasPath_ ? At(j, s) : profile_[j];
                if (sweep_.turnFraction != 0)
                    v = ResultOf(OnError,
                                 [&] {
                                     return RotateVectorFraction(root_, v, static_cast<std::int32_t>(s), sweep_.steps,
                                                                 AxisOf(s), sweep_.turnFraction);
                                 });
                At(j, s) = hasPath_ ? v + path_[s] : v;
            }
    }

    // The rings are the surface's own first and last rows, walked against its quads' edges.
    void CapEnds(MeshBuilder& mesh)
    {
        const bool repeats = profile_.size() >= 4 && VectorsEqual(profile_.front(), profile_.back());
        const std::size_t corners = repeats ? profile_.size() - 1 : profile_.size();
        if (corners < 3 || !(repeats || sweep_.wrap))
            return;
        VertexList nearRing;
        VertexList farRing;
        for (std::size_t j = 0; j < corners; ++j)
        {
            nearRing.push_back(At(j, 0));
            farRing.push_back(At(j, columns_ - 1));
        }
        if (std::ranges::equal(nearRing, farRing, VectorsEqual))
            return;
        std::ranges::reverse(sweep_.reverse ? farRing : nearRing);
        for (const VertexList& ring : {nearRing, farRing})
        {
            if (ResultOf(OnError, [&] { return IsPolygonConvex(root_, ring, Flatness::Loose); }))
                AddFace(mesh, ring);
            else
                TriangulateCap(root_, ring, mesh);
        }
    }

    RetainedMode& root_;
    const Sweep& sweep_;
    const VertexList& profile_;
    bool hasPath_;
    std::size_t columns_ = 0;
    VertexList path_;     // its samples
    VertexList tangents_; // of each sample
    VertexList vertices_;
};

} // namespace

std::shared_ptr<MeshBuilder> CreateSweptMesh(RetainedMode& root, const Sweep& sweep)
{
    return Sweeper{root, sweep}.Run();
}

PlacedProfile PlaceProfile(RetainedMode& root, VertexSpan profile, Vector point, Vector previous, float scale)
{
    const Vector direction = ResultOf(OnError, [&] { return root.VectorNormalize(point - previous); });
    VertexList scaled;
    scaled.reserve(profile.size());
    for (const Vector vertex : profile)
        scaled.push_back(vertex * scale);
    PlacedProfile placed{ResultOf(OnError, [&] { return OrientProfile(root, scaled, direction); }), {}};
    placed.normal = ResultOf(OnError, [&] { return GetPolygonNormal(root, placed.vertices); });
    return placed;
}

VertexList OrientProfile(RetainedMode& root, VertexSpan profile, Vector direction)
{
    const Vector normal = ResultOf(OnError, [&] { return GetPolygonNormal(root, profile); });
    const double cosine = ResultOf(OnError, [&] { return root.VectorDotProduct(direction, normal); });
    const auto angle = static_cast<float>(ArcCos(cosine));
    const Vector axis = TurnAxis(root, normal, direction);
    VertexList turned;
    turned.reserve(profile.size());
    for (const Vector vertex : profile)
    {
        const Vector unit = ResultOf(OnError, [&] { return root.VectorRotate(vertex, axis, angle); });
        const float length = ResultOf(OnError, [&] { return root.VectorModulus(vertex); });
        turned.push_back(ResultOf(OnError, [&] { return root.VectorScale(unit, length); }));
    }
    return turned;
}

} // namespace lumora
