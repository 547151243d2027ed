// Profiles revolved about an axis, swept along a path, or both; and the faces that close a tube's ends.
#pragma once

#include "geometry/modNSpline.h"

namespace lumora
{

/// How a path's control points become its samples.
enum class CurveMethod : std::int32_t
{
    Bezier = 0,    ///< one curve of degree n - 1
    KeyFramed = 1, ///< through every point, straight or as a spline (NSplineOptions); so is any other value
    BSpline = 2,   ///< of order 3, all weights 1
};

/// What to sweep, and how. A path is there with two control points or more.
struct Sweep
{
    VertexList profile;                   ///< an open or closed line of points, around the origin when there is a path
    bool startAlongProfileNormal = false; ///< the first row faces as the profile does, not along the path
    float turnFraction = 0;               ///< full turns about the axis from the first sample to the last
    Vector axis;                          ///< through the origin. All 0: z, or with a path its own direction (a twist)
    VertexList path;                      ///< control points; fewer than two are no path
    std::int32_t steps = 1;               ///< intervals along the sweep, 1 or more; it has steps + 1 samples
    bool reverse = false;                 ///< turn every face round
    float endScale = 1;                   ///< with a path: size reached along it, by equal factors of 0.01 or more
    CurveMethod curveMethod = CurveMethod::Bezier;
    bool caps = false;           ///< close the ends of a closed profile
    NSplineOptions curve;        ///< for CurveMethod::KeyFramed
    bool wrap = false;           ///< the profile is a ring: its last point leads to the first
    bool dropCoincident = false; ///< leave out repeated corners of quads (poles)
};

/// A new mesh with the swept surface: vertex (profile point j, sample s) stands at j · (steps + 1) + s, joined by quads
/// as in GenerateSurfaceFaces. A profile whose polygon normal points along the path, or whose points run from top to
/// bottom outside the axis of a positive turn, gives faces that look outward.
///
/// With a path, each row of the tube is the row before it, scaled by endScale^(1 / steps) (so the first one is scaled
/// once already) and turned by the smallest rotation into the direction from the sample before. Rows of profiles with
/// one or two points are neither turned nor scaled. Coinciding samples leave a row as the one before.
///
/// Caps close the two ends of a tube when the profile is closed (wrap, or the last point equals the first): flat rings
/// as one face when convex, otherwise by TriangulateCap; all look out of the tube, into it with `reverse`. Ends that
/// coincide (full turns, paths that come home) need none. Cap corners are vertices of their own: OptimizeMesh joins
/// them.
///
/// Errors, with source "modSweep": 9 for an empty profile or negative steps, 11 for steps of 0, 7 when profile points
/// times samples are beyond MaximumVertices, 5 for a negative or NaN end scale without a meaning, 6 for an end scale
/// beyond Singles, what the curves raise, and RMBadValue for coordinates that are, or become, not finite.
std::shared_ptr<MeshBuilder> CreateSweptMesh(RetainedMode& root, const Sweep& sweep);

struct PlacedProfile
{
    VertexList vertices;
    Vector normal; ///< GetPolygonNormal of them
};

/// The profile scaled by `scale` and turned to face from `previous` towards `point`; it stays around the origin.
/// Source of errors: "modSweep".
PlacedProfile PlaceProfile(RetainedMode& root, VertexSpan profile, Vector point, Vector previous, float scale);

/// The profile turned about the origin by the smallest rotation that takes its polygon normal to the unit vector
/// `direction`; opposite ones by half a turn about an axis square to both. A zero direction, or a profile that encloses
/// no area, turns nothing. Source of errors: "modSweep".
VertexList OrientProfile(RetainedMode& root, VertexSpan profile, Vector direction);

/// Adds faces that cover the polygon to the mesh: triangles, by clipping ears, and one last face of what cannot be
/// clipped (nothing, for polygons that do not cross themselves). Corners keep the polygon's order, so that the faces'
/// areas, as vectors, add up to the polygon's and no edge is torn. Ears have the polygon's winding. Corners that count
/// as straight (IsColinear, IsColinearStrict) are cut off whichever way they bend: their triangles are thin, or without
/// area, and may face the other way. Nothing is added for fewer than three points.
///
/// Takes about n log n time. Polygons that are made to defeat the search end as one face once it has taken
/// MaximumCapWork comparisons. Errors, with source "modSweep": 9 for an empty polygon, and what the mesh raises.
void TriangulateCap(RetainedMode& root, VertexSpan polygon, MeshBuilder& mesh);

/// Comparisons with an ear: a few seconds' worth.
inline constexpr std::int64_t MaximumCapWork = 200'000'000;

} // namespace lumora
