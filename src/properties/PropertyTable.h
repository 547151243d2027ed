// The property table at run time: for everything that reaches properties by name.
#pragma once

#include "base/Variant.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lumora
{

class Viewport;

enum class PropertyType
{
    Boolean,
    Integer, ///< 16-bit
    Long,
    Single,
    String,
    Object,
};

struct PropertyRow
{
    std::string_view name;
    std::int32_t dispatchId;
    PropertyType type;
    std::string_view typeName; ///< as declared; names an enumeration where it is one
    Variant defaultValue;
    bool saved;
    bool hidden; ///< browsers of properties leave it out
    std::string_view help;

    /// `value` as the row's type holds it. Errors 13 (another kind of value) and 6 (out of range).
    Variant (*convert)(const Variant& value);

    /// Reads the property. Errors: those of its reader.
    Variant (*read)(const Viewport&);

    /// Converts and writes; nothing for a read-only property. Errors: those of the conversion (13, 6) and of the
    /// writer.
    void (*write)(Viewport&, const Variant&);
};

/// All rows, in the order of their declaration (descending dispatch ids).
std::span<const PropertyRow> PropertyTable();

/// The row of this name (exact), or nothing.
const PropertyRow* FindProperty(std::string_view name);

/// The row whose name is spelled most like this one.
const PropertyRow& NearestProperty(std::string_view name);

/// The value that `text` means for a row: a number, True or False, the name of one of its enumeration's values, a text.
/// Error 13 with a sentence that names what would do, the nearest enumeration value included.
Variant ParsePropertyValue(const PropertyRow& row, std::string_view text);

} // namespace lumora
