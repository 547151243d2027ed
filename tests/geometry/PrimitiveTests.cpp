// Spheres, cones and discs: closed, of the right size, looking outward.
#include "geometry/Kernel.h"
#include "geometry/modPrimitiveCreation.h"

#include <cmath>
#include <numbers>

namespace lumora
{

using namespace test;
using std::numbers::pi;

TEST(Primitives, are_closed_look_outward_and_have_the_vertices_of_their_kind)
{
    for (const auto& [n, steps] : {std::pair{3, 4}, {8, 16}, {5, 3}, {33, 64}})
    {
        const auto sphere = CreateSphere(Root(), n, steps);
        EXPECT_EQ(sphere->GetVertexCount(), 2 + (n - 2) * steps) << n << " x " << steps;
        EXPECT_EQ(sphere->GetFaceCount(), (n - 1) * steps);
        EXPECT_EQ(EulerNumber(*sphere), 2);
        EXPECT_GT(VolumeOf(*sphere), 0);
        for (const Vector v : sphere->GetGeometry().vertices)
            EXPECT_NEAR(Length(v), 0.5, 1e-6);
        for (const std::int32_t percent : {0, 20, 50, 100, 150})
        {
            const auto cone = CreateCone(Root(), n, steps, percent);
            const bool pointed = percent == 0;
            EXPECT_EQ(cone->GetVertexCount(), pointed ? (n - 1) * steps + 1 : n * steps) << percent;
            EXPECT_EQ(cone->GetFaceCount(), (n - 1) * steps + (pointed ? 1 : 2));
            EXPECT_EQ(EulerNumber(*cone), 2);
            EXPECT_GT(VolumeOf(*cone), 0);
        }
    }
}

TEST(Primitives, approach_the_area_and_volume_of_round_ones)
{
    const double halfHeight = 0.5;
    const double top = 0.25;
    const double frustum = pi / 3 * (0.25 + 0.125 + top * top);
    const double frustumArea = pi * ((0.5 + top) * std::hypot(1, 0.5 - top) + 0.25 + top * top);
    double before = 1;
    for (const std::int32_t steps : {8, 16, 32, 64})
    {
        const auto sphere = CreateSphere(Root(), steps + 1, 2 * steps);
        const double error = 4.0 / 3 * pi * std::pow(halfHeight, 3) - VolumeOf(*sphere);
        EXPECT_NEAR(error, before / 4, steps == 8 ? 1 : before / 8) << "an error of second order";
        EXPECT_NEAR(AreaOf(*sphere), pi, 10.0 / (steps * steps));
        before = error;

        const auto cone = CreateCone(Root(), 4, steps, 50);
        const double polygon = std::sin(2 * pi / steps) * steps / (2 * pi); // area of a regular one to its circle's
        EXPECT_NEAR(VolumeOf(*cone), frustum * polygon, 1e-6);
        EXPECT_NEAR(AreaOf(*cone), frustumArea, 20.0 / (steps * steps));
    }
}

TEST(Primitives, refuse_counts_without_a_shape)
{
    const struct
    {
        std::int32_t n;
        std::int32_t steps;
        const char* sphere;
        const char* cone;
    } cases[] = {
        {1, 4, "6 modPrimitiveCreation", "11 modPrimitiveCreation"},
        {0, 4, "9 modPrimitiveCreation", "9 modPrimitiveCreation"},
        {8, 0, "11 modPrimitiveCreation", "11 modPrimitiveCreation"},
        {4000, 4000, "7 modPrimitiveCreation", "7 modPrimitiveCreation"},
    };
    for (const auto& bad : cases)
    {
        EXPECT_EQ(RaisedBy([&] { CreateSphere(Root(), bad.n, bad.steps); }), bad.sphere) << bad.n << " " << bad.steps;
        EXPECT_EQ(RaisedBy([&] { CreateCone(Root(), bad.n, bad.steps, 50); }), bad.cone) << bad.n << " " << bad.steps;
    }
    EXPECT_EQ(RaisedBy(
                  [&] {
                      CreateDisc(Root(), *MeshBuilder::Make(), {NAN, 0, 1}, {0, 1, 0}, 4, TurnSense::Clockwise);
                  }),
              std::to_string(error::RMBadValue) + " modPrimitiveCreation");
}

} // namespace lumora
