// Ear clipping: covers the polygon, as asking every corner about every point would, and in time.
#include "geometry/Kernel.h"
#include "geometry/modBounding.h"
#include "geometry/modColinear.h"
#include "geometry/modFace.h"
#include "geometry/modNormal.h"
#include "geometry/modSweep.h"
#include "geometry/modVector.h"

#include <cmath>
#include <numbers>
#include <random>

namespace lumora
{

using namespace test;
using std::numbers::pi;

namespace
{

std::vector<Polygon> FacesOf(const VertexList& polygon)
{
    const auto mesh = MeshBuilder::Make();
    TriangulateCap(Root(), polygon, *mesh);
    return PolygonsOf(*mesh);
}

// The rule itself, without remembering anything.
std::vector<Polygon> FacesByAskingEverybody(const VertexList& polygon)
{
    const Vector centre = GetBoundingBox(polygon).Centre();
    VertexList points;
    for (const Vector corner : polygon)
        points.push_back(corner - centre);
    VertexList corners = polygon;
    const Vector normal = GetPolygonNormal(Root(), points);
    std::vector<Polygon> faces;
    bool loose = false;
    const auto mayGo = [&](std::size_t i)
    {
        const Triple triple = GetVertexTriple(points, static_cast<std::int32_t>(i));
        if (VectorsEqual(triple[0], triple[2]) || (loose ? IsColinear : IsColinearStrict)(Root(), triple))
            return true;
        const Vector off = GetTriangleNormal(Root(), triple) - normal;
        if (std::max({std::abs(off.x), std::abs(off.y), std::abs(off.z)}) > 0.001F)
            return false;
        for (std::size_t other = 0; other < points.size(); ++other)
        {
            const bool own = other == i || other == (i + 1) % points.size() || (other + 1) % points.size() == i;
            if (!own && IsPointInPolygon(Root(), triple, points[other], Corners::Excluded))
                return false;
        }
        return true;
    };
    for (bool removed = true; points.size() >= 4;)
    {
        removed = false;
        for (std::size_t i = 0; i < points.size() && points.size() >= 4;)
        {
            if (!mayGo(i))
            {
                ++i;
                continue;
            }
            const Triple face = GetVertexTriple(corners, static_cast<std::int32_t>(i));
            faces.push_back({face.begin(), face.end()});
            points.erase(points.begin() + static_cast<std::ptrdiff_t>(i));
            corners.erase(corners.begin() + static_cast<std::ptrdiff_t>(i));
            removed = true;
        }
        if (!removed && loose)
            break;
        loose = loose || !removed;
    }
    if (corners.size() >= 3)
        faces.push_back(corners);
    return faces;
}

VertexList MakePolygon(int count, const std::function<std::pair<double, double>(double part)>& polar)
{
    VertexList polygon;
    for (int i = 0; i < count; ++i)
    {
        const auto [radius, angle] = polar(static_cast<double>(i) / count);
        polygon.push_back(
            {static_cast<float>(radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)), 0});
    }
    return polygon;
}

// A wall that winds inward `turns` times and back: simple, and with few ears at a time.
VertexList MakeSpiral(int count, double turns)
{
    return MakePolygon(count,
                       [&](double part)
                       {
                           const double along = part < 0.5 ? 2 * part : 2 - 2 * part;
                           return std::pair{100 + 900 * along + (part < 0.5 ? 0 : 9), 2 * pi * turns * along};
                       });
}

VertexList MakeComb(int count)
{
    VertexList polygon{{static_cast<float>(count), -5, 0}, {0, -5, 0}};
    for (int i = 2; i < count; ++i)
        polygon.push_back({static_cast<float>(i), i % 2 == 0 ? 50.0F : 0.0F, 0});
    return polygon;
}

// The faces' areas add up to the polygon's: exactly as vectors, and within `overlap` where corners that are nearly
// straight the other way were cut off.
void ExpectCovered(const VertexList& polygon, const std::vector<Polygon>& faces, double overlap)
{
    const Double3 whole = VectorArea(polygon);
    Double3 sum;
    double absolute = 0;
    for (const Polygon& face : faces)
    {
        const Double3 area = VectorArea(face);
        sum = sum + area;
        absolute += Length(area);
    }
    EXPECT_LT(Length(sum - whole), 1e-6 * absolute);
    EXPECT_LT(absolute, (1 + overlap) * Length(whole) + 1e-6 * absolute);
}

} // namespace

TEST(Caps, split_simple_shapes_into_as_few_triangles_as_there_are)
{
    const VertexList square{{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}};
    const VertexList corner{{0, 0, 0}, {0, 4, 0}, {1, 4, 0}, {1, 1, 0}, {4, 1, 0}, {4, 0, 0}};
    const VertexList bent{{0, 0, 0}, {0, 1, 1}, {1, 1, 0}, {1, 0, 1}}; // no corner's normal is the polygon's
    EXPECT_EQ(FacesOf(square).size(), 2U);
    EXPECT_EQ(FacesOf(corner).size(), 4U);
    EXPECT_EQ(FacesOf(bent), std::vector<Polygon>{bent});
    EXPECT_TRUE(FacesOf({{0, 0, 0}, {1, 0, 0}}).empty());
    EXPECT_EQ(RaisedBy([] { FacesOf({}); }), "9 modSweep");
    EXPECT_EQ(RaisedBy(
                  [] {
                      FacesOf({{0, 0, 0}, {0, NAN, 0}, {1, 1, 0}, {1, 0, 0}});
                  }),
              std::to_string(error::RMBadValue) + " modSweep");
}

TEST(Caps, cover_random_simple_polygons_in_any_plane)
{
    std::mt19937 random{7};
    std::uniform_real_distribution<double> share{0, 1};
    for (int round = 0; round < 60; ++round)
    {
        // Seen from the middle all around, so it does not cross itself.
        VertexList polygon = MakePolygon(5 + round,
                                         [&](double part) {
                                             return std::pair{20 + 80 * share(random), 2 * pi * part};
                                         });
        const Vector axis{static_cast<float>(share(random)), static_cast<float>(share(random)), 0.3F};
        for (Vector& corner : polygon)
            corner = Root().VectorScale(Root().VectorRotate(corner, axis, 1.0F + static_cast<float>(round)),
                                        Root().VectorModulus(corner)) +
                     Vector{50, -20, 10};
        const auto faces = FacesOf(polygon);
        ExpectCovered(polygon, faces, 0.01);
        EXPECT_EQ(faces.size(), polygon.size() - 2);
    }
}

TEST(Caps, are_those_of_asking_every_corner_about_every_point)
{
    std::mt19937 random{11};
    const auto whole = [&](int range)
    { return static_cast<float>(static_cast<int>(random() % (2 * range + 1)) - range); };
    std::vector<VertexList> polygons{MakeSpiral(120, 3), MakeComb(60),
                                     MakePolygon(90,
                                                 [](double part) {
                                                     return std::pair{10.0, 2 * pi * part};
                                                 })};
    for (int round = 0; round < 400; ++round)
    {
        VertexList& polygon = polygons.emplace_back();
        const int range = 1 + round % 9;
        const bool flat = round % 3 != 0;
        for (int i = 0; i < 3 + round % 40; ++i)
            polygon.push_back({whole(range), whole(range), flat ? 0 : whole(1) * 0.01F});
        if (round % 4 == 0) // simple and full of nearly straight corners
            polygon = MakePolygon(8 + round % 50,
                                  [&](double part) {
                                      return std::pair{100 + whole(range) * 0.5, 2 * pi * part};
                                  });
    }
    for (std::size_t i = 0; i < polygons.size(); ++i)
        EXPECT_EQ(FacesOf(polygons[i]), FacesByAskingEverybody(polygons[i])) << "polygon " << i;
}

TEST(Caps, of_a_hundred_thousand_corners_do_not_hang)
{
    const int count = 100000;
    std::mt19937 random{3};
    const VertexList polygons[] = {
        MakeSpiral(count, 20), MakeComb(count),
        MakePolygon(count,
                    [](double part) {
                        return std::pair{1000 + 300 * std::sin(part * 31416), 2 * pi * part};
                    }),
        // Crosses itself nearly everywhere: only the end counts.
        MakePolygon(count,
                    [&](double) {
                        return std::pair{static_cast<double>(random() % 1000), random() * 1e-3};
                    })};
    constexpr double Anything = 1e9;
    for (const VertexList& polygon : polygons)
        ExpectCovered(polygon, FacesOf(polygon), &polygon == &polygons[3] ? Anything : 0.05);
}

} // namespace lumora
