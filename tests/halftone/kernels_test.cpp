// The row kernels, the screen and the framework pieces, checked by hand
// on a few cells.
#include "halftone/dither.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

// Cell rows with room before and after, as the work blocks leave it.
struct Rows16 {
    explicit Rows16(int n, int count = 3) : cells(count * (n + 8), 0), pitch(n + 8) {}
    std::int16_t* row(int k) { return cells.data() + k * pitch + 4; }
    std::vector<std::int16_t> cells;
    int pitch;
};

TEST(DiffuseRowFS1, SpreadsWithStoresAndTruncatesTowardZero) {
    Rows16 r(8, 2);
    std::int16_t* cur = r.row(0);
    std::int16_t* next = r.row(1);
    cur[0] = 200;
    cur[1] = 100;
    unsigned char out = 0xFF;
    prism::DiffuseRowFS1(cur, next, &out, 3);
    // Pixel 0: 200 is white, error -55: right -24, below -10, -17, -3.
    // Pixel 1: 100 - 24 = 76, black: right +33, below 14, 23, 4 stored
    // over what pixel 0 left.  Pixel 2: 33, black: 6, 10, 2.
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(cur[1], 76);
    EXPECT_EQ(cur[2], 33);
    EXPECT_EQ(cur[3], 14);
    EXPECT_EQ(next[-1], -10);
    EXPECT_EQ(next[0], 14);
    EXPECT_EQ(next[1], 6);
    EXPECT_EQ(next[2], 10);
    EXPECT_EQ(next[3], 2);
}

TEST(DiffuseRowFS1, ThresholdIs129AndZeroErrorsWriteNothing) {
    Rows16 r(8, 2);
    std::int16_t* cur = r.row(0);
    std::int16_t* next = r.row(1);
    const std::int16_t in[4] = {128, 0, 129, 255};  // 128 black, 129 white
    std::copy(in, in + 4, cur);
    cur[1] = -56;  // 128's share of 56 brings it back to 0: nothing spreads
    std::fill(next - 2, next + 8, 99);
    unsigned char out = 0;
    prism::DiffuseRowFS1(cur, next, &out, 4);
    EXPECT_EQ(out, 0x30);  // pixels 2 and 3 white: 0011 0000
    // Pixel 1 had no error, so pixel 0's 5/16 at next[0] survives; every
    // other cell is a store of the pixel to its right (3/16) or of the last
    // pixel; next[5] is never written.
    const std::int16_t expected[7] = {24, 40, -23, -10, -17, -3, 99};
    for (int i = 0; i < 7; ++i) EXPECT_EQ(next[i - 1], expected[i]) << i - 1;
    EXPECT_EQ(cur[3], 200);  // 255 - 55
}

TEST(DiffuseRowFS8, Quantises332AndSpreadsOneFurtherLeft) {
    Rows16 r(4, 6);
    std::int16_t* cur[3] = {r.row(0), r.row(2), r.row(4)};
    std::int16_t* next[3] = {r.row(1), r.row(3), r.row(5)};
    cur[0][0] = 100;  // level 3, error 4
    cur[1][0] = 200;  // level 6, error 8
    cur[2][0] = 150;  // level 2 of 3, error 22
    unsigned char out = 0;
    prism::DiffuseRowFS8(cur, next, &out, 1);
    EXPECT_EQ(out, 3 << 5 | 6 << 2 | 2);
    EXPECT_EQ(cur[0][1], 1);
    EXPECT_EQ(next[0][-2], 0);
    EXPECT_EQ(next[0][-1], 1);
    EXPECT_EQ(next[0][0], 0);
    EXPECT_EQ(cur[2][1], 9);    // 7 * 22 / 16
    EXPECT_EQ(next[2][-2], 4);  // 3 * 22 / 16
    EXPECT_EQ(next[2][-1], 6);
    EXPECT_EQ(next[2][0], 1);
    // Levels are limited: 300 red is level 7 with error 76, -40 is level 0.
    Rows16 s(4, 6);
    std::int16_t* c2[3] = {s.row(0), s.row(2), s.row(4)};
    std::int16_t* n2[3] = {s.row(1), s.row(3), s.row(5)};
    c2[0][0] = 300;
    c2[1][0] = -40;
    c2[2][0] = 255;
    prism::DiffuseRowFS8(c2, n2, &out, 1);
    EXPECT_EQ(out, 7 << 5 | 0 << 2 | 3);
    EXPECT_EQ(c2[0][1], 33);   // 7 * 76 / 16
    EXPECT_EQ(c2[1][1], -17);  // 7 * -40 / 16, toward zero
}

TEST(DiffuseRowJJN1, ThirdRowReadsOneThreeFiveOneThree) {
    Rows16 r(8);
    r.row(0)[2] = 96;  // black, error 96: 14, 10, 6, 2
    unsigned char out = 0xFF;
    prism::DiffuseRowJJN1(r.row(0) + 2, r.row(1) + 2, r.row(2) + 2, &out, 1);
    EXPECT_EQ(out, 0);
    const std::int16_t row0[] = {0, 0, 96, 14, 10};
    const std::int16_t row1[] = {6, 10, 14, 10, 6};
    const std::int16_t row2[] = {2, 6, 10, 2, 6};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(r.row(0)[i], row0[i]) << i;
        EXPECT_EQ(r.row(1)[i], row1[i]) << i;
        EXPECT_EQ(r.row(2)[i], row2[i]) << i;
    }
    // Row 1 accumulates, row 2 is stored over.
    std::fill(r.row(1), r.row(1) + 5, 1);
    std::fill(r.row(2), r.row(2) + 5, 50);
    r.row(0)[2] = 255 - 96;  // white, error -96
    prism::DiffuseRowJJN1(r.row(0) + 2, r.row(1) + 2, r.row(2) + 2, &out, 1);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(r.row(1)[2], 1 - 14);
    EXPECT_EQ(r.row(2)[0], -2);
    EXPECT_EQ(r.row(2)[4], -6);
}

TEST(DiffuseRowJJN8, BlueLevelFourSetsTheLowestGreenBit) {
    Rows16 r(8, 9);
    std::int16_t* rows[3][3];
    for (int c = 0; c < 3; ++c)
        for (int k = 0; k < 3; ++k) rows[c][k] = r.row(3 * c + k) + 2;
    rows[2][0][0] = 300;  // blue level 4, error 44 against 256
    unsigned char out = 0;
    prism::DiffuseRowJJN8(rows, &out, 1);
    EXPECT_EQ(out, 4);
    EXPECT_EQ(rows[2][0][1], 6);  // 7 * 44 / 48
    EXPECT_EQ(rows[2][2][-2], 0); // 44 / 48
    EXPECT_EQ(rows[2][2][0], 4);  // 5 * 44 / 48
}

TEST(RedistributeRow, MidGreyFillsTheTwoLargestCells) {
    Rows16 r(4, 2);
    std::int16_t* cur = r.row(0);
    std::int16_t* next = r.row(1);
    cur[0] = cur[1] = next[0] = next[1] = 128;
    unsigned char out = 0;
    prism::RedistributeRow(cur, next, &out, 1, false);
    // s = 512: two full cells and 2 left.  Ties: index 0 is the maximum,
    // index 3 the minimum, and of 1 and 2 the higher index comes first.
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(cur[0], 255);
    EXPECT_EQ(next[0], 255);
    EXPECT_EQ(cur[1], 2);
    EXPECT_EQ(next[1], 0);
}

TEST(RedistributeRow, OrdersByValueAndCarriesTheRemainder) {
    for (bool halve : {false, true}) {
        Rows16 r(4, 2);
        std::int16_t* cur = r.row(0);
        std::int16_t* next = r.row(1);
        // Block 0: 10, 20, 90, 30; s = 150 goes whole into the largest cell
        // (next[0]); cur[0] ends at 0, which is carried.
        cur[0] = 10;
        cur[1] = 20;
        next[0] = 90;
        next[1] = 30;
        unsigned char out = 0xFF;
        prism::RedistributeRow(cur, next, &out, 2, halve);
        EXPECT_EQ(out, 0x00);
        EXPECT_EQ(cur[0], 0);
        EXPECT_EQ(next[0], 150);
        // Block 1 sees cur[1] = 0, next[1] = 0 and the zero cells at index 2.
        EXPECT_EQ(cur[1], 0);
        EXPECT_EQ(next[1], 0);
    }
    // Whole against half a carry: 100 stays in cell 0, then moves on.
    for (bool halve : {false, true}) {
        Rows16 r(4, 2);
        r.row(0)[0] = 100;
        unsigned char out = 0;
        prism::RedistributeRow(r.row(0), r.row(1), &out, 2, halve);
        EXPECT_EQ(r.row(0)[0], 100);
        EXPECT_EQ(r.row(0)[1], halve ? 50 : 100) << halve;
    }
}

TEST(RedistributeRow, FourFullCellsLoseTheRest) {
    Rows16 r(4, 2);
    std::int16_t* cur = r.row(0);
    std::int16_t* next = r.row(1);
    cur[0] = cur[1] = next[0] = next[1] = 255;
    cur[1] = 250;  // s = 1015: n = 3, r = 250
    unsigned char out = 0;
    prism::RedistributeRow(cur, next, &out, 1, false);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(cur[0], 255);
    EXPECT_EQ(cur[1], 250);
    EXPECT_EQ(next[0], 255);
    EXPECT_EQ(next[1], 255);
    cur[0] = cur[1] = next[0] = next[1] = 300;  // n above 4: all full
    prism::RedistributeRow(cur, next, &out, 1, false);
    EXPECT_EQ(cur[1], 255);
    EXPECT_EQ(next[1], 255);
}

TEST(HalftoneScreen, FirstRowsAndEveryValueOnce) {
    unsigned char s[256];
    prism::BuildHalftoneScreen(s);
    const unsigned char rows[4][8] = {{0, 128, 32, 160, 8, 136, 40, 168},
                                      {192, 64, 224, 96, 200, 72, 232, 104},
                                      {48, 176, 16, 144, 56, 184, 24, 152},
                                      {255, 127, 223, 95, 247, 119, 215, 87}};
    const int rowIndex[4] = {0, 1, 2, 15};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 8; ++c) EXPECT_EQ(s[16 * rowIndex[r] + c], rows[r][c]) << rowIndex[r] << "," << c;
    std::vector<unsigned char> sorted(s, s + 256);
    std::sort(sorted.begin(), sorted.end());
    for (int i = 0; i < 256; ++i) EXPECT_EQ(sorted[i], i);
}

TEST(HalftoneDiffuseRow, ThirdRowIsSymmetric) {
    std::vector<std::int32_t> cells(3 * 16, 0);
    std::int32_t* row0 = cells.data() + 4;
    std::int32_t* row1 = row0 + 16;
    std::int32_t* row2 = row1 + 16;
    row0[0] = 96 + 255;  // white, error 96
    unsigned char out = 0;
    prism::HalftoneDiffuseRow(row0, row1, row2, &out, 1);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(row0[1], 14);
    EXPECT_EQ(row0[2], 10);
    const std::int32_t r1[] = {6, 10, 14, 10, 6};
    const std::int32_t r2[] = {2, 6, 10, 6, 2};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(row1[i - 2], r1[i]);
        EXPECT_EQ(row2[i - 2], r2[i]);
    }
    row0[0] = 128;  // black: the threshold is 129
    prism::HalftoneDiffuseRow(row0, row1, row2, &out, 1);
    EXPECT_EQ(out, 0);
}

TEST(DitherInterleavePlanes, EightPixelsPerPlaneByte) {
    // Two rows of one plane byte each, plane stride 4.
    const unsigned char red[8] = {0xF0, 0, 0, 0, 0x01, 0, 0, 0};
    const unsigned char green[8] = {0xCC, 0, 0, 0, 0x80, 0, 0, 0};
    const unsigned char blue[8] = {0xAA, 0, 0, 0, 0xFF, 0, 0, 0};
    unsigned char out[8] = {};
    prism::DitherInterleavePlanes(1, 2, 4, red, green, blue, out);
    // Row 0 pixels: r 11110000, g 11001100, b 10101010.
    const unsigned char row0[4] = {0xEC, 0xA8, 0x64, 0x20};
    const unsigned char row1[4] = {0x62, 0x22, 0x22, 0x2A};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(out[i], row0[i]) << i;
        EXPECT_EQ(out[4 + i], row1[i]) << i;
    }
}

TEST(DitherRows, PaletteSplitGreyAndAdd) {
    unsigned char table[1024] = {};
    for (int i = 0; i < 256; ++i) table[4 * i + 2] = static_cast<unsigned char>(255 - i);  // red
    const unsigned char four[2] = {0x1F, 0xA0};
    unsigned char out[4];
    prism::DitherPaletteRow(four, table + 2, out, 4, 4);
    EXPECT_EQ(out[0], 254);
    EXPECT_EQ(out[1], 240);
    EXPECT_EQ(out[2], 245);
    EXPECT_EQ(out[3], 255);
    const unsigned char eight[2] = {3, 200};
    prism::DitherPaletteRow(eight, table + 2, out, 2, 8);
    EXPECT_EQ(out[0], 252);
    EXPECT_EQ(out[1], 55);

    const unsigned char rgb[6] = {1, 2, 3, 4, 5, 6};  // blue, green, red
    unsigned char r[2], g[2], b[2];
    prism::DitherSplitRGB(rgb, r, g, b, 2);
    EXPECT_EQ(r[1], 6);
    EXPECT_EQ(g[1], 5);
    EXPECT_EQ(b[1], 4);

    unsigned char red[3] = {255, 255, 0}, green[3] = {0, 255, 255}, blue[3] = {255, 255, 0};
    prism::DitherGreyRow(red, green, blue, 1, 3);
    EXPECT_EQ(red[0], 255);  // left alone from index 1 on
    EXPECT_EQ(red[1], 255);
    EXPECT_EQ(red[2], 150);

    std::int16_t cells[3] = {32760, -5, 7};
    const unsigned char add[3] = {10, 5, 200};
    prism::DitherAddRow(add, cells, 2);
    EXPECT_EQ(cells[0], -32766);  // wraps in 16 bits
    EXPECT_EQ(cells[1], 0);
    EXPECT_EQ(cells[2], 7);
}

}  // namespace
