// Format detection: the twelve tests in their order, on real files.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

using namespace testing_support;
using namespace formats_test;

namespace {

Bytes Cat(Bytes a, const Bytes& b, const Bytes& c = {}) {
    a.insert(a.end(), b.begin(), b.end());
    a.insert(a.end(), c.begin(), c.end());
    return a;
}
Bytes Fill(size_t n, unsigned char c) { return Bytes(n, c); }

const Bytes kCals = Text("srcdocid: 1234\nrtype: 1\n");

TEST(Detect, EachCaseGivesItsCode) {
    const struct {
        const char* what;
        const char* name;  // exact file name
        Bytes bytes;
        int expected;
        bool missing = false;  // no such file: code 3 (from the colour fax test)
    } cases[] = {
        {"intel tiff", "d.bin", {'I', 'I', 42, 0}, PRISM_FORMAT_TIFF},
        {"motorola tiff", "d.bin", {'M', 'M', 0, 42}, PRISM_FORMAT_TIFF},
        {"byte 10 is pcx", "d.bin", {10, 5, 1, 8}, PRISM_FORMAT_PCX},
        {"byte 10 wins over a cals header", "d.bin", Cat({10}, kCals), PRISM_FORMAT_PCX},
        {"dcx", "d.bin", {0xB1, 0x68, 0xDE, 0x3A, 0, 0}, PRISM_FORMAT_DCX},
        {"gif87a", "d.bin", Text("GIF87a\x01\x00"), PRISM_FORMAT_GIF},
        {"gif89a falls through", "d.bin", Text("GIF89a"), PRISM_FORMAT_NONE},
        {"two bytes BM", "d.bin", Text("BM"), PRISM_FORMAT_BMP},
        {"BM named TGA", "D.TGA", Text("BM"), PRISM_FORMAT_BMP},
        {"clipboard", "d.bin", {0x50, 0xC3, 0, 0}, PRISM_FORMAT_CLIPBOARD},
        {"placeable metafile", "d.bin", {0xD7, 0xCD, 0xC6, 0x9A, 0, 0}, PRISM_FORMAT_METAFILE},
        {"header size 18", "d.bin", {1, 0, 18, 0, 0, 3}, PRISM_FORMAT_METAFILE},
        {"header size 9 words is not", "d.bin", {1, 0, 9, 0, 0, 3}, PRISM_FORMAT_NONE},
        // A descriptor is also CR LF text and, named so, a TGA: the fax
        // test comes first, and needs a page.
        {"fax descriptor", "FAX.TGA", Text("[ColorFax]\r\nTotalPages=2\r\n"), PRISM_FORMAT_COLORFAX},
        {"fax of no pages", "ZERO.TGA", Text("[ColorFax]\r\nTotalPages=0\r\n"), PRISM_FORMAT_TGA},
        {"other section", "d.txt", Text("[Other]\r\nTotalPages=3\r\n"), PRISM_FORMAT_TEXT},
        {"TGA by name", "PICTURE.TGA", {1, 2, 3, 4}, PRISM_FORMAT_TGA},
        {"empty TGA", "EMPTY.TGA", {}, PRISM_FORMAT_TGA},
        {"small tga", "picture.tga", {1, 2, 3, 4}, PRISM_FORMAT_NONE},
        {"cals", "d.bin", Cat(Fill(40, 'x'), kCals), PRISM_FORMAT_CALS},
        {"cals is case-sensitive", "d.bin", Text("SRCDOCID: 1\r\n"), PRISM_FORMAT_TEXT},
        {"zero before the cals tag", "d.bin", Cat({'a', 0, 'b'}, kCals), PRISM_FORMAT_NONE},
        {"cals ends at byte 511", "d.bin", Cat(Fill(502, 'a'), Text("srcdocid:")), PRISM_FORMAT_CALS},
        {"cals ends at byte 512", "d.bin", Cat(Fill(503, 'a'), Text("srcdocid:")), PRISM_FORMAT_NONE},
        {"crlf text", "d.txt", Text("hello\r\nworld\r\n"), PRISM_FORMAT_TEXT},
        {"tab passes", "d.txt", Text("a\tb\r\n"), PRISM_FORMAT_TEXT},
        {"byte 5 fails", "d.txt", Text("a\x05" "b\r\n"), PRISM_FORMAT_NONE},
        {"byte 5 at 511 fails", "d.txt", Cat(Text("ab\r\n"), Fill(507, 'c'), {5}), PRISM_FORMAT_NONE},
        {"byte 5 past 512 is not read", "d.txt", Cat(Text("ab\r\n"), Fill(600, 'c'), {5}), PRISM_FORMAT_TEXT},
        {"bare line feeds", "d.txt", Text("hello\nworld\n"), PRISM_FORMAT_NONE},
        {"cr then no lf", "d.txt", Text("a\rb\r\n"), PRISM_FORMAT_NONE},
        {"first cr past 511", "d.txt", Cat(Fill(520, 'x'), Text("\r\n")), PRISM_FORMAT_NONE},
        {"cr lf at 510 and 511", "d.txt", Cat(Fill(510, 'x'), Text("\r\n")), PRISM_FORMAT_TEXT},
        {"one byte", "d.bin", {'B'}, PRISM_FORMAT_NONE},
        {"empty", "d.bin", {}, PRISM_FORMAT_NONE},
        // The cleared buffer matches nothing; the name alone can still say TGA.
        {"missing", "no-such-file.bin", {}, PRISM_FORMAT_NONE, true},
        {"missing TGA", "NO-SUCH-FILE.TGA", {}, PRISM_FORMAT_TGA, true},
        {"no name", "", {}, PRISM_FORMAT_NONE, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::remove(c.name);
        if (!c.missing) WriteFile(c.name, c.bytes);
        prism::LastImgError = 27;
        EXPECT_EQ(GetImageFormat(c.name), c.expected);
        EXPECT_EQ(prism::LastImgError, c.missing ? 3 : 27);  // only a missing file sets a code
        std::remove(c.name);
    }
    EXPECT_EQ(GetImageFormat(nullptr), PRISM_FORMAT_NONE);
}

TEST(DetectFax, PageCountOfADescriptor) {
    const std::pair<const char*, int> cases[] = {{"[ColorFax]\r\nTotalPages=2\r\n", 2},
                                                 {"[ColorFax]\r\nTotalPages=0\r\n", 0},
                                                 {"[Other]\r\nTotalPages=3\r\n", -1}};
    for (const auto& [text, pages] : cases) {
        NamedFile file("pages.ini", Text(text));
        prism::LastImgError = 27;
        EXPECT_EQ(GetNumberOfImagesInFaxFile(file.path()), pages) << text;
        EXPECT_EQ(prism::LastImgError, 27);
    }
    EXPECT_EQ(GetNumberOfImagesInFaxFile("no-such-descriptor.ini"), -1);
    EXPECT_EQ(prism::LastImgError, 3);
}

}  // namespace
