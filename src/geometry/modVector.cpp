#include "geometry/modVector.h"

#include "base/Numbers.h"
#include "geometry/Steps.h"

#include <cmath>

namespace lumora
{

namespace
{

constexpr const char* Source = "modVector";
constexpr float Tolerance = 0.0001F;

bool Near(float a, float b)
{
    return static_cast<float>(std::abs(double{a} - double{b})) < Tolerance;
}

} // namespace

bool VectorsEqual(Vector a, Vector b)
{
    return VectorComponentsEqual(a.x, a.y, a.z, b.x, b.y, b.z);
}

bool VectorComponentsEqual(float x1, float y1, float z1, float x2, float y2, float z2)
{
    return Near(x1, x2) && Near(y1, y2) && Near(z1, z2);
}

Vector RotateVectorFraction(RetainedMode& root, Vector source, std::int32_t step, std::int32_t stepCount, Vector axis,
                            float turnFraction)
{
    return NamingErrors(Source,
                        [&]
                        {
                            Vector rotated;
                            if (source != Vector{})
                            {
                                const double part = Divide(step, stepCount);
                                const float angle = ToSingle(part * double{FullTurn} * double{turnFraction});
                                rotated = root.VectorRotate(source, axis, angle);
                            }
                            return root.VectorScale(rotated, root.VectorModulus(source));
                        });
}

} // namespace lumora
