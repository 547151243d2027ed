#include "properties/DeviceNames.h"

#include "platform/drivers/DriverList.h"

namespace lumora
{

const char* DeviceGuidName(tdlDirect3DDevice Device)
{
    switch (Device)
    {
    case tdlDirect3DRampDevice:
        return drivername::Ramp;
    case tdlDirect3DRGBDevice:
        return drivername::RGB;
    case tdlDirect3DHALDevice:
        return drivername::HAL;
    case tdlDirect3DRefDevice:
        return drivername::Reference;
    }
    return drivername::Default;
}

} // namespace lumora
