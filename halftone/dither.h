// Reduction to few levels: the row framework shared by the dithers (line
// planes, 16-bit diffusion cells, packed output planes, the fixed result
// palettes), their row kernels, and the pieces of the halftone.
#pragma once

#include "platform/platform.h"

#include <cstdint>

namespace prism {

// ---- reading source rows -----------------------------------------------------
// Rows of a locked source, read for a fixed length from a fixed start.  A
// row that runs past the end of the block is copied into a scratch row
// whose missing part reads 0, so no read ever leaves the block.
struct SourceRows {
    const unsigned char* base = nullptr;  // the locked block
    std::uint64_t blockBytes = 0;
    std::uint64_t start = 0;               // offset of row 0
    std::uint64_t stride = 0;              // step from one row to the next
    std::uint64_t length = 0;              // bytes read per row
    unsigned char* scratch = nullptr;      // `length` bytes

    const unsigned char* Row(std::int64_t y) const;
};

// The 1024 bytes of a full 256-entry colour table at header plus 40, read
// as RGBQUAD entries; bytes past the block read 0.
void ReadFullPalette(const unsigned char* block, std::uint64_t blockBytes, unsigned char out[1024]);

// ---- the dither framework -------------------------------------------------------
// Which row loop and kernel a dither runs.
enum class DitherKind { kFS, kJJN, kSmooth, kSharp };

// The whole operation behind DitherFS4, DitherJJN, DitherSmooth and
// DitherSharp: checks, codes, work blocks, rows, result.
HDIB DitherImage(HDIB dib, int bits, DitherKind kind);

// One component of the colour table for each pixel of a row.  `component`
// points at one byte of entry 0 of a full table (entries 4 bytes apart).
// D = 8: `count` pixels; D = 4: count / 2 bytes, high nibble first.
void DitherPaletteRow(const unsigned char* row, const unsigned char* component, unsigned char* out,
                      int count, int bitCount);
// `count` pixels of three bytes: blue, green, red.
void DitherSplitRGB(const unsigned char* row, unsigned char* red, unsigned char* green,
                    unsigned char* blue, int count);
// Luminance over the red row for indices first..count-1, capped at 255.
void DitherGreyRow(unsigned char* red, const unsigned char* green, const unsigned char* blue,
                   int first, int count);
// cell[x] += byte[x] for x below width, wrapping in 16 bits.
void DitherAddRow(const unsigned char* bytes, std::int16_t* cells, int width);
// cell[x] = byte[x] for x below count.
void DitherLoadRow(const unsigned char* bytes, std::int16_t* cells, int count);
// Header and fixed palette of a result of `bits` (1, 4 or 8) per pixel;
// the resolution fields are left to the caller.
void DitherBuildHeader(unsigned char* block, int bits, std::int32_t width, std::int32_t height,
                       std::uint32_t imageBytes);
// Three packed 1-bit planes into 4-bit pixels: red bit 8, green 4, blue 2.
// `planeBytes` plane bytes make one output row of 4 * planeBytes bytes.
void DitherInterleavePlanes(std::uint64_t planeBytes, std::int64_t height, std::uint64_t planeStride,
                            const unsigned char* red, const unsigned char* green,
                            const unsigned char* blue, unsigned char* out);

// Row kernels.  Cell rows may be written two cells before their start and
// after their end; callers leave room there.  Output is packed from the
// most significant bit (1-bit kernels) or one byte per pixel, 3-3-2.
void DiffuseRowFS1(std::int16_t* cur, std::int16_t* next, unsigned char* out, int width);
// cur[c], next[c]: red, green, blue.
void DiffuseRowFS8(std::int16_t* const cur[3], std::int16_t* const next[3], unsigned char* out, int width);
void DiffuseRowJJN1(std::int16_t* row0, std::int16_t* row1, std::int16_t* row2, unsigned char* out,
                    int width);
// rows[c][k]: row k of component c (red, green, blue).
void DiffuseRowJJN8(std::int16_t* const rows[3][3], unsigned char* out, int width);
// The 2-by-2 redistribution; reads and writes cells up to index `width`.
void RedistributeRow(std::int16_t* cur, std::int16_t* next, unsigned char* out, int width, bool halve);

// ---- halftone -----------------------------------------------------------------
// The whole operation behind Halftone.
HDIB HalftoneImage(HDIB dib, WORD method, int brightness, WORD* error);
// The 16-by-16 ordered screen, row by row, each value 0..255 once.
void BuildHalftoneScreen(unsigned char screen[256]);
// The diffusion kernel of the halftone on 32-bit cells.
void HalftoneDiffuseRow(std::int32_t* row0, std::int32_t* row1, std::int32_t* row2, unsigned char* out,
                        int width);

}  // namespace prism
