// Rays through frames, against closed forms.
#include "platform/scenegraph/EditedScene.h"

#include <array>
#include <functional>
#include <numbers>

namespace lumora
{

using test::IsNear;
using test::MakeCube;
using test::Raises;

TEST(RayPicks, refuse_places_and_directions_that_are_none)
{
    const auto root = Frame::Make();
    root->AddVisual(MakeCube(-1, 1));
    const auto hits = root->RayPick(root, {{0, 0, 5}, {0.5F, 0.2F, -100}}, RayPickFlags::Primitives);
    ASSERT_EQ(hits->GetSize(), 2) << "one hit for each face, the front's and the back's";
    EXPECT_TRUE(Raises(error::SubscriptOutOfRange, [&] { hits->GetPick(2); }));
    for (const auto flags : {RayPickFlags::Primitives, RayPickFlags::BoundingBoxes})
        for (const Vector direction : {Vector{0, 0, 0}, Vector{0, NAN, 0}})
            EXPECT_TRUE(Raises(error::RMBadValue, [&] { root->RayPick(root, {direction, {}}, flags); }));
}

TEST(RayPicks, take_and_give_coordinates_of_the_reference)
{
    const auto root = Frame::Make();
    const auto holder = Frame::Make(root);
    const auto observer = Frame::Make(root);
    holder->AddVisual(MakeCube(-1, 1));
    holder->SetPosition(root, 0, 0, 20);
    observer->AddScale(CombineType::After, 2, 2, 2);
    observer->AddRotation(CombineType::After, {0, 1, 0}, std::numbers::pi_v<float>);
    const auto hits = root->RayPick(observer, {{0, 0, -1}, {0, 0, 0}}, RayPickFlags::Primitives);
    ASSERT_EQ(hits->GetSize(), 2);
    EXPECT_TRUE(IsNear(hits->GetPick(0).description.position, {0, 0, -9.5F}, 1e-5));
    const auto boxes = root->RayPick(observer, {{0, 0, -1}, {0, 0, 0}}, RayPickFlags::BoundingBoxes);
    EXPECT_NEAR(boxes->GetPick(0).description.position.z, 9.5F, 1e-5);
}

namespace
{

// An edited scene, and what a ray meets in it by the plain way: every face of every mesh in the world.
class PickedScene : public test::EditedScene
{
public:
    using EditedScene::EditedScene;

    // Compares what picks find with the plain way.
    void Check(Frame& top)
    {
        const double away = Below(2) == 0 ? 4 : 1; // the nearer origins lie within many boxes
        const Double3 origin{away * Number(), away * Number(), away * Number()};
        const Double3 direction = Normalized(Double3{Number(), Number(), Number()} - origin);
        const auto world = Frame::Make();
        CheckObstacles(top, *world, {direction.ToVector(), origin.ToVector()});
        const auto hits = top.RayPick(world, {direction.ToVector(), origin.ToVector()}, RayPickFlags::Primitives);
        std::vector<Expected> expected;
        Collect(top, Double3{origin.ToVector()}, Normalized(Double3{direction.ToVector()}), expected);
        double last = 0;
        for (std::int32_t i = 0; hits->HasPick(i); ++i)
        {
            const PickHit& hit = hits->GetPick(i);
            const double distance = Length(Double3{hit.description.position} - Double3{origin.ToVector()});
            const auto same = std::ranges::find_if(expected,
                                                   [&](const Expected& e)
                                                   {
                                                       return e.visual == hit.visual &&
                                                              e.holder == hit.framePath.back() &&
                                                              e.face == hit.description.faceIndex && !e.isFound;
                                                   });
            ASSERT_NE(same, expected.end()) << "a hit that is none";
            EXPECT_EQ(hit.framePath.front().get(), &top);
            same->isFound = true;
            EXPECT_NEAR(same->distance, distance, 1e-4 * (1 + distance));
            EXPECT_GE(same->distance, last - 1e-4 * (1 + distance)) << "nearest first";
            last = same->distance;
        }
        for (const Expected& e : expected)
            EXPECT_TRUE(e.isFound || e.isDoubtful) << "a hit is missing at " << e.distance;
        found_ += expected.size();
    }

    std::size_t Found() const { return found_; }

private:
    struct Expected
    {
        std::shared_ptr<Visual> visual;
        std::shared_ptr<Frame> holder;
        std::int32_t face;
        double distance;
        bool isDoubtful; ///< so near a side that it may be missed
        bool isFound = false;
    };

    // Of each visual the nearest face, where it enters or else leaves the box, or nothing.
    void CheckObstacles(Frame& top, Frame& world, const Ray& ray)
    {
        for (const auto flags : {RayPickFlags::BoundingBoxes, RayPickFlags::AllBoxes})
        {
            std::vector<std::pair<std::shared_ptr<Visual>, double>> expected;
            CollectObstacles(top, ray, flags == RayPickFlags::AllBoxes, expected);
            std::ranges::sort(expected, {}, [](const auto& e) { return e.second; });
            const auto hits = top.RayPick(world.shared_from_this(), ray, flags);
            ASSERT_EQ(hits->GetSize(), static_cast<std::int32_t>(expected.size()));
            for (std::int32_t i = 0; i < hits->GetSize(); ++i)
            {
                const Vector position = hits->GetPick(i).description.position;
                const double distance = expected[static_cast<std::size_t>(i)].second;
                EXPECT_NEAR(position.z, distance, 1e-4 * (1 + distance)) << "nearest first";
                EXPECT_EQ(position.x, 0);
            }
        }
    }

    static void CollectObstacles(Frame& frame, const Ray& ray, bool onlyBoxes,
                                 std::vector<std::pair<std::shared_ptr<Visual>, double>>& expected)
    {
        const auto toLocal = Inverse(frame.WorldTransform());
        const Double3 o{ray.origin};
        const Double3 d = Normalized(Double3{ray.direction});
        for (const auto& visual : frame.Visuals())
        {
            const auto mesh = std::dynamic_pointer_cast<MeshBuilder>(visual);
            const Obstacle obstacle = onlyBoxes ? Obstacle::Box : mesh->GetObstacle();
            if (!toLocal || obstacle == Obstacle::None)
                continue;
            double nearest = rays::Missed;
            if (obstacle == Obstacle::Box)
                nearest = DistanceToBox(mesh->GetBox(), TransformPoint(o, *toLocal), TransformDirection(d, *toLocal));
            else
            {
                std::vector<Expected> faces;
                CollectMesh(frame, visual, o, d, faces);
                for (const Expected& face : faces)
                    nearest = std::min(nearest, face.distance);
            }
            if (nearest < rays::Missed)
                expected.emplace_back(visual, nearest);
        }
        for (const auto& child : frame.Children())
            CollectObstacles(*child, ray, onlyBoxes, expected);
    }

    // Where the ray enters it, or else leaves it.
    static double DistanceToBox(const Box& box, Double3 o, Double3 d)
    {
        const Double3 low = Double3{box.minimum} - o;
        const Double3 high = Double3{box.maximum} - o;
        const auto [enterX, leaveX] = std::minmax({low.x / d.x, high.x / d.x});
        const auto [enterY, leaveY] = std::minmax({low.y / d.y, high.y / d.y});
        const auto [enterZ, leaveZ] = std::minmax({low.z / d.z, high.z / d.z});
        const double enter = std::max({enterX, enterY, enterZ});
        const double leave = std::min({leaveX, leaveY, leaveZ});
        return box.IsEmpty() || enter > leave || leave < 0 ? rays::Missed : enter >= 0 ? enter : leave;
    }

    static void Collect(Frame& frame, Double3 o, Double3 d, std::vector<Expected>& expected)
    {
        const Matrix4& world = frame.WorldTransform();
        if (Inverse(world))
            for (const auto& visual : frame.Visuals())
                CollectMesh(frame, visual, o, d, expected);
        for (const auto& child : frame.Children())
            Collect(*child, o, d, expected);
    }

    static void CollectMesh(Frame& frame, const std::shared_ptr<Visual>& visual, Double3 o, Double3 d,
                            std::vector<Expected>& expected)
    {
        const MeshGeometry shape = std::dynamic_pointer_cast<MeshBuilder>(visual)->GetGeometry();
        std::int32_t face = 0;
        for (std::size_t first = 0; shape.faceList[first] != 0; ++face)
        {
            const auto count = static_cast<std::size_t>(shape.faceList[first]);
            const auto at = [&](std::size_t i)
            {
                const auto vertex = static_cast<std::size_t>(shape.faceList[first + 1 + i]);
                return TransformPoint(shape.vertices[vertex], frame.WorldTransform()) - o;
            };
            for (std::size_t i = 2; i < count; ++i)
                CollectTriangle({visual, frame.shared_from_this(), face, 0, false}, {at(0), at(i - 1), at(i)}, d,
                                expected);
            first += 1 + count;
        }
    }

    // By the volumes that the ray spans with the triangle's sides.
    static void CollectTriangle(Expected hit, const std::array<Double3, 3>& corner, Double3 d,
                                std::vector<Expected>& expected)
    {
        const double u = Dot(d, Cross(corner[1], corner[2]));
        const double v = Dot(d, Cross(corner[2], corner[0]));
        const double w = Dot(d, Cross(corner[0], corner[1]));
        const double sum = u + v + w;
        const double least = std::min({u / sum, v / sum, w / sum});
        hit.distance = Dot(corner[0], Cross(corner[1], corner[2])) / sum;
        hit.isDoubtful = !(least > 1e-6) || hit.distance < 1e-6;
        if (least > -1e-6 && hit.distance > -1e-6)
            expected.push_back(hit);
    }

    std::size_t found_ = 0;
};

} // namespace

TEST(RayPicks, find_what_a_plain_search_finds_while_the_scene_keeps_changing)
{
    for (unsigned seed = 1; seed <= 6; ++seed)
    {
        PickedScene scene{seed};
        for (int step = 0; step < 400 && !HasFatalFailure(); ++step)
        {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
            for (std::size_t changes = scene.Below(step % 50 == 0 ? 30 : 3); changes > 0; --changes)
                scene.Edit();
            scene.Check(*scene.Root());
            if (step % 3 == 0)
                scene.Check(*scene.AnyFrame());
        }
        EXPECT_GT(scene.Found(), 500U) << seed;
    }
}

TEST(RayPicks, tell_equal_distances_in_the_order_of_the_scene_however_it_came_about)
{
    const auto root = Frame::Make();
    const auto first = Frame::Make(root);
    const auto last = Frame::Make(root);
    const auto cube = MakeCube(-1, 1);
    const auto other = MakeCube(-1, 1);
    last->AddVisual(cube);
    const auto order = [&](RayPickFlags flags)
    {
        std::vector<std::pair<std::shared_ptr<Frame>, std::shared_ptr<Visual>>> result;
        const auto hits = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, -3}}, flags);
        for (std::int32_t i = 0; hits->HasPick(i); ++i)
            result.emplace_back(hits->GetPick(i).framePath.back(), hits->GetPick(i).visual);
        return result;
    };
    using Order = std::vector<std::pair<std::shared_ptr<Frame>, std::shared_ptr<Visual>>>;
    EXPECT_EQ(order(RayPickFlags::BoundingBoxes), (Order{{last, cube}}));
    first->AddVisual(other);
    EXPECT_EQ(order(RayPickFlags::BoundingBoxes), (Order{{first, other}, {last, cube}}));
    first->AddVisual(cube);
    root->AddVisual(cube);
    const Order all{{root, cube}, {first, other}, {first, cube}, {last, cube}};
    EXPECT_EQ(order(RayPickFlags::BoundingBoxes), all);
    Order twice = all; // fronts, then backs
    twice.insert(twice.end(), all.begin(), all.end());
    EXPECT_EQ(order(RayPickFlags::Primitives), twice);
    root->AddChild(first); // comes last from now on
    EXPECT_EQ(order(RayPickFlags::BoundingBoxes), (Order{{root, cube}, {last, cube}, {first, other}, {first, cube}}));
}

TEST(RayPicks, are_of_the_scene_they_were_cast_into_whenever_they_are_read)
{
    using Change = std::function<void(const std::shared_ptr<Frame>&, const std::shared_ptr<MeshBuilder>&)>;
    const std::pair<const char*, Change> changes[] = {
        {"moved", [](const auto& frame, const auto&) { frame->SetPosition(nullptr, 5, 0, 0); }},
        {"taken out", [](const auto& frame, const auto&) { frame->Root()->DeleteChild(frame); }},
        {"put elsewhere", [](const auto& frame, const auto&) { Frame::Make()->AddChild(frame); }},
        {"no obstacle", [](const auto&, const auto& mesh) { mesh->SetObstacle(Obstacle::None); }},
        {"shown no more", [](const auto& frame, const auto& mesh) { frame->DeleteVisual(mesh); }},
        {"emptied", [](const auto&, const auto& mesh) { mesh->Empty(); }},
        {"the mesh moved", [](const auto&, const auto& mesh) { mesh->Translate(5, 0, 0); }},
        {"its root put below another", [](const auto& frame, const auto&) { Frame::Make()->AddChild(frame->Root()); }},
    };
    for (const auto& [name, change] : changes)
        for (const bool isCompiled : {false, true})
        {
            const auto root = Frame::Make();
            const auto frame = Frame::Make(root);
            const auto mesh = MakeCube(-1, 1);
            frame->AddVisual(mesh);
            if (isCompiled)
                mesh->Compiled();
            const auto hits = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, -3}}, RayPickFlags::Primitives);
            const auto fresh = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, -3}}, RayPickFlags::Primitives);
            const auto boxes = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, -3}}, RayPickFlags::BoundingBoxes);
            ASSERT_TRUE(hits->HasPick(0));
            const PickHit& front = hits->GetPick(0);
            change(frame, mesh);
            for (const auto& array : {hits, fresh})
            {
                ASSERT_EQ(array->GetSize(), 2) << name;
                EXPECT_EQ(array->GetPick(1).framePath, (std::vector{root, frame})) << name;
                EXPECT_TRUE(IsNear(array->GetPick(1).description.position, {0.1F, 0.2F, 1}, 1e-5)) << name;
            }
            EXPECT_TRUE(IsNear(front.description.position, {0.1F, 0.2F, -1}, 1e-5)) << name;
            EXPECT_EQ(boxes->GetSize(), 1) << name;
            const auto after = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, -3}}, RayPickFlags::Primitives);
            const bool stays = std::string{name} == "its root put below another" || std::string{name} == "no obstacle";
            EXPECT_EQ(after->GetSize() == 2, stays) << name;
        }
}

TEST(RayPicks, bounds_hold_every_visual_below)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    frame->AddVisual(MakeCube(-1, 1));
    frame->AddRotation(CombineType::After, {0, 0, 1}, std::numbers::pi_v<float> / 4);
    root->AddVisual(MakeCube(0, 2));
    const float half = -std::numbers::sqrt2_v<float>;
    EXPECT_TRUE(IsNear(root->Bounds(nullptr).minimum, {half, half, -1}, 1e-6));
    EXPECT_TRUE(IsNear(root->Bounds(nullptr).maximum, {2, 2, 2}, 1e-6));
}

} // namespace lumora
