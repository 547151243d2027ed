// Clipping in double precision, for the few primitives that need it.
#pragma once

#include "platform/drivers/rgb/Frame.h"

#include <array>
#include <cstdint>

namespace lumora::rgb
{

/// A vertex in clip space with all that is interpolated.
struct ClipVertex
{
    Double4 position;
    ColorBlock color{};
    ColorBlock highlight{};
    CoordinateBlock coordinates{};
    const ScreenPosition* placed = nullptr; ///< where the vertex stage put it, so that unclipped neighbours meet it
};

/// Clipping a triangle by six planes leaves at most nine corners; rounding may add one.
struct ClipPolygon
{
    std::array<ClipVertex, 12> corners;
    int count = 0;
};

bool IsFinite(const Double4& position);

/// Cuts to the view volume; no corner is left where nothing is.
void ClipTriangle(ClipPolygon& polygon);

/// False where nothing is left of the line.
bool ClipLine(ClipVertex& from, ClipVertex& to);

bool IsInside(const Double4& position);

/// The place on the screen, rounded. False when it has none within the guard band.
bool ToScreen(const PassState& pass, const Double4& position, ScreenPosition& screen);

} // namespace lumora::rgb
