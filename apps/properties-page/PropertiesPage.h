// The reference page of the properties, made from their table.
#pragma once

#include <string>

namespace lumora
{

/// The text of docs/properties.md.
std::string PropertiesPage();

} // namespace lumora
