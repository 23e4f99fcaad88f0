// Nearest-neighbour stretchers at every depth: rectangles and their edges,
// the header, refusals and colour counts (halving, doubling and phases are
// pinned in tests/pinned).
#include "display/stretch.h"
#include "support/test_support.h"

using namespace testing_support;

namespace {

constexpr int kW = 19, kH = 9;

// The result's bytes, empty for 0.  The source's biSizeImage is 12345.
Bytes Stretch(int depth, int srcX, int srcY, int srcW, int srcH, int dstW, int dstH) {
    const Bytes src = PackedDib({kW, kH, depth, -1, 0, 12345}, Pattern);
    auto fn = depth == 1 ? prism::StretchRows1 : depth == 4 ? prism::StretchRows4 : depth == 8 ? prism::StretchRows8 : prism::StretchRows24;
    return Take(fn(src.data(), src.data() + BitsOffset(src), srcX, srcY, srcW, srcH, dstW, dstH));
}

TEST(Stretch, SameSizeCopiesTheRectangleAndRefusesEmptySizesAndOutsideCorners) {
    for (int depth : {1, 4, 8, 24}) {
        // Parts beyond the right and bottom edges are pixel 0; odd left edges
        // take the bit and nibble shifts.  Rows count from the top.
        const int rects[][4] = {{0, 2, 11, 5}, {3, 2, 11, 5}, {5, 2, 11, 5}, {kW - 3, kH - 2, 6, 4}};
        for (const auto& r : rects) {
            const Bytes s = Stretch(depth, r[0], r[1], r[2], r[3], r[2], r[3]);
            ASSERT_FALSE(s.empty());
            for (int y = 0; y < r[3]; ++y)
                for (int x = 0; x < r[2]; ++x) {
                    const int sx = r[0] + x, sy = r[1] + y;
                    const unsigned mask = depth == 24 ? 0xFFFFFFu : (1u << depth) - 1;
                    ASSERT_EQ(PixelAt(s, x, r[3] - 1 - y), sx < kW && sy < kH ? Pattern(sx, sy) & mask : 0u)
                        << depth << " from " << r[0] << ": " << x << "," << y;
                }
            // The header takes the new size; biSizeImage and the table are kept.
            Bytes head = PackedDib({r[2], r[3], depth, -1, 0, 12345}, Pattern);
            EXPECT_EQ(Bytes(s.begin(), s.begin() + BitsOffset(s)), Bytes(head.begin(), head.begin() + BitsOffset(head)));
        }
        const int refused[][6] = {{0, 0, 0, 4, 4, 4},  {0, 0, 4, 0, 4, 4},  {0, 0, 4, 4, 0, 4},  {0, 0, 4, 4, 4, -2},
                                  {-1, 0, 4, 4, 4, 4}, {0, -1, 4, 4, 4, 4}, {kW, 0, 4, 4, 4, 4}, {0, kH, 4, 4, 4, 4}};
        for (const auto& r : refused) EXPECT_TRUE(Stretch(depth, r[0], r[1], r[2], r[3], r[4], r[5]).empty()) << r[0];
        EXPECT_FALSE(Stretch(depth, kW - 1, kH - 1, 1, 1, 1, 1).empty());
    }
}

TEST(Stretch, WrongDepthOrCoreHeaderIsRefusedAndColourCounts) {
    const Bytes src = Image(8, 2, 8), core = PackedDib({8, 2, 8, -1, 0, 0, true});
    EXPECT_EQ(prism::StretchRows4(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    EXPECT_EQ(prism::StretchRows24(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    EXPECT_EQ(prism::StretchRows8(core.data(), core.data() + 12 + 768, 0, 0, 8, 2, 4, 1), nullptr);
    // biClrUsed unless 0 or a 12-byte header, else by depth.
    const struct { int bits, colors; bool core; unsigned want; } cases[] = {
        {8, 7, false, 7}, {24, 7, false, 7}, {24, -1, false, 0}, {4, -1, false, 16}, {1, -1, true, 2}};
    for (const auto& c : cases)
        EXPECT_EQ(prism::StretchColorCount(PackedDib({1, 1, c.bits, c.colors, c.colors < 0 ? 0u : unsigned(c.colors), 0, c.core}).data()), c.want) << c.bits;
}

}  // namespace
