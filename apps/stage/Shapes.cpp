// Every face is wound clockwise as seen from the side that its normals point to.
#include "stage/Shapes.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace lumora::stage
{

namespace
{

constexpr double Turn = 2 * std::numbers::pi;

struct Corner
{
    std::int32_t position;
    std::int32_t normal;
};

// Left-handed, clockwise: the face looks along (b - a) x (c - a).
bool LooksAlongNormals(const Shape& shape, std::span<const Corner> corners)
{
    Double3 area;
    Double3 normal;
    const Double3 first = shape.positions[static_cast<std::size_t>(corners[0].position)];
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        normal = normal + shape.normals[static_cast<std::size_t>(corners[i].normal)];
        if (i >= 2)
            area = area + Cross(Double3{shape.positions[static_cast<std::size_t>(corners[i - 1].position)]} - first,
                                Double3{shape.positions[static_cast<std::size_t>(corners[i].position)]} - first);
    }
    return Dot(area, normal) >= 0;
}

// Appends a face before the list's end mark, the right way round.
void AddFace(Shape& shape, std::span<const Corner> corners)
{
    if (!shape.faceList.empty())
        shape.faceList.pop_back();
    shape.faceList.push_back(static_cast<std::int32_t>(corners.size()));
    const bool forward = LooksAlongNormals(shape, corners);
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const Corner& corner = corners[forward ? i : corners.size() - 1 - i];
        shape.faceList.push_back(corner.position);
        shape.faceList.push_back(corner.normal);
    }
    shape.faceList.push_back(0);
}

// A face with a normal of its own, away from the origin.
void AddFlatFace(Shape& shape, std::span<const std::int32_t> positions)
{
    const auto at = [&](std::size_t i) { return Double3{shape.positions[static_cast<std::size_t>(positions[i])]}; };
    Double3 normal = Normalized(Cross(at(1) - at(0), at(2) - at(0)));
    if (Dot(normal, at(0) + at(1) + at(2)) < 0)
        normal = -normal;
    const auto index = static_cast<std::int32_t>(shape.normals.size());
    shape.normals.push_back(normal.ToVector());
    std::vector<Corner> corners;
    for (const std::int32_t position : positions)
        corners.push_back({position, index});
    AddFace(shape, corners);
}

Vector Circle(double radius, double part, double y)
{
    return {static_cast<float>(radius * std::cos(Turn * part)), static_cast<float>(y),
            static_cast<float>(radius * std::sin(Turn * part))};
}

} // namespace

Shape MakeGrid(int columns, int rows, const std::function<SurfacePoint(double u, double v)>& surface)
{
    Shape shape;
    for (int row = 0; row <= rows; ++row)
        for (int column = 0; column <= columns; ++column)
        {
            const double u = static_cast<double>(column) / columns;
            const double v = static_cast<double>(row) / rows;
            const SurfacePoint point = surface(u, v);
            shape.positions.push_back(point.position);
            shape.normals.push_back(point.normal);
            shape.uv.push_back(static_cast<float>(u));
            shape.uv.push_back(static_cast<float>(v));
        }
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
        {
            const int a = row * (columns + 1) + column;
            const int c = a + columns + 2;
            const std::array<Corner, 4> corners{Corner{a, a}, {a + 1, a + 1}, {c, c}, {c - 1, c - 1}};
            AddFace(shape, corners);
        }
    return shape;
}

Shape MakeSphere(float radius, int columns, int rows)
{
    return MakeGrid(columns, rows,
                    [&](double u, double v)
                    {
                        const double angle = std::numbers::pi * v;
                        const Vector normal = Circle(std::sin(angle), u, std::cos(angle));
                        return SurfacePoint{normal * radius, normal};
                    });
}

Shape MakeLathe(const std::vector<Vector>& profile, int columns)
{
    const auto last = static_cast<int>(profile.size()) - 1;
    const auto surface = [&](double u, double v)
    {
        const auto at = static_cast<int>(std::lround(v * last));
        const Vector here = profile[static_cast<std::size_t>(at)];
        Vector before = profile[static_cast<std::size_t>(std::max(at - 1, 0))];
        Vector after = profile[static_cast<std::size_t>(std::min(at + 1, last))];
        before = before == here ? here : before;
        const Vector along = after - before;
        const double length = std::hypot(along.x, along.y);
        const double outward = along.y / length;
        return SurfacePoint{Circle(here.x, u, here.y), Circle(outward, u, -along.x / length)};
    };
    return MakeGrid(columns, last, surface);
}

Shape MakeTube(const std::function<Vector(double)>& curve, float radius, int around, int along)
{
    constexpr double Step = 1e-3;
    const auto surface = [&](double u, double v)
    {
        const Double3 centre = curve(v);
        const Double3 forward = Normalized(Double3{curve(v + Step)} - Double3{curve(v - Step)});
        // The curve's bend gives a direction that never jumps on the curves used here.
        const Double3 bend = Double3{curve(v + Step * 20)} + Double3{curve(v - Step * 20)} - centre * 2;
        const Double3 side = Normalized(Cross(forward, bend));
        const Double3 other = Cross(side, forward);
        const Double3 normal = side * std::cos(Turn * u) + other * std::sin(Turn * u);
        return SurfacePoint{(centre + normal * radius).ToVector(), normal.ToVector()};
    };
    return MakeGrid(around, along, surface);
}

Shape MakeCrystal(float radius, float height, float tip)
{
    constexpr int Sides = 6;
    Shape shape;
    for (const auto& [r, y] : {std::pair{radius * 0.8F, -height}, {radius, height - tip}})
        for (int i = 0; i < Sides; ++i)
            shape.positions.push_back(Circle(r, static_cast<double>(i) / Sides, y));
    shape.positions.push_back({0, height, 0});
    for (std::int32_t i = 0; i < Sides; ++i)
    {
        const std::int32_t next = (i + 1) % Sides;
        AddFlatFace(shape, std::array{i, next, next + Sides, i + Sides});
        AddFlatFace(shape, std::array{i + Sides, next + Sides, 2 * Sides});
    }
    AddFlatFace(shape, std::array{0, 1, 2, 3, 4, 5});
    return shape;
}

Shape MakeIcosahedron(float radius)
{
    constexpr double Latitude = 0.4636476090008061; // atan(1 / 2): of the two rings of five corners
    Shape shape;
    shape.positions.push_back({0, radius, 0});
    for (int ring = 0; ring < 2; ++ring)
        for (int i = 0; i < 5; ++i)
            shape.positions.push_back(Circle(radius * std::cos(Latitude), (i + ring * 0.5) / 5,
                                             (ring == 0 ? 1 : -1) * radius * std::sin(Latitude)));
    shape.positions.push_back({0, -radius, 0});
    for (std::int32_t i = 0; i < 5; ++i)
    {
        const std::int32_t next = (i + 1) % 5;
        AddFlatFace(shape, std::array{0, 1 + i, 1 + next});
        AddFlatFace(shape, std::array{1 + i, 1 + next, 6 + i});
        AddFlatFace(shape, std::array{6 + i, 6 + next, 1 + next});
        AddFlatFace(shape, std::array{11, 6 + i, 6 + next});
    }
    return shape;
}

Shape MirroredBelow(Shape shape)
{
    for (Vector& position : shape.positions)
        position.y = -position.y;
    return shape;
}

Shape Moved(Shape shape, Vector by)
{
    for (Vector& position : shape.positions)
        position = position + by;
    return shape;
}

std::shared_ptr<MeshBuilder> ToMesh(const Shape& shape)
{
    auto mesh = MeshBuilder::Make();
    mesh->AddFaces(shape.positions, shape.normals, shape.faceList);
    if (!shape.uv.empty())
        mesh->SetTextureCoordinates(shape.uv);
    return mesh;
}

} // namespace lumora::stage
