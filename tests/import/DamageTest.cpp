// Damaged, hostile and empty files: one sentence, and the program goes on.
#include "base/RuntimeError.h"
#include "import/ModelFiles.h"

#include <cmath>
#include <sys/resource.h>
#include <sys/stat.h>

namespace lumora::test
{

namespace
{

class Damage : public ImportTest
{
protected:
    /// The error names the file and says what to do: one sentence, of a sensible length.
    static void ExpectSentence(const Failure& failure, const std::string& path)
    {
        EXPECT_NE(failure.description.find(path), std::string::npos) << failure.description;
        ASSERT_FALSE(failure.description.empty());
        EXPECT_EQ(failure.description.back(), '.') << failure.description;
        EXPECT_LT(failure.description.size(), 600U + path.size()) << failure.description;
        EXPECT_EQ(failure.description.find('\n'), std::string::npos) << failure.description;
    }
};

std::string NestedGltf(int depth)
{
    std::string nodes;
    for (int i = 0; i < depth; ++i)
        nodes += R"({"children":[)" + std::to_string(i + 1) + "]},";
    return MakeGltf({{"POSITION", 3, {0, 0, 0, 1, 0, 0, 0, 1, 0}}},
                    R"("scenes":[{"nodes":[0]}],"materials":[{}],"nodes":[)" + nodes + R"({"mesh":0}],)");
}

} // namespace

TEST_F(Damage, a_path_that_is_no_model_file_is_told_apart)
{
    const std::string pipe = folder_ / "pipe.obj";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const struct
    {
        std::string path;
        std::int32_t number;
    } paths[] = {
        {folder_ / "missing.obj", error::FileNotFound},
        {folder_ / "", importerror::PathAccess},
        {pipe, importerror::PathAccess},
        {"/dev/zero", importerror::PathAccess},
        {Write("empty.obj", ""), importerror::InvalidFormat},
    };
    for (const auto& each : paths)
    {
        const Failure failure = FailureOf(each.path);
        EXPECT_EQ(failure.number, each.number) << each.path;
        ExpectSentence(failure, each.path);
    }
    EXPECT_EQ(FailureOf("").number, error::FileNotFound);
    EXPECT_EQ(FailureOf(std::string("a\0b.obj", 7)).number, error::FileNotFound);
}

TEST_F(Damage, a_damaged_file_is_refused)
{
    std::string truncatedStl = AsBinaryStl(Tetrahedron()).substr(0, 84 + 60);
    truncatedStl.replace(80, 4, "\xFF\xFF\xFF\xFF");
    const struct
    {
        const char* name;
        std::string contents;
    } files[] = {
        {"four_billion.stl", truncatedStl},
        {"deep_nodes.gltf", NestedGltf(2000)},
        {"cut.3ds", As3ds(Tetrahedron()).substr(0, 60)},
        {"cut.x", AsX(Tetrahedron()).substr(0, 60)},
        {"only_points.obj", "v 0 0 0\nv 1 0 0\n"},
        {"all_outside.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 7 8 9\n"},
        {"unknown.kind", "Dear reader, this is no model.\n"},
    };
    for (const auto& file : files)
    {
        SCOPED_TRACE(file.name);
        const std::string path = Write(file.name, file.contents);
        const Failure failure = FailureOf(path);
        EXPECT_TRUE(failure.number == importerror::InvalidFormat || failure.number == error::OutOfMemory)
            << failure.number << ' ' << failure.description;
        ExpectSentence(failure, path);
    }
}

TEST_F(Damage, broken_faces_are_left_out_and_the_others_stay)
{
    std::vector<Triangle> triangles = Tetrahedron();
    triangles[1][2].y = NAN;
    triangles[2][0].x = INFINITY;
    const ImportedModel model = ImportModel(Write("model.stl", AsBinaryStl(triangles)));
    EXPECT_EQ(model.statistics.triangles, 2U);
    ASSERT_EQ(model.warnings.size(), 1U);
    EXPECT_EQ(model.warnings[0].substr(0, 7), "2 faces");
    for (const Triangle& triangle : TrianglesOf(model.root))
        for (const Vector& v : triangle)
            EXPECT_TRUE(IsFinite(v));
}

TEST_F(Damage, a_node_whose_place_is_not_finite_does_no_harm)
{
    const std::string nodes = R"("scenes":[{"nodes":[0]}],"materials":[{}],)"
                              R"("nodes":[{"mesh":0,"translation":[1e39,0,0],"scale":[1e300,1,1]}],)";
    const std::string path = Write("model.gltf", MakeGltf({{"POSITION", 3, {0, 0, 0, 1, 0, 0, 0, 1, 0}}}, nodes));
    EXPECT_EQ(FailureOf(path).number, 0);
}

TEST_F(Damage, a_model_beyond_the_memory_limit_is_refused)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers reserve more address space than any limit";
#endif
    std::vector<Triangle> many;
    for (std::size_t i = 0; i < 1300000; ++i)
        many.push_back({Vector{static_cast<float>(i), 0, 0}, Vector{0, 1, static_cast<float>(i)}, Vector{0, 0, 1}});
    const std::string path = Write("many.stl", AsBinaryStl(many));
    ImportOptions options;
    options.memoryLimit = 1; // the least there is
    const Failure failure = FailureOf(path, options);
    EXPECT_EQ(failure.number, error::OutOfMemory) << failure.description;
    ExpectSentence(failure, path);
}

} // namespace lumora::test
