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
#include "platform/automation/Faults.h"

#include <cmath>
#include <numbers>

namespace lumora
{

using namespace test;
using std::numbers::pi;

namespace
{

const VertexList Triangle{{0, 0, 0}, {0, 2, 0}, {2, 0, 0}}; // clockwise for who looks along z

// A grid of columns x rows in the plane z = 0, one unit apart.
VertexList MakeGrid(int columns, int rows)
{
    VertexList grid;
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
            grid.push_back({static_cast<float>(c), static_cast<float>(-r), 0});
    return grid;
}

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

TEST(Vectors, turn_by_a_part_of_a_turn_and_keep_their_length)
{
    const Vector turned = RotateVectorFraction(Root(), {3, 7, 0}, 1, 4, {0, 5, 0}, 1);
    EXPECT_TRUE(IsNear(turned, {0, 7, -3}, 1e-5));
    EXPECT_EQ(RotateVectorFraction(Root(), {}, 1, 0, {0, 1, 0}, 1), Vector{}) << "a zero vector asks for no angle";
    EXPECT_TRUE(IsNear(RotateVectorFraction(Root(), {1, 2, 3}, 1, 4, {}, 1), {1, 2, 3}, 1e-6));
    EXPECT_EQ(RaisedBy([] { RotateVectorFraction(Root(), {1, 0, 0}, 1, 0, {0, 1, 0}, 1); }), "11 modVector");
    EXPECT_EQ(RaisedBy([] { RotateVectorFraction(Root(), {1, 0, 0}, 0, 0, {0, 1, 0}, 1); }), "6 modVector");
}

TEST(Normals, of_polygons_do_not_depend_on_the_place_or_the_first_corner)
{
    VertexList polygon{{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {4, 3, 0}, {1, 3, 0}, {1, 0, 0}};
    for (std::size_t turn = 0; turn < polygon.size(); ++turn)
    {
        std::rotate(polygon.begin(), polygon.begin() + 1, polygon.end());
        VertexList moved;
        for (const Vector v : polygon)
            moved.push_back(v + Vector{10, -20, 30});
        EXPECT_TRUE(IsNear(GetPolygonNormal(Root(), moved), {0, 0, -1}, 1e-5));
    }
    EXPECT_EQ(GetTriangleNormal(Root(), Triangle), (Vector{0, 0, -1}));
    EXPECT_EQ(GetTriangleNormal(Root(), VertexList{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}), Vector{});
    EXPECT_EQ(RaisedBy([] { GetPolygonNormal(Root(), {}); }), "9 modNormal");
    EXPECT_EQ(RaisedBy([] { GetTriangleNormal(Root(), VertexList{{0, 0, 0}, {1, 0, 0}}); }), "9 modNormal");
}

TEST(Corners, have_neighbours_angles_and_straightness)
{
    EXPECT_EQ(GetVertexTriple(Triangle, 0), (Triple{Triangle[2], Triangle[0], Triangle[1]}));
    EXPECT_EQ(GetVertexTriple(Triangle, 2), (Triple{Triangle[1], Triangle[2], Triangle[0]}));
    for (const std::int32_t outside : {-1, 3})
        EXPECT_EQ(RaisedBy([&] { GetVertexTriple(Triangle, outside); }), "9 modFace");
    double sum = 0;
    for (std::int32_t i = 0; i < 3; ++i)
        sum += GetVertexAngle(Root(), GetVertexTriple(Triangle, i));
    EXPECT_NEAR(sum, pi, 1e-5);

    const Triple nearlyStraight{{{0, 0, 0}, {1, 0, 0}, {2, 0.1F, 0}}};
    EXPECT_TRUE(IsColinear(Root(), nearlyStraight));
    EXPECT_FALSE(IsColinearStrict(Root(), nearlyStraight));
    EXPECT_TRUE(IsColinearStrict(Root(), {{{0, 0, 0}, {1, 0, 0}, {2, 0.001F, 0}}}));
    EXPECT_FALSE(IsColinear(Root(), {{{0, 0, 0}, {2, 0, 0}, {1, 0, 0}}})) << "a reversal";
    EXPECT_FALSE(IsColinear(Root(), {{{0, 0, 0}, {0, 0, 0}, {1, 0, 0}}})) << "a side of no length";
}

TEST(Polygons, know_their_inside)
{
    const struct
    {
        Vector point;
        Corners corners;
        bool inside;
    } cases[] = {{{0.5F, 0.5F, 0}, Corners::Excluded, true}, {{1.5F, 1.5F, 0}, Corners::Excluded, false},
                 {{0, 1, 0}, Corners::Excluded, true},       {{0, 2, 0}, Corners::Excluded, false},
                 {{-0.5F, 1, 0}, Corners::Included, false},  {{0.5F, 0.5F, 0.001F}, Corners::Included, true},
                 {{0.5F, 0.5F, 1}, Corners::Included, false}};
    for (const auto& c : cases)
        EXPECT_EQ(IsPointInPolygon(Root(), Triangle, c.point, c.corners), c.inside) << c.point.x << " " << c.point.y;
    EXPECT_EQ(RaisedBy([] { IsPointInPolygon(Root(), {}, {}, Corners::Included); }), "9 modFace");
}

TEST(Polygons, are_convex_when_all_corners_turn_one_way)
{
    VertexList regular;
    for (int i = 0; i < 12; ++i)
        regular.push_back({static_cast<float>(std::cos(pi * i / 6)), 5, static_cast<float>(std::sin(pi * i / 6))});
    EXPECT_TRUE(IsPolygonConvex(Root(), regular, Flatness::Strict));
    regular[3].y += 0.001F; // bends the normals there by about 0.007
    EXPECT_FALSE(IsPolygonConvex(Root(), regular, Flatness::Strict));
    EXPECT_TRUE(IsPolygonConvex(Root(), regular, Flatness::Loose));
    const VertexList withMiddle{{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {2, 0, 0}};
    EXPECT_FALSE(IsPolygonConvex(Root(), withMiddle, Flatness::Loose)) << "a colinear corner";
    const VertexList dented{{0, 0, 0}, {0, 4, 0}, {1, 1, 0}, {4, 0, 0}};
    EXPECT_FALSE(IsPolygonConvex(Root(), dented, Flatness::Loose));
    EXPECT_EQ(RaisedBy([] { IsPolygonConvex(Root(), {}, Flatness::Loose); }), "9 modConvexity");
}

TEST(Boxes, hold_all_vertices)
{
    const BoundingBox box = GetBoundingBox(VertexList{{1, -2, 3}, {-4, 5, 0}, {0, 0, 9}});
    EXPECT_EQ(box.minimum, (Vector{-4, -2, 0}));
    EXPECT_EQ(box.maximum, (Vector{1, 5, 9}));
    EXPECT_EQ(RaisedBy([] { GetBoundingBox({}); }), "9 modBounding");
}

TEST(Grids, become_quads_row_by_row)
{
    for (const bool wrap : {false, true})
    {
        const auto mesh = MeshBuilder::Make();
        GenerateSurfaceFaces(*mesh, MakeGrid(4, 3), 4, 3, {.wrap = wrap});
        EXPECT_EQ(mesh->GetFaceCount(), wrap ? 9 : 6);
        EXPECT_EQ(mesh->GetVertexCount(), 12);
        EXPECT_EQ(mesh->GetGeometry().normals, VertexList(1, {0, 0, 1}));
    }
    const auto plain = MeshBuilder::Make();
    const auto reversed = MeshBuilder::Make();
    GenerateSurfaceFaces(*plain, MakeGrid(5, 4), 5, 4, {});
    GenerateSurfaceFaces(*reversed, MakeGrid(5, 4), 5, 4, {.reverse = true});
    for (const Polygon& quad : PolygonsOf(*plain))
        EXPECT_NEAR(VectorArea(quad).z, 1, 1e-6);
    for (const Polygon& quad : PolygonsOf(*reversed))
        EXPECT_NEAR(VectorArea(quad).z, -1, 1e-6);
}

TEST(Grids, lose_repeated_corners_when_asked_to)
{
    VertexList grid = MakeGrid(4, 3);
    grid[1] = grid[2] = grid[3] = grid[0]; // a pole
    for (const bool drop : {false, true})
    {
        const auto mesh = MeshBuilder::Make();
        GenerateSurfaceFaces(*mesh, grid, 4, 3, {.dropCoincident = drop});
        const auto faces = PolygonsOf(*mesh);
        ASSERT_EQ(faces.size(), 6U);
        for (std::size_t i = 0; i < 6; ++i)
            EXPECT_EQ(faces[i].size(), drop && i < 3 ? 3U : 4U);
    }
    const auto gone = MeshBuilder::Make();
    GenerateSurfaceFaces(*gone, VertexList(12), 4, 3, {.dropCoincident = true});
    EXPECT_EQ(gone->GetFaceCount(), 0);
}

TEST(Grids, refuse_counts_beyond_their_vertices)
{
    const auto mesh = MeshBuilder::Make();
    const VertexList grid = MakeGrid(4, 3);
    for (const auto& [columns, rows, raised] :
         {std::tuple{4, 4, "9"}, {65536, 65536, "6"}, {2147483647, 2147483647, "6"}})
        EXPECT_EQ(RaisedBy([&] { GenerateSurfaceFaces(*mesh, grid, columns, rows, {.wrap = true}); }),
                  std::string{raised} + " modGenerateSurfaceFaces");
    EXPECT_EQ(mesh->GetVertexCount(), 0);
    GenerateSurfaceFaces(*mesh, grid, -3, 0, {});
    EXPECT_EQ(mesh->GetFaceCount(), 0);
    FaceList faces(8);
    std::int32_t cursor = 0;
    EXPECT_EQ(RaisedBy([&] { AppendQuad(grid, {0, 4, 5, 1}, faces, cursor); }), "9 modGenerateSurfaceFaces");
    EXPECT_EQ(RaisedBy([&] { AppendQuad(grid, {0, 4, 5, 99}, faces, cursor); }), "9 modGenerateSurfaceFaces");
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

TEST(Welding, repeats_a_step_that_fails_in_passing_and_names_itself_for_one_that_does_not)
{
    const auto mesh = MeshBuilder::Make();
    mesh->AddFaces(Triangle, {}, std::vector<std::int32_t>{3, 0, 1, 2, 0});
    for (const char* operation : {"MeshBuilder.GetGeometry", "MeshBuilder.AddFaces", "RetainedMode.CreateMeshBuilder"})
    {
        faults::FailNext(operation, 1, error::RMBadDevice);
        OptimizeMesh(Root(), *mesh, {});
        faults::FailNext(operation, 1, error::ObjectNotSet);
        EXPECT_EQ(RaisedBy([&] { OptimizeMesh(Root(), *mesh, {}); }), "91 modOptimize");
        EXPECT_EQ(mesh->GetFaceCount(), 1);
    }
    faults::Clear();
}

} // namespace lumora
