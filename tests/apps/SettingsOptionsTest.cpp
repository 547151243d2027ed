// Settings files on the command line.
#include "apps/RenderProgram.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumora::tests
{

namespace
{

using testing::HasSubstr;

Outcome RenderSmall(const TemporaryFolder& folder, const std::string& picture, std::vector<std::string> more)
{
    more.insert(more.end(), {"-o", folder / picture, "--size", "48x36", "--device", "rgb"});
    return Render(more);
}

TEST(SettingsOptions, options_and_set_win_over_the_file)
{
    const TemporaryFolder folder;
    folder.Write("settings.json", R"({"ProjectionType": 1, "CoolMode": 1, "FillMode": 64, "Enabled": false,
        "AntiAlias": 4, "ExposeDDSurface": true})");
    ASSERT_EQ(RenderSmall(folder, "both.png",
                          {"--settings", folder / "settings.json", "--projection", "perspective", "--cool-mode", "0",
                           "--antialias", "1", "--set", "FillMode=D3DRMFILL_SOLID", "--set", "ExposeDDSurface=no"})
                  .status,
              0);
    ASSERT_EQ(RenderSmall(folder, "plain.png", {}).status, 0);
    EXPECT_EQ(folder.Read("both.png"), folder.Read("plain.png"));
}

TEST(SettingsOptions, what_was_chosen_is_saved_and_gives_the_same_picture_again)
{
    const TemporaryFolder folder;
    folder.Write("first.json", R"({"FillMode": 64, "KeyZoomIn": 65})");
    folder.Write("second.json", R"({"note": [1,  2], "Accumulate": true})");
    const Outcome first =
        RenderSmall(folder, "first.png",
                    {"--settings", folder / "first.json", "--save-settings", folder / "second.json", "--antialias", "2",
                     "--set", "BackColor=255", "--set", "FieldOfView=0.25", "--set", "ShadeMode=D3DRMSHADE_FLAT"});
    EXPECT_EQ(first.status, 0);
    EXPECT_THAT(first.complaint, HasSubstr("note"));
    EXPECT_EQ(folder.Read("second.json"), "{\n"
                                          "    \"note\": [1,  2],\n"
                                          "    \"AntiAlias\": \"tdl2X\",\n"
                                          "    \"ShadeMode\": \"D3DRMSHADE_FLAT\",\n"
                                          "    \"FillMode\": \"D3DRMFILL_WIREFRAME\",\n"
                                          "    \"ExposeDDSurface\": true,\n"
                                          "    \"FieldOfView\": 0.25,\n"
                                          "    \"BackColor\": 255,\n"
                                          "    \"Direct3DDevice\": \"tdlDirect3DRGBDevice\",\n"
                                          "    \"KeyZoomIn\": \"tdlNavKeyA\"\n"
                                          "}\n");
    ASSERT_EQ(Render({"-o", folder / "second.png", "--size", "48x36", "--settings", folder / "second.json"}).status, 0);
    EXPECT_EQ(folder.Read("first.png"), folder.Read("second.png"));
    EXPECT_GT(std::ranges::count(ReadPixels(folder / "second.png").colors, 0xFF0000U), 100) << "not the scene's";
}

TEST(SettingsOptions, what_is_not_understood_is_a_warning)
{
    const TemporaryFolder folder;
    folder.Write("settings.json", "{\"FeildOfView\": 1,\n\"FillMode\": \"wire\"}");
    const Outcome outcome = RenderSmall(folder, "out.png", {"--settings", folder / "settings.json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(CountLines(outcome.complaint), 2U) << outcome.complaint;
    EXPECT_THAT(outcome.complaint, HasSubstr("settings.json:1: there is no property \"FeildOfView\""));
    EXPECT_THAT(outcome.complaint, HasSubstr("settings.json:2: the value of FillMode is not used"));
}

} // namespace

} // namespace lumora::tests
