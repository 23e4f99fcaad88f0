// RotateDIB: result sizes, hand-checked walks, the geometry of every turn,
// the depths agreeing with each other, and the caller's error word.
#include "core/errors.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>

using namespace testing_support;

namespace {

std::int32_t Field32(const Bytes& b, size_t at) {
    std::uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = v << 8 | b[at + i];
    return static_cast<std::int32_t>(v);
}
int Width(const Bytes& dib) { return Field32(dib, 4); }
int Height(const Bytes& dib) { return Field32(dib, 8); }

struct Source {
    int width;
    int height;
    int bitCount;
};

// 24-bit pixels that name their own place: x + 1 above bit 12, the row
// counted from the top plus 1 below.
unsigned PlaceCode(int x, int y) { return static_cast<unsigned>((x + 1) << 12 | (y + 1)); }

// Turns an image and keeps the result's bytes; the source is freed, after
// taking back the lock a successful turn leaves standing.
struct Turned {
    Bytes source;
    Bytes result;
    int error = -1;
    int corners[8] = {};
};

Turned Turn(const Bytes& source, int angle, int walkMode) {
    Turned t;
    t.source = source;
    HGLOBAL src = BlockFrom(source);
    HDIB out = RotateDIB(src, angle, walkMode, &t.error, t.corners);
    if (out) {
        GlobalUnlock(src);
        t.result = BlockBytes(out);
        GlobalFree(out);
    }
    GlobalFree(src);
    return t;
}

Bytes Image(const Source& s, unsigned (*pixel)(int, int) = nullptr) {
    DibSpec layout;
    layout.width = s.width;
    layout.height = s.height;
    layout.bitCount = s.bitCount;
    return PackedDib(layout, pixel);
}

const int kDepths[] = {1, 4, 8, 24};

// ---- sizes and corners -------------------------------------------------------

TEST(RotateDIB, ResultSizeFollowsTheTurnedCorners) {
    struct Case {
        int w, h, angle, newW, newH;
    } cases[] = {
        {6, 4, 0, 6, 4},     {5, 4, 0, 6, 4},     {1, 1, 0, 2, 2},    {1, 1, 45, 2, 2},
        {100, 100, 45, 142, 142}, {4, 2, 90, 2, 4}, {6, 4, 180, 6, 4}, {3, 3, 45, 4, 4},
        {10, 2, 90, 2, 10},  {7, 3, 30, 8, 6},    {7, 3, 390, 8, 6},  {6, 4, -180, 6, 4},
    };
    for (const Case& c : cases) {
        for (int depth : kDepths) {
            for (int mode = 0; mode < 2; ++mode) {
                Turned t = Turn(Image({c.w, c.h, depth}), c.angle, mode);
                ASSERT_EQ(t.error, 0);
                EXPECT_EQ(Width(t.result), c.newW) << c.w << "x" << c.h << " at " << c.angle << ", " << depth;
                EXPECT_EQ(Height(t.result), c.newH) << c.w << "x" << c.h << " at " << c.angle << ", " << depth;
                EXPECT_EQ(static_cast<size_t>(Field32(t.result, 20)), Stride(c.newW, depth) * c.newH);
                EXPECT_EQ(t.result.size(), t.source.size() - Stride(c.w, depth) * c.h + Stride(c.newW, depth) * c.newH);
            }
        }
    }
}

TEST(RotateDIB, CornersAreTheTurnedSourceCornersTruncated) {
    struct Case {
        int w, h, angle;
        int corners[8];
    } cases[] = {
        {100, 100, 45, {0, -70, 70, 0, 0, 70, -70, 0}},
        {6, 4, 0, {-3, -2, 3, -2, 3, 2, -3, 2}},
        // The degree constant falls short of a quarter turn, so values near
        // whole numbers truncate toward zero.
        {4, 2, 90, {0, -2, 1, 1, 0, 2, -1, -1}},
    };
    for (const Case& c : cases) {
        Turned t = Turn(Image({c.w, c.h, 8}), c.angle, 0);
        ASSERT_EQ(t.error, 0);
        for (int i = 0; i < 8; ++i) EXPECT_EQ(t.corners[i], c.corners[i]) << c.angle << " corner value " << i;
    }
}

TEST(RotateDIB, HeaderAndColourTableAreCopied) {
    for (int depth : kDepths) {
        Turned t = Turn(Image({7, 5, depth}), 20, 1);
        ASSERT_EQ(t.error, 0);
        const size_t table = depth <= 8 ? (size_t(1) << depth) * 4 : 0;
        // Everything but width, height and biSizeImage stays as it was.
        EXPECT_EQ(0, std::memcmp(t.result.data() + 12, t.source.data() + 12, 8)) << depth;
        EXPECT_EQ(0, std::memcmp(t.result.data() + 24, t.source.data() + 24, 16 + table)) << depth;
    }
}

// ---- hand-checked walks ------------------------------------------------------

TEST(RotateDIB, ZeroTurnCopiesAnEvenSidedImage) {
    for (int depth : kDepths) {
        for (int mode = 0; mode < 2; ++mode) {
            Turned t = Turn(Image({6, 4, depth}), 0, mode);
            ASSERT_EQ(t.error, 0);
            ASSERT_EQ(Width(t.result), 6);
            ASSERT_EQ(Height(t.result), 4);
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 6; ++x)
                    EXPECT_EQ(PixelAt(t.result, x, y), PixelAt(t.source, x, y)) << depth << " " << x << "," << y;
        }
    }
}

TEST(RotateDIB, ZeroTurnOfAnOddWidthGrowsByOneColumn) {
    for (int depth : kDepths) {
        Turned t = Turn(Image({5, 4, depth}), 0, 0);
        ASSERT_EQ(Width(t.result), 6);
        for (int y = 0; y < 4; ++y) {
            // The floating walk enters at column 1 and never reads column 0.
            EXPECT_EQ(PixelAt(t.result, 0, y), 0u);
            for (int x = 1; x < 5; ++x) EXPECT_EQ(PixelAt(t.result, x, y), PixelAt(t.source, x, y)) << depth;
            EXPECT_EQ(PixelAt(t.result, 5, y), 0u);
        }
        // The integer walk starts from the rounded row start at -1 and steps
        // onto column 0, so the picture lands one column to the right.
        Turned i = Turn(Image({5, 4, depth}), 0, 1);
        for (int y = 0; y < 4; ++y) {
            EXPECT_EQ(PixelAt(i.result, 0, y), 0u);
            for (int x = 1; x < 6; ++x) EXPECT_EQ(PixelAt(i.result, x, y), PixelAt(i.source, x - 1, y)) << depth;
        }
    }
}

TEST(RotateDIB, SizesCountByTheirLow16Bits) {
    // 65,542 wide is taken as 6 wide; rows keep their real stride.
    Turned t = Turn(Image({65542, 4, 8}), 0, 0);
    ASSERT_EQ(t.error, 0);
    ASSERT_EQ(Width(t.result), 6);
    ASSERT_EQ(Height(t.result), 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(t.result, x, y), PixelAt(t.source, x, y)) << x << "," << y;
}

TEST(RotateDIB, HalfTurnFloatingWalkSkipsTheFirstColumn) {
    for (int depth : kDepths) {
        const int w = 10, h = 6;
        Turned t = Turn(Image({w, h, depth}), 180, 0);
        ASSERT_EQ(Width(t.result), w);
        ASSERT_EQ(Height(t.result), h);
        for (int r = 0; r < h; ++r) {
            EXPECT_EQ(PixelAt(t.result, 0, r), 0u) << depth;
            for (int c = 1; c < w; ++c)
                EXPECT_EQ(PixelAt(t.result, c, r), PixelAt(t.source, w - 1 - c, h - 1 - r)) << depth << " " << c << "," << r;
        }
    }
}

TEST(RotateDIB, HalfTurnIntegerWalkAlsoLeavesTheFirstRowBlank) {
    for (int depth : kDepths) {
        Turned t = Turn(Image({6, 4, depth}), 180, 1);
        ASSERT_EQ(Width(t.result), 6);
        ASSERT_EQ(Height(t.result), 4);
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 6; ++c) {
                unsigned want = r >= 1 && c >= 1 ? PixelAt(t.source, 6 - c, 4 - r) : 0u;
                EXPECT_EQ(PixelAt(t.result, c, r), want) << depth << " " << c << "," << r;
            }
    }
}

TEST(RotateDIB, QuarterTurnOfAFourByTwoImage) {
    // 4 by 2 turns into 2 by 4.  The second source row maps just outside
    // the source and is lost; target column 1 holds the bottom source row.
    for (int depth : kDepths) {
        Turned t = Turn(Image({4, 2, depth}), 90, 0);
        ASSERT_EQ(Width(t.result), 2);
        ASSERT_EQ(Height(t.result), 4);
        for (int r = 0; r < 4; ++r) {
            EXPECT_EQ(PixelAt(t.result, 0, r), 0u) << depth;
            EXPECT_EQ(PixelAt(t.result, 1, r), PixelAt(t.source, r, 0)) << depth << " row " << r;
        }
    }
}

// ---- every angle -------------------------------------------------------------

// Each target pixel of a 24-bit turn names the source pixel it copies.  It
// must lie near the exact inverse turn of the target pixel, and the turned
// picture must cover about as many pixels as the source has.
TEST(RotateDIB, EveryTargetPixelComesFromNearTheInverseTurn) {
    const double kPi = 3.14159265358979323846;
    const Source shapes[] = {{24, 16, 24}, {9, 13, 24}};
    for (const Source& s : shapes) {
        const Bytes image = Image(s, PlaceCode);
        for (int angle = 0; angle < 360; angle += 7) {
            for (int mode = 0; mode < 2; ++mode) {
                Turned t = Turn(image, angle, mode);
                ASSERT_EQ(t.error, 0);
                const int newW = Width(t.result), newH = Height(t.result);
                const double rad = -angle * kPi / 180, c = std::cos(rad), sn = std::sin(rad);
                int covered = 0;
                for (int r = 0; r < newH; ++r) {
                    for (int col = 0; col < newW; ++col) {
                        unsigned v = PixelAt(t.result, col, r);
                        if (!v) continue;
                        ++covered;
                        int sx = static_cast<int>(v >> 12) - 1;
                        int sy = s.height - 1 - (static_cast<int>(v & 0xFFF) - 1);  // as stored
                        ASSERT_TRUE(sx >= 0 && sx < s.width && sy >= 0 && sy < s.height) << v;
                        double u = col - newW / 2, w = r - newH / 2;
                        double X = u * c - w * sn + s.width / 2.0, Y = w * c + u * sn + s.height / 2.0;
                        EXPECT_LE(std::fabs(sx - X), 2.0) << angle << " mode " << mode << " at " << col << "," << r;
                        EXPECT_LE(std::fabs(sy - Y), 2.0) << angle << " mode " << mode << " at " << col << "," << r;
                    }
                }
                const int area = s.width * s.height;
                EXPECT_GE(covered, area - 2 * (s.width + s.height)) << angle << " mode " << mode;
                EXPECT_LE(covered, area + 2 * (s.width + s.height)) << angle << " mode " << mode;
            }
        }
    }
}

unsigned PaletteCode(int x, int y) { return static_cast<unsigned>(x * 7 + y * 13 + 5); }

// The walk picks the same source pixel at every depth: compare each
// palette result with the 24-bit one, whose pixels say where they came
// from.  The integer walk reads exactly where it tests at every depth; the
// floating walk does so at 8 and 24 bits.
TEST(RotateDIB, DepthsPickTheSameSourcePixels) {
    const int w = 19, h = 11;
    const Bytes places = Image({w, h, 24}, PlaceCode);
    const int angles[] = {0, 1, 30, 45, 89, 90, 91, 135, 180, 200, 269, 270, 300, 359};
    for (int angle : angles) {
        for (int mode = 0; mode < 2; ++mode) {
            Turned ref = Turn(places, angle, mode);
            for (int depth : {1, 4, 8}) {
                if (mode == 0 && depth < 8) continue;
                Turned t = Turn(Image({w, h, depth}, PaletteCode), angle, mode);
                ASSERT_EQ(Width(t.result), Width(ref.result));
                ASSERT_EQ(Height(t.result), Height(ref.result));
                const unsigned mask = (1u << depth) - 1;
                for (int r = 0; r < Height(ref.result); ++r)
                    for (int c = 0; c < Width(ref.result); ++c) {
                        unsigned v = PixelAt(ref.result, c, r);
                        unsigned want = v ? PaletteCode(int(v >> 12) - 1, int(v & 0xFFF) - 1) & mask : 0u;
                        EXPECT_EQ(PixelAt(t.result, c, r), want)
                            << "depth " << depth << " angle " << angle << " mode " << mode << " at " << c << "," << r;
                    }
            }
        }
    }
}

TEST(RotateDIB, EquivalentAnglesGiveTheSameImage) {
    struct Pair {
        int a, b;
    } pairs[] = {{0, 360}, {270, -90}, {10, 10090}, {45, 360 * 5000 + 45}, {-40, -400}, {-40, -3600040}};
    for (int depth : kDepths) {
        const Bytes image = Image({11, 7, depth});
        for (const Pair& p : pairs) {
            for (int mode = 0; mode < 2; ++mode) {
                Turned a = Turn(image, p.a, mode), b = Turn(image, p.b, mode);
                EXPECT_EQ(a.result, b.result) << p.a << " vs " << p.b << " at " << depth;
                EXPECT_EQ(0, std::memcmp(a.corners, b.corners, sizeof a.corners));
            }
        }
    }
}

TEST(RotateDIB, ExtremeAnglesStillGiveAnImage) {
    for (int angle : {INT_MIN, INT_MIN + 1, -100000, INT_MAX, 1000000}) {
        for (int mode = 0; mode < 2; ++mode) {
            Turned t = Turn(Image({8, 5, 8}), angle, mode);
            EXPECT_EQ(t.error, 0) << angle;
            EXPECT_GE(Width(t.result), 2);
            EXPECT_LE(Width(t.result), 10);  // the diagonal of 8 by 5 is under 9.5
        }
    }
}

TEST(RotateDIB, OtherWalkModesTakeTheIntegerWalk) {
    const Bytes image = Image({9, 6, 4});
    EXPECT_EQ(Turn(image, 33, 2).result, Turn(image, 33, 1).result);
    EXPECT_EQ(Turn(image, 33, -1).result, Turn(image, 33, 1).result);
}

TEST(RotateDIB, OnePixelImageAtEveryQuarter) {
    for (int depth : kDepths) {
        const unsigned ink = depth == 24 ? 0xFFFFFFu : (1u << depth) - 1;
        for (int angle : {0, 45, 90, 180, 270}) {
            for (int mode = 0; mode < 2; ++mode) {
                Turned t = Turn(Image({1, 1, depth}, [](int, int) { return 0xFFFFFFu; }), angle, mode);
                ASSERT_EQ(t.error, 0);
                EXPECT_EQ(Width(t.result), 2);
                EXPECT_EQ(Height(t.result), 2);
                // Two target pixels may share the one source pixel; nothing
                // else can appear.
                for (int y = 0; y < 2; ++y)
                    for (int x = 0; x < 2; ++x) {
                        unsigned v = PixelAt(t.result, x, y);
                        EXPECT_TRUE(v == 0 || v == ink) << depth << " at " << angle << ": " << v;
                    }
            }
        }
    }
}

TEST(RotateDIB, OtherDepthsGiveAZeroPictureOfTheTurnedSize) {
    DibSpec layout;
    layout.width = 6;
    layout.height = 4;
    layout.bitCount = 16;
    Bytes image = PackedDib(layout);
    std::memset(image.data() + 40, 0xAB, image.size() - 40);
    Turned t = Turn(image, 90, 0);
    ASSERT_EQ(t.error, 0);
    EXPECT_EQ(Width(t.result), 4);
    EXPECT_EQ(Height(t.result), 6);
    ASSERT_EQ(t.result.size(), 40u + Stride(4, 16) * 6);
    for (size_t i = 40; i < t.result.size(); ++i) ASSERT_EQ(t.result[i], 0) << i;
}

// ---- the error word ----------------------------------------------------------

Bytes CoreImage() {
    DibSpec core;
    core.coreHeader = true;
    core.width = 6;
    core.height = 4;
    return PackedDib(core);
}

TEST(RotateDIB, FailuresSetTheWordAndLeaveLastImgError) {
    auto with = [](int bitCount, void (*edit)(Bytes&)) {
        Bytes b = Image({6, 4, bitCount});
        edit(b);
        return b;
    };
    struct Case {
        const char* name;
        Bytes image;
        int code;
    } cases[] = {
        {"compressed", with(8, [](Bytes& b) { b[16] = 1; }), 500},
        {"width 0", with(8, [](Bytes& b) { std::memset(&b[4], 0, 4); }), 501},
        {"height 0", with(8, [](Bytes& b) { std::memset(&b[8], 0, 4); }), 501},
        {"width 65536", with(8, [](Bytes& b) { b[4] = 0, b[5] = 0, b[6] = 1; }), 501},
        {"core header", CoreImage(), 506},
        {"header only", with(8, [](Bytes& b) { b.resize(40 + 1024); }), 506},
        {"short header", with(8, [](Bytes& b) { b.resize(20); }), 506},
        {"last row cut", with(24, [](Bytes& b) { b.pop_back(); }), 506},
        {"negative height", with(8, [](Bytes& b) { std::memset(&b[8], 0xFF, 4); b[8] = 0xFC; }), 506},
        {"negative width", with(8, [](Bytes& b) { std::memset(&b[4], 0xFF, 4); b[4] = 0xFA; }), 506},
        {"huge colour count", with(8, [](Bytes& b) { std::memset(&b[32], 0xFF, 4); }), 506},
        // 65,535 by 1 at 24 bits, turned by 45: the result would need
        // several gigabytes.
        {"turned bounds too large", Image({65535, 1, 24}), 503},
    };
    for (Case& c : cases) {
        HGLOBAL src = BlockFrom(c.image);
        ASSERT_NE(GlobalLock(src), nullptr);  // count 1 before the call
        prism::LastImgError = 7;
        int error = -1, corners[8] = {};
        EXPECT_EQ(RotateDIB(src, 45, 0, &error, corners), nullptr) << c.name;
        EXPECT_EQ(error, c.code) << c.name;
        EXPECT_EQ(prism::LastImgError, 7) << c.name;
        EXPECT_FALSE(GlobalUnlock(src)) << c.name << ": a failure must not leave a lock";
        GlobalFree(src);
    }
}

TEST(RotateDIB, NullAndUnlockableHandles) {
    prism::LastImgError = 3;
    int error = -1;
    EXPECT_EQ(RotateDIB(nullptr, 10, 0, &error, nullptr), nullptr);
    EXPECT_EQ(error, 506);
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // cannot be locked
    error = -1;
    EXPECT_EQ(RotateDIB(empty, 10, 1, &error, nullptr), nullptr);
    EXPECT_EQ(error, 505);
    GlobalFree(empty);
    EXPECT_EQ(prism::LastImgError, 3);
    // No error word at all: the result alone tells.
    EXPECT_EQ(RotateDIB(nullptr, 10, 0, nullptr, nullptr), nullptr);
}

TEST(RotateDIB, SuccessClearsTheWordAndLeavesTheSourceLocked) {
    HGLOBAL src = BlockFrom(Image({6, 4, 8}));
    ASSERT_NE(GlobalLock(src), nullptr);
    prism::LastImgError = 9;
    int error = 1234;
    HDIB out = RotateDIB(src, 10, 0, &error, nullptr);  // no corners wanted
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(prism::LastImgError, 9);
    EXPECT_TRUE(GlobalUnlock(src)) << "the turn leaves one lock standing";
    EXPECT_FALSE(GlobalUnlock(src));
    EXPECT_FALSE(GlobalUnlock(out)) << "the result comes back unlocked";
    GlobalFree(out);
    GlobalFree(src);
}

}  // namespace

namespace {

TEST(RotateDIB, UnusualDepthsAreSafe) {
    for (int depth : {0, 2, 16, 32, 65535}) {
        DibSpec layout;
        layout.width = 3;
        layout.height = 2;
        layout.bitCount = depth;
        layout.colors = 0;
        const Bytes image = PackedDib(layout);
        for (int mode = 0; mode < 2; ++mode) {
            Turned t = Turn(image, 90, mode);
            ASSERT_EQ(t.error, 0) << depth;
            EXPECT_EQ(Width(t.result), 2) << depth;
            EXPECT_EQ(Height(t.result), 4) << depth;
            EXPECT_EQ(t.result.size(), 40 + Stride(2, depth) * 4) << depth;
        }
    }
}

}  // namespace
