// Frames: hierarchy, places relative to other frames, looking at things.
#include "platform/scenegraph/SceneDoubles.h"
#include "platform/scenegraph/frames/Frame.h"

#include <cmath>
#include <numbers>

namespace lumora
{

using test::IsNear;
using test::Raises;

TEST(Frames, positions_relative_to_any_frame_agree_with_going_up_and_down_by_hand)
{
    const auto root = Frame::Make();
    const auto left = Frame::Make(root);
    const auto right = Frame::Make(root);
    const auto deep = Frame::Make(left);
    left->AddRotation(CombineType::After, {1, 1, 0}, 0.9F);
    left->AddTranslation(CombineType::After, 3, -2, 5);
    right->AddScale(CombineType::After, 2, 2, 0.5F);
    right->AddRotation(CombineType::After, {0, 0, 1}, -1.3F);
    right->AddTranslation(CombineType::After, -7, 1, 0);

    deep->SetPosition(right, 1, 2, 3);
    const Vector inWorld = TransformPoint({1, 2, 3}, right->LocalTransform()).ToVector();
    EXPECT_TRUE(IsNear(deep->GetPosition(root), inWorld, 1e-5));
    const Vector inLeft = deep->GetPosition(left);
    EXPECT_TRUE(IsNear(TransformPoint(inLeft, left->LocalTransform()).ToVector(), inWorld, 1e-5));
    EXPECT_TRUE(IsNear(deep->GetPosition(right), {1, 2, 3}, 1e-5));
    EXPECT_TRUE(IsNear(deep->GetPosition(nullptr), inWorld, 1e-5)) << "nothing stands for the root";
}

TEST(Frames, a_frame_outlives_its_parent_as_a_root)
{
    auto parent = Frame::Make();
    const auto child = Frame::Make(parent);
    parent->AddTranslation(CombineType::After, 0, 0, 9);
    EXPECT_EQ(child->WorldTransform().m[3][2], 9);
    parent.reset();
    EXPECT_EQ(child->Parent(), nullptr);
    EXPECT_EQ(child->WorldTransform().m[3][2], 0);
}

TEST(Frames, impossible_hierarchies_are_refused_and_change_nothing)
{
    const auto root = Frame::Make();
    const auto child = Frame::Make(root);
    const auto grandchild = Frame::Make(child);
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { grandchild->AddChild(root); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { child->AddChild(child); }));
    EXPECT_TRUE(Raises(error::RMBadObject, [&] { child->AddChild(nullptr); }));
    EXPECT_TRUE(Raises(error::RMNotFound, [&] { root->DeleteChild(grandchild); }));
    EXPECT_EQ(child->Parent(), root);
    EXPECT_EQ(grandchild->Parent(), child);
    EXPECT_EQ(root->Parent(), nullptr);
}

TEST(Frames, a_chain_of_a_hundred_thousand_frames_is_no_deeper_than_one)
{
    auto root = Frame::Make();
    std::shared_ptr<Frame> last = root;
    for (int i = 0; i < 100'000; ++i)
    {
        last = Frame::Make(last);
        last->AddTranslation(CombineType::After, 1, 0, 0);
    }
    EXPECT_EQ(last->GetPosition(root).x, 100'000);
    root->Children().front()->AddTranslation(CombineType::After, 1, 0, 0);
    EXPECT_EQ(last->GetPosition(root).x, 100'001);
    EXPECT_TRUE(root->Bounds(nullptr).IsEmpty());
    EXPECT_EQ(root->RayPick(nullptr, {{0, 0, 1}, {}}, RayPickFlags::Primitives)->GetSize(), 0);
    last.reset();
    root.reset();
}

TEST(Frames, turning_about_an_axis_is_right_handed_about_it)
{
    struct Case
    {
        const char* name;
        CombineType combine;
        Vector direction; // afterwards
        Vector position;
    };
    for (const Case& c : {Case{"own axes", CombineType::Before, {1, 0, 0}, {0, 0, 5}},
                          Case{"parent's axes", CombineType::After, {1, 0, 0}, {5, 0, 0}},
                          Case{"instead", CombineType::Replace, {1, 0, 0}, {0, 0, 0}}})
    {
        const auto root = Frame::Make();
        const auto frame = Frame::Make(root);
        frame->SetPosition(root, 0, 0, 5);
        frame->AddRotation(c.combine, {0, 2, 0}, std::numbers::pi_v<float> / 2);
        EXPECT_TRUE(IsNear(frame->GetOrientation(root).direction, c.direction, 1e-6)) << c.name;
        EXPECT_TRUE(IsNear(frame->GetPosition(root), c.position, 1e-6)) << c.name;
        const Matrix4 before = frame->LocalTransform();
        frame->AddRotation(c.combine, {0, 0, 0}, 1);
        EXPECT_EQ(frame->LocalTransform(), before) << c.name << ": no axis, no turn";
    }
}

TEST(Frames, an_orientation_is_made_upright_and_keeps_place_and_scale)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    frame->AddScale(CombineType::After, 2, -3, 4);
    frame->SetPosition(root, 7, 8, 9);
    frame->SetOrientation(root, {0, 0, -2}, {0, 5, 1});
    const Orientation look = frame->GetOrientation(root);
    EXPECT_TRUE(IsNear(look.direction, {0, 0, -1}, 1e-7));
    EXPECT_TRUE(IsNear(look.up, {0, 1, 0}, 1e-7));
    EXPECT_EQ(frame->GetPosition(root), (Vector{7, 8, 9}));
    const Matrix4& local = frame->LocalTransform();
    EXPECT_NEAR(Length(local.Row(0)), 2, 1e-12);
    EXPECT_NEAR(Length(local.Row(1)), 3, 1e-12);
    EXPECT_NEAR(Length(local.Row(2)), 4, 1e-12);
    EXPECT_LT(Dot(Cross(local.Row(0), local.Row(1)), local.Row(2)), 0) << "a mirrored frame stays mirrored";
}

TEST(Frames, look_at_turns_about_every_axis_but_the_constrained_one)
{
    const auto root = Frame::Make();
    const auto target = Frame::Make(root);
    target->SetPosition(root, 10, 10 * std::numbers::sqrt2_v<float>, 10); // 45 degrees sideways, 45 degrees up
    const float half = 0.5F;
    const float root2 = 1 / std::numbers::sqrt2_v<float>;
    struct Case
    {
        const char* name;
        FrameConstraint constraint;
        Vector direction;
    };
    for (const Case& c : {Case{"roll kept", FrameConstraint::Z, {half, root2, half}},
                          Case{"heading kept", FrameConstraint::Y, {0, root2, root2}},
                          Case{"elevation kept", FrameConstraint::X, {root2, 0, root2}}})
    {
        const auto camera = Frame::Make(root);
        camera->LookAt(target, root, c.constraint);
        const Orientation look = camera->GetOrientation(root);
        EXPECT_TRUE(IsNear(look.direction, c.direction, 1e-6)) << c.name;
        EXPECT_NEAR(look.up.x * look.direction.z - look.up.z * look.direction.x, 0, 1e-6) << c.name << ": level";
        EXPECT_GT(look.up.y, 0) << c.name;
    }
}

TEST(Frames, look_at_straight_up_bends_backwards_and_its_own_place_is_no_target)
{
    const auto root = Frame::Make();
    const auto camera = Frame::Make(root);
    const auto target = Frame::Make(root);
    camera->LookAt(target, root, FrameConstraint::Z);
    EXPECT_EQ(camera->LocalTransform(), Matrix4::Identity());
    target->SetPosition(root, 0, 3, 0);
    camera->LookAt(target, root, FrameConstraint::Z);
    EXPECT_TRUE(IsNear(camera->GetOrientation(root).direction, {0, 1, 0}, 1e-6));
    EXPECT_TRUE(IsNear(camera->GetOrientation(root).up, {0, 0, -1}, 1e-6));
    EXPECT_TRUE(Raises(error::RMBadObject, [&] { camera->LookAt(nullptr, root, FrameConstraint::Z); }));
}

TEST(Frames, unusable_numbers_are_refused_and_change_nothing)
{
    const auto root = Frame::Make();
    const auto frame = Frame::Make(root);
    const auto flat = Frame::Make(root);
    flat->AddScale(CombineType::After, 1, 0, 1);
    const auto inFlat = Frame::Make(flat);
    frame->SetPosition(root, 1, 2, 3);
    const Matrix4 before = frame->LocalTransform();
    const auto refused = [](auto call) { return Raises(error::RMBadValue, call); };
    EXPECT_TRUE(refused([&] { frame->SetPosition(root, NAN, 0, 0); }));
    EXPECT_TRUE(refused([&] { frame->AddTranslation(CombineType::After, 0, INFINITY, 0); }));
    EXPECT_TRUE(refused([&] { frame->SetOrientation(root, {0, 0, 0}, {0, 1, 0}); }));
    EXPECT_TRUE(refused([&] { frame->SetOrientation(root, {0, 2, 0}, {0, -1, 0}); }));
    EXPECT_TRUE(refused([&] { frame->AddRotation(static_cast<CombineType>(3), {0, 1, 0}, 1); }));
    EXPECT_TRUE(refused([&] { frame->AddTransform(CombineType::After, Matrix4{}); }));
    EXPECT_TRUE(refused([&] { frame->GetPosition(flat); })) << "a flattened frame has no coordinates";
    EXPECT_TRUE(refused([&] { inFlat->SetPosition(root, 1, 1, 1); }));
    EXPECT_EQ(frame->LocalTransform(), before);
    inFlat->SetPosition(flat, 1, 1, 1);
    EXPECT_EQ(inFlat->GetPosition(root), (Vector{1, 0, 1})) << "out of a flattened frame there is a way";
    EXPECT_EQ(flat->GetOrientation(root).up, (Vector{0, 1, 0})) << "found from the axes that are left";
}

} // namespace lumora
