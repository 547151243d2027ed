// Buffers as they cross the binary interface: a caller's for the length of a call, the library's until they are
// cleared.
#pragma once

#include "LumoraViewport.h"
#include "base/NumberBuffer.h"

namespace lumora::automation
{

/// A caller's buffer, whose memory stays the caller's. Error 13 for no record, for an unknown element type and for a
/// count without memory; error 7 for more than LUMORA_MAXIMUM_BUFFER bytes.
NumberBuffer ReadBuffer(const LumoraBuffer* buffer);

/// A record of the receiver's own; the memory stays as long as it. On the owner's thread, which stays the owner while
/// the record is held.
LumoraBuffer* MakeBuffer(const NumberBuffer& buffer);

/// Frees a record that MakeBuffer made, on any thread: what the buffer keeps ends on the owner's. Any other pointer is
/// left alone, without being looked into.
void FreeBuffer(LumoraBuffer* buffer) noexcept;

} // namespace lumora::automation
