// Joining by a hash table with open addressing: one pass, one probe sequence a vertex.
#include "import/worker/MeshJoin.h"

#include "import/worker/SmoothNormals.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace lumora
{

namespace
{

constexpr std::uint32_t Empty = 0xFFFFFFFF;

bool IsFinite(const aiVector3D& vector)
{
    return std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z);
}

std::uint64_t Mixed(std::uint64_t hash, float number)
{
    hash ^= std::bit_cast<std::uint32_t>(number + 0.0F); // adding zero makes both zeros one
    hash *= 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 29);
}

std::uint64_t Mixed(std::uint64_t hash, const aiVector3D& vector)
{
    return Mixed(Mixed(Mixed(hash, vector.x), vector.y), vector.z);
}

// Not operator==, whose float comparison never finds a not-a-number again.
bool SameBits(const aiVector3D& a, const aiVector3D& b)
{
    const auto same = [](float x, float y)
    { return std::bit_cast<std::uint32_t>(x + 0.0F) == std::bit_cast<std::uint32_t>(y + 0.0F); };
    return same(a.x, b.x) && same(a.y, b.y) && same(a.z, b.z);
}

bool IsGoodNormal(const aiVector3D& normal)
{
    const float square = normal.x * normal.x + normal.y * normal.y + normal.z * normal.z;
    return square > 1e-12F && std::isfinite(square);
}

bool HasBadNormals(const aiMesh& mesh)
{
    return !std::all_of(mesh.mNormals, mesh.mNormals + mesh.mNumVertices, IsGoodNormal);
}

/// Puts the file's own normals in place of the ones made, where they are good.
void KeepGoodNormals(const aiMesh& mesh, std::vector<aiVector3D>& corners)
{
    for (std::size_t f = 0; f < mesh.mNumFaces; ++f)
        for (unsigned i = 0; i < 3 && IsGoodFace(mesh, mesh.mFaces[f]); ++i)
            if (const aiVector3D& normal = mesh.mNormals[mesh.mFaces[f].mIndices[i]]; IsGoodNormal(normal))
                corners[f * 3 + i] = normal;
}

void CountFaces(PreparedMesh& prepared)
{
    const aiMesh& mesh = *prepared.mesh;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i)
    {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices < 3)
            ++prepared.leftOutLines;
        else if (!IsGoodFace(mesh, face))
            ++prepared.leftOutBroken;
        else
            ++prepared.faceCount;
    }
}

constexpr std::size_t FirstCapacity = 1024;

template<typename HashOf>
void GrowTable(std::vector<std::uint32_t>& table, const std::vector<std::uint32_t>& first, const HashOf& hashOf)
{
    const std::size_t capacity = 4 * table.size();
    table.assign(capacity, Empty);
    for (std::uint32_t kind = 0; kind < first.size(); ++kind)
    {
        std::size_t slot = hashOf(first[kind]) & (capacity - 1);
        while (table[slot] != Empty)
            slot = (slot + 1) & (capacity - 1);
        table[slot] = kind;
    }
}

} // namespace

bool IsGoodFace(const aiMesh& mesh, const aiFace& face)
{
    if (face.mNumIndices != 3)
        return false;
    for (unsigned i = 0; i < 3; ++i)
        if (face.mIndices[i] >= mesh.mNumVertices || !IsFinite(mesh.mVertices[face.mIndices[i]]))
            return false;
    return true;
}

Joined Join(const aiVector3D* vectors, const aiVector3D* second, std::uint32_t count)
{
    const auto hashOf = [&](std::uint32_t i)
    { return second != nullptr ? Mixed(Mixed(0, vectors[i]), second[i]) : Mixed(0, vectors[i]); };
    // The table grows with the kinds, of which there are far fewer than vertices: a small one stays in the cache.
    std::vector<std::uint32_t> table(FirstCapacity, Empty);
    Joined joined;
    joined.of.resize(count);
    for (std::uint32_t i = 0; i < count; ++i)
    {
        if (2 * joined.first.size() >= table.size())
            GrowTable(table, joined.first, hashOf);
        const std::size_t capacity = table.size();
        std::size_t slot = hashOf(i) & (capacity - 1);
        const auto isOther = [&](std::uint32_t kind)
        {
            const std::uint32_t first = joined.first[kind];
            return !SameBits(vectors[first], vectors[i]) || (second != nullptr && !SameBits(second[first], second[i]));
        };
        while (table[slot] != Empty && isOther(table[slot]))
            slot = (slot + 1) & (capacity - 1);
        if (table[slot] == Empty)
        {
            table[slot] = static_cast<std::uint32_t>(joined.first.size());
            joined.first.push_back(i);
        }
        joined.of[i] = table[slot];
    }
    return joined;
}

PreparedMesh Prepare(const aiMesh& mesh, int uvChannel)
{
    PreparedMesh prepared;
    prepared.mesh = &mesh;
    if (mesh.mVertices == nullptr || mesh.mFaces == nullptr)
        return prepared;
    CountFaces(prepared);
    if (prepared.faceCount == 0)
        return prepared;
    if (uvChannel >= 0 && mesh.HasTextureCoords(static_cast<unsigned>(uvChannel)))
        prepared.uvChannel = uvChannel;
    const aiVector3D* uv = prepared.uvChannel >= 0 ? mesh.mTextureCoords[prepared.uvChannel] : nullptr;
    prepared.vertices = Join(mesh.mVertices, uv, mesh.mNumVertices);
    if (mesh.HasNormals() && !HasBadNormals(mesh))
        prepared.normals = Join(mesh.mNormals, nullptr, mesh.mNumVertices);
    else if (mesh.HasNormals() || uv != nullptr)
    {
        // Without normals the mesh builder smooths across vertices only, and texture seams have cut those apart.
        prepared.ownNormals = SmoothNormals(mesh);
        if (mesh.HasNormals())
            KeepGoodNormals(mesh, prepared.ownNormals);
        prepared.normals =
            Join(prepared.ownNormals.data(), nullptr, static_cast<std::uint32_t>(prepared.ownNormals.size()));
    }
    return prepared;
}

} // namespace lumora
