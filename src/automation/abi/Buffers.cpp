#include "automation/abi/Buffers.h"

#include "platform/automation/RuntimeError.h"

#include <mutex>
#include <unordered_map>

namespace lumora::automation
{

namespace
{

static_assert(NumberBuffer::MaximumBytes == LUMORA_MAXIMUM_BUFFER);

// What a LumoraBuffer* of ours points to. The C part comes first: the two have one address.
struct HeldBuffer
{
    LumoraBuffer interface;
    NumberBuffer numbers;
};

// Collectors of other languages clear buffers on threads of their own.
struct LiveBuffers
{
    std::mutex mutex;
    std::unordered_map<const void*, std::unique_ptr<HeldBuffer>> byPointer;
};

// Never destroyed: buffers may be cleared while the process ends.
LiveBuffers& Live()
{
    static auto& table = *new LiveBuffers;
    return table;
}

[[noreturn]] void RaiseMismatch(const std::string& what)
{
    throw RuntimeError{error::TypeMismatch, "automation", "Type mismatch: " + what};
}

} // namespace

NumberBuffer ReadBuffer(const LumoraBuffer* buffer)
{
    if (buffer == nullptr)
        RaiseMismatch("there is no buffer record");
    const auto type = static_cast<ElementType>(buffer->elementType);
    const std::size_t size = SizeOf(type);
    if (size == 0)
        RaiseMismatch("buffers have no elements of type " + std::to_string(buffer->elementType));
    if (buffer->data == nullptr && buffer->count != 0)
        RaiseMismatch("a buffer of " + std::to_string(buffer->count) + " elements has no memory");
    if (buffer->count > NumberBuffer::MaximumBytes / size)
        throw RuntimeError{error::OutOfMemory, "automation",
                           "A buffer of " + std::to_string(buffer->count) + " elements is too large: at most " +
                               std::to_string(NumberBuffer::MaximumBytes) + " bytes cross"};
    return {type, buffer->data, static_cast<std::size_t>(buffer->count), (buffer->flags & LUMORA_WRITABLE) != 0, {}};
}

LumoraBuffer* MakeBuffer(const NumberBuffer& buffer)
{
    auto held = std::make_unique<HeldBuffer>(HeldBuffer{
        {buffer.data, buffer.count, static_cast<std::int32_t>(buffer.type), buffer.isWritable ? LUMORA_WRITABLE : 0},
        buffer});
    LumoraBuffer* const made = &held->interface;
    LiveBuffers& live = Live();
    const std::lock_guard guard{live.mutex};
    live.byPointer.emplace(made, std::move(held));
    return made;
}

void FreeBuffer(LumoraBuffer* buffer) noexcept
{
    LiveBuffers& live = Live();
    decltype(live.byPointer)::node_type dying; // what it keeps goes once others may come in
    const std::lock_guard guard{live.mutex};
    dying = live.byPointer.extract(buffer);
}

} // namespace lumora::automation
