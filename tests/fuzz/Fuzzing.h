// What the fuzzers share: a check that ends the program, and random bytes read one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace lumora::fuzz
{

inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Zeros follow the last byte.
class Bytes
{
public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    bool AreLeft() const { return at_ < size_; }
    std::uint8_t Next() { return AreLeft() ? data_[at_++] : std::uint8_t{0}; }
    unsigned Below(unsigned count) { return Next() % count; }
    bool Flag() { return Next() % 2 == 1; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

} // namespace lumora::fuzz
