// SkewDIB: hand-checked row and column shifts at every depth, corners, the
// byte past the block, and both ways of reporting.
#include "core/errors.h"
#include "support/test_support.h"

#include <climits>

using namespace testing_support;

namespace {

// No pixel is 0, so a moved pixel is told from the zero background.
unsigned NonZero(int x, int y) { return static_cast<unsigned>(x * 5 + y * 3 + 1) % 15 + 1; }
Bytes Shape(int width, int height, int bitCount) { return Image(width, height, bitCount, NonZero); }

Moved Skew(const Bytes& source, bool horizontal, int skew) {
    return Move(SkewDIB, source, horizontal, skew);
}

// Horizontal: stored row i moves right by shifts[i] pixels.  Vertical:
// column i moves up (to higher stored rows) by shifts[i].  Depth 0: every
// depth alike.
TEST(SkewDIB, ShiftsByHandCheckedAmounts) {
    struct Case { int depth; bool horizontal; int width, height, skew; std::vector<int> shifts; } cases[] = {
        {0, true, 13, 3, 0, {0, 0, 0}},           // skew 0 copies
        {0, false, 13, 3, 0, std::vector<int>(13, 0)},
        {1, true, 13, 8, 8, {0, 1, 2, 3, 4, 5, 6, 7}},  // a bit shift inside bytes
        {1, true, 10, 4, -3, {3, 2, 1, 0}}, {1, true, 25, 8, 7, {0, 0, 1, 2, 3, 4, 5, 6}},
        {4, true, 5, 4, 3, {0, 0, 1, 2}},         // 0, 3, 6, 9 bits: half bytes only
        {4, true, 3, 2, -4, {4, 2}}, {4, true, 7, 3, 5, {0, 1, 3}},
        {8, true, 5, 4, 3, {0, 1, 2, 3}},         // 0, 6, 12, 18 bits rounded up to bytes
        {8, true, 6, 4, -5, {5, 4, 3, 2}},        // row 0 moves by all 5
        {24, true, 5, 4, 3, {0, 1, 1, 2}},        // 0, 3, 5, 7 bytes cut to whole pixels
        {24, true, 4, 3, -6, {6, 4, 2}},
        // Rows without padding and a sub-byte shift on the top row: its last
        // byte's spill would land one byte past the block and is dropped
        // (the sanitizer build checks nothing is written there).
        {1, true, 31, 1, -1, {1}}, {4, true, 7, 1, -1, {1}},
        {0, false, 7, 3, 5, {0, 0, 1, 2, 2, 3, 4}}, {0, false, 7, 3, -5, {5, 4, 3, 2, 2, 1, 0}},
        {0, false, 1, 4, 3, {0}},  // a single column does not move for skew above 0
        {0, false, 1, 4, -3, {3}},
        {0, false, 70, 2, 70, {}},  // wider than one group of columns: shift c
    };
    for (int c = 0; c < 70; ++c) cases[18].shifts.push_back(c);
    for (const Case& c : cases)
        for (int depth : {1, 4, 8, 24}) {
            if (c.depth && c.depth != depth) continue;
            const Bytes image = Shape(c.width, c.height, depth);
            Moved s = Skew(image, c.horizontal, c.skew);
            ASSERT_EQ(s.error, -7) << "the word is not written on success";
            const int grow = c.skew < 0 ? -c.skew : c.skew;
            const int newW = c.width + (c.horizontal ? grow : 0), newH = c.height + (c.horizontal ? 0 : grow);
            // The header as it was but the size; biSizeImage filled in.
            Bytes head = With(With(With(Cut(image, BitsOffset(image)), 4, newW), 8, newH), 20, Stride(newW, depth) * newH);
            ASSERT_EQ(s.result.size(), head.size() + Stride(newW, depth) * newH);
            EXPECT_EQ(Cut(s.result, head.size()), head);
            for (int y = 0; y < newH; ++y)
                for (int x = 0; x < newW; ++x) {
                    const int fx = c.horizontal ? x - c.shifts[y] : x, fy = c.horizontal ? y : y - c.shifts[x];
                    const unsigned want = fx >= 0 && fx < c.width && fy >= 0 && fy < c.height ? PixelAt(image, fx, fy) : 0;
                    EXPECT_EQ(PixelAt(s.result, x, y), want)
                        << "depth " << depth << " skew " << c.skew << " at " << x << "," << y;
                }
        }
}

TEST(SkewDIB, CornersDescribeTheMovedShape) {
    const struct { bool horizontal; int skew; std::vector<int> corners; } cases[] = {
        {true, 4, {4, 0, 9, 0, 5, 3, 0, 3}}, {true, -4, {0, 0, 5, 0, 9, 3, 4, 3}}, {true, 0, {0, 0, 5, 0, 5, 3, 0, 3}},
        // Vertical corners move in pairs: they describe a rectangle.
        {false, 4, {0, 4, 5, 4, 5, 3, 0, 3}}, {false, -4, {0, 0, 5, 0, 5, 7, 0, 7}},
    };
    for (const auto& c : cases) {
        Moved s = Skew(Shape(5, 3, 8), c.horizontal, c.skew);
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
        {"last row cut", Cut(img24, img24.size() - 1), 2, 19}, {"skew too large", img8, INT_MAX, 1},
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
