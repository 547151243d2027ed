// One row for each property and for each enumeration, as Markdown.
#include "properties-page/PropertiesPage.h"

#include "properties/Enumerations.h"
#include "properties/PropertyTable.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace lumora
{

namespace
{

constexpr const char* Head = R"(# Properties

All properties of the control, in the order of their dispatch identifiers. This page is made from
`src/properties/PropertyTable.def` and `src/properties/Enumerations.def`; after a change there, make it again:

    cmake --build --preset dev --target lumora-properties-page
    build/dev/bin/lumora-properties-page > docs/properties.md

In C++ a property is read by `Name()` and written by `SetName(value)`. Boolean is 16 bits wide at the dispatch boundary
(True is -1), Long a 32-bit signed whole number, Integer a 16-bit one, Single a 32-bit floating-point number, String
UTF-8 text in C++. Values of enumerations are 32-bit numbers and stored as given, also where they have no name. Saved
properties are kept by a container's property bag, and by settings files, while they differ from their defaults.

| name | id | type | default | access | saved | what it is |
| --- | --- | --- | --- | --- | --- | --- |
)";

constexpr const char* SettingsFiles = R"(
## Settings files

A settings file (`lumora-render --settings FILE`, `JsonPropertyBag` in C++) is a JSON object with a name and a value for
each property that is saved:

    {
        "FillMode": "D3DRMFILL_WIREFRAME",
        "AntiAlias": "tdl2X",
        "FieldOfView": 0.35,
        "Enabled": true
    }

Enumerations take names (upper or lower case) or numbers. Entries that are no properties are reported, kept and written
back. A damaged file is refused whole, with line and column, and never overwritten. `MouseIcon` is the one saved property
that settings files leave out: a picture does not know the file it came from.

## Enumerations
)";

std::string LowerCase(std::string_view name)
{
    std::string lower{name};
    std::ranges::transform(lower, lower.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return lower;
}

// An object's class is the last name of its pointer's type.
std::string TypeText(const PropertyRow& row)
{
    constexpr const char* Names[] = {"Boolean", "Integer", "Long", "Single", "String"};
    if (FindEnumeration(row.typeName) != nullptr)
        return "[" + std::string{row.typeName} + "](#" + LowerCase(row.typeName) + ")";
    if (row.type != PropertyType::Object)
        return Names[static_cast<std::size_t>(row.type)];
    const std::size_t start = row.typeName.find_last_of(":<") + 1;
    return std::string{row.typeName.substr(start, row.typeName.size() - start - 1)};
}

std::string DefaultText(const PropertyRow& row)
{
    if (row.type == PropertyType::Object)
        return "nothing";
    const std::string text = VariantToString(row.defaultValue);
    if (row.type == PropertyType::String)
        return text.empty() ? "empty" : "\"" + text + "\"";
    if (const Enumeration* const enumeration = FindEnumeration(row.typeName))
        for (const EnumerationValue& value : enumeration->values)
            if (Variant{value.value} == row.defaultValue)
                return std::string{value.name} + " (" + text + ")";
    return text;
}

std::string RowText(const PropertyRow& row)
{
    char identifier[16];
    std::snprintf(identifier, sizeof identifier, "0x%08X", static_cast<unsigned>(row.dispatchId));
    return "| " + std::string{row.name} + " | " + identifier + " | " + TypeText(row) + " | " + DefaultText(row) +
           " | " + (row.write != nullptr ? "read, write" : "read") + " | " + (row.saved ? "yes" : "no") + " | " +
           std::string{row.help} + " |\n";
}

std::string EnumerationText(const Enumeration& enumeration)
{
    std::string text = "\n### " + std::string{enumeration.name} + "\n\n";
    text += std::string{enumeration.help} + "\n\n| name | value |\n| --- | --- |\n";
    for (const EnumerationValue& value : enumeration.values)
        text += "| " + std::string{value.name} + " | " + std::to_string(value.value) + " |\n";
    return text;
}

} // namespace

std::string PropertiesPage()
{
    std::string page = Head;
    for (const PropertyRow& row : PropertyTable())
        page += RowText(row);
    page += SettingsFiles;
    for (const Enumeration& enumeration : Enumerations())
        page += EnumerationText(enumeration);
    return page;
}

} // namespace lumora
