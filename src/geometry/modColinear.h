// Whether a corner is none: whether its middle point lies between the other two, on one line with them.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

/// The loose test: within about 11 degrees of straight on. A reversal (the outer points on one side) is not colinear,
/// nor is a side of no length. Source of errors: "modColinear".
bool IsColinear(RetainedMode& root, const Triple& triple);

/// The strict test: within about 0.8 degrees. Otherwise as IsColinear.
bool IsColinearStrict(RetainedMode& root, const Triple& triple);

} // namespace lumora
