#include "platform/scenegraph/mesh/MeshNormals.h"

#include "base/Matrix.h"
#include "parallel/InParallel.h"

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

// The angle of each corner of a face in its polygon.
void StoreAngles(const MeshData& data, std::size_t face, rays::LargeArray<float>& angles)
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
        return;
    }
    for (std::uint32_t corner = first; corner < end; ++corner)
    {
        const std::uint32_t before = corner == first ? end - 1 : corner - 1;
        const std::uint32_t after = corner + 1 == end ? first : corner + 1;
        angles[corner] = static_cast<float>(AngleBetween(at(before) - at(corner), at(after) - at(corner)));
    }
}

rays::LargeArray<float> CornerAngles(const MeshData& data)
{
    rays::LargeArray<float> angles(data.CornerCount());
    InParallel(data.FaceCount(),
               [&](std::size_t, std::size_t first, std::size_t end)
               {
                   for (std::size_t face = first; face < end; ++face)
                       StoreAngles(data, face, angles);
               });
    return angles;
}

// One corner at the vertex in work.
struct Spoke
{
    std::uint32_t corner;
    Double3 normal; // of its face
    double weight;
};

// Makes the normals of a stretch of vertices; their numbers count from the stretch's first.
class NormalMaker
{
public:
    NormalMaker(double creaseAngle, std::vector<std::uint32_t>& ofCorner, std::vector<Vector>& normals)
        : creaseAngle_(std::min(creaseAngle, std::numbers::pi)), cosine_(std::cos(creaseAngle_)),
          halfCosine_(std::cos(creaseAngle_ / 2)), ofCorner_(ofCorner), normals_(normals)
    {
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
            ofCorner_[spoke.corner] = id;
        return true;
    }

    void MakePairwise(std::span<const Spoke> spokes)
    {
        const std::size_t firstHere = normals_.size();
        for (const Spoke& spoke : spokes)
        {
            Double3 sum;
            for (const Spoke& other : spokes)
                if (IsWithinCrease(spoke.normal, other.normal))
                    sum = sum + other.normal * other.weight;
            ofCorner_[spoke.corner] = AddOnce(sum, spoke.normal, firstHere);
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
            ofCorner_[spokes[spoke].corner] = cells[ofSpoke[spoke]].normal;
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
        normals_.push_back(UnitNormal(sum, ownFace));
        return static_cast<std::uint32_t>(normals_.size() - 1);
    }

    // Corners that sum the same faces get the same number to the bit, since the order of the sum is the same.
    std::uint32_t AddOnce(Double3 sum, Double3 ownFace, std::size_t firstHere)
    {
        const Vector normal = UnitNormal(sum, ownFace);
        const auto from = normals_.begin() + static_cast<std::ptrdiff_t>(firstHere);
        const auto found = std::find(from, normals_.end(), normal);
        if (found != normals_.end())
            return static_cast<std::uint32_t>(found - normals_.begin());
        normals_.push_back(normal);
        return static_cast<std::uint32_t>(normals_.size() - 1);
    }

    double creaseAngle_;
    double cosine_;
    double halfCosine_;
    std::vector<std::uint32_t>& ofCorner_;
    std::vector<Vector>& normals_;
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
    InParallel(normals.size(),
               [&](std::size_t, std::size_t first, std::size_t end)
               {
                   for (std::size_t face = first; face < end; ++face)
                       normals[face] = FaceNormal(data, face);
               });
    return normals;
}

CornerNormals MakeCornerNormals(const MeshData& data, const VertexCorners& around,
                                const std::vector<Vector>& faceNormals, double creaseAngle)
{
    const rays::LargeArray<float> angles = CornerAngles(data);
    CornerNormals result;
    result.ofCorner.resize(data.CornerCount());
    std::vector<std::vector<Vector>> made(StretchesOf(data.vertices.size()));
    const auto make = [&](std::size_t stretch, std::size_t first, std::size_t end)
    {
        made[stretch].reserve(end - first);
        NormalMaker maker{creaseAngle, result.ofCorner, made[stretch]};
        std::vector<Spoke> spokes;
        for (std::size_t vertex = first; vertex < end; ++vertex)
        {
            spokes.clear();
            for (const std::uint32_t corner : around.Around(vertex))
                spokes.push_back({corner, faceNormals[around.FaceOf(corner)], angles[corner]});
            if (!spokes.empty())
                maker.MakeVertex(spokes);
        }
    };
    InParallel(data.vertices.size(), make);

    std::vector<std::uint32_t> firstOf;
    for (const std::vector<Vector>& normals : made)
    {
        firstOf.push_back(static_cast<std::uint32_t>(result.normals.size()));
        result.normals.insert(result.normals.end(), normals.begin(), normals.end());
    }
    const auto count = [&](std::size_t stretch, std::size_t first, std::size_t end)
    {
        for (std::size_t vertex = first; vertex < end && firstOf[stretch] != 0; ++vertex)
            for (const std::uint32_t corner : around.Around(vertex))
                result.ofCorner[corner] += firstOf[stretch];
    };
    InParallel(data.vertices.size(), count);
    return result;
}

} // namespace lumora
