// Workers that hang, die, lie or cannot be started: the caller is told, and nothing of them is left.
#include "base/RuntimeError.h"
#include "import/ModelFiles.h"
#include "import/ModelReader.h"
#include "import/ModelStream.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <signal.h>
#include <thread>

namespace lumora::test
{

namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class Worker : public ImportTest
{
protected:
    Failure FailureWith(const std::string& body, ImportOptions options = {})
    {
        options.workerPath = WriteWorker(body);
        return FailureOf(Model(), options);
    }

    Failure FailureWithin(milliseconds timeLimit, const std::string& body)
    {
        ImportOptions options;
        options.timeLimit = timeLimit;
        return FailureWith(body, options);
    }

    /// A worker that starts another process, writes that one's number to `note` and waits for it.
    std::string WorkerWithChild() const
    {
        return "sleep 1000 & echo $! >'" + folder_ / "written" + "'; mv '" + folder_ / "written" + "' '" +
               folder_ / "note" + "'\n";
    }

    bool IsChildStarted() const { return std::filesystem::exists(folder_ / "note"); }

    /// Waits until the process of WorkerWithChild has ended: it is killed, but ends in the system's own time.
    void ExpectChildEnds() const
    {
        std::string process;
        std::ifstream(folder_ / "note") >> process;
        ASSERT_FALSE(process.empty());
        std::string number;
        std::string name;
        std::string state;
        for (int i = 0; i < 60000; ++i)
        {
            if (!(std::ifstream("/proc/" + process + "/stat") >> number >> name >> state) || state == "Z")
                return;
            std::this_thread::sleep_for(milliseconds(1));
        }
        FAIL() << process << " still runs";
    }

    std::string Model() const { return Write("model.obj", AsObj(Tetrahedron())); }

    /// The bytes that the real worker hands over for `path`.
    std::string Capture(const std::string& path)
    {
        const std::string real = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "lumora-import-worker";
        const std::string copy = folder_ / "captured";
        ImportOptions options;
        options.workerPath = WriteWorker("'" + real + "' \"$1\"\nresult=$?\ncat <&3 >'" + copy + "'\nexit $result");
        ImportModel(path, options);
        return folder_.Read("captured");
    }
};

/// Where the memory begins at a multiple of 64, as a mapping does.
bool IsAccepted(const std::string& bytes)
{
    void* memory = nullptr;
    EXPECT_EQ(posix_memalign(&memory, 64, bytes.size()), 0);
    const std::unique_ptr<void, decltype(&std::free)> copy{std::memcpy(memory, bytes.data(), bytes.size()), &std::free};
    try
    {
        const ModelReader reader({static_cast<const std::byte*>(memory), bytes.size()});
        return true;
    }
    catch (const DamagedStream&)
    {
        return false;
    }
}

template<typename T>
void Put(std::string& bytes, std::size_t offset, T value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof(value));
}

template<typename T>
T Take(const std::string& bytes, std::size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

} // namespace

// Whoever does not end it waits for a thousand seconds.
TEST_F(Worker, one_that_hangs_is_ended_at_the_time_limit_and_never_before)
{
    const std::string hangs = "exec sleep 1000";
    for (const std::string& body : {hangs, "exec 1>&- 2>&- 4>&-\n" + hangs})
        for (const int limit : {1, 50, 300})
        {
            const Clock::time_point start = Clock::now();
            const Failure failure = FailureWithin(milliseconds(limit), body);
            EXPECT_GE(Clock::now() - start, milliseconds(limit));
            EXPECT_EQ(failure.number, importerror::TimedOut);
            EXPECT_NE(failure.description.find(std::to_string(limit) + " milliseconds"), std::string::npos)
                << failure.description;
        }
}

TEST_F(Worker, cancelling_and_throwing_end_it_with_all_it_started)
{
    ImportOptions options;
    options.progress = [&](double) { return !IsChildStarted(); };
    EXPECT_EQ(FailureWith(WorkerWithChild() + "wait", options).number, importerror::Cancelled);
    ExpectChildEnds();
    options.progress = [](double) -> bool { throw std::logic_error("the host's own"); };
    EXPECT_THROW(FailureWith("exec sleep 1000", options), std::logic_error);
    options.progress = [](double fraction) { return fraction < 0.9; }; // while frames are built
    EXPECT_EQ(FailureOf(Model(), options).number, importerror::Cancelled);
}

TEST_F(Worker, one_that_dies_or_lies_is_told)
{
    const struct
    {
        const char* body;
        std::int32_t number;
        const char* word;
    } workers[] = {
        {"kill -SEGV $$", importerror::InvalidFormat, "stopped by"},
        {"kill -KILL $$", error::OutOfMemory, "memory"},
        {"kill -XCPU $$", importerror::TimedOut, "milliseconds"},
        {"exit 1", importerror::InvalidFormat, "code 1"},
        {"exit 0", importerror::InvalidFormat, "damaged result"},
        {"echo first >&2; echo 'the reason' >&2; exit 10", importerror::InvalidFormat, "(the reason)"},
        {"printf 'bad \\033[2J\\377 bytes' >&2; exit 10", importerror::InvalidFormat, "bad ?[2J? bytes"},
        {"yes complaint | head -c 9000000 >&2; exit 10", importerror::InvalidFormat, "complaint"},
        {"head -c 9000000 /dev/zero >&4; exit 10", importerror::InvalidFormat, "model"},
        {"head -c 9000000 /dev/zero >&3; exit 0", importerror::InvalidFormat, "damaged result"},
        {"printf 'LumModel and more' >&3", importerror::InvalidFormat, "damaged result"},
        {"exit 11", error::OutOfMemory, "memory"},
        {"exit 127", importerror::CannotStart, "start"},
    };
    for (const auto& worker : workers)
    {
        SCOPED_TRACE(worker.body);
        const Failure failure = FailureWith(worker.body);
        EXPECT_EQ(failure.number, worker.number) << failure.description;
        EXPECT_NE(failure.description.find(worker.word), std::string::npos) << failure.description;
        EXPECT_LT(failure.description.size(), 5000U);
    }
}

TEST_F(Worker, one_that_writes_without_end_is_stopped_by_the_file_limit)
{
    ImportOptions options;
    options.workerPath = WriteWorker("exec cat /dev/zero >&3");
    options.memoryLimit = std::size_t{300} << 20;
    EXPECT_EQ(FailureOf(Model(), options).number, error::OutOfMemory);
}

TEST_F(Worker, what_it_leaves_running_is_ended_and_its_result_is_taken)
{
    Write("good", Capture(Model()));
    const Failure failure = FailureWith("cat '" + folder_ / "good" + "' >&3; " + WorkerWithChild());
    EXPECT_EQ(failure.number, 0) << failure.description;
    ExpectChildEnds();
}

TEST_F(Worker, one_that_is_missing_or_no_program_is_told)
{
    ImportOptions options;
    options.workerPath = folder_ / "missing";
    EXPECT_EQ(FailureOf(Model(), options).number, importerror::CannotStart);
    options.workerPath = Write("text", "no program");
    EXPECT_EQ(FailureOf(Model(), options).number, importerror::CannotStart) << "not executable";
    std::filesystem::permissions(options.workerPath, std::filesystem::perms::owner_all);
    EXPECT_EQ(FailureOf(Model(), options).number, importerror::CannotStart) << "executable, but no program";
}

TEST_F(Worker, a_host_that_ignores_its_children_still_imports)
{
    struct sigaction old
    {
    };
    struct sigaction ignore
    {
    };
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &ignore, &old);
    EXPECT_EQ(FailureOf(Model()).number, 0);
    EXPECT_EQ(FailureWith("exit 1").number, importerror::InvalidFormat);
    sigaction(SIGCHLD, &old, nullptr);
}

TEST_F(Worker, a_result_cut_anywhere_is_refused)
{
    const std::string good = Capture(Model());
    ASSERT_TRUE(IsAccepted(good));
    for (std::size_t size = 0; size < good.size(); size += 7)
        EXPECT_FALSE(IsAccepted(good.substr(0, size)));
}

TEST_F(Worker, wrong_references_in_a_result_are_refused)
{
    using namespace modelstream;
    const std::string good = Capture(Model());
    const auto header = Take<Header>(good, 0);
    const std::size_t mesh = header.meshes.offset;
    const auto row = Take<Mesh>(good, mesh);
    const std::size_t node = header.nodes.offset + sizeof(Node);
    const struct
    {
        const char* what;
        std::size_t offset;
        std::uint64_t value;
        std::size_t bytes;
    } lies[] = {
        {"version", offsetof(Header, version), 99, 4},
        {"no nodes", offsetof(Header, nodes) + 8, 0, 8},
        {"node count overflows", offsetof(Header, nodes) + 8, std::uint64_t{1} << 61, 8},
        {"crooked array", mesh + offsetof(Mesh, positions), row.positions.offset + 4, 8},
        {"count beyond the end", mesh + offsetof(Mesh, positions) + 8, good.size(), 8},
        {"too few positions", mesh + offsetof(Mesh, positions) + 8, 3, 8},
        {"normals that the list lacks", mesh + offsetof(Mesh, normals) + 8, 1, 8},
        {"face count wraps", mesh + offsetof(Mesh, faceCount), 0xFFFFFFFF, 4},
        {"material", mesh + offsetof(Mesh, material), 77, 4},
        {"name", mesh + offsetof(Mesh, name), 0xFFFFFFFF, 4},
        {"vertex index", row.faceList.offset + 4, 4, 4},
        {"corner count", row.faceList.offset, 0x7FFFFFFF, 4},
        {"no end of the list", row.faceList.offset + (row.faceList.count - 1) * 4, 3, 4},
        {"not a number", row.positions.offset, 0x7FC00000, 4},
        {"parent of itself", node + offsetof(Node, parent), 1, 4},
        {"two roots", node + offsetof(Node, parent), NoIndex, 4},
        {"more meshes than listed", node + offsetof(Node, meshCount), 2, 4},
        {"mesh that is not there", header.nodeMeshes.offset, 1, 4},
        {"infinite place", node + offsetof(Node, transform), 0x7FF0000000000000U, 8},
        {"texture that is not there", header.materials.offset + offsetof(SurfaceLook, texture), 0, 4},
    };
    for (const auto& lie : lies)
    {
        std::string bytes = good;
        std::memcpy(bytes.data() + lie.offset, &lie.value, lie.bytes);
        EXPECT_FALSE(IsAccepted(bytes)) << lie.what;
    }
}

TEST_F(Worker, arrays_named_again_and_again_are_refused)
{
    // Two meshes that share one mesh's arrays: a small result could stand for any amount of memory that way.
    using namespace modelstream;
    std::string bytes = Capture(Model());
    const auto header = Take<Header>(bytes, 0);
    const auto row = Take<Mesh>(bytes, header.meshes.offset);
    const std::size_t copies = 3;
    Put(bytes, offsetof(Header, meshes), ArrayReference{bytes.size(), copies});
    for (std::size_t i = 0; i < copies; ++i)
        bytes += Bytes(row);
    bytes.resize((bytes.size() + 63) / 64 * 64);
    Put(bytes, offsetof(Header, totalBytes), std::uint64_t{bytes.size()});
    EXPECT_FALSE(IsAccepted(bytes));
}

TEST_F(Worker, results_with_changed_bytes_never_read_outside)
{
    const std::string good = Capture(Model());
    std::minstd_rand random(99);
    int refused = 0;
    for (int round = 0; round < 20000; ++round)
    {
        std::string bytes = good;
        for (int change = 0; change < 1 + round % 3; ++change)
            bytes[(random() >> 4) % bytes.size()] = static_cast<char>(random() >> 8);
        refused += IsAccepted(bytes) ? 0 : 1;
    }
    EXPECT_GT(refused, 1000);
}

} // namespace lumora::test
