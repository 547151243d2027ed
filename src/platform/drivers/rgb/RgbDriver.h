// The production software rasteriser: tiles, vector instructions and all cores.
//
// Pictures are the same to the byte for any number of threads and any level of vector instructions.
#pragma once

#include "parallel/SimdLevel.h"
#include "platform/drivers/Driver.h"

#include <memory>
#include <vector>

namespace lumora
{

/// Where the driver draws in several goes, and where it refuses. The defaults suit pictures of any kind; tests lower
/// them.
struct RgbLimits
{
    std::uint32_t batchVertices = 1U << 20;            ///< a batch that has this many takes nothing more
    std::size_t batchBytes = std::size_t{2} << 30;     ///< more for the vertices of one group of a mesh, or of all that
                                                       ///< is sorted together, raises RMBadAlloc
    std::size_t roundBytes = std::size_t{32} << 20;    ///< of primitives that were set up: then their tiles are drawn
    std::size_t textureBytes = std::size_t{256} << 20; ///< of mip levels that are kept between pictures
};

struct RgbOptions
{
    int threads = 0;         ///< that draw, the calling one among them; 0: one for each core, shared by drivers
    bool monochrome = false; ///< light colors are replaced by their luminance
    SimdLevel simd = SimdLevel::Best; ///< where the machine or the build lacks the level, Best is taken
    RgbLimits limits{};
};

/// A driver that draws what Driver.h says. Work is put off until Finish (or SetTarget); until then it keeps the meshes
/// that were drawn alive. Helper threads start with the first large picture and end with the driver.
///
/// A picture that begins with a clear of everything and goes through the stages at once does not touch the depth
/// buffer, and where it is finished by its averages (of 1, 2, 4, 8 or 16 samples each way) not the target either. What
/// was recorded is kept until the next such clear, so that both can be drawn yet: the depths when something is drawn
/// over the picture, which the driver then expects of that target.
///
/// Memory beside the pixels: 4.1 bytes a pixel for depth, up to 64 a vertex of the largest mesh (or of a million, where
/// all are smaller, or of everything that is sorted together), and 128 MiB of triangles in bins; rgb/Memory.h has the
/// whole formula, and Driver::Memory what it comes to. Errors while drawing: RMBadAlloc beyond `limits`.
std::unique_ptr<Driver> MakeRgbDriver(const RgbOptions& options = {});

/// The levels that this machine and this build have, Plain first, without Best.
std::vector<SimdLevel> AvailableSimdLevels();

} // namespace lumora
