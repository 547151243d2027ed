// Many numbers of one type in one piece of memory: how vertices, faces and pixels are handed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace lumora
{

/// Types of a buffer's elements, with the numbers that automation gives them.
enum class ElementType : std::int32_t
{
    Long = 3, ///< 32 bits, signed
    Single = 4,
    Double = 5,
    Byte = 17,
    UnsignedLong = 19, ///< 32 bits: pixels and colors
};

// clang-format off
template<typename Number> inline constexpr bool HasElementType = false;
template<typename Number> inline constexpr ElementType ElementTypeOf = ElementType::Byte;
template<> inline constexpr bool HasElementType<std::int32_t> = true;
template<> inline constexpr bool HasElementType<float> = true;
template<> inline constexpr bool HasElementType<double> = true;
template<> inline constexpr bool HasElementType<std::uint8_t> = true;
template<> inline constexpr bool HasElementType<std::uint32_t> = true;
template<> inline constexpr ElementType ElementTypeOf<std::int32_t> = ElementType::Long;
template<> inline constexpr ElementType ElementTypeOf<float> = ElementType::Single;
template<> inline constexpr ElementType ElementTypeOf<double> = ElementType::Double;
template<> inline constexpr ElementType ElementTypeOf<std::uint32_t> = ElementType::UnsignedLong;
// clang-format on

/// Bytes of one element; 0 for a type there is not.
std::size_t SizeOf(ElementType type);

/// "Single()" and so on: what a buffer of this type is called.
constexpr const char* BufferNameOf(ElementType type)
{
    switch (type)
    {
    case ElementType::Byte:
        return "Byte()";
    case ElementType::Long:
        return "Long()";
    case ElementType::UnsignedLong:
        return "UnsignedLong()";
    case ElementType::Single:
        return "Single()";
    case ElementType::Double:
        return "Double()";
    }
    return "Buffer";
}

/// What a record of numbers is made of: three Singles for a vector. Specialised by whoever hands such records over.
template<typename Element>
struct NumberOf
{
    using Type = Element;
};

/// Numbers that stay the owner's while a caller holds and writes them.
template<typename Number>
struct SharedNumbers
{
    std::span<Number> view;
    std::shared_ptr<const void> owner;
};

/// A reference to numbers in memory. Whoever holds it shares the owner, which keeps the memory; without an owner it is
/// a caller's memory, borrowed for the length of a call.
struct NumberBuffer
{
    /// The most bytes of one buffer: 4 GiB, more than any mesh or surface holds.
    static constexpr std::uint64_t MaximumBytes = std::uint64_t{1} << 32;

    ElementType type = ElementType::Byte;
    void* data = nullptr; ///< of any alignment where the memory is borrowed
    std::size_t count = 0;
    bool isWritable = false;
    std::shared_ptr<const void> owner;

    std::size_t Bytes() const { return count * SizeOf(type); }

    /// The same memory, seen as the same numbers.
    friend bool operator==(const NumberBuffer& a, const NumberBuffer& b)
    {
        return a.data == b.data && a.count == b.count && a.type == b.type;
    }
};

/// A buffer of numbers that it owns from now on. `Element` is a number, or a record of nothing but numbers.
template<typename Number, typename Element>
NumberBuffer OwnedBuffer(std::vector<Element> elements)
{
    static_assert(HasElementType<Number> && sizeof(Element) % sizeof(Number) == 0);
    auto owner = std::make_shared<std::vector<Element>>(std::move(elements));
    const std::size_t count = owner->size() * (sizeof(Element) / sizeof(Number));
    return {ElementTypeOf<Number>, owner->data(), count, false, owner};
}

/// The buffer itself where it has an owner, otherwise a copy that has one: what may be kept after the call.
NumberBuffer KeptBuffer(const NumberBuffer& buffer);

/// Numbers of one type that came from a caller: the caller's own memory when they were of this type, else converted.
template<typename Number>
class Numbers
{
public:
    Numbers() = default;
    explicit Numbers(std::vector<Number> numbers) : converted_(std::move(numbers)), view_(converted_) {}
    explicit Numbers(std::span<const Number> lent, std::shared_ptr<const void> owner)
        : view_(lent), owner_(std::move(owner))
    {
    }
    Numbers(const Numbers&) = delete;
    Numbers& operator=(const Numbers&) = delete;
    Numbers(Numbers&&) noexcept = default; // a moved vector keeps its memory
    Numbers& operator=(Numbers&&) noexcept = default;

    std::span<const Number> View() const { return view_; }

private:
    std::vector<Number> converted_;
    std::span<const Number> view_;
    std::shared_ptr<const void> owner_; // of memory that is lent
};

// The numbers of a buffer (whose own memory is used where type and alignment allow), or those of a text, separated by
// blanks or commas. Whole numbers from fractions are the nearest, halves to even. Errors: 13 for what is no number in a
// text, 6 for a number out of range.

template<typename Number>
Numbers<Number> NumbersIn(const NumberBuffer& buffer);
template<typename Number>
Numbers<Number> NumbersIn(std::string_view text);

} // namespace lumora
