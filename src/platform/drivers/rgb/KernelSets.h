// The instruction sets for which the kernels are compiled, and the choice among them.
#pragma once

#include "platform/drivers/rgb/Frame.h"
#include "platform/drivers/rgb/RgbDriver.h"

namespace lumora::rgb
{

/// The kernels of a level, or of the best one where this machine or build lacks it.
const Kernels& KernelsFor(SimdLevel level);

const Kernels& PlainKernels();

/// Those of a level through Highway (Best: the best there is), or nothing. Only in builds with LUMORA_SIMD.
const Kernels* HighwayKernels(SimdLevel level);

} // namespace lumora::rgb
