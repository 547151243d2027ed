#include "parallel/Crew.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <sched.h>
#include <thread>
#include <vector>

namespace lumora::test
{

namespace
{

void LetHelpersSleep()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

TEST(Crew, does_each_unit_once_whether_helpers_sleep_or_not)
{
    constexpr std::size_t Units = 1000;
    Crew crew{4};
    for (int job = 0; job < 20; ++job)
    {
        std::vector<std::atomic<int>> done(Units);
        std::atomic<bool> isWorking[4]{};
        std::atomic<bool> overlap{false};
        auto work = [&](std::size_t unit, int worker)
        {
            if (isWorking[worker].exchange(true))
                overlap = true;
            done[unit].fetch_add(1);
            isWorking[worker] = false;
        };
        crew.Run(Units, false, work);
        for (const std::atomic<int>& times : done)
            ASSERT_EQ(times.load(), 1);
        EXPECT_FALSE(overlap);
        if (job % 2 == 0)
            LetHelpersSleep();
    }
}

TEST(Crew, a_job_within_a_job_is_done_by_its_caller)
{
    Crew crew{2};
    std::atomic<int> done{0};
    auto outer = [&](std::size_t, int)
    {
        const std::thread::id caller = std::this_thread::get_id();
        auto inner = [&](std::size_t, int worker)
        { done += worker == 0 && std::this_thread::get_id() == caller ? 1 : 0; };
        crew.Run(10, false, inner);
    };
    crew.Run(8, false, outer);
    EXPECT_EQ(done, 80);
}

/// A crew of a thread for each processor that this thread may use, none of which does a second unit of a job.
class FullCrew : public ::testing::Test
{
protected:
    FullCrew() : size_(static_cast<int>(std::thread::hardware_concurrency())), crew_(size_), workers_(size_) {}

    struct Worker
    {
        int processor;
        cpu_set_t processors;
    };

    /// Where all were when they began, and what they may use once all have.
    const std::vector<Worker>& RunOnAll()
    {
        std::atomic<int> begun{0};
        auto work = [&](std::size_t, int worker)
        {
            Worker& self = workers_[static_cast<std::size_t>(worker)];
            self.processor = sched_getcpu();
            for (begun.fetch_add(1); begun.load() < size_;)
                std::this_thread::yield();
            sched_getaffinity(0, sizeof(self.processors), &self.processors);
        };
        crew_.Run(static_cast<std::size_t>(size_), false, work);
        return workers_;
    }

    int size_;
    Crew crew_;
    std::vector<Worker> workers_;
};

TEST_F(FullCrew, helpers_make_way_for_the_caller_and_may_use_all_processors_again)
{
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof(all), &all), 0);
    if (size_ < 2 || CPU_COUNT(&all) != size_)
        GTEST_SKIP() << "needs a thread for each of several processors";
    for (int helper = 1; helper < size_; ++helper)
    {
        const int taken = RunOnAll()[static_cast<std::size_t>(helper)].processor;
        LetHelpersSleep();
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(taken, &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
        RunOnAll();
        EXPECT_EQ(sched_setaffinity(0, sizeof(all), &all), 0);
        for (std::size_t other = 1; other < workers_.size(); ++other)
            EXPECT_TRUE(CPU_EQUAL(&workers_[other].processors, &all)) << "helper " << other;
    }
}

} // namespace

} // namespace lumora::test
