#include "stage/TurnedPieces.h"

#include "geometry/modBSpline.h"
#include "geometry/modOptimize.h"
#include "geometry/modPrimitiveCreation.h"
#include "geometry/modSweep.h"

#include <cmath>
#include <numbers>

namespace lumora::stage
{

namespace
{

RetainedMode MakeRoot()
{
    return RetainedMode{std::make_shared<DriverList>()}; // draws nothing
}

// With normals that round corners of less than about 40 degrees.
Shape ToShape(RetainedMode& root, MeshBuilder& mesh)
{
    OptimizeMesh(root, mesh, {.copyFaceColors = false, .dropRepeats = true});
    mesh.GenerateNormals(0.7F);
    MeshGeometry geometry = mesh.GetGeometry();
    return {std::move(geometry.vertices), std::move(geometry.normals), std::move(geometry.faceList), {}};
}

VertexList MakeStar(int points, float outer, float inner)
{
    VertexList star;
    for (int i = 0; i < 2 * points; ++i)
    {
        const double angle = std::numbers::pi * i / points;
        const double radius = i % 2 == 0 ? outer : inner;
        star.push_back({static_cast<float>(radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)), 0});
    }
    return star;
}

} // namespace

Shape MakeVase()
{
    RetainedMode root = MakeRoot();
    // Radius and height: up the inside, over the lip, and down the outside to the foot.
    const VertexList outline{{0.001F, 0.12F, 0}, {0.20F, 0.12F, 0}, {0.42F, 0.30F, 0}, {0.40F, 0.60F, 0},
                             {0.10F, 0.80F, 0},  {0.13F, 1.10F, 0}, {0.30F, 1.28F, 0}, {0.36F, 1.31F, 0},
                             {0.34F, 1.24F, 0},  {0.19F, 1.10F, 0}, {0.16F, 0.80F, 0}, {0.46F, 0.60F, 0},
                             {0.49F, 0.28F, 0},  {0.22F, 0.10F, 0}, {0.22F, 0.04F, 0}, {0.30F, 0, 0}};
    Sweep lathe;
    lathe.profile = EvaluateBSplineCurve(outline, std::vector<float>(outline.size(), 1.0F), 90);
    lathe.turnFraction = 1;
    lathe.axis = {0, 1, 0};
    lathe.steps = 72;
    lathe.dropCoincident = true;
    return ToShape(root, *CreateSweptMesh(root, lathe));
}

Shape MakeHorn()
{
    RetainedMode root = MakeRoot();
    Sweep sweep;
    sweep.profile = MakeStar(5, 0.38F, 0.21F);
    sweep.path = {{0, 0, 0},       {0, 0.7F, 0},        {-0.35F, 1.6F, -0.3F},
                  {0.1F, 2.0F, 0}, {0.75F, 1.7F, 0.1F}, {1.0F, 1.4F, -0.5F}};
    sweep.curveMethod = CurveMethod::BSpline;
    sweep.steps = 120;
    sweep.turnFraction = 0.8F;
    sweep.endScale = 0.55F;
    sweep.wrap = true;
    sweep.caps = true;
    return ToShape(root, *CreateSweptMesh(root, sweep));
}

Shape MakePawn()
{
    RetainedMode root = MakeRoot();
    const auto pawn = CreateCone(root, 2, 64, 38);
    pawn->Scale(0.72F, 0.95F, 0.72F);
    pawn->Translate(0, 0.575F, 0);
    const auto foot = CreateCone(root, 2, 64, 92);
    foot->Scale(0.9F, 0.1F, 0.9F);
    foot->Translate(0, 0.05F, 0);
    const auto head = CreateSphere(root, 25, 48);
    head->Scale(0.5F, 0.5F, 0.5F);
    head->Translate(0, 1.2F, 0);
    for (const auto& part : {foot, head})
        pawn->AddMeshBuilder(part);
    return ToShape(root, *pawn);
}

} // namespace lumora::stage
