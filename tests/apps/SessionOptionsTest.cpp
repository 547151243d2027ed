// Sessions, events and picks as lumora-render answers them.
#include "apps/RenderProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace lumora::tests
{

namespace
{

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<json> LinesOf(const std::string& output)
{
    std::vector<json> lines;
    std::istringstream text{output};
    for (std::string line; std::getline(text, line);)
        lines.push_back(json::parse(line));
    return lines;
}

TEST(SessionOptions, a_session_draws_moves_the_camera_and_tells_its_events)
{
    const TemporaryFolder folder;
    folder.Write("walk.txt",
                 "size 120 80\n"
                 "set CenterNavigation=True\n"
                 "camera 0 1 -8 0 0 1 0 1 0\n"
                 "shot\n"
                 "hold shift\nhold ctrl\npress middle 60 40\nmove 0 -50 400\nrelease middle\ndrop ctrl\ndrop shift\n"
                 "shot\nshot walked.png\n");
    const Outcome outcome =
        Render({"--play", folder / "walk.txt", "-o", folder / "out.png", "--events", "--pick", "-1,-1"});
    ASSERT_EQ(outcome.status, 0) << outcome.complaint;
    EXPECT_THAT(folder.Names(), ElementsAre("out-0.png", "out-1.png", "walk.txt", "walked.png"));
    EXPECT_EQ(ReadPixels(folder / "out-0.png").width, 120);
    EXPECT_NE(folder.Read("out-0.png"), folder.Read("out-1.png"));
    EXPECT_EQ(folder.Read("walked.png"), folder.Read("out-1.png"));

    int begun = 0;
    json moved;
    const std::vector<json> lines = LinesOf(outcome.output);
    for (const json& line : lines)
    {
        begun += line.value("event", "") == "BeginNavigating" ? 1 : 0;
        if (line.value("event", "") == "CameraMoved")
            moved = line;
    }
    EXPECT_EQ(begun, 1);
    ASSERT_TRUE(moved.is_object());
    EXPECT_NEAR(moved.at("PositionZ").get<double>(), -8 + 50 * 15 * 0.002, 1e-4);
    EXPECT_EQ(moved.at("time"), 1400);
    EXPECT_TRUE(lines.back().at("pick").is_array());
}

#ifdef LUMORA_HOUSE
// One mesh to walk in by its faces, or as a box up to its outer wall alone, under a dome that stops no camera.
TEST(SessionOptions, obstacles_of_the_house_stop_the_camera_where_the_session_says)
{
    const TemporaryFolder folder;
    const Outcome outcome =
        Render({"--play", LUMORA_HOUSE ".txt", "--size", "64x40", "--camera", "0,1.6,-12,0,0,1,0,1,0", "-o",
                folder / "house.png", "--events", LUMORA_HOUSE ".obj"});
    ASSERT_EQ(outcome.status, 0) << outcome.complaint;
    std::vector<double> ends;
    double z = 0;
    for (const json& line : LinesOf(outcome.output))
    {
        z = line.value("event", "") == "CameraMoved" ? line.at("PositionZ").get<double>() : z;
        if (line.value("event", "") == "KeyUp")
            ends.push_back(z);
    }
    using testing::DoubleNear;
    EXPECT_THAT(
        ends, ElementsAre(DoubleNear(-0.3, 1e-4), DoubleNear(3.7, 1e-4), DoubleNear(3.7, 1e-4), DoubleNear(36, 1e-3)));
}
#endif

TEST(SessionOptions, a_size_on_the_command_line_wins_and_a_session_ends_with_a_picture_or_names_its_shots)
{
    const TemporaryFolder folder;
    folder.Write("walk.txt", "size 120 80\nframe\n");
    ASSERT_EQ(Render({"--play", folder / "walk.txt", "-o", folder / "out.png", "--size", "60x50"}).status, 0);
    EXPECT_EQ(ReadPixels(folder / "out.png").width, 60);
    folder.Write("shot.txt", "shot\n");
    EXPECT_THAT(Render({"--play", folder / "shot.txt", "--events", "--size", "20x20"}).complaint,
                HasSubstr("shot.txt:1: This picture has no name"));
}

// From (5, 3, -3.5) straight down, the picture's half side is half the height: 1.5 units for 50 pixels.
TEST(SessionOptions, a_pick_names_the_place_in_the_scene)
{
    const Outcome outcome =
        Render({"--pick", "60,40", "--pick", "50,50", "--size", "100x100", "--camera", "5,3,-3.5,0,-1,0,0,0,1", "--set",
                "FieldOfView=0.5", "--set", "FrontClippingPlane=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.complaint;
    const std::vector<json> lines = LinesOf(outcome.output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].at("pick"), (json{60, 40}));
    const auto world = lines[0].at("hit").at("world").get<std::vector<double>>();
    EXPECT_NEAR(world[0], 5.3, 1e-3);
    EXPECT_NEAR(world[1], 0, 1e-3);
    EXPECT_NEAR(world[2], -3.2, 1e-3);
    EXPECT_NEAR(lines[1].at("hit").at("world").at(0).get<double>(), 5, 1e-3);
    const Outcome sky = Render({"--pick", "5,5", "--size", "10x10", "--camera", "900,900,900,0,1,0,0,0,1"});
    EXPECT_EQ(LinesOf(sky.output).at(0).at("hit"), nullptr);
}

} // namespace

} // namespace lumora::tests
