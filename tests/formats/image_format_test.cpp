// Format detection: the twelve tests in their order, on real files.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

using namespace testing_support;
using namespace formats_test;
using namespace std::string_literals;

namespace {

const std::string kCals = "srcdocid: 1234\nrtype: 1\n", kFax = "[ColorFax]\r\nTotalPages=";

TEST(Detect, EachCaseGivesItsCode) {
    // name: the exact file name; missing: no such file, code 3 (from the colour fax test); pages: the
    // page count of a descriptor, -1 for any other file.
    const struct { const char* what; const char* name; std::string bytes; int expected; bool missing = false; int pages = -1; } cases[] = {
        {"intel tiff", "d.bin", "II*\0"s, PRISM_FORMAT_TIFF}, {"motorola tiff", "d.bin", "MM\0*"s, PRISM_FORMAT_TIFF},
        {"byte 10 is pcx", "d.bin", "\n\5\1\b", PRISM_FORMAT_PCX},
        {"byte 10 wins over a cals header", "d.bin", "\n" + kCals, PRISM_FORMAT_PCX},
        {"dcx", "d.bin", "\xB1\x68\xDE\x3A\0\0"s, PRISM_FORMAT_DCX}, {"gif87a", "d.bin", "GIF87a\1\0"s, PRISM_FORMAT_GIF},
        {"gif89a falls through", "d.bin", "GIF89a", PRISM_FORMAT_NONE},
        {"two bytes BM", "d.bin", "BM", PRISM_FORMAT_BMP}, {"BM named TGA", "D.TGA", "BM", PRISM_FORMAT_BMP},
        {"clipboard", "d.bin", "\x50\xC3\0\0"s, PRISM_FORMAT_CLIPBOARD},
        {"placeable metafile", "d.bin", "\xD7\xCD\xC6\x9A\0\0"s, PRISM_FORMAT_METAFILE},
        {"header size 18", "d.bin", "\1\0\x12\0\0\3"s, PRISM_FORMAT_METAFILE},
        {"header size 9 words is not", "d.bin", "\1\0\x9\0\0\3"s, PRISM_FORMAT_NONE},
        // A descriptor is also CR LF text and, named so, a TGA: the fax
        // test comes first, and needs a page.
        {"fax descriptor", "FAX.TGA", kFax + "2\r\n", PRISM_FORMAT_COLORFAX, false, 2},
        {"fax of no pages", "ZERO.TGA", kFax + "0\r\n", PRISM_FORMAT_TGA, false, 0},
        {"other section", "d.txt", "[Other]\r\nTotalPages=3\r\n", PRISM_FORMAT_TEXT},
        {"TGA by name", "PICTURE.TGA", "\1\2\3\4", PRISM_FORMAT_TGA}, {"empty TGA", "EMPTY.TGA", "", PRISM_FORMAT_TGA},
        {"small tga", "picture.tga", "\1\2\3\4", PRISM_FORMAT_NONE},
        {"cals", "d.bin", std::string(40, 'x') + kCals, PRISM_FORMAT_CALS},
        {"cals is case-sensitive", "d.bin", "SRCDOCID: 1\r\n", PRISM_FORMAT_TEXT},
        {"zero before the cals tag", "d.bin", "a\0b"s + kCals, PRISM_FORMAT_NONE},
        {"cals ends at byte 511", "d.bin", std::string(502, 'a') + "srcdocid:", PRISM_FORMAT_CALS},
        {"cals ends at byte 512", "d.bin", std::string(503, 'a') + "srcdocid:", PRISM_FORMAT_NONE},
        {"crlf text", "d.txt", "hello\r\nworld\r\n", PRISM_FORMAT_TEXT},
        {"tab passes", "d.txt", "a\tb\r\n", PRISM_FORMAT_TEXT}, {"byte 5 fails", "d.txt", "a\5b\r\n", PRISM_FORMAT_NONE},
        {"byte 5 at 511 fails", "d.txt", "ab\r\n" + std::string(507, 'c') + "\5", PRISM_FORMAT_NONE},
        {"byte 5 past 512 is not read", "d.txt", "ab\r\n" + std::string(600, 'c') + "\5", PRISM_FORMAT_TEXT},
        {"bare line feeds", "d.txt", "hello\nworld\n", PRISM_FORMAT_NONE},
        {"cr then no lf", "d.txt", "a\rb\r\n", PRISM_FORMAT_NONE},
        {"first cr past 511", "d.txt", std::string(520, 'x') + "\r\n", PRISM_FORMAT_NONE},
        {"cr lf at 510 and 511", "d.txt", std::string(510, 'x') + "\r\n", PRISM_FORMAT_TEXT},
        {"one byte", "d.bin", "B", PRISM_FORMAT_NONE},
        // The cleared buffer matches nothing; the name alone can still say TGA.
        {"missing", "no-such-file.bin", "", PRISM_FORMAT_NONE, true},
        {"missing TGA", "NO-SUCH-FILE.TGA", "", PRISM_FORMAT_TGA, true}, {"no name", "", "", PRISM_FORMAT_NONE, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        if (!c.missing) WriteFile(c.name, Text(c.bytes));
        prism::LastImgError = 27;
        EXPECT_EQ(GetImageFormat(c.name), c.expected);
        EXPECT_EQ(prism::LastImgError, c.missing ? 3 : 27);  // only a missing file sets a code
        prism::LastImgError = 27;
        EXPECT_EQ(GetNumberOfImagesInFaxFile(c.name), c.pages);
        EXPECT_EQ(prism::LastImgError, c.missing ? 3 : 27);
        std::remove(c.name);
    }
    EXPECT_EQ(GetImageFormat(nullptr), PRISM_FORMAT_NONE);
}

}  // namespace
