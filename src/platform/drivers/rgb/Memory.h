// What the driver may hold in memory, as a formula of counts that everybody can check.
#pragma once

#include "platform/drivers/rgb/RgbDriver.h"

#include <algorithm>
#include <cstddef>

namespace lumora::rgb
{

/// The most of each that one batch or picture had, since buffers keep their memory for the next one.
struct WorkCounts
{
    std::size_t threads = 0;
    std::size_t tiles = 0;         ///< of 64 by 64 pixels, in the target
    std::size_t vertices = 0;      ///< of a batch
    std::size_t faces = 0;         ///< of a batch, lit as a whole
    std::size_t facings = 0;       ///< triangles of a batch whose winding lines and points ask for
    std::size_t points = 0;        ///< of a batch
    std::size_t meshVertices = 0;  ///< of the largest mesh drawn as points
    std::size_t states = 0;        ///< and parts of a batch
    std::size_t units = 0;         ///< work units and vertex tasks of a batch
    std::size_t recorded = 0;      ///< items and clears that were put off
    std::size_t passes = 0;        ///< of these
    std::size_t lights = 0;        ///< of all passes that were put off
    std::size_t meshes = 0;        ///< alive, with what was found out about them
    std::size_t meshFaces = 0;     ///< of these
    std::size_t meshGroups = 0;    ///< of these
    std::size_t meshTriangles = 0; ///< of these
    std::size_t textures = 0;
    std::size_t texels = 0; ///< of these, without mip levels

    /// Takes over what is more.
    void Include(const WorkCounts& other);
};

/// Bytes that a batch of these counts takes beside what is fixed: 64 a vertex, 32 a face, 1 a facing. What
/// RgbLimits::batchBytes limits.
std::size_t BatchBytes(const WorkCounts& counts);

/// The formula: no driver holds more.
///
///   tiles    16,641 a tile (depth 4 bytes a pixel, 256 for blocks, 1)
///   threads  33,136 a thread (the colors and depth of a tile), what one work unit may overshoot (see UnitBytes), and
///            24 a tile of the target
///   batch    64 a vertex, 32 a face, 1 a facing, 7 a point, 2 a vertex of a mesh of points
///   bins     three times RgbLimits::roundBytes: what is kept, and what a round fills with room to grow
///   sorting  once RgbLimits::roundBytes
///   lists    about 1,200 a state, 160 a unit, 1,200 a recorded item, 1,900 a pass, 200 a light
///   meshes   256 a mesh, 4 a face, about 60 a group, 16 a triangle (of meshes drawn as lines or points)
///   texels   8 a texel and 2,048 a texture (mip levels and the repeated column)
///   fixed    1 MiB
std::size_t MostBytes(const WorkCounts& counts, const RgbLimits& limits);

/// Pairs of primitive and tile after which a work unit is put off to the next round.
std::size_t MostPairs(const RgbLimits& limits);

/// The most that one work unit's bins take, with room to grow.
std::size_t UnitBytes(const WorkCounts& counts, const RgbLimits& limits);

} // namespace lumora::rgb
