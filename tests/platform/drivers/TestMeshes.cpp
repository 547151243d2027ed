// Meshes and textures made by hand, for tests of drivers.
#include "platform/drivers/TestMeshes.h"

#include "platform/math/Matrix.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <numbers>
#include <random>
#include <tuple>

namespace lumora::test
{

namespace
{

std::uint64_t NextIdentity()
{
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

Vector NormalOf(const std::vector<Corner>& corners)
{
    Double3 sum;
    for (std::size_t i = 2; i < corners.size(); ++i)
    {
        const Double3 origin = corners[0].position;
        sum = sum + Cross(Double3{corners[i - 1].position} - origin, Double3{corners[i].position} - origin);
    }
    return Normalized(sum).ToVector();
}

using PlaceKey = std::tuple<float, float, float>;
using EdgeKey = std::pair<PlaceKey, PlaceKey>;

EdgeKey KeyOf(Vector a, Vector b)
{
    const PlaceKey first{a.x, a.y, a.z};
    const PlaceKey second{b.x, b.y, b.z};
    return {std::min(first, second), std::max(first, second)};
}

/// Compiles face by face; every corner becomes a vertex of its own.
class Compiler
{
public:
    void BeginGroup(const SurfaceMaterial& material, std::shared_ptr<const TextureImage> texture)
    {
        DrawMesh::Group group;
        group.firstTriangle = mesh_.TriangleCount();
        group.firstEdge = static_cast<std::uint32_t>(mesh_.edges.size());
        group.material = material;
        group.translucent = texture != nullptr && texture->hasTranslucency;
        group.texture = std::move(texture);
        mesh_.groups.push_back(std::move(group));
    }

    void AddFace(const std::vector<Corner>& corners, std::uint32_t color)
    {
        const Vector normal = NormalOf(corners);
        const auto face = static_cast<std::uint32_t>(mesh_.faceNormalX.size());
        const std::uint32_t firstVertex = mesh_.VertexCount();
        mesh_.faceNormalX.push_back(normal.x);
        mesh_.faceNormalY.push_back(normal.y);
        mesh_.faceNormalZ.push_back(normal.z);
        for (const Corner& corner : corners)
            AddVertex(corner, normal, corner.color.value_or(color));
        const auto count = static_cast<std::uint32_t>(corners.size());
        for (std::uint32_t i = 0; i < count; ++i)
            AddEdge(corners, i, firstVertex);
        for (std::uint32_t i = 2; i < count; ++i)
        {
            mesh_.indices.insert(mesh_.indices.end(), {firstVertex, firstVertex + i - 1, firstVertex + i});
            mesh_.triangleFace.push_back(face);
        }
        DrawMesh::Group& group = mesh_.groups.back();
        group.triangleCount = mesh_.TriangleCount() - group.firstTriangle;
        group.edgeCount = static_cast<std::uint32_t>(mesh_.edges.size()) - group.firstEdge;
    }

    std::shared_ptr<const DrawMesh> Result()
    {
        mesh_.identity = NextIdentity();
        return std::make_shared<const DrawMesh>(std::move(mesh_));
    }

private:
    void AddVertex(const Corner& corner, Vector faceNormal, std::uint32_t color)
    {
        const Vector normal = corner.normal.value_or(faceNormal);
        mesh_.x.push_back(corner.position.x);
        mesh_.y.push_back(corner.position.y);
        mesh_.z.push_back(corner.position.z);
        mesh_.normalX.push_back(normal.x);
        mesh_.normalY.push_back(normal.y);
        mesh_.normalZ.push_back(normal.z);
        mesh_.u.push_back(corner.u);
        mesh_.v.push_back(corner.v);
        mesh_.color.push_back(color);
        mesh_.bounds.Include(corner.position);
        if (color >> 24 < 0xFF)
            mesh_.groups.back().translucent = true;
    }

    void AddEdge(const std::vector<Corner>& corners, std::uint32_t side, std::uint32_t firstVertex)
    {
        const auto count = static_cast<std::uint32_t>(corners.size());
        const std::uint32_t next = (side + 1) % count;
        const std::uint32_t triangle = mesh_.TriangleCount(); // the face's first one
        const EdgeKey key = KeyOf(corners[side].position, corners[next].position);
        const auto [place, isNew] = edgeOf_.try_emplace(key, mesh_.edges.size());
        if (isNew)
            mesh_.edges.push_back({firstVertex + side, firstVertex + next, triangle, DrawMesh::NoFace});
        else
            mesh_.edges[place->second].triangleB = triangle;
    }

    DrawMesh mesh_;
    std::map<EdgeKey, std::size_t> edgeOf_;
};

constexpr double Pi = std::numbers::pi;

/// A sphere's grid of corners. Those that fall together are bitwise the same place, so that faces share edges.
class SphereGrid
{
public:
    SphereGrid(float radius, int rings, int segments) : radius_(radius), rings_(rings), segments_(segments) {}

    Corner At(int ring, int segment) const
    {
        const double latitude = Pi / 2 - Pi * ring / rings_;
        const double longitude = 2 * Pi * (segment % segments_) / segments_;
        const double circle = ring == 0 || ring == rings_ ? 0 : std::cos(latitude);
        const Double3 unit{circle * std::cos(longitude), std::sin(latitude), circle * std::sin(longitude)};
        return {(unit * radius_).ToVector(), static_cast<float>(segment) / static_cast<float>(segments_),
                static_cast<float>(ring) / static_cast<float>(rings_), unit.ToVector(), std::nullopt};
    }

private:
    float radius_;
    int rings_;
    int segments_;
};

} // namespace

MeshMaker& MeshMaker::Group(SurfaceMaterial material, std::shared_ptr<const TextureImage> texture)
{
    groups_.push_back({material, std::move(texture), {}});
    return *this;
}

MeshMaker& MeshMaker::Face(const std::vector<Corner>& corners)
{
    if (groups_.empty())
        Group({});
    std::vector<Corner> colored = corners;
    for (Corner& corner : colored)
        corner.color = corner.color.value_or(color);
    groups_.back().faces.push_back(std::move(colored));
    return *this;
}

std::shared_ptr<const DrawMesh> MeshMaker::Make() const
{
    Compiler compiler;
    for (const GroupParts& group : groups_)
    {
        compiler.BeginGroup(group.material, group.texture);
        for (const std::vector<Corner>& face : group.faces)
            compiler.AddFace(face, color);
    }
    return compiler.Result();
}

std::shared_ptr<const DrawMesh> OneFace(const std::vector<Vector>& corners, std::uint32_t color)
{
    MeshMaker maker;
    maker.color = color;
    std::vector<Corner> face;
    for (const Vector& position : corners)
        face.push_back({position, 0, 0, std::nullopt, std::nullopt});
    return maker.Face(face).Make();
}

std::shared_ptr<const DrawMesh> Quad(float left, float bottom, float right, float top, float z, std::uint32_t color,
                                     std::shared_ptr<const TextureImage> texture, float repeat)
{
    MeshMaker maker;
    maker.color = color;
    maker.Group({}, std::move(texture));
    maker.Face({{{left, top, z}, 0, 0, {}, {}},
                {{right, top, z}, repeat, 0, {}, {}},
                {{right, bottom, z}, repeat, repeat, {}, {}},
                {{left, bottom, z}, 0, repeat, {}, {}}});
    return maker.Make();
}

std::shared_ptr<const DrawMesh> Cube(float halfSize, std::uint32_t alpha, std::shared_ptr<const TextureImage> texture)
{
    struct Side
    {
        Vector outward, right, up;
        std::uint32_t color;
    };
    // Seen from outside, "right" x "up" is clockwise from the left-handed axes' point of view.
    static constexpr std::array<Side, 6> sides{{{{0, 0, -1}, {1, 0, 0}, {0, 1, 0}, 0xE04030},
                                                {{0, 0, 1}, {-1, 0, 0}, {0, 1, 0}, 0x30C0D0},
                                                {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}, 0x40C040},
                                                {{-1, 0, 0}, {0, 0, -1}, {0, 1, 0}, 0xC040C0},
                                                {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}, 0x4060E0},
                                                {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}, 0xE0C030}}};
    MeshMaker maker;
    maker.Group({}, texture);
    for (const Side& side : sides)
    {
        maker.color = (alpha << 24) | (texture != nullptr ? 0xFFFFFF : side.color);
        const auto corner = [&](float right, float up) -> Corner
        {
            return {(side.outward + side.right * right + side.up * up) * halfSize, (right + 1) / 2, (1 - up) / 2,
                    std::nullopt, std::nullopt};
        };
        maker.Face({corner(-1, 1), corner(1, 1), corner(1, -1), corner(-1, -1)});
    }
    return maker.Make();
}

std::shared_ptr<const DrawMesh> Sphere(float radius, int rings, int segments, std::uint32_t color,
                                       SurfaceMaterial material, std::shared_ptr<const TextureImage> texture)
{
    MeshMaker maker;
    maker.color = color;
    maker.Group(material, std::move(texture));
    const SphereGrid grid{radius, rings, segments};
    for (int ring = 0; ring < rings; ++ring)
        for (int segment = 0; segment < segments; ++segment)
        {
            std::vector<Corner> face{grid.At(ring, segment), grid.At(ring, segment + 1), grid.At(ring + 1, segment + 1),
                                     grid.At(ring + 1, segment)};
            if (ring == 0)
                face.erase(face.begin() + 1);
            else if (ring == rings - 1)
                face.erase(face.begin() + 2);
            maker.Face(face);
        }
    return maker.Make();
}

std::shared_ptr<const DrawMesh> Floor(float halfSize, int cells, std::uint32_t color,
                                      std::shared_ptr<const TextureImage> texture)
{
    MeshMaker maker;
    maker.color = color;
    maker.Group({}, std::move(texture));
    const auto corner = [&](int column, int row) -> Corner
    {
        const auto at = [&](int index)
        { return halfSize * (2 * static_cast<float>(index) / static_cast<float>(cells) - 1); };
        return {{at(column), 0, at(row)}, static_cast<float>(column), static_cast<float>(-row), {}, {}};
    };
    for (int row = 0; row < cells; ++row)
        for (int column = 0; column < cells; ++column)
            maker.Face(
                {corner(column, row + 1), corner(column + 1, row + 1), corner(column + 1, row), corner(column, row)});
    return maker.Make();
}

std::shared_ptr<const DrawMesh> Prism(float radius, float halfLength, int sides, std::uint32_t color)
{
    MeshMaker maker;
    maker.color = color;
    const auto corner = [&](int index, float z) -> Corner
    {
        // Falling angles turn clockwise for somebody who looks along +z.
        const double angle = Pi / 2 - 2 * Pi * index / sides;
        return {{radius * static_cast<float>(std::cos(angle)), radius * static_cast<float>(std::sin(angle)), z},
                0,
                0,
                {},
                {}};
    };
    std::vector<Corner> front;
    std::vector<Corner> back;
    for (int i = 0; i < sides; ++i)
    {
        front.push_back(corner(i, -halfLength));
        back.push_back(corner(sides - 1 - i, halfLength));
        // The last corner is the first one again, not its neighbour by rounding.
        const int next = (i + 1) % sides;
        maker.Face(
            {corner(i, -halfLength), corner(i, halfLength), corner(next, halfLength), corner(next, -halfLength)});
    }
    return maker.Face(front).Face(back).Make();
}

std::shared_ptr<const DrawMesh> Confetti(int count, float spread, float size, std::uint32_t alpha, unsigned seed)
{
    // The engine's output is fixed by the language; its distributions are not.
    std::mt19937 engine{seed};
    const auto number = [&](float limit)
    { return limit * (static_cast<float>(engine() >> 8) / static_cast<float>(1 << 23) - 1); };
    const auto vector = [&](float limit)
    {
        const float x = number(limit);
        const float y = number(limit);
        return Vector{x, y, number(limit)};
    };
    MeshMaker maker;
    for (int i = 0; i < count; ++i)
    {
        maker.color = (alpha << 24) | (static_cast<std::uint32_t>(engine()) & 0xFFFFFFU);
        const Vector centre = vector(spread);
        std::vector<Corner> face;
        for (int corner = 0; corner < 3; ++corner)
            face.push_back({centre + vector(size), 0, 0, {}, {}});
        maker.Face(face);
    }
    return maker.Make();
}

std::shared_ptr<const TextureImage> MakeTexture(int width, int height, std::vector<std::uint32_t> pixels)
{
    auto image = std::make_shared<TextureImage>();
    image->identity = NextIdentity();
    image->width = width;
    image->height = height;
    image->hasTranslucency = std::ranges::any_of(pixels, [](std::uint32_t pixel) { return pixel >> 24 < 0xFF; });
    image->pixels = std::move(pixels);
    return image;
}

std::shared_ptr<const TextureImage> Checkerboard(int size, int cell, std::uint32_t first, std::uint32_t second)
{
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            pixels.push_back((x / cell + y / cell) % 2 == 0 ? first : second);
    return MakeTexture(size, size, std::move(pixels));
}

std::shared_ptr<const TextureImage> Ramp(int width, int height, std::uint32_t lastAlpha)
{
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const auto part = [](int i, int count)
            { return static_cast<std::uint32_t>(count > 1 ? 255 * i / (count - 1) : 255); };
            const std::uint32_t alpha = 255 - (255 - lastAlpha) * part(x, width) / 255;
            pixels.push_back(alpha << 24 | part(x, width) << 16 | part(y, height) << 8 | 0x40);
        }
    return MakeTexture(width, height, std::move(pixels));
}

} // namespace lumora::test
