// Which pixels a primitive covers, and its attributes there. Positions are whole numbers of 1/256 pixel, so coverage
// is exact: triangles that share an edge neither gap nor overlap.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/reference/Vertex.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

namespace lumora::reference
{

/// A vertex on the screen.
struct ScreenVertex
{
    std::int64_t x = 0; ///< device coordinates in 1/256 pixel
    std::int64_t y = 0;
    double depth = 0;    ///< 0..1
    double inverseW = 0; ///< above 0
    Attributes attributes;
};

using ScreenTriangle = std::array<ScreenVertex, 3>;

/// One pixel of a primitive.
struct Fragment
{
    int x = 0;
    int y = 0;
    double depth = 0;
    Attributes attributes;
    // How texture coordinates change per pixel to the right and down. 0 on lines and points.
    double uPerX = 0;
    double vPerX = 0;
    double uPerY = 0;
    double vPerY = 0;
};

using FragmentSink = std::function<void(const Fragment&)>;

/// Nothing where the vertex has no place on the screen (w not above 0, or a number that is not finite or too large).
std::optional<ScreenVertex> ToScreen(const PassState& pass, const ClipVertex& vertex);

/// Twice the area: above 0 for a triangle that is clockwise on the screen, 0 for one without area.
std::int64_t SignedArea(const ScreenTriangle& triangle);

void RasterizeTriangle(const ScreenTriangle& triangle, const PixelRect& area, const FragmentSink& sink);
void RasterizeLine(const ScreenVertex& start, const ScreenVertex& end, const PixelRect& area, const FragmentSink& sink);
void RasterizePoint(const ScreenVertex& point, const PixelRect& area, const FragmentSink& sink);

} // namespace lumora::reference
