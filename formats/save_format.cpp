// Writing a DIB in a format named by its code: the library's own BMP writer
// or a save-side codec module.
#include "formats/device_formats.h"
#include "formats/formats.h"

#include "platform/export.h"

using namespace prism;

// Saves `dib` to `fileName` as format `format` (1..13).  The result is the
// writer's, passed on unchanged; 0 for a code that cannot be saved, with no
// error code set.  The image stays the caller's and is not checked here.
PRISM_API int WINAPI SaveDIBInImageFormat(LPCSTR fileName, HDIB dib, int format, int option1,
                                          int option2) {
    // Handed to the modules that take a status; never read.  Both DCX calls
    // share it.
    int status = 0;
    switch (format) {
        case PRISM_FORMAT_TIFF:
            return SaveAlderThunk(fileName, dib, option2, 1);
        case PRISM_FORMAT_PCX:
            return SaveBirchThunk(fileName, dib, &status);
        case PRISM_FORMAT_DCX:
            // A page is always added: the file is made first only when it is
            // not there yet, and that result does not count.
            if (!plat::FileExists(fileName)) MakeBeechThunk(fileName, &status);
            return SaveBeechThunk(fileName, dib, &status);
        case PRISM_FORMAT_GIF:
            return SaveCedarThunk(fileName, dib, option1, &status);
        case PRISM_FORMAT_TGA:
            return SaveElderThunk(fileName, dib, option2 != 0 ? 1 : 0, 1);
        case PRISM_FORMAT_BMP:
            return SaveDIB(fileName, dib);
        case PRISM_FORMAT_CALS:
            return SaveMapleThunk(fileName, dib, 0, 0, 0);
        case PRISM_FORMAT_JPEG:
            // The quality is fixed.
            return SaveHazelThunk(fileName, dib, 75);
#ifdef _WIN32
        case PRISM_FORMAT_METAFILE:
            return SaveMetaFileRow(fileName, dib);
        case PRISM_FORMAT_CLIPBOARD:
            return SaveClipboardFileRow(fileName, dib);
#endif
        default:
            // Colour fax, text and 11 cannot be written at all; metafiles
            // and clipboard files (7, 8) go through device bitmaps, which a
            // build without a graphics system has not got.
            return 0;
    }
}
