// The about box: what it shows, and what its second button starts.
#include "properties/AboutBox.h"

#include "platform/automation/Faults.h"
#include "platform/automation/Registry.h"
#include "support/TemporaryFolder.h"
#include "viewport/LiveControl.h"

#include <gtest/gtest.h>

namespace lumora::tests
{

namespace
{

struct Answer
{
    std::vector<std::filesystem::path> started;
    std::vector<std::string> messages;
};

Answer PressSystemInfo(const std::filesystem::path& registry)
{
    headless::HeadlessHost host;
    StartSysInfo(*host.TheDialogs(), *host.TheScreen(), registry);
    Answer answer{host.DialogsShown().ProgramsStarted(), {}};
    for (const auto& message : host.Display().Messages())
        answer.messages.push_back(message.text);
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
    const RuntimeError failure = test::ErrorOf([&] { hosted->Control().ShowAboutBox(); });
    EXPECT_EQ(failure.Number(), error::OutOfMemory);
    EXPECT_EQ(failure.Source(), "Viewport");
}

TEST(AboutBox, starts_the_tool_that_the_registry_names_or_says_that_there_is_none)
{
    const TemporaryFolder folder;
    const std::string file = folder / "registry";
    const std::string home = std::filesystem::path{file}.parent_path().string();
    constexpr const char* ToolKey = R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools\MSINFO)";
    constexpr const char* FolderKey = R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools Location)";
    const std::vector<std::string> unavailable{"System Information Is Unavailable At This Time"};
    EXPECT_EQ(PressSystemInfo(file).messages, unavailable);

    Registry registry;
    registry.Set(FolderKey, "MSINFO", home);
    registry.Write(file);
    EXPECT_EQ(PressSystemInfo(file).messages, unavailable); // the folder lacks the tool
    folder.Write("MSINFO32.EXE", "tool");
    EXPECT_EQ(PressSystemInfo(file).started, std::vector<std::filesystem::path>{folder / "MSINFO32.EXE"});

    // The first place wins, whether the program is there or not.
    registry.Set(ToolKey, "PATH", "/nowhere/tool");
    registry.Write(file);
    EXPECT_EQ(PressSystemInfo(file).started, std::vector<std::filesystem::path>{"/nowhere/tool"});
    faults::FailNext("Dialogs.StartProgram", 1, error::FileNotFound);
    EXPECT_EQ(PressSystemInfo(file).messages, unavailable);

    // Nor does a value that names nothing start what happens to lie in the current folder.
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(home);
    registry.Set(ToolKey, "PATH", "");
    registry.Write(file);
    EXPECT_EQ(PressSystemInfo(file).messages, unavailable);
    registry = {};
    registry.Set(FolderKey, "MSINFO", "");
    registry.Write(file);
    EXPECT_EQ(PressSystemInfo(file).messages, unavailable);
    std::filesystem::current_path(before);

    registry.Set(FolderKey, "MSINFO", home);
    registry.Set(ToolKey, "PATH", std::string(Registry::MaximumValue, 'x'));
    registry.Write(file);
    EXPECT_EQ(PressSystemInfo(file).started, std::vector<std::filesystem::path>{folder / "MSINFO32.EXE"});
}

} // namespace lumora::tests
