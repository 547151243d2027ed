// The camera as a host moves it.
#include "camera/Desk.h"

#include <numbers>

using namespace lumora;
using namespace lumora::test;

namespace
{

constexpr auto QuarterTurn = static_cast<float>(std::numbers::pi / 2);

TEST(Camera, placing_and_turning_it_raises_no_event_and_everything_else_does)
{
    LiveControl control;
    int moved = 0;
    control->CameraMoved.Connect([&](auto&...) { ++moved; });
    control->SetCameraPosition(1, 2, 3);
    control->SetCameraOrientation(1, 0, 0, 0, 1, 0);
    EXPECT_EQ(moved, 0);
    control->AddCameraMovement({0, 0, 0}, tdlAdvance);
    EXPECT_EQ(moved, 1);
    control->AddCameraRotation(0, 0, 0, 0, 0, 0, tdlGlide);
    EXPECT_EQ(moved, 2);
    control->AddCameraZoom(0.01F);
    EXPECT_EQ(moved, 3);
    control->LookAt(Frame::Make(control->Scene()), D3DRMCONSTRAIN_Z);
    EXPECT_EQ(moved, 4);
    control->InitializeCameraPositionAndOrientation(tdlFrontView);
    EXPECT_EQ(moved, 6);
    control->SetNavControlPrimary(true);
    EXPECT_EQ(moved, 7);
}

// What drags of the mouse and of the on-screen controls show of moves and turns is tested there.
TEST(Camera, poses_without_a_level_direction_glide_and_turns_on_the_spot_have_no_other_origin)
{
    const auto glide = [](Vector distance)
    { return [distance](Viewport& control) { EXPECT_EQ(control.AddCameraMovement(distance, tdlGlide), distance); }; };
    const auto pitch = [](Viewport& control) { control.AddCameraRotation(QuarterTurn, 0, 0, 5, 5, 5, tdlAdvance); };
    const auto yaw = [](Viewport& control) { control.AddCameraRotation(0, QuarterTurn, 0, 5, 5, 5, tdlAdvance); };
    const auto roll = [](Viewport& control) { control.AddCameraRotation(0, 0, QuarterTurn, 5, 5, 5, tdlAdvance); };
    struct Row
    {
        const char* name;
        Pose from;
        std::function<void(Viewport&)> act;
        Pose to;
    };
    constexpr Pose UpsideDown{{}, {0, 0, 1}, {0, -1, 0}};
    constexpr Pose StraightDown{{}, {0, -1, 0}, {0, 0, 1}};
    const float s = std::sqrt(0.5F);
    for (const auto& [name, from, act, to] :
         {Row{"upside down, up is down", UpsideDown, glide({0, 3, 0}), {{0, -3, 0}, {0, 0, 1}, {0, -1, 0}}},
          Row{"straight down, the diagonal",
              StraightDown,
              glide({0, 0, 2}),
              {{2 * s, 0, 2 * s}, {0, -1, 0}, {0, 0, 1}}},
          Row{"pitch on the spot", {{0, 0, -10}}, pitch, {{0, 0, -10}, {0, -1, 0}, {0, 0, 1}}},
          Row{"roll on the spot", {{0, 0, -10}}, roll, {{0, 0, -10}, {0, 0, 1}, {-1, 0, 0}}},
          Row{"yaw on the spot", {{0, 0, -10}}, yaw, {{0, 0, -10}, {1, 0, 0}, {0, 1, 0}}}})
    {
        LiveControl control;
        StandIn(control.Control(), from);
        act(control.Control());
        ExpectCameraOf(control.Control(), to, name);
    }
}

TEST(Camera, zooming_stops_at_the_floor_of_its_projection)
{
    using Row = std::tuple<D3DRMPROJECTIONTYPE, float, float>;
    for (const auto& [projection, zoom, field] :
         {Row{D3DRMPROJECT_PERSPECTIVE, 0.3F, 0.2F}, Row{D3DRMPROJECT_PERSPECTIVE, 0.45F, 0.1F},
          Row{D3DRMPROJECT_PERSPECTIVE, -1, 1.5F}, Row{D3DRMPROJECT_ORTHOGRAPHIC, 0.43F, 0.1F},
          Row{D3DRMPROJECT_ORTHOGRAPHIC, 0.47F, 0.05F}, Row{D3DRMPROJECT_RIGHTHANDPERSPECTIVE, 0.47F, 0.1F}})
    {
        LiveControl control;
        control->SetProjectionType(projection);
        control->AddCameraZoom(zoom);
        EXPECT_FLOAT_EQ(control->FieldOfView(), field) << projection << ", " << zoom;
    }
}

TEST(Camera, axis_views_look_at_the_origin_from_the_distance_of_their_projection)
{
    for (const auto projection : {D3DRMPROJECT_PERSPECTIVE, D3DRMPROJECT_ORTHOGRAPHIC})
        for (int view = -1; view <= 9; ++view)
        {
            LiveControl control;
            control->SetProjectionType(projection);
            control->InitializeCameraPositionAndOrientation(static_cast<tdlOrientation>(view));
            const float distance = projection == D3DRMPROJECT_PERSPECTIVE ? 15 : 1000;
            const Vector position = control->GetCameraPosition();
            const Orientation orientation = control->GetCameraOrientation();
            EXPECT_EQ(position + orientation.direction * distance, (Vector{0, 0, 0})) << view;
            if (view < 0 || view > 4)
            {
                EXPECT_EQ(position, (Vector{-distance, 0, 0})) << "left";
            }
            const bool vertical = view == tdlTopView || view == tdlBottomView;
            EXPECT_EQ(orientation.up, (vertical ? Vector{0, 0, 1} : Vector{0, 1, 0})) << view;
        }
    LiveControl control;
    control->InitializeCameraPositionAndOrientation(tdlTopView);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{0, 15, 0}));
    control->InitializeCameraPositionAndOrientation(tdlRightView);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{15, 0, 0}));
}

TEST(Camera, look_at_faces_the_target_and_refuses_nothing)
{
    LiveControl control;
    const auto target = Frame::Make(control->Scene());
    target->SetPosition(control->Scene(), 3, 0, 4);
    control->LookAt(target, D3DRMCONSTRAIN_Z);
    ExpectNear(control->GetCameraOrientation().direction, {0.6F, 0, 0.8F}, "direction");
    const RuntimeError failure = FailureOf([&] { control->LookAt(nullptr, D3DRMCONSTRAIN_Z); });
    EXPECT_EQ(failure.Number(), error::RMBadObject);
    EXPECT_EQ(failure.Source(), "Viewport");
    ExpectNear(control->GetCameraOrientation().direction, {0.6F, 0, 0.8F}, "unchanged");
}

TEST(Camera, limits_hold_after_every_change)
{
    LiveControl control;
    control->SetCameraMinX(-5);
    control->SetCameraMaxX(10);
    control->SetCameraMinY(2);
    control->SetCameraMaxY(-2); // inverted: the maximum wins
    control->SetCameraMinZ(-100);
    control->SetCameraMaxZ(100);
    control->SetPositionConstraints(tdlBoundaries);
    for (const auto& [x, end] : {std::pair{20.0F, 10.0F}, {10.0F, 10.0F}, {-7.0F, -5.0F}, {3.0F, 3.0F}})
    {
        control->SetCameraPosition(x, 0, 0);
        EXPECT_EQ(control->GetCameraPosition(), (Vector{end, -2, 0}));
        EXPECT_EQ(control->Camera()->GetPosition(control->Scene()), (Vector{end, -2, 0})) << "the frame too";
    }
    control->SetCameraMaxDistance(10);
    control->SetPositionConstraints(tdlDistance);
    control->SetCameraPosition(6, 8, 0);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{6, 8, 0}));
    control->InitializeCameraPositionAndOrientation(tdlFrontView);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{0, 0, -10}));
    control->SetCameraMaxDistance(0);
    control->SetCameraPosition(6, 8, 0);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{0, 0, 0}));
}

TEST(Camera, the_frame_is_the_truth_and_the_getters_see_it_after_the_next_operation)
{
    LiveControl control;
    control->Camera()->SetPosition(control->Scene(), 9, 0, 0);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{0, 0, 0}));
    control->AddCameraMovement({0, 0, 0}, tdlGlide);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{9, 0, 0}));
}

TEST(Camera, numbers_that_are_not_finite_are_refused_and_nothing_moves)
{
    LiveControl control;
    control->SetCameraPosition(1, 2, 3);
    const float field = control->FieldOfView();
    int moved = 0;
    control->CameraMoved.Connect([&](auto&...) { ++moved; });
    for (const float bad : {NAN, INFINITY, -INFINITY})
    {
        EXPECT_EQ(FailureOf([&] { control->SetCameraPosition(bad, 0, 0); }).Number(), error::RMBadValue);
        EXPECT_EQ(FailureOf([&] { control->SetCameraOrientation(0, bad, 1, 0, 1, 0); }).Number(), error::RMBadValue);
        EXPECT_EQ(FailureOf([&] { control->AddCameraMovement({1, bad, 0}, tdlAdvance); }).Number(), error::RMBadValue);
        EXPECT_EQ(FailureOf([&] { control->AddCameraRotation(1, 0, 0, bad, 0, 0, tdlAdvance); }).Number(),
                  error::RMBadValue);
        EXPECT_EQ(FailureOf([&] { control->AddCameraZoom(bad); }).Number(), error::Overflow);
    }
    EXPECT_EQ(FailureOf([&] { control->SetCameraOrientation(0, 0, 0, 0, 1, 0); }).Number(), error::RMBadValue);
    EXPECT_EQ(control->GetCameraPosition(), (Vector{1, 2, 3}));
    EXPECT_EQ(control->Camera()->GetPosition(control->Scene()), (Vector{1, 2, 3}));
    EXPECT_EQ(control->GetCameraOrientation().direction, (Vector{0, 0, 1}));
    EXPECT_EQ(control->FieldOfView(), field);
    EXPECT_EQ(moved, 0);
}

TEST(Camera, transforms_take_points_to_pixels_and_back)
{
    LiveControl control;
    float w = 0;
    float x = 0;
    float y = 0;
    float z = 0;
    control->ViewportTransform(2, 1, 10, w, x, y, z);
    EXPECT_NEAR(x / w, 70, 1e-3);
    EXPECT_NEAR(y / w, 40, 1e-3);
    control->ViewportInverseTransform(w, x, y, z, x, y, z);
    ExpectNear({x, y, z}, {2, 1, 10}, "there and back", 1e-3F);
}

} // namespace
