// Asking an action for its error.
#pragma once

#include "base/RuntimeError.h"

#include <gtest/gtest.h>

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

/// The RuntimeError that `action` raises; an error without number when it raises none, which fails the test.
RuntimeError FailureOf(const auto& action)
{
    try
    {
        action();
    }
    catch (const RuntimeError& failure)
    {
        return failure;
    }
    ADD_FAILURE() << "no error";
    return RuntimeError{0, "", ""};
}

} // namespace lumora
