// Printing on a real printer of the graphics system (the PostScript driver,
// writing to a file): placement read from the PostScript and from the page
// as ghostscript renders it, pages and copies, the job's dialogs driven
// from a watchdog thread, cancelling, and bad input.
#include "device/test_printer.h"
#include "print/print_ids.h"
#include "print/print_job_state.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using namespace testing_support;

namespace {

// A w x h 8-bit DIB at 300 dots per inch: top half black, bottom half grey.
HDIB TwoTone(int w, int h, int headerSize = 40) {
    const size_t stride = (static_cast<size_t>(w) + 3) & ~size_t{3};
    Bytes b(40 + 8 + stride * h, 0);
    const std::uint32_t fields[] = {static_cast<std::uint32_t>(headerSize), static_cast<std::uint32_t>(w),
                                    static_cast<std::uint32_t>(h), 1 | 8 << 16, 0, 0, 11811, 11811, 2, 0};
    std::memcpy(b.data(), fields, sizeof fields);
    b[44] = b[45] = b[46] = 96;  // entry 1: grey; entry 0 stays black
    for (int y = 0; y < h / 2; ++y) std::memset(&b[48 + stride * y], 1, w);  // bottom rows first
    return BlockFrom(b);
}

PrintOptions Options(int copies = 1) {
    PrintOptions o = {};
    o.Copies = copies;
    return o;
}

class PrintJobTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string why;
        ASSERT_TRUE(InstallTestPrinter(&why)) << why;
        DeleteFileA(PrinterOutput().c_str());
    }
    // One job of one image on the test printer; the page's result.
    int PrintOne(PrintOptions o, HDIB dib, const int* dpi = nullptr, int x = 0, int y = 0) {
        EXPECT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "C:\\docs\\page.bmp", 1), 0);
        const int page = PrintDIBPage(dib, dpi, 0, 0, x, y);
        EXPECT_EQ(EndPrint(nullptr), 0);
        return page;
    }
};

void ExpectNear(const RECT& got, const RECT& want, const char* what) {
    EXPECT_NEAR(got.left, want.left, 1) << what;
    EXPECT_NEAR(got.top, want.top, 1) << what;
    EXPECT_NEAR(got.right, want.right, 1) << what;
    EXPECT_NEAR(got.bottom, want.bottom, 1) << what;
}

TEST_F(PrintJobTest, PlacesTheImageOnThePage) {
    const int dpi150[2] = {150, 150}, dpi30[2] = {30, 30};
    struct Case {
        const char* name;
        int w, h;
        int scale, stretch, centre, imageDpi;
        const int* dpi;
        int x, y;
        RECT dots;  // where the image lands, device dots (300 per inch)
    } cases[] = {
        {"a pixel a dot", 300, 150, 0, 0, 0, 0, nullptr, 0, 0, {0, 0, 300, 150}},
        {"centred", 300, 150, 0, 0, 1, 0, nullptr, 0, 0, {1125, 1575, 1425, 1725}},
        {"scaled to fit", 300, 150, 1, 0, 0, 0, nullptr, 0, 0, {0, 0, 2550, 1275}},
        {"stretched", 300, 150, 0, 1, 0, 0, nullptr, 0, 0, {0, 0, 2550, 3300}},
        {"image dpi", 300, 150, 0, 0, 0, 1, dpi150, 0, 0, {0, 0, 600, 300}},
        {"offsets", 300, 150, 0, 0, 0, 0, nullptr, 100, 200, {100, 200, 400, 350}},
        {"banded (scale 0.85)", 300, 300, 1, 0, 0, 1, dpi30, 0, 0, {0, 0, 2550, 2550}},
        {"far wider than the page", 3000, 200, 0, 0, 0, 0, nullptr, 0, 0, {0, 0, 2550, 200}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeleteFileA(PrinterOutput().c_str());
        PrintOptions o = Options();
        o.ScaleToFit = c.scale;
        o.StretchToFit = c.stretch;
        o.CenterHorizontally = o.CenterVertically = c.centre;
        o.UseImageDPI = c.imageDpi;
        HDIB dib = TwoTone(c.w, c.h);
        EXPECT_EQ(PrintOne(o, dib, c.dpi, c.x, c.y), 0);
        GlobalFree(dib);
        const Printed p = ReadPrinted();
        EXPECT_EQ(p.title, "page.bmp");
        EXPECT_EQ(p.pages, 1);
        ASSERT_EQ(p.stretches.size(), 1u);
        const Stretch& s = p.stretches[0];
        ExpectNear({s.x, s.y, s.x + s.width, s.y + s.height}, c.dots, "PostScript");
        // The whole image is the source, unless the page cuts it.
        EXPECT_EQ(s.sourceWidth, c.w > 2550 ? 2550 : c.w);
        EXPECT_EQ(s.sourceHeight, c.h);
        Rendered page;
        std::string why;
        ASSERT_TRUE(RenderPage(1, &page, &why)) << why;
        const RECT box = DarkBox(page);
        ExpectNear(box, c.dots, "rendered");
        // Rows run the right way up: black on top, grey below.
        const int mx = (box.left + box.right) / 2, h = box.bottom - box.top;
        EXPECT_LT(page.at(mx, box.top + h / 4), 40);
        EXPECT_NEAR(page.at(mx, box.bottom - 1 - h / 4), 96, 20);
    }
}

}  // namespace
