// Operations that fail because a test asked them to.
#include "platform/automation/Faults.h"

#include "platform/automation/RuntimeError.h"

#include <gtest/gtest.h>

namespace lumora
{

namespace
{

class Faults : public testing::Test
{
protected:
    ~Faults() override { faults::Clear(); }

    /// The error number of each of `count` calls, 0 for those that pass.
    static std::vector<std::int32_t> Call(const char* operation, int count)
    {
        std::vector<std::int32_t> numbers;
        for (int i = 0; i < count; ++i)
            try
            {
                faults::Point(operation);
                numbers.push_back(0);
            }
            catch (const RuntimeError& failure)
            {
                numbers.push_back(failure.Number());
            }
        return numbers;
    }
};

} // namespace

TEST_F(Faults, hit_the_next_calls_of_the_named_operation_only)
{
    faults::FailNext("Frame.SetPosition", 2, 91);
    EXPECT_EQ(Call("Frame.GetPosition", 1), (std::vector{0}));
    EXPECT_EQ(Call("Frame.SetPosition", 4), (std::vector{91, 91, 0, 0}));
}

TEST_F(Faults, of_one_operation_replace_each_other)
{
    faults::FailNext("Frame.SetPosition", 5, 91);
    faults::FailNext("Frame.SetPosition", 1, 6);
    EXPECT_EQ(Call("Frame.SetPosition", 2), (std::vector{6, 0}));
}

TEST_F(Faults, hit_the_call_with_a_number_once)
{
    faults::FailCall(2, 7);
    EXPECT_EQ(Call("Any", 5), (std::vector{0, 0, 7, 0, 0}));
}

TEST_F(Faults, record_the_names_of_calls_in_order)
{
    Call("Before", 1);
    faults::Record();
    Call("A", 1);
    Call("B", 2);
    EXPECT_EQ(faults::Recorded(), (std::vector<std::string>{"A", "B", "B"}));
    faults::Clear();
    Call("C", 1);
    EXPECT_TRUE(faults::Recorded().empty());
}

} // namespace lumora
