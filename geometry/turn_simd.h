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

// The clockwise 24-bit quarter turn of source columns x0..x1 - 1 and rows
// y0..y1 - 1, both counts multiples of 4, with 3 * x1 + 4 at most the
// bytes of a source row's pixels.  Writes exactly the result pixels they
// map to.
void Turn24BlocksSsse3(const TurnJob& j, std::uint32_t x0, std::uint32_t x1, std::uint32_t y0, std::uint32_t y1);

// Mirrors the first pixels of a 24-bit row (result pixel x is source pixel
// width - 1 - x) and returns how many result pixels it wrote; the caller
// finishes the rest.  Reads and writes only bytes of the row's pixels.
std::uint32_t MirrorRow24Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
// The same for 8-bit rows.
std::uint32_t MirrorRow8Ssse3(const unsigned char* s, unsigned char* d, std::uint32_t width);
#endif

}  // namespace prism
