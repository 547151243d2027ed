// The headings under which people look for properties.
#pragma once

#include "properties/PropertyTable.h"

namespace lumora
{

/// For example "Camera".
std::string_view GroupOf(const PropertyRow& row);

} // namespace lumora
