// The box around a list of vertices.
#pragma once

#include "geometry/Records.h"

namespace lumora
{

/// The smallest box, its sides parallel to the axes, that holds all vertices. Error 9 for an empty list; source
/// "modBounding".
BoundingBox GetBoundingBox(VertexSpan vertices);

} // namespace lumora
