#include "automation/abi/Ownership.h"

#include "automation/Dispatch.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace lumora::automation
{

namespace
{

// Never used again after a thread's end, as the system's own numbers are.
std::uint64_t ThisThread()
{
    static std::atomic<std::uint64_t> last{0};
    thread_local const std::uint64_t number = ++last;
    return number;
}

struct Ownership
{
    std::mutex mutex; // of all that follows, and of every count of references; nothing foreign is called under it
    std::uint64_t owner = 0;
    std::size_t calls = 0; // of the owner, in progress
    std::size_t held = 0;  // with references
    std::size_t live = 0;  // held, or waiting for their end
    Counted* waiting = nullptr;

    bool IsOwnedBy(std::uint64_t thread) const { return owner == thread && (calls != 0 || held != 0); }
    bool IsFree() const { return calls == 0 && held == 0; }
};

// Never destroyed: objects may be released while the process ends.
Ownership& Shared()
{
    static auto& ownership = *new Ownership;
    return ownership;
}

} // namespace

Counted::Counted()
{
    Ownership& shared = Shared();
    const std::scoped_lock lock{shared.mutex};
    ++shared.held;
    ++shared.live;
}

std::uint32_t Counted::AddReference()
{
    Ownership& shared = Shared();
    const std::scoped_lock lock{shared.mutex};
    if (references_ == 0)
        ++shared.held;
    return ++references_;
}

std::uint32_t Counted::Release()
{
    Ownership& shared = Shared();
    std::unique_lock lock{shared.mutex};
    const bool isOwners = shared.IsOwnedBy(ThisThread());
    const std::uint32_t left = --references_;
    if (left == 0)
    {
        --shared.held;
        if (!std::exchange(waits_, true))
            nextWaiting_ = std::exchange(shared.waiting, this);
    }
    const bool anyWaits = shared.waiting != nullptr;
    lock.unlock();
    if (isOwners && anyWaits)
        OwnerCall::DestroyReleased();
    return left;
}

bool Counted::IsHeld() const
{
    const std::scoped_lock lock{Shared().mutex};
    return references_ != 0;
}

OwnerCall::OwnerCall()
{
    Ownership& shared = Shared();
    std::unique_lock lock{shared.mutex};
    if (shared.IsFree())
        shared.owner = ThisThread();
    else if (shared.owner != ThisThread())
        throw RuntimeError{error::WrongThread, "automation",
                           "Another thread owns this library: make this call on the thread that made the first one, or "
                           "release every object before this thread makes its first call"};
    ++shared.calls;
    const bool anyWaits = shared.waiting != nullptr;
    lock.unlock();
    if (anyWaits)
        DestroyReleased();
}

OwnerCall::~OwnerCall()
{
    Ownership& shared = Shared();
    const std::scoped_lock lock{shared.mutex};
    --shared.calls;
}

void OwnerCall::DestroyReleased()
{
    Ownership& shared = Shared();
    std::unique_lock lock{shared.mutex};
    if (!shared.IsFree() && shared.owner != ThisThread())
        return;
    shared.owner = ThisThread();
    ++shared.calls; // an end may call back, and no other thread may become the owner meanwhile
    while (Counted* const first = shared.waiting)
    {
        shared.waiting = std::exchange(first->nextWaiting_, nullptr);
        first->waits_ = false;
        if (first->references_ != 0)
            continue;
        lock.unlock();
        delete first;
        lock.lock();
        --shared.live;
    }
    --shared.calls;
}

std::size_t LiveCount()
{
    const std::scoped_lock lock{Shared().mutex};
    return Shared().live;
}

} // namespace lumora::automation
