// Curves through all of their control points, taken from the scene graph's animation.
#pragma once

#include "geometry/Records.h"
#include "platform/scenegraph/RetainedMode.h"

namespace lumora
{

struct NSplineOptions
{
    bool closed = false;      ///< the last key leads on to the first, and its tangents know
    bool linear = false;      ///< straight between keys, otherwise a spline
    bool useTimes = false;    ///< keys at `times`, otherwise spread evenly over 0..1
    std::vector<float> times; ///< of the control points; read when useTimes is set
};

/// `sampleCount` places, at even times from 0 to an end, of something that passes each control point at its key's time.
///
/// The end is 1, or with times the last key time (as they come) that exceeded the end so far, rounded to a whole
/// number; so samples may stop short of the last key or go beyond it, where an open curve stands still and a closed one
/// goes back to its start. A closed curve without times ends at the last key: repeat the first point to come home.
///
/// Errors, with source "modNSpline": 9 without control points, for fewer times than points or a negative count; 7
/// beyond MaximumVertices; 6 for a single point without times, a single sample or an end beyond a 32-bit number; what
/// the animation raises for numbers that are not finite.
VertexList EvaluateNSpline(RetainedMode& root, VertexSpan points, std::int32_t sampleCount,
                           const NSplineOptions& options);

} // namespace lumora
