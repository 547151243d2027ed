// Pictures of models whose place on the picture is known beforehand.
#include "apps/RenderProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace lumora::tests
{

namespace
{

using testing::ElementsAre;

// A rectangle in the plane z = 0, x 0..1 and y 0..0.5.
constexpr const char* Rectangle = "v 0 0 0\nv 1 0 0\nv 1 0.5 0\nv 0 0.5 0\nf 1 2 3 4\n";

// A triangle with a slanted side.
constexpr const char* Triangle = "v -1 -1 0\nv 1 -1 0\nv 0.3 1 0\nf 1 2 3\n";

constexpr const char* Cube = "v -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\n"
                             "f 4 3 2 1\nf 6 7 8 5\nf 2 6 5 1\nf 3 7 6 2\nf 4 8 7 3\nf 1 5 8 4\n";

class ModelPicture : public testing::Test
{
protected:
    ModelPicture()
    {
        folder.Write("rectangle.obj", Rectangle);
        folder.Write("triangle.obj", Triangle);
        folder.Write("cube.obj", Cube);
    }

    Pixels Draw(const std::string& model, std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {folder / model, "-o", folder / "out.png"});
        const Outcome outcome = Render(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.complaint;
        EXPECT_EQ(outcome.complaint, "");
        EXPECT_EQ(outcome.output, "");
        return ReadPixels(folder / "out.png");
    }

    TemporaryFolder folder;
};

void ExpectFilled(const Foreground& found, int left, int top, int right, int bottom)
{
    EXPECT_EQ(found.left, left);
    EXPECT_EQ(found.top, top);
    EXPECT_EQ(found.right, right - 1);
    EXPECT_EQ(found.bottom, bottom - 1);
    EXPECT_EQ(found.count, (right - left) * (bottom - top));
}

TEST_F(ModelPicture, takes_camera_and_settings_to_the_pixel)
{
    struct Row
    {
        const char* what;
        const char* model;
        std::vector<std::string> arguments;
        int left, top, right, bottom;
    };
    const std::vector<std::string> flat{"--projection", "orthographic", "--set", "FieldOfView=2", "--camera"};
    auto near = flat;
    near.push_back("0,0,-5,0,0,1,0,1,0");
    auto far = flat;
    far.push_back("0,0,-500,0,0,1,0,1,0");
    for (const auto& [what, model, arguments, left, top, right, bottom] : {
             // Field 0.5 at front 1: at distance 5 half the picture is 2.5 units, one unit is 80 pixels of 400.
             Row{"perspective", "rectangle.obj", {"--camera", "0,0,-5,0,0,1,0,1,0"}, 200, 110, 280, 150},
             // What was right and above is left and below.
             Row{"upside down", "rectangle.obj", {"--camera", "0,0,-5,0,0,1,0,-1,0"}, 120, 150, 200, 190},
             Row{"orthographic", "rectangle.obj", near, 200, 100, 300, 150},
             Row{"orthographic from afar", "rectangle.obj", far, 200, 100, 300, 150},
             // Settings win over framing.
             Row{"front view",
                 "cube.obj",
                 {"--view", "front", "--projection", "orthographic", "--set", "FieldOfView=4"},
                 150,
                 100,
                 250,
                 200},
         })
    {
        SCOPED_TRACE(what);
        auto more = arguments;
        more.insert(more.end(), {"--size", "400x300", "--set", "BackColor=255"});
        const Pixels pixels = Draw(model, more);
        EXPECT_EQ(pixels.At(0, 0), 0xFF0000u); // red is the low byte of a control's colors
        ExpectFilled(FindForeground(pixels), left, top, right, bottom);
    }
}

TEST_F(ModelPicture, is_framed_from_a_corner_when_no_view_is_given)
{
    const Pixels pixels = Draw("cube.obj", {"--size", "300x200"});
    const Foreground found = FindForeground(pixels);
    EXPECT_GE(std::min(found.top, 199 - found.bottom), 2);
    EXPECT_LE(found.top, 6);
    // Three sides of the cube in three shades.
    const std::set<std::uint32_t> shades{pixels.At(150, 20), pixels.At(110, 120), pixels.At(190, 120)};
    EXPECT_EQ(shades.size(), 3u);
    EXPECT_EQ(shades.count(pixels.At(0, 0)), 0u);
}

TEST_F(ModelPicture, is_the_same_when_exposed_and_has_edges_in_a_cool_mode)
{
    const std::vector<std::uint32_t> plain = Draw("cube.obj", {"--size", "120x90"}).colors;
    EXPECT_EQ(Draw("cube.obj", {"--size", "120x90", "--expose"}).colors, plain);
    EXPECT_NE(Draw("cube.obj", {"--size", "120x90", "--cool-mode", "1"}).colors, plain);
}

TEST_F(ModelPicture, has_soft_edges_when_anti_aliased)
{
    const std::vector<std::string> base{"--size", "100x100", "--view", "front", "--set", "LightMode=0"};
    const Pixels hard = Draw("triangle.obj", base);
    EXPECT_EQ(std::set(hard.colors.begin(), hard.colors.end()).size(), 2u);
    for (const char* samples : {"2", "4"})
    {
        auto arguments = base;
        arguments.insert(arguments.end(), {"--antialias", samples});
        const Pixels soft = Draw("triangle.obj", arguments);
        EXPECT_GT(std::set(soft.colors.begin(), soft.colors.end()).size(), 3u);
        EXPECT_NEAR(FindForeground(soft).count, FindForeground(hard).count, 220);
    }
}

TEST_F(ModelPicture, shows_several_models_side_by_side_at_the_same_size)
{
    folder.Write("large.obj", "v 0 0 0\nv 1000 0 0\nv 1000 1000 0\nv 0 1000 0\nf 1 2 3 4\n");
    folder.Write("small.obj", "v 7 7 7\nv 7.1 7 7\nv 7.1 7.1 7\nv 7 7.1 7\nf 1 2 3 4\n");
    const Foreground found =
        FindForeground(Draw("large.obj", {folder / "small.obj", "--size", "400x200", "--view", "front"}));
    // Two squares of side 1 and 0.15 between them, over 400 pixels less the margin of 8 at either side.
    const double side = 384 / 2.15;
    EXPECT_NEAR(found.right + 1 - found.left, 384, 1.5);
    EXPECT_NEAR(found.bottom + 1 - found.top, side, 1.5);
    EXPECT_NEAR(found.count, 2 * side * side, 4 * side);
}

TEST_F(ModelPicture, is_written_for_every_frame_of_a_turntable)
{
    const std::vector<std::string> base{folder / "cube.obj", "--size", "80x60", "--frames", "3", "--turntable"};
    auto every = base;
    every.insert(every.end(), {"-o", folder / "t%02d.png"});
    ASSERT_EQ(Render(every).status, 0);
    EXPECT_THAT(folder.Names(),
                ElementsAre("cube.obj", "rectangle.obj", "t00.png", "t01.png", "t02.png", "triangle.obj"));
    EXPECT_NE(folder.Read("t00.png"), folder.Read("t01.png"));

    auto last = base;
    last.insert(last.end(), {"-o", folder / "last.png"});
    ASSERT_EQ(Render(last).status, 0);
    EXPECT_EQ(folder.Read("last.png"), folder.Read("t02.png"));
}

} // namespace

} // namespace lumora::tests
