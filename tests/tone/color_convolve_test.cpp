// Square filters over 24-bit images, through their brightness.
#include "core/errors.h"
#include "tone_test_util.h"

#include <gtest/gtest.h>

using namespace testing_support;
using namespace tone_test;

namespace {

// 24-bit image with pixel (x, y) from a function returning 0xRRGGBB.
Bytes Image24(int width, int height, unsigned (*f)(int, int)) {
    DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = 24;
    return PackedDib(spec, f);
}

Bytes Filtered(const Bytes& src, int mode, int kind, int size, const short* matrix = nullptr,
               const char* file = nullptr, int* errorOut = nullptr) {
    HDIB dib = BlockFrom(src);
    int error = -1;
    HDIB out = ColorConvolution(dib, 1, mode, static_cast<WORD>(kind), static_cast<short>(size), file, matrix, &error);
    if (errorOut) *errorOut = error;
    EXPECT_EQ(BlockBytes(dib), src);
    Bytes o = out ? BlockBytes(out) : Bytes();
    if (out) GlobalFree(out);
    GlobalFree(dib);
    return o;
}

unsigned Colours(int x, int y) { return static_cast<unsigned>((x * 0x3A1F07 + y * 0x11D2C3) & 0xFFFFFF); }

TEST(ColorConvolution, IdentityLeavesEveryByteInBothModes) {
    const short identity[] = {0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    Bytes src = Image24(11, 7, Colours);
    for (int mode : {0, 1, 2}) {
        Bytes o = Filtered(src, mode, 1, 3, identity);
        EXPECT_EQ(o, src) << mode;
    }
}

TEST(ColorConvolution, BrightnessWeightsRunBlueFirst) {
    // Centre 2, divisor 1: each byte gains the pixel's brightness.
    const short twice[] = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    struct Case {
        unsigned rgb;
        int mode;
        unsigned expected;
    } cases[] = {{0x0000FF, 1, 0x4E4EFF}, {0x0000FF, 0, 0x5555FF}, {0xFF0000, 1, 0xFF1D1D},
                 {0x00FF00, 1, 0x93FF93}, {0x00FF00, 2, 0x55FF55}};
    for (const Case& c : cases) {
        static unsigned colour;
        colour = c.rgb;
        Bytes src = Image24(5, 4, [](int, int) { return colour; });
        Bytes o = Filtered(src, c.mode, 1, 3, twice);
        ASSERT_FALSE(o.empty());
        EXPECT_EQ(PixelAt(o, 2, 2), c.expected) << std::hex << c.rgb << " mode " << c.mode;
    }
}

TEST(ColorConvolution, ConstantBrightnessPassesColourEdgesUntouched) {
    // Every pixel has the plain mean 60, in differing colours.
    Bytes src = Image24(20, 12, [](int x, int y) {
        static const unsigned c[] = {0x1E3C5A, 0x3C3C3C, 0x5A3C1E, 0x0A3C6E};
        return c[(x / 3 + y) % 4];
    });
    for (int size : {3, 5, 7}) {
        Bytes o = Filtered(src, 0, 3, size);
        ASSERT_FALSE(o.empty());
        // Size 3 everywhere; 5 and 7 away from the edge columns.
        const int last = size == 3 ? 20 : 20 - 6;
        const int first = size == 3 ? 0 : 1;
        for (int y = 0; y < 12; ++y)
            for (int x = first; x < last; ++x) ASSERT_EQ(PixelAt(o, x, y), PixelAt(src, x, y)) << size << " " << x;
    }
}

TEST(ColorConvolution, LastPixelsLandTooFarLeft) {
    // On a uniform grey area the columns near the edges take the weight
    // sums of the colour routines.
    struct Case {
        int kind, size, value;
        std::vector<std::pair<int, int>> columns;  // column from the right (1 = W-1), value
        int col0;
    } cases[] = {
        {3, 5, 100, {{1, 60}, {2, 120}, {3, 120}, {4, 120}, {5, 100}}, 120},
        {3, 7, 98, {{1, 28}, {2, 56}, {3, 126}, {6, 126}, {7, 98}}, 98},
        {4, 5, 88, {{1, 32}, {2, 120}, {3, 114}, {4, 94}, {5, 88}}, 94},
        {5, 5, 100, {{1, 0}, {2, 255}, {3, 200}, {4, 0}, {5, 100}}, 0},
        {6, 5, 10, {{1, 0}, {2, 180}, {3, 30}, {4, 0}, {5, 10}}, 0},
    };
    const int W = 18;
    for (const Case& c : cases) {
        static unsigned grey;
        grey = static_cast<unsigned>(c.value) * 0x010101u;
        Bytes src = Image24(W, 10, [](int, int) { return grey; });
        Bytes o = Filtered(src, 0, c.kind, c.size);
        ASSERT_FALSE(o.empty());
        for (int y = 0; y < 10; ++y) {
            EXPECT_EQ(PixelAt(o, 0, y), static_cast<unsigned>(c.col0) * 0x010101u) << c.kind << "/" << c.size;
            for (auto col : c.columns)
                EXPECT_EQ(PixelAt(o, W - col.first, y), static_cast<unsigned>(col.second) * 0x010101u)
                    << c.kind << "/" << c.size << " column W-" << col.first;
        }
    }
}

TEST(ColorConvolution, NarrowRowsFollowThePlainRule) {
    // Rows narrower than two kernels repeat their edge pixels plainly, so a
    // uniform area stays as it is whatever the kind.
    for (int W : {1, 2, 3, 5, 9})
        for (int kind = 3; kind <= 6; ++kind)
            for (int size : {3, 5}) {
                if (W >= 2 * size) continue;
                Bytes src = Image24(W, 7, [](int, int) { return 0x405060u; });
                Bytes o = Filtered(src, 0, kind, size);
                EXPECT_EQ(o, src) << W << " " << kind << "/" << size;
            }
}

TEST(ColorConvolution, SharpeningMovesTheThreeBytesAlike) {
    Bytes src = Image24(16, 8, [](int x, int) { return x < 8 ? 0x304050u : 0xC0A0F0u; });
    Bytes o = Filtered(src, 1, 5, 3);
    ASSERT_FALSE(o.empty());
    bool moved = false;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) {
            unsigned a = PixelAt(src, x, y), b = PixelAt(o, x, y);
            int d[3];
            for (int k = 0; k < 3; ++k) d[k] = int((b >> (8 * k)) & 0xFF) - int((a >> (8 * k)) & 0xFF);
            // Bytes that did not saturate all moved by the same amount.
            int common = 1000;
            for (int k = 0; k < 3; ++k) {
                int v = int((b >> (8 * k)) & 0xFF);
                if (v == 0 || v == 255) continue;
                if (common == 1000) common = d[k];
                EXPECT_EQ(d[k], common) << x << "," << y;
            }
            moved = moved || d[0] != 0;
        }
    EXPECT_TRUE(moved);
    // Beside the step: darker side darker, lighter side lighter.
    EXPECT_LT(PixelAt(o, 7, 4) & 0xFF, 0x50u);
    EXPECT_GT(PixelAt(o, 8, 4) & 0xFF, 0xF0u - 1);
}

TEST(ColorConvolution, NegativeSumsShiftDownButDivideTowardZero) {
    // Centre -1: the accumulator is minus the brightness 17.
    Bytes src = Image24(6, 5, [](int, int) { return 0x1D1105u; });  // bytes 5, 17, 29
    const short by16[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 16};
    const short by15[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 15};
    Bytes shifted = Filtered(src, 0, 1, 3, by16);  // -17 >> 4 = -2: d = -19
    Bytes divided = Filtered(src, 0, 1, 3, by15);  // -17 / 15 = -1: d = -18
    ASSERT_FALSE(shifted.empty());
    ASSERT_FALSE(divided.empty());
    EXPECT_EQ(PixelAt(shifted, 3, 2), 0x0A0000u);
    EXPECT_EQ(PixelAt(divided, 3, 2), 0x0B0000u);
}

TEST(ColorConvolution, InPlaceMatchesTheCopy) {
    for (int kind = 3; kind <= 6; ++kind)
        for (int size : {3, 5}) {
            Bytes src = Image24(21, 13, Colours);
            Bytes copy = Filtered(src, 1, kind, size);
            HDIB dib = BlockFrom(src);
            int error = -1;
            ASSERT_EQ(ColorConvolution(dib, 0, 1, static_cast<WORD>(kind), static_cast<short>(size), nullptr, nullptr,
                                       &error),
                      dib);
            EXPECT_EQ(BlockBytes(dib), copy) << kind << "/" << size;
            GlobalFree(dib);
        }
}

TEST(ColorConvolution, RefusesBadInput) {
    Bytes src = Image24(8, 8, Colours);
    const short big[] = {0, 0, 0, 0, 128, 0, 0, 0, 0, 1};
    struct Case {
        const char* name;
        int kind, size;
        const short* matrix;
        const char* file;
    } cases[] = {{"kind 0", 0, 3, nullptr, nullptr},        {"kind 7", 7, 3, nullptr, nullptr},
                 {"cross at 7", 5, 7, nullptr, nullptr},    {"size 4", 3, 4, nullptr, nullptr},
                 {"size 6", 1, 6, big, nullptr},            {"no matrix", 1, 3, nullptr, nullptr},
                 {"no file name", 2, 3, nullptr, nullptr},  {"cell 128", 1, 3, big, nullptr},
                 {"missing file", 2, 3, nullptr, "none.bin"}};
    for (const Case& c : cases) {
        int error = -1;
        EXPECT_TRUE(Filtered(src, 0, c.kind, c.size, c.matrix, c.file, &error).empty()) << c.name;
        EXPECT_EQ(error, prism::kErrParameter) << c.name;
    }
    struct Bad {
        const char* name;
        Bytes bytes;
        int expected;
    } bad[] = {{"8-bit", Blank(8, 8, 8), prism::kErrBitsPerPixel},
               {"too small", Bytes(src.begin(), src.end() - 5), prism::kErrDibSize}};
    for (const Bad& b : bad) {
        HDIB dib = BlockFrom(b.bytes);
        int error = -1;
        EXPECT_EQ(ColorConvolution(dib, 0, 0, 3, 3, nullptr, nullptr, &error), nullptr) << b.name;
        EXPECT_EQ(error, b.expected) << b.name;
        GlobalFree(dib);
    }
}

TEST(ColorConvolution, KernelFilesOf16BitValues) {
    Bytes src = Image24(9, 6, Colours);
    ScratchFile file("kernel16.bin");
    Bytes box;
    for (int k = 0; k < 9; ++k) box.insert(box.end(), {1, 0});
    box.insert(box.end(), {0, 0});
    file.Write(box);
    int error = -1;
    EXPECT_EQ(Filtered(src, 0, 2, 3, nullptr, file.path(), &error), Filtered(src, 0, 3, 3));
    EXPECT_EQ(error, 0);
    file.Write(Bytes(box.begin(), box.end() - 1));
    EXPECT_TRUE(Filtered(src, 0, 2, 3, nullptr, file.path(), &error).empty());
    EXPECT_EQ(error, prism::kErrParameter);
    file.Write(Bytes());
    EXPECT_TRUE(Filtered(src, 0, 2, 3, nullptr, file.path(), &error).empty());
    EXPECT_EQ(error, prism::kErrParameter);
}

}  // namespace
