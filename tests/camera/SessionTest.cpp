// Written sessions played at a control: the host draws, and moves the camera by what keys and drags stored.
#include "camera/Desk.h"
#include "platform/headless/SessionPlayer.h"

using namespace lumora;
using namespace lumora::test;
using headless::ParseSession;
using headless::SessionPlayer;

namespace
{

struct Stage
{
    Stage()
    {
        headless::MemoryPropertyBag bag = UsualSettings();
        bag.Set("CenterNavigation", true);
        bag.Set("KeyMoveForward", std::int32_t{tdlNavKeyW});
        bag.Set("KeyEncircleYCW", std::int32_t{tdlNavKeyE});
        bag.Set("KeyZoomIn", std::int32_t{tdlNavKeyAdd});
        hosted = headless::HostedViewport::Live(MakeHost(200, 200), bag);
        hosted->Control().SetScene(AmbientScene(1));
    }

    void Play(const std::string& text)
    {
        SessionPlayer player{*hosted, [this](const std::string& name) { shots.push_back(name); }};
        player.Play(ParseSession(text, "walk.txt"));
    }

    std::unique_ptr<headless::HostedViewport> hosted;
    std::vector<std::string> shots;
};

TEST(Session, keys_move_the_camera_by_the_time_they_are_held)
{
    Stage stage;
    // A second of nothing before does not count; 3 units a second for 1 s and 10 ms.
    stage.Play("camera 0 0 0 0 0 1 0 1 0\nadvance 1000\nkey down W\nanimate 1010\nkey up W\nanimate 500\n");
    ExpectNear(stage.hosted->Control().GetCameraPosition(), {0, 0, 3.03F}, "forward", 1e-3F);
    // 1.571 radians a second about the scene's origin: from (0, 0, -4) a quarter turn ends at (-4, 0, 0).
    stage.Play("camera 0 0 -4 0 0 1 0 1 0\nkey down E\nanimate 1000\nkey up E\nframe\n");
    ExpectNear(stage.hosted->Control().GetCameraPosition(), {-4, 0, 0}, "round", 1e-2F);
    stage.Play("set FieldOfView=0.5\nkey down Add\nanimate 1000\nkey up Add\nframe\n");
    EXPECT_NEAR(stage.hosted->Control().FieldOfView(), 0.2F, 1e-4);
}

TEST(Session, a_timed_movement_is_many_small_ones)
{
    Stage stage;
    int moves = 0;
    stage.hosted->Control().CameraMoved.Connect([&](auto&...) { ++moves; });
    stage.Play(
        "camera 0 0 0 0 0 1 0 1 0\nframe\npress middle 100 100\nmove 0 -101 410\nrelease middle\nshot\nshot b.png");
    ExpectNear(stage.hosted->Control().GetCameraPosition(), {0, 0, 0.002F * 15 * 101}, "all of it", 1e-4F);
    EXPECT_EQ(moves, 10);
    EXPECT_EQ(stage.shots, (std::vector<std::string>{"", "b.png"}));
    EXPECT_FALSE(stage.hosted->Host().ButtonsHeld());
}

TEST(Session, ends_at_the_line_that_fails_and_at_a_control_that_has_halted)
{
    Stage stage;
    const RuntimeError refused = ErrorOf([&] { stage.Play("frame\nset FieldOfView=-1\n"); });
    EXPECT_EQ(refused.Number(), error::RMBadValue);
    EXPECT_EQ(refused.Description().rfind("walk.txt:2: ", 0), 0U) << refused.Description();
    stage.hosted->Control().BeginNavigating.Connect(
        [](auto&) {
            throw RuntimeError{error::InvalidCall, "host", "no"};
        });
    const RuntimeError halted = ErrorOf([&] { stage.Play("\npress middle 100 100\nframe\n"); });
    EXPECT_EQ(halted.Number(), error::Halted);
    EXPECT_EQ(halted.Description().rfind("walk.txt:2: ", 0), 0U) << halted.Description();
}

} // namespace
