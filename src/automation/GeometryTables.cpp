// The geometry kernel's functions by name: a row for each.
#include "automation/GeometryKernel.h"
#include "automation/PackedNumbers.h"
#include "automation/SceneTables.h"
#include "automation/TableTools.h"
#include "geometry/ArcCos.h"
#include "geometry/BezierCurve.h"
#include "geometry/modBSpline.h"
#include "geometry/modBounding.h"
#include "geometry/modColinear.h"
#include "geometry/modConvexity.h"
#include "geometry/modFace.h"
#include "geometry/modGenerateSurfaceFaces.h"
#include "geometry/modNormal.h"
#include "geometry/modOptimize.h"
#include "geometry/modPrimitiveCreation.h"
#include "geometry/modSweep.h"
#include "geometry/modVector.h"
#include "platform/drivers/standard/StandardDrivers.h"

namespace lumora::automation
{

GeometryKernel::GeometryKernel() : root_(StandardDrivers())
{
    root_.Initialise();
}

std::shared_ptr<GeometryKernel> GeometryKernel::Shared()
{
    static std::weak_ptr<GeometryKernel> inUse;
    std::shared_ptr<GeometryKernel> kernel = inUse.lock();
    if (!kernel)
        inUse = kernel = std::shared_ptr<GeometryKernel>{new GeometryKernel};
    return kernel;
}

namespace
{

using Kernel = GeometryKernel;
using Mesh = std::shared_ptr<MeshBuilder>;
using Rows = std::vector<MemberRow<Kernel>>;
using Single = float&;

MeshBuilder& Needed(const Mesh& mesh)
{
    RequireObject("Geometry", mesh, "The mesh");
    return *mesh;
}

Triple TripleFrom(const Vectors& corners)
{
    const auto view = corners.View();
    if (view.size() != Triple{}.size())
        throw RuntimeError{error::SubscriptOutOfRange, "Geometry",
                           "A triple is three corners, not " + std::to_string(view.size())};
    return {view[0], view[1], view[2]};
}

VertexList ListFrom(const Vectors& vectors)
{
    return {vectors.View().begin(), vectors.View().end()};
}

NSplineOptions CurveFrom(bool closed, bool linear, bool useTimes, const Numbers<float>& times)
{
    return {closed, linear, useTimes, {times.View().begin(), times.View().end()}};
}

// The arguments of a sweep in the order of its record.
Mesh CreateSweptMeshFrom(Kernel& kernel, const Vectors& profile, bool startAlongProfileNormal, float turnFraction,
                         float axisX, float axisY, float axisZ, const Vectors& path, std::int32_t steps, bool reverse,
                         float endScale, std::int32_t curveMethod, bool caps, bool curveClosed, bool curveLinear,
                         bool useTimes, const Numbers<float>& times, bool wrap, bool dropCoincident)
{
    Sweep sweep;
    sweep.profile = ListFrom(profile);
    sweep.startAlongProfileNormal = startAlongProfileNormal;
    sweep.turnFraction = turnFraction;
    sweep.axis = {axisX, axisY, axisZ};
    sweep.path = ListFrom(path);
    sweep.steps = steps;
    sweep.reverse = reverse;
    sweep.endScale = endScale;
    sweep.curveMethod = static_cast<CurveMethod>(curveMethod);
    sweep.caps = caps;
    sweep.curve = CurveFrom(curveClosed, curveLinear, useTimes, times);
    sweep.wrap = wrap;
    sweep.dropCoincident = dropCoincident;
    return CreateSweptMesh(kernel.Root(), sweep);
}

Rows SolidRows()
{
    return {
        Method(
            "CreateSphere", "N, Steps",
            [](Kernel& kernel, std::int32_t n, std::int32_t steps) { return CreateSphere(kernel.Root(), n, steps); },
            "a mesh: radius 0.5 about the origin, n points from pole to pole, steps around the y axis"),
        Method(
            "CreateCone", "N, Steps, TopRadiusPercent",
            [](Kernel& kernel, std::int32_t n, std::int32_t steps, std::int32_t percent)
            { return CreateCone(kernel.Root(), n, steps, percent); },
            "a mesh: height 1, bottom radius 0.5, top radius 0 percent of it for a point to 100 for a cylinder"),
        Method(
            "BuildConeMesh", "N, Steps, TopRadiusPercent",
            [](Kernel& kernel, std::int32_t n, std::int32_t steps, std::int32_t percent)
            { return BuildConeMesh(kernel.Root(), n, steps, percent); },
            "what CreateCone returns"),
        Method(
            "CreateDisc", "Mesh, RimX, RimY, RimZ, AxisX, AxisY, AxisZ, Count, CounterClockwise",
            [](Kernel& kernel, const Mesh& mesh, float rimX, float rimY, float rimZ, float axisX, float axisY,
               float axisZ, std::int32_t count, bool counterClockwise)
            {
                CreateDisc(kernel.Root(), Needed(mesh), {rimX, rimY, rimZ}, {axisX, axisY, axisZ}, count,
                           counterClockwise ? TurnSense::CounterClockwise : TurnSense::Clockwise);
            },
            "adds a face: a point of its rim turned about an axis by equal parts"),
        Method("CreateSweptMesh",
               "Profile, StartAlongProfileNormal, TurnFraction, AxisX, AxisY, AxisZ, Path, Steps, Reverse, EndScale, "
               "CurveMethod, Caps, CurveClosed, CurveLinear, UseTimes, Times, Wrap, DropCoincident",
               &CreateSweptMeshFrom,
               "a mesh: a profile revolved, swept along a path (method 0 Bezier, 1 key-framed, 2 B-spline), or both"),
        Method(
            "OrientProfile", "Profile, DirX, DirY, DirZ",
            [](Kernel& kernel, const Vectors& profile, float x, float y, float z) {
                return OrientProfile(kernel.Root(), profile.View(), {x, y, z});
            },
            "the profile turned to face a unit direction"),
        Method(
            "PlaceProfile", "Profile, X, Y, Z, PreviousX, PreviousY, PreviousZ, Scale, NormalX, NormalY, NormalZ",
            [](Kernel& kernel, const Vectors& profile, float x, float y, float z, float previousX, float previousY,
               float previousZ, float scale, Single normalX, Single normalY, Single normalZ)
            {
                PlacedProfile placed =
                    PlaceProfile(kernel.Root(), profile.View(), {x, y, z}, {previousX, previousY, previousZ}, scale);
                Split(placed.normal, normalX, normalY, normalZ);
                return std::move(placed.vertices);
            },
            "the profile scaled and turned to face from the previous point to the point"),
        Method(
            "TriangulateCap", "Polygon, Mesh",
            [](Kernel& kernel, const Vectors& polygon, const Mesh& mesh)
            { TriangulateCap(kernel.Root(), polygon.View(), Needed(mesh)); },
            "adds faces that cover a polygon"),
        Method(
            "GenerateSurfaceFaces", "Mesh, Grid, Columns, Rows, Reverse, Wrap, DropCoincident",
            [](Kernel&, const Mesh& mesh, const Vectors& grid, std::int32_t columns, std::int32_t rows, bool reverse,
               bool wrap, bool dropCoincident) {
                GenerateSurfaceFaces(Needed(mesh), grid.View(), columns, rows, {reverse, wrap, dropCoincident});
            },
            "adds the quads between rows and columns of vertices"),
        Method(
            "OptimizeMesh", "Mesh, CopyFaceColors, DropRepeats",
            [](Kernel& kernel, const Mesh& mesh, bool copyFaceColors, bool dropRepeats) {
                OptimizeMesh(kernel.Root(), Needed(mesh), {copyFaceColors, dropRepeats});
            },
            "welds vertices in one place"),
    };
}

Rows CurveRows()
{
    return {
        Method(
            "MyDll_CreateBezierCurve", "Points, SampleCount",
            [](Kernel&, const Vectors& points, std::int32_t count)
            { return MyDll_CreateBezierCurve(points.View(), count); },
            "samples of one Bezier curve over all control points"),
        Method(
            "EvaluateBSplineCurve", "Points, Weights, SampleCount",
            [](Kernel&, const Vectors& points, const Numbers<float>& weights, std::int32_t count)
            { return EvaluateBSplineCurve(points.View(), weights.View(), count); },
            "samples of a rational B-spline of order 3"),
        Method(
            "RationalBSpline", "Points, Order, Weights, SampleCount",
            [](Kernel&, const Vectors& points, std::int32_t order, const Numbers<float>& weights, std::int32_t count)
            { return RationalBSpline(points.View(), order, weights.View(), count); },
            "samples of a rational B-spline"),
        Method(
            "RationalBasis", "Order, T, Knots, Weights",
            [](Kernel&, std::int32_t order, float t, const Numbers<std::int32_t>& knots, const Numbers<float>& weights)
            { return RationalBasis(order, t, knots.View(), weights.View()); },
            "the basis values at a parameter"),
        Method(
            "OpenUniformKnots", "PointCount, Order",
            [](Kernel&, std::int32_t count, std::int32_t order) { return OpenUniformKnots(count, order); },
            "the knots of an open uniform B-spline"),
        Method(
            "EvaluateNSpline", "Points, SampleCount, Closed, Linear, UseTimes, Times",
            [](Kernel& kernel, const Vectors& points, std::int32_t count, bool closed, bool linear, bool useTimes,
               const Numbers<float>& times) {
                return EvaluateNSpline(kernel.Root(), points.View(), count, CurveFrom(closed, linear, useTimes, times));
            },
            "samples of a curve through all control points"),
    };
}

Rows VectorRows()
{
    return {
        Method(
            "VectorComponentsEqual", "X1, Y1, Z1, X2, Y2, Z2",
            [](Kernel&, float x1, float y1, float z1, float x2, float y2, float z2)
            { return VectorComponentsEqual(x1, y1, z1, x2, y2, z2); },
            "whether each differs by less than 0.0001"),
        Method(
            "RotateVectorFraction",
            "X, Y, Z, Step, StepCount, AxisX, AxisY, AxisZ, TurnFraction, ResultX, ResultY, ResultZ",
            [](Kernel& kernel, float x, float y, float z, std::int32_t step, std::int32_t stepCount, float axisX,
               float axisY, float axisZ, float turnFraction, Single resultX, Single resultY, Single resultZ)
            {
                Split(RotateVectorFraction(kernel.Root(), {x, y, z}, step, stepCount, {axisX, axisY, axisZ},
                                           turnFraction),
                      resultX, resultY, resultZ);
            },
            "turned by a part of some full turns, its length kept"),
        Method(
            "GetTriangleNormal", "Vertices, X, Y, Z",
            [](Kernel& kernel, const Vectors& vertices, Single x, Single y, Single z)
            { Split(GetTriangleNormal(kernel.Root(), vertices.View()), x, y, z); },
            "of the first three vertices, length 1"),
        Method(
            "GetPolygonNormal", "Vertices, X, Y, Z",
            [](Kernel& kernel, const Vectors& vertices, Single x, Single y, Single z)
            { Split(GetPolygonNormal(kernel.Root(), vertices.View()), x, y, z); },
            "of the whole polygon, length 1"),
        Method(
            "GetVertexTriple", "Vertices, Index",
            [](Kernel&, const Vectors& vertices, std::int32_t index)
            {
                const Triple triple = GetVertexTriple(vertices.View(), index);
                return VertexList{triple.begin(), triple.end()};
            },
            "the corners before, at and after one"),
        Method(
            "GetVertexAngle", "Triple",
            [](Kernel& kernel, const Vectors& triple) { return GetVertexAngle(kernel.Root(), TripleFrom(triple)); },
            "the angle at the middle corner, radians"),
        Method(
            "IsPointInPolygon", "Vertices, X, Y, Z, ExcludeCorners",
            [](Kernel& kernel, const Vectors& vertices, float x, float y, float z, bool excludeCorners)
            {
                return IsPointInPolygon(kernel.Root(), vertices.View(), {x, y, z},
                                        excludeCorners ? Corners::Excluded : Corners::Included);
            },
            "whether a point sees the polygon all around"),
        Method(
            "IsPolygonConvex", "Vertices, Loose",
            [](Kernel& kernel, const Vectors& vertices, bool loose)
            { return IsPolygonConvex(kernel.Root(), vertices.View(), loose ? Flatness::Loose : Flatness::Strict); },
            "whether every corner turns the same way"),
        Method(
            "IsColinear", "Triple",
            [](Kernel& kernel, const Vectors& triple) { return IsColinear(kernel.Root(), TripleFrom(triple)); },
            "whether the middle corner is none, within 11 degrees"),
        Method(
            "IsColinearStrict", "Triple",
            [](Kernel& kernel, const Vectors& triple) { return IsColinearStrict(kernel.Root(), TripleFrom(triple)); },
            "the same within 0.8 degrees"),
        Method(
            "GetBoundingBox", "Vertices, MinX, MinY, MinZ, MaxX, MaxY, MaxZ",
            [](Kernel&, const Vectors& vertices, Single minX, Single minY, Single minZ, Single maxX, Single maxY,
               Single maxZ) { Split(GetBoundingBox(vertices.View()), minX, minY, minZ, maxX, maxY, maxZ); },
            "the box around all vertices"),
        Method(
            "ArcCos", "X", [](Kernel&, double x) { return ArcCos(x); }, "radians"),
    };
}

} // namespace

template<>
const MemberTable<GeometryKernel>& TableOf<GeometryKernel>()
{
    static const MemberTable<GeometryKernel> table{"Geometry", Joined(SolidRows(), Joined(CurveRows(), VectorRows()))};
    return table;
}

} // namespace lumora::automation
