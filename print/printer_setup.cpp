// PRINTERSETUP: the default printer chosen from the profile's "devices"
// list, written back as "device" of "windows" on OK.
#include "core/dib.h"
#include "platform/export.h"
#include "platform/gdi.h"
#include "print/print_dialogs.h"
#include "print/print_ids.h"
#include "print/printer_list.h"

#include <cstring>
#include <string>

namespace prism {

namespace {

constexpr unsigned kSetupBlockBytes = 231;
constexpr size_t kBlockPortAt = 0, kBlockNameAt = 83;
constexpr unsigned kKeyBufferBytes = 1090;
constexpr unsigned kValueChars = 109;
constexpr unsigned kWarning = MB_ICONEXCLAMATION;  // style 48

// The block of the dialog that runs, handed to the caller on OK.
HGLOBAL SetupBlock = nullptr;

HWND List(HWND dialog) { return gdi::GetDlgItem(dialog, IDC_SETUP_LIST); }

LRESULT ListMessage(HWND dialog, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return gdi::SendDlgItemMessageA(dialog, IDC_SETUP_LIST, message, wParam, lParam);
}

// Line `index` of the list; empty for no line or one too long to take.
std::string ListLine(HWND dialog, LRESULT index) {
    const LRESULT length = ListMessage(dialog, LB_GETTEXTLEN, static_cast<WPARAM>(index));
    if (index < 0 || length < 0 || length > 4096) return std::string();
    std::string text(static_cast<size_t>(length) + 1, '\0');
    ListMessage(dialog, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&text[0]));
    text.resize(std::strlen(text.c_str()));
    return text;
}

bool SameText(const std::string& a, const std::string& b) { return gdi::lstrcmpiA(a.c_str(), b.c_str()) == 0; }

// A text field of the setup block, read no further than the block.
std::string BlockText(const unsigned char* block, size_t at) {
    const char* p = reinterpret_cast<const char*>(block + at);
    return std::string(p, strnlen(p, kSetupBlockBytes - at));
}

// Nothing stands behind driver setup here: it always answers 2.
int PrinterDriverSetup(HGLOBAL, HWND, int, const char*) { return 2; }

INT_PTR SetupInit(HWND dialog) {
    SetupBlock = GlobalAlloc(kImageFlags, kSetupBlockBytes);
    if (!SetupBlock) {
        gdi::OwnedMessage(dialog, "Insufficient memory.", kWarning);
        gdi::EndDialog(dialog, 0);
        return 1;
    }
    RECT client = {};
    gdi::GetClientRect(List(dialog), &client);
    int stop = LOWORD(gdi::GetDialogBaseUnits()) * client.right / 4;
    ListMessage(dialog, LB_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&stop));
    gdi::SendMessageA(dialog, PRINT_MSG_REFILL_PRINTER_LIST, 0, 0);
    return 1;
}

INT_PTR RefillPrinterList(HWND dialog) {
    char keys[kKeyBufferBytes] = {};
    const DWORD read = gdi::GetProfileStringA("devices", nullptr, "", keys, kKeyBufferBytes);
    if (read == kKeyBufferBytes - 2) {
        gdi::OwnedMessage(dialog, "Too many printers installed.\tList truncated.", kWarning);
        ClearCutOffName(keys, kKeyBufferBytes);
    }
    char nullPort[25];
    gdi::GetProfileStringA("windows", "NullPort", "", nullPort, sizeof nullPort);
    ListMessage(dialog, WM_SETREDRAW, FALSE);
    ListMessage(dialog, LB_RESETCONTENT);
    for (const char* key = keys; *key && key < keys + kKeyBufferBytes; key += std::strlen(key) + 1) {
        char value[kValueChars + 1];
        gdi::GetProfileStringA("devices", key, "", value, sizeof value);
        for (const std::string& line : PrinterListLines(key, value))
            ListMessage(dialog, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    }
    if (ListMessage(dialog, LB_GETCOUNT) > 0) {
        gdi::SendMessageA(dialog, PRINT_MSG_SELECT_CURRENT_PRINTER, 0, 0);
        ListMessage(dialog, WM_SETREDRAW, TRUE);
        gdi::InvalidateRect(List(dialog), nullptr, TRUE);
    } else {
        gdi::OwnedMessage(dialog, "No printers installed.", kWarning);
        gdi::SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    }
    return 1;
}

// Selects the block's printer and port if listed, else the default
// printer's, else the first line.
INT_PTR SelectCurrentPrinter(HWND dialog) {
    char device[kValueChars + 1];
    gdi::GetProfileStringA("windows", "device", "", device, sizeof device);
    const PrinterEntry current = device[0] ? SplitPrinterEntry(device, false) : PrinterEntry{};
    BlockLock block(SetupBlock);
    const std::string blockPort = block ? BlockText(block.bytes(), kBlockPortAt) : std::string();
    const std::string blockName = block ? BlockText(block.bytes(), kBlockNameAt) : std::string();
    LRESULT remembered = -1;
    const LRESULT count = ListMessage(dialog, LB_GETCOUNT);
    for (LRESULT i = 0; i < count; ++i) {
        const std::string line = ListLine(dialog, i);
        const PrinterEntry entry = SplitPrinterEntry(BehindTab(line.c_str()), false);
        if (SameText(entry.name, current.name) && SameText(entry.port, current.port)) remembered = i;
        if (SameText(entry.name, blockName) && SameText(entry.port, blockPort)) {
            ListMessage(dialog, LB_SETCURSEL, static_cast<WPARAM>(i));
            return 1;
        }
    }
    block.Unlock();
    ListMessage(dialog, LB_SETCURSEL, static_cast<WPARAM>(remembered >= 0 ? remembered : 0));
    return 1;
}

// OK and Setup...: the driver step (which always answers 2), then for OK
// the chosen line written as the default printer.
void ChoosePrinter(HWND dialog, int id) {
    const std::string line = ListLine(dialog, ListMessage(dialog, LB_GETCURSEL));
    static const char* const kDriverMessages[] = {"Cannot find printer driver.", "Invalid printer driver.",
                                                  "Insufficient memory."};
    const int answer = PrinterDriverSetup(SetupBlock, dialog, id, BehindTab(line.c_str()));
    if (answer >= 1 && answer <= 3) gdi::OwnedMessage(dialog, kDriverMessages[answer - 1], kWarning);
    if (id == IDOK) {
        gdi::WriteProfileStringA("windows", "device", PrinterEntryToProfile(line.c_str()).c_str());
        HGLOBAL block = SetupBlock;
        SetupBlock = nullptr;
        gdi::EndDialog(dialog, reinterpret_cast<INT_PTR>(block));
        return;
    }
    gdi::SendMessageA(dialog, PRINT_MSG_SETUP_DRIVER, 1, 0);
    gdi::SendDlgItemMessageA(dialog, IDC_SETUP_DRIVER, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
    gdi::SendDlgItemMessageA(dialog, IDOK, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
    gdi::SetFocus(List(dialog));
}

INT_PTR SetupCommand(HWND dialog, int id, int notification) {
    if ((id == IDOK || id == IDC_SETUP_DRIVER) && notification == 0) {
        ChoosePrinter(dialog, id);
    } else if (id == IDCANCEL) {
        if (SetupBlock) GlobalFree(SetupBlock);
        SetupBlock = nullptr;
        gdi::EndDialog(dialog, 0);
    } else if (id == IDC_SETUP_LIST && notification == LBN_DBLCLK) {
        const LRESULT defaultId = gdi::SendMessageA(dialog, DM_GETDEFID, 0, 0);
        gdi::SendMessageA(dialog, WM_COMMAND, LOWORD(defaultId), 0);
    }
    return 1;
}

INT_PTR SettingChanged(HWND dialog, const char* section) {
    if (!section || gdi::lstrcmpiA(section, "devices") == 0)
        gdi::SendMessageA(dialog, PRINT_MSG_REFILL_PRINTER_LIST, 0, 0);
    return 1;
}

}  // namespace

}  // namespace prism

using namespace prism;

// Runs PRINTERSETUP.  OK: a new 231-byte block (left empty) for the caller;
// Cancel: 0.  Failures are messages to the user.
PRISM_API HGLOBAL WINAPI PrinterSetup(HWND parent) {
    const INT_PTR result = ShowLibraryDialog(parent, PRINTER_SETUP_DIALOG, PrinterSetupProc);
    return result == -1 ? nullptr : reinterpret_cast<HGLOBAL>(result);
}

PRISM_API INT_PTR CALLBACK PrinterSetupProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_WININICHANGE: return SettingChanged(dialog, reinterpret_cast<const char*>(lParam));
        case WM_DESTROY: return 1;
        case WM_INITDIALOG: return SetupInit(dialog);
        case PRINT_MSG_REFILL_PRINTER_LIST: return RefillPrinterList(dialog);
        case PRINT_MSG_SELECT_CURRENT_PRINTER: return SelectCurrentPrinter(dialog);
        case WM_COMMAND: return SetupCommand(dialog, LOWORD(wParam), HIWORD(wParam));
        default: return 0;
    }
}
