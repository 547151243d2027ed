#include "geometry/modNormal.h"

#include "geometry/Steps.h"

namespace lumora
{

namespace
{

constexpr Trap OnError{"modNormal"};

Vector UnlessZeroNormalized(RetainedMode& root, Vector normal)
{
    if (normal == Vector{})
        return normal;
    return ResultOf(OnError, [&] { return root.VectorNormalize(normal); });
}

} // namespace

Vector GetTriangleNormal(RetainedMode& root, VertexSpan vertices)
{
    OnError([&] { RequireVertices(vertices, 3, "The triangle"); });
    const Vector first = vertices[1] - vertices[0];
    const Vector second = vertices[2] - vertices[1];
    return UnlessZeroNormalized(root, ResultOf(OnError, [&] { return root.VectorCrossProduct(first, second); }));
}

Vector GetPolygonNormal(RetainedMode& root, VertexSpan vertices)
{
    OnError([&] { RequireVertices(vertices, 1, "The polygon"); });
    Vector normal;
    Vector previous = vertices.back();
    for (const Vector vertex : vertices)
    {
        normal = normal + ResultOf(OnError, [&] { return root.VectorCrossProduct(previous, vertex); });
        previous = vertex;
    }
    return UnlessZeroNormalized(root, normal);
}

} // namespace lumora
