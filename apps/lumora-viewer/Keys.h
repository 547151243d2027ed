// The keys that navigate, until a person chooses others.
#pragma once

#include "properties/Enumerations.h"

#include <QString>
#include <string_view>

namespace lumora
{
class Viewport;
}

namespace lumora::viewer
{

/// Of a key property; tdlNavKeyDisable for any other.
tdlNavKey DefaultKey(std::string_view property);

/// How to move about, with the keys as they are now: a page of rich text.
QString NavigationHelp(const Viewport& control);

} // namespace lumora::viewer
