// The pixels of a line in whole numbers, as Driver.h says which they are.
#pragma once

#include "platform/drivers/rgb/Frame.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace lumora::rgb
{

inline std::int64_t FloorDivided(std::int64_t dividend, std::int64_t divisor)
{
    const std::int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

/// One pixel for each whole place along the major axis from `first` to before `stop`.
///
/// Across it, that pixel is Numerator / length, rounded down. A step along adds a whole number of 1/256 pixels times
/// the length to the exact numerator, so that what lies below 1/256 pixel never counts.
struct LineSteps
{
    bool isXMajor;
    bool isPoint;             ///< too short: the pixel nearest to its start
    std::int64_t from;        ///< where it starts along the major axis, 1/256 pixel
    std::int64_t way;         ///< along the major axis, signed
    std::int64_t beside;      ///< where it starts across, and half a pixel
    std::int64_t first, stop; ///< whole pixels
    std::int64_t length;      ///< above 0
    std::int64_t rise;        ///< across, over the length; -length to length

    /// Places count from (`left`, `top`), whole pixels.
    LineSteps(const ScreenPosition& start, const ScreenPosition& end, int left, int top)
    {
        const std::int64_t dx = std::int64_t{end.x} - start.x;
        const std::int64_t dy = std::int64_t{end.y} - start.y;
        const std::int64_t x = start.x - left * SubPixels;
        const std::int64_t y = start.y - top * SubPixels;
        isXMajor = std::abs(dx) >= std::abs(dy);
        from = isXMajor ? x : y;
        way = isXMajor ? dx : dy;
        beside = (isXMajor ? y : x) + SubPixels / 2;
        first = (std::min(from, from + way) + SubPixels - 1) >> SubPixelShift;
        stop = (std::max(from, from + way) + SubPixels - 1) >> SubPixelShift;
        isPoint = first == stop;
        if (isPoint)
        {
            first = (from + SubPixels / 2) >> SubPixelShift;
            stop = first + 1;
        }
        length = isPoint ? 1 : std::abs(way);
        rise = isPoint ? 0 : (isXMajor ? dy : dx) * (way < 0 ? -1 : 1);
    }

    std::int64_t Numerator(std::int64_t along) const
    {
        return (beside * length + rise * (along * SubPixels - from)) >> SubPixelShift;
    }
    std::int64_t Across(std::int64_t along) const { return FloorDivided(Numerator(along), length); }

    /// A rectangle with the major axis lying from left to right.
    PixelRect Turned(const PixelRect& area) const
    {
        return isXMajor ? area : PixelRect{area.top, area.left, area.bottom, area.right};
    }
};

} // namespace lumora::rgb
