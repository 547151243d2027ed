// Dragging the on-screen controls, by a person's hand: which one a press grabs, and where the camera goes.
#include "camera/Desk.h"

#include <algorithm>
#include <map>

namespace lumora::test
{

namespace
{

constexpr auto Flat = D3DRMPROJECT_ORTHOGRAPHIC;
constexpr auto Deep = D3DRMPROJECT_PERSPECTIVE;

/// A desk with all on-screen controls, and a handler that lets a test choose which of them a press grabs.
struct NavDesk : Desk
{
    explicit NavDesk(D3DRMPROJECTIONTYPE projection) : Desk(projection)
    {
        if (projection == Flat)
        {
            control->SetBackClippingPlane(3000);
            control->InitializeCameraPositionAndOrientation(tdlFrontView);
            rules = {{{0, 0, -1000}, {0, 0, 1}, {0, 1, 0}}};
        }
        control->SetNavControlPrimary(true);
        control->SetNavControlGlide(true);
        control->SetNavControlAdvance(true);
        control->SetNavMouseSensitivity(1000000); // dead for the mouse, not for these controls
        control->BeginNavigating.Connect(
            [this](std::int32_t& id)
            {
                grabbed.try_emplace(id, here);
                if (id != 0 && wanted != 0)
                    id = wanted;
            });
    }

    // Presses and releases over the corner; answers a pixel that grabbed something.
    ScreenPoint Sweep(int step)
    {
        ScreenPoint found{-1, -1};
        const PixelRect client = Host().ControlArea().ClientRect();
        for (int y = client.bottom - 1; y > client.bottom - 80; y -= step)
            for (int x = client.left; x < client.left + 140; x += step)
            {
                const std::size_t before = grabbed.size();
                raised.clear();
                here = {x, y};
                Host().PressButton(Left, x, y);
                if (!raised.empty() && raised[0].starts_with("BeginNavigating"))
                    found = {x, y};
                Host().ReleaseButton(Left);
                if (wanted != 0 && grabbed.size() > before)
                    return found;
            }
        return found;
    }

    std::map<std::int32_t, ScreenPoint> grabbed; ///< where each was grabbed first
    ScreenPoint here;
    std::int32_t wanted = 0;
};

std::string Named(std::int32_t id, D3DRMPROJECTIONTYPE projection)
{
    return "control " + std::to_string(id) + (projection == Flat ? ", orthographic" : "");
}

// Only the group of this on-screen control flies.
void LetFly(Viewport& control, std::int32_t id)
{
    const auto flies = [](bool yes) { return yes ? tdlFly : tdlWalk; };
    control.SetNavControlPrimaryMode(flies(id != 7 && id != 8));
    control.SetNavControlGlideMode(flies(id == 7));
    control.SetNavControlAdvanceMode(flies(id == 8));
    control.SetMouseNavigationMode(tdlWalk);
}

} // namespace

TEST(NavControls, every_part_that_can_be_dragged_is_grabbed_by_a_press_and_shows_its_pointer)
{
    const auto pointersOf = [](D3DRMPROJECTIONTYPE projection)
    {
        NavDesk desk{projection};
        desk.Sweep(1);
        EXPECT_EQ(desk.Host().Display().CursorDisplayCounter(), 0);
        std::string pointers;
        for (const auto& [id, place] : desk.grabbed)
        {
            desk.Host().AdvanceTime(40);
            desk.Host().MoveMouseTo(place.x, place.y);
            pointers += std::to_string(id) + ":" + std::to_string(desk.Host().ControlArea().MousePointer()) + " ";
        }
        return pointers;
    };
    // Pointers: 2 cross, 5 size all, 7 size north and south, 10 arrow upwards.
    EXPECT_EQ(pointersOf(Deep), "1:2 2:2 3:2 4:5 6:7 7:5 8:5 9:2 ");
    EXPECT_EQ(pointersOf(Flat), "5:5 10:10 ");
    NavDesk desk{Deep};
    desk.control->RenderScene();
    const auto picture = desk.control.Picture();
    for (const int shift : {16, 8}) // of red and green: the arrows of x and y
    {
        const auto standsOut = [shift](std::uint32_t color)
        {
            const auto channel = [=](int by) { return color >> (shift + by) % 24 & 255; };
            return 2 * channel(0) > 3 * channel(8) && 2 * channel(0) > 3 * channel(16);
        };
        EXPECT_TRUE(std::ranges::any_of(picture, standsOut)) << shift;
    }
}

TEST(NavControls, a_step_moves_the_camera_as_its_control_says)
{
    enum class Round
    {
        Nothing,
        Vertical,
        Up,
        Look,
    };
    struct Row
    {
        std::int32_t id;
        D3DRMPROJECTIONTYPE projection;
        bool advances; // otherwise it glides
        Vector right;  // where a drag to the right moves the camera, and one downwards
        Vector down;
        Round turns = Round::Nothing; // by a drag to the right
        bool onTheSpot = false;       // otherwise about the scene's origin, as a pitch is
        bool pitches = false;         // by a drag downwards
    };
    constexpr Vector Origin{7, 0, 0}; // of the scene, as the desk sets it
    const Row rows[] = {
        {1, Deep, false, {}, {}, Round::Nothing, false, true},
        {2, Deep, false, {}, {}, Round::Vertical},
        {3, Deep, false, {}, {}, Round::Look},
        {4, Deep, false, {1, 0, 0}, {0, 0, -1}},
        {4, Flat, true, {1, 0, 0}, {0, 0, -1}},
        {5, Deep, false, {1, 0, 0}, {0, -1, 0}},
        {5, Flat, true, {1, 0, 0}, {0, -1, 0}},
        {6, Deep, false, {}, {0, -1, 0}},
        {6, Flat, true, {0, 0, 1}, {0, -1, 0}},
        {7, Deep, false, {}, {0, 0, -1}, Round::Vertical, true},
        {8, Deep, true, {}, {0, 0, -1}, Round::Up, true},
        {9, Deep, false, {}, {}, Round::Vertical, false, true},
        {11, Deep, false, {}, {}},
    };
    const auto obey = [&](const Row& row, float x, float y, RuleCamera& camera)
    {
        const Vector move = row.right * (0.002F * x) + row.down * (0.002F * y);
        row.advances ? camera.Advance(move) : camera.Glide(move);
        if (row.pitches)
            camera.Turn(camera.Axis(0), 0.0002F * y, Origin);
        const Vector axis = row.turns == Round::Up     ? camera.up
                            : row.turns == Round::Look ? camera.direction
                                                       : Vector{0, 1, 0};
        if (row.turns != Round::Nothing)
            camera.Turn(axis, 0.0002F * x, row.onTheSpot ? camera.position : Origin);
    };
    for (const Row& row : rows)
    {
        NavDesk desk{row.projection};
        desk.wanted = row.id;
        const ScreenPoint grip = desk.Sweep(3);
        ASSERT_GE(grip.x, 0) << Named(row.id, row.projection);
        desk.raised.clear();
        desk.Host().PressButton(Left, grip.x, grip.y);
        for (const auto& [x, y] : {std::pair{20, -12}, {-7, 31}})
        {
            desk.Move(x, y);
            obey(row, static_cast<float>(x) * TwipsPerPixel, static_cast<float>(y) * TwipsPerPixel, desk.rules);
        }
        desk.ExpectCamera(desk.rules, Named(row.id, row.projection));
        desk.Release(Left);
        EXPECT_EQ(desk.Cursor(), grip);
        EXPECT_EQ(desk.raised.back(), "EndNavigating");
        EXPECT_EQ(desk.raised.size(), 2U);
    }
}

TEST(NavControls, flying_sets_velocities_by_the_whole_drag_until_the_release)
{
    struct Row
    {
        std::int32_t id;
        D3DRMPROJECTIONTYPE projection;
        Vector movement; // by a drag of dx = -300, dy = 150 twips
        Vector rotation;
        tdlNavigationMethod method;
        Vector origin;
    };
    constexpr Vector Origin{7, 0, 0};
    constexpr Vector Camera{1, 2, 3};
    const Row rows[] = {
        {1, Deep, {}, {-0.03F, 0, 0}, tdlGlide, Origin},
        {2, Deep, {}, {0, 0.06F, 0}, tdlGlide, Origin},
        {3, Deep, {}, {0, 0, 0.06F}, tdlGlide, Origin},
        {4, Deep, {-0.6F, 0, 0.3F}, {}, tdlGlide, {}},
        {5, Flat, {0.6F, 0.3F, 0}, {}, tdlGlide, {}},
        {6, Deep, {0, 0.3F, 0.6F}, {}, tdlGlide, {}},
        {7, Deep, {0, 0, 1.5F}, {0, 0.3F, 0}, tdlGlide, Camera},
        {8, Deep, {0, 0, 1.5F}, {0, 0.3F, 0}, tdlAdvance, {}},
        {9, Deep, {}, {-0.03F, 0.06F, 0}, tdlGlide, Origin},
    };
    for (const Row& row : rows)
    {
        NavDesk desk{row.projection};
        desk.wanted = row.id;
        const ScreenPoint grip = desk.Sweep(3);
        LetFly(desk.control.Control(), row.id);
        desk.Host().PressButton(Left, grip.x, grip.y);
        desk.Move(12, -4);
        desk.Move(8, -6);
        const Velocities stored = VelocitiesOf(desk.control.Control());
        const std::string what = Named(row.id, row.projection);
        ExpectNear(stored.movement, row.movement, what + ", movement", 1e-6F);
        ExpectNear(stored.rotation, row.rotation, what + ", rotation", 1e-6F);
        ExpectNear(stored.origin, row.origin, what + ", origin", 1e-6F);
        EXPECT_EQ(row.movement == Vector{} ? stored.rotationMethod : stored.movementMethod, row.method) << what;
        desk.ExpectCamera(desk.rules, what + " stands still");
        desk.Release(Left);
        EXPECT_EQ(VelocitiesOf(desk.control.Control()).movement, Vector{}) << what;
        EXPECT_EQ(VelocitiesOf(desk.control.Control()).rotation, Vector{}) << what;
    }
}

TEST(NavControls, the_strip_of_the_other_projections_zooms_in_the_mode_of_the_mouse)
{
    for (const auto& [projection, step, velocity] :
         {std::tuple{Deep, 0.0002F, 0.0001F}, std::tuple{Flat, 0.002F, 0.001F}})
        for (const bool flying : {false, true})
        {
            NavDesk desk{projection};
            desk.wanted = 10;
            const ScreenPoint grip = desk.Sweep(3);
            desk.control->SetNavControlAdvanceMode(flying ? tdlWalk : tdlFly); // has no say
            desk.control->SetMouseNavigationMode(flying ? tdlFly : tdlWalk);
            const float field = desk.control->FieldOfView();
            desk.Host().PressButton(Left, grip.x, grip.y);
            desk.Move(5, -10);
            EXPECT_NEAR(desk.control->FieldOfView(), flying ? field : field - 150 * step, 1e-6F);
            EXPECT_NEAR(VelocitiesOf(desk.control.Control()).zoom, flying ? 150 * velocity : 0, 1e-6F);
            desk.Release(Left);
        }
}

} // namespace lumora::test
