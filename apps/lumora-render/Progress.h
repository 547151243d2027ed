// A line on the terminal for whoever waits.
#pragma once

#include <chrono>
#include <string>

namespace lumora::render
{

/// Says on standard error how far something is, once it takes longer than a second, and only to a terminal. The line is
/// wiped when this ends.
class Progress
{
public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `fraction` is 0..1, or negative when unknown.
    void Report(double fraction);

private:
    using Clock = std::chrono::steady_clock;

    std::string what_;
    bool toTerminal_;
    bool shown_ = false;
    Clock::time_point started_ = Clock::now();
    Clock::time_point lastShown_{};
};

} // namespace lumora::render
