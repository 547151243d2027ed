// The drivers that come with this library, as people and programs find them.
#include "platform/drivers/standard/StandardDrivers.h"

#include "base/RuntimeError.h"
#include "platform/drivers/ramp/RampDriver.h"
#include "platform/drivers/reference/ReferenceDriver.h"
#include "platform/drivers/rgb/RgbDriver.h"

namespace lumora
{

namespace
{

constexpr Guid HalGuid{0x84E63DE0, 0x46AA, 0x11CF, {0x81, 0x6F, 0x00, 0x00, 0xC0, 0x20, 0x15, 0x6E}};
constexpr Guid RgbGuid{0xA4665C60, 0x2673, 0x11CF, {0xA3, 0x1A, 0x00, 0xAA, 0x00, 0xB9, 0x33, 0x56}};
constexpr Guid ReferenceGuid{0x50936643, 0x13E9, 0x11D1, {0x89, 0xAA, 0x00, 0xA0, 0xC9, 0x05, 0x41, 0x29}};
constexpr Guid RampGuid{0xF2086B20, 0x259F, 0x11CF, {0xA3, 0x1A, 0x00, 0xAA, 0x00, 0xB9, 0x33, 0x56}};

std::unique_ptr<Driver> MakeHalDriver()
{
    throw RuntimeError{error::DDNo3D, "StandardDrivers",
                       "No 3D hardware was found on this machine. Choose the RGB driver, which needs none."};
}

} // namespace

std::shared_ptr<const DriverList> StandardDrivers()
{
    static const auto list = std::make_shared<const DriverList>(std::vector<DriverList::Entry>{
        {drivername::HAL, HalGuid, "Hardware", "Draws with the 3D hardware of this machine", MakeHalDriver},
        {drivername::RGB, RgbGuid, "RGB Software", "Draws on all processor cores with colored light",
         [] { return MakeRgbDriver({}); }},
        {drivername::Reference, ReferenceGuid, "Reference Software",
         "Draws slowly in double precision, to compare other drivers with", [] { return MakeReferenceDriver(); }},
        {drivername::Ramp, RampGuid, "Ramp Software", "Draws on all processor cores with monochrome light",
         MakeRampDriver}});
    return list;
}

} // namespace lumora
