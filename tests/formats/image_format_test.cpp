// Format detection: the twelve tests in their order, on real files.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <ostream>

#include <cstring>

using namespace testing_support;
using namespace formats_test;

namespace {

Bytes Repeat(size_t n, unsigned char c) { return Bytes(n, c); }

Bytes Concat(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct DetectCase {
    const char* what;
    const char* name;  // exact file name
    Bytes bytes;
    int expected;
};
void PrintTo(const DetectCase& c, std::ostream* os) { *os << c.what; }

class Detect : public ::testing::TestWithParam<DetectCase> {};

TEST_P(Detect, GivesItsCode) {
    const DetectCase& c = GetParam();
    NamedFile file(c.name, c.bytes);
    prism::LastImgError = 27;
    EXPECT_EQ(GetImageFormat(file.path()), c.expected) << c.what;
    // Only a missing file sets a code (from the colour fax test).
    EXPECT_EQ(prism::LastImgError, 27) << c.what;
}

const Bytes kCals = Text("srcdocid: 1234\nrtype: 1\n");

INSTANTIATE_TEST_SUITE_P(
    Formats, Detect,
    ::testing::Values(
        DetectCase{"intel tiff", "d.bin", {'I', 'I', 42, 0}, PRISM_FORMAT_TIFF},
        DetectCase{"motorola tiff", "d.bin", {'M', 'M', 0, 42}, PRISM_FORMAT_TIFF},
        DetectCase{"byte 10 is pcx", "d.bin", {10, 5, 1, 8}, PRISM_FORMAT_PCX},
        DetectCase{"byte 10 wins over a cals header", "d.bin", Concat({10}, kCals), PRISM_FORMAT_PCX},
        DetectCase{"dcx", "d.bin", {0xB1, 0x68, 0xDE, 0x3A, 0, 0}, PRISM_FORMAT_DCX},
        DetectCase{"gif87a", "d.bin", Text("GIF87a\x01\x00"), PRISM_FORMAT_GIF},
        DetectCase{"gif89a falls through", "d.bin", Text("GIF89a"), PRISM_FORMAT_NONE},
        DetectCase{"two bytes BM", "d.bin", Text("BM"), PRISM_FORMAT_BMP},
        DetectCase{"BM named TGA", "D.TGA", Text("BM"), PRISM_FORMAT_BMP},
        DetectCase{"clipboard", "d.bin", {0x50, 0xC3, 0, 0}, PRISM_FORMAT_CLIPBOARD},
        DetectCase{"placeable metafile", "d.bin", {0xD7, 0xCD, 0xC6, 0x9A, 0, 0}, PRISM_FORMAT_METAFILE},
        DetectCase{"header size 18", "d.bin", {1, 0, 18, 0, 0, 3}, PRISM_FORMAT_METAFILE},
        DetectCase{"header size 9 words is not", "d.bin", {1, 0, 9, 0, 0, 3}, PRISM_FORMAT_NONE},
        DetectCase{"TGA by name", "PICTURE.TGA", {1, 2, 3, 4}, PRISM_FORMAT_TGA},
        DetectCase{"empty TGA", "EMPTY.TGA", {}, PRISM_FORMAT_TGA},
        DetectCase{"small tga", "picture.tga", {1, 2, 3, 4}, PRISM_FORMAT_NONE},
        DetectCase{"cals", "d.bin", Concat(Repeat(40, 'x'), kCals), PRISM_FORMAT_CALS},
        DetectCase{"cals is case-sensitive", "d.bin", Text("SRCDOCID: 1\r\n"), PRISM_FORMAT_TEXT},
        DetectCase{"zero before the cals tag", "d.bin", Concat({'a', 0, 'b'}, kCals), PRISM_FORMAT_NONE},
        DetectCase{"cals ends at byte 511", "d.bin", Concat(Repeat(502, 'a'), Text("srcdocid:")),
                   PRISM_FORMAT_CALS},
        DetectCase{"cals ends at byte 512", "d.bin", Concat(Repeat(503, 'a'), Text("srcdocid:")),
                   PRISM_FORMAT_NONE},
        DetectCase{"crlf text", "d.txt", Text("hello\r\nworld\r\n"), PRISM_FORMAT_TEXT},
        DetectCase{"tab passes", "d.txt", Text("a\tb\r\n"), PRISM_FORMAT_TEXT},
        DetectCase{"byte 5 fails", "d.txt", Text("a\x05" "b\r\n"), PRISM_FORMAT_NONE},
        DetectCase{"byte 5 at 511 fails", "d.txt", Concat(Concat(Text("ab\r\n"), Repeat(507, 'c')), {5}),
                   PRISM_FORMAT_NONE},
        DetectCase{"byte 5 past 512 is not read", "d.txt", Concat(Concat(Text("ab\r\n"), Repeat(600, 'c')), {5}),
                   PRISM_FORMAT_TEXT},
        DetectCase{"bare line feeds", "d.txt", Text("hello\nworld\n"), PRISM_FORMAT_NONE},
        DetectCase{"cr then no lf", "d.txt", Text("a\rb\r\n"), PRISM_FORMAT_NONE},
        DetectCase{"first cr past 511", "d.txt", Concat(Repeat(520, 'x'), Text("\r\n")), PRISM_FORMAT_NONE},
        DetectCase{"cr lf at 510 and 511", "d.txt", Concat(Repeat(510, 'x'), Text("\r\n")), PRISM_FORMAT_TEXT},
        DetectCase{"one byte", "d.bin", {'B'}, PRISM_FORMAT_NONE},
        DetectCase{"empty", "d.bin", {}, PRISM_FORMAT_NONE}),
    [](const ::testing::TestParamInfo<DetectCase>& info) { return "case" + std::to_string(info.index); });

TEST(DetectFax, DescriptorWithPagesIsFormatNine) {
    // A descriptor is also CR LF text and, named so, a TGA: the fax test
    // comes first.
    NamedFile descriptor("FAX.TGA", Text("[ColorFax]\r\nTotalPages=2\r\n"));
    EXPECT_EQ(GetImageFormat(FullPath(descriptor.path()).c_str()), PRISM_FORMAT_COLORFAX);
    EXPECT_EQ(GetNumberOfImagesInFaxFile(FullPath(descriptor.path()).c_str()), 2);
}

TEST(DetectFax, NoPagesFallsThrough) {
    NamedFile zero("ZERO.TGA", Text("[ColorFax]\r\nTotalPages=0\r\n"));
    NamedFile none("none.txt", Text("[Other]\r\nTotalPages=3\r\n"));
    prism::LastImgError = 27;
    EXPECT_EQ(GetNumberOfImagesInFaxFile(FullPath(zero.path()).c_str()), 0);
    EXPECT_EQ(GetImageFormat(FullPath(zero.path()).c_str()), PRISM_FORMAT_TGA);
    EXPECT_EQ(GetNumberOfImagesInFaxFile(FullPath(none.path()).c_str()), -1);
    EXPECT_EQ(GetImageFormat(FullPath(none.path()).c_str()), PRISM_FORMAT_TEXT);
    EXPECT_EQ(prism::LastImgError, 27);
}

TEST(DetectFax, BmpIsNoDescriptor) {
    ScratchFile bmp("bmp");
    bmp.Write(BmpFile(PackedDib({})));
    prism::LastImgError = 27;
    EXPECT_EQ(GetNumberOfImagesInFaxFile(bmp.path()), -1);
    EXPECT_EQ(prism::LastImgError, 27);
}

TEST(DetectMissing, SetsCodeThreeAndFallsThrough) {
    prism::LastImgError = 0;
    EXPECT_EQ(GetNumberOfImagesInFaxFile("no-such-descriptor.ini"), -1);
    EXPECT_EQ(prism::LastImgError, 3);
    prism::LastImgError = 0;
    // The cleared buffer matches nothing; the name alone can still say TGA.
    EXPECT_EQ(GetImageFormat("no-such-file.bin"), PRISM_FORMAT_NONE);
    EXPECT_EQ(prism::LastImgError, 3);
    EXPECT_EQ(GetImageFormat("NO-SUCH-FILE.TGA"), PRISM_FORMAT_TGA);
    EXPECT_EQ(GetImageFormat(""), PRISM_FORMAT_NONE);
    EXPECT_EQ(GetImageFormat(nullptr), PRISM_FORMAT_NONE);
}

TEST(DetectMissing, DirectoryIsNoFile) {
    std::filesystem::create_directory("detect-dir.TGA");
    prism::LastImgError = 0;
    EXPECT_EQ(GetImageFormat("detect-dir.TGA"), PRISM_FORMAT_TGA);
    EXPECT_EQ(prism::LastImgError, 3);
    std::filesystem::remove("detect-dir.TGA");
}

// A file that is neither text nor image is read only 512 bytes deep and
// its content decides; a BMP at the front of a long file is still a BMP.
TEST(DetectLong, OnlyTheFirstBytesCount) {
    Bytes bytes = BmpFile(PackedDib({64, 64, 24}));
    ScratchFile file("long");
    file.Write(bytes);
    EXPECT_EQ(GetImageFormat(file.path()), PRISM_FORMAT_BMP);
    bytes[0] = 'x';
    file.Write(bytes);
    EXPECT_EQ(GetImageFormat(file.path()), PRISM_FORMAT_NONE);
}

}  // namespace
