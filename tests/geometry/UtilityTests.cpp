// Vectors, normals, corners, boxes, grids and welding: tolerances and degenerate answers.
#include "geometry/ArcCos.h"
#include "geometry/Kernel.h"
#include "geometry/modBounding.h"
#include "geometry/modColinear.h"
#include "geometry/modConvexity.h"
#include "geometry/modFace.h"
#include "geometry/modGenerateSurfaceFaces.h"
#include "geometry/modNormal.h"
#include "geometry/modOptimize.h"
#include "geometry/modVector.h"

#include <cmath>
#include <functional>
#include <numbers>

namespace lumora
{

using namespace test;
using std::numbers::pi;

namespace
{

const VertexList Triangle{{0, 0, 0}, {0, 2, 0}, {2, 0, 0}}; // clockwise for who looks along z

} // namespace

TEST(ArcCosines, snap_at_the_ends_and_never_fail)
{
    for (double x = -0.999; x < 1; x += 0.037)
        EXPECT_NEAR(ArcCos(x), std::acos(x), 1e-12);
    EXPECT_EQ(ArcCos(1.000009), 0);
    EXPECT_EQ(ArcCos(0.999992), 0);
    EXPECT_EQ(ArcCos(-1.000009), double{3.14159274F});
    EXPECT_EQ(ArcCos(1.1), 0);
    EXPECT_EQ(ArcCos(NAN), 0);
}

TEST(Vectors, are_equal_within_a_ten_thousandth_in_every_component)
{
    EXPECT_TRUE(VectorsEqual({1, 1, 1}, {1.00009F, 0.99991F, 1}));
    EXPECT_FALSE(VectorsEqual({1, 1, 1}, {1, 1, 1.00011F}));
    EXPECT_FALSE(VectorComponentsEqual(0, NAN, 0, 0, NAN, 0));
}

TEST(Corners, are_straight_within_their_tolerance)
{
    const Triple nearlyStraight{{{0, 0, 0}, {1, 0, 0}, {2, 0.1F, 0}}};
    EXPECT_TRUE(IsColinear(Root(), nearlyStraight));
    EXPECT_FALSE(IsColinearStrict(Root(), nearlyStraight));
    EXPECT_TRUE(IsColinearStrict(Root(), {{{0, 0, 0}, {1, 0, 0}, {2, 0.001F, 0}}}));
    EXPECT_FALSE(IsColinear(Root(), {{{0, 0, 0}, {2, 0, 0}, {1, 0, 0}}})) << "a reversal";
    EXPECT_FALSE(IsColinear(Root(), {{{0, 0, 0}, {0, 0, 0}, {1, 0, 0}}})) << "a side of no length";
}

TEST(Polygons, know_their_inside_and_whether_they_are_convex)
{
    const struct
    {
        Vector point;
        Corners corners;
        bool inside;
    } cases[] = {{{0.5F, 0.5F, 0}, Corners::Excluded, true}, {{1.5F, 1.5F, 0}, Corners::Excluded, false},
                 {{0, 1, 0}, Corners::Excluded, true},       {{0, 2, 0}, Corners::Excluded, false},
                 {{-0.5F, 1, 0}, Corners::Included, false},  {{0.5F, 0.5F, 0.001F}, Corners::Included, true}};
    for (const auto& c : cases)
        EXPECT_EQ(IsPointInPolygon(Root(), Triangle, c.point, c.corners), c.inside) << c.point.x << " " << c.point.y;

    VertexList regular;
    for (int i = 0; i < 12; ++i)
        regular.push_back({static_cast<float>(std::cos(pi * i / 6)), 5, static_cast<float>(std::sin(pi * i / 6))});
    EXPECT_TRUE(IsPolygonConvex(Root(), regular, Flatness::Strict));
    regular[3].y += 0.001F; // bends the normals there by about 0.007
    EXPECT_FALSE(IsPolygonConvex(Root(), regular, Flatness::Strict));
    EXPECT_TRUE(IsPolygonConvex(Root(), regular, Flatness::Loose));
    const VertexList withMiddle{{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {2, 0, 0}};
    EXPECT_FALSE(IsPolygonConvex(Root(), withMiddle, Flatness::Loose)) << "a colinear corner";
}

TEST(Utilities, name_their_module_when_they_refuse)
{
    const VertexList grid{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {0, 1, 0}, {1, 1, 0},
                          {2, 1, 0}, {3, 1, 0}, {0, 2, 0}, {1, 2, 0}, {2, 2, 0}, {3, 2, 0}};
    const auto mesh = MeshBuilder::Make();
    FaceList faces(8); // one short of a quad
    std::int32_t cursor = 0;
    const auto addGrid = [&](std::int32_t columns, std::int32_t rows)
    { GenerateSurfaceFaces(*mesh, grid, columns, rows, {.wrap = true}); };
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[] {
             RotateVectorFraction(Root(), {1, 0, 0}, 1, 0, {0, 1, 0}, 1);
         },
         "11 modVector"},
        {[] { GetPolygonNormal(Root(), {}); }, "9 modNormal"},
        {[] { GetVertexTriple(Triangle, -1); }, "9 modFace"},
        {[] { IsPolygonConvex(Root(), {}, Flatness::Loose); }, "9 modConvexity"},
        {[] { GetBoundingBox({}); }, "9 modBounding"},
        {[&] { addGrid(4, 4); }, "9 modGenerateSurfaceFaces"},
        {[&] { addGrid(2147483647, 2147483647); }, "6 modGenerateSurfaceFaces"},
        {[&] {
             AppendQuad(grid, {0, 4, 5, 1}, faces, cursor);
         },
         "9 modGenerateSurfaceFaces"},
    };
    for (const auto& [call, raised] : cases)
        EXPECT_EQ(RaisedBy(call), raised);
    EXPECT_EQ(mesh->GetVertexCount(), 0);
    EXPECT_EQ(cursor, 0);
}

TEST(Welding, joins_what_agrees_in_four_decimals_and_keeps_the_surface)
{
    const auto mesh = MeshBuilder::Make();
    const VertexList corners{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1.00004F, -0.00004F, 0}, {0.00004F, 1, 0}, {1, 1, 0}};
    mesh->AddFaces(corners, {}, std::vector<std::int32_t>{3, 0, 1, 2, 3, 3, 4, 5, 0});
    mesh->GetFace(1)->SetColor(0xFF123456);
    mesh->SetAppData(77);
    OptimizeMesh(Root(), *mesh, {.copyFaceColors = true});
    EXPECT_EQ(mesh->GetVertexCount(), 4);
    EXPECT_EQ(mesh->GetFace(0)->GetColor(), 0xFFFFFFFF);
    EXPECT_EQ(mesh->GetFace(1)->GetColor(), 0xFF123456);
    EXPECT_EQ(mesh->GetAppData(), 77);
    EXPECT_NEAR(AreaOf(*mesh), 1, 1e-4);
    OptimizeMesh(Root(), *mesh, {});
    EXPECT_EQ(mesh->GetFace(1)->GetColor(), 0xFFFFFFFF);

    const auto repeats = MeshBuilder::Make();
    repeats->AddFaces(corners, {}, std::vector<std::int32_t>{6, 0, 0, 1, 4, 2, 0, 0});
    OptimizeMesh(Root(), *repeats, {.dropRepeats = true});
    EXPECT_EQ(PolygonsOf(*repeats), (std::vector<Polygon>{{corners[0], corners[1], corners[2]}}));
}

} // namespace lumora
