#include "platform/scenegraph/bvh/MeshTree.h"

#include <limits>

namespace lumora::rays
{

namespace
{

Vector CornerOf(const DrawMesh& mesh, std::uint32_t triangle, int corner)
{
    const std::uint32_t vertex = mesh.indices[3 * std::size_t{triangle} + static_cast<std::size_t>(corner)];
    return {mesh.x[vertex], mesh.y[vertex], mesh.z[vertex]};
}

// The triangles' boxes, not scaled, and what they span.
LargeArray<BoxItem> ItemsOf(const DrawMesh& mesh, DoubleBox& bounds)
{
    LargeArray<BoxItem> items;
    items.reserve(mesh.TriangleCount());
    Box all;
    for (std::uint32_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle)
    {
        const Vector a = CornerOf(mesh, triangle, 0);
        const Vector b = CornerOf(mesh, triangle, 1);
        const Vector c = CornerOf(mesh, triangle, 2);
        if (!IsFinite(a) || !IsFinite(b) || !IsFinite(c))
            continue;
        BoxItem item{{std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y}), std::min({a.z, b.z, c.z}), 0},
                     {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y}), std::max({a.z, b.z, c.z}), 0}};
        item.SetId(triangle);
        items.push_back(item);
        all.minimum = {std::min(all.minimum.x, item.lower[0]), std::min(all.minimum.y, item.lower[1]),
                       std::min(all.minimum.z, item.lower[2])};
        all.maximum = {std::max(all.maximum.x, item.upper[0]), std::max(all.maximum.y, item.upper[1]),
                       std::max(all.maximum.z, item.upper[2])};
    }
    if (!items.empty())
        bounds = {all.minimum, all.maximum};
    return items;
}

void Scale(LargeArray<BoxItem>& items, double scale)
{
    const auto factor = static_cast<float>(scale);
    for (BoxItem& item : items)
        for (int axis = 0; axis < 3; ++axis)
        {
            item.lower[axis] *= factor;
            item.upper[axis] *= factor;
        }
}

struct LeafMaker
{
    const DrawMesh& mesh;
    LargeArray<TriangleBlock>& blocks;

    static Reference Make(void* context, const Leaf& leaf)
    {
        auto& self = *static_cast<LeafMaker*>(context);
        TriangleBlock block;
        for (std::uint32_t lane = 0; lane < TriangleBlock::Width; ++lane)
        {
            const bool isThere = lane < leaf.count;
            block.triangle[lane] = isThere ? leaf.first[lane].Id() : DrawMesh::NoFace;
            for (int corner = 0; corner < 3; ++corner)
            {
                constexpr float none = std::numeric_limits<float>::quiet_NaN();
                const Vector place =
                    isThere ? CornerOf(self.mesh, block.triangle[lane], corner) : Vector{none, none, none};
                block.corner[corner][0][lane] = place.x;
                block.corner[corner][1][lane] = place.y;
                block.corner[corner][2][lane] = place.z;
            }
        }
        self.blocks.push_back(block);
        return static_cast<Reference>(self.blocks.size() - 1);
    }
};

} // namespace

std::size_t MeshTree::ByteSize() const
{
    return boxes.nodes.size() * sizeof(Node) + blocks.size() * sizeof(TriangleBlock);
}

MeshTree BuildMeshTree(const DrawMesh& mesh)
{
    MeshTree tree;
    LargeArray<BoxItem> items = ItemsOf(mesh, tree.boxes.bounds);
    // Within what a Single's factor can be; the coordinates of the largest meshes then reach 4.
    tree.boxes.scale =
        std::clamp(ScaleFor(tree.boxes.bounds.IsEmpty() ? 1 : tree.boxes.bounds.Reach()), 0x1p-126, 0x1p126);
    Scale(items, tree.boxes.scale);
    tree.blocks.reserve(items.size() * 2 / 5 + 1);
    LeafMaker maker{mesh, tree.blocks};
    TreeBuilder{items, TriangleBlock::Width, LeafMaker::Make, &maker}.Build(tree.boxes);
    return tree;
}

} // namespace lumora::rays
