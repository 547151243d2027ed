// The plain double-precision driver: it follows the equations of Driver.h word by word and is never optimised, so
// that the other drivers can be compared with it.
#pragma once

#include "platform/drivers/Driver.h"

#include <memory>

namespace lumora
{

struct ReferenceOptions
{
    bool monochrome = false; ///< every light is replaced by white light of its luminance
};

/// A new driver without a target.
std::unique_ptr<Driver> MakeReferenceDriver(ReferenceOptions options = {});

} // namespace lumora
