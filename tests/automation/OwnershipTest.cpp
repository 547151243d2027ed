// Who may use the library, and on which thread what others release ends.
#include "automation/abi/Ownership.h"

#include "automation/Dispatch.h"
#include "automation/abi/Buffers.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace lumora::automation
{

namespace
{

/// Counts its end without a lock: it ends on the thread that made it.
class Thing : public Counted
{
public:
    explicit Thing(int& ended) : ended_(ended) {}
    ~Thing() override
    {
        EXPECT_EQ(std::this_thread::get_id(), maker_);
        ++ended_;
    }

private:
    const std::thread::id maker_ = std::this_thread::get_id();
    int& ended_;
};

} // namespace

TEST(Ownership, what_other_threads_release_ends_at_the_owners_next_call)
{
    constexpr int Threads = 4;
    constexpr int Each = 500;
    int ended = 0;
    auto* const first = [&]
    {
        const OwnerCall call;
        return new Thing{ended};
    }();
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i)
    {
        std::vector<Thing*> things;
        for (int k = 0; k < Each; ++k)
            things.push_back(new Thing{ended});
        threads.emplace_back(
            [things]
            {
                for (Thing* const thing : things)
                {
                    EXPECT_THROW(OwnerCall{}, RuntimeError);
                    thing->AddReference();
                    thing->Release();
                    thing->Release();
                }
            });
    }
    for (int i = 0; i < Each; ++i) // calls go on meanwhile
        const OwnerCall call;
    for (std::thread& thread : threads)
        thread.join();
    auto* const again = new Thing{ended};
    std::thread{[=]
                {
                    again->Release();
                    again->AddReference();
                    again->Release();
                    OwnerCall::DestroyReleased(); // not on this thread
                }}
        .join();
    EXPECT_FALSE(again->IsHeld());
    again->AddReference(); // it was found again before its end
    {
        const OwnerCall call;
    }
    EXPECT_EQ(ended, Threads * Each);
    EXPECT_EQ(LiveCount(), 2U);
    again->Release();
    first->Release();
    EXPECT_EQ(LiveCount(), 0U);
}

TEST(Ownership, goes_to_one_thread_at_a_time_and_is_free_when_nothing_is_held)
{
    {
        const OwnerCall call;
        std::thread{[] { EXPECT_THROW(OwnerCall{}, RuntimeError); }}.join();
    }
    int ended = 0; // what the sanitizer watches: one thread at a time, each after the other
    const auto useIt = [&]
    {
        for (int done = 0; done < 200;)
            try
            {
                const OwnerCall call;
                (new Thing{ended})->Release();
                ++done;
            }
            catch (const RuntimeError& failure)
            {
                EXPECT_EQ(failure.Number(), error::WrongThread);
                EXPECT_NE(failure.Description().find("thread"), std::string::npos);
                std::this_thread::yield();
            }
    };
    std::vector<std::thread> threads(4);
    for (std::thread& thread : threads)
        thread = std::thread{useIt};
    for (std::thread& thread : threads)
        thread.join();
    OwnerCall::DestroyReleased();
    EXPECT_EQ(ended, 800);
    EXPECT_EQ(LiveCount(), 0U);
}

TEST(Ownership, what_a_buffer_keeps_ends_on_the_owners_thread_whoever_clears_it)
{
    int ended = 0;
    {
        const OwnerCall call;
        std::vector<float> numbers{1, 2, 3};
        const std::shared_ptr<const void> keeper{&numbers, [&](const void*) { ++ended; }};
        LumoraBuffer* const made = MakeBuffer({ElementType::Single, numbers.data(), numbers.size(), false, keeper});
        std::thread{[=] { FreeBuffer(made); }}.join();
        FreeBuffer(made); // no buffer any more
    }
    EXPECT_EQ(ended, 0);
    OwnerCall::DestroyReleased();
    EXPECT_EQ(ended, 1);
}

} // namespace lumora::automation
