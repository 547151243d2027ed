#include "parallel/Crew.h"

#include <algorithm>
#include <array>
#include <chrono>

#if defined(__linux__)
#include <pthread.h>
#include <sched.h>
#endif
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

#if defined(__linux__)

/// While one lives, helpers that sleep wake on processors of their own, where the crew has a thread for each processor.
///
/// Once all processors have been busy for a while the system does not look for an idle one: it wakes a thread where
/// that last ran. Where the caller or another helper is by now, it would wait for a tick of some milliseconds. So that
/// helper is bound to a free processor until it has been woken; then the system may move it as before.
class Crew::Spread
{
public:
    explicit Spread(Crew& crew)
    {
        CPU_ZERO(&taken_);
        Take(Here());
        std::array<Helper*, MostThreads> crowded;
        std::size_t crowdedCount = 0;
        for (Helper& helper : crew.helpers_)
            if (!Take(helper.processor.load()) && helper.sleeps.load())
                crowded[crowdedCount++] = &helper;
        for (std::size_t i = 0; i < crowdedCount; ++i)
            Bind(*crowded[i], crew.size_);
    }
    ~Spread()
    {
        for (std::size_t i = 0; i < boundCount_; ++i)
            pthread_setaffinity_np(bound_[i].thread, sizeof(cpu_set_t), &bound_[i].before);
    }
    Spread(const Spread&) = delete;
    Spread& operator=(const Spread&) = delete;

    /// The calling thread's processor.
    static int Here() { return sched_getcpu(); }

private:
    struct Bound
    {
        pthread_t thread;
        cpu_set_t before;
    };

    /// False where it is not free.
    bool Take(int processor)
    {
        if (processor < 0 || processor >= CPU_SETSIZE || CPU_ISSET(processor, &taken_))
            return false;
        CPU_SET(processor, &taken_);
        return true;
    }

    /// To a free processor, if it may use no more than there are threads.
    void Bind(Helper& helper, int threads)
    {
        Bound& bound = bound_[boundCount_];
        bound.thread = helper.thread.native_handle();
        if (pthread_getaffinity_np(bound.thread, sizeof(bound.before), &bound.before) != 0 ||
            CPU_COUNT(&bound.before) > threads)
            return;
        int processor = 0;
        while (processor < CPU_SETSIZE && !(CPU_ISSET(processor, &bound.before) && Take(processor)))
            ++processor;
        if (processor == CPU_SETSIZE)
            return;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        if (pthread_setaffinity_np(bound.thread, sizeof(one), &one) == 0)
            ++boundCount_;
    }

    cpu_set_t taken_;
    std::array<Bound, MostThreads> bound_;
    std::size_t boundCount_ = 0;
};

#else

class Crew::Spread
{
public:
    explicit Spread(Crew&) {}
    static int Here() { return -1; }
};

#endif

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
    for (Helper& helper : helpers_)
        helper.thread.join();
}

void Crew::StartHelpers()
{
    while (static_cast<int>(helpers_.size()) < size_ - 1)
    {
        const int worker = static_cast<int>(helpers_.size()) + 1;
        try
        {
            Helper& helper = helpers_.emplace_back();
            helper.thread = std::thread{[this, &helper, worker] { Help(helper, worker); }};
        }
        catch (const std::exception&) // the system gives no more threads, or memory
        {
            helpers_.resize(static_cast<std::size_t>(worker - 1));
            size_ = worker;
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
    {
        const Spread spread{*this};
        announced_.notify_all();
    }
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

void Crew::Help(Helper& self, int worker)
{
    std::uint32_t seen = 0;
    while (true)
    {
        seen = AwaitJob(self, seen);
        if (ends_.load())
            return;
        entered_.fetch_add(1);
        if (open_.load() == seen)
            TakeUnits(worker);
        entered_.fetch_sub(1);
    }
}

std::uint32_t Crew::AwaitJob(Helper& self, std::uint32_t seen)
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
        std::this_thread::yield(); // one that has a unit may wait for this processor
    } while (!isOver(attentions_.load(std::memory_order_relaxed) != 0 ? AttentiveSpinTime : SpinTime));
    self.processor.store(Spread::Here());
    self.sleeps.store(true);
    sleepers_.fetch_add(1);
    announced_.wait(seen);
    sleepers_.fetch_sub(1);
    self.sleeps.store(false);
    return announced_.load();
}

} // namespace lumora
