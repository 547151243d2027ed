// The driver with monochrome light: it draws as the RGB driver does and differs in the lights alone.
#include "platform/drivers/ramp/RampDriver.h"

#include "platform/drivers/rgb/RgbDriver.h"

namespace lumora
{

std::unique_ptr<Driver> MakeRampDriver()
{
    RgbOptions options;
    options.monochrome = true;
    return MakeRgbDriver(options);
}

} // namespace lumora
