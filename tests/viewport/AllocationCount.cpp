#include "viewport/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<std::int64_t> count{0};
}

// The sanitizers have these operators themselves; nothing is counted under them.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

void* operator new(std::size_t size)
{
    ++count;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc{};
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif

std::int64_t lumora::test::AllocationCount()
{
    return count.load();
}
