// Every writer of the codec modules against its own reader, through the
// library's two exports: size, depth and the colour of every pixel come
// back; pages of DCX files come back by number.
#include "modules/module_files.h"

using namespace module_tests;

namespace {

// TIFF option2 is the TIFF compression number (0: G4 or LZW), TGA option2
// asks for run-length rows, GIF option1 for interlaced rows. The damaged
// files' rows (damaged_files.cpp) are round trips as well.
const FileCase kTrips[] = {
    {"rt4.tif", PRISM_FORMAT_TIFF, 4, 0, 0, 4},       {"rtg3.tif", PRISM_FORMAT_TIFF, 1, 0, 3, 1},
    {"rtrle.tif", PRISM_FORMAT_TIFF, 1, 0, 2, 1},     {"rtraw.tif", PRISM_FORMAT_TIFF, 24, 0, 1, 24},
    {"rtzip.tif", PRISM_FORMAT_TIFF, 8, 0, 8, 8},     {"rtpack.tif", PRISM_FORMAT_TIFF, 4, 0, 32773, 4},
    {"rt4.pcx", PRISM_FORMAT_PCX, 4, 0, 0, 4},        {"rt1.TGA", PRISM_FORMAT_TGA, 1, 0, 0, 8},
    {"rt4.TGA", PRISM_FORMAT_TGA, 4, 0, 0, 8},        {"rt8.TGA", PRISM_FORMAT_TGA, 8, 0, 7, 8},
    {"rt24rle.TGA", PRISM_FORMAT_TGA, 24, 0, 1, 24},  {"rt1.gif", PRISM_FORMAT_GIF, 1, 0, 0, 1},
    {"rt4.gif", PRISM_FORMAT_GIF, 4, 0, 0, 4},        {"rt8.gif", PRISM_FORMAT_GIF, 8, 1, 0, 8},
    {"rt24.gif", PRISM_FORMAT_GIF, 24, 0, 0, 8},      {"rt8.tif", PRISM_FORMAT_TIFF, 8, 0, 0, 8},
};

// The file as written loads with its size, depth and the colour of every
// pixel; spoilt, it gives no image instead of rows of nothing.
TEST_P(ModuleFile, LoadsAsWrittenAndNotWhenSpoilt) {
    const FileCase& t = GetParam();
    if (!ModuleBuilt(t.format)) GTEST_SKIP() << "module not built";
    TempFile file(t.file);
    // odd sizes, so rows end inside a byte and need padding
    HDIB source = Picture(t.depth, 45, 29, t.format == PRISM_FORMAT_PCX);
    ASSERT_NE(0, SaveDIBInImageFormat(file.path(), source, t.format, t.option1, t.option2));
    EXPECT_EQ(t.format, GetImageFormat(file.path()));
    int status = -1;
    HDIB loaded = LoadImageIntoDIB(file.path(), 1, &status);
    ASSERT_NE(nullptr, loaded);
    EXPECT_EQ(t.loadedDepth, testing_support::BlockBytes(loaded)[14]);
    EXPECT_EQ(0, ColorDifferences(source, loaded));
    GlobalFree(loaded), GlobalFree(source);
    if (!t.spoil) return;
    Bytes bytes = testing_support::ReadFile(file.name);
    t.spoil(bytes);
    testing_support::WriteFile(file.name, bytes);
    status = -1;
    EXPECT_EQ(nullptr, LoadImageIntoDIB(file.path(), 1, &status));
    EXPECT_EQ(t.status, status);
}

INSTANTIATE_TEST_SUITE_P(RoundTrips, ModuleFile, ::testing::ValuesIn(kTrips), NameOf);

// Writers refuse what they cannot hold (a G4 page of 8 bits, no image); a
// CALS raster of a deeper image is black where the image is dark.
TEST(ModuleWriters, RefuseOrReduceWhatTheyCannotHold) {
    if (!ModuleBuilt(PRISM_FORMAT_TIFF) || !ModuleBuilt(PRISM_FORMAT_GIF) || !ModuleBuilt(PRISM_FORMAT_JPEG))
        GTEST_SKIP() << "modules not built";
    TempFile cals("deep.cal"), fax("deep.tif");
    HDIB grey = Picture(8, 16, 16);
    EXPECT_EQ(0, SaveDIBInImageFormat(fax.path(), grey, PRISM_FORMAT_TIFF, 0, 4));
    for (int format : {PRISM_FORMAT_TIFF, PRISM_FORMAT_PCX, PRISM_FORMAT_GIF, PRISM_FORMAT_TGA, PRISM_FORMAT_JPEG})
        EXPECT_EQ(0, SaveDIBInImageFormat("never.TGA", nullptr, format, 0, 0)) << format;
    ASSERT_NE(0, SaveDIBInImageFormat(cals.path(), grey, PRISM_FORMAT_CALS, 0, 0));
    int status = 0;
    HDIB bilevel = LoadImageIntoDIB(cals.path(), 1, &status);
    ASSERT_NE(nullptr, bilevel);
    const Bytes source = testing_support::BlockBytes(grey), reduced = testing_support::BlockBytes(bilevel);
    for (int i = 0; i < 256; ++i) {
        const unsigned c = ColorAt(source, i % 16, i / 16);
        const bool dark = 30 * (c >> 16) + 59 * (c >> 8 & 255) + 11 * (c & 255) < 12800;
        EXPECT_EQ(ColorAt(reduced, i % 16, i / 16), dark ? 0u : 0xFFFFFFu) << i;
    }
    GlobalFree(bilevel), GlobalFree(grey);
}

// DCX pages come back by number; a page beyond the last gives no image and
// the status "no such page" (4) where the entry has a status to set.
TEST(ModulePages, PagesComeBackByNumberAndNoFurther) {
    TempFile dcx("pages.dcx"), tif("one.tif"), gif("one.gif");
    HDIB pages[3] = {Picture(1, 30, 20, true), Picture(8, 17, 9), Picture(24, 40, 11)};
    for (HDIB page : pages) ASSERT_NE(0, SaveDIBInImageFormat(dcx.path(), page, PRISM_FORMAT_DCX, 0, 0));
    const struct { const TempFile& file; int format; UINT page; int status; } beyond[] = {
        {dcx, PRISM_FORMAT_DCX, 4, 4}, {gif, PRISM_FORMAT_GIF, 2, 4}, {tif, PRISM_FORMAT_TIFF, 2, -1}};
    for (const auto& b : beyond) {
        if (!ModuleBuilt(b.format)) continue;
        ASSERT_TRUE(b.format == PRISM_FORMAT_DCX || SaveDIBInImageFormat(b.file.path(), pages[1], b.format, 0, 0));
        int status = -1;  // the TIFF entry is given no status to touch
        EXPECT_EQ(nullptr, LoadImageIntoDIB(b.file.path(), b.page, &status)) << b.file.name;
        EXPECT_EQ(b.status, status) << b.file.name;
    }
    for (int n = 1; n <= 3; ++n) {
        int status = -1;
        HDIB loaded = LoadImageIntoDIB(dcx.path(), static_cast<UINT>(n), &status);
        ASSERT_NE(nullptr, loaded) << "page " << n;
        EXPECT_EQ(0, status);
        EXPECT_EQ(0, ColorDifferences(pages[n - 1], loaded)) << "page " << n;
        GlobalFree(loaded), GlobalFree(pages[n - 1]);
    }
}

}  // namespace
