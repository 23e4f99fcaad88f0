// The moving-window histogram, the tone curve and its application, and the
// colour-table adjustments.
#include "core/errors.h"
#include "tone/histogram.h"
#include "support/test_support.h"

#include <algorithm>

using namespace testing_support;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 37 + y * 91 + (x * y) % 13) & 0xFF); }

// Counts of the window at (x, y), clamped into the image, by brute force.
std::vector<std::uint16_t> Expected(int width, int height, int x, int y) {
    x = width >= 256 ? std::min(std::max(x, 0), width - 256) : 0;
    y = height >= 256 ? std::min(std::max(y, 0), height - 256) : 0;
    std::vector<std::uint16_t> bins(256, 0);
    for (int row = y; row < y + std::min(height, 256); ++row)
        for (int col = x; col < x + std::min(width, 256); ++col) ++bins[Noise(col, row)];
    return bins;
}

std::vector<std::uint16_t> Bins(HGLOBAL table) {
    const Bytes b = BlockBytes(table);
    return std::vector<std::uint16_t>(reinterpret_cast<const std::uint16_t*>(b.data()), reinterpret_cast<const std::uint16_t*>(b.data()) + 256);
}

struct Histogram {
    HGLOBAL table = ComputeHistogram(nullptr, PRISM_TABLE_CREATE, nullptr, nullptr, nullptr);
    ~Histogram() { ComputeHistogram(nullptr, PRISM_TABLE_FREE, table, nullptr, nullptr); }
    int Update(HDIB dib, int x, int y) {
        int pos[2] = {x, y}, error = -1;
        HGLOBAL r = ComputeHistogram(dib, PRISM_TABLE_UPDATE, table, pos, &error);
        EXPECT_EQ(r == nullptr, error != 0);
        return error;
    }
};

TEST(ComputeHistogram, EveryMoveGivesWhatARebuildGivesAndCountersWrap) {
    const int W = 700, H = 560;
    HDIB dib = BlockFrom(Image(W, H, 8, Noise));
    Histogram hist;
    ASSERT_NE(hist.table, nullptr);
    EXPECT_EQ(prism::tone::HistWindowLeft, -256);
    // Moves by difference (up to 128), rebuilds (129 and more), moves in
    // both axes, and positions clamped from far outside the image.
    const int moves[][2] = {{0, 0},     {128, 0},   {128, 128}, {0, 0},      {129, 3},   {1, 132},
                            {60, 70},   {10, 199},  {138, 71},  {100000, 5}, {400, 300}, {-5000, -7},
                            {444, 304}, {316, 176}, {444, 50},  {444, 50},   {300, 200}};
    for (const auto& m : moves) {
        ASSERT_EQ(hist.Update(dib, m[0], m[1]), 0);
        EXPECT_EQ(Bins(hist.table), Expected(W, H, m[0], m[1])) << m[0] << "," << m[1];
    }
    EXPECT_EQ(prism::tone::HistWindowLeft, 300);
    EXPECT_EQ(prism::tone::HistWindowTop, 200);
    GlobalFree(dib);

    // Smaller than the window: the whole image, and a second request
    // elsewhere counts as unchanged even for another image.
    Histogram small;
    HDIB noisy = BlockFrom(Image(40, 30, 8, Noise)), blank = BlockFrom(Image(40, 30, 8));
    ASSERT_EQ(small.Update(noisy, 100000, -100000), 0);
    EXPECT_EQ(Bins(small.table), Expected(40, 30, 0, 0));
    ASSERT_EQ(small.Update(blank, 17, 9), 0);
    EXPECT_EQ(Bins(small.table), Expected(40, 30, 0, 0));
    GlobalFree(noisy);
    GlobalFree(blank);

    // Counters are 16 bits: 65536 - 1 nines and a ten.
    HDIB nines = BlockFrom(Image(256, 256, 8, [](int x, int y) { return x == 3 && y == 3 ? 10u : 9u; }));
    Histogram wrap;
    ASSERT_EQ(wrap.Update(nines, 0, 0), 0);
    EXPECT_EQ(Bins(wrap.table)[9], 65535);
    EXPECT_EQ(Bins(wrap.table)[10], 1);
    GlobalFree(nines);
}

TEST(ComputeHistogram, RefusesBadInputInTheErrorWord) {
    Histogram hist;
    const Bytes good = Image(20, 20, 8, Noise);
    const struct { const char* name; Bytes bytes; int expected; } cases[] = {
        {"core header", With(good, 0, 12), prism::kErrParameter}, {"compressed", With(good, 16, 1), prism::kErrCompressed},
        {"24-bit", Image(20, 20, 24), prism::kErrBitsPerPixel}, {"4-bit", Image(20, 20, 4), prism::kErrBitsPerPixel},
        {"zero width", With(good, 4, 0), prism::kErrDibSize}, {"rows past the block", Cut(good, 1100), prism::kErrDibSize}};
    for (const auto& c : cases) Call([&](HGLOBAL d) { EXPECT_EQ(hist.Update(d, 0, 0), c.expected) << c.name; return HDIB(nullptr); }, c.bytes);
    HDIB dib = BlockFrom(good);
    int pos[2] = {0, 0}, error = -1;
    const struct { HDIB dib; int mode; HGLOBAL table; const int* pos; int expected; } calls[] = {
        {dib, PRISM_TABLE_UPDATE, nullptr, pos, prism::kErrParameter},
        {nullptr, PRISM_TABLE_UPDATE, hist.table, pos, prism::kErrParameter},
        {dib, PRISM_TABLE_UPDATE, hist.table, nullptr, prism::kErrParameter}, {dib, 33, hist.table, pos, 0}};
    for (const auto& c : calls) {
        EXPECT_EQ(ComputeHistogram(c.dib, c.mode, c.table, c.pos, &error), nullptr);
        EXPECT_EQ(error, c.expected);
    }
    EXPECT_EQ(prism::tone::HistWindowLeft, -256);  // failures leave the window
    GlobalFree(dib);
}

TEST(ComputeLUT, IdentityAtCreationThenALinePivotingOn128OrTheHistogramMean) {
    int error = -1;
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
    ASSERT_NE(lut, nullptr);
    EXPECT_EQ(error, 0);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(BlockBytes(lut)[i], i);
    // Other lines are pinned in tests/pinned.
    const struct { int contrast, brightness; std::vector<std::pair<int, int>> entries; } cases[] = {
        {51, 0, {{21, 0}, {22, 0}, {64, 51}, {128, 128}, {234, 255}}}, {-255, 7, {{0, 135}, {255, 135}}}, {0, -300, {{255, 0}}}};
    for (const auto& c : cases) {
        ASSERT_EQ(ComputeLUT(nullptr, PRISM_TABLE_UPDATE, lut, c.contrast, c.brightness, &error), lut);
        EXPECT_EQ(error, 0);
        for (auto e : c.entries) EXPECT_EQ(BlockBytes(lut)[e.first], e.second) << c.contrast << "/" << e.first;
    }
    // Half 100, half 200: mean 150; a flat line sits at mean + brightness.
    HDIB dib = BlockFrom(Image(16, 16, 8, [](int x, int) { return x < 8 ? 100u : 200u; }));
    Histogram hist, empty;
    ASSERT_EQ(hist.Update(dib, 0, 0), 0);
    ASSERT_EQ(ComputeLUT(hist.table, PRISM_TABLE_UPDATE, lut, -255, 5, &error), lut);
    EXPECT_EQ(BlockBytes(lut)[0], 155);
    EXPECT_EQ(BlockBytes(lut)[255], 155);
    GlobalFree(dib);
    // An all-zero histogram has no mean: refused, never a division by zero.
    // Then: freeing gives the table back; no table, or mode 7, gives 0.
    const struct { HGLOBAL histogram; int mode; HGLOBAL table; HGLOBAL result; int error; } calls[] = {
        {empty.table, PRISM_TABLE_UPDATE, lut, nullptr, prism::kErrParameter}, {nullptr, PRISM_TABLE_FREE, lut, lut, 0},
        {nullptr, PRISM_TABLE_UPDATE, nullptr, nullptr, prism::kErrParameter}, {nullptr, 7, nullptr, nullptr, 0}};
    for (const auto& c : calls) {
        EXPECT_EQ(ComputeLUT(c.histogram, c.mode, c.table, 10, 0, &error), c.result);
        EXPECT_EQ(error, c.error);
    }
}

TEST(ApplyLUT, MapsTheRoundedMeanOfEachColourAndWorksInPlace) {
    Bytes src = Image(2, 1, 8, [](int x, int) { return x * 100u; });
    Bytes t(256);
    std::generate(t.rbegin(), t.rend(), [n = 0]() mutable { return n++; });
    HGLOBAL negative = BlockFrom(t);
    int error = -1;
    const Bytes out = CopyAndInPlace(src, [&](HDIB d, BOOL copy, int* e) { return ApplyLUT(d, negative, copy, e); }, &error);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(error, 0);
    EXPECT_EQ(out[40 + 4 * 77], 77);  // a grey ramp
    EXPECT_EQ(PixelAt(out, 0, 0), 255u - (1 + 2 + 255 + 1) / 3);
    EXPECT_EQ(PixelAt(out, 1, 0), 255u - (45 + 246 + 155 + 1) / 3);

    const struct { const char* name; Bytes bytes; HGLOBAL lut; int expected; } cases[] = {
        {"24-bit", Image(6, 4, 24), negative, prism::kErrBitsPerPixel},
        {"compressed", With(src, 16, 1), negative, prism::kErrCompressed},
        {"too small", Short(src, 3), negative, prism::kErrDibSize},
        {"no table", src, nullptr, prism::kErrParameter}, {"no image", {}, negative, prism::kErrParameter}};
    for (const auto& c : cases) {
        const Bytes out = Call([&](HGLOBAL d) { return ApplyLUT(c.bytes.empty() ? nullptr : d, c.lut, 1, &error); }, c.bytes);
        EXPECT_TRUE(out.empty()) << c.name;
        EXPECT_EQ(error, c.expected) << c.name;
    }
    GlobalFree(negative);
}

TEST(ColorBrightnessContrast, BrightnessOffsetTruncatesAndRefusesInTheFixedOrder) {
    // Brightness -100 is an offset of -128 (not -127): entry 0's red 255 becomes 127.
    EXPECT_EQ(Call([](HGLOBAL d) { return ColorBrightnessContrast(d, -100, 0); }, Image(1, 1, 8))[42], 127);
    const Bytes shortRows = Cut(Image(4, 4, 24), 40 + 48 - 20);
    const struct { const char* name; Bytes bytes; short brightness; int expected; } cases[] = {
        {"brightness 101", Image(4, 4, 24), 101, prism::kErrParameter},
        {"1-bit before the range", Image(4, 4, 1), 101, prism::kErrBitsPerPixel},
        {"compressed before the depth", With(Image(4, 4, 1), 16, 1), 101, prism::kErrCompressed},
        {"too small", Bytes(60, 0), 0, prism::kErrParameter}, {"rows past the block", shortRows, 0, prism::kErrDibSize},
        {"no image", {}, 0, prism::kErrParameter}};
    for (const auto& c : cases) {
        const Bytes out = Call([&](HGLOBAL d) { return ColorBrightnessContrast(c.bytes.empty() ? nullptr : d, c.brightness, 0); }, c.bytes);
        EXPECT_TRUE(out.empty()) << c.name;
        EXPECT_EQ(prism::LastImgError, c.expected) << c.name;
    }
}

TEST(InvertDIBPalette, TwiceRestoresAndCountsOnlyBiClrUsed) {
    Bytes src = Image(3, 2, 8, nullptr, -1, 256);
    HDIB dib = BlockFrom(src);
    ASSERT_EQ(InvertDIBPalette(dib), 1);
    Bytes once = BlockBytes(dib);
    EXPECT_EQ(Bytes(once.begin() + 40, once.begin() + 44), (Bytes{254, 253, 0, 0}));
    EXPECT_TRUE(std::equal(src.begin() + 1064, src.end(), once.begin() + 1064));
    ASSERT_EQ(InvertDIBPalette(dib), 1);
    EXPECT_EQ(BlockBytes(dib), src);
    GlobalFree(dib);
    DibShape core;
    core.coreHeader = true;
    for (const Bytes& b : {Image(3, 2, 8, nullptr), PackedDib(core)}) {  // biClrUsed 0 or a 12-byte header
        dib = BlockFrom(b);
        EXPECT_EQ(InvertDIBPalette(dib), b[0] == 40 ? 1 : 0);
        EXPECT_EQ(BlockBytes(dib), b);
        GlobalFree(dib);
    }
    EXPECT_EQ(InvertDIBPalette(nullptr), 0);
}

}  // namespace
