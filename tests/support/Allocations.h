// Counts what a test program takes from the heap: linking this replaces operator new.
#pragma once

#include <cstddef>

namespace lumora::test
{

struct Allocations
{
    std::size_t count = 0; ///< since the program's start
    std::size_t bytes = 0; ///< alive
    std::size_t peak = 0;  ///< the most bytes alive since ForgetPeak
};

Allocations CountedAllocations();
void ForgetPeak();

} // namespace lumora::test
