// Two passes: every array gets its place, then the file gets its size and is filled through one mapping.
#include "import/worker/StreamWriter.h"

#include "import/worker/Complaint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace lumora
{

using namespace modelstream;

namespace
{

class Layout
{
public:
    ArrayReference Reserve(std::uint64_t count, std::size_t elementBytes)
    {
        const ArrayReference reference{size_, count};
        size_ = (size_ + count * elementBytes + Alignment - 1) / Alignment * Alignment;
        return reference;
    }

    TextReference AddText(std::string_view text)
    {
        const std::string_view kept = text.substr(0, MaximumNameLength);
        const TextReference reference{static_cast<std::uint32_t>(text_.size()),
                                      static_cast<std::uint32_t>(kept.size())};
        text_ += kept;
        return reference;
    }

    std::uint64_t Size() const { return size_; }
    const std::string& Text() const { return text_; }

private:
    std::uint64_t size_ = (sizeof(Header) + Alignment - 1) / Alignment * Alignment;
    std::string text_;
};

std::string_view NameOf(const aiString& name)
{
    return {name.data, std::min<std::size_t>(name.length, sizeof(name.data) - 1)};
}

std::array<double, 12> TransformOf(const aiMatrix4x4& m)
{
    // Assimp's columns are axes; rows are wanted. What is not finite stands still.
    std::array<double, 12> rows{m.a1, m.b1, m.c1, m.a2, m.b2, m.c2, m.a3, m.b3, m.c3, m.a4, m.b4, m.c4};
    if (!std::ranges::all_of(rows, [](double number) { return std::isfinite(number); }))
        rows = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    return rows;
}

bool HasFaceColors(const PreparedMesh& prepared)
{
    return prepared.mesh->HasVertexColors(0);
}

/// The tables, with every array placed.
struct Tables
{
    explicit Tables(const PreparedScene& scene);

    Layout layout;
    Header header;
    std::vector<Node> nodes;
    std::vector<Mesh> meshes;
    std::vector<SurfaceLook> materials;
    std::vector<Picture> pictures;
    std::vector<TextReference> warnings;

private:
    void AddMesh(const PreparedMesh& prepared);
};

Tables::Tables(const PreparedScene& scene)
{
    for (const PreparedNode& node : scene.nodes)
        nodes.push_back({node.parent, node.meshCount, layout.AddText(NameOf(node.node->mName)),
                         TransformOf(node.node->mTransformation)});
    for (const Look& look : scene.looks)
    {
        materials.push_back(look.surface);
        materials.back().name = layout.AddText(look.name);
    }
    for (const DecodedPicture& picture : scene.pictures)
        pictures.push_back({layout.AddText(picture.name), picture.width, picture.height,
                            layout.Reserve(picture.pixels.size(), sizeof(std::uint32_t))});
    for (const PreparedMesh& prepared : scene.meshes)
        AddMesh(prepared);
    for (const std::string& warning : scene.warnings)
        warnings.push_back(layout.AddText(warning));

    header.headerBytes = sizeof(Header);
    header.parseMilliseconds = scene.parseMilliseconds;
    header.nodes = layout.Reserve(nodes.size(), sizeof(Node));
    header.nodeMeshes = layout.Reserve(scene.nodeMeshes.size(), sizeof(std::uint32_t));
    header.meshes = layout.Reserve(meshes.size(), sizeof(Mesh));
    header.materials = layout.Reserve(materials.size(), sizeof(SurfaceLook));
    header.textures = layout.Reserve(pictures.size(), sizeof(Picture));
    header.warnings = layout.Reserve(warnings.size(), sizeof(TextReference));
    header.text = layout.Reserve(layout.Text().size(), 1);
    header.totalBytes = layout.Size();
}

void Tables::AddMesh(const PreparedMesh& prepared)
{
    Mesh mesh;
    mesh.name = layout.AddText(NameOf(prepared.mesh->mName));
    mesh.material = prepared.mesh->mMaterialIndex < materials.size() ? prepared.mesh->mMaterialIndex : NoIndex;
    mesh.faceCount = prepared.faceCount;
    mesh.positions = layout.Reserve(prepared.vertices.first.size(), 3 * sizeof(float));
    mesh.normals = layout.Reserve(prepared.normals.first.size(), 3 * sizeof(float));
    mesh.uv = layout.Reserve(prepared.uvChannel >= 0 ? 2 * prepared.vertices.first.size() : 0, sizeof(float));
    const std::uint64_t stride = prepared.HasNormals() ? 7 : 4;
    mesh.faceList = layout.Reserve(stride * prepared.faceCount + 1, sizeof(std::int32_t));
    mesh.faceColors = layout.Reserve(HasFaceColors(prepared) ? prepared.faceCount : 0, sizeof(std::uint32_t));
    meshes.push_back(mesh);
}

/// The shared memory file, written to.
class Target
{
public:
    Target(int descriptor, std::size_t size) : size_(size)
    {
        // Room is taken at once: touching a page that the machine no longer has would end the process.
        if (fallocate(descriptor, 0, 0, static_cast<off_t>(size)) != 0)
            throw NoRoom();
        void* address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (address == MAP_FAILED)
            throw NoRoom();
        bytes_ = static_cast<char*>(address);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() { munmap(bytes_, size_); }

    template<typename T>
    T* At(ArrayReference reference) const
    {
        return reinterpret_cast<T*>(bytes_ + reference.offset);
    }

    template<typename T>
    void Put(ArrayReference reference, const T* elements) const
    {
        if (reference.count > 0)
            std::memcpy(bytes_ + reference.offset, elements, reference.count * sizeof(T));
    }

private:
    char* bytes_ = nullptr;
    std::size_t size_;
};

float FiniteOrZero(float number)
{
    return std::isfinite(number) ? number : 0.0F;
}

void WriteVectors(float* to, const aiVector3D* from, const std::vector<std::uint32_t>& which)
{
    for (const std::uint32_t index : which)
    {
        const aiVector3D& vector = from[index];
        *to++ = FiniteOrZero(vector.x);
        *to++ = FiniteOrZero(vector.y);
        *to++ = FiniteOrZero(vector.z);
    }
}

void WriteFaces(std::int32_t* list, std::uint32_t* colors, const PreparedMesh& prepared, const Look& look)
{
    const aiMesh& mesh = *prepared.mesh;
    const bool perCorner = !prepared.ownNormals.empty();
    for (std::size_t f = 0; f < mesh.mNumFaces; ++f)
    {
        const aiFace& face = mesh.mFaces[f];
        if (!IsGoodFace(mesh, face))
            continue;
        *list++ = 3;
        for (unsigned i = 0; i < 3; ++i)
        {
            *list++ = static_cast<std::int32_t>(prepared.vertices.of[face.mIndices[i]]);
            if (prepared.HasNormals())
                *list++ = static_cast<std::int32_t>(prepared.normals.of[perCorner ? f * 3 + i : face.mIndices[i]]);
        }
        if (HasFaceColors(prepared))
        {
            const aiColor4D* all = mesh.mColors[0];
            const std::array corners{all + face.mIndices[0], all + face.mIndices[1], all + face.mIndices[2]};
            *colors++ = FaceColor(look, corners.data(), 3);
        }
    }
    *list = 0;
}

void WriteMesh(const Target& target, const Mesh& row, const PreparedMesh& prepared, const Look& look)
{
    const aiMesh& mesh = *prepared.mesh;
    WriteVectors(target.At<float>(row.positions), mesh.mVertices, prepared.vertices.first);
    if (prepared.HasNormals())
        WriteVectors(target.At<float>(row.normals),
                     prepared.ownNormals.empty() ? mesh.mNormals : prepared.ownNormals.data(), prepared.normals.first);
    if (prepared.uvChannel >= 0)
    {
        auto* uv = target.At<float>(row.uv);
        for (const std::uint32_t index : prepared.vertices.first)
        {
            *uv++ = FiniteOrZero(mesh.mTextureCoords[prepared.uvChannel][index].x);
            *uv++ = FiniteOrZero(mesh.mTextureCoords[prepared.uvChannel][index].y);
        }
    }
    WriteFaces(target.At<std::int32_t>(row.faceList), target.At<std::uint32_t>(row.faceColors), prepared, look);
}

} // namespace

void WriteStream(int descriptor, const PreparedScene& scene)
{
    const Tables tables(scene);
    const Target target(descriptor, tables.layout.Size());
    target.Put({0, 1}, &tables.header);
    target.Put(tables.header.nodes, tables.nodes.data());
    target.Put(tables.header.nodeMeshes, scene.nodeMeshes.data());
    target.Put(tables.header.meshes, tables.meshes.data());
    target.Put(tables.header.materials, tables.materials.data());
    target.Put(tables.header.textures, tables.pictures.data());
    target.Put(tables.header.warnings, tables.warnings.data());
    target.Put(tables.header.text, tables.layout.Text().data());
    for (std::size_t i = 0; i < scene.pictures.size(); ++i)
        target.Put(tables.pictures[i].pixels, scene.pictures[i].pixels.data());
    const Look plain;
    for (std::size_t i = 0; i < scene.meshes.size(); ++i)
    {
        const std::uint32_t material = tables.meshes[i].material;
        WriteMesh(target, tables.meshes[i], scene.meshes[i], material == NoIndex ? plain : scene.looks[material]);
    }
}

} // namespace lumora
