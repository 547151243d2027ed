#include "Loads.h"

#include "base/Matrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace lumora::bench
{

namespace
{

std::uint64_t NewIdentity()
{
    static std::uint64_t last = 0;
    return ++last;
}

class Maker
{
public:
    std::uint32_t Vertex(Vector position, Vector normal, std::uint32_t color = 0xFFC8B090)
    {
        mesh_.x.push_back(position.x);
        mesh_.y.push_back(position.y);
        mesh_.z.push_back(position.z);
        mesh_.normalX.push_back(normal.x);
        mesh_.normalY.push_back(normal.y);
        mesh_.normalZ.push_back(normal.z);
        mesh_.color.push_back(color);
        mesh_.bounds.Include(position);
        return mesh_.VertexCount() - 1;
    }

    void Triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        mesh_.triangleFace.push_back(mesh_.TriangleCount());
        for (const std::uint32_t vertex : {a, b, c})
            mesh_.indices.push_back(vertex);
        mesh_.faceNormalX.push_back(0);
        mesh_.faceNormalY.push_back(0);
        mesh_.faceNormalZ.push_back(1);
    }

    void Box(Vector centre, float half)
    {
        for (int axis = 0; axis < 3; ++axis)
            for (const float sign : {-1.0F, 1.0F})
                Side(centre, half, axis, sign);
    }

    /// Vertex normals as the sums of their triangles' ones.
    void SmoothNormals()
    {
        std::vector<Vector> sums(mesh_.x.size());
        const auto at = [&](std::uint32_t v) { return Vector{mesh_.x[v], mesh_.y[v], mesh_.z[v]}; };
        for (std::size_t i = 0; i < mesh_.indices.size(); i += 3)
        {
            const Double3 a{at(mesh_.indices[i])};
            const Double3 normal = Cross(Double3{at(mesh_.indices[i + 1])} - a, Double3{at(mesh_.indices[i + 2])} - a);
            for (int corner = 0; corner < 3; ++corner)
                sums[mesh_.indices[i + corner]] = sums[mesh_.indices[i + corner]] + normal.ToVector();
        }
        for (std::size_t v = 0; v < sums.size(); ++v)
        {
            const Vector normal = Normalized(Double3{sums[v]}).ToVector();
            mesh_.normalX[v] = normal.x;
            mesh_.normalY[v] = normal.y;
            mesh_.normalZ[v] = normal.z;
        }
    }

    Mesh Make()
    {
        mesh_.identity = NewIdentity();
        DrawMesh::Group group;
        group.triangleCount = mesh_.TriangleCount();
        mesh_.groups.push_back(group);
        return std::make_shared<const DrawMesh>(std::move(mesh_));
    }

    DrawMesh& Raw() { return mesh_; }

private:
    void Side(Vector centre, float half, int axis, float sign)
    {
        std::array<float, 3> normal{};
        normal[axis] = sign;
        std::array<std::uint32_t, 4> corners{};
        for (int i = 0; i < 4; ++i)
        {
            std::array<float, 3> place{};
            place[axis] = sign * half;
            place[(axis + 1) % 3] = i == 1 || i == 2 ? half : -half;
            place[(axis + 2) % 3] = i >= 2 ? half : -half;
            corners[i] = Vertex(centre + Vector{place[0], place[1], place[2]}, {normal[0], normal[1], normal[2]});
        }
        // Clockwise from outside in left-handed axes.
        if (sign < 0)
            std::swap(corners[1], corners[3]);
        Triangle(corners[0], corners[1], corners[2]);
        Triangle(corners[0], corners[2], corners[3]);
    }

    DrawMesh mesh_;
};

Vector RingPoint(double along, double around)
{
    const double tube =
        0.42 + 0.05 * std::sin(9 * along + 2 * around) + 0.02 * std::sin(31 * along) * std::cos(17 * around);
    const double radius = 1.0 + tube * std::cos(around);
    return Double3{radius * std::cos(along), radius * std::sin(along), tube * std::sin(around)}.ToVector();
}

} // namespace

Mesh Ring(std::uint32_t triangles)
{
    const auto sides = static_cast<std::uint32_t>(std::lround(std::sqrt(triangles / 2.0)));
    Maker maker;
    for (std::uint32_t i = 0; i < sides; ++i)
        for (std::uint32_t j = 0; j < sides; ++j)
            maker.Vertex(RingPoint(2 * std::numbers::pi * i / sides, 2 * std::numbers::pi * j / sides), {});
    for (std::uint32_t i = 0; i < sides; ++i)
        for (std::uint32_t j = 0; j < sides; ++j)
        {
            const std::uint32_t nextI = (i + 1) % sides;
            const std::uint32_t nextJ = (j + 1) % sides;
            maker.Triangle(i * sides + j, nextI * sides + j, nextI * sides + nextJ);
            maker.Triangle(i * sides + j, nextI * sides + nextJ, i * sides + nextJ);
        }
    maker.SmoothNormals();
    return maker.Make();
}

Mesh BoxGrid(int perSide)
{
    Maker maker;
    const float step = 1.7F / static_cast<float>(perSide);
    const auto place = [&](int i) { return (static_cast<float>(i) + 0.5F) * step - 0.85F; };
    for (int x = 0; x < perSide; ++x)
        for (int y = 0; y < perSide; ++y)
            for (int z = 0; z < perSide; ++z)
                maker.Box({place(x), place(y), place(z)}, step * 0.3F);
    return maker.Make();
}

Mesh NestedBoxes(int count)
{
    Maker maker;
    for (int i = 1; i <= count; ++i)
        maker.Box({}, 0.85F * static_cast<float>(i) / static_cast<float>(count));
    return maker.Make();
}

Mesh Translucent(const Mesh& mesh)
{
    DrawMesh result = *mesh;
    result.identity = NewIdentity();
    for (std::uint32_t& color : result.color)
        color = (color & 0xFFFFFF) | 0x80000000;
    result.groups.front().translucent = true;
    return std::make_shared<const DrawMesh>(std::move(result));
}

Mesh Textured(const Mesh& mesh)
{
    auto image = std::make_shared<TextureImage>();
    image->identity = NewIdentity();
    image->width = image->height = TextureSide;
    for (std::uint32_t y = 0; y < TextureSide; ++y)
        for (std::uint32_t x = 0; x < TextureSide; ++x)
            image->pixels.push_back(0xFF000000 | (x * y & 0xFF) << 16 | (x / 2) << 8 | y / 2);
    DrawMesh result = *mesh;
    result.identity = NewIdentity();
    for (std::size_t v = 0; v < result.x.size(); ++v)
    {
        result.u.push_back(result.x[v] * 0.7F);
        result.v.push_back(result.y[v] * 0.7F);
    }
    result.groups.front().texture = image;
    return std::make_shared<const DrawMesh>(std::move(result));
}

Mesh WithEdges(const Mesh& mesh)
{
    struct Side
    {
        std::uint32_t low, high, triangle;
    };
    std::vector<Side> sides;
    for (std::uint32_t i = 0; i < mesh->indices.size(); ++i)
    {
        const auto [low, high] = std::minmax(mesh->indices[i], mesh->indices[i % 3 == 2 ? i - 2 : i + 1]);
        sides.push_back({low, high, i / 3});
    }
    std::ranges::stable_sort(sides, {}, [](const Side& s) { return std::pair{s.low, s.high}; });
    DrawMesh result = *mesh;
    result.identity = NewIdentity();
    for (const Side& side : sides)
    {
        const bool isSecond = !result.edges.empty() && result.edges.back().vertexA == side.low &&
                              result.edges.back().vertexB == side.high &&
                              result.edges.back().triangleB == DrawMesh::NoFace;
        if (isSecond)
            result.edges.back().triangleB = side.triangle;
        else
            result.edges.push_back({side.low, side.high, side.triangle, DrawMesh::NoFace});
    }
    // As a compiled mesh has them: in the order in which the triangles name them.
    std::ranges::stable_sort(result.edges, {}, &DrawMesh::Edge::triangleA);
    result.groups.front().edgeCount = static_cast<std::uint32_t>(result.edges.size());
    return std::make_shared<const DrawMesh>(std::move(result));
}

Mesh ReadObj(const std::string& path)
{
    std::ifstream file{path};
    if (!file)
        throw std::runtime_error("cannot read " + path);
    Maker maker;
    for (std::string line; std::getline(file, line);)
    {
        std::istringstream words{line};
        std::string kind;
        words >> kind;
        if (kind == "v")
        {
            Vector v;
            words >> v.x >> v.y >> v.z;
            maker.Vertex(v, {});
        }
        std::vector<std::uint32_t> corners;
        for (std::string corner; kind == "f" && words >> corner;)
            corners.push_back(static_cast<std::uint32_t>(std::stoul(corner)) - 1);
        for (std::size_t i = 2; i < corners.size(); ++i)
            maker.Triangle(corners[0], corners[i], corners[i - 1]); // files wind counter-clockwise
    }
    DrawMesh& mesh = maker.Raw();
    const Vector centre = mesh.bounds.Centre();
    const Vector size = mesh.bounds.maximum - mesh.bounds.minimum;
    const float scale = 2.6F / std::max({size.x, size.y, size.z, 1e-30F});
    mesh.bounds = {};
    for (std::size_t v = 0; v < mesh.x.size(); ++v)
    {
        const Vector moved = (Vector{mesh.x[v], mesh.y[v], mesh.z[v]} - centre) * scale;
        mesh.x[v] = moved.x;
        mesh.y[v] = moved.y;
        mesh.z[v] = moved.z;
        mesh.bounds.Include(moved);
    }
    maker.SmoothNormals();
    return maker.Make();
}

} // namespace lumora::bench
