// The instruction sets that vector code is compiled for.
#pragma once

namespace lumora
{

/// Which vector instructions to use. The bytes that come out are the same for all.
enum class SimdLevel
{
    Best,  ///< the best that the processor has
    Plain, ///< none beyond what the compiler uses on its own
    Sse4,
    Avx2,
    Avx512,
    Neon,
};

} // namespace lumora
