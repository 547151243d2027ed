// Mesh builders: what goes in comes out, and what is malformed leaves no trace.
#include "platform/scenegraph/SceneDoubles.h"

namespace lumora
{

using test::MakeCube;
using test::Raises;

namespace
{

const std::vector<Vector> FivePoints{{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}, {2, 0.5F, 0}};
const std::vector<Vector> TwoNormals{{0, 0, -1}, {0, 0.6F, -0.8F}};

// A quad and a triangle, each corner with its normal.
const std::vector<std::int32_t> PairedList{4, 0, 0, 1, 1, 2, 0, 3, 1, 3, 3, 0, 2, 0, 4, 1, 0};
const std::vector<std::int32_t> PlainList{4, 0, 1, 2, 3, 3, 3, 2, 4, 0};

// Equal in every respect that a host can ask for.
void ExpectSame(const MeshGeometry& actual, const MeshGeometry& expected)
{
    EXPECT_EQ(actual.vertices, expected.vertices);
    EXPECT_EQ(actual.normals, expected.normals);
    EXPECT_EQ(actual.faceList, expected.faceList);
}

} // namespace

TEST(MeshBuilders, give_a_packed_list_back_unchanged)
{
    for (const MeshGeometry& given : {MeshGeometry{FivePoints, {}, PlainList}, {FivePoints, TwoNormals, PairedList}})
    {
        std::vector<std::int32_t> oversized = given.faceList;
        oversized.insert(oversized.end(), 50, -1); // buffers are often larger than their lists
        const auto mesh = MeshBuilder::Make();
        EXPECT_EQ(mesh->AddFaces(given.vertices, given.normals, oversized), 0);
        ExpectSame(mesh->GetGeometry(), given);
        EXPECT_EQ(mesh->GetFaceCount(), 2);
        EXPECT_EQ(mesh->GetVertexCount(), 5);
        EXPECT_EQ(mesh->GetNormalCount(), static_cast<int>(given.normals.size()));
    }
}

TEST(MeshBuilders, refuse_malformed_lists_and_stay_as_they_were)
{
    struct Case
    {
        const char* name;
        std::vector<Vector> normals;
        std::vector<std::int32_t> list;
    };
    for (const Case& c :
         {Case{"empty", {}, {}}, Case{"no closing zero", {}, {3, 0, 1, 2}},
          Case{"ends within a face", {}, {3, 0, 1, 2, 4, 0, 1}},
          Case{"a count beyond any list", {}, {0x7FFFFFFF, 0, 1, 2, 0}}, Case{"negative count", {}, {-3, 0, 1, 2, 0}},
          Case{"vertex 5 of 5", {}, {3, 0, 1, 5, 0}}, Case{"negative vertex", {}, {3, 0, -1, 2, 0}},
          Case{"normal 2 of 2", TwoNormals, {3, 0, 0, 1, 2, 2, 0, 0}},
          Case{"half a pair", TwoNormals, {3, 0, 0, 1, 1, 2}}})
    {
        const auto mesh = MakeCube(0, 1);
        const MeshGeometry before = mesh->GetGeometry();
        const auto compiled = mesh->Compiled();
        EXPECT_TRUE(Raises(error::SubscriptOutOfRange, [&] { mesh->AddFaces(FivePoints, c.normals, c.list); }))
            << c.name;
        ExpectSame(mesh->GetGeometry(), before);
        EXPECT_EQ(mesh->Compiled(), compiled) << c.name;
    }
    const auto mesh = MakeCube(0, 1);
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { mesh->AddFaces(std::vector<Vector>{{NAN, 0, 0}}, {}, PlainList); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { mesh->Scale(3e38F, 1, 1), mesh->Scale(3e38F, 1, 1); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { mesh->ReserveSpace(-1, 0, 0); }));
    EXPECT_EQ(mesh->GetVertexCount(), 8);
}

TEST(MeshBuilders, grow_faces_corner_by_corner)
{
    const auto mesh = MeshBuilder::Make();
    const auto first = mesh->CreateFace();
    const auto second = mesh->CreateFace();
    second->AddVertex(5, 0, 0);
    first->AddVertex(0, 0, 0); // before what is there already
    first->AddVertex(0, 1, 0);
    second->AddVertex(5, 1, 0);
    first->AddVertex(1, 0, 0);
    EXPECT_EQ(first->VertexCount(), 3);
    EXPECT_EQ(second->VertexCount(), 2);
    EXPECT_EQ(mesh->GetGeometry().faceList, (std::vector<std::int32_t>{3, 1, 2, 4, 2, 0, 3, 0}));
    EXPECT_EQ(mesh->Compiled()->TriangleCount(), 1U) << "two corners are drawn as nothing";
}

TEST(MeshBuilders, take_a_face_once_with_everything_said_about_it)
{
    const auto face = std::make_shared<Face>();
    face->AddVertex(0, 0, 0);
    face->AddVertex(0, 1, 0);
    face->AddVertex(1, 0, 0);
    face->SetColor(0x80112233);
    const auto mesh = MakeCube(2, 3);
    mesh->AddFace(face);
    EXPECT_EQ(face->GetColor(), 0x80112233U);
    EXPECT_EQ(mesh->GetFace(6)->GetColor(), 0x80112233U);
    EXPECT_EQ(mesh->GetFace(5)->GetColor(), 0xFFFFFFFFU);
    EXPECT_TRUE(Raises(error::RMFaceUsed, [&] { mesh->AddFace(face); }));
    EXPECT_TRUE(Raises(error::RMBadObject, [&] { mesh->AddFace(nullptr); }));
    EXPECT_TRUE(Raises(error::SubscriptOutOfRange, [&] { mesh->GetFace(7); }));

    face->SetColor(0xFF000001); // a view now
    EXPECT_EQ(mesh->GetFace(6)->GetColor(), 0xFF000001U);
    mesh->Empty();
    mesh->AddFaces(FivePoints, {}, PlainList);
    EXPECT_TRUE(Raises(error::RMBadObject, [&] { face->GetColor(); })) << "not of the faces that came later";
}

TEST(MeshBuilders, copy_each_other_with_colours_and_textures)
{
    const std::vector<std::uint32_t> pixel{0xFF00FF00};
    const auto texture = std::make_shared<Texture>(1, 1, pixel);
    const auto green = MakeCube(0, 1);
    green->SetColor(0xFF00FF00);
    const auto mixed = MakeCube(5, 6);
    mixed->GetFace(2)->SetColor(0xFF0000FF);
    mixed->GetFace(2)->SetTexture(texture);
    mixed->SetTextureCoordinates(7, 0.5F, 0.25F);
    green->AddMeshBuilder(mixed);
    mixed->Empty();

    EXPECT_EQ(green->GetFaceCount(), 12);
    EXPECT_EQ(green->GetVertexCount(), 16);
    for (int face = 0; face < 12; ++face)
    {
        const Color expected = face < 6 ? 0xFF00FF00 : face == 8 ? 0xFF0000FF : 0xFFFFFFFF;
        EXPECT_EQ(green->GetFace(face)->GetColor(), expected) << face;
    }
    const auto compiled = green->Compiled();
    ASSERT_EQ(compiled->groups.size(), 2U);
    EXPECT_EQ(compiled->groups[1].texture, texture->Image());
    EXPECT_EQ(compiled->groups[1].triangleCount, 2U);

    green->AddMeshBuilder(green);
    EXPECT_EQ(green->GetFaceCount(), 24);
    EXPECT_EQ(green->GetFace(20)->GetColor(), 0xFF0000FFU);
    EXPECT_EQ(green->GetBox().maximum, (Vector{6, 6, 6}));
}

TEST(MeshBuilders, list_face_normals_where_only_some_faces_have_their_own)
{
    const auto mesh = MeshBuilder::Make();
    mesh->AddFaces(FivePoints, {}, std::vector<std::int32_t>{3, 0, 1, 2, 0});
    mesh->AddFaces(FivePoints, TwoNormals, std::vector<std::int32_t>{3, 0, 1, 1, 1, 2, 1, 0});
    const MeshGeometry geometry = mesh->GetGeometry();
    EXPECT_EQ(geometry.faceList, (std::vector<std::int32_t>{3, 0, 2, 1, 2, 2, 2, 3, 5, 1, 6, 1, 7, 1, 0}));
    ASSERT_EQ(geometry.normals.size(), 3U);
    EXPECT_EQ(geometry.normals[2], (Vector{0, 0, -1}));
}

TEST(MeshBuilders, scale_and_move_vertices_and_lean_normals_with_them)
{
    const auto mesh = MeshBuilder::Make();
    const float slope = 1 / std::sqrt(2.0F);
    mesh->AddFaces(std::vector<Vector>{{0, 0, 0}, {0, 1, 1}, {1, 0, 0}}, std::vector<Vector>{{0, slope, -slope}},
                   std::vector<std::int32_t>{3, 0, 0, 1, 0, 2, 0, 0});
    mesh->Scale(1, 1, 2);
    mesh->Translate(10, 0, 0);
    EXPECT_EQ(mesh->GetGeometry().vertices[1], (Vector{10, 1, 2}));
    const Vector normal = mesh->GetGeometry().normals[0];
    EXPECT_NEAR(normal.y * 1 + normal.z * 2, 0, 1e-6) << "still across the slope (0, 1, 2)";
    EXPECT_LT(normal.z, 0);
    EXPECT_EQ(mesh->GetBox().minimum, (Vector{10, 0, 0}));
}

} // namespace lumora
