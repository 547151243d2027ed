// Surfaces of the built-in scene: positions with exact normals, from formulas.
#pragma once

#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <functional>
#include <vector>

namespace lumora::stage
{

/// Polygons whose corners have a normal each.
struct Shape
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<std::int32_t> faceList; ///< packed, as MeshBuilder::AddFaces takes it
    std::vector<float> uv;              ///< u, v of every position; may be empty
};

struct SurfacePoint
{
    Vector position;
    Vector normal;
};

/// A grid of quadrilaterals over u, v in 0..1.
Shape MakeGrid(int columns, int rows, const std::function<SurfacePoint(double u, double v)>& surface);

Shape MakeSphere(float radius, int columns, int rows);

/// An axis of revolution along y: `profile` runs from bottom to top as (radius, height), its corners rounded in the
/// light over their neighbours unless a point is given twice.
Shape MakeLathe(const std::vector<Vector>& profile, int columns);

/// A tube of `radius` around a closed or open curve over 0..1.
Shape MakeTube(const std::function<Vector(double)>& curve, float radius, int around, int along);

/// A convex solid with flat faces: six-sided column between two points of the y axis, its top a point.
Shape MakeCrystal(float radius, float height, float tip);

/// Twenty triangles.
Shape MakeIcosahedron(float radius);

/// The shape below the plane y = 0, lit as the one above it: what a mirror on the ground shows.
Shape MirroredBelow(Shape shape);

Shape Moved(Shape shape, Vector by);

std::shared_ptr<MeshBuilder> ToMesh(const Shape& shape);

} // namespace lumora::stage
