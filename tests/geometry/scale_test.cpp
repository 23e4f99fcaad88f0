// ScaleDIB: sizes kept, constants kept, hand-checked interpolation, and the
// failure codes, at depths 1, 4, 8 and 24.
#include "core/errors.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace testing_support;

unsigned Pattern(int x, int y) {
    const unsigned v = static_cast<unsigned>(x * 7 + y * 11 + (x * y) % 5);
    return v | (v * 29u + 3) << 8 | (v * 53u + 7) << 16;
}

struct Scaled {
    Bytes bytes;
    bool made = false;
};

Scaled Scale(const Bytes& source, int mode, int width, int height) {
    HDIB dib = BlockFrom(source);
    Scaled s;
    HDIB out = ScaleDIB(dib, mode, width, height);
    // The source stays unlocked: one lock and unlock bring the count to 0.
    GlobalLock(dib);
    EXPECT_EQ(GlobalUnlock(dib), 0);
    GlobalFree(dib);
    if (out) {
        s.made = true;
        s.bytes = BlockBytes(out);
        GlobalFree(out);
    }
    return s;
}

std::int32_t Field32(const Bytes& b, size_t at) {
    std::int32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

Bytes Image(int width, int height, int depth, unsigned (*pixel)(int, int) = Pattern) {
    DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = depth;
    return PackedDib(spec, pixel);
}

struct DepthMode {
    int depth;
    int mode;
};

class ScaleByDepth : public ::testing::TestWithParam<DepthMode> {};

// At the same size every weight is 0 and 255 (linear) or 0, 255, 0, 0
// (cubic), and palette colours map back to their own entries.
TEST_P(ScaleByDepth, SameSizeKeepsEveryPixel) {
    const DepthMode p = GetParam();
    for (int width : {1, 6, 13}) {
        Bytes source = Image(width, 5, p.depth);
        Scaled s = Scale(source, p.mode, width, 5);
        ASSERT_TRUE(s.made);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(PixelAt(s.bytes, x, y), PixelAt(source, x, y)) << width << ": " << x << "," << y;
        const size_t table = p.depth <= 8 ? 4u << p.depth : 0;
        EXPECT_EQ(0, std::memcmp(s.bytes.data() + 40, source.data() + 40, table));
    }
}

// Halving in both directions lands every tap on a pixel with full weight,
// so the result samples the source.  The 1-bit stretcher counts rows from
// the top and the resampler from the bottom, hence two phases.
TEST_P(ScaleByDepth, HalvingSamplesEveryOtherPixel) {
    const DepthMode p = GetParam();
    if (p.mode != 0 && p.depth != 1) return;  // cubic halving weighs neighbours too
    Bytes source = Image(12, 8, p.depth);
    Scaled s = Scale(source, p.mode, 6, 4);
    ASSERT_TRUE(s.made);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) {
            const int sy = p.depth == 1 ? 8 - 1 - 2 * (4 - 1 - y) : 2 * y;
            ASSERT_EQ(PixelAt(s.bytes, x, y), PixelAt(source, 2 * x, sy)) << x << "," << y;
        }
}

unsigned Constant(int, int) { return 5; }

// A one-colour picture stays one colour when enlarged or reduced: linear
// weights sum to 255 and the palette's nearest entry is the same one.
TEST_P(ScaleByDepth, ConstantImageStaysConstant) {
    const DepthMode p = GetParam();
    if (p.mode != 0) return;
    Bytes source = Image(9, 7, p.depth, Constant);
    if (p.depth == 24) std::memset(source.data() + 40, 0xFF, source.size() - 40);  // white
    for (auto size : {std::pair<int, int>{23, 17}, std::pair<int, int>{4, 3}}) {
        // The 1-bit sampler leaves result rows and columns that would fall
        // past the source's end at 0 when enlarging; it is checked apart.
        if (p.depth == 1 && size.first > 9) continue;
        Scaled s = Scale(source, p.mode, size.first, size.second);
        ASSERT_TRUE(s.made);
        const unsigned want = PixelAt(source, 0, 0);
        for (int y = 0; y < size.second; ++y)
            for (int x = 0; x < size.first; ++x) ASSERT_EQ(PixelAt(s.bytes, x, y), want) << x << "," << y;
    }
}

TEST_P(ScaleByDepth, ResultHeaderCarriesTheNewSize) {
    const DepthMode p = GetParam();
    DibSpec spec;
    spec.width = 10;
    spec.height = 4;
    spec.bitCount = p.depth;
    spec.colors = p.depth <= 8 ? 1 << p.depth : 0;
    spec.clrUsed = static_cast<std::uint32_t>(spec.colors);
    Bytes source = PackedDib(spec);
    Scaled s = Scale(source, p.mode, 15, 7);
    ASSERT_TRUE(s.made);
    EXPECT_EQ(Field32(s.bytes, 4), 15);
    EXPECT_EQ(Field32(s.bytes, 8), 7);
    EXPECT_EQ(s.bytes[14], p.depth);
    EXPECT_EQ(Field32(s.bytes, 32), spec.colors);  // biClrUsed unchanged
    EXPECT_EQ(Field32(s.bytes, 24), 2835);         // resolution kept
    const std::int32_t stride = (15 * p.depth + 31) / 32 * 4;
    if (p.depth != 1) {
        EXPECT_EQ(Field32(s.bytes, 20), stride * 7);
    }
    EXPECT_GE(s.bytes.size(), 40u + 4u * spec.colors + stride * 7u);
}

INSTANTIATE_TEST_SUITE_P(DepthsAndModes, ScaleByDepth,
                         ::testing::Values(DepthMode{1, 0}, DepthMode{4, 0}, DepthMode{8, 0}, DepthMode{24, 0},
                                           DepthMode{1, 1}, DepthMode{4, 1}, DepthMode{8, 1}, DepthMode{24, 1}),
                         [](const ::testing::TestParamInfo<DepthMode>& info) {
                             return "Bits" + std::to_string(info.param.depth) +
                                    (info.param.mode ? "Cubic" : "Linear");
                         });

// Grey 24-bit pixels, 10 and 200, as a row and as a column.
unsigned TwoGreys(int x, int y) { return (x + y) ? 0xC8C8C8u : 0x0A0A0Au; }

TEST(ScaleDIB, HandCheckedEnlargement24) {
    // Across: columns 0..3 take 10, 5 + 100, 200, then 200 through the
    // replicated right edge.  Linear.
    Scaled across = Scale(Image(2, 1, 24, TwoGreys), 0, 4, 1);
    ASSERT_TRUE(across.made);
    const unsigned linear[] = {10, 105, 200, 200};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(PixelAt(across.bytes, x, 0), linear[x] * 0x010101u) << x;

    // Cubic: 6 + 125 - 1 - 24 = 106 and 125 + 125 - 1 - 24 = 225.
    Scaled cubic = Scale(Image(2, 1, 24, TwoGreys), 1, 4, 1);
    ASSERT_TRUE(cubic.made);
    const unsigned cubicValues[] = {10, 106, 200, 225};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(PixelAt(cubic.bytes, x, 0), cubicValues[x] * 0x010101u) << x;

    // Down: stored rows 0 and 1 hold 200 and 10 (pixels count from the top).
    // The last source row is blended with weight 0.
    Scaled down = Scale(Image(1, 2, 24, TwoGreys), 0, 1, 4);
    ASSERT_TRUE(down.made);
    const unsigned rows[] = {200, 105, 10, 10};  // (200*127+128)/255 + (10*128+128)/255
    for (int y = 0; y < 4; ++y) EXPECT_EQ(PixelAt(down.bytes, 0, y), rows[y] * 0x010101u) << y;
}

unsigned White(int, int) { return 0xFFFFFF; }

TEST(ScaleDIB, CubicRowsNearTheTopSeeBlackAbove) {
    // Row 0 of the line store is black above source row 0, so the subtracted
    // lobe takes nothing there and results from row 0 do not darken.
    Scaled s = Scale(Image(3, 3, 24, White), 1, 3, 6);
    ASSERT_TRUE(s.made);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(PixelAt(s.bytes, x, y), 0xFFFFFFu) << x << "," << y;
}

unsigned SmallIndex(int x, int y) { return static_cast<unsigned>((x * 3 + y) % 16); }

TEST(ScaleDIB, PaletteResultsUseOnlyTheSourceTable) {
    // 16 entries at 8 bits: every index found lies in the table.
    DibSpec spec;
    spec.width = 7;
    spec.height = 5;
    spec.bitCount = 8;
    spec.colors = 16;
    spec.clrUsed = 16;
    Bytes source = PackedDib(spec, SmallIndex);
    for (int mode : {0, 1}) {
        Scaled s = Scale(source, mode, 19, 11);
        ASSERT_TRUE(s.made);
        EXPECT_EQ(Field32(s.bytes, 32), 16);
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 19; ++x) ASSERT_LT(PixelAt(s.bytes, x, y), 16u) << x << "," << y;
    }
}

TEST(ScaleDIB, ModesAndSizeBits) {
    Bytes source = Image(9, 6, 8);
    // Any mode but 0 with a non-zero low half is the cubic mode.
    Scaled one = Scale(source, 1, 14, 10), two = Scale(source, 2, 14, 10), big = Scale(source, 0x30001, 14, 10);
    ASSERT_TRUE(one.made && two.made && big.made);
    EXPECT_EQ(one.bytes, two.bytes);
    EXPECT_EQ(one.bytes, big.bytes);
    // Only the low 16 bits of the new size count.
    Scaled wrapped = Scale(source, 0, 0x10000 + 14, 0x20000 + 10);
    Scaled plain = Scale(source, 0, 14, 10);
    ASSERT_TRUE(wrapped.made && plain.made);
    EXPECT_EQ(wrapped.bytes, plain.bytes);
}

TEST(ScaleDIB, NewHeightZeroGivesAnImageWithoutRows) {
    Scaled s = Scale(Image(5, 5, 8), 0, 7, 0);
    ASSERT_TRUE(s.made);
    EXPECT_EQ(Field32(s.bytes, 4), 7);
    EXPECT_EQ(Field32(s.bytes, 8), 0);
    EXPECT_EQ(Field32(s.bytes, 20), 0);
}

struct Failure {
    const char* name;
    int depth;
    int mode;
    int width;
    int height;
    int code;  // LastImgError afterwards; 99 means left alone
};

class ScaleFailures : public ::testing::TestWithParam<Failure> {};

TEST_P(ScaleFailures, GiveZeroAndTheirCode) {
    const Failure f = GetParam();
    prism::LastImgError = 99;
    Scaled s = Scale(Image(6, 3, f.depth), f.mode, f.width, f.height);
    EXPECT_FALSE(s.made);
    EXPECT_EQ(ImgError(), f.code);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ScaleFailures,
    ::testing::Values(Failure{"NewWidthZero8", 8, 0, 0, 4, 1}, Failure{"NewWidthZero24", 24, 1, 0, 4, 1},
                      Failure{"NewWidthZero4", 4, 0, 0x10000, 4, 1},
                      Failure{"Depth16", 16, 0, 4, 4, 21}, Failure{"Depth32", 32, 0, 4, 4, 21},
                      Failure{"LinearTooWide", 8, 0, 16384, 1, 8}, Failure{"CubicTooWide", 24, 1, 10923, 1, 8},
                      Failure{"CubicTooWideByWrap", 4, 1, -1, 1, 8},
                      Failure{"ModeWithZeroLowHalf", 8, 0x10000, 4, 4, 8},
                      // The 1-bit stretcher refuses and reports nothing.
                      Failure{"OneBitNegative", 1, 0, -3, 4, 99}, Failure{"OneBitZero", 1, 0, 4, 0, 99}),
    [](const ::testing::TestParamInfo<Failure>& info) { return std::string(info.param.name); });

TEST(ScaleDIB, WidestResultsBelowTheWalkLimits) {
    Scaled linear = Scale(Image(4, 1, 8), 0, 16383, 1);
    EXPECT_TRUE(linear.made);
    Scaled cubic = Scale(Image(4, 1, 24), 1, 10922, 1);
    EXPECT_TRUE(cubic.made);
}

TEST(ScaleDIB, BadBlocksFailSafely) {
    SetImgError(0);
    EXPECT_EQ(ScaleDIB(nullptr, 0, 4, 4), nullptr);
    EXPECT_EQ(ImgError(), 8);

    // Compressed input must be expanded first.
    Bytes rle = Image(8, 4, 8);
    rle[16] = 1;
    SetImgError(0);
    EXPECT_FALSE(Scale(rle, 0, 4, 4).made);
    EXPECT_EQ(ImgError(), 18);

    // A block too short for its rows, a core header, a negative height: 0,
    // nothing read past the block.
    Bytes shortBlock = Image(8, 4, 24);
    shortBlock.resize(shortBlock.size() - 10);
    EXPECT_FALSE(Scale(shortBlock, 0, 4, 4).made);
    DibSpec core;
    core.coreHeader = true;
    core.width = 4;
    core.height = 4;
    EXPECT_FALSE(Scale(PackedDib(core), 0, 8, 8).made);
    Bytes upsideDown = Image(4, 4, 8);
    const std::int32_t minus = -4;
    std::memcpy(upsideDown.data() + 8, &minus, 4);
    EXPECT_FALSE(Scale(upsideDown, 0, 8, 8).made);
    Bytes header = Image(4, 4, 8);
    header.resize(30);
    EXPECT_FALSE(Scale(header, 0, 8, 8).made);
}

TEST(ScaleDIB, OddWidthsAtFourBitsKeepPixelsAndPadding) {
    Bytes source = Image(5, 2, 4);
    Scaled s = Scale(source, 0, 5, 2);
    ASSERT_TRUE(s.made);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x) ASSERT_EQ(PixelAt(s.bytes, x, y), PixelAt(source, x, y));
    // Rows of 5 pixels take 3 bytes; the bytes after stay 0.
    EXPECT_EQ(s.bytes[40 + 64 + 3], 0);
    EXPECT_EQ(s.bytes[40 + 64 + 7], 0);
}

}  // namespace
