// Square filters over 8-bit images.
#include "core/errors.h"
#include "tone_test_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace testing_support;
using namespace tone_test;

namespace {

unsigned Noise(int x, int y) { return static_cast<unsigned>((x * 53 + y * 29 + (x * x * y) % 17) & 0xFF); }

Bytes Image8(int width, int height, unsigned (*f)(int, int) = Noise) {
    DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = 8;
    return PackedDib(spec, f);
}

// The plain rule, rows in stored order: out(x, y) = divide(clamp(sum of
// M(i, j) * P(x + h - i, y + h - j))), with P repeating its edge pixels.
int Plain(const Bytes& img, int W, int H, const std::vector<int>& m, int n, int divisor, bool clamp, int x, int y) {
    const int h = n / 2;
    long sum = 0;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            int px = std::min(std::max(x + h - i, 0), W - 1);
            int py = std::min(std::max(y + h - j, 0), H - 1);
            sum += m[i * n + j] * At8(img, px, py);
        }
    if (clamp) sum = std::min(std::max(sum, 0L), 255L);
    long q = (divisor == 2 || divisor == 4 || divisor == 8 || divisor == 16 || divisor == 32 || divisor == 64)
                 ? (sum >= 0 ? sum / divisor : -((-sum + divisor - 1) / divisor))
                 : sum / divisor;
    return static_cast<unsigned char>(q);
}

Bytes Filtered(const Bytes& src, int kind, int size, const int* matrix = nullptr, const char* file = nullptr,
          int* errorOut = nullptr) {
    HDIB dib = BlockFrom(src);
    int error = -1;
    HDIB out = Convolve(dib, 1, kind, size, file, matrix, &error);
    if (errorOut) *errorOut = error;
    EXPECT_EQ(BlockBytes(dib), src);  // a copy leaves the source alone
    Bytes o = out ? BlockBytes(out) : Bytes();
    if (out) GlobalFree(out);
    GlobalFree(dib);
    return o;
}

const std::vector<int> kBox3 = {1, 1, 1, 1, 1, 1, 1, 1, 1};
const std::vector<int> kBlur3 = {1, 2, 1, 2, 4, 2, 1, 2, 1};
const std::vector<int> kCross3 = {0, -1, 0, -1, 5, -1, 0, -1, 0};
const std::vector<int> kSharp3 = {-1, -1, -1, -1, 9, -1, -1, -1, -1};

TEST(Convolve, BoxMeanOfASmallImageByHand) {
    Bytes src = Image8(3, 3, [](int x, int y) { return static_cast<unsigned>(x + 3 * (2 - y)); });
    Bytes o = Filtered(src, 3, 3);
    ASSERT_FALSE(o.empty());
    // Rows from the bottom: 0 1 2 / 3 4 5 / 6 7 8.
    EXPECT_EQ(At8(o, 0, 0), 12 / 9);  // 0 0 1, 0 0 1, 3 3 4
    EXPECT_EQ(At8(o, 1, 1), 36 / 9);
    EXPECT_EQ(At8(o, 2, 2), 60 / 9);  // 7 8 8, 7 8 8, 4 5 5
    EXPECT_EQ(At8(o, 2, 0), (2 * (1 + 2 + 2) + (4 + 5 + 5)) / 9);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(o[40 + 4 * i], i);  // grey ramp
}

TEST(Convolve, SizeThreeKernelsFollowThePlainRuleEverywhere) {
    struct Case {
        int kind;
        const std::vector<int>* m;
        int divisor;
        bool clamp;
    } cases[] = {{3, &kBox3, 9, false}, {4, &kBlur3, 16, false}, {5, &kCross3, 1, true}, {6, &kSharp3, 1, true}};
    for (int W : {1, 2, 5, 13})
        for (const Case& c : cases) {
            Bytes src = Image8(W, 6);
            Bytes o = Filtered(src, c.kind, 3);
            ASSERT_FALSE(o.empty());
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < W; ++x)
                    ASSERT_EQ(At8(o, x, y), Plain(src, W, 6, *c.m, 3, c.divisor, c.clamp, x, y))
                        << "kind " << c.kind << " W " << W << " at " << x << "," << y;
        }
}

TEST(Convolve, MatricesAreReadTransposedAtEverySize) {
    for (int n : {3, 5, 7}) {
        const int W = 19, H = 11;
        Bytes src = Image8(W, H);
        std::vector<int> m(n * n + 1, 0);
        // An asymmetric matrix with both signs: clamp on, divisor 4 by shift.
        m[0 * n + 1] = 3;
        m[1 * n + 0] = 2;
        m[(n - 1) * n + (n - 2)] = -1;
        m[n * n] = 4;
        Bytes o = Filtered(src, 1, n, m.data());
        ASSERT_FALSE(o.empty());
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                // Size 5 leaves out one weight of the last pixel in column W-2.
                if (n == 5 && x == W - 2) continue;
                ASSERT_EQ(At8(o, x, y), Plain(src, W, H, m, n, 4, true, x, y)) << n << " at " << x << "," << y;
            }
    }
    // One cell picks one neighbour: M(0, 1) reads P(x + 1, y) in stored order.
    std::vector<int> pick(10, 0);
    pick[1] = 1;
    Bytes src = Image8(6, 4);
    Bytes o = Filtered(src, 1, 3, pick.data());
    EXPECT_EQ(At8(o, 2, 1), At8(src, 3, 1));
    EXPECT_EQ(At8(o, 5, 1), At8(src, 5, 1));
}

TEST(Convolve, IdentityAndSignsOfTheDivisor) {
    Bytes src = Image8(9, 7);
    std::vector<int> identity = {0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    Bytes o = Filtered(src, 1, 3, identity.data());
    ASSERT_FALSE(o.empty());
    const size_t pixels = PixelOffset(src);
    EXPECT_TRUE(std::equal(src.begin() + pixels, src.end(), o.begin() + pixels));
    // All negative with divisor 0: the divisor comes out negative and the
    // matrix is negated, so it acts as the positive box.
    std::vector<int> negative(10, -1);
    negative[9] = 0;
    EXPECT_EQ(Filtered(src, 1, 3, negative.data()), Filtered(src, 3, 3));
    // Divisor -1 is the negated matrix with divisor 1.
    std::vector<int> m = {0, -1, 0, -1, 6, -1, 0, -2, 0, -1};
    std::vector<int> flipped = {0, 1, 0, 1, -6, 1, 0, 2, 0, 1};
    EXPECT_EQ(Filtered(src, 1, 3, m.data()), Filtered(src, 1, 3, flipped.data()));
}

TEST(Convolve, EdgeColumnsOfTheSizeFiveRoutinesOnAUniformArea) {
    // Sums of weights per column: interior exact; the first and last columns
    // carry the fixed edge weights (low byte stored where they overflow).
    struct Case {
        int kind, size, value;
        int col0, col2, colW3, colW1;
    } cases[] = {{3, 5, 50, 60, 50, 50, 60},          {3, 5, 250, (250 * 30 / 25) & 0xFF, 250, 250, (250 * 30 / 25) & 0xFF},
                 {4, 5, 88, 88 * 47 / 44, 88 * 47 / 44, 88 * 47 / 44, 88 * 45 / 44},
                 {5, 5, 40, 0, 40, 40, 0},           {6, 5, 40, 0, 40, 40, 0},
                 {3, 7, 77, 77, 77, 77, 77},         {3, 3, 77, 77, 77, 77, 77}};
    const int W = 16;
    for (const Case& c : cases) {
        static int value;
        value = c.value;
        Bytes src = Image8(W, 9, [](int, int) { return static_cast<unsigned>(value); });
        Bytes o = Filtered(src, c.kind, c.size);
        ASSERT_FALSE(o.empty());
        for (int y = 0; y < 9; ++y) {
            EXPECT_EQ(At8(o, 0, y), c.col0) << c.kind << "/" << c.size;
            EXPECT_EQ(At8(o, 2, y), c.col2) << c.kind << "/" << c.size;
            EXPECT_EQ(At8(o, 7, y), c.value) << c.kind << "/" << c.size;
            EXPECT_EQ(At8(o, W - 3, y), c.colW3) << c.kind << "/" << c.size;
            EXPECT_EQ(At8(o, W - 1, y), c.colW1) << c.kind << "/" << c.size;
        }
    }
}

TEST(Convolve, BoxSevenTakesTheFirstPixelIntoTheLastColumn) {
    // Only pixel 0 of each row is bright: with the fixed edge code it lands
    // in the last column with weight 4 per role.
    Bytes src = Image8(20, 10, [](int x, int) { return x == 0 ? 49u : 0u; });
    Bytes o = Filtered(src, 3, 7);
    ASSERT_FALSE(o.empty());
    EXPECT_EQ(At8(o, 19, 5), 49 * 4 * 7 / 49);
    EXPECT_EQ(At8(o, 0, 5), 49 * 4 * 7 / 49);
    EXPECT_EQ(At8(o, 3, 5), 49 * 1 * 7 / 49);
    EXPECT_EQ(At8(o, 4, 5), 0);
}

TEST(Convolve, InPlaceMatchesTheCopy) {
    for (int kind = 3; kind <= 6; ++kind)
        for (int size : {3, 5}) {
            Bytes src = Image8(23, 17);
            Bytes copy = Filtered(src, kind, size);
            HDIB dib = BlockFrom(src);
            int error = -1;
            ASSERT_EQ(Convolve(dib, 0, kind, size, nullptr, nullptr, &error), dib);
            EXPECT_EQ(BlockBytes(dib), copy) << kind << "/" << size;
            GlobalFree(dib);
        }
}

TEST(Convolve, MatrixLimits) {
    struct Case {
        const char* name;
        std::vector<int> m;
        int expected;
    } cases[] = {
        {"cell of 128", {0, 0, 0, 0, 128, 0, 0, 0, 0, 1}, prism::kErrParameter},
        {"cell of -128", {0, 0, 0, 0, -128, 0, 0, 0, 0, 1}, prism::kErrParameter},
        {"positive sum 128", {16, 16, 16, 16, 16, 16, 16, 16, 0, 0}, prism::kErrParameter},
        {"negative sum 128", {-16, -16, -16, -16, -16, -16, -16, -16, 0, 0}, prism::kErrParameter},
        {"positive sum 127", {16, 16, 16, 16, 16, 16, 16, 15, 0, 0}, 0},
        {"both sums 127", {127, -127, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
    };
    Bytes src = Image8(8, 8);
    for (const Case& c : cases) {
        int error = -1;
        Bytes o = Filtered(src, 1, 3, c.m.data(), nullptr, &error);
        EXPECT_EQ(error, c.expected) << c.name;
        EXPECT_EQ(o.empty(), c.expected != 0) << c.name;
    }
}

TEST(Convolve, KindsSizesAndImagesRefused) {
    Bytes src = Image8(8, 8);
    std::vector<int> m(50, 0);
    m[24] = 1;
    struct Case {
        int kind, size;
        const char* file;
        const int* matrix;
        int expected;
    } cases[] = {{0, 3, nullptr, nullptr, 8},   {7, 3, nullptr, nullptr, 8},   {5, 7, nullptr, nullptr, 8},
                 {4, 7, nullptr, nullptr, 8},   {3, 4, nullptr, nullptr, 8},   {1, 6, nullptr, m.data(), 8},
                 {3, 2, nullptr, nullptr, 8},   {3, 9, nullptr, nullptr, 8},   {1, 3, nullptr, nullptr, 8},
                 {2, 3, nullptr, nullptr, 8},   {2, 7, "k.bin", nullptr, 8},   {2, 3, "missing.bin", nullptr, 8},
                 {3, 7, nullptr, nullptr, 0},   {1, 7, nullptr, m.data(), 0}};
    for (const Case& c : cases) {
        int error = -1;
        Bytes o = Filtered(src, c.kind, c.size, c.matrix, c.file, &error);
        EXPECT_EQ(error, c.expected) << c.kind << "/" << c.size;
    }
    struct Bad {
        const char* name;
        Bytes bytes;
        int expected;
    } bad[] = {{"24-bit", Blank(8, 8, 24), prism::kErrBitsPerPixel},
               {"4-bit", Blank(8, 8, 4), prism::kErrBitsPerPixel},
               {"too small", Bytes(src.begin(), src.end() - 9), prism::kErrDibSize},
               {"header only", Bytes(src.begin(), src.begin() + 40), prism::kErrDibSize}};
    for (const Bad& b : bad) {
        HDIB dib = BlockFrom(b.bytes);
        int error = -1;
        EXPECT_EQ(Convolve(dib, 0, 3, 3, nullptr, nullptr, &error), nullptr) << b.name;
        EXPECT_EQ(error, b.expected) << b.name;
        EXPECT_EQ(BlockBytes(dib), b.bytes) << b.name;
        GlobalFree(dib);
    }
    int error = -1;
    EXPECT_EQ(Convolve(nullptr, 0, 3, 3, nullptr, nullptr, &error), nullptr);
    EXPECT_EQ(error, prism::kErrParameter);
}

Bytes Le32(const std::vector<int>& values) {
    Bytes b;
    for (int v : values)
        for (int k = 0; k < 4; ++k) b.push_back(static_cast<unsigned char>(static_cast<unsigned>(v) >> (8 * k)));
    return b;
}

TEST(Convolve, KernelFiles) {
    Bytes src = Image8(10, 6);
    ScratchFile file("kernel.bin");
    // A 3 by 3 box from a file equals the built-in one.
    Bytes box = Le32({1, 1, 1, 1, 1, 1, 1, 1, 1, 0});
    box.push_back(0x55);  // extra bytes are not read
    file.Write(box);
    int error = -1;
    EXPECT_EQ(Filtered(src, 2, 3, nullptr, file.path(), &error), Filtered(src, 3, 3));
    EXPECT_EQ(error, 0);
    struct Case {
        const char* name;
        Bytes bytes;
        int size;
    } cases[] = {{"empty", Bytes(), 3},
                 {"short by one byte", Bytes(box.begin(), box.begin() + 39), 3},
                 {"size 3 file read as size 5", Le32({1, 1, 1, 1, 1, 1, 1, 1, 1, 0}), 5},
                 {"entry out of range", Le32({0, 0, 0, 0, 200, 0, 0, 0, 0, 1}), 3},
                 {"sum out of range", Le32({100, 100, 0, 0, 0, 0, 0, 0, 0, 1}), 3}};
    for (const Case& c : cases) {
        file.Write(c.bytes);
        error = -1;
        EXPECT_TRUE(Filtered(src, 2, c.size, nullptr, file.path(), &error).empty()) << c.name;
        EXPECT_EQ(error, prism::kErrParameter) << c.name;
    }
}

}  // namespace
