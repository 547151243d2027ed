// The RGB driver keeps to the memory that its formula allows, and says what it has.
#include "base/RuntimeError.h"
#include "parallel/Crew.h"
#include "platform/drivers/TestCanvas.h"
#include "platform/drivers/TestMeshes.h"
#include "platform/drivers/rgb/RgbDriver.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>
#include <random>

namespace lumora::test
{

namespace
{

constexpr std::size_t Slack = std::size_t{256} << 10; // the crew and its threads, shared pointers, the meshes' table

std::vector<std::shared_ptr<const DrawMesh>> Meshes()
{
    const auto texture = Ramp(60, 40, 0x40);
    return {Confetti(20000, 1, 0.2F, 0xFF, 1),
            Confetti(15000, 1, 0.1F, 0x60, 2),
            Sphere(1, 150, 150, 0x80FFFFFF, {}, texture),
            Sphere(1, 40, 40, 0xFFC0A080),
            Floor(3, 60, 0xFFFFFFFF, Ramp(33, 17)),
            OneFace({{-90, -90, 0}, {-90, 90, 0}, {90, 90, 0}}, 0x40FFFFFF)}; // clipped on all sides
}

DrawItem ItemOf(std::shared_ptr<const DrawMesh> mesh, std::mt19937& random)
{
    const auto place = [&] { return std::uniform_real_distribution<double>{-2, 2}(random); };
    DrawItem item =
        Item(std::move(mesh), Matrix4::FromAxes({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {place(), place(), place()}));
    item.fill = static_cast<FillStyle>(std::min<std::size_t>(2, random() % 5));
    item.gouraud = random() % 2 == 0;
    return item;
}

} // namespace

TEST(RgbMemory, stays_within_its_formula_whatever_is_drawn)
{
    const auto meshes = Meshes();
    for (unsigned seed = 0; seed < 8; ++seed)
    {
        std::mt19937 random{seed};
        const std::size_t before = CountedAllocations().bytes;
        RgbOptions options;
        options.threads = 1 + static_cast<int>(random() % 4);
        if (seed % 3 != 0)
            options.limits = {1U << (8 + random() % 8), std::size_t{1} << 30, std::size_t{1} << (12 + random() % 12),
                              std::size_t{1} << 16};
        const auto driver = MakeRgbDriver(options);
        std::size_t driversOwn = CountedAllocations().bytes - before;
        for (int picture = 0; picture < 3; ++picture)
        {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", picture " + std::to_string(picture));
            std::vector<DrawItem> items;
            for (std::size_t i = random() % 30; i > 0; --i)
                items.push_back(ItemOf(meshes[random() % meshes.size()], random));
            Canvas canvas{1 + static_cast<int>(random() % 1000), 1 + static_cast<int>(random() % 700)};
            PassState pass = PerspectivePass(canvas.Width(), canvas.Height(), {.eye = {0, 0, -4}, .field = 0.7});
            pass.transparency = static_cast<Transparency>(random() % 3);
            pass.fog.mode = random() % 2 == 0 ? FogMode::Linear : FogMode::None;
            ForgetPeak();
            const std::size_t others = CountedAllocations().bytes - driversOwn;
            DrawPicture(*driver, canvas, pass, items);
            const DriverMemory memory = driver->Memory();
            EXPECT_LE(memory.held, memory.bound);
            EXPECT_LE(CountedAllocations().peak - others, memory.bound + Slack);
            driversOwn = CountedAllocations().bytes - others;
            EXPECT_NEAR(static_cast<double>(driversOwn), static_cast<double>(memory.held), Slack);
        }
    }
}

TEST(RgbMemory, a_picture_beyond_the_limit_is_refused_and_the_next_one_drawn)
{
    RgbOptions options;
    options.limits.batchBytes = std::size_t{1} << 20;
    const struct
    {
        const char* what;
        std::shared_ptr<const DrawMesh> mesh;
    } cases[] = {{"Sorting translucent triangles of 60000 vertices needs 4 MiB, more than the 1 MiB",
                  Confetti(20000, 1, 0.1F, 0x60, 2)},
                 {"A mesh of 89700 vertices", Sphere(1, 150, 150, 0xFFFFFFFF)}};
    for (const auto& [what, mesh] : cases)
    {
        const auto driver = MakeRgbDriver(options);
        Canvas canvas{64, 48};
        const PassState pass = PerspectivePass(64, 48, {.eye = {0, 0, -4}, .field = 0.7});
        try
        {
            DrawPicture(*driver, canvas, pass, {DrawItem{mesh}});
            ADD_FAILURE() << what << ": drawn";
        }
        catch (const RuntimeError& failure)
        {
            EXPECT_EQ(failure.Number(), error::RMBadAlloc);
            EXPECT_NE(failure.Description().find(what), std::string::npos) << failure.Description();
        }
        DrawPicture(*driver, canvas, pass, {DrawItem{Sphere(1, 20, 20, 0xFFFFFFFF)}}, 0xFFFFFF);
        EXPECT_GT(canvas.CountNot(0xFFFFFF), 100); // without light: black
    }
}

TEST(CrewMemory, a_crew_that_cannot_have_all_threads_does_its_jobs_with_fewer)
{
    std::size_t number = 1;
    for (bool isLast = false; !isLast; ++number)
    {
        Crew crew{4};
        std::atomic<int> done{0};
        auto work = [&](std::size_t, int) { done.fetch_add(1); };
        FailAllocation(number);
        crew.Run(100, false, work);
        isLast = FailAllocation(0);
        EXPECT_EQ(crew.Size() == 4, isLast) << "allocation " << number;
        crew.Run(100, false, work);
        EXPECT_EQ(done, 200);
    }
}

TEST(RgbMemory, wherever_memory_runs_out_it_is_told_and_the_next_picture_is_whole)
{
    RgbOptions options;
    options.threads = 3;
    options.limits = {1U << 10, std::size_t{1} << 30, std::size_t{1} << 14, 0}; // many rounds and batches
    const std::vector<DrawItem> items{DrawItem{Sphere(1, 40, 40, 0xFFC0A080, {}, Ramp(16, 16))},
                                      DrawItem{Confetti(12500, 1, 0.1F, 0x60, 2)}};
    const PassState pass = PerspectivePass(200, 150, {.eye = {0, 0, -4}, .field = 0.7});
    Canvas canvas{200, 150};
    DrawPicture(*MakeRgbDriver(options), canvas, pass, items, 0xFFFFFF);
    const Canvas expected = canvas;
    std::size_t told = 0;
    std::size_t number = 1;
    for (bool isLast = false; !isLast; number += 1 + number / 40) // the first ones are the most different
    {
        const auto driver = MakeRgbDriver(options);
        FailAllocation(number);
        try
        {
            DrawPicture(*driver, canvas, pass, items, 0xFFFFFF);
        }
        catch (const RuntimeError& failure)
        {
            ++told;
            EXPECT_EQ(failure.Number(), error::RMBadAlloc);
        }
        isLast = FailAllocation(0);
        DrawPicture(*driver, canvas, pass, items, 0xFFFFFF);
        ASSERT_EQ(CountDifferent(canvas, expected), 0) << "allocation " << number;
    }
    EXPECT_GT(told, 50U);
}

} // namespace lumora::test
