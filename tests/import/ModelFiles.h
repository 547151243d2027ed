// Small models that tests write, and readers of what became of them.
#pragma once

#include "import/Import.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumora::test
{

/// A folder of its own for each test. After each test no child process and no file descriptor may be left.
class ImportTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// Writes a file and answers its path.
    std::string Write(const std::string& name, const std::string& contents) const;

    /// Writes a shell script that stands in for the worker; its first argument is the model, descriptor 3 the result.
    std::string WriteWorker(const std::string& body) const;

    /// The error of importing `path`, as (number, description); (0, "") when it succeeds.
    struct Failure
    {
        std::int32_t number = 0;
        std::string description;
    };
    static Failure FailureOf(const std::string& path, const ImportOptions& options = {});

    const tests::TemporaryFolder folder_;

private:
    std::size_t openFiles_ = 0;
};

using Triangle = std::array<Vector, 3>;

/// The tetrahedron (0,0,0) (2,0,0) (0,3,0) (0,0,5), right-handed with y up: volume 5, no two sides alike. Faces are
/// counter-clockwise seen from outside.
std::vector<Triangle> Tetrahedron();

std::string AsObj(std::span<const Triangle> triangles);
std::string AsBinaryStl(std::span<const Triangle> triangles);
std::string AsGltf(std::span<const Triangle> triangles);
std::string AsGlb(std::span<const Triangle> triangles);
std::string AsX(std::span<const Triangle> triangles);
std::string AsCollada(std::span<const Triangle> triangles, const std::string& upAxis);
std::string As3ds(std::span<const Triangle> triangles);

/// A glTF file with one primitive whose attributes are floats; `extra` is put among the top-level members.
struct GltfAttribute
{
    std::string name; ///< POSITION, TEXCOORD_0, ...
    int components;   ///< per vertex
    std::vector<float> values;
};
std::string MakeGltf(const std::vector<GltfAttribute>& attributes, const std::string& extra);

std::string Base64(std::string_view bytes);

/// The little-endian bytes of a number.
template<typename T>
std::string Bytes(T number)
{
    return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

/// All mesh builders at and below `frame`, each once.
std::vector<std::shared_ptr<MeshBuilder>> MeshesOf(const std::shared_ptr<Frame>& frame);

/// All triangles below `frame`, in its root's coordinates.
std::vector<Triangle> TrianglesOf(const std::shared_ptr<Frame>& frame);

/// Positive for closed surfaces whose faces are clockwise seen from outside, in a left-handed system.
double SignedVolume(std::span<const Triangle> triangles);

} // namespace lumora::test
