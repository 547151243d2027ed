// The frame of every handler that the container calls.
#pragma once

#include "viewport/Viewport.h"

#include <utility>

namespace lumora
{

/// Runs a handler's step; a failure halts the control quietly and answers false, and the handler ends.
template<typename Step>
bool Viewport::Handle(Step&& step)
{
    ContainingTrap trap{[this](const RuntimeError& failure) { HaltViewport(failure.Number(), failure.Description()); }};
    return trap(std::forward<Step>(step));
}

} // namespace lumora
