// Small vector helpers shared by the vector kernels of several folders:
// 24-bit pixels apart into blue, green and red, exact division of 16-bit
// lanes by a constant, and bytes to bits.  x86 only; include from vector
// kernel files.
#pragma once

#include "core/simd.h"

#if PRISM_X86
#include <tmmintrin.h>

#include <cstdint>

namespace prism {

// Shuffle orders taking 48 interleaved bytes, as three 16-byte chunks, to
// one colour's 16 bytes: kSplit24[colour][chunk][j] is where byte j of the
// colour lies in the chunk, or -128.
struct Split24Orders {
    alignas(16) signed char order[3][3][16];
    constexpr Split24Orders() : order() {
        for (int colour = 0; colour < 3; ++colour)
            for (int chunk = 0; chunk < 3; ++chunk)
                for (int j = 0; j < 16; ++j) {
                    const int from = 3 * j + colour - 16 * chunk;
                    order[colour][chunk][j] = static_cast<signed char>(from >= 0 && from < 16 ? from : -128);
                }
    }
};
inline constexpr Split24Orders kSplit24{};

// Sixteen 24-bit pixels at p (48 bytes) to their blue, green and red bytes.
__attribute__((target("ssse3"))) inline void Split24(const unsigned char* p, __m128i rgb[3]) {
    const __m128i c0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i c1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
    const __m128i c2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
    for (int colour = 0; colour < 3; ++colour) {
        const __m128i* o = reinterpret_cast<const __m128i*>(kSplit24.order[colour]);
        rgb[colour] = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, _mm_load_si128(o)),
                                                _mm_shuffle_epi8(c1, _mm_load_si128(o + 1))),
                                   _mm_shuffle_epi8(c2, _mm_load_si128(o + 2)));
    }
}

// The reverse: kJoin24[chunk][colour][j] is where byte j of the chunk lies
// in the colour's 16 bytes, or -128.
struct Join24Orders {
    alignas(16) signed char order[3][3][16];
    constexpr Join24Orders() : order() {
        for (int chunk = 0; chunk < 3; ++chunk)
            for (int colour = 0; colour < 3; ++colour)
                for (int j = 0; j < 16; ++j) {
                    const int at = 16 * chunk + j;
                    order[chunk][colour][j] = static_cast<signed char>(at % 3 == colour ? at / 3 : -128);
                }
    }
};
inline constexpr Join24Orders kJoin24{};

// Blue, green and red bytes of sixteen pixels to 48 bytes at p.
__attribute__((target("ssse3"))) inline void Join24(const __m128i rgb[3], unsigned char* p) {
    for (int chunk = 0; chunk < 3; ++chunk) {
        const __m128i* o = reinterpret_cast<const __m128i*>(kJoin24.order[chunk]);
        const __m128i v = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(rgb[0], _mm_load_si128(o)),
                                                    _mm_shuffle_epi8(rgb[1], _mm_load_si128(o + 1))),
                                       _mm_shuffle_epi8(rgb[2], _mm_load_si128(o + 2)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * chunk), v);
    }
}

// a * wa + b * wb + c * wc for the low (high = false) or high eight bytes
// of each, in 16-bit lanes; the caller keeps the sum below 65536.
__attribute__((target("sse2"))) inline __m128i Weigh3(__m128i a, __m128i b, __m128i c, int wa, int wb, int wc,
                                                      bool high) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i a16 = high ? _mm_unpackhi_epi8(a, zero) : _mm_unpacklo_epi8(a, zero);
    const __m128i b16 = high ? _mm_unpackhi_epi8(b, zero) : _mm_unpacklo_epi8(b, zero);
    const __m128i c16 = high ? _mm_unpackhi_epi8(c, zero) : _mm_unpacklo_epi8(c, zero);
    return _mm_add_epi16(_mm_add_epi16(_mm_mullo_epi16(a16, _mm_set1_epi16(static_cast<short>(wa))),
                                       _mm_mullo_epi16(b16, _mm_set1_epi16(static_cast<short>(wb)))),
                         _mm_mullo_epi16(c16, _mm_set1_epi16(static_cast<short>(wc))));
}

// Shuffle orders taking eight 24-bit pixels, which start at byte 8 * half
// of the first of two 16-byte chunks, to 16-bit lanes: kWeigh24[half][0]
// gives (blue, green) byte pairs, kWeigh24[half][1] gives (red, 0);
// [chunk] is the order applied to that chunk, -128 where the byte lies in
// the other one.
struct Weigh24Orders {
    alignas(16) signed char order[2][2][2][16];
    constexpr Weigh24Orders() : order() {
        for (int half = 0; half < 2; ++half)
            for (int kind = 0; kind < 2; ++kind)
                for (int chunk = 0; chunk < 2; ++chunk)
                    for (int j = 0; j < 16; ++j) {
                        const int pixel = j / 2, colour = kind == 0 ? j % 2 : (j % 2 ? -1 : 2);
                        const int from = 8 * half + 3 * pixel + colour - 16 * chunk;
                        const bool here = colour >= 0 && from >= 0 && from < 16;
                        order[half][kind][chunk][j] = static_cast<signed char>(here ? from : -128);
                    }
    }
};
inline constexpr Weigh24Orders kWeigh24{};

// blue * wb + green * wg + red * wr of sixteen 24-bit pixels at p (48
// bytes), pixels 0..7 in sum[0] and 8..15 in sum[1], in 16-bit lanes.  The
// weights are below 128 and each (blue, green) pair's sum stays below 32768.
__attribute__((target("ssse3"))) inline void WeighPixels24(const unsigned char* p, int wb, int wg, int wr,
                                                           __m128i sum[2]) {
    const __m128i chunk[3] = {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16)),
                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32))};
    const __m128i blueGreen = _mm_set1_epi16(static_cast<short>(wb | wg << 8));
    const __m128i red = _mm_set1_epi16(static_cast<short>(wr));
    for (int half = 0; half < 2; ++half) {
        const __m128i* bg = reinterpret_cast<const __m128i*>(kWeigh24.order[half][0]);
        const __m128i* r = reinterpret_cast<const __m128i*>(kWeigh24.order[half][1]);
        const __m128i pairs = _mm_or_si128(_mm_shuffle_epi8(chunk[half], _mm_load_si128(bg)),
                                           _mm_shuffle_epi8(chunk[half + 1], _mm_load_si128(bg + 1)));
        const __m128i reds = _mm_or_si128(_mm_shuffle_epi8(chunk[half], _mm_load_si128(r)),
                                          _mm_shuffle_epi8(chunk[half + 1], _mm_load_si128(r + 1)));
        sum[half] = _mm_add_epi16(_mm_maddubs_epi16(pairs, blueGreen), _mm_mullo_epi16(reds, red));
    }
}

// The quotient of each unsigned 16-bit lane by a constant, as
// (v * multiplier) >> (16 + shift); the pairs used are checked exhaustively
// over their ranges where they are defined.
__attribute__((target("sse2"))) inline __m128i DivideLanes(__m128i v, int multiplier, int shift) {
    return _mm_srli_epi16(_mm_mulhi_epu16(v, _mm_set1_epi16(static_cast<short>(multiplier))), shift);
}

// Sixteen bytes, each 0 or 0xFF, to two bytes of bits, the first byte's
// bit most significant, as 1-bit rows hold them.
__attribute__((target("sse2"))) inline void PackBits16(__m128i set, unsigned char* out) {
    const unsigned m = static_cast<unsigned>(_mm_movemask_epi8(set));
    auto reverse = [](unsigned v) {
        v = (v & 0xF0u) >> 4 | (v & 0x0Fu) << 4;
        v = (v & 0xCCu) >> 2 | (v & 0x33u) << 2;
        return (v & 0xAAu) >> 1 | (v & 0x55u) << 1;
    };
    out[0] = static_cast<unsigned char>(reverse(m & 0xFFu));
    out[1] = static_cast<unsigned char>(reverse(m >> 8));
}

// Unsigned a > b in each byte lane.
__attribute__((target("sse2"))) inline __m128i GreaterBytes(__m128i a, __m128i b) {
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    return _mm_cmpgt_epi8(_mm_xor_si128(a, bias), _mm_xor_si128(b, bias));
}

// Extends a run of bytes equal to v at q from c up to limit, sixteen bytes
// at a time while a whole load lies below `readable`; returns where it
// stopped (a byte that differs, the limit, or the last whole load).
__attribute__((target("sse2"))) inline std::uint32_t EqualRunSse2(const unsigned char* q, unsigned char v,
                                                                 std::uint32_t c, std::uint32_t limit,
                                                                 std::uint64_t readable) {
    const __m128i value = _mm_set1_epi8(static_cast<char>(v));
    while (c < limit && c + 16 <= readable) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q + c));
        const unsigned differ = ~static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, value))) & 0xFFFFu;
        if (differ) {
            c += static_cast<std::uint32_t>(__builtin_ctz(differ));
            return c < limit ? c : limit;
        }
        c += 16;
    }
    return c < limit ? c : limit;
}

}  // namespace prism
#endif
