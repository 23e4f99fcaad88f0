// The printing dialogs driven as a user would, from a watchdog thread:
// PRINTPAGE, the cancel dialog during a job, PRINTERSETUP with the
// profile's printer list; and the templates as resources of the DLL.
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

void SetText(HWND dialog, int id, const char* text) {
    SendMessageA(GetDlgItem(dialog, id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
}

void Press(HWND dialog, int id, int notification = BN_CLICKED) {
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

HDIB SmallDib() {
    Bytes b(40 + 8 + 8 * 8, 0);
    const std::uint32_t fields[] = {40, 8, 8, 1 | 8 << 16, 0, 0, 0, 0, 2, 0};
    std::memcpy(b.data(), fields, sizeof fields);
    return BlockFrom(b);
}

// What the watchdog saw in PRINTPAGE, and what it does there.
struct PageDialogVisit {
    bool cancel = false;
    std::string copies, document, printer;
    bool centreChecked = false, fitChecked = true;
    bool stayedOnZero = false, stayedOnText = false;
};

void DrivePageDialog(HWND dialog, void* context) {
    auto* v = static_cast<PageDialogVisit*>(context);
    v->copies = ControlText(dialog, IDC_PRINT_COPIES);
    v->document = ControlText(dialog, IDC_PRINT_DOCUMENT);
    v->printer = ControlText(dialog, IDC_PRINT_PRINTER);
    v->centreChecked = SendDlgItemMessageA(dialog, IDC_PRINT_CENTER_HORZ, BM_GETCHECK, 0, 0) == BST_CHECKED;
    v->fitChecked = SendDlgItemMessageA(dialog, IDC_PRINT_SCALE_TO_FIT, BM_GETCHECK, 0, 0) == BST_CHECKED;
    SendDlgItemMessageA(dialog, IDC_PRINT_SCALE_TO_FIT, BM_SETCHECK, BST_CHECKED, 0);
    SendDlgItemMessageA(dialog, IDC_PRINT_ALL_PAGE, BM_SETCHECK, BST_CHECKED, 0);
    if (v->cancel) {
        Press(dialog, IDCANCEL);
        return;
    }
    SetText(dialog, IDC_PRINT_COPIES, "0");
    Press(dialog, IDOK);
    v->stayedOnZero = IsWindowVisible(dialog) != 0;
    SetText(dialog, IDC_PRINT_COPIES, "two");
    Press(dialog, IDOK);
    v->stayedOnText = IsWindowVisible(dialog) != 0;
    SetText(dialog, IDC_PRINT_COPIES, "2");
    Press(dialog, IDOK);
}

class PrintDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string why;
        ASSERT_TRUE(InstallTestPrinter(&why)) << why;
        DeleteFileA(PrinterOutput().c_str());
    }
};

TEST_F(PrintDialogTest, PageDialogEditsTheOptions) {
    DefaultPrinter printer(TestPrinterDevice().c_str());
    PageDialogVisit visit;
    PrintOptions o = {1, 0, 1, 0, 5, 0, 0, 0, 0};  // dialog, centred across, 5 copies
    {
        Watchdog dog("Print", DrivePageDialog, &visit);
        ASSERT_EQ(PrepareToPrint(nullptr, nullptr, &o, "C:\\docs\\page.bmp", 3), 0);
        EXPECT_EQ(dog.seen(), 1);
    }
    EXPECT_EQ(visit.copies, "1");  // not the 5 of the options
    EXPECT_EQ(visit.document, "page.bmp");
    EXPECT_EQ(visit.printer, kTestPrinter);
    EXPECT_TRUE(visit.centreChecked);
    EXPECT_FALSE(visit.fitChecked);
    EXPECT_TRUE(visit.stayedOnZero);
    EXPECT_TRUE(visit.stayedOnText);
    // The choice is written back for the host.
    EXPECT_EQ(o.Copies, 2);
    EXPECT_EQ(o.ScaleToFit, 1);
    EXPECT_EQ(o.PrintAllPage, 1);
    EXPECT_EQ(o.CenterHorizontally, 1);
    // "Print all page" puts the page number into the cancel dialog.
    HDIB dib = SmallDib();
    EXPECT_EQ(PrintDIBPage(dib, nullptr, 0, 1, 0, 0), 0);
    EXPECT_EQ(ControlText(prism::PrintJob.CancelDialog, IDC_CANCEL_TEXT), "page.bmp  Page: 2 / 3");
    EXPECT_EQ(EndPrint(nullptr), 0);
    EXPECT_EQ(ReadPrinted().stretches.size(), 2u);
    GlobalFree(dib);
}

TEST_F(PrintDialogTest, PageDialogCancelStopsTheJob) {
    PageDialogVisit visit;
    visit.cancel = true;
    PrintOptions o = {1, 0, 0, 0, 1, 0, 0, 0, 0};
    const PrintOptions before = o;
    HDC dc = CreateTestPrinterDC();
    {
        Watchdog dog("Print", DrivePageDialog, &visit);
        EXPECT_EQ(PrepareToPrint(nullptr, dc, &o, "doc", 1), 30);
    }
    EXPECT_EQ(std::memcmp(&o, &before, sizeof o), 0);  // not written back
    EXPECT_EQ(GetObjectType(dc), 0u);                   // the context is deleted
    EXPECT_EQ(GetFileAttributesA(PrinterOutput().c_str()), INVALID_FILE_ATTRIBUTES);
}

// Cancel pressed in the cancel dialog before the page: the click waits in
// the queue until the abort procedure hands it on during the page.
TEST_F(PrintDialogTest, CancelDialogAbortsTheDocument) {
    const int dpi30[2] = {30, 30};
    struct Case {
        const char* name;
        int fit;          // scale 0.85 with 300 pixels at 30 dpi: banded
        size_t stretches; // unbanded copies go on; the band loop stops
    } cases[] = {{"unbanded", 0, 2}, {"banded", 1, 1}};
    Bytes b(40 + 8 + 300 * 300, 0);
    const std::uint32_t fields[] = {40, 300, 300, 1 | 8 << 16, 0, 0, 0, 0, 2, 0};
    std::memcpy(b.data(), fields, sizeof fields);
    HDIB dib = BlockFrom(b);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DeleteFileA(PrinterOutput().c_str());
        PrintOptions o = {0, 0, 0, c.fit, 2, 0, 0, 0, c.fit};
        ASSERT_EQ(PrepareToPrint(nullptr, CreateTestPrinterDC(), &o, "C:\\x\\doc", 1), 0);
        HWND cancel = prism::PrintJob.CancelDialog;
        ASSERT_NE(cancel, nullptr);
        char title[64] = {};
        GetWindowTextA(cancel, title, sizeof title);
        EXPECT_STREQ(title, "Cancel Printing");
        EXPECT_EQ(ControlText(cancel, IDC_CANCEL_TEXT), "doc");
        EXPECT_TRUE(GetMenuState(GetSystemMenu(cancel, FALSE), SC_CLOSE, MF_BYCOMMAND) & MF_GRAYED);
        PostMessageA(cancel, WM_COMMAND, IDCANCEL, 0);
        prism::PrintJob.PrintError = 0;
        EXPECT_EQ(PrintDIBPage(dib, dpi30, 0, 0, 0, 0), 0);
        EXPECT_EQ(prism::PrintJob.UserAbort, 1);
        // This driver keeps what was drawn before ABORTDOC and still ends
        // the document, so the output shows how far the job went.
        EXPECT_EQ(EndPrint(nullptr), 0);
        const Printed p = ReadPrinted();
        EXPECT_FALSE(IsWindow(cancel));
        EXPECT_EQ(p.stretches.size(), c.stretches);
    }
    GlobalFree(dib);
}

// What the watchdog does in PRINTERSETUP, and what it saw.
struct SetupVisit {
    enum Action { kOkSecondPort, kCancel, kDoubleClick, kSetupThenCancel } action = kCancel;
    std::vector<std::string> lines;
    std::string selected;
    LRESULT defaultAfterSetup = 0;
};

std::string ListText(HWND dialog, LRESULT index) {
    char text[512] = {};
    SendDlgItemMessageA(dialog, IDC_SETUP_LIST, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
    return text;
}

void DriveSetupDialog(HWND dialog, void* context) {
    auto* v = static_cast<SetupVisit*>(context);
    const LRESULT count = SendDlgItemMessageA(dialog, IDC_SETUP_LIST, LB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) v->lines.push_back(ListText(dialog, i));
    v->selected = ListText(dialog, SendDlgItemMessageA(dialog, IDC_SETUP_LIST, LB_GETCURSEL, 0, 0));
    for (LRESULT i = 0; i < count; ++i)
        if (ListText(dialog, i).rfind("PrismTwoPorts on FILE2:", 0) == 0)
            SendDlgItemMessageA(dialog, IDC_SETUP_LIST, LB_SETCURSEL, static_cast<WPARAM>(i), 0);
    switch (v->action) {
        case SetupVisit::kOkSecondPort: Press(dialog, IDOK); break;
        case SetupVisit::kCancel: Press(dialog, IDCANCEL); break;
        case SetupVisit::kDoubleClick: Press(dialog, IDC_SETUP_LIST, LBN_DBLCLK); break;
        case SetupVisit::kSetupThenCancel:
            Press(dialog, IDC_SETUP_DRIVER);
            v->defaultAfterSetup = LOWORD(SendMessageA(dialog, DM_GETDEFID, 0, 0));
            Press(dialog, IDCANCEL);
            break;
    }
}

std::string DefaultDevice() {
    char device[256] = {};
    GetProfileStringA("windows", "device", "", device, sizeof device);
    return device;
}

TEST_F(PrintDialogTest, PrinterSetupChoosesFromTheProfile) {
    WriteProfileStringA("devices", "PrismTwoPorts", "WINEPS.DRV,FILE1:,FILE2:");
    WriteProfileStringA("devices", "PrismNoComma", "WINEPS.DRV");
    const char* first = "PrismTwoPorts,WINEPS.DRV,FILE1:";
    const char* second = "PrismTwoPorts,WINEPS.DRV,FILE2:";
    struct Case {
        SetupVisit::Action action;
        bool block;
        const char* device;
        std::vector<std::string> messages;
    } cases[] = {
        // The driver step has nothing behind it: OK always warns, then writes.
        {SetupVisit::kOkSecondPort, true, second, {"Invalid printer driver."}},
        {SetupVisit::kDoubleClick, true, second, {"Invalid printer driver."}},
        {SetupVisit::kCancel, false, first, {}},
        {SetupVisit::kSetupThenCancel, false, first, {"Invalid printer driver."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.action));
        DefaultPrinter printer(first);
        MessageRecorder recorder;
        SetupVisit visit;
        visit.action = c.action;
        HGLOBAL block;
        {
            Watchdog dog("Printer setup", DriveSetupDialog, &visit);
            block = PrinterSetup(nullptr);
            EXPECT_EQ(dog.seen(), 1);
        }
        EXPECT_EQ(block != nullptr, c.block);
        if (block) {
            EXPECT_EQ(GlobalSize(block), 231u);
        }
        GlobalFree(block);
        EXPECT_EQ(DefaultDevice(), c.device);
        std::vector<std::string> texts;
        for (const auto& m : recorder.messages()) {
            texts.push_back(m.text);
            EXPECT_EQ(m.style, 48u);
            EXPECT_EQ(m.caption, "");
        }
        EXPECT_EQ(texts, c.messages);
        EXPECT_EQ(visit.selected.rfind("PrismTwoPorts on FILE1:\t", 0), 0u) << visit.selected;
        int two = 0;
        for (const std::string& line : visit.lines) {
            two += line.rfind("PrismTwoPorts on ", 0) == 0;
            EXPECT_NE(line.rfind("PrismNoComma", 0), 0u);
        }
        EXPECT_EQ(two, 2);
        if (c.action == SetupVisit::kSetupThenCancel) {
            EXPECT_EQ(visit.defaultAfterSetup, IDOK);
        }
    }
    WriteProfileStringA("devices", "PrismTwoPorts", nullptr);
    WriteProfileStringA("devices", "PrismNoComma", nullptr);
}

// The templates and strings are resources of the DLL, the same as those
// the test program carries, with the styles the dialogs are built from.
TEST(PrintResources, InTheLibrary) {
    HMODULE dll = LoadLibraryExA(PRISM_DLL_FILE, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(dll, nullptr) << PRISM_DLL_FILE;
    struct Dialog {
        const char* name;
        DWORD style;
        WORD controls;
    } dialogs[] = {{"PRINTPAGE", 0x80C800C0, 16}, {"PRINTCANCELDLGBOX", 0x90C80040, 3},
                   {"PRINTERSETUP", 0x90C80000, 5}, {"PRINTDLGSETUP", 0x80C00040, 5}};
    for (const Dialog& d : dialogs) {
        HRSRC found = FindResourceA(dll, d.name, MAKEINTRESOURCEA(5));  // RT_DIALOG
        ASSERT_NE(found, nullptr) << d.name;
        const auto* t = static_cast<const unsigned char*>(LockResource(LoadResource(dll, found)));
        DWORD style;
        WORD count;
        std::memcpy(&style, t, 4);
        std::memcpy(&count, t + 8, 2);
        EXPECT_EQ(style, d.style) << d.name;
        EXPECT_EQ(count, d.controls) << d.name;
    }
    char text[128];
    EXPECT_GT(LoadStringA(dll, 1, text, sizeof text), 0);
    EXPECT_STREQ(text, "Prism SDK");
    for (UINT id = 2; id <= 14; ++id) EXPECT_GT(LoadStringA(dll, id, text, sizeof text), 0) << id;
    EXPECT_STREQ(text, "There is no active printer device.");
    EXPECT_EQ(LoadStringA(dll, 15, text, sizeof text), 0);
    FreeLibrary(dll);
}

}  // namespace
