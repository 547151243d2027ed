// From polygons to arrays of triangles: faces sorted by look, vertices split where corners differ, edges found once.
// Everything is linear in the number of corners, vertices with very many corners included.
#include "base/Matrix.h"
#include "parallel/InParallel.h"
#include "platform/scenegraph/mesh/MeshCorners.h"
#include "platform/scenegraph/mesh/MeshData.h"
#include "platform/scenegraph/mesh/MeshEdges.h"
#include "platform/scenegraph/mesh/MeshNormals.h"
#include "platform/scenegraph/mesh/Triangulate.h"

#include <algorithm>
#include <atomic>
#include <unordered_map>

namespace lumora
{

namespace
{

constexpr std::uint32_t None = 0xFFFFFFFF;

// Alphas from 0.99 on are drawn as opaque: nobody sees the difference, and opaque faces hide each other exactly, where
// translucent ones are only sorted.
constexpr std::uint32_t OpaqueAlpha = 252;

Color DrawnColor(Color color)
{
    return AlphaOf(color) >= OpaqueAlpha ? color | 0xFF000000 : color;
}

// Finds the output vertex of a corner: one for each position, normal and colour.
class VertexSplitter
{
public:
    VertexSplitter(const MeshData& data, const CornerNormals& normals)
        : data_(data), normals_(normals), first_(data.vertices.size(), None)
    {
        entries_.reserve(data.vertices.size() + data.vertices.size() / 8); // creases split a few
    }

    std::uint32_t VertexOf(std::uint32_t corner, Color color)
    {
        const std::uint32_t source = data_.cornerVertex[corner];
        const std::uint32_t normal = normals_.ofCorner[corner];
        int steps = 0;
        for (std::uint32_t vertex = first_[source]; vertex != None; vertex = entries_[vertex].next)
        {
            if (entries_[vertex].normal == normal && entries_[vertex].color == color)
                return vertex;
            if (++steps == LongestChain)
                return CrowdedVertexOf(source, normal, color);
        }
        return Add(source, normal, color);
    }

    std::uint32_t Source(std::size_t vertex) const { return entries_[vertex].source; }

    /// Writes all vertices, but for texture coordinates.
    void Store(DrawMesh& mesh) const
    {
        for (auto* list : {&mesh.x, &mesh.y, &mesh.z, &mesh.normalX, &mesh.normalY, &mesh.normalZ})
            list->resize(entries_.size());
        mesh.color.resize(entries_.size());
        const auto store = [&](std::size_t, std::size_t first, std::size_t end)
        {
            for (std::size_t vertex = first; vertex < end; ++vertex)
            {
                const Vector p = data_.vertices[entries_[vertex].source];
                const Vector n = normals_.normals[entries_[vertex].normal];
                mesh.x[vertex] = p.x;
                mesh.y[vertex] = p.y;
                mesh.z[vertex] = p.z;
                mesh.normalX[vertex] = n.x;
                mesh.normalY[vertex] = n.y;
                mesh.normalZ[vertex] = n.z;
                mesh.color[vertex] = entries_[vertex].color;
            }
        };
        InParallel(entries_.size(), store);
    }

private:
    static constexpr int LongestChain = 8;

    struct Entry
    {
        std::uint32_t source;
        std::uint32_t normal;
        Color color;
        std::uint32_t next; // output vertex of the same source
    };

    struct Key
    {
        std::uint32_t source;
        std::uint32_t normal;
        Color color;
        friend bool operator==(const Key&, const Key&) = default;
    };

    struct KeyHash
    {
        std::size_t operator()(const Key& key) const
        {
            std::uint64_t h = (std::uint64_t{key.source} << 32 | key.normal) * 0x9E3779B97F4A7C15ULL;
            h = (h ^ h >> 29 ^ key.color) * 0xBF58476D1CE4E5B9ULL;
            return static_cast<std::size_t>(h ^ h >> 32);
        }
    };

    // A source with many different corners: its chain ends and a table goes on.
    std::uint32_t CrowdedVertexOf(std::uint32_t source, std::uint32_t normal, Color color)
    {
        const auto [place, isNew] = crowded_.try_emplace(Key{source, normal, color}, 0);
        if (isNew)
            place->second = Append(source, normal, color);
        return place->second;
    }

    std::uint32_t Add(std::uint32_t source, std::uint32_t normal, Color color)
    {
        const std::uint32_t vertex = Append(source, normal, color);
        entries_[vertex].next = first_[source];
        first_[source] = vertex;
        return vertex;
    }

    std::uint32_t Append(std::uint32_t source, std::uint32_t normal, Color color)
    {
        entries_.push_back({source, normal, color, None});
        return static_cast<std::uint32_t>(entries_.size() - 1);
    }

    const MeshData& data_;
    const CornerNormals& normals_;
    std::vector<std::uint32_t> first_; // output vertex of each source vertex
    std::vector<Entry> entries_;
    std::unordered_map<Key, std::uint32_t, KeyHash> crowded_;
};

// The corner's normals: the mesh's own where it has them, made ones elsewhere.
CornerNormals ResolveNormals(const MeshData& data, const std::vector<Vector>& faceNormals)
{
    const bool allOwn = !data.cornerNormal.empty() &&
                        std::ranges::find(data.cornerNormal, MeshData::NoNormal) == data.cornerNormal.end();
    CornerNormals result;
    if (!allOwn)
        result = MakeCornerNormals(data, VertexCorners{data}, faceNormals, StandardCreaseAngle);
    if (data.cornerNormal.empty())
        return result;

    const auto firstOwn = static_cast<std::uint32_t>(result.normals.size());
    for (const Vector normal : data.normals)
        result.normals.push_back(Normalized(Double3{normal}).ToVector());
    result.ofCorner.resize(data.CornerCount());
    for (std::size_t face = 0; face < data.FaceCount(); ++face)
        for (std::uint32_t corner = data.faceStart[face]; corner < data.faceStart[face + 1]; ++corner)
        {
            const std::uint32_t own = data.cornerNormal[corner];
            if (own != MeshData::NoNormal)
                result.ofCorner[corner] = firstOwn + own;
        }
    return result;
}

// Zero normals that a host handed in are replaced by their faces' own.
void ReplaceZeroNormals(const MeshData& data, const std::vector<Vector>& faceNormals, CornerNormals& normals)
{
    if (std::ranges::find(normals.normals, Vector{}) == normals.normals.end())
        return;
    for (std::size_t face = 0; face < data.FaceCount(); ++face)
        for (std::uint32_t corner = data.faceStart[face]; corner < data.faceStart[face + 1]; ++corner)
        {
            if (normals.normals[normals.ofCorner[corner]] != Vector{})
                continue;
            normals.ofCorner[corner] = static_cast<std::uint32_t>(normals.normals.size());
            normals.normals.push_back(faceNormals[face] == Vector{} ? Vector{0, 1, 0} : faceNormals[face]);
        }
}

class MeshCompiler
{
public:
    explicit MeshCompiler(const MeshData& data)
        : data_(data), mesh_(std::make_shared<DrawMesh>()), faceNormals_(FaceNormals(data)),
          normals_(ResolveNormals(data, faceNormals_))
    {
        ReplaceZeroNormals(data, faceNormals_, normals_);
    }

    CompiledMesh Run()
    {
        mesh_->identity = NewMeshIdentity();
        mesh_->bounds = data_.box;
        OrderFaces();
        CutFaces();
        StoreFaceNormals();
        Release(faceNormals_);
        Release(normals_.normals);
        Release(normals_.ofCorner);
        FindEdges(data_, VertexCorners{data_, order_.faces}, order_, drawn_, *mesh_);
        return {mesh_, std::move(groupLooks_)};
    }

private:
    template<typename T>
    static void Release(std::vector<T>& list)
    {
        list = std::vector<T>{};
    }

    void StoreFaceNormals()
    {
        const std::size_t count = faceNormals_.size();
        mesh_->faceNormalX.resize(count);
        mesh_->faceNormalY.resize(count);
        mesh_->faceNormalZ.resize(count);
        const auto store = [&](std::size_t, std::size_t first, std::size_t end)
        {
            for (std::size_t face = first; face < end; ++face)
            {
                const Vector n = faceNormals_[face] == Vector{} ? Vector{0, 1, 0} : faceNormals_[face];
                mesh_->faceNormalX[face] = n.x;
                mesh_->faceNormalY[face] = n.y;
                mesh_->faceNormalZ[face] = n.z;
            }
        };
        InParallel(count, store);
    }

    // Groups: equal looks together, and translucent faces apart from opaque ones, which must not wait to be sorted.
    struct GroupKey
    {
        std::uint32_t look;
        bool translucent;
    };

    std::uint32_t CanonicalLook(std::uint32_t look) const
    {
        const auto same = std::ranges::find(data_.looks, data_.looks[look]);
        return static_cast<std::uint32_t>(same - data_.looks.begin());
    }

    void AddGroup(GroupKey key)
    {
        DrawMesh::Group group;
        group.translucent = key.translucent;
        if (const auto& texture = data_.looks[key.look].texture)
            group.texture = texture->Image();
        mesh_->groups.push_back(std::move(group));
        groupLooks_.push_back(key.look);
    }

    bool IsTranslucent(std::uint32_t look, Color color) const
    {
        const auto& texture = data_.looks[look].texture;
        return AlphaOf(DrawnColor(color)) < 255 || (texture && texture->Image()->hasTranslucency);
    }

    // A stable counting sort of the faces by group; groups come in the order of their first faces.
    void OrderFaces()
    {
        const auto count = static_cast<std::uint32_t>(data_.FaceCount());
        if (count == 0)
            return;
        if (data_.look.IsUniform() && data_.color.IsUniform())
        {
            const std::uint32_t look = data_.look.Common();
            AddGroup({look, IsTranslucent(look, data_.color.Common())});
            order_.groupFaces = {0, count};
            return;
        }
        std::vector<std::uint32_t> canonical(data_.looks.size(), None);
        std::vector<std::uint32_t> groupOfKey(2 * data_.looks.size(), None);
        std::vector<std::uint32_t> groupOf(count);
        order_.groupFaces.assign(1, 0);
        for (std::uint32_t face = 0; face < count; ++face)
        {
            const std::uint32_t look = data_.look[face];
            if (canonical[look] == None)
                canonical[look] = CanonicalLook(look);
            const GroupKey key{canonical[look], IsTranslucent(look, data_.color[face])};
            std::uint32_t& group = groupOfKey[2 * key.look + (key.translucent ? 1 : 0)];
            if (group == None)
            {
                group = static_cast<std::uint32_t>(mesh_->groups.size());
                AddGroup(key);
                order_.groupFaces.push_back(0);
            }
            groupOf[face] = group;
            ++order_.groupFaces[group + 1];
        }
        for (std::size_t group = 1; group < order_.groupFaces.size(); ++group)
            order_.groupFaces[group] += order_.groupFaces[group - 1];
        if (mesh_->groups.size() == 1)
            return;
        order_.faces.resize(count);
        std::vector<std::uint32_t> next{order_.groupFaces.begin(), order_.groupFaces.end() - 1};
        for (std::uint32_t face = 0; face < count; ++face)
            order_.faces[next[groupOf[face]]++] = face;
    }

    void CutFaces()
    {
        const std::size_t triangles = data_.CornerCount(); // at most, less two for each face
        mesh_->indices.reserve(3 * (triangles - std::min(triangles, 2 * data_.FaceCount())));
        mesh_->triangleFace.reserve(triangles - std::min(triangles, 2 * data_.FaceCount()));
        drawn_.firstTriangle.assign(data_.FaceCount(), None);
        if (!HasTrianglesOnly(data_))
        {
            drawn_.vertex.assign(data_.CornerCount(), None);
            drawn_.sideTriangle.resize(data_.CornerCount());
        }
        VertexSplitter splitter{data_, normals_};
        for (std::size_t group = 0; group < mesh_->groups.size(); ++group)
        {
            mesh_->groups[group].firstTriangle = mesh_->TriangleCount();
            for (std::uint32_t place = order_.groupFaces[group]; place < order_.groupFaces[group + 1]; ++place)
                CutFace(order_.FaceAt(place), splitter);
            mesh_->groups[group].triangleCount = mesh_->TriangleCount() - mesh_->groups[group].firstTriangle;
        }
        splitter.Store(*mesh_);
        StoreTextureCoordinates(splitter);
    }

    void CutFace(std::uint32_t face, VertexSplitter& splitter)
    {
        if (faceNormals_[face] == Vector{})
            return;
        const std::uint32_t first = data_.faceStart[face];
        const std::uint32_t count = data_.faceStart[face + 1] - first;
        const Color color = DrawnColor(data_.color[face]);
        if (count == 3)
            EmitWhole(face, first, color, splitter);
        else
            EmitPolygon(face, first, count, color, splitter);
    }

    void EmitWhole(std::uint32_t face, std::uint32_t first, Color color, VertexSplitter& splitter)
    {
        const std::uint32_t triangle = mesh_->TriangleCount();
        drawn_.firstTriangle[face] = triangle;
        mesh_->triangleFace.push_back(face);
        for (std::uint32_t corner = first; corner < first + 3; ++corner)
        {
            const std::uint32_t vertex = splitter.VertexOf(corner, color);
            mesh_->indices.push_back(vertex);
            if (drawn_.vertex.empty())
                continue;
            drawn_.vertex[corner] = vertex;
            drawn_.sideTriangle[corner] = triangle;
        }
    }

    void EmitPolygon(std::uint32_t face, std::uint32_t first, std::uint32_t count, Color color,
                     VertexSplitter& splitter)
    {
        triples_.clear();
        points_.clear();
        for (std::uint32_t corner = first; corner < first + count; ++corner)
            points_.emplace_back(data_.vertices[data_.cornerVertex[corner]]);
        Triangulate(points_, faceNormals_[face], triples_);
        if (triples_.empty())
            return;
        drawn_.firstTriangle[face] = mesh_->TriangleCount();
        for (std::uint32_t corner = first; corner < first + count; ++corner)
        {
            drawn_.vertex[corner] = splitter.VertexOf(corner, color);
            drawn_.sideTriangle[corner] = mesh_->TriangleCount();
        }
        for (const CornerTriple& triple : triples_)
            EmitTriangle(face, first, count, triple);
    }

    void EmitTriangle(std::uint32_t face, std::uint32_t first, std::uint32_t count, const CornerTriple& triple)
    {
        for (int i = 0; i < 3; ++i)
        {
            const std::uint32_t corner = triple[static_cast<std::size_t>(i)];
            const std::uint32_t next = triple[static_cast<std::size_t>((i + 1) % 3)];
            mesh_->indices.push_back(drawn_.vertex[first + corner]);
            if (next == (corner + 1 == count ? 0 : corner + 1))
                drawn_.sideTriangle[first + corner] = mesh_->TriangleCount();
        }
        mesh_->triangleFace.push_back(face);
    }

    void StoreTextureCoordinates(const VertexSplitter& splitter)
    {
        if (std::ranges::none_of(mesh_->groups, [](const DrawMesh::Group& group) { return group.texture != nullptr; }))
            return;
        mesh_->u.resize(mesh_->x.size());
        mesh_->v.resize(mesh_->x.size());
        for (std::size_t vertex = 0; vertex < mesh_->x.size(); ++vertex)
        {
            const std::size_t at = 2 * std::size_t{splitter.Source(vertex)};
            if (at + 1 >= data_.uv.size())
                continue;
            mesh_->u[vertex] = data_.uv[at];
            mesh_->v[vertex] = data_.uv[at + 1];
        }
    }

    std::shared_ptr<Crew> crew_ = Crew::Of(0); // held, so that all stages share it
    const MeshData& data_;
    std::shared_ptr<DrawMesh> mesh_;
    std::vector<Vector> faceNormals_; // zero: no area
    CornerNormals normals_;
    std::vector<std::uint32_t> groupLooks_;
    FaceOrder order_;
    DrawnFaces drawn_;
    std::vector<CornerTriple> triples_;
    std::vector<Double3> points_;
};

} // namespace

std::uint64_t NewMeshIdentity()
{
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

CompiledMesh CompileMesh(const MeshData& data)
{
    return MeshCompiler{data}.Run();
}

} // namespace lumora
