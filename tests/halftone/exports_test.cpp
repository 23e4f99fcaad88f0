// The four dithers and Halftone through their exports: refusal tables,
// pure tones at every accepted pair of depths, agreement between depths and
// the required quirks.  Their exact outputs are pinned in tests/pinned.
#include "core/errors.h"
#include "support/test_support.h"

#include <array>

using namespace testing_support;

namespace {

// Grey g (0..255) as a pixel of `depth`; at 4 bits the nearest of 16 levels.
unsigned Grey(int depth, unsigned g) { return depth == 4 ? (g + 8) / 17 : depth == 8 ? g : g * 0x010101u; }
Bytes FlatGrey(int width, int height, int depth, unsigned g) {
    return GreyImage(width, height, depth, [=](int, int) { return Grey(depth, g); });
}

// Locks a call leaves on its source, for Call: L locked once more, u
// unlocked, - not looked at (no block, or one that cannot be locked).
int Locks(char lock) { return lock == 'L' ? 1 : lock == 'u' ? 0 : -1; }

// Share of the pixels of a result that have value v; -1 for no result.
double Share(const Bytes& dib, unsigned v) {
    if (dib.size() < 40) return -1;
    int n = 0;
    for (int y = 0; y < Field(dib, 8); ++y)
        for (int x = 0; x < Field(dib, 4); ++x) n += PixelAt(dib, x, y) == v;
    return double(n) / (double(Field(dib, 4)) * Field(dib, 8));
}

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
    Bytes out = Call([&](HGLOBAL block) { return e.fn(block, bits); }, dib);
    if (!out.empty()) { EXPECT_EQ(ImgError(), 0); }
    return out;
}

// Also checks that a success leaves the error word alone.
Bytes Half(const Bytes& dib, WORD method, int brightness) {
    WORD error = 0xBEEF;
    Bytes out = Call([&](HGLOBAL block) { return Halftone(block, method, brightness, &error); }, dib);
    EXPECT_EQ(error, 0xBEEF);
    return out;
}

TEST(Dither, RefusalsByCodeAndLock) {
    // dib: empty for a block that cannot be locked; codes of FS4, JJN, Smooth
    // and Sharp, 0 for success; lock: L left locked once more, u unlocked, - no block.
    struct Case { std::string what; Bytes dib; int bits; std::array<int, 4> code; const char* lock; };
    std::vector<Case> all = {
        {"null handle", {}, 1, {8, 17, 17, 17}, "----"},
        {"unlockable", {}, 1, {17, 1, 1, 1}, "----"},
        {"ten bytes", Bytes(10, 0), 1, {20, 20, 20, 20}, "LLLL"},
        {"no rows", FlatGrey(8, 0, 8, 0), 1, {1, 1, 1, 1}, "LLLL"},
        {"no columns", FlatGrey(0, 3, 24, 0), 1, {1, 1, 1, 1}, "uuuu"},
        {"wider than 32767", FlatGrey(40000, 1, 8, 0), 1, {8, 8, 8, 8}, "uuuu"},
        // RLE8 in the header is not looked at: the rows are read as pixels.
        {"compressed", With(FlatGrey(8, 2, 8, 200), 16, 1), 1, {0, 0, 0, 0}, "uuuu"},
    };
    for (int bits : {0, 2, 3, 5, 16, 24, -1}) all.push_back({"bits", FlatGrey(8, 2, 24, 0), bits, {8, 8, 8, 8}, "uuuu"});
    // A block that holds fewer rows than its header claims.
    for (int depth : {4, 8, 24}) all.push_back({"rows cut", Short(FlatGrey(13, 7, depth, 255), 1), 1, {19, 19, 19, 19}, "uuuu"});
    // b not below D, or D not 4, 8 or 24; Smooth and Sharp refuse b = 8 first.
    for (auto [depth, bits] : {std::pair{1, 1}, {1, 4}, {1, 8}, {4, 4}, {4, 8}, {8, 8}, {2, 1}, {16, 1}, {32, 4}}) {
        const bool eight = bits == 8;
        all.push_back({"depth " + std::to_string(depth), FlatGrey(8, 2, depth, 0), bits,
                       {20, 20, eight ? 8 : 20, eight ? 8 : 20}, eight ? "LLuu" : "LLLL"});
    }
    for (const Case& c : all) {
        for (int i = 0; i < 4; ++i) {
            SCOPED_TRACE(std::string(kExports[i].name) + ": " + c.what + " bits " + std::to_string(c.bits));
            prism::LastImgError = 99;
            const bool none = &c == &all[0];  // a null handle in place of the block
            const Bytes out = Call([&](HGLOBAL b) { return kExports[i].fn(none ? nullptr : b, c.bits); }, c.dib, Locks(c.lock[i]));
            EXPECT_EQ(out.empty(), c.code[i] != 0);
            EXPECT_EQ(ImgError(), c.code[i]);
        }
    }
}

// Every export at every source depth and every target depth it accepts.
TEST(Dither, EveryAcceptedPairOfDepths) {
    for (const Export& e : kExports) {
        for (int depth : {4, 8, 24}) {
            for (int bits : {1, 4, 8}) {
                if (bits >= depth || (bits == 8 && !e.has8)) continue;
                SCOPED_TRACE(std::string(e.name) + " " + std::to_string(depth) + "->" + std::to_string(bits));
                // Black and white stay pure, thin images included.  JJN's blue may
                // reach level 4, which shows as the lowest green bit: 0xFC.
                const bool jjn8 = bits == 8 && e.fn == DitherJJN;
                for (auto [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {5, 2}, {16, 2}, {37, 9}}) {
                    SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h));
                    EXPECT_EQ(Share(Dither(e, FlatGrey(w, h, depth, 0), bits), 0), 1.0);
                    Bytes white = Dither(e, FlatGrey(w, h, depth, 255), bits);
                    const double limitedBlue = jjn8 ? Share(white, 0xFC) : 0;
                    EXPECT_DOUBLE_EQ(Share(white, bits == 1 ? 1 : bits == 4 ? 14 : 255) + limitedBlue, 1.0);
                    if (jjn8 && w * h >= 16) { EXPECT_GT(limitedBlue, 0); }
                }
                // The same grey picture from a smaller depth matches the 24-bit result
                // (widths without padding pixels, so all depths see the same cells).
                for (int w : {8, 16, 40}) {
                    if (depth == 24) break;
                    auto grey = [w](int d) {
                        return GreyImage(w, 11, d, [d](int x, int y) { return Grey(d, (x * 5 + y * 3 + (x * y) % 7) % 16 * 17); });
                    };
                    Bytes from24 = Dither(e, grey(24), bits);
                    ASSERT_FALSE(from24.empty());
                    EXPECT_EQ(Dither(e, grey(depth), bits), from24) << w;
                }
            }
        }
    }
}

TEST(Dither, PixelsStartBehindAFullTableWhateverClrUsedSays) {
    // A white 8-bit image with a table of two entries: the dithers look for
    // pixels behind 256 entries, past the end of the block, and read 0,
    // entry 0, black.  Halftone follows biClrUsed and sees white.
    const DibShape shape{4, 3, 8, 2, 2};  // 4 by 3, 8 bits, two entries, biClrUsed 2
    Bytes dib = PackedDib(shape, [](int, int) { return 1u; });
    std::memset(&dib[40], 0, 3);
    std::memset(&dib[44], 255, 3);
    for (const Export& e : kExports) EXPECT_EQ(Share(Dither(e, dib, 1), 1), 0.0) << e.name;
    EXPECT_EQ(Share(Half(dib, 0, 0), 1), 1.0);
}

TEST(Halftone, FailuresWriteOnlyTheSixteenBitErrorWord) {
    // dib: empty for a block that cannot be locked; code 0 for success;
    // lock: L left locked once more, u unlocked, - no block.
    struct Case { const char* what; Bytes dib; WORD method, code; char lock; };
    std::vector<Case> all = {
        {"null handle", {}, 0, 8, '-'}, {"unlockable", {}, 0, 1, '-'}, {"method 3", FlatGrey(8, 4, 8, 77), 3, 8, 'u'},
        {"1-bit", FlatGrey(8, 2, 1, 0), 0, 8, 'L'}, {"16-bit", FlatGrey(8, 2, 16, 0), 0, 8, 'L'},
        {"32-bit", FlatGrey(8, 2, 32, 0), 0, 8, 'L'}, {"12 bytes", Bytes(12, 0), 0, 8, 'L'},
        {"compressed", With(FlatGrey(8, 2, 8, 200), 16, 1), 1, 0, 'u'},
    };
    for (int depth : {4, 8, 24}) {
        all.push_back({"no rows", FlatGrey(8, 0, depth, 9), 1, 1, 'u'});
        all.push_back({"no columns", FlatGrey(0, 3, depth, 9), 1, 1, 'u'});
        all.push_back({"rows cut", Short(FlatGrey(13, 7, depth, 255), 1), 1, 8, 'u'});
    }
    for (const Case& c : all) {
        SCOPED_TRACE(c.what);
        WORD words[2] = {0xBEEF, 0xBEEF};
        prism::LastImgError = 12;
        const bool none = &c == &all[0];  // a null handle in place of the block
        const Bytes out = Call([&](HGLOBAL b) { return Halftone(none ? nullptr : b, c.method, 0, &words[0]); }, c.dib, Locks(c.lock));
        EXPECT_EQ(out.empty(), c.code != 0);
        EXPECT_EQ(words[0], c.code ? c.code : 0xBEEF);
        EXPECT_EQ(words[1], 0xBEEF);  // only 16 bits are written
        EXPECT_EQ(ImgError(), 12);    // the library's code is never touched
    }
}

// Every source depth with every method.
TEST(Halftone, EveryDepthAndMethod) {
    for (int depth : {4, 8, 24}) {
        for (WORD method : {0, 1, 2}) {
            SCOPED_TRACE("depth " + std::to_string(depth) + " method " + std::to_string(method));
            // Pure tones, thin images included.  White misses the one screen
            // cell of 255; at 24 bits only row 0 shows source row 0.
            for (auto [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {37, 33}}) {
                EXPECT_EQ(Share(Half(FlatGrey(w, h, depth, 0), method, 0), 0), 1.0) << w << "x" << h;
                Bytes white = Half(FlatGrey(w, h, depth, 255), method, 0);
                ASSERT_FALSE(white.empty());
                for (int y = 0; y < (depth == 24 ? 1 : h); ++y)
                    for (int x = 0; x < w; ++x)
                        EXPECT_EQ(PixelAt(white, x, y), method == 2 && x % 16 == 0 && y % 16 == 15 ? 0u : 1u)
                            << w << "x" << h << " at " << x << "," << y;
            }
            // 4- and 8-bit rows map one to one and agree.
            auto ramp = [&](int d) {
                return Half(GreyImage(21, 9, d, [&](int x, int y) { return Grey(d, (x + 3 * y) % 16 * 17); }), method, 5);
            };
            if (depth == 4) { EXPECT_EQ(ramp(4), ramp(8)); }
        }
    }
}

TEST(Halftone, ThresholdAndBrightnessOffset) {
    // 8-bit grey 126..131: 128 is black, 129 white; brightness moves the
    // step and is limited to 0..255 without overflow.
    Bytes src = GreyImage(6, 1, 8, [](int x, int) { return static_cast<unsigned>(126 + x); });
    struct Case { int brightness; unsigned bits[6]; } cases[] = {
        {0, {0, 0, 0, 1, 1, 1}}, {-1, {0, 0, 0, 0, 1, 1}}, {3, {1, 1, 1, 1, 1, 1}},
        {-2000000000, {0, 0, 0, 0, 0, 0}}, {2000000000, {1, 1, 1, 1, 1, 1}}};
    for (const Case& c : cases) {
        Bytes out = Half(src, 0, c.brightness);
        ASSERT_FALSE(out.empty());
        for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(out, x, 0), c.bits[x]) << c.brightness << " x " << x;
    }
    // 24 bits: grey (59 G + 11 B + 30 R) / 100 = (11800 + 594 + 1350) / 100 = 137.
    Bytes colour = GreyImage(1, 1, 24, [](int, int) { return 0x2DC836u; });
    EXPECT_EQ(Share(Half(colour, 0, -8), 1), 1.0);
    EXPECT_EQ(Share(Half(colour, 0, -9), 1), 0.0);
}

}  // namespace
