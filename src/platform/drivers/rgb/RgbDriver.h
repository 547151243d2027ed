// The production software rasteriser: tiles, vector instructions and all cores.
//
// Pictures are the same to the byte for any number of threads and any level of vector instructions.
#pragma once

#include "platform/drivers/Driver.h"
#include "platform/drivers/SimdLevel.h"

#include <memory>
#include <vector>

namespace lumora
{

struct RgbOptions
{
    int threads = 0;         ///< that draw, the calling one among them; 0: one for each core, shared by drivers
    bool monochrome = false; ///< light colors are replaced by their luminance
    SimdLevel simd = SimdLevel::Best; ///< where the machine or the build lacks the level, Best is taken
};

/// A driver that draws what Driver.h says. Work is put off until Finish (or SetTarget); until then it keeps the meshes
/// that were drawn alive. Helper threads start with the first large picture and end with the driver.
///
/// A picture that begins with a clear of everything, goes through the stages at once and is finished by its averages
/// (of 1, 2, 4, 8 or 16 samples each way) touches neither the target nor the depth buffer. What was recorded is kept
/// for Finish until the next such clear.
///
/// Memory beyond the pixels' depth buffer (4.1 bytes a pixel): vertices of one batch (up to 64 bytes each; a batch ends
/// once it has a million vertices, so the largest mesh decides where it has more), 32 MiB of triangles in bins and what
/// one work unit of each thread may add, mip levels (up to 256 MiB, and those of the picture being drawn), and for what
/// waits to be sorted 64 bytes a vertex and 72 bytes a triangle that may be seen.
std::unique_ptr<Driver> MakeRgbDriver(const RgbOptions& options = {});

/// The levels that this machine and this build have, Plain first, without Best.
std::vector<SimdLevel> AvailableSimdLevels();

} // namespace lumora
