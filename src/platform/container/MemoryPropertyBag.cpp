// Entries by name; what equals its default is not kept.
#include "platform/container/MemoryPropertyBag.h"

#include "base/Faults.h"

#include <algorithm>

namespace lumora
{

Variant MemoryPropertyBag::ReadProperty(std::string_view name, const Variant& defaultValue)
{
    faults::Point("PropertyBag.ReadProperty");
    const Variant* const found = Find(name);
    return found != nullptr ? *found : defaultValue;
}

void MemoryPropertyBag::WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue)
{
    faults::Point("PropertyBag.WriteProperty");
    if (VariantsEqual(value, defaultValue))
        Remove(name);
    else
        Set(name, value);
}

const Variant* MemoryPropertyBag::Find(std::string_view name) const
{
    const auto found = std::ranges::find(entries_, name, &Entry::first);
    return found == entries_.end() ? nullptr : &found->second;
}

void MemoryPropertyBag::Set(std::string_view name, const Variant& value)
{
    const auto found = std::ranges::find(entries_, name, &Entry::first);
    if (found != entries_.end())
        found->second = value;
    else
        entries_.emplace_back(name, value);
}

void MemoryPropertyBag::Remove(std::string_view name)
{
    std::erase_if(entries_, [=](const Entry& entry) { return entry.first == name; });
}

} // namespace lumora
