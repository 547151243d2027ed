// The state of a drag that moves the camera.
#pragma once

#include "base/Vector.h"
#include "platform/container/Screen.h"

#include <cstdint>

namespace lumora
{

/// A place or a movement of the mouse in the control's coordinate units (twips).
struct MouseVector
{
    float x = 0;
    float y = 0;
    friend bool operator==(const MouseVector&, const MouseVector&) = default;
};

/// What NavAnchor is while there is nothing to measure from.
inline constexpr MouseVector NoAnchor{-1, -1};

struct MouseDrag
{
    bool Navigating = false;           ///< from the press on
    std::int16_t NavButton = 0;        ///< the button that started the drag; 0: there is none
    std::int16_t NavShift = 0;         ///< modifiers of that press: 1 Shift, 2 Ctrl, 4 Alt, summed
    std::int32_t ActiveNavControl = 0; ///< the on-screen control that was grabbed; 0: none
    MouseVector NavAnchor = NoAnchor;  ///< where the mouse was, as the next movement counts
    MouseVector NavDelta;              ///< movement not yet used: anchor minus position
    ScreenPoint PressCursor;           ///< where the cursor was pressed, screen pixels
    bool CursorHidden = false;         ///< this drag has taken the cursor away
    Vector SavedSceneOrigin;           ///< SceneOriginX, Y and Z at the last press
    std::uint32_t LastMoveTime = 0;    ///< of the last move that counted, milliseconds
};

} // namespace lumora
