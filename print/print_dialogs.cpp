// The job's dialogs: PRINTPAGE (PrintPageProc), the modeless cancel dialog
// (PrintCancelDlgProc), and PrintAbortProc with its message loop.
#include "core/attach.h"
#include "platform/export.h"
#include "platform/gdi.h"
#include "platform/observe_internal.h"
#include "print/print_dialogs.h"
#include "print/print_ids.h"
#include "print/print_job_state.h"

namespace prism {

HINSTANCE LibraryInstance() {
    if (ModuleAttach.moduleInstance) return ModuleAttach.moduleInstance;
    HMODULE self = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCSTR>(&LibraryInstance), &self);
    return self;
}

INT_PTR ShowLibraryDialog(HWND parent, const char* templateName, DLGPROC procedure) {
    return gdi::DialogBoxParamA(LibraryInstance(), templateName, parent, procedure, 0);
}

namespace {

struct CheckBoxField {
    int id;
    int PrintOptions::*field;
};

constexpr CheckBoxField kCheckBoxes[] = {
    {IDC_PRINT_IMAGE_DPI, &PrintOptions::UseImageDPI},
    {IDC_PRINT_CENTER_VERT, &PrintOptions::CenterVertically},
    {IDC_PRINT_CENTER_HORZ, &PrintOptions::CenterHorizontally},
    {IDC_PRINT_SCALE_TO_FIT, &PrintOptions::ScaleToFit},
    {IDC_PRINT_STRETCH_TO_FIT, &PrintOptions::StretchToFit},
    {IDC_PRINT_ALL_PAGE, &PrintOptions::PrintAllPage},
};

INT_PTR PageDialogInit(HWND dialog) {
    PrintJobState& job = PrintJob;
    gdi::SetDlgItemTextA(dialog, IDC_PRINT_DOCUMENT, job.DocumentName);
    gdi::SetDlgItemTextA(dialog, IDC_PRINT_PRINTER, job.PrinterName);
    // The copies field always starts at 1, whatever the options say.
    gdi::SetDlgItemInt(dialog, IDC_PRINT_COPIES, 1, FALSE);
    for (const CheckBoxField& box : kCheckBoxes)
        gdi::CheckDlgButton(dialog, box.id, job.Options.*box.field ? BST_CHECKED : BST_UNCHECKED);
    return 1;
}

INT_PTR PageDialogCommand(HWND dialog, int id) {
    PrintJobState& job = PrintJob;
    if (id == IDOK) {
        for (const CheckBoxField& box : kCheckBoxes)
            job.Options.*box.field = gdi::IsDlgButtonChecked(dialog, box.id) == BST_CHECKED;
        BOOL number = FALSE;
        job.Options.Copies = static_cast<int>(gdi::GetDlgItemInt(dialog, IDC_PRINT_COPIES, &number, TRUE));
        if (!number || job.Options.Copies < 1)
            gdi::MessageBeep(0);
        else
            gdi::EndDialog(dialog, IDOK);
    } else if (id == IDCANCEL) {
        gdi::EndDialog(dialog, IDCANCEL);
    }
    return 1;
}

INT_PTR CancelDialogInit(HWND dialog) {
    gdi::EnableMenuItem(gdi::GetSystemMenu(dialog, FALSE), SC_CLOSE, MF_GRAYED);
    gdi::SetFocus(dialog);
    return 1;
}

// Hands every waiting message on, through the cancel dialog first, until
// the queue is empty or the user cancels.
void PumpMessages() {
    PrintJobState& job = PrintJob;
    MSG message;
    while (!job.UserAbort && gdi::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (!gdi::IsDialogMessageA(job.CancelDialog, &message)) {
            gdi::TranslateMessage(&message);
            gdi::DispatchMessageA(&message);
        }
    }
}

}  // namespace

}  // namespace prism

namespace gdi {
// Declared with the device layer; it sits here beside its only users.
int OwnedMessage(HWND owner, const char* text, unsigned style) {
    int result = IDOK;
    if (plat::DeliverToObserver(text, nullptr, style, &result)) return result;
    return ::MessageBoxA(owner, text, nullptr, style);
}
}  // namespace gdi

using namespace prism;

// PRINTPAGE: shows the document and printer, edits the options of the
// job; OK needs a number of copies of at least 1.
PRISM_API INT_PTR CALLBACK PrintPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG: return PageDialogInit(dialog);
        case WM_COMMAND: return PageDialogCommand(dialog, LOWORD(wParam));
        default: return 0;
    }
}

// The modeless cancel dialog: any command cancels the job.
PRISM_API INT_PTR CALLBACK PrintCancelDlgProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG: return CancelDialogInit(dialog);
        case WM_COMMAND: PrintJob.UserAbort = 1; return 1;
        case PRINT_MSG_UPDATE_CANCEL_TEXT:
            gdi::SetDlgItemTextA(dialog, IDC_CANCEL_TEXT, reinterpret_cast<LPCSTR>(lParam));
            return 1;
        default: return 0;
    }
}

// Called by the device while it prints, and by the job between stretches:
// a non-zero code stops the job and is kept in PrintError; otherwise the
// host's messages are handed on.  1 to go on, 0 to stop.
PRISM_API BOOL CALLBACK PrintAbortProc(HDC, int code) {
    PrintJobState& job = PrintJob;
    const int abort = (job.UserAbort == 0 && code != 0) ? 1 : job.UserAbort;
    if (abort) job.PrintError = code;
    job.UserAbort = abort;
    if (!abort) PumpMessages();
    return job.UserAbort == 0;
}
