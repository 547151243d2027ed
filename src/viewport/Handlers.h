// The frame of every handler that the container calls.
#pragma once

#include "viewport/Viewport.h"

#include <utility>

namespace lumora
{

/// Runs the handler's one step; a failure halts the control and ends the handler quietly.
template<typename Step>
void Viewport::Handle(Step&& step)
{
    ContainingTrap trap{[this](const RuntimeError& failure) { HaltViewport(failure.Number(), failure.Description()); }};
    trap(std::forward<Step>(step));
}

} // namespace lumora
