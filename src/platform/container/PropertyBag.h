// Named values that a container keeps for a control.
#pragma once

#include "base/Variant.h"

#include <string_view>

namespace lumora
{

class PropertyBag : public Object
{
public:
    /// The entry, or `defaultValue` when there is none.
    virtual Variant ReadProperty(std::string_view name, const Variant& defaultValue) = 0;

    /// Stores the entry unless it equals its default (numbers compare numerically): then it is removed.
    virtual void WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue) = 0;
};

} // namespace lumora
