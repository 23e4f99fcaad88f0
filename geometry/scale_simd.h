// Vector twins of the scalers' row kernels (x86 only).  Each handles the
// first columns of a row and returns how many it did; the plain kernel in
// scale_kernels.cpp finishes the row.  They compute the product table's
// entries, (w * p + 128) / 255, exactly instead of looking them up, and
// read and write the same bytes as the plain kernels.
#pragma once

#include "core/simd.h"

#include <cstdint>

namespace prism {

#if PRISM_X86
// Up to three planes sharing one tap table.
std::uint32_t ResampleRowLinearSse2(const unsigned char* taps, const unsigned char* const planes[],
                                    unsigned char* const lines[], unsigned planeCount, std::uint32_t count);
// The same with SSSE3; `readable` is how many bytes each plane pointer may
// be read at, guards included.
std::uint32_t ResampleRowLinearSsse3(const unsigned char* taps, const unsigned char* const planes[],
                                     unsigned char* const lines[], unsigned planeCount, std::uint32_t count,
                                     std::uint32_t readable);
std::uint32_t ResampleRowCubicSse2(const unsigned char* taps, const unsigned char* const planes[],
                                   unsigned char* const lines[], unsigned planeCount, std::uint32_t count);
std::uint32_t BlendRowsLinearSse2(const unsigned char* line0, const unsigned char* line1, unsigned char* out,
                                  std::uint32_t count, unsigned w0, unsigned w1);
std::uint32_t BlendRowsCubicSse2(const unsigned char* const lines[4], unsigned char* out, std::uint32_t count,
                                 const unsigned weights[4]);
// 24-bit rows to and from planes in blue, green, red order (SSSE3).
std::uint32_t PackRow24Ssse3(const unsigned char* const planes[3], unsigned char* row, std::uint32_t count);
std::uint32_t UnpackRow24Ssse3(const unsigned char* row, std::uint32_t count, unsigned char* const planes[3]);
#endif

}  // namespace prism
