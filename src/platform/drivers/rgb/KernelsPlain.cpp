// The kernels without vector instructions: for builds without Highway, and to test the others against.
#include "platform/drivers/rgb/KernelSets.h"
#include "platform/drivers/rgb/LineSteps.h"
#include "platform/drivers/rgb/MeshFacts.h"
#include "platform/drivers/rgb/Winding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>

#define LANES_INLINE inline
#define LANES_NOINLINE __attribute__((noinline))
#define LANES_LAMBDA

namespace lumora::rgb
{
namespace plain
{
// The order matters.
// clang-format off
#include "platform/drivers/rgb/PlainLanes-inl.h"
#include "platform/drivers/rgb/KernelParts-inl.h"
// clang-format on
} // namespace plain

const Kernels& PlainKernels()
{
    return plain::KernelsOfThisSet();
}

} // namespace lumora::rgb
