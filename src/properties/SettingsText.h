// The text of a settings file: a JSON object, taken apart so that what is not understood can be written back as it was.
#pragma once

#include "base/Variant.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumora
{

/// One entry of the outermost object.
struct SettingsEntry
{
    std::string name;
    std::string text; ///< the value as the file spells it
    int line = 0;     ///< of the value, from 1; 0 for an entry that is in no file yet

    /// The value: a Boolean, Double or String; nothing for null, arrays and objects.
    std::optional<Variant> value;
};

inline constexpr std::size_t LongestSettingsText = 1 << 20; ///< bytes
inline constexpr std::size_t DeepestSettingsText = 32;      ///< objects and arrays in each other

/// Takes `text` apart, entries in their order. `place` names its origin in messages. Error 5 with "place:line:column:
/// reason" for what is not one JSON object in UTF-8 with different names, or goes beyond the limits.
std::vector<SettingsEntry> ParseSettingsText(std::string_view text, const std::string& place);

/// The text that ParseSettingsText takes apart into these entries again: one line for each, indented.
std::string ComposeSettingsText(const std::vector<SettingsEntry>& entries);

/// `text` as JSON in double quotes; nothing when it is not UTF-8.
std::optional<std::string> QuotedText(const std::string& text);

/// A name from a file for use in a message: quoted, ASCII, not longer than a line.
std::string ReadableName(const std::string& name);

} // namespace lumora
