// The last-error exports and the message table.
#include "core/errors.h"

#include "platform/export.h"
#include "platform/platform.h"

#include <cstring>

namespace prism {

int LastImgError = 0;

namespace {
// Texts are the library's own, spelling included.
const char* const kErrorTexts[kErrorTextCount] = {
    "Operation was successful.",
    "Not enough memory.",
    "Unable to create DC",
    "Can't open file",
    "General I/O error in reading or writting.",
    "Can't open clipboard",
    "Could not receive from clipboard",
    "Can't copy bits from bitmap",
    "Parameter error",
    "Invalid file format",
    "Can't create palette",
    "Can't create bitmap",
    "Mapping mode is improperly set in metafile",
    "Invalid bit/pixel value",
    "Format not found in clipboard file",
    "Can't get bitmap parameters",
    "Can't create metafile",
    "Can't lock global memory",
    "DIB must be uncompressed",
    "Invalid DIB size",
    "Paramater error in Dithering",
    "Bad bit/pixel value in DIB header",
    "The TORVA algorithm creates only 1 or 4 bit image",
    "Could not get printer DC",
    "Device not capable to handle raster",
    "Could not get dispaly DC",
    "Escape failed SETABORTPROC",
    "Escape failed STARTDOC",
    "Escape failed NEXTBAND",
    "Clipboard error",
    "Nothing to do.",
};
}  // namespace

const char* ErrorText(int code) {
    if (code < 0 || code >= kErrorTextCount) return nullptr;
    return kErrorTexts[code];
}

}  // namespace prism

using prism::LastImgError;

PRISM_API int WINAPI ImgError(void) { return LastImgError; }

PRISM_API int WINAPI SetImgError(int code) {
    int previous = LastImgError;
    if (code >= 0 && code <= prism::kErrTextless) LastImgError = code;
    return previous;
}

// Copies the text of a code into the buffer (no length limit: 50 bytes
// always suffice), or shows it in a message box when the buffer is null.
// A code outside 0..31 asks for the current error.  Code 31 passes the
// range check but has no text: the buffer gets an empty string and no box
// is shown.
PRISM_API LPSTR WINAPI ImgErrorString(LPSTR buffer, int code) {
    if (code < 0 || code > prism::kErrTextless) code = LastImgError;
    const char* text = prism::ErrorText(code);
    if (buffer) {
        if (text)
            std::memcpy(buffer, text, std::strlen(text) + 1);
        else
            buffer[0] = '\0';
        return buffer;
    }
    if (text) plat::ShowMessage(text, "PRISM error", plat::kMbOk | plat::kMbIconExclamation);
    return nullptr;
}
