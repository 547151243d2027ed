#include "platform/drivers/rgb/MeshFacts.h"

#include "platform/drivers/rgb/Textures.h"

#include <algorithm>

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

std::size_t MeshFactsCache::FacesOf(const Entry& entry)
{
    return entry.facts != nullptr ? entry.facts->faceVertices.size() + entry.facts->groups.size() : 0;
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
        faceCount_ -= FacesOf(entry);
        entry.mesh = mesh;
        entry.facts = std::move(facts);
        faceCount_ += FacesOf(entry);
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
            bytes += sizeof(MeshFacts) + entry.facts->faceVertices.capacity() * sizeof(std::uint32_t) +
                     entry.facts->groups.capacity() * sizeof(MeshFacts::GroupFacts);
    return bytes;
}

void MeshFactsCache::Sweep()
{
    if (entries_.size() <= 2 * sizeAfterSweep_ + 16)
        return;
    numbers_.clear();
    std::erase_if(entries_, [](const Entry& entry) { return entry.mesh.expired(); });
    faceCount_ = 0;
    for (std::uint32_t i = 0; i < entries_.size(); ++i)
    {
        numbers_.emplace(entries_[i].address, i);
        faceCount_ += FacesOf(entries_[i]);
    }
    last_ = 0;
    sizeAfterSweep_ = entries_.size();
}

} // namespace lumora::rgb
