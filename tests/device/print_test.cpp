// Printing on a real printer of the graphics system (the PostScript driver,
// writing to a file): placement read from the PostScript, pages and copies, one job at a time, the
// abort procedure and bad input; the job's dialogs driven as a user would,
// from a watchdog thread, and their templates as resources of the DLL.
#include "device/test_printer.h"
#include "print/print_ids.h"
#include "print/print_job_state.h"
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace testing_support;

namespace {

// Text of a window, of a dialog control, of a list box line up to its
// tab, whether a button is checked, and a button pressed (or a
// notification sent) as a user would.
std::string TextOf(HWND window) {
    char text[512] = {};
    SendMessageA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}
std::string ControlText(HWND dialog, int id) { return TextOf(GetDlgItem(dialog, id)); }
std::string ListText(HWND dialog, int id, LRESULT index) {
    char text[512] = {};
    SendDlgItemMessageA(dialog, id, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
    return std::string(text, std::strcspn(text, "\t"));
}
bool Checked(HWND dialog, int id) { return SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED; }
void Press(HWND dialog, int id, int notification = BN_CLICKED) {
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

// One copy, no dialog, at the image's size from the top left.
constexpr PrintOptions kPlain = {0, 0, 0, 0, 1, 0, 0, 0, 0};

class PrintJobTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string why;
        ASSERT_TRUE(InstallTestPrinter(&why)) << why;
        DeleteFileA(PrinterOutput().c_str());
    }
};

using Texts = std::vector<std::string>;
using V = std::vector<int>;

// An 8-bit DIB at 300 dots per inch, with a header of headerSize bytes.
HDIB Dib300(int width, int height, int headerSize = 40) {
    return BlockFrom(With(With(With(PackedDib({width, height, 8}), 24, 11811), 28, 11811), 0, headerSize));
}

// What the printer wrote: its title, pages, and each image drawn, read
// from "x y translate", "w h scale" (device dots) and its dictionary's
// source size; the page of each image, from 1.
struct Stretch { int x, y, width, height, sourceWidth, sourceHeight; };
struct Printed {
    std::string title;
    int pages = 0;
    std::vector<Stretch> stretches;
    std::vector<int> stretchPage;
};
Printed ReadPrinted() {
    std::ifstream in(PrinterOutput(), std::ios::binary);
    const std::string t((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Printed p;
    const size_t title = t.find("%%Title: ");
    if (title != std::string::npos) p.title = t.substr(title + 9, t.find('\n', title) - title - 9);
    for (size_t at = t.find('\n'); at != std::string::npos; at = t.find('\n', at + 1)) {
        if (t.compare(at, 9, "\n%%Page: ") == 0) ++p.pages;
        char* e = nullptr;
        const double x = std::strtod(t.c_str() + at, &e), y = std::strtod(e, &e);
        if (std::strncmp(e, " translate\n", 11) != 0) continue;
        const double w = std::strtod(e + 11, &e), h = std::strtod(e, &e);
        // The page's own set-up also translates and scales; images follow with a dictionary.
        const size_t dict = static_cast<size_t>(e - t.c_str()), wAt = t.find("/Width ", dict), hAt = t.find("/Height ", dict);
        if (std::strncmp(e, " scale\n<<", 9) != 0 || wAt == std::string::npos || hAt == std::string::npos) continue;
        p.stretches.push_back({int(std::lround(x)), int(std::lround(y)), int(std::lround(w)), int(std::lround(h)),
                               std::atoi(t.c_str() + wAt + 7), std::atoi(t.c_str() + hAt + 8)});
        p.stretchPage.push_back(p.pages);
    }
    return p;
}

// One job of one image, or of two on two sheets or on one: where the
// first stretch lands, on which sheet each stretch is drawn, and how much
// of the image is its source.  This driver ignores a second StartPage
// while a page is open, so unbanded copies land on one sheet (a real
// printer feeds one each); the band escape closes the page itself after
// the last band.
TEST_F(PrintJobTest, PlacesPagesAndCopies) {
    const int dpi150[2] = {150, 150}, dpi30[2] = {30, 30};
    struct Case {
        const char* name;
        int w, h;
        PrintOptions o;  // dialog, centre down and across, fit, copies, -, stretch, -, image dpi
        const int* dpi;
        int x, y, images;  // images: 2 on two sheets, -2 on one
        RECT dots;         // where the first stretch lands, device dots (300 per inch)
        V sheets;          // the sheet of each stretch, from 1
    } cases[] = {
        {"a pixel a dot", 300, 150, kPlain, nullptr, 0, 0, 1, {0, 0, 300, 150}, {1}},
        {"centred", 300, 150, {0, 1, 1, 0, 1, 0, 0, 0, 0}, nullptr, 0, 0, 1, {1125, 1575, 1425, 1725}, {1}},
        {"stretched", 300, 150, {0, 0, 0, 0, 1, 0, 1, 0, 0}, nullptr, 0, 0, 1, {0, 0, 2550, 3300}, {1}},
        {"image dpi", 300, 150, {0, 0, 0, 0, 1, 0, 0, 0, 1}, dpi150, 0, 0, 1, {0, 0, 600, 300}, {1}},
        {"offsets", 300, 150, kPlain, nullptr, 100, 200, 1, {100, 200, 400, 350}, {1}},
        {"far wider than the page", 3000, 200, kPlain, nullptr, 0, 0, 1, {0, 0, 2550, 200}, {1}},
        {"far taller than the page", 100, 4000, kPlain, nullptr, 0, 0, 1, {0, 0, 100, 3300}, {1}},
        {"no copies", 300, 150, {0, 0, 0, 0, 0, 0, 0, 0, 0}, nullptr, 0, 0, 1, {}, {}},
        {"negative copies", 300, 150, {0, 0, 0, 0, -2, 0, 0, 0, 0}, nullptr, 0, 0, 1, {}, {}},
        {"three copies", 300, 150, {0, 0, 0, 0, 3, 0, 0, 0, 0}, nullptr, 0, 0, 1, {0, 0, 300, 150}, {1, 1, 1}},
        // 10 inches square scaled to fit by 0.85: banded.
        {"two banded copies", 300, 300, {0, 0, 0, 1, 2, 0, 0, 0, 1}, dpi30, 0, 0, 1, {0, 0, 2550, 2550}, {1, 2}},
        {"two images, two sheets", 300, 150, kPlain, nullptr, 0, 0, 2, {0, 0, 300, 150}, {1, 2}},
        {"two images, one sheet", 300, 150, kPlain, nullptr, 0, 0, -2, {0, 0, 300, 150}, {1, 1}},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeleteFileA(PrinterOutput().c_str());
        HDIB dib = Dib300(c.w, c.h);
        ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &c.o, "C:\\docs\\page.bmp", 2), 0);
        EXPECT_EQ(PrintDIBPage(dib, c.dpi, 0, 0, c.x, c.y), 0);
        if (c.images < 0) PrintPageContinue();
        EXPECT_EQ(V({c.images == 1 ? 0 : PrintDIBPage(dib, c.dpi, 0, 1, c.x, c.y), EndPrint(nullptr)}), V({0, 0}));
        GlobalFree(dib);
        const Printed p = ReadPrinted();
        EXPECT_EQ(p.title, "page.bmp");
        EXPECT_EQ(p.pages, c.sheets.empty() ? 0 : c.sheets.back());
        EXPECT_EQ(p.stretchPage, c.sheets);
        if (p.stretches.empty()) continue;
        const Stretch& s = p.stretches[0];
        const RECT& d = c.dots;  // each side within a dot
        EXPECT_LE(std::max({std::abs(s.x - d.left), std::abs(s.y - d.top), std::abs(s.x + s.width - d.right),
                            std::abs(s.y + s.height - d.bottom)}), 1) << s.x << "," << s.y << " " << s.width;
        // The whole image is the source, unless the page cuts it.
        EXPECT_EQ(V({s.sourceWidth, s.sourceHeight}), V({std::min(c.w, 2550), std::min(c.h, 3300)}));
    }
}

TEST_F(PrintJobTest, RefusedImagesAndPrinters) {
    HDIB good = Dib300(8, 8), freed = Dib300(8, 8), core = Dib300(8, 8, 12);
    GlobalFree(freed);
    Bytes claims(60, 0);  // 100 x 100 claimed in 60 bytes
    Put32(claims, 0, 40), Put32(claims, 4, 100), Put32(claims, 8, 100);
    HDIB shortBlock = BlockFrom(claims);
    const std::string device = TestPrinterDevice(), noPrinter = "NoSuchPrinter,WINEPS.DRV," + PrinterOutput();
    struct Case {
        const char *name, *device;  // device: "device" of "windows", null for none
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
        PrintOptions o = kPlain;
        EXPECT_EQ(PrintDIB(nullptr, nullptr, c.dib, "doc", nullptr, &o, 0), c.result);
        EXPECT_EQ(ReadPrinted().stretches.size(), static_cast<size_t>(c.stretches));
    }
    // The page itself refuses an image it cannot draw.
    PrintOptions o = kPlain;
    ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "doc", 1), 0);
    EXPECT_EQ(PrintDIBPage(core, nullptr, 0, 0, 0, 0), -1);
    EXPECT_EQ(EndPrint(nullptr), 0);
    GlobalFree(good), GlobalFree(core), GlobalFree(shortBlock);
}

TEST_F(PrintJobTest, BitmapsAndTheCompatibleContext) {
    PrintOptions o = kPlain;
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
    HDIB dib = Dib300(10, 10);
    EXPECT_EQ(V({PrintDIBPage(dib, nullptr, 0, 0, 0, 0), EndPrint(dc), int(GetObjectType(dc)),
                 int(GetObjectType(memory))}),
              V({0, 0, 0, 0}));
    GlobalFree(dib);
}

// A host window starts a second job while the first one prints, from the
// abort procedure's message loop: both calls are refused.
TEST_F(PrintJobTest, OneJobAtATime) {
    HDIB dib = Dib300(30, 30);
    int prepare = 99, printDib = 99, calls = 0;
    TestWindow window([&](HWND, UINT message, WPARAM, LPARAM, LRESULT*) {
        if (message != WM_APP) return false;
        PrintOptions o = kPlain;
        prepare = PrepareToPrint(nullptr, nullptr, &o, "inner", 1);
        HDC inner = CreateTestPrinterDC();
        printDib = PrintDIB(nullptr, inner, dib, "inner", nullptr, &o, 0);
        DeleteDC(inner);
        return ++calls, true;
    });
    PrintOptions o = kPlain;
    HDC dc = CreateTestPrinterDC();
    ASSERT_EQ(PrepareToPrint(nullptr, dc, &o, "outer", 1), 0);
    PostMessageA(window.get(), WM_APP, 0, 0);
    EXPECT_EQ(PrintDIBPage(dib, nullptr, 0, 0, 0, 0), 0);
    EXPECT_EQ(V({calls, prepare, printDib, EndPrint(nullptr), int(GetObjectType(dc))}), V({1, -1, -1, 0, 0}));
    const Printed p = ReadPrinted();
    EXPECT_EQ(p.title + " " + std::to_string(p.stretches.size()), "outer 1");
    // A second EndPrint finds no job and leaves new contexts alone.
    HDC other = CreateTestPrinterDC();
    EXPECT_EQ(EndPrint(nullptr), -1);
    EXPECT_NE(GetObjectType(other), 0u);
    DeleteDC(other);
    GlobalFree(dib);
}

TEST_F(PrintJobTest, AbortProcedure) {
    using prism::PrintJob;
    const struct { int userAbort, code; BOOL answer; int printError, userAbortAfter; bool pumps; } cases[] = {
        {0, 0, TRUE, 7, 0, true},      // goes on, hands messages on, PrintError untouched
        {0, -3, FALSE, -3, 1, false},  // the spooler stops the job
        {1, 0, FALSE, 0, 1, false},    // cancelled before: stays stopped
    };
    for (const auto& c : cases) {
        PrintJob.UserAbort = c.userAbort;
        PrintJob.PrintError = 7;
        PrintJob.CancelDialog = nullptr;
        PostThreadMessageA(GetCurrentThreadId(), WM_APP + 1, 0, 0);
        EXPECT_EQ(PrintAbortProc(nullptr, c.code), c.answer);
        EXPECT_EQ(V({PrintJob.PrintError, PrintJob.UserAbort}), V({c.printError, c.userAbortAfter}));
        MSG m;
        EXPECT_EQ(PeekMessageA(&m, nullptr, WM_APP + 1, WM_APP + 1, PM_REMOVE) == 0, c.pumps) << c.code;
    }
    PrintJob.UserAbort = 0;
}

// PRINTPAGE shows its own copy count and the names, refuses copies of 0
// or not a number, and writes the choice back; cancelled, it writes
// nothing, deletes the context and prints nothing.
TEST_F(PrintJobTest, PageDialogEditsTheOptionsOrCancels) {
    DefaultPrinter printer(TestPrinterDevice().c_str());
    for (bool cancel : {false, true}) {
        SCOPED_TRACE(cancel ? "cancel" : "OK");
        DeleteFileA(PrinterOutput().c_str());
        Texts seen;
        auto drive = [&](HWND d) {
            seen = {ControlText(d, IDC_PRINT_COPIES), ControlText(d, IDC_PRINT_DOCUMENT),
                    ControlText(d, IDC_PRINT_PRINTER), Checked(d, IDC_PRINT_CENTER_HORZ) ? "centred" : "-",
                    Checked(d, IDC_PRINT_SCALE_TO_FIT) ? "fit" : "-"};
            SendDlgItemMessageA(d, IDC_PRINT_SCALE_TO_FIT, BM_SETCHECK, BST_CHECKED, 0);
            SendDlgItemMessageA(d, IDC_PRINT_ALL_PAGE, BM_SETCHECK, BST_CHECKED, 0);
            if (cancel) return Press(d, IDCANCEL);
            for (const char* copies : {"0", "two", "2"}) {
                SetDlgItemTextA(d, IDC_PRINT_COPIES, copies);
                Press(d, IDOK);
                seen.push_back(IsWindowVisible(d) ? "stays" : "gone");
            }
        };
        PrintOptions o = {1, 0, 1, 0, 5, 0, 0, 0, 0};  // dialog, centred across, 5 copies
        const PrintOptions before = o;
        HDC dc = cancel ? CreateTestPrinterDC() : nullptr;
        {
            Watchdog dog("Print", drive);
            ASSERT_EQ(PrepareToPrint(nullptr, dc, &o, "C:\\docs\\page.bmp", 3), cancel ? 30 : 0);
            EXPECT_EQ(dog.seen(), 1);
        }
        Texts want = {"1", "page.bmp", kTestPrinter, "centred", "-"};  // not the 5 of the options
        if (!cancel) want.insert(want.end(), {"stays", "stays", "gone"});
        EXPECT_EQ(seen, want);
        if (cancel) {
            // Nothing written back, the context deleted, nothing printed.
            EXPECT_EQ(V({std::memcmp(&o, &before, sizeof o), int(GetObjectType(dc)),
                         int(GetFileAttributesA(PrinterOutput().c_str()))}),
                      V({0, 0, int(INVALID_FILE_ATTRIBUTES)}));
            continue;
        }
        EXPECT_EQ(V({o.Copies, o.ScaleToFit, o.PrintAllPage, o.CenterHorizontally}), V({2, 1, 1, 1}));
        // "Print all page" puts the page number into the cancel dialog.
        HDIB dib = Dib300(8, 8);
        ASSERT_EQ(PrintDIBPage(dib, nullptr, 0, 1, 0, 0), 0);
        EXPECT_EQ(ControlText(prism::PrintJob.CancelDialog, IDC_CANCEL_TEXT), "page.bmp  Page: 2 / 3");
        EXPECT_EQ(V({EndPrint(nullptr), static_cast<int>(ReadPrinted().stretches.size())}), V({0, 2}));
        GlobalFree(dib);
    }
}

// Cancel pressed in the cancel dialog before the page: the click waits in
// the queue until the abort procedure hands it on during the page.
TEST_F(PrintJobTest, CancelDialogAbortsTheDocument) {
    const int dpi30[2] = {30, 30};
    HDIB dib = Dib300(300, 300);
    // Scale 0.85 with 300 pixels at 30 dpi is banded; unbanded copies go
    // on, the band loop stops.
    for (auto [fit, stretches] : {std::pair<int, size_t>{0, 2}, {1, 1}}) {
        SCOPED_TRACE(fit);
        DeleteFileA(PrinterOutput().c_str());
        PrintOptions o = {0, 0, 0, fit, 2, 0, 0, 0, fit};
        ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "C:\\x\\doc", 1), 0);
        HWND cancel = prism::PrintJob.CancelDialog;
        EXPECT_EQ(Texts({TextOf(cancel), ControlText(cancel, IDC_CANCEL_TEXT)}), Texts({"Cancel Printing", "doc"}));
        EXPECT_TRUE(GetMenuState(GetSystemMenu(cancel, FALSE), SC_CLOSE, MF_BYCOMMAND) & MF_GRAYED);
        PostMessageA(cancel, WM_COMMAND, IDCANCEL, 0);
        prism::PrintJob.PrintError = 0;
        // This driver keeps what was drawn before ABORTDOC and still ends
        // the document, so the output shows how far the job went.
        EXPECT_EQ(V({PrintDIBPage(dib, dpi30, 0, 0, 0, 0), prism::PrintJob.UserAbort, EndPrint(nullptr)}),
                  V({0, 1, 0}));
        EXPECT_FALSE(IsWindow(cancel));
        EXPECT_EQ(ReadPrinted().stretches.size(), stretches);
    }
    GlobalFree(dib);
}

// PRINTERSETUP lists each port of each printer of the profile (not an
// entry without ports), the default selected; the second port is picked,
// then the dialog ends as the case says.
TEST_F(PrintJobTest, PrinterSetupChoosesFromTheProfile) {
    WriteProfileStringA("devices", "PrismTwoPorts", "WINEPS.DRV,FILE1:,FILE2:");
    WriteProfileStringA("devices", "PrismNoComma", "WINEPS.DRV");
    const char *first = "PrismTwoPorts,WINEPS.DRV,FILE1:", *second = "PrismTwoPorts,WINEPS.DRV,FILE2:";
    enum Action { kOk, kCancel, kDoubleClick, kSetupThenCancel };
    // The driver step has nothing behind it: OK always warns, then writes.
    const struct { Action action; const char* device; Texts messages; } cases[] = {
        {kOk, second, {"Invalid printer driver.||48"}}, {kDoubleClick, second, {"Invalid printer driver.||48"}},
        {kCancel, first, {}}, {kSetupThenCancel, first, {"Invalid printer driver.||48"}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.action));
        DefaultPrinter printer(first);
        MessageRecorder recorder;
        Texts seen;
        auto drive = [&](HWND d) {
            auto find = [&](const char* line) {
                return SendDlgItemMessageA(d, IDC_SETUP_LIST, LB_FINDSTRING, WPARAM(-1), reinterpret_cast<LPARAM>(line));
            };
            const LRESULT port2 = find("PrismTwoPorts on FILE2:");
            seen = {ListText(d, IDC_SETUP_LIST, SendDlgItemMessageA(d, IDC_SETUP_LIST, LB_GETCURSEL, 0, 0)),
                    ListText(d, IDC_SETUP_LIST, port2), find("PrismNoComma") == LB_ERR ? "-" : "PrismNoComma"};
            SendDlgItemMessageA(d, IDC_SETUP_LIST, LB_SETCURSEL, static_cast<WPARAM>(port2), 0);
            if (c.action == kSetupThenCancel) {
                Press(d, IDC_SETUP_DRIVER);
                seen.push_back(std::to_string(LOWORD(SendMessageA(d, DM_GETDEFID, 0, 0))));
            }
            Press(d, c.action == kDoubleClick ? IDC_SETUP_LIST : c.action == kOk ? IDOK : IDCANCEL,
                  c.action == kDoubleClick ? LBN_DBLCLK : BN_CLICKED);
        };
        HGLOBAL block;
        {
            Watchdog dog("Printer setup", drive);
            block = PrinterSetup(nullptr);
            EXPECT_EQ(dog.seen(), 1);
        }
        EXPECT_EQ(block ? GlobalSize(block) : 0u, c.device == second ? 231u : 0u);
        GlobalFree(block);
        char device[256] = {};
        GetProfileStringA("windows", "device", "", device, sizeof device);
        EXPECT_STREQ(device, c.device);
        EXPECT_EQ(Shown(recorder), c.messages);
        // The default selected, the second port listed, no entry without ports;
        // after Setup... OK is the default button again.
        Texts want = {"PrismTwoPorts on FILE1:", "PrismTwoPorts on FILE2:", "-"};
        if (c.action == kSetupThenCancel) want.push_back(std::to_string(IDOK));
        EXPECT_EQ(seen, want);
    }
    WriteProfileStringA("devices", "PrismTwoPorts", nullptr);
    WriteProfileStringA("devices", "PrismNoComma", nullptr);
}

// The dialog templates and the strings are resources of the DLL (the
// tests above draw the copies this program carries).
TEST(PrintResources, InTheLibrary) {
    HMODULE dll = LoadLibraryExA(PRISM_DLL_FILE, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(dll, nullptr) << PRISM_DLL_FILE;
    for (const char* name : {"PRINTPAGE", "PRINTCANCELDLGBOX", "PRINTERSETUP", "PRINTDLGSETUP"})
        EXPECT_NE(FindResourceA(dll, name, MAKEINTRESOURCEA(5)), nullptr) << name;  // RT_DIALOG
    char text[128];
    for (UINT id = 1; id <= 14; ++id) EXPECT_GT(LoadStringA(dll, id, text, sizeof text), 0) << "string " << id;
    FreeLibrary(dll);
}

}  // namespace
