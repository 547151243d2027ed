// A property bag as a settings file that a person can read and edit.
#pragma once

#include "platform/container/PropertyBag.h"
#include "properties/SettingsText.h"

#include <string>
#include <string_view>
#include <vector>

namespace lumora
{

/// The entries of one settings file: a JSON object with a name and a value for each property.
///
///     {
///         "FillMode": "D3DRMFILL_WIREFRAME",
///         "AntiAlias": 2,
///         "FieldOfView": 0.35
///     }
///
/// Booleans are true and false; values of enumerations are written by name where they have one and read by name
/// (upper or lower case) or number; Singles are the shortest decimal that reads back as the same number. What is
/// written goes to the end, so that a whole save leaves the entries in save order.
///
/// Entries that are no saved property, and values that their property cannot hold, are reported in Remarks, read as if
/// they were missing, and written back as they were unless the property gets a value of its own.
///
/// MouseIcon is not kept: a picture does not know the file it came from. Neither are numbers and texts that JSON
/// cannot express (not finite, not UTF-8). All are reported in Remarks.
class JsonPropertyBag : public PropertyBag
{
public:
    /// Most remarks kept; a last one counts the rest.
    static constexpr std::size_t MaximumRemarks = 20;

    /// The bag of a file that exists. Error 53 when there is none, 75 when it cannot be read or is no plain file, 5
    /// with place, line, column and reason for a damaged one.
    static JsonPropertyBag Open(const std::string& path);

    /// The same; a missing file is an empty bag, and is created by Store. Error 75 also when its folder is missing.
    static JsonPropertyBag OpenOrCreate(const std::string& path);

    /// A bag without a file: Store raises error 75. `place` names it in messages. Error 5 as for Open.
    static JsonPropertyBag FromText(std::string_view text, const std::string& place);

    Variant ReadProperty(std::string_view name, const Variant& defaultValue) override;
    void WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue) override;

    /// The file has a usable value for this name.
    bool Contains(std::string_view name) const;

    /// What the file would hold now.
    std::string Text() const { return ComposeSettingsText(entries_); }

    /// Writes the file anew, as a whole: whoever reads it meanwhile sees the old one or the new one. Permissions stay,
    /// a link stays a link. Error 75, after which the file is as it was.
    void Store() const;

    /// A sentence for each thing in the file or in what was written that is not understood or not kept; for a log.
    std::vector<std::string> Remarks() const;

private:
    JsonPropertyBag(std::string path, std::vector<SettingsEntry> entries, const std::string& place);
    void Understand(SettingsEntry& entry, const std::string& place);
    SettingsEntry* Find(std::string_view name);
    template<typename Sentence>
    void Remark(Sentence&& sentence);

    std::string path_;
    std::vector<SettingsEntry> entries_;
    std::vector<std::string> remarks_;
    std::size_t remarkCount_ = 0;
};

} // namespace lumora
