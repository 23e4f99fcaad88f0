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
// metafiles, text drawn into bitmaps, and the clipboard
using ::CloseClipboard;
using ::CloseMetaFile;
using ::CreateMetaFileA;
using ::DeleteMetaFile;
using ::DrawTextA;
using ::GetClipboardData;
using ::GetStockObject;
using ::GetTextMetricsA;
using ::IsWindow;
using ::OemToCharA;
using ::OpenClipboard;
using ::PatBlt;
using ::PlayMetaFile;
using ::SelectObject;
using ::SelectPalette;
using ::SetMapMode;
using ::SetMetaFileBitsEx;
using ::SetViewportExtEx;
using ::SetWindowExtEx;
using ::StretchDIBits;

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

// SelectPalette (foreground) for a scope; the old palette goes back at the
// end.  A null palette selects nothing.
class PaletteSelection {
public:
    PaletteSelection(HDC dc, HPALETTE palette)
        : dc_(dc), old_(dc && palette ? ::SelectPalette(dc, palette, FALSE) : nullptr) {}
    ~PaletteSelection() {
        if (old_) ::SelectPalette(dc_, old_, FALSE);
    }
    PaletteSelection(const PaletteSelection&) = delete;
    PaletteSelection& operator=(const PaletteSelection&) = delete;

private:
    HDC dc_;
    HPALETTE old_;
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
