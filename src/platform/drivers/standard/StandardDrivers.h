// The drivers that come with this library.
#pragma once

#include "platform/drivers/DriverList.h"

namespace lumora
{

/// HAL, RGB, reference and ramp, in this order, on every machine. Creating the HAL fails with DDNo3D where there is
/// no hardware for it.
std::shared_ptr<const DriverList> StandardDrivers();

} // namespace lumora
