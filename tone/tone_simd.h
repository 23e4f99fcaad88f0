// Vector kernels of the tone operations (x86 only).  Each does the first
// pixels of a row and returns how many; the plain loop finishes the row.
#pragma once

#include "core/simd.h"

#include <cstdint>

namespace prism {
namespace tone {

#if PRISM_X86
// Grey of 24-bit pixels: (3 blue + 15 green + 8 red) / 26 when weighted,
// else the mean of the three (SSSE3).
std::uint32_t GreyRow24Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t count, bool weighted);
// Brightness of 24-bit pixels as 16-bit values: (8 blue + 15 green + 3 red)
// / 26 when weighted, else the mean (SSSE3).
std::uint32_t BrightnessRow24Ssse3(const unsigned char* s, std::int16_t* out, std::uint32_t count, bool weighted);

// A division of 16-bit accumulators by the filter's divisor, in the form
// the vector kernels take: an arithmetic shift, or the quotient truncated
// toward zero as (|v| * multiplier) >> (16 + shift) with the sign put back.
struct LaneDivisor {
    bool byShift = false;
    int shift = 0;
    int multiplier = 0;  // 0 with byShift false: divisor 1
};
// The lane form of a positive divisor; false when there is none, and the
// plain loop must divide.
bool MakeLaneDivisor(std::int64_t divisor, LaneDivisor* out);
// The colour filter's last step: each accumulator divided, less the
// pixel's brightness, added to its blue, green and red, each clamped.
std::uint32_t ColorOutputRowSsse3(const std::int16_t* acc, const std::int16_t* bright, const unsigned char* from,
                                  unsigned char* to, std::uint32_t count, const LaneDivisor& divisor);
#endif

}  // namespace tone
}  // namespace prism
