// Threads that share one piece of work: the calling one and its helpers.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <thread>

namespace lumora
{

/// Shares work units out. The calling thread works too, and never waits for a helper that has not begun: one that wakes
/// late finds the job closed. Helpers spin briefly after a job, since the next one mostly follows at once, then sleep.
/// A job that comes while another is being worked on is done by its caller alone.
class Crew
{
public:
    /// A crew of `threads`; 0: the one that everything on the calling thread shares, with a thread for each core. The
    /// shared one lives as long as somebody holds it.
    static std::shared_ptr<Crew> Of(int threads);

    /// `size` threads including the calling one. Helpers start with the first shared job.
    explicit Crew(int size) : size_(size) {}
    ~Crew();
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    int Size() const { return size_; }

    /// Calls work(unit, worker) once for each unit below `count`, in any order; worker is below Size() and no two calls
    /// with the same worker overlap. Units are handed out in order. `alone`: on the calling thread only.
    template<typename Work>
    void Run(std::size_t count, bool alone, Work& work)
    {
        if (alone || size_ == 1 || count < 2 || isBusy_.exchange(true))
        {
            for (std::size_t unit = 0; unit < count; ++unit)
                work(unit, 0);
            return;
        }
        const Busy busy{isBusy_};
        RunShared(
            count, [](void* context, std::size_t unit, int worker) { (*static_cast<Work*>(context))(unit, worker); },
            &work);
    }

    /// While one lives, helpers that are awake stay so from one job to the next, for a few milliseconds at most: what
    /// lies between the stages of a frame is shorter than waking a thread.
    class Attention
    {
    public:
        explicit Attention(Crew& crew) : crew_(crew) { crew_.attentions_.fetch_add(1, std::memory_order_relaxed); }
        ~Attention() { crew_.attentions_.fetch_sub(1, std::memory_order_relaxed); }
        Attention(const Attention&) = delete;
        Attention& operator=(const Attention&) = delete;

    private:
        Crew& crew_;
    };

private:
    using Call = void (*)(void* context, std::size_t unit, int worker);

    struct Busy
    {
        explicit Busy(std::atomic<bool>& isBusy) : mark(isBusy) {}
        ~Busy() { mark.store(false); }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
        std::atomic<bool>& mark;
    };

    struct Helper
    {
        std::thread thread;
        std::atomic<int> processor{-1}; ///< where it last went to sleep
        std::atomic<bool> sleeps{false};
    };
    class Spread;

    void RunShared(std::size_t count, Call call, void* context);
    void StartHelpers();
    void Help(Helper& self, int worker);
    std::uint32_t AwaitJob(Helper& self, std::uint32_t seen);
    void TakeUnits(int worker);

    int size_;
    std::deque<Helper> helpers_; ///< threads have references to theirs
    std::atomic<bool> isBusy_{false};

    // The job. Helpers read these only between entering (entered_) and leaving, while the job is open.
    Call call_ = nullptr;
    void* context_ = nullptr;
    std::size_t count_ = 0;
    alignas(64) std::atomic<std::size_t> next_{0};
    /// Number of the last job, on which helpers sleep: without a lock, none of them waits for another to wake. It has
    /// the size that the system waits on by itself. After 2^32 jobs one has number 0 and is done by its caller alone.
    alignas(64) std::atomic<std::uint32_t> announced_{0};
    std::atomic<std::uint32_t> open_{0}; ///< number of the job that may be entered, or 0
    std::atomic<int> entered_{0};
    std::atomic<int> sleepers_{0};
    std::atomic<int> attentions_{0};
    std::atomic<bool> ends_{false};
};

} // namespace lumora
