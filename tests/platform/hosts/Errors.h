// Asking an action for its error.
#pragma once

#include "platform/automation/RuntimeError.h"

namespace lumora
{

/// The number of the RuntimeError that `action` raises, or 0 when it raises none.
std::int32_t ErrorOf(const auto& action)
{
    try
    {
        action();
        return 0;
    }
    catch (const RuntimeError& failure)
    {
        return failure.Number();
    }
}

} // namespace lumora
