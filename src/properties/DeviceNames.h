// Drivers as the Direct3DDevice property counts them.
#pragma once

#include "properties/Enumerations.h"

namespace lumora
{

/// The identifier name of a device type; "IID_IDirect3DDefaultDevice" for values outside the enumeration.
const char* DeviceGuidName(tdlDirect3DDevice Device);

} // namespace lumora
