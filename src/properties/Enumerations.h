// The public enumerations as C++ types, and as a table for everything that knows them by name.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace lumora
{

#define LUMORA_VALUE(name, value) name = value,
#define LUMORA_ENUMERATION(name, help, values)                                                                         \
    enum name : std::int32_t                                                                                           \
    {                                                                                                                  \
        values                                                                                                         \
    };
#include "properties/Enumerations.def"
#undef LUMORA_ENUMERATION
#undef LUMORA_VALUE

struct EnumerationValue
{
    std::string_view name;
    std::int32_t value;
};

struct Enumeration
{
    std::string_view name;
    std::string_view help;
    std::span<const EnumerationValue> values;
};

/// Every public enumeration, in the order of their declaration.
std::span<const Enumeration> Enumerations();

/// The enumeration of this name, or nothing.
const Enumeration* FindEnumeration(std::string_view name);

} // namespace lumora
