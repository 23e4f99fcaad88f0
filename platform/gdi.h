// The device layer: the only door from the library to the graphics system
// (GDI and the few USER calls it needs).  Windows builds only; the pixel
// code never includes it.  Every acquire has its release in a small holder
// here, so early returns cannot leak a context, a selection or an object.
#pragma once

#ifdef _WIN32
#include "prism32.h"

#include <cstdint>

namespace gdi {

// ---- the calls the device code makes, named in one place ------------------
using ::BitBlt;
using ::CreateBitmap;
using ::CreateBitmapIndirect;
using ::CreateDIBitmap;
using ::GetActiveWindow;
using ::GetDeviceCaps;
using ::GetDIBits;
using ::GetNearestColor;
using ::GetPaletteEntries;
using ::GetSystemPaletteEntries;
using ::RealizePalette;
using ::SetDIBits;
// window display
using ::CombineRgn;
using ::CreateRectRgn;
using ::CreateRectRgnIndirect;
using ::DeleteObject;
using ::DPtoLP;
using ::ExcludeClipRect;
using ::GetClientRect;
using ::GetClipBox;
using ::GetScrollRange;
using ::GetViewportExtEx;
using ::GetWindowExtEx;
using ::IntersectRect;
using ::InvalidateRect;
using ::InvalidateRgn;
using ::LPtoDP;
using ::OffsetRect;
using ::PatBlt;
using ::ScaleViewportExtEx;
using ::ScaleWindowExtEx;
using ::ScrollDC;
using ::SetBkColor;
using ::SetBkMode;
using ::SetMapMode;
using ::SetScrollPos;
using ::SetScrollRange;
using ::SetStretchBltMode;
using ::SetViewportExtEx;
using ::SetWindowExtEx;
using ::SetWindowOrgEx;
using ::ShowScrollBar;
using ::GetClassLongPtrA;
using ::StretchBlt;
using ::StretchDIBits;
using ::UpdateWindow;
using ::ValidateRect;
using ::ValidateRgn;
// zoom and magnifier
using ::ClientToScreen;
using ::ClipCursor;
using ::CreateCompatibleBitmap;
using ::CreatePen;
using ::GetStockObject;
using ::IsWindow;
using ::LineTo;
using ::MessageBeep;
using ::MoveToEx;
using ::PeekMessageA;
using ::PtInRect;
using ::Rectangle;
using ::ReleaseCapture;
using ::ScreenToClient;
using ::SetCapture;
using ::SetCursor;
using ::WaitMessage;

// printing: the print job, its dialogs and printer setup
using ::CheckDlgButton;
using ::CreateCompatibleDC;
using ::CreateDCA;
using ::CreateDialogParamA;
using ::DeleteDC;
using ::DestroyWindow;
using ::DialogBoxParamA;
using ::DispatchMessageA;
using ::EnableMenuItem;
using ::EndDialog;
using ::EndDoc;
using ::EndPage;
using ::Escape;
using ::GetDialogBaseUnits;
using ::GetDlgItem;
using ::GetDlgItemInt;
using ::GetProfileStringA;
using ::GetSystemMenu;
using ::IsDialogMessageA;
using ::IsDlgButtonChecked;
using ::IsRectEmpty;
using ::lstrcmpiA;
using ::SendDlgItemMessageA;
using ::SendMessageA;
using ::SetAbortProc;
using ::SetDlgItemInt;
using ::SetDlgItemTextA;
using ::SetFocus;
using ::ShowCursor;
using ::StartDocA;
using ::StartPage;
using ::TranslateMessage;
using ::WriteProfileStringA;
// MessageBoxA owned by a window, with no caption text (the system's default
// caption stands); a test's observer takes it first, as with plat::ShowMessage.
int OwnedMessage(HWND owner, const char* text, unsigned style);
// metafiles, text drawn into bitmaps, and the clipboard
using ::CloseClipboard;
using ::CloseMetaFile;
using ::CreateMetaFileA;
using ::DeleteMetaFile;
using ::DrawTextA;
using ::GetClipboardData;
using ::GetTextMetricsA;
using ::OemToCharA;
using ::OpenClipboard;
using ::PlayMetaFile;
using ::SelectObject;
using ::SelectPalette;
using ::SetMetaFileBitsEx;

// GetObjectA of a bitmap into the record of this build's size (24 bytes in
// a 32-bit process, 32 in a 64-bit one).  False for anything not a bitmap.
bool BitmapRecord(HBITMAP bitmap, BITMAP* record);
// The entry count of a logical palette (GetObjectA of 2 bytes); 0 when the
// handle is not a palette.
unsigned PaletteCount(HPALETTE palette);
// GetBitmapBits and SetBitmapBits for byte counts of any size: 0 where the
// count does not fit the call.
long ReadBitmapBits(HBITMAP bitmap, std::uint64_t bytes, void* to);
long WriteBitmapBits(HBITMAP bitmap, std::uint64_t bytes, const void* from);

// ---- holders ---------------------------------------------------------------
// GetDC of a window (0: the screen) and ReleaseDC.
class WindowDC {
public:
    explicit WindowDC(HWND window = nullptr) : window_(window), dc_(::GetDC(window)) {}
    ~WindowDC() { Release(); }
    WindowDC(const WindowDC&) = delete;
    WindowDC& operator=(const WindowDC&) = delete;
    HDC get() const { return dc_; }
    explicit operator bool() const { return dc_ != nullptr; }
    void Release() {
        if (dc_) ::ReleaseDC(window_, dc_);
        dc_ = nullptr;
    }

private:
    HWND window_;
    HDC dc_;
};

// CreateCompatibleDC and DeleteDC.
class MemoryDC {
public:
    explicit MemoryDC(HDC reference) : dc_(::CreateCompatibleDC(reference)) {}
    ~MemoryDC() {
        if (dc_) ::DeleteDC(dc_);
    }
    MemoryDC(const MemoryDC&) = delete;
    MemoryDC& operator=(const MemoryDC&) = delete;
    HDC get() const { return dc_; }
    explicit operator bool() const { return dc_ != nullptr; }

private:
    HDC dc_;
};

// SelectObject for a scope; the old object goes back at the end.  A failed
// selection puts nothing back.
class Selection {
public:
    Selection(HDC dc, HGDIOBJ object) : dc_(dc), old_(dc && object ? ::SelectObject(dc, object) : nullptr) {}
    ~Selection() {
        if (old_) ::SelectObject(dc_, old_);
    }
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    explicit operator bool() const { return old_ != nullptr; }

private:
    HDC dc_;
    HGDIOBJ old_;
};

// SelectPalette for a scope (foreground unless asked for background); the
// old palette goes back at the end, the same way.  A null palette selects
// nothing.
class PaletteSelection {
public:
    PaletteSelection(HDC dc, HPALETTE palette, bool background = false)
        : dc_(dc), background_(background ? TRUE : FALSE),
          old_(dc && palette ? ::SelectPalette(dc, palette, background_) : nullptr) {}
    ~PaletteSelection() {
        if (old_) ::SelectPalette(dc_, old_, background_);
    }
    PaletteSelection(const PaletteSelection&) = delete;
    PaletteSelection& operator=(const PaletteSelection&) = delete;

private:
    HDC dc_;
    BOOL background_;
    HPALETTE old_;
};

// SaveDC for a scope; RestoreDC at the end.
class SavedState {
public:
    explicit SavedState(HDC dc) : dc_(dc), level_(dc ? ::SaveDC(dc) : 0) {}
    ~SavedState() {
        if (level_) ::RestoreDC(dc_, level_);
    }
    SavedState(const SavedState&) = delete;
    SavedState& operator=(const SavedState&) = delete;

private:
    HDC dc_;
    int level_;
};

// BeginPaint and EndPaint.
class PaintContext {
public:
    explicit PaintContext(HWND window) : window_(window), dc_(::BeginPaint(window, &paint_)) {}
    ~PaintContext() { ::EndPaint(window_, &paint_); }
    PaintContext(const PaintContext&) = delete;
    PaintContext& operator=(const PaintContext&) = delete;
    HDC get() const { return dc_; }
    const RECT& area() const { return paint_.rcPaint; }

private:
    HWND window_;
    PAINTSTRUCT paint_ = {};
    HDC dc_;
};

// A GDI object deleted at the end of the scope unless handed out.
template <class Handle>
class Owned {
public:
    explicit Owned(Handle handle = nullptr) : handle_(handle) {}
    ~Owned() {
        if (handle_) ::DeleteObject(handle_);
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }
    Handle Release() {
        Handle h = handle_;
        handle_ = nullptr;
        return h;
    }

private:
    Handle handle_;
};

// zoom and magnifier: SetROP2 for a scope; the old mix mode goes back at
// the end.
class DrawMode {
public:
    DrawMode(HDC dc, int mode) : dc_(dc), old_(dc ? ::SetROP2(dc, mode) : 0) {}
    ~DrawMode() {
        if (old_) ::SetROP2(dc_, old_);
    }
    DrawMode(const DrawMode&) = delete;
    DrawMode& operator=(const DrawMode&) = delete;

private:
    HDC dc_;
    int old_;
};

// A device context deleted at the end of the scope unless handed out.
class OwnedDC {
public:
    explicit OwnedDC(HDC dc = nullptr) : dc_(dc) {}
    ~OwnedDC() {
        if (dc_) ::DeleteDC(dc_);
    }
    OwnedDC(const OwnedDC&) = delete;
    OwnedDC& operator=(const OwnedDC&) = delete;
    HDC get() const { return dc_; }
    explicit operator bool() const { return dc_ != nullptr; }
    HDC Release() {
        HDC dc = dc_;
        dc_ = nullptr;
        return dc;
    }

private:
    HDC dc_;
};

// A metafile handle, deleted with DeleteMetaFile at the end of the scope.
class OwnedMetaFile {
public:
    explicit OwnedMetaFile(HMETAFILE metafile = nullptr) : metafile_(metafile) {}
    ~OwnedMetaFile() {
        if (metafile_) ::DeleteMetaFile(metafile_);
    }
    OwnedMetaFile(const OwnedMetaFile&) = delete;
    OwnedMetaFile& operator=(const OwnedMetaFile&) = delete;
    HMETAFILE get() const { return metafile_; }
    explicit operator bool() const { return metafile_ != nullptr; }

private:
    HMETAFILE metafile_;
};

}  // namespace gdi
#endif  // _WIN32
