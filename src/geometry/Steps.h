// How the kernel's modules run their steps: errors leave with the module's name, and with nothing else changed.
#pragma once

#include "base/Trap.h"
#include "geometry/Records.h"

#include <concepts>
#include <optional>
#include <string>

namespace lumora
{

/// Runs a step under a trap and answers its result.
template<typename Step>
auto ResultOf(const Trap& trap, Step&& step)
{
    std::optional<decltype(step())> result;
    trap([&] { result.emplace(step()); });
    return *std::move(result);
}

/// For modules without a trap: an error is never classified or repeated, but it does leave with the module's name.
template<typename Step>
decltype(auto) NamingErrors(const char* source, Step&& step)
{
    try
    {
        return step();
    }
    catch (const RuntimeError& failure)
    {
        throw failure.RaisedBy(source, false);
    }
}

/// Error 9 when a list is shorter than `least`.
inline void RequireVertices(VertexSpan list, std::size_t least, const char* what)
{
    if (list.size() < least)
        throw RuntimeError{error::SubscriptOutOfRange, "geometry",
                           std::string{what} + " has " + std::to_string(list.size()) + " points and needs " +
                               std::to_string(least) + " or more"};
}

/// Error 9 for a count below 0, as the size of an array; error 7 beyond MaximumVertices.
inline void RequireCount(std::int64_t count, const char* what)
{
    if (count < 0)
        throw RuntimeError{error::SubscriptOutOfRange, "geometry", std::string{what} + " is negative"};
    if (count > MaximumVertices)
        throw RuntimeError{error::OutOfMemory, "geometry",
                           std::string{what} + " is " + std::to_string(count) + "; at most " +
                               std::to_string(MaximumVertices) + " is possible"};
}

} // namespace lumora
