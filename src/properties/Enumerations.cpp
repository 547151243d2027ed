#include "properties/Enumerations.h"

#include <algorithm>

namespace lumora
{

namespace
{

#define LUMORA_VALUE(name, value) EnumerationValue{#name, value},
#define LUMORA_ENUMERATION(name, help, values) constexpr EnumerationValue name##Values[] = {values};
#include "properties/Enumerations.def"
#undef LUMORA_ENUMERATION

#define LUMORA_ENUMERATION(name, help, values) Enumeration{#name, help, name##Values},
constexpr Enumeration Table[] = {
#include "properties/Enumerations.def"
};
#undef LUMORA_ENUMERATION
#undef LUMORA_VALUE

} // namespace

std::span<const Enumeration> Enumerations()
{
    return Table;
}

const Enumeration* FindEnumeration(std::string_view name)
{
    const auto found = std::ranges::find(Table, name, &Enumeration::name);
    return found == std::end(Table) ? nullptr : found;
}

} // namespace lumora
