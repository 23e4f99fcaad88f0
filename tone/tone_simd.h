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
#endif

}  // namespace tone
}  // namespace prism
