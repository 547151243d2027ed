// The frame of every handler that the container calls.
#pragma once

#include "viewport/Viewport.h"

#include <utility>

namespace lumora
{

/// Runs a step of a handler. A failure halts the control, raises nothing and returns false; the container's log names
/// the handler, and the property whose value the step loads or saves.
template<typename Step>
bool Viewport::Handle(const char* handler, std::string_view property, Step&& step)
{
    ContainingTrap trap{[&](const RuntimeError& failure) { HaltAfter(handler, property, failure); }};
    return trap(std::forward<Step>(step));
}

template<typename Step>
bool Viewport::Handle(const char* handler, Step&& step)
{
    return Handle(handler, {}, std::forward<Step>(step));
}

} // namespace lumora
