#include "platform/drivers/rgb/MeshFacts.h"

#include "platform/math/Matrix.h"

#include <algorithm>
#include <cmath>

namespace lumora::rgb
{

namespace
{

bool HasAllArrays(const DrawMesh& mesh)
{
    const std::size_t vertices = mesh.x.size();
    const std::size_t faces = mesh.faceNormalX.size();
    return mesh.y.size() == vertices && mesh.z.size() == vertices && mesh.normalX.size() == vertices &&
           mesh.normalY.size() == vertices && mesh.normalZ.size() == vertices && mesh.color.size() == vertices &&
           (mesh.u.empty() || mesh.u.size() == vertices) && mesh.v.size() == mesh.u.size() &&
           mesh.faceNormalY.size() == faces && mesh.faceNormalZ.size() == faces &&
           mesh.indices.size() == 3 * mesh.triangleFace.size();
}

bool AreEdgesConsistent(const DrawMesh& mesh)
{
    return std::ranges::all_of(mesh.edges,
                               [vertices = mesh.VertexCount(), triangles = mesh.TriangleCount()](const auto& edge)
                               {
                                   return edge.vertexA < vertices && edge.vertexB < vertices &&
                                          edge.triangleA < triangles &&
                                          (edge.triangleB < triangles || edge.triangleB == DrawMesh::NoFace);
                               });
}

bool AreGroupsConsistent(const DrawMesh& mesh)
{
    const auto fits = [](std::uint32_t first, std::uint32_t count, std::size_t size)
    { return first <= size && count <= size - first; };
    return std::ranges::all_of(mesh.groups,
                               [&](const DrawMesh::Group& group)
                               {
                                   return fits(group.firstTriangle, group.triangleCount, mesh.triangleFace.size()) &&
                                          fits(group.firstEdge, group.edgeCount, mesh.edges.size());
                               });
}

class RangeFinder
{
public:
    void Include(std::uint32_t number)
    {
        least_ = std::min(least_, number);
        greatest_ = std::max(greatest_, number);
    }
    MeshFacts::Range Found() const
    {
        return least_ > greatest_ ? MeshFacts::Range{} : MeshFacts::Range{least_, greatest_ - least_ + 1};
    }

private:
    std::uint32_t least_ = DrawMesh::NoFace;
    std::uint32_t greatest_ = 0;
};

MeshFacts::GroupFacts FactsOf(const DrawMesh& mesh, const DrawMesh::Group& group)
{
    RangeFinder vertices;
    RangeFinder faces;
    bool isAllTranslucent = true;
    for (std::uint32_t triangle = group.firstTriangle; triangle < group.firstTriangle + group.triangleCount; ++triangle)
    {
        faces.Include(mesh.triangleFace[triangle]);
        for (int corner = 0; corner < 3; ++corner)
        {
            const std::uint32_t vertex = mesh.indices[3 * std::size_t{triangle} + corner];
            vertices.Include(vertex);
            isAllTranslucent = isAllTranslucent && mesh.color[vertex] >> 24 != 0xFF;
        }
    }
    for (std::uint32_t i = group.firstEdge; i < group.firstEdge + group.edgeCount; ++i)
    {
        vertices.Include(mesh.edges[i].vertexA);
        vertices.Include(mesh.edges[i].vertexB);
        faces.Include(mesh.triangleFace[mesh.edges[i].triangleA]);
    }
    return {vertices.Found(), faces.Found(), isAllTranslucent};
}

} // namespace

bool IsConsistent(const DrawMesh& mesh)
{
    const std::size_t faces = mesh.faceNormalX.size();
    return HasAllArrays(mesh) && AreEdgesConsistent(mesh) && AreGroupsConsistent(mesh) &&
           std::ranges::all_of(mesh.indices, [&](std::uint32_t v) { return v < mesh.x.size(); }) &&
           std::ranges::all_of(mesh.triangleFace, [&](std::uint32_t f) { return f < faces; });
}

MeshFacts::MeshFacts(const DrawMesh& mesh) : faceVertices(mesh.faceNormalX.size())
{
    for (std::uint32_t triangle = mesh.TriangleCount(); triangle-- > 0;)
        faceVertices[mesh.triangleFace[triangle]] = mesh.indices[3 * std::size_t{triangle}];
    groups.reserve(mesh.groups.size());
    for (const DrawMesh::Group& group : mesh.groups)
    {
        groups.push_back(FactsOf(mesh, group));
        hasOneMaterial = hasOneMaterial && group.material == mesh.groups.front().material;
    }
}

TrianglePlanes::TrianglePlanes(const DrawMesh& mesh)
{
    for (std::vector<float>& row : rows)
        row.resize(mesh.TriangleCount());
    for (std::uint32_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle)
    {
        const auto corner = [&](std::size_t number)
        {
            const std::uint32_t v = mesh.indices[3 * std::size_t{triangle} + number];
            return Double3{mesh.x[v], mesh.y[v], mesh.z[v]};
        };
        const Double3 a = corner(0);
        const Double3 normal = Cross(corner(1) - a, corner(2) - a);
        const double terms[3] = {normal.x * a.x, normal.y * a.y, normal.z * a.z};
        const double product = terms[0] + terms[1] + terms[2];
        const double size = std::abs(terms[0]) + std::abs(terms[1]) + std::abs(terms[2]);
        const double largest =
            std::max(std::max(std::abs(normal.x), std::abs(normal.y)), std::max(std::abs(normal.z), std::abs(product)));
        if (!(std::abs(product) >= size * 0x1p-27) || !(largest > 0) || !std::isfinite(largest))
            continue;
        const double numbers[4] = {normal.x, normal.y, normal.z, product};
        for (int i = 0; i < 4; ++i)
            rows[i][triangle] = static_cast<float>(numbers[i] / largest);
    }
}

const TrianglePlanes* MeshFacts::PlanesOf(const DrawMesh& mesh) const
{
    if (planes_ == nullptr && mayNeedPlanes_)
        planes_ = std::make_unique<const TrianglePlanes>(mesh);
    mayNeedPlanes_ = true;
    return planes_.get();
}

std::size_t MeshFacts::HeldBytes() const
{
    std::size_t bytes =
        sizeof(MeshFacts) + faceVertices.capacity() * sizeof(std::uint32_t) + groups.capacity() * sizeof(GroupFacts);
    if (planes_ != nullptr)
        for (const std::vector<float>& row : planes_->rows)
            bytes += row.capacity() * sizeof(float);
    return bytes;
}

const MeshFacts* MeshFactsCache::Find(const std::shared_ptr<const DrawMesh>& mesh)
{
    Entry& entry = entries_[mesh.get()];
    const bool isSame = !entry.mesh.owner_before(mesh) && !mesh.owner_before(entry.mesh);
    if (!isSame || entry.facts == nullptr)
        entry = {mesh, IsConsistent(*mesh) ? std::make_unique<const MeshFacts>(*mesh) : nullptr};
    return entry.facts.get();
}

std::size_t MeshFactsCache::FaceCount() const
{
    std::size_t count = 0;
    for (const auto& [mesh, entry] : entries_)
        count += entry.facts != nullptr ? entry.facts->faceVertices.size() : 0;
    return count;
}

std::size_t MeshFactsCache::GroupCount() const
{
    std::size_t count = 0;
    for (const auto& [mesh, entry] : entries_)
        count += entry.facts != nullptr ? entry.facts->groups.size() : 0;
    return count;
}

std::size_t MeshFactsCache::TriangleCount() const
{
    std::size_t count = 0;
    for (const auto& [mesh, entry] : entries_)
        if (const std::shared_ptr<const DrawMesh> alive = entry.mesh.lock())
            count += alive->TriangleCount();
    return count;
}

std::size_t MeshFactsCache::HeldBytes() const
{
    std::size_t bytes = entries_.bucket_count() * sizeof(void*);
    for (const auto& [mesh, entry] : entries_)
    {
        bytes += sizeof(void*) + sizeof(mesh) + sizeof(entry);
        if (entry.facts != nullptr)
            bytes += entry.facts->HeldBytes();
    }
    return bytes;
}

void MeshFactsCache::Sweep()
{
    if (entries_.size() <= 2 * sizeAfterSweep_ + 16)
        return;
    std::erase_if(entries_, [](const auto& entry) { return entry.second.mesh.expired(); });
    sizeAfterSweep_ = entries_.size();
}

} // namespace lumora::rgb
