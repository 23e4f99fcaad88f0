// Colour fax pages: descriptors with page and file sections, planes merged
// into a 4-bit page, and descriptors that are wrong in every way we know.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <ostream>

using namespace testing_support;
using namespace formats_test;

namespace {

using PlaneFn = unsigned (*)(int x, int y);  // y from the top

unsigned Plane0(int x, int y) { return (x + y) % 2; }
unsigned Plane1(int x, int y) { return (x / 2 + y) % 2; }
unsigned Plane2(int x, int y) { return (x * y) % 3 == 0; }
unsigned Plane3(int x, int) { return x % 3 == 0; }
const PlaneFn kPlanes[] = {Plane0, Plane1, Plane2, Plane3};

// A 1-bit BMP file with a resolution of its own, so the page can be seen
// to take the first plane's.
Bytes PlaneFile(int width, int height, PlaneFn fn, int bits = 1) {
    Bytes packed = PackedDib({width, height, bits}, fn);
    const int32_t dpm = 3780 + width;
    std::memcpy(&packed[24], &dpm, 4);
    std::memcpy(&packed[28], &dpm, 4);
    return BmpFile(packed);
}

// A descriptor file; its name is handed on as a full path.
class Descriptor {
public:
    explicit Descriptor(const std::string& text) : file_("fax") {
        file_.Write(Text(text));
        path_ = FullPath(file_.path());
    }
    const char* path() const { return path_.c_str(); }
    const char* relative() const { return file_.path(); }

private:
    ScratchFile file_;
    std::string path_;
};

unsigned Expected(int planes, int x, int yBottom, int height) {
    unsigned v = 0;
    for (int i = 0; i < planes; ++i) v |= kPlanes[i](x, height - 1 - yBottom) << (3 - i);
    return v;
}

const unsigned char kTable[16][3] = {{0, 0, 0},       {0, 0, 0},     {128, 0, 0},     {255, 0, 0},
                                     {0, 128, 0},     {0, 255, 0},   {128, 128, 0},   {255, 255, 0},
                                     {0, 0, 128},     {0, 0, 255},   {128, 0, 128},   {255, 0, 255},
                                     {0, 128, 128},   {0, 255, 255}, {128, 128, 128}, {255, 255, 255}};

void ExpectPageHeader(const Bytes& page, int width, int height, int dpm, int yDpm = -1) {
    ASSERT_GE(page.size(), 104u);
    BITMAPINFOHEADER h;
    std::memcpy(&h, page.data(), sizeof(h));
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, width);
    EXPECT_EQ(h.biHeight, height);
    EXPECT_EQ(h.biPlanes, 1);
    EXPECT_EQ(h.biBitCount, 4);
    EXPECT_EQ(h.biCompression, 0u);
    EXPECT_EQ(h.biSizeImage, Stride(width, 4) * height);
    EXPECT_EQ(h.biXPelsPerMeter, dpm);
    EXPECT_EQ(h.biYPelsPerMeter, yDpm < 0 ? dpm : yDpm);
    EXPECT_EQ(h.biClrUsed, 16u);
    EXPECT_EQ(h.biClrImportant, 16u);
    EXPECT_EQ(page.size(), 104 + h.biSizeImage);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(Bytes(page.begin() + 40 + 4 * i, page.begin() + 44 + 4 * i),
                  (Bytes{kTable[i][0], kTable[i][1], kTable[i][2], 0}))
            << "entry " << i;
}

// ---- page sections -----------------------------------------------------------------

struct MergeCase {
    int width;
    int planes;
};

void PrintTo(const MergeCase& c, std::ostream* os) { *os << "width " << c.width << ", " << c.planes << " planes"; }

class PageSections : public ::testing::TestWithParam<MergeCase> {};

// Page 2 of two, each plane in a file of its own, named in "Page2".
TEST_P(PageSections, MergesThePlanesOfThePage) {
    const MergeCase c = GetParam();
    const int height = 3;
    std::vector<std::unique_ptr<ScratchFile>> files;
    std::string text = "[ColorFax]\r\nTotalPages=2\r\nFirstPage=1\r\nBitsPixel=1\r\nPlanes=" +
                       std::to_string(c.planes) + "\r\nFiles=" + std::to_string(2 * c.planes) +
                       "\r\n[Page1]\r\nPlane0=no-such-plane.bmp\r\n[Page2]\r\n";
    for (int i = 0; i < c.planes; ++i) {
        files.push_back(std::make_unique<ScratchFile>("plane"));
        files.back()->Write(PlaneFile(c.width, height, kPlanes[i]));
        text += "Plane" + std::to_string(i) + "=" + FullPath(files.back()->path()) + "\r\n";
    }
    Descriptor descriptor(text);
    int status = -1;
    prism::LastImgError = 27;
    HDIB dib = LoadColorFaxPage(descriptor.path(), 2, &status);
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(prism::LastImgError, 27);
    Bytes page = BlockBytes(dib);
    ExpectPageHeader(page, c.width, height, 3780 + c.width);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < c.width; ++x)
            ASSERT_EQ(PixelAt(page, x, y), Expected(c.planes, x, y, height)) << x << "," << y;
    }
    GlobalFree(dib);
}

INSTANTIATE_TEST_SUITE_P(Widths, PageSections,
                         ::testing::Values(MergeCase{16, 3}, MergeCase{10, 3}, MergeCase{9, 3}, MergeCase{1, 2},
                                           MergeCase{24, 4}, MergeCase{13, 4}));

TEST(PageSections, MissingPlaneLeavesItsBitClear) {
    ScratchFile p0("plane"), p1("plane");
    p0.Write(PlaneFile(8, 2, Plane0));
    p1.Write(PlaneFile(8, 2, Plane1));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=3\r\nFiles=3\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                          FullPath(p0.path()) + "\r\nPlane1=" + FullPath(p1.path()) + "\r\n");
    int status = 0;
    HDIB dib = LoadColorFaxPage(descriptor.path(), 1, &status);
    ASSERT_NE(dib, nullptr);
    Bytes page = BlockBytes(dib);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(PixelAt(page, x, y), Expected(2, x, y, 2));
    EXPECT_EQ(status, 9);  // what the last load left
    GlobalFree(dib);
}

TEST(PageSections, OnePlaneComesBackAsLoaded) {
    ScratchFile plane("plane8");
    plane.Write(PlaneFile(5, 4, nullptr, 8));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=1\r\nFiles=1\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                          FullPath(plane.path()) + "\r\n");
    HDIB dib = LoadColorFaxPage(descriptor.path(), 1, nullptr);
    HDIB direct = LoadDIBFromFile(plane.path());
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(BlockBytes(dib), BlockBytes(direct));
    GlobalFree(dib);
    GlobalFree(direct);
}

// Pages count from 1 in the range test, and sections from "FirstPage".
TEST(PageSections, RangeAndSectionNumbers) {
    ScratchFile a("a"), b("b");
    a.Write(PlaneFile(3, 1, nullptr, 8));
    b.Write(PlaneFile(5, 1, nullptr, 8));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=4\r\nFirstPage=3\r\nPlanes=1\r\nFiles=4\r\nBitsPixel=1\r\n"
                          "[Page-1]\r\nPlane0=" + FullPath(a.path()) + "\r\n[Page0]\r\nPlane0=" +
                          FullPath(b.path()) + "\r\n[Page1]\r\nPlane0=" + FullPath(a.path()) + "\r\n");
    const std::pair<int, int> widths[] = {{1, 3}, {2, 5}};
    for (auto [pageNumber, width] : widths) {
        HDIB dib = LoadColorFaxPage(descriptor.path(), pageNumber, nullptr);
        ASSERT_NE(dib, nullptr) << pageNumber;
        EXPECT_EQ(BlockBytes(dib)[4], width) << pageNumber;
        GlobalFree(dib);
    }
    int status = -1;
    prism::LastImgError = 27;
    for (int pageNumber : {3, 4, 0, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(LoadColorFaxPage(descriptor.path(), pageNumber, &status), nullptr) << pageNumber;
    EXPECT_EQ(status, -1);
    EXPECT_EQ(prism::LastImgError, 27);
}

// ---- file sections -------------------------------------------------------------------

// Pages of two multi-page files, read by the TIFF stand-in, which makes an
// 8 x 1 plane whose pixel byte is the page it was asked for.
TEST(FileSections, WalkNumbersPagesAsTheFilesRun) {
    NamedFile f1("walk1.tif", {'I', 'I', 42, 0}), f2("walk2.tif", {'I', 'I', 42, 0});
    const std::string n1 = FullPath(f1.path()), n2 = FullPath(f2.path());
    Descriptor descriptor("[ColorFax]\r\nTotalPages=4\r\nFirstPage=1\r\nPlanes=3\r\nFiles=2\r\nBitsPixel=1\r\n"
                          "[File1]\r\nName=" + n1 + "\r\nPages=2\r\n[File2]\r\nName=" + n2 + "\r\nPages=2\r\n");
    struct Walk {
        int page;
        std::string file;
        int first;  // page in the file of plane 0
    };
    // A file's range reaches one page past its "Pages": page 3 points past
    // the end of the first file, and the second file starts at its page 4.
    const Walk walks[] = {{1, n1, 1}, {2, n1, 4}, {3, n1, 7}, {4, n2, 4}};
    for (const Walk& w : walks) {
        CallLog log;
        HDIB dib = LoadColorFaxPage(descriptor.path(), w.page, nullptr);
        ASSERT_NE(dib, nullptr) << w.page;
        std::vector<std::string> calls;
        for (const std::string& line : log.Lines())
            if (line.rfind("ALDER32.DLL|LoadAlderIntoDIB|", 0) == 0) calls.push_back(line.substr(29));
        ASSERT_EQ(calls.size(), 3u) << w.page;
        for (int i = 0; i < 3; ++i) {
            const std::string prefix = w.file + "|" + std::to_string(w.first + i) + "|null|";
            EXPECT_EQ(calls[i].rfind(prefix, 0), 0u) << calls[i];
        }
        if (w.page == 1) {
            // Planes hold bytes 1, 2 and 3: hand-merged, pixel 6 is green
            // and blue (6), pixel 7 red and blue (10), the rest black.
            Bytes page = BlockBytes(dib);
            EXPECT_EQ(Bytes(page.begin() + 104, page.end()), (Bytes{0, 0, 0, 0x6A}));
        }
        GlobalFree(dib);
    }
}

TEST(FileSections, WalkThatWouldNotEndIsRefused) {
    Descriptor descriptor("[ColorFax]\r\nTotalPages=2000000\r\nPlanes=3\r\nFiles=1000000\r\nBitsPixel=1\r\n");
    int status = 0;
    prism::LastImgError = 0;
    EXPECT_EQ(LoadColorFaxPage(descriptor.path(), 50, &status), nullptr);
    EXPECT_EQ(prism::LastImgError, 9);
    EXPECT_EQ(status, 9);
}

// ---- bad descriptors ---------------------------------------------------------------------

TEST(BadDescriptor, MissingFileIsCodeThree) {
    int status = 0;
    prism::LastImgError = 0;
    EXPECT_EQ(LoadColorFaxPage("no-such-descriptor.fax", 1, &status), nullptr);
    EXPECT_EQ(prism::LastImgError, 3);
    EXPECT_EQ(status, 3);
    status = 0;
    EXPECT_EQ(LoadColorFaxPage(nullptr, 1, &status), nullptr);
    EXPECT_EQ(status, 3);
}

TEST(BadDescriptor, RefusedWithoutCode) {
    ScratchFile plane("plane");
    plane.Write(PlaneFile(8, 1, Plane0));
    const std::string planeLine = "[Page1]\r\nPlane0=" + FullPath(plane.path()) + "\r\n";
    const std::string texts[] = {
        "[ColorFax]\r\nTotalPages=1\r\n",                                               // keys missing
        "[ColorFax]\r\nTotalPages=1\r\nPlanes=4\r\nFiles=4\r\nBitsPixel=4\r\n" + planeLine,  // not 1 bit
        "[ColorFax]\r\nPlanes=1\r\nFiles=1\r\nBitsPixel=1\r\n" + planeLine,             // no pages
        "",                                                                             // empty
        "\x01",                                                                         // one byte
    };
    for (const std::string& text : texts) {
        Descriptor descriptor(text);
        int status = -1;
        prism::LastImgError = 27;
        EXPECT_EQ(LoadColorFaxPage(descriptor.path(), 1, &status), nullptr) << text;
        EXPECT_EQ(status, -1);
        EXPECT_EQ(prism::LastImgError, 27);
    }
}

TEST(BadDescriptor, FirstPlaneThatFailsGivesZero) {
    ScratchFile tiny("tiny"), p1("plane");
    tiny.Write({0x42});
    p1.Write(PlaneFile(8, 1, Plane1));
    for (std::string first : {std::string("no-such-plane.bmp"), FullPath(tiny.path())}) {
        Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=2\r\nFiles=2\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                              first + "\r\nPlane1=" + FullPath(p1.path()) + "\r\n");
        int status = 0;
        EXPECT_EQ(LoadColorFaxPage(descriptor.path(), 1, &status), nullptr) << first;
        EXPECT_EQ(status, 9);
    }
}

// A descriptor naming itself as its plane file ends in a failure, both
// with one plane and with several, directly and through the dispatch.
TEST(BadDescriptor, NamingItselfEndsInFailure) {
    for (int planes : {1, 3, 255}) {
        ScratchFile file("self");
        const std::string self = FullPath(file.path());
        std::string text = "[ColorFax]\r\nTotalPages=1\r\nPlanes=" + std::to_string(planes) + "\r\nFiles=" +
                           std::to_string(planes) + "\r\nBitsPixel=1\r\n[Page1]\r\n";
        for (int i = 0; i < planes; ++i) text += "Plane" + std::to_string(i) + "=" + self + "\r\n";
        file.Write(Text(text));
        int status = 0;
        prism::LastImgError = 0;
        EXPECT_EQ(LoadColorFaxPage(self.c_str(), 1, &status), nullptr) << planes;
        EXPECT_EQ(prism::LastImgError, 9) << planes;
        EXPECT_EQ(status, 9) << planes;
        EXPECT_EQ(LoadImageIntoDIB(self.c_str(), 1, &status), nullptr) << planes;
    }
}

// A good first plane and every other plane the descriptor itself: the
// nesting is cut off and the page comes back, in bounded time, with plane 0
// as its bit 3 (the nested pages that did load are merged as 1-bit rows
// into the lower bits).
TEST(BadDescriptor, NamingItselfForLaterPlanes) {
    ScratchFile p0("plane"), file("self");
    p0.Write(PlaneFile(8, 2, Plane0));
    const std::string self = FullPath(file.path());
    std::string text = "[ColorFax]\r\nTotalPages=1\r\nPlanes=255\r\nFiles=255\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                       FullPath(p0.path()) + "\r\n";
    for (int i = 1; i < 255; ++i) text += "Plane" + std::to_string(i) + "=" + self + "\r\n";
    file.Write(Text(text));
    int status = 0;
    HDIB dib = LoadColorFaxPage(self.c_str(), 1, &status);
    ASSERT_NE(dib, nullptr);
    Bytes page = BlockBytes(dib);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(PixelAt(page, x, y) >> 3, Plane0(x, 1 - y)) << x << "," << y;
    EXPECT_EQ(status, 9);
    GlobalFree(dib);
}

// Planes of other depths and sizes are merged as 1-bit rows without
// reaching outside either block; plane 0 alone decides bit 3.
TEST(BadDescriptor, PlanesOfTheWrongDepth) {
    ScratchFile p0("plane"), p1("plane24"), p2("plane8");
    p0.Write(PlaneFile(6, 3, Plane0));
    p1.Write(PlaneFile(5, 2, nullptr, 24));
    p2.Write(PlaneFile(40, 40, nullptr, 8));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=3\r\nFiles=3\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                          FullPath(p0.path()) + "\r\nPlane1=" + FullPath(p1.path()) + "\r\nPlane2=" +
                          FullPath(p2.path()) + "\r\n");
    HDIB dib = LoadColorFaxPage(descriptor.path(), 1, nullptr);
    ASSERT_NE(dib, nullptr);
    Bytes page = BlockBytes(dib);
    ExpectPageHeader(page, 6, 3, 3786);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(PixelAt(page, x, y) >> 3, Plane0(x, 2 - y)) << x << "," << y;
    GlobalFree(dib);
}

// The library resolves a relative descriptor name against the working
// directory, so the profile reads look at the file the existence check saw.
TEST(Descriptors, RelativeNameIsTheWorkingDirectorysFile) {
    ScratchFile plane("plane");
    plane.Write(PlaneFile(8, 2, Plane0));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=1\r\nFiles=1\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                          std::string(plane.path()) + "\r\n");
    EXPECT_EQ(GetNumberOfImagesInFaxFile(descriptor.relative()), 1);
    HDIB dib = LoadColorFaxPage(descriptor.relative(), 1, nullptr);
    ASSERT_NE(dib, nullptr);
    GlobalFree(dib);
}

TEST(Descriptors, LoadImageIntoDibReachesTheFaxReader) {
    ScratchFile p0("plane"), p1("plane");
    p0.Write(PlaneFile(8, 2, Plane0));
    p1.Write(PlaneFile(8, 2, Plane1));
    Descriptor descriptor("[ColorFax]\r\nTotalPages=1\r\nPlanes=2\r\nFiles=2\r\nBitsPixel=1\r\n[Page1]\r\nPlane0=" +
                          FullPath(p0.path()) + "\r\nPlane1=" + FullPath(p1.path()) + "\r\n");
    ASSERT_EQ(GetImageFormat(descriptor.path()), PRISM_FORMAT_COLORFAX);
    int status = -1;
    HDIB viaDispatch = LoadImageIntoDIB(descriptor.path(), 1, &status);
    HDIB direct = LoadColorFaxPage(descriptor.path(), 1, nullptr);
    ASSERT_NE(viaDispatch, nullptr);
    EXPECT_EQ(BlockBytes(viaDispatch), BlockBytes(direct));
    EXPECT_EQ(status, -1);
    // The unsigned page of the dispatch turns negative here: out of range.
    EXPECT_EQ(LoadImageIntoDIB(descriptor.path(), 0xFFFFFFFFu, &status), nullptr);
    EXPECT_EQ(LoadImageIntoDIB(descriptor.path(), 0x80000000u, &status), nullptr);
    GlobalFree(viaDispatch);
    GlobalFree(direct);
}

// ---- the page and the merge, directly ----------------------------------------------------

TEST(FaxPage, CreateFillsHeaderAndTable) {
    HDIB dib = prism::CreateFaxPageDib(5, 3, 100, 200);
    ASSERT_NE(dib, nullptr);
    Bytes page = BlockBytes(dib);
    EXPECT_EQ(page.size(), 104u + 12u);
    EXPECT_EQ(Bytes(page.begin() + 104, page.end()), Bytes(12, 0));
    ExpectPageHeader(page, 5, 3, 100, 200);
    GlobalFree(dib);
    EXPECT_EQ(prism::CreateFaxPageDib(-5, 3, 0, 0), nullptr);
    EXPECT_EQ(prism::CreateFaxPageDib(0x7FFFFFFF, 0x7FFFFFFF, 0, 0), nullptr);
}

struct BitCase {
    int plane;
    Bytes target;  // four bytes from source byte 10110001
};

void PrintTo(const BitCase& c, std::ostream* os) { *os << "plane " << c.plane; }

class MergeBits : public ::testing::TestWithParam<BitCase> {};

// Pairs of source bits go to one target byte each: the first sets the
// high-nibble bit, the second the low-nibble bit.
TEST_P(MergeBits, HandChecked) {
    HDIB page = prism::CreateFaxPageDib(8, 1, 0, 0);
    HDIB plane = BlockFrom(PackedDib({8, 1, 1}, [](int x, int) { return (0xB1u >> (7 - x)) & 1; }));
    EXPECT_EQ(prism::MergeFaxPlane(page, plane, GetParam().plane), 1);
    Bytes bytes = BlockBytes(page);
    EXPECT_EQ(Bytes(bytes.begin() + 104, bytes.end()), GetParam().target);
    GlobalFree(page);
    GlobalFree(plane);
}

INSTANTIATE_TEST_SUITE_P(Planes, MergeBits,
                         ::testing::Values(BitCase{0, {0x80, 0x88, 0x00, 0x08}}, BitCase{1, {0x40, 0x44, 0, 0x04}},
                                           BitCase{3, {0x10, 0x11, 0, 0x01}},
                                           BitCase{4, {0x08, 0x08, 0, 0}},  // planes past 3 set fewer bits
                                           BitCase{8, {0, 0, 0, 0}}, BitCase{-1, {0, 0, 0, 0}},
                                           BitCase{100, {0, 0, 0, 0}}));

// An odd width ends at the row's last pixel: set padding bits behind it
// in the plane do not reach the page.
TEST(FaxMerge, OddWidthStopsAtTheRowsEnd) {
    for (int width : {1, 3, 9, 15}) {
        HDIB page = prism::CreateFaxPageDib(width, 1, 0, 0);
        Bytes packed = PackedDib({width, 1, 1}, [](int, int) { return 1u; });
        for (size_t i = 48; i < packed.size(); ++i) packed[i] = 0xFF;  // padding too
        HDIB plane = BlockFrom(packed);
        EXPECT_EQ(prism::MergeFaxPlane(page, plane, 0), 1);
        Bytes bytes = BlockBytes(page);
        for (int x = 0; x < 2 * static_cast<int>(Stride(width, 4)); ++x)
            EXPECT_EQ(PixelAt(bytes, x, 0), x < width ? 8u : 0u) << width << " " << x;
        GlobalFree(page);
        GlobalFree(plane);
    }
}

TEST(FaxMerge, TallerWiderAndTruncatedPlanesStayInside) {
    HDIB page = prism::CreateFaxPageDib(4, 2, 0, 0);
    // Taller and wider: the plane's last rows meet the page's, the rest is
    // dropped; wide rows run on into the next row of the page only.
    HDIB tall = BlockFrom(PackedDib({16, 5, 1}, [](int, int y) { return y == 0 ? 1u : 0u; }));
    EXPECT_EQ(prism::MergeFaxPlane(page, tall, 0), 1);
    Bytes bytes = BlockBytes(page);
    // Top plane row (stored last) is all set: page row 1 gets 8 pixel bits,
    // 2 bytes of row 1's 4 and its padding; nothing lands in row 0.
    EXPECT_EQ(Bytes(bytes.begin() + 104, bytes.end()), (Bytes{0, 0, 0, 0, 0x88, 0x88, 0x88, 0x88}));
    // A header that claims 1000 rows on a block of one: reads past the end
    // see 0.
    Bytes packed = PackedDib({8, 1, 1}, [](int, int) { return 1u; });
    packed[8] = 0xE8, packed[9] = 0x03;
    HDIB cut = BlockFrom(packed);
    EXPECT_EQ(prism::MergeFaxPlane(page, cut, 1), 1);
    EXPECT_EQ(prism::MergeFaxPlane(nullptr, cut, 0), 0);
    EXPECT_EQ(prism::MergeFaxPlane(page, nullptr, 0), 0);
    HDIB stub = BlockFrom({40, 0, 0, 0});
    EXPECT_EQ(prism::MergeFaxPlane(page, stub, 0), 1);
    GlobalFree(page);
    GlobalFree(tall);
    GlobalFree(cut);
    GlobalFree(stub);
}

}  // namespace
