#include "geometry/modColinear.h"

#include "geometry/Steps.h"

#include <cmath>

namespace lumora
{

namespace
{

constexpr Trap OnError{"modColinear"};

// Of the directions from the middle point to the other two: -1 when it lies between them.
float CosineAtMiddle(RetainedMode& root, const Triple& triple)
{
    const Vector before = ResultOf(OnError, [&] { return root.VectorNormalize(triple[0] - triple[1]); });
    const Vector after = ResultOf(OnError, [&] { return root.VectorNormalize(triple[2] - triple[1]); });
    return ResultOf(OnError, [&] { return root.VectorDotProduct(before, after); });
}

} // namespace

bool IsColinear(RetainedMode& root, const Triple& triple)
{
    return CosineAtMiddle(root, triple) < -0.98F;
}

bool IsColinearStrict(RetainedMode& root, const Triple& triple)
{
    return std::abs(CosineAtMiddle(root, triple) + 1) < 0.0001F;
}

} // namespace lumora
