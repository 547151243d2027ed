#include "platform/automation/Faults.h"

#include "platform/automation/RuntimeError.h"

#include <algorithm>

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
    std::vector<std::string> recorded;
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

void Examine(const char* operation)
{
    State& state = TheState();
    if (state.recording)
        state.recorded.emplace_back(operation);
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
    active = true;
}

std::vector<std::string> Recorded()
{
    return TheState().recorded;
}

void Clear()
{
    TheState() = State{};
    active = false;
}

} // namespace lumora::faults
