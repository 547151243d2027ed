#include "geometry/modConvexity.h"

#include "geometry/Steps.h"
#include "geometry/modFace.h"
#include "geometry/modNormal.h"

#include <cmath>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modConvexity"};

bool Within(float a, float b, float tolerance)
{
    return static_cast<float>(std::abs(double{a} - double{b})) <= tolerance;
}

} // namespace

bool IsPolygonConvex(RetainedMode& root, VertexSpan vertices, Flatness flatness)
{
    const float tolerance = flatness == Flatness::Loose ? 0.01F : 0.001F;
    const Vector overall = ResultOf(OnError, [&] { return GetPolygonNormal(root, vertices); });
    for (std::size_t i = 0; i < vertices.size(); ++i)
    {
        const Vector local = ResultOf(
            OnError, [&] { return GetTriangleNormal(root, GetVertexTriple(vertices, static_cast<std::int32_t>(i))); });
        if (!Within(local.x, overall.x, tolerance) || !Within(local.y, overall.y, tolerance) ||
            !Within(local.z, overall.z, tolerance))
            return false;
    }
    return true;
}

} // namespace lumora
