// Every writer of the codec modules against its own reader, through the
// library's two exports: size, depth and the colour of every pixel come
// back; pages of DCX files come back by number.
#include "modules/module_files.h"

#include <gtest/gtest.h>

using namespace module_tests;

namespace {

struct RoundTrip {
    const char* file;
    int format;
    int depth;
    int option1, option2;  // as SaveDIBInImageFormat passes them on
    int loadedDepth;
};

// Options: TIFF option2 is the TIFF compression number (0: G4 or LZW),
// TGA option2 asks for run-length rows, GIF option1 for interlaced rows.
const RoundTrip kTrips[] = {
    {"rt1.tif", PRISM_FORMAT_TIFF, 1, 0, 0, 1},        {"rt4.tif", PRISM_FORMAT_TIFF, 4, 0, 0, 4},
    {"rt8.tif", PRISM_FORMAT_TIFF, 8, 0, 0, 8},        {"rt24.tif", PRISM_FORMAT_TIFF, 24, 0, 0, 24},
    {"rtg3.tif", PRISM_FORMAT_TIFF, 1, 0, 3, 1},       {"rtrle.tif", PRISM_FORMAT_TIFF, 1, 0, 2, 1},
    {"rtraw.tif", PRISM_FORMAT_TIFF, 24, 0, 1, 24},    {"rtzip.tif", PRISM_FORMAT_TIFF, 8, 0, 8, 8},
    {"rtpack.tif", PRISM_FORMAT_TIFF, 4, 0, 32773, 4}, {"rt1.pcx", PRISM_FORMAT_PCX, 1, 0, 0, 1},
    {"rt4.pcx", PRISM_FORMAT_PCX, 4, 0, 0, 4},         {"rt8.pcx", PRISM_FORMAT_PCX, 8, 0, 0, 8},
    {"rt24.pcx", PRISM_FORMAT_PCX, 24, 0, 0, 24},      {"rt1.TGA", PRISM_FORMAT_TGA, 1, 0, 0, 8},
    {"rt4.TGA", PRISM_FORMAT_TGA, 4, 0, 0, 8},         {"rt8.TGA", PRISM_FORMAT_TGA, 8, 0, 7, 8},
    {"rt24.TGA", PRISM_FORMAT_TGA, 24, 0, 0, 24},      {"rt24rle.TGA", PRISM_FORMAT_TGA, 24, 0, 1, 24},
    {"rt1.gif", PRISM_FORMAT_GIF, 1, 0, 0, 1},         {"rt4.gif", PRISM_FORMAT_GIF, 4, 0, 0, 4},
    {"rt8.gif", PRISM_FORMAT_GIF, 8, 1, 0, 8},         {"rt24.gif", PRISM_FORMAT_GIF, 24, 0, 0, 8},
    {"rt1.cal", PRISM_FORMAT_CALS, 1, 0, 0, 1},
};

class ModuleRoundTrip : public ::testing::TestWithParam<RoundTrip> {};

TEST_P(ModuleRoundTrip, ColoursComeBack) {
    const RoundTrip& t = GetParam();
    if (!ModuleBuilt(t.format)) GTEST_SKIP() << "module not built";
    TempFile file(t.file);
    // odd sizes, so rows end inside a byte and need padding
    HDIB source = Picture(t.depth, 45, 29, t.format == PRISM_FORMAT_PCX);
    ASSERT_NE(0, SaveDIBInImageFormat(file.path(), source, t.format, t.option1, t.option2));
    EXPECT_EQ(t.format, GetImageFormat(file.path()));
    int status = -1;
    HDIB loaded = LoadImageIntoDIB(file.path(), 1, &status);
    ASSERT_NE(nullptr, loaded);
    const auto* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(loaded));
    EXPECT_EQ(t.loadedDepth, h->biBitCount);
    GlobalUnlock(loaded);
    EXPECT_EQ(0, ColorDifferences(source, loaded));
    GlobalFree(loaded);
    GlobalFree(source);
}

INSTANTIATE_TEST_SUITE_P(Formats, ModuleRoundTrip, ::testing::ValuesIn(kTrips),
                         [](const auto& info) {
                             std::string n = info.param.file;
                             for (char& c : n) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return n;
                         });

// Writers refuse what they cannot hold; a CALS raster of a deeper image is
// black where the image is dark.
TEST(ModuleWriters, RefuseOrReduceWhatTheyCannotHold) {
    if (!ModuleBuilt(PRISM_FORMAT_TIFF) || !ModuleBuilt(PRISM_FORMAT_GIF) || !ModuleBuilt(PRISM_FORMAT_JPEG))
        GTEST_SKIP() << "modules not built";
    TempFile cals("deep.cal"), fax("deep.tif");
    HDIB grey = Picture(8, 16, 16);
    EXPECT_EQ(0, SaveDIBInImageFormat(fax.path(), grey, PRISM_FORMAT_TIFF, 0, 4));  // G4 of 8 bits
    ASSERT_NE(0, SaveDIBInImageFormat(cals.path(), grey, PRISM_FORMAT_CALS, 0, 0));
    int status = 0;
    HDIB bilevel = LoadImageIntoDIB(cals.path(), 1, &status);
    ASSERT_NE(nullptr, bilevel);
    const Bytes source = testing_support::BlockBytes(grey), reduced = testing_support::BlockBytes(bilevel);
    long wrong = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const unsigned c = ColorAt(source, x, y);
            const bool dark = 30 * (c >> 16) + 59 * (c >> 8 & 255) + 11 * (c & 255) < 12800;
            wrong += ColorAt(reduced, x, y) != (dark ? 0u : 0xFFFFFFu);
        }
    EXPECT_EQ(0, wrong);
    GlobalFree(bilevel);
    for (int format : {PRISM_FORMAT_TIFF, PRISM_FORMAT_PCX, PRISM_FORMAT_GIF, PRISM_FORMAT_TGA, PRISM_FORMAT_JPEG})
        EXPECT_EQ(0, SaveDIBInImageFormat("never.TGA", nullptr, format, 0, 0)) << format;
    GlobalFree(grey);
}

TEST(ModulePages, DcxPagesComeBackByNumber) {
    TempFile file("pages.dcx");
    HDIB pages[3] = {Picture(1, 30, 20, true), Picture(8, 17, 9), Picture(24, 40, 11)};
    for (HDIB page : pages) ASSERT_NE(0, SaveDIBInImageFormat(file.path(), page, PRISM_FORMAT_DCX, 0, 0));
    for (int n = 1; n <= 3; ++n) {
        int status = -1;
        HDIB loaded = LoadImageIntoDIB(file.path(), static_cast<UINT>(n), &status);
        ASSERT_NE(nullptr, loaded) << "page " << n;
        EXPECT_EQ(0, status);
        EXPECT_EQ(0, ColorDifferences(pages[n - 1], loaded)) << "page " << n;
        GlobalFree(loaded);
    }
    int status = -1;
    EXPECT_EQ(nullptr, LoadImageIntoDIB(file.path(), 4, &status));
    EXPECT_EQ(4, status);  // no such page
    for (HDIB page : pages) GlobalFree(page);
}

TEST(ModulePages, PageBeyondTheLastIsRefused) {
    if (!ModuleBuilt(PRISM_FORMAT_TIFF) || !ModuleBuilt(PRISM_FORMAT_GIF)) GTEST_SKIP() << "modules not built";
    TempFile tif("one.tif"), gif("one.gif");
    HDIB page = Picture(4, 10, 10);
    ASSERT_NE(0, SaveDIBInImageFormat(tif.path(), page, PRISM_FORMAT_TIFF, 0, 0));
    ASSERT_NE(0, SaveDIBInImageFormat(gif.path(), page, PRISM_FORMAT_GIF, 0, 0));
    int status = -1;
    EXPECT_EQ(nullptr, LoadImageIntoDIB(tif.path(), 2, &status));
    EXPECT_EQ(-1, status);  // the TIFF entry is given no status to touch
    EXPECT_EQ(nullptr, LoadImageIntoDIB(gif.path(), 2, &status));
    EXPECT_EQ(4, status);
    GlobalFree(page);
}

}  // namespace
