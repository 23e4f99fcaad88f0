// Vector kernels of the right-angle turns and flips (x86 only).
#pragma once

#include "core/simd.h"

#include <cstdint>

namespace prism {

#if PRISM_X86
// Mirrors the first pixels of a 24-bit row (result pixel x is source pixel
// width - 1 - x) and returns how many result pixels it wrote; the caller
// finishes the rest.  Reads and writes only bytes of the row's pixels.
std::uint32_t MirrorRow24Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
// The same for 8-bit rows.
std::uint32_t MirrorRow8Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
#endif

}  // namespace prism
