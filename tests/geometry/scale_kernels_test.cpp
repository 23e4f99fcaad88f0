// The scalers' tables and row kernels, checked by hand.
#include "geometry/scale_kernels.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using prism::BuildScaleProductTable;
using prism::BuildTapTable;

std::vector<unsigned char> Product() {
    std::vector<unsigned char> t(prism::kScaleProductTableBytes);
    BuildScaleProductTable(t.data());
    return t;
}

TEST(ScaleKernels, ProductTableIsTheRoundedWeightedPixel) {
    auto t = Product();
    for (unsigned w = 0; w < 256; ++w)
        for (unsigned p = 0; p < 256; ++p) ASSERT_EQ(t[w * 256 + p], (w * p + 128) / 255) << w << " " << p;
    EXPECT_EQ(t[255 * 256 + 77], 77);  // full weight keeps the pixel
}

TEST(ScaleKernels, LinearTapsMapLeftEdges) {
    std::vector<unsigned char> taps(4 * 8);
    BuildTapTable(4, 8, taps.data(), 0);
    // Columns 0..7 of a doubling: positions 0,0,1,1,2,2,3,3; odd columns
    // lie half way, (4 * 255 + 4) / 8 = 128.
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(taps[i * 4] | taps[i * 4 + 1] << 8, i / 2) << i;
        EXPECT_EQ(taps[i * 4 + 3], i % 2 ? 128 : 0) << i;
        EXPECT_EQ(taps[i * 4 + 2], i % 2 ? 127 : 255) << i;
    }
    std::vector<unsigned char> wide(4 * 3);
    BuildTapTable(300, 3, wide.data(), 0);  // positions past one byte
    EXPECT_EQ(wide[4] | wide[5] << 8, 100);
    EXPECT_EQ(wide[8] | wide[9] << 8, 200);
}

TEST(ScaleKernels, CubicWeightsAtExactFractions) {
    auto at0 = prism::CubicWeightsAt(0.0);
    EXPECT_EQ(at0.w0, 0);
    EXPECT_EQ(at0.w1, 255);
    EXPECT_EQ(at0.w2, 0);
    EXPECT_EQ(at0.w3, 0);
    // f = 1/2: outer lobes 255 * 0.125 = 31.875, inner 255 * 0.625 = 159.375.
    auto half = prism::CubicWeightsAt(0.5);
    EXPECT_EQ(half.w0, 31);
    EXPECT_EQ(half.w1, 159);
    EXPECT_EQ(half.w2, 159);
    EXPECT_EQ(half.w3, 31);
    // f = 1/4: 35.859, 227.109, 75.703, 11.953.
    auto quarter = prism::CubicWeightsAt(0.25);
    EXPECT_EQ(quarter.w0, 35);
    EXPECT_EQ(quarter.w1, 227);
    EXPECT_EQ(quarter.w2, 75);
    EXPECT_EQ(quarter.w3, 11);

    std::vector<unsigned char> taps(6 * 4);
    BuildTapTable(2, 4, taps.data(), 1);
    EXPECT_EQ(taps[6] | taps[7] << 8, 0);
    EXPECT_EQ(taps[8], 31);
    EXPECT_EQ(taps[9], 159);
    EXPECT_EQ(taps[12 + 3], 255);  // column 2 lands on pixel 1 exactly
    EXPECT_EQ(taps[12] | taps[13] << 8, 1);
}

TEST(ScaleKernels, ResampleUsesTheGuardBytes) {
    auto t = Product();
    // Plane 10, 200 with its guards: 10 before, 200 three times behind.
    unsigned char plane[] = {10, 10, 200, 200, 200, 200};
    std::vector<unsigned char> linearTaps(4 * 4), cubicTaps(6 * 4);
    BuildTapTable(2, 4, linearTaps.data(), 0);
    BuildTapTable(2, 4, cubicTaps.data(), 1);
    unsigned char out[4];
    prism::ResampleRowLinear(t.data(), linearTaps.data(), plane + 1, out, 4);
    // 5 + 100 half way, then the right guard repeats the last pixel.
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), (std::vector<unsigned char>{10, 105, 200, 200}));
    prism::ResampleRowCubic(t.data(), cubicTaps.data(), plane + 1, out, 4);
    // 6 + 125 - 1 - 24 and 125 + 125 - 1 - 24: the negative lobes overshoot.
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), (std::vector<unsigned char>{10, 106, 200, 225}));
}

TEST(ScaleKernels, BlendsClampAndWeigh) {
    auto t = Product();
    unsigned char line0[] = {0, 100, 255, 255};
    unsigned char line1[] = {255, 100, 255, 0};
    unsigned char out[4];
    prism::BlendRowsLinear(t.data(), line0, line1, out, 4, 0);
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), std::vector<unsigned char>(line0, line0 + 4));
    prism::BlendRowsLinear(t.data(), line0, line1, out, 4, 255);
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), std::vector<unsigned char>(line1, line1 + 4));
    prism::BlendRowsLinear(t.data(), line0, line1, out, 4, 128);
    // 0+128, 50+50, 127+128, 127+0
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), (std::vector<unsigned char>{128, 100, 255, 127}));

    // Four lines of two: outer lines bright, inner dark, and the reverse.
    unsigned char lines[] = {255, 0, 0, 255, 0, 255, 255, 0};
    prism::BlendRowsCubic(t.data(), lines, out, 2, 31, 159, 159, 31);
    EXPECT_EQ(out[0], 0);    // 0 + 0 - 31 - 31, clamped
    EXPECT_EQ(out[1], 255);  // 159 + 159, clamped
}

}  // namespace
