// Pieces shared by the tone, filter and depth operations: header access,
// the caller's error word, and the row routines the tests reach directly.
#pragma once

#include "core/dib.h"
#include "core/errors.h"

#include <cstdint>
#include <cstring>

namespace prism {
namespace tone {

// Writes a caller's error word, when the caller gave one.
inline void SetWord(int* error, int code) {
    if (error) *error = code;
}

// The 40 header bytes of a locked block; bytes past the block's end read 0.
inline BITMAPINFOHEADER HeaderOf(const BlockLock& lock) {
    BITMAPINFOHEADER h;
    CopyHeaderBytes(lock.get(), lock.size(), &h);
    return h;
}

// The checks of the 8-bit operations, in their order: a 40-byte header
// (8), uncompressed rows (18), 8 bits a pixel (13), a width and a height
// (19).  0 when all pass.
inline int CheckGreyHeader(const BITMAPINFOHEADER& h) {
    if (h.biSize != kInfoHeaderSize) return kErrParameter;
    if (h.biCompression != 0) return kErrCompressed;
    if (h.biBitCount != 8) return kErrBitsPerPixel;
    if (h.biWidth == 0 || h.biHeight == 0) return kErrDibSize;
    return 0;
}

// Tries an allocation twice with the same size, as the image operations
// here do.
inline HGLOBAL AllocTwice(std::uint64_t bytes, UINT flags = kImageFlags) {
    HGLOBAL block = AllocBlock(bytes, flags);
    if (!block) block = AllocBlock(bytes, flags);
    return block;
}

// Do `rows` rows of `stride` bytes, the last of them `lastRowBytes` long,
// starting `offset` bytes into a block of `blockBytes`, lie inside it?
inline bool RowsInside(std::uint64_t offset, std::int64_t rows, std::uint64_t stride,
                       std::uint64_t lastRowBytes, std::uint64_t blockBytes) {
    if (rows <= 0) return offset <= blockBytes;
    std::uint64_t end = offset + static_cast<std::uint64_t>(rows - 1) * stride + lastRowBytes;
    return end <= blockBytes;
}

// Writes the 256-entry grey ramp at `at`, dropping bytes past `end`.
void WriteGreyRamp(unsigned char* at, const unsigned char* end);

// Exact quotients of the grey sums, so the pixel loops divide by table.
const unsigned char* DivideBy3Table();   // index 0..765
const unsigned char* DivideBy26Table();  // index 0..6630

// ---- 1-bit rows to grey (depth conversion) ----------------------------------
// Bits to bytes of 0 or 255; `room` bytes may be written at `dst`.
void ExpandMonoRow(const unsigned char* src, std::int64_t width, unsigned char* dst, int invert,
                   std::uint64_t room);

// Length in bytes of one accumulator row of the smoothing sweeps for a
// width, margins included; position p of a row is at offset p + kMonoLeft.
constexpr std::int64_t kMonoLeft = 8;
std::int64_t MonoAccRowBytes(std::int64_t width);

// Add kernel rows into the first rows and assign the last kernel row to
// the last row.  Rows point at position 0 (output column -4).
void SplatMonoRow3(const unsigned char* src, std::int64_t width, unsigned char* r1,
                   unsigned char* r2, unsigned char* r3, int invert);
void SplatMonoRow5(const unsigned char* src, std::int64_t width, unsigned char* r1,
                   unsigned char* r2, unsigned char* r3, unsigned char* r4, unsigned char* r5,
                   int invert);

}  // namespace tone
}  // namespace prism
