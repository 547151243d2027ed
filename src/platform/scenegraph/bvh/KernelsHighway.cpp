// The tests once for each instruction set that Highway compiles for; the processor decides at run time.
#include "parallel/HighwayLevels.h"
#include "platform/scenegraph/bvh/MeshTree.h"

#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/scenegraph/bvh/KernelsHighway.cpp"
// The order matters.
// clang-format off
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#define RAYS_INLINE HWY_INLINE
#define RAYS_NOINLINE HWY_NOINLINE
#define RAYS_LAMBDA HWY_ATTR

// Highway's own emulation is left out: the plain tests do its work.
#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR
HWY_BEFORE_NAMESPACE();
namespace lumora::rays
{
namespace HWY_NAMESPACE
{

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::CappedTag<float, 8>;
using DoubleTag = hn::CappedTag<double, 4>;
using HalfTag = hn::Rebind<float, DoubleTag>; // as many Singles as there are doubles
inline constexpr FloatTag AsFloat{};
inline constexpr DoubleTag AsDouble{};
inline constexpr HalfTag AsHalf{};
inline constexpr int FloatLanes = static_cast<int>(hn::MaxLanes(FloatTag{}));
inline constexpr int DoubleLanes = static_cast<int>(hn::MaxLanes(DoubleTag{}));
using Doubles = hn::Vec<DoubleTag>;

template<typename Tag, typename Mask>
HWY_INLINE std::uint32_t BitsOf(Tag tag, Mask mask)
{
    std::uint8_t bits[8]{};
    hn::StoreMaskBits(tag, mask, bits);
    return bits[0];
}

HWY_INLINE std::uint32_t MeetNode(const Node& node, const BoxRay& ray, float limit, float* entry)
{
    std::uint32_t lanes = 0;
    for (int lane = 0; lane < Node::Width; lane += FloatLanes)
    {
        const auto first = [&](int axis) HWY_ATTR
        {
            const auto plane = hn::Load(AsFloat, node.planes[ray.nearPlane[axis]] + lane);
            return hn::Mul(hn::Sub(plane, hn::Set(AsFloat, ray.nearOrigin[axis])),
                           hn::Set(AsFloat, ray.nearInverse[axis]));
        };
        const auto last = [&](int axis) HWY_ATTR
        {
            const auto plane = hn::Load(AsFloat, node.planes[ray.farPlane[axis]] + lane);
            return hn::Mul(hn::Sub(plane, hn::Set(AsFloat, ray.farOrigin[axis])),
                           hn::Set(AsFloat, ray.farInverse[axis]));
        };
        const auto enters = hn::Max(hn::Max(first(0), first(1)), hn::Max(first(2), hn::Zero(AsFloat)));
        const auto leaves = hn::Min(hn::Min(last(0), last(1)), hn::Min(last(2), hn::Set(AsFloat, limit)));
        hn::Store(enters, AsFloat, entry + lane);
        lanes |= BitsOf(AsFloat, hn::Le(enters, leaves)) << lane;
    }
    return lanes;
}

HWY_INLINE std::uint32_t MeetBlock(const TriangleBlock& block, const ShearedRay& ray, double limit, double* distance)
{
    const auto zero = hn::Zero(AsDouble);
    const auto infinity = hn::Set(AsDouble, Missed);
    std::uint32_t met = 0;
    for (int lane = 0; lane < TriangleBlock::Width; lane += DoubleLanes)
    {
        const auto offset = [&](int corner, int axis) HWY_ATTR
        {
            const auto values = hn::LoadU(AsHalf, block.corner[corner][ray.axis[axis]] + lane);
            return hn::Sub(hn::PromoteTo(AsDouble, values), hn::Set(AsDouble, ray.origin[axis]));
        };
        const Doubles z0 = offset(0, 2);
        const Doubles z1 = offset(1, 2);
        const Doubles z2 = offset(2, 2);
        const auto shearX = hn::Set(AsDouble, ray.shearX);
        const auto shearY = hn::Set(AsDouble, ray.shearY);
        const Doubles x0 = hn::Sub(offset(0, 0), hn::Mul(shearX, z0));
        const Doubles x1 = hn::Sub(offset(1, 0), hn::Mul(shearX, z1));
        const Doubles x2 = hn::Sub(offset(2, 0), hn::Mul(shearX, z2));
        const Doubles y0 = hn::Sub(offset(0, 1), hn::Mul(shearY, z0));
        const Doubles y1 = hn::Sub(offset(1, 1), hn::Mul(shearY, z1));
        const Doubles y2 = hn::Sub(offset(2, 1), hn::Mul(shearY, z2));
        const Doubles u = hn::Sub(hn::Mul(x2, y1), hn::Mul(y2, x1));
        const Doubles v = hn::Sub(hn::Mul(x0, y2), hn::Mul(y0, x2));
        const Doubles w = hn::Sub(hn::Mul(x1, y0), hn::Mul(y1, x0));
        const auto above = hn::And(hn::And(hn::Ge(u, zero), hn::Ge(v, zero)), hn::Ge(w, zero));
        const auto below = hn::And(hn::And(hn::Le(u, zero), hn::Le(v, zero)), hn::Le(w, zero));
        auto hit = hn::Or(above, below);
        if (hn::AllFalse(AsDouble, hit))
            continue;
        const auto around = [&](Doubles a, Doubles b, Doubles c) HWY_ATTR
        {
            return hn::And(hn::Le(hn::Min(hn::Min(a, b), c), hn::Zero(AsDouble)),
                           hn::Ge(hn::Max(hn::Max(a, b), c), hn::Zero(AsDouble)));
        };
        const Doubles area = hn::Add(hn::Add(u, v), w);
        const Doubles size = hn::Abs(area);
        const Doubles weighted = hn::Add(hn::Add(hn::Mul(u, z0), hn::Mul(v, z1)), hn::Mul(w, z2));
        const Doubles t = hn::Div(weighted, hn::Mul(area, hn::Set(AsDouble, ray.lengthZ)));
        hit = hn::And(hit, hn::And(around(x0, x1, x2), around(y0, y1, y2)));
        hit = hn::And(hit, hn::And(hn::Gt(size, zero), hn::Lt(size, infinity)));
        hit = hn::And(hit, hn::And(hn::Ge(t, zero), hn::And(hn::Le(t, hn::Set(AsDouble, limit)), hn::Lt(t, infinity))));
        hn::Store(t, AsDouble, distance + lane);
        met |= BitsOf(AsDouble, hit) << lane;
    }
    return met;
}

HWY_NOINLINE void FindSides(const float* x, const float* y, const float* z, std::size_t count, const SideTest& test,
                            std::uint8_t* sides)
{
    const auto margin = hn::Set(AsFloat, test.margin);
    const auto lowest = hn::Neg(margin);
    const hn::RebindToSigned<FloatTag> asInt;
    const hn::Rebind<std::uint8_t, FloatTag> asByte;
    const auto along = [&](const float(&factor)[3], float offset, auto px, auto py, auto pz) HWY_ATTR
    {
        const auto sum = hn::MulAdd(px, hn::Set(AsFloat, factor[0]), hn::Set(AsFloat, offset));
        return hn::MulAdd(pz, hn::Set(AsFloat, factor[2]), hn::MulAdd(py, hn::Set(AsFloat, factor[1]), sum));
    };
    const auto bitsOf = [&](auto value, int above, int below) HWY_ATTR
    {
        const auto isAbove = hn::RebindMask(asInt, hn::Gt(value, margin));
        const auto isBelow = hn::RebindMask(asInt, hn::Lt(value, lowest));
        return hn::Or(hn::IfThenElseZero(isAbove, hn::Set(asInt, above)),
                      hn::IfThenElseZero(isBelow, hn::Set(asInt, below)));
    };
    const auto sidesOf = [&](const float* fromX, const float* fromY, const float* fromZ) HWY_ATTR
    {
        const auto vx = hn::LoadU(AsFloat, fromX);
        const auto vy = hn::LoadU(AsFloat, fromY);
        const auto vz = hn::LoadU(AsFloat, fromZ);
        const auto px = along(test.alongX, test.offsetX, vx, vy, vz);
        const auto py = along(test.alongY, test.offsetY, vx, vy, vz);
        const auto straight = hn::Or(bitsOf(px, 1, 16), bitsOf(py, 2, 32));
        const auto slanting = hn::Or(bitsOf(hn::Add(px, py), 4, 64), bitsOf(hn::Sub(px, py), 8, 128));
        return hn::DemoteTo(asByte, hn::Or(straight, slanting));
    };
    std::size_t i = 0;
    for (; i + FloatLanes <= count; i += FloatLanes)
        hn::StoreU(sidesOf(x + i, y + i, z + i), asByte, sides + i);
    if (i == count)
        return;
    alignas(32) float last[3][FloatLanes]{};
    std::uint8_t lastSides[FloatLanes];
    std::copy(x + i, x + count, last[0]);
    std::copy(y + i, y + count, last[1]);
    std::copy(z + i, z + count, last[2]);
    hn::StoreU(sidesOf(last[0], last[1], last[2]), asByte, lastSides);
    std::copy(lastSides, lastSides + (count - i), sides + i);
}

#include "platform/scenegraph/bvh/Search-inl.h"

} // namespace HWY_NAMESPACE
} // namespace lumora::rays
HWY_AFTER_NAMESPACE();
#endif

#undef RAYS_INLINE
#undef RAYS_NOINLINE
#undef RAYS_LAMBDA

#if HWY_ONCE
namespace lumora::rays
{

const Kernels& BestKernels()
{
    static const Kernels& best = []() -> const Kernels&
    {
        const std::int64_t supported = hwy::SupportedTargets();
        (void)supported;
#if HWY_TARGETS & HWY_AVX3
        if ((supported & HWY_AVX3) != 0)
            return N_AVX3::KernelsOfThisSet();
#endif
#if HWY_TARGETS & HWY_AVX2
        if ((supported & HWY_AVX2) != 0)
            return N_AVX2::KernelsOfThisSet();
#endif
#if HWY_TARGETS & HWY_SSE4
        if ((supported & HWY_SSE4) != 0)
            return N_SSE4::KernelsOfThisSet();
#endif
#if HWY_TARGETS & HWY_NEON
        if ((supported & HWY_NEON) != 0)
            return N_NEON::KernelsOfThisSet();
#endif
        return PlainKernels();
    }();
    return best;
}

} // namespace lumora::rays
#endif
