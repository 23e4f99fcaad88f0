// Palette to true colour, colour to grey, and 1-bit to grey with smoothing.
#include "core/errors.h"
#include "tone/tone_internal.h"
#include "tone_test_util.h"

#include <gtest/gtest.h>

using namespace testing_support;
using namespace tone_test;

namespace {

TEST(Convert8to24, LooksUpEveryIndexInTheTable) {
    DibSpec spec;
    spec.width = 7;
    spec.height = 3;
    Bytes src = PackedDib(spec);
    HDIB dib = BlockFrom(src);
    prism::LastImgError = 9;
    Result out(Convert8to24(dib));
    ASSERT_NE(out.dib, nullptr);
    EXPECT_EQ(prism::LastImgError, 0);
    Bytes o = out.bytes();
    EXPECT_EQ(Get16(o, 14), 24);
    EXPECT_EQ(Get32(o, 32), 0u);
    ASSERT_EQ(o.size(), 40 + 3 * Stride(7, 24));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 7; ++x) {
            int i = At8(src, x, y);
            unsigned expected = (255u - i) << 16 | ((5u * i + 2) & 0xFF) << 8 | ((3u * i + 1) & 0xFF);
            EXPECT_EQ(PixelAt(o, x, y), expected);
        }
    GlobalUnlock(dib);  // the lock left standing on the source
    GlobalFree(dib);
}

TEST(Convert8to24, RefusesOtherDepthsWithTheirCodes) {
    struct Case {
        int bitCount;
        int expected;
    } cases[] = {{1, prism::kErrBitsPerPixel}, {4, prism::kErrBitsPerPixel}, {24, prism::kErrTextless}};
    for (const Case& c : cases) {
        HDIB dib = BlockFrom(Blank(5, 5, c.bitCount));
        EXPECT_EQ(Convert8to24(dib), nullptr);
        EXPECT_EQ(prism::LastImgError, c.expected) << c.bitCount;
        GlobalFree(dib);
    }
    Bytes cut = Blank(5, 5, 8);
    cut.resize(cut.size() - 4);  // into the last row's pixels, not only its padding
    HDIB dib = BlockFrom(cut);
    EXPECT_EQ(Convert8to24(dib), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrDibSize);
    GlobalFree(dib);
    EXPECT_EQ(Convert8to24(nullptr), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrParameter);
}

TEST(ConvColorDIBtoGrayscale, WeightsOfPrimaries) {
    struct Case {
        unsigned rgb;
        int plain, weighted;
    } cases[] = {{0xFF0000, 85, 78}, {0x00FF00, 85, 147}, {0x0000FF, 85, 29}, {0xFFFFFF, 255, 255},
                 {0x000000, 0, 0},   {0x102030, 32, 28}};
    for (const Case& c : cases) {
        Bytes src = Blank(3, 2, 24);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x) {
                unsigned char* p = src.data() + 40 + y * Stride(3, 24) + x * 3;
                p[0] = c.rgb & 0xFF;
                p[1] = (c.rgb >> 8) & 0xFF;
                p[2] = (c.rgb >> 16) & 0xFF;
            }
        HDIB dib = BlockFrom(src);
        for (int weighted = 0; weighted < 2; ++weighted) {
            Result out(ConvColorDIBtoGrayscale(dib, 7, weighted));  // mode ignored above 1 bit
            ASSERT_NE(out.dib, nullptr);
            Bytes o = out.bytes();
            EXPECT_EQ(Get16(o, 14), 8);
            EXPECT_EQ(Get32(o, 32), 256u);
            EXPECT_EQ(o[40 + 200 * 4], 200);  // ramp
            EXPECT_EQ(At8(o, 2, 1), weighted ? c.weighted : c.plain) << std::hex << c.rgb;
        }
        GlobalFree(dib);
    }
}

TEST(ConvColorDIBtoGrayscale, PaletteImagesKeepIndicesAndGreyTheirTable) {
    // 8 bits with 100 entries: a 256-entry table, 100 and up black.
    DibSpec spec;
    spec.width = 9;
    spec.height = 4;
    spec.colors = 100;
    spec.clrUsed = 100;
    Bytes src = PackedDib(spec, [](int x, int y) { return static_cast<unsigned>((x + y * 9) % 100); });
    HDIB dib = BlockFrom(src);
    Result out(ConvColorDIBtoGrayscale(dib, 0, 0));
    ASSERT_NE(out.dib, nullptr);
    Bytes o = out.bytes();
    EXPECT_EQ(Get32(o, 32), 256u);
    for (int i = 0; i < 100; ++i) {
        int mean = (((3 * i + 1) & 0xFF) + ((5 * i + 2) & 0xFF) + (255 - i)) / 3;
        ASSERT_EQ(o[40 + i * 4], mean) << i;
        ASSERT_EQ(o[41 + i * 4], mean);
    }
    for (int i = 100; i < 256; ++i) ASSERT_EQ(o[40 + i * 4], 0);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 9; ++x) EXPECT_EQ(At8(o, x, y), At8(src, x, y));
    GlobalFree(dib);

    // 4 bits stays 4 bits with 16 grey entries.
    spec = DibSpec();
    spec.width = 5;
    spec.height = 2;
    spec.bitCount = 4;
    Bytes four = PackedDib(spec);
    HDIB d4 = BlockFrom(four);
    Result o4(ConvColorDIBtoGrayscale(d4, 0, 1));
    ASSERT_NE(o4.dib, nullptr);
    Bytes b4 = o4.bytes();
    EXPECT_EQ(Get16(b4, 14), 4);
    EXPECT_EQ(Get32(b4, 32), 16u);
    ASSERT_EQ(b4.size(), four.size());
    EXPECT_TRUE(std::equal(four.begin() + 104, four.end(), b4.begin() + 104));
    EXPECT_EQ(b4[40 + 4 * 15], (3 * 46 + 15 * 77 + 8 * 240) / 26);
    GlobalFree(d4);
}

TEST(ConvColorDIBtoGrayscale, ChecksModeOnlyForOneBit) {
    HDIB mono = BlockFrom(Blank(8, 8, 1));
    EXPECT_EQ(ConvColorDIBtoGrayscale(mono, 3, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrParameter);
    GlobalFree(mono);
    HDIB dib = BlockFrom(Blank(8, 8, 8));
    Result ok(ConvColorDIBtoGrayscale(dib, 3, 0));
    EXPECT_NE(ok.dib, nullptr);
    GlobalFree(dib);
    HDIB odd = BlockFrom(Blank(8, 8, 16));
    EXPECT_EQ(ConvColorDIBtoGrayscale(odd, 0, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrBitsPerPixel);
    GlobalFree(odd);
}

// 1-bit image, colour entry 0 black and 1 white by default of Blank().
Bytes Mono(int width, int height) {
    Bytes b = Blank(width, height, 1);
    for (int i = 0; i < 4; ++i) {
        b[40 + i] = 0;
        b[44 + i] = i < 3 ? 255 : 0;
    }
    return b;
}

Bytes Grey(HDIB mono, int mode, bool viaColour) {
    Result out(viaColour ? ConvColorDIBtoGrayscale(mono, mode, 0) : ConvMonoDIBtoGrayscale(mono, mode));
    EXPECT_NE(out.dib, nullptr);
    return out.dib ? out.bytes() : Bytes();
}

TEST(MonoToGrey, UniformImagesStayUniformInEveryMode) {
    for (int mode = 0; mode < 3; ++mode)
        for (bool set : {false, true}) {
            Bytes src = Mono(24, 9);
            if (set)
                for (int y = 0; y < 9; ++y)
                    for (int x = 0; x < 24; ++x) SetBit(src, x, y);
            HDIB dib = BlockFrom(src);
            Bytes o = Grey(dib, mode, true);
            ASSERT_FALSE(o.empty());
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 24; ++x) ASSERT_EQ(At8(o, x, y), set ? 255 : 0) << mode << " " << x << "," << y;
            GlobalFree(dib);
        }
}

TEST(MonoToGrey, OnePixelGivesTheKernelOneOrTwoRowsLate) {
    const int k3[3][3] = {{8, 31, 8}, {31, 99, 31}, {8, 31, 8}};
    const int k5[5][5] = {{0, 3, 7, 3, 0}, {3, 16, 25, 16, 3}, {7, 25, 39, 25, 7}, {3, 16, 25, 16, 3}, {0, 3, 7, 3, 0}};
    for (int mode = 1; mode <= 2; ++mode) {
        const int n = mode == 1 ? 3 : 5, h = n / 2;
        Bytes src = Mono(16, 12);
        SetBit(src, 6, 4);
        HDIB dib = BlockFrom(src);
        Bytes o = Grey(dib, mode, true);
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 16; ++x) {
                // Kernel row r lands on stored row 4 + r: centred on row 4 + h.
                int r = y - 4, c = x - 6 + h;
                int expected = (r >= 0 && r < n && c >= 0 && c < n) ? (n == 3 ? k3[r][c] : k5[r][c]) : 0;
                ASSERT_EQ(At8(o, x, y), expected) << mode << " " << x << "," << y;
            }
        GlobalFree(dib);
    }
}

TEST(MonoToGrey, EdgesRepeatRowZeroAndAPeriodOfFourColumns) {
    // A set pixel in column 3 also stands left of column 0; one in row 0
    // stands below the image.
    Bytes src = Mono(16, 6);
    SetBit(src, 3, 0);
    HDIB dib = BlockFrom(src);
    Bytes o = Grey(dib, 1, true);
    // Row 0 = kernel rows 1..3 all on source row 0: 47, 161, 47 per column.
    EXPECT_EQ(At8(o, 0, 0), 47);
    EXPECT_EQ(At8(o, 1, 0), 0);
    EXPECT_EQ(At8(o, 2, 0), 47);
    EXPECT_EQ(At8(o, 3, 0), 161);
    EXPECT_EQ(At8(o, 4, 0), 47);
    EXPECT_EQ(At8(o, 3, 1), 99 + 31);  // kernel rows 2 and 3 still on row 0
    EXPECT_EQ(At8(o, 3, 2), 31);
    EXPECT_EQ(At8(o, 3, 3), 0);
    GlobalFree(dib);
}

TEST(MonoToGrey, ModeIsLoweredByHeight) {
    struct Case {
        int height, asked, same;
    } cases[] = {{3, 2, 0}, {5, 2, 1}, {4, 2, 1}, {3, 1, 1}};
    for (const Case& c : cases) {
        Bytes src = Mono(13, c.height);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < 13; x += 2 + y) SetBit(src, x, y);
        HDIB dib = BlockFrom(src);
        EXPECT_EQ(Grey(dib, c.asked, false), Grey(dib, c.same, false)) << c.height;
        GlobalFree(dib);
    }
}

TEST(ConvMonoDIBtoGrayscale, PolarityFollowsTheTwoColourEntries) {
    Bytes src = Mono(10, 2);  // entry 0 black, entry 1 white: flag 1
    SetBit(src, 1, 0);
    HDIB dib = BlockFrom(src);
    Bytes o = Grey(dib, 0, false);
    EXPECT_EQ(Get32(o, 32), 0u);
    EXPECT_EQ(o.size() - 1064 - 2 * 12, static_cast<size_t>((10 * 40 + 155) / 32 * 4));
    EXPECT_EQ(At8(o, 1, 0), 0);
    EXPECT_EQ(At8(o, 0, 0), 255);
    EXPECT_EQ(At8(o, 9, 1), 255);
    GlobalFree(dib);
    std::swap_ranges(src.begin() + 40, src.begin() + 44, src.begin() + 44);  // white first: flag 0
    dib = BlockFrom(src);
    o = Grey(dib, 0, false);
    EXPECT_EQ(At8(o, 1, 0), 255);
    EXPECT_EQ(At8(o, 0, 0), 0);
    GlobalFree(dib);
}

TEST(ConvMonoDIBtoGrayscale, WidthsOf8kPlus1SmoothSafely) {
    for (int width : {1, 9, 17, 33}) {
        for (int mode = 1; mode <= 2; ++mode) {
            Bytes src = Mono(width, 7);
            std::swap_ranges(src.begin() + 40, src.begin() + 44, src.begin() + 44);
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < width; ++x) SetBit(src, x, y);
            HDIB dib = BlockFrom(src);
            Bytes o = Grey(dib, mode, false);
            ASSERT_FALSE(o.empty());
            // Clear padding bits count as pixels: the last columns darken,
            // the rest of a wide enough row stays full.
            if (width > 8) {
                EXPECT_EQ(At8(o, 2, 3), 255) << width;
            }
            EXPECT_LT(At8(o, width - 1, 3), 255) << width;
            GlobalFree(dib);
        }
    }
}

TEST(ConvMonoDIBtoGrayscale, RefusesInTheFixedOrder) {
    HDIB eight = BlockFrom(Blank(4, 4, 8));
    EXPECT_EQ(ConvMonoDIBtoGrayscale(eight, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrCompressed);
    GlobalFree(eight);
    HDIB mono = BlockFrom(Mono(4, 4));
    EXPECT_EQ(ConvMonoDIBtoGrayscale(mono, 3), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrParameter);
    GlobalFree(mono);
    Bytes cut = Mono(4, 4);
    cut.resize(50);
    HDIB small = BlockFrom(cut);
    EXPECT_EQ(ConvMonoDIBtoGrayscale(small, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrDibSize);
    GlobalFree(small);
    EXPECT_EQ(ConvMonoDIBtoGrayscale(nullptr, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrParameter);
}

TEST(ExpandMonoRow, WritesOnlySetBitsAfterClearingTheOneBitStride) {
    unsigned char src[2] = {0xA0, 0x80};  // pixels 0, 2 and 8
    unsigned char dst[24];
    std::memset(dst, 7, sizeof(dst));
    prism::tone::ExpandMonoRow(src, 9, dst, 0, sizeof(dst));
    const unsigned char expected[] = {255, 0, 255, 0, 7, 7, 7, 7, 255, 7};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(dst[i], expected[i]) << i;
    // Inverted, the clear padding bits of the last byte write 255 too, but
    // never past the room given.
    std::memset(dst, 0, sizeof(dst));
    prism::tone::ExpandMonoRow(src, 9, dst, 1, 12);
    EXPECT_EQ(dst[8], 0);
    EXPECT_EQ(dst[11], 255);
    EXPECT_EQ(dst[12], 0);
}

}  // namespace
