// The library-wide last error and its codes.
#pragma once

namespace prism {

// One code for the whole library; set by failures, cleared only where an
// operation says so.  Library code stores into it directly.
extern int LastImgError;

enum ImgErrorCode : int {
    kErrNone = 0,
    kErrMemory = 1,
    kErrCreateDC = 2,
    kErrOpenFile = 3,
    kErrIO = 4,
    kErrOpenClipboard = 5,
    kErrReceiveClipboard = 6,
    kErrCopyBits = 7,
    kErrParameter = 8,
    kErrFileFormat = 9,
    kErrCreatePalette = 10,
    kErrCreateBitmap = 11,
    kErrMappingMode = 12,
    kErrBitsPerPixel = 13,
    kErrClipboardFormat = 14,
    kErrBitmapParams = 15,
    kErrCreateMetafile = 16,
    kErrLock = 17,
    kErrCompressed = 18,
    kErrDibSize = 19,
    kErrDitherParameter = 20,
    kErrHeaderBits = 21,
    kErrTorva = 22,
    kErrPrinterDC = 23,
    kErrNoRaster = 24,
    kErrDisplayDC = 25,
    kErrSetAbortProc = 26,
    kErrStartDoc = 27,
    kErrNextBand = 28,
    kErrClipboard = 29,
    kErrNothingToDo = 30,
    kErrTextless = 31,  // set for a 24-bit input to Convert8to24; has no text
};

// Number of texts in the message table (codes 0..30).
constexpr int kErrorTextCount = 31;

// The text of a code in 0..30, or null for any other code.
const char* ErrorText(int code);

}  // namespace prism
