// What the program answers, whatever it is told.
#include "apps/RenderProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

namespace lumora::tests
{

namespace
{

using testing::HasSubstr;

struct Refusal
{
    const char* name;
    std::vector<std::string> arguments; // @NAME is a file of that name in the test's folder
    int status;
    const char* sentence;            // a part of it
    const char* output = "@out.png"; // empty: none
};

class RefusedCommandLine : public testing::TestWithParam<Refusal>
{
protected:
    std::string Written(const std::string& argument) const
    {
        return argument.starts_with('@') ? folder_ / argument.substr(1) : argument;
    }

    const TemporaryFolder folder_;
};

TEST_P(RefusedCommandLine, is_answered_with_one_sentence_and_leaves_the_picture_before)
{
    const std::pair<const char*, std::string> files[] = {{"damaged.json", "{\n,}"},
                                                         {"damaged.obj", std::string(1000, '\xFE')},
                                                         {"misspelt.txt", "frame\nmoev 1 2\n"},
                                                         {"out.png", "the picture before"},
                                                         {"refused.txt", "frame\nset FieldOfView=-1\nshot\n"},
                                                         {"shot.txt", "shot\n"}};
    for (const auto& [name, text] : files)
        folder_.Write(name, text);
    std::vector<std::string> arguments;
    for (const std::string& argument : GetParam().arguments)
        arguments.push_back(Written(argument));
    if (*GetParam().output != 0)
        arguments.insert(arguments.end(), {"-o", Written(GetParam().output)});
    const Outcome outcome = Render(arguments);
    EXPECT_EQ(outcome.status, GetParam().status);
    EXPECT_THAT(outcome.complaint, HasSubstr(GetParam().sentence));
    EXPECT_EQ(CountLines(outcome.complaint), 1u) << outcome.complaint;
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(folder_.Names(), testing::SizeIs(std::size(files)));
    for (const auto& [name, text] : files)
        EXPECT_EQ(folder_.Read(name), text);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, RefusedCommandLine,
    testing::Values(
        Refusal{"size_without_height", {"--size", "640"}, 2, "--size needs"},
        Refusal{"size_zero", {"--size", "0x480"}, 2, "--size needs"},
        Refusal{"size_too_large", {"--size", "16385x1"}, 2, "--size needs"},
        Refusal{"size_with_rest", {"--size", "64x48x2"}, 2, "--size needs"},
        Refusal{"view_misspelt", {"--view", "frnt"}, 2, "did you mean \"front\"?"},
        Refusal{"projection_misspelt", {"--projection", "ortographic"}, 2, "did you mean \"orthographic\"?"},
        Refusal{"device_misspelt", {"--device", "rbg"}, 2, "did you mean \"rgb\"?"},
        Refusal{"camera_of_eight", {"--camera", "0,0,0,0,0,1,0,1"}, 2, "nine numbers"},
        Refusal{"camera_not_finite", {"--camera", "nan,0,0,0,0,1,0,1,0"}, 2, "nine numbers"},
        Refusal{"camera_and_view", {"--camera", "0,0,0,0,0,1,0,1,0", "--view", "top"}, 2, "exclude each other"},
        Refusal{"camera_without_direction", {"--camera", "0,0,0,0,0,0,0,1,0"}, 1, ""},
        Refusal{"antialias_three", {"--antialias", "3"}, 2, "1, 2 or 4"},
        Refusal{"stretch_of_nothing", {"--stretch"}, 2, "--background"},
        Refusal{"background_missing", {"--background", "/nowhere/picture.png"}, 1, "/nowhere/picture.png"},
        Refusal{"prerendered_no_picture", {"--prerendered", "/proc/self/cmdline"}, 1, "/proc/self/cmdline"},
        Refusal{"frames_zero", {"--frames", "0"}, 2, "from 1 to 100000"},
        Refusal{"frames_many", {"--frames", "100001"}, 2, "from 1 to 100000"},
        Refusal{"frames_no_number", {"--frames", "many"}, 2, "frames"},
        Refusal{"unknown_option", {"--turn-table"}, 2, "--turn-table"},
        Refusal{"property_misspelt", {"--set", "FieldOfVeiw=1"}, 2, "did you mean \"FieldOfView\"?"},
        Refusal{"property_read_only", {"--set", "ViewportState=1"}, 2, "ViewportState is read-only"},
        Refusal{"property_an_object", {"--set", "Scene=1"}, 2, "Scene"},
        Refusal{"property_without_value", {"--set", "FieldOfView"}, 2, "Name=value"},
        Refusal{"value_misspelt", {"--set", "FillMode=D3DRMFILL_WIREFAME"}, 2, "D3DRMFILL_WIREFRAME"},
        Refusal{"value_of_another_kind", {"--set", "Accumulate=perhaps"}, 2, "Accumulate"},
        Refusal{"value_out_of_range", {"--set", "CoolMode=4294967296"}, 2, "CoolMode"},
        Refusal{"value_the_platform_refuses", {"--set", "FieldOfView=-1"}, 1, "FieldOfView"},
        Refusal{"model_missing", {"/nowhere/model.obj"}, 1, "/nowhere/model.obj"},
        Refusal{"model_damaged", {"@damaged.obj"}, 1, "damaged.obj"}, Refusal{"output_missing", {}, 2, "--output", ""},
        Refusal{"output_of_another_format", {}, 2, ".png", "@picture.jpg"},
        Refusal{"output_without_ending", {}, 2, ".png", "@picture"},
        Refusal{"output_with_two_numbers", {}, 2, "", "@a%d-%d.png"},
        Refusal{"output_with_a_long_number", {}, 2, "", "@a%0123456789d.png"},
        Refusal{"output_folder_missing", {}, 1, "does not exist", "@missing/out.png"},
        Refusal{"settings_missing", {"--settings", "@missing.json"}, 1, "no file"},
        Refusal{"settings_damaged", {"--settings", "@damaged.json"}, 1, "damaged.json:2:1: "},
        Refusal{"settings_to_keep_damaged", {"--save-settings", "@damaged.json"}, 1, "damaged.json:2:1: "},
        Refusal{"settings_folder_missing", {"--save-settings", "@missing/settings.json"}, 1, "cannot be written"},
        Refusal{"settings_a_folder", {"--save-settings", "@."}, 1, "not a plain file"},
        Refusal{"settings_of_a_failed_run", {"--set", "FieldOfView=-1", "--save-settings", "@new.json"}, 1, "Field"},
        Refusal{"session_missing", {"--play", "@none.txt"}, 1, "There is no file"},
        Refusal{"session_misspelt", {"--play", "@misspelt.txt"}, 1, "misspelt.txt:2: There is no action"},
        Refusal{"session_refused", {"--play", "@refused.txt", "--size", "20x20"}, 1, "refused.txt:2: "},
        Refusal{"session_with_turntable", {"--play", "@shot.txt", "--turntable"}, 2, "--play draws what the session"},
        Refusal{"session_without_output", {"--play", "@shot.txt"}, 2, "--output is required", ""},
        Refusal{"pick_of_one", {"--pick", "10"}, 2, "--pick needs", ""},
        Refusal{"pick_not_finite", {"--pick", "nan,0"}, 2, "--pick needs", ""},
        Refusal{"pick_far_outside", {"--pick", "0,16385"}, 2, "--pick needs", ""}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(CommandLine, explains_itself_on_standard_output)
{
    const Outcome help = Render({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--output", "--size", "--view", "--projection", "--camera", "--device", "--antialias",
                               "--cool-mode", "--expose", "--set", "--settings", "--save-settings", "--frames",
                               "--turntable", "--play", "--events", "--pick", "--stats", "--version"})
        EXPECT_THAT(help.output, HasSubstr(option));
    EXPECT_EQ(help.complaint, "");

    const Outcome version = Render({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.output, testing::MatchesRegex("lumora-render [0-9.]+\n"));
}

TEST(Statistics, are_one_line_of_json)
{
    const TemporaryFolder folder;
    const Outcome outcome =
        Render({"-o", folder / "out.png", "--size", "40x30", "--frames", "3", "--device", "ref", "--stats"});
    ASSERT_EQ(outcome.status, 0) << outcome.complaint;
    EXPECT_EQ(CountLines(outcome.output), 1u);
    const auto statistics = nlohmann::json::parse(outcome.output);
    EXPECT_THAT(statistics.at("driver").get<std::string>(), HasSubstr("Ref"));
    EXPECT_GT(statistics.at("triangles").get<int>(), 1000);
    EXPECT_EQ(statistics.at("width"), 40);
    EXPECT_EQ(statistics.at("height"), 30);
    EXPECT_EQ(statistics.at("frames"), 3);
    EXPECT_GT(statistics.at("medianFrameMilliseconds").get<double>(), 0);
    EXPECT_GE(statistics.at("worstFrameMilliseconds").get<double>(),
              statistics.at("medianFrameMilliseconds").get<double>());
    EXPECT_GE(statistics.at("worstFrameMilliseconds"), statistics.at("firstFrameMilliseconds"));
    EXPECT_GE(statistics.at("worstFrameMilliseconds"), statistics.at("laterFrameMilliseconds"));
    EXPECT_GE(statistics.at("loadMilliseconds").get<double>(), 0);
    EXPECT_GT(statistics.at("compileMilliseconds").get<double>(), 0);
    EXPECT_GT(statistics.at("peakMemoryBytes").get<double>(), 1 << 20);
    EXPECT_FALSE(statistics.contains("driverMemoryBytes")); // the reference driver keeps no account
}

TEST(BuiltInScene, is_rich_and_the_same_at_every_run)
{
    const TemporaryFolder folder;
    ASSERT_EQ(Render({"-o", folder / "a.png", "--size", "160x100"}).status, 0);
    ASSERT_EQ(Render({"-o", folder / "b.png", "--size", "160x100"}).status, 0);
    EXPECT_EQ(folder.Read("a.png"), folder.Read("b.png"));
    const Pixels pixels = ReadPixels(folder / "a.png");
    EXPECT_EQ(pixels.width, 160);
    EXPECT_EQ(pixels.height, 100);
    EXPECT_GT(std::set(pixels.colors.begin(), pixels.colors.end()).size(), 2000u);
}

} // namespace

} // namespace lumora::tests
