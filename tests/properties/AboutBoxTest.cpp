// The about box: what it shows, and what its second button starts.
#include "properties/AboutBox.h"

#include "base/Faults.h"
#include "base/Registry.h"
#include "support/TemporaryFolder.h"
#include "viewport/LiveControl.h"

#include <gtest/gtest.h>

namespace lumora::tests
{

namespace
{

/// What a press starts, or the message that is shown instead.
std::string PressSystemInfo(const std::filesystem::path& registry)
{
    headless::HeadlessHost host;
    StartSysInfo(*host.TheDialogs(), *host.TheScreen(), registry);
    std::string answer;
    for (const auto& program : host.DialogsShown().ProgramsStarted())
        answer += program.string();
    for (const auto& message : host.Display().Messages())
        answer += message.text;
    return answer;
}

} // namespace

TEST(AboutBox, names_the_control_and_its_version_in_a_fresh_dialog_each_time)
{
    const auto host = std::make_shared<headless::HeadlessHost>();
    const auto hosted = headless::HostedViewport::Live(host);
    std::vector<AboutTexts> shown;
    host->DialogsShown().SetPerson(
        [&](const AboutTexts& texts, const std::function<void()>& pressSystemInfo)
        {
            shown.push_back(texts);
            pressSystemInfo();
        });
    hosted->Control().ShowAboutBox();
    hosted->Control().Terminate();
    hosted->Control().ShowAboutBox();
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_EQ(shown[1].caption, "About 3D Lumora Viewport");
    EXPECT_EQ(shown[1].version, "Version 2.0.353");
    EXPECT_EQ(host->Display().Messages().size() + host->DialogsShown().ProgramsStarted().size(), 2U);

    host->FailNext("Dialogs.ShowAbout", 1, error::RMBadDevice);
    hosted->Control().ShowAboutBox();
    EXPECT_EQ(shown.size(), 3U) << "a transient failure is worth another attempt";
    host->FailNext("Dialogs.ShowAbout", 1, error::OutOfMemory);
    EXPECT_EQ(FailureOf([&] { hosted->Control().ShowAboutBox(); }).Source(), "Viewport");
}

TEST(AboutBox, starts_the_tool_that_the_registry_names_or_says_that_there_is_none)
{
    const TemporaryFolder folder;
    const std::string file = folder / "registry";
    const std::string home = std::filesystem::path{file}.parent_path();
    constexpr const char* Unavailable = "System Information Is Unavailable At This Time";
    const auto press = [&](const char* tool, const std::string& toolFolder)
    {
        Registry registry;
        if (tool != nullptr)
            registry.Set(R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools\MSINFO)", "PATH", tool);
        registry.Set(R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools Location)", "MSINFO", toolFolder);
        registry.Write(file);
        return PressSystemInfo(file);
    };
    EXPECT_EQ(PressSystemInfo(file), Unavailable);
    EXPECT_EQ(press(nullptr, home), Unavailable) << "the folder lacks the tool";
    folder.Write("MSINFO32.EXE", "tool");
    EXPECT_EQ(press(nullptr, home), folder / "MSINFO32.EXE");
    EXPECT_EQ(press("/nowhere/tool", home), "/nowhere/tool") << "the first place wins, whether the program is there";
    faults::FailNext("Dialogs.StartProgram", 1, error::FileNotFound);
    EXPECT_EQ(press("/nowhere/tool", home), Unavailable);

    // Nor does a value that names nothing start what happens to lie in the current folder.
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(home);
    EXPECT_EQ(press("", home), Unavailable);
    EXPECT_EQ(press(nullptr, ""), Unavailable);
    std::filesystem::current_path(before);
    EXPECT_EQ(press(std::string(Registry::MaximumValue, 'x').c_str(), home), folder / "MSINFO32.EXE");
}

} // namespace lumora::tests
