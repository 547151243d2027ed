#include "platform/scenegraph/mesh/MeshCorners.h"

namespace lumora
{

bool HasTrianglesOnly(const MeshData& data)
{
    bool all = true; // no early end: this form is vectorised
    for (std::uint32_t face = 0; face < data.faceStart.size(); ++face)
        all &= data.faceStart[face] == 3 * face;
    return all;
}

VertexCorners::VertexCorners(const MeshData& data, std::span<const std::uint32_t> order)
    : start_(data.vertices.size() + 2), corners_(data.CornerCount())
{
    const auto faces = static_cast<std::uint32_t>(data.FaceCount());
    if (!HasTrianglesOnly(data))
        faceOf_.resize(data.CornerCount());
    for (const std::uint32_t vertex : data.cornerVertex)
        ++start_[vertex + 2];
    for (std::size_t vertex = 2; vertex < start_.size(); ++vertex)
        start_[vertex] += start_[vertex - 1];
    for (std::uint32_t place = 0; place < faces; ++place)
    {
        const std::uint32_t face = order.empty() ? place : order[place];
        for (std::uint32_t corner = data.faceStart[face]; corner < data.faceStart[face + 1]; ++corner)
        {
            corners_[start_[data.cornerVertex[corner] + 1]++] = corner;
            if (!faceOf_.empty())
                faceOf_[corner] = face;
        }
    }
    start_.pop_back();
}

} // namespace lumora
