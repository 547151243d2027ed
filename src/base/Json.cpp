#include "base/Json.h"

#include <charconv>
#include <cmath>

namespace lumora
{

namespace
{

// Length of the well-formed sequence at the start of `text`, 0 when there is none.
std::size_t SequenceLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    // Too long for what they say, surrogates, beyond the last character.
    const unsigned second = byte(1);
    const bool refused = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                         (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return refused ? 0 : length;
}

template<typename Float>
std::string Shortest(Float value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return {buffer, result.ptr};
}

} // namespace

std::string ValidUtf8(std::string_view text)
{
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty())
    {
        const std::size_t length = SequenceLength(text);
        valid += length != 0 ? text.substr(0, length) : std::string_view{"\xEF\xBF\xBD"};
        text.remove_prefix(length != 0 ? length : 1);
    }
    return valid;
}

JsonWriter& JsonWriter::Key(std::string_view key)
{
    Separate();
    Quote(key);
    text_ += ": ";
    afterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::String(std::string_view value)
{
    Separate();
    Quote(value);
    return *this;
}

JsonWriter& JsonWriter::Number(std::int64_t value)
{
    return Plain(std::to_string(value));
}

JsonWriter& JsonWriter::Number(float value)
{
    return std::isfinite(value) ? Plain(Shortest(value)) : Null();
}

JsonWriter& JsonWriter::Number(double value)
{
    return std::isfinite(value) ? Plain(Shortest(value)) : Null();
}

JsonWriter& JsonWriter::Boolean(bool value)
{
    return Plain(value ? "true" : "false");
}

JsonWriter& JsonWriter::Null()
{
    return Plain("null");
}

JsonWriter& JsonWriter::Plain(std::string_view text)
{
    Separate();
    text_ += text;
    return *this;
}

JsonWriter& JsonWriter::Begin(char bracket)
{
    Separate();
    text_ += bracket;
    ++depth_;
    first_ = true;
    return *this;
}

JsonWriter& JsonWriter::End(char bracket)
{
    --depth_;
    if (!first_)
        NewLine();
    text_ += bracket;
    first_ = false;
    if (depth_ == 0)
        text_ += '\n';
    return *this;
}

void JsonWriter::Separate()
{
    if (afterKey_)
    {
        afterKey_ = false;
        return;
    }
    if (!first_)
        text_ += ',';
    first_ = false;
    if (depth_ > 0)
        NewLine();
}

void JsonWriter::NewLine()
{
    text_ += '\n';
    text_.append(static_cast<std::size_t>(depth_) * 2, ' ');
}

void JsonWriter::Quote(std::string_view text)
{
    constexpr char Digits[] = "0123456789abcdef";
    text_ += '"';
    for (const char c : ValidUtf8(text))
    {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (text_ += '\\') += c;
        else if (c == '\n')
            text_ += "\\n";
        else if (byte < 0x20)
            ((text_ += "\\u00") += Digits[byte >> 4]) += Digits[byte & 15];
        else
            text_ += c;
    }
    text_ += '"';
}

} // namespace lumora
