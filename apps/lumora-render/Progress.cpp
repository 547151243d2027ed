// The line is rewritten in place, ten times a second at most.
#include "lumora-render/Progress.h"

#include <cmath>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace lumora::render
{

namespace
{

constexpr std::chrono::milliseconds Patience{1000};
constexpr std::chrono::milliseconds Interval{100};
constexpr const char* WipeLine = "\r\033[K";

} // namespace

Progress::Progress(std::string what) : what_(std::move(what)), toTerminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress()
{
    if (shown_)
        std::cerr << WipeLine << std::flush;
}

void Progress::Report(double fraction)
{
    const auto now = Clock::now();
    if (!toTerminal_ || now - started_ < Patience || now - lastShown_ < Interval)
        return;
    shown_ = true;
    lastShown_ = now;
    std::cerr << WipeLine << what_;
    if (fraction >= 0)
        std::cerr << ", " << std::lround(fraction * 100) << " %";
    std::cerr << std::flush;
}

} // namespace lumora::render
