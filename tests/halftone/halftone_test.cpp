// Halftone through its export: the error word, thresholds, the screen, the
// 24-bit row mapping and the pure tones.
#include "halftone/reduce_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

using namespace reduce_test;
using testing_support::PixelAt;

namespace {

Bytes Half(const Bytes& dib, WORD method, int brightness, WORD* error = nullptr) {
    WORD local = 0xBEEF;
    WORD* word = error ? error : &local;
    return RunOn(dib, [&](HGLOBAL block) { return Halftone(block, method, brightness, word); });
}

TEST(Halftone, ErrorWordCodesAndLocks) {
    prism::LastImgError = 12;
    WORD error = 0;
    EXPECT_EQ(Halftone(nullptr, 0, 0, &error), nullptr);
    EXPECT_EQ(error, 8);

    HGLOBAL block = testing_support::BlockFrom(FlatGrey(8, 4, 8, 77));
    error = 0;
    EXPECT_EQ(Halftone(block, 3, 0, &error), nullptr);
    EXPECT_EQ(error, 8);
    EXPECT_FALSE(StillLocked(block));
    GlobalFree(block);

    HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
    error = 0;
    EXPECT_EQ(Halftone(empty, 0, 0, &error), nullptr);
    EXPECT_EQ(error, 1);
    GlobalFree(empty);

    for (int depth : {1, 16, 32}) {
        testing_support::DibSpec spec;
        spec.width = 8;
        spec.height = 2;
        spec.bitCount = depth;
        spec.colors = depth == 1 ? 2 : 0;
        HGLOBAL other = testing_support::BlockFrom(testing_support::PackedDib(spec));
        error = 0;
        EXPECT_EQ(Halftone(other, 0, 0, &error), nullptr) << depth;
        EXPECT_EQ(error, 8) << depth;
        EXPECT_TRUE(StillLocked(other)) << depth;  // a refused depth leaves the lock standing
        GlobalUnlock(other);
        GlobalFree(other);
    }
    for (int depth : {4, 8, 24}) {
        for (auto size : {std::pair<int, int>{8, 0}, {0, 3}}) {
            HGLOBAL none = testing_support::BlockFrom(FlatGrey(size.first, size.second, depth, 9));
            error = 0;
            EXPECT_EQ(Halftone(none, 1, 0, &error), nullptr);
            EXPECT_EQ(error, 1);
            EXPECT_FALSE(StillLocked(none));
            GlobalFree(none);
        }
    }
    EXPECT_EQ(ImgError(), 12);  // the library's code is never touched
}

TEST(Halftone, SuccessLeavesTheErrorWordAndHeader) {
    for (int depth : {4, 8, 24}) {
        for (WORD method : {0, 1, 2}) {
            prism::LastImgError = 12;
            WORD error = 4321;
            Bytes out = Half(FlatGrey(19, 6, depth, 200), method, 0, &error);
            ASSERT_FALSE(out.empty()) << depth << " " << method;
            EXPECT_EQ(error, 4321);
            EXPECT_EQ(ImgError(), 12);
            const size_t stride = testing_support::Stride(19, 1);
            ASSERT_EQ(out.size(), 48 + 6 * stride);
            EXPECT_EQ(Get32(out, 0), 40u);
            EXPECT_EQ(Get32(out, 4), 19u);
            EXPECT_EQ(Get32(out, 8), 6u);
            EXPECT_EQ(out[12], 1);
            EXPECT_EQ(out[14], 1);
            EXPECT_EQ(Get32(out, 20), 6 * stride);
            EXPECT_EQ(Get32(out, 24), 1234u);
            EXPECT_EQ(Get32(out, 28), 5678u);
            EXPECT_EQ(Get32(out, 32), 2u);
            EXPECT_EQ(Get32(out, 40), 0u);
            EXPECT_EQ(Get32(out, 44), 0x00FFFFFFu);
        }
    }
}

TEST(Halftone, ThresholdAtKnownGreyValues) {
    // 8-bit grey ramp: 128 is black, 129 white; brightness moves the step.
    Bytes src = MakeDib(6, 1, 8, [](int x, int) { return static_cast<unsigned>(126 + x); });
    struct Case {
        int brightness;
        unsigned bits[6];  // grey 126..131
    } cases[] = {{0, {0, 0, 0, 1, 1, 1}}, {-1, {0, 0, 0, 0, 1, 1}}, {3, {1, 1, 1, 1, 1, 1}},
                 {-2000000000, {0, 0, 0, 0, 0, 0}}, {2000000000, {1, 1, 1, 1, 1, 1}}};
    for (const Case& c : cases) {
        Bytes out = Half(src, 0, c.brightness);
        ASSERT_FALSE(out.empty());
        for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(out, x, 0), c.bits[x]) << c.brightness << " x " << x;
    }
    // The same through a 24-bit colour: (59 G + 11 B + 30 R) / 100.
    Bytes colour = MakeDib(2, 1, 24, [](int x, int) { return x ? 0x2DC837u : 0x2DC836u; });
    // x = 0: (59*200 + 11*54 + 30*45) / 100 = 137; x = 1: 137 as well.
    Bytes out = Half(colour, 0, -8);
    EXPECT_EQ(PixelAt(out, 0, 0), 1u);
    out = Half(colour, 0, -9);
    EXPECT_EQ(PixelAt(out, 0, 0), 0u);
}

TEST(Halftone, ScreenIsRecoveredFromTheOutput) {
    // A black 16 by 16 image lifted by brightness g: a cell is white exactly
    // when its screen value is below g.
    unsigned screen[16][16];
    for (int depth : {4, 8}) {
        for (auto& row : screen)
            for (unsigned& v : row) v = 999;
        for (int g = 1; g <= 256; ++g) {
            Bytes out = Half(FlatGrey(16, 16, depth, 0), 2, g);
            ASSERT_FALSE(out.empty());
            int whites = 0;
            for (int y = 0; y < 16; ++y) {
                for (int x = 0; x < 16; ++x) {
                    if (!PixelAt(out, x, y)) continue;
                    ++whites;
                    if (screen[y][x] == 999) screen[y][x] = static_cast<unsigned>(g - 1);
                }
            }
            EXPECT_EQ(whites, g < 256 ? g : 255) << g;  // 255 leaves the one cell of 255 black
        }
        const unsigned first[3][8] = {{0, 128, 32, 160, 8, 136, 40, 168},
                                      {192, 64, 224, 96, 200, 72, 232, 104},
                                      {48, 176, 16, 144, 56, 184, 24, 152}};
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 8; ++x) EXPECT_EQ(screen[y][x], first[y][x]) << depth << ": " << y << "," << x;
        EXPECT_EQ(screen[15][1], 127u);
        EXPECT_EQ(screen[15][0], 999u);  // 255: never white
    }
}

TEST(Halftone, PureTonesAndTheOneBlackCellOfTheScreen) {
    for (int depth : {4, 8, 24}) {
        for (WORD method : {0, 1, 2}) {
            const int w = 37, h = 33;
            Bytes black = Half(FlatGrey(w, h, depth, 0), method, 0);
            Bytes white = Half(FlatGrey(w, h, depth, 255), method, 0);
            ASSERT_FALSE(black.empty());
            ASSERT_FALSE(white.empty());
            for (int y = 0; y < h; ++y) {
                for (int x = 0; x < w; ++x) {
                    EXPECT_EQ(PixelAt(black, x, y), 0u) << depth << " " << method;
                    if (depth == 24) continue;  // 24-bit rows map elsewhere, see below
                    const unsigned expected = method == 2 && x % 16 == 0 && y % 16 == 15 ? 0 : 1;
                    EXPECT_EQ(PixelAt(white, x, y), expected) << depth << " " << method << " " << x << "," << y;
                }
            }
        }
    }
}

TEST(Halftone, OrderedScreenOfMidGreyIsExactlyHalf) {
    for (int depth : {4, 8, 24}) {
        Bytes out = Half(FlatGrey(32, 48, depth, 0), 2, 128);
        EXPECT_DOUBLE_EQ(WhiteFraction(out), 0.5) << depth;
    }
}

TEST(Halftone, DiffusionDensityRisesWithTheGreyLevel) {
    // The kernel keeps about three quarters of each error, so a dark field
    // never reaches the threshold, while mid-grey comes out near half.
    for (int depth : {4, 8, 24}) {
        double previous = -1;
        for (int g : {0, 34, 68, 119, 136, 170, 221, 255}) {
            double d = WhiteFraction(Half(FlatGrey(64, 64, depth, static_cast<unsigned>(g)), 1, 0));
            if (g == 0) {
                EXPECT_EQ(d, 0.0);
            } else if (g == 255 && depth != 24) {
                EXPECT_EQ(d, 1.0);
            } else if (g == 136 && depth != 24) {
                EXPECT_NEAR(d, 0.5, 0.15);
            }
            EXPECT_GE(d, previous) << depth << " grey " << g;
            previous = d;
        }
    }
}

TEST(Halftone, FourAndEightBitRowsMapOneToOne) {
    auto level = [](int x, int y) { return static_cast<unsigned>((x + 3 * y) % 16); };
    Bytes four = MakeDib(21, 9, 4, level);
    Bytes eight = MakeDib(21, 9, 8, [&](int x, int y) { return level(x, y) * 17; });
    for (WORD method : {0, 1, 2}) {
        Bytes a = Half(four, method, 5);
        Bytes b = Half(eight, method, 5);
        ASSERT_FALSE(a.empty());
        EXPECT_EQ(a, b) << method;
    }
    Bytes out = Half(eight, 0, 0);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 21; ++x) EXPECT_EQ(PixelAt(out, x, y), level(x, y) * 17 > 128 ? 1u : 0u);
}

TEST(Halftone, TwentyFourBitRowsAreReadAtThreeTimesThePitch) {
    // Width 16: the 24-bit stride is exactly three split rows, so output row
    // y shows source row 3 y, and rows past the last third are grey
    // `brightness`.
    Bytes src = MakeDib(16, 7, 24, [](int, int y) { return y % 3 == 0 ? 0xFFFFFFu : 0u; });
    Bytes out = Half(src, 0, 0);
    ASSERT_FALSE(out.empty());
    const unsigned rows[7] = {1, 1, 1, 0, 0, 0, 0};  // rows 0, 3, 6, then zero planes
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(PixelAt(out, x, y), rows[y]) << x << "," << y;
    Bytes lifted = Half(src, 0, 200);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(PixelAt(lifted, x, 6), 1u);

    // Width 6: stride 20, split rows of 8 pixels.  Output row 1 covers plane
    // positions 20..25: split row 2, columns 4..7, then split row 3, columns
    // 0 and 1.  Columns 6 and 7 of a split row lie past the width and take
    // the row's padding and the first bytes of the next row.
    Bytes wide = MakeDib(6, 5, 24, [](int x, int y) { return y == 3 && x == 0 ? 0xFFFFFFu : 0u; });
    Bytes n = Half(wide, 0, 0);
    ASSERT_FALSE(n.empty());
    // Column 6: padding, padding, blue of (0, 3): grey 28.  Column 7: green
    // and red of (0, 3), blue of (1, 3): grey 226.
    const unsigned row1[6] = {0, 0, 0, 1, 1, 0};
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(PixelAt(n, x, 0), 0u) << x;
        EXPECT_EQ(PixelAt(n, x, 1), row1[x]) << x;
    }
}

TEST(Halftone, ThinAndTruncatedImages) {
    for (int depth : {4, 8, 24}) {
        for (WORD method : {0, 1, 2}) {
            for (auto size : {std::pair<int, int>{1, 1}, {1, 9}, {9, 1}}) {
                Bytes out = Half(FlatGrey(size.first, size.second, depth, 255), method, 0);
                ASSERT_FALSE(out.empty());
                EXPECT_EQ(PixelAt(out, 0, 0), 1u) << depth << " " << method;
            }
            // Header and table without rows: the missing rows read 0.
            Bytes cut = FlatGrey(13, 7, depth, 255);
            cut.resize(40 + (depth == 24 ? 0 : 4u << depth));
            Bytes out = Half(cut, method, 0);
            ASSERT_FALSE(out.empty());
            EXPECT_EQ(WhiteFraction(out), 0.0);
        }
    }
    HGLOBAL tiny = GlobalAlloc(GHND, 12);
    WORD error = 0;
    EXPECT_EQ(Halftone(tiny, 0, 0, &error), nullptr);
    EXPECT_EQ(error, 8);  // the depth reads 0
    GlobalUnlock(tiny);
    GlobalFree(tiny);
}

}  // namespace
