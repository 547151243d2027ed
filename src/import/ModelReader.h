// A worker's result, checked: after construction every index, count and number in it can be relied on.
#pragma once

#include "base/Vector.h"
#include "import/ModelStream.h"

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumora
{

/// Why a result was refused; for the error's sentence.
class DamagedStream : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class ModelReader
{
public:
    struct MeshArrays
    {
        std::span<const Vector> positions;
        std::span<const Vector> normals;
        std::span<const float> uv;
        std::span<const std::int32_t> faceList;
        std::span<const std::uint32_t> faceColors;
    };

    /// Views `bytes`, which must begin at a multiple of 64 bytes and outlive this object unchanged. Throws
    /// DamagedStream when anything in them is not as it should be.
    explicit ModelReader(std::span<const std::byte> bytes);

    const modelstream::Header& Header() const { return header_; }
    std::span<const modelstream::Node> Nodes() const { return nodes_; }
    std::span<const std::uint32_t> NodeMeshes() const { return nodeMeshes_; }
    std::span<const modelstream::Mesh> Meshes() const { return meshes_; }
    const MeshArrays& Arrays(std::size_t mesh) const { return meshArrays_[mesh]; }
    std::span<const modelstream::SurfaceLook> Materials() const { return materials_; }
    std::span<const modelstream::Picture> Textures() const { return textures_; }
    std::span<const std::uint32_t> Pixels(std::size_t texture) const { return pixels_[texture]; }
    std::span<const modelstream::TextReference> Warnings() const { return warnings_; }

    /// Printable text; what is not UTF-8 and control characters are question marks.
    std::string Text(modelstream::TextReference reference) const;

private:
    template<typename T>
    std::span<const T> Claim(modelstream::ArrayReference reference);

    void CheckText(modelstream::TextReference reference);
    void CheckNodes();
    void CheckMesh(const modelstream::Mesh& mesh);
    void CheckMaterials();
    void CheckPictures();

    std::span<const std::byte> bytes_;
    std::uint64_t claimed_ = 0;
    std::uint64_t claimedText_ = 0;
    modelstream::Header header_;
    std::span<const modelstream::Node> nodes_;
    std::span<const std::uint32_t> nodeMeshes_;
    std::span<const modelstream::Mesh> meshes_;
    std::span<const modelstream::SurfaceLook> materials_;
    std::span<const modelstream::Picture> textures_;
    std::span<const modelstream::TextReference> warnings_;
    std::span<const char> text_;
    std::vector<MeshArrays> meshArrays_;
    std::vector<std::span<const std::uint32_t>> pixels_;
};

/// `text` with everything that is not printable UTF-8 made a question mark.
std::string PrintableText(std::string_view text);

} // namespace lumora
