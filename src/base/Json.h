// JSON documents, written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lumora
{

/// Builds one document, indented by two spaces. Values and keys are UTF-8; what is not becomes U+FFFD. Within an
/// object each value is announced by its Key.
class JsonWriter
{
public:
    JsonWriter& Key(std::string_view key);
    JsonWriter& String(std::string_view value);
    JsonWriter& Number(std::int64_t value);

    /// The shortest text that reads back as the same Single or Double; null for what JSON has no number for.
    JsonWriter& Number(float value);
    JsonWriter& Number(double value);
    JsonWriter& Boolean(bool value);
    JsonWriter& Null();
    JsonWriter& BeginObject() { return Begin('{'); }
    JsonWriter& EndObject() { return End('}'); }
    JsonWriter& BeginArray() { return Begin('['); }
    JsonWriter& EndArray() { return End(']'); }

    const std::string& Text() const { return text_; }

private:
    JsonWriter& Begin(char bracket);
    JsonWriter& End(char bracket);
    JsonWriter& Plain(std::string_view text);
    void Separate();
    void NewLine();
    void Quote(std::string_view text);

    std::string text_;
    int depth_ = 0;
    bool first_ = true; // in the innermost bracket
    bool afterKey_ = false;
};

/// `text` with whatever is not UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

} // namespace lumora
