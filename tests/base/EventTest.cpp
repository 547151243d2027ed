// Handlers that do unusual things while they are called.
#include "base/Event.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace lumora
{

TEST(Event, calls_handlers_in_order_and_lets_each_see_what_the_last_one_wrote)
{
    Event<int&> event;
    std::string seen;
    for (int digit = 1; digit <= 3; ++digit)
        event.Connect(
            [&seen, digit](int& value)
            {
                seen += std::to_string(value) + " ";
                value = 10 * value + digit;
            });
    int value = 0;
    event.Raise(value);
    EXPECT_EQ(seen, "0 1 12 ");
    EXPECT_EQ(value, 123);
}

TEST(Event, does_not_call_a_handler_that_was_disconnected_during_the_raise)
{
    Event<> event;
    std::string seen;
    EventConnection second = 0;
    EventConnection first = 0;
    first = event.Connect(
        [&]
        {
            seen += "first ";
            event.Disconnect(second);
            event.Disconnect(first); // itself: the rest of this handler still runs
            seen += "gone ";
        });
    second = event.Connect([&] { seen += "second "; });
    event.Connect([&] { seen += "third "; });
    event.Raise();
    event.Raise();
    EXPECT_EQ(seen, "first gone third third ");
}

TEST(Event, calls_a_handler_connected_during_a_raise_from_the_next_raise_on)
{
    Event<> event;
    int calls = 0;
    bool connected = false;
    event.Connect(
        [&]
        {
            if (!std::exchange(connected, true))
                event.Connect([&] { ++calls; });
        });
    event.Raise();
    EXPECT_EQ(calls, 0);
    event.Raise();
    EXPECT_EQ(calls, 1);
}

TEST(Event, ends_a_raise_with_the_exception_of_a_handler_and_stays_usable)
{
    Event<> event;
    int later = 0;
    const EventConnection throwing = event.Connect([] { throw std::domain_error{"the host's own"}; });
    event.Connect([&] { ++later; });
    EXPECT_THROW(event.Raise(), std::domain_error);
    EXPECT_EQ(later, 0);
    event.Disconnect(throwing);
    event.Raise();
    EXPECT_EQ(later, 1);
}

} // namespace lumora
