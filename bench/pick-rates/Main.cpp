// Ray picks a second beside Embree's, what the first pick and the tree cost, and how picks grow with triangles and
// meshes.
//
// Usage: pick-rates [--seconds s]
#include "Peer.h"
#include "Scenes.h"
#include "platform/scenegraph/bvh/MeshRays.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace
{

using namespace lumora;
using namespace lumora::bench;

template<typename Work>
double Seconds(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> times)
{
    std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
}

rays::LocalRay LocalOf(const Ray& ray)
{
    return {ray.origin, ray.direction};
}

/// Batches of the same rays by turns: Embree, the tree alone, and whole picks through a frame.
void CompareRates(Peer* peer, const Mesh& mesh, double seconds)
{
    constexpr std::size_t Batch = 2000;
    std::mt19937 random{1};
    const auto builder = BuilderOf(mesh);
    builder->PreparePicking();
    const auto compiled = builder->Compiled();
    const auto root = Frame::Make();
    root->AddVisual(builder);
    if (peer != nullptr)
        peer->Build(mesh);
    std::vector<double> theirs;
    std::vector<double> trees;
    std::vector<double> picks;
    std::size_t differences = 0;
    std::size_t rays = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (theirs.size() < 10 || std::chrono::steady_clock::now() < end)
    {
        const auto batch = RaysThrough(1.4, 4, Batch, random);
        std::vector<float> their(Batch, INFINITY);
        std::vector<double> our(Batch);
        std::size_t hits = 0;
        theirs.push_back(Seconds(
            [&]
            {
                for (std::size_t i = 0; i < Batch && peer != nullptr; ++i)
                    their[i] = peer->Nearest(batch[i]);
            }));
        trees.push_back(Seconds(
            [&]
            {
                for (std::size_t i = 0; i < Batch; ++i)
                    our[i] = builder->Rays().Nearest(*compiled, LocalOf(batch[i])).distance;
            }));
        picks.push_back(Seconds(
            [&]
            {
                for (const Ray& ray : batch)
                {
                    const auto pick = root->RayPick(root, ray, RayPickFlags::Primitives);
                    hits += pick->HasPick(0) ? 1 : 0;
                }
            }));
        for (std::size_t i = 0; i < Batch; ++i)
        {
            hits -= our[i] < rays::Missed ? 1 : 0;
            differences +=
                (their[i] == INFINITY) != (our[i] == rays::Missed) || std::abs(their[i] - our[i]) > 1e-3 ? 1 : 0;
        }
        differences += hits;
        rays += Batch;
    }
    const double tree = Batch / Median(trees) / 1e6;
    const double pick = Batch / Median(picks) / 1e6;
    std::printf("nearest hits, M rays/s, one thread, %u triangles, %zu rays\n", mesh->TriangleCount(), rays);
    if (peer != nullptr)
    {
        const double rate = Batch / Median(theirs) / 1e6;
        std::printf("  %s %.3f   tree %.3f (ratio %.2f)   RayPick %.3f (ratio %.2f)   different %.4f%%\n",
                    peer->Name().c_str(), rate, tree, tree / rate, pick, pick / rate,
                    100.0 * static_cast<double>(differences) / static_cast<double>(rays));
    }
    else
        std::printf("  no comparison: built without Embree   tree %.3f   RayPick %.3f\n", tree, pick);
    std::printf("  %.1f bytes for each triangle\n",
                static_cast<double>(builder->Rays().ByteSize()) / mesh->TriangleCount());
}

void CompareBuilds(Peer* peer, const Mesh& mesh)
{
    std::vector<double> theirs;
    std::vector<double> ours;
    for (int i = 0; i < 7; ++i)
    {
        theirs.push_back(peer != nullptr ? peer->Build(mesh) : 0);
        ours.push_back(Seconds([&] { rays::BuildMeshTree(*mesh); }));
    }
    std::printf("tree of %u triangles, one thread, ms: ours %.1f", mesh->TriangleCount(), 1e3 * Median(ours));
    if (peer != nullptr)
        std::printf(", %s at medium quality %.1f, theirs to ours %.2f", peer->Name().c_str(), 1e3 * Median(theirs),
                    Median(theirs) / Median(ours));
    std::printf("\n");
}

/// A mesh that was compiled but never picked; each time another one in another scene.
void CompareFirstPicks(const Mesh& mesh)
{
    std::mt19937 random{2};
    const auto batch = RaysThrough(1.2, 4, 9, random);
    std::vector<double> sweeps;
    std::vector<double> firsts;
    for (const Ray& ray : batch)
    {
        const auto builder = BuilderOf(mesh);
        const auto root = Frame::Make();
        root->AddVisual(builder);
        float their = 0;
        bool isHit = false;
        sweeps.push_back(Seconds([&] { their = PlainSweep(*builder->Compiled(), ray); }));
        firsts.push_back(Seconds([&] { isHit = root->RayPick(root, ray, RayPickFlags::Primitives)->HasPick(0); }));
        if (isHit != (their < INFINITY))
            std::printf("  the plain sweep disagrees\n");
    }
    std::printf("first pick into %u compiled triangles, ms: plain sweep %.3f, RayPick %.3f, ratio %.2f\n",
                mesh->TriangleCount(), 1e3 * Median(sweeps), 1e3 * Median(firsts), Median(firsts) / Median(sweeps));
}

/// When a tree pays, and what a pick costs once it is there.
void PrintTriangles()
{
    std::printf("\nagainst triangles%10s %14s %14s %14s %18s\n", "", "sweep, us", "tree built, us", "pick, us",
                "sweeps for a tree");
    for (const std::uint32_t triangles : {1000U, 3000U, 10000U, 30000U, 100000U, 300000U, 1000000U})
    {
        const Mesh mesh = Ring(triangles);
        std::mt19937 random{3};
        const auto batch = RaysThrough(1.4, 4, 20000, random);
        rays::MeshRays sweep{rays::Method::Sweep};
        const std::size_t sweeps = std::clamp<std::size_t>(20000000 / mesh->TriangleCount(), 10, batch.size());
        const double swept = Seconds(
                                 [&]
                                 {
                                     for (std::size_t i = 0; i < sweeps; ++i)
                                         sweep.Nearest(*mesh, LocalOf(batch[i]));
                                 }) /
                             static_cast<double>(sweeps);
        std::vector<double> builds;
        for (int i = 0; i < 3; ++i)
            builds.push_back(Seconds([&] { rays::BuildMeshTree(*mesh); }));
        const auto builder = BuilderOf(mesh);
        builder->PreparePicking();
        const auto root = Frame::Make();
        root->AddVisual(builder);
        const double picked = Seconds(
                                  [&]
                                  {
                                      for (const Ray& ray : batch)
                                          root->RayPick(root, ray, RayPickFlags::Primitives)->HasPick(0);
                                  }) /
                              static_cast<double>(batch.size());
        std::printf("%27u %14.2f %14.1f %14.3f %18.0f\n", mesh->TriangleCount(), 1e6 * swept, 1e6 * Median(builds),
                    1e6 * picked, Median(builds) / swept);
    }
}

void PrintMeshes(double seconds)
{
    std::printf("\nagainst meshes %12s %12s %12s %18s %18s %14s\n", "index, ms", "faces, us", "boxes, us",
                "move and faces, us", "move and boxes, us", "glide, us");
    for (const std::uint32_t count : {10U, 100U, 1000U, 10000U, 100000U})
    {
        CubeScene scene = Cubes(count);
        std::mt19937 random{4};
        const auto batch = RaysThrough(20, 5, 5000, random);
        const double index =
            Seconds([&] { scene.root->RayPick(scene.root, batch[0], RayPickFlags::BoundingBoxes)->HasPick(0); });
        const auto picks = [&](RayPickFlags flags, bool moves)
        {
            std::size_t hits = 0;
            for (int warm = 0; warm < 2; ++warm) // meshes are compiled in the first round
            {
                const double time = Seconds(
                    [&]
                    {
                        for (std::size_t i = 0; i < batch.size(); ++i)
                        {
                            if (moves)
                                scene.frames[(i * 7919) % scene.frames.size()]->AddTranslation(
                                    CombineType::After, i % 2 == 0 ? 0.5F : -0.5F, 0, 0);
                            hits += scene.root->RayPick(scene.root, batch[i], flags)->HasPick(0) ? 1 : 0;
                        }
                    });
                if (warm == 1 && hits > 0)
                    return 1e6 * time / static_cast<double>(batch.size());
            }
            return 0.0;
        };
        const double faces = picks(RayPickFlags::Primitives, false);
        const double boxes = picks(RayPickFlags::BoundingBoxes, false);
        const double movedFaces = picks(RayPickFlags::Primitives, true);
        const double movedBoxes = picks(RayPickFlags::BoundingBoxes, true);
        const auto hosted = ControlIn(scene.root);
        std::vector<double> glides;
        const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds / 10);
        for (int i = 0; glides.size() < 20 || std::chrono::steady_clock::now() < end; ++i)
        {
            const float step = i % 2 == 0 ? 0.01F : -0.01F;
            glides.push_back(Seconds([&] { hosted->Control().AddCameraMovement({step, step, step}, tdlGlide); }));
        }
        std::printf("%14u %12.2f %12.3f %12.3f %18.3f %18.3f %14.1f\n", count, 1e3 * index, faces, boxes, movedFaces,
                    movedBoxes, 1e6 * Median(glides));
        std::fflush(stdout);
    }
}

} // namespace

int main(int count, char** words)
try
{
    double seconds = 3;
    for (int i = 1; i + 1 < count; ++i)
        if (std::strcmp(words[i], "--seconds") == 0)
            seconds = std::atof(words[i + 1]);
    const auto peer = MakePeer();
    const Mesh mesh = Ring(871000);
    CompareRates(peer.get(), mesh, seconds);
    CompareBuilds(peer.get(), mesh);
    CompareFirstPicks(mesh);
    PrintTriangles();
    PrintMeshes(seconds);
    return EXIT_SUCCESS;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
}
