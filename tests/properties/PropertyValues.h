// Values for properties, made from the table, and the platform calls that follow from them.
#pragma once

#include "base/Faults.h"
#include "platform/pictures/Bitmap.h"
#include "platform/pictures/Picture.h"
#include "properties/PropertyTable.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lumora::test
{

/// A value of the row's type that is not its default and that every layer takes.
inline Variant AnotherValue(const PropertyRow& row)
{
    static const std::map<std::string_view, Variant> special = {
        {"MouseIcon", ObjectReference{std::make_shared<Picture>(std::make_shared<Bitmap>(2, 2))}},
        {"MousePointer", std::int32_t{2}},
        {"CullMethod", std::int32_t{2}},
        {"FillMode", std::int32_t{64}},
        {"LightMode", std::int32_t{0}},
        {"BackClippingPlane", 500.0F},
        {"Direct3DDevice", std::int32_t{3}},
        {"ShadeMode", std::int32_t{0}}};
    if (const auto found = special.find(row.name); found != special.end())
        return found->second;
    switch (row.type)
    {
    case PropertyType::Boolean:
        return !std::get<bool>(row.defaultValue);
    case PropertyType::Single:
        return VariantToSingle(row.defaultValue) + 0.75F;
    case PropertyType::String:
        return std::string{"another"};
    default:
        return VariantToLong(row.defaultValue) + 1;
    }
}

/// The platform calls of `action`, in their order.
template<typename Action>
std::vector<std::string> CallsOf(Action&& action)
{
    faults::Record();
    action();
    auto calls = faults::Recorded();
    faults::Clear();
    return calls;
}

} // namespace lumora::test
