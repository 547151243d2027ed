// Obstacles as a walk meets them: where the camera stops, what is undone, what the events name.
#include "base/Faults.h"
#include "camera/Desk.h"

#include <cstring>
#include <set>

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

    void Take(const Pose& pose) { StandIn(control.Control(), pose); }

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

// The distance a wall keeps is that of the wall's plane, however many rays look and however slanted they are.
TEST(Collision, every_number_of_samples_stops_a_glide_or_an_advance_at_the_same_place)
{
    for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
        for (const auto projection :
             {D3DRMPROJECT_PERSPECTIVE, D3DRMPROJECT_ORTHOGRAPHIC, D3DRMPROJECT_RIGHTHANDPERSPECTIVE})
            for (std::int32_t samples = 2; samples <= 9; ++samples)
            {
                Walker walker;
                walker.control->SetProjectionType(projection);
                walker.control->SetCollisionSamples(samples);
                const float sign = projection == D3DRMPROJECT_RIGHTHANDPERSPECTIVE ? -1.0F : 1.0F;
                walker.AddWall({0, 0, 0}, {0, 0, sign}, 10 + Front);
                walker.control->AddCameraMovement({0, 0, 50}, method);
                const std::string what = std::to_string(samples) + " samples, projection " + std::to_string(projection);
                ExpectNear(walker.Position(), {0, 0, 10 - Distance}, what);
                EXPECT_EQ(walker.hits.size(), 1U) << what;
            }
}

// The second of two glides is stopped where the first one ended, not undone: roundings grow with the coordinates that
// the camera comes from and goes to.
TEST(Collision, a_level_glide_stops_like_an_advance_and_stays_where_it_stopped)
{
    int undone = 0;
    for (const Vector direction : {Vector{0, 0, 1}, Vector{1, 0, 0}, Vector{-0.6F, 0, 0.8F}, Vector{0, 0, -1}})
        for (int i = 0; i < 50; ++i)
        {
            Walker walker;
            const float room = 20 + 19.7F * static_cast<float>(i);
            const Vector near = direction * (0.01F * static_cast<float>(i));
            const bool outward = i % 2 == 0;
            const Vector start = outward ? near : near - direction * room;
            walker.Take({start, direction, {0, 1, 0}});
            walker.AddWall(start, direction, room + Front + Distance);
            for (const float size : {5.0F, 2000.0F, 0.2F})
                walker.control->AddCameraMovement({0, 0, size}, tdlGlide);
            const Vector off = walker.Position() - (start + direction * room);
            undone += Dot(off, off) > 1e-6F || walker.hits.size() != 2 ? 1 : 0;
        }
    EXPECT_EQ(undone, 0) << "of 200";
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
    Vector atEvent;
    walker.control->Collision.Connect([&](auto&...) { atEvent = walker.control->Camera()->GetPosition(walker.scene); });
    faults::FailNext("Frame.SetPosition", 1, error::RMBadDevice); // tried again
    walker.control->AddCameraMovement({0, 0, 1.5F}, tdlGlide);
    ASSERT_EQ(walker.hits.size(), 1U);
    ExpectNear(atEvent, {0, 2, 1}, "back before the event");
    EXPECT_EQ(walker.hits[0].first, plate);
    ExpectNear(walker.Position(), {0, 2, 1}, "undone");
    ExpectNear(walker.control->GetCameraOrientation().direction, pose.direction, "as it looked");
}

TEST(Collision, turns_that_end_in_front_of_an_obstacle_are_undone_and_others_are_kept)
{
    constexpr float QuarterTurn = 1.5707964F;
    for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
        for (const auto& [name, wall, kept] :
             {std::tuple{"with room", Front + 1, true}, {"too near", Front + 0.05F, false}})
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
    walker.control->Collision.Connect([](auto&...)
                                      { faults::FailNext("Frame.SetOrientation", 1, error::RMBadDevice); });
    walker.control->AddCameraRotation(0, QuarterTurn, 0, 0, 0, 0, tdlGlide);
    EXPECT_EQ(walker.hits.size(), 1U);
    ExpectNear(walker.Position(), {0, 0, -10}, "back where it was");
}

TEST(Collision, as_many_rays_look_as_there_are_samples)
{
    for (const auto& [samples, dot, wall] :
         {std::tuple{-3, false, false},
          {0, false, false},
          {1, true, true},
          {2, false, true},
          {5, true, true},
          {6, false, true},
          {2147483647, true, true}}) // small obstacles straight ahead and ones that fill the view
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

TEST(Collision, a_camera_that_is_too_near_steps_back)
{
    Walker walker;
    walker.AddWall({0, 0, 0}, {0, 0, 1}, Front + 0.04F);
    const Vector moved = walker.control->AddCameraMovement({0, 0, 1}, tdlAdvance);
    EXPECT_NEAR(moved.z, 0.04F - Distance, 1e-4);
    EXPECT_NEAR(walker.Position().z, 0.04F - Distance, 1e-4);
}

// Walls in one mesh, at z -20, 5 and 20, and what a walk from between or before them meets.
TEST(Collision, a_mesh_stands_in_the_way_with_its_box_its_faces_or_not_at_all)
{
    constexpr float Kept = Front + Distance;
    for (const auto& [name, obstacle, from, to, hits] : // after a glide of 100
         {std::tuple{"within the box", Obstacle::Box, 0.0F, 20 - Kept, 1U},
          {"before the box", Obstacle::Box, -30, -20 - Kept, 1U},
          {"between the faces", Obstacle::Faces, 0, 5 - Kept, 1U},
          {"before the first face", Obstacle::Faces, -30, -20 - Kept, 1U},
          {"no obstacle", Obstacle::None, -30, 70, 0U}})
        for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
        {
            Walker walker;
            const auto room = MeshBuilder::Make();
            room->AddMeshBuilder(Square(0, 0, -20, 5000, 0xFFFFFFFF));
            room->AddMeshBuilder(Square(0, 0, 5, 5000, 0xFFFFFFFF));
            room->AddMeshBuilder(Square(0, 0, 20, 5000, 0xFFFFFFFF));
            room->SetObstacle(obstacle);
            walker.scene->AddVisual(room);
            walker.Take({{0, 0, from}});
            walker.control->AddCameraRotation(0, 0.01F, 0, 0, 0, from, method);
            EXPECT_NE(walker.control->GetCameraOrientation().direction, (Vector{0, 0, 1})) << name << ", turns";
            walker.Take({{0, 0, from}});
            walker.control->AddCameraMovement({0, 0, 100}, method);
            ExpectNear(walker.Position(), {0, 0, to}, name, 1e-3F);
            EXPECT_EQ(walker.hits.size(), hits) << name;
            walker.Take({{0, 0, from}});
            EXPECT_EQ(walker.control->Pick(tdlScene, 700, 700, true, true).PickedMeshbuilder, room) << name;
        }
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

// Each call on the platform fails once, then each operation for ever: the camera's frame has exactly its old transform.
TEST(Collision, a_step_that_fails_leaves_the_camera_where_it_was)
{
    const Pose pose{{3.3F, 2.7F, -1.1F}, {0.48F, -0.64F, 0.6F}, {0.4F, 0.768F, 0.5F}};
    using Step = std::function<void(Viewport&)>;
    const std::pair<const char*, Step> steps[] = {
        {"glide",
         [](Viewport& control) {
             control.AddCameraMovement({0, 0, -1}, tdlGlide);
         }},
        {"advance",
         [](Viewport& control) {
             control.AddCameraMovement({-1, 2, 1}, tdlAdvance);
         }},
        {"glide turn", [](Viewport& control) { control.AddCameraRotation(1, 2, 3, 5, 5, 5, tdlGlide); }},
        {"advance turn", [](Viewport& control) { control.AddCameraRotation(1, 2, 3, 5, 5, 5, tdlAdvance); }},
    };
    const auto callsOf = [](Viewport& control, const Step& step)
    {
        faults::Record();
        step(control);
        auto calls = faults::Recorded();
        faults::Clear();
        return calls;
    };
    Walker walker;
    walker.Take(pose);
    walker.AddWall(pose.position, {0, 0, 1}, 40);
    const auto& camera = walker.control->Camera();
    const Matrix4 before = camera->LocalTransform();
    const auto expectUndone = [&](const Step& step, const std::string& what)
    {
        EXPECT_THROW(step(walker.control.Control()), RuntimeError) << what;
        faults::Clear();
        EXPECT_EQ(std::memcmp(&before, &camera->LocalTransform(), sizeof before), 0) << what;
        camera->AddTransform(CombineType::Replace, before);
    };
    const auto updating =
        callsOf(walker.control.Control(), [](Viewport& control) { control.AddCameraMovement({}, tdlAdvance); });
    for (const auto& [name, step] : steps)
    {
        auto calls = callsOf(walker.control.Control(), step);
        camera->AddTransform(CombineType::Replace, before);
        calls.resize(calls.size() - updating.size()); // the camera has moved by then
        for (std::size_t call = 0; call < calls.size(); call += call < 20 || call + 20 > calls.size() ? 1 : 7)
        {
            faults::FailCall(static_cast<std::int64_t>(call), error::RMBadValue);
            expectUndone(step, name + (", call " + std::to_string(call)) + ' ' + calls[call]);
        }
        for (const std::string& operation : std::set<std::string>{calls.begin(), calls.end()})
        {
            faults::FailNext(operation, 1000000, error::RMBadDevice);
            expectUndone(step, name + (", for ever " + operation));
        }
    }
    walker.control->Collision.Connect([](auto&...) { throw RuntimeError{error::RMBadValue, "", "the host's own"}; });
    for (const tdlNavigationMethod method : {tdlGlide, tdlAdvance})
        expectUndone([method](Viewport& control) { control.AddCameraMovement({0, 0, 100}, method); }, "a handler");
}

} // namespace
