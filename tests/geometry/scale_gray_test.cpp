// ScaleGrayDIB: the grey-level round trip, hand-checked enlargement, the
// lock it leaves, and its refusals.
#include "core/errors.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace testing_support;

int gPixelBase = 0;
unsigned Ramp(int x, int y) { return static_cast<unsigned>(gPixelBase + x * 3 + y * 17); }

// A DIB with a rising grey table: entry k holds k at 8 bits, 17 k at 4.
Bytes GreyDib(int width, int height, int depth, unsigned (*pixel)(int, int) = Ramp) {
    DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = depth;
    Bytes b = PackedDib(spec, pixel);
    const int colors = depth <= 8 ? 1 << depth : 0;
    const int step = depth == 4 ? 17 : 1;
    for (int k = 0; k < colors; ++k) std::memset(b.data() + 40 + 4 * k, k * step, 3);
    return b;
}

struct Grey {
    Bytes bytes;
    bool made = false;
    bool resultLocked = false;
    bool sourceLocked = false;
};

Grey ScaleGrey(const Bytes& source, int x0, int y0, int w, int h, int zx, int zy, int mode) {
    HDIB dib = BlockFrom(source);
    Grey g;
    HDIB out = ScaleGrayDIB(dib, x0, y0, w, h, zx, zy, mode);
    GlobalLock(dib);
    g.sourceLocked = GlobalUnlock(dib) != 0;
    while (GlobalUnlock(dib)) {
    }
    GlobalFree(dib);
    if (out) {
        g.made = true;
        GlobalLock(out);
        g.resultLocked = GlobalUnlock(out) != 0;
        while (GlobalUnlock(out)) {
        }
        g.bytes = BlockBytes(out);
        GlobalFree(out);
    }
    return g;
}

std::int32_t Field32(const Bytes& b, size_t at) {
    std::int32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

// The index a grey palette gives back for its own index k: the table is read
// one entry ahead, so k comes back as k - 1 and 0 as 255.
unsigned Lowered(unsigned k) { return (k + 255) & 0xFF; }

class GreyByDepthMode : public ::testing::TestWithParam<std::pair<int, int>> {};

// Factors of 1 reproduce the rectangle (weights 255 and 0, or 0, 255, 0, 0),
// with the index shift of the grey-to-index table.
TEST_P(GreyByDepthMode, FactorOneGivesTheRectangleWithIndicesLowered) {
    const int depth = GetParam().first, mode = GetParam().second;
    gPixelBase = 1;
    Bytes source = GreyDib(14, 9, depth);
    // x0 counts bytes: at 4 bits, byte 2 is pixel 4.
    const int x0 = 2, y0 = 3, w = 6, h = 4;
    const int firstPixel = depth == 4 ? 2 * x0 : x0;
    Grey g = ScaleGrey(source, x0, y0, w, h, 1, 1, mode);
    ASSERT_TRUE(g.made);
    EXPECT_EQ(Field32(g.bytes, 4), w);
    EXPECT_EQ(Field32(g.bytes, 8), h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const unsigned k = PixelAt(source, firstPixel + x, y0 + y);
            unsigned want = Lowered(k);
            if (depth == 4) {
                // Pixels pair up in bytes.  A 0 lowered to 255 keeps only its
                // low nibble in the high place, but is ORed in whole in the
                // low place, which makes the byte 255.
                const bool partnerZero = x % 2 == 0 && PixelAt(source, firstPixel + x + 1, y0 + y) == 0;
                want = (x % 2 == 1 && k == 0) || partnerZero ? 15 : (want & 15);
            }
            ASSERT_EQ(PixelAt(g.bytes, x, y), want) << x << "," << y << " k=" << k;
        }
    EXPECT_TRUE(g.resultLocked);   // returned with its lock standing
    EXPECT_FALSE(g.sourceLocked);  // the source is unlocked again
}

unsigned Flat(int, int) { return 255; }
unsigned Black(int, int) { return 0; }

TEST_P(GreyByDepthMode, ConstantImageStaysConstant) {
    const int depth = GetParam().first, mode = GetParam().second;
    if (mode != 0) return;  // the cubic lobes are not exact on a constant
    for (auto pixel : {Flat, Black}) {
        // At 4 bits the w fetched bytes hold 2 w pixels and the taps read one
        // beyond the rectangle: the source is wide enough for all of them.
        Bytes source = GreyDib(16, 6, depth, pixel);
        Grey g = ScaleGrey(source, 0, 0, 8, 6, 3, 2, mode);
        ASSERT_TRUE(g.made);
        const unsigned first = PixelAt(g.bytes, 0, 0);
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 24; ++x) ASSERT_EQ(PixelAt(g.bytes, x, y), first) << x << "," << y;
    }
}

TEST_P(GreyByDepthMode, RefusalsLeaveTheErrorAlone) {
    const int depth = GetParam().first, mode = GetParam().second;
    Bytes source = GreyDib(8, 8, depth);
    prism::LastImgError = 77;
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 200, 4, 200, 1, mode).made);  // 40,000 wraps in 16 bits
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 4, 200, 1, 200, mode).made);
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 4, 4, -2, 1, mode).made);
    EXPECT_FALSE(ScaleGrey(source, 0, 0, -4, 4, -2, 1, mode).made);
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 4, -4, 1, -2, mode).made);
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 0, 4, 3, 1, mode).made);  // new width 0
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 4, 4, 0, 1, mode).made);
    // The tap walk stays below 8,192 (linear) and 5,462 (cubic) columns.
    const int limit = mode ? 5462 : 8192;
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 2, 1, limit / 2, 1, mode).made);
    EXPECT_TRUE(ScaleGrey(source, 0, 0, 1, 1, limit - 1, 1, mode).made);
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 4, 4, 1, 1, 2).made);  // modes are 0 and 1
    EXPECT_EQ(prism::LastImgError, 77);
}

TEST_P(GreyByDepthMode, HeightZeroGivesAnImageWithoutRows) {
    const int depth = GetParam().first, mode = GetParam().second;
    Grey g = ScaleGrey(GreyDib(8, 8, depth), 0, 0, 4, 0, 2, 5, mode);
    ASSERT_TRUE(g.made);
    EXPECT_EQ(Field32(g.bytes, 4), 8);
    EXPECT_EQ(Field32(g.bytes, 8), 0);
    EXPECT_EQ(Field32(g.bytes, 20), 0);
}

TEST_P(GreyByDepthMode, RectangleOutsideTheSourceReadsZeros) {
    const int depth = GetParam().first, mode = GetParam().second;
    // Rows far above and bytes far to the left of the block: nothing outside
    // it is read, and every pixel comes from the same zero bytes.
    for (auto corner : {std::pair<int, int>{0, 500}, std::pair<int, int>{-3000, -40}}) {
        Grey g = ScaleGrey(GreyDib(6, 4, depth), corner.first, corner.second, 5, 3, 2, 2, mode);
        ASSERT_TRUE(g.made);
        const unsigned first = PixelAt(g.bytes, 0, 0);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 10; ++x) ASSERT_EQ(PixelAt(g.bytes, x, y), first);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, GreyByDepthMode,
                         ::testing::Values(std::pair<int, int>{4, 0}, std::pair<int, int>{4, 1},
                                           std::pair<int, int>{8, 0}, std::pair<int, int>{8, 1}),
                         [](const ::testing::TestParamInfo<std::pair<int, int>>& info) {
                             return "Bits" + std::to_string(info.param.first) + (info.param.second ? "Cubic" : "Linear");
                         });

unsigned TenAndTwoHundred(int x, int) { return x ? 200 : 10; }

TEST(ScaleGrayDIB, HandCheckedDoublingAt8Bits) {
    // Greys 10 and 200 doubled across: 10, 5 + 100, 200, 200 (right edge
    // replicated), then one index lower each.
    Grey linear = ScaleGrey(GreyDib(2, 1, 8, TenAndTwoHundred), 0, 0, 2, 1, 2, 1, 0);
    ASSERT_TRUE(linear.made);
    const unsigned want[] = {9, 104, 199, 199};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(PixelAt(linear.bytes, x, 0), want[x]) << x;
    // Cubic: at 8 bits the guard before pixel 0 is the raw index 10.
    // 6 + 125 - 1 - 24 = 106, and 125 + 125 - 1 - 24 = 225.
    Grey cubic = ScaleGrey(GreyDib(2, 1, 8, TenAndTwoHundred), 0, 0, 2, 1, 2, 1, 1);
    ASSERT_TRUE(cubic.made);
    const unsigned wantCubic[] = {9, 105, 199, 224};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(PixelAt(cubic.bytes, x, 0), wantCubic[x]) << x;
}

unsigned Sixteen(int, int) { return 16; }

TEST(ScaleGrayDIB, RowPaddingAtEightBitsTakesTheIndexOfBlack) {
    // Three columns in a stride of 4: the fourth byte is blended from zeros
    // and mapped through the table, where 0 gives 255.
    Grey g = ScaleGrey(GreyDib(3, 2, 8, Sixteen), 0, 0, 3, 2, 1, 1, 0);
    ASSERT_TRUE(g.made);
    EXPECT_EQ(g.bytes[40 + 1024 + 3], 255);
    EXPECT_EQ(g.bytes[40 + 1024 + 0], 15);
}

TEST(ScaleGrayDIB, TwentyFourBitsAreWalkedAsBytes) {
    DibSpec spec;
    spec.width = 5;
    spec.height = 3;
    spec.bitCount = 24;
    Grey g = ScaleGrey(PackedDib(spec), 0, 0, 4, 3, 2, 2, 0);
    ASSERT_TRUE(g.made);
    EXPECT_EQ(g.bytes[14], 24);
    EXPECT_EQ(Field32(g.bytes, 4), 8);
    EXPECT_EQ(Field32(g.bytes, 8), 6);
    EXPECT_EQ(Field32(g.bytes, 20), 3 * 8 * 6);  // three times the 8-bit rows
    EXPECT_GE(g.bytes.size(), 40u + 3 * 8 * 6);
}

TEST(ScaleGrayDIB, OtherDepthsLeaveTheSourceLocked) {
    DibSpec spec;
    spec.width = 8;
    spec.height = 2;
    spec.bitCount = 1;
    Grey g = ScaleGrey(PackedDib(spec), 0, 0, 4, 2, 2, 2, 0);
    EXPECT_FALSE(g.made);
    EXPECT_TRUE(g.sourceLocked);
    spec.bitCount = 16;
    g = ScaleGrey(PackedDib(spec), 0, 0, 4, 2, 2, 2, 0);
    EXPECT_FALSE(g.made);
    EXPECT_TRUE(g.sourceLocked);
}

TEST(ScaleGrayDIB, BadBlocksFailSafely) {
    EXPECT_EQ(ScaleGrayDIB(nullptr, 0, 0, 4, 4, 2, 2, 0), nullptr);
    Bytes compressed = GreyDib(8, 4, 8);
    compressed[16] = 1;
    EXPECT_FALSE(ScaleGrey(compressed, 0, 0, 4, 4, 2, 2, 0).made);
    Bytes tiny = GreyDib(8, 4, 8);
    tiny.resize(20);
    EXPECT_FALSE(ScaleGrey(tiny, 0, 0, 4, 4, 2, 2, 0).made);
    // A table cut short: the missing entries and pixels read as 0.
    Bytes cut = GreyDib(8, 4, 8);
    cut.resize(40 + 600);
    EXPECT_TRUE(ScaleGrey(cut, 0, 0, 4, 4, 2, 2, 1).made);
}

}  // namespace
