// ScaleGrayDIB: the grey-level round trip with its lowered indices,
// hand-checked enlargement, the lock it leaves, and its refusals.
#include "core/errors.h"
#include "support/test_support.h"

namespace {

using namespace testing_support;

unsigned Ramp(int x, int y) { return static_cast<unsigned>(1 + x * 3 + y * 17); }
unsigned White(int, int) { return 255; }
unsigned Black(int, int) { return 0; }

// A DIB with a rising grey table: entry k holds k at 8 bits, 17 k at 4.
Bytes GreyDib(int width, int height, int depth, unsigned (*pixel)(int, int) = Ramp) { return GreyImage(width, height, depth, pixel); }

// The result's bytes, empty for 0.  The result comes back locked once, the
// source unlocked (`sourceLocked` says otherwise).
Bytes ScaleGrey(const Bytes& source, int x0, int y0, int w, int h, int zx, int zy, int mode,
                bool sourceLocked = false) {
    HDIB dib = BlockFrom(source);
    HDIB out = ScaleGrayDIB(dib, x0, y0, w, h, zx, zy, mode);
    GlobalLock(dib);
    EXPECT_EQ(GlobalUnlock(dib) != 0, sourceLocked);
    GlobalFree(dib);
    if (out) {
        GlobalLock(out);
        EXPECT_TRUE(GlobalUnlock(out)) << "returned with its lock standing";
        GlobalUnlock(out);
    }
    return Take(out);
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
    } constants[] = {{0, 0, White}, {0, 0, Black}, {0, 500, Ramp}, {-3000, -40, Ramp}};
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
