// Palette to true colour, colour to grey, and 1-bit to grey with smoothing.
#include "core/errors.h"
#include "support/test_support.h"

using namespace testing_support;

namespace {

using Convert = HDIB (*)(HDIB);
const Convert Grey = [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 1); }, GreyMode3 = [](HDIB d) { return ConvColorDIBtoGrayscale(d, 3, 0); };
const Convert Mono = [](HDIB d) { return ConvMonoDIBtoGrayscale(d, 0); }, MonoMode3 = [](HDIB d) { return ConvMonoDIBtoGrayscale(d, 3); };
const Convert To24 = [](HDIB d) { return Convert8to24(d); };

TEST(DepthConversions, ClearTheErrorAtEntryAndRefuseWithTheirCodes) {
    Bytes cut8 = Image(5, 5, 8), cut1 = Image(4, 4, 1);
    cut8.resize(cut8.size() - 4);  // into the last row's pixels, not only its padding
    cut1.resize(50);
    // No bytes: no image.
    const struct { const char* name; HDIB (*convert)(HDIB); Bytes bytes; int expected; } cases[] = {
        {"8 to 24", To24, Image(5, 5, 8), 0},
        {"1 to 24", To24, Image(5, 5, 1), prism::kErrBitsPerPixel},
        {"4 to 24", To24, Image(5, 5, 4), prism::kErrBitsPerPixel},
        {"24 to 24", To24, Image(5, 5, 24), prism::kErrTextless},
        {"cut to 24", To24, cut8, prism::kErrDibSize}, {"none to 24", To24, {}, prism::kErrParameter},
        {"grey of 1", Grey, Image(8, 8, 1), 0}, {"grey of 4", Grey, Image(8, 8, 4), 0},
        {"grey of 8, mode unchecked", GreyMode3, Image(8, 8, 8), 0}, {"grey of 24", Grey, Image(8, 8, 24), 0},
        {"grey of 1, mode 3", GreyMode3, Image(8, 8, 1), prism::kErrParameter},
        {"grey of 16", Grey, Image(8, 8, 16), prism::kErrBitsPerPixel},
        {"grey of none", Grey, {}, prism::kErrParameter},
        {"mono", Mono, Image(4, 4, 1), 0}, {"mono of 8", Mono, Image(4, 4, 8), prism::kErrCompressed},
        {"mono, mode 3", MonoMode3, Image(4, 4, 1), prism::kErrParameter},
        {"mono cut", Mono, cut1, prism::kErrDibSize}, {"mono of none", Mono, {}, prism::kErrParameter}};
    for (const auto& c : cases) {
        prism::LastImgError = 99;
        // A success leaves a lock standing on the source; a refusal does not.
        const Bytes out = Call([&](HGLOBAL d) { return c.convert(c.bytes.empty() ? nullptr : d); }, c.bytes, c.expected ? 0 : 1);
        EXPECT_EQ(out.empty(), c.expected != 0) << c.name;
        EXPECT_EQ(prism::LastImgError, c.expected) << c.name;
    }
}

TEST(ConvColorDIBtoGrayscale, WeightsOfPrimariesAtTwentyFourBits) {
    const struct { unsigned rgb, plain, weighted; } cases[] = {
        {0xFF0000, 85, 78}, {0x00FF00, 85, 147}, {0x0000FF, 85, 29}, {0xFFFFFF, 255, 255}, {0x102030, 32, 28}};
    for (const auto& c : cases) {
        for (int weighted = 0; weighted < 2; ++weighted) {
            // The mode is ignored above 1 bit.
            Bytes o = Call([&](HGLOBAL d) { return ConvColorDIBtoGrayscale(d, 7, weighted); }, Uniform(3, 2, 24, c.rgb));
            ASSERT_FALSE(o.empty());
            EXPECT_EQ(o[14], 8);
            EXPECT_EQ(Get32(o, 32), 256u);
            EXPECT_EQ(o[40 + 200 * 4], 200);  // ramp
            EXPECT_EQ(PixelAt(o, 2, 1), weighted ? c.weighted : c.plain) << std::hex << c.rgb;
        }
    }
}

TEST(ConvColorDIBtoGrayscale, PaletteImagesKeepIndicesAndGreyTheirTable) {
    // 8 bits with 100 entries: a 256-entry table, 100 and up black.
    Bytes src = Image(9, 4, 8, [](int x, int y) { return (x + y * 9) % 100u; }, 100, 100);
    Bytes o = Call([](HGLOBAL d) { return ConvColorDIBtoGrayscale(d, 0, 0); }, src);
    ASSERT_EQ(o.size(), 1064 + 4 * Stride(9, 8));
    EXPECT_EQ(Get32(o, 32), 256u);
    EXPECT_EQ(Bytes(o.begin() + 40, o.begin() + 44), (Bytes{86, 86, 86, 0}));  // (1 + 2 + 255) / 3
    EXPECT_EQ(o[40 + 99 * 4], (42 + 241 + 156) / 3);
    EXPECT_EQ(o[40 + 100 * 4], 0);
    EXPECT_EQ(o[40 + 255 * 4 + 2], 0);
    EXPECT_TRUE(std::equal(src.begin() + 440, src.end(), o.begin() + 1064));
}

// 1-bit to grey through either export.  The colour export reads a set bit as
// bright whatever the table; the mono export follows the table, and with
// the fixed one (entry 0 darker than entry 1) a set bit comes out dark.
Bytes Smooth(const Bytes& src, int mode, bool viaColour) {
    Bytes o = Call([&](HGLOBAL d) { return viaColour ? ConvColorDIBtoGrayscale(d, mode, 0) : ConvMonoDIBtoGrayscale(d, mode); }, src);
    EXPECT_FALSE(o.empty());
    return o;
}

Bytes Swapped(Bytes b) {  // entry 1 first: set bits bright for the mono export
    std::swap_ranges(b.begin() + 40, b.begin() + 44, b.begin() + 44);
    return b;
}

TEST(MonoToGrey, ModeIsLoweredByHeight) {
    const struct { int height, asked, same; } cases[] = {{3, 2, 0}, {5, 2, 1}, {4, 2, 1}, {3, 1, 1}};
    for (const auto& c : cases) {
        Bytes src = Image(13, c.height, 1, [](int x, int y) { return unsigned(x % (2 + y) == 0); });
        EXPECT_EQ(Smooth(src, c.asked, false), Smooth(src, c.same, false)) << c.height;
    }
}

TEST(ConvMonoDIBtoGrayscale, PolarityFollowsTheTwoColourEntriesAndPaddingBitsCount) {
    Bytes src = Image(10, 2, 1, [](int x, int y) { return unsigned(x == 1 && y == 1); });
    Bytes o = Smooth(src, 0, false), swapped = Smooth(Swapped(src), 0, false);
    EXPECT_EQ(o.size(), 1064u + 2 * 12 + (40 * 10 + 155) / 32 * 4);  // rows and a tail
    EXPECT_TRUE(Get32(o, 32) == 0 && PixelAt(o, 1, 0) == 0 && PixelAt(o, 0, 0) == 255 && PixelAt(o, 9, 1) == 255);
    EXPECT_TRUE(PixelAt(swapped, 1, 0) == 255 && PixelAt(swapped, 0, 0) == 0);
    for (int width : {1, 9, 17, 33})
        for (int mode = 1; mode <= 2; ++mode) {
            Bytes o = Smooth(Swapped(Image(width, 7, 1, [](int, int) { return 1u; })), mode, false);
            ASSERT_FALSE(o.empty());
            // Widths 8k + 1: clear padding bits count as pixels, so the last
            // columns darken and the rest of a wide enough row stays full.
            EXPECT_TRUE(width < 9 || PixelAt(o, 2, 3) == 255) << width;
            EXPECT_LT(PixelAt(o, width - 1, 3), 255u) << width;
        }
}

}  // namespace
