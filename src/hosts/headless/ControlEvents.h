// What the host tells a control: the events of its window.
#pragma once

#include <cstdint>

namespace lumora::headless
{

/// An adapter of the control implements these and is attached to the host. Buttons are 1 left, 2 right, 4 middle: one
/// of them for presses and releases, the sum of those held for moves. Shift is the sum of 1 Shift, 2 Ctrl, 4 Alt.
/// Positions count from the client area's top-left, in the window's scale units. What an implementation throws leaves
/// the host's call as it came.
struct ControlEvents
{
    virtual ~ControlEvents() = default;

    virtual void Show() = 0;
    virtual void Paint() = 0;
    virtual void Resize() = 0;
    virtual void Click() = 0;
    virtual void DblClick() = 0;
    virtual void MouseDown(std::int16_t button, std::int16_t shift, float x, float y) = 0;
    virtual void MouseMove(std::int16_t button, std::int16_t shift, float x, float y) = 0;
    virtual void MouseUp(std::int16_t button, std::int16_t shift, float x, float y) = 0;
    virtual void KeyDown(std::int16_t code, std::int16_t shift) = 0;
    virtual void KeyUp(std::int16_t code, std::int16_t shift) = 0;
    virtual void KeyPress(std::int16_t ascii) = 0;
    virtual void Terminate() = 0;
};

} // namespace lumora::headless
