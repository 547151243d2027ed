// Written sessions played at a control: the host draws, and moves the camera by what keys and drags stored.
#include "camera/Desk.h"
#include "hosts/headless/SessionPlayer.h"

#include <functional>
#include <random>
#include <set>

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
        MemoryPropertyBag bag = UsualSettings();
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

    /// A square that faces the origin.
    void AddWall(Vector place)
    {
        const auto scene = hosted->Control().Scene();
        const auto wall = Frame::Make(scene);
        wall->SetOrientation(scene, place, {0, 1, 0});
        wall->SetPosition(scene, place.x, place.y, place.z);
        wall->AddVisual(Square(0, 0, 0, 5, 0xFFFFFFFF));
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
    const RuntimeError refused = FailureOf([&] { stage.Play("frame\nset FieldOfView=-1\n"); });
    EXPECT_EQ(refused.Number(), error::RMBadValue);
    EXPECT_EQ(refused.Description().rfind("walk.txt:2: ", 0), 0U) << refused.Description();
    stage.hosted->Control().BeginNavigating.Connect(
        [](auto&) {
            throw RuntimeError{error::InvalidCall, "host", "no"};
        });
    const RuntimeError halted = FailureOf([&] { stage.Play("\npress middle 100 100\nframe\n"); });
    EXPECT_EQ(halted.Number(), error::Halted);
    EXPECT_EQ(halted.Description().rfind("walk.txt:2: ", 0), 0U) << halted.Description();
}

// A person who does anything at all, in scenes with obstacles and limits, with and without the on-screen controls.
TEST(Session, whatever_a_person_does_the_control_lives_and_gives_the_cursor_back)
{
    const char* const settings[] = {
        "CollisionDetection=True",
        "CollisionDetection=False",
        "CollisionSamples=3",
        "CollisionDistance=0.2",
        "PositionConstraints=tdlDistance",
        "PositionConstraints=tdlUnConstrained",
        "CameraMaxDistance=30",
        "NavControlPrimary=True",
        "NavControlAdvance=True",
        "NavControlGlide=True",
        "MouseNavigationMode=tdlFly",
        "MouseNavigationMode=tdlWalk",
        "ProjectionType=0",
        "ProjectionType=1",
        "CenterNavigation=False",
        "CenterNavigation=True",
        "NavControlPrimaryMode=tdlFly",
        "KeyNavigationMethod=tdlAdvance",
    };
    std::set<std::int32_t> begun;
    int collisions = 0;
    for (unsigned seed = 1; seed <= 30; ++seed)
    {
        std::mt19937 random{seed};
        const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
        const auto number = [&](int most) { return std::to_string(upTo(2 * most) - most); };
        const auto oneOf = [&](std::initializer_list<const char*> words)
        { return std::string{*(words.begin() + upTo(static_cast<int>(words.size()) - 1))}; };
        const auto button = [&] { return oneOf({"left", "right", "middle", "middle"}); };
        const auto count = [&](int least, int most) { return std::to_string(least + upTo(most - least)); };
        const std::function<std::string()> lines[] = {
            [&] { return "press " + button() + " " + count(0, 60) + " " + count(150, 200); },
            [&] { return "release " + button(); },
            [&] { return "move " + number(400) + " " + number(400) + " " + count(1, 200); },
            [&] { return "moveto " + number(300) + " " + number(300); },
            [&] {
                return oneOf({"hold ", "drop "}) + oneOf({"shift", "ctrl", "alt"});
            },
            [&] {
                return oneOf({"key down ", "key up "}) + oneOf({"W", "E", "Add", "Z"});
            },
            [&] { return "animate " + count(1, 200); },
            [&] { return "size " + count(170, 200) + " 200"; },
            [&] { return std::string{"set "} + settings[random() % std::size(settings)]; },
        };
        std::string text{"set CollisionDetection=True\nset CollisionSamples=3\nset NavControlPrimary=True\n"
                         "set NavControlGlide=True\nset NavControlAdvance=True\n"};
        for (int line = 0; line < 80; ++line)
            text += lines[random() % std::size(lines)]() + "\n";
        Stage stage;
        for (const Vector wall : {Vector{0, 0, 6}, {0, 0, -6}, {6, 0, 0}, {-6, 0, 0}})
            stage.AddWall(wall);
        stage.hosted->Control().BeginNavigating.Connect([&](std::int32_t& id) { begun.insert(id); });
        stage.hosted->Control().Collision.Connect([&](auto&...) { ++collisions; });
        stage.Play(text + "release left\nrelease right\nrelease middle\n");
        EXPECT_EQ(stage.hosted->Host().Display().CursorDisplayCounter(), 0) << text;
        EXPECT_TRUE(IsFinite(stage.hosted->Control().GetCameraPosition())) << text;
    }
    EXPECT_GT(collisions, 20);
    EXPECT_GE(begun.size(), 4U) << "drags of the scene and of several on-screen controls";
}

} // namespace
