// The moving-window histogram, the tone curve and its application.
#include "core/errors.h"
#include "tone/histogram.h"
#include "tone_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace testing_support;
using namespace tone_test;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 37 + y * 91 + (x * y) % 13) & 0xFF); }

Bytes Image8(int width, int height) {
    DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = 8;
    return PackedDib(spec, Noise);
}

// Counts of the window at (x, y), clamped as the library clamps, by brute
// force over the pixels.
std::vector<std::uint16_t> Expected(int width, int height, int x, int y) {
    x = width >= 256 ? std::min(std::max(x, 0), width - 256) : 0;
    y = height >= 256 ? std::min(std::max(y, 0), height - 256) : 0;
    std::vector<std::uint16_t> bins(256, 0);
    for (int row = y; row < y + std::min(height, 256); ++row)
        for (int col = x; col < x + std::min(width, 256); ++col) ++bins[Noise(col, row)];
    return bins;
}

std::vector<std::uint16_t> Bins(HGLOBAL table) {
    Bytes b = BlockBytes(table);
    std::vector<std::uint16_t> bins(256);
    std::memcpy(bins.data(), b.data(), 512);
    return bins;
}

struct Histogram {
    HGLOBAL table = nullptr;
    Histogram() {
        int error = -1;
        table = ComputeHistogram(nullptr, PRISM_TABLE_CREATE, nullptr, nullptr, &error);
        EXPECT_EQ(error, 0);
    }
    ~Histogram() { ComputeHistogram(nullptr, PRISM_TABLE_FREE, table, nullptr, nullptr); }
};

TEST(ComputeHistogram, EveryMoveGivesWhatARebuildGives) {
    const int W = 700, H = 560;
    HDIB dib = BlockFrom(Image8(W, H));
    Histogram hist;
    ASSERT_NE(hist.table, nullptr);
    EXPECT_EQ(prism::tone::HistWindowLeft, -256);
    // Moves by difference (up to 128), rebuilds (129 and more), moves in
    // both axes, and positions clamped from far outside the image.
    const int moves[][2] = {{0, 0},     {128, 0},   {128, 128}, {0, 0},      {129, 3},   {1, 132},
                            {60, 70},   {10, 199},  {138, 71},  {100000, 5}, {400, 300}, {-5000, -7},
                            {444, 304}, {316, 176}, {444, 50},  {444, 50},   {300, 200}};
    for (const auto& m : moves) {
        int pos[2] = {m[0], m[1]};
        int error = -1;
        ASSERT_EQ(ComputeHistogram(dib, PRISM_TABLE_UPDATE, hist.table, pos, &error), hist.table);
        EXPECT_EQ(error, 0);
        EXPECT_EQ(Bins(hist.table), Expected(W, H, m[0], m[1])) << m[0] << "," << m[1];
    }
    EXPECT_EQ(prism::tone::HistWindowLeft, 300);
    EXPECT_EQ(prism::tone::HistWindowTop, 200);
    GlobalFree(dib);
}

TEST(ComputeHistogram, ClampsFarPositionsAndKeepsSmallImagesWhole) {
    Histogram hist;
    HDIB wide = BlockFrom(Image8(1000, 300));
    int pos[2] = {100000, -100000};
    int error = -1;
    ASSERT_EQ(ComputeHistogram(wide, PRISM_TABLE_UPDATE, hist.table, pos, &error), hist.table);
    EXPECT_EQ(prism::tone::HistWindowLeft, 744);
    EXPECT_EQ(prism::tone::HistWindowTop, 0);
    EXPECT_EQ(Bins(hist.table), Expected(1000, 300, 744, 0));
    GlobalFree(wide);

    // Narrower and lower than the window: the window is the whole image, and
    // a second request elsewhere counts as unchanged.
    Histogram small;
    Bytes bytes = Image8(40, 30);
    HDIB dib = BlockFrom(bytes);
    ASSERT_EQ(ComputeHistogram(dib, PRISM_TABLE_UPDATE, small.table, pos, &error), small.table);
    std::vector<std::uint16_t> first = Bins(small.table);
    EXPECT_EQ(first, Expected(40, 30, 0, 0));
    GlobalFree(dib);
    Bytes other = Blank(40, 30, 8);
    HDIB dib2 = BlockFrom(other);
    int elsewhere[2] = {17, 9};
    ASSERT_EQ(ComputeHistogram(dib2, PRISM_TABLE_UPDATE, small.table, elsewhere, &error), small.table);
    EXPECT_EQ(Bins(small.table), first);
    GlobalFree(dib2);
}

TEST(ComputeHistogram, CountersWrapAt65536) {
    Histogram hist;
    Bytes bytes = Blank(256, 256, 8);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) At8(bytes, x, y) = 9;
    At8(bytes, 3, 3) = 10;
    HDIB dib = BlockFrom(bytes);
    int pos[2] = {0, 0};
    int error = -1;
    ASSERT_NE(ComputeHistogram(dib, PRISM_TABLE_UPDATE, hist.table, pos, &error), nullptr);
    std::vector<std::uint16_t> bins = Bins(hist.table);
    EXPECT_EQ(bins[9], 65535);
    EXPECT_EQ(bins[10], 1);
    GlobalFree(dib);
}

TEST(ComputeHistogram, RefusesBadInputInTheErrorWord) {
    Histogram hist;
    int pos[2] = {0, 0};
    Bytes good = Image8(20, 20);
    Bytes core = good;
    Put32(core, 0, 12);
    Bytes packed = good;
    Put32(packed, 16, 1);
    Bytes zero = good;
    Put32(zero, 4, 0);
    Bytes truncated(good.begin(), good.begin() + 1100);
    struct Case {
        const char* name;
        Bytes bytes;
        int expected;
    } cases[] = {{"core header", core, prism::kErrParameter},
                 {"compressed", packed, prism::kErrCompressed},
                 {"24-bit", Blank(20, 20, 24), prism::kErrBitsPerPixel},
                 {"4-bit", Blank(20, 20, 4), prism::kErrBitsPerPixel},
                 {"zero width", zero, prism::kErrDibSize},
                 {"rows past the block", truncated, prism::kErrDibSize}};
    for (const Case& c : cases) {
        HDIB dib = BlockFrom(c.bytes);
        int error = -1;
        EXPECT_EQ(ComputeHistogram(dib, PRISM_TABLE_UPDATE, hist.table, pos, &error), nullptr) << c.name;
        EXPECT_EQ(error, c.expected) << c.name;
        GlobalFree(dib);
    }
    HDIB dib = BlockFrom(good);
    int error = -1;
    EXPECT_EQ(ComputeHistogram(dib, PRISM_TABLE_UPDATE, nullptr, pos, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    error = -1;
    EXPECT_EQ(ComputeHistogram(nullptr, PRISM_TABLE_UPDATE, hist.table, pos, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    error = -1;
    EXPECT_EQ(ComputeHistogram(dib, PRISM_TABLE_UPDATE, hist.table, nullptr, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    error = -1;
    EXPECT_EQ(ComputeHistogram(dib, 33, hist.table, pos, &error), nullptr);
    EXPECT_EQ(error, 0);
    // A failed update leaves the window where it was.
    EXPECT_EQ(prism::tone::HistWindowLeft, -256);
    GlobalFree(dib);
}

std::vector<int> Curve(HGLOBAL lut) {
    Bytes b = BlockBytes(lut);
    return std::vector<int>(b.begin(), b.begin() + 256);
}

TEST(ComputeLUT, CreateGivesTheIdentityAndFreeHandsTheHandleBack) {
    int error = -1;
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
    ASSERT_NE(lut, nullptr);
    EXPECT_EQ(error, 0);
    std::vector<int> c = Curve(lut);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(c[i], i);
    EXPECT_EQ(ComputeLUT(nullptr, PRISM_TABLE_UPDATE, lut, 0, 0, &error), lut);
    EXPECT_EQ(Curve(lut), c);
    EXPECT_EQ(ComputeLUT(nullptr, PRISM_TABLE_FREE, lut, 0, 0, &error), lut);
    EXPECT_EQ(ComputeLUT(nullptr, PRISM_TABLE_UPDATE, nullptr, 0, 0, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    EXPECT_EQ(ComputeLUT(nullptr, 7, nullptr, 0, 0, &error), nullptr);
    EXPECT_EQ(error, 0);
}

TEST(ComputeLUT, LinePivotsOn128WithoutAHistogram) {
    struct Case {
        int contrast, brightness;
        std::vector<std::pair<int, int>> entries;
    } cases[] = {
        {51, 0, {{0, 0}, {21, 0}, {22, 0}, {64, 51}, {128, 128}, {200, 214}, {234, 255}}},
        {-51, 10, {{0, 35}, {64, 86}, {128, 137}, {200, 195}, {255, 239}}},
        {-255, 7, {{0, 135}, {99, 135}, {255, 135}}},
        {0, -300, {{0, 0}, {255, 0}}},
    };
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, nullptr);
    for (const Case& c : cases) {
        int error = -1;
        ASSERT_EQ(ComputeLUT(nullptr, PRISM_TABLE_UPDATE, lut, c.contrast, c.brightness, &error), lut);
        EXPECT_EQ(error, 0);
        std::vector<int> curve = Curve(lut);
        for (auto e : c.entries) EXPECT_EQ(curve[e.first], e.second) << c.contrast << "/" << e.first;
    }
    ComputeLUT(nullptr, PRISM_TABLE_FREE, lut, 0, 0, nullptr);
}

TEST(ComputeLUT, PivotsOnTheMeanOfTheHistogram) {
    // Half 100, half 200: mean 150; a flat line sits at mean + brightness.
    Bytes bytes = Blank(16, 16, 8);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) At8(bytes, x, y) = x < 8 ? 100 : 200;
    HDIB dib = BlockFrom(bytes);
    Histogram hist;
    int pos[2] = {0, 0};
    int error = -1;
    ASSERT_NE(ComputeHistogram(dib, PRISM_TABLE_UPDATE, hist.table, pos, &error), nullptr);
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, nullptr);
    ASSERT_EQ(ComputeLUT(hist.table, PRISM_TABLE_UPDATE, lut, -255, 5, &error), lut);
    std::vector<int> curve = Curve(lut);
    EXPECT_EQ(curve[0], 155);
    EXPECT_EQ(curve[255], 155);
    // An all-zero histogram has no mean: refused, never a division by zero.
    Histogram empty;
    EXPECT_EQ(ComputeLUT(empty.table, PRISM_TABLE_UPDATE, lut, 10, 0, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    ComputeLUT(nullptr, PRISM_TABLE_FREE, lut, 0, 0, nullptr);
    GlobalFree(dib);
}

HGLOBAL TableOf(unsigned char (*f)(int)) {
    Bytes t(256);
    for (int i = 0; i < 256; ++i) t[i] = f(i);
    return BlockFrom(t);
}

TEST(ApplyLUT, MapsThroughTheMeanOfEachColourAndLeavesAGreyRamp) {
    // The default table is coloured: entry i = (3i+1, 5i+2, 255-i).
    DibSpec spec;
    spec.width = 5;
    spec.height = 3;
    Bytes src = PackedDib(spec, [](int x, int y) { return static_cast<unsigned>(x * 50 + y); });
    HDIB dib = BlockFrom(src);
    HGLOBAL negative = TableOf([](int i) { return static_cast<unsigned char>(255 - i); });
    int error = -1;
    HDIB copy = ApplyLUT(dib, negative, 1, &error);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(error, 0);
    Bytes out = BlockBytes(copy);
    EXPECT_EQ(BlockBytes(dib), src);
    EXPECT_EQ(out.size(), src.size());
    for (int i = 0; i < 256; ++i) ASSERT_EQ(out[40 + i * 4], i);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) {
            int i = At8(src, x, y);
            int mean = (((3 * i + 1) & 0xFF) + ((5 * i + 2) & 0xFF) + (255 - i) + 1) / 3;
            EXPECT_EQ(At8(out, x, y), 255 - mean) << x << "," << y;
        }
    GlobalFree(copy);
    // In place, with the identity curve on a grey image: nothing changes.
    Bytes grey = src;
    GreyTable(grey);
    HDIB g = BlockFrom(grey);
    HGLOBAL identity = TableOf([](int i) { return static_cast<unsigned char>(i); });
    EXPECT_EQ(ApplyLUT(g, identity, 0, &error), g);
    EXPECT_EQ(BlockBytes(g), grey);
    GlobalFree(g);
    GlobalFree(dib);
    GlobalFree(negative);
    GlobalFree(identity);
}

TEST(ApplyLUT, RefusesBadInput) {
    HGLOBAL identity = TableOf([](int i) { return static_cast<unsigned char>(i); });
    Bytes good = Blank(6, 4, 8);
    Bytes packed = good;
    Put32(packed, 16, 1);
    Bytes shortBlock(good.begin(), good.end() - 3);
    struct Case {
        const char* name;
        Bytes bytes;
        int expected;
    } cases[] = {{"24-bit", Blank(6, 4, 24), prism::kErrBitsPerPixel},
                 {"compressed", packed, prism::kErrCompressed},
                 {"too small", shortBlock, prism::kErrDibSize}};
    for (const Case& c : cases) {
        HDIB dib = BlockFrom(c.bytes);
        int error = -1;
        EXPECT_EQ(ApplyLUT(dib, identity, 1, &error), nullptr) << c.name;
        EXPECT_EQ(error, c.expected) << c.name;
        EXPECT_EQ(BlockBytes(dib), c.bytes) << c.name;
        GlobalFree(dib);
    }
    HDIB dib = BlockFrom(good);
    int error = -1;
    EXPECT_EQ(ApplyLUT(dib, nullptr, 1, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    EXPECT_EQ(ApplyLUT(nullptr, identity, 1, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
    GlobalFree(dib);
    GlobalFree(identity);
}

TEST(ColorBrightnessContrast, CurveValuesOn24Bits) {
    struct Case {
        short brightness, contrast;
        std::vector<std::pair<int, int>> entries;
    } cases[] = {{0, 0, {{0, 0}, {77, 77}, {255, 255}}},
                 {50, 50, {{0, 32}, {100, 182}, {128, 224}, {200, 255}}},
                 {0, -50, {{0, 64}, {100, 114}, {255, 191}}},
                 {-100, -100, {{0, 128}, {100, 128}, {255, 128}}}};
    for (const Case& c : cases) {
        // One pixel per tested value, its three bytes equal.
        const int n = static_cast<int>(c.entries.size());
        Bytes src = Blank(n, 1, 24);
        for (int k = 0; k < n; ++k)
            for (int b = 0; b < 3; ++b) src[40 + k * 3 + b] = static_cast<unsigned char>(c.entries[k].first);
        HDIB dib = BlockFrom(src);
        prism::LastImgError = 5;
        Result out(ColorBrightnessContrast(dib, c.brightness, c.contrast));
        ASSERT_NE(out.dib, nullptr);
        EXPECT_EQ(prism::LastImgError, 0);
        Bytes o = out.bytes();
        EXPECT_EQ(Get32(o, 20), testing_support::Stride(n, 24));  // biSizeImage filled in
        for (int k = 0; k < n; ++k)
            for (int b = 0; b < 3; ++b)
                EXPECT_EQ(o[40 + k * 3 + b], c.entries[k].second) << c.brightness << "/" << c.contrast;
        EXPECT_EQ(BlockBytes(dib), src);
        GlobalFree(dib);
    }
}

TEST(ColorBrightnessContrast, PaletteImagesChangeOnlyThroughTheirTable) {
    for (int depth : {4, 8}) {
        DibSpec spec;
        spec.width = 7;
        spec.height = 3;
        spec.bitCount = depth;
        Bytes src = PackedDib(spec);
        HDIB dib = BlockFrom(src);
        Result out(ColorBrightnessContrast(dib, 0, -50));
        ASSERT_NE(out.dib, nullptr) << depth;
        Bytes o = out.bytes();
        ASSERT_EQ(o.size(), src.size());
        const size_t pixels = PixelOffset(src);
        EXPECT_TRUE(std::equal(src.begin() + pixels, src.end(), o.begin() + pixels));
        for (size_t at = 40; at < pixels; ++at) {
            int v = src[at];
            int expected = (at - 40) % 4 == 3 ? v : static_cast<int>(v * 50 * 0.01 + 64);
            ASSERT_EQ(o[at], expected) << depth << " byte " << at;
        }
        GlobalFree(dib);
    }
}

TEST(ColorBrightnessContrast, RefusesInTheFixedOrder) {
    struct Case {
        const char* name;
        Bytes bytes;
        short brightness;
        int expected;
    } cases[] = {{"brightness 101", Blank(4, 4, 24), 101, prism::kErrParameter},
                 {"1-bit before the range", Blank(4, 4, 1), 101, prism::kErrBitsPerPixel},
                 {"too small", Bytes(60, 0), 0, prism::kErrParameter}};
    for (const Case& c : cases) {
        HDIB dib = BlockFrom(c.bytes);
        EXPECT_EQ(ColorBrightnessContrast(dib, c.brightness, 0), nullptr) << c.name;
        EXPECT_EQ(prism::LastImgError, c.expected) << c.name;
        GlobalFree(dib);
    }
    Bytes shortRows = Blank(4, 4, 24);
    shortRows.resize(shortRows.size() - 20);
    HDIB dib = BlockFrom(shortRows);
    EXPECT_EQ(ColorBrightnessContrast(dib, 0, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrDibSize);
    GlobalFree(dib);
    EXPECT_EQ(ColorBrightnessContrast(nullptr, 0, 0), nullptr);
    EXPECT_EQ(prism::LastImgError, prism::kErrParameter);
}

TEST(InvertDIBPalette, TwiceRestoresAndCountsOnlyBiClrUsed) {
    DibSpec spec;
    spec.width = 3;
    spec.height = 2;
    spec.clrUsed = 256;
    Bytes src = PackedDib(spec);
    HDIB dib = BlockFrom(src);
    ASSERT_EQ(InvertDIBPalette(dib), 1);
    Bytes once = BlockBytes(dib);
    EXPECT_EQ(once[40], 255 - src[40]);
    EXPECT_EQ(once[43], src[43]);
    EXPECT_TRUE(std::equal(src.begin() + PixelOffset(src), src.end(), once.begin() + PixelOffset(src)));
    ASSERT_EQ(InvertDIBPalette(dib), 1);
    EXPECT_EQ(BlockBytes(dib), src);
    GlobalFree(dib);

    Bytes implied = Blank(3, 2, 8);  // biClrUsed 0: nothing changes, result 1
    HDIB d2 = BlockFrom(implied);
    EXPECT_EQ(InvertDIBPalette(d2), 1);
    EXPECT_EQ(BlockBytes(d2), implied);
    GlobalFree(d2);
    spec.coreHeader = true;
    HDIB core = BlockFrom(PackedDib(spec));
    EXPECT_EQ(InvertDIBPalette(core), 0);
    GlobalFree(core);
    EXPECT_EQ(InvertDIBPalette(nullptr), 0);
}

}  // namespace
