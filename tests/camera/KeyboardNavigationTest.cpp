// Keys as stored velocities, and a host that applies them.
#include "camera/Desk.h"
#include "properties/PropertyTable.h"

using namespace lumora;
using namespace lumora::test;

namespace
{

using Lines = std::vector<std::string>;

enum class Turns
{
    No,
    AboutTheCamera,
    AboutTheOrigin,
};

struct KeyRow
{
    const char* property;
    Vector movement; // in multiples of the speed
    Vector rotation;
    float zoom;
    Turns turns = Turns::No;
};

const KeyRow Keys[] = {
    {"KeyMoveForward", {0, 0, 1}, {}, 0},
    {"KeyMoveBack", {0, 0, -1}, {}, 0},
    {"KeyMoveLeft", {-1, 0, 0}, {}, 0},
    {"KeyMoveRight", {1, 0, 0}, {}, 0},
    {"KeyMoveUp", {0, 1, 0}, {}, 0},
    {"KeyMoveDown", {0, -1, 0}, {}, 0},
    {"KeyRotateXCCW", {}, {-1, 0, 0}, 0, Turns::AboutTheCamera},
    {"KeyRotateXCW", {}, {1, 0, 0}, 0, Turns::AboutTheCamera},
    {"KeyRotateYCCW", {}, {0, -1, 0}, 0, Turns::AboutTheCamera},
    {"KeyRotateYCW", {}, {0, 1, 0}, 0, Turns::AboutTheCamera},
    {"KeyRotateZCCW", {}, {0, 0, -1}, 0, Turns::AboutTheCamera},
    {"KeyRotateZCW", {}, {0, 0, 1}, 0, Turns::AboutTheCamera},
    {"KeyEncircleXCCW", {}, {-1, 0, 0}, 0, Turns::AboutTheOrigin},
    {"KeyEncircleXCW", {}, {1, 0, 0}, 0, Turns::AboutTheOrigin},
    {"KeyEncircleYCCW", {}, {0, -1, 0}, 0, Turns::AboutTheOrigin},
    {"KeyEncircleYCW", {}, {0, 1, 0}, 0, Turns::AboutTheOrigin},
    {"KeyEncircleZCCW", {}, {0, 0, -1}, 0, Turns::AboutTheOrigin},
    {"KeyEncircleZCW", {}, {0, 0, 1}, 0, Turns::AboutTheOrigin},
    {"KeyZoomIn", {}, {}, 1},
    {"KeyZoomOut", {}, {}, -1},
};

void Assign(Desk& desk, std::string_view property, tdlNavKey key)
{
    FindProperty(property)->write(desk.control.Control(), std::int32_t{key});
}

TEST(KeyboardNavigation, each_key_sets_one_component_while_it_is_held)
{
    constexpr Vector Others{0.25F, 0.5F, 0.75F}; // what is stored before: the untouched components stay
    const auto replaced = [](Vector stored, Vector sign, float speed)
    {
        return Vector{sign.x != 0 ? sign.x * speed : stored.x, sign.y != 0 ? sign.y * speed : stored.y,
                      sign.z != 0 ? sign.z * speed : stored.z};
    };
    const auto cleared = [](Vector stored, Vector sign) {
        return Vector{sign.x != 0 ? 0 : stored.x, sign.y != 0 ? 0 : stored.y, sign.z != 0 ? 0 : stored.z};
    };
    for (const KeyRow& row : Keys)
    {
        Desk desk;
        desk.control->SetKeyVelocityMove(4);
        desk.control->SetKeyVelocityRotate(2);
        desk.control->SetKeyVelocityZoom(0.125F);
        desk.control->SetKeyNavigationMethod(tdlAdvance);
        desk.control->SetCameraVelocity(Others.x, Others.y, Others.z, tdlGlide);
        desk.control->SetCameraRotationalVelocity(Others.x, Others.y, Others.z, -1, -2, -3, tdlGlide);
        Assign(desk, row.property, tdlNavKeyF);
        desk.Host().PressKey('F');
        const bool moves = row.movement != Vector{};
        const bool turns = row.turns != Turns::No;
        const Vector origin = row.turns == Turns::AboutTheOrigin ? Vector{7, 0, 0} : desk.rules.position;
        Velocities v = VelocitiesOf(desk.control.Control());
        EXPECT_EQ(v.movement, replaced(Others, row.movement, 4)) << row.property;
        EXPECT_EQ(v.movementMethod, moves ? tdlAdvance : tdlGlide) << row.property;
        EXPECT_EQ(v.rotation, replaced(Others, row.rotation, 2)) << row.property;
        EXPECT_EQ(v.rotationMethod, turns ? tdlAdvance : tdlGlide) << row.property;
        EXPECT_EQ(v.origin, turns ? origin : (Vector{-1, -2, -3})) << row.property;
        EXPECT_EQ(v.zoom, row.zoom * 0.125F) << row.property;
        desk.Host().ReleaseKey('F');
        v = VelocitiesOf(desk.control.Control());
        EXPECT_EQ(v.movement, cleared(Others, row.movement)) << row.property;
        EXPECT_EQ(v.rotation, cleared(Others, row.rotation)) << row.property;
        EXPECT_EQ(v.origin, turns ? desk.rules.position : (Vector{-1, -2, -3})) << row.property;
        EXPECT_EQ(v.zoom, 0) << row.property;
        EXPECT_EQ(desk.TakeRaised(), (Lines{"KeyDown 70", "KeyUp 70"})) << row.property;
        desk.control->RenderScene();
        desk.ExpectCamera(desk.rules, row.property);
        EXPECT_EQ(desk.cameraMoves, 0) << row.property;
    }
}

TEST(KeyboardNavigation, the_first_of_two_actions_with_one_key_acts)
{
    Desk desk;
    Assign(desk, "KeyMoveForward", tdlNavKeyUp);
    Assign(desk, "KeyMoveBack", tdlNavKeyUp);
    Assign(desk, "KeyZoomIn", tdlNavKeyUp);
    desk.Host().PressKey(tdlNavKeyUp);
    const Velocities v = VelocitiesOf(desk.control.Control());
    EXPECT_EQ(v.movement, (Vector{0, 0, -3}));
    EXPECT_EQ(v.zoom, 0);
}

TEST(KeyboardNavigation, disabled_actions_and_impossible_codes_leave_the_keys_to_the_host)
{
    Desk desk;
    FindProperty("KeyMoveForward")->write(desk.control.Control(), std::int32_t{0x10000 + 'W'});
    for (const std::int16_t code : {'W', '0', 'A'})
    {
        desk.Host().PressKey(code);
        desk.Host().ReleaseKey(code);
    }
    EXPECT_EQ(VelocitiesOf(desk.control.Control()).movement, Vector{});
    EXPECT_EQ(desk.raised.size(), 6U);
}

TEST(KeyboardNavigation, a_repeating_key_turns_about_where_the_camera_is_by_then)
{
    Desk desk;
    Assign(desk, "KeyRotateYCW", tdlNavKeyE);
    desk.Host().PressKey('E');
    desk.control->SetCameraPosition(9, 9, 9);
    EXPECT_EQ(VelocitiesOf(desk.control.Control()).origin, desk.rules.position);
    desk.Host().AdvanceTime(500);
    EXPECT_EQ(VelocitiesOf(desk.control.Control()).origin, (Vector{9, 9, 9}));
}

TEST(KeyboardNavigation, on_a_halted_control_only_keys_without_an_action_are_raised)
{
    Desk desk;
    Assign(desk, "KeyMoveForward", tdlNavKeyW);
    desk.control->Terminate();
    for (const std::int16_t code : {'W', 'X'})
    {
        desk.Host().PressKey(code);
        desk.Host().ReleaseKey(code);
    }
    EXPECT_EQ(desk.TakeRaised(), (Lines{"KeyDown 88", "KeyUp 88"}));
    EXPECT_EQ(desk.control->ViewportState(), tdlHalted);
}

} // namespace
