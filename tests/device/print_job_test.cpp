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
#include <vector>

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
        int edge;   // first grey row on the page
    } cases[] = {
        {"a pixel a dot", 300, 150, 0, 0, 0, 0, nullptr, 0, 0, {0, 0, 300, 150}, 75},
        {"centred", 300, 150, 0, 0, 1, 0, nullptr, 0, 0, {1125, 1575, 1425, 1725}, 1650},
        {"scaled to fit", 300, 150, 1, 0, 0, 0, nullptr, 0, 0, {0, 0, 2550, 1275}, 638},
        {"stretched", 300, 150, 0, 1, 0, 0, nullptr, 0, 0, {0, 0, 2550, 3300}, 1650},
        {"image dpi", 300, 150, 0, 0, 0, 1, dpi150, 0, 0, {0, 0, 600, 300}, 150},
        {"offsets", 300, 150, 0, 0, 0, 0, nullptr, 100, 200, {100, 200, 400, 350}, 275},
        {"banded (scale 0.85)", 300, 300, 1, 0, 0, 1, dpi30, 0, 0, {0, 0, 2550, 2550}, 1275},
        {"far wider than the page", 3000, 200, 0, 0, 0, 0, nullptr, 0, 0, {0, 0, 2550, 200}, 100},
        // Cut at the page's foot: the top 3300 rows show, black down to 2000.
        {"far taller than the page", 100, 4000, 0, 0, 0, 0, nullptr, 0, 0, {0, 0, 100, 3300}, 2000},
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
        EXPECT_EQ(s.sourceHeight, c.h > 3300 ? 3300 : c.h);
        Rendered page;
        std::string why;
        ASSERT_TRUE(RenderPage(1, &page, &why)) << why;
        const RECT box = DarkBox(page);
        ExpectNear(box, c.dots, "rendered");
        // Rows run the right way up: black on top, grey from `edge` down.
        const int mx = (box.left + box.right) / 2;
        int edge = box.top;
        while (edge < box.bottom && page.at(mx, edge) < 48) ++edge;
        EXPECT_NEAR(edge, c.edge, 1);
        EXPECT_NEAR(page.at(mx, box.bottom - 1), 96, 20);
    }
}

TEST_F(PrintJobTest, PagesAndCopies) {
    HDIB dib = TwoTone(300, 300);
    const int dpi30[2] = {30, 30};  // 10 inches square: scaled to fit by 0.85, banded
    struct Case {
        const char* name;
        int copies, fit;
        bool secondImage, sameSheet;
        int pages;
        std::vector<int> stretchPages;
    } cases[] = {
        {"no copies", 0, 0, false, false, 0, {}},
        {"negative copies", -2, 0, false, false, 0, {}},
        // This driver ignores a second StartPage while a page is open, so
        // unbanded copies land on one sheet; a real printer feeds one each.
        {"three copies", 3, 0, false, false, 1, {1, 1, 1}},
        // The band escape closes the page itself after the last band.
        {"two banded copies", 2, 1, false, false, 2, {1, 2}},
        {"two images, two sheets", 1, 0, true, false, 2, {1, 2}},
        {"two images, one sheet", 1, 0, true, true, 1, {1, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeleteFileA(PrinterOutput().c_str());
        PrintOptions o = Options(c.copies);
        o.ScaleToFit = o.UseImageDPI = c.fit;
        ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "pages", 2), 0);
        EXPECT_EQ(PrintDIBPage(dib, dpi30, 0, 0, 0, 0), 0);
        if (c.sameSheet) PrintPageContinue();
        if (c.secondImage) {
            EXPECT_EQ(PrintDIBPage(dib, dpi30, 0, 1, 0, 0), 0);
        }
        EXPECT_EQ(EndPrint(nullptr), 0);
        const Printed p = ReadPrinted();
        EXPECT_EQ(p.pages, c.pages);
        EXPECT_EQ(p.stretchPage, c.stretchPages);
    }
    GlobalFree(dib);
}

TEST_F(PrintJobTest, RefusedImagesAndPrinters) {
    HDIB good = TwoTone(8, 8);
    HDIB freed = TwoTone(8, 8);
    GlobalFree(freed);
    HDIB core = TwoTone(8, 8, 12);
    HDIB shortBlock = BlockFrom(Bytes(60, 0));
    reinterpret_cast<std::uint32_t*>(GlobalLock(shortBlock))[0] = 40;
    reinterpret_cast<std::int32_t*>(GlobalLock(shortBlock))[1] = 100;  // 100 x 100 claimed
    reinterpret_cast<std::int32_t*>(GlobalLock(shortBlock))[2] = 100;
    GlobalUnlock(shortBlock), GlobalUnlock(shortBlock), GlobalUnlock(shortBlock);
    const std::string device = TestPrinterDevice();
    const std::string noPrinter = "NoSuchPrinter,WINEPS.DRV," + PrinterOutput();
    struct Case {
        const char* name;
        const char* device;  // "device" of "windows"; null: none
        HDIB dib;
        int result, stretches;
    } cases[] = {
        {"default printer", device.c_str(), good, 0, 1},
        {"no default printer", nullptr, good, 23, 0},
        {"name only", "PrismTestPrinter", good, 23, 0},
        {"printer not installed", noPrinter.c_str(), good, 23, 0},
        // A refused image prints nothing; the job still ends cleanly.
        {"null image", device.c_str(), nullptr, 0, 0},
        {"freed image", device.c_str(), freed, 0, 0},
        {"core header", device.c_str(), core, 0, 0},
        {"rows past the block", device.c_str(), shortBlock, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeleteFileA(PrinterOutput().c_str());
        DefaultPrinter printer(c.device);
        PrintOptions o = Options();
        EXPECT_EQ(PrintDIB(nullptr, nullptr, c.dib, "doc", nullptr, &o, 0), c.result);
        EXPECT_EQ(ReadPrinted().stretches.size(), static_cast<size_t>(c.stretches));
    }
    // The page itself refuses an image it cannot draw.
    PrintOptions o = Options();
    ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "doc", 1), 0);
    EXPECT_EQ(PrintDIBPage(core, nullptr, 0, 0, 0, 0), -1);
    EXPECT_EQ(EndPrint(nullptr), 0);
    GlobalFree(good), GlobalFree(core), GlobalFree(shortBlock);
}

TEST_F(PrintJobTest, BitmapsAndTheCompatibleContext) {
    PrintOptions o = Options();
    HBITMAP bitmap = CreateBitmap(30, 20, 1, 1, nullptr);
    HDC dc = CreateTestPrinterDC();
    EXPECT_EQ(PrintImage(nullptr, dc, bitmap, nullptr, "bitmap", nullptr, &o, 0), 0);
    EXPECT_EQ(GetObjectType(dc), 0u);  // handed over and deleted
    const Printed p = ReadPrinted();
    ASSERT_EQ(p.stretches.size(), 1u);
    EXPECT_EQ(p.stretches[0].width, 30);
    EXPECT_EQ(PrintImage(nullptr, nullptr, nullptr, nullptr, "none", nullptr, &o, 0), 1);
    DeleteObject(bitmap);
    // Drawing into a memory context made from the printer's: both go at
    // the end when the host hands its context over.
    o.UseCompatibleDC = 1;
    dc = CreateTestPrinterDC();
    ASSERT_EQ(PrepareToPrint(nullptr, dc, &o, "memory", 1), 0);
    HDC memory = prism::PrintJob.PrintDC;
    EXPECT_NE(memory, dc);
    HDIB dib = TwoTone(10, 10);
    EXPECT_EQ(PrintDIBPage(dib, nullptr, 0, 0, 0, 0), 0);
    EXPECT_EQ(EndPrint(dc), 0);
    EXPECT_EQ(GetObjectType(dc), 0u);
    EXPECT_EQ(GetObjectType(memory), 0u);
    GlobalFree(dib);
}

// A host window that starts a second job while the first one prints, from
// the abort procedure's message loop.
struct Reentry {
    HDIB dib;
    int prepare = 99, printDib = 99, calls = 0;
};
LRESULT CALLBACK ReentryWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcA(window, message, wParam, lParam);
    auto* r = reinterpret_cast<Reentry*>(lParam);
    PrintOptions o = Options();
    r->prepare = PrepareToPrint(nullptr, nullptr, &o, "inner", 1);
    HDC inner = CreateTestPrinterDC();
    r->printDib = PrintDIB(nullptr, inner, r->dib, "inner", nullptr, &o, 0);
    DeleteDC(inner);
    ++r->calls;
    return 0;
}

TEST_F(PrintJobTest, OneJobAtATime) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = ReentryWindow;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "PrismPrintReentry";
    RegisterClassA(&wc);
    HWND window = CreateWindowA(wc.lpszClassName, "", 0, 0, 0, 1, 1, nullptr, nullptr, wc.hInstance, nullptr);
    Reentry r{TwoTone(30, 30)};
    PrintOptions o = Options();
    HDC dc = CreateTestPrinterDC();
    ASSERT_EQ(PrepareToPrint(nullptr, dc, &o, "outer", 1), 0);
    PostMessageA(window, WM_APP, 0, reinterpret_cast<LPARAM>(&r));
    EXPECT_EQ(PrintDIBPage(r.dib, nullptr, 0, 0, 0, 0), 0);
    EXPECT_EQ(r.calls, 1);
    EXPECT_EQ(r.prepare, -1);
    EXPECT_EQ(r.printDib, -1);
    EXPECT_EQ(EndPrint(nullptr), 0);
    EXPECT_EQ(GetObjectType(dc), 0u);  // the job's context is gone
    const Printed p = ReadPrinted();
    EXPECT_EQ(p.title, "outer");
    EXPECT_EQ(p.stretches.size(), 1u);
    // A second EndPrint finds no job and leaves new contexts alone.
    HDC other = CreateTestPrinterDC();
    EXPECT_EQ(EndPrint(nullptr), -1);
    EXPECT_NE(GetObjectType(other), 0u);
    DeleteDC(other);
    DestroyWindow(window);
    GlobalFree(r.dib);
}

TEST_F(PrintJobTest, AbortProcedure) {
    using prism::PrintJob;
    struct Case {
        int userAbort, code;
        BOOL answer;
        int printError, userAbortAfter;
        bool pumps;
    } cases[] = {
        {0, 0, TRUE, 7, 0, true},       // goes on, hands messages on, PrintError untouched
        {0, -3, FALSE, -3, 1, false},   // the spooler stops the job
        {1, 0, FALSE, 0, 1, false},     // cancelled before: stays stopped
    };
    for (const Case& c : cases) {
        PrintJob.UserAbort = c.userAbort;
        PrintJob.PrintError = 7;
        PrintJob.CancelDialog = nullptr;
        PostThreadMessageA(GetCurrentThreadId(), WM_APP + 1, 0, 0);
        EXPECT_EQ(PrintAbortProc(nullptr, c.code), c.answer);
        EXPECT_EQ(PrintJob.PrintError, c.printError);
        EXPECT_EQ(PrintJob.UserAbort, c.userAbortAfter);
        MSG m;
        EXPECT_EQ(PeekMessageA(&m, nullptr, WM_APP + 1, WM_APP + 1, PM_REMOVE) == 0, c.pumps) << c.code;
    }
    PrintJob.UserAbort = 0;
}

}  // namespace
