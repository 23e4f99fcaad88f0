// RotateDIB90, RotateDIB180, RotateDIB270: turning a whole DIB by a
// multiple of 90 degrees.
#include "core/dib.h"
#include "geometry/dib_copy.h"
#include "geometry/turn_frame.h"
#include "geometry/turn_simd.h"
#include "platform/export.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace {

inline unsigned ReverseBits(unsigned char b) {
    unsigned v = b;
    v = (v & 0xF0u) >> 4 | (v & 0x0Fu) << 4;
    v = (v & 0xCCu) >> 2 | (v & 0x33u) << 2;
    return (v & 0xAAu) >> 1 | (v & 0x55u) << 1;
}

// Rows are stored bottom first.  A quarter turn sends source pixel
// (sx, sy) to result column sy, row w - 1 - sx (clockwise on screen), or
// to result column h - sy, row sx (counter-clockwise).  The second is one
// column to the right of the exact inverse: result column 0 stays zero and
// source row 0 lands at column h, in the row's padding or, where a row has
// none, on the first pixel of the next stored row (the last one in the
// spare bytes behind the rows).
//
// The walk goes over square tiles so that both blocks stay in cache; every
// result pixel is written once, so the order does not change the result.
template <class Pixel, bool kClockwise>
void QuarterTurn(const TurnJob& j) {
    constexpr std::uint32_t kTile = 64;
    for (std::uint32_t y0 = 0; y0 < j.height; y0 += kTile) {
        const std::uint32_t y1 = j.height - y0 < kTile ? j.height : y0 + kTile;
        for (std::uint32_t x0 = 0; x0 < j.width; x0 += kTile) {
            const std::uint32_t x1 = j.width - x0 < kTile ? j.width : x0 + kTile;
            for (std::uint32_t sx = x0; sx < x1; ++sx) {
                const std::uint64_t dy = kClockwise ? j.width - 1 - sx : sx;
                unsigned char* d = j.dst + dy * j.dstStride;
                const unsigned char* s = j.src + y0 * j.srcStride;
                for (std::uint32_t sy = y0; sy < y1; ++sy, s += j.srcStride)
                    Pixel::Copy(s, sx, d, kClockwise ? sy : j.height - sy);
            }
        }
    }
}

// 24-bit, clockwise: the same tiles, pixels moved as 4-byte words.  A
// word read takes the first byte of the next source pixel, so the last
// column goes 3 bytes at a time; a word written takes the first byte of
// the next result pixel, which its own pixel, written later in this walk,
// puts right; only the last pixel of a result row (before its padding)
// goes 3 bytes at a time.
void QuarterTurn24Words(const TurnJob& j) {
    constexpr std::uint32_t kTile = 64;
    for (std::uint32_t y0 = 0; y0 < j.height; y0 += kTile) {
        const std::uint32_t y1 = j.height - y0 < kTile ? j.height : y0 + kTile;
        const std::uint32_t wide = y1 == j.height ? y1 - 1 : y1;  // rows moved as words
        for (std::uint32_t x0 = 0; x0 < j.width; x0 += kTile) {
            const std::uint32_t x1 = j.width - x0 < kTile ? j.width : x0 + kTile;
            for (std::uint32_t sx = x0; sx < x1; ++sx) {
                unsigned char* d = j.dst + (j.width - 1 - sx) * j.dstStride;
                const unsigned char* s = j.src + y0 * j.srcStride + 3 * static_cast<std::uint64_t>(sx);
                std::uint32_t sy = y0;
                if (sx + 1 < j.width)
                    for (; sy < wide; ++sy, s += j.srcStride) {
                        std::uint32_t v;
                        std::memcpy(&v, s, 4);
                        std::memcpy(d + 3 * static_cast<std::uint64_t>(sy), &v, 4);
                    }
                for (; sy < y1; ++sy, s += j.srcStride) Pixel24::Copy(s, 0, d, sy);
            }
        }
    }
}

// With SSSE3 the pixels go in blocks of 4 by 4; the columns and rows left
// over at the right and top edges go pixel by pixel.  The blocks finish a
// strip of 64 result rows before the next, from the top address down: the
// system clears a fresh result page when it is first touched, and the
// pages are then met while their cleared bytes are still in cache, and
// the source bytes a strip reads are at hand for the next.
void QuarterTurn24Clockwise(const TurnJob& j) {
#if PRISM_X86
    if (Simd().ssse3) {
        constexpr std::uint32_t kStrip = 64;
        // Loads of 16 bytes at pixel x stay inside the row while 3x + 16 <= 3w.
        const std::uint32_t columns = j.width < 2 ? 0 : (j.width - 2) / 4 * 4;
        const std::uint32_t rows = j.height / 4 * 4;
        for (std::uint32_t x0 = 0; x0 < columns; x0 += kStrip)
            Turn24BlocksSsse3(j, x0, std::min(columns, x0 + kStrip), 0, rows);
        for (std::uint32_t sy = 0; sy < j.height; ++sy) {
            const unsigned char* s = j.src + sy * j.srcStride;
            for (std::uint32_t sx = sy < rows ? columns : 0; sx < j.width; ++sx)
                Pixel24::Copy(s, sx, j.dst + (j.width - 1 - sx) * j.dstStride, sy);
        }
        return;
    }
#endif
    QuarterTurn24Words(j);
}

// Depth 1 moves 8 by 8 squares of bits: the bytes of eight source rows at
// one byte column, transposed, give one byte in each of eight result rows.
// Bits of a byte run from the most significant (the first pixel) down.

// Eight source rows' bytes, row r in byte 7 - r of the word, to the word
// whose byte 7 - k holds bit 7 - k of every row, row r at bit 7 - r.
inline std::uint64_t Transpose8(std::uint64_t x) {
    std::uint64_t t = (x ^ (x >> 7)) & 0x00AA00AA00AA00AAull;
    x ^= t ^ (t << 7);
    t = (x ^ (x >> 14)) & 0x0000CCCC0000CCCCull;
    x ^= t ^ (t << 14);
    t = (x ^ (x >> 28)) & 0x00000000F0F0F0F0ull;
    return x ^ t ^ (t << 28);
}

// The bytes at column i of source rows y0..y0 + 7 (rows past the last
// count as 0), as Transpose8 takes them.
inline std::uint64_t GatherColumn(const TurnJob& j, std::uint32_t y0, std::uint32_t i) {
    const std::uint32_t rows = j.height - y0 < 8 ? j.height - y0 : 8;
    const unsigned char* s = j.src + y0 * j.srcStride + i;
    std::uint64_t x = 0;
    for (std::uint32_t r = 0; r < rows; ++r, s += j.srcStride) x |= static_cast<std::uint64_t>(*s) << (56 - 8 * r);
    return x;
}

// Clockwise: source pixel (x, y) goes to result row w - 1 - x, column y,
// so the eight rows' byte i fills result byte y0 / 8 of rows w - 1 - 8i
// down.  Each result byte is written once; bits past the last source row
// or column stay 0, as in the zero-filled result.
// Rows from y0Begin (a multiple of 8) up to yEnd, bytes iBegin..iEnd - 1.
void Rotate90BitsRange(const TurnJob& j, std::uint32_t y0Begin, std::uint32_t yEnd, std::uint32_t iBegin,
                       std::uint32_t iEnd) {
    for (std::uint32_t y0 = y0Begin; y0 < yEnd; y0 += 8) {
        unsigned char* column = j.dst + y0 / 8;
        for (std::uint32_t i = iBegin; i < iEnd; ++i) {
            const std::uint64_t t = Transpose8(GatherColumn(j, y0, i));
            const std::uint32_t count = j.width - 8 * i < 8 ? j.width - 8 * i : 8;
            for (std::uint32_t k = 0; k < count; ++k)
                column[(j.width - 1 - 8 * i - k) * j.dstStride] = static_cast<unsigned char>(t >> (56 - 8 * k));
        }
    }
}

// The vector kernel takes the whole squares of 16 rows by 16 full bytes;
// the rows below them and the bytes right of them go 8 by 8.
void Rotate90Bits(const TurnJob& j) {
    const std::uint32_t bytes = (j.width + 7) / 8;
    std::uint32_t rows = 0, fullBytes = 0;
#if PRISM_X86
    if (Simd().sse2) {
        rows = j.height / 16 * 16;
        fullBytes = j.width / 8 / 16 * 16;
        if (rows && fullBytes) Rotate90BitsSse2(j, rows, fullBytes);
    }
#endif
    if (rows && fullBytes) {
        Rotate90BitsRange(j, 0, rows, fullBytes, bytes);
        Rotate90BitsRange(j, rows, j.height, 0, bytes);
    } else {
        Rotate90BitsRange(j, 0, j.height, 0, bytes);
    }
}

// Counter-clockwise: source pixel (x, y) goes to result row x, column
// h - y, so rows y0..y0 + 7 land on columns h - y0 - 7 .. h - y0 in
// reverse order, a window that straddles two bytes; set bits are ORed in.
// Column h of the last source row lies past the row's pixels: in its
// padding or on the next stored row, as the shift has it.
void Rotate270Bits(const TurnJob& j) {
    const std::uint32_t bytes = (j.width + 7) / 8;
    for (std::uint32_t y0 = 0; y0 < j.height; y0 += 8) {
        // Column of row y0 + 7; rows past the last would sit left of 0.
        const std::int64_t base = static_cast<std::int64_t>(j.height) - y0 - 7;
        const unsigned drop = base < 0 ? static_cast<unsigned>(-base) : 0;
        const std::uint64_t first = base < 0 ? 0 : static_cast<std::uint64_t>(base);
        const unsigned shift = static_cast<unsigned>(first % 8);
        unsigned char* column = j.dst + first / 8;
        for (std::uint32_t i = 0; i < bytes; ++i) {
            const std::uint64_t t = Transpose8(GatherColumn(j, y0, i));
            const std::uint32_t count = j.width - 8 * i < 8 ? j.width - 8 * i : 8;
            for (std::uint32_t k = 0; k < count; ++k) {
                unsigned v = ReverseBits(static_cast<unsigned char>(t >> (56 - 8 * k)));
                v = (v << drop) & 0xFFu;
                if (!v) continue;
                unsigned char* d = column + (8 * i + k) * j.dstStride;
                d[0] = static_cast<unsigned char>(d[0] | v >> shift);
                if (shift && (v << (8 - shift) & 0xFFu)) d[1] = static_cast<unsigned char>(d[1] | v << (8 - shift));
            }
        }
    }
}

// Half turn: result pixel (x, y) is source pixel (w - 1 - x, h - 1 - y).
// Source rows go from the last down: an image just made or loaded has its
// last rows in cache.
template <class Pixel>
void HalfTurn(const TurnJob& j) {
    for (std::uint32_t y = j.height; y-- > 0;) {
        const unsigned char* s = j.src + y * j.srcStride;
        unsigned char* d = j.dst + (j.height - 1 - y) * j.dstStride;
        MirrorRow<Pixel>(s, d, j.width);
    }
}

void HalfTurnBits(const TurnJob& j) {
    for (std::uint32_t y = 0; y < j.height; ++y)
        MirrorBitsRow(j.src + y * j.srcStride, j.dst + (j.height - 1 - y) * j.dstStride, j.width);
}


}  // namespace

// Depths other than 1, 4, 8 and 24 move no pixel: the result is the
// zero picture of the right size and header.
void Move90(const TurnJob& j) {
    switch (j.depth) {
        case 1: Rotate90Bits(j); break;
        case 4: QuarterTurn<Pixel4, true>(j); break;
        case 8: QuarterTurn<Pixel8, true>(j); break;
        case 24: QuarterTurn24Clockwise(j); break;
        default: break;
    }
}

void Move270(const TurnJob& j) {
    switch (j.depth) {
        case 1: Rotate270Bits(j); break;
        case 4: QuarterTurn<Pixel4, false>(j); break;
        case 8: QuarterTurn<Pixel8, false>(j); break;
        case 24: QuarterTurn<Pixel24, false>(j); break;
        default: break;
    }
}

void Move180(const TurnJob& j) {
    switch (j.depth) {
        case 1: HalfTurnBits(j); break;
        case 4: HalfTurn<Pixel4>(j); break;
        case 8: HalfTurn<Pixel8>(j); break;
        case 24: HalfTurn<Pixel24>(j); break;
        default: break;
    }
}

// RotateDIB90(dib), RotateDIB180(dib), RotateDIB270(dib): a new image of
// the same depth and colour table, turned clockwise, by half a turn, or
// counter-clockwise (with the one-column shift told above).  The source is
// left with the caller.  0 on failure; no error code is ever set.
PRISM_API HDIB WINAPI RotateDIB90(HDIB dib) { return TurnDib(dib, TurnShape::kQuarter, Move90); }

PRISM_API HDIB WINAPI RotateDIB180(HDIB dib) { return TurnDib(dib, TurnShape::kSame, Move180); }

PRISM_API HDIB WINAPI RotateDIB270(HDIB dib) { return TurnDib(dib, TurnShape::kQuarter, Move270); }

}  // namespace prism
