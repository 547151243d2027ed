// Software anti-aliasing: the exact average of blocks of pixels.
#pragma once

#include "parallel/Crew.h"
#include "parallel/SimdLevel.h"
#include "platform/drivers/AveragingKernels.h"
#include "platform/pictures/PixelView.h"

namespace lumora
{

/// Averages pictures with the help of a crew: by default the one that has just drawn them. Allocates nothing once the
/// crew has begun.
class BlockAverager
{
public:
    static constexpr int LargestFactor = 16;

    /// Where the machine or the build lacks the level, the best one is taken.
    explicit BlockAverager(std::shared_ptr<Crew> crew = Crew::Of(0), SimdLevel simd = SimdLevel::Best);

    /// Averages each complete block of `factor` by `factor` pixels of `source` into one pixel of `target`: per channel
    /// the sum divided by the number of samples, to nearest with halves to even; the fourth byte is 0. Pixels of
    /// `target` that no complete block maps to are left alone. `factor` is 1 to LargestFactor. The two must not
    /// overlap.
    void Average(const PixelView& source, int factor, const PixelView& target);

private:
    std::shared_ptr<Crew> crew_;
    averaging::Kernels kernels_;
};

} // namespace lumora
