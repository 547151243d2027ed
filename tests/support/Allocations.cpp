// Every block has a header that tells its size.
#include "support/Allocations.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

constexpr std::size_t Header = 64; // keeps every usual alignment

std::atomic<std::size_t> count{0};
std::atomic<std::size_t> alive{0};
std::atomic<std::size_t> peak{0};
std::atomic<std::size_t> beforeFailure{0}; ///< allocations, with the one that fails; 0: none fails

bool MustFail()
{
    std::size_t left = beforeFailure.load();
    while (left != 0 && !beforeFailure.compare_exchange_weak(left, left - 1))
    {
    }
    return left == 1;
}

std::size_t HeaderFor(std::size_t alignment)
{
    return std::max(Header, alignment);
}

void* Take(std::size_t size, std::size_t alignment)
{
    const std::size_t header = HeaderFor(alignment);
    const std::size_t whole = (header + size + header - 1) / header * header;
    auto* const block = whole < size ? nullptr : static_cast<char*>(std::aligned_alloc(header, whole));
    if (block == nullptr)
        throw std::bad_alloc{};
    if (MustFail())
    {
        std::free(block);
        throw std::bad_alloc{};
    }
    *reinterpret_cast<std::size_t*>(block + header - sizeof(std::size_t)) = size;
    ++count;
    const std::size_t now = alive += size;
    std::size_t most = peak.load();
    while (most < now && !peak.compare_exchange_weak(most, now))
    {
    }
    return block + header;
}

void GiveBack(void* memory, std::size_t alignment) noexcept
{
    if (memory == nullptr)
        return;
    char* const start = static_cast<char*>(memory);
    alive -= *reinterpret_cast<std::size_t*>(start - sizeof(std::size_t));
    std::free(start - HeaderFor(alignment));
}

} // namespace

namespace lumora::test
{

Allocations CountedAllocations()
{
    return {count, alive, peak};
}

void ForgetPeak()
{
    peak = alive.load();
}

bool FailAllocation(std::size_t number)
{
    return beforeFailure.exchange(number) != 0;
}

} // namespace lumora::test

// The other forms come down to these.
void* operator new(std::size_t size)
{
    return Take(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return Take(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    GiveBack(memory, 1);
}
void operator delete(void* memory, std::size_t) noexcept
{
    GiveBack(memory, 1);
}
void operator delete(void* memory, std::align_val_t alignment) noexcept
{
    GiveBack(memory, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory, std::size_t, std::align_val_t alignment) noexcept
{
    GiveBack(memory, static_cast<std::size_t>(alignment));
}
