// Square filters over 24-bit images, through their brightness.
#include "core/errors.h"
#include "support/test_support.h"

using namespace testing_support;

namespace {

Bytes Filtered(const Bytes& src, int mode, int kind, int size, const short* matrix = nullptr,
               const char* file = nullptr, int* error = nullptr) {
    return CopyAndInPlace(
        src,
        [&](HDIB dib, BOOL copy, int* e) {
            return ColorConvolution(dib, copy, mode, WORD(kind), short(size), file, matrix, e);
        },
        error);
}

unsigned Colours(int x, int y) { return (x * 0x3A1F07u + y * 0x11D2C3u) & 0xFFFFFF; }

TEST(ColorConvolution, EveryByteGainsTheWeightedBrightnessBlueFirst) {
    const short identity[] = {0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    Bytes colours = Image(11, 7, 24, Colours);
    for (int mode : {0, 1, 2}) EXPECT_EQ(Filtered(colours, mode, 1, 3, identity), colours) << mode;
    // Centre 2, divisor 1: each byte gains the pixel's brightness.
    const short twice[] = {0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const struct { unsigned rgb; int mode; unsigned expected; } cases[] = {
        {0x0000FF, 1, 0x4E4EFF}, {0x0000FF, 0, 0x5555FF}, {0xFF0000, 1, 0xFF1D1D},
        {0x00FF00, 1, 0x93FF93}, {0x00FF00, 2, 0x55FF55}};
    for (const auto& c : cases)
        EXPECT_EQ(PixelAt(Filtered(Uniform(5, 4, 24, c.rgb), c.mode, 1, 3, twice), 2, 2), c.expected)
            << std::hex << c.rgb << " mode " << c.mode;
    // Centre -1: the sum is minus the brightness 17 of bytes 5, 17, 29; by 16
    // it shifts down (-2), by 15 it divides toward zero (-1).
    const short by16[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 16}, by15[] = {0, 0, 0, 0, -1, 0, 0, 0, 0, 15};
    EXPECT_EQ(PixelAt(Filtered(Uniform(6, 5, 24, 0x1D1105), 0, 1, 3, by16), 3, 2), 0x0A0000u);
    EXPECT_EQ(PixelAt(Filtered(Uniform(6, 5, 24, 0x1D1105), 0, 1, 3, by15), 3, 2), 0x0B0000u);
}

TEST(ColorConvolution, RefusesBadInput) {
    Bytes src = Image(9, 8, 24, Colours);
    ScratchFile file("kernel16.bin");
    Bytes box;
    for (int k = 0; k < 9; ++k) box.insert(box.end(), {1, 0});
    box.insert(box.end(), {0, 0});
    file.Write(box);
    int error = -1;
    const Bytes builtIn = Filtered(src, 0, 3, 3);
    ASSERT_FALSE(builtIn.empty());
    EXPECT_EQ(Filtered(src, 0, 2, 3, nullptr, file.path(), &error), builtIn);
    EXPECT_EQ(error, 0);

    const short big[] = {0, 0, 0, 0, 128, 0, 0, 0, 0, 1};
    // Contents are written to the scratch file first when it is named.
    const struct { const char* name; int kind, size; const short* matrix; const char* file; Bytes contents; }
    cases[] = {
        {"kind 0", 0, 3, nullptr, nullptr, {}},       {"kind 7", 7, 3, nullptr, nullptr, {}},
        {"cross at 7", 5, 7, nullptr, nullptr, {}},   {"size 4", 3, 4, nullptr, nullptr, {}},
        {"size 6", 1, 6, big, nullptr, {}},           {"no matrix", 1, 3, nullptr, nullptr, {}},
        {"no file name", 2, 3, nullptr, nullptr, {}}, {"cell 128", 1, 3, big, nullptr, {}},
        {"missing file", 2, 3, nullptr, "none.bin", {}},
        {"short file", 2, 3, nullptr, file.path(), Bytes(box.begin(), box.end() - 1)},
        {"empty file", 2, 3, nullptr, file.path(), {}}};
    for (const auto& c : cases) {
        if (c.file == file.path()) file.Write(c.contents);
        EXPECT_TRUE(Filtered(src, 0, c.kind, c.size, c.matrix, c.file, &error).empty()) << c.name;
        EXPECT_EQ(error, prism::kErrParameter) << c.name;
    }
    const struct { const char* name; Bytes bytes; int expected; } bad[] = {
        {"8-bit", Image(8, 8, 8), prism::kErrBitsPerPixel},
        {"too small", Bytes(src.begin(), src.end() - 5), prism::kErrDibSize}};
    for (const auto& b : bad) {
        EXPECT_TRUE(Filtered(b.bytes, 0, 3, 3, nullptr, nullptr, &error).empty()) << b.name;
        EXPECT_EQ(error, b.expected) << b.name;
    }
}

}  // namespace
