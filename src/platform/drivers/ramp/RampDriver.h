// The driver with monochrome light: every light shines white, with its own luminance.
#pragma once

#include "platform/drivers/Driver.h"

#include <memory>

namespace lumora
{

/// A new driver without a target, on all processor cores.
std::unique_ptr<Driver> MakeRampDriver();

} // namespace lumora
