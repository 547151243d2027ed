#include "properties/PropertyTable.h"

#include "base/Numbers.h"
#include "properties/Spelling.h"
#include "viewport/Viewport.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace lumora
{

namespace
{

constexpr std::int32_t FirstDispatchId = 0x68030000;
constexpr int RowCount = 97;

// How each C++ type of a property crosses to a Variant and back.
template<typename Type>
struct Crossing // enumerations
{
    static constexpr PropertyType Kind = PropertyType::Long;
    static Variant Out(Type value) { return static_cast<std::int32_t>(value); }
    static Type In(const Variant& value) { return static_cast<Type>(VariantToLong(value)); }
};

template<>
struct Crossing<std::int32_t>
{
    static constexpr PropertyType Kind = PropertyType::Long;
    static Variant Out(std::int32_t value) { return value; }
    static std::int32_t In(const Variant& value) { return VariantToLong(value); }
};

template<>
struct Crossing<std::int16_t>
{
    static constexpr PropertyType Kind = PropertyType::Integer;
    static Variant Out(std::int16_t value) { return value; }
    static std::int16_t In(const Variant& value) { return VariantToInteger(value); }
};

template<>
struct Crossing<bool>
{
    static constexpr PropertyType Kind = PropertyType::Boolean;
    static Variant Out(bool value) { return value; }
    static bool In(const Variant& value) { return VariantToBoolean(value); }
};

template<>
struct Crossing<float>
{
    static constexpr PropertyType Kind = PropertyType::Single;
    static Variant Out(float value) { return value; }
    static float In(const Variant& value) { return VariantToSingle(value); }
};

template<>
struct Crossing<std::string>
{
    static constexpr PropertyType Kind = PropertyType::String;
    static Variant Out(std::string value) { return value; }
    static std::string In(const Variant& value) { return VariantToString(value); }
};

template<typename Type>
struct Crossing<std::shared_ptr<Type>>
{
    static constexpr PropertyType Kind = PropertyType::Object;
    static Variant Out(std::shared_ptr<Type> value) { return ObjectReference{std::move(value)}; }
    static std::shared_ptr<Type> In(const Variant& value)
    {
        const ObjectReference object = VariantToObject(value);
        auto wanted = std::dynamic_pointer_cast<Type>(object);
        if (object && !wanted)
            throw RuntimeError{error::TypeMismatch, "automation", "Type mismatch: this is another kind of object"};
        return wanted;
    }
};

#define LUMORA_WRITE_Plain(name, type)                                                                                 \
    [](Viewport& viewport, const Variant& value) { viewport.Set##name(Crossing<type>::In(value)); }
#define LUMORA_WRITE_Trapped(name, type) LUMORA_WRITE_Plain(name, type)
#define LUMORA_WRITE_Ignored(name, type) LUMORA_WRITE_Plain(name, type)
#define LUMORA_WRITE_Custom(name, type) LUMORA_WRITE_Plain(name, type)
#define LUMORA_WRITE_None(name, type) nullptr

// The column `saved` of the table.
struct Keeping
{
    bool isSaved;
    bool isHidden;
};

constexpr Keeping Saved{true, false};
constexpr Keeping NotSaved{false, false};
constexpr Keeping Hidden{false, true};

std::vector<PropertyRow> MakeTable()
{
    std::vector<PropertyRow> rows = {
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help)                                              \
    PropertyRow{#name,                                                                                                 \
                0,                                                                                                     \
                Crossing<type>::Kind,                                                                                  \
                #type,                                                                                                 \
                Crossing<type>::Out(initial),                                                                          \
                (saved).isSaved,                                                                                       \
                (saved).isHidden,                                                                                      \
                help,                                                                                                  \
                [](const Variant& value) { return Crossing<type>::Out(Crossing<type>::In(value)); },                   \
                [](const Viewport& viewport) { return Crossing<type>::Out(viewport.name()); },                         \
                LUMORA_WRITE_##writer(name, type)},
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
    };
    for (int i = 0; i < RowCount; ++i)
        rows[i].dispatchId = FirstDispatchId + RowCount - 1 - i;
    return rows;
}

[[noreturn]] void RaiseUnreadable(const PropertyRow& row, std::string_view text, const std::string& wanted)
{
    throw RuntimeError{error::TypeMismatch, "Viewport",
                       std::string{row.name} + " cannot be \"" + std::string{text} + "\": " + wanted};
}

std::string ValueNames(const Enumeration& enumeration, std::string_view text)
{
    std::vector<std::string_view> names;
    for (const EnumerationValue& value : enumeration.values)
        names.push_back(value.name);
    return "give a number or a name of " + std::string{enumeration.name} + "; the nearest is " +
           std::string{names[NearestSpelling(text, names)]};
}

Variant ParseNumber(const PropertyRow& row, std::string_view text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, number);
    if (problem == std::errc{} && stop == end)
        return row.type == PropertyType::Single ? Variant{ToSingle(number)} : Variant{ToLong(number)};
    const Enumeration* enumeration = FindEnumeration(row.typeName);
    if (!enumeration)
        RaiseUnreadable(row, text, "give a number");
    for (const EnumerationValue& value : enumeration->values)
        if (EqualIgnoringCase(value.name, text))
            return value.value;
    RaiseUnreadable(row, text, ValueNames(*enumeration, text));
}

Variant ParseBoolean(const PropertyRow& row, std::string_view text)
{
    for (const char* yes : {"true", "yes", "on", "1", "-1"})
        if (EqualIgnoringCase(text, yes))
            return true;
    for (const char* no : {"false", "no", "off", "0"})
        if (EqualIgnoringCase(text, no))
            return false;
    RaiseUnreadable(row, text, "give True or False");
}

} // namespace

std::span<const PropertyRow> PropertyTable()
{
    static const std::vector<PropertyRow> table = MakeTable();
    return table;
}

const PropertyRow* FindProperty(std::string_view name)
{
    const auto table = PropertyTable();
    const auto found = std::ranges::find(table, name, &PropertyRow::name);
    return found == table.end() ? nullptr : &*found;
}

const PropertyRow& NearestProperty(std::string_view name)
{
    std::vector<std::string_view> names;
    for (const PropertyRow& row : PropertyTable())
        names.push_back(row.name);
    return PropertyTable()[NearestSpelling(name, names)];
}

Variant ParsePropertyValue(const PropertyRow& row, std::string_view text)
{
    switch (row.type)
    {
    case PropertyType::Boolean:
        return ParseBoolean(row, text);
    case PropertyType::Integer:
    case PropertyType::Long:
    case PropertyType::Single:
        return ParseNumber(row, text);
    case PropertyType::String:
        return std::string{text};
    case PropertyType::Object:
        break;
    }
    RaiseUnreadable(row, text, "an object cannot be written as a text");
}

} // namespace lumora
