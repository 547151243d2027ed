// A loop whose stretches the crew of the calling thread shares out.
#pragma once

#include "parallel/Crew.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <new>

namespace lumora
{

/// Elements of one stretch. Results that are put together stretch by stretch do not depend on the number of threads.
inline constexpr std::size_t ParallelStretch = std::size_t{1} << 14;

inline std::size_t StretchesOf(std::size_t count)
{
    return (count + ParallelStretch - 1) / ParallelStretch;
}

/// Calls work(stretch, first, end) for each stretch of 0 .. count, on all cores where there is more than one stretch.
/// Raises std::bad_alloc when a call did; calls may raise nothing else.
template<typename Work>
void InParallel(std::size_t count, Work&& work)
{
    std::atomic<bool> failed{false};
    auto stretch = [&](std::size_t number, int)
    {
        try
        {
            work(number, number * ParallelStretch, std::min(count, (number + 1) * ParallelStretch));
        }
        catch (const std::bad_alloc&)
        {
            failed.store(true);
        }
    };
    if (count <= ParallelStretch && count != 0)
        stretch(0, 0);
    else if (count != 0)
        Crew::Of(0)->Run(StretchesOf(count), false, stretch);
    if (failed.load())
        throw std::bad_alloc{};
}

} // namespace lumora
