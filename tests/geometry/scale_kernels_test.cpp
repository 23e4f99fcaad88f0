// The scalers' tables and row kernels, on cases the exported scalers do not
// reach: quarter-way cubic weights, tap positions past one byte, a cubic
// blend clamped at both ends.
#include "geometry/scale_kernels.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(ScaleKernels, TablesWeightsAndBlends) {
    std::vector<unsigned char> product(prism::kScaleProductTableBytes);
    prism::BuildScaleProductTable(product.data());
    EXPECT_EQ(product[255 * 256 + 77], 77);   // full weight keeps the pixel
    EXPECT_EQ(product[128 * 256 + 10], 5);    // (1,280 + 128) / 255
    EXPECT_EQ(product[127 * 256 + 200], 100); // (25,400 + 128) / 255

    // Positions past one byte: a third of 300 at columns 1 and 2.
    std::vector<unsigned char> taps(4 * 3);
    prism::BuildTapTable(300, 3, taps.data(), 0);
    EXPECT_EQ(taps[4] | taps[5] << 8, 100);
    EXPECT_EQ(taps[8] | taps[9] << 8, 200);

    // Cubic weights, 255 times 0.125 and 0.625 at a half, 35.859, 227.109,
    // 75.703 and 11.953 at a quarter, truncated.
    struct Weights {
        double f;
        int w0, w1, w2, w3;
    } weights[] = {{0.0, 0, 255, 0, 0}, {0.5, 31, 159, 159, 31}, {0.25, 35, 227, 75, 11}};
    for (const Weights& w : weights) {
        auto got = prism::CubicWeightsAt(w.f);
        EXPECT_EQ(std::vector<int>({got.w0, got.w1, got.w2, got.w3}), std::vector<int>({w.w0, w.w1, w.w2, w.w3})) << w.f;
    }

    // Four lines of two: outer lines bright, inner dark, and the reverse.
    unsigned char lines[] = {255, 0, 0, 255, 0, 255, 255, 0}, out[2];
    prism::BlendRowsCubic(product.data(), lines, out, 2, 31, 159, 159, 31);
    EXPECT_EQ(out[0], 0);    // 0 + 0 - 31 - 31, clamped
    EXPECT_EQ(out[1], 255);  // 159 + 159, clamped
}

}  // namespace
