// Which thread the library belongs to, and what waits for it: everything that callers hold a count of references of.
//
// References may be added and released on any thread: garbage collectors release on whichever one they run on. All
// other calls come from one thread, the owner: that of the first call while anything is held. What another thread
// releases last ends at the owner's next call, because the end of an object may end a control.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumora::automation
{

/// Something that callers hold. It is made with one reference, on the owner's thread, and destroyed there after the
/// last reference was released.
class Counted
{
public:
    Counted();
    virtual ~Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    /// On any thread. What has no references any more and still waits for its end lives again by this.
    std::uint32_t AddReference();

    /// On any thread. On the owner's it takes what other threads released, too.
    std::uint32_t Release();

    /// On any thread: whether there are references.
    bool IsHeld() const;

private:
    friend class OwnerCall;

    std::uint32_t references_ = 1;
    bool waits_ = false;             // to be destroyed, unless it has references again by then
    Counted* nextWaiting_ = nullptr; // where it waits
};

/// A call into the library, for its length: the thread stays the owner, and what other threads released is destroyed
/// first. Calls may nest.
class OwnerCall
{
public:
    /// error::WrongThread while another thread is the owner.
    OwnerCall();
    ~OwnerCall();
    OwnerCall(const OwnerCall&) = delete;
    OwnerCall& operator=(const OwnerCall&) = delete;

    /// On any thread: destroys what waits, where this thread is the owner or there is none.
    static void DestroyReleased();
};

/// How many things are held or wait for their end. On any thread.
std::size_t LiveCount();

} // namespace lumora::automation
