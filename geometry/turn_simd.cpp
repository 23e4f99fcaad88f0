// Vector kernels of the right-angle turns and flips; the plain twins are in
// turn_frame.h, and turn_frame.cpp picks one through the door of core/simd.h.
#include "geometry/turn_simd.h"

#if PRISM_X86
#include <tmmintrin.h>

namespace prism {

// Five pixels per step: the 15 source bytes of pixels p..p+4 are loaded
// together with the byte before them, put in mirrored pixel order by one
// shuffle and stored as 16 bytes, the last of which the next step
// overwrites.  The loop stops while a whole load and store still lie
// inside the row; the last few pixels go one by one.
__attribute__((target("ssse3"))) std::uint32_t MirrorRow24Ssse3(const unsigned char* s, unsigned char* d,
                                                                std::uint32_t width) {
    const __m128i order = _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, -128);
    std::uint32_t x = 0;
    for (; x + 6 <= width; x += 5) {
        const std::uint32_t p = width - 5 - x;
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 3 * p - 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 3 * x), _mm_shuffle_epi8(v, order));
    }
    return x;
}

// Sixteen pixels per step, reversed by one shuffle; the last few go one
// by one.
__attribute__((target("ssse3"))) std::uint32_t MirrorRow8Ssse3(const unsigned char* s, unsigned char* d,
                                                               std::uint32_t width) {
    const __m128i order = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    std::uint32_t x = 0;
    for (; x + 16 <= width; x += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + width - 16 - x));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x), _mm_shuffle_epi8(v, order));
    }
    return x;
}

}  // namespace prism
#endif
