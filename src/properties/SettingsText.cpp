// Reading goes through the parser's events: a document tree would silently drop all but one entry of the same name.
#include "properties/SettingsText.h"

#include "base/RuntimeError.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

namespace lumora
{

namespace
{

constexpr const char* Source = "settings";
constexpr std::size_t LongestReadableName = 60;

using Json = nlohmann::json;

// The bytes of a text, with a count of those read so far: what the parser itself tells only with its own errors.
class CountingIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, std::size_t& count) : at_(at), count_(&count) {}

    reference operator*() const { return *at_; }
    CountingIterator& operator++()
    {
        ++at_;
        ++*count_;
        return *this;
    }
    CountingIterator operator++(int)
    {
        const CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator& other) const { return at_ == other.at_; }
    bool operator!=(const CountingIterator& other) const { return at_ != other.at_; }

private:
    const char* at_;
    std::size_t* count_;
};

bool IsBlank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n';
}

// What the parser says, without its own number in front and the file's bytes behind.
std::string ReasonIn(std::string_view message)
{
    if (const std::size_t number = message.find("] "); number != std::string_view::npos)
        message.remove_prefix(number + 2);
    if (const std::size_t place = message.find(": "); message.starts_with("parse error") && place != message.npos)
        message.remove_prefix(place + 2);
    message = message.substr(0, message.find("; last read"));
    return std::string{message.substr(0, message.find(" parsing '"))};
}

class EntryReader : public nlohmann::json_sax<Json>
{
public:
    EntryReader(std::string_view text, const std::string& place) : text_(text), place_(place) {}

    std::vector<SettingsEntry> Read()
    {
        if (text_.size() > LongestSettingsText)
            throw RuntimeError{error::InvalidCall, Source,
                               place_ + " is too long for settings: more than " + std::to_string(LongestSettingsText) +
                                   " bytes"};
        // The parser takes a zero byte for the end of the text.
        if (const std::size_t zero = text_.find('\0'); zero != std::string_view::npos)
            Refuse(zero, "a zero byte");
        Json::sax_parse(CountingIterator{text_.data(), read_}, CountingIterator{text_.data() + text_.size(), read_},
                        this);
        return std::move(entries_);
    }

    bool null() override { return TakeValue(std::nullopt); }
    bool boolean(bool value) override { return TakeValue(Variant{value}); }
    bool number_integer(number_integer_t value) override { return TakeNumber(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return TakeNumber(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t&) override { return TakeNumber(value); }
    bool string(string_t& value) override { return TakeValue(Variant{std::move(value)}); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override
    {
        Enter('}');
        return true;
    }

    bool key(string_t& name) override
    {
        if (!levels_.back().names.insert(name).second)
            Refuse(read_ - 1, "the name " + ReadableName(name) + " stands here for the second time");
        if (levels_.size() == 1)
        {
            entries_.push_back({std::move(name), {}, 0, std::nullopt});
            nameEnd_ = read_;
        }
        return true;
    }

    bool end_object() override { return Leave(); }

    bool start_array(std::size_t) override
    {
        if (levels_.empty())
            Refuse(read_ - 1, WantedObject);
        Enter(']');
        return true;
    }

    bool end_array() override { return Leave(); }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& failure) override
    {
        Refuse(position == 0 ? 0 : position - 1, ReasonIn(failure.what()));
    }

private:
    static constexpr const char* WantedObject = "settings are one object, names and values in braces";

    struct Level
    {
        char end;
        std::set<std::string> names;
    };

    [[noreturn]] void Refuse(std::size_t offset, const std::string& reason) const
    {
        const std::string_view before = text_.substr(0, std::min(offset, text_.size()));
        const std::size_t lineStart = before.rfind('\n') + 1; // 0 without a line feed
        throw RuntimeError{error::InvalidCall, Source,
                           place_ + ":" + std::to_string(LineAt(offset)) + ":" +
                               std::to_string(before.size() - lineStart + 1) + ": " + reason};
    }

    int LineAt(std::size_t offset) const
    {
        return 1 + static_cast<int>(std::ranges::count(text_.substr(0, offset), '\n'));
    }

    void Enter(char end)
    {
        if (levels_.size() == DeepestSettingsText)
            Refuse(read_ - 1,
                   "objects and arrays lie in each other more than " + std::to_string(DeepestSettingsText) + " deep");
        levels_.push_back({end, {}});
    }

    bool Leave()
    {
        levels_.pop_back();
        if (levels_.size() == 1)
            Complete(read_, std::nullopt);
        return true;
    }

    bool TakeValue(std::optional<Variant> value)
    {
        if (levels_.empty())
            Refuse(read_ - 1, WantedObject);
        if (levels_.size() == 1)
            Complete(read_, std::move(value));
        return true;
    }

    // A number ends before a byte that is none of its own, which the parser has already read.
    bool TakeNumber(double value)
    {
        if (levels_.empty())
            Refuse(0, WantedObject);
        if (levels_.size() == 1)
            Complete(std::min(text_.find_first_of(",} \t\r\n", ValueStart()), text_.size()), Variant{value});
        return true;
    }

    std::size_t ValueStart() const
    {
        std::size_t start = text_.find(':', nameEnd_) + 1;
        while (IsBlank(text_[start]))
            ++start;
        return start;
    }

    void Complete(std::size_t end, std::optional<Variant> value)
    {
        const std::size_t start = ValueStart();
        SettingsEntry& entry = entries_.back();
        entry.text = std::string{text_.substr(start, end - start)};
        entry.line = line_ += static_cast<int>(std::ranges::count(text_.substr(counted_, start - counted_), '\n'));
        entry.value = std::move(value);
        counted_ = start;
    }

    std::string_view text_;
    const std::string& place_;
    std::size_t read_ = 0;
    std::size_t nameEnd_ = 0;
    std::size_t counted_ = 0; // line feeds before this are in line_
    int line_ = 1;
    std::vector<Level> levels_;
    std::vector<SettingsEntry> entries_;
};

} // namespace

std::vector<SettingsEntry> ParseSettingsText(std::string_view text, const std::string& place)
{
    return EntryReader{text, place}.Read();
}

std::string ComposeSettingsText(const std::vector<SettingsEntry>& entries)
{
    std::string text = "{\n";
    for (const SettingsEntry& entry : entries)
    {
        text += "    " + Json(entry.name).dump() + ": " + entry.text;
        text += &entry == &entries.back() ? "\n" : ",\n";
    }
    return text + "}\n";
}

std::optional<std::string> QuotedText(const std::string& text)
{
    try
    {
        return Json(text).dump();
    }
    catch (const Json::type_error&)
    {
        return std::nullopt;
    }
}

std::string ReadableName(const std::string& name)
{
    std::string readable = Json(name.substr(0, LongestReadableName)).dump(-1, ' ', true, Json::error_handler_t::ignore);
    if (name.size() > LongestReadableName)
        readable += "...";
    return readable;
}

} // namespace lumora
