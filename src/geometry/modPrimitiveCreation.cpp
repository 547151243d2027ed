#include "geometry/modPrimitiveCreation.h"

#include "base/Numbers.h"
#include "geometry/Steps.h"
#include "geometry/modOptimize.h"
#include "geometry/modSweep.h"

namespace lumora
{

namespace
{

constexpr Trap OnError{"modPrimitiveCreation"};
constexpr Vector YAxis{0, 1, 0};

// `vector` turned about `axis`, its length kept.
Vector Turned(RetainedMode& root, Vector vector, Vector axis, double angle)
{
    const Vector unit = ResultOf(OnError, [&] { return root.VectorRotate(vector, axis, ToSingle(angle)); });
    const float length = ResultOf(OnError, [&] { return root.VectorModulus(vector); });
    return ResultOf(OnError, [&] { return root.VectorScale(unit, length); });
}

VertexList ProfileOf(std::int32_t n)
{
    OnError([&] { RequireCount(n, "The number of profile points"); });
    VertexList profile;
    profile.reserve(static_cast<std::size_t>(n));
    return profile;
}

std::shared_ptr<MeshBuilder> Revolved(RetainedMode& root, VertexList profile, std::int32_t steps)
{
    Sweep lathe;
    lathe.profile = std::move(profile);
    lathe.startAlongProfileNormal = true;
    lathe.turnFraction = 1;
    lathe.axis = YAxis;
    lathe.steps = steps;
    lathe.dropCoincident = true;
    return ResultOf(OnError, [&] { return CreateSweptMesh(root, lathe); });
}

void Weld(RetainedMode& root, MeshBuilder& mesh)
{
    OnError([&] { OptimizeMesh(root, mesh, {.copyFaceColors = false, .dropRepeats = true}); });
}

} // namespace

std::shared_ptr<MeshBuilder> CreateSphere(RetainedMode& root, std::int32_t n, std::int32_t steps)
{
    VertexList profile = ProfileOf(n);
    for (std::int32_t i = 0; i < n; ++i)
    {
        const double part = ResultOf(OnError, [&] { return Divide(i, n - 1.0); });
        profile.push_back(Turned(root, {0, 0.5F, 0}, {0, 0, 1}, -double{FullTurn} * part / 2));
    }
    auto mesh = Revolved(root, std::move(profile), steps);
    Weld(root, *mesh);
    return mesh;
}

std::shared_ptr<MeshBuilder> CreateCone(RetainedMode& root, std::int32_t n, std::int32_t steps,
                                        std::int32_t topRadiusPercent)
{
    return BuildConeMesh(root, n, steps, topRadiusPercent);
}

std::shared_ptr<MeshBuilder> BuildConeMesh(RetainedMode& root, std::int32_t n, std::int32_t steps,
                                           std::int32_t topRadiusPercent)
{
    const double top = topRadiusPercent / 100.0 * 1.0 / 2;
    VertexList profile = ProfileOf(n);
    for (std::int32_t i = 0; i < n; ++i)
    {
        const double spacing = ResultOf(OnError, [&] { return Divide(1.0, n - 1.0); });
        profile.push_back(
            {0, static_cast<float>(spacing * (n - 1 - i) - 0.5), static_cast<float>(top + (0.5 - top) / (n - 1) * i)});
    }
    auto mesh = Revolved(root, std::move(profile), steps);
    CreateDisc(root, *mesh, {0, -0.5F, 0.5F}, YAxis, steps, TurnSense::Clockwise);
    if (topRadiusPercent != 0)
        CreateDisc(root, *mesh, {0, 0.5F, static_cast<float>(top)}, YAxis, steps, TurnSense::CounterClockwise);
    Weld(root, *mesh);
    return mesh;
}

void CreateDisc(RetainedMode& root, MeshBuilder& mesh, Vector rim, Vector axis, std::int32_t count, TurnSense sense)
{
    if (count > 0)
        OnError([&] { RequireCount(count, "The number of corners"); });
    const auto face = ResultOf(OnError, [&] { return mesh.CreateFace(); });
    const Vector turnAxis{axis.x, axis.y, -axis.z};
    const double turn = sense == TurnSense::CounterClockwise ? double{FullTurn} : -double{FullTurn};
    for (std::int32_t i = 0; i < count; ++i)
    {
        const Vector corner = Turned(root, rim, turnAxis, turn * (static_cast<double>(i) / count));
        OnError([&] { face->AddVertex(corner.x, corner.y, corner.z); });
    }
}

} // namespace lumora
