// The error trap: what a procedure does when one of its steps fails.
//
// A step is one call on the platform or one arithmetic statement. Each procedure decides once, by the trap it
// creates, what a failure means to it; the classification of the number is the same for all.
#pragma once

#include "base/RuntimeError.h"

#include <cstdint>
#include <string>
#include <utility>

namespace lumora
{

enum class ErrorDisposition : std::int32_t
{
    Retry = 0,     ///< transient: the failing step is worth another attempt
    Cancelled = 2, ///< a person cancelled
    Failed = 3,
};

/// Classifies an error number. Pure.
ErrorDisposition GeneralErrorHandler(std::int32_t errorNumber) noexcept;

/// The text of an internal error: "Unable to create Direct3D Device" for code 2, empty for any other.
std::string GetErrorDescription(std::int32_t code);

/// How often a trap repeats a step whose error stays transient before it takes the error for failed.
inline constexpr int MaximumRetries = 3;

/// Runs `step`; repeats it while its error is transient and retries are left, then gives the error to `onFailure`.
/// What is not a RuntimeError leaves as it came.
template<typename Step, typename OnFailure>
void RunStep(Step&& step, OnFailure&& onFailure)
{
    for (int attempt = 0;; ++attempt)
    {
        try
        {
            step();
            return;
        }
        catch (const RuntimeError& failure)
        {
            const bool transient =
                !failure.RetriesExhausted() && GeneralErrorHandler(failure.Number()) == ErrorDisposition::Retry;
            if (transient && attempt < MaximumRetries)
                continue;
            onFailure(failure, transient);
            return;
        }
    }
}

/// Methods, trapped writers and private procedures: a failed step's error is raised again with this trap's source,
/// and the rest of the procedure is abandoned. The halt error keeps its own source: it is raised straight to the
/// caller, however deep the procedure was when a handler halted the control.
class Trap
{
public:
    explicit constexpr Trap(const char* source) : source_(source) {}

    template<typename Step>
    void operator()(Step&& step) const
    {
        RunStep(std::forward<Step>(step),
                [this](const RuntimeError& failure, bool exhausted)
                {
                    const std::string source = failure.Number() == error::Halted ? failure.Source() : source_;
                    throw failure.RaisedBy(source, exhausted);
                });
    }

private:
    const char* source_;
};

/// Handlers that the container calls, and persistence: a failed step is given to `onFailure` (which halts) and the
/// step answers false, so that the handler either leaves or goes on with the next step.
template<typename OnFailure>
class ContainingTrap
{
public:
    explicit ContainingTrap(OnFailure onFailure) : onFailure_(std::move(onFailure)) {}

    template<typename Step>
    bool operator()(Step&& step)
    {
        bool done = true;
        RunStep(std::forward<Step>(step),
                [&](const RuntimeError& failure, bool)
                {
                    done = false;
                    onFailure_(failure);
                });
        return done;
    }

private:
    OnFailure onFailure_;
};

/// A procedure that must run to its end: a failed step is skipped.
class SkippingTrap
{
public:
    template<typename Step>
    bool operator()(Step&& step) const
    {
        bool done = true;
        RunStep(std::forward<Step>(step), [&](const RuntimeError&, bool) { done = false; });
        return done;
    }
};

/// Runs `step` with run-time errors ignored and never classified. Answers whether it ran to its end.
template<typename Step>
bool IgnoringErrors(Step&& step)
{
    try
    {
        step();
        return true;
    }
    catch (const RuntimeError&)
    {
        return false;
    }
}

} // namespace lumora
