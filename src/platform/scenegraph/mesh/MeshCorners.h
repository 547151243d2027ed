// Which corners lie around each vertex, and which face each corner belongs to.
#pragma once

#include "base/LargeArray.h"
#include "platform/scenegraph/mesh/MeshData.h"

#include <span>
#include <vector>

namespace lumora
{

class VertexCorners
{
public:
    /// The corners of a vertex come in the order of the faces; of `order`, a permutation of them, where that is given.
    explicit VertexCorners(const MeshData& data, std::span<const std::uint32_t> order = {});

    std::span<const std::uint32_t> Around(std::size_t vertex) const
    {
        return std::span<const std::uint32_t>{corners_}.subspan(start_[vertex], start_[vertex + 1] - start_[vertex]);
    }

    bool AreTriangles() const { return faceOf_.empty(); }

    std::uint32_t FaceOf(std::uint32_t corner) const { return faceOf_.empty() ? corner / 3 : faceOf_[corner]; }

private:
    rays::LargeArray<std::uint32_t> start_; // of each vertex, and the end
    rays::LargeArray<std::uint32_t> corners_;
    rays::LargeArray<std::uint32_t> faceOf_; // empty when all faces are triangles
};

/// Whether every face has three corners.
bool HasTrianglesOnly(const MeshData& data);

} // namespace lumora
