// Checks a worker's result. The worker has parsed hostile bytes, so nothing it says is taken on trust.
#include "import/ModelReader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace lumora
{

using namespace modelstream;

namespace
{

void Require(bool condition, const char* what)
{
    if (!condition)
        throw DamagedStream(what);
}

bool AllFinite(std::span<const float> numbers)
{
    // A sum of zeros unless some number is infinite or not a number; this form is vectorised.
    float sum = 0;
    for (const float number : numbers)
        sum += number * 0.0F;
    return sum == 0.0F;
}

bool AllFinite(std::span<const Vector> vectors)
{
    float sum = 0;
    for (const Vector& vector : vectors)
        sum += vector.x * 0.0F + vector.y * 0.0F + vector.z * 0.0F;
    return sum == 0.0F;
}

bool IsColorComponent(float number)
{
    return std::isfinite(number) && number >= 0;
}

/// The length of the UTF-8 sequence at the start of `text`, or 0 when there is none.
std::size_t SequenceLength(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            return 0;
    const auto second = length > 1 ? static_cast<unsigned char>(text[1]) : 0U;
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool outside = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
    return overlong || outside ? 0 : length;
}

void CheckFaceList(std::span<const std::int32_t> list, std::uint32_t faceCount, std::size_t positions,
                   std::size_t normals)
{
    const std::size_t stride = normals > 0 ? 7 : 4;
    Require(list.size() == stride * faceCount + 1 && list.back() == 0, "a face list has the wrong length");
    bool good = true;
    for (std::size_t at = 0; at + 1 < list.size(); at += stride)
    {
        good &= list[at] == 3;
        for (std::size_t i = 1; i < stride; ++i)
        {
            const bool isNormal = stride == 7 && i % 2 == 0;
            good &= static_cast<std::uint32_t>(list[at + i]) < (isNormal ? normals : positions);
        }
    }
    Require(good, "a face list points outside its mesh");
}

} // namespace

ModelReader::ModelReader(std::span<const std::byte> bytes) : bytes_(bytes)
{
    Require(bytes.size() >= sizeof(modelstream::Header), "it is too short");
    std::memcpy(&header_, bytes.data(), sizeof(header_));
    Require(header_.magic == Magic && header_.version == Version && header_.headerBytes == sizeof(header_),
            "it has a foreign header");
    Require(header_.totalBytes == bytes.size(), "its size is not the one it states");

    text_ = Claim<char>(header_.text);
    nodes_ = Claim<Node>(header_.nodes);
    nodeMeshes_ = Claim<std::uint32_t>(header_.nodeMeshes);
    meshes_ = Claim<Mesh>(header_.meshes);
    materials_ = Claim<SurfaceLook>(header_.materials);
    textures_ = Claim<Picture>(header_.textures);
    warnings_ = Claim<TextReference>(header_.warnings);

    CheckNodes();
    CheckMaterials();
    CheckPictures();
    for (const Mesh& mesh : meshes_)
        CheckMesh(mesh);
    Require(warnings_.size() <= MaximumWarnings, "it has too many warnings");
    for (const TextReference warning : warnings_)
        CheckText(warning);
}

template<typename T>
std::span<const T> ModelReader::Claim(ArrayReference reference)
{
    if (reference.count == 0)
        return {};
    Require(reference.offset % Alignment == 0 && reference.offset >= sizeof(header_) &&
                reference.offset <= bytes_.size(),
            "an array lies outside");
    Require(reference.count <= (bytes_.size() - reference.offset) / sizeof(T), "an array ends outside");
    // Arrays that overlap could name more memory than the whole holds, again and again.
    claimed_ += reference.count * sizeof(T);
    Require(claimed_ <= bytes_.size(), "its arrays overlap");
    return {reinterpret_cast<const T*>(bytes_.data() + reference.offset), reference.count};
}

void ModelReader::CheckText(TextReference reference)
{
    Require(reference.length <= MaximumNameLength, "a name is too long");
    Require(reference.offset <= text_.size() && reference.length <= text_.size() - reference.offset,
            "a name lies outside");
    claimedText_ += reference.length;
    Require(claimedText_ <= text_.size(), "its names overlap");
}

void ModelReader::CheckNodes()
{
    Require(!nodes_.empty() && nodes_.size() <= MaximumNodes, "it has no nodes, or too many");
    std::vector<std::uint32_t> depth(nodes_.size(), 0);
    std::uint64_t meshCount = 0;
    for (std::size_t i = 0; i < nodes_.size(); ++i)
    {
        const Node& node = nodes_[i];
        CheckText(node.name);
        Require((i == 0) == (node.parent == NoIndex) && (i == 0 || node.parent < i), "its nodes are out of order");
        depth[i] = i == 0 ? 0 : depth[node.parent] + 1;
        Require(depth[i] <= MaximumDepth, "its nodes are nested too deep");
        Require(std::ranges::all_of(node.transform, [](double x) { return std::isfinite(x); }),
                "a place is not finite");
        meshCount += node.meshCount;
    }
    Require(meshCount == nodeMeshes_.size(), "its nodes show another number of meshes");
    Require(std::ranges::all_of(nodeMeshes_, [this](std::uint32_t mesh) { return mesh < meshes_.size(); }),
            "a node shows a mesh that is not there");
}

void ModelReader::CheckMesh(const Mesh& mesh)
{
    CheckText(mesh.name);
    Require(mesh.material == NoIndex || mesh.material < materials_.size(), "a mesh has a material that is not there");
    MeshArrays arrays{Claim<Vector>(mesh.positions), Claim<Vector>(mesh.normals), Claim<float>(mesh.uv),
                      Claim<std::int32_t>(mesh.faceList), Claim<std::uint32_t>(mesh.faceColors)};
    Require(AllFinite(arrays.positions) && AllFinite(arrays.normals) && AllFinite(arrays.uv), "a number is not finite");
    Require(arrays.uv.empty() || arrays.uv.size() == 2 * arrays.positions.size(), "texture coordinates are missing");
    Require(arrays.faceColors.empty() || arrays.faceColors.size() == mesh.faceCount, "face colors are missing");
    Require(!arrays.faceList.empty(), "a mesh has no faces");
    CheckFaceList(arrays.faceList, mesh.faceCount, arrays.positions.size(), arrays.normals.size());
    meshArrays_.push_back(arrays);
}

void ModelReader::CheckMaterials()
{
    for (const SurfaceLook& material : materials_)
    {
        CheckText(material.name);
        Require(material.texture == NoIndex || material.texture < textures_.size(),
                "a material has a texture that is not there");
        Require(IsColorComponent(material.power) && std::ranges::all_of(material.specular, IsColorComponent) &&
                    std::ranges::all_of(material.emissive, IsColorComponent),
                "a material's number is out of range");
    }
}

void ModelReader::CheckPictures()
{
    for (const Picture& picture : textures_)
    {
        CheckText(picture.name);
        Require(picture.width >= 1 && picture.width <= MaximumPictureSide && picture.height >= 1 &&
                    picture.height <= MaximumPictureSide,
                "a picture's size is out of range");
        Require(picture.pixels.count == std::uint64_t{picture.width} * picture.height, "a picture lacks pixels");
        pixels_.push_back(Claim<std::uint32_t>(picture.pixels));
    }
}

std::string ModelReader::Text(TextReference reference) const
{
    return PrintableText(std::string_view(text_.data() + reference.offset, reference.length));
}

std::string PrintableText(std::string_view text)
{
    std::string result;
    while (!text.empty())
    {
        const std::size_t length = SequenceLength(text);
        const auto lead = static_cast<unsigned char>(text.front());
        if (length == 0 || lead < 0x20 || lead == 0x7F)
            result += '?';
        else
            result += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

} // namespace lumora
