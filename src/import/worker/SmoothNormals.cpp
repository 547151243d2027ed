// Corners are gathered by position, seams or not, then averaged within the crease angle.
#include "import/worker/SmoothNormals.h"

#include "import/worker/MeshJoin.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lumora
{

namespace
{

constexpr float CreaseAngle = 0.5F;         // what meshes without normals are drawn with
constexpr std::size_t MostNeighbours = 256; // of one corner: bounds the time at a point that all faces share

aiVector3D Cross(const aiVector3D& a, const aiVector3D& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float Dot(const aiVector3D& a, const aiVector3D& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Zero for a zero or overflowing vector.
aiVector3D Unit(const aiVector3D& v)
{
    const float length = std::sqrt(Dot(v, v));
    return length > 0 && std::isfinite(length) ? aiVector3D(v.x / length, v.y / length, v.z / length) : aiVector3D();
}

struct Corner
{
    aiVector3D normal; // of its face
    float angle = 0;
};

std::vector<Corner> MakeCorners(const aiMesh& mesh)
{
    std::vector<Corner> corners(std::size_t{mesh.mNumFaces} * 3);
    for (std::size_t f = 0; f < mesh.mNumFaces; ++f)
    {
        const aiFace& face = mesh.mFaces[f];
        if (!IsGoodFace(mesh, face))
            continue;
        const auto point = [&](unsigned i) { return mesh.mVertices[face.mIndices[i % 3]]; };
        const aiVector3D normal = Unit(Cross(point(1) - point(0), point(2) - point(0)));
        for (unsigned i = 0; i < 3; ++i)
        {
            const float cosine = Dot(Unit(point(i + 1) - point(i)), Unit(point(i + 2) - point(i)));
            corners[f * 3 + i] = {normal, std::acos(std::clamp(cosine, -1.0F, 1.0F))};
        }
    }
    return corners;
}

/// Corners grouped by position: those of position p are order[begin[p]] up to order[begin[p + 1]].
struct Groups
{
    std::vector<std::uint32_t> positionOf; // of each corner
    std::vector<std::uint32_t> begin;
    std::vector<std::uint32_t> order;
};

Groups Group(const aiMesh& mesh)
{
    const Joined positions = Join(mesh.mVertices, nullptr, mesh.mNumVertices);
    Groups groups;
    groups.positionOf.assign(std::size_t{mesh.mNumFaces} * 3, 0);
    groups.begin.assign(positions.first.size() + 1, 0);
    const auto eachCorner = [&](auto visit)
    {
        for (std::size_t f = 0; f < mesh.mNumFaces; ++f)
            if (IsGoodFace(mesh, mesh.mFaces[f]))
                for (unsigned i = 0; i < 3; ++i)
                    visit(f * 3 + i, positions.of[mesh.mFaces[f].mIndices[i]]);
    };
    eachCorner(
        [&](std::size_t corner, std::uint32_t position)
        {
            groups.positionOf[corner] = position;
            ++groups.begin[position + 1];
        });
    for (std::size_t p = 1; p < groups.begin.size(); ++p)
        groups.begin[p] += groups.begin[p - 1];
    std::vector<std::uint32_t> next = groups.begin;
    groups.order.resize(groups.begin.back());
    eachCorner([&](std::size_t corner, std::uint32_t position)
               { groups.order[next[position]++] = static_cast<std::uint32_t>(corner); });
    return groups;
}

} // namespace

std::vector<aiVector3D> SmoothNormals(const aiMesh& mesh)
{
    const float leastCosine = std::cos(CreaseAngle);
    const std::vector<Corner> corners = MakeCorners(mesh);
    const Groups groups = Group(mesh);
    std::vector<aiVector3D> normals(corners.size());
    for (std::size_t c = 0; c < corners.size(); ++c)
    {
        if (!IsGoodFace(mesh, mesh.mFaces[c / 3]))
            continue;
        const std::uint32_t position = groups.positionOf[c];
        const std::size_t begin = groups.begin[position];
        const std::size_t end = std::min<std::size_t>(groups.begin[position + 1], begin + MostNeighbours);
        aiVector3D sum;
        for (std::size_t i = begin; i < end; ++i)
        {
            const Corner& other = corners[groups.order[i]];
            if (Dot(other.normal, corners[c].normal) >= leastCosine)
                sum += other.normal * other.angle;
        }
        const aiVector3D unit = Unit(sum);
        normals[c] = Dot(unit, unit) > 0 ? unit : corners[c].normal;
    }
    return normals;
}

} // namespace lumora
