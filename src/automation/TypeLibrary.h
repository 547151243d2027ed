// The type library: one document that says what every class offers, made from the tables that do the work.
#pragma once

#include <string>

namespace lumora::automation
{

/// A JSON document: classes with the names of their interfaces, members (name, id, kinds, type, default, arguments,
/// help, hidden) and events, and the public enumerations with their values.
std::string TypeLibraryDocument();

} // namespace lumora::automation
