// The compiled form: triangles, edges, normals and groups, judged by what must hold for any mesh.
#include "platform/scenegraph/SceneDoubles.h"

#include <numbers>
#include <random>
#include <set>

namespace lumora
{

using test::IsNear;
using test::MakeCube;

namespace
{

Vector VertexOf(const DrawMesh& mesh, std::uint32_t vertex)
{
    return {mesh.x[vertex], mesh.y[vertex], mesh.z[vertex]};
}

Vector NormalOf(const DrawMesh& mesh, std::uint32_t vertex)
{
    return {mesh.normalX[vertex], mesh.normalY[vertex], mesh.normalZ[vertex]};
}

// Twice the area of a triangle, as a vector along its normal.
Double3 AreaOf(const DrawMesh& mesh, std::uint32_t triangle)
{
    const auto at = [&](int i)
    { return Double3{VertexOf(mesh, mesh.indices[3 * triangle + static_cast<unsigned>(i)])}; };
    return Cross(at(1) - at(0), at(2) - at(0));
}

// What every compiled mesh must be.
void ExpectSound(const DrawMesh& mesh)
{
    ASSERT_EQ(mesh.indices.size(), 3 * mesh.triangleFace.size());
    std::uint32_t triangle = 0;
    std::uint32_t edge = 0;
    for (const DrawMesh::Group& group : mesh.groups)
    {
        EXPECT_EQ(group.firstTriangle, triangle);
        EXPECT_EQ(group.firstEdge, edge);
        triangle += group.triangleCount;
        edge += group.edgeCount;
    }
    EXPECT_EQ(triangle, mesh.TriangleCount());
    EXPECT_EQ(edge, mesh.edges.size());
    for (const std::uint32_t index : mesh.indices)
        ASSERT_LT(index, mesh.VertexCount());
    for (std::uint32_t vertex = 0; vertex < mesh.VertexCount(); ++vertex)
        EXPECT_NEAR(Length(NormalOf(mesh, vertex)), 1, 1e-5);
    for (std::uint32_t i = 0; i < mesh.TriangleCount(); ++i)
        EXPECT_GT(Length(AreaOf(mesh, i)), 0);
    for (const DrawMesh::Edge& e : mesh.edges)
    {
        ASSERT_LT(e.triangleA, mesh.TriangleCount());
        const std::uint32_t* corner = &mesh.indices[3 * e.triangleA];
        const std::set<std::uint32_t> corners{corner[0], corner[1], corner[2]};
        EXPECT_TRUE(corners.contains(e.vertexA) && corners.contains(e.vertexB));
    }
}

std::shared_ptr<MeshBuilder> Polygon(const std::vector<Vector>& corners)
{
    std::vector<std::int32_t> list{static_cast<std::int32_t>(corners.size())};
    for (std::size_t i = 0; i < corners.size(); ++i)
        list.push_back(static_cast<std::int32_t>(i));
    list.push_back(0);
    auto mesh = MeshBuilder::Make();
    mesh->AddFaces(corners, {}, list);
    return mesh;
}

// The shoelace formula, for polygons in the plane z = 0; clockwise is positive.
double ClockwiseArea(const std::vector<Vector>& corners)
{
    double sum = 0;
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const Vector a = corners[i];
        const Vector b = corners[(i + 1) % corners.size()];
        sum += double{b.x} * a.y - double{a.x} * b.y;
    }
    return sum / 2;
}

} // namespace

TEST(CompiledMeshes, a_cube_has_twelve_triangles_twelve_edges_and_hard_corners)
{
    const auto mesh = MakeCube(0, 1)->Compiled();
    ExpectSound(*mesh);
    EXPECT_EQ(mesh->TriangleCount(), 12U);
    EXPECT_EQ(mesh->VertexCount(), 24U) << "each corner three times, once for each direction";
    EXPECT_EQ(mesh->edges.size(), 12U) << "no diagonals";
    for (const DrawMesh::Edge& edge : mesh->edges)
        EXPECT_NE(edge.triangleB, DrawMesh::NoFace) << "the cube is closed";
    for (std::uint32_t triangle = 0; triangle < 12; ++triangle)
        EXPECT_TRUE(IsNear(NormalOf(*mesh, mesh->indices[3 * triangle]), AreaOf(*mesh, triangle).ToVector(), 1e-6));
}

TEST(CompiledMeshes, polygons_of_any_shape_keep_their_area_winding_and_sides)
{
    const std::vector<Vector> cutOpen{{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {4, 0, 0}, {0, 0, 0},
                                      {1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}, {1, 1, 0}};
    std::vector<Vector> comb; // teeth down from a bar
    for (float left = 39; left >= 0; --left)
        comb.insert(comb.end(), {{left + 0.5F, 9, 0}, {left, 0, 0}});
    comb.insert(comb.end(), {{0, 10, 0}, {40, 10, 0}, {40, 0, 0}});
    std::vector<Vector> star; // random radii around the centre
    std::mt19937 random{7};
    std::uniform_real_distribution<float> radius{0.1F, 3};
    for (int i = 0; i < 300; ++i)
    {
        const float angle = -2 * std::numbers::pi_v<float> * static_cast<float>(i) / 300;
        const float r = radius(random);
        star.push_back({r * std::cos(angle), r * std::sin(angle), 0});
    }
    struct Case
    {
        const char* name;
        std::vector<Vector> corners;
        std::size_t triangles;
    };
    for (const Case& c :
         {Case{"square", {{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}}, 2},
          Case{"arrow head from its notch", {{1, 1, 0}, {0, 0, 0}, {1, 3, 0}, {2, 0, 0}}, 2},
          Case{"corner in the middle of a side", {{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {2, 2, 0}, {2, 0, 0}}, 3},
          Case{"L", {{0, 0, 0}, {0, 3, 0}, {1, 3, 0}, {1, 1, 0}, {3, 1, 0}, {3, 0, 0}}, 4},
          Case{"frame cut open", cutOpen, 8}, Case{"comb", comb, comb.size() - 2}, Case{"star", star, star.size() - 2}})
    {
        SCOPED_TRACE(c.name);
        const double area = ClockwiseArea(c.corners);
        ASSERT_GT(area, 0) << "the case itself";
        // In the plane as it is, and leaning in space about a skew axis.
        for (const float angle : {0.0F, 1.1F})
        {
            const auto frame = Frame::Make();
            frame->AddRotation(CombineType::After, {1, 2, 3}, angle);
            const Matrix4& lean = frame->LocalTransform();
            std::vector<Vector> corners;
            for (const Vector corner : c.corners)
                corners.push_back(TransformPoint(corner, lean).ToVector());
            const auto mesh = Polygon(corners)->Compiled();
            ExpectSound(*mesh);
            EXPECT_EQ(mesh->TriangleCount(), c.triangles);
            const Double3 front = TransformDirection({0, 0, -1}, lean);
            double sum = 0;
            for (std::uint32_t triangle = 0; triangle < mesh->TriangleCount(); ++triangle)
            {
                sum += Length(AreaOf(*mesh, triangle)) / 2;
                EXPECT_GT(Dot(AreaOf(*mesh, triangle), front), 0);
            }
            EXPECT_NEAR(sum, area, 1e-4 * area) << "nothing missing and nothing covered twice";
            EXPECT_EQ(mesh->edges.size(), c.corners.size());
        }
    }
}

TEST(CompiledMeshes, faces_without_area_are_not_drawn)
{
    for (const std::vector<Vector>& corners : {std::vector<Vector>{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}},
                                               {{0, 0, 0}, {1, 0, 0}},
                                               {{3, 3, 3}, {3, 3, 3}, {3, 3, 3}, {3, 3, 3}}})
        EXPECT_EQ(Polygon(corners)->Compiled()->TriangleCount(), 0U);
    EXPECT_TRUE(MeshBuilder::Make()->Compiled()->bounds.IsEmpty());
}

TEST(CompiledMeshes, a_fold_is_smooth_below_the_crease_angle_and_sharp_above)
{
    // A square and a triangle that share a side, the triangle bent away by `fold`.
    for (const auto& [fold, vertices] : {std::pair{0.4F, 5U}, {0.6F, 7U}})
    {
        const Vector tip{std::cos(fold), 0, std::sin(fold)};
        const auto builder = MeshBuilder::Make();
        builder->AddFaces(std::vector<Vector>{{0, 1, 0}, {0, 0, 0}, {-1, 0, 0}, {-1, 1, 0}, tip}, {},
                          std::vector<std::int32_t>{4, 0, 1, 2, 3, 3, 0, 4, 1, 0});
        const auto mesh = builder->Compiled();
        EXPECT_EQ(mesh->VertexCount(), vertices) << fold;
        const Vector sharp{0, 0, -1};
        const Vector smooth = Normalized(Double3{sharp} * 2 + Double3{tip.z, 0, -tip.x}).ToVector();
        EXPECT_TRUE(IsNear(NormalOf(*mesh, mesh->indices[0]), vertices == 5 ? smooth : sharp, 1e-6))
            << "the square's right angle counts twice as much as the triangle's";
    }
}

TEST(CompiledMeshes, a_hub_of_very_many_faces_is_fast_and_right)
{
    // A flat wheel and a steep cone: all normals agree at the first's hub and none but neighbours at the second's.
    constexpr int spokes = 200'000;
    for (const float height : {0.0F, 5.0F})
    {
        std::vector<Vector> vertices{{0, 0, -height}};
        std::vector<std::int32_t> list;
        for (int i = 0; i < spokes; ++i)
        {
            const double turn = -2 * std::numbers::pi * i / spokes;
            vertices.push_back(
                {static_cast<float>(1000 * std::cos(turn)), static_cast<float>(1000 * std::sin(turn)), height});
            list.insert(list.end(), {3, 0, i + 1, (i + 1) % spokes + 1});
        }
        list.push_back(0);
        const auto builder = MeshBuilder::Make();
        builder->AddFaces(vertices, {}, list);
        std::vector<Color> colors;
        for (int i = 0; i < spokes; ++i)
            colors.push_back(0xFF000000U | static_cast<Color>(i));
        builder->SetFaceColors(colors);
        const auto mesh = builder->Compiled();
        EXPECT_EQ(mesh->TriangleCount(), static_cast<std::uint32_t>(spokes));
        EXPECT_EQ(mesh->edges.size(), static_cast<std::size_t>(2 * spokes));
        EXPECT_EQ(mesh->VertexCount(), static_cast<std::uint32_t>(3 * spokes)) << "no two faces share a colour";
        for (std::uint32_t triangle = 0; triangle < mesh->TriangleCount(); triangle += 1000)
            EXPECT_GT(Dot(NormalOf(*mesh, mesh->indices[3 * triangle]), Normalized(AreaOf(*mesh, triangle))), 0.85);
    }
}

TEST(CompiledMeshes, colours_split_vertices_and_looks_make_groups)
{
    const auto builder = MeshBuilder::Make(); // two triangles of one plane that share a side
    builder->AddFaces(std::vector<Vector>{{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}}, {},
                      std::vector<std::int32_t>{3, 0, 1, 2, 3, 0, 2, 3, 0});
    EXPECT_EQ(builder->Compiled()->VertexCount(), 4U);
    EXPECT_EQ(builder->Compiled()->groups.size(), 1U);
    builder->GetFace(1)->SetColor(0xFF0000FF);
    EXPECT_EQ(builder->Compiled()->VertexCount(), 6U);
    EXPECT_EQ(builder->Compiled()->groups.size(), 1U);
    builder->GetFace(1)->SetColor(0x800000FF);
    {
        const auto mesh = builder->Compiled();
        ExpectSound(*mesh);
        ASSERT_EQ(mesh->groups.size(), 2U) << "what is opaque does not wait to be sorted";
        EXPECT_FALSE(mesh->groups[0].translucent);
        EXPECT_TRUE(mesh->groups[1].translucent);
        EXPECT_EQ(mesh->edges.size(), 5U) << "a side that two groups share is one edge";
    }
    builder->SetColor(0xFF123456);
    builder->GetFace(0)->SetMaterial(std::make_shared<Material>(3.0F));
    const auto mesh = builder->Compiled();
    ExpectSound(*mesh);
    ASSERT_EQ(mesh->groups.size(), 2U);
    EXPECT_EQ(mesh->groups[0].material.power, 3);
    EXPECT_EQ(mesh->groups[1].material.power, 0);
    EXPECT_EQ(mesh->color, std::vector<std::uint32_t>(4, 0xFF123456)) << "groups share vertices";
}

TEST(CompiledMeshes, are_kept_until_the_mesh_or_a_material_changes)
{
    const auto material = std::make_shared<Material>(1.0F);
    const auto builder = MakeCube(0, 1);
    builder->SetMaterial(material);
    const auto first = builder->Compiled();
    EXPECT_EQ(builder->Compiled(), first);
    material->SetEmissive(0.5F, 0, 0);
    const auto second = builder->Compiled();
    EXPECT_NE(second->identity, first->identity);
    EXPECT_EQ(second->groups[0].material.emissive, (Vector{0.5F, 0, 0}));
    EXPECT_EQ(first->groups[0].material.emissive, (Vector{0, 0, 0})) << "what somebody still draws stays as it was";
    EXPECT_EQ(builder->Compiled(), second);
    builder->Translate(1, 0, 0);
    EXPECT_NE(builder->Compiled()->identity, second->identity);
}

TEST(CompiledMeshes, zero_and_cancelling_normals_never_become_not_a_number)
{
    const auto given = MeshBuilder::Make();
    given->AddFaces(std::vector<Vector>{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, std::vector<Vector>{{0, 0, 0}},
                    std::vector<std::int32_t>{3, 0, 0, 1, 0, 2, 0, 0});
    ExpectSound(*given->Compiled());
    EXPECT_TRUE(IsNear(NormalOf(*given->Compiled(), 0), {0, 0, -1}, 1e-6));

    const auto bothSides = MeshBuilder::Make(); // a sheet of paper, with a crease angle that takes in everything
    bothSides->AddFaces(std::vector<Vector>{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {},
                        std::vector<std::int32_t>{3, 0, 1, 2, 3, 2, 1, 0, 0});
    bothSides->GenerateNormals(4);
    ExpectSound(*bothSides->Compiled());
}

} // namespace lumora
