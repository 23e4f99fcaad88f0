// Halftone through its export: the 16-bit error word, every depth and
// method, thresholds and brightness, the screen, the 24-bit row mapping.
#include "halftone/dither.h"
#include "halftone/reduce_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace reduce_test;

namespace {

Bytes Half(const Bytes& dib, WORD method, int brightness) {
    WORD error = 0xBEEF;
    Bytes out = RunOn(dib, [&](HGLOBAL block) { return Halftone(block, method, brightness, &error); });
    EXPECT_EQ(error, 0xBEEF);  // a success leaves the error word alone
    return out;
}

TEST(Halftone, FailuresWriteOnlyTheSixteenBitErrorWord) {
    Bytes compressed = FlatGrey(8, 2, 8, 200);
    compressed[16] = 1;  // RLE8 is not looked at
    struct Case {
        const char* what;
        Bytes dib;  // empty: a block that cannot be locked
        WORD method;
        WORD code;  // 0: success
        char lock;  // L: left locked once more, u: unlocked, -: no block
    } cases[] = {
        {"null handle", {}, 0, 8, '-'},         {"unlockable", {}, 0, 1, '-'},
        {"method 3", FlatGrey(8, 4, 8, 77), 3, 8, 'u'},
        {"1-bit", FlatGrey(8, 2, 1, 0), 0, 8, 'L'}, {"16-bit", FlatGrey(8, 2, 16, 0), 0, 8, 'L'},
        {"32-bit", FlatGrey(8, 2, 32, 0), 0, 8, 'L'}, {"12 bytes: depth 0", Bytes(12, 0), 0, 8, 'L'},
        {"compressed source accepted", compressed, 1, 0, 'u'},
    };
    std::vector<Case> all(std::begin(cases), std::end(cases));
    for (int depth : {4, 8, 24}) {
        all.push_back({"no rows", FlatGrey(8, 0, depth, 9), 1, 1, 'u'});
        all.push_back({"no columns", FlatGrey(0, 3, depth, 9), 1, 1, 'u'});
    }
    for (const Case& c : all) {
        SCOPED_TRACE(c.what);
        HGLOBAL block = std::string(c.what) == "null handle" ? nullptr : testing_support::BlockFrom(c.dib);
        WORD words[2] = {0xBEEF, 0xBEEF};
        prism::LastImgError = 12;
        HDIB result = Halftone(block, c.method, 0, &words[0]);
        EXPECT_EQ(result != nullptr, c.code == 0);
        EXPECT_EQ(words[0], c.code ? c.code : 0xBEEF);
        EXPECT_EQ(words[1], 0xBEEF);  // only 16 bits are written
        EXPECT_EQ(ImgError(), 12);    // the library's code is never touched
        if (c.lock != '-') { EXPECT_EQ(StillLocked(block), c.lock == 'L'); }
        if (c.lock == 'L') GlobalUnlock(block);
        if (result) GlobalFree(result);
        if (block) GlobalFree(block);
    }
}

// Every source depth with every method.
TEST(Halftone, EveryDepthAndMethod) {
    for (int depth : {4, 8, 24}) {
        for (WORD method : {0, 1, 2}) {
            SCOPED_TRACE("depth " + std::to_string(depth) + " method " + std::to_string(method));
            // Header and palette as the dithers' 1-bit result, pinned by the same hash.
            Bytes out = Half(FlatGrey(13, 5, depth, 200), method, 0);
            ASSERT_EQ(out.size(), 48 + 5 * testing_support::Stride(13, 1));
            EXPECT_EQ(Fnv(out, 48), 0x61002994u);
            // Pure tones, thin images included.  White misses the one screen
            // cell of 255; at 24 bits only row 0 shows source row 0.
            for (auto [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {37, 33}}) {
                EXPECT_EQ(CountOf(Half(FlatGrey(w, h, depth, 0), method, 0), 0), w * h) << w << "x" << h;
                Bytes white = Half(FlatGrey(w, h, depth, 255), method, 0);
                ASSERT_FALSE(white.empty());
                for (int y = 0; y < (depth == 24 ? 1 : h); ++y)
                    for (int x = 0; x < w; ++x)
                        EXPECT_EQ(PixelAt(white, x, y), method == 2 && x % 16 == 0 && y % 16 == 15 ? 0u : 1u)
                            << w << "x" << h << " at " << x << "," << y;
            }
            // Header and table without rows: the missing rows read 0.
            Bytes cut = FlatGrey(13, 7, depth, 255);
            cut.resize(40 + (depth == 24 ? 0 : 4u << depth));
            EXPECT_EQ(CountOf(Half(cut, method, 0), 0), 13 * 7);
        }
    }
}

TEST(Halftone, ThresholdAndBrightnessOffset) {
    // 8-bit grey 126..131: 128 is black, 129 white; brightness moves the
    // step and is limited to 0..255 without overflow.
    Bytes src = MakeDib(6, 1, 8, [](int x, int) { return static_cast<unsigned>(126 + x); });
    struct Case {
        int brightness;
        unsigned bits[6];
    } cases[] = {{0, {0, 0, 0, 1, 1, 1}}, {-1, {0, 0, 0, 0, 1, 1}}, {3, {1, 1, 1, 1, 1, 1}},
                 {-2000000000, {0, 0, 0, 0, 0, 0}}, {2000000000, {1, 1, 1, 1, 1, 1}}};
    for (const Case& c : cases) {
        Bytes out = Half(src, 0, c.brightness);
        ASSERT_FALSE(out.empty());
        for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(out, x, 0), c.bits[x]) << c.brightness << " x " << x;
    }
    // 24 bits: grey (59 G + 11 B + 30 R) / 100 = (11800 + 594 + 1350) / 100 = 137.
    Bytes colour = MakeDib(1, 1, 24, [](int, int) { return 0x2DC836u; });
    EXPECT_EQ(PixelAt(Half(colour, 0, -8), 0, 0), 1u);
    EXPECT_EQ(PixelAt(Half(colour, 0, -9), 0, 0), 0u);
}

TEST(Halftone, OrderedScreenByRowAndColumn) {
    // A black image lifted by brightness g: a cell is white exactly when its
    // screen value (row y mod 16, column x mod 16) is below g.  Grey is g
    // everywhere, so the 24-bit row mapping makes no difference.
    unsigned char screen[256];
    prism::BuildHalftoneScreen(screen);
    for (int depth : {4, 8, 24}) {
        for (int g : {1, 64, 128, 200, 255, 300}) {
            Bytes out = Half(FlatGrey(37, 33, depth, 0), 2, g);
            ASSERT_FALSE(out.empty());
            for (int y = 0; y < 33; ++y)
                for (int x = 0; x < 37; ++x)
                    EXPECT_EQ(PixelAt(out, x, y), screen[16 * (y % 16) + x % 16] < std::min(g, 255) ? 1u : 0u)
                        << depth << " g " << g << " at " << x << "," << y;
        }
    }
}

TEST(Halftone, DiffusionDensityRisesWithTheGreyLevel) {
    // The kernel keeps about three quarters of each error: dark fields stay
    // dark, mid-grey comes out near half.
    for (int depth : {4, 8, 24}) {
        double previous = -1;
        for (unsigned g : {0u, 34u, 68u, 119u, 136u, 170u, 221u, 255u}) {
            double d = WhiteFraction(Half(FlatGrey(64, 64, depth, g), 1, 0));
            if (g == 136 && depth != 24) { EXPECT_NEAR(d, 0.5, 0.15); }
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
        ASSERT_FALSE(a.empty());
        EXPECT_EQ(a, Half(eight, method, 5)) << method;
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
    for (int brightness : {0, 200}) {
        Bytes out = Half(src, 0, brightness);
        ASSERT_FALSE(out.empty());
        for (int y = 0; y < 7; ++y)  // rows 0, 3 and 6, then zero planes
            for (int x = 0; x < 16; ++x) EXPECT_EQ(PixelAt(out, x, y), y < 3 || brightness > 128 ? 1u : 0u) << x << "," << y;
    }
    // Width 6: stride 20, split rows of 8 pixels.  Output row 1 covers plane
    // positions 20..25: split row 2, columns 4..7, then split row 3, columns
    // 0 and 1.  Column 6 of a split row is padding, padding and the blue of
    // (0, 3): grey 28; column 7 the green and red of (0, 3), blue of (1, 3):
    // grey 226.
    Bytes wide = MakeDib(6, 5, 24, [](int x, int y) { return y == 3 && x == 0 ? 0xFFFFFFu : 0u; });
    Bytes n = Half(wide, 0, 0);
    ASSERT_FALSE(n.empty());
    const unsigned row1[6] = {0, 0, 0, 1, 1, 0};
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(PixelAt(n, x, 0), 0u) << x;
        EXPECT_EQ(PixelAt(n, x, 1), row1[x]) << x;
    }
}

}  // namespace
