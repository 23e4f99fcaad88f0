// Square filters over 8-bit images.
#include "core/errors.h"
#include "tone_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace tone_test;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 53 + y * 29 + (x * x * y) % 17) & 0xFF); }

// The plain rule, rows in stored order: out(x, y) = divide(clamp(sum of
// M(i, j) * P(x + h - i, y + h - j))), P repeating its edge pixels; powers
// of two divide rounding down.
unsigned Plain(const Bytes& img, int W, int H, const std::vector<int>& m, int n, int divisor, bool clamp, int x,
               int y) {
    long sum = 0;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            sum += m[i * n + j] * static_cast<int>(PixelAt(img, std::min(std::max(x + n / 2 - i, 0), W - 1),
                                                           std::min(std::max(y + n / 2 - j, 0), H - 1)));
    if (clamp) sum = std::min(std::max(sum, 0L), 255L);
    const bool shift = divisor == 2 || divisor == 4 || divisor == 8 || divisor == 16 || divisor == 32 || divisor == 64;
    return static_cast<unsigned char>(shift && sum < 0 ? -((-sum + divisor - 1) / divisor) : sum / divisor);
}

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

std::vector<int> Asymmetric(int n) {  // both signs: clamp on, divisor 4 by shift
    std::vector<int> m(n * n + 1, 0);
    m[1] = 3;
    m[n] = 2;
    m[(n - 1) * n + (n - 2)] = -1;
    m[n * n] = 4;
    return m;
}

TEST(Convolve, FollowsThePlainRuleWithMatricesReadTransposed) {
    const struct { int kind, n; std::vector<int> m; int divisor; bool clamp; std::vector<int> widths; } cases[] = {
        {3, 3, {1, 1, 1, 1, 1, 1, 1, 1, 1}, 9, false, {1, 2, 5, 13}},
        {4, 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 16, false, {1, 2, 5, 13}},
        {5, 3, {0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, true, {1, 2, 5, 13}},
        {6, 3, {-1, -1, -1, -1, 9, -1, -1, -1, -1}, 1, true, {1, 2, 5, 13}},
        {1, 3, Asymmetric(3), 4, true, {19}},
        {1, 5, Asymmetric(5), 4, true, {19}},
        {1, 7, Asymmetric(7), 4, true, {19}}};
    for (const auto& c : cases)
        for (int W : c.widths) {
            const int H = c.kind == 1 ? 11 : 6;
            Bytes src = Image(W, H, 8, Noise);
            Bytes o = Filtered(src, c.kind, c.n, c.kind == 1 ? c.m.data() : nullptr);
            ASSERT_FALSE(o.empty());
            for (int y = 0; y < H; ++y)
                for (int x = 0; x < W; ++x) {
                    if (c.n == 5 && x == W - 2) continue;  // size 5 leaves out one weight here
                    ASSERT_EQ(PixelAt(o, x, y), Plain(src, W, H, c.m, c.n, c.divisor, c.clamp, x, y))
                        << "kind " << c.kind << "/" << c.n << " W " << W << " at " << x << "," << y;
                }
        }
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

TEST(Convolve, EdgeColumnsOfTheFixedRoutinesOnAUniformArea) {
    // Interior exact; the first and last columns carry the fixed edge
    // weights (low byte stored where they overflow).
    const struct { int kind, size, value, col0, col2, colW3, colW1; } cases[] = {
        {3, 5, 50, 60, 50, 50, 60}, {3, 5, 250, (250 * 30 / 25) & 0xFF, 250, 250, (250 * 30 / 25) & 0xFF},
        {4, 5, 88, 88 * 47 / 44, 88 * 47 / 44, 88 * 47 / 44, 88 * 45 / 44}, {5, 5, 40, 0, 40, 40, 0},
        {6, 5, 40, 0, 40, 40, 0}, {3, 7, 77, 77, 77, 77, 77}};
    const int W = 16;
    for (const auto& c : cases) {
        Bytes o = Filtered(Uniform(W, 9, 8, c.value), c.kind, c.size);
        ASSERT_FALSE(o.empty());
        const int cols[] = {0, 2, 7, W - 3, W - 1}, want[] = {c.col0, c.col2, c.value, c.colW3, c.colW1};
        for (int y = 0; y < 9; ++y)
            for (int k = 0; k < 5; ++k) EXPECT_EQ(PixelAt(o, cols[k], y), unsigned(want[k])) << c.kind << "/" << c.size;
    }
    // Box 7: pixel 0 of each row lands in the last column with weight 4.
    Bytes o = Filtered(Image(20, 10, 8, [](int x, int) { return x == 0 ? 49u : 0u; }), 3, 7);
    const unsigned cols[] = {0, 3, 4, 19}, want[] = {28, 7, 0, 28};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(PixelAt(o, cols[k], 5), want[k]) << cols[k];
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
