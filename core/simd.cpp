// Which vector instruction sets the vector paths may use.
#include "core/simd.h"

#include <cstdlib>

namespace prism {

namespace {

SimdSupport Probe() {
    SimdSupport s;
    const char* off = std::getenv("PRISM_NO_SIMD");
    if (off && *off && *off != '0') return s;
#if PRISM_X86
    __builtin_cpu_init();
    s.sse2 = __builtin_cpu_supports("sse2");
    s.ssse3 = s.sse2 && __builtin_cpu_supports("ssse3");
#endif
    return s;
}

SimdSupport& Current() {
    static SimdSupport support = Probe();
    return support;
}

}  // namespace

const SimdSupport& Simd() { return Current(); }

void SetSimdForTesting(const SimdSupport& support) { Current() = support; }

}  // namespace prism
