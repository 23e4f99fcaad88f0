// Colour fax pages: descriptors with page and file sections, planes merged
// into a 4-bit page, and descriptors that are wrong in every way we know.
// Descriptors and planes go by relative names: the library resolves them
// against the working directory.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <climits>

using namespace testing_support;
using namespace formats_test;

namespace {

using PlaneFn = unsigned (*)(int x, int y);  // y from the top
const PlaneFn kPlanes[] = {[](int x, int y) -> unsigned { return (x + y) % 2; },
                           [](int x, int y) -> unsigned { return (x / 2 + y) % 2; },
                           [](int x, int y) -> unsigned { return (x * y) % 3 == 0; },
                           [](int x, int) -> unsigned { return x % 3 == 0; }};

std::string N(int n) { return std::to_string(n); }

// The pixel bytes of a 4-bit page, behind its header and colour table; the page is freed.
Bytes PageBits(HDIB page) { const Bytes b = Take(page); return Bytes(b.begin() + std::min<size_t>(b.size(), 104), b.end()); }

// A BMP file with a resolution of its own, x and y apart, so the page can be
// seen to take the first plane's.
Bytes PlaneFile(int width, int height, PlaneFn fn, int bits = 1) {
    return BmpFile(With(With(PackedDib({width, height, bits}, fn), 24, 3780 + width), 28, 2000 + height));
}

// The page a descriptor's planes make: the header and colour table (bit 3
// red, bit 2 green, bit 1 blue, bit 0 raises 128 to 255), then the pixels,
// bit 3 - i from plane i where `used` has bit i.
Bytes Page(int width, int height, int planes, unsigned used) {
    const std::uint32_t bits = Stride(width, 4) * height;
    Bytes page = With(With(With(With(Cut(Image(width, height, 4, nullptr, 16, 16), 104), 20, bits), 24, 3780 + width), 28, 2000 + height), 36, 16);
    for (unsigned i = 0, v = 128; i < 16; ++i, v = i & 1 ? 255 : 128)
        Put32(page, 40 + 4 * i, (i & 2 ? v : 0) | (i & 4 ? v << 8 : 0) | (i & 8 ? v << 16 : 0));
    page.resize(104 + Stride(width, 4) * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int i = 0; i < planes; ++i)
                page[104 + (height - 1 - y) * Stride(width, 4) + x / 2] |= (used >> i & 1) * kPlanes[i](x, y) << (3 - i) << (x % 2 ? 0 : 4);
    return page;
}

std::string Head(int pages, int planes, int files, int bits = 1, int first = 1) {
    return "[ColorFax]\r\nTotalPages=" + N(pages) + "\r\nFirstPage=" + N(first) + "\r\nPlanes=" + N(planes) +
           "\r\nFiles=" + N(files) + "\r\nBitsPixel=" + N(bits) + "\r\n";
}

// "PlaneI=name" for I in [from, to).
std::string PlaneKeys(int from, int to, const std::string& name) {
    return from < to ? "Plane" + N(from) + "=" + name + "\r\n" + PlaneKeys(from + 1, to, name) : "";
}

// Page 2 of two, each plane in a file of its own named in "Page2"; a plane
// that cannot be read leaves its bit clear and its status behind.
TEST(PageSections, MergesThePlanesOfThePage) {
    const struct { int width, planes, missing; } cases[] = {{16, 3, -1}, {9, 3, -1}, {1, 2, -1}, {13, 4, -1}, {8, 3, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE("width " + N(c.width) + ", " + N(c.planes) + " planes, missing " + N(c.missing));
        std::string text = Head(2, c.planes, 2 * c.planes) + "[Page1]\r\nPlane0=no.bmp\r\n[Page2]\r\n";
        for (int i = 0; i < c.planes; ++i)
            WriteFile("plane" + N(i) + ".bmp", PlaneFile(c.width, 3, kPlanes[i])), text += PlaneKeys(i, i + 1, i == c.missing ? "no.bmp" : "plane" + N(i) + ".bmp");
        NamedFile descriptor("fax.ini", Text(text));
        int status = -1;
        prism::LastImgError = 27;
        EXPECT_EQ(Take(LoadColorFaxPage(descriptor.path(), 2, &status)), Page(c.width, 3, c.planes, c.missing < 0 ? 15u : ~(1u << c.missing)));
        EXPECT_EQ(std::pair(status, prism::LastImgError), c.missing < 0 ? std::pair(-1, 27) : std::pair(9, 9));
    }
    for (int i = 0; i < 4; ++i) std::remove(("plane" + N(i) + ".bmp").c_str());
}

// Pages of two multi-page files, read by the TIFF stand-in, which makes an
// 8 x 1 plane whose pixel byte is the page it was asked for.
TEST(FileSections, WalkNumbersPagesAsTheFilesRun) {
    NamedFile f1("walk1.tif", {'I', 'I', 42, 0}), f2("walk2.tif", {'I', 'I', 42, 0});
    NamedFile descriptor("fax.ini", Text(Head(4, 3, 2) + "[File1]\r\nName=walk1.tif\r\nPages=2\r\n"
                                                         "[File2]\r\nName=walk2.tif\r\nPages=2\r\n"));
    // A file's range reaches one page past its "Pages": page 3 points past
    // the end of the first file, and the second file starts at its page 4.
    // Planes hold bytes first, first + 1 and first + 2, hand-merged: for page
    // 1, pixel 6 is green and blue (6), pixel 7 red and blue (10), the rest black.
    const struct { int page; std::string file; int first; Bytes bits; } walks[] = {
        {1, "walk1.tif", 1, {0, 0, 0, 0x6A}}, {2, "walk1.tif", 4, {0, 0, 0x0E, 0x24}},
        {3, "walk1.tif", 7, {0, 0, 0x68, 0x8A}}, {4, "walk2.tif", 4, {0, 0, 0x0E, 0x24}}};
    for (const auto& w : walks) {
        CallLog log;
        EXPECT_EQ(PageBits(LoadColorFaxPage(descriptor.path(), w.page, nullptr)), w.bits) << w.page;
        std::vector<std::string> calls;
        for (const std::string& line : log.Lines())
            if (line.rfind("ALDER32.DLL|LoadAlderIntoDIB|", 0) == 0) calls.push_back(line.substr(29, line.rfind('|') - 29));
        const std::string f = w.file + "|";
        EXPECT_EQ(calls, (std::vector{f + N(w.first) + "|null", f + N(w.first + 1) + "|null", f + N(w.first + 2) + "|null"})) << w.page;
    }
}

// Pages count from 1, sections from "FirstPage"; a page of one plane is the
// plane as loaded.  Descriptors wrong in every way we know give 0 or, where
// the first plane is good, a page whose bit 3 is that plane; the code and
// status each leaves (27 and -1: untouched).
TEST(Descriptor, GivesItsPageOrRefuses) {
    NamedFile p0("p0.bmp", PlaneFile(6, 3, kPlanes[0])), p1("p1.bmp", PlaneFile(6, 3, kPlanes[1]));
    NamedFile p24("p24.bmp", PlaneFile(5, 2, nullptr, 24)), p8("p8.bmp", PlaneFile(40, 40, nullptr, 8));
    NamedFile a("a8.bmp", PlaneFile(3, 1, nullptr, 8)), b("b8.bmp", PlaneFile(5, 2, nullptr, 8));
    const Bytes a8 = Take(LoadDIBFromFile(a.path())), b8 = Take(LoadDIBFromFile(b.path())), merged = Page(6, 3, 1, 1);
    const std::string page1 = "[Page1]\r\nPlane0=p0.bmp\r\n", range = Head(4, 1, 4, 1, 3) + "[Page-1]\r\nPlane0=a8.bmp\r\n[Page0]\r\nPlane0=b8.bmp\r\n" + page1;
    const struct { const char* what; std::string text; int page; Bytes expected; int code, status; const char* name = "bad.ini"; } cases[] = {
        {"page 1: section -1", range, 1, a8, 27, -1}, {"page 2: section 0", range, 2, b8, 27, -1},
        {"missing file", "", 1, {}, 3, 3, "no-such.ini"}, {"no name", "", 1, {}, 3, 3, nullptr},
        {"empty", "", 1, {}, 27, -1}, {"page past the end", range, 3, {}, 27, -1}, {"page 0", range, 0, {}, 27, -1},
        {"keys missing", "[ColorFax]\r\nTotalPages=1\r\n" + page1, 1, {}, 27, -1},
        {"no pages", "[ColorFax]\r\nPlanes=1\r\nFiles=1\r\nBitsPixel=1\r\n" + page1, 1, {}, 27, -1},
        {"4 bits a pixel", Head(1, 4, 4, 4) + page1, 1, {}, 27, -1}, {"page INT_MIN", range, INT_MIN, {}, 27, -1},
        {"walk that would not end", Head(2000000, 3, 1000000), 50, {}, 9, 9},
        {"first plane missing", Head(1, 2, 2) + "[Page1]\r\nPlane0=no.bmp\r\nPlane1=p1.bmp\r\n", 1, {}, 9, 9},
        {"names itself, 3 planes", Head(1, 3, 3) + "[Page1]\r\n" + PlaneKeys(0, 3, "bad.ini"), 1, {}, 9, 9},
        // The nesting is cut off in bounded time; the nested pages that did
        // load are merged as 1-bit rows into the lower bits.
        {"names itself for later planes", Head(1, 255, 255) + page1 + PlaneKeys(1, 255, "bad.ini"), 1, merged, 9, 9},
        // Merged as 1-bit rows without reaching outside either block.
        {"planes of the wrong depth", Head(1, 3, 3) + page1 + "Plane1=p24.bmp\r\nPlane2=p8.bmp\r\n", 1, merged, 27, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        NamedFile descriptor("bad.ini", Text(c.text));
        int status = -1;
        prism::LastImgError = 27;
        Bytes page = Take(LoadColorFaxPage(c.name, c.page, &status));
        EXPECT_EQ(std::pair(prism::LastImgError, status), std::pair(c.code, c.status));
        for (size_t at = 104; at < page.size() && page[14] == 4; ++at) page[at] &= 0x88;  // plane 0's bits of a 4-bit page
        EXPECT_EQ(page, c.expected);
    }
}

// Pairs of source bits go to one target byte each, the first setting the
// high-nibble bit, the second the low; a row ends at its last pixel, so
// set bits in the padding behind it reach nothing.
TEST(FaxMerge, HandChecked) {
    const struct { int plane, width; unsigned char first; Bytes target; } cases[] = {
        {0, 8, 0xB1, {0x80, 0x88, 0, 0x08}}, {1, 8, 0xB1, {0x40, 0x44, 0, 0x04}}, {3, 8, 0xB1, {0x10, 0x11, 0, 0x01}},
        {4, 8, 0xB1, {0x08, 0x08, 0, 0}},  // planes past 3 set fewer bits
        {8, 8, 0xB1, {0, 0, 0, 0}}, {-1, 8, 0xB1, {0, 0, 0, 0}}, {0, 3, 0xFF, {0x88, 0x80, 0, 0}},
        {0, 9, 0xFF, {0x88, 0x88, 0x88, 0x88, 0x80, 0, 0, 0}},
        {2, 15, 0xFF, {0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x20}},
    };
    for (const auto& c : cases) {
        HDIB page = prism::CreateFaxPageDib(c.width, 1, 0, 0);
        Bytes packed = PackedDib({c.width, 1, 1});
        std::fill(packed.begin() + 49, packed.end(), 0xFF);  // later pixels and padding
        HDIB plane = BlockFrom((packed[48] = c.first, packed));
        EXPECT_EQ(prism::MergeFaxPlane(page, plane, c.plane), 1);
        EXPECT_EQ(PageBits(page), c.target) << "plane " << c.plane << ", width " << c.width;
        GlobalFree(plane);
    }
    EXPECT_EQ(prism::CreateFaxPageDib(-5, 3, 0, 0), nullptr);
    EXPECT_EQ(prism::MergeFaxPlane(nullptr, nullptr, 0), 0);
}

// A plane taller and wider than the page: its last rows meet the page's,
// the rest is dropped; wide rows run on into the next row of the page
// only.  The top plane row (stored last) is all set: page row 1 gets 8
// pixel bits, 2 bytes of its 4 and its padding; nothing lands in row 0.
TEST(FaxMerge, TallerAndWiderPlane) {
    HDIB page = prism::CreateFaxPageDib(4, 2, 0, 0);
    HDIB tall = BlockFrom(PackedDib({16, 5, 1}, [](int, int y) { return y == 0 ? 1u : 0u; }));
    EXPECT_EQ(prism::MergeFaxPlane(page, tall, 0), 1);
    EXPECT_EQ(PageBits(page), (Bytes{0, 0, 0, 0, 0x88, 0x88, 0x88, 0x88}));
    GlobalFree(tall);
}

}  // namespace
