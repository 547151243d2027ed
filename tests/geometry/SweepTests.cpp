// Lathes and tubes: sizes, directions, ends.
#include "base/Faults.h"
#include "geometry/Kernel.h"
#include "geometry/modNormal.h"
#include "geometry/modOptimize.h"
#include "geometry/modSweep.h"

#include <cmath>
#include <numbers>

namespace lumora
{

using namespace test;
using std::numbers::pi;

namespace
{

VertexList Circle(int corners, float radius, Vector centre = {})
{
    VertexList ring;
    for (int i = 0; i < corners; ++i)
        ring.push_back(centre + Vector{radius * static_cast<float>(std::cos(2 * pi * i / corners)),
                                       radius * static_cast<float>(std::sin(2 * pi * i / corners)), 0});
    return ring;
}

const VertexList Square{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
const VertexList Angle{{-1, -1, 0}, {2, -1, 0}, {2, 0, 0}, {0, 0, 0}, {0, 2, 0}, {-1, 2, 0}}; // L, area 5
const VertexList Bend{{0, 0, 0}, {0, 0, 10}, {10, 5, 20}, {30, 0, 20}};

// Everything about a sweep's rows: vertex (profile point, sample).
class Grid
{
public:
    explicit Grid(const Sweep& sweep)
        : columns_(static_cast<std::size_t>(sweep.steps) + 1),
          vertices_(CreateSweptMesh(Root(), sweep)->GetGeometry().vertices)
    {
    }
    Vector operator()(std::size_t point, std::size_t sample) const { return vertices_.at(point * columns_ + sample); }

private:
    std::size_t columns_;
    VertexList vertices_;
};

std::shared_ptr<MeshBuilder> Welded(const Sweep& sweep)
{
    auto mesh = CreateSweptMesh(Root(), sweep);
    OptimizeMesh(Root(), *mesh, {.dropRepeats = true});
    return mesh;
}

} // namespace

TEST(Lathes, keep_every_points_radius_and_height)
{
    Sweep lathe;
    lathe.axis = {0, 1, 0};
    lathe.endScale = 9; // nothing without a path
    lathe.profile = {{1, 3, 0}, {2, 2, 1}, {0, 0, 2}, {4, -1, 4}};
    lathe.steps = 37;
    lathe.turnFraction = 0.8F;
    const Grid grid{lathe};
    for (std::size_t j = 0; j < 4; ++j)
        for (std::size_t s = 0; s <= 37; ++s)
        {
            const Vector v = grid(j, s);
            const Vector p = lathe.profile[j];
            EXPECT_NEAR(std::hypot(v.x, v.z), std::hypot(p.x, p.z), 1e-5);
            EXPECT_NEAR(v.y, p.y, 1e-5);
            const double cosine = (double{v.x} * p.x + double{v.z} * p.z) / (double{p.x} * p.x + double{p.z} * p.z);
            EXPECT_NEAR(cosine, std::cos(2 * pi * 0.8 * static_cast<double>(s) / 37), 1e-5);
        }

    Sweep aboutZ;
    aboutZ.profile = {{1, 0, 0}, {2, 0, 5}};
    aboutZ.turnFraction = 0.25F;
    EXPECT_TRUE(IsNear(Grid{aboutZ}(1, 1), {0, 2, 5}, 1e-5)) << "no axis means z";
}

TEST(Lathes, of_a_ring_make_a_torus_and_part_of_one_with_caps)
{
    double before = 0;
    for (const int steps : {12, 24, 48})
    {
        Sweep torus;
        torus.profile = Circle(steps, 1, {3, 0, 0});
        std::ranges::reverse(torus.profile); // outward for positive turns
        torus.turnFraction = 1;
        torus.axis = {0, 1, 0};
        torus.steps = 2 * steps;
        torus.wrap = true;
        torus.caps = true; // not needed: the ends meet
        const auto whole = Welded(torus);
        EXPECT_EQ(EulerNumber(*whole), 0);
        EXPECT_EQ(whole->GetFaceCount(), 2 * steps * steps);
        const double error = 2 * pi * pi * 3 - VolumeOf(*whole);
        EXPECT_NEAR(error, before / 4, before > 0 ? before / 16 : 9) << "of second order";
        before = error;

        torus.turnFraction = 0.5F;
        torus.steps = steps;
        const auto half = Welded(torus);
        EXPECT_EQ(EulerNumber(*half), 2);
        EXPECT_NEAR(VolumeOf(*half), VolumeOf(*whole) / 2, 1e-3);
        torus.profile.push_back(torus.profile.front()); // closed by a repeated point instead
        torus.wrap = false;
        const auto repeated = Welded(torus);
        EXPECT_EQ(EulerNumber(*repeated), 2);
        EXPECT_NEAR(VolumeOf(*repeated), VolumeOf(*half), 1e-4);
    }
}

TEST(Tubes, with_caps_are_closed_along_every_path)
{
    for (const VertexList& profile : {Square, Angle, Circle(9, 1.5F)})
        for (const auto method : {CurveMethod::Bezier, CurveMethod::KeyFramed, CurveMethod::BSpline})
            for (const float turn : {0.0F, 0.4F})
                for (const bool reverse : {false, true})
                {
                    Sweep tube;
                    tube.profile = profile;
                    tube.path = Bend;
                    tube.curveMethod = method;
                    tube.steps = 24;
                    tube.turnFraction = turn;
                    tube.endScale = 0.5F;
                    tube.wrap = true;
                    tube.caps = true;
                    tube.reverse = reverse;
                    const auto mesh = Welded(tube);
                    EXPECT_EQ(EulerNumber(*mesh), 2) << profile.size() << " " << static_cast<int>(method) << turn;
                    EXPECT_EQ(VolumeOf(*mesh) < 0, reverse);
                }
}

TEST(Tubes, along_a_straight_path_hold_the_profiles_area_times_the_length)
{
    for (const auto& [profile, area, capFaces] : {std::tuple{Square, 4.0, 2}, {Angle, 5.0, 8}})
    {
        Sweep prism;
        prism.profile = profile;
        prism.path = {{1, 1, 1}, {1, 1 + 8, 1 + 6}};
        prism.steps = 5;
        prism.wrap = true;
        prism.caps = true;
        const auto mesh = CreateSweptMesh(Root(), prism);
        EXPECT_NEAR(VolumeOf(*mesh), area * 10, 1e-3);
        const auto faces = PolygonsOf(*mesh);
        const auto sides = static_cast<std::ptrdiff_t>(5 * profile.size());
        ASSERT_EQ(static_cast<std::ptrdiff_t>(faces.size()), sides + capFaces);
        Double3 nearCap;
        for (auto face = faces.begin() + sides; face < faces.end() - capFaces / 2; ++face)
            nearCap = nearCap + VectorArea(*face);
        EXPECT_TRUE(
            IsNear(nearCap.ToVector(), {0, static_cast<float>(-area * 0.8), static_cast<float>(-area * 0.6)}, 1e-4))
            << "all of the polygon's area, looking back along the path";
    }
    Sweep open;
    open.profile = Angle; // neither wrapped nor repeated: nothing to close
    open.path = Bend;
    open.steps = 3;
    open.caps = true;
    EXPECT_EQ(CreateSweptMesh(Root(), open)->GetFaceCount(), 15);
}

TEST(Tubes, turn_no_more_than_the_path_does_and_shrink_by_equal_factors)
{
    // A path in the plane y = 0: the profile's y stays up.
    Sweep tube;
    tube.profile = Square;
    tube.path = {{0, 0, 0}, {0, 0, 9}, {5, 0, 9}, {9, 0, 4}};
    tube.curveMethod = CurveMethod::BSpline;
    tube.steps = 40;
    tube.endScale = 0.25F;
    const Grid grid{tube};
    const double factor = std::pow(0.25, 1.0 / 40);
    Vector before{};
    for (std::size_t s = 0; s <= 40; ++s)
    {
        const double size = std::pow(factor, static_cast<double>(s + 1));
        const Vector centre = (grid(0, s) + grid(2, s)) * 0.5F;
        EXPECT_NEAR(grid(2, s).y, size, 1e-4);
        EXPECT_NEAR(Length(grid(2, s) - grid(0, s)), 2 * std::sqrt(2.0) * size, 1e-4);
        const Vector along = Root().VectorNormalize(centre - before);
        const double slant = Dot(along, Double3{grid(1, s)} - grid(0, s));
        EXPECT_NEAR(slant, 0, s > 0 ? 1e-3 : 9) << "each row faces from the sample before it";
        before = centre;
    }

    Sweep tiny;
    tiny.profile = Square;
    tiny.path = {{0, 0, 0}, {0, 0, 9}};
    tiny.steps = 2;
    tiny.endScale = 1e-7F;
    EXPECT_NEAR(Grid{tiny}(2, 0).x, 0.01, 1e-6) << "not the square root of the end scale";
}

TEST(Tubes, start_along_the_path_or_as_the_profile_faces)
{
    Sweep tube;
    tube.profile = Square; // faces z
    tube.path = {{0, 0, 0}, {8, 0, 0}};
    tube.steps = 2;
    for (const bool along : {false, true})
    {
        tube.startAlongProfileNormal = along;
        const Grid grid{tube};
        EXPECT_NEAR(grid(0, 0).z - grid(1, 0).z, along ? 0 : 2, 1e-5);
        EXPECT_NEAR(std::abs(grid(0, 1).z - grid(1, 1).z), 2, 1e-5) << "the second row follows the path in any case";
    }
    const VertexList opposite = OrientProfile(Root(), Square, {0, 0, -1});
    EXPECT_TRUE(IsNear(GetPolygonNormal(Root(), opposite), {0, 0, -1}, 1e-5));
}

TEST(Sweeps, refuse_what_has_no_shape)
{
    const std::string notFinite = std::to_string(error::RMBadValue);
    const struct
    {
        const char* what;
        void (*spoil)(Sweep&);
        std::string number;
    } cases[] = {
        {"empty profile", [](Sweep& s) { s.profile.clear(); }, "9"},
        {"no steps", [](Sweep& s) { s.steps = 0; }, "11"},
        {"a product without end", [](Sweep& s) { s.steps = 4000000; }, "7"},
        {"negative scale", [](Sweep& s) { s.endScale = -2; }, "5"},
        {"scale beyond Singles", [](Sweep& s) { s.endScale = INFINITY; }, "6"},
        {"profile not finite", [](Sweep& s) { s.profile[1].x = NAN; }, notFinite},
        {"turn not finite", [](Sweep& s) { s.turnFraction = NAN; }, "6"},
        {"too few times",
         [](Sweep& s) { s.curveMethod = CurveMethod::KeyFramed, s.curve.useTimes = true, s.curve.times = {1}; }, "9"},
    };
    for (const auto& bad : cases)
    {
        Sweep sweep;
        sweep.profile = Square;
        sweep.path = Bend;
        sweep.steps = 6;
        bad.spoil(sweep);
        EXPECT_EQ(RaisedBy([&] { CreateSweptMesh(Root(), sweep); }), bad.number + " modSweep") << bad.what;
    }
}

TEST(Sweeps, repeat_any_call_that_fails_in_passing)
{
    Sweep tube;
    tube.profile = Angle;
    tube.path = Bend;
    tube.curveMethod = CurveMethod::KeyFramed;
    tube.steps = 2;
    tube.turnFraction = 0.1F;
    tube.wrap = tube.caps = tube.dropCoincident = true;
    const auto make = [&]
    {
        const auto mesh = CreateSweptMesh(Root(), tube);
        OptimizeMesh(Root(), *mesh, {.copyFaceColors = true});
        return mesh->GetGeometry();
    };
    faults::Record();
    const MeshGeometry expected = make();
    const auto calls = static_cast<std::int64_t>(faults::Recorded().size());
    for (std::int64_t call = 0; call + 1 < calls; ++call) // the last one is this test's own
    {
        faults::FailCall(call, error::Overflow);
        const MeshGeometry geometry = make();
        ASSERT_EQ(geometry.vertices, expected.vertices) << call;
        ASSERT_EQ(geometry.faceList, expected.faceList) << call;
        faults::FailCall(call, error::ObjectNotSet);
        const std::string raised = RaisedBy(make);
        ASSERT_TRUE(raised == "91 modSweep" || raised == "91 modOptimize") << call << " " << raised;
    }
    faults::Clear();
}

} // namespace lumora
