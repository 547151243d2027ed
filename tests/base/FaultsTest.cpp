// Operations that fail because a test asked them to.
#include "base/Faults.h"

#include "hosts/headless/Errors.h"

#include <gtest/gtest.h>

namespace lumora
{

TEST(Faults, hit_the_named_operation_or_the_call_with_a_number_and_then_no_more)
{
    const auto call = [](const char* operation, int count)
    {
        std::vector<std::int32_t> numbers;
        for (int i = 0; i < count; ++i)
            numbers.push_back(ErrorOf([&] { faults::Point(operation); }));
        return numbers;
    };
    faults::FailNext("Frame.SetPosition", 5, 6);
    faults::FailNext("Frame.SetPosition", 2, 91); // instead
    EXPECT_EQ(call("Frame.GetPosition", 1), (std::vector{0}));
    EXPECT_EQ(call("Frame.SetPosition", 4), (std::vector{91, 91, 0, 0}));
    faults::FailCall(2, 7);
    EXPECT_EQ(call("Any", 5), (std::vector{0, 0, 7, 0, 0}));
    faults::Record();
    call("A", 1);
    faults::Note("an event");
    call("B", 2);
    EXPECT_EQ(faults::Recorded(), (std::vector<std::string>{"A", "an event", "B", "B"}));
    faults::FailNext("B", 1, 5);
    faults::ClearFaults();
    EXPECT_EQ(call("B", static_cast<int>(faults::MaxRecorded)), std::vector(faults::MaxRecorded, 0));
    EXPECT_EQ(faults::Recorded(), std::vector<std::string>(faults::MaxRecorded, "B"));
    EXPECT_EQ(faults::DroppedCount(), 4U);
    faults::Clear();
}

} // namespace lumora
