// Saving what the window shows: the client area is copied into a device
// bitmap and written through the library's ConvertBitmapToDIB and SaveDIB.
#include "viewer.h"

namespace viewer {

bool SaveClientArea(HWND window, const std::string& path, std::string* error) {
    RECT rc;
    GetClientRect(window, &rc);  // the real size: the system may have enlarged the window
    if (rc.right < 1 || rc.bottom < 1) {
        *error = "the window has no client area";
        return false;
    }
    HDC screen = GetDC(window);
    HDC memory = CreateCompatibleDC(screen);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, rc.right, rc.bottom);
    bool copied = false;
    if (memory && bitmap) {
        HGDIOBJ old = SelectObject(memory, bitmap);
        copied = BitBlt(memory, 0, 0, rc.right, rc.bottom, screen, 0, 0, SRCCOPY) != 0;
        SelectObject(memory, old);
    }
    if (memory) DeleteDC(memory);
    ReleaseDC(window, screen);
    if (!copied) {
        if (bitmap) DeleteObject(bitmap);
        *error = "the client area cannot be copied";
        return false;
    }
    SetImgError(0);
    HDIB dib = ConvertBitmapToDIB(bitmap, nullptr);
    DeleteObject(bitmap);
    const bool saved = dib && SaveDIB(path.c_str(), dib);
    if (!saved) *error = path + ": " + LibraryError();
    if (dib) GlobalFree(dib);
    return saved;
}

}  // namespace viewer
