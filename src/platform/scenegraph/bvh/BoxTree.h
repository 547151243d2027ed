// A tree of boxes, eight to a node, for the triangles of a mesh and for the visuals of a scene.
//
// Coordinates in nodes are scaled by a power of two so that all lie about within 1: Singles can then neither overflow
// nor lose what is small. Boxes are tested in single precision with margins that cover every rounding, so that a box is
// never missed; what lies in the leaves is tested in double precision.
#pragma once

#include "base/LargeArray.h"
#include "platform/scenegraph/bvh/TriangleTest.h"

#include <cstdint>
#include <optional>

namespace lumora::rays
{

/// What a lane of a node refers to: another node, or with the highest bit set what the leaf holds.
using Reference = std::uint32_t;
inline constexpr Reference LeafBit = 0x80000000;
inline constexpr Reference NoReference = 0xFFFFFFFF;

struct alignas(64) Node
{
    static constexpr int Width = 8;

    float planes[6][Width];  ///< lowest x, highest x, lowest y, ...; lowest above highest where there is nothing
    Reference child[Width];  ///< NoReference where there is nothing
    std::uint32_t parent;    ///< the node that holds this one, or NoReference
    std::uint32_t laneAbove; ///< in which of the parent's lanes

    Node();
    void SetLane(int lane, const float (&lower)[3], const float (&upper)[3]);
};

struct BoxTree
{
    LargeArray<Node> nodes;
    Reference root = NoReference;
    double scale = 1;
    DoubleBox bounds; ///< of everything in the tree, not scaled
};

/// The most boxes that wait while a tree is walked.
inline constexpr int StackSize = 384;

/// A power of two that brings `reach` to about 1.
double ScaleFor(double reach);

/// One box to put into a tree, in scaled coordinates.
struct alignas(16) BoxItem
{
    float lower[4];
    float upper[4];

    std::uint32_t Id() const;
    void SetId(std::uint32_t id); ///< below MaximumItems
};
inline constexpr std::uint32_t MaximumItems = 1U << 29;

/// A leaf to be: the items from `first` on.
struct Leaf
{
    const BoxItem* first;
    std::uint32_t count;
};

/// Builds the nodes over `items`, which get sorted, by binned surface area heuristics. `makeLeaf` is called for runs of
/// at most `leafSize` items and answers what the leaf is to be called, without the leaf bit. Time is n log n for any
/// input.
class TreeBuilder
{
public:
    using MakeLeaf = Reference (*)(void* context, const Leaf& leaf);

    TreeBuilder(LargeArray<BoxItem>& items, std::uint32_t leafSize, MakeLeaf makeLeaf, void* context)
        : items_(items), leafSize_(leafSize), makeLeaf_(makeLeaf), context_(context)
    {
    }

    /// Fills nodes and root.
    void Build(BoxTree& tree);

private:
    struct Range;
    struct Bins;
    Reference BuildRange(BoxTree& tree, const Range& range, int depth, std::uint32_t parent, std::uint32_t lane);
    Range Measured(std::uint32_t first, std::uint32_t end) const;
    void Split(const Range& range, int depth, Range& left, Range& right);
    bool SplitByBins(const Range& range, Range& left, Range& right);
    template<typename IsLeft>
    void Partition(const Range& range, IsLeft&& isLeft, Range& left, Range& right);

    LargeArray<BoxItem>& items_;
    std::uint32_t leafSize_;
    MakeLeaf makeLeaf_;
    void* context_;
};

/// A ray prepared for the boxes of a tree. It starts where the ray enters the tree's bounds; what it counts distances
/// in is the tree's own.
struct BoxRay
{
    float nearOrigin[3]; ///< margins are in the origins: a bit ahead for near planes, a bit behind for far ones
    float farOrigin[3];
    float nearInverse[3];
    float farInverse[3];
    int nearPlane[3]; ///< row of Node::planes
    int farPlane[3];
    double start; ///< the ray's distance where this one begins
    double rate;  ///< how much of this ray's distance one of the ray's is

    /// No less than the distance of anything whose ray distance is at most `distance`.
    float UpTo(double distance) const
    {
        const double scaled = (distance - start) * rate;
        return scaled < 1e30 ? static_cast<float>(std::max(scaled, 0.0) * (1 + 1e-6)) : 1e30F;
    }
    /// No more than the ray distance of anything in a box that begins at `entry`.
    double From(float entry) const { return start + entry * (1 - 1e-6) / rate; }
};

/// Nothing when the ray misses the tree's bounds, or cannot be told from one that does.
std::optional<BoxRay> Prepared(const LocalRay& ray, const BoxTree& tree);

} // namespace lumora::rays
