// The one door to the vector paths: which instruction sets this processor
// offers them.  PRISM_NO_SIMD=1 in the environment closes it, so every
// operation takes its plain path (the results are the same either way).
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#define PRISM_X86 1
#include <emmintrin.h>
#else
#define PRISM_X86 0
#endif

namespace prism {

struct SimdSupport {
    bool sse2 = false;   // always on x86-64; asked of the processor on 32-bit x86
    bool ssse3 = false;  // byte shuffles
};

// Read once, on first use.
const SimdSupport& Simd();

// For tests that hold the vector paths against the plain ones: replaces
// what Simd() reports, until set back.
void SetSimdForTesting(const SimdSupport& support);

}  // namespace prism
