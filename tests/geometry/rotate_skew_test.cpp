// RotateDIB: result sizes and corners, equivalent angles and the caller's
// error word.  SkewDIB: corners, skew 0 as a copy, and both ways of
// reporting.  The outputs of both (the skew's spill past the block's end
// included) are pinned in tests/pinned.
#include "core/errors.h"
#include "support/test_support.h"

#include <climits>

using namespace testing_support;

namespace {

Moved Turn(const Bytes& source, int angle, int walkMode) { return Move(RotateDIB, source, angle, walkMode); }

const int kDepths[] = {1, 4, 8, 24};

TEST(RotateDIB, SizeCornersAndHeaderFollowTheTurn) {
    struct Case {
        int w, h, angle, newW, newH;
        std::vector<int> corners;  // checked when given
    } cases[] = {
        {6, 4, 0, 6, 4, {-3, -2, 3, -2, 3, 2, -3, 2}}, {100, 100, 45, 142, 142, {0, -70, 70, 0, 0, 70, -70, 0}},
        // The degree constant falls short of a quarter turn, so values near
        // whole numbers truncate toward zero.
        {4, 2, 90, 2, 4, {0, -2, 1, 1, 0, 2, -1, -1}},
        {5, 4, 0, 6, 4, {}}, {1, 1, 0, 2, 2, {}}, {1, 1, 45, 2, 2, {}},   {1, 1, 270, 2, 2, {}}, {6, 4, 180, 6, 4, {}},
        {3, 3, 45, 4, 4, {}}, {7, 3, 30, 8, 6, {}}, {7, 3, 390, 8, 6, {}}, {6, 4, -180, 6, 4, {}},
    };
    for (const Case& c : cases)
        for (int depth : kDepths)
            for (int mode = 0; mode < 2; ++mode) {
                const Bytes source = Image(c.w, c.h, depth);
                Moved t = Turn(source, c.angle, mode);
                // The header and table as they were but the size and biSizeImage.
                const size_t rows = Stride(c.newW, depth) * c.newH, head = BitsOffset(source);
                Bytes want(source.begin(), source.begin() + head);
                Put32(want, 4, c.newW), Put32(want, 8, c.newH), Put32(want, 20, static_cast<std::uint32_t>(rows));
                ASSERT_EQ(t.result.size(), head + rows) << c.w << "x" << c.h << " by " << c.angle << " at " << depth;
                EXPECT_EQ(Bytes(t.result.begin(), t.result.begin() + head), want) << c.angle << " at " << depth;
                EXPECT_TRUE(c.corners.empty() || std::vector<int>(t.corners, t.corners + 8) == c.corners) << c.angle;
            }
}

// Angles that reduce to the same value give the same image; any walk mode
// but 0 is the integer walk.  A negative angle gains 360 once before the
// reduction, so -40 and 320 are different turns (the degree constant makes
// 360 degrees fall short of a full turn) and are not paired: INT_MIN ends
// at -128 like -488, not at 232 like -128.
TEST(RotateDIB, EquivalentAnglesAndModesGiveTheSameImage) {
    const struct { int a, modeA, b, modeB; } pairs[] = {{0, 0, 360, 0},         {270, 1, -90, 1},        {10, 0, 10090, 0},     {45, 1, 360 * 5000 + 45, 1},
                 {-400, 0, -40 - 360 * 9999, 0}, {-400, 1, -760, 1}, {33, 1, 33, 2}, {33, 1, 33, -1},
                 {INT_MAX, 0, 127, 0},  {INT_MIN + 1, 1, -487, 1}, {INT_MIN, 0, -488, 0}, {INT_MIN, 1, -488, 1}};
    for (int depth : kDepths) {
        const Bytes image = Image(11, 7, depth);
        for (const auto& p : pairs) {
            Moved a = Turn(image, p.a, p.modeA), b = Turn(image, p.b, p.modeB);
            ASSERT_FALSE(a.result.empty());
            EXPECT_EQ(a.result, b.result) << p.a << " vs " << p.b << " at " << depth;
            EXPECT_EQ(0, std::memcmp(a.corners, b.corners, sizeof a.corners));
        }
    }
}

// The error word: 0 on success, else the failure's code; LastImgError is
// never touched, and a failure leaves no lock behind.
TEST(RotateDIB, ErrorWord) {
    const Bytes img8 = Image(6, 4, 8), img24 = Image(6, 4, 24);
    const struct { const char* name; Bytes image; int code; } cases[] = {
        {"success", img8, 0}, {"compressed", With(img8, 16, 1), 500}, {"width 0", With(img8, 4, 0), 501},
        {"height 0", With(img8, 8, 0), 501}, {"width 65536", With(img8, 4, 65536), 501},
        // 65,535 by 1 at 24 bits, turned by 45, needs several gigabytes.
        {"turned bounds too large", Image(65535, 1, 24), 503}, {"core header", PackedDib({1, 1, 8, -1, 0, 0, true}), 506},
        {"header only", Cut(img8, 40 + 1024), 506}, {"short header", Cut(img8, 20), 506},
        {"last row cut", Short(img24, 1), 506}, {"negative height", With(img8, 8, 0xFFFFFFFFu), 506},
        {"negative width", With(img8, 4, 0xFFFFFFFFu), 506}, {"huge colour count", With(img8, 32, 0xFFFFFFFFu), 506}};
    prism::LastImgError = 7;
    for (const auto& c : cases) {
        Moved t = Turn(c.image, 45, 0);
        EXPECT_EQ(t.error, c.code) << c.name;
        EXPECT_EQ(t.result.empty(), c.code != 0) << c.name;
    }
    int error = -1;
    EXPECT_EQ(RotateDIB(nullptr, 10, 0, &error, nullptr), nullptr);
    EXPECT_EQ(error, 506);
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
    EXPECT_EQ(RotateDIB(empty, 10, 1, &error, nullptr), nullptr);
    EXPECT_EQ(error, 505);
    GlobalFree(empty);
    EXPECT_EQ(RotateDIB(nullptr, 10, 0, nullptr, nullptr), nullptr);  // no word at all
    HGLOBAL src = BlockFrom(Image(6, 4, 8));
    HDIB out = RotateDIB(src, 10, 0, &error, nullptr);  // no corners wanted
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(BlockBytes(out), Turn(Image(6, 4, 8), 10, 0).result);
    GlobalFree(out), GlobalFree(src);
    EXPECT_EQ(prism::LastImgError, 7);
}

// No pixel is 0, so a moved pixel is told from the zero background.
unsigned NonZero(int x, int y) { return static_cast<unsigned>(x * 5 + y * 3 + 1) % 15 + 1; }
Bytes Shape(int width, int height, int bitCount) { return Image(width, height, bitCount, NonZero); }
Moved Skew(const Bytes& source, bool horizontal, int skew) { return Move(SkewDIB, source, horizontal, skew); }

TEST(SkewDIB, CornersDescribeTheMovedShape) {
    const struct { bool horizontal; int skew; std::vector<int> corners; } cases[] = {
        {true, 4, {4, 0, 9, 0, 5, 3, 0, 3}}, {true, -4, {0, 0, 5, 0, 9, 3, 4, 3}}, {true, 0, {0, 0, 5, 0, 5, 3, 0, 3}},
        // Vertical corners move in pairs: they describe a rectangle.
        {false, 4, {0, 4, 5, 4, 5, 3, 0, 3}}, {false, -4, {0, 0, 5, 0, 5, 7, 0, 7}},
    };
    const Bytes image = Shape(5, 3, 8);
    for (const auto& c : cases) {
        Moved s = Skew(image, c.horizontal, c.skew);
        if (c.skew == 0) { EXPECT_EQ(s.result, With(image, 20, 3 * 8)); }
        EXPECT_EQ(std::vector<int>(s.corners, s.corners + 8), c.corners) << c.horizontal << " " << c.skew;
    }
}

// Success clears LastImgError and leaves the word alone; a failure puts
// its code in both.
TEST(SkewDIB, Reporting) {
    const Bytes img8 = Shape(6, 4, 8), img24 = Shape(6, 4, 24);
    const struct { const char* name; Bytes image; int skew, code; } cases[] = {
        {"success", Shape(6, 4, 4), 3, 0},          {"core header", PackedDib({1, 1, 8, -1, 0, 0, true}), 2, 8},
        {"short header", Cut(img8, 30), 2, 8},      {"colour table cut", Cut(img8, 40 + 100), 2, 8},
        {"compressed", With(img8, 16, 2), 2, 18},   {"width 0", With(img8, 4, 0), 2, 19},
        {"height 0", With(Shape(6, 4, 4), 8, 0), 2, 19}, {"negative height", With(img8, 8, 0xFFFFFFFFu), 2, 19},
        {"last row cut", Short(img24, 1), 2, 19}, {"skew too large", img8, INT_MAX, 1},
        {"skew too small", Shape(6, 4, 1), INT_MIN, 1}, {"sheared size too large", img24, 1 << 30, 1}};
    for (const auto& c : cases)
        for (bool horizontal : {true, false}) {
            prism::LastImgError = 99;
            Moved s = Skew(c.image, horizontal, c.skew);
            EXPECT_EQ(s.result.empty(), c.code != 0) << c.name;
            EXPECT_EQ(s.error, c.code ? c.code : -7) << c.name;
            EXPECT_EQ(prism::LastImgError, c.code) << c.name;
        }
    int error = -1;
    EXPECT_EQ(SkewDIB(nullptr, 1, 3, &error, nullptr), nullptr);
    EXPECT_EQ(error, 8);
    EXPECT_EQ(prism::LastImgError, 8);
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
    EXPECT_EQ(SkewDIB(empty, 0, 3, nullptr, nullptr), nullptr);
    EXPECT_EQ(prism::LastImgError, 17);
    GlobalFree(empty);
    // Null corners are outside the contract; they are skipped.
    HGLOBAL src = BlockFrom(Shape(6, 4, 8));
    HDIB out = SkewDIB(src, 0, -3, &error, nullptr);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(BlockBytes(out), Skew(Shape(6, 4, 8), false, -3).result);
    GlobalFree(out), GlobalFree(src);
}

}  // namespace
