#include "automation/abi/Buffers.h"

#include "automation/abi/Ownership.h"
#include "base/RuntimeError.h"

#include <mutex>
#include <unordered_map>

namespace lumora::automation
{

namespace
{

static_assert(NumberBuffer::MaximumBytes == LUMORA_MAXIMUM_BUFFER);

// What a LumoraBuffer* of ours points to. Collectors of other languages clear buffers on threads of their own; what a
// buffer keeps may be a surface or a mesh, which ends on the owner's thread.
class HeldBuffer final : public LumoraBuffer, public Counted
{
public:
    explicit HeldBuffer(const NumberBuffer& numbers)
        : LumoraBuffer{numbers.data, numbers.count, static_cast<std::int32_t>(numbers.type),
                       numbers.isWritable ? LUMORA_WRITABLE : 0},
          numbers_(numbers)
    {
    }

private:
    NumberBuffer numbers_;
};

struct LiveBuffers
{
    std::mutex mutex;
    std::unordered_map<const LumoraBuffer*, HeldBuffer*> byPointer;
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
    auto* const made = new HeldBuffer{buffer};
    try
    {
        LiveBuffers& live = Live();
        const std::scoped_lock lock{live.mutex};
        live.byPointer.emplace(made, made);
    }
    catch (...)
    {
        made->Release();
        throw;
    }
    return made;
}

void FreeBuffer(LumoraBuffer* buffer) noexcept
{
    LiveBuffers& live = Live();
    std::unique_lock lock{live.mutex};
    const auto known = live.byPointer.find(buffer);
    if (known == live.byPointer.end())
        return;
    HeldBuffer* const held = known->second;
    live.byPointer.erase(known);
    lock.unlock();
    held->Release();
}

} // namespace lumora::automation
