// Vector kernels of the tone operations.
#include "tone/tone_simd.h"

#if PRISM_X86
#include "core/simd_pixels.h"

namespace prism {
namespace tone {

namespace {

// Sixteen quotients, lanes lo then hi, as bytes or as 16-bit values.
__attribute__((target("sse2"))) inline void Put16(unsigned char* d, __m128i lo, __m128i hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm_packus_epi16(lo, hi));
}
__attribute__((target("sse2"))) inline void Put16(std::int16_t* d, __m128i lo, __m128i hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), lo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 8), hi);
}

// Sixteen pixels per step: weighted sums in 16-bit lanes (at most 26 * 255)
// and their exact quotients by 26 (weighted) or 3.
template <class Out>
__attribute__((target("ssse3"))) inline std::uint32_t WeighRow24(const unsigned char* s, Out* d, std::uint32_t count,
                                                                bool weighted, int wb, int wr) {
    const int wg = weighted ? 15 : 1;
    if (!weighted) wb = wr = 1;
    const int multiplier = weighted ? 10083 : 21846, shift = weighted ? 2 : 0;  // by 26, by 3
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16) {
        __m128i sum[2];
        WeighPixels24(s + 3 * x, wb, wg, wr, sum);
        Put16(d + x, DivideLanes(sum[0], multiplier, shift), DivideLanes(sum[1], multiplier, shift));
    }
    return x;
}

}  // namespace

// Grey: (3 blue + 15 green + 8 red) / 26, or the mean.
__attribute__((target("ssse3"))) std::uint32_t GreyRow24Ssse3(const unsigned char* s, unsigned char* d,
                                                             std::uint32_t count, bool weighted) {
    return WeighRow24(s, d, count, weighted, 3, 8);
}

// Brightness: (8 blue + 15 green + 3 red) / 26, or the mean.
__attribute__((target("ssse3"))) std::uint32_t BrightnessRow24Ssse3(const unsigned char* s, std::int16_t* out,
                                                                   std::uint32_t count, bool weighted) {
    return WeighRow24(s, out, count, weighted, 8, 3);
}

bool MakeLaneDivisor(std::int64_t divisor, LaneDivisor* out) {
    *out = LaneDivisor();
    if (divisor < 1) return false;
    if (divisor == 1) return true;
    for (int s = 1; s <= 6; ++s)
        if (divisor == (std::int64_t(1) << s)) {
            out->byShift = true;
            out->shift = s;
            return true;
        }
    // Magnitudes run to 32768; a multiplier is taken only once every one of
    // them has been checked.
    for (int shift = 0; shift < 16; ++shift) {
        const std::int64_t m = ((std::int64_t(1) << (16 + shift)) + divisor - 1) / divisor;
        if (m > 0xFFFF) break;
        bool exact = true;
        for (std::int64_t a = 0; a <= 32768 && exact; ++a) exact = ((a * m) >> (16 + shift)) == a / divisor;
        if (exact) {
            out->multiplier = static_cast<int>(m);
            out->shift = shift;
            return true;
        }
    }
    return false;
}

namespace {

__attribute__((target("ssse3"))) inline __m128i Divide(__m128i v, const LaneDivisor& d) {
    if (d.byShift) return _mm_srai_epi16(v, d.shift);
    if (!d.multiplier) return v;
    const __m128i magnitude = _mm_abs_epi16(v);  // -32768 stays 0x8000, read as 32768
    const __m128i q = DivideLanes(magnitude, d.multiplier, d.shift);
    const __m128i negative = _mm_srai_epi16(v, 15);
    return _mm_sub_epi16(_mm_xor_si128(q, negative), negative);
}

}  // namespace

__attribute__((target("ssse3"))) std::uint32_t ColorOutputRowSsse3(const std::int16_t* acc, const std::int16_t* bright,
                                                                  const unsigned char* from, unsigned char* to,
                                                                  std::uint32_t count, const LaneDivisor& divisor) {
    const __m128i zero = _mm_setzero_si128();
    std::uint32_t x = 0;
    for (; x + 16 <= count; x += 16) {
        __m128i change[2];
        for (int h = 0; h < 2; ++h) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(acc + x + 8 * h));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bright + x + 8 * h));
            change[h] = _mm_sub_epi16(Divide(a, divisor), b);  // wraps in 16 bits, as the plain loop does
        }
        __m128i bgr[3];
        Split24(from + 3 * x, bgr);
        // A saturated sum clamps the same as the exact one.
        for (int c = 0; c < 3; ++c)
            bgr[c] = _mm_packus_epi16(_mm_adds_epi16(_mm_unpacklo_epi8(bgr[c], zero), change[0]),
                                      _mm_adds_epi16(_mm_unpackhi_epi8(bgr[c], zero), change[1]));
        Join24(bgr, to + 3 * x);
    }
    return x;
}

}  // namespace tone
}  // namespace prism
#endif
