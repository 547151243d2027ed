// Machines that lack a driver.
#include "platform/headless/DriverLists.h"

#include "platform/hosts/Errors.h"

#include <gtest/gtest.h>

namespace lumora::headless
{

namespace
{

class NoDriver : public Driver
{
public:
    void SetTarget(const PixelView&) override {}
    void Clear(ClearParts, const PixelRect&, std::uint32_t) override {}
    void Begin(const PassState&) override {}
    void Draw(const DrawItem&) override {}
    void End() override {}
    void Finish() override {}
};

const Guid HalGuid{1, 0, 0, {}};
const Guid RgbGuid{2, 0, 0, {}};

std::shared_ptr<const DriverList> Machine()
{
    const auto create = [] { return std::make_unique<NoDriver>(); };
    return std::make_shared<const DriverList>(std::vector<DriverList::Entry>{
        {drivername::HAL, HalGuid, "HAL", "hardware", create}, {drivername::RGB, RgbGuid, "RGB", "software", create}});
}

} // namespace

TEST(DriverLists, leave_out_a_driver_and_keep_the_others_working)
{
    const auto machine = WithoutDriver(Machine(), drivername::HAL);
    ASSERT_EQ(machine->Count(), 1);
    EXPECT_EQ(machine->At(0).identifierName, drivername::RGB);
    EXPECT_NE(machine->Create(RgbGuid), nullptr);
    EXPECT_EQ(ErrorOf([&] { machine->Create(HalGuid); }), error::DDInvalidParams);
}

} // namespace lumora::headless
