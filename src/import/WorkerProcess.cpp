// Starts the worker with fork and exec, feeds nothing, listens to progress and complaints, and ends it in time.
#include "import/WorkerProcess.h"

#include "import/ModelStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace lumora
{

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    if (this != &other)
    {
        Close();
        number_ = other.Release();
    }
    return *this;
}

void Descriptor::Close()
{
    if (number_ >= 0)
        close(number_);
    number_ = -1;
}

int Descriptor::Release()
{
    return std::exchange(number_, -1);
}

FileView::FileView(int descriptor, std::size_t size)
{
    if (size == 0)
        return;
    void* address = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (address != MAP_FAILED)
        bytes_ = {static_cast<const std::byte*>(address), size};
}

FileView::FileView(FileView&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}

FileView& FileView::operator=(FileView&& other) noexcept
{
    std::swap(bytes_, other.bytes_);
    return *this;
}

FileView::~FileView()
{
    if (!bytes_.empty())
        munmap(const_cast<std::byte*>(bytes_.data()), bytes_.size());
}

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::size_t MaximumComplaint = 4096;
constexpr int TickMilliseconds = 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool addressSpaceIsReserved = true; // the sanitizers map terabytes ahead
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool addressSpaceIsReserved = true;
#else
constexpr bool addressSpaceIsReserved = false;
#endif
#else
constexpr bool addressSpaceIsReserved = false;
#endif

struct Pipe
{
    Descriptor read;
    Descriptor write;
};

Pipe MakePipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return {};
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

/// A copy above the numbers that the child's own descriptors will have, so that putting those in place cannot
/// overwrite it.
Descriptor MovedUp(Descriptor descriptor)
{
    return Descriptor(descriptor.IsOpen() ? fcntl(descriptor.Number(), F_DUPFD_CLOEXEC, 10) : -1);
}

struct ChildPlan
{
    const char* worker;
    const char* model;
    int nothing;
    int complaints;
    int result;
    int progress;
    pid_t parent;
    rlim_t memory;
    rlim_t cpuSeconds;
};

void Limit(int resource, rlim_t most)
{
    const rlimit limit{most, most};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

/// What the child does between fork and exec: system calls only, for other threads' locks may be held.
[[noreturn]] void BecomeWorker(const ChildPlan& plan)
{
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != plan.parent)
        _exit(modelstream::ExitNotStarted);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    signal(SIGCHLD, SIG_DFL);

    dup2(plan.nothing, 0);
    dup2(plan.complaints, 1);
    dup2(plan.complaints, 2);
    dup2(plan.result, modelstream::ResultDescriptor);
    dup2(plan.progress, modelstream::ProgressDescriptor);
    close_range(modelstream::ProgressDescriptor + 1, ~0U, 0);

    Limit(RLIMIT_CORE, 0);
    Limit(RLIMIT_CPU, plan.cpuSeconds);
    Limit(RLIMIT_FSIZE, plan.memory);
    if (!addressSpaceIsReserved)
        Limit(RLIMIT_AS, plan.memory);
    const char* arguments[] = {plan.worker, plan.model, nullptr};
    execv(plan.worker, const_cast<char**>(arguments));
    constexpr char complaint[] = "it is no program that can be started\n";
    [[maybe_unused]] const ssize_t written = write(2, complaint, sizeof(complaint) - 1);
    _exit(modelstream::ExitNotStarted);
}

/// A running child; ended and reaped with all its descendants when this goes.
class Child
{
public:
    explicit Child(pid_t process) : process_(process) { setpgid(process, process); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child()
    {
        if (process_ > 0)
            Reap();
    }

    /// True once it has ended; it is not reaped yet.
    bool HasEnded() const
    {
        siginfo_t information{};
        const int answer = waitid(P_PID, static_cast<id_t>(process_), &information, WEXITED | WNOHANG | WNOWAIT);
        return answer != 0 ? errno == ECHILD : information.si_pid == process_;
    }

    /// Ends it and what it has started, and answers how it ended. A host that lets the system reap its children leaves
    /// no status: that counts as an ordinary end, for the result is checked anyway.
    int Reap()
    {
        kill(-process_, SIGKILL); // before the process is reaped its group's number cannot belong to others
        kill(process_, SIGKILL);
        int status = 0;
        pid_t answer = 0;
        do
            answer = waitpid(process_, &status, 0);
        while (answer < 0 && errno == EINTR);
        process_ = -1;
        return answer < 0 ? 0 : status;
    }

private:
    pid_t process_;
};

/// What came through the two pipes so far.
struct Listener
{
    Descriptor progress;
    Descriptor complaints;
    double fraction = -1;
    std::string complaint;

    /// Waits up to `milliseconds` for something to come, and takes it.
    void Listen(int milliseconds)
    {
        std::array<pollfd, 2> waits{pollfd{progress.Number(), POLLIN, 0}, pollfd{complaints.Number(), POLLIN, 0}};
        const bool bothClosed = !progress.IsOpen() && !complaints.IsOpen();
        poll(waits.data(), waits.size(), bothClosed ? std::min(milliseconds, 1) : milliseconds);
        Take(progress,
             [this](std::span<const char> bytes)
             {
                 const int percent = static_cast<unsigned char>(bytes.back());
                 fraction = percent <= 100 ? percent / 100.0 : -1.0;
             });
        Take(complaints,
             [this](std::span<const char> bytes)
             {
                 complaint.append(bytes.data(), bytes.size());
                 if (complaint.size() > MaximumComplaint) // the end says what went wrong
                     complaint.erase(0, complaint.size() - MaximumComplaint);
             });
    }

    /// Takes what an ended worker left in its pipes: a pipe full of it at most, whoever may still be writing.
    void TakeRest()
    {
        constexpr int ReadsOfAFullPipe = 64;
        for (int i = 0; i < ReadsOfAFullPipe && complaints.IsOpen(); ++i)
            Listen(0);
    }

private:
    template<typename Taker>
    static void Take(Descriptor& from, Taker taker)
    {
        std::array<char, 4096> buffer;
        if (!from.IsOpen())
            return;
        const ssize_t count = read(from.Number(), buffer.data(), buffer.size());
        if (count > 0)
            taker(std::span<const char>(buffer.data(), static_cast<std::size_t>(count)));
        else if (count == 0 || (errno != EAGAIN && errno != EINTR))
            from.Close();
    }
};

std::string LastLine(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    const std::size_t end = text.rfind('\n');
    return end == std::string::npos ? text : text.substr(end + 1);
}

WorkerResult ResultOfSignal(int signal)
{
    switch (signal)
    {
    case SIGXCPU:
        return {WorkerEnd::TimedOut, "", {}};
    case SIGKILL: // nobody here sent it before the worker had ended: the system ran out of memory or of patience
    case SIGXFSZ:
        return {WorkerEnd::OutOfMemory, "", {}};
    default:
        return {WorkerEnd::Crashed, std::string("the reader was stopped by: ") + strsignal(signal), {}};
    }
}

WorkerResult ResultOfExit(int code, const std::string& complaint)
{
    switch (code)
    {
    case modelstream::ExitFinished:
        return {WorkerEnd::Finished, "", {}};
    case modelstream::ExitUnreadable:
        return {WorkerEnd::Unreadable, complaint, {}};
    case modelstream::ExitOutOfMemory:
        return {WorkerEnd::OutOfMemory, "", {}};
    case modelstream::ExitNotStarted:
        return {WorkerEnd::NotStarted, complaint, {}};
    default:
        return {WorkerEnd::Crashed, "the reader ended with code " + std::to_string(code), {}};
    }
}

/// Seals the result against whoever may still hold it, then maps it.
FileView TakeResult(const Descriptor& result, std::size_t memoryLimit)
{
    struct stat status
    {
    };
    const int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    if (fcntl(result.Number(), F_ADD_SEALS, seals) != 0 || fstat(result.Number(), &status) != 0)
        return {};
    const auto size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
    return size <= memoryLimit ? FileView(result.Number(), size) : FileView();
}

/// Listens until the child has ended, or ends it. Finished means: ended on its own.
WorkerEnd Watch(const Child& child, Listener& listener, const WorkerJob& job, Clock::time_point start)
{
    while (!child.HasEnded())
    {
        if (job.tick && !job.tick(listener.fraction))
            return WorkerEnd::Cancelled;
        // Rounded up: a worker that has a part of a millisecond left is not late yet.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(start + job.timeLimit - Clock::now());
        if (left.count() <= 0)
            return WorkerEnd::TimedOut;
        listener.Listen(static_cast<int>(std::min<std::int64_t>(left.count(), TickMilliseconds)));
    }
    listener.Listen(0);
    return WorkerEnd::Finished;
}

} // namespace

WorkerResult RunWorker(const WorkerJob& job)
{
    const Clock::time_point start = Clock::now();
    const Descriptor nothing = MovedUp(Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC)));
    const Descriptor result = MovedUp(Descriptor(memfd_create("model", MFD_CLOEXEC | MFD_ALLOW_SEALING)));
    Pipe progress = MakePipe();
    Pipe complaints = MakePipe();
    progress.write = MovedUp(std::move(progress.write));
    complaints.write = MovedUp(std::move(complaints.write));
    if (!nothing.IsOpen() || !result.IsOpen() || !progress.write.IsOpen() || !complaints.write.IsOpen())
        return {WorkerEnd::NotStarted, std::string("the system grants no more files: ") + strerror(errno), {}};

    const auto seconds = std::chrono::ceil<std::chrono::seconds>(job.timeLimit).count() + 1;
    const ChildPlan plan{
        job.worker.c_str(),      job.model.c_str(), nothing.Number(), complaints.write.Number(),   result.Number(),
        progress.write.Number(), getpid(),          job.memoryLimit,  static_cast<rlim_t>(seconds)};
    const pid_t process = fork();
    if (process < 0)
        return {WorkerEnd::NotStarted, std::string("the system grants no more processes: ") + strerror(errno), {}};
    if (process == 0)
        BecomeWorker(plan);

    Child child(process);
    progress.write.Close();
    complaints.write.Close();
    Listener listener{std::move(progress.read), std::move(complaints.read), -1, ""};
    const WorkerEnd end = Watch(child, listener, job, start);
    const int status = child.Reap();
    if (end != WorkerEnd::Finished)
        return {end, "", {}};
    listener.TakeRest();
    WorkerResult answer = WIFSIGNALED(status) ? ResultOfSignal(WTERMSIG(status))
                                              : ResultOfExit(WEXITSTATUS(status), LastLine(listener.complaint));
    if (answer.end == WorkerEnd::Finished)
        answer.stream = TakeResult(result, job.memoryLimit);
    return answer;
}

} // namespace lumora
