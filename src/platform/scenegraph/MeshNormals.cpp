#include "platform/scenegraph/MeshNormals.h"

#include "platform/math/Matrix.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <unordered_map>

namespace lumora
{

namespace
{

// Vertices with more corners than this are summed by cells of similar directions instead of pair by pair: the hub of a
// wheel with a million spokes must not take a million squared.
constexpr std::size_t CrowdedCorners = 128;

const Vector AnyNormal{0, 1, 0}; // for corners whose face has no area: nothing is drawn there

double AngleBetween(Double3 a, Double3 b)
{
    const double lengths = std::sqrt(Dot(a, a) * Dot(b, b));
    return lengths > 0 ? std::acos(std::clamp(Dot(a, b) / lengths, -1.0, 1.0)) : 0.0;
}

// The angle of each corner in its polygon.
std::vector<float> CornerAngles(const MeshData& data)
{
    std::vector<float> angles(data.CornerCount());
    for (std::size_t face = 0; face < data.FaceCount(); ++face)
    {
        const std::uint32_t first = data.faceStart[face];
        const std::uint32_t end = data.faceStart[face + 1];
        const auto at = [&](std::uint32_t corner) { return Double3{data.vertices[data.cornerVertex[corner]]}; };
        if (end - first == 3)
        {
            const Double3 ab = at(first + 1) - at(first);
            const Double3 bc = at(first + 2) - at(first + 1);
            const double angleA = AngleBetween(ab, at(first + 2) - at(first));
            const double angleB = AngleBetween(-ab, bc);
            angles[first] = static_cast<float>(angleA);
            angles[first + 1] = static_cast<float>(angleB);
            angles[first + 2] = static_cast<float>(std::max(0.0, std::numbers::pi - angleA - angleB));
            continue;
        }
        for (std::uint32_t corner = first; corner < end; ++corner)
        {
            const std::uint32_t before = corner == first ? end - 1 : corner - 1;
            const std::uint32_t after = corner + 1 == end ? first : corner + 1;
            angles[corner] = static_cast<float>(AngleBetween(at(before) - at(corner), at(after) - at(corner)));
        }
    }
    return angles;
}

// The corners around each vertex, in the order of the faces.
struct VertexCorners
{
    std::vector<std::uint32_t> start; // of each vertex, and the end
    std::vector<std::uint32_t> corner;
    std::vector<std::uint32_t> face;

    explicit VertexCorners(const MeshData& data)
        : start(data.vertices.size() + 2), corner(data.CornerCount()), face(data.CornerCount())
    {
        for (const std::uint32_t vertex : data.cornerVertex)
            ++start[vertex + 2];
        for (std::size_t vertex = 2; vertex < start.size(); ++vertex)
            start[vertex] += start[vertex - 1];
        for (std::uint32_t f = 0; f < data.FaceCount(); ++f)
            for (std::uint32_t c = data.faceStart[f]; c < data.faceStart[f + 1]; ++c)
            {
                const std::uint32_t place = start[data.cornerVertex[c] + 1]++;
                corner[place] = c;
                face[place] = f;
            }
        start.pop_back();
    }
};

// One corner at the vertex in work.
struct Spoke
{
    std::uint32_t corner;
    Double3 normal; // of its face
    double weight;
};

class NormalMaker
{
public:
    NormalMaker(const MeshData& data, double creaseAngle)
        : creaseAngle_(std::min(creaseAngle, std::numbers::pi)), cosine_(std::cos(creaseAngle_)),
          halfCosine_(std::cos(creaseAngle_ / 2))
    {
        result_.ofCorner.resize(data.CornerCount());
        result_.normals.reserve(data.vertices.size());
    }

    void MakeVertex(std::span<const Spoke> spokes)
    {
        if (TakeAllAsOne(spokes))
            return;
        if (spokes.size() > CrowdedCorners)
            MakeCrowded(spokes);
        else
            MakePairwise(spokes);
    }

    CornerNormals Take() { return std::move(result_); }

private:
    bool IsWithinCrease(Double3 a, Double3 b) const
    {
        // The slack keeps a face within the crease of its equals when the angle is 0.
        return Dot(a, b) >= cosine_ - 1e-6;
    }

    // Where all normals lie within half the crease of their mean, every pair lies within the crease.
    bool TakeAllAsOne(std::span<const Spoke> spokes)
    {
        Double3 sum;
        for (const Spoke& spoke : spokes)
            sum = sum + spoke.normal * spoke.weight;
        const Double3 mean = Normalized(sum);
        for (const Spoke& spoke : spokes)
            if (Dot(spoke.normal, mean) < halfCosine_ && Dot(spoke.normal, spoke.normal) > 0)
                return false;
        const std::uint32_t id = Add(sum, spokes.empty() ? Double3{} : spokes.front().normal);
        for (const Spoke& spoke : spokes)
            result_.ofCorner[spoke.corner] = id;
        return true;
    }

    void MakePairwise(std::span<const Spoke> spokes)
    {
        const std::size_t firstHere = result_.normals.size();
        for (const Spoke& spoke : spokes)
        {
            Double3 sum;
            for (const Spoke& other : spokes)
                if (IsWithinCrease(spoke.normal, other.normal))
                    sum = sum + other.normal * other.weight;
            result_.ofCorner[spoke.corner] = AddOnce(sum, spoke.normal, firstHere);
        }
    }

    struct Cell
    {
        Double3 sum; // weighted
        Double3 direction;
        std::uint32_t normal = 0;
    };

    void MakeCrowded(std::span<const Spoke> spokes)
    {
        const double perUnit = 1.0 / std::clamp(creaseAngle_ / 8, 1.0 / 16, 1.0 / 8);
        std::unordered_map<std::uint32_t, std::uint32_t> cellOf;
        std::vector<Cell> cells;
        std::vector<std::uint32_t> ofSpoke;
        for (const Spoke& spoke : spokes)
        {
            const auto part = [&](double v) { return static_cast<std::uint32_t>(std::lround(v * perUnit) + 64); };
            const std::uint32_t key = part(spoke.normal.x) << 16 | part(spoke.normal.y) << 8 | part(spoke.normal.z);
            const auto [place, isNew] = cellOf.try_emplace(key, static_cast<std::uint32_t>(cells.size()));
            if (isNew)
                cells.emplace_back();
            Cell& cell = cells[place->second];
            cell.sum = cell.sum + spoke.normal * spoke.weight;
            cell.direction = cell.direction + spoke.normal;
            ofSpoke.push_back(place->second);
        }
        for (Cell& cell : cells)
            cell.direction = Normalized(cell.direction);
        for (Cell& cell : cells)
        {
            Double3 sum;
            for (const Cell& other : cells)
                if (IsWithinCrease(cell.direction, other.direction))
                    sum = sum + other.sum;
            cell.normal = Add(sum, cell.direction);
        }
        for (std::size_t spoke = 0; spoke < spokes.size(); ++spoke)
            result_.ofCorner[spokes[spoke].corner] = cells[ofSpoke[spoke]].normal;
    }

    static Vector UnitNormal(Double3 sum, Double3 ownFace)
    {
        for (const Double3 candidate : {sum, ownFace}) // opposite faces may cancel each other out
            if (Length(candidate) > 1e-12)
                return Normalized(candidate).ToVector();
        return AnyNormal;
    }

    std::uint32_t Add(Double3 sum, Double3 ownFace)
    {
        result_.normals.push_back(UnitNormal(sum, ownFace));
        return static_cast<std::uint32_t>(result_.normals.size() - 1);
    }

    // Corners that sum the same faces get the same number to the bit, since the order of the sum is the same.
    std::uint32_t AddOnce(Double3 sum, Double3 ownFace, std::size_t firstHere)
    {
        const Vector normal = UnitNormal(sum, ownFace);
        const auto from = result_.normals.begin() + static_cast<std::ptrdiff_t>(firstHere);
        const auto found = std::find(from, result_.normals.end(), normal);
        if (found != result_.normals.end())
            return static_cast<std::uint32_t>(found - result_.normals.begin());
        result_.normals.push_back(normal);
        return static_cast<std::uint32_t>(result_.normals.size() - 1);
    }

    double creaseAngle_;
    double cosine_;
    double halfCosine_;
    CornerNormals result_;
};

} // namespace

Vector FaceNormal(const MeshData& data, std::size_t face)
{
    const std::uint32_t first = data.faceStart[face];
    const std::uint32_t end = data.faceStart[face + 1];
    if (end - first < 3)
        return {};
    const auto at = [&](std::uint32_t corner) { return Double3{data.vertices[data.cornerVertex[corner]]}; };
    // Measured from a corner of its own, so that a small face far from the origin keeps its digits.
    const Double3 origin = at(first);
    Double3 previous = at(first + 1) - origin;
    Double3 sum;
    double longest = Dot(previous, previous);
    for (std::uint32_t corner = first + 2; corner < end; ++corner)
    {
        const Double3 next = at(corner) - origin;
        sum = sum + Cross(previous, next);
        longest = std::max(longest, Dot(next, next));
        previous = next;
    }
    const double size = Length(sum);
    return size > longest * 1e-12 ? (sum * (1.0 / size)).ToVector() : Vector{};
}

std::vector<Vector> FaceNormals(const MeshData& data)
{
    std::vector<Vector> normals(data.FaceCount());
    for (std::size_t face = 0; face < normals.size(); ++face)
        normals[face] = FaceNormal(data, face);
    return normals;
}

CornerNormals MakeCornerNormals(const MeshData& data, const std::vector<Vector>& faceNormals, double creaseAngle)
{
    const std::vector<float> angles = CornerAngles(data);
    const VertexCorners around{data};
    NormalMaker maker{data, creaseAngle};
    std::vector<Spoke> spokes;
    for (std::size_t vertex = 0; vertex < data.vertices.size(); ++vertex)
    {
        spokes.clear();
        for (std::uint32_t place = around.start[vertex]; place < around.start[vertex + 1]; ++place)
        {
            const std::uint32_t corner = around.corner[place];
            spokes.push_back({corner, faceNormals[around.face[place]], angles[corner]});
        }
        if (!spokes.empty())
            maker.MakeVertex(spokes);
    }
    return maker.Take();
}

} // namespace lumora
