// Square filters: Convolve over 8-bit images, ColorConvolution over 24-bit
// ones through their brightness.
#include "core/errors.h"
#include "support/test_support.h"

#include <algorithm>

using namespace testing_support;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 53 + y * 29 + (x * x * y) % 17) & 0xFF); }

// Either filter, on a copy and in place: Convolve on 8-bit images with
// 4-byte matrix and kernel-file entries, or ColorConvolution (brightness
// by `mode`) on 24-bit ones with 2-byte entries.
Bytes Filter(bool colour, const Bytes& src, int kind, int size, const std::vector<int>& m = {}, const char* file = nullptr,
             int* error = nullptr, int mode = 0) {
    std::vector<short> s;
    for (int v : m) s.push_back(static_cast<short>(v));
    return CopyAndInPlace(src, [&](HDIB dib, BOOL copy, int* e) {
        return colour ? ColorConvolution(dib, copy, mode, WORD(kind), short(size), file, m.empty() ? nullptr : s.data(), e)
                      : Convolve(dib, copy, kind, size, file, m.empty() ? nullptr : m.data(), e);
    }, error);
}

TEST(Convolve, BoxMeanOfASmallImageByHand) {
    // Rows from the bottom: 0 1 2 / 3 4 5 / 6 7 8.
    Bytes o = Filter(false, Image(3, 3, 8, [](int x, int y) { return x + 3u * (2 - y); }), 3, 3);
    ASSERT_FALSE(o.empty());
    EXPECT_EQ(PixelAt(o, 0, 0), 12u / 9);  // 0 0 1, 0 0 1, 3 3 4
    EXPECT_EQ(PixelAt(o, 1, 1), 36u / 9);
    EXPECT_EQ(PixelAt(o, 2, 2), 60u / 9);  // 7 8 8, 7 8 8, 4 5 5
    EXPECT_EQ(PixelAt(o, 2, 0), (2u * (1 + 2 + 2) + (4 + 5 + 5)) / 9);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(o[40 + 4 * i], i);  // grey ramp
}

TEST(Convolve, SignsOfTheDivisor) {
    Bytes src = Image(9, 7, 8, Noise);
    // All negative with divisor 0: the divisor comes out negative and the
    // matrix is negated, so it acts as the positive box.
    const Bytes box = Filter(false, src, 3, 3);
    ASSERT_FALSE(box.empty());
    EXPECT_EQ(Filter(false, src, 1, 3, {-1, -1, -1, -1, -1, -1, -1, -1, -1, 0}), box);
    // Divisor -1 is the negated matrix with divisor 1.
    const std::vector<int> m = {0, -1, 0, -1, 6, -1, 0, -2, 0, -1}, flipped = {0, 1, 0, 1, -6, 1, 0, 2, 0, 1};
    EXPECT_FALSE(Filter(false, src, 1, 3, m).empty());
    EXPECT_EQ(Filter(false, src, 1, 3, m), Filter(false, src, 1, 3, flipped));
}

Bytes Kernel(bool colour, const std::vector<int>& values) {
    const size_t w = colour ? 2 : 4;
    Bytes b(w * values.size());
    for (size_t i = 0; i < b.size(); ++i) b[i] = static_cast<unsigned char>(static_cast<unsigned>(values[i / w]) >> (8 * (i % w)));
    return b;
}

TEST(SquareFilters, RefuseKindsSizesMatricesKernelFilesAndImages) {
    std::vector<int> m49(50, 0);
    m49[24] = 1;
    const std::vector<int> none, box = {1, 1, 1, 1, 1, 1, 1, 1, 1, 0};
    const int P = prism::kErrParameter;
    // An empty matrix: none given; `both`: ColorConvolution too, else Convolve only.
    const struct { int kind, size; std::vector<int> matrix; const char* file; int expected; bool both; } cases[] = {
        {0, 3, none, nullptr, P, true},  {7, 3, none, nullptr, P, true},  {5, 7, none, nullptr, P, true},
        {4, 7, none, nullptr, P, false}, {3, 4, none, nullptr, P, true},  {1, 6, m49, nullptr, P, true},
        {3, 2, none, nullptr, P, false}, {3, 9, none, nullptr, P, false}, {1, 3, none, nullptr, P, true},
        {2, 3, none, nullptr, P, true},  {2, 7, none, "k.bin", P, false}, {2, 3, none, "missing.bin", P, true},
        {3, 7, none, nullptr, 0, false}, {1, 7, m49, nullptr, 0, false},
        {1, 3, {0, 0, 0, 0, 128, 0, 0, 0, 0, 1}, nullptr, P, true},
        {1, 3, {0, 0, 0, 0, -128, 0, 0, 0, 0, 1}, nullptr, P, false},
        {1, 3, {16, 16, 16, 16, 16, 16, 16, 16, 0, 0}, nullptr, P, false},
        {1, 3, {-16, -16, -16, -16, -16, -16, -16, -16, 0, 0}, nullptr, P, false},
        {1, 3, {16, 16, 16, 16, 16, 16, 16, 15, 0, 0}, nullptr, 0, false},
        {1, 3, {127, -127, 0, 0, 0, 0, 0, 0, 0, 0}, nullptr, 0, false}};
    ScratchFile file("kernel.bin");
    for (bool colour : {false, true}) {
        SCOPED_TRACE(colour ? "ColorConvolution" : "Convolve");
        const Bytes src = Image(8, 8, colour ? 24 : 8, Noise);
        int error = -1;
        for (const auto& c : cases) {
            if (colour && !c.both) continue;
            Bytes o = Filter(colour, src, c.kind, c.size, c.matrix, c.file, &error);
            EXPECT_EQ(error, c.expected) << c.kind << "/" << c.size << " matrix " << (c.matrix.empty() ? 0 : c.matrix[4]);
            EXPECT_EQ(o.empty(), c.expected != 0);
        }
        // Kernel files: a 3 by 3 box equals the built-in one (bytes past it
        // are not read); short, empty or out-of-range files are refused.
        Bytes boxFile = Kernel(colour, box);
        boxFile.push_back(0x55);
        file.Write(boxFile);
        const Bytes builtIn = Filter(colour, src, 3, 3);
        ASSERT_FALSE(builtIn.empty());
        EXPECT_EQ(Filter(colour, src, 2, 3, none, file.path(), &error), builtIn);
        EXPECT_EQ(error, 0);
        const struct { const char* name; Bytes bytes; int size; bool both; } files[] = {
            {"empty", Bytes(), 3, true},
            {"short by one byte", Bytes(boxFile.begin(), boxFile.end() - 2), 3, true},
            {"size 3 file read as size 5", Kernel(colour, box), 5, false},
            {"entry out of range", Kernel(colour, {0, 0, 0, 0, 200, 0, 0, 0, 0, 1}), 3, false},
            {"sum out of range", Kernel(colour, {100, 100, 0, 0, 0, 0, 0, 0, 0, 1}), 3, false}};
        for (const auto& f : files) {
            if (colour && !f.both) continue;
            file.Write(f.bytes);
            EXPECT_TRUE(Filter(colour, src, 2, f.size, none, file.path(), &error).empty()) << f.name;
            EXPECT_EQ(error, P) << f.name;
        }
        const struct { const char* name; Bytes bytes; int expected; } bad[] = {
            {"other depth", Image(8, 8, colour ? 8 : 24), prism::kErrBitsPerPixel},
            {"4-bit", Image(8, 8, 4), prism::kErrBitsPerPixel},
            {"too small", Bytes(src.begin(), src.end() - 5), prism::kErrDibSize},
            {"header only", Bytes(src.begin(), src.begin() + 40), prism::kErrDibSize}};
        for (const auto& b : bad) {
            EXPECT_TRUE(Filter(colour, b.bytes, 3, 3, none, nullptr, &error).empty()) << b.name;
            EXPECT_EQ(error, b.expected) << b.name;
        }
    }
    int error = -1;
    EXPECT_EQ(Convolve(nullptr, 0, 3, 3, nullptr, nullptr, &error), nullptr);
    EXPECT_EQ(error, P);
}

unsigned Colours(int x, int y) { return (x * 0x3A1F07u + y * 0x11D2C3u) & 0xFFFFFF; }

TEST(ColorConvolution, EveryByteGainsTheWeightedBrightnessBlueFirst) {
    const Bytes colours = Image(11, 7, 24, Colours);
    const std::vector<int> identity = {0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    for (int mode : {0, 1, 2}) EXPECT_EQ(Filter(true, colours, 1, 3, identity, nullptr, nullptr, mode), colours) << mode;
    // Centre 2, divisor 1: each byte gains the pixel's brightness.
    const std::vector<int> twice = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const struct { unsigned rgb; int mode; unsigned expected; } cases[] = {
        {0x0000FF, 1, 0x4E4EFF}, {0x0000FF, 0, 0x5555FF}, {0xFF0000, 1, 0xFF1D1D},
        {0x00FF00, 1, 0x93FF93}, {0x00FF00, 2, 0x55FF55}};
    for (const auto& c : cases)
        EXPECT_EQ(PixelAt(Filter(true, Uniform(5, 4, 24, c.rgb), 1, 3, twice, nullptr, nullptr, c.mode), 2, 2), c.expected)
            << std::hex << c.rgb << " mode " << c.mode;
    // Centre -1: the sum is minus the brightness 17 of bytes 5, 17, 29; by 16
    // it shifts down (-2), by 15 it divides toward zero (-1).
    EXPECT_EQ(PixelAt(Filter(true, Uniform(6, 5, 24, 0x1D1105), 1, 3, {0, 0, 0, 0, -1, 0, 0, 0, 0, 16}), 3, 2), 0x0A0000u);
    EXPECT_EQ(PixelAt(Filter(true, Uniform(6, 5, 24, 0x1D1105), 1, 3, {0, 0, 0, 0, -1, 0, 0, 0, 0, 15}), 3, 2), 0x0B0000u);
}

}  // namespace
