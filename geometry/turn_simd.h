// Vector kernels of the right-angle turns and flips (x86 only).
#pragma once

#include "core/simd.h"

#include <cstdint>

namespace prism {

struct TurnJob;

#if PRISM_X86
// The clockwise 1-bit quarter turn of source rows 0..rows - 1 (a multiple
// of 16) and source bytes 0..bytes - 1 (a multiple of 16, every pixel in
// the image) by bit transposition; each result byte it covers is written
// once, the rest are left.
void Rotate90BitsSse2(const TurnJob& j, std::uint32_t rows, std::uint32_t bytes);

// Mirrors the first pixels of a 24-bit row (result pixel x is source pixel
// width - 1 - x) and returns how many result pixels it wrote; the caller
// finishes the rest.  Reads and writes only bytes of the row's pixels.
std::uint32_t MirrorRow24Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
// The same for 8-bit rows.
std::uint32_t MirrorRow8Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
#endif

}  // namespace prism
