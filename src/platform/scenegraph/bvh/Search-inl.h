// The walk through a mesh's tree, over whichever tests of nodes and triangles were included before. Included inside a
// namespace, once for each instruction set.

struct Waiting
{
    Reference reference;
    float entry;
};

// Pushes the nearest of the chosen lanes last, so that it comes first.
RAYS_INLINE int PushLanes(const MeshTree& tree, const Node& node, std::uint32_t lanes, const float* entry,
                          Waiting* stack, int size)
{
    const int first = size;
    while (lanes != 0)
    {
        const int lane = std::countr_zero(lanes);
        lanes &= lanes - 1;
        const Waiting added{node.child[lane], entry[lane]};
        // What waits will mostly be looked at; by then it is there.
        if ((added.reference & LeafBit) == 0)
            __builtin_prefetch(&tree.boxes.nodes[added.reference]);
        int place = size++;
        for (; place > first && stack[place - 1].entry < added.entry; --place)
            stack[place] = stack[place - 1];
        stack[place] = added;
    }
    return size;
}

// Calls `visit` for the blocks the ray may meet within a limit that visit may lower, nearer ones mostly first.
template<typename Visit>
RAYS_INLINE void WalkTree(const MeshTree& tree, const BoxRay& boxes, float limit, Visit&& visit)
{
    Waiting stack[StackSize];
    int size = 0;
    Reference at = tree.boxes.root;
    if (at == NoReference)
        return;
    while (true)
    {
        bool descends = false;
        if ((at & LeafBit) != 0)
            limit = visit(tree.blocks[at & ~LeafBit], limit);
        else
        {
            const Node& node = tree.boxes.nodes[at];
            alignas(32) float entry[Node::Width];
            const std::uint32_t lanes = MeetNode(node, boxes, limit, entry);
            if (std::has_single_bit(lanes))
            {
                at = node.child[std::countr_zero(lanes)];
                descends = true;
            }
            else
                size = PushLanes(tree, node, lanes, entry, stack, size);
        }
        while (!descends)
        {
            if (size == 0)
                return;
            const Waiting next = stack[--size];
            at = next.reference;
            descends = next.entry <= limit;
        }
    }
}

RAYS_NOINLINE void FindNearest(const MeshTree& tree, const ShearedRay& triangles, const BoxRay& boxes,
                               TriangleHit& nearest)
{
    WalkTree(tree, boxes, boxes.UpTo(nearest.distance),
             [&](const TriangleBlock& block, float limit) RAYS_LAMBDA
             {
                 alignas(32) double distance[TriangleBlock::Width];
                 std::uint32_t met = MeetBlock(block, triangles, nearest.distance, distance);
                 if (met == 0)
                     return limit;
                 for (; met != 0; met &= met - 1)
                 {
                     const int lane = std::countr_zero(met);
                     const TriangleHit hit{distance[lane], block.triangle[lane]};
                     if (hit < nearest)
                         nearest = hit;
                 }
                 return boxes.UpTo(nearest.distance);
             });
}

RAYS_NOINLINE void FindAll(const MeshTree& tree, const ShearedRay& triangles, const BoxRay& boxes,
                           std::vector<TriangleHit>& hits)
{
    WalkTree(tree, boxes, boxes.UpTo(Missed),
             [&](const TriangleBlock& block, float limit) RAYS_LAMBDA
             {
                 alignas(32) double distance[TriangleBlock::Width];
                 for (std::uint32_t met = MeetBlock(block, triangles, Missed, distance); met != 0; met &= met - 1)
                 {
                     const int lane = std::countr_zero(met);
                     hits.push_back({distance[lane], block.triangle[lane]});
                 }
                 return limit;
             });
}

RAYS_NOINLINE std::uint32_t MeetNodeOnce(const Node& node, const BoxRay& ray, float limit, float* entry)
{
    return MeetNode(node, ray, limit, entry);
}

inline const Kernels& KernelsOfThisSet()
{
    static constexpr Kernels kernels{FindNearest, FindAll, MeetNodeOnce, FindSides};
    return kernels;
}
