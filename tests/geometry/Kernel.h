// A root object for the kernel, and what a mesh amounts to: edges, area and volume, summed up from its polygons.
#pragma once

#include "base/RuntimeError.h"
#include "platform/scenegraph/RetainedMode.h"

#include <gtest/gtest.h>
#include <map>

namespace lumora::test
{

inline RetainedMode& Root()
{
    static RetainedMode root{std::make_shared<DriverList>()};
    return root;
}

/// What `call` raised, as "number source"; empty when nothing.
template<typename Call>
std::string RaisedBy(Call&& call)
{
    try
    {
        call();
    }
    catch (const RuntimeError& failure)
    {
        return std::to_string(failure.Number()) + " " + failure.Source();
    }
    return {};
}

using Polygon = std::vector<Vector>;

/// Each face's corners as vertex indices.
inline std::vector<std::vector<std::size_t>> IndicesOf(const MeshGeometry& geometry)
{
    const std::size_t stride = geometry.normals.empty() ? 1 : 2;
    std::vector<std::vector<std::size_t>> faces;
    for (std::size_t at = 0; geometry.faceList[at] != 0;)
    {
        auto& face = faces.emplace_back(static_cast<std::size_t>(geometry.faceList[at++]));
        for (std::size_t& vertex : face)
        {
            vertex = static_cast<std::size_t>(geometry.faceList[at]);
            at += stride;
        }
    }
    return faces;
}

inline std::vector<Polygon> PolygonsOf(const MeshBuilder& mesh)
{
    const MeshGeometry geometry = mesh.GetGeometry();
    std::vector<Polygon> polygons;
    for (const auto& face : IndicesOf(geometry))
    {
        Polygon& polygon = polygons.emplace_back();
        for (const std::size_t vertex : face)
            polygon.push_back(geometry.vertices[vertex]);
    }
    return polygons;
}

/// Twice the area, along the normal by which a face is seen clockwise.
inline Double3 VectorArea(const Polygon& polygon)
{
    Double3 sum;
    for (std::size_t i = 2; i < polygon.size(); ++i)
        sum = sum + Cross(Double3{polygon[i - 1]} - polygon[0], Double3{polygon[i]} - polygon[0]);
    return sum * 0.5;
}

inline double AreaOf(const MeshBuilder& mesh)
{
    double area = 0;
    for (const Polygon& polygon : PolygonsOf(mesh))
        area += Length(VectorArea(polygon));
    return area;
}

/// By the divergence theorem: positive when a closed mesh looks outward.
inline double VolumeOf(const MeshBuilder& mesh)
{
    double volume = 0;
    for (const Polygon& polygon : PolygonsOf(mesh))
        for (std::size_t i = 2; i < polygon.size(); ++i)
            volume += Dot(Double3{polygon[0]}, Cross(Double3{polygon[i - 1]}, Double3{polygon[i]})) / 6;
    return volume;
}

/// Vertices - edges + faces of a closed mesh; nothing when an edge does not stand exactly twice, in both directions.
inline std::optional<std::ptrdiff_t> EulerNumber(const MeshBuilder& mesh)
{
    const MeshGeometry geometry = mesh.GetGeometry();
    const auto faces = IndicesOf(geometry);
    std::map<std::pair<std::size_t, std::size_t>, int> edges;
    for (const auto& face : faces)
        for (std::size_t i = 0; i < face.size(); ++i)
            ++edges[{face[i], face[(i + 1) % face.size()]}];
    for (const auto& [edge, count] : edges)
        if (count != 1 || edges.count({edge.second, edge.first}) != 1)
            return std::nullopt;
    return static_cast<std::ptrdiff_t>(geometry.vertices.size()) - static_cast<std::ptrdiff_t>(edges.size() / 2) +
           static_cast<std::ptrdiff_t>(faces.size());
}

inline bool IsNear(Vector a, Vector b, double tolerance)
{
    return Length(Double3{a} - Double3{b}) <= tolerance;
}

} // namespace lumora::test
