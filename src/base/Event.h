// Events: a list of handlers called in the order of connection, synchronously, with by-reference arguments.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
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
        auto handlers = handlers_ ? std::make_shared<Handlers>(*handlers_) : std::make_shared<Handlers>();
        handlers->push_back({++lastConnection_, std::move(handler)});
        handlers_ = std::move(handlers);
        return lastConnection_;
    }

    void Disconnect(EventConnection connection)
    {
        if (!IsConnected(connection))
            return;
        const auto handlers = std::make_shared<Handlers>(*handlers_);
        std::erase_if(*handlers, [=](const Entry& entry) { return entry.connection == connection; });
        handlers_ = handlers;
    }

    void Raise(Arguments... arguments)
    {
        const std::shared_ptr<const Handlers> atStart = handlers_;
        if (!atStart)
            return;
        for (const Entry& entry : *atStart)
            if (IsConnected(entry.connection))
                entry.handler(arguments...);
    }

    bool HasHandlers() const { return handlers_ && !handlers_->empty(); }

private:
    struct Entry
    {
        EventConnection connection;
        Handler handler;
    };
    using Handlers = std::vector<Entry>;

    bool IsConnected(EventConnection connection) const
    {
        return handlers_ &&
               std::ranges::any_of(*handlers_, [=](const Entry& entry) { return entry.connection == connection; });
    }

    std::shared_ptr<const Handlers> handlers_; // never changed but replaced: a raise goes on with those at its start
    EventConnection lastConnection_ = 0;
};

} // namespace lumora
