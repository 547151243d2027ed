// An array that grows without touching what nobody asked to have filled, and keeps its memory for the next frame.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

namespace lumora::rgb
{

template<typename T>
class Buffer
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    std::size_t Size() const { return size_; }
    T* Data() { return data_.get(); }
    const T* Data() const { return data_.get(); }
    T& operator[](std::size_t index) { return data_.get()[index]; }
    const T& operator[](std::size_t index) const { return data_.get()[index]; }
    std::span<const T> Items() const { return {data_.get(), size_}; }

    void Clear() { size_ = 0; }

    /// New elements have no value. Old ones keep theirs.
    void Resize(std::size_t size)
    {
        Reserve(size);
        size_ = size;
    }

    /// Elements without a value, old ones included, in exactly the memory they need.
    void Renew(std::size_t size)
    {
        if (size > capacity_)
        {
            Release();
            data_.reset(Allocate(size));
            capacity_ = size;
        }
        size_ = size;
    }

    void Append(const T& value)
    {
        if (size_ == capacity_)
            Reserve(size_ + 1);
        data_.get()[size_++] = value;
    }

    /// Where Reserve made room.
    void AppendReserved(const T& value) { data_.get()[size_++] = value; }

    void Append(std::span<const T> values)
    {
        Reserve(size_ + values.size());
        std::ranges::copy(values, data_.get() + size_);
        size_ += values.size();
    }

    /// Memory for `size` elements in all. Not more than half as much again stays unused.
    void Reserve(std::size_t size)
    {
        if (size <= capacity_)
            return;
        const std::size_t capacity = std::max(size, capacity_ + capacity_ / 2);
        std::unique_ptr<T, Free> grown{Allocate(capacity)};
        if (size_ != 0)
            std::memcpy(static_cast<void*>(grown.get()), data_.get(), size_ * sizeof(T));
        data_ = std::move(grown);
        capacity_ = capacity;
    }

    std::size_t CapacityInBytes() const { return capacity_ * sizeof(T); }
    void Release()
    {
        data_.reset();
        size_ = capacity_ = 0;
    }

private:
    static constexpr std::align_val_t Alignment{64};
    static T* Allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), Alignment)); }
    struct Free
    {
        void operator()(T* memory) const { ::operator delete(memory, Alignment); }
    };

    std::unique_ptr<T, Free> data_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace lumora::rgb
