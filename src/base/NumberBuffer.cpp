// Buffers and texts of numbers, converted element by element where the types differ.
#include "base/NumberBuffer.h"

#include "base/Numbers.h"
#include "base/RuntimeError.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace lumora
{

namespace
{

bool IsSeparator(char c)
{
    return c == ' ' || c == ',' || c == '\t' || c == '\n' || c == '\r';
}

[[noreturn]] void RaiseNotNumbers(std::string_view where)
{
    throw RuntimeError{error::TypeMismatch, "automation",
                       "Type mismatch: not a number at \"" + std::string{where.substr(0, 20)} + "\""};
}

template<typename Number>
Number Converted(double value)
{
    if constexpr (std::is_same_v<Number, double>)
        return value;
    else if constexpr (std::is_same_v<Number, float>)
        return ToSingle(value);
    else if constexpr (std::is_same_v<Number, std::int32_t>)
        return ToLong(value);
    else
        return ToBits(value);
}

template<typename Number, typename From>
Number ConvertedFrom(From value)
{
    constexpr bool isPattern = std::is_same_v<Number, std::uint32_t> && std::is_same_v<From, std::int32_t>;
    constexpr bool isIndex = std::is_same_v<Number, std::int32_t> && std::is_same_v<From, std::uint32_t>;
    if constexpr (isPattern)
        return static_cast<Number>(value);
    if constexpr (isIndex)
        if (value <= static_cast<From>(std::numeric_limits<Number>::max()))
            return static_cast<Number>(value);
    return Converted<Number>(static_cast<double>(value));
}

// Through memcpy: a borrowed buffer may lie at any address.
template<typename From, typename Number>
std::vector<Number> Copied(const NumberBuffer& buffer)
{
    std::vector<Number> numbers(buffer.count);
    if constexpr (std::is_same_v<From, Number>)
    {
        if (buffer.count != 0)
            std::memcpy(numbers.data(), buffer.data, buffer.Bytes());
        return numbers;
    }
    for (std::size_t i = 0; i < buffer.count; ++i)
    {
        From element;
        std::memcpy(&element, static_cast<const char*>(buffer.data) + i * sizeof(From), sizeof element);
        numbers[i] = ConvertedFrom<Number>(element);
    }
    return numbers;
}

bool IsAligned(const void* data, std::size_t size)
{
    return reinterpret_cast<std::uintptr_t>(data) % size == 0;
}

} // namespace

std::size_t SizeOf(ElementType type)
{
    switch (type)
    {
    case ElementType::Byte:
        return 1;
    case ElementType::Long:
    case ElementType::UnsignedLong:
    case ElementType::Single:
        return 4;
    case ElementType::Double:
        return 8;
    }
    return 0;
}

NumberBuffer KeptBuffer(const NumberBuffer& buffer)
{
    if (buffer.owner)
        return buffer;
    auto bytes = std::make_shared<std::vector<double>>((buffer.Bytes() + sizeof(double) - 1) / sizeof(double));
    if (buffer.count != 0)
        std::memcpy(bytes->data(), buffer.data, buffer.Bytes());
    return {buffer.type, bytes->data(), buffer.count, true, bytes};
}

template<typename Number>
Numbers<Number> NumbersIn(const NumberBuffer& buffer)
{
    if (buffer.type == ElementTypeOf<Number> && IsAligned(buffer.data, sizeof(Number)))
        return Numbers<Number>{{static_cast<const Number*>(buffer.data), buffer.count}, buffer.owner};
    switch (buffer.type)
    {
    case ElementType::Byte:
        return Numbers<Number>{Copied<std::uint8_t, Number>(buffer)};
    case ElementType::Long:
        return Numbers<Number>{Copied<std::int32_t, Number>(buffer)};
    case ElementType::UnsignedLong:
        return Numbers<Number>{Copied<std::uint32_t, Number>(buffer)};
    case ElementType::Single:
        return Numbers<Number>{Copied<float, Number>(buffer)};
    case ElementType::Double:
        return Numbers<Number>{Copied<double, Number>(buffer)};
    }
    throw RuntimeError{error::TypeMismatch, "automation", "Type mismatch: a buffer of an unknown type"};
}

template<typename Number>
Numbers<Number> NumbersIn(std::string_view text)
{
    using Parsed = std::conditional_t<std::is_same_v<Number, std::uint32_t>, std::int64_t, Number>;
    std::vector<Number> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while ((at = std::find_if_not(at, end, IsSeparator)) != end)
    {
        Parsed number{};
        const auto [stop, problem] = std::from_chars(at, end, number);
        if (problem == std::errc::result_out_of_range)
            throw RuntimeError{error::Overflow, "automation", "Overflow: a number in the list is out of range"};
        if (problem != std::errc{} || (stop != end && !IsSeparator(*stop)))
            RaiseNotNumbers({at, static_cast<std::size_t>(end - at)});
        if constexpr (std::is_floating_point_v<Number>)
            if (!std::isfinite(number))
                RaiseNotNumbers({at, static_cast<std::size_t>(end - at)});
        if constexpr (std::is_same_v<Parsed, Number>)
            numbers.push_back(number);
        else
            numbers.push_back(Converted<Number>(static_cast<double>(number)));
        at = stop;
    }
    return Numbers<Number>{std::move(numbers)};
}

template Numbers<std::int32_t> NumbersIn<std::int32_t>(const NumberBuffer&);
template Numbers<std::uint32_t> NumbersIn<std::uint32_t>(const NumberBuffer&);
template Numbers<float> NumbersIn<float>(const NumberBuffer&);
template Numbers<double> NumbersIn<double>(const NumberBuffer&);
template Numbers<std::int32_t> NumbersIn<std::int32_t>(std::string_view);
template Numbers<std::uint32_t> NumbersIn<std::uint32_t>(std::string_view);
template Numbers<float> NumbersIn<float>(std::string_view);
template Numbers<double> NumbersIn<double>(std::string_view);

} // namespace lumora
