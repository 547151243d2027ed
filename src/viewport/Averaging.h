// Software anti-aliasing: the exact average of blocks of pixels.
#pragma once

#include "platform/drivers/PixelView.h"

namespace lumora
{

/// Averages each complete block of `factor` by `factor` pixels of `source` into one pixel of `target`: per channel the
/// sum divided by the number of samples, to nearest with halves to even. Pixels of `target` that no complete block maps
/// to are left alone. `factor` is 1 to 16.
void AverageBlocks(const PixelView& source, int factor, const PixelView& target);

} // namespace lumora
