// The row kernels, the screen and the framework pieces, checked by hand
// on a few cells.
#include "halftone/dither.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using V = std::vector<int>;
template <typename T>
V Cells(const T* p, int from, int to) { return V(p + from, p + to); }

// Cell rows with room before and after, as the work blocks leave them:
// row k starts at c[k] + 4.
using Rows16 = std::int16_t[9][16];

TEST(DiffuseRowFS1, ThresholdStoresAndTruncationTowardZero) {
    Rows16 c = {};
    std::int16_t *cur = c[0] + 4, *next = c[1] + 4;
    cur[0] = 200;
    cur[1] = 100;
    unsigned char out = 0xFF;
    prism::DiffuseRowFS1(cur, next, &out, 3);
    // Pixel 0: 200 is white, error -55: right -24, below -10, -17, -3.
    // Pixel 1: 76, black: right +33, below 14, 23, 4 stored over what
    // pixel 0 left.  Pixel 2: 33, black: 6, 10, 2.
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(Cells(cur, 1, 4), (V{76, 33, 14}));
    EXPECT_EQ(Cells(next, -1, 4), (V{-10, 14, 6, 10, 2}));
    // 128 is black, 129 white; a pixel without error writes nothing.
    cur = c[2] + 4;
    next = c[3] + 4;
    const std::int16_t in[4] = {128, -56, 129, 255};  // 128's 7/16 brings pixel 1 to 0
    std::copy(in, in + 4, cur);
    std::fill(next - 2, next + 8, 99);
    prism::DiffuseRowFS1(cur, next, &out, 4);
    EXPECT_EQ(out, 0x30);
    EXPECT_EQ(Cells(next, -1, 6), (V{24, 40, -23, -10, -17, -3, 99}));  // next[0]: pixel 0's 5/16 survives
    EXPECT_EQ(cur[3], 200);
}

TEST(DiffuseRowFS8, Quantises332LimitsLevelsAndSpreadsOneFurtherLeft) {
    // Red and green in 32 steps of 0..7, blue in 64 steps of 0..3.
    const int in[2][3] = {{100, 200, 150}, {300, -40, 255}};
    const unsigned char bytes[2] = {3 << 5 | 6 << 2 | 2, 7 << 5 | 0 << 2 | 3};
    const V right[2] = {{1, 3, 9}, {33, -17, 27}};  // 7/16 of errors 4, 8, 22 and 76, -40, 63
    for (int k = 0; k < 2; ++k) {
        Rows16 c = {};
        std::int16_t* cur[3] = {c[0] + 4, c[2] + 4, c[4] + 4};
        std::int16_t* next[3] = {c[1] + 4, c[3] + 4, c[5] + 4};
        for (int p = 0; p < 3; ++p) cur[p][0] = static_cast<std::int16_t>(in[k][p]);
        unsigned char out = 0;
        prism::DiffuseRowFS8(cur, next, &out, 1);
        EXPECT_EQ(out, bytes[k]);
        EXPECT_EQ((V{cur[0][1], cur[1][1], cur[2][1]}), right[k]);
        if (k == 0) { EXPECT_EQ(Cells(next[2], -2, 1), (V{4, 6, 1})); }  // 3, 5, 1 sixteenths of 22
    }
}

TEST(TwelveNeighbourKernels, SpreadAndTheStoredThirdRow) {
    // Error 96 both ways: the dither's from a black 96, the halftone's from a
    // white 351 in 32-bit cells.  Rows 0 and 1 agree; the stored third row
    // reads 1, 3, 5, 1, 3 in the dither and 1, 3, 5, 3, 1 in the halftone.
    Rows16 c = {};
    std::int16_t *row0 = c[0] + 4, *row1 = c[1] + 4, *row2 = c[2] + 4;
    std::int32_t h[3][16] = {};
    row0[0] = 96;
    h[0][4] = 96 + 255;
    unsigned char out = 0xFF, halfOut = 0;
    prism::DiffuseRowJJN1(row0, row1, row2, &out, 1);
    prism::HalftoneDiffuseRow(h[0] + 4, h[1] + 4, h[2] + 4, &halfOut, 1);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(halfOut, 0x80);
    EXPECT_EQ(Cells(row0, 0, 3), (V{96, 14, 10}));
    EXPECT_EQ(Cells(h[0], 5, 7), (V{14, 10}));
    EXPECT_EQ(Cells(row1, -2, 3), (V{6, 10, 14, 10, 6}));
    EXPECT_EQ(Cells(h[1], 2, 7), (V{6, 10, 14, 10, 6}));
    EXPECT_EQ(Cells(row2, -2, 3), (V{2, 6, 10, 2, 6}));
    EXPECT_EQ(Cells(h[2], 2, 7), (V{2, 6, 10, 6, 2}));
    // Row 1 accumulates, row 2 is stored over; 128 is black in both.
    std::fill(row1 - 2, row1 + 3, 1);
    std::fill(row2 - 2, row2 + 3, 50);
    row0[0] = 255 - 96;  // white, error -96
    h[0][4] = 128;
    prism::DiffuseRowJJN1(row0, row1, row2, &out, 1);
    prism::HalftoneDiffuseRow(h[0] + 4, h[1] + 4, h[2] + 4, &halfOut, 1);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(halfOut, 0);
    EXPECT_EQ(Cells(row1, -2, 3), (V{-5, -9, -13, -9, -5}));
    EXPECT_EQ(Cells(row2, -2, 3), (V{-2, -6, -10, -2, -6}));
}

TEST(DiffuseRowJJN8, BlueLevelFourSetsTheLowestGreenBit) {
    Rows16 c = {};
    std::int16_t* rows[3][3];
    for (int p = 0; p < 3; ++p)
        for (int k = 0; k < 3; ++k) rows[p][k] = c[3 * p + k] + 4;
    rows[2][0][0] = 300;  // blue level 4, error 44 against 256
    unsigned char out = 0;
    prism::DiffuseRowJJN8(rows, &out, 1);
    EXPECT_EQ(out, 4);
    EXPECT_EQ(rows[2][0][1], 6);                              // 7 * 44 / 48
    EXPECT_EQ(Cells(rows[2][2], -2, 3), (V{0, 2, 4, 0, 2}));  // 1, 3, 5, 1, 3 of 44 / 48
}

TEST(RedistributeRow, HandCheckedBlocks) {
    // Cells in and after: cur[0..2], then next[0..2].
    struct Case { const char* what; int width; bool halve; V in; unsigned char out; V after; };
    const Case cases[] = {
        // s = 512: two full cells and 2 left.  Index 0 wins a tie for the
        // maximum, index 3 for the minimum; of 1 and 2 the higher goes first.
        {"mid grey", 1, false, {128, 128, 0, 128, 128, 0}, 0x80, {255, 2, 0, 255, 0, 0}},
        // s = 150 goes whole into the largest cell; cur[0] ends at 0.
        {"largest cell", 2, false, {10, 20, 0, 90, 30, 0}, 0x00, {0, 0, 0, 150, 0, 0}},
        // The remainder left in cell 0 is carried into the next block, whole or half.
        {"carry", 2, false, {100, 0, 0, 0, 0, 0}, 0x00, {100, 100, 0, 0, 0, 0}},
        {"carry halved", 2, true, {100, 0, 0, 0, 0, 0}, 0x00, {100, 50, 0, 0, 0, 0}},
        // s = 1015: three full cells and 250 in the smallest; above 4 all full.
        {"three full", 1, false, {255, 250, 0, 255, 255, 0}, 0x80, {255, 250, 0, 255, 255, 0}},
        {"n above 4", 1, false, {300, 300, 0, 300, 300, 0}, 0x80, {255, 255, 0, 255, 255, 0}},
        // A negative sum is a deficit that the next block pays: 150 - 100.
        {"deficit", 2, false, {-100, 0, 150, 0, 0, 0}, 0x00, {0, 0, 50, 0, 0, 0}},
    };
    for (const Case& k : cases) {
        std::int16_t c[2][8] = {};
        std::copy(k.in.begin(), k.in.begin() + 3, c[0] + 2);
        std::copy(k.in.begin() + 3, k.in.end(), c[1] + 2);
        unsigned char out = 0x55;
        prism::RedistributeRow(c[0] + 2, c[1] + 2, &out, k.width, k.halve);
        EXPECT_EQ(out, k.out) << k.what;
        V after = Cells(c[0], 2, 5), next = Cells(c[1], 2, 5);
        after.insert(after.end(), next.begin(), next.end());
        EXPECT_EQ(after, k.after) << k.what;
    }
}

TEST(HalftoneScreen, FirstRowsAndEveryValueOnce) {
    unsigned char s[256];
    prism::BuildHalftoneScreen(s);
    EXPECT_EQ(Cells(s, 0, 8), (V{0, 128, 32, 160, 8, 136, 40, 168}));
    EXPECT_EQ(Cells(s, 16, 24), (V{192, 64, 224, 96, 200, 72, 232, 104}));
    EXPECT_EQ(Cells(s, 32, 40), (V{48, 176, 16, 144, 56, 184, 24, 152}));
    EXPECT_EQ(Cells(s, 240, 248), (V{255, 127, 223, 95, 247, 119, 215, 87}));
    std::sort(s, s + 256);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(s[i], i);
}

TEST(DitherInterleavePlanes, EightPixelsPerPlaneByte) {
    // Two rows of one plane byte each, plane stride 4.
    const unsigned char red[8] = {0xF0, 0, 0, 0, 0x01, 0, 0, 0};
    const unsigned char green[8] = {0xCC, 0, 0, 0, 0x80, 0, 0, 0};
    const unsigned char blue[8] = {0xAA, 0, 0, 0, 0xFF, 0, 0, 0};
    unsigned char out[8] = {};
    prism::DitherInterleavePlanes(1, 2, 4, red, green, blue, out);
    // Row 0 pixels: r 11110000, g 11001100, b 10101010.
    EXPECT_EQ(Cells(out, 0, 8), (V{0xEC, 0xA8, 0x64, 0x20, 0x62, 0x22, 0x22, 0x2A}));
}

TEST(DitherAddRow, WrapsInSixteenBitsUpToTheWidth) {
    std::int16_t cells[3] = {32760, -5, 7};
    const unsigned char add[3] = {10, 5, 200};
    prism::DitherAddRow(add, cells, 2);
    EXPECT_EQ(Cells(cells, 0, 3), (V{-32766, 0, 7}));
}

}  // namespace
