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

unsigned Plane0(int x, int y) { return (x + y) % 2; }
unsigned Plane1(int x, int y) { return (x / 2 + y) % 2; }
unsigned Plane2(int x, int y) { return (x * y) % 3 == 0; }
unsigned Plane3(int x, int) { return x % 3 == 0; }
const PlaneFn kPlanes[] = {Plane0, Plane1, Plane2, Plane3};

std::string N(int n) { return std::to_string(n); }

// A BMP file with a resolution of its own, x and y apart, so the page can be
// seen to take the first plane's.
Bytes PlaneFile(int width, int height, PlaneFn fn, int bits = 1) {
    Bytes packed = PackedDib({width, height, bits}, fn);
    const int32_t dpm[] = {3780 + width, 2000 + height};
    std::memcpy(&packed[24], dpm, sizeof(dpm));
    return BmpFile(packed);
}

// The header and colour table a page of planes starts with: bit 3 red,
// bit 2 green, bit 1 blue, bit 0 raises 128 to 255.
Bytes PageHead(int width, int height, std::uint32_t xDpm, std::uint32_t yDpm) {
    Bytes head = Cut(Image(width, height, 4, nullptr, 16, 16), 104);
    for (auto [at, v] : {std::pair{20u, std::uint32_t(Stride(width, 4) * height)}, {24u, xDpm}, {28u, yDpm}, {36u, 16u}})
        Put32(head, at, v);
    for (int i = 0; i < 16; ++i) {
        const std::uint32_t v = i & 1 ? 255 : 128;
        Put32(head, 40 + 4 * i, (i & 2 ? v : 0) | (i & 4 ? v << 8 : 0) | (i & 8 ? v << 16 : 0));
    }
    return head;
}

std::string Head(int pages, int planes, int files, int bits = 1, int first = 1) {
    return "[ColorFax]\r\nTotalPages=" + N(pages) + "\r\nFirstPage=" + N(first) + "\r\nPlanes=" + N(planes) +
           "\r\nFiles=" + N(files) + "\r\nBitsPixel=" + N(bits) + "\r\n";
}

// "PlaneI=name" for I in [from, to).
std::string PlaneKeys(int from, int to, const std::string& name) {
    std::string keys;
    for (int i = from; i < to; ++i) keys += "Plane" + N(i) + "=" + name + "\r\n";
    return keys;
}

// Page 2 of two, each plane in a file of its own named in "Page2"; a plane
// that cannot be read leaves its bit clear and its status behind.
TEST(PageSections, MergesThePlanesOfThePage) {
    const struct { int width, planes, missing; } cases[] = {{16, 3, -1}, {10, 3, -1}, {9, 3, -1}, {1, 2, -1},
                                                            {24, 4, -1}, {13, 4, -1}, {8, 3, 1}};
    const int height = 3;
    for (const auto& c : cases) {
        SCOPED_TRACE("width " + N(c.width) + ", " + N(c.planes) + " planes, missing " + N(c.missing));
        std::string text = Head(2, c.planes, 2 * c.planes) + "[Page1]\r\nPlane0=no.bmp\r\n[Page2]\r\n";
        for (int i = 0; i < c.planes; ++i) {
            WriteFile("plane" + N(i) + ".bmp", PlaneFile(c.width, height, kPlanes[i]));
            text += PlaneKeys(i, i + 1, i == c.missing ? "no.bmp" : "plane" + N(i) + ".bmp");
        }
        NamedFile descriptor("fax.ini", Text(text));
        int status = -1;
        prism::LastImgError = 27;
        HDIB dib = LoadColorFaxPage(descriptor.path(), 2, &status);
        ASSERT_NE(dib, nullptr);
        EXPECT_EQ(status, c.missing < 0 ? -1 : 9);
        EXPECT_EQ(prism::LastImgError, c.missing < 0 ? 27 : 9);
        Bytes page = BlockBytes(dib);
        EXPECT_EQ(page.size(), 104 + Stride(c.width, 4) * height);
        EXPECT_EQ(Bytes(page.begin(), page.begin() + 104), PageHead(c.width, height, 3780 + c.width, 2000 + height));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < c.width; ++x) {
                unsigned expected = 0;
                for (int i = 0; i < c.planes; ++i)
                    if (i != c.missing) expected |= kPlanes[i](x, height - 1 - y) << (3 - i);
                ASSERT_EQ(PixelAt(page, x, y), expected) << x << "," << y;
            }
        }
        GlobalFree(dib);
    }
    for (int i = 0; i < 4; ++i) std::remove(("plane" + N(i) + ".bmp").c_str());
}

// Pages count from 1, sections from "FirstPage"; a page of one plane is the
// plane as loaded, also through LoadImageIntoDIB.
TEST(PageSections, OnePlanePagesBySectionNumber) {
    NamedFile a("a8.bmp", PlaneFile(3, 1, nullptr, 8)), b("b8.bmp", PlaneFile(5, 2, nullptr, 8));
    NamedFile descriptor("fax.ini", Text(Head(4, 1, 4, 1, 3) + "[Page-1]\r\nPlane0=a8.bmp\r\n[Page0]\r\nPlane0=b8.bmp"
                                                               "\r\n[Page1]\r\nPlane0=b8.bmp\r\n"));
    int status = -1;
    HDIB one = LoadColorFaxPage(descriptor.path(), 1, nullptr);
    HDIB two = LoadImageIntoDIB(descriptor.path(), 2, &status);
    HDIB directA = LoadDIBFromFile(a.path()), directB = LoadDIBFromFile(b.path());
    ASSERT_TRUE(one && two && directA && directB);
    EXPECT_EQ(BlockBytes(one), BlockBytes(directA));
    EXPECT_EQ(BlockBytes(two), BlockBytes(directB));
    // The unsigned page of the dispatch turns negative here: out of range.
    EXPECT_EQ(LoadImageIntoDIB(descriptor.path(), 0xFFFFFFFFu, &status), nullptr);
    EXPECT_EQ(LoadImageIntoDIB(descriptor.path(), 0x80000000u, &status), nullptr);
    EXPECT_EQ(status, -1);
    for (HDIB dib : {one, two, directA, directB}) GlobalFree(dib);
}

// Pages of two multi-page files, read by the TIFF stand-in, which makes an
// 8 x 1 plane whose pixel byte is the page it was asked for.
TEST(FileSections, WalkNumbersPagesAsTheFilesRun) {
    NamedFile f1("walk1.tif", {'I', 'I', 42, 0}), f2("walk2.tif", {'I', 'I', 42, 0});
    NamedFile descriptor("fax.ini", Text(Head(4, 3, 2) + "[File1]\r\nName=walk1.tif\r\nPages=2\r\n"
                                                         "[File2]\r\nName=walk2.tif\r\nPages=2\r\n"));
    // A file's range reaches one page past its "Pages": page 3 points past
    // the end of the first file, and the second file starts at its page 4.
    const struct { int page; std::string file; int first; } walks[] = {
        {1, "walk1.tif", 1}, {2, "walk1.tif", 4}, {3, "walk1.tif", 7}, {4, "walk2.tif", 4}};
    for (const auto& w : walks) {
        CallLog log;
        HDIB dib = LoadColorFaxPage(descriptor.path(), w.page, nullptr);
        ASSERT_NE(dib, nullptr) << w.page;
        std::vector<std::string> calls;
        for (const std::string& line : log.Lines())
            if (line.rfind("ALDER32.DLL|LoadAlderIntoDIB|", 0) == 0) calls.push_back(line.substr(29));
        ASSERT_EQ(calls.size(), 3u) << w.page;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(calls[i].rfind(w.file + "|" + N(w.first + i) + "|null|", 0), 0u) << calls[i];
        if (w.page == 1) {
            // Planes hold bytes 1, 2 and 3: hand-merged, pixel 6 is green
            // and blue (6), pixel 7 red and blue (10), the rest black.
            Bytes page = BlockBytes(dib);
            EXPECT_EQ(Bytes(page.begin() + 104, page.end()), (Bytes{0, 0, 0, 0x6A}));
        }
        GlobalFree(dib);
    }
}

// Descriptors wrong in every way we know: 0 or, where the first plane is
// good, a page whose bit 3 is that plane; the code and status each leaves
// (27 and -1: untouched).
TEST(BadDescriptor, RefusedOrCutShort) {
    NamedFile p0("p0.bmp", PlaneFile(6, 3, Plane0)), p1("p1.bmp", PlaneFile(6, 3, Plane1));
    NamedFile p24("p24.bmp", PlaneFile(5, 2, nullptr, 24)), p8("p8.bmp", PlaneFile(40, 40, nullptr, 8));
    NamedFile tiny("tiny.bmp", {0x42});
    const std::string page1 = "[Page1]\r\nPlane0=p0.bmp\r\n";
    const std::string range = Head(4, 1, 4, 1, 3) + page1;  // pages 1 and 2
    const std::string self = "[Page1]\r\n" + PlaneKeys(0, 255, "bad.ini");  // a descriptor naming itself
    const struct {
        const char* what;
        std::string text;
        int page;
        bool givesPage;
        int code, status;
        const char* name = "bad.ini";
    } cases[] = {
        {"missing file", "", 1, false, 3, 3, "no-such.ini"},
        {"no name", "", 1, false, 3, 3, nullptr},
        {"empty", "", 1, false, 27, -1},
        {"one byte", "\x01", 1, false, 27, -1},
        {"keys missing", "[ColorFax]\r\nTotalPages=1\r\n" + page1, 1, false, 27, -1},
        {"no pages", "[ColorFax]\r\nPlanes=1\r\nFiles=1\r\nBitsPixel=1\r\n" + page1, 1, false, 27, -1},
        {"4 bits a pixel", Head(1, 4, 4, 4) + page1, 1, false, 27, -1},
        {"page past the end", range, 3, false, 27, -1},
        {"page 0", range, 0, false, 27, -1},
        {"page -1", range, -1, false, 27, -1},
        {"page INT_MIN", range, INT_MIN, false, 27, -1},
        {"page INT_MAX", range, INT_MAX, false, 27, -1},
        {"walk that would not end", Head(2000000, 3, 1000000), 50, false, 9, 9},
        {"first plane missing", Head(1, 2, 2) + "[Page1]\r\nPlane0=no.bmp\r\nPlane1=p1.bmp\r\n", 1, false, 9, 9},
        {"first plane one byte", Head(1, 2, 2) + "[Page1]\r\nPlane0=tiny.bmp\r\nPlane1=p1.bmp\r\n", 1, false, 9, 9},
        {"names itself, 1 plane", Head(1, 1, 1) + self, 1, false, 9, 9},
        {"names itself, 3 planes", Head(1, 3, 3) + self, 1, false, 9, 9},
        {"names itself, 255 planes", Head(1, 255, 255) + self, 1, false, 9, 9},
        // The nesting is cut off in bounded time; the nested pages that did
        // load are merged as 1-bit rows into the lower bits.
        {"names itself for later planes", Head(1, 255, 255) + page1 + PlaneKeys(1, 255, "bad.ini"), 1, true, 9, 9},
        // Merged as 1-bit rows without reaching outside either block.
        {"planes of the wrong depth", Head(1, 3, 3) + page1 + "Plane1=p24.bmp\r\nPlane2=p8.bmp\r\n", 1, true, 27, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        NamedFile descriptor("bad.ini", Text(c.text));
        int status = -1;
        prism::LastImgError = 27;
        HDIB dib = LoadColorFaxPage(c.name, c.page, &status);
        EXPECT_EQ(prism::LastImgError, c.code);
        EXPECT_EQ(status, c.status);
        ASSERT_EQ(dib != nullptr, c.givesPage);
        if (!dib) continue;
        Bytes page = BlockBytes(dib);
        EXPECT_EQ(page.size(), 104 + Stride(6, 4) * 3);
        EXPECT_EQ(Bytes(page.begin(), page.begin() + 104), PageHead(6, 3, 3786, 2003));
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(page, x, y) >> 3, Plane0(x, 2 - y)) << x << "," << y;
        GlobalFree(dib);
    }
}

// Pairs of source bits go to one target byte each, the first setting the
// high-nibble bit, the second the low; a row ends at its last pixel, so
// set bits in the padding behind it reach nothing.  Planes of other sizes
// and broken blocks stay inside both blocks.
TEST(FaxMerge, HandCheckedAndInsideTheBlocks) {
    const struct { int plane, width; unsigned char first; Bytes target; } cases[] = {
        {0, 8, 0xB1, {0x80, 0x88, 0, 0x08}},
        {1, 8, 0xB1, {0x40, 0x44, 0, 0x04}},
        {3, 8, 0xB1, {0x10, 0x11, 0, 0x01}},
        {4, 8, 0xB1, {0x08, 0x08, 0, 0}},  // planes past 3 set fewer bits
        {8, 8, 0xB1, {0, 0, 0, 0}},
        {-1, 8, 0xB1, {0, 0, 0, 0}},
        {0, 1, 0xFF, {0x80, 0, 0, 0}},
        {0, 3, 0xFF, {0x88, 0x80, 0, 0}},
        {0, 9, 0xFF, {0x88, 0x88, 0x88, 0x88, 0x80, 0, 0, 0}},
        {2, 15, 0xFF, {0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x20}},
    };
    for (const auto& c : cases) {
        HDIB page = prism::CreateFaxPageDib(c.width, 1, 0, 0);
        Bytes packed = PackedDib({c.width, 1, 1});
        packed[48] = c.first;
        for (size_t i = 49; i < packed.size(); ++i) packed[i] = 0xFF;  // later pixels and padding
        HDIB plane = BlockFrom(packed);
        EXPECT_EQ(prism::MergeFaxPlane(page, plane, c.plane), 1);
        Bytes bytes = BlockBytes(page);
        EXPECT_EQ(Bytes(bytes.begin() + 104, bytes.end()), c.target) << "plane " << c.plane << ", width " << c.width;
        GlobalFree(page);
        GlobalFree(plane);
    }
    EXPECT_EQ(prism::CreateFaxPageDib(-5, 3, 0, 0), nullptr);
    EXPECT_EQ(prism::CreateFaxPageDib(0x7FFFFFFF, 0x7FFFFFFF, 0, 0), nullptr);
    HDIB page = prism::CreateFaxPageDib(4, 2, 0, 0);
    // Taller and wider: the plane's last rows meet the page's, the rest is
    // dropped; wide rows run on into the next row of the page only.  The top
    // plane row (stored last) is all set: page row 1 gets 8 pixel bits, 2
    // bytes of its 4 and its padding; nothing lands in row 0.
    HDIB tall = BlockFrom(PackedDib({16, 5, 1}, [](int, int y) { return y == 0 ? 1u : 0u; }));
    EXPECT_EQ(prism::MergeFaxPlane(page, tall, 0), 1);
    Bytes bytes = BlockBytes(page);
    EXPECT_EQ(Bytes(bytes.begin() + 104, bytes.end()), (Bytes{0, 0, 0, 0, 0x88, 0x88, 0x88, 0x88}));
    // A header that claims 1000 rows on a block of one: reads past the end
    // see 0.
    Bytes packed = PackedDib({8, 1, 1}, [](int, int) { return 1u; });
    packed[8] = 0xE8, packed[9] = 0x03;
    HDIB cut = BlockFrom(packed), stub = BlockFrom({40, 0, 0, 0});
    EXPECT_EQ(prism::MergeFaxPlane(page, cut, 1), 1);
    EXPECT_EQ(prism::MergeFaxPlane(nullptr, cut, 0), 0);
    EXPECT_EQ(prism::MergeFaxPlane(page, nullptr, 0), 0);
    EXPECT_EQ(prism::MergeFaxPlane(page, stub, 0), 1);
    for (HDIB dib : {page, tall, cut, stub}) GlobalFree(dib);
}

}  // namespace
