// Nearest-neighbour stretchers at every depth: rectangles and their edges,
// sampling phase, the header, and refusals.
#include "display/stretch.h"

#include "support/test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace testing_support;

using Stretcher = HDIB (*)(const void*, const unsigned char*, int, int, int, int, int, int);
Stretcher ForDepth(int d) {
    return d == 1 ? prism::StretchRows1 : d == 4 ? prism::StretchRows4 : d == 8 ? prism::StretchRows8 : prism::StretchRows24;
}

// Pixels with neighbours that differ at every depth (x, y from the top).
unsigned Pattern(int x, int y) {
    const unsigned v = static_cast<unsigned>(x * 5 + y * 3 + (x * y) % 7);
    return v | (v * 37u) << 8 | (v * 101u) << 16;
}
constexpr int kW = 19, kH = 9;

// Source and result pixels at (x, y) counted from the top.
unsigned Source(int depth, int x, int y) { return Pattern(x, y) & (depth == 24 ? 0xFFFFFFu : (1u << depth) - 1); }
unsigned Result(const Bytes& dib, int x, int y) { return PixelAt(dib, x, Field(dib, 8) - 1 - y); }

// The result's bytes, empty for 0.  The source's biSizeImage is 12345.
Bytes Stretch(int depth, int srcX, int srcY, int srcW, int srcH, int dstW, int dstH) {
    DibShape shape;
    shape.width = kW;
    shape.height = kH;
    shape.bitCount = depth;
    shape.sizeImage = 12345;
    const Bytes src = PackedDib(shape, Pattern);
    HDIB dib = ForDepth(depth)(src.data(), src.data() + BitsOffset(src), srcX, srcY, srcW, srcH, dstW, dstH);
    Bytes out = dib ? BlockBytes(dib) : Bytes();
    if (dib) GlobalFree(dib);
    return out;
}

class StretchByDepth : public ::testing::TestWithParam<int> {};

TEST_P(StretchByDepth, RectanglesHalvingDoublingAndHeader) {
    const int depth = GetParam();
    // Same size copies the rectangle; parts beyond the right and bottom
    // edges are pixel 0.  Odd left edges exercise the bit and nibble shifts.
    const int rects[][4] = {{0, 2, 11, 5}, {3, 2, 11, 5}, {5, 2, 11, 5}, {kW - 3, kH - 2, 6, 4}};
    for (const auto& r : rects) {
        const Bytes s = Stretch(depth, r[0], r[1], r[2], r[3], r[2], r[3]);
        ASSERT_FALSE(s.empty());
        for (int y = 0; y < r[3]; ++y)
            for (int x = 0; x < r[2]; ++x) {
                const bool inside = r[0] + x < kW && r[1] + y < kH;
                ASSERT_EQ(Result(s, x, y), inside ? Source(depth, r[0] + x, r[1] + y) : 0u) << r[0] << ": " << x << "," << y;
            }
    }
    // Padding bits and nibbles of each row are clear.
    const Bytes odd = Stretch(depth, 3, 2, 11, 5, 11, 5);
    EXPECT_EQ(depth == 1 ? odd[40 + 8 + 1] & 0x1F : depth == 4 ? odd[40 + 64 + 5] & 0x0F : 0, 0);

    // Halving takes even columns and rows.
    const Bytes half = Stretch(depth, 1, 0, 16, 8, 8, 4);
    ASSERT_FALSE(half.empty());
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(Result(half, x, y), Source(depth, 1 + 2 * x, 2 * y));
    // Doubling takes columns 0, 1, 1, 2, 2, 3, ... and rows likewise.  The
    // last column and row would need column 6 and row 4 of the rectangle,
    // past its end, so they stay 0.
    const Bytes twice = Stretch(depth, 2, 1, 6, 4, 12, 8);
    ASSERT_FALSE(twice.empty());
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) {
            const bool sampled = (x + 1) / 2 < 6 && (y + 1) / 2 < 4;
            ASSERT_EQ(Result(twice, x, y), sampled ? Source(depth, 2 + (x + 1) / 2, 1 + (y + 1) / 2) : 0u) << x << "," << y;
        }
    // The header takes the new size; biSizeImage and the table are kept.
    DibShape shape;
    shape.width = kW;
    shape.height = kH;
    shape.bitCount = depth;
    shape.sizeImage = 12345;
    Bytes want = PackedDib(shape, Pattern);
    want.resize(BitsOffset(want));
    Put32(want, 4, 7), Put32(want, 8, 3);
    const Bytes small = Stretch(depth, 0, 0, kW, kH, 7, 3);
    EXPECT_EQ(Bytes(small.begin(), small.begin() + static_cast<long>(want.size())), want);

    // Empty sizes and corners outside are refused.
    const int refused[][6] = {{0, 0, 0, 4, 4, 4},  {0, 0, 4, 0, 4, 4},  {0, 0, 4, 4, 0, 4}, {0, 0, 4, 4, 4, -2},
                              {-1, 0, 4, 4, 4, 4}, {0, -1, 4, 4, 4, 4}, {kW, 0, 4, 4, 4, 4}, {0, kH, 4, 4, 4, 4}};
    for (const auto& r : refused) EXPECT_TRUE(Stretch(depth, r[0], r[1], r[2], r[3], r[4], r[5]).empty()) << r[0];
    EXPECT_FALSE(Stretch(depth, kW - 1, kH - 1, 1, 1, 1, 1).empty());
}

INSTANTIATE_TEST_SUITE_P(Depths, StretchByDepth, ::testing::Values(1, 4, 8, 24));

TEST(Stretch, WrongDepthOrCoreHeaderIsRefusedAndColorCounts) {
    DibShape shape;
    shape.width = 8;
    shape.height = 2;
    const Bytes src = PackedDib(shape);
    EXPECT_EQ(prism::StretchRows4(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    EXPECT_EQ(prism::StretchRows24(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    shape.coreHeader = true;
    const Bytes core = PackedDib(shape);
    EXPECT_EQ(prism::StretchRows8(core.data(), core.data() + 12 + 768, 0, 0, 8, 2, 4, 1), nullptr);

    // Colour counts: biClrUsed unless 0 or a 12-byte header, else by depth.
    struct Case {
        int bits, colors;
        bool core;
        unsigned want;
    } cases[] = {{8, 7, false, 7}, {24, 7, false, 7}, {24, -1, false, 0}, {4, -1, false, 16}, {1, -1, true, 2}};
    for (const Case& c : cases) {
        DibShape s;
        s.bitCount = c.bits;
        s.colors = c.colors;
        s.clrUsed = c.colors < 0 ? 0 : static_cast<std::uint32_t>(c.colors);
        s.coreHeader = c.core;
        EXPECT_EQ(prism::StretchColorCount(PackedDib(s).data()), c.want) << c.bits;
    }
}

}  // namespace
