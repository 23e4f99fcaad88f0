// The four dithers through their exports: codes and locks, every accepted
// pair of depths, palettes, pure tones, cross-depth agreement and the
// required quirks.
#include "halftone/reduce_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <string>

using namespace reduce_test;

namespace {

struct Export {
    const char* name;
    HDIB(WINAPI* fn)(HDIB, int);
    bool has8;  // 8-bit output exists
};
const Export kExports[] = {
    {"FS4", DitherFS4, true}, {"JJN", DitherJJN, true}, {"Smooth", DitherSmooth, false}, {"Sharp", DitherSharp, false}};

// Also checks that a success leaves LastImgError at 0.
Bytes Dither(const Export& e, const Bytes& dib, int bits) {
    prism::LastImgError = 5;
    Bytes out = RunOn(dib, [&](HGLOBAL block) { return e.fn(block, bits); });
    if (!out.empty()) { EXPECT_EQ(ImgError(), 0); }
    return out;
}

TEST(Dither, RefusalsByCodeAndLock) {
    Bytes compressed = FlatGrey(8, 2, 8, 200);
    compressed[16] = 1;  // RLE8 is not looked at: the rows are read as pixels
    struct Case {
        const char* what;
        Bytes dib;  // empty: a block that cannot be locked
        int bits;
        int code[4];       // FS4, JJN, Smooth, Sharp
        const char* lock;  // L: left locked once more, u: unlocked, -: no block
    } cases[] = {
        {"null handle", {}, 1, {8, 17, 17, 17}, "----"},
        {"unlockable", {}, 1, {17, 1, 1, 1}, "----"},
        {"1 to 1", FlatGrey(8, 2, 1, 0), 1, {20, 20, 20, 20}, "LLLL"},
        {"1 to 4", FlatGrey(8, 2, 1, 0), 4, {20, 20, 20, 20}, "LLLL"},
        {"1 to 8", FlatGrey(8, 2, 1, 0), 8, {20, 20, 8, 8}, "LLuu"},
        {"4 to 4", FlatGrey(8, 2, 4, 0), 4, {20, 20, 20, 20}, "LLLL"},
        {"4 to 8", FlatGrey(8, 2, 4, 0), 8, {20, 20, 8, 8}, "LLuu"},
        {"8 to 8", FlatGrey(8, 2, 8, 0), 8, {20, 20, 8, 8}, "LLuu"},
        {"2 to 1", FlatGrey(8, 2, 2, 0), 1, {20, 20, 20, 20}, "LLLL"},
        {"16 to 1", FlatGrey(8, 2, 16, 0), 1, {20, 20, 20, 20}, "LLLL"},
        {"32 to 4", FlatGrey(8, 2, 32, 0), 4, {20, 20, 20, 20}, "LLLL"},
        {"ten-byte block: depth 0", Bytes(10, 0), 1, {20, 20, 20, 20}, "LLLL"},
        {"no rows", FlatGrey(8, 0, 8, 0), 1, {1, 1, 1, 1}, "LLLL"},
        {"no columns", FlatGrey(0, 3, 24, 0), 1, {1, 1, 1, 1}, "uuuu"},
        {"wider than 32767", FlatGrey(40000, 1, 8, 0), 1, {8, 8, 8, 8}, "uuuu"},
        {"compressed source accepted", compressed, 1, {0, 0, 0, 0}, "uuuu"},
    };
    std::vector<Case> all(std::begin(cases), std::end(cases));
    for (int bits : {0, 2, 3, 5, 16, 24, -1}) all.push_back({"bad bits", FlatGrey(8, 2, 24, 0), bits, {8, 8, 8, 8}, "uuuu"});
    for (const Case& c : all) {
        for (int i = 0; i < 4; ++i) {
            SCOPED_TRACE(std::string(kExports[i].name) + ": " + c.what + " bits " + std::to_string(c.bits));
            HGLOBAL block = std::string(c.what) == "null handle" ? nullptr : testing_support::BlockFrom(c.dib);
            prism::LastImgError = 99;
            HDIB result = kExports[i].fn(block, c.bits);
            EXPECT_EQ(result != nullptr, c.code[i] == 0);
            EXPECT_EQ(ImgError(), c.code[i]);
            if (c.lock[i] != '-') { EXPECT_EQ(StillLocked(block), c.lock[i] == 'L'); }
            if (c.lock[i] == 'L') GlobalUnlock(block);
            if (result) GlobalFree(result);
            if (block) GlobalFree(block);
        }
    }
}

unsigned Ramp(int x, int y) { return static_cast<unsigned>((x * 5 + y * 3 + (x * y) % 7) % 16); }

// Every export at every source depth and every target depth it accepts.
TEST(Dither, EveryAcceptedPairOfDepths) {
    for (const Export& e : kExports) {
        for (int depth : {4, 8, 24}) {
            for (int bits : {1, 4, 8}) {
                if (bits >= depth || (bits == 8 && !e.has8)) continue;
                SCOPED_TRACE(std::string(e.name) + " " + std::to_string(depth) + "->" + std::to_string(bits));
                // Header with the fixed palette of the target depth, pinned by hash.
                Bytes out = Dither(e, FlatGrey(13, 5, depth, 90), bits);
                const size_t head = 40 + (4u << bits);
                ASSERT_EQ(out.size(), head + 5 * testing_support::Stride(13, bits));
                EXPECT_EQ(Fnv(out, head), bits == 1 ? 0x61002994u : bits == 4 ? 0x155a956au : 0xb9f62a69u);

                // Black and white stay pure, thin images included.  JJN's blue may
                // reach level 4, which shows as the lowest green bit: 0xFC.
                const bool jjn8 = bits == 8 && e.fn == DitherJJN;
                const unsigned top = bits == 1 ? 1 : bits == 4 ? 14 : 255;
                for (auto [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {5, 2}, {16, 2}, {37, 9}}) {
                    SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
                    EXPECT_EQ(CountOf(Dither(e, FlatGrey(w, h, depth, 0), bits), 0), w * h);
                    Bytes white = Dither(e, FlatGrey(w, h, depth, 255), bits);
                    const int limitedBlue = jjn8 ? CountOf(white, 0xFC) : 0;
                    EXPECT_EQ(CountOf(white, top) + limitedBlue, w * h);
                    if (jjn8 && w * h >= 16) { EXPECT_GT(limitedBlue, 0); }
                }

                // The same grey picture from a smaller depth matches the 24-bit result
                // (widths without padding pixels, so all depths see the same cells).
                for (int w : {8, 16, 40}) {
                    if (depth == 24) break;
                    auto grey = [w](int d) { return MakeDib(w, 11, d, [d](int x, int y) { return Grey(d, Ramp(x, y) * 17); }); };
                    Bytes from24 = Dither(e, grey(24), bits);
                    ASSERT_FALSE(from24.empty());
                    EXPECT_EQ(Dither(e, grey(depth), bits), from24) << w;
                }

                // Deterministic on a busy picture; RunOn also checks that the source is left alone.
                Bytes busy = MakeDib(23, 17, depth, [&](int x, int y) -> unsigned {
                    unsigned v = static_cast<unsigned>(x * 37 + y * 91);
                    return depth == 24 ? (v * 2654435761u) & 0xFFFFFF : v % (1u << depth);
                });
                Bytes first = Dither(e, busy, bits);
                ASSERT_FALSE(first.empty());
                EXPECT_EQ(Dither(e, busy, bits), first);

                // Header and table without rows: the missing rows read 0, entry 0, black.
                Bytes cut = FlatGrey(13, 7, depth, 255);
                cut.resize(40 + (depth == 24 ? 0 : 4u << depth));
                EXPECT_EQ(CountOf(Dither(e, cut, bits), 0), 13 * 7);
            }
        }
    }
}

TEST(Dither, PixelsStartBehindAFullTableWhateverClrUsedSays) {
    // A white 8-bit image with a table of two entries: the dithers look for
    // pixels behind 256 entries, past the end of the block, read 0 there,
    // entry 0, black.  Halftone follows biClrUsed and sees white.
    testing_support::DibSpec spec;
    spec.width = 4;
    spec.height = 3;
    spec.colors = spec.clrUsed = 2;
    Bytes dib = testing_support::PackedDib(spec, [](int, int) { return 1u; });
    std::memset(&dib[40], 0, 3);
    std::memset(&dib[44], 255, 3);
    for (const Export& e : kExports) EXPECT_EQ(WhiteFraction(Dither(e, dib, 1)), 0.0) << e.name;
    WORD error = 0;
    EXPECT_EQ(WhiteFraction(RunOn(dib, [&](HGLOBAL block) { return Halftone(block, 0, 0, &error); })), 1.0);
}

// White fraction of a constant grey field dithered to 1 bit.
double Density(const Export& e, int depth, unsigned g) { return WhiteFraction(Dither(e, FlatGrey(64, 64, depth, g), 1)); }

TEST(Dither, OneBitDensityFollowsTheGreyLevel) {
    for (const Export& e : kExports) {
        for (int depth : {8, 24}) {
            SCOPED_TRACE(std::string(e.name) + " from " + std::to_string(depth));
            double previous = 0;
            for (unsigned g : {0u, 32u, 64u, 96u, 128u, 160u, 192u, 224u, 255u}) {
                double d = Density(e, depth, g);
                EXPECT_GE(d + 0.02, previous) << g;  // rises with the grey level
                if (g == 32) { EXPECT_LT(d, 0.25); }
                if (g == 128) { EXPECT_NEAR(d, 0.5, 0.15); }
                if (g == 224) { EXPECT_GT(d, 0.75); }
                previous = d;
            }
        }
    }
    // Smooth carries the whole remainder along the row, Sharp half of it:
    // a dark field gets more white from Smooth.
    for (int depth : {8, 24}) {
        EXPECT_GT(Density(kExports[2], depth, 40), Density(kExports[3], depth, 40)) << depth;
        EXPECT_GT(Density(kExports[2], depth, 40), 0.05) << depth;
    }
}

TEST(Dither, PrimaryColoursLandOnTheirPaletteEntries) {
    struct Colour {
        unsigned rgb, nibble, byte;
    } colours[] = {{0xFF0000, 8, 0xE0}, {0x00FF00, 4, 0x1C}, {0x0000FF, 2, 0x03},
                   {0xFFFF00, 12, 0xFC}, {0x00FFFF, 6, 0x1F}, {0xFF00FF, 10, 0xE3}};
    for (const Colour& c : colours) {
        SCOPED_TRACE(c.rgb);
        Bytes rgb = MakeDib(9, 3, 24, [&](int, int) { return c.rgb; });
        // From an 8-bit source the colour comes from the table entry (blue,
        // green, red), not from the index.
        Bytes indexed = MakeDib(9, 3, 8, [](int, int) { return 7u; });
        for (int k = 0; k < 3; ++k) indexed[40 + 4 * 7 + k] = static_cast<unsigned char>(c.rgb >> (8 * k));
        for (const Export& e : kExports) {
            EXPECT_EQ(CountOf(Dither(e, rgb, 4), c.nibble), 27) << e.name;
            EXPECT_EQ(CountOf(Dither(e, indexed, 4), c.nibble), 27) << e.name;
        }
        EXPECT_EQ(CountOf(Dither(kExports[0], rgb, 8), c.byte), 27);
    }
}

TEST(Dither, OnlyTheFirstRowIsLuminanceAtOneBit) {
    // Pure green: luminance 150 in the first row, red 0 in all later ones;
    // pure red: luminance 76 first, then red 255.
    for (const Export* e : {&kExports[0], &kExports[1]}) {
        for (unsigned rgb : {0x00FF00u, 0xFF0000u}) {
            Bytes out = Dither(*e, MakeDib(64, 6, 24, [=](int, int) { return rgb; }), 1);
            ASSERT_FALSE(out.empty());
            int first = 0, later = 0;
            for (int x = 0; x < 64; ++x) {
                first += PixelAt(out, x, 0);
                for (int y = 1; y < 6; ++y) later += PixelAt(out, x, y);
            }
            SCOPED_TRACE(std::string(e->name) + " " + std::to_string(rgb));
            const bool green = rgb == 0x00FF00u;
            if (green) { EXPECT_GE(first, 20); }
            EXPECT_LT(first, green ? 64 : 40);
            EXPECT_EQ(later, green ? 0 : 5 * 64);
        }
    }
}

TEST(Dither, JJNAndSmoothKeepTheFirstPixelPlainRed) {
    // One pure red pixel: luminance 76 is black; left as red 255 it is white.
    Bytes src = MakeDib(1, 1, 24, [](int, int) { return 0xFF0000u; });
    const int expected[] = {0, 1, 1, 0};  // FS4, JJN, Smooth, Sharp
    for (int i = 0; i < 4; ++i) EXPECT_EQ(CountOf(Dither(kExports[i], src, 1), 1), expected[i]) << kExports[i].name;
}

}  // namespace
