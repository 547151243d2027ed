#include "geometry/modBounding.h"

#include "geometry/Steps.h"

namespace lumora
{

namespace
{

constexpr Trap OnError{"modBounding"};

void Extend(float& minimum, float& maximum, float coordinate)
{
    if (coordinate < minimum)
        minimum = coordinate;
    else if (coordinate > maximum)
        maximum = coordinate;
}

} // namespace

BoundingBox GetBoundingBox(VertexSpan vertices)
{
    OnError([&] { RequireVertices(vertices, 1, "The list to be bounded"); });
    BoundingBox box{vertices.front(), vertices.front()};
    for (const Vector vertex : vertices.subspan(1))
    {
        Extend(box.minimum.x, box.maximum.x, vertex.x);
        Extend(box.minimum.y, box.maximum.y, vertex.y);
        Extend(box.minimum.z, box.maximum.z, vertex.z);
    }
    return box;
}

} // namespace lumora
