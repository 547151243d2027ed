// The drivers of this library by name, for tests that each of them must pass.
#include "platform/drivers/DriversUnderTest.h"

#include "platform/drivers/reference/ReferenceDriver.h"
#ifdef LUMORA_HAS_RGB_DRIVER
#include "platform/drivers/ramp/RampDriver.h"
#include "platform/drivers/rgb/RgbDriver.h"
#endif

namespace lumora::test
{

std::vector<NamedDriver> ProductionDrivers()
{
#ifdef LUMORA_HAS_RGB_DRIVER
    return {{"rgb", [] { return MakeRgbDriver({}); }, false},
            {"rgb_one_thread",
             []
             {
                 RgbOptions options;
                 options.threads = 1;
                 return MakeRgbDriver(options);
             },
             false},
            {"ramp", [] { return MakeRampDriver(); }, true}};
#else
    return {};
#endif
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
