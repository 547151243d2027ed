// The angle of a cosine.
#pragma once

namespace lumora
{

/// The angle, 0..π radians, whose cosine is `x`. A cosine within 0.00001 of 1 or -1, on either side, counts as that
/// value; one farther out, or NaN, has no angle and gives 0. Never fails.
double ArcCos(double x) noexcept;

} // namespace lumora
