// The dispatch rows of metafiles and clipboard files, which pass through a
// device bitmap and so meet the display's palette on the way.
#include "formats/device_formats.h"

#include "platform/gdi.h"

namespace prism {
namespace {

// A bitmap as a DIB through the display's palette; both are deleted.
HDIB TakeAsDib(HBITMAP bitmap) {
    if (!bitmap) return nullptr;
    gdi::Owned<HBITMAP> owned(bitmap);
    gdi::Owned<HPALETTE> palette(GetCurrentPalette());
    return ConvertBitmapToDIB(owned.get(), palette.get());
}

}  // namespace

HDIB LoadMetaFileRow(const char* fileName) { return TakeAsDib(LoadMetaFileIntoBitmap(fileName)); }

HDIB LoadClipboardFileRow(const char* fileName) {
    return TakeAsDib(static_cast<HBITMAP>(LoadClipboardFormat(fileName, CF_DIB)));
}

// The bitmap is not checked: a null one reaches the writer, which reports.
int SaveMetaFileRow(const char* fileName, HDIB dib) {
    gdi::Owned<HBITMAP> bitmap(ConvertDIBToBitmap(dib));
    gdi::WindowDC active(gdi::GetActiveWindow());
    return SaveBitmapIntoMetaFile(active.get(), bitmap.get(), fileName);
}

int SaveClipboardFileRow(const char* fileName, HDIB dib) {
    gdi::Owned<HBITMAP> bitmap(ConvertDIBToBitmap(dib));
    return SaveClipboardFormat(fileName, bitmap.get());
}

}  // namespace prism
