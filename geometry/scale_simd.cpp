// Vector twins of the scalers' row kernels, in 16-bit lanes.
#include "geometry/scale_simd.h"

#if PRISM_X86
#include "core/simd_pixels.h"

#include <cstring>

#define PRISM_SSE2 __attribute__((target("sse2")))

namespace prism {

namespace {

// (w * p + 128) / 255 in each 16-bit lane, for w and p below 256: the
// quotient of any 16-bit x by 255 is the high half of x * 0x8081 shifted
// down by 7, and w * p + 128 stays below 65536.
PRISM_SSE2 inline __m128i Product(__m128i p, __m128i w) {
    const __m128i x = _mm_add_epi16(_mm_mullo_epi16(p, w), _mm_set1_epi16(128));
    return _mm_srli_epi16(_mm_mulhi_epu16(x, _mm_set1_epi16(static_cast<short>(0x8081))), 7);
}

inline unsigned Position(const unsigned char* e) { return e[0] | static_cast<unsigned>(e[1]) << 8; }

// Sums each output's four signed 16-bit products, lanes 4k..4k + 3 of
// `lo` and `hi` (outputs 0, 1 and 2, 3), with signs -, +, +, -.
PRISM_SSE2 inline __m128i CubicSums(__m128i lo, __m128i hi) {
    const __m128i signs = _mm_setr_epi16(-1, 1, 1, -1, -1, 1, 1, -1);
    const __m128i pairs = _mm_packs_epi32(_mm_madd_epi16(lo, signs), _mm_madd_epi16(hi, signs));
    return _mm_madd_epi16(pairs, _mm_set1_epi16(1));
}

// The weights of eight linear taps (entries of position, left weight,
// right weight) as 16-bit lanes, one per column.
PRISM_SSE2 inline void LinearWeights(const unsigned char* taps, __m128i* left, __m128i* right) {
    const __m128i e0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(taps));
    const __m128i e1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(taps + 16));
    const __m128i byte = _mm_set1_epi32(0xFF);
    *left = _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(e0, 16), byte), _mm_and_si128(_mm_srli_epi32(e1, 16), byte));
    *right = _mm_packs_epi32(_mm_srli_epi32(e0, 24), _mm_srli_epi32(e1, 24));
}

// Eight columns from the pixels left and right of their taps, in 16-bit
// lanes; the sum is clamped as the plain loop does.
PRISM_SSE2 inline void LinearColumns(__m128i left, __m128i right, __m128i wLeft, __m128i wRight,
                                     unsigned char* out) {
    const __m128i v = _mm_add_epi16(Product(left, wLeft), Product(right, wRight));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(v, v));
}

// Eight columns whose pixel pairs are fetched one by one.
PRISM_SSE2 inline void GatheredColumns(const unsigned char* plane, const unsigned at[8], __m128i wLeft,
                                       __m128i wRight, unsigned char* out) {
    alignas(16) std::uint16_t pixels[8];
    for (unsigned k = 0; k < 8; ++k) std::memcpy(&pixels[k], plane + at[k], 2);
    const __m128i pairs = _mm_load_si128(reinterpret_cast<const __m128i*>(pixels));
    LinearColumns(_mm_and_si128(pairs, _mm_set1_epi16(0xFF)), _mm_srli_epi16(pairs, 8), wLeft, wRight, out);
}

}  // namespace

// Eight columns per step: the two pixels under each column's tap and the
// tap's two weights in 16-bit lanes.  Every plane shares the taps, so their
// weights are read once for all planes.
PRISM_SSE2 std::uint32_t ResampleRowLinearSse2(const unsigned char* taps, const unsigned char* const planes[],
                                               unsigned char* const lines[], unsigned planeCount,
                                               std::uint32_t count) {
    std::uint32_t i = 0;
    for (; i + 8 <= count; i += 8, taps += 32) {
        __m128i wLeft, wRight;
        LinearWeights(taps, &wLeft, &wRight);
        unsigned at[8];
        for (unsigned k = 0; k < 8; ++k) at[k] = Position(taps + 4 * k);
        for (unsigned c = 0; c < planeCount; ++c) GatheredColumns(planes[c], at, wLeft, wRight, lines[c] + i);
    }
    return i;
}

// As above, but where the pairs of eight taps lie within 16 bytes of the
// plane (any factor from about one half up) they come from one load and
// two byte shuffles, whose orders are made once for all planes.
__attribute__((target("ssse3"))) std::uint32_t ResampleRowLinearSsse3(const unsigned char* taps,
                                                                     const unsigned char* const planes[],
                                                                     unsigned char* const lines[],
                                                                     unsigned planeCount, std::uint32_t count,
                                                                     std::uint32_t readable) {
    const __m128i low16 = _mm_set1_epi32(0xFFFF);
    std::uint32_t i = 0;
    for (; i + 8 <= count; i += 8, taps += 32) {
        __m128i wLeft, wRight;
        LinearWeights(taps, &wLeft, &wRight);
        const unsigned first = Position(taps), last = Position(taps + 28);
        if (last + 2 - first > 16 || first + 16 > readable) {
            unsigned at[8];
            for (unsigned k = 0; k < 8; ++k) at[k] = Position(taps + 4 * k);
            for (unsigned c = 0; c < planeCount; ++c) GatheredColumns(planes[c], at, wLeft, wRight, lines[c] + i);
            continue;
        }
        // Lane k of the left order: the offset of column k's position from
        // `first` in its low byte, and a high byte that gives 0.
        const __m128i base = _mm_set1_epi32(static_cast<int>(first));
        const __m128i r0 = _mm_sub_epi32(_mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(taps)), low16), base);
        const __m128i r1 =
            _mm_sub_epi32(_mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(taps + 16)), low16), base);
        const __m128i leftOrder = _mm_or_si128(_mm_packs_epi32(r0, r1), _mm_set1_epi16(static_cast<short>(0x8000)));
        const __m128i rightOrder = _mm_add_epi16(leftOrder, _mm_set1_epi16(1));
        // Weights of 255 and 0 give the left pixel as it stands (every
        // column of a reduction by a whole factor).
        const __m128i whole = _mm_and_si128(_mm_cmpeq_epi16(wLeft, _mm_set1_epi16(255)),
                                            _mm_cmpeq_epi16(wRight, _mm_setzero_si128()));
        if (_mm_movemask_epi8(whole) == 0xFFFF) {
            for (unsigned c = 0; c < planeCount; ++c) {
                const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(planes[c] + first));
                const __m128i v = _mm_shuffle_epi8(bytes, leftOrder);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(lines[c] + i), _mm_packus_epi16(v, v));
            }
            continue;
        }
        for (unsigned c = 0; c < planeCount; ++c) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(planes[c] + first));
            LinearColumns(_mm_shuffle_epi8(bytes, leftOrder), _mm_shuffle_epi8(bytes, rightOrder), wLeft, wRight,
                          lines[c] + i);
        }
    }
    return i;
}

// Eight columns per step: the four pixels under each tap (from the one
// before its position) and its four weights, in 16-bit lanes.
PRISM_SSE2 std::uint32_t ResampleRowCubicSse2(const unsigned char* taps, const unsigned char* const planes[],
                                              unsigned char* const lines[], unsigned planeCount,
                                              std::uint32_t count) {
    const __m128i zero = _mm_setzero_si128();
    std::uint32_t i = 0;
    for (; i + 8 <= count; i += 8, taps += 48) {
        alignas(16) std::uint32_t weights[8];
        unsigned at[8];
        for (unsigned k = 0; k < 8; ++k) {
            at[k] = Position(taps + 6 * k);
            std::memcpy(&weights[k], taps + 6 * k + 2, 4);
        }
        __m128i w[4];
        for (unsigned h = 0; h < 2; ++h) {
            const __m128i v = _mm_load_si128(reinterpret_cast<const __m128i*>(weights + 4 * h));
            w[2 * h] = _mm_unpacklo_epi8(v, zero);
            w[2 * h + 1] = _mm_unpackhi_epi8(v, zero);
        }
        for (unsigned c = 0; c < planeCount; ++c) {
            alignas(16) std::uint32_t pixels[8];
            for (unsigned k = 0; k < 8; ++k) std::memcpy(&pixels[k], planes[c] + at[k] - 1, 4);
            __m128i sums[2];
            for (unsigned h = 0; h < 2; ++h) {
                const __m128i p = _mm_load_si128(reinterpret_cast<const __m128i*>(pixels + 4 * h));
                sums[h] = CubicSums(Product(_mm_unpacklo_epi8(p, zero), w[2 * h]),
                                    Product(_mm_unpackhi_epi8(p, zero), w[2 * h + 1]));
            }
            const __m128i v = _mm_packs_epi32(sums[0], sums[1]);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(lines[c] + i), _mm_packus_epi16(v, v));
        }
    }
    return i;
}

PRISM_SSE2 std::uint32_t BlendRowsLinearSse2(const unsigned char* line0, const unsigned char* line1,
                                             unsigned char* out, std::uint32_t count, unsigned w0, unsigned w1) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i a = _mm_set1_epi16(static_cast<short>(w0)), b = _mm_set1_epi16(static_cast<short>(w1));
    std::uint32_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line0 + i));
        const __m128i q = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line1 + i));
        const __m128i lo = _mm_add_epi16(Product(_mm_unpacklo_epi8(p, zero), a), Product(_mm_unpacklo_epi8(q, zero), b));
        const __m128i hi = _mm_add_epi16(Product(_mm_unpackhi_epi8(p, zero), a), Product(_mm_unpackhi_epi8(q, zero), b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(lo, hi));
    }
    return i;
}

PRISM_SSE2 std::uint32_t BlendRowsCubicSse2(const unsigned char* const lines[4], unsigned char* out,
                                            std::uint32_t count, const unsigned weights[4]) {
    const __m128i zero = _mm_setzero_si128();
    __m128i w[4];
    for (unsigned k = 0; k < 4; ++k) w[k] = _mm_set1_epi16(static_cast<short>(weights[k]));
    std::uint32_t i = 0;
    for (; i + 16 <= count; i += 16) {
        __m128i lo[4], hi[4];
        for (unsigned k = 0; k < 4; ++k) {
            const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lines[k] + i));
            lo[k] = Product(_mm_unpacklo_epi8(p, zero), w[k]);
            hi[k] = Product(_mm_unpackhi_epi8(p, zero), w[k]);
        }
        const __m128i l = _mm_sub_epi16(_mm_add_epi16(_mm_sub_epi16(lo[2], lo[3]), lo[1]), lo[0]);
        const __m128i h = _mm_sub_epi16(_mm_add_epi16(_mm_sub_epi16(hi[2], hi[3]), hi[1]), hi[0]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(l, h));
    }
    return i;
}

// Planes are blue, green, red, the order of a 24-bit pixel's bytes.
__attribute__((target("ssse3"))) std::uint32_t PackRow24Ssse3(const unsigned char* const planes[3],
                                                             unsigned char* row, std::uint32_t count) {
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16, row += 48) {
        __m128i bgr[3];
        for (int k = 0; k < 3; ++k) bgr[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(planes[k] + x));
        Join24(bgr, row);
    }
    return x;
}

__attribute__((target("ssse3"))) std::uint32_t UnpackRow24Ssse3(const unsigned char* row, std::uint32_t count,
                                                               unsigned char* const planes[3]) {
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16, row += 48) {
        __m128i bgr[3];
        Split24(row, bgr);
        for (int k = 0; k < 3; ++k) _mm_storeu_si128(reinterpret_cast<__m128i*>(planes[k] + x), bgr[k]);
    }
    return x;
}

}  // namespace prism
#endif
