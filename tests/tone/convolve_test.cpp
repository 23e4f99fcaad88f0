// Square filters over 8-bit images.
#include "core/errors.h"
#include "support/test_support.h"

#include <algorithm>

using namespace testing_support;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 53 + y * 29 + (x * x * y) % 17) & 0xFF); }

Bytes Filtered(const Bytes& src, int kind, int size, const int* matrix = nullptr, const char* file = nullptr,
               int* error = nullptr) {
    return CopyAndInPlace(
        src, [&](HDIB dib, BOOL copy, int* e) { return Convolve(dib, copy, kind, size, file, matrix, e); }, error);
}

TEST(Convolve, BoxMeanOfASmallImageByHand) {
    // Rows from the bottom: 0 1 2 / 3 4 5 / 6 7 8.
    Bytes o = Filtered(Image(3, 3, 8, [](int x, int y) { return x + 3u * (2 - y); }), 3, 3);
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
    const int negative[10] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, 0};
    const Bytes box = Filtered(src, 3, 3);
    ASSERT_FALSE(box.empty());
    EXPECT_EQ(Filtered(src, 1, 3, negative), box);
    // Divisor -1 is the negated matrix with divisor 1.
    const int m[10] = {0, -1, 0, -1, 6, -1, 0, -2, 0, -1}, flipped[10] = {0, 1, 0, 1, -6, 1, 0, 2, 0, 1};
    EXPECT_FALSE(Filtered(src, 1, 3, m).empty());
    EXPECT_EQ(Filtered(src, 1, 3, m), Filtered(src, 1, 3, flipped));
}

Bytes Le32(const std::vector<int>& values) {
    Bytes b;
    for (int v : values)
        for (int k = 0; k < 4; ++k) b.push_back(static_cast<unsigned char>(static_cast<unsigned>(v) >> (8 * k)));
    return b;
}

TEST(Convolve, RefusesKindsSizesMatricesKernelFilesAndImages) {
    Bytes src = Image(8, 8, 8, Noise);
    std::vector<int> m49(50, 0);
    m49[24] = 1;
    const std::vector<int> none;
    const int P = prism::kErrParameter;
    // An empty matrix: none given.
    const struct { int kind, size; std::vector<int> matrix; const char* file; int expected; } cases[] = {
        {0, 3, none, nullptr, P},  {7, 3, none, nullptr, P},  {5, 7, none, nullptr, P},
        {4, 7, none, nullptr, P},  {3, 4, none, nullptr, P},  {1, 6, m49, nullptr, P},
        {3, 2, none, nullptr, P},  {3, 9, none, nullptr, P},  {1, 3, none, nullptr, P},
        {2, 3, none, nullptr, P},  {2, 7, none, "k.bin", P},  {2, 3, none, "missing.bin", P},
        {3, 7, none, nullptr, 0},  {1, 7, m49, nullptr, 0},
        {1, 3, {0, 0, 0, 0, 128, 0, 0, 0, 0, 1}, nullptr, P},
        {1, 3, {0, 0, 0, 0, -128, 0, 0, 0, 0, 1}, nullptr, P},
        {1, 3, {16, 16, 16, 16, 16, 16, 16, 16, 0, 0}, nullptr, P},
        {1, 3, {-16, -16, -16, -16, -16, -16, -16, -16, 0, 0}, nullptr, P},
        {1, 3, {16, 16, 16, 16, 16, 16, 16, 15, 0, 0}, nullptr, 0},
        {1, 3, {127, -127, 0, 0, 0, 0, 0, 0, 0, 0}, nullptr, 0}};
    for (const auto& c : cases) {
        int error = -1;
        Bytes o = Filtered(src, c.kind, c.size, c.matrix.empty() ? nullptr : c.matrix.data(), c.file, &error);
        EXPECT_EQ(error, c.expected) << c.kind << "/" << c.size << " matrix " << (c.matrix.empty() ? 0 : c.matrix[4]);
        EXPECT_EQ(o.empty(), c.expected != 0);
    }

    // Kernel files: a 3 by 3 box equals the built-in one (bytes past it are
    // not read); short, empty or out-of-range files are refused.
    ScratchFile file("kernel.bin");
    Bytes box = Le32({1, 1, 1, 1, 1, 1, 1, 1, 1, 0});
    box.push_back(0x55);
    file.Write(box);
    int error = -1;
    const Bytes builtIn = Filtered(src, 3, 3);
    ASSERT_FALSE(builtIn.empty());
    EXPECT_EQ(Filtered(src, 2, 3, nullptr, file.path(), &error), builtIn);
    EXPECT_EQ(error, 0);
    const struct { const char* name; Bytes bytes; int size; } files[] = {
        {"empty", Bytes(), 3},
        {"short by one byte", Bytes(box.begin(), box.begin() + 39), 3},
        {"size 3 file read as size 5", Le32({1, 1, 1, 1, 1, 1, 1, 1, 1, 0}), 5},
        {"entry out of range", Le32({0, 0, 0, 0, 200, 0, 0, 0, 0, 1}), 3},
        {"sum out of range", Le32({100, 100, 0, 0, 0, 0, 0, 0, 0, 1}), 3}};
    for (const auto& f : files) {
        file.Write(f.bytes);
        EXPECT_TRUE(Filtered(src, 2, f.size, nullptr, file.path(), &error).empty()) << f.name;
        EXPECT_EQ(error, prism::kErrParameter) << f.name;
    }

    const struct { const char* name; Bytes bytes; int expected; } bad[] = {
        {"24-bit", Image(8, 8, 24), prism::kErrBitsPerPixel},
        {"4-bit", Image(8, 8, 4), prism::kErrBitsPerPixel},
        {"too small", Bytes(src.begin(), src.end() - 9), prism::kErrDibSize},
        {"header only", Bytes(src.begin(), src.begin() + 40), prism::kErrDibSize}};
    for (const auto& b : bad) {
        EXPECT_TRUE(Filtered(b.bytes, 3, 3, nullptr, nullptr, &error).empty()) << b.name;
        EXPECT_EQ(error, b.expected) << b.name;
    }
    EXPECT_EQ(Convolve(nullptr, 0, 3, 3, nullptr, nullptr, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
}

}  // namespace
