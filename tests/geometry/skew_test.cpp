// SkewDIB: hand-checked row and column shifts at every depth, corners,
// copies at skew 0, the byte past the block, and both ways of reporting.
#include "core/errors.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

using namespace testing_support;

namespace {

std::int32_t Field32(const Bytes& b, size_t at) {
    std::uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = v << 8 | b[at + i];
    return static_cast<std::int32_t>(v);
}
int Width(const Bytes& dib) { return Field32(dib, 4); }
int Height(const Bytes& dib) { return Field32(dib, 8); }

Bytes Image(int width, int height, int bitCount) {
    DibSpec layout;
    layout.width = width;
    layout.height = height;
    layout.bitCount = bitCount;
    // No pixel is 0, so a moved pixel is told from the zero background.
    return PackedDib(layout, [](int x, int y) { return static_cast<unsigned>(x * 5 + y * 3 + 1) % 15 + 1; });
}

struct Skewed {
    Bytes result;
    int error = -7;
    int corners[8] = {};
};

Skewed Skew(const Bytes& source, bool horizontal, int skew) {
    Skewed s;
    HGLOBAL src = BlockFrom(source);
    HDIB out = SkewDIB(src, horizontal, skew, &s.error, s.corners);
    if (out) {
        GlobalUnlock(src);  // the lock a successful shear leaves standing
        s.result = BlockBytes(out);
        GlobalFree(out);
    }
    GlobalFree(src);
    return s;
}

const int kDepths[] = {1, 4, 8, 24};

TEST(SkewDIB, ZeroSkewCopiesTheImage) {
    for (int depth : kDepths) {
        const Bytes image = Image(13, 5, depth);
        for (bool horizontal : {true, false}) {
            Skewed s = Skew(image, horizontal, 0);
            ASSERT_EQ(s.error, -7) << "the word is not written on success";
            // The same bytes but biSizeImage, which the result fills in.
            ASSERT_EQ(s.result.size(), image.size());
            EXPECT_EQ(static_cast<size_t>(Field32(s.result, 20)), Stride(13, depth) * 5);
            Bytes same = s.result;
            std::memset(&same[20], 0, 4);
            EXPECT_EQ(same, image) << depth << (horizontal ? " horizontal" : " vertical");
        }
    }
}

// Row i (as stored) moves right by shifts[i] pixels.
struct RowCase {
    int depth, width, height, skew;
    std::vector<int> shifts;
};

TEST(SkewDIB, HorizontalShiftsRowsByHandCheckedAmounts) {
    const RowCase cases[] = {
        {1, 13, 8, 8, {0, 1, 2, 3, 4, 5, 6, 7}},  // a bit shift inside bytes
        {1, 10, 4, -3, {3, 2, 1, 0}},
        {1, 25, 8, 7, {0, 0, 1, 2, 3, 4, 5, 6}},
        {4, 5, 4, 3, {0, 0, 1, 2}},               // 0, 3, 6, 9 bits: half bytes only
        {4, 3, 2, -4, {4, 2}},
        {4, 7, 3, 5, {0, 1, 3}},
        {8, 5, 4, 3, {0, 1, 2, 3}},               // 0, 6, 12, 18 bits rounded up to bytes
        {8, 6, 4, -5, {5, 4, 3, 2}},              // row 0 moves by all 5
        {24, 5, 4, 3, {0, 1, 1, 2}},              // 0, 3, 5, 7 bytes cut to whole pixels
        {24, 4, 3, -6, {6, 4, 2}},
    };
    for (const RowCase& c : cases) {
        const Bytes image = Image(c.width, c.height, c.depth);
        Skewed s = Skew(image, true, c.skew);
        ASSERT_EQ(s.error, -7);
        const int newW = c.width + (c.skew < 0 ? -c.skew : c.skew);
        ASSERT_EQ(Width(s.result), newW);
        ASSERT_EQ(Height(s.result), c.height);
        ASSERT_EQ(s.result.size(), image.size() - Stride(c.width, c.depth) * c.height + Stride(newW, c.depth) * c.height);
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < newW; ++x) {
                const int from = x - c.shifts[y];
                unsigned want = from >= 0 && from < c.width ? PixelAt(image, from, y) : 0u;
                EXPECT_EQ(PixelAt(s.result, x, y), want)
                    << "depth " << c.depth << " skew " << c.skew << " at " << x << "," << y;
            }
    }
}

// Column c moves up (to higher stored rows) by shifts[c] rows, at every
// depth alike.
TEST(SkewDIB, VerticalShiftsColumnsByHandCheckedAmounts) {
    struct Case {
        int width, height, skew;
        std::vector<int> shifts;
    } cases[] = {
        {7, 3, 5, {0, 0, 1, 2, 2, 3, 4}},
        {7, 3, -5, {5, 4, 3, 2, 2, 1, 0}},
        {1, 4, 3, {0}},   // a single column does not move for skew above 0
        {1, 4, -3, {3}},
        {70, 2, 70, {}},  // wider than one group of columns: shift c
    };
    for (int c = 0; c < 70; ++c) cases[4].shifts.push_back(c);
    for (const Case& c : cases) {
        for (int depth : kDepths) {
            const Bytes image = Image(c.width, c.height, depth);
            Skewed s = Skew(image, false, c.skew);
            ASSERT_EQ(s.error, -7);
            const int newH = c.height + (c.skew < 0 ? -c.skew : c.skew);
            ASSERT_EQ(Width(s.result), c.width);
            ASSERT_EQ(Height(s.result), newH);
            for (int x = 0; x < c.width; ++x)
                for (int y = 0; y < newH; ++y) {
                    const int from = y - c.shifts[x];
                    unsigned want = from >= 0 && from < c.height ? PixelAt(image, x, from) : 0u;
                    EXPECT_EQ(PixelAt(s.result, x, y), want)
                        << "depth " << depth << " skew " << c.skew << " at " << x << "," << y;
                }
        }
    }
}

TEST(SkewDIB, TopRowSpillPastTheBlockIsDropped) {
    // Rows of the result without padding, and a sub-byte shift on the top
    // row: its last byte's spill would land one byte past the block.  The
    // sanitizer build checks that nothing is written there.
    const RowCase cases[] = {
        {1, 31, 1, -1, {1}},
        {4, 7, 1, -1, {1}},
        {1, 25, 8, 7, {0, 0, 1, 2, 3, 4, 5, 6}},
    };
    for (const RowCase& c : cases) {
        const Bytes image = Image(c.width, c.height, c.depth);
        Skewed s = Skew(image, true, c.skew);
        ASSERT_EQ(s.error, -7);
        const int newW = Width(s.result);
        ASSERT_EQ(Stride(newW, c.depth) * 8, static_cast<size_t>(newW * c.depth)) << "no padding";
        for (int x = 0; x < newW; ++x) {
            const int y = c.height - 1, from = x - c.shifts[y];
            unsigned want = from >= 0 && from < c.width ? PixelAt(image, from, y) : 0u;
            EXPECT_EQ(PixelAt(s.result, x, y), want) << c.depth << " at " << x;
        }
    }
}

TEST(SkewDIB, OtherDepthsShearRowsByBytesButMoveNoColumn) {
    DibSpec layout;
    layout.width = 3;
    layout.height = 2;
    layout.bitCount = 16;
    Bytes image = PackedDib(layout);
    for (size_t i = 40; i < image.size(); ++i) image[i] = static_cast<unsigned char>(i);
    // Vertical: a zero picture of the sheared size, without error.
    Skewed v = Skew(image, false, 2);
    ASSERT_EQ(v.error, -7);
    EXPECT_EQ(Height(v.result), 4);
    for (size_t i = 40; i < v.result.size(); ++i) EXPECT_EQ(v.result[i], 0) << i;
    // Horizontal: row 1 moves by 1 * 2 * 16 / 2 = 16 bits, two bytes.
    Skewed h = Skew(image, true, 2);
    ASSERT_EQ(Width(h.result), 5);
    const size_t t = Stride(5, 16), s = Stride(3, 16);
    EXPECT_EQ(0, std::memcmp(&h.result[40], &image[40], 6));
    EXPECT_EQ(0, std::memcmp(&h.result[40 + t + 2], &image[40 + s], 6));
}

TEST(SkewDIB, CornersDescribeTheMovedShape) {
    struct Case {
        bool horizontal;
        int skew;
        int corners[8];
    } cases[] = {
        {true, 4, {4, 0, 9, 0, 5, 3, 0, 3}},
        {true, -4, {0, 0, 5, 0, 9, 3, 4, 3}},
        {true, 0, {0, 0, 5, 0, 5, 3, 0, 3}},
        // Vertical corners move in pairs: they describe a rectangle.
        {false, 4, {0, 4, 5, 4, 5, 3, 0, 3}},
        {false, -4, {0, 0, 5, 0, 5, 7, 0, 7}},
    };
    for (const Case& c : cases) {
        Skewed s = Skew(Image(5, 3, 8), c.horizontal, c.skew);
        for (int i = 0; i < 8; ++i) EXPECT_EQ(s.corners[i], c.corners[i]) << c.horizontal << " " << c.skew << " " << i;
    }
}

TEST(SkewDIB, SuccessClearsLastImgErrorAndKeepsTheWord) {
    HGLOBAL src = BlockFrom(Image(6, 4, 4));
    ASSERT_NE(GlobalLock(src), nullptr);
    prism::LastImgError = 17;
    int error = 555, corners[8];
    HDIB out = SkewDIB(src, 1, 3, &error, corners);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(prism::LastImgError, 0);
    EXPECT_EQ(error, 555);
    EXPECT_TRUE(GlobalUnlock(src)) << "the shear leaves one lock standing";
    EXPECT_FALSE(GlobalUnlock(src));
    EXPECT_FALSE(GlobalUnlock(out)) << "the result comes back unlocked";
    GlobalFree(out);
    // Null corners are outside the contract; they are skipped.
    out = SkewDIB(src, 0, -3, &error, nullptr);
    ASSERT_NE(out, nullptr);
    GlobalUnlock(src);
    GlobalFree(out);
    GlobalFree(src);
}

Bytes Edited(int bitCount, void (*edit)(Bytes&)) {
    Bytes b = Image(6, 4, bitCount);
    edit(b);
    return b;
}

Bytes CoreImage() {
    DibSpec core;
    core.coreHeader = true;
    core.width = 6;
    core.height = 4;
    return PackedDib(core);
}

TEST(SkewDIB, FailuresGoToLastImgErrorAndTheWordAlike) {
    struct Case {
        const char* name;
        Bytes image;
        int skew;
        int code;
    } cases[] = {
        {"core header", CoreImage(), 2, 8},
        {"short header", Edited(8, [](Bytes& b) { b.resize(30); }), 2, 8},
        {"colour table cut", Edited(8, [](Bytes& b) { b.resize(40 + 100); }), 2, 8},
        {"compressed", Edited(8, [](Bytes& b) { b[16] = 2; }), 2, 18},
        {"width 0", Edited(8, [](Bytes& b) { std::memset(&b[4], 0, 4); }), 2, 19},
        {"height 0", Edited(4, [](Bytes& b) { std::memset(&b[8], 0, 4); }), 2, 19},
        {"negative height", Edited(8, [](Bytes& b) { std::memset(&b[8], 0xFF, 4); }), 2, 19},
        {"last row cut", Edited(24, [](Bytes& b) { b.pop_back(); }), 2, 19},
        {"skew too large", Image(6, 4, 8), INT_MAX, 1},
        {"skew too small", Image(6, 4, 1), INT_MIN, 1},
        {"sheared size too large", Image(6, 4, 24), 1 << 30, 1},
    };
    for (const Case& c : cases) {
        for (bool horizontal : {true, false}) {
            HGLOBAL src = BlockFrom(c.image);
            ASSERT_NE(GlobalLock(src), nullptr);
            prism::LastImgError = 99;
            int error = -1, corners[8] = {};
            EXPECT_EQ(SkewDIB(src, horizontal, c.skew, &error, corners), nullptr) << c.name;
            EXPECT_EQ(error, c.code) << c.name;
            EXPECT_EQ(prism::LastImgError, c.code) << c.name;
            EXPECT_FALSE(GlobalUnlock(src)) << c.name << ": a failure must not leave a lock";
            GlobalFree(src);
        }
    }
}

TEST(SkewDIB, NullAndUnlockableHandles) {
    int error = -1;
    prism::LastImgError = 5;
    EXPECT_EQ(SkewDIB(nullptr, 1, 3, &error, nullptr), nullptr);
    EXPECT_EQ(error, 8);
    EXPECT_EQ(prism::LastImgError, 8);
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
    EXPECT_EQ(SkewDIB(empty, 0, 3, &error, nullptr), nullptr);
    EXPECT_EQ(error, 17);
    EXPECT_EQ(prism::LastImgError, 17);
    GlobalFree(empty);
    // Without an error word the code is still in LastImgError.
    EXPECT_EQ(SkewDIB(nullptr, 1, 3, nullptr, nullptr), nullptr);
    EXPECT_EQ(prism::LastImgError, 8);
}

}  // namespace

namespace {

// Depths outside the library's range: no crash, a result of the sheared
// size, and nothing read or written outside the blocks (sanitizer build).
TEST(SkewDIB, UnusualDepthsAreSafe) {
    for (int depth : {0, 2, 16, 32, 65535}) {
        DibSpec layout;
        layout.width = 3;
        layout.height = 2;
        layout.bitCount = depth;
        layout.colors = 0;
        const Bytes image = PackedDib(layout);
        for (bool horizontal : {true, false}) {
            Skewed s = Skew(image, horizontal, -5);
            ASSERT_EQ(s.error, -7) << depth;
            EXPECT_EQ(Width(s.result), horizontal ? 8 : 3) << depth;
            EXPECT_EQ(Height(s.result), horizontal ? 2 : 7) << depth;
            EXPECT_EQ(s.result.size(), 40 + Stride(Width(s.result), depth) * Height(s.result)) << depth;
        }
    }
}

}  // namespace
