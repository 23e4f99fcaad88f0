// The one print job of the library: its options, names, device context,
// dialogs, abort flags and the page and device measures in inches.
#pragma once

#include "prism32.h"

#include <cstdint>

namespace prism {

constexpr int kDocumentNameChars = 84;
constexpr int kPrinterNameChars = 100;
constexpr int kDeviceProfileChars = 127;

struct PrintJobState {
    PrintOptions Options;
    int TotalPages;
    char DocumentName[kDocumentNameChars];
    char PrinterName[kPrinterNameChars];
    char DeviceProfile[kDeviceProfileChars + 1];
    HDC PrintDC;
    HWND CancelDialog;
    void* CancelDialogProc;
    void* AbortProc;
    int UserAbort;
    int PrintError;
    int PageClosed;
    int ShowPageText;
    float DeviceDpiX, DeviceDpiY;
    float PageWidthInches, PageHeightInches;
    float ImageWidthInches, ImageHeightInches;
    int BitsPerPixel, Planes, IsMonochrome;
    // Set from a successful start to EndPrint: a second job is refused
    // while one runs, so the first one's context and dialog are not lost.
    int JobRunning;
};

// Zero at load: no device context, no dialog.
extern PrintJobState PrintJob;

}  // namespace prism
