// Metafile pictures taken from the clipboard and drawn into bitmaps.
#include "core/dib.h"
#include "core/errors.h"
#include "formats/metafile_layout.h"
#include "platform/export.h"
#include "platform/gdi.h"

namespace prism {
namespace {

// Draws the clipboard's metafile picture at its size on `window`'s device;
// 0 when it cannot.  The clipboard is left open when it holds no picture,
// and the picture's block stays locked.
HBITMAP DrawClipboardPicture(HWND window) {
    if (!gdi::IsWindow(window)) return nullptr;
    if (!gdi::OpenClipboard(window)) {
        plat::ShowMessage("Could not open clipboard", "ERROR", 48);
        LastImgError = kErrClipboard;
        return nullptr;
    }
    HANDLE data = gdi::GetClipboardData(CF_METAFILEPICT);
    const auto* picture = data ? static_cast<const METAFILEPICT*>(GlobalLock(data)) : nullptr;
    if (!picture) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    // The horizontal resolution serves both ways.
    double resolution = 0;
    int width = 640, height = 480;
    {
        gdi::WindowDC dc(window);
        if (dc) {
            resolution = gdi::GetDeviceCaps(dc.get(), LOGPIXELSX);
            width = gdi::GetDeviceCaps(dc.get(), HORZSIZE);
            height = gdi::GetDeviceCaps(dc.get(), VERTSIZE);
        }
    }
    ClipboardPictureSize(picture->mm, picture->xExt, picture->yExt, resolution, &width, &height);
    HBITMAP bitmap = DrawMetaFileIntoBitmap(picture->hMF, width, height);
    gdi::CloseClipboard();
    if (!bitmap) plat::ShowMessage("Could draw meta file into a bitmap", "ERROR", 48);
    return bitmap;
}

}  // namespace
}  // namespace prism

using namespace prism;

// PlaceMetaFileIntoBMPFromCLP(window): the metafile picture on the
// clipboard as a bitmap of the size its mapping mode gives at the
// window's resolution.  0 when `window` is none; code 29 and a message
// when the clipboard cannot be opened; code 1 when it holds no picture; a
// message when the picture does not draw.
PRISM_API HBITMAP WINAPI PlaceMetaFileIntoBMPFromCLP(HWND window) {
    return DrawClipboardPicture(window);
}

// PlaceMetaFileIntoDIBFromCLP(window): the same picture as a DIB, through
// the display's palette.
PRISM_API HDIB WINAPI PlaceMetaFileIntoDIBFromCLP(HWND window) {
    gdi::Owned<HBITMAP> bitmap(DrawClipboardPicture(window));
    if (!bitmap) return nullptr;
    gdi::Owned<HPALETTE> palette(GetCurrentPalette());
    return ConvertBitmapToDIB(bitmap.get(), palette.get());
}
