// Pieces of the built-in scene that are made with the geometry kernel: turned, swept and put together.
#pragma once

#include "stage/Shapes.h"

namespace lumora::stage
{

/// A vase, 1.3 units high, standing on the origin: a curve revolved about y, hollow.
Shape MakeVase();

/// A horn that rises from the origin: a star swept along a bent path, turning and shrinking, with its ends closed.
Shape MakeHorn();

/// A playing piece standing on the origin: a disc, a frustum of a cone and a sphere.
Shape MakePawn();

} // namespace lumora::stage
