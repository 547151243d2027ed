// Colours, highlights, pictures and normals on the way from a file to a mesh builder.
#include "import/ModelFiles.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Picture.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace lumora::test
{

namespace
{

constexpr Color Red = 0xFFFF0000;
constexpr Color Green = 0xFF00FF00;
constexpr Color Blue = 0xFF0000FF;
constexpr Color White = 0xFFFFFFFF;

/// A picture of two by two pixels, red and green above, blue and white below, as a PNG file.
std::string FourColors()
{
    const tests::TemporaryFolder folder;
    Bitmap bitmap{2, 2};
    std::ranges::copy(std::array{Red, Green, Blue, White}, bitmap.Pixels().pixels);
    SavePicture(folder / "four.png", bitmap.Pixels());
    return folder.Read("four.png");
}

/// The colour that a point of the mesh shows: its texture coordinates, taken as a place in the picture from the top.
Color ColorAt(const DrawMesh& mesh, Vector point)
{
    for (std::uint32_t i = 0; i < mesh.VertexCount(); ++i)
    {
        if (std::hypot(mesh.x[i] - point.x, mesh.y[i] - point.y, mesh.z[i] - point.z) > 1e-5 || mesh.u.empty())
            continue;
        const TextureImage& image = *mesh.groups.at(0).texture;
        const auto column = static_cast<std::size_t>(mesh.u[i] * static_cast<float>(image.width));
        const auto row = static_cast<std::size_t>(mesh.v[i] * static_cast<float>(image.height));
        return image.pixels.at(row * static_cast<std::size_t>(image.width) + column);
    }
    return 0;
}

// A square with the picture upright on it, in three formats. Texture coordinates point at the middles of the pixels.

std::string SquareObj() // the texture is in the material file
{
    return "mtllib look.mtl\nusemtl look\nv -1 1 0\nv 1 1 0\nv 1 -1 0\nv -1 -1 0\nvt 0.25 0.75\nvt 0.75 0.75\nvt 0.75 "
           "0.25\n"
           "vt 0.25 0.25\nf 4/4 3/3 2/2 1/1\n"; // v 0 is the bottom
}

std::string SquareX(const std::string& texture)
{
    return "xof 0303txt 0032\nMesh m {\n4;\n-1;1;0;,\n1;1;0;,\n1;-1;0;,\n-1;-1;0;;\n2;\n3;0,1,2;,\n3;0,2,3;;\n"
           "MeshMaterialList {\n1;\n2;\n0,\n0;\nMaterial {\n1;1;1;1;;\n0;\n0;0;0;;\n0;0;0;;\nTextureFilename {\n\"" +
           texture +
           "\";\n}\n}\n}\nMeshTextureCoords {\n4;\n.25;.25;,\n.75;.25;,\n.75;.75;,\n.25;.75;;\n}\n}\n"; // v 0 is the
                                                                                                        // top
}

std::string SquareGltf(const std::string& texture)
{
    const std::vector<float> points{-1, 1, 0, -1, -1, 0, 1, -1, 0, -1, 1, 0, 1, -1, 0, 1, 1, 0};
    const std::vector<float> uv{.25, .25, .25, .75, .75, .75, .25, .25, .75, .75, .75, .25}; // v 0 is the top
    return MakeGltf({{"POSITION", 3, points}, {"TEXCOORD_0", 2, uv}},
                    R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"images":[{"uri":")" + texture +
                        R"("}],"textures":[{"source":0}],)" +
                        R"("materials":[{"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],)");
}

class Looks : public ImportTest
{
};

class PicturesOnModels : public ImportTest
{
protected:
    void SetUp() override
    {
        ImportTest::SetUp();
        if (!LUMORA_HAS_PICTURES)
            GTEST_SKIP() << "built without pictures";
    }
};

} // namespace

TEST_F(PicturesOnModels, a_picture_stands_upright_whatever_the_format_calls_its_first_row)
{
    Write("look.mtl", "newmtl look\nKd 1 1 1\nmap_Kd four.png\n");
    Write("four.png", FourColors());
    const std::string embedded = "data:image/png;base64," + Base64(FourColors());
    const struct
    {
        const char* name;
        std::string contents;
    } files[] = {{"model.obj", SquareObj()},
                 {"model.x", SquareX("four.png")},
                 {"outside.gltf", SquareGltf("four.png")},
                 {"embedded.gltf", SquareGltf(embedded)}};
    for (const auto& file : files)
    {
        SCOPED_TRACE(file.name);
        const ImportedModel model = ImportModel(Write(file.name, file.contents));
        EXPECT_EQ(model.statistics.textures, 1U);
        EXPECT_TRUE(model.warnings.empty());
        const std::shared_ptr<const DrawMesh> mesh = MeshesOf(model.root).at(0)->Compiled();
        ASSERT_NE(mesh->groups.at(0).texture, nullptr);
        EXPECT_EQ(ColorAt(*mesh, {-1, 1, 0}), Red);
        EXPECT_EQ(ColorAt(*mesh, {1, 1, 0}), Green);
        EXPECT_EQ(ColorAt(*mesh, {-1, -1, 0}), Blue);
        EXPECT_EQ(ColorAt(*mesh, {1, -1, 0}), White);
    }
}

TEST_F(PicturesOnModels, a_picture_is_found_by_its_name_alone_and_in_any_letter_case)
{
    Write("Four.PNG", FourColors());
    for (const char* const name : {"four.png", "C:\\\\pictures\\\\FOUR.png", "elsewhere/four.png"})
    {
        const ImportedModel model = ImportModel(Write("model.x", SquareX(name)));
        EXPECT_EQ(model.statistics.textures, 1U) << name;
    }
}

TEST_F(PicturesOnModels, a_picture_that_cannot_be_had_leaves_the_model_and_a_word)
{
    const struct
    {
        const char* what;
        std::string contents;
    } pictures[] = {
        {"missing", ""},
        {"cut off", FourColors().substr(0, 40)},
        {"huge", "P6 100000 100000 255\n"},
    };
    for (const auto& picture : pictures)
    {
        SCOPED_TRACE(picture.what);
        if (!picture.contents.empty())
            Write("four.png", picture.contents);
        const ImportedModel model = ImportModel(Write("model.x", SquareX("four.png")));
        EXPECT_EQ(model.statistics.triangles, 2U);
        EXPECT_EQ(model.statistics.textures, 0U);
        ASSERT_EQ(model.warnings.size(), 1U);
        EXPECT_NE(model.warnings[0].find("four.png"), std::string::npos);
    }
    EXPECT_EQ(ImportModel(Write("model.x", SquareX("/dev/zero"))).warnings.size(), 1U);
}

TEST_F(Looks, a_material_becomes_color_opacity_highlight_and_glow)
{
    Write("look.mtl", "newmtl look\nKd 1 0.2 0\nd 0.6\nKs 0.4 0.6 0.8\nNs 20\nKe 0 0.2 0.4\nillum 2\n");
    const ImportedModel model =
        ImportModel(Write("model.obj", "mtllib look.mtl\nusemtl look\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
    const auto mesh = MeshesOf(model.root).at(0);
    EXPECT_EQ(mesh->GetFace(0)->GetColor(), 0x99FF3300U); // 0.6 and 0.2 of 255
    const SurfaceMaterial material = mesh->Compiled()->groups.at(0).material;
    EXPECT_FLOAT_EQ(material.power, 20);
    EXPECT_EQ(material.specular, (Vector{0.4F, 0.6F, 0.8F}));
    EXPECT_EQ(material.emissive, (Vector{0, 0.2F, 0.4F}));
}

TEST_F(Looks, vertex_colors_are_averaged_over_each_face)
{
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                            "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
                            "element face 2\nproperty list uchar int vertex_indices\nend_header\n"
                            "0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 0 0 0 255\n1 1 0 90 60 30\n3 0 1 2\n3 1 3 2\n";
    const auto mesh = MeshesOf(ImportModel(Write("model.ply", ply)).root).at(0);
    EXPECT_EQ(mesh->GetFace(0)->GetColor(), 0xFF555555U); // (255 + 0 + 0) / 3
    EXPECT_EQ(mesh->GetFace(1)->GetColor(), 0xFF1E695FU); // (0 + 90 + 0) / 3, (255 + 60 + 0) / 3, (0 + 30 + 255) / 3
}

TEST_F(Looks, linear_colors_are_encoded_for_the_screen)
{
    // 0.5 of the light is 188 of 255 on the screen (the sRGB curve), 0 and 1 stay; alpha is no light.
    for (const auto& [mode, expected] : {std::pair{"BLEND", 0x80FFBC00U}, std::pair{"OPAQUE", 0xFFFFBC00U}})
    {
        const std::string looks =
            std::string(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"materials":[{"alphaMode":")") + mode +
            R"(","pbrMetallicRoughness":{"baseColorFactor":[1,0.5,0,0.5]}}],)";
        const auto path = Write("model.gltf", MakeGltf({{"POSITION", 3, {0, 0, 1, 1, 0, 1, 0, 1, 1}}}, looks));
        EXPECT_EQ(MeshesOf(ImportModel(path).root).at(0)->GetFace(0)->GetColor(), expected) << mode;
    }
}

TEST_F(PicturesOnModels, smooth_normals_cross_texture_seams_but_not_creases)
{
    // Two squares meet at a ridge along x = 0 with different texture coordinates on either side.
    const auto ridge = [](double slope)
    {
        std::ostringstream out;
        out << "mtllib look.mtl\nusemtl look\nv -1 " << -slope << " 0\nv -1 " << -slope
            << " -1\nv 0 0 -1\nv 0 0 0\nv 1 " << -slope << " -1\nv 1 " << -slope
            << " 0\nvt 0 0\nvt 0 1\nvt 1 1\nvt 1 0\n"
            << "f 1/1 4/4 3/3 2/2\nf 4/1 6/4 5/3 3/2\n";
        return out.str();
    };
    Write("look.mtl", "newmtl look\nmap_Kd four.png\n");
    Write("four.png", FourColors());
    for (const auto& [slope, crosses] : {std::pair{0.1, true}, std::pair{1.0, false}})
    {
        SCOPED_TRACE(slope);
        const auto mesh = MeshesOf(ImportModel(Write("model.obj", ridge(slope))).root).at(0)->Compiled();
        ASSERT_FALSE(mesh->u.empty());
        for (std::uint32_t i = 0; i < mesh->VertexCount(); ++i)
        {
            if (mesh->x[i] != 0)
                continue;
            const double lean = crosses ? 0 : slope / std::hypot(1, slope);
            EXPECT_NEAR(std::abs(mesh->normalX[i]), lean, 1e-5);
            EXPECT_GT(mesh->normalY[i], 0.5);
        }
    }
}

TEST_F(Looks, normals_are_mirrored_with_the_model_and_one_that_is_none_is_replaced)
{
    const std::string obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0.6 0 0.8\nvn 0 0 0\nf 1//1 2//2 3//1\n";
    const auto builder = MeshesOf(ImportModel(Write("model.obj", obj)).root).at(0);
    EXPECT_EQ(builder->GetNormalCount(), 2) << "equal ones become one";
    const auto mesh = builder->Compiled();
    for (std::uint32_t i = 0; i < mesh->VertexCount(); ++i)
    {
        const bool wasBad = mesh->x[i] == 1;
        EXPECT_NEAR(mesh->normalX[i], wasBad ? 0 : 0.6, 1e-5);
        EXPECT_NEAR(mesh->normalZ[i], wasBad ? -1 : -0.8, 1e-5);
    }
}

} // namespace lumora::test
