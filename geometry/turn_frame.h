// The frame shared by the right-angle turns and flips of DIBs: checks,
// the result block, the header copy; the caller supplies the pixel walk.
#pragma once

#include "platform/platform.h"

#include <algorithm>
#include <cstdint>

namespace prism {

// Source and result rows of one turn or flip, all inside their blocks.
struct TurnJob {
    const unsigned char* src;  // first stored source row
    std::uint64_t srcStride;
    unsigned char* dst;        // first stored result row
    std::uint64_t dstStride;
    std::uint32_t width;       // source width and height
    std::uint32_t height;
    int depth;
};

enum class TurnShape { kSame, kQuarter };

// The pixel walks of the turns and flips, at depths 1, 4, 8 and 24; other
// depths move nothing, leaving the zero-filled result as it is.  Move90
// turns stored rows the way that is clockwise for rows stored bottom
// first; Move270 puts source row y at result column height - y (one column
// right of the exact inverse); MoveMirror mirrors each row.
void Move90(const TurnJob& job);
void Move180(const TurnJob& job);
void Move270(const TurnJob& job);
void MoveMirror(const TurnJob& job);

// Runs `move` on a new zero-filled result of the same depth and colour
// table: 40-byte header and table copied as they stand, the result's rows,
// and 4 spare bytes behind them.  A quarter turn swaps width and height and
// sets biSizeImage; other turns leave every header field alone.
// Returns 0, touching no error code, for a null, unlockable or too-small
// block, a core header, negative sizes, planes other than 1, or a result
// that cannot be allocated.
HDIB TurnDib(HDIB dib, TurnShape shape, void (*move)(const TurnJob&));

// Copy of the pixel at column sx of a source row to column dx of a result
// row, by depth; the same effect as DibPixelCopy on a zero-filled result,
// without a call and a switch per pixel.  The result is zero-filled, so a
// nibble is ORed in.
struct Pixel4 {
    static void Copy(const unsigned char* s, std::uint64_t sx, unsigned char* d, std::uint64_t dx) {
        const unsigned v = sx & 1 ? s[sx / 2] & 0x0F : s[sx / 2] >> 4;
        d[dx / 2] = static_cast<unsigned char>(d[dx / 2] | (dx & 1 ? v : v << 4));
    }
};
struct Pixel8 {
    static void Copy(const unsigned char* s, std::uint64_t sx, unsigned char* d, std::uint64_t dx) { d[dx] = s[sx]; }
};
struct Pixel24 {
    static void Copy(const unsigned char* s, std::uint64_t sx, unsigned char* d, std::uint64_t dx) {
        const unsigned char* from = s + 3 * sx;
        unsigned char* to = d + 3 * dx;
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }
};

// One row mirrored: source column x to result column width - 1 - x.
template <class Pixel>
inline void MirrorRow(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; ++x) Pixel::Copy(s, x, d, width - 1 - x);
}
// 8-bit and 24-bit rows take a vector kernel where the processor has one.
void MirrorRow8(const unsigned char* s, unsigned char* d, std::uint32_t width);
void MirrorRow24(const unsigned char* s, unsigned char* d, std::uint32_t width);
template <>
inline void MirrorRow<Pixel8>(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    MirrorRow8(s, d, width);
}

// One 1-bit row of `width` pixels mirrored into a zero-filled row: the
// row's bytes reversed, each byte's bits reversed, then shifted left by the
// unused bits of the last byte, which drop out.
void MirrorBitsRow(const unsigned char* s, unsigned char* d, std::uint32_t width);
template <>
inline void MirrorRow<Pixel24>(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    MirrorRow24(s, d, width);
}

}  // namespace prism
