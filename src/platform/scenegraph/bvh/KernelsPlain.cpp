// The tests without vector instructions: for builds without Highway, and to test the others against.
#include "platform/scenegraph/bvh/MeshTree.h"

#include <bit>

#define RAYS_INLINE inline
#define RAYS_NOINLINE __attribute__((noinline))
#define RAYS_LAMBDA

namespace lumora::rays
{
namespace
{

inline std::uint32_t MeetNode(const Node& node, const BoxRay& ray, float limit, float* entry)
{
    float exit[Node::Width];
    for (int lane = 0; lane < Node::Width; ++lane)
    {
        entry[lane] = 0;
        exit[lane] = limit;
    }
    for (int axis = 0; axis < 3; ++axis)
    {
        const float* near = node.planes[ray.nearPlane[axis]];
        const float* far = node.planes[ray.farPlane[axis]];
        for (int lane = 0; lane < Node::Width; ++lane)
        {
            const float first = (near[lane] - ray.nearOrigin[axis]) * ray.nearInverse[axis];
            const float last = (far[lane] - ray.farOrigin[axis]) * ray.farInverse[axis];
            entry[lane] = entry[lane] > first ? entry[lane] : first;
            exit[lane] = exit[lane] < last ? exit[lane] : last;
        }
    }
    std::uint32_t lanes = 0;
    for (int lane = 0; lane < Node::Width; ++lane)
        lanes |= (entry[lane] <= exit[lane] ? 1U : 0U) << lane;
    return lanes;
}

inline std::uint32_t MeetBlock(const TriangleBlock& block, const ShearedRay& ray, double limit, double* distance)
{
    std::uint32_t met = 0;
    for (int lane = 0; lane < TriangleBlock::Width; ++lane)
    {
        float corners[3][3];
        for (int corner = 0; corner < 3; ++corner)
            for (int axis = 0; axis < 3; ++axis)
                corners[corner][axis] = block.corner[corner][axis][lane];
        distance[lane] = MeetsTriangle(ray, corners[0], corners[1], corners[2], limit);
        met |= (distance[lane] < Missed ? 1U : 0U) << lane;
    }
    return met;
}

void FindSides(const float* x, const float* y, const float* z, std::size_t count, const SideTest& test,
               std::uint8_t* sides)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        const float px = x[i] * test.alongX[0] + y[i] * test.alongX[1] + z[i] * test.alongX[2] + test.offsetX;
        const float py = x[i] * test.alongY[0] + y[i] * test.alongY[1] + z[i] * test.alongY[2] + test.offsetY;
        const float values[4] = {px, py, px + py, px - py};
        unsigned bits = 0;
        for (int side = 0; side < 4; ++side)
            bits |= (values[side] > test.margin ? 1U : 0U) << side | (values[side] < -test.margin ? 16U : 0U) << side;
        sides[i] = static_cast<std::uint8_t>(bits);
    }
}

#include "platform/scenegraph/bvh/Search-inl.h"

} // namespace

const Kernels& PlainKernels()
{
    return KernelsOfThisSet();
}

#ifndef LUMORA_HAS_HIGHWAY
const Kernels& BestKernels()
{
    return PlainKernels();
}
#endif

} // namespace lumora::rays
