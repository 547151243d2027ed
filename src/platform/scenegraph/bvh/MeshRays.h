// Rays through one revision of a mesh: swept at first, through a tree once that has paid.
#pragma once

#include "platform/scenegraph/bvh/MeshTree.h"

#include <optional>
#include <vector>

namespace lumora::rays
{

enum class Method
{
    Automatic,
    Plain, ///< every triangle in turn
    Sweep, ///< every triangle, most of them dismissed by their corners' sides
    Tree,
};

/// What is kept of a mesh between picks. Every search gets the mesh, always the same but for materials. All methods
/// find the same hits.
class MeshRays
{
public:
    explicit MeshRays(Method method = Method::Automatic, const Kernels& kernels = BestKernels())
        : method_(method), kernels_(&kernels)
    {
    }

    /// The first hit, or one at the distance Missed.
    TriangleHit Nearest(const DrawMesh& mesh, const LocalRay& ray);

    /// Every hit, in the order of the triangles.
    std::vector<TriangleHit> All(const DrawMesh& mesh, const LocalRay& ray);

    /// Builds the tree now unless it is there.
    void Prepare(const DrawMesh& mesh);

    bool HasTree() const { return tree_.has_value(); }
    std::size_t ByteSize() const { return sides_.capacity() + (tree_ ? tree_->ByteSize() : 0); }

private:
    Method NextMethod(const DrawMesh& mesh);

    Method method_;
    const Kernels* kernels_;
    std::optional<MeshTree> tree_;
    std::vector<std::uint8_t> sides_; // of the vertices, for the sweep in work
    std::uint32_t sweeps_ = 0;
};

} // namespace lumora::rays
