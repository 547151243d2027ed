// Paths: they start and end where their control points do, and agree with the textbook forms.
#include "geometry/BezierCurve.h"
#include "geometry/Kernel.h"
#include "geometry/modBSpline.h"
#include "geometry/modNSpline.h"

#include <cmath>
#include <numeric>

namespace lumora
{

using namespace test;

namespace
{

const VertexList Arch{{0, 0, 0}, {1, 2, 0}, {2, 0, 0}};
const VertexList Winding{{0, 0, 0}, {1, 3, -1}, {4, 2, 2}, {3, -2, 5}, {-1, 0, 6}};

std::vector<float> Ones(const VertexList& points)
{
    return std::vector<float>(points.size(), 1.0F);
}

} // namespace

TEST(BezierCurves, agree_with_the_sum_of_bernstein_polynomials)
{
    const VertexList samples = MyDll_CreateBezierCurve(Winding, 11);
    ASSERT_EQ(samples.size(), 11U);
    EXPECT_EQ(samples.front(), Winding.front());
    EXPECT_EQ(samples.back(), Winding.back());
    constexpr double Binomials[] = {1, 4, 6, 4, 1};
    for (std::size_t s = 0; s < samples.size(); ++s)
    {
        const double t = static_cast<double>(s) / 10;
        Double3 expected;
        for (std::size_t i = 0; i < 5; ++i)
            expected = expected + Double3{Winding[i]} * (Binomials[i] * std::pow(t, static_cast<double>(i)) *
                                                         std::pow(1 - t, 4.0 - static_cast<double>(i)));
        EXPECT_TRUE(IsNear(samples[s], expected.ToVector(), 1e-5)) << s;
    }
    EXPECT_EQ(MyDll_CreateBezierCurve(Winding, 1), VertexList{Winding.front()});
}

TEST(BSplines, have_the_samples_and_knots_of_the_textbook)
{
    EXPECT_EQ(EvaluateBSplineCurve(Arch, Ones(Arch), 3), (VertexList{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}}));
    EXPECT_EQ(OpenUniformKnots(5, 3), (std::vector<std::int32_t>{0, 0, 0, 1, 2, 3, 3, 3}));
    EXPECT_EQ(OpenUniformKnots(2, 3), std::vector<std::int32_t>(5, 0));
    const VertexList line{{0, 0, 0}, {1, 2, 3}};
    EXPECT_EQ(EvaluateBSplineCurve(line, Ones(line), 4), VertexList(4, line.back())) << "no range of parameters";
    for (const std::int32_t count : {2, 3, 7, 1000, 100001})
    {
        const VertexList samples = EvaluateBSplineCurve(Winding, Ones(Winding), count);
        EXPECT_TRUE(IsNear(samples.front(), Winding.front(), 1e-6));
        EXPECT_EQ(samples.back(), Winding.back()) << count;
    }
    // Of order n, all knots at the ends: a Bezier curve.
    const VertexList bezier = MyDll_CreateBezierCurve(Winding, 9);
    const VertexList spline = RationalBSpline(Winding, 5, Ones(Winding), 9);
    for (std::size_t s = 0; s < 9; ++s)
        EXPECT_TRUE(IsNear(spline[s], bezier[s], 1e-5)) << s;
    // Quadratic pieces meet half-way between control points.
    EXPECT_TRUE(IsNear(EvaluateBSplineCurve(Winding, Ones(Winding), 4)[1], (Winding[1] + Winding[2]) * 0.5F, 1e-5));
}

TEST(BSplines, lean_towards_heavy_points_and_their_basis_sums_to_one)
{
    const std::vector<float> weights{1, 1, 5, 1, 1};
    const auto knots = OpenUniformKnots(5, 3);
    for (float t = 0; t < 3; t += 0.37F)
    {
        const std::vector<float> basis = RationalBasis(3, t, knots, weights);
        EXPECT_NEAR(std::accumulate(basis.begin(), basis.end(), 0.0), 1, 1e-6);
        for (std::size_t i = 0; i < 5; ++i)
            EXPECT_TRUE(basis[i] == 0 || (t >= knots[i] && t <= knots[i + 3])) << "influence within its own knots only";
    }
    // A quarter circle, exactly.
    const VertexList corner{{1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    for (const Vector p : EvaluateBSplineCurve(corner, std::vector<float>{1, std::sqrt(0.5F), 1}, 17))
        EXPECT_NEAR(Length(p), 1, 1e-6);
    EXPECT_EQ(RationalBasis(3, 1, knots, std::vector<float>(5)), std::vector<float>(5)) << "weightless";
}

TEST(KeyFramedCurves, pass_every_control_point_at_its_time)
{
    for (const bool linear : {false, true})
        for (const bool closed : {false, true})
            for (const bool useTimes : {false, true})
            {
                // Keys at whole multiples of a quarter of the end, which is 1 without times and 4 with them.
                const NSplineOptions options{closed, linear, useTimes, {0, 1, 2, 3, 4}};
                const VertexList samples = EvaluateNSpline(Root(), Winding, 41, options);
                for (std::size_t i = 0; i < Winding.size(); ++i)
                    EXPECT_TRUE(IsNear(samples[10 * i], Winding[i], 1e-5)) << linear << closed << useTimes << i;
                const Vector middle = (Winding[1] + Winding[2]) * 0.5F;
                EXPECT_EQ(IsNear(samples[15], middle, 1e-3), linear) << "straight only when linear";
            }
}

TEST(KeyFramedCurves, run_to_the_rounded_end_time)
{
    const struct
    {
        float last;
        float end;
    } cases[] = {{2.6F, 3}, {2.5F, 2}, {3.5F, 4}, {1.2F, 1}};
    for (const auto& [last, end] : cases)
    {
        // Along a straight line at one unit of length a unit of time, a sample's place is its time.
        const VertexList line{{0, 0, 0}, {0.5F, 0, 0}, {last, 0, 0}};
        const VertexList samples =
            EvaluateNSpline(Root(), line, 11, {.linear = true, .useTimes = true, .times = {0, 0.5F, last}});
        for (std::size_t j = 0; j <= 10; ++j)
            EXPECT_NEAR(samples[j].x, std::min(last, static_cast<float>(j) / 10 * end), 1e-5) << last;
    }
}

TEST(Curves, refuse_what_they_cannot_draw)
{
    const VertexList broken{{0, 0, 0}, {NAN, 0, 0}, {1, 1, INFINITY}};
    const struct
    {
        VertexList points;
        std::int32_t count;
        std::string bezier;
        std::string bSpline;
        std::string nSpline;
    } cases[] = {
        {{}, 4, "9", "9", "9"},
        {Arch, -1, "9", "9", "9"},
        {Arch, 1, "", "11", "6"},
        {Arch, 2147483647, "7", "7", "7"},
        {{{1, 2, 3}}, 4, "", "", "6"},
        {broken, 4, "6", "6", std::to_string(error::RMBadValue)},
        {VertexList(30000), 2, "5", "", ""},
    };
    const auto from = [](const std::string& number, const char* source)
    { return number.empty() ? number : number + " " + source; };
    for (const auto& [points, count, bezier, bSpline, nSpline] : cases)
    {
        const std::string where = std::to_string(points.size()) + " points, " + std::to_string(count) + " samples";
        EXPECT_EQ(RaisedBy([&] { MyDll_CreateBezierCurve(points, count); }), from(bezier, "MyDll_CreateBezierCurve"))
            << where;
        EXPECT_EQ(RaisedBy([&] { EvaluateBSplineCurve(points, Ones(points), count); }), from(bSpline, "modBSpline"))
            << where;
        EXPECT_EQ(RaisedBy([&] { EvaluateNSpline(Root(), points, count, {}); }), from(nSpline, "modNSpline")) << where;
    }
    EXPECT_EQ(RaisedBy([] { EvaluateBSplineCurve(Arch, {}, 4); }), "9 modBSpline");
    EXPECT_EQ(RaisedBy([] { RationalBSpline(Arch, 0, Ones(Arch), 4); }), "9 modBSpline");
    EXPECT_EQ(RaisedBy([] { RationalBSpline(Arch, 100000, Ones(Arch), 4); }), "5 modBSpline");
    EXPECT_EQ(RaisedBy([] { EvaluateNSpline(Root(), Arch, 4, {.useTimes = true, .times = {0, 1}}); }), "9 modNSpline");
    for (const float time : {NAN, INFINITY})
        EXPECT_NE(RaisedBy([&] { EvaluateNSpline(Root(), Arch, 4, {.useTimes = true, .times = {0, 1, time}}); }), "");
}

} // namespace lumora
