// Faults on purpose: every operation of the platform passes a named point at which it can be told to fail.
//
// Names are "Object.Operation" (for example "Frame.SetPosition", "DirectDraw.CreateSurface"). One thread, the user
// interface's, calls the platform; this state belongs to it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumora::faults
{

/// Called at the start of every platform operation, before it changes anything. Costs one load while no fault is set.
void Point(const char* operation);

/// Lets the next `count` calls of `operation` raise `number`. A later call for the same operation replaces it.
void FailNext(std::string_view operation, int count, std::int32_t number);

/// Lets the call number `index` (0 is the next one), whatever its operation, raise `number`; once.
void FailCall(std::int64_t index, std::int32_t number);

/// Starts to count and to record the names of the operations called.
void Record();

/// The names recorded since Record, in order of the calls.
std::vector<std::string> Recorded();

/// Forgets every fault and stops recording.
void Clear();

} // namespace lumora::faults
