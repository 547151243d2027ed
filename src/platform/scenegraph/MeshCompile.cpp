// From polygons to arrays of triangles: faces sorted by look, vertices split where corners differ, edges found once.
// Everything is linear in the number of corners, vertices with very many corners included.
#include "platform/math/Matrix.h"
#include "platform/scenegraph/MeshData.h"
#include "platform/scenegraph/MeshNormals.h"
#include "platform/scenegraph/Triangulate.h"

#include <algorithm>
#include <atomic>
#include <span>
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
    VertexSplitter(const MeshData& data, const CornerNormals& normals, DrawMesh& mesh)
        : data_(data), normals_(normals), mesh_(mesh), first_(data.vertices.size(), None)
    {
        for (auto* list : {&mesh.x, &mesh.y, &mesh.z, &mesh.normalX, &mesh.normalY, &mesh.normalZ})
            list->reserve(data.vertices.size());
        mesh.color.reserve(data.vertices.size());
        entries_.reserve(data.vertices.size());
    }

    std::uint32_t VertexOf(std::uint32_t corner, Color color)
    {
        const std::uint32_t source = data_.cornerVertex[corner];
        const std::uint32_t normal = normals_.ofCorner[corner];
        int steps = 0;
        for (std::uint32_t vertex = first_[source]; vertex != None; vertex = entries_[vertex].next)
        {
            if (entries_[vertex].normal == normal && mesh_.color[vertex] == color)
                return vertex;
            if (++steps == LongestChain)
                return CrowdedVertexOf(source, normal, color);
        }
        return Add(source, normal, color);
    }

    const std::vector<std::uint32_t>& Sources() const { return sources_; }

private:
    static constexpr int LongestChain = 8;

    struct Entry
    {
        std::uint32_t normal;
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
        const Vector p = data_.vertices[source];
        const Vector n = normals_.normals[normal];
        mesh_.x.push_back(p.x);
        mesh_.y.push_back(p.y);
        mesh_.z.push_back(p.z);
        mesh_.normalX.push_back(n.x);
        mesh_.normalY.push_back(n.y);
        mesh_.normalZ.push_back(n.z);
        mesh_.color.push_back(color);
        entries_.push_back({normal, None});
        sources_.push_back(source);
        return static_cast<std::uint32_t>(entries_.size() - 1);
    }

    const MeshData& data_;
    const CornerNormals& normals_;
    DrawMesh& mesh_;
    std::vector<std::uint32_t> first_; // output vertex of each source vertex
    std::vector<Entry> entries_;
    std::vector<std::uint32_t> sources_; // of each output vertex
    std::unordered_map<Key, std::uint32_t, KeyHash> crowded_;
};

// The corner's normals: the mesh's own where it has them, made ones elsewhere.
CornerNormals ResolveNormals(const MeshData& data, const std::vector<Vector>& faceNormals)
{
    const bool allOwn = !data.cornerNormal.empty() &&
                        std::ranges::find(data.cornerNormal, MeshData::NoNormal) == data.cornerNormal.end();
    CornerNormals result;
    if (!allOwn)
        result = MakeCornerNormals(data, faceNormals, StandardCreaseAngle);
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

// A side of a face at the lower of its two vertices.
struct Side
{
    std::uint32_t other;  // the higher vertex
    std::uint32_t corner; // where the side begins
};

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
        StoreFaceNormals();
        OrderFaces();
        CutFaces();
        FindEdges();
        return {mesh_, std::move(groupLooks_)};
    }

private:
    void StoreFaceNormals()
    {
        const std::size_t count = faceNormals_.size();
        mesh_->faceNormalX.resize(count);
        mesh_->faceNormalY.resize(count);
        mesh_->faceNormalZ.resize(count);
        for (std::size_t face = 0; face < count; ++face)
        {
            const Vector n = faceNormals_[face] == Vector{} ? Vector{0, 1, 0} : faceNormals_[face];
            mesh_->faceNormalX[face] = n.x;
            mesh_->faceNormalY[face] = n.y;
            mesh_->faceNormalZ[face] = n.z;
        }
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
            groupFaces_ = {0, count};
            return;
        }
        std::vector<std::uint32_t> canonical(data_.looks.size(), None);
        std::vector<std::uint32_t> groupOfKey(2 * data_.looks.size(), None);
        std::vector<std::uint32_t> groupOf(count);
        groupFaces_.assign(1, 0);
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
                groupFaces_.push_back(0);
            }
            groupOf[face] = group;
            ++groupFaces_[group + 1];
        }
        for (std::size_t group = 1; group < groupFaces_.size(); ++group)
            groupFaces_[group] += groupFaces_[group - 1];
        if (mesh_->groups.size() == 1)
            return;
        order_.resize(count);
        std::vector<std::uint32_t> next{groupFaces_.begin(), groupFaces_.end() - 1};
        for (std::uint32_t face = 0; face < count; ++face)
            order_[next[groupOf[face]]++] = face;
    }

    std::uint32_t FaceAt(std::uint32_t place) const { return order_.empty() ? place : order_[place]; }

    void CutFaces()
    {
        const std::size_t triangles = data_.CornerCount(); // at most, less two for each face
        mesh_->indices.reserve(3 * (triangles - std::min(triangles, 2 * data_.FaceCount())));
        mesh_->triangleFace.reserve(triangles - std::min(triangles, 2 * data_.FaceCount()));
        outVertex_.assign(data_.CornerCount(), None);
        sideTriangle_.resize(data_.CornerCount());
        VertexSplitter splitter{data_, normals_, *mesh_};
        for (std::size_t group = 0; group < mesh_->groups.size(); ++group)
        {
            mesh_->groups[group].firstTriangle = mesh_->TriangleCount();
            for (std::uint32_t place = groupFaces_[group]; place < groupFaces_[group + 1]; ++place)
                CutFace(FaceAt(place), splitter);
            mesh_->groups[group].triangleCount = mesh_->TriangleCount() - mesh_->groups[group].firstTriangle;
        }
        StoreTextureCoordinates(splitter.Sources());
    }

    void CutFace(std::uint32_t face, VertexSplitter& splitter)
    {
        if (faceNormals_[face] == Vector{})
            return;
        const std::uint32_t first = data_.faceStart[face];
        const std::uint32_t count = data_.faceStart[face + 1] - first;
        triples_.clear();
        if (count == 3)
            triples_.push_back({0, 1, 2});
        else
        {
            points_.clear();
            for (std::uint32_t corner = first; corner < first + count; ++corner)
                points_.emplace_back(data_.vertices[data_.cornerVertex[corner]]);
            Triangulate(points_, faceNormals_[face], triples_);
        }
        if (triples_.empty())
            return;
        const Color color = DrawnColor(data_.color[face]);
        for (std::uint32_t corner = first; corner < first + count; ++corner)
        {
            outVertex_[corner] = splitter.VertexOf(corner, color);
            sideTriangle_[corner] = mesh_->TriangleCount();
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
            mesh_->indices.push_back(outVertex_[first + corner]);
            if (next == (corner + 1 == count ? 0 : corner + 1))
                sideTriangle_[first + corner] = mesh_->TriangleCount();
        }
        mesh_->triangleFace.push_back(face);
    }

    void StoreTextureCoordinates(const std::vector<std::uint32_t>& sources)
    {
        if (std::ranges::none_of(mesh_->groups, [](const DrawMesh::Group& group) { return group.texture != nullptr; }))
            return;
        mesh_->u.resize(sources.size());
        mesh_->v.resize(sources.size());
        for (std::size_t vertex = 0; vertex < sources.size(); ++vertex)
        {
            const std::size_t at = 2 * std::size_t{sources[vertex]};
            if (at + 1 >= data_.uv.size())
                continue;
            mesh_->u[vertex] = data_.uv[at];
            mesh_->v[vertex] = data_.uv[at + 1];
        }
    }

    // Calls `visit` (corner, its vertex, the next corner's vertex) for the sides of all drawn faces, in their order.
    template<typename Visit>
    void VisitSides(std::uint32_t firstPlace, std::uint32_t endPlace, Visit&& visit)
    {
        for (std::uint32_t place = firstPlace; place < endPlace; ++place)
        {
            const std::uint32_t face = FaceAt(place);
            const std::uint32_t first = data_.faceStart[face];
            const std::uint32_t end = data_.faceStart[face + 1];
            if (first == end || outVertex_[first] == None)
                continue;
            for (std::uint32_t corner = first; corner < end; ++corner)
            {
                const std::uint32_t next = corner + 1 == end ? first : corner + 1;
                const std::uint32_t a = data_.cornerVertex[corner];
                const std::uint32_t b = data_.cornerVertex[next];
                if (a != b)
                    visit(corner, next, a, b);
            }
        }
    }

    void FindEdges()
    {
        PairSides();
        std::vector<std::uint32_t> edgeOf(data_.CornerCount());
        mesh_->edges.reserve(data_.CornerCount() / 2 + 2);
        for (std::size_t group = 0; group < mesh_->groups.size(); ++group)
        {
            const auto firstEdge = static_cast<std::uint32_t>(mesh_->edges.size());
            const auto store = [&](std::uint32_t corner, std::uint32_t next, std::uint32_t, std::uint32_t)
            {
                if (const std::uint32_t mate = mate_[corner]; mate != None)
                {
                    mesh_->edges[edgeOf[mate]].triangleB = sideTriangle_[corner];
                    return;
                }
                edgeOf[corner] = static_cast<std::uint32_t>(mesh_->edges.size());
                mesh_->edges.push_back({outVertex_[corner], outVertex_[next], sideTriangle_[corner]});
            };
            VisitSides(groupFaces_[group], groupFaces_[group + 1], store);
            mesh_->groups[group].firstEdge = firstEdge;
            mesh_->groups[group].edgeCount = static_cast<std::uint32_t>(mesh_->edges.size()) - firstEdge;
        }
    }

    // Sides between the same two vertices belong together two by two: the later one learns which came first.
    void PairSides()
    {
        const auto places = static_cast<std::uint32_t>(data_.FaceCount());
        std::vector<std::uint32_t> start(data_.vertices.size() + 2);
        VisitSides(0, places,
                   [&](std::uint32_t, std::uint32_t, std::uint32_t a, std::uint32_t b)
                   { ++start[std::min(a, b) + 2]; });
        for (std::size_t vertex = 2; vertex < start.size(); ++vertex)
            start[vertex] += start[vertex - 1];
        std::vector<Side> sides(start.back());
        VisitSides(0, places,
                   [&](std::uint32_t corner, std::uint32_t, std::uint32_t a, std::uint32_t b) {
                       sides[start[std::min(a, b) + 1]++] = {std::max(a, b), corner};
                   });
        mate_.assign(data_.CornerCount(), None);
        for (std::size_t vertex = 0; vertex + 2 < start.size(); ++vertex)
            PairWithin({sides.data() + start[vertex], sides.data() + start[vertex + 1]});
    }

    void PairWithin(std::span<Side> sides)
    {
        constexpr std::size_t few = 32;
        if (sides.size() > few)
        {
            std::ranges::stable_sort(sides, {}, &Side::other);
            for (std::size_t i = 0; i + 1 < sides.size(); ++i)
                if (sides[i].other == sides[i + 1].other)
                {
                    mate_[sides[i + 1].corner] = sides[i].corner;
                    ++i;
                }
            return;
        }
        for (std::size_t i = 0; i < sides.size(); ++i)
        {
            if (sides[i].other == None)
                continue;
            for (std::size_t j = i + 1; j < sides.size(); ++j)
                if (sides[j].other == sides[i].other)
                {
                    mate_[sides[j].corner] = sides[i].corner;
                    sides[j].other = None; // taken
                    break;
                }
        }
    }

    const MeshData& data_;
    std::shared_ptr<DrawMesh> mesh_;
    std::vector<Vector> faceNormals_; // zero: no area
    CornerNormals normals_;
    std::vector<std::uint32_t> groupLooks_;
    std::vector<std::uint32_t> groupFaces_ = {0}; // first place of each group in the order, and the end
    std::vector<std::uint32_t> order_;            // faces by group; empty when as they are
    std::vector<std::uint32_t> outVertex_;        // of each corner; none where its face is not drawn
    std::vector<std::uint32_t> sideTriangle_;     // of the side that begins at each corner
    std::vector<std::uint32_t> mate_;             // of each corner's side: the earlier side at the same edge
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
