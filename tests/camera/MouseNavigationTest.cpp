// Drags as a person makes them, judged by where the camera ends, what was raised, and where the cursor is.
#include "camera/Desk.h"
#include "camera/Schemes.h"

#include <functional>

using namespace lumora;
using namespace lumora::test;

namespace
{

using Lines = std::vector<std::string>;

TEST(MouseNavigation, drags_do_what_the_scheme_says)
{
    for (const auto& [name, projection, onPlate, held, does] : Schemes)
    {
        Desk desk{projection};
        const Vector object = desk.plate->GetPosition(desk.scene);
        const bool orbits = projection == Perspective && onPlate;
        RuleCamera rules = desk.rules;
        float field = desk.control->FieldOfView();
        for (const std::int16_t modifier : held)
            desk.Host().PressKey(modifier);
        desk.TakeRaised();
        desk.Press(Middle, onPlate);
        EXPECT_FALSE(desk.Host().Display().IsCursorVisible()) << name;
        EXPECT_EQ(desk.Cursor(), (ScreenPoint{960, 540})) << name;
        ExpectNear(desk.SceneOrigin(), orbits ? object : Vector{7, 0, 0}, name, 1e-5F);
        for (const auto& [x, y] : {std::pair{30, -20}, {-7, 55}})
        {
            desk.Move(x, y);
            Obey(does, static_cast<float>(x) * TwipsPerPixel, static_cast<float>(y) * TwipsPerPixel, object, rules,
                 field);
            desk.ExpectCamera(rules, name);
            EXPECT_NEAR(desk.control->FieldOfView(), field, 1e-5) << name;
        }
        desk.Release(Middle);
        EXPECT_EQ(desk.TakeRaised(), (Lines{"BeginNavigating 0", "EndNavigating"})) << name;
        EXPECT_EQ(desk.cameraMoves > 0, does != Does::Nothing) << name;
        EXPECT_EQ(desk.Cursor(), desk.pressed) << name;
        EXPECT_EQ(desk.Host().Display().CursorDisplayCounter(), 0) << name;
        EXPECT_EQ(desk.SceneOrigin(), (Vector{7, 0, 0})) << name;
    }
}

TEST(MouseNavigation, an_orbit_about_the_scenes_own_mesh_goes_round_its_origin)
{
    Desk desk;
    desk.scene->AddVisual(Square(0, 0, 40, 1000, 0xFFFFFFFF));
    desk.Press(Middle);
    EXPECT_EQ(desk.SceneOrigin(), (Vector{0, 0, 0}));
}

TEST(MouseNavigation, moves_that_follow_too_soon_wait_for_the_next)
{
    Desk desk;
    RuleCamera rules = desk.rules;
    desk.Press(Middle);
    desk.Move(0, -10);
    rules.Advance({0, 0, 0.3F});
    desk.Host().AdvanceTime(20);
    desk.Host().MoveMouseBy(0, -4);
    desk.Host().AdvanceTime(12);
    desk.Host().MoveMouseBy(0, -4);
    desk.ExpectCamera(rules, "32 milliseconds");
    desk.Host().AdvanceTime(1);
    desk.Host().MoveMouseBy(0, -2);
    rules.Advance({0, 0, 0.3F});
    desk.ExpectCamera(rules, "33 milliseconds");
    desk.Release(Middle);
    desk.TakeRaised();
    desk.Host().MoveMouseTo(300, 250);
    EXPECT_EQ(desk.TakeRaised(), Lines{}) << "without a drag too";
    desk.Move(1, 0);
    EXPECT_EQ(desk.TakeRaised(), Lines{"MouseMove 0"});
}

TEST(MouseNavigation, a_long_drag_goes_on_as_if_the_screen_had_no_edge)
{
    Desk desk;
    RuleCamera rules = desk.rules;
    desk.Host().PressKey(Shift);
    desk.Press(Middle);
    int warps = 0;
    for (int step = 0; step < 200; ++step)
    {
        desk.Move(37, -23);
        rules.Glide({0.002F * 37 * TwipsPerPixel, 0.002F * 23 * TwipsPerPixel, 0});
        ExpectNear(desk.control->GetCameraPosition(), rules.position, std::to_string(step), 1e-2F);
        warps += desk.Cursor() == ScreenPoint{960, 540} ? 1 : 0;
        EXPECT_LE(std::abs(desk.Cursor().x - 960), 200);
        EXPECT_LE(std::abs(desk.Cursor().y - 540), 200);
    }
    EXPECT_EQ(warps, 200 / 6); // six steps of 37 are more than 200
    desk.Release(Middle);
    EXPECT_EQ(desk.Cursor(), desk.pressed);
}

TEST(MouseNavigation, flying_sets_velocities_beyond_the_dead_zone_and_the_release_stops_everything)
{
    Desk desk;
    desk.control->SetNavMouseSensitivity(100);
    desk.control->BeginNavigating.Connect([&](std::int32_t&) { desk.control->SetMouseNavigationMode(tdlFly); });
    desk.control->SetCameraVelocity(1, 2, 0, tdlGlide);
    desk.control->SetCameraRotationalVelocity(1, 2, 3, 4, 5, 6, tdlAdvance);
    desk.control->SetCameraZoomVelocity(1);
    desk.Press(Middle);
    // The offset from the start counts: 60, 105, 150, 4650, 90 and -105 twips. Within the dead zone the last stays.
    for (const auto& [y, velocity] :
         {std::pair{-4, 0.0F}, {-3, 1.05F}, {-3, 1.5F}, {-300, 46.5F}, {304, 46.5F}, {13, -1.05F}})
    {
        desk.Move(0, y);
        const Velocities v = VelocitiesOf(desk.control.Control());
        ExpectNear(v.movement, {1, 2, velocity}, std::to_string(y));
        EXPECT_EQ(v.movementMethod, velocity == 0 ? tdlGlide : tdlAdvance);
    }
    desk.ExpectCamera(desk.rules, "the control itself moves nothing");
    desk.Release(Middle);
    const Velocities v = VelocitiesOf(desk.control.Control());
    for (const Vector zero : {v.movement, v.rotation, v.origin})
        EXPECT_EQ(zero, Vector{});
    EXPECT_EQ(v.zoom, 0);
    EXPECT_EQ(v.rotationMethod, tdlGlide);
    desk.control->BeginNavigating = {};
    desk.Press(Middle);
    EXPECT_EQ(desk.control->MouseNavigationMode(), tdlWalk) << "each press walks";
}

TEST(MouseNavigation, a_flying_orbit_turns_about_the_object_and_zooms_in_flat_views)
{
    Desk desk;
    desk.control->BeginNavigating.Connect([&](std::int32_t&) { desk.control->SetMouseNavigationMode(tdlFly); });
    desk.Press(Middle, true);
    desk.Move(10, 4);
    const Velocities v = VelocitiesOf(desk.control.Control());
    ExpectNear(v.rotation, {0.001F * 60, 0.001F * 150, 0}, "turn velocity", 1e-6F);
    ExpectNear(v.origin, desk.plate->GetPosition(desk.scene), "about the object", 1e-5F);

    Desk flat{Orthographic};
    flat.control->BeginNavigating.Connect([&](std::int32_t&) { flat.control->SetMouseNavigationMode(tdlFly); });
    flat.Press(Middle, true);
    flat.Move(10, 4);
    EXPECT_NEAR(VelocitiesOf(flat.control.Control()).zoom, -0.001F * 60, 1e-6);
}

TEST(MouseNavigation, without_centre_navigation_the_host_hears_everything)
{
    Desk desk;
    desk.control->SetCenterNavigation(false);
    float place[2] = {};
    desk.control->MouseDown.Connect(
        [&](auto&, auto&, float& x, float& y)
        {
            place[0] = x;
            place[1] = y;
        });
    desk.Press(Middle, true);
    desk.Move(10, 10);
    desk.Release(Middle);
    EXPECT_EQ(desk.TakeRaised(), (Lines{"MouseDown 4", "MouseMove 4", "MouseUp 4"}));
    EXPECT_EQ(place[0], 100);
    EXPECT_EQ(place[1], 100);
    desk.ExpectCamera(desk.rules, "unmoved");
    EXPECT_EQ(desk.Host().Display().CursorDisplayCounter(), 0);
}

TEST(MouseNavigation, other_buttons_join_a_drag_and_the_first_release_ends_it)
{
    Desk desk;
    RuleCamera rules = desk.rules;
    desk.Press(Middle);
    desk.Move(0, -10);
    desk.Host().PressButton(Left);
    desk.Move(0, -10);
    rules.Advance({0, 0, 0.6F});
    desk.ExpectCamera(rules, "still walking");
    desk.Release(Left);
    EXPECT_EQ(desk.Cursor(), desk.pressed);
    desk.Move(0, -10);
    desk.Release(Middle);
    EXPECT_EQ(desk.TakeRaised(),
              (Lines{"BeginNavigating 0", "MouseDown 1", "EndNavigating", "MouseMove 4", "MouseUp 4"}));
    desk.ExpectCamera(rules, "not any more");
    EXPECT_EQ(desk.Host().Display().CursorDisplayCounter(), 0);
}

// Whatever a host does in the middle of a drag, the person has the cursor again once it is over.
TEST(MouseNavigation, hosts_that_interfere_never_keep_the_cursor)
{
    struct Row
    {
        const char* name;
        std::function<void(Desk&)> prepare;
        bool halts;
    };
    const auto raise = [](auto&...) { throw RuntimeError{error::InvalidCall, "host", "no"}; };
    const auto throwOwn = [](auto&...) { throw std::domain_error{"the host's own"}; };
    const auto failing = [](const char* operation, int after)
    {
        return [=](Desk& desk)
        {
            if (after == 0)
                desk.Host().FailNext(operation, 1, error::OutOfMemory);
            else
                desk.control->CameraMoved.Connect([&, operation](auto&...)
                                                  { desk.Host().FailNext(operation, 1, error::OutOfMemory); });
        };
    };
    const Row rows[] = {
        {"begin fails", [&](Desk& desk) { desk.control->BeginNavigating.Connect(raise); }, true},
        {"moved fails", [&](Desk& desk) { desk.control->CameraMoved.Connect(raise); }, true},
        {"moved throws", [&](Desk& desk) { desk.control->CameraMoved.Connect(throwOwn); }, false},
        {"drawing fails", [&](Desk& desk) { desk.control->UpdatePositions.Connect(raise); }, true},
        {"end fails", [&](Desk& desk) { desk.control->EndNavigating.Connect(raise); }, true},
        {"begin halts",
         [](Desk& desk) { desk.control->BeginNavigating.Connect([&](auto&) { desk.control->Terminate(); }); }, true},
        {"moved closes the form",
         [](Desk& desk) { desk.control->CameraMoved.Connect([&](auto&...) { desk.Host().Close(); }); }, true},
        {"the object goes",
         [](Desk& desk) { desk.control->BeginNavigating.Connect([&](auto&) { desk.scene->DeleteChild(desk.plate); }); },
         false},
        {"no scene",
         [](Desk& desk) { desk.control->BeginNavigating.Connect([&](auto&) { desk.control->SetScene(nullptr); }); },
         false},
        {"the cursor cannot be read", failing("Screen.GetCursorPos", 0), true},
        {"the cursor cannot be parked", failing("Screen.SetCursorPos", 0), true},
        {"the cursor cannot be hidden", failing("Screen.ShowCursor", 0), true},
        {"the cursor cannot be put back", failing("Screen.SetCursorPos", 1), true},
        {"the cursor cannot be shown", failing("Screen.ShowCursor", 1), true},
    };
    for (const auto& [name, prepare, halts] : rows)
    {
        Desk desk;
        prepare(desk);
        const auto own = [&](const std::function<void()>& action)
        {
            try
            {
                action();
            }
            catch (const std::domain_error&)
            {
            }
        };
        own([&] { desk.Press(Middle, true); });
        own([&] { desk.Move(10, 10); });
        const ScreenPoint expected = desk.Host().Display().IsCursorVisible() ? desk.Cursor() : desk.pressed;
        own([&] { desk.Release(Middle); });
        EXPECT_EQ(desk.Host().Display().CursorDisplayCounter(), 0) << name;
        EXPECT_EQ(desk.Cursor(), expected) << name;
        EXPECT_EQ(desk.control->ViewportState() == tdlHalted, halts) << name;
        if (halts)
            continue;
        desk.control->BeginNavigating = {};
        desk.control->CameraMoved = {};
        desk.control->EndNavigating = {};
        desk.TakeRaised();
        desk.Move(1, 1);
        EXPECT_EQ(desk.TakeRaised(), Lines{"MouseMove 0"}) << name << ": the drag is over";
        desk.Press(Middle);
        EXPECT_FALSE(desk.Host().Display().IsCursorVisible()) << name << ": and another can begin";
        desk.Release(Middle);
    }
}

} // namespace
