// Meshes and textures made by hand, for tests of drivers.
#include "platform/drivers/TestMeshes.h"

#include "base/Matrix.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <numbers>
#include <random>

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

EdgeKey KeyOf(Vector a, Vector b)
{
    using Place = EdgeKey::first_type;
    return std::minmax({Place{a.x, a.y, a.z}, Place{b.x, b.y, b.z}});
}

constexpr double Pi = std::numbers::pi;

} // namespace

MeshMaker& MeshMaker::Group(SurfaceMaterial material, std::shared_ptr<const TextureImage> texture)
{
    DrawMesh::Group group;
    group.firstTriangle = mesh_.TriangleCount();
    group.firstEdge = static_cast<std::uint32_t>(mesh_.edges.size());
    group.material = material;
    group.translucent = texture != nullptr && texture->hasTranslucency;
    group.texture = std::move(texture);
    mesh_.groups.push_back(std::move(group));
    return *this;
}

MeshMaker& MeshMaker::Face(const std::vector<Corner>& corners)
{
    if (mesh_.groups.empty())
        Group({});
    const Vector normal = NormalOf(corners);
    const auto face = static_cast<std::uint32_t>(mesh_.faceNormalX.size());
    const std::uint32_t firstVertex = mesh_.VertexCount();
    mesh_.faceNormalX.push_back(normal.x);
    mesh_.faceNormalY.push_back(normal.y);
    mesh_.faceNormalZ.push_back(normal.z);
    for (const Corner& corner : corners)
        AddVertex(corner, normal);
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
    return *this;
}

MeshMaker& MeshMaker::Polygon(const std::vector<Vector>& positions)
{
    std::vector<Corner> corners;
    for (const Vector& position : positions)
        corners.push_back({position});
    return Face(corners);
}

std::shared_ptr<const DrawMesh> MeshMaker::Make() const
{
    auto mesh = std::make_shared<DrawMesh>(mesh_);
    mesh->identity = NextIdentity();
    return mesh;
}

void MeshMaker::AddVertex(const Corner& corner, Vector faceNormal)
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
    mesh_.color.push_back(corner.color.value_or(color));
    mesh_.bounds.Include(corner.position);
    if (mesh_.color.back() >> 24 < 0xFF)
        mesh_.groups.back().translucent = true;
}

void MeshMaker::AddEdge(const std::vector<Corner>& corners, std::uint32_t side, std::uint32_t firstVertex)
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

std::shared_ptr<const DrawMesh> OneFace(const std::vector<Vector>& corners, std::uint32_t color)
{
    MeshMaker maker;
    maker.color = color;
    return maker.Polygon(corners).Make();
}

std::shared_ptr<const DrawMesh> Quad(float left, float bottom, float right, float top, float z, std::uint32_t color,
                                     std::shared_ptr<const TextureImage> texture, float repeat)
{
    MeshMaker maker;
    maker.color = color;
    maker.Group({}, std::move(texture));
    maker.Face({{{left, top, z}, 0, 0},
                {{right, top, z}, repeat, 0},
                {{right, bottom, z}, repeat, repeat},
                {{left, bottom, z}, 0, repeat}});
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
        const auto corner = [&](float right, float up) -> Corner {
            return {(side.outward + side.right * right + side.up * up) * halfSize, (right + 1) / 2, (1 - up) / 2};
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
    // Corners that fall together are bitwise the same place, so that faces share edges.
    const auto corner = [&](int ring, int segment) -> Corner
    {
        const double latitude = Pi / 2 - Pi * ring / rings;
        const double longitude = 2 * Pi * (segment % segments) / segments;
        const double circle = ring == 0 || ring == rings ? 0 : std::cos(latitude);
        const Double3 unit{circle * std::cos(longitude), std::sin(latitude), circle * std::sin(longitude)};
        return {(unit * radius).ToVector(), static_cast<float>(segment) / static_cast<float>(segments),
                static_cast<float>(ring) / static_cast<float>(rings), unit.ToVector()};
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int segment = 0; segment < segments; ++segment)
        {
            std::vector<Corner> face{corner(ring, segment), corner(ring, segment + 1), corner(ring + 1, segment + 1),
                                     corner(ring + 1, segment)};
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
        return {{at(column), 0, at(row)}, static_cast<float>(column), static_cast<float>(-row)};
    };
    for (int row = 0; row < cells; ++row)
        for (int column = 0; column < cells; ++column)
            maker.Face(
                {corner(column, row + 1), corner(column + 1, row + 1), corner(column + 1, row), corner(column, row)});
    return maker.Make();
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
        std::vector<Vector> face;
        for (int corner = 0; corner < 3; ++corner)
            face.push_back(centre + vector(size));
        maker.Polygon(face);
    }
    return maker.Make();
}

DrawItem Item(std::shared_ptr<const DrawMesh> mesh, const Matrix4& world)
{
    return {std::move(mesh), world};
}

DrawItem Unlit(DrawItem item)
{
    item.lit = false;
    return item;
}

DrawItem Flat(DrawItem item)
{
    item.gouraud = false;
    return item;
}

DrawItem Filled(DrawItem item, FillStyle fill)
{
    item.fill = fill;
    return item;
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
