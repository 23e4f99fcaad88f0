// Vector kernels of Halftone (x86 only).  Each does the first pixels of a
// row and returns how many; the plain loop finishes the row.
#pragma once

#include "core/simd.h"

#include <cstdint>

namespace prism {

#if PRISM_X86
// Grey of 24-bit pixels, (59 green + 11 blue + 30 red) / 100, plus the
// brightness offset and clamped to 0..255 (SSSE3).
std::uint32_t HalftoneGrey24Ssse3(const unsigned char* px, unsigned char* grey, std::uint32_t count,
                                  int brightness);
// Grey bytes to bits, sixteen at a time: a bit is set where the grey
// exceeds 128 (no screen) or the screen row's entry for its column.
std::uint32_t HalftoneBitsSse2(const unsigned char* grey, unsigned char* out, std::uint32_t count,
                               const unsigned char* screenRow);
#endif

}  // namespace prism
