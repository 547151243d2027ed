#include "platform/drivers/rgb/KernelSets.h"

namespace lumora
{

namespace
{

const rgb::Kernels* VectorKernels([[maybe_unused]] SimdLevel level)
{
#ifdef LUMORA_HAS_HIGHWAY
    return rgb::HighwayKernels(level);
#else
    return nullptr;
#endif
}

} // namespace

const rgb::Kernels& rgb::KernelsFor(SimdLevel level)
{
    if (level != SimdLevel::Plain)
    {
        if (const Kernels* wanted = VectorKernels(level))
            return *wanted;
        if (const Kernels* best = VectorKernels(SimdLevel::Best))
            return *best;
    }
    return PlainKernels();
}

std::vector<SimdLevel> AvailableSimdLevels()
{
    std::vector<SimdLevel> levels{SimdLevel::Plain};
    for (const SimdLevel level : {SimdLevel::Sse4, SimdLevel::Avx2, SimdLevel::Avx512, SimdLevel::Neon})
        if (VectorKernels(level) != nullptr)
            levels.push_back(level);
    return levels;
}

} // namespace lumora
