// Printing the open image through the library's print job: the library's
// own page dialog, printer setup, or straight to the default printer.
#include "viewer.h"

namespace viewer {

// Prints the image on the default printer, centred and scaled to the page;
// with `ask`, the library's page dialog comes first.  0 when printed or
// cancelled, else the job's code.
int PrintImage(Viewer& v, bool ask) {
    if (!v.dib) return 0;
    PrintOptions options = {};
    options.ShowDialog = ask ? 1 : 0;
    options.CenterVertically = options.CenterHorizontally = 1;
    options.ScaleToFit = 1;
    options.Copies = 1;
    const int result = PrintDIB(v.window, nullptr, v.dib, v.file.c_str(), nullptr, &options, 0);
    return result == 30 ? 0 : result;  // 30: the page dialog was cancelled
}

// The job's result is a code of the library's list.
std::string PrintFailure(int code) {
    char text[64] = {};
    ImgErrorString(text, code);
    return std::string("printing failed: ") + (text[0] ? text : "error " + std::to_string(code));
}

// File > Printer setup: the library's list of printers; its answer, a
// block of settings, is not needed here.
void SetUpPrinter(Viewer& v) {
    if (HGLOBAL chosen = PrinterSetup(v.window)) GlobalFree(chosen);
}

}  // namespace viewer
