// Nearest-neighbour stretchers: rectangles, sampling phase, edges and
// refusals, at every depth.
#include "display/stretch.h"

#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace testing_support;

using Stretcher = HDIB (*)(const void*, const unsigned char*, int, int, int, int, int, int);

Stretcher ForDepth(int depth) {
    switch (depth) {
        case 1: return prism::StretchRows1;
        case 4: return prism::StretchRows4;
        case 8: return prism::StretchRows8;
        default: return prism::StretchRows24;
    }
}

// Pixels with neighbours that differ at every depth (x, y from the top).
unsigned Pattern(int x, int y) {
    const unsigned v = static_cast<unsigned>(x * 5 + y * 3 + (x * y) % 7);
    return v | (v * 37u) << 8 | (v * 101u) << 16;
}
unsigned Mask(int depth) { return depth == 24 ? 0xFFFFFFu : (1u << depth) - 1; }

constexpr int kW = 19, kH = 9;

// Source pixel at (x, y) counted from the top.
unsigned Source(int depth, int x, int y) { return Pattern(x, y) & Mask(depth); }

// Result pixel at (x, y) counted from the top.
unsigned Result(const Bytes& dib, int x, int y) {
    std::int32_t height;
    std::memcpy(&height, dib.data() + 8, 4);
    return PixelAt(dib, x, height - 1 - y);
}

struct Stretched {
    Bytes bytes;
    bool made = false;
};

Stretched Stretch(int depth, int srcX, int srcY, int srcW, int srcH, int dstW, int dstH) {
    DibSpec spec;
    spec.width = kW;
    spec.height = kH;
    spec.bitCount = depth;
    Bytes src = PackedDib(spec, Pattern);
    const size_t colors = depth <= 8 ? 1u << depth : 0;
    const unsigned char* pixels = src.data() + 40 + 4 * colors;
    Stretched s;
    HDIB dib = ForDepth(depth)(src.data(), pixels, srcX, srcY, srcW, srcH, dstW, dstH);
    if (!dib) return s;
    s.made = true;
    s.bytes = BlockBytes(dib);
    GlobalFree(dib);
    return s;
}

class StretchByDepth : public ::testing::TestWithParam<int> {};

TEST_P(StretchByDepth, SameSizeCopiesTheRectangle) {
    const int depth = GetParam();
    // An odd left edge exercises the bit and nibble shifts.
    for (int srcX : {0, 3, 5}) {
        Stretched s = Stretch(depth, srcX, 2, 11, 5, 11, 5);
        ASSERT_TRUE(s.made);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 11; ++x)
                ASSERT_EQ(Result(s.bytes, x, y), Source(depth, srcX + x, 2 + y)) << srcX << " " << x << "," << y;
        // Padding bits and nibbles of each row are clear.
        if (depth == 1) {
            EXPECT_EQ(s.bytes[40 + 8 + 1] & 0x1F, 0);
        }
        if (depth == 4) {
            EXPECT_EQ(s.bytes[40 + 64 + 5] & 0x0F, 0);
        }
    }
}

TEST_P(StretchByDepth, HalvingTakesEvenColumnsAndRowsDoublingRepeatsThem) {
    const int depth = GetParam();
    Stretched half = Stretch(depth, 1, 0, 16, 8, 8, 4);
    ASSERT_TRUE(half.made);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(Result(half.bytes, x, y), Source(depth, 1 + 2 * x, 2 * y));

    Stretched twice = Stretch(depth, 2, 1, 6, 4, 12, 8);
    ASSERT_TRUE(twice.made);
    // Columns taken: 0, 1, 1, 2, 2, 3, ...; rows likewise.  The last column
    // and row would need column and row 6 and 4 of the rectangle, past its
    // end, so they stay 0.
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) {
            const bool sampled = (x + 1) / 2 < 6 && (y + 1) / 2 < 4;
            ASSERT_EQ(Result(twice.bytes, x, y), sampled ? Source(depth, 2 + (x + 1) / 2, 1 + (y + 1) / 2) : 0u)
                << x << "," << y;
        }
}

TEST_P(StretchByDepth, BeyondTheRightAndBottomEdgesIsPixelZero) {
    const int depth = GetParam();
    Stretched s = Stretch(depth, kW - 3, kH - 2, 6, 4, 6, 4);
    ASSERT_TRUE(s.made);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) {
            const bool inside = x < 3 && y < 2;
            ASSERT_EQ(Result(s.bytes, x, y), inside ? Source(depth, kW - 3 + x, kH - 2 + y) : 0u) << x << "," << y;
        }
}

TEST_P(StretchByDepth, RefusesEmptySizesAndCornersOutside) {
    const int depth = GetParam();
    EXPECT_FALSE(Stretch(depth, 0, 0, 0, 4, 4, 4).made);
    EXPECT_FALSE(Stretch(depth, 0, 0, 4, 0, 4, 4).made);
    EXPECT_FALSE(Stretch(depth, 0, 0, 4, 4, 0, 4).made);
    EXPECT_FALSE(Stretch(depth, 0, 0, 4, 4, 4, -2).made);
    EXPECT_FALSE(Stretch(depth, -1, 0, 4, 4, 4, 4).made);
    EXPECT_FALSE(Stretch(depth, 0, -1, 4, 4, 4, 4).made);
    EXPECT_FALSE(Stretch(depth, kW, 0, 4, 4, 4, 4).made);
    EXPECT_FALSE(Stretch(depth, 0, kH, 4, 4, 4, 4).made);
    EXPECT_TRUE(Stretch(depth, kW - 1, kH - 1, 1, 1, 1, 1).made);
}

TEST_P(StretchByDepth, HeaderKeepsTableAndImageSizeField) {
    const int depth = GetParam();
    DibSpec spec;
    spec.width = kW;
    spec.height = kH;
    spec.bitCount = depth;
    spec.sizeImage = 12345;  // kept as it was, whatever the new size
    Bytes src = PackedDib(spec, Pattern);
    const size_t table = depth <= 8 ? 4u << depth : 0;
    HDIB dib = ForDepth(depth)(src.data(), src.data() + 40 + table, 0, 0, kW, kH, 7, 3);
    ASSERT_NE(dib, nullptr);
    Bytes out = BlockBytes(dib);
    GlobalFree(dib);
    std::int32_t width, height;
    std::uint32_t sizeImage;
    std::memcpy(&width, out.data() + 4, 4);
    std::memcpy(&height, out.data() + 8, 4);
    std::memcpy(&sizeImage, out.data() + 20, 4);
    EXPECT_EQ(width, 7);
    EXPECT_EQ(height, 3);
    EXPECT_EQ(sizeImage, 12345u);
    EXPECT_EQ(0, std::memcmp(out.data() + 40, src.data() + 40, table));
}

INSTANTIATE_TEST_SUITE_P(Depths, StretchByDepth, ::testing::Values(1, 4, 8, 24));

TEST(Stretch, WrongDepthOrCoreHeaderIsRefused) {
    DibSpec spec;
    spec.width = 8;
    spec.height = 2;
    spec.bitCount = 8;
    Bytes src = PackedDib(spec);
    EXPECT_EQ(prism::StretchRows4(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    EXPECT_EQ(prism::StretchRows24(src.data(), src.data() + 40 + 1024, 0, 0, 8, 2, 4, 1), nullptr);
    spec.coreHeader = true;
    Bytes core = PackedDib(spec);
    EXPECT_EQ(prism::StretchRows8(core.data(), core.data() + 12 + 768, 0, 0, 8, 2, 4, 1), nullptr);
}

TEST(Stretch, ColorCountByHeaderKind) {
    DibSpec spec;
    spec.bitCount = 8;
    spec.colors = 7;
    spec.clrUsed = 7;
    EXPECT_EQ(prism::StretchColorCount(PackedDib(spec).data()), 7u);
    spec.bitCount = 24;
    EXPECT_EQ(prism::StretchColorCount(PackedDib(spec).data()), 7u);
    spec.colors = -1;
    spec.clrUsed = 0;
    EXPECT_EQ(prism::StretchColorCount(PackedDib(spec).data()), 0u);
    spec.bitCount = 4;
    EXPECT_EQ(prism::StretchColorCount(PackedDib(spec).data()), 16u);
    spec.coreHeader = true;
    spec.bitCount = 1;
    EXPECT_EQ(prism::StretchColorCount(PackedDib(spec).data()), 2u);
}

}  // namespace
