#include "base/Faults.h"

#include "base/RuntimeError.h"

#include <algorithm>
#include <deque>

namespace lumora::faults
{

namespace
{

struct NamedFault
{
    std::string operation;
    int count;
    std::int32_t number;
};

struct State
{
    std::vector<NamedFault> named;
    std::int64_t callsUntilFault = -1;
    std::int32_t faultNumber = 0;
    bool recording = false;
    std::deque<std::string> recorded;
    std::uint64_t dropped = 0;
};

bool active = false;

State& TheState()
{
    static State state;
    return state;
}

[[noreturn]] void Fail(const char* operation, std::int32_t number)
{
    throw RuntimeError{number, "platform", std::string{operation} + " failed on request"};
}

void AddToRecord(const char* what)
{
    State& state = TheState();
    if (!state.recording)
        return;
    if (state.recorded.size() == MaxRecorded)
    {
        state.recorded.pop_front();
        ++state.dropped;
    }
    state.recorded.emplace_back(what);
}

void Examine(const char* operation)
{
    State& state = TheState();
    AddToRecord(operation);
    if (state.callsUntilFault >= 0 && state.callsUntilFault-- == 0)
        Fail(operation, state.faultNumber);
    const auto fault = std::ranges::find(state.named, operation, &NamedFault::operation);
    if (fault != state.named.end() && fault->count > 0)
    {
        --fault->count;
        Fail(operation, fault->number);
    }
}

} // namespace

void Point(const char* operation)
{
    if (active)
        Examine(operation);
}

void FailNext(std::string_view operation, int count, std::int32_t number)
{
    State& state = TheState();
    std::erase_if(state.named, [&](const NamedFault& fault) { return fault.operation == operation; });
    state.named.push_back({std::string{operation}, count, number});
    active = true;
}

void FailCall(std::int64_t index, std::int32_t number)
{
    TheState().callsUntilFault = index;
    TheState().faultNumber = number;
    active = true;
}

void Record()
{
    TheState().recording = true;
    TheState().recorded.clear();
    TheState().dropped = 0;
    active = true;
}

void StopRecording()
{
    TheState().recording = false;
}

void Note(const char* what)
{
    if (active)
        AddToRecord(what);
}

std::vector<std::string> Recorded()
{
    const std::deque<std::string>& recorded = TheState().recorded;
    return {recorded.begin(), recorded.end()};
}

std::uint64_t DroppedCount()
{
    return TheState().dropped;
}

void ClearFaults()
{
    TheState().named.clear();
    TheState().callsUntilFault = -1;
    active = TheState().recording;
}

void Clear()
{
    TheState() = State{};
    active = false;
}

} // namespace lumora::faults
