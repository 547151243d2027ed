// How often this program asked for memory.
#pragma once

#include <cstdint>

namespace lumora::test
{

/// Calls of operator new so far, on any thread.
std::int64_t AllocationCount();

} // namespace lumora::test
