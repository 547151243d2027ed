// The drivers of this library by name, for tests that each of them must pass.
#include "platform/drivers/DriversUnderTest.h"

#include "platform/drivers/ramp/RampDriver.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/drivers/rgb/RgbDriver.h"

namespace lumora::test
{

std::vector<NamedDriver> ProductionDrivers()
{
    return {{"rgb", [] { return MakeRgbDriver({}); }, false},
            {"rgb_one_thread", [] { return MakeRgbDriver({.threads = 1}); }, false},
            {"ramp", [] { return MakeRampDriver(); }, true}};
}

std::vector<NamedDriver> ColorDrivers()
{
    std::vector<NamedDriver> drivers{{"reference", [] { return MakeReferenceDriver(); }, false}};
    for (NamedDriver& driver : ProductionDrivers())
        if (!driver.isMonochrome)
            drivers.push_back(std::move(driver));
    return drivers;
}

} // namespace lumora::test
