// Square filters over 24-bit images, through their brightness.
#include "core/errors.h"
#include "support/test_support.h"

using namespace testing_support;

namespace {

// Refusals are checked with Convolve's in convolve_test.cpp.
Bytes Filtered(const Bytes& src, int mode, int kind, int size, const short* matrix) {
    return CopyAndInPlace(src, [&](HDIB dib, BOOL copy, int* e) { return ColorConvolution(dib, copy, mode, WORD(kind), short(size), nullptr, matrix, e); }, nullptr);
}

unsigned Colours(int x, int y) { return (x * 0x3A1F07u + y * 0x11D2C3u) & 0xFFFFFF; }

TEST(ColorConvolution, EveryByteGainsTheWeightedBrightnessBlueFirst) {
    const short identity[] = {0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    Bytes colours = Image(11, 7, 24, Colours);
    for (int mode : {0, 1, 2}) EXPECT_EQ(Filtered(colours, mode, 1, 3, identity), colours) << mode;
    // Centre 2, divisor 1: each byte gains the pixel's brightness.
    const short twice[] = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const struct { unsigned rgb; int mode; unsigned expected; } cases[] = {
        {0x0000FF, 1, 0x4E4EFF}, {0x0000FF, 0, 0x5555FF}, {0xFF0000, 1, 0xFF1D1D},
        {0x00FF00, 1, 0x93FF93}, {0x00FF00, 2, 0x55FF55}};
    for (const auto& c : cases)
        EXPECT_EQ(PixelAt(Filtered(Uniform(5, 4, 24, c.rgb), c.mode, 1, 3, twice), 2, 2), c.expected)
            << std::hex << c.rgb << " mode " << c.mode;
    // Centre -1: the sum is minus the brightness 17 of bytes 5, 17, 29; by 16
    // it shifts down (-2), by 15 it divides toward zero (-1).
    const short by16[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 16}, by15[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 15};
    EXPECT_EQ(PixelAt(Filtered(Uniform(6, 5, 24, 0x1D1105), 0, 1, 3, by16), 3, 2), 0x0A0000u);
    EXPECT_EQ(PixelAt(Filtered(Uniform(6, 5, 24, 0x1D1105), 0, 1, 3, by15), 3, 2), 0x0B0000u);
}

}  // namespace
