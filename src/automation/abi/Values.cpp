#include "automation/abi/Values.h"

#include "automation/abi/Buffers.h"
#include "automation/abi/DispatchObject.h"
#include "base/Json.h"

#include <cstdlib>
#include <cstring>

namespace lumora::automation
{

namespace
{

constexpr char32_t Replacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& text, char32_t point)
{
    const auto byte = [&](char32_t value) { text += static_cast<char>(static_cast<unsigned char>(value)); };
    if (point < 0x80)
        return byte(point);
    if (point < 0x800)
        byte(0xC0 | point >> 6);
    else if (point < 0x10000)
    {
        byte(0xE0 | point >> 12);
        byte(0x80 | (point >> 6 & 0x3F));
    }
    else
    {
        byte(0xF0 | point >> 18);
        byte(0x80 | (point >> 12 & 0x3F));
        byte(0x80 | (point >> 6 & 0x3F));
    }
    byte(0x80 | (point & 0x3F));
}

std::uint32_t LengthOf(LumoraText text)
{
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const unsigned char*>(text) - sizeof bytes, sizeof bytes);
    return bytes / sizeof(char16_t);
}

} // namespace

std::u16string ToUtf16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    const std::string valid = ValidUtf8(text);
    for (std::size_t i = 0; i < valid.size();)
    {
        const auto lead = static_cast<unsigned char>(valid[i++]);
        const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        char32_t point = more == 0 ? lead : lead & (0x3FU >> more);
        for (int k = 0; k < more; ++k)
            point = point << 6 | (static_cast<unsigned char>(valid[i++]) & 0x3FU);
        if (point < 0x10000)
        {
            units += static_cast<char16_t>(point);
            continue;
        }
        units += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
        units += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    }
    return units;
}

std::string ToUtf8(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char16_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            AppendUtf8(bytes, 0x10000 + ((unit - 0xD800U) << 10) + (text[++i] - 0xDC00U));
        else
            AppendUtf8(bytes, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? Replacement : unit);
    }
    return bytes;
}

LumoraText MakeText(std::u16string_view text) noexcept
{
    if (text.size() > LUMORA_MAXIMUM_TEXT)
        return nullptr;
    const auto bytes = static_cast<std::uint32_t>(text.size() * sizeof(char16_t));
    auto* memory = static_cast<unsigned char*>(std::malloc(sizeof bytes + bytes + sizeof(char16_t)));
    if (memory == nullptr)
        return nullptr;
    std::memcpy(memory, &bytes, sizeof bytes);
    if (bytes != 0)
        std::memcpy(memory + sizeof bytes, text.data(), bytes);
    std::memset(memory + sizeof bytes + bytes, 0, sizeof(char16_t));
    return reinterpret_cast<LumoraText>(memory + sizeof bytes);
}

LumoraText MakeText(std::string_view utf8) noexcept
{
    try
    {
        return MakeText(ToUtf16(utf8));
    }
    catch (const std::exception&)
    {
        return nullptr;
    }
}

void FreeText(LumoraText text) noexcept
{
    if (text != nullptr)
        std::free(reinterpret_cast<unsigned char*>(text) - sizeof(std::uint32_t));
}

std::string ReadText(LumoraText text)
{
    if (text == nullptr)
        return {};
    const std::uint32_t length = LengthOf(text);
    if (length > LUMORA_MAXIMUM_TEXT)
        throw RuntimeError{error::OutOfStringSpace, "automation",
                           "Out of string space: a text of " + std::to_string(length) + " units is too long"};
    std::u16string units(length, u'\0');
    std::memcpy(units.data(), text, length * sizeof(char16_t));
    return ToUtf8(units);
}

Variant ReadValue(const LumoraValue& value)
{
    switch (value.type)
    {
    case LumoraEmpty:
        return {};
    case LumoraInteger:
        return value.value.integer;
    case LumoraLong:
        return value.value.number;
    case LumoraSingle:
        return value.value.single;
    case LumoraDouble:
        return value.value.real;
    case LumoraString:
        return ReadText(value.value.text);
    case LumoraObject:
        return ObjectOf(value.value.object);
    case LumoraBoolean:
        return value.value.integer != 0;
    case LumoraNumbers:
        return ReadBuffer(value.value.buffer);
    default:
        throw RuntimeError{error::TypeMismatch, "automation",
                           "Type mismatch: there is no type number " + std::to_string(value.type)};
    }
}

LumoraValue MakeValue(const Variant& value)
{
    LumoraValue made{};
    if (const auto* boolean = std::get_if<bool>(&value))
    {
        made.type = LumoraBoolean;
        made.value.integer = *boolean ? -1 : 0;
    }
    else if (const auto* integer = std::get_if<std::int16_t>(&value))
    {
        made.type = LumoraInteger;
        made.value.integer = *integer;
    }
    else if (const auto* whole = std::get_if<std::int32_t>(&value))
    {
        made.type = LumoraLong;
        made.value.number = *whole;
    }
    else if (const auto* single = std::get_if<float>(&value))
    {
        made.type = LumoraSingle;
        made.value.single = *single;
    }
    else if (const auto* real = std::get_if<double>(&value))
    {
        made.type = LumoraDouble;
        made.value.real = *real;
    }
    else if (const auto* text = std::get_if<std::string>(&value))
    {
        made.value.text = MakeText(*text);
        if (made.value.text == nullptr)
            throw RuntimeError{error::OutOfStringSpace, "automation", "Out of string space"};
        made.type = LumoraString;
    }
    else if (const auto* object = std::get_if<ObjectReference>(&value))
    {
        made.value.object = *object ? DispatchObjectFor(AsDispatchable(*object)) : nullptr;
        made.type = LumoraObject;
    }
    else if (const auto* buffer = std::get_if<NumberBuffer>(&value))
    {
        made.value.buffer = MakeBuffer(*buffer);
        made.type = LumoraNumbers;
    }
    return made;
}

void ClearValue(LumoraValue& value) noexcept
{
    const LumoraValue old = std::exchange(value, LumoraValue{});
    if (old.type == LumoraString)
        FreeText(old.value.text);
    else if (old.type == LumoraObject && old.value.object != nullptr)
        old.value.object->functions->Release(old.value.object);
    else if (old.type == LumoraNumbers)
        FreeBuffer(old.value.buffer);
}

LumoraResult Report(LumoraError* error, std::int32_t number, std::string_view source,
                    std::string_view description) noexcept
{
    constexpr std::uint32_t ControlFacility = 0x800A0000;
    if (error != nullptr)
        *error = {number, 0, MakeText(source), MakeText(description)};
    if (number < 0)
        return number;
    return static_cast<LumoraResult>(ControlFacility | (static_cast<std::uint32_t>(number) & 0xFFFF));
}

} // namespace lumora::automation
