// Sweeps of small whole numbers, where points coincide and lines cross all the time: a finite mesh or a RuntimeError.
#include "base/RuntimeError.h"
#include "fuzz/Fuzzing.h"
#include "geometry/Kernel.h"
#include "geometry/modOptimize.h"
#include "geometry/modSweep.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace
{

using namespace lumora;
using fuzz::Require;

class Numbers : public fuzz::Bytes
{
public:
    using Bytes::Bytes;

    /// -8..7, now and then something that is no coordinate.
    float Coordinate()
    {
        const std::uint8_t byte = Next();
        if (byte == 0xFF)
            return NAN;
        if (byte == 0xFE)
            return 3e38F;
        return static_cast<float>(byte % 16) - 8;
    }

    VertexList Points(std::size_t most)
    {
        VertexList points(Next() % (most + 1));
        for (Vector& point : points)
            point = {Coordinate(), Coordinate(), Flag() ? Coordinate() : 0};
        return points;
    }
};

Sweep SweepFrom(Numbers bytes)
{
    Sweep sweep;
    sweep.profile = bytes.Points(40);
    sweep.path = bytes.Points(8);
    sweep.steps = bytes.Flag() ? bytes.Next() % 12 : bytes.Next() - 128;
    sweep.curveMethod = static_cast<CurveMethod>(bytes.Next() % 4);
    sweep.turnFraction = bytes.Coordinate() / 4;
    sweep.axis = bytes.Flag() ? Vector{bytes.Coordinate(), bytes.Coordinate(), bytes.Coordinate()} : Vector{};
    sweep.endScale = bytes.Flag() ? bytes.Coordinate() : 1;
    sweep.startAlongProfileNormal = bytes.Flag();
    sweep.reverse = bytes.Flag();
    sweep.caps = bytes.Flag();
    sweep.wrap = bytes.Flag();
    sweep.dropCoincident = bytes.Flag();
    sweep.curve.closed = bytes.Flag();
    sweep.curve.linear = bytes.Flag();
    sweep.curve.useTimes = bytes.Flag();
    for (std::size_t i = bytes.Next() % 9; i > 0; --i)
        sweep.curve.times.push_back(bytes.Coordinate());
    return sweep;
}

// The area of a cap is its polygon's, however it was cut.
void CheckCap(RetainedMode& root, const VertexList& polygon)
{
    if (std::ranges::any_of(polygon, [](Vector p) { return std::abs(p.x) + std::abs(p.y) + std::abs(p.z) > 100; }))
        return;
    const auto cap = MeshBuilder::Make();
    TriangulateCap(root, polygon, *cap);
    Double3 sum;
    for (const test::Polygon& face : test::PolygonsOf(*cap))
        sum = sum + test::VectorArea(face);
    // Whole numbers: exact.
    const Double3 off = sum - test::VectorArea(polygon);
    Require(polygon.size() < 3 || Dot(off, off) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    RetainedMode root{std::make_shared<DriverList>()};
    const Sweep sweep = SweepFrom({data, size});
    try
    {
        const auto mesh = CreateSweptMesh(root, sweep);
        Require(static_cast<std::size_t>(mesh->GetVertexCount()) >=
                sweep.profile.size() * (static_cast<std::size_t>(sweep.steps) + 1));
        for (const Vector vertex : mesh->GetGeometry().vertices)
            Require(IsFinite(vertex));
        OptimizeMesh(root, *mesh, {.copyFaceColors = false, .dropRepeats = true});
        CheckCap(root, sweep.profile);
    }
    catch (const RuntimeError& failure)
    {
        Require(failure.Source() == "modSweep" && !failure.Description().empty());
    }
    return 0;
}
