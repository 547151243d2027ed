// Comparing vectors with a tolerance, and turning them by a part of a turn.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// Whether every component differs by less than 0.0001. NaN equals nothing.
bool VectorsEqual(Vector a, Vector b);

/// The same for separate coordinates.
bool VectorComponentsEqual(float x1, float y1, float z1, float x2, float y2, float z2);

/// `source` turned about `axis` (through the origin) by `step` / `stepCount` of `turnFraction` full turns, its length
/// kept. A zero vector is not turned; a zero axis turns nothing.
///
/// Errors, with source "modVector": 11 for a `stepCount` of 0 (6 when `step` is 0 as well), 6 for an angle that is no
/// Single, and what the vector operations raise.
Vector RotateVectorFraction(RetainedMode& root, Vector source, std::int32_t step, std::int32_t stepCount, Vector axis,
                            float turnFraction);

} // namespace lumora
