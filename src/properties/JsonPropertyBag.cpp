// Property values to JSON and back, with the property table to say what a name stands for.
#include "properties/JsonPropertyBag.h"

#include "base/Faults.h"
#include "base/RuntimeError.h"
#include "properties/Enumerations.h"
#include "properties/PropertyTable.h"
#include "properties/SettingsFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace lumora
{

namespace
{

constexpr const char* Source = "settings";

bool IsKept(const PropertyRow& row)
{
    return row.saved && row.type != PropertyType::Object;
}

bool IsText(const Variant& value)
{
    return std::holds_alternative<std::string>(value);
}

// The value of an entry as its property holds it. Errors 13 and 6 with a sentence.
Variant ValueOf(const PropertyRow& row, const SettingsEntry& entry)
{
    if (!entry.value)
        throw RuntimeError{error::TypeMismatch, Source, "give a single value, no null, list or object"};
    const bool isBoolean = std::holds_alternative<bool>(*entry.value);
    if (isBoolean && row.type == PropertyType::Boolean)
        return *entry.value;
    if (isBoolean)
        throw RuntimeError{error::TypeMismatch, Source, "true and false are for properties of type Boolean"};
    if (row.type == PropertyType::String && !IsText(*entry.value))
        throw RuntimeError{error::TypeMismatch, Source, "give a text in double quotes"};
    // Numbers are read from their own spelling: going through Double could round a Single twice.
    return ParsePropertyValue(row, IsText(*entry.value) ? std::get<std::string>(*entry.value) : entry.text);
}

template<typename Number>
std::optional<std::string> NumberText(Number number)
{
    if (!std::isfinite(static_cast<double>(number)))
        return std::nullopt;
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return std::string{buffer, result.ptr};
}

std::string LongText(const PropertyRow* row, std::int32_t number)
{
    const Enumeration* const enumeration = row != nullptr ? FindEnumeration(row->typeName) : nullptr;
    if (enumeration != nullptr)
        for (const EnumerationValue& value : enumeration->values)
            if (value.value == number)
                return '"' + std::string{value.name} + '"';
    return std::to_string(number);
}

// A value as JSON, or nothing when JSON has no way to say it.
std::optional<std::string> JsonOf(const PropertyRow* row, const Variant& value)
{
    if (const auto* boolean = std::get_if<bool>(&value))
        return *boolean ? "true" : "false";
    if (const auto* integer = std::get_if<std::int16_t>(&value))
        return LongText(row, *integer);
    if (const auto* whole = std::get_if<std::int32_t>(&value))
        return LongText(row, *whole);
    if (const auto* single = std::get_if<float>(&value))
        return NumberText(*single);
    if (const auto* real = std::get_if<double>(&value))
        return NumberText(*real);
    if (const auto* text = std::get_if<std::string>(&value))
        return QuotedText(*text);
    return std::nullopt;
}

} // namespace

JsonPropertyBag::JsonPropertyBag(std::string path, std::vector<SettingsEntry> entries, const std::string& place)
    : path_(std::move(path)), entries_(std::move(entries))
{
    for (SettingsEntry& entry : entries_)
        Understand(entry, place);
}

JsonPropertyBag JsonPropertyBag::Open(const std::string& path)
{
    return {path, ParseSettingsText(ReadSettingsFile(path), path), path};
}

JsonPropertyBag JsonPropertyBag::OpenOrCreate(const std::string& path)
{
    if (SettingsFileExists(path))
        return Open(path);
    return {path, {}, path};
}

JsonPropertyBag JsonPropertyBag::FromText(std::string_view text, const std::string& place)
{
    return {{}, ParseSettingsText(text, place), place};
}

// Turns the entry's value into the property's, or into nothing with a remark.
void JsonPropertyBag::Understand(SettingsEntry& entry, const std::string& place)
{
    const PropertyRow* const row = FindProperty(entry.name);
    const auto remark = [&](const auto& reason)
    {
        entry.value = std::nullopt;
        Remark([&] { return place + ":" + std::to_string(entry.line) + ": " + reason(); });
    };
    if (row == nullptr)
        return remark(
            [&]
            {
                return "there is no property " + ReadableName(entry.name) + ", did you mean \"" +
                       std::string{NearestProperty(entry.name).name} + "\"?";
            });
    if (!IsKept(*row))
        return remark([&] { return "the property " + entry.name + " is not kept in settings files"; });
    try
    {
        entry.value = ValueOf(*row, entry);
    }
    catch (const RuntimeError& failure)
    {
        const std::string reason = failure.Description();
        remark([&] { return "the value of " + entry.name + " is not used: " + reason; });
    }
}

Variant JsonPropertyBag::ReadProperty(std::string_view name, const Variant& defaultValue)
{
    faults::Point("PropertyBag.ReadProperty");
    const SettingsEntry* const entry = Find(name);
    return entry != nullptr && entry->value ? *entry->value : defaultValue;
}

void JsonPropertyBag::WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue)
{
    faults::Point("PropertyBag.WriteProperty");
    const PropertyRow* const row = FindProperty(name);
    const SettingsEntry* const before = Find(name);
    const bool isDefault = VariantsEqual(value, defaultValue);
    const bool isSayable = !isDefault && QuotedText(std::string{name});
    const auto text = isSayable ? JsonOf(row, value) : std::nullopt;
    if (!isDefault && !text)
        Remark([&] { return "The value of " + std::string{name} + " cannot be kept in a settings file"; });
    // A value that nobody understood is still somebody's.
    if (!text && before != nullptr && !before->value)
        return;
    std::erase_if(entries_, [&](const SettingsEntry& entry) { return entry.name == name; });
    if (text)
        entries_.push_back({std::string{name}, *text, 0, value});
}

bool JsonPropertyBag::Contains(std::string_view name) const
{
    return std::ranges::any_of(entries_, [&](const SettingsEntry& entry) { return entry.name == name && entry.value; });
}

void JsonPropertyBag::Store() const
{
    if (path_.empty())
        throw RuntimeError{error::PathFileAccess, Source, "These settings belong to no file"};
    WriteSettingsFile(path_, Text());
}

std::vector<std::string> JsonPropertyBag::Remarks() const
{
    std::vector<std::string> remarks = remarks_;
    if (remarkCount_ > remarks.size())
        remarks.push_back("There are " + std::to_string(remarkCount_ - remarks.size()) +
                          " more remarks on these settings");
    return remarks;
}

SettingsEntry* JsonPropertyBag::Find(std::string_view name)
{
    const auto found = std::ranges::find(entries_, name, &SettingsEntry::name);
    return found == entries_.end() ? nullptr : &*found;
}

// A sentence is made only when it is kept: looking for the nearest names takes time, and a file may have many.
template<typename Sentence>
void JsonPropertyBag::Remark(Sentence&& sentence)
{
    if (remarkCount_++ < MaximumRemarks)
        remarks_.push_back(sentence());
}

} // namespace lumora
