// A property bag in memory.
#pragma once

#include "platform/container/PropertyBag.h"

#include <string>
#include <utility>
#include <vector>

namespace lumora
{

/// Entries stay in the order in which they were first written.
class MemoryPropertyBag : public PropertyBag
{
public:
    using Entry = std::pair<std::string, Variant>;

    Variant ReadProperty(std::string_view name, const Variant& defaultValue) override;
    void WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue) override;

    // For whoever runs the machine. None of these can be told to fail.

    const std::vector<Entry>& Entries() const { return entries_; }

    /// The entry of this name, or nothing.
    const Variant* Find(std::string_view name) const;

    /// Stores the entry whatever it is.
    void Set(std::string_view name, const Variant& value);
    void Remove(std::string_view name);

private:
    std::vector<Entry> entries_;
};

} // namespace lumora
