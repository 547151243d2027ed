// How fast pictures are averaged down, beside how fast this machine reads as many bytes and beside OpenCV's area
// resize.
//
// Usage: averaging [--seconds s]: for each line. The three take turns, so that whatever else the machine does hits all.
#include "platform/drivers/Averaging.h"

#ifdef LUMORA_HAS_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace lumora;

struct Picture
{
    Picture(int width, int height)
        : memory(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)), view{memory.data(), width, height,
                                                                                           width}
    {
    }
    double Gigabytes() const { return static_cast<double>(memory.size()) * 4e-9; }

    std::vector<std::uint32_t> memory;
    PixelView view;
};

/// One of those that take turns, and how long its turns were.
class Contestant
{
public:
    explicit Contestant(std::function<void()> work) : work_(std::move(work)) {}

    /// The second of two runs counts: helpers are awake, as they are after drawing a picture.
    void TakeTurn()
    {
        work_();
        const auto start = std::chrono::steady_clock::now();
        work_();
        seconds_.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }

    /// A tenth of the turns were faster: the machine's other work is no part of it, nor is a lucky one.
    double Time()
    {
        const auto tenth = seconds_.begin() + static_cast<std::ptrdiff_t>(seconds_.size() / 10);
        std::ranges::nth_element(seconds_, tenth);
        return *tenth;
    }

private:
    std::function<void()> work_;
    std::vector<double> seconds_;
};

volatile std::uint32_t readResult;

/// Reads every pixel once, shared out as averaging is, and from four places at a time as memory likes it best.
void ReadAll(Crew& crew, const Picture& picture)
{
    constexpr std::size_t Lanes = 32;
    constexpr std::size_t Streams = 4;
    constexpr std::size_t StreamSize = 1 << 14;
    constexpr std::size_t UnitSize = Streams * StreamSize;
    auto read = [&](std::size_t unit, int)
    {
        std::uint32_t sums[Lanes] = {};
        for (std::size_t i = 0; i < StreamSize; i += Lanes)
            for (std::size_t stream = 0; stream < Streams; ++stream)
            {
                const std::uint32_t* const from = picture.memory.data() + unit * UnitSize + stream * StreamSize + i;
                for (std::size_t lane = 0; lane < Lanes; ++lane)
                    sums[lane] += from[lane];
            }
        std::uint32_t all = 0;
        for (const std::uint32_t sum : sums)
            all ^= sum;
        readResult = all;
    };
    crew.Run(picture.memory.size() / UnitSize, false, read); // both pictures divide evenly, or nearly so
}

#ifdef LUMORA_HAS_OPENCV

cv::Mat AsMat(const Picture& picture)
{
    return {picture.view.height, picture.view.width, CV_8UC4, picture.view.pixels};
}

void ResizeByArea(const Picture& source, const Picture& target)
{
    cv::Mat small = AsMat(target);
    cv::resize(AsMat(source), small, small.size(), 0, 0, cv::INTER_AREA);
}

/// OpenCV rounds halves its own way; anything more than one would be other work.
bool IsSameWork(const Picture& ours, const Picture& theirs)
{
    for (std::size_t i = 0; i < ours.memory.size(); ++i)
        for (int shift = 0; shift < 24; shift += 8)
            if (std::abs(static_cast<int>(ours.memory[i] >> shift & 255) -
                         static_cast<int>(theirs.memory[i] >> shift & 255)) > 1)
                return false;
    return true;
}

#endif

void Compare(int width, int height, int factor, int threads, double seconds)
{
    Picture source{width, height};
    std::mt19937 random{3}; // NOLINT: the same noise every time
    std::ranges::generate(source.memory, [&] { return static_cast<std::uint32_t>(random()); });
    Picture target{width / factor, height / factor};
    const auto crew = Crew::Of(threads);
    BlockAverager averager{crew};
    Contestant reading{[&] { ReadAll(*crew, source); }};
    Contestant averaging{[&] { averager.Average(source.view, factor, target.view); }};
    std::vector<Contestant*> contestants{&reading, &averaging};
#ifdef LUMORA_HAS_OPENCV
    cv::setNumThreads(threads);
    Picture theirs{width / factor, height / factor};
    Contestant resizing{[&] { ResizeByArea(source, theirs); }};
    contestants.push_back(&resizing);
#endif
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() < seconds)
        for (Contestant* contestant : contestants)
            contestant->TakeTurn();

    const double ours = averaging.Time();
    std::printf("%4d x %4d  by %d  %d threads  %7.3f ms  %5.1f GB/s  %4.2f of reading (%5.1f GB/s)", width, height,
                factor, threads, ours * 1e3, source.Gigabytes() / ours, reading.Time() / ours,
                source.Gigabytes() / reading.Time());
#ifdef LUMORA_HAS_OPENCV
    std::printf("  %4.2f times as fast as OpenCV%s", resizing.Time() / ours,
                IsSameWork(target, theirs) ? "" : " (whose picture differs!)");
#endif
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    double seconds = 1;
    for (int i = 1; i + 1 < argc; i += 2)
        if (std::strcmp(argv[i], "--seconds") == 0)
            seconds = std::max(0.01, std::atof(argv[i + 1]));
    for (const auto& [width, height] : {std::pair{2560, 1440}, std::pair{5120, 2880}})
        for (const int factor : {2, 4})
            for (const int threads : {1, 2})
                Compare(width, height, factor, threads, seconds);
}
