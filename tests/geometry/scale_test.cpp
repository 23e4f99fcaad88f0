// ScaleDIB at depths 1, 4, 8 and 24: the invariants (same size, one
// colour), the header, mode and size bits, and the failure codes.
// ScaleGrayDIB: the grey-level round trip with its lowered indices, the
// locks it leaves, and its refusals.  The exact interpolation of both is
// pinned in tests/pinned.
#include "core/errors.h"
#include "support/test_support.h"

namespace {

using namespace testing_support;

unsigned White(int, int) { return 0xFFFFFF; }
unsigned SmallIndex(int x, int y) { return static_cast<unsigned>((x * 3 + y) % 16); }
unsigned Ramp(int x, int y) { return static_cast<unsigned>(1 + x * 3 + y * 17); }

// The result's bytes, empty for 0; the source must be left unlocked.
Bytes Scale(const Bytes& source, int mode, int width, int height) {
    return Call([&](HGLOBAL d) { return ScaleDIB(d, mode, width, height); }, source, 0);
}

TEST(ScaleDIB, SameSizeKeepsTheImageAndOneColourStaysOne) {
    for (int depth : {1, 4, 8, 24})
        for (int mode : {0, 1}) {
            // At the same size every weight is 0 and 255 (linear) or 0, 255,
            // 0, 0 (cubic), and palette colours map back to their own
            // entries: table and pixels come back as they were; the header
            // takes biSizeImage (the 1-bit stretcher keeps it).
            for (int width : {1, 6, 13}) {
                Bytes source = Image(width, 5, depth, Pattern, -1, depth <= 8 ? 1u << depth : 0);
                const Bytes s = Scale(source, mode, width, 5);
                if (depth != 1) Put32(source, 20, static_cast<std::uint32_t>(Stride(width, depth) * 5));
                const size_t head = BitsOffset(source);
                ASSERT_GE(s.size(), source.size());
                EXPECT_EQ(Bytes(s.begin(), s.begin() + head), Bytes(source.begin(), source.begin() + head)) << depth;
                for (int y = 0; y < 5; ++y)
                    for (int x = 0; x < width; ++x) ASSERT_EQ(PixelAt(s, x, y), PixelAt(source, x, y)) << depth << " " << x;
            }
            // Linear weights sum to 255 (exact on white) and the nearest
            // palette entry is the same one.  The 1-bit sampler leaves
            // enlarged rows and columns past the source at 0.
            const Bytes constant = Uniform(9, 7, depth, depth == 24 ? 0xFFFFFF : 5);
            for (auto [w, h] : {std::pair{23, 17}, {4, 3}}) {
                if (mode != 0 || (depth == 1 && w > 9)) continue;
                const Bytes s = Scale(constant, mode, w, h);
                ASSERT_EQ(Field(s, 4) * Field(s, 8), w * h);
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x) ASSERT_EQ(PixelAt(s, x, y), PixelAt(constant, 0, 0)) << x << "," << y;
            }
        }
}

TEST(ScaleDIB, PaletteModesAndSizeBits) {
    // 16 entries at 8 bits: every index found lies in the table.
    for (int mode : {0, 1}) {
        const Bytes s = Scale(Image(7, 5, 8, SmallIndex, 16, 16), mode, 19, 11);
        ASSERT_FALSE(s.empty());
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 19; ++x) ASSERT_LT(PixelAt(s, x, y), 16u) << x << "," << y;
    }
    // Any mode but 0 with a non-zero low half is the cubic mode, and only
    // the low 16 bits of the new size count.
    const Bytes source = Image(9, 6, 8, Pattern);
    const Bytes cubic = Scale(source, 1, 14, 10);
    ASSERT_FALSE(cubic.empty());
    EXPECT_EQ(Scale(source, 2, 14, 10), cubic);
    EXPECT_EQ(Scale(source, 0x30001, 14, 10), cubic);
    EXPECT_EQ(Scale(source, 0, 0x10000 + 14, 0x20000 + 10), Scale(source, 0, 14, 10));
    // A new height of 0 gives an image without rows.
    const Bytes flat = Scale(source, 0, 7, 0);
    EXPECT_TRUE(flat.size() >= 40 && Field(flat, 4) == 7 && Field(flat, 8) == 0 && Field(flat, 20) == 0);
}

// Failures give 0 and their code in LastImgError; 99 means left alone, as
// for blocks that do not hold the image they describe.  -1: a result.
TEST(ScaleDIB, FailuresAndLimits) {
    const Bytes img8 = Image(6, 3, 8, Pattern), img24 = Image(6, 3, 24, Pattern), img1 = Image(6, 3, 1, Pattern);
    const struct { const char* name; Bytes image; int mode, width, height, code; } cases[] = {
        {"new width 0", Image(6, 3, 8), 0, 0, 4, 1}, {"new width 0, cubic", Image(6, 3, 24), 1, 0, 4, 1},
        {"new width 0 in the low half", Image(6, 3, 4), 0, 0x10000, 4, 1},
        {"depth 16", Image(6, 3, 16), 0, 4, 4, 21}, {"depth 32", Image(6, 3, 32), 0, 4, 4, 21},
        {"linear too wide", Image(6, 3, 8), 0, 16384, 1, 8}, {"linear widest", Image(4, 1, 8), 0, 16383, 1, -1},
        {"cubic too wide", Image(6, 3, 24), 1, 10923, 1, 8}, {"cubic widest", Image(4, 1, 24), 1, 10922, 1, -1},
        {"cubic too wide by wrap", Image(6, 3, 4), 1, -1, 1, 8},
        {"mode with zero low half", Image(6, 3, 8), 0x10000, 4, 4, 8},
        // The 1-bit stretcher refuses and reports nothing.
        {"1 bit, negative width", Image(6, 3, 1), 0, -3, 4, 99},
        {"1 bit, height 0", Image(6, 3, 1), 0, 4, 0, 99},
        {"compressed", With(img8, 16, 1), 0, 4, 4, 18},
        {"rows cut short", Short(img24, 10), 0, 4, 4, 99},
        {"1 bit, rows cut short", Short(img1, 1), 0, 4, 4, 99},
        {"core header", PackedDib({1, 1, 8, -1, 0, 0, true}), 0, 8, 8, 99},
        {"negative height", With(img8, 8, 0xFFFFFFFC), 0, 8, 8, 99},
        {"header cut", Cut(img8, 30), 0, 8, 8, 99},
    };
    for (const auto& c : cases) {
        prism::LastImgError = 99;
        EXPECT_EQ(Scale(c.image, c.mode, c.width, c.height).empty(), c.code != -1) << c.name;
        EXPECT_EQ(ImgError(), c.code == -1 ? 99 : c.code) << c.name;
    }
    SetImgError(0);
    EXPECT_EQ(ScaleDIB(nullptr, 0, 4, 4), nullptr);
    EXPECT_EQ(ImgError(), 8);
}

// A DIB with a rising grey table: entry k holds k at 8 bits, 17 k at 4.
Bytes GreyDib(int width, int height, int depth, unsigned (*pixel)(int, int) = Ramp) { return GreyImage(width, height, depth, pixel); }

// The result's bytes, empty for 0.  The result comes back locked once, the
// source unlocked (`sourceLocked` says otherwise).
Bytes ScaleGrey(const Bytes& source, int x0, int y0, int w, int h, int zx, int zy, int mode,
                bool sourceLocked = false) {
    return Call([&](HGLOBAL d) {
        HDIB out = ScaleGrayDIB(d, x0, y0, w, h, zx, zy, mode);
        EXPECT_TRUE(!out || Locked(out)) << "returned with its lock standing";
        if (out) GlobalUnlock(out);
        return out;
    }, source, sourceLocked);
}

class GreyByDepthMode : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(GreyByDepthMode, RectangleConstantsEdgesAndRefusals) {
    const int depth = std::get<0>(GetParam()), mode = std::get<1>(GetParam());
    // Factors of 1 reproduce the rectangle with the index shift of the
    // grey-to-index table (read one entry ahead): at 8 bits k comes back as
    // k - 1 and 0 as 255 (4 bits, where pixels pair up in bytes, is pinned).
    const Bytes source = GreyDib(14, 9, depth);
    Bytes g = ScaleGrey(source, 2, 3, 6, 4, 1, 1, mode);
    ASSERT_TRUE(Field(g, 4) == 6 && Field(g, 8) == 4);
    for (int y = 0; y < 4 && depth == 8; ++y)
        for (int x = 0; x < 6; ++x) ASSERT_EQ(PixelAt(g, x, y), (PixelAt(source, 2 + x, 3 + y) + 255) & 0xFF) << x << "," << y;
    // A constant stays constant (linear; the cubic lobes are not exact).  At
    // 4 bits the w fetched bytes hold 2 w pixels and the taps read one
    // beyond: the source is wide enough for all.  A rectangle outside the
    // source reads zeros only, and nothing outside the block.
    struct Corner {
        int x0, y0;
        unsigned (*pixel)(int, int);
    } constants[] = {{0, 0, White}, {0, 0, [](int, int) { return 0u; }}, {0, 500, Ramp}, {-3000, -40, Ramp}};
    for (const Corner& c : constants) {
        if (mode && c.x0 == 0 && c.y0 == 0) continue;
        g = ScaleGrey(GreyDib(16, 6, depth, c.pixel), c.x0, c.y0, 8, 6, 3, 2, mode);
        ASSERT_FALSE(g.empty());
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 24; ++x) ASSERT_EQ(PixelAt(g, x, y), PixelAt(g, 0, 0)) << x << "," << y;
    }
    // A height of 0 gives an image without rows.
    g = ScaleGrey(source, 0, 0, 4, 0, 2, 5, mode);
    ASSERT_FALSE(g.empty());
    EXPECT_EQ(Field(g, 4), 8);
    EXPECT_EQ(Field(g, 8), 0);
    EXPECT_EQ(Field(g, 20), 0);
    // Refusals leave the error alone.  The tap walk stays below 8,192
    // (linear) and 5,462 (cubic) columns.
    prism::LastImgError = 77;
    const int limit = mode ? 5462 : 8192;
    const int refused[][6] = {{0, 0, 200, 4, 200, 1},  // 40,000 wraps in 16 bits
                              {0, 0, 4, 200, 1, 200}, {0, 0, 4, 4, -2, 1}, {0, 0, -4, 4, -2, 1},
                              {0, 0, 4, -4, 1, -2},   {0, 0, 0, 4, 3, 1},  {0, 0, 4, 4, 0, 1},
                              {0, 0, 2, 1, limit / 2, 1}};
    for (const auto& r : refused)
        EXPECT_TRUE(ScaleGrey(source, r[0], r[1], r[2], r[3], r[4], r[5], mode).empty()) << r[2] << " " << r[4];
    EXPECT_FALSE(ScaleGrey(source, 0, 0, 1, 1, limit - 1, 1, mode).empty());
    EXPECT_TRUE(ScaleGrey(source, 0, 0, 4, 4, 1, 1, 2).empty());  // modes are 0 and 1
    EXPECT_EQ(prism::LastImgError, 77);
}

INSTANTIATE_TEST_SUITE_P(Cases, GreyByDepthMode, ::testing::Combine(::testing::Values(4, 8), ::testing::Values(0, 1)),
                         [](const ::testing::TestParamInfo<std::tuple<int, int>>& info) {
                             return "Bits" + std::to_string(std::get<0>(info.param)) +
                                    (std::get<1>(info.param) ? "Cubic" : "Linear");
                         });

TEST(ScaleGrayDIB, BadBlocks) {
    EXPECT_EQ(ScaleGrayDIB(nullptr, 0, 0, 4, 4, 2, 2, 0), nullptr);
    Bytes compressed = GreyDib(8, 4, 8), tiny = compressed, cut = compressed;
    compressed[16] = 1;
    tiny.resize(20);
    EXPECT_TRUE(ScaleGrey(compressed, 0, 0, 4, 4, 2, 2, 0).empty());
    EXPECT_TRUE(ScaleGrey(tiny, 0, 0, 4, 4, 2, 2, 0).empty());
    // Other depths are refused with the source left locked.
    EXPECT_TRUE(ScaleGrey(Image(8, 2, 1), 0, 0, 4, 2, 2, 2, 0, true).empty());
    EXPECT_TRUE(ScaleGrey(Image(8, 2, 16), 0, 0, 4, 2, 2, 2, 0, true).empty());
    // A table cut short: the missing entries and pixels read as 0.
    cut.resize(40 + 600);
    EXPECT_FALSE(ScaleGrey(cut, 0, 0, 4, 4, 2, 2, 1).empty());
}

}  // namespace
