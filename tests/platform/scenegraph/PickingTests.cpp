// Rays through frames, against closed forms.
#include "platform/scenegraph/SceneDoubles.h"

#include <numbers>
#include <random>

namespace lumora
{

using test::IsNear;
using test::MakeCube;
using test::Raises;

TEST(RayPicks, meet_both_sides_of_a_cube_where_geometry_says)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    const auto cube = MakeCube(-1, 1);
    frame->AddVisual(cube);
    frame->AddScale(CombineType::After, 2, 3, 4);
    frame->AddTranslation(CombineType::After, 10, 0, 0);

    const auto hits = root->RayPick(root, {{0, 0, 5}, {10.5F, 1, -100}}, RayPickFlags::Primitives);
    ASSERT_EQ(hits->GetSize(), 2) << "one hit for each face, the front's and the back's";
    EXPECT_TRUE(IsNear(hits->GetPick(0).description.position, {10.5F, 1, -4}, 1e-5));
    EXPECT_TRUE(IsNear(hits->GetPick(1).description.position, {10.5F, 1, 4}, 1e-5));
    EXPECT_EQ(hits->GetPick(0).description.faceIndex, 0);
    EXPECT_EQ(hits->GetPick(1).description.faceIndex, 1);
    EXPECT_EQ(hits->GetPick(0).visual, cube);
    EXPECT_EQ(hits->GetPick(0).framePath, (std::vector{root, frame}));
    EXPECT_TRUE(Raises(error::SubscriptOutOfRange, [&] { hits->GetPick(2); }));

    const auto box = root->RayPick(root, {{0, 0, 5}, {10.5F, 1, -100}}, RayPickFlags::BoundingBoxes);
    ASSERT_EQ(box->GetSize(), 1);
    EXPECT_TRUE(IsNear(box->GetPick(0).description.position, {0, 0, 96}, 1e-4)) << "the distance, in scene units";
    EXPECT_EQ(root->RayPick(root, {{0, 0, -1}, {10.5F, 1, -100}}, RayPickFlags::BoundingBoxes)->GetSize(), 0);
    const auto within = root->RayPick(root, {{0, 1, 0}, {10, 0, 0}}, RayPickFlags::BoundingBoxes);
    ASSERT_EQ(within->GetSize(), 1);
    EXPECT_EQ(within->GetPick(0).description.position, (Vector{0, 0, 0}));
}

TEST(RayPicks, agree_with_the_closed_form_of_a_plane_in_any_frame)
{
    std::mt19937 random{3};
    std::uniform_real_distribution<float> number{-1, 1};
    for (int i = 0; i < 200; ++i)
    {
        const auto root = Frame::Make();
        const auto outer = Frame::Make(root);
        const auto frame = Frame::Make(outer);
        outer->AddRotation(CombineType::After, {number(random), number(random), 1}, 3 * number(random));
        frame->AddScale(CombineType::After, 2 + number(random), 2 + number(random), 2 + number(random));
        frame->AddTranslation(CombineType::After, number(random), number(random), number(random));
        const auto square = MeshBuilder::Make();
        square->AddFaces(std::vector<Vector>{{-9, -9, 0}, {-9, 9, 0}, {9, 9, 0}, {9, -9, 0}}, {},
                         std::vector<std::int32_t>{4, 0, 1, 2, 3, 0});
        frame->AddVisual(square);

        const Vector origin{5 * number(random), 5 * number(random), 5 * number(random)};
        const Vector direction{number(random), number(random), number(random)};
        const auto hits = root->RayPick(root, {direction, origin}, RayPickFlags::Primitives);

        // The plane through three points of the square, as the scene sees them.
        const Matrix4& world = frame->WorldTransform();
        const Double3 normal = Cross(world.Row(0), world.Row(1));
        const double t = Dot(normal, world.Row(3) - Double3{origin}) / Dot(normal, direction);
        const Double3 expected = Double3{origin} + Double3{direction} * t;
        const Double3 offset = expected - world.Row(3);
        const double u = Dot(offset, world.Row(0)) / Dot(world.Row(0), world.Row(0));
        const double v = Dot(offset, world.Row(1)) / Dot(world.Row(1), world.Row(1));
        const bool isHit = t >= 0 && std::abs(u) < 9 && std::abs(v) < 9;
        ASSERT_EQ(hits->GetSize(), isHit ? 1 : 0) << i;
        if (isHit)
        {
            EXPECT_TRUE(IsNear(hits->GetPick(0).description.position, expected.ToVector(), 1e-3)) << i;
        }
        const Vector seenFromFrame = frame->Parent()->GetPosition(root);
        EXPECT_TRUE(std::isfinite(seenFromFrame.x));
    }
}

TEST(RayPicks, never_slip_through_the_diagonal_of_a_quad)
{
    const auto root = Frame::Make();
    root->AddVisual(MakeCube(-0.1F, 0.7F));
    for (int i = 0; i <= 100; ++i)
    {
        const float at = -0.1F + 0.8F * static_cast<float>(i) / 100;
        EXPECT_GE(root->RayPick(root, {{0, 0, 1}, {at, at, -3}}, RayPickFlags::Primitives)->GetSize(), 2) << at;
    }
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

TEST(RayPicks, come_nearest_first_and_equal_ones_in_the_order_of_the_scene)
{
    const auto root = Frame::Make();
    std::vector<std::shared_ptr<MeshBuilder>> cubes;
    for (const float z : {30.0F, 10.0F, 10.0F, 20.0F})
    {
        const auto frame = Frame::Make(root);
        cubes.push_back(MakeCube(-1, 1));
        frame->SetPosition(root, 0, 0, z);
        frame->AddVisual(cubes.back());
    }
    const auto hits = root->RayPick(root, {{0, 0, 1}, {0.1F, 0.2F, 0}}, RayPickFlags::BoundingBoxes);
    ASSERT_EQ(hits->GetSize(), 4);
    for (const auto& [index, cube] : {std::pair{0, 1}, {1, 2}, {2, 3}, {3, 0}})
        EXPECT_EQ(hits->GetPick(index).visual, cubes[static_cast<std::size_t>(cube)]);
}

TEST(RayPicks, find_flat_boxes_and_nothing_in_flattened_frames)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    const auto square = MeshBuilder::Make();
    square->AddFaces(std::vector<Vector>{{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}, {},
                     std::vector<std::int32_t>{4, 0, 1, 2, 3, 0});
    frame->AddVisual(square);
    frame->AddRotation(CombineType::After, {1, 0, 0}, 0.3F);
    const Ray ray{{0, 0, 1}, {0.2F, 0, -5}};
    ASSERT_EQ(root->RayPick(root, ray, RayPickFlags::BoundingBoxes)->GetSize(), 1);
    EXPECT_NEAR(root->RayPick(root, ray, RayPickFlags::BoundingBoxes)->GetPick(0).description.position.z, 5, 1e-5);
    EXPECT_EQ(root->RayPick(root, ray, RayPickFlags::Primitives)->GetSize(), 1);
    frame->AddScale(CombineType::After, 1, 1, 0);
    EXPECT_EQ(root->RayPick(root, ray, RayPickFlags::Primitives)->GetSize(), 0);
    EXPECT_EQ(root->RayPick(root, ray, RayPickFlags::BoundingBoxes)->GetSize(), 0);
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root->RayPick(root, {{0, 0, 0}, {}}, RayPickFlags::Primitives); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { root->RayPick(root, {{0, NAN, 0}, {}}, RayPickFlags::Primitives); }));
}

TEST(RayPicks, bounds_hold_every_visual_below)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    frame->AddVisual(MakeCube(-1, 1));
    frame->AddRotation(CombineType::After, {0, 0, 1}, std::numbers::pi_v<float> / 4);
    root->AddVisual(MakeCube(0, 0.5F));
    const Box box = root->Bounds(nullptr);
    EXPECT_NEAR(box.maximum.x, std::numbers::sqrt2, 1e-6);
    EXPECT_NEAR(box.minimum.y, -std::numbers::sqrt2, 1e-6);
    EXPECT_NEAR(box.maximum.z, 1, 1e-6);
}

} // namespace lumora
