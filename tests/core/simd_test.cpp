// The vector paths give the plain paths' bytes: every operation that has
// one, on rows long enough for the vector loops and with tails behind them.
#include "core/simd.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <string>

using namespace testing_support;

namespace {

// Runs of up to 40 equal pixels between noisy stretches.
unsigned Noise(int x, int y) {
    if ((x / 40 + y) % 3 == 0) return static_cast<unsigned>(y * 7);
    unsigned v = static_cast<unsigned>(x) * 2654435761u ^ static_cast<unsigned>(y) * 40503u;
    v ^= v >> 13;
    return v * 2246822519u;
}

int gError = 0;
WORD gWord = 0;

struct Op {
    const char* name;
    HDIB (*run)(HDIB);
};

const Op kOps[] = {
    {"rotate 90", [](HDIB d) { return RotateDIB90(d); }},
    {"rotate 180", [](HDIB d) { return RotateDIB180(d); }},
    {"flip", [](HDIB d) { return FlipDIBHorizontal(d); }},
    {"scale linear", [](HDIB d) { return ScaleDIB(d, 0, 397, 61); }},
    {"scale cubic", [](HDIB d) { return ScaleDIB(d, 1, 130, 19); }},
    {"grey weighted", [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 1); }},
    {"grey mean", [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 0); }},
    {"threshold", [](HDIB d) { return Halftone(d, 0, -20, &gWord); }},
    {"screen", [](HDIB d) { return Halftone(d, 2, 300, &gWord); }},
    {"Floyd-Steinberg", [](HDIB d) { return DitherFS4(d, 1); }},
    {"box 5", [](HDIB d) { return ColorConvolution(d, 1, 1, 3, 5, nullptr, nullptr, &gError); }},
    {"sharpen 5", [](HDIB d) { return ColorConvolution(d, 1, 0, 6, 5, nullptr, nullptr, &gError); }},
    {"blur 3", [](HDIB d) { return ColorConvolution(d, 1, 0, 4, 3, nullptr, nullptr, &gError); }},
    {"run-length", [](HDIB d) { return CompressDIB(d); }},
};

// The operation's result block, or nothing when it fails.
TEST(Simd, VectorPathsGiveThePlainBytes) {
    const prism::SimdSupport detected = prism::Simd();
    for (int bits : {1, 8, 24})
        for (int width : {263, 300}) {
            const Bytes image = Image(width, 37, bits, Noise);
            for (const Op& op : kOps) {
                prism::SetSimdForTesting(detected);
                const Bytes vector = Call(op.run, image);
                prism::SetSimdForTesting(prism::SimdSupport());
                const Bytes plain = Call(op.run, image);
                EXPECT_TRUE(vector == plain) << op.name << ", " << bits << " bits, width " << width;
            }
        }
    prism::SetSimdForTesting(detected);
}

}  // namespace
