// Rays through one mesh: every way of searching against the plain loop, and that loop against geometry.
#include "platform/scenegraph/bvh/MeshRays.h"
#include "platform/scenegraph/frames/Frame.h"

#include <gtest/gtest.h>
#include <random>

namespace lumora::rays
{

namespace
{

struct Way
{
    const char* name;
    Method method;
    const Kernels& kernels;
};

const Way Ways[] = {
    {"plain loop", Method::Plain, PlainKernels()},
    {"sweep", Method::Sweep, BestKernels()},
    {"sweep without vectors", Method::Sweep, PlainKernels()},
    {"tree", Method::Tree, BestKernels()},
    {"tree without vectors", Method::Tree, PlainKernels()},
    {"as it comes", Method::Automatic, BestKernels()},
};

// Triangles of given corners; each is a face of its own.
DrawMesh MeshOf(const std::vector<Vector>& vertices, std::vector<std::uint32_t> indices)
{
    DrawMesh mesh;
    for (const Vector v : vertices)
    {
        mesh.x.push_back(v.x);
        mesh.y.push_back(v.y);
        mesh.z.push_back(v.z);
        mesh.bounds.Include(v);
    }
    for (std::uint32_t triangle = 0; triangle < indices.size() / 3; ++triangle)
        mesh.triangleFace.push_back(triangle);
    mesh.indices = std::move(indices);
    return mesh;
}

struct Soup
{
    const char* name;
    std::uint32_t triangles;
    double size;   ///< of the triangles; they lie within 1
    double scale;  ///< of everything
    double offset; ///< of everything, before the scale
    std::vector<float> poison;
};

DrawMesh Random(const Soup& soup, std::mt19937& random)
{
    std::normal_distribution<double> number;
    std::uniform_int_distribution<std::uint32_t> any{0, 1000};
    std::vector<Vector> vertices;
    std::vector<std::uint32_t> indices;
    for (std::uint32_t triangle = 0; triangle < soup.triangles; ++triangle)
    {
        const Double3 centre{number(random), number(random), number(random)};
        for (int corner = 0; corner < 3; ++corner)
        {
            const Double3 from = Double3{number(random), number(random), number(random)} * soup.size;
            const Double3 shift{soup.offset, -soup.offset, 0};
            Vector place = ((centre + from + shift) * soup.scale).ToVector();
            if (!soup.poison.empty() && any(random) < 30)
                (any(random) < 500 ? place.x : place.z) = soup.poison[any(random) % soup.poison.size()];
            indices.push_back(static_cast<std::uint32_t>(vertices.size()));
            vertices.push_back(place);
        }
        if (any(random) < 50) // no area
            indices.back() = indices[indices.size() - 2];
        if (any(random) < 300 && triangle > 0) // shares a side
            indices[indices.size() - 3] = indices[indices.size() - 5];
    }
    return MeshOf(vertices, std::move(indices));
}

} // namespace

TEST(MeshRays, are_the_same_whichever_way_they_are_searched_for)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const Soup soups[] = {
        {"many small ones", 3000, 0.05, 1, 0, {}},
        {"few large ones", 40, 2, 1, 0, {}},
        {"tiny", 500, 0.2, 1e-38, 0, {}},
        {"huge", 500, 0.2, 1e37, 0, {}},
        {"far from their origin", 500, 0.2, 1, 3e4, {}},
        {"points", 300, 0, 1, 0, {}},
        {"hostile", 2000, 0.3, 1, 0, {NAN, infinity, -infinity, 3e38F, 1e-45F}},
    };
    std::mt19937 random{11};
    std::normal_distribution<double> number;
    for (const Soup& soup : soups)
    {
        const DrawMesh mesh = Random(soup, random);
        std::vector<MeshRays> searches;
        for (const Way& way : Ways)
            searches.emplace_back(way.method, way.kernels);
        std::size_t found = 0;
        for (int i = 0; i < 300; ++i)
        {
            const Double3 shift{soup.offset, -soup.offset, 0};
            const double away = i % 3 == 0 ? 1e5 : 5;
            Double3 direction{i % 5 == 0 ? 0 : number(random), i % 7 == 0 ? 0 : number(random), number(random)};
            Double3 origin = Double3{number(random), number(random), number(random)} - direction * away;
            if (i % 4 == 0) // straight at a corner
            {
                const auto vertex = static_cast<std::size_t>(i) % mesh.x.size();
                const Double3 corner{mesh.x[vertex], mesh.y[vertex], mesh.z[vertex]};
                origin = corner * (1 / soup.scale) - shift - direction * away;
            }
            const LocalRay ray{(origin + shift) * soup.scale, direction * (i % 2 == 0 ? 1 : soup.scale)};
            const auto all = searches[0].All(mesh, ray);
            found += all.size();
            const TriangleHit nearest =
                all.empty() ? TriangleHit{} : *std::ranges::min_element(all, [](auto a, auto b) { return a < b; });
            for (std::size_t way = 0; way < searches.size(); ++way)
            {
                const auto others = searches[way].All(mesh, ray);
                ASSERT_EQ(others.size(), all.size()) << soup.name << ", " << Ways[way].name << ", ray " << i;
                for (std::size_t hit = 0; hit < all.size(); ++hit)
                    ASSERT_TRUE(others[hit].triangle == all[hit].triangle && others[hit].distance == all[hit].distance)
                        << soup.name << ", " << Ways[way].name << ", ray " << i;
                const TriangleHit first = searches[way].Nearest(mesh, ray);
                ASSERT_TRUE(first.triangle == nearest.triangle && first.distance == nearest.distance)
                    << soup.name << ", " << Ways[way].name << ", ray " << i;
            }
        }
        EXPECT_EQ(found > 50, soup.size > 0) << soup.name;
    }
}

TEST(MeshRays, never_slip_out_between_the_faces_of_a_turned_cube)
{
    std::mt19937 random{17};
    std::normal_distribution<float> number;
    for (int turn = 0; turn < 40; ++turn)
    {
        const auto frame = Frame::Make();
        frame->AddRotation(CombineType::After, {number(random), number(random), 1}, 3 * number(random));
        std::vector<Vector> corners;
        for (int i = 0; i < 8; ++i)
            corners.push_back(
                TransformPoint(Box{{-1, -1, -1}, {1, 1, 1}}.Corner(i), frame->LocalTransform()).ToVector());
        const DrawMesh cube = MeshOf(corners, {0, 2, 3, 0, 3, 1, 5, 7, 6, 5, 6, 4, 4, 6, 2, 4, 2, 0,
                                               1, 3, 7, 1, 7, 5, 2, 6, 7, 2, 7, 3, 4, 0, 1, 4, 1, 5});
        const Double3 origin = Double3{number(random), number(random), number(random)} * 0.2;
        for (const Way& way : Ways)
            for (std::size_t i = 0; i < cube.indices.size(); ++i)
                for (const double part : {0.0, 0.5, 0.3})
                {
                    const Double3 here{corners[cube.indices[i]]};
                    const Double3 next{corners[cube.indices[i % 3 == 2 ? i - 2 : i + 1]]};
                    const Double3 direction = here * (1 - part) + next * part - origin;
                    const TriangleHit hit = MeshRays{way.method, way.kernels}.Nearest(cube, {origin, direction});
                    ASSERT_NEAR(hit.distance, 1, 1e-6) << way.name << ", side " << i << ", turn " << turn;
                }
    }
}

TEST(MeshRays, take_a_bounded_tree_and_time_for_a_million_triangles_in_one_place)
{
    constexpr std::uint32_t count = 1000000;
    std::vector<Vector> vertices;
    for (std::uint32_t i = 0; i < count; ++i) // shrinking towards one point, beyond what can be told apart
        vertices.push_back(Vector{1, 2, 3} * std::ldexp(1.0F, -static_cast<int>(i % 150)));
    std::vector<std::uint32_t> indices;
    for (std::uint32_t i = 0; i < count; ++i)
        indices.insert(indices.end(), {i, (i + 1) % count, (i + 151) % count});
    const DrawMesh mesh = MeshOf(vertices, std::move(indices));
    MeshRays rays{Method::Tree};
    EXPECT_EQ(rays.Nearest(mesh, {{0, 0, -1}, {0, 1, 0}}).distance, Missed);
    EXPECT_LT(rays.ByteSize() / count, 160U) << "bytes for a triangle";
}

} // namespace lumora::rays
