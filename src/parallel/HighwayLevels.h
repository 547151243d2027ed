// The instruction sets that Highway compiles kernels for. Comes before its own headers.
#pragma once

// Levels that would hardly differ from another, or whose vectors cannot be members of a structure. Sanitizers take long
// to compile each level, and what they find in one they find in all: they get AVX2 alone.
#define LUMORA_UNUSED_LEVELS (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#ifdef LUMORA_ONE_SIMD_LEVEL
#define HWY_DISABLED_TARGETS (LUMORA_UNUSED_LEVELS | HWY_AVX3 | HWY_SSE4)
#else
#define HWY_DISABLED_TARGETS LUMORA_UNUSED_LEVELS
#endif
