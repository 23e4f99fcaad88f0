// Vector kernels of the tone operations.
#include "tone/tone_simd.h"

#if PRISM_X86
#include "core/simd_pixels.h"

namespace prism {
namespace tone {

// Sixteen pixels per step, sums in 16-bit lanes (at most 26 * 255), the
// quotients exact.
__attribute__((target("ssse3"))) std::uint32_t GreyRow24Ssse3(const unsigned char* s, unsigned char* d,
                                                             std::uint32_t count, bool weighted) {
    const int wb = weighted ? 3 : 1, wg = weighted ? 15 : 1, wr = weighted ? 8 : 1;
    const int multiplier = weighted ? 10083 : 21846, shift = weighted ? 2 : 0;  // by 26, by 3
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16) {
        __m128i bgr[3];
        Split24(s + 3 * x, bgr);
        const __m128i lo = DivideLanes(Weigh3(bgr[0], bgr[1], bgr[2], wb, wg, wr, false), multiplier, shift);
        const __m128i hi = DivideLanes(Weigh3(bgr[0], bgr[1], bgr[2], wb, wg, wr, true), multiplier, shift);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x), _mm_packus_epi16(lo, hi));
    }
    return x;
}

}  // namespace tone
}  // namespace prism
#endif
