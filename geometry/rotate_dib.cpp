// RotateDIB90, RotateDIB180, RotateDIB270: turning a whole DIB by a
// multiple of 90 degrees.
#include "core/dib.h"
#include "geometry/dib_copy.h"
#include "geometry/turn_frame.h"
#include "platform/export.h"

namespace prism {
namespace {

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

// Depth 1, clockwise: source row y becomes result column y.  The row is
// read from its end (the partial last byte, then the full bytes backwards,
// each from its least significant bit up), one result row per bit; set
// bits are ORed into the zero-filled result.
void Rotate90Bits(const TurnJob& j) {
    const std::uint32_t full = j.width / 8, rem = j.width % 8;
    for (std::uint32_t y = 0; y < j.height; ++y) {
        const unsigned char* row = j.src + y * j.srcStride;
        const unsigned char mask = MaskTable[y % 8];
        unsigned char* t = j.dst + y / 8;
        if (rem) {
            const unsigned char b = row[full];
            for (int k = static_cast<int>(rem) - 1; k >= 0; --k, t += j.dstStride)
                if (b & MaskTable[k]) *t = static_cast<unsigned char>(*t | mask);
        }
        for (std::uint32_t i = full; i-- > 0;) {
            const unsigned char b = row[i];
            if (!b) {
                t += 8 * j.dstStride;
                continue;
            }
            for (int k = 7; k >= 0; --k, t += j.dstStride)
                if (b & MaskTable[k]) *t = static_cast<unsigned char>(*t | mask);
        }
    }
}

// Depth 1, counter-clockwise: source row y becomes result column h - y,
// read forward, one result row per bit.
void Rotate270Bits(const TurnJob& j) {
    const std::uint32_t full = j.width / 8, rem = j.width % 8;
    for (std::uint32_t y = 0; y < j.height; ++y) {
        const unsigned char* row = j.src + y * j.srcStride;
        const std::uint32_t column = j.height - y;
        const unsigned char mask = MaskTable[column % 8];
        unsigned char* t = j.dst + column / 8;
        for (std::uint32_t i = 0; i < full; ++i) {
            const unsigned char b = row[i];
            if (!b) {
                t += 8 * j.dstStride;
                continue;
            }
            for (int k = 0; k < 8; ++k, t += j.dstStride)
                if (b & MaskTable[k]) *t = static_cast<unsigned char>(*t | mask);
        }
        for (std::uint32_t k = 0; k < rem; ++k, t += j.dstStride)
            if (row[full] & MaskTable[k]) *t = static_cast<unsigned char>(*t | mask);
    }
}

// Half turn: result pixel (x, y) is source pixel (w - 1 - x, h - 1 - y).
template <class Pixel>
void HalfTurn(const TurnJob& j) {
    for (std::uint32_t y = 0; y < j.height; ++y) {
        const unsigned char* s = j.src + y * j.srcStride;
        unsigned char* d = j.dst + (j.height - 1 - y) * j.dstStride;
        MirrorRow<Pixel>(s, d, j.width);
    }
}

void HalfTurnBits(const TurnJob& j) {
    for (std::uint32_t y = 0; y < j.height; ++y) {
        const unsigned char* s = j.src + y * j.srcStride;
        unsigned char* d = j.dst + (j.height - 1 - y) * j.dstStride;
        for (std::uint32_t x = 0; x < j.width; ++x) {
            if (!(s[x / 8] & MaskTable[x % 8])) continue;
            const std::uint32_t t = j.width - 1 - x;
            d[t / 8] = static_cast<unsigned char>(d[t / 8] | MaskTable[t % 8]);
        }
    }
}


}  // namespace

// Depths other than 1, 4, 8 and 24 move no pixel: the result is the
// zero picture of the right size and header.
void Move90(const TurnJob& j) {
    switch (j.depth) {
        case 1: Rotate90Bits(j); break;
        case 4: QuarterTurn<Pixel4, true>(j); break;
        case 8: QuarterTurn<Pixel8, true>(j); break;
        case 24: QuarterTurn<Pixel24, true>(j); break;
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
