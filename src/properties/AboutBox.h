// What the about box's second button does.
#pragma once

#include "platform/container/Dialogs.h"
#include "platform/container/Screen.h"

#include <filesystem>

namespace lumora
{

/// Starts the system's information tool as the registry in `registry` names it: value PATH of the key
/// HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools\MSINFO, else MSINFO32.EXE in the folder that value MSINFO of
/// HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools Location names, where there is such a file. Anything that fails
/// is one message box; nothing is raised.
void StartSysInfo(Dialogs& dialogs, Screen& screen, const std::filesystem::path& registry);

} // namespace lumora
