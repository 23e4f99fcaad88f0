// Vector kernels of Halftone.
#include "halftone/halftone_simd.h"

#if PRISM_X86
#include "core/simd_pixels.h"

namespace prism {

__attribute__((target("ssse3"))) std::uint32_t HalftoneGrey24Ssse3(const unsigned char* px, unsigned char* grey,
                                                                  std::uint32_t count, int brightness) {
    // Past 256 either way every grey clamps the same.
    const int b = brightness < -256 ? -256 : brightness > 256 ? 256 : brightness;
    const __m128i offset = _mm_set1_epi16(static_cast<short>(b));
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16) {
        __m128i bgr[3];
        Split24(px + 3 * x, bgr);
        // Sums up to 100 * 255 in 16-bit lanes; divided by 100 exactly.
        const __m128i lo = DivideLanes(Weigh3(bgr[0], bgr[1], bgr[2], 11, 59, 30, false), 5243, 3);
        const __m128i hi = DivideLanes(Weigh3(bgr[0], bgr[1], bgr[2], 11, 59, 30, true), 5243, 3);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(grey + x),
                         _mm_packus_epi16(_mm_add_epi16(lo, offset), _mm_add_epi16(hi, offset)));
    }
    return x;
}

__attribute__((target("sse2"))) std::uint32_t HalftoneBitsSse2(const unsigned char* grey, unsigned char* out,
                                                              std::uint32_t count, const unsigned char* screenRow) {
    const __m128i limit = screenRow ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(screenRow))
                                    : _mm_set1_epi8(static_cast<char>(128));
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16)
        PackBits16(GreaterBytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(grey + x)), limit), out + x / 8);
    return x;
}

}  // namespace prism
#endif
