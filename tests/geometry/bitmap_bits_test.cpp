// The walks of the device-bitmap turns and flips, on plain bits buffers:
// every result pixel against the index mapping of its move, over depths,
// odd widths, and one and four planes on both sides of the 64 KB layout
// threshold; whole buffers are compared, so padding and stray writes count.
#include "geometry/bitmap_bits.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using prism::BitmapBitsShape;
using prism::BitmapMove;
using Bytes = std::vector<unsigned char>;

// Where pixels of one plane live: row and plane steps of the layout.
struct Layout {
    std::uint64_t row, plane, widthBytes;
};

Layout LayoutOf(bool interleaved, std::uint64_t wb, std::uint64_t rows, int planes) {
    return interleaved ? Layout{planes * wb, wb, wb} : Layout{wb, rows * wb, wb};
}

unsigned Get(const Bytes& b, const Layout& l, int plane, int x, int y, int d) {
    const std::uint64_t at = plane * l.plane + y * l.row;
    const std::uint64_t bit = static_cast<std::uint64_t>(x) * d;
    if (d == 24) return b[at + 3 * x] | b[at + 3 * x + 1] << 8 | b[at + 3 * x + 2] << 16;
    return (b[at + bit / 8] >> (8 - d - bit % 8)) & ((1u << d) - 1);
}

void Set(Bytes& b, const Layout& l, int plane, int x, int y, int d, unsigned v) {
    const std::uint64_t at = plane * l.plane + y * l.row;
    const std::uint64_t bit = static_cast<std::uint64_t>(x) * d;
    if (d == 24) {
        for (int k = 0; k < 3; ++k) b[at + 3 * x + k] = static_cast<unsigned char>(v >> (8 * k));
        return;
    }
    const int shift = static_cast<int>(8 - d - bit % 8);
    b[at + bit / 8] = static_cast<unsigned char>((b[at + bit / 8] & ~(((1u << d) - 1) << shift)) | v << shift);
}

// The expected target of a move, written out from the mapping table.
Bytes Expected(BitmapMove move, const BitmapBitsShape& s, const Bytes& src) {
    const int w = s.width, h = s.height, d = s.bitsPixel;
    const bool interleaved = src.size() < 65536;
    const Layout in = LayoutOf(interleaved, s.widthBytes, h, s.planes);
    const bool quarter = move == BitmapMove::kRotate90 || move == BitmapMove::kRotate270;
    const int outWb = quarter ? (d * h + 15) / 16 * 2 : s.widthBytes;
    const Layout out = LayoutOf(interleaved, outWb, quarter ? w : h, s.planes);
    Bytes dst(static_cast<size_t>(s.planes) * outWb * (quarter ? w : h), 0);
    if (move == BitmapMove::kFlipVertical) {
        for (int p = 0; p < s.planes; ++p)
            for (int y = 0; y < h; ++y)
                std::copy_n(src.begin() + p * in.plane + (h - 1 - y) * in.row, s.widthBytes,
                            dst.begin() + p * out.plane + y * out.row);
        return dst;
    }
    if (d != 1 && d != 4 && d != 8 && d != 24) return dst;
    const int rw = quarter ? h : w, rh = quarter ? w : h;
    for (int p = 0; p < s.planes; ++p)
        for (int y = 0; y < rh; ++y)
            for (int x = 0; x < rw; ++x) {
                int sx = x, sy = y;
                switch (move) {
                    case BitmapMove::kRotate90: sx = w - 1 - y, sy = x; break;
                    case BitmapMove::kRotate180: sx = w - 1 - x, sy = h - 1 - y; break;
                    case BitmapMove::kRotate270: sx = y, sy = h - 1 - x; break;
                    case BitmapMove::kFlipHorizontal: sx = w - 1 - x; break;
                    case BitmapMove::kFlipVertical: break;
                }
                // At depth 1 the clockwise turn leaves column 0 blank.
                if (move == BitmapMove::kRotate270 && d == 1 && x == 0) continue;
                Set(dst, out, p, x, y, d, Get(src, in, p, sx, sy, d));
            }
    return dst;
}

struct Case {
    int width, height, planes, bitsPixel;
};

TEST(BitmapBits, EveryMoveFollowsItsMappingOverDepthsAndPlaneLayouts) {
    const Case cases[] = {
        {17, 5, 1, 1},  {8, 8, 1, 1},    {13, 1, 1, 1},  {9, 7, 1, 4},    {1, 3, 1, 4},  {11, 6, 1, 8},
        {7, 5, 1, 24},  {5, 3, 1, 16},   {3, 2, 1, 32},
        // four 1-bit planes: 4 * 127 * 128 bytes is just below 64 KB, 4 * 129 * 128 just above
        {1020, 127, 4, 1}, {1020, 129, 4, 1}, {33, 9, 3, 8},
    };
    const BitmapMove moves[] = {BitmapMove::kRotate90, BitmapMove::kRotate180, BitmapMove::kRotate270,
                                BitmapMove::kFlipVertical, BitmapMove::kFlipHorizontal};
    for (const Case& c : cases) {
        const BitmapBitsShape s{c.width, c.height, (c.width * c.bitsPixel + 15) / 16 * 2, c.planes, c.bitsPixel};
        Bytes src(prism::BitmapBitsBytes(s));
        std::uint32_t seed = 12345u + c.width;
        for (auto& b : src) b = static_cast<unsigned char>((seed = seed * 1103515245u + 12345u) >> 16);
        for (BitmapMove move : moves) {
            SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << "x" << c.planes << " at "
                                              << c.bitsPixel << " bits, move " << static_cast<int>(move));
            Bytes dst(prism::MovedBitsBytes(move, s), 0);
            prism::MoveBitmapBits(move, s, src.data(), dst.data());
            EXPECT_EQ(dst, Expected(move, s, src));
        }
    }
}

TEST(BitmapBits, QuarterTurnKeepsRowsOnSixteenBitBoundaries) {
    // 17 wide at 1 bit: 4 bytes a row; turned, 17 rows of 1 pixel: 2 bytes.
    const BitmapBitsShape s{17, 8, 4, 1, 1};
    EXPECT_EQ(prism::TurnedWidthBytes(s), 2);
    EXPECT_EQ(prism::MovedBitsBytes(BitmapMove::kRotate90, s), 34u);
    EXPECT_EQ(prism::TurnedWidthBytes(BitmapBitsShape{3, 17, 10, 1, 24}), 52);
}

TEST(BitmapBits, RowsTooShortForTheirWidthMoveNothing) {
    const BitmapBitsShape s{40, 2, 2, 1, 8};  // 40 pixels claimed in rows of 2 bytes
    Bytes src(prism::BitmapBitsBytes(s), 0xFF), dst(prism::MovedBitsBytes(BitmapMove::kRotate180, s), 0);
    prism::MoveBitmapBits(BitmapMove::kRotate180, s, src.data(), dst.data());
    EXPECT_EQ(dst, Bytes(dst.size(), 0));
}

}  // namespace
