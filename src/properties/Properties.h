// The stored property values, one member per row of the property table.
#pragma once

#include "platform/pictures/Picture.h"
#include "properties/Enumerations.h"

#include <cstdint>
#include <memory>
#include <string>

namespace lumora
{

class DirectDraw;
class Frame;
class Surface;

/// Members are named like their properties and start with the default of a new instance. Rows whose reader is Custom
/// have no member here: the window or a drawing object holds them.
struct Properties
{
#define LUMORA_MEMBER_Member(name, type, initial) type name = initial;
#define LUMORA_MEMBER_Custom(name, type, initial)
#define LUMORA_PROPERTY(name, type, initial, reader, writer, saved, help) LUMORA_MEMBER_##reader(name, type, initial)
#include "properties/PropertyTable.def"
#undef LUMORA_PROPERTY
#undef LUMORA_MEMBER_Custom
#undef LUMORA_MEMBER_Member

    /// The cursor type last given to MousePointer: what the window returns to after feedback cursors.
    std::int32_t MousePointerValue = 0;
    /// HighlightPointer was written since the mouse-move handling last cleared this.
    bool HighlightPointerSet = false;
};

} // namespace lumora
