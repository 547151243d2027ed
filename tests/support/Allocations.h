// Counts what a test program takes from the heap, and refuses it: linking this replaces operator new.
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

/// The allocation of this number fails, counted from now on with 1; 0: none does. Answers whether an earlier one was
/// still to fail.
bool FailAllocation(std::size_t number);

} // namespace lumora::test
