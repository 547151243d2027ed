// Positions over time.
#include "platform/scenegraph/SceneDoubles.h"
#include "platform/scenegraph/frames/Animation.h"

namespace lumora
{

using test::IsNear;
using test::Raises;

namespace
{

Animation WithKeys(Animation::Interpolation interpolation, bool closed)
{
    Animation animation;
    animation.SetInterpolation(interpolation);
    animation.SetClosed(closed);
    animation.AddPositionKey(2, 4, 0, 0); // out of order on purpose
    animation.AddPositionKey(0, 0, 0, 0);
    animation.AddPositionKey(1, 1, 2, 0);
    return animation;
}

} // namespace

TEST(Animations, are_straight_between_keys_when_linear_and_smooth_when_splines)
{
    EXPECT_TRUE(IsNear(WithKeys(Animation::Interpolation::Linear, false).PositionAt(1.25F), {1.75F, 1.5F, 0}, 1e-6));

    // The textbook form with evenly spaced keys: (-p0 + 9 p1 + 9 p2 - p3) / 16 half-way.
    Animation even;
    even.SetInterpolation(Animation::Interpolation::Spline);
    for (int i = 0; i < 4; ++i)
        even.AddPositionKey(static_cast<float>(i), static_cast<float>(i * i), static_cast<float>(5 - i), 1);
    EXPECT_TRUE(IsNear(even.PositionAt(1.5F), {(9.0F + 36 - 9) / 16, 3.5F, 1}, 1e-6));

    // Unevenly spaced keys on a straight line at constant speed stay on it, at that speed.
    Animation line;
    line.SetInterpolation(Animation::Interpolation::Spline);
    for (const float time : {0.0F, 0.5F, 3.0F, 3.25F, 10.0F})
        line.AddPositionKey(time, 2 * time, 1 - time, 0);
    for (const float time : {0.1F, 1.7F, 3.1F, 9.0F})
        EXPECT_TRUE(IsNear(line.PositionAt(time), {2 * time, 1 - time, 0}, 1e-5)) << time;
}

TEST(Animations, stop_at_their_ends_when_open_and_go_round_when_closed)
{
    const Animation open = WithKeys(Animation::Interpolation::Linear, false);
    EXPECT_EQ(open.PositionAt(9), (Vector{4, 0, 0}));
    EXPECT_EQ(open.PositionAt(-9), (Vector{0, 0, 0}));
    const Animation closed = WithKeys(Animation::Interpolation::Linear, true);
    EXPECT_TRUE(IsNear(closed.PositionAt(2.5F), {2, 0, 0}, 1e-6)) << "half-way home, as long as the first step";
    EXPECT_TRUE(IsNear(closed.PositionAt(3 + 0.5F), {0.5F, 1, 0}, 1e-6));
    EXPECT_TRUE(IsNear(closed.PositionAt(-0.5F), {2, 0, 0}, 1e-6));

    // A closed spline arrives at its start with the speed it left with.
    const Animation spline = WithKeys(Animation::Interpolation::Spline, true);
    const float step = 1.0F / 256;
    const Vector leaving = (spline.PositionAt(step) - spline.PositionAt(0)) * 256;
    const Vector arriving = (spline.PositionAt(3) - spline.PositionAt(3 - step)) * 256;
    EXPECT_TRUE(IsNear(leaving, arriving, 0.1));
}

TEST(Animations, move_the_bound_frame_relative_to_its_parent)
{
    const auto root = Frame::Make();
    const auto parent = Frame::Make(root);
    const auto frame = Frame::Make(parent);
    parent->SetPosition(root, 100, 0, 0);
    Animation animation = WithKeys(Animation::Interpolation::Linear, false);
    animation.SetFrame(frame);
    animation.SetTime(1);
    EXPECT_EQ(frame->GetPosition(parent), (Vector{1, 2, 0}));
}

TEST(Animations, refuse_what_has_no_meaning)
{
    Animation animation;
    EXPECT_TRUE(Raises(error::RMNotFound, [&] { animation.PositionAt(0); }));
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { animation.AddPositionKey(NAN, 0, 0, 0); }));
    animation.AddPositionKey(1, 1, 1, 1);
    animation.AddPositionKey(1, 2, 2, 2);
    animation.SetClosed(true);
    EXPECT_EQ(animation.PositionAt(77), (Vector{2, 2, 2})) << "one key, the later one, at all times";
    EXPECT_TRUE(Raises(error::RMBadValue, [&] { animation.PositionAt(INFINITY); }));
}

} // namespace lumora
