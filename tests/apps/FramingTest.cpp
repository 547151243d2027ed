// Framing, judged by projecting what was framed as the picture's conventions say.
#include "stage/Framing.h"

#include "base/Matrix.h"
#include "base/RuntimeError.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace lumora::tests
{

namespace
{

using stage::Framing;
using stage::FramingOptions;

const Box Boxes[] = {
    {{-1, -1, -1}, {1, 1, 1}},
    {{0, 0, 0}, {10, 0.5F, 3}},
    {{-0.001F, -0.002F, -0.0005F}, {0.001F, 0.002F, 0.0005F}},
    {{1000, 2000, -3000}, {1010, 2050, -2900}},
    {{-1e6F, -2, -1e6F}, {1e6F, 2, 1e6F}},
    {{-1, 0, -1}, {1, 0, 1}}, // flat
    {{-1, -50, -1}, {1, 50, 1}},
};

const FramingOptions Views[] = {
    {{0, 0, 1}, {0, 1, 0}},
    {{0, 0, -1}, {0, 1, 0}},
    {{0, -1, 0}, {0, 0, 1}},
    {{-1, 0, 0}, {0, 1, 0}},
    {stage::ThreeQuarterDirection, {0, 1, 0}},
    {{3, 4, -5}, {0.3F, -1, 0.2F}},
};

// A point in the picture: x and y in -1..1 across the window, z the distance along the camera's direction.
struct Projected
{
    double x;
    double y;
    double z;
};

Projected Project(Vector point, const Framing& framing, const FramingOptions& options)
{
    const Double3 forward = Normalized(options.direction);
    const Double3 right = Normalized(Cross(Double3{options.up}, forward));
    const Double3 up = Cross(forward, right);
    const Double3 seen = Double3{point} - framing.position;
    const double z = Dot(seen, forward);
    const double onFrontPlane = options.orthographic ? 1.0 : framing.front / z;
    const double larger = std::max(options.width, options.height);
    return {Dot(seen, right) * onFrontPlane / framing.field * larger / options.width,
            Dot(seen, up) * onFrontPlane / framing.field * larger / options.height, z};
}

TEST(Framing, shows_the_whole_box_in_the_middle_and_fills_the_picture_with_it)
{
    for (const Box& box : Boxes)
        for (FramingOptions options : Views)
            for (const auto& [width, height] : {std::pair{640, 480}, {300, 900}, {512, 512}, {1600, 100}})
                for (const bool orthographic : {false, true})
                {
                    options.width = width;
                    options.height = height;
                    options.orthographic = orthographic;
                    SCOPED_TRACE(testing::Message()
                                 << "box to " << box.maximum.x << ", " << box.maximum.y << ", " << box.maximum.z
                                 << " direction " << options.direction.x << ", " << options.direction.y << ", "
                                 << options.direction.z << " " << width << "x" << height
                                 << (orthographic ? " orthographic" : " perspective"));
                    const auto corners = stage::CornersOf(box);
                    const Framing framing = stage::FramePoints(corners, corners, options);
                    Projected low{1, 1, framing.back};
                    Projected high{-1, -1, framing.front};
                    for (const Vector& corner : corners)
                    {
                        const auto [x, y, z] = Project(corner, framing, options);
                        low = {std::min(low.x, x), std::min(low.y, y), std::min(low.z, z)};
                        high = {std::max(high.x, x), std::max(high.y, y), std::max(high.z, z)};
                    }
                    const double outermost = std::max({high.x, high.y, -low.x, -low.y});
                    EXPECT_LT(outermost, 0.995);
                    EXPECT_GT(outermost, 0.93);
                    EXPECT_GT(low.z, framing.front);
                    EXPECT_LT(high.z, framing.back);
                    // The side that decides the distance has equal margins.
                    const bool wide = high.x - low.x > high.y - low.y;
                    EXPECT_NEAR(wide ? low.x + high.x : low.y + high.y, 0, 0.02);
                }
}

TEST(Framing, holds_the_box_however_it_turns)
{
    for (const Box& box : Boxes)
        for (FramingOptions options : Views)
        {
            options.width = 640;
            options.height = 480;
            const auto circle = stage::TurnedCornersOf(box);
            const Framing framing = stage::FramePoints(circle, circle, options);
            for (int step = 0; step < 36; ++step)
            {
                // The camera goes round: the standpoint of this step, and what it sees.
                const auto stand =
                    stage::Turned({framing.position, options.direction, options.up}, box.Centre(), step * 0.1745);
                Framing turnedFraming = framing;
                turnedFraming.position = stand.position;
                FramingOptions turned = options;
                turned.direction = stand.direction;
                turned.up = stand.up;
                for (const Vector& corner : stage::CornersOf(box))
                {
                    const Projected there = Project(corner, turnedFraming, turned);
                    EXPECT_LT(std::max(std::abs(there.x), std::abs(there.y)), 1.0);
                    EXPECT_GT(there.z, framing.front);
                    EXPECT_LT(there.z, framing.back);
                }
            }
        }
}

// What decides the distance would be its width: the camera would all but touch it, and depth would have no precision.
TEST(Framing, keeps_away_from_a_needle_seen_end_on)
{
    const auto corners = stage::CornersOf({{-1e-4F, -50, -1e-4F}, {1e-4F, 50, 1e-4F}});
    const FramingOptions options{{0, -1, 0}, {0, 0, 1}, false, 640, 480};
    const Framing framing = stage::FramePoints(corners, corners, options);
    EXPECT_LT(framing.back / framing.front, 1000);
    for (const Vector& corner : corners)
        EXPECT_LT(std::abs(Project(corner, framing, options).y), 1);
}

TEST(Framing, keeps_a_front_plane_that_was_asked_for)
{
    const auto corners = stage::CornersOf(Boxes[0]);
    FramingOptions options{stage::ThreeQuarterDirection, {0, 1, 0}, false, 640, 480, std::nullopt};
    const Framing free = stage::FramePoints(corners, corners, options);
    options.front = 0.25F;
    const Framing asked = stage::FramePoints(corners, corners, options);
    EXPECT_EQ(asked.front, 0.25F);
    EXPECT_NEAR(asked.field / asked.front, free.field / free.front, 1e-6);
}

TEST(Framing, answers_a_single_point_and_refuses_nothing_at_all)
{
    const Vector point{3, 4, 5};
    const Framing framing = stage::FramePoints({&point, 1}, {}, {});
    EXPECT_TRUE(framing.front > 0 && framing.back > framing.front && framing.field > 0);
    EXPECT_THROW(stage::FramePoints({}, {}, {}), RuntimeError);
    const auto huge = stage::CornersOf({{-3e38F, -3e38F, -3e38F}, {3e38F, 3e38F, 3e38F}});
    EXPECT_THROW(stage::FramePoints(huge, huge, {}), RuntimeError);
}

} // namespace

} // namespace lumora::tests
