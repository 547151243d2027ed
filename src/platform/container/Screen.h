// The screen, its cursor and its clock.
#pragma once

#include "base/Variant.h"
#include "platform/pictures/PixelView.h"

#include <cstdint>
#include <string>

namespace lumora
{

struct ScreenPoint
{
    int x = 0;
    int y = 0;
    friend bool operator==(const ScreenPoint&, const ScreenPoint&) = default;
};

/// Pixels count from the top-left of the screen.
class Screen : public Object
{
public:
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    virtual double TwipsPerPixelX() const = 0;
    virtual double TwipsPerPixelY() const = 0;

    virtual ScreenPoint GetCursorPos() const = 0;
    virtual void SetCursorPos(int x, int y) = 0;

    /// Adds 1 (true) or -1 to the display counter and answers it; the cursor is visible while it is not negative.
    virtual int ShowCursor(bool show) = 0;

    /// Milliseconds of a clock that never goes back (it may wrap).
    virtual std::uint32_t Milliseconds() const = 0;

    /// Returns at the start of the next vertical blank.
    virtual void WaitForVerticalBlank() = 0;

    /// A modal message with an OK button.
    virtual void MessageBox(const std::string& text, const std::string& title) = 0;

    /// A copy of `source` to the screen itself, over every window, clipped to the screen.
    virtual void Present(const PixelView& source, const PixelRect& destination) = 0;
};

} // namespace lumora
