#include "geometry/ArcCos.h"

#include <cmath>

namespace lumora
{

double ArcCos(double x) noexcept
{
    constexpr float Snapping = 0.00001F;
    constexpr float HalfTurn = 3.14159274101257F;

    if (static_cast<float>(std::abs(x - 1)) <= Snapping)
        return 0;
    if (static_cast<float>(std::abs(x + 1)) <= Snapping)
        return HalfTurn;
    if (!(std::abs(x) < 1))
        return 0;
    return std::atan(-x / std::sqrt(1 - x * x)) + 2 * std::atan(1.0);
}

} // namespace lumora
