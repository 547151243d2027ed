// Faults on purpose: every operation of the platform passes a named point at which it can be told to fail.
//
// Names are "Object.Operation" (for example "Frame.SetPosition", "DirectDraw.CreateSurface"). One thread, the user
// interface's, calls the platform; this state belongs to it.
#pragma once

#include <cstddef>
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

/// Starts to record the names of the operations called, and what is noted. Forgets what was recorded before.
void Record();

/// What was recorded stays.
void StopRecording();

/// Records `what` (an event, say) among the calls; it is no operation, so it never fails.
void Note(const char* what);

/// How many names are kept; of more, the oldest are dropped.
inline constexpr std::size_t MaxRecorded = 65536;

/// The names recorded since Record, in order.
std::vector<std::string> Recorded();

/// How many were recorded before those and dropped.
std::uint64_t DroppedCount();

/// Forgets every fault; recording goes on.
void ClearFaults();

/// Forgets every fault, and the record too; stops recording.
void Clear();

} // namespace lumora::faults
