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

}  // namespace
