#include "platform/drivers/rgb/MeshFacts.h"

#include "base/Matrix.h"
#include "platform/drivers/rgb/Textures.h"

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
    Range Found() const { return least_ > greatest_ ? Range{} : Range{least_, greatest_ - least_ + 1}; }

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
    const TextureImage* texture = IsUsable(group.texture.get()) ? group.texture.get() : nullptr;
    return {{group.firstTriangle, group.triangleCount},
            {group.firstEdge, group.edgeCount},
            vertices.Found(),
            faces.Found(),
            &group.material,
            texture,
            group.translucent,
            isAllTranslucent};
}

} // namespace

bool IsConsistent(const DrawMesh& mesh)
{
    const std::size_t faces = mesh.faceNormalX.size();
    return HasAllArrays(mesh) && AreEdgesConsistent(mesh) && AreGroupsConsistent(mesh) &&
           std::ranges::all_of(mesh.indices, [&](std::uint32_t v) { return v < mesh.x.size(); }) &&
           std::ranges::all_of(mesh.triangleFace, [&](std::uint32_t f) { return f < faces; });
}

MeshFacts::MeshFacts(const DrawMesh& mesh)
    : faceVertices(mesh.faceNormalX.size()), vertexCount(mesh.VertexCount()),
      faceCount(static_cast<std::uint32_t>(mesh.faceNormalX.size())), triangleCount(mesh.TriangleCount())
{
    for (std::uint32_t triangle = mesh.TriangleCount(); triangle-- > 0;)
        faceVertices[mesh.triangleFace[triangle]] = mesh.indices[3 * std::size_t{triangle}];
    groups.reserve(mesh.groups.size());
    for (const DrawMesh::Group& group : mesh.groups)
    {
        groups.push_back(FactsOf(mesh, group));
        const GroupFacts& facts = groups.back();
        hasOneMaterial = hasOneMaterial && group.material == mesh.groups.front().material;
        areAllTextured = areAllTextured && (facts.texture == nullptr) == (groups.front().texture == nullptr);
        hasTranslucency =
            hasTranslucency || facts.isTranslucent || (facts.texture != nullptr && facts.texture->hasTranslucency);
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

MeshFactsCache::Entry& MeshFactsCache::EntryOf(const DrawMesh* mesh)
{
    for (std::size_t i = last_; i < std::min(last_ + 2, entries_.size()); ++i)
        if (entries_[i].address == mesh)
            return entries_[last_ = i];
    const auto [number, isNew] = numbers_.try_emplace(mesh, static_cast<std::uint32_t>(entries_.size()));
    if (isNew)
    {
        try
        {
            entries_.emplace_back().address = mesh;
        }
        catch (...)
        {
            numbers_.erase(number);
            throw;
        }
    }
    return entries_[last_ = number->second];
}

void MeshFactsCache::Count(const Entry& entry, bool isNew)
{
    if (entry.facts == nullptr)
        return;
    const auto change = [&](std::size_t& sum, std::size_t count) { sum = isNew ? sum + count : sum - count; };
    change(faceCount_, entry.facts->faceVertices.size());
    change(groupCount_, entry.facts->groups.size());
    change(triangleCount_, entry.facts->triangleCount);
}

const MeshFacts* MeshFactsCache::Find(const std::shared_ptr<const DrawMesh>& mesh)
{
    Entry& entry = EntryOf(mesh.get());
    if (entry.lastHold == hold_)
        return entry.facts.get();
    const bool isSame = !entry.mesh.owner_before(mesh) && !mesh.owner_before(entry.mesh);
    if (!isSame || entry.facts == nullptr)
    {
        auto facts = IsConsistent(*mesh) ? std::make_unique<const MeshFacts>(*mesh) : nullptr;
        Count(entry, false);
        entry.mesh = mesh;
        entry.facts = std::move(facts);
        Count(entry, true);
    }
    held_.push_back(mesh);
    entry.lastHold = hold_;
    return entry.facts.get();
}

void MeshFactsCache::Release()
{
    held_.clear();
    ++hold_;
}

std::size_t MeshFactsCache::HeldBytes() const
{
    std::size_t bytes = numbers_.bucket_count() * sizeof(void*) + numbers_.size() * 3 * sizeof(void*) +
                        held_.capacity() * sizeof(held_.front()) + entries_.capacity() * sizeof(Entry);
    for (const Entry& entry : entries_)
        if (entry.facts != nullptr)
            bytes += entry.facts->HeldBytes();
    return bytes;
}

void MeshFactsCache::Sweep()
{
    if (entries_.size() <= 2 * sizeAfterSweep_ + 16)
        return;
    numbers_.clear();
    std::erase_if(entries_, [](const Entry& entry) { return entry.mesh.expired(); });
    faceCount_ = groupCount_ = triangleCount_ = 0;
    for (std::uint32_t i = 0; i < entries_.size(); ++i)
    {
        numbers_.emplace(entries_[i].address, i);
        Count(entries_[i], true);
    }
    last_ = 0;
    sizeAfterSweep_ = entries_.size();
}

} // namespace lumora::rgb
