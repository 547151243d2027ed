#include "base/ZeroedPixels.h"

#include <cstdlib>
#include <utility>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace lumora
{

namespace
{

// The allocator would hand memory on that others have used, and clear all of it. The address sanitizer watches only
// what comes from the allocator.
#if defined(MAP_ANONYMOUS) && !defined(__SANITIZE_ADDRESS__)
std::uint32_t* Take(std::size_t bytes)
{
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::uint32_t*>(memory);
}

void GiveBack(std::uint32_t* pixels, std::size_t bytes)
{
    if (pixels != nullptr)
        munmap(pixels, bytes);
}
#else
std::uint32_t* Take(std::size_t bytes)
{
    return static_cast<std::uint32_t*>(std::calloc(bytes, 1));
}

void GiveBack(std::uint32_t* pixels, std::size_t /*bytes*/)
{
    std::free(pixels);
}
#endif

} // namespace

ZeroedPixels::ZeroedPixels(std::size_t count)
    : pixels_(Take(count * sizeof(std::uint32_t))), bytes_(count * sizeof(std::uint32_t))
{
}

ZeroedPixels::~ZeroedPixels()
{
    GiveBack(pixels_, bytes_);
}

ZeroedPixels::ZeroedPixels(ZeroedPixels&& other) noexcept
    : pixels_(std::exchange(other.pixels_, nullptr)), bytes_(std::exchange(other.bytes_, 0))
{
}

ZeroedPixels& ZeroedPixels::operator=(ZeroedPixels other) noexcept
{
    std::swap(pixels_, other.pixels_);
    std::swap(bytes_, other.bytes_);
    return *this;
}

} // namespace lumora
