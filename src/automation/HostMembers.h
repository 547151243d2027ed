// The rows of the headless host's members.
#pragma once

#include "automation/HostFace.h"

namespace lumora::automation
{

template<>
inline constexpr const char* ClassNameOf<ViewportFace> = "Viewport";
template<>
inline constexpr const char* ClassNameOf<Dispatchable> = "Object";

const MemberTable<HostFace>& HostTable();

} // namespace lumora::automation
