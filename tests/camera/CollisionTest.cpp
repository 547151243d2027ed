// Obstacles as a person meets them: where the camera stops, what is undone, what the events name.
#include "camera/Space.h"
#include "viewport/LiveControl.h"

using namespace lumora;
using namespace lumora::test;

namespace
{

constexpr float Front = 1;
constexpr float Distance = 0.1F;

struct NamedPose
{
    const char* name;
    Pose pose;
};

const NamedPose Poses[] = {
    {"unturned", {{0, 0, 0}, {0, 0, 1}, {0, 1, 0}}},
    {"facing minus z", {{3, -2, 5}, {0, 0, -1}, {0, 1, 0}}},
    {"facing plus x", {{-4, 1, 2}, {1, 0, 0}, {0, 1, 0}}},
    {"looking down", {{1, 8, 1}, {0, -1, 0}, {0, 0, 1}}},
    {"oblique and rolled", {{2, 3, -7}, {0.48F, 0.6F, 0.64F}, {-0.8F, 0, 0.6F}}},
};

/// A control with collision detection whose camera takes a pose, and what its Collision events named.
struct Walker
{
    Walker()
    {
        control->SetScene(scene);
        control->SetCollisionDetection(true);
        control->SetCollisionSamples(5);
        control->SetCollisionDistance(Distance);
        control->Collision.Connect([this](std::shared_ptr<Frame>& frame, std::shared_ptr<MeshBuilder>& mesh)
                                   { hits.emplace_back(frame, mesh); });
    }

    void Take(const Pose& pose)
    {
        control->SetCameraPosition(pose.position.x, pose.position.y, pose.position.z);
        control->SetCameraOrientation(pose.direction.x, pose.direction.y, pose.direction.z, pose.up.x, pose.up.y,
                                      pose.up.z);
    }

    /// A square that stands across `direction`, `distance` from `from`.
    std::shared_ptr<Frame> AddWall(Vector from, Vector direction, float distance, float half = 5000)
    {
        const auto wall = Frame::Make(scene);
        const Vector other = std::abs(direction.y) < 0.9F ? Vector{0, 1, 0} : Vector{1, 0, 0};
        const Vector place = from + direction * distance;
        wall->SetOrientation(scene, direction, other);
        wall->SetPosition(scene, place.x, place.y, place.z);
        wall->AddVisual(Square(0, 0, 0, half, 0xFFFFFFFF));
        return wall;
    }

    Vector Position() { return control->GetCameraPosition(); }

    std::shared_ptr<Frame> scene = AmbientScene(1);
    std::vector<std::pair<std::shared_ptr<Frame>, std::shared_ptr<MeshBuilder>>> hits;
    LiveControl control;
};

Vector Along(int axis, float distance)
{
    return {axis == 0 ? distance : 0, axis == 1 ? distance : 0, axis == 2 ? distance : 0};
}

/// How far ahead of the camera the rays of a probe start. They start at the front plane of a camera that faces the
/// obstacle; for every direction but forward that camera stands aside along the scene's z axis, by the front plane's
/// distance: forwards for back, left and down, backwards for right and up.
float BlindDistance(int axis, bool positive, Vector direction)
{
    if (axis == 2 && positive)
        return Front;
    const float aside = positive ? -Front : Front;
    return Front + aside * direction.z;
}

// Whatever the pose, the direction and the size of the moves: a wall is never nearer than the rays' start and the
// distance to keep, and the first stop is exactly there.
TEST(Collision, walls_stop_the_camera_in_all_six_directions_and_never_let_it_through)
{
    constexpr float Room = 3;
    for (const auto& [name, pose] : Poses)
        for (int axis = 0; axis < 3; ++axis)
            for (const float sign : {1.0F, -1.0F})
            {
                Walker walker;
                walker.Take(pose);
                const Vector direction = pose.Axis(axis) * sign;
                const float kept = BlindDistance(axis, sign > 0, direction) + Distance;
                const auto wall = walker.AddWall(pose.position, direction, kept + Room);
                const std::string what = std::string{name} + ", axis " + std::to_string(axis) + (sign > 0 ? "+" : "-");

                const Vector moved = walker.control->AddCameraMovement(Along(axis, sign * 50), tdlAdvance);
                ExpectNear(walker.Position(), pose.position + direction * Room, what, 1e-3F);
                ExpectNear(moved, Along(axis, sign * Room), what + ", what is left of the distance", 1e-3F);
                ASSERT_EQ(walker.hits.size(), 1U) << what;
                EXPECT_EQ(walker.hits[0].first, wall) << what;
                EXPECT_EQ(walker.hits[0].second, wall->Visuals()[0]) << what;

                for (const float size : {0.01F, 0.3F, 7.0F, 1000.0F, 0.05F, 20.0F})
                {
                    walker.control->AddCameraMovement(Along(axis, sign * size), tdlAdvance);
                    const float left = Dot(pose.position + direction * (kept + Room) - walker.Position(), direction);
                    EXPECT_GT(left, kept - 1e-3F) << what << ", " << size;
                }
                ExpectNear(walker.control->GetCameraOrientation().direction, pose.direction, what, 1e-3F);
            }
}

TEST(Collision, a_level_glide_stops_like_an_advance_and_stays_where_it_stopped)
{
    for (const Vector direction : {Vector{0, 0, 1}, Vector{1, 0, 0}, Vector{-0.6F, 0, 0.8F}, Vector{0, 0, -1}})
        for (const float start : {0.0F, 123.456F, -4321.1F})
        {
            Walker walker;
            const Pose pose{{start, 2, -start}, direction, {0, 1, 0}};
            walker.Take(pose);
            walker.AddWall(pose.position, direction, 10);
            for (const float size : {0.7F, 0.7F, 5.0F, 20.0F, 0.2F})
                walker.control->AddCameraMovement({0, 0, size}, tdlGlide);
            ExpectNear(walker.Position(), pose.position + direction * (10 - Front - Distance), "at the wall", 1e-3F);
            // The moves of 20 and 0.2 were stopped, once each.
            EXPECT_EQ(walker.hits.size(), 2U) << direction.x << ", " << start;
        }
}

// A glide moves the levelled camera, and then the camera as it really looks must have room. The plate lies below what
// the levelled camera's rays pass, and a sixteenth before the front plane of the real one, which looks down.
TEST(Collision, a_glide_that_ends_too_near_to_what_the_camera_sees_is_undone)
{
    Walker walker;
    const Pose pose{{0, 2, 0}, {0, -0.8F, 0.6F}, {0, 0.6F, 0.8F}};
    walker.Take(pose);
    const auto plate = walker.AddWall({0, 1.15F, 3.14F}, {0, -1, 0}, 0, 0.3F);
    walker.control->AddCameraMovement({0, 0, 1}, tdlGlide);
    EXPECT_TRUE(walker.hits.empty());
    ExpectNear(walker.Position(), {0, 2, 1}, "room enough");
    walker.control->AddCameraMovement({0, 0, 1.5F}, tdlGlide);
    ASSERT_EQ(walker.hits.size(), 1U);
    EXPECT_EQ(walker.hits[0].first, plate);
    ExpectNear(walker.Position(), {0, 2, 1}, "undone");
    ExpectNear(walker.control->GetCameraOrientation().direction, pose.direction, "as it looked");
}

TEST(Collision, turns_that_end_in_front_of_an_obstacle_are_undone_and_others_are_kept)
{
    struct Row
    {
        const char* name;
        float wall; // from the camera, to its right
        bool kept;
    };
    constexpr float QuarterTurn = 1.5707964F;
    for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
        for (const auto& [name, wall, kept] :
             {Row{"with room", Front + 1, true}, Row{"too near", Front + 0.05F, false}})
        {
            Walker walker;
            walker.Take({{5, 0, 0}});
            const auto obstacle = walker.AddWall({5, 0, 0}, {1, 0, 0}, wall);
            walker.control->AddCameraRotation(0, QuarterTurn, 0, 5, 0, 0, method);
            const Vector expected = kept ? Vector{1, 0, 0} : Vector{0, 0, 1};
            ExpectNear(walker.control->GetCameraOrientation().direction, expected, name);
            ExpectNear(walker.Position(), {5, 0, 0}, name);
            ASSERT_EQ(walker.hits.size(), kept ? 0U : 1U) << name;
            if (!kept)
            {
                EXPECT_EQ(walker.hits[0].first, obstacle) << name;
            }
        }
    // A glide about a far point brings the place back too.
    Walker walker;
    walker.Take({{0, 0, -10}});
    walker.AddWall({-10, 0, 0}, {1, 0, 0}, Front + 0.05F);
    walker.control->AddCameraRotation(0, QuarterTurn, 0, 0, 0, 0, tdlGlide);
    EXPECT_EQ(walker.hits.size(), 1U);
    ExpectNear(walker.Position(), {0, 0, -10}, "back where it was");
}

TEST(Collision, as_many_rays_look_as_there_are_samples)
{
    struct Row
    {
        std::int32_t samples;
        bool dot;  // a small obstacle straight ahead is seen
        bool wall; // one that fills the view
    };
    for (const auto& [samples, dot, wall] :
         {Row{-3, false, false}, Row{0, false, false}, Row{1, true, true}, Row{2, false, true}, Row{5, true, true},
          Row{6, false, true}, Row{2147483647, true, true}})
        for (const float half : {0.05F, 5000.0F})
        {
            Walker walker;
            walker.control->SetCollisionSamples(samples);
            walker.AddWall({0, 0, 0}, {0, 0, 1}, 6, half);
            walker.control->AddCameraMovement({0, 0, 7}, tdlAdvance);
            const bool seen = half < 1 ? dot : wall;
            EXPECT_EQ(walker.hits.size(), seen ? 1U : 0U) << samples << " samples, half " << half;
        }
}

TEST(Collision, a_camera_that_is_too_near_steps_back_and_one_within_a_box_backs_out)
{
    Walker walker;
    walker.AddWall({0, 0, 0}, {0, 0, 1}, Front + 0.04F);
    const Vector moved = walker.control->AddCameraMovement({0, 0, 1}, tdlAdvance);
    EXPECT_NEAR(moved.z, 0.04F - Distance, 1e-4);
    EXPECT_NEAR(walker.Position().z, 0.04F - Distance, 1e-4);

    Walker inside;
    const auto box = MeshBuilder::Make();
    box->AddMeshBuilder(Square(0, 0, -5, 5, 0xFFFFFFFF));
    box->AddMeshBuilder(Square(0, 0, 5, 5, 0xFFFFFFFF));
    inside.scene->AddVisual(box);
    inside.control->AddCameraMovement({0, 0, 2}, tdlAdvance);
    EXPECT_NEAR(inside.Position().z, -Distance, 1e-4);
    EXPECT_EQ(inside.hits.size(), 1U);
}

TEST(Collision, nothing_is_asked_when_it_is_off_or_nothing_moves)
{
    Walker walker;
    walker.AddWall({0, 0, 0}, {0, 0, 1}, Front + 0.05F);
    walker.control->AddCameraMovement({0, 0, 0}, tdlAdvance);
    EXPECT_TRUE(walker.hits.empty());
    walker.control->SetCollisionDetection(false);
    walker.control->AddCameraMovement({0, 0, 3}, tdlAdvance);
    ExpectNear(walker.Position(), {0, 0, 3}, "through the wall");
    EXPECT_TRUE(walker.hits.empty());
}

TEST(Collision, a_handler_that_throws_leaves_the_camera_facing_as_before)
{
    const Pose pose{{0, 0, 0}, {0, -0.6F, 0.8F}, {0, 0.8F, 0.6F}};
    for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
    {
        Walker walker;
        walker.Take(pose);
        walker.AddWall({0, 0, 0}, {0, 0, 1}, 3);
        walker.control->Collision.Connect([](auto&...) { throw std::runtime_error{"the host's own"}; });
        EXPECT_THROW(walker.control->AddCameraMovement({0, 0, 10}, method), std::runtime_error);
        const auto& camera = walker.control->Camera();
        ExpectNear(camera->GetOrientation(walker.scene).direction, pose.direction, "the frame itself");
        ExpectNear(camera->GetPosition(walker.scene), pose.position, "the frame itself");
    }
}

} // namespace
