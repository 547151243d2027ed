// Modal dialogs and other programs, as a host shows and starts them.
#pragma once

#include "base/Variant.h"

#include <filesystem>
#include <functional>
#include <string>

namespace lumora
{

/// The texts of an about box, from top to bottom; an & stands before a button's access key. The icon is the host's.
struct AboutTexts
{
    std::string caption;
    std::string title;
    std::string version;
    std::string description;
    std::string disclaimer;
    std::string okButton;
    std::string systemInfoButton;
};

class Dialogs : public Object
{
public:
    /// Shows a new about box and returns when it has been closed. `onSystemInfo` is called whenever its second button
    /// is pressed, and raises nothing.
    virtual void ShowAbout(const AboutTexts& texts, const std::function<void()>& onSystemInfo) = 0;

    /// Starts a program in a normal, focused window and does not wait for it. FileNotFound when it cannot be started.
    virtual void StartProgram(const std::filesystem::path& program) = 0;
};

} // namespace lumora
