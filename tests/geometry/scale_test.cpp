// ScaleDIB at depths 1, 4, 8 and 24: same size, halving, constant images
// and the result header per depth and mode; hand-checked interpolation; the
// failure codes.
#include "core/errors.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace testing_support;

unsigned Pattern(int x, int y) {
    const unsigned v = static_cast<unsigned>(x * 7 + y * 11 + (x * y) % 5);
    return v | (v * 29u + 3) << 8 | (v * 53u + 7) << 16;
}
unsigned Five(int, int) { return 5; }
unsigned White(int, int) { return 0xFFFFFF; }
unsigned SmallIndex(int x, int y) { return static_cast<unsigned>((x * 3 + y) % 16); }

// The result's bytes, empty for 0; the source must be left unlocked.
Bytes Scale(const Bytes& source, int mode, int width, int height) {
    HDIB dib = BlockFrom(source);
    HDIB out = ScaleDIB(dib, mode, width, height);
    GlobalLock(dib);
    EXPECT_FALSE(GlobalUnlock(dib)) << "the source is left unlocked";
    GlobalFree(dib);
    Bytes result = out ? BlockBytes(out) : Bytes();
    if (out) GlobalFree(out);
    return result;
}

class ScaleByDepth : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(ScaleByDepth, SameSizeHalvingConstantAndHeader) {
    const int depth = std::get<0>(GetParam()), mode = std::get<1>(GetParam());
    // At the same size every weight is 0 and 255 (linear) or 0, 255, 0, 0
    // (cubic), and palette colours map back to their own entries: pixels,
    // padding bytes and table come back as they were.
    for (int width : {1, 6, 13}) {
        const Bytes source = Image(width, 5, depth, Pattern);
        const Bytes s = Scale(source, mode, width, 5);
        const size_t stride = Stride(width, depth), used = (width * depth + 7) / 8, at = source.size() - stride * 5;
        ASSERT_GE(s.size(), source.size());
        EXPECT_EQ(Bytes(s.begin() + 40, s.begin() + at), Bytes(source.begin() + 40, source.begin() + at));
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < width; ++x) ASSERT_EQ(PixelAt(s, x, y), PixelAt(source, x, y)) << width << ": " << x << "," << y;
            EXPECT_EQ(Bytes(s.begin() + at + y * stride + used, s.begin() + at + (y + 1) * stride), Bytes(stride - used, 0));
        }
    }
    // Halving lands every tap on a pixel with full weight (cubic halving
    // weighs neighbours too).  The 1-bit stretcher counts rows from the top
    // and the resampler from the bottom, hence two phases.
    const Bytes source = Image(12, 8, depth, Pattern);
    if (mode == 0 || depth == 1) {
        const Bytes s = Scale(source, mode, 6, 4);
        ASSERT_FALSE(s.empty());
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 6; ++x)
                ASSERT_EQ(PixelAt(s, x, y), PixelAt(source, 2 * x, depth == 1 ? 2 * y + 1 : 2 * y)) << x << "," << y;
    }
    // A one-colour picture stays one colour, enlarged or reduced: linear
    // weights sum to 255 (exact on white) and the nearest palette entry is
    // the same one.  The 1-bit sampler leaves enlarged rows and columns past
    // the source at 0.
    const Bytes constant = Image(9, 7, depth, depth == 24 ? White : Five);
    for (auto size : {std::pair<int, int>{23, 17}, std::pair<int, int>{4, 3}}) {
        if (mode != 0 || (depth == 1 && size.first > 9)) continue;
        const Bytes s = Scale(constant, mode, size.first, size.second);
        ASSERT_FALSE(s.empty());
        for (int y = 0; y < size.second; ++y)
            for (int x = 0; x < size.first; ++x) ASSERT_EQ(PixelAt(s, x, y), PixelAt(constant, 0, 0)) << x << "," << y;
    }
    // The header: new size, depth, biClrUsed and resolution kept.
    DibShape shape;
    shape.width = 10;
    shape.height = 4;
    shape.bitCount = depth;
    shape.colors = depth <= 8 ? 1 << depth : 0;
    shape.clrUsed = static_cast<std::uint32_t>(shape.colors);
    const Bytes s = Scale(PackedDib(shape), mode, 15, 7);
    ASSERT_FALSE(s.empty());
    const int stride = static_cast<int>(Stride(15, depth));
    Bytes want(PackedDib(shape));
    want.resize(40);
    Put32(want, 4, 15), Put32(want, 8, 7);
    if (depth != 1) Put32(want, 20, static_cast<std::uint32_t>(stride * 7));  // 1 bit: kept as it was
    EXPECT_EQ(Bytes(s.begin(), s.begin() + 40), want);
    EXPECT_GE(s.size(), 40u + 4u * shape.colors + stride * 7u);
}

INSTANTIATE_TEST_SUITE_P(DepthsAndModes, ScaleByDepth,
                         ::testing::Combine(::testing::Values(1, 4, 8, 24), ::testing::Values(0, 1)),
                         [](const ::testing::TestParamInfo<std::tuple<int, int>>& info) {
                             return "Bits" + std::to_string(std::get<0>(info.param)) +
                                    (std::get<1>(info.param) ? "Cubic" : "Linear");
                         });

TEST(ScaleDIB, PaletteModesAndSizeBits) {
    // 16 entries at 8 bits: every index found lies in the table.
    DibShape shape;
    shape.width = 7;
    shape.height = 5;
    shape.colors = 16;
    shape.clrUsed = 16;
    for (int mode : {0, 1}) {
        const Bytes s = Scale(PackedDib(shape, SmallIndex), mode, 19, 11);
        ASSERT_FALSE(s.empty());
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 19; ++x) ASSERT_LT(PixelAt(s, x, y), 16u) << x << "," << y;
    }
    // Any mode but 0 with a non-zero low half is the cubic mode, and only
    // the low 16 bits of the new size count.
    const Bytes source = Image(9, 6, 8, Pattern);
    const Bytes cubic = Scale(source, 1, 14, 10);
    ASSERT_FALSE(cubic.empty());
    EXPECT_EQ(Scale(source, 2, 14, 10), cubic);
    EXPECT_EQ(Scale(source, 0x30001, 14, 10), cubic);
    EXPECT_EQ(Scale(source, 0, 0x10000 + 14, 0x20000 + 10), Scale(source, 0, 14, 10));
    // A new height of 0 gives an image without rows.
    const Bytes flat = Scale(source, 0, 7, 0);
    ASSERT_FALSE(flat.empty());
    EXPECT_EQ(Field(flat, 4), 7);
    EXPECT_EQ(Field(flat, 8), 0);
    EXPECT_EQ(Field(flat, 20), 0);
}

// Failures give 0 and their code in LastImgError; 99 means left alone, as
// for blocks that do not hold the image they describe.  -1: a result.
TEST(ScaleDIB, FailuresAndLimits) {
    auto with = [](int depth, void (*edit)(Bytes&)) {
        Bytes b = Image(6, 3, depth, Pattern);
        edit(b);
        return b;
    };
    DibShape core;
    core.coreHeader = true;
    struct Case {
        const char* name;
        Bytes image;
        int mode, width, height, code;
    } cases[] = {
        {"new width 0", Image(6, 3, 8), 0, 0, 4, 1}, {"new width 0, cubic", Image(6, 3, 24), 1, 0, 4, 1},
        {"new width 0 in the low half", Image(6, 3, 4), 0, 0x10000, 4, 1},
        {"depth 16", Image(6, 3, 16), 0, 4, 4, 21}, {"depth 32", Image(6, 3, 32), 0, 4, 4, 21},
        {"linear too wide", Image(6, 3, 8), 0, 16384, 1, 8}, {"linear widest", Image(4, 1, 8), 0, 16383, 1, -1},
        {"cubic too wide", Image(6, 3, 24), 1, 10923, 1, 8}, {"cubic widest", Image(4, 1, 24), 1, 10922, 1, -1},
        {"cubic too wide by wrap", Image(6, 3, 4), 1, -1, 1, 8},
        {"mode with zero low half", Image(6, 3, 8), 0x10000, 4, 4, 8},
        // The 1-bit stretcher refuses and reports nothing.
        {"1 bit, negative width", Image(6, 3, 1), 0, -3, 4, 99},
        {"1 bit, height 0", Image(6, 3, 1), 0, 4, 0, 99},
        {"compressed", with(8, [](Bytes& b) { b[16] = 1; }), 0, 4, 4, 18},
        {"rows cut short", with(24, [](Bytes& b) { b.resize(b.size() - 10); }), 0, 4, 4, 99},
        {"1 bit, rows cut short", with(1, [](Bytes& b) { b.pop_back(); }), 0, 4, 4, 99},
        {"core header", PackedDib(core), 0, 8, 8, 99},
        {"negative height", with(8, [](Bytes& b) { Put32(b, 8, 0xFFFFFFFC); }), 0, 8, 8, 99},
        {"header cut", with(8, [](Bytes& b) { b.resize(30); }), 0, 8, 8, 99},
    };
    for (const Case& c : cases) {
        prism::LastImgError = 99;
        EXPECT_EQ(Scale(c.image, c.mode, c.width, c.height).empty(), c.code != -1) << c.name;
        EXPECT_EQ(ImgError(), c.code == -1 ? 99 : c.code) << c.name;
    }
    SetImgError(0);
    EXPECT_EQ(ScaleDIB(nullptr, 0, 4, 4), nullptr);
    EXPECT_EQ(ImgError(), 8);
}

}  // namespace
