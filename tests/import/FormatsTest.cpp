// One solid in every format: it arrives whole, the right way round, in its place.
#include "import/ModelFiles.h"

#include <algorithm>

namespace lumora::test
{

namespace
{

enum class Axes
{
    RightHanded,    // y up
    RightHandedZUp, // z up
    LeftHanded,     // y up
};

/// The tetrahedron as a file with these axes has to hold it to mean the same solid.
std::vector<Triangle> TetrahedronIn(Axes axes)
{
    std::vector<Triangle> triangles = Tetrahedron();
    for (Triangle& triangle : triangles)
    {
        for (Vector& v : triangle)
            v = axes == Axes::RightHanded  ? v
                : axes == Axes::LeftHanded ? Vector{v.x, v.y, -v.z}
                                           : Vector{v.x, -v.z, v.y};
        if (axes == Axes::LeftHanded)
            std::swap(triangle[1], triangle[2]); // clockwise is the front there
    }
    return triangles;
}

struct Format
{
    const char* name;
    Axes axes;
    std::string (*write)(std::span<const Triangle>);
};

const Format formats[] = {
    {"model.obj", Axes::RightHanded, AsObj},
    {"binary.stl", Axes::RightHanded, AsBinaryStl},
    {"model.gltf", Axes::RightHanded, AsGltf},
    {"model.glb", Axes::RightHanded, AsGlb},
    {"model.x", Axes::LeftHanded, AsX},
    {"yup.dae", Axes::RightHanded, [](std::span<const Triangle> t) { return AsCollada(t, "Y_UP"); }},
    {"zup.dae", Axes::RightHandedZUp, [](std::span<const Triangle> t) { return AsCollada(t, "Z_UP"); }},
    {"model.3ds", Axes::RightHandedZUp, As3ds},
};

class Formats : public ImportTest
{
};

} // namespace

TEST_F(Formats, a_solid_arrives_whole_and_the_right_way_round)
{
    for (const Format& format : formats)
    {
        SCOPED_TRACE(format.name);
        const ImportedModel model = ImportModel(Write(format.name, format.write(TetrahedronIn(format.axes))));
        const std::vector<Triangle> triangles = TrianglesOf(model.root);
        EXPECT_EQ(triangles.size(), 4U);
        EXPECT_EQ(model.statistics.triangles, 4U);
        EXPECT_EQ(model.statistics.meshes, 1U);
        EXPECT_EQ(MeshesOf(model.root).at(0)->GetVertexCount(), 4) << "equal ones become one";

        // What stood nearest to someone who looked along the negative z axis stands nearest to someone who looks along
        // the positive one; right stays right and up stays up.
        const Box box = model.root->Bounds(nullptr);
        const Vector low{0, 0, -5};
        const Vector high{2, 3, 0};
        EXPECT_LT(Length(Double3(box.minimum - low)), 1e-5);
        EXPECT_LT(Length(Double3(box.maximum - high)), 1e-5);

        // Mirroring turns a volume's sign, clockwise faces turn it back: 2 * 3 * 5 / 6.
        EXPECT_NEAR(SignedVolume(triangles), 5.0, 1e-4);
        EXPECT_TRUE(model.warnings.empty());
    }
}

// Files of positions and triangles alone are read in a short way of their own; one normal more and Assimp reads them.
TEST_F(Formats, a_plain_obj_arrives_as_assimp_reads_it)
{
    const std::string solid = AsObj(Tetrahedron());
    const struct
    {
        const char* what;
        std::string text;
    } cases[] = {
        {"lines end as on Windows, words stand apart",
         "# scan\r\nv 0 0  0\r\nv\t1 0 0 \r\nv 0 1 -2.5e-1\r\n\r\nf 1 2 3"},
        {"vertices that nobody uses, and some twice",
         "v 9 9 9\nv 0 0 0\nv 1 0 0\nv 0 0 0\nv 0 1 0\nf 5 3 2\nf 4 3 5\n"},
        {"a polygon", solid + "v 5 5 5\nv 6 5 5\nv 6 6 5\nv 5 6 5\nf 13 14 15 16\n"},
        {"indices that count backwards", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\n"},
        {"a number that is none", solid + "v nan 0 0\nv 0 2 0\nv 0 2 1\nf 13 14 15\n"},
        {"a colored vertex", "v 0 0 0 1 0 0\nv 1 0 0 1 0 0\nv 0 1 0 1 0 0\nf 1 2 3\n"},
    };
    for (const auto& [what, text] : cases)
    {
        SCOPED_TRACE(what);
        const ImportedModel shortWay = ImportModel(Write("short.obj", text));
        const ImportedModel longWay = ImportModel(Write("long.obj", "vn 0 0 1\n" + text));
        const auto& actual = *MeshesOf(shortWay.root).at(0);
        const auto& expected = *MeshesOf(longWay.root).at(0);
        EXPECT_EQ(actual.GetGeometry().vertices, expected.GetGeometry().vertices);
        EXPECT_EQ(actual.GetGeometry().faceList, expected.GetGeometry().faceList);
        EXPECT_EQ(actual.GetNormalCount(), 0) << "the mesh builder makes them";
        EXPECT_EQ(actual.Name(), expected.Name());
        EXPECT_EQ(shortWay.warnings, longWay.warnings);
        EXPECT_EQ(shortWay.statistics.frames, longWay.statistics.frames);
    }
}

TEST_F(Formats, nodes_become_frames_in_their_places_and_share_meshes)
{
    const std::string nodes =
        R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"table","translation":[10,20,30],"children":[1,2]},)"
        R"({"name":"left","mesh":0,"translation":[-1,0,0]},{"name":"right","mesh":0,"scale":[2,2,2]}],)"
        R"("materials":[{}],)";
    const ImportedModel model =
        ImportModel(Write("model.gltf", MakeGltf({{"POSITION", 3, {0, 0, 1, 1, 0, 1, 0, 1, 1}}}, nodes)));
    EXPECT_EQ(MeshesOf(model.root).size(), 1U);
    EXPECT_EQ(MeshesOf(model.root).at(0)->Name().substr(0, 4), "part");
    EXPECT_EQ(TrianglesOf(model.root).size(), 2U);

    EXPECT_EQ(model.root->Name(), "model.gltf");
    const std::shared_ptr<Frame> table = model.root->Children().at(0);
    EXPECT_EQ(table->Name(), "table");
    ASSERT_EQ(table->Children().size(), 2U);
    EXPECT_EQ(table->Children()[0]->Name(), "left");
    EXPECT_EQ(table->Children()[0]->Visuals().at(0), table->Children()[1]->Visuals().at(0));
    EXPECT_EQ(table->Children()[0]->GetPosition(nullptr), (Vector{9, 20, -30}));
    const Box right = table->Children()[1]->Bounds(nullptr);
    EXPECT_EQ(right.minimum, (Vector{10, 20, -32}));
    EXPECT_EQ(right.maximum, (Vector{12, 22, -32}));
}

TEST_F(Formats, what_is_missing_or_left_out_is_told)
{
    for (const auto& [line, told] : {std::pair{"l 1 2\n", "lines"}, {"mtllib gone.mtl\nusemtl look\n", "gone.mtl"}})
    {
        const std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + std::string{line} + "f 1 2 3\n";
        const ImportedModel model = ImportModel(Write("model.obj", text));
        EXPECT_EQ(model.statistics.triangles, 1U);
        EXPECT_TRUE(std::ranges::any_of(model.warnings, [&](const std::string& warning)
                                        { return warning.find(told) != std::string::npos; }))
            << told;
    }
}

TEST_F(Formats, progress_rises_to_the_end_and_times_are_told)
{
    std::vector<double> heard;
    ImportOptions options;
    options.progress = [&](double fraction)
    {
        heard.push_back(fraction);
        return true;
    };
    std::vector<Triangle> many;
    for (int i = 0; i < 20000; ++i)
        many.push_back(Tetrahedron()[static_cast<std::size_t>(i % 4)]);
    const ImportedModel model = ImportModel(Write("model.obj", AsObj(many)), options);
    EXPECT_TRUE(std::ranges::is_sorted(heard));
    EXPECT_GE(heard.back(), 0.9);
    EXPECT_LE(heard.back(), 1.0);
    EXPECT_GE(model.statistics.load, model.statistics.parse);
    EXPECT_GT(model.statistics.load.count(), 0);
}

} // namespace lumora::test
