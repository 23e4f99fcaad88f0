// Vector kernels of the right-angle turns and flips; the plain twins are in
// turn_frame.h, and turn_frame.cpp picks one through the door of core/simd.h.
#include "geometry/turn_simd.h"

#include "geometry/turn_frame.h"

#if PRISM_X86
#include <tmmintrin.h>

#include <cstring>

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

// Blocks of 4 by 4 pixels: four source rows' 12 bytes widened to one
// pixel per 32-bit lane, the 4 by 4 lanes transposed, and each result
// row's four pixels narrowed back to 12 bytes and stored as 8 + 4.  Loads
// take 16 bytes, so the caller keeps 3 * x1 + 4 inside the source rows.
__attribute__((target("ssse3"))) void Turn24BlocksSsse3(const TurnJob& j, std::uint32_t x0, std::uint32_t x1,
                                                        std::uint32_t y0, std::uint32_t y1) {
    const __m128i widen = _mm_setr_epi8(0, 1, 2, -128, 3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128);
    const __m128i narrow = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -128, -128, -128, -128);
    const std::uint64_t srcStride = j.srcStride, dstStride = j.dstStride, width = j.width;
    for (std::uint32_t sy = y0; sy < y1; sy += 4) {
        const unsigned char* s = j.src + sy * srcStride;
        for (std::uint32_t sx = x0; sx < x1; sx += 4) {
            __m128i r[4];
            for (std::uint64_t k = 0; k < 4; ++k)
                r[k] = _mm_shuffle_epi8(
                    _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + k * srcStride + 3 * sx)), widen);
            const __m128i t0 = _mm_unpacklo_epi32(r[0], r[1]), t1 = _mm_unpacklo_epi32(r[2], r[3]);
            const __m128i t2 = _mm_unpackhi_epi32(r[0], r[1]), t3 = _mm_unpackhi_epi32(r[2], r[3]);
            const __m128i column[4] = {_mm_unpacklo_epi64(t0, t1), _mm_unpackhi_epi64(t0, t1),
                                       _mm_unpacklo_epi64(t2, t3), _mm_unpackhi_epi64(t2, t3)};
            for (std::uint32_t k = 0; k < 4; ++k) {
                unsigned char* d = j.dst + (width - 1 - sx - k) * dstStride + 3 * static_cast<std::uint64_t>(sy);
                const __m128i v = _mm_shuffle_epi8(column[k], narrow);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(d), v);
                const std::uint32_t tail = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(v, 8)));
                std::memcpy(d + 8, &tail, 4);
            }
        }
    }
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

// Squares of 16 rows by 16 bytes.  The rows go in from the last up, and a
// 16 by 16 byte transposition in four rounds of interleaving gives, per
// byte column, the 16 rows' bytes; each byte's top bit, gathered by
// movemask, is then one pixel column's 16 result bits, the first row's at
// bit 15.  Doubling every byte brings up the next pixel column.
__attribute__((target("sse2"))) void Rotate90BitsSse2(const TurnJob& j, std::uint32_t rows, std::uint32_t bytes) {
    // Strips of 128 result rows are finished one at a time, so the result
    // bytes a strip writes stay in cache until their lines are full.
    for (std::uint32_t i0 = 0; i0 + 16 <= bytes; i0 += 16) {
        for (std::uint32_t y0 = 0; y0 + 16 <= rows; y0 += 16) {
            unsigned char* column = j.dst + y0 / 8;
            __m128i r[16], a[16], b[16], c[16];
            for (int k = 0; k < 16; ++k)
                r[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(j.src + (y0 + 15 - k) * j.srcStride + i0));
            for (int p = 0; p < 8; ++p) {  // a[8h + p]: columns 8h.., rows 2p, 2p + 1
                a[p] = _mm_unpacklo_epi8(r[2 * p], r[2 * p + 1]);
                a[p + 8] = _mm_unpackhi_epi8(r[2 * p], r[2 * p + 1]);
            }
            for (int h = 0; h < 2; ++h)  // b[8h + 4g + q]: columns 8h + 4g.., rows 4q..
                for (int q = 0; q < 4; ++q) {
                    b[8 * h + q] = _mm_unpacklo_epi16(a[8 * h + 2 * q], a[8 * h + 2 * q + 1]);
                    b[8 * h + 4 + q] = _mm_unpackhi_epi16(a[8 * h + 2 * q], a[8 * h + 2 * q + 1]);
                }
            for (int base = 0; base < 16; base += 4)  // c[base + 2t + s]: columns base + 2t.., rows 8s..
                for (int s = 0; s < 2; ++s) {
                    c[base + s] = _mm_unpacklo_epi32(b[base + 2 * s], b[base + 2 * s + 1]);
                    c[base + 2 + s] = _mm_unpackhi_epi32(b[base + 2 * s], b[base + 2 * s + 1]);
                }
            for (int col = 0; col < 16; col += 2) {
                const __m128i pair[2] = {_mm_unpacklo_epi64(c[col], c[col + 1]),
                                         _mm_unpackhi_epi64(c[col], c[col + 1])};
                for (int e = 0; e < 2; ++e) {
                    __m128i t = pair[e];
                    const std::uint32_t x0 = 8 * (i0 + col + e);
                    for (std::uint32_t k = 0; k < 8; ++k, t = _mm_add_epi8(t, t)) {
                        const unsigned m = static_cast<unsigned>(_mm_movemask_epi8(t));
                        unsigned char* d = column + (j.width - 1 - x0 - k) * j.dstStride;
                        d[0] = static_cast<unsigned char>(m >> 8);
                        d[1] = static_cast<unsigned char>(m);
                    }
                }
            }
        }
    }
}

}  // namespace prism
#endif
