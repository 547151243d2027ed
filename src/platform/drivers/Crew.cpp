#include "platform/drivers/Crew.h"

#include <algorithm>
#include <chrono>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace lumora
{

namespace
{

constexpr auto SpinTime = std::chrono::microseconds(60);
constexpr auto AttentiveSpinTime = std::chrono::milliseconds(2);

/// More threads than this do not make a picture come sooner.
constexpr int MostThreads = 64;

void Pause()
{
#if defined(__x86_64__) || defined(__i386__)
    _mm_pause();
#else
    std::this_thread::yield();
#endif
}

} // namespace

std::shared_ptr<Crew> Crew::Of(int threads)
{
    if (threads > 0)
        return std::make_shared<Crew>(std::min(threads, MostThreads));
    thread_local std::weak_ptr<Crew> shared;
    std::shared_ptr<Crew> crew = shared.lock();
    if (!crew)
    {
        const int cores = static_cast<int>(std::thread::hardware_concurrency());
        crew = std::make_shared<Crew>(std::clamp(cores, 1, MostThreads));
        shared = crew;
    }
    return crew;
}

Crew::~Crew()
{
    ends_.store(true);
    announced_.fetch_add(1);
    announced_.notify_all();
    for (std::thread& helper : helpers_)
        helper.join();
}

void Crew::StartHelpers()
{
    while (static_cast<int>(helpers_.size()) < size_ - 1)
    {
        try
        {
            helpers_.emplace_back([this, worker = static_cast<int>(helpers_.size()) + 1] { Help(worker); });
        }
        catch (const std::system_error&)
        {
            size_ = static_cast<int>(helpers_.size()) + 1; // the system gives no more
        }
    }
}

void Crew::RunShared(std::size_t count, Call call, void* context)
{
    StartHelpers();
    call_ = call;
    context_ = context;
    count_ = count;
    next_.store(0);
    const std::uint32_t job = announced_.load() + 1;
    open_.store(job);
    announced_.store(job);
    if (sleepers_.load() != 0)
        announced_.notify_all();
    TakeUnits(0);
    open_.store(0);
    for (int spins = 0; entered_.load() != 0; ++spins)
        if (spins < 4096)
            Pause();
        else
            std::this_thread::yield();
}

void Crew::TakeUnits(int worker)
{
    for (std::size_t unit = next_.fetch_add(1); unit < count_; unit = next_.fetch_add(1))
        call_(context_, unit, worker);
}

void Crew::Help(int worker)
{
    std::uint32_t seen = 0;
    while (true)
    {
        seen = AwaitJob(seen);
        if (ends_.load())
            return;
        entered_.fetch_add(1);
        if (open_.load() == seen)
            TakeUnits(worker);
        entered_.fetch_sub(1);
    }
}

std::uint32_t Crew::AwaitJob(std::uint32_t seen)
{
    const auto start = std::chrono::steady_clock::now();
    const auto isOver = [&](auto time) { return std::chrono::steady_clock::now() - start >= time; };
    do
    {
        for (int i = 0; i < 64; ++i)
        {
            if (const std::uint32_t job = announced_.load(); job != seen)
                return job;
            Pause();
        }
    } while (!isOver(attentions_.load(std::memory_order_relaxed) != 0 ? AttentiveSpinTime : SpinTime));
    sleepers_.fetch_add(1);
    announced_.wait(seen);
    sleepers_.fetch_sub(1);
    return announced_.load();
}

} // namespace lumora
