#include "geometry/modOptimize.h"

#include "geometry/Steps.h"

#include <array>
#include <bit>
#include <cmath>
#include <unordered_map>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modOptimize"};

/// A position's coordinates in units of the fourth decimal.
using PositionKey = std::array<double, 3>;

struct PositionHash
{
    std::size_t operator()(const PositionKey& key) const
    {
        std::uint64_t hash = 0;
        for (const double part : key)
        {
            hash = (hash ^ std::bit_cast<std::uint64_t>(part)) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32; // whole numbers differ in their high bits only
        }
        return static_cast<std::size_t>(hash);
    }
};

PositionKey KeyOf(Vector position)
{
    const auto rounded = [](float coordinate) { return std::round(double{coordinate} * 10000) + 0.0; }; // never -0
    return {rounded(position.x), rounded(position.y), rounded(position.z)};
}

struct Polygons
{
    VertexList vertices;
    FaceList faces;
};

class Welder
{
public:
    Welder(const MeshGeometry& old, bool dropRepeats)
        : old_(old), dropRepeats_(dropRepeats), newIndex_(old.vertices.size(), Unknown)
    {
        byPosition_.reserve(old.vertices.size());
    }

    Polygons Run()
    {
        const std::size_t stride = old_.normals.empty() ? 1 : 2;
        welded_.faces.reserve(old_.faceList.size() / stride + 1);
        for (std::size_t at = 0; old_.faceList[at] != 0;)
        {
            const auto corners = static_cast<std::size_t>(old_.faceList[at++]);
            BeginFace();
            for (std::size_t corner = 0; corner < corners; ++corner, at += stride)
                AddCorner(VertexFor(static_cast<std::size_t>(old_.faceList[at])));
        }
        welded_.faces.push_back(0);
        return std::move(welded_);
    }

private:
    static constexpr std::int32_t Unknown = -1;

    void BeginFace()
    {
        face_ = welded_.faces.size();
        welded_.faces.push_back(0);
    }

    void AddCorner(std::int32_t vertex)
    {
        FaceList& faces = welded_.faces;
        if (dropRepeats_ && faces[face_] > 0 && (vertex == faces.back() || vertex == faces[face_ + 1]))
            return;
        faces.push_back(vertex);
        ++faces[face_];
    }

    std::int32_t VertexFor(std::size_t old)
    {
        if (newIndex_[old] != Unknown)
            return newIndex_[old];
        const auto next = static_cast<std::int32_t>(welded_.vertices.size());
        const auto [place, isNew] = byPosition_.try_emplace(KeyOf(old_.vertices[old]), next);
        if (isNew)
            welded_.vertices.push_back(old_.vertices[old]);
        return newIndex_[old] = place->second;
    }

    const MeshGeometry& old_;
    bool dropRepeats_;
    std::size_t face_ = 0; // where its count stands
    Polygons welded_;
    std::vector<std::int32_t> newIndex_; // of each old vertex, once it has been asked for
    std::unordered_map<PositionKey, std::int32_t, PositionHash> byPosition_;
};

// Face by face; faces without corners are in no face list and so have no counterpart.
void CopyFaceColors(MeshBuilder& from, MeshBuilder& to)
{
    const std::int32_t count = ResultOf(OnError, [&] { return from.GetFaceCount(); });
    std::int32_t target = 0;
    for (std::int32_t i = 0; i < count; ++i)
    {
        const auto face = ResultOf(OnError, [&] { return from.GetFace(i); });
        if (ResultOf(OnError, [&] { return face->VertexCount(); }) == 0)
            continue;
        const Color color = ResultOf(OnError, [&] { return face->GetColor(); });
        const auto copy = ResultOf(OnError, [&] { return to.GetFace(target); });
        OnError([&] { copy->SetColor(color); });
        ++target;
    }
}

} // namespace

void OptimizeMesh(RetainedMode& root, MeshBuilder& mesh, const OptimizeOptions& options)
{
    const MeshGeometry old = ResultOf(OnError, [&] { return mesh.GetGeometry(); });
    const auto welded = ResultOf(OnError, [&] { return root.CreateMeshBuilder(); });
    const Polygons polygons = Welder{old, options.dropRepeats}.Run();
    OnError([&] { welded->AddFaces(polygons.vertices, {}, polygons.faces); });
    if (options.copyFaceColors)
        CopyFaceColors(mesh, *welded);
    OnError([&] { mesh.Empty(); });
    OnError([&] { mesh.AddMeshBuilder(welded); });
}

} // namespace lumora
