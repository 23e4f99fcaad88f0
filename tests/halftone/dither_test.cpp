// The four dithers through their exports: codes, locks, palettes, pure
// tones, cross-depth agreement and the documented quirks.
#include "halftone/reduce_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <string>

using namespace reduce_test;
using testing_support::PixelAt;

namespace {

struct Export {
    const char* name;
    HDIB(WINAPI* fn)(HDIB, int);
    bool has8;             // 8-bit output exists
    int nullCode;          // null handle
    int lockCode;          // block that cannot be locked
};

const Export kExports[] = {
    {"FS4", DitherFS4, true, 8, 17},
    {"JJN", DitherJJN, true, 17, 1},
    {"Smooth", DitherSmooth, false, 17, 1},
    {"Sharp", DitherSharp, false, 17, 1},
};

// Every (export, source depth, target depth) the exports accept.
struct Combo {
    const Export* e;
    int depth;
    int bits;
};
std::vector<Combo> Accepted() {
    std::vector<Combo> v;
    for (const Export& e : kExports)
        for (int d : {4, 8, 24})
            for (int b : {1, 4, 8})
                if (b < d && (b != 8 || e.has8)) v.push_back({&e, d, b});
    return v;
}
std::string Name(const Combo& c) {
    return std::string(c.e->name) + " " + std::to_string(c.depth) + "->" + std::to_string(c.bits);
}

Bytes Dither(const Export& e, const Bytes& dib, int bits) {
    return RunOn(dib, [&](HGLOBAL block) { return e.fn(block, bits); });
}

TEST(Dither, RefusesBadArgumentsWithTheirCodes) {
    Bytes dib8 = FlatGrey(8, 4, 8, 100);
    for (const Export& e : kExports) {
        SCOPED_TRACE(e.name);
        HGLOBAL block = testing_support::BlockFrom(dib8);
        for (int bits : {0, 2, 3, 5, 16, 24, -1}) {
            prism::LastImgError = 0;
            EXPECT_EQ(e.fn(block, bits), nullptr) << bits;
            EXPECT_EQ(ImgError(), 8) << bits;
            EXPECT_FALSE(StillLocked(block));
        }
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(block, 8) != nullptr, false);  // 8 to 8, or no 8-bit output at all
        EXPECT_EQ(ImgError(), e.has8 ? 20 : 8);
        if (e.has8) {
            EXPECT_TRUE(StillLocked(block));  // a refused depth leaves the lock standing
            GlobalUnlock(block);
        }
        GlobalFree(block);

        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(nullptr, 1), nullptr);
        EXPECT_EQ(ImgError(), e.nullCode);

        HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(empty, 1), nullptr);
        EXPECT_EQ(ImgError(), e.lockCode);
        GlobalFree(empty);
    }
}

TEST(Dither, RefusesDepthsAndLeavesTheSourceLocked) {
    struct Case {
        int depth;
        int bits;
    } cases[] = {{1, 1}, {1, 4}, {4, 4}, {8, 8}, {4, 8}, {16, 1}, {32, 4}, {32, 8}, {2, 1}};
    for (const Export& e : kExports) {
        for (const Case& c : cases) {
            if (c.bits == 8 && !e.has8) continue;
            testing_support::DibSpec spec;
            spec.width = 8;
            spec.height = 2;
            spec.bitCount = c.depth;
            spec.colors = c.depth <= 8 ? 1 << c.depth : 0;
            HGLOBAL block = testing_support::BlockFrom(testing_support::PackedDib(spec));
            prism::LastImgError = 0;
            EXPECT_EQ(e.fn(block, c.bits), nullptr) << e.name << " " << c.depth << "->" << c.bits;
            EXPECT_EQ(ImgError(), 20) << e.name << " " << c.depth << "->" << c.bits;
            EXPECT_TRUE(StillLocked(block));
            GlobalUnlock(block);
            GlobalFree(block);
        }
    }
}

TEST(Dither, EmptyAndOverwideImagesFailCleanly) {
    for (const Export& e : kExports) {
        SCOPED_TRACE(e.name);
        // No rows: the output planes cannot be made; the source stays locked.
        HGLOBAL noRows = testing_support::BlockFrom(FlatGrey(8, 0, 8, 10));
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(noRows, 1), nullptr);
        EXPECT_EQ(ImgError(), 1);
        EXPECT_TRUE(StillLocked(noRows));
        GlobalUnlock(noRows);
        GlobalFree(noRows);
        // No columns: the line planes cannot be made; the source is unlocked.
        HGLOBAL noColumns = testing_support::BlockFrom(FlatGrey(0, 3, 24, 10));
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(noColumns, 1), nullptr);
        EXPECT_EQ(ImgError(), 1);
        EXPECT_FALSE(StillLocked(noColumns));
        GlobalFree(noColumns);
        // Rows wider than the kernels count are refused.
        HGLOBAL wide = testing_support::BlockFrom(FlatGrey(40000, 1, 8, 10));
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(wide, 1), nullptr);
        EXPECT_EQ(ImgError(), 8);
        EXPECT_FALSE(StillLocked(wide));
        GlobalFree(wide);
    }
}

TEST(Dither, TooSmallBlocksNeverReadPastTheirEnd) {
    for (const Export& e : kExports) {
        SCOPED_TRACE(e.name);
        // Ten bytes: the header's depth reads 0 and is refused.
        HGLOBAL tiny = GlobalAlloc(GHND, 10);
        prism::LastImgError = 0;
        EXPECT_EQ(e.fn(tiny, 1), nullptr);
        EXPECT_EQ(ImgError(), 20);
        GlobalFree(tiny);
        // A full header and table but no rows at all: the rows read 0, which
        // is entry 0 of the table, black.
        for (int depth : {4, 8, 24}) {
            Bytes dib = FlatGrey(13, 7, depth, 255);
            dib.resize(40 + (depth == 24 ? 0 : 4u << depth));
            Bytes out = Dither(e, dib, 1);
            ASSERT_FALSE(out.empty()) << depth;
            EXPECT_EQ(WhiteFraction(out), 0.0) << depth;
        }
    }
}

TEST(Dither, PixelsStartBehindAFullTableWhateverClrUsedSays) {
    // A white 8-bit image with a table of two entries: the dithers look for
    // pixels behind 256 entries, past the end of this block, and read 0
    // there, entry 0, black.  Halftone follows biClrUsed and sees white.
    Bytes dib(40 + 8 + 4 * 3, 0);
    Put32(dib, 0, 40);
    Put32(dib, 4, 4);
    Put32(dib, 8, 3);
    dib[12] = 1;
    dib[14] = 8;
    Put32(dib, 32, 2);
    std::memset(&dib[44], 255, 3);     // entry 1 white
    std::memset(&dib[48], 1, 4 * 3);   // every pixel entry 1
    for (const Export& e : kExports) {
        prism::LastImgError = 7;
        Bytes out = Dither(e, dib, 1);
        ASSERT_FALSE(out.empty()) << e.name;
        EXPECT_EQ(ImgError(), 0);
        EXPECT_EQ(WhiteFraction(out), 0.0) << e.name;
    }
    WORD error = 0;
    Bytes half = RunOn(dib, [&](HGLOBAL block) { return Halftone(block, 0, 0, &error); });
    ASSERT_FALSE(half.empty());
    EXPECT_EQ(WhiteFraction(half), 1.0);
}

TEST(Dither, ResultHeaderAndFixedPalettes) {
    for (const Combo& c : Accepted()) {
        SCOPED_TRACE(Name(c));
        prism::LastImgError = 5;
        Bytes out = Dither(*c.e, FlatGrey(13, 5, c.depth, 90), c.bits);
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(ImgError(), 0);  // cleared by a success
        const size_t stride = testing_support::Stride(13, c.bits);
        ASSERT_EQ(out.size(), 40 + (4u << c.bits) + 5 * stride);
        EXPECT_EQ(Get32(out, 0), 40u);
        EXPECT_EQ(Get32(out, 4), 13u);
        EXPECT_EQ(Get32(out, 8), 5u);
        EXPECT_EQ(out[12], 1);
        EXPECT_EQ(out[14], c.bits);
        EXPECT_EQ(Get32(out, 16), 0u);
        EXPECT_EQ(Get32(out, 20), 5 * stride);
        EXPECT_EQ(Get32(out, 24), 1234u);
        EXPECT_EQ(Get32(out, 28), 5678u);
        EXPECT_EQ(Get32(out, 32), 1u << c.bits);
        EXPECT_EQ(Get32(out, 36), 0u);
        auto entry = [&](int i) { return Get32(out, 40 + 4 * i); };  // 0xRRGGBB, reserved on top
        if (c.bits == 1) {
            EXPECT_EQ(entry(0), 0u);
            EXPECT_EQ(entry(1), 0x00FFFFFFu);
        } else if (c.bits == 4) {
            EXPECT_EQ(entry(0), 0u);
            EXPECT_EQ(entry(1), 0xFF000000u);
            EXPECT_EQ(entry(2), 0x000000FFu);
            EXPECT_EQ(entry(4), 0x0000FF00u);
            EXPECT_EQ(entry(8), 0x00FF0000u);
            EXPECT_EQ(entry(11), 0xFFFF00FFu);
            EXPECT_EQ(entry(14), 0x00FFFFFFu);
            EXPECT_EQ(entry(15), 0xFFFFFFFFu);
        } else {
            EXPECT_EQ(entry(0), 0u);
            EXPECT_EQ(entry(1), 0x00000055u);
            EXPECT_EQ(entry(3), 0x000000FFu);
            EXPECT_EQ(entry(4), 0x00002400u);
            EXPECT_EQ(entry(32), 0x00240000u);
            EXPECT_EQ(entry(182), 0x00B4B4AAu);
            EXPECT_EQ(entry(255), 0x00FCFCFFu);
        }
    }
}

TEST(Dither, BlackAndWhiteStayPure) {
    for (const Combo& c : Accepted()) {
        for (int w : {1, 5, 16, 37}) {
            for (int h : {1, 2, 9}) {
                SCOPED_TRACE(Name(c) + " " + std::to_string(w) + "x" + std::to_string(h));
                Bytes black = Dither(*c.e, FlatGrey(w, h, c.depth, 0), c.bits);
                Bytes white = Dither(*c.e, FlatGrey(w, h, c.depth, 255), c.bits);
                ASSERT_FALSE(black.empty());
                ASSERT_FALSE(white.empty());
                const unsigned top = c.bits == 1 ? 1 : c.bits == 4 ? 14 : 255;
                bool sawLimitedBlue = false;
                for (int y = 0; y < h; ++y) {
                    for (int x = 0; x < w; ++x) {
                        EXPECT_EQ(PixelAt(black, x, y), 0u) << x << "," << y;
                        unsigned v = PixelAt(white, x, y);
                        if (c.bits == 8 && c.e->fn == DitherJJN) {
                            // Blue may reach level 4, which shows as the lowest
                            // green bit over a blue of 0.
                            EXPECT_TRUE(v == 0xFF || v == 0xFC) << x << "," << y << ": " << v;
                            sawLimitedBlue |= v == 0xFC;
                        } else {
                            EXPECT_EQ(v, top) << x << "," << y;
                        }
                    }
                }
                if (c.bits == 8 && c.e->fn == DitherJJN && w * h >= 16) {
                    EXPECT_TRUE(sawLimitedBlue);
                }
            }
        }
    }
}

unsigned Ramp(int x, int y) { return static_cast<unsigned>((x * 5 + y * 3 + (x * y) % 7) % 16); }

TEST(Dither, SameGreyPictureGivesTheSameResultAtEverySourceDepth) {
    // Widths that fill the row without padding pixels, so that all three
    // depths see the same cells.
    for (const Export& e : kExports) {
        for (int bits : {1, 4}) {
            for (int w : {8, 16, 40}) {
                SCOPED_TRACE(std::string(e.name) + " bits " + std::to_string(bits) + " width " + std::to_string(w));
                Bytes from24 = Dither(e, GreyDib(w, 11, 24, Ramp), bits);
                Bytes from8 = Dither(e, GreyDib(w, 11, 8, Ramp), bits);
                ASSERT_FALSE(from24.empty());
                EXPECT_EQ(from8, from24);
                if (bits == 1) {
                    EXPECT_EQ(Dither(e, GreyDib(w, 11, 4, Ramp), bits), from24);
                }
            }
        }
    }
}

TEST(Dither, DeterministicAndTheSourceIsLeftAlone) {
    for (const Combo& c : Accepted()) {
        SCOPED_TRACE(Name(c));
        Bytes src = MakeDib(23, 17, c.depth, [&](int x, int y) -> unsigned {
            unsigned v = static_cast<unsigned>(x * 37 + y * 91);
            return c.depth == 24 ? (v * 2654435761u) & 0xFFFFFF : v % (1u << c.depth);
        });
        Bytes a = Dither(*c.e, src, c.bits);  // RunOn() fails when the source changes
        ASSERT_FALSE(a.empty());
        EXPECT_EQ(Dither(*c.e, src, c.bits), a);
    }
}

// White fraction of a constant grey field.
double Density(const Export& e, int depth, unsigned g) {
    return WhiteFraction(Dither(e, FlatGrey(64, 64, depth, g), 1));
}

TEST(Dither, OneBitDensityFollowsTheGreyLevel) {
    for (const Export& e : kExports) {
        for (int depth : {8, 24}) {
            SCOPED_TRACE(std::string(e.name) + " from " + std::to_string(depth));
            double mid = Density(e, depth, 128);
            EXPECT_GT(mid, 0.35);
            EXPECT_LT(mid, 0.65);
            double previous = 0;
            for (unsigned g : {0u, 32u, 64u, 96u, 128u, 160u, 192u, 224u, 255u}) {
                double d = Density(e, depth, g);
                EXPECT_GE(d + 0.02, previous) << g;  // rises with the grey level
                previous = d;
            }
            EXPECT_LT(Density(e, depth, 32), 0.25);
            EXPECT_GT(Density(e, depth, 224), 0.75);
        }
    }
}

TEST(Dither, PrimaryColoursLandOnTheirPaletteEntries) {
    struct Colour {
        unsigned rgb;
        unsigned nibble;
        unsigned byte;
    } colours[] = {{0xFF0000, 8, 0xE0}, {0x00FF00, 4, 0x1C}, {0x0000FF, 2, 0x03},
                   {0xFFFF00, 12, 0xFC}, {0x00FFFF, 6, 0x1F}, {0xFF00FF, 10, 0xE3}};
    for (const Export& e : kExports) {
        for (const Colour& c : colours) {
            Bytes src = MakeDib(9, 3, 24, [&](int, int) { return c.rgb; });
            Bytes out4 = Dither(e, src, 4);
            ASSERT_FALSE(out4.empty());
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 9; ++x) EXPECT_EQ(PixelAt(out4, x, y), c.nibble) << e.name << " " << c.rgb;
            if (e.has8 && e.fn == DitherFS4) {
                Bytes out8 = Dither(e, src, 8);
                for (int y = 0; y < 3; ++y)
                    for (int x = 0; x < 9; ++x) EXPECT_EQ(PixelAt(out8, x, y), c.byte) << c.rgb;
            }
        }
    }
    // From an 8-bit table the colour comes from the entry, not the index.
    Bytes src = MakeDib(4, 2, 8, [](int x, int) { return static_cast<unsigned>(x); });
    const unsigned char entries[4][3] = {{0, 0, 255}, {0, 255, 0}, {255, 0, 0}, {255, 255, 0}};  // B, G, R
    for (int i = 0; i < 4; ++i) std::memcpy(&src[40 + 4 * i], entries[i], 3);
    Bytes out = Dither(kExports[0], src, 4);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(PixelAt(out, 0, 0), 8u);
    EXPECT_EQ(PixelAt(out, 1, 0), 4u);
    EXPECT_EQ(PixelAt(out, 2, 0), 2u);
    EXPECT_EQ(PixelAt(out, 3, 0), 6u);
}

TEST(Dither, OnlyTheFirstRowIsLuminanceAtOneBit) {
    // Pure green: luminance 150 in the first row, red 0 in all later ones;
    // pure red: luminance 76 first, then red 255.
    Bytes green = MakeDib(64, 6, 24, [](int, int) { return 0x00FF00u; });
    Bytes red = MakeDib(64, 6, 24, [](int, int) { return 0xFF0000u; });
    for (const Export* e : {&kExports[0], &kExports[1]}) {
        Bytes g = Dither(*e, green, 1);
        Bytes r = Dither(*e, red, 1);
        ASSERT_FALSE(g.empty());
        ASSERT_FALSE(r.empty());
        int gFirst = 0, gLater = 0, rFirst = 0, rLater = 0;
        for (int x = 0; x < 64; ++x) {
            gFirst += PixelAt(g, x, 0);
            rFirst += PixelAt(r, x, 0);
            for (int y = 1; y < 6; ++y) {
                gLater += PixelAt(g, x, y);
                rLater += PixelAt(r, x, y);
            }
        }
        EXPECT_GE(gFirst, 20) << e->name;
        EXPECT_LT(gFirst, 64) << e->name;
        EXPECT_EQ(gLater, 0) << e->name;
        EXPECT_LT(rFirst, 40) << e->name;
        EXPECT_EQ(rLater, 5 * 64) << e->name;
    }
}

TEST(Dither, JJNAndSmoothKeepTheFirstPixelPlainRed) {
    // One pure red pixel: luminance 76 is black; left as red 255 it is white.
    Bytes src = MakeDib(1, 1, 24, [](int, int) { return 0xFF0000u; });
    const unsigned expected[] = {0, 1, 1, 0};  // FS4, JJN, Smooth, Sharp
    for (int i = 0; i < 4; ++i) {
        Bytes out = Dither(kExports[i], src, 1);
        ASSERT_FALSE(out.empty()) << kExports[i].name;
        EXPECT_EQ(PixelAt(out, 0, 0), expected[i]) << kExports[i].name;
    }
}

TEST(Dither, SmoothCarriesMoreThanSharp) {
    // A dark field: the whole remainder carried along the row makes more
    // white pixels than half of it.
    for (int depth : {8, 24}) {
        double smooth = Density(kExports[2], depth, 40);
        double sharp = Density(kExports[3], depth, 40);
        EXPECT_GT(smooth, sharp) << depth;
        EXPECT_GT(smooth, 0.05) << depth;
    }
}

}  // namespace
