// The row kernels, the screen and the framework pieces, checked by hand
// on a few cells.
#include "halftone/dither.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using V = std::vector<int>;

// Cell rows with room before and after, as the work blocks leave it.
struct Rows16 {
    explicit Rows16(int n, int count) : cells(count * (n + 8), 0), pitch(n + 8) {}
    std::int16_t* row(int k) { return cells.data() + k * pitch + 4; }
    std::vector<std::int16_t> cells;
    int pitch;
};
template <typename T>
V Cells(const T* p, int from, int to) { return V(p + from, p + to); }

TEST(DiffuseRowFS1, ThresholdStoresAndTruncationTowardZero) {
    Rows16 r(8, 2);
    std::int16_t *cur = r.row(0), *next = r.row(1);
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
    Rows16 s(8, 2);
    cur = s.row(0);
    next = s.row(1);
    const std::int16_t in[4] = {128, -56, 129, 255};  // 128's 7/16 brings pixel 1 to 0
    std::copy(in, in + 4, cur);
    std::fill(next - 2, next + 8, 99);
    prism::DiffuseRowFS1(cur, next, &out, 4);
    EXPECT_EQ(out, 0x30);
    EXPECT_EQ(Cells(next, -1, 6), (V{24, 40, -23, -10, -17, -3, 99}));  // next[0]: pixel 0's 5/16 survives
    EXPECT_EQ(cur[3], 200);
}

TEST(DiffuseRowFS8, Quantises332LimitsLevelsAndSpreadsOneFurtherLeft) {
    struct Case {
        int in[3];
        unsigned char out;
        int right[3];  // cur[1] of red, green, blue afterwards
    } cases[] = {{{100, 200, 150}, 3 << 5 | 6 << 2 | 2, {1, 3, 9}},  // errors 4, 8, 22
                 {{300, -40, 255}, 7 << 5 | 0 << 2 | 3, {33, -17, 27}}};
    for (const Case& c : cases) {
        Rows16 r(4, 6);
        std::int16_t* cur[3] = {r.row(0), r.row(2), r.row(4)};
        std::int16_t* next[3] = {r.row(1), r.row(3), r.row(5)};
        for (int k = 0; k < 3; ++k) cur[k][0] = static_cast<std::int16_t>(c.in[k]);
        unsigned char out = 0;
        prism::DiffuseRowFS8(cur, next, &out, 1);
        EXPECT_EQ(out, c.out);
        for (int k = 0; k < 3; ++k) EXPECT_EQ(cur[k][1], c.right[k]) << c.in[0] << " " << k;
        if (c.in[0] == 100) { EXPECT_EQ(Cells(next[2], -2, 1), (V{4, 6, 1})); }  // 3, 5, 1 sixteenths of 22
    }
}

TEST(DiffuseRowJJN1, ThirdRowReadsOneThreeFiveOneThreeAndIsStored) {
    Rows16 r(8, 3);
    std::int16_t *row0 = r.row(0) + 2, *row1 = r.row(1) + 2, *row2 = r.row(2) + 2;
    row0[0] = 96;  // black, error 96: 14, 10, 6, 2
    unsigned char out = 0xFF;
    prism::DiffuseRowJJN1(row0, row1, row2, &out, 1);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(Cells(row0, 0, 3), (V{96, 14, 10}));
    EXPECT_EQ(Cells(row1, -2, 3), (V{6, 10, 14, 10, 6}));
    EXPECT_EQ(Cells(row2, -2, 3), (V{2, 6, 10, 2, 6}));
    // Row 1 accumulates, row 2 is stored over.
    std::fill(row1 - 2, row1 + 3, 1);
    std::fill(row2 - 2, row2 + 3, 50);
    row0[0] = 255 - 96;  // white, error -96
    prism::DiffuseRowJJN1(row0, row1, row2, &out, 1);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(Cells(row1, -2, 3), (V{-5, -9, -13, -9, -5}));
    EXPECT_EQ(Cells(row2, -2, 3), (V{-2, -6, -10, -2, -6}));
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
    EXPECT_EQ(rows[2][0][1], 6);                         // 7 * 44 / 48
    EXPECT_EQ(Cells(rows[2][2], -2, 3), (V{0, 2, 4, 0, 2}));  // 1, 3, 5, 1, 3 of 44 / 48
}

TEST(RedistributeRow, HandCheckedBlocks) {
    struct Case {
        const char* what;
        int width;
        bool halve;
        std::int16_t in[6];  // cur[0..2], next[0..2]
        unsigned char out;
        std::int16_t after[6];
    } cases[] = {
        // s = 512: two full cells and 2 left.  Index 0 wins a tie for the
        // maximum, index 3 for the minimum; of 1 and 2 the higher goes first.
        {"mid grey", 1, false, {128, 128, 0, 128, 128, 0}, 0x80, {255, 2, 0, 255, 0, 0}},
        // s = 150 goes whole into the largest cell; cur[0] ends at 0.
        {"largest cell", 2, false, {10, 20, 0, 90, 30, 0}, 0x00, {0, 0, 0, 150, 0, 0}},
        // The remainder left in cell 0 is carried into the next block, whole or half.
        {"carry", 2, false, {100, 0, 0, 0, 0, 0}, 0x00, {100, 100, 0, 0, 0, 0}},
        {"carry halved", 2, true, {100, 0, 0, 0, 0, 0}, 0x00, {100, 50, 0, 0, 0, 0}},
        // s = 1015: three full cells and 250 in the smallest.
        {"three full", 1, false, {255, 250, 0, 255, 255, 0}, 0x80, {255, 250, 0, 255, 255, 0}},
        {"n above 4", 1, false, {300, 300, 0, 300, 300, 0}, 0x80, {255, 255, 0, 255, 255, 0}},
        // A negative sum is a deficit that the next block pays: 150 - 100.
        {"deficit", 2, false, {-100, 0, 150, 0, 0, 0}, 0x00, {0, 0, 50, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        Rows16 r(4, 2);
        std::copy(c.in, c.in + 3, r.row(0));
        std::copy(c.in + 3, c.in + 6, r.row(1));
        unsigned char out = 0x55;
        prism::RedistributeRow(r.row(0), r.row(1), &out, c.width, c.halve);
        EXPECT_EQ(out, c.out) << c.what;
        V after = Cells(r.row(0), 0, 3), next = Cells(r.row(1), 0, 3);
        after.insert(after.end(), next.begin(), next.end());
        EXPECT_EQ(after, V(c.after, c.after + 6)) << c.what;
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

TEST(HalftoneDiffuseRow, ThirdRowIsSymmetricAndThresholdIs129) {
    std::vector<std::int32_t> cells(3 * 16, 0);
    std::int32_t *row0 = cells.data() + 4, *row1 = row0 + 16, *row2 = row1 + 16;
    row0[0] = 96 + 255;  // white, error 96
    unsigned char out = 0;
    prism::HalftoneDiffuseRow(row0, row1, row2, &out, 1);
    EXPECT_EQ(out, 0x80);
    EXPECT_EQ(Cells(row0, 1, 3), (V{14, 10}));
    EXPECT_EQ(Cells(row1, -2, 3), (V{6, 10, 14, 10, 6}));
    EXPECT_EQ(Cells(row2, -2, 3), (V{2, 6, 10, 6, 2}));
    row0[0] = 128;
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
    EXPECT_EQ(Cells(out, 0, 8), (V{0xEC, 0xA8, 0x64, 0x20, 0x62, 0x22, 0x22, 0x2A}));
}

TEST(DitherRows, PaletteSplitGreyAndAdd) {
    unsigned char table[1024] = {};
    for (int i = 0; i < 256; ++i) table[4 * i + 2] = static_cast<unsigned char>(255 - i);  // red
    const unsigned char four[2] = {0x1F, 0xA0}, eight[2] = {3, 200};
    unsigned char out[4];
    prism::DitherPaletteRow(four, table + 2, out, 4, 4);
    EXPECT_EQ(Cells(out, 0, 4), (V{254, 240, 245, 255}));
    prism::DitherPaletteRow(eight, table + 2, out, 2, 8);
    EXPECT_EQ(Cells(out, 0, 2), (V{252, 55}));

    const unsigned char rgb[6] = {1, 2, 3, 4, 5, 6};  // blue, green, red
    unsigned char r[2], g[2], b[2];
    prism::DitherSplitRGB(rgb, r, g, b, 2);
    EXPECT_EQ((V{r[1], g[1], b[1]}), (V{6, 5, 4}));

    unsigned char red[3] = {255, 255, 0}, green[3] = {0, 255, 255}, blue[3] = {255, 255, 0};
    prism::DitherGreyRow(red, green, blue, 1, 3);
    EXPECT_EQ(Cells(red, 0, 3), (V{255, 255, 150}));  // index 0 left alone

    std::int16_t cells[3] = {32760, -5, 7};
    const unsigned char add[3] = {10, 5, 200};
    prism::DitherAddRow(add, cells, 2);
    EXPECT_EQ(Cells(cells, 0, 3), (V{-32766, 0, 7}));  // wraps in 16 bits; width 2
}

}  // namespace
