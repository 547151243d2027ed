// Arrays that are read here and there: in large pages where the system has them, since looking up small ones would take
// longer than the reading.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace lumora::rays
{

template<typename T>
struct LargePages
{
    using value_type = T;
    static constexpr std::size_t PageSize = std::size_t{1} << 21;

    LargePages() = default;
    template<typename U>
    LargePages(const LargePages<U>&) // NOLINT: allocators convert
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T))
            throw std::bad_array_new_length{};
        const std::size_t size = count * sizeof(T);
        void* memory = ::operator new(size, AlignmentFor(size));
#ifdef __linux__
        if (size >= PageSize) // a wish; nothing is lost where it is not granted
            static_cast<void>(::madvise(memory, size, MADV_HUGEPAGE));
#endif
        return static_cast<T*>(memory);
    }

    void deallocate(T* memory, std::size_t count) noexcept
    {
        ::operator delete(memory, AlignmentFor(count * sizeof(T)));
    }

    friend bool operator==(const LargePages&, const LargePages&)
    {
        return true;
    }

private:
    static std::align_val_t AlignmentFor(std::size_t size)
    {
        return std::align_val_t{size >= PageSize ? PageSize : alignof(T) < 64 ? 64 : alignof(T)};
    }
};

template<typename T>
using LargeArray = std::vector<T, LargePages<T>>;

} // namespace lumora::rays
