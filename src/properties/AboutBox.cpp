#include "properties/AboutBox.h"

#include "base/Registry.h"
#include "viewport/Names.h"
#include "viewport/Viewport.h"

namespace lumora
{

namespace
{

constexpr const char* ProductName = "3D Lumora Viewport";
constexpr const char* Disclaimer =
    "This software is provided as it is, without warranty of any kind. Whoever uses it decides whether it suits the "
    "purpose and bears the risk of its use.";

constexpr const char* ToolKey = R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools\MSINFO)";
constexpr const char* ToolFolderKey = R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools Location)";
constexpr const char* Unavailable = "System Information Is Unavailable At This Time";

AboutTexts Texts()
{
    return {.caption = std::string{"About "} + ProductName,
            .title = ProductName,
            .version = "Version " LUMORA_VERSION,
            .description = "Direct3D Retained Mode Viewport",
            .disclaimer = Disclaimer,
            .okButton = "OK",
            .systemInfoButton = "&System Info..."};
}

bool TryStart(Dialogs& dialogs, const std::filesystem::path& registry)
{
    std::string value;
    if (GetKeyValue(registry, ToolKey, "PATH", value))
    {
        if (value.empty())
            return false;
        dialogs.StartProgram(value);
        return true;
    }
    if (!GetKeyValue(registry, ToolFolderKey, "MSINFO", value))
        return false;
    // The texts joined: below an empty folder lies the root of the disk, not the folder this process runs in.
    const std::filesystem::path tool = value + "/MSINFO32.EXE";
    std::error_code problem;
    if (!std::filesystem::exists(tool, problem))
        return false;
    dialogs.StartProgram(tool);
    return true;
}

} // namespace

void StartSysInfo(Dialogs& dialogs, Screen& screen, const std::filesystem::path& registry)
{
    bool started = false;
    IgnoringErrors([&] { started = TryStart(dialogs, registry); });
    if (!started)
        IgnoringErrors([&] { screen.MessageBox(Unavailable, ""); });
}

// The control may be gone when the dialog closes: only what the container owns is used.
void Viewport::ShowAboutBox()
{
    const auto container = container_;
    const auto onSystemInfo = [container]
    {
        std::filesystem::path registry;
        IgnoringErrors([&] { registry = Registry::DefaultPath(); });
        StartSysInfo(*container->TheDialogs(), *container->TheScreen(), registry);
    };
    const Trap trap{Source};
    trap([&] { container->TheDialogs()->ShowAbout(Texts(), onSystemInfo); });
}

} // namespace lumora
