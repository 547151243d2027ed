// What a procedure does when one of its steps fails.
#include "base/Trap.h"

#include "hosts/headless/Errors.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace lumora
{

namespace
{

/// A step that fails `failures` times with `number` and then succeeds.
struct FlakyStep
{
    int failures;
    std::int32_t number;
    int calls = 0;

    void operator()()
    {
        if (++calls <= failures)
            throw RuntimeError{number, "step", "the step failed"};
    }
};

} // namespace

TEST(GeneralErrorHandler, sorts_error_numbers_into_three_kinds)
{
    for (const std::int32_t number : {6, 11, 16, 3075, 3077, -2005531883})
        EXPECT_EQ(GeneralErrorHandler(number), ErrorDisposition::Retry) << number;
    EXPECT_EQ(GeneralErrorHandler(32755), ErrorDisposition::Cancelled);
    for (const std::int32_t number : {3076, 91, 0, -2147221503})
        EXPECT_EQ(GeneralErrorHandler(number), ErrorDisposition::Failed) << number;
}

TEST(Trap, raises_a_lasting_failure_at_once_under_its_own_name)
{
    FlakyStep failing{1, error::ObjectNotSet};
    const RuntimeError failure = FailureOf([&] { Trap{"Viewport"}(std::ref(failing)); });
    EXPECT_EQ(failing.calls, 1);
    EXPECT_EQ(failure.Number(), error::ObjectNotSet);
    EXPECT_EQ(failure.Source(), "Viewport");
    EXPECT_EQ(failure.Description(), "the step failed");
    EXPECT_FALSE(failure.RetriesExhausted());
}

TEST(Trap, gives_up_on_an_error_that_stays_transient)
{
    FlakyStep stubborn{1000, error::DivisionByZero};
    const RuntimeError failure = FailureOf([&] { Trap{"modSweep"}(std::ref(stubborn)); });
    EXPECT_EQ(stubborn.calls, MaximumRetries + 1);
    EXPECT_EQ(failure.Number(), error::DivisionByZero);
    EXPECT_TRUE(failure.RetriesExhausted());
}

TEST(Trap, lets_foreign_exceptions_leave_as_they_came)
{
    int handled = 0;
    ContainingTrap containing{[&](const RuntimeError&) { ++handled; }};
    const auto foreign = [] { throw std::domain_error{"the host's own"}; };
    EXPECT_THROW(Trap{"Viewport"}(foreign), std::domain_error);
    EXPECT_THROW(containing(foreign), std::domain_error);
    EXPECT_THROW(SkippingTrap{}(foreign), std::domain_error);
    EXPECT_THROW(IgnoringErrors(foreign), std::domain_error);
    EXPECT_EQ(handled, 0);
}

TEST(ContainingTrap, hands_a_failure_over_once_and_goes_on)
{
    std::vector<std::int32_t> handled;
    ContainingTrap trap{[&](const RuntimeError& failure) { handled.push_back(failure.Number()); }};
    FlakyStep lasting{1, error::ObjectNotSet};
    FlakyStep transient{1, error::RMBadDevice};
    FlakyStep stubborn{1000, error::RMBadDevice};
    EXPECT_FALSE(trap(std::ref(lasting)));
    EXPECT_TRUE(trap(std::ref(transient)));
    EXPECT_FALSE(trap(std::ref(stubborn)));
    EXPECT_EQ(handled, (std::vector{error::ObjectNotSet, error::RMBadDevice}));
    EXPECT_EQ(transient.calls, 2);
    EXPECT_EQ(stubborn.calls, MaximumRetries + 1);
}

TEST(SkippingTrap, goes_on_after_a_failed_step_and_still_retries)
{
    FlakyStep lasting{1, error::ObjectNotSet};
    FlakyStep transient{2, error::Overflow};
    EXPECT_FALSE(SkippingTrap{}(std::ref(lasting)));
    EXPECT_TRUE(SkippingTrap{}(std::ref(transient)));
    EXPECT_EQ(transient.calls, 3);
}

TEST(IgnoringErrors, never_repeats_a_step)
{
    FlakyStep transient{1, error::Overflow};
    EXPECT_FALSE(IgnoringErrors(std::ref(transient)));
    EXPECT_EQ(transient.calls, 1);
}

} // namespace lumora
