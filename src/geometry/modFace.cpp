#include "geometry/modFace.h"

#include "geometry/ArcCos.h"
#include "geometry/Steps.h"
#include "geometry/modVector.h"

#include <cmath>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modFace"};
constexpr float AngleSumTolerance = 0.0001F * 1000;

Vector Direction(RetainedMode& root, Vector from, Vector to)
{
    return ResultOf(OnError, [&] { return root.VectorNormalize(to - from); });
}

} // namespace

Triple GetVertexTriple(VertexSpan vertices, std::int32_t index)
{
    OnError(
        [&]
        {
            if (index < 0 || static_cast<std::size_t>(index) >= vertices.size())
                throw RuntimeError{error::SubscriptOutOfRange, "modFace",
                                   "The polygon has no corner " + std::to_string(index)};
        });
    const auto at = static_cast<std::size_t>(index);
    const std::size_t last = vertices.size() - 1;
    return {vertices[at == 0 ? last : at - 1], vertices[at], vertices[at == last ? 0 : at + 1]};
}

float GetVertexAngle(RetainedMode& root, const Triple& triple)
{
    const Vector a = Direction(root, triple[1], triple[2]);
    const Vector b = Direction(root, triple[1], triple[0]);
    return static_cast<float>(ArcCos(ResultOf(OnError, [&] { return root.VectorDotProduct(a, b); })));
}

bool IsPointInPolygon(RetainedMode& root, VertexSpan vertices, Vector point, Corners corners)
{
    const bool excluded = corners == Corners::Excluded;
    OnError([&] { RequireVertices(vertices, excluded ? 3 : 1, "The polygon"); });
    if (excluded &&
        (VectorsEqual(point, vertices[0]) || VectorsEqual(point, vertices[1]) || VectorsEqual(point, vertices[2])))
        return false;
    double sum = 0;
    Vector corner = vertices.back();
    for (const Vector next : vertices)
    {
        sum += GetVertexAngle(root, {corner, point, next});
        corner = next;
    }
    return static_cast<float>(std::abs(sum - double{FullTurn})) <= AngleSumTolerance;
}

} // namespace lumora
