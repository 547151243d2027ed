// The inner loops of averaging, one set for each instruction set.
#pragma once

#include "parallel/SimdLevel.h"

#include <cstddef>
#include <cstdint>

namespace lumora::averaging
{

/// Averages `count` blocks that lie side by side; `source` is the first block's first pixel, rows are `pitch` pixels
/// apart.
using AverageRow = void (*)(const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target);

struct Kernels
{
    AverageRow two;  ///< blocks of 2 by 2
    AverageRow four; ///< blocks of 4 by 4

    /// Blocks of any size up to 16 by 16.
    void Average(int factor, const std::uint32_t* source, std::ptrdiff_t pitch, int count, std::uint32_t* target) const;
};

/// Of a level; where the machine or the build lacks it, the best there is.
Kernels KernelsFor(SimdLevel level);

/// Without vector instructions.
Kernels PlainKernels();

/// Those of a level through Highway (Best: the best there is); null functions where there is none. Only in builds with
/// LUMORA_SIMD.
Kernels HighwayKernels(SimdLevel level);

} // namespace lumora::averaging
