// SkewDIB: corners, skew 0 as a copy, and both ways of reporting; the
// shifts at every depth (and the spill past the block's end) are pinned in
// tests/pinned.
#include "core/errors.h"
#include "support/test_support.h"

#include <climits>

using namespace testing_support;

namespace {

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
