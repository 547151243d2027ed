// Events: a list of handlers called in the order of connection, synchronously, with by-reference arguments.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace lumora
{

/// Identifies a connected handler; 0 is none.
using EventConnection = std::uint64_t;

/// One event of an object. `Arguments` are usually references: what a handler assigns, later handlers and the
/// object that raised the event see.
///
/// A handler may connect, disconnect (itself too), raise the same event again, or throw: an exception ends the
/// raise and leaves as it came. A handler connected during a raise is first called by the next one; one that was
/// disconnected during a raise is not called any more.
template<typename... Arguments>
class Event
{
public:
    using Handler = std::function<void(Arguments...)>;

    EventConnection Connect(Handler handler)
    {
        handlers_.push_back({++lastConnection_, std::move(handler)});
        return lastConnection_;
    }

    void Disconnect(EventConnection connection)
    {
        std::erase_if(handlers_, [=](const Entry& entry) { return entry.connection == connection; });
    }

    void Raise(Arguments... arguments)
    {
        const std::vector<Entry> atStart = handlers_;
        for (const Entry& entry : atStart)
            if (IsConnected(entry.connection))
                entry.handler(arguments...);
    }

    bool HasHandlers() const { return !handlers_.empty(); }

private:
    struct Entry
    {
        EventConnection connection;
        Handler handler;
    };

    bool IsConnected(EventConnection connection) const
    {
        return std::ranges::any_of(handlers_, [=](const Entry& entry) { return entry.connection == connection; });
    }

    std::vector<Entry> handlers_;
    EventConnection lastConnection_ = 0;
};

} // namespace lumora
