// DisplayStart, DisplayDIBStart, MapDisplayDC and the mapping they share:
// an image shown in a host window through the host's DisplayState, zoomed,
// fitted, centred and scrolled by the context's mapping, not by resampling.
#include "display/display_map.h"

#include "core/dib.h"
#include "display/display_math.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <cstring>

namespace prism {
namespace {

constexpr UINT kFitModes = DF_FIT | DF_STRETCH;

int ClientWidth(const DisplayState* s) { return s->clientRect.right - s->clientRect.left; }
int ClientHeight(const DisplayState* s) { return s->clientRect.bottom - s->clientRect.top; }

// MM_TEXT first, so that the anisotropic mode starts from extents of 1:1.
void ResetModes(HDC dc) {
    gdi::SetMapMode(dc, MM_TEXT);
    gdi::SetMapMode(dc, MM_ANISOTROPIC);
}

void SetExtents(HDC dc, const Extents& e) {
    gdi::SetWindowExtEx(dc, e.windowX, e.windowY, nullptr);
    gdi::SetViewportExtEx(dc, e.viewportX, e.viewportY, nullptr);
}

// The fit branch: zoom and physical size are dropped, the resolutions
// still correct the proportions.
void MapFit(HDC dc, DisplayState* s, int reset) {
    ResetModes(dc);
    const FitSize fit = FitViewport(s->imageWidth, s->imageHeight, s->imageDpiX, s->imageDpiY, s->deviceDpiX,
                                    s->deviceDpiY, ClientWidth(s), ClientHeight(s));
    ResetModes(dc);
    gdi::ScaleViewportExtEx(dc, fit.width, 1, fit.height, 1, nullptr);
    gdi::ScaleWindowExtEx(dc, s->imageWidth, 1, s->imageHeight, 1, nullptr);
    if (reset) s->scrollX = s->scrollY = 0;
}

// Zoom (and physical size) as extents, reduced so that a viewport extent,
// the unit of scrolling, stays at 16 or below.
void MapZoom(HDC dc) {
    SIZE w = {}, v = {};
    gdi::GetWindowExtEx(dc, &w);
    gdi::GetViewportExtEx(dc, &v);
    SetExtents(dc, ReduceExtents(Extents{w.cx, w.cy, v.cx, v.cy}));
}

// Device point (x, y) in logical coordinates of the context.
POINT ToLogical(HDC dc, int x, int y) {
    POINT p = {x, y};
    gdi::DPtoLP(dc, &p, 1);
    return p;
}

POINT ToDevice(HDC dc, int x, int y) {
    POINT p = {x, y};
    gdi::LPtoDP(dc, &p, 1);
    return p;
}

void Zoom(DisplayState* s, const int* zoom) {
    s->zoomNumX = zoom ? zoom[0] : 1;
    s->zoomDenX = zoom ? zoom[1] : 1;
    s->zoomNumY = zoom ? zoom[2] : 1;
    s->zoomDenY = zoom ? zoom[3] : 1;
}

// A requested top-left logical point becomes the scroll position.
void ScrollToOrigin(HDC dc, DisplayState* s, const int* origin) {
    gdi::SetWindowOrgEx(dc, 0, 0, nullptr);
    const POINT p = ToDevice(dc, origin[0], origin[1]);
    s->scrollX = p.x - s->centreX;
    s->scrollY = p.y - s->centreY;
}

int InitBitmapDisplay(DisplayState* s, HDC dc, HBITMAP bitmap, HPALETTE palette, const int* dpi, const RECT& client,
                      const int* origin, const int* zoom, UINT flags) {
    if (!dc || !bitmap) return 0;
    BITMAP bm;
    gdi::BitmapRecord(bitmap, &bm);
    s->bitmap = bitmap;
    s->displayFlags = flags;
    s->imageWidth = bm.bmWidth;
    s->imageHeight = bm.bmHeight;
    s->bitCount = bm.bmBitsPixel;
    s->dib = nullptr;
    s->palette = palette;
    s->deviceDpiX = gdi::GetDeviceCaps(dc, LOGPIXELSX);
    s->deviceDpiY = gdi::GetDeviceCaps(dc, LOGPIXELSY);
    s->imageDpiX = dpi ? dpi[0] : s->deviceDpiX;
    s->imageDpiY = dpi ? dpi[1] : s->deviceDpiY;
    Zoom(s, zoom);
    s->clientRect = client;
    gdi::SavedState saved(dc);
    MapDisplayCore(dc, s, 1);
    if (origin) ScrollToOrigin(dc, s, origin);
    return static_cast<int>(s->displayFlags);
}

// Resolution in dots per inch from a header's pixels per metre.
int DotsPerInch(LONG perMetre) { return static_cast<int>(perMetre * 0.0254 + 0.5); }

int InitDIBDisplay(DisplayState* s, HDC dc, HDIB dib, const RECT& client, const int* origin, const int* zoom,
                   UINT flags) {
    if (!dc || !dib) return 0;
    s->dib = dib;
    s->displayFlags = flags;
    BlockLock lock(dib);
    if (!lock) return 0;
    BITMAPINFOHEADER h;
    CopyHeaderBytes(lock.get(), lock.size(), &h);
    s->imageWidth = h.biWidth;
    s->imageHeight = h.biHeight;
    s->deviceDpiX = gdi::GetDeviceCaps(dc, LOGPIXELSX);
    s->deviceDpiY = gdi::GetDeviceCaps(dc, LOGPIXELSY);
    s->imageDpiX = DotsPerInch(h.biXPelsPerMeter);
    s->imageDpiY = DotsPerInch(h.biYPelsPerMeter);
    if (s->imageDpiX < 1) s->imageDpiX = s->deviceDpiX;
    if (s->imageDpiY < 1) s->imageDpiY = s->deviceDpiY;
    Zoom(s, zoom);
    s->clientRect = client;
    // An owned palette is made anew; one the host gave stays in use.
    if (s->palette && (s->ownership & 2)) {
        gdi::DeleteObject(s->palette);
        s->palette = nullptr;
    }
    if (!s->palette) {
        s->palette = CreateDIBPalette(dib);
        s->ownership |= 2;
    }
    s->bitCount = h.biBitCount;
    lock.Unlock();
    if (flags & DF_MAKE_BITMAP) {
        if (s->bitmap && (s->ownership & 1)) gdi::DeleteObject(s->bitmap);
        s->ownership |= 1;
        s->bitmap = ConvertDIBToBitmap(dib);
    }
    s->displayFlags &= ~static_cast<UINT>(DF_MAKE_BITMAP);
    gdi::SavedState saved(dc);
    if (origin) {
        s->scrollX = s->scrollY = 0;
        MapDisplayCore(dc, s, 1);
        ScrollToOrigin(dc, s, origin);
    }
    return static_cast<int>(s->displayFlags);
}

// The common frame of the two start exports.
template <class Init>
void StartDisplay(HWND window, int* origin, UINT flags, DisplayState* s, Init init) {
    if (flags & kFitModes) {
        // The bars go before the client area is measured.
        s->displayFlags = flags;
        s->scrollMinX = s->scrollMinY = s->scrollMaxX = s->scrollMaxY = -1;
        ApplyScrollBars(window, kBothBars, s);
    }
    RECT client = {};
    gdi::GetClientRect(window, &client);
    {
        gdi::WindowDC dc(window);
        init(dc.get(), client);
        RemapDisplay(dc.get(), s);
        if (!ClampScrollPos(s)) RemapDisplay(dc.get(), s);
        if (origin) {
            origin[0] = s->viewLeft;
            origin[1] = s->viewTop;
            origin[2] = s->originX;
            origin[3] = s->originY;
        }
    }
    ApplyScrollBars(window, kBothBars, s);
    gdi::InvalidateRect(window, nullptr, TRUE);
}

}  // namespace

void MapDisplayCore(HDC dc, DisplayState* s, int reset) {
    gdi::SetMapMode(dc, MM_TEXT);
    gdi::SetWindowOrgEx(dc, 0, 0, nullptr);
    if (reset) s->centreX = s->centreY = 0;
    gdi::SetMapMode(dc, MM_ANISOTROPIC);
    gdi::ScaleWindowExtEx(dc, s->zoomDenX, 1, s->zoomDenY, 1, nullptr);
    gdi::ScaleViewportExtEx(dc, s->zoomNumX, 1, s->zoomNumY, 1, nullptr);
    if (s->displayFlags & DF_PHYSICAL) {
        gdi::ScaleViewportExtEx(dc, s->deviceDpiX, 1, s->deviceDpiY, 1, nullptr);
        gdi::ScaleWindowExtEx(dc, s->imageDpiX, 1, s->imageDpiY, 1, nullptr);
    }
    if (s->displayFlags & DF_FIT) {
        MapFit(dc, s, reset);
    } else if (s->displayFlags & DF_STRETCH) {
        ResetModes(dc);
        SetExtents(dc, Extents{s->imageWidth, s->imageHeight, ClientWidth(s), ClientHeight(s)});
    } else {
        MapZoom(dc);
    }
    if ((s->displayFlags & DF_CENTRE) && reset) {
        const POINT a = ToDevice(dc, 0, 0), b = ToDevice(dc, s->imageWidth, s->imageHeight);
        s->centreX = ((b.x - a.x) - ClientWidth(s)) / 2;
        s->centreY = ((b.y - a.y) - ClientHeight(s)) / 2;
    }
    const POINT org = ToLogical(dc, s->scrollX + s->centreX, s->scrollY + s->centreY);
    gdi::SetWindowOrgEx(dc, org.x, org.y, nullptr);
    if (reset) {
        s->windowOrgX = org.x;
        s->windowOrgY = org.y;
    }
    const POINT view = ToLogical(dc, 0, 0), o = ToDevice(dc, 0, 0);
    s->viewLeft = view.x;
    s->viewTop = view.y;
    s->originX = o.x;
    s->originY = o.y;
}

void RemapDisplay(HDC dc, DisplayState* s) {
    MapDisplayCore(dc, s, 1);
    ComputeScrollRanges(dc, s);
}

void ComputeScrollRanges(HDC dc, DisplayState* s) {
    POINT size;
    {
        gdi::SavedState saved(dc);
        gdi::SetWindowOrgEx(dc, 0, 0, nullptr);
        size = ToDevice(dc, s->imageWidth, s->imageHeight);
    }
    const std::int64_t ex = static_cast<std::int64_t>(size.x) - ClientWidth(s);
    const std::int64_t ey = static_cast<std::int64_t>(size.y) - ClientHeight(s);
    if (ex < 1) {
        s->scrollMinX = s->scrollMaxX = -1;
    } else {
        s->scrollMinX = -s->centreX;
        s->scrollMaxX = static_cast<int>(ex - s->centreX);
    }
    if (ey < 1) {
        s->scrollMinY = s->scrollMaxY = -1;
    } else {
        s->scrollMinY = -s->centreY;
        s->scrollMaxY = static_cast<int>(ey - s->centreY);
    }
}

int ClampScrollPos(DisplayState* s) {
    const int x = s->scrollX, y = s->scrollY;
    if (s->scrollX < s->scrollMinX) s->scrollX = s->scrollMinX;
    if (s->scrollX > s->scrollMaxX) s->scrollX = s->scrollMaxX;
    if (s->scrollY < s->scrollMinY) s->scrollY = s->scrollMinY;
    if (s->scrollY > s->scrollMaxY) s->scrollY = s->scrollMaxY;
    return x == s->scrollX && y == s->scrollY ? 1 : 0;
}

void ApplyScrollBars(HWND window, int axis, DisplayState* s) {
    auto apply = [&](int bar, UINT hidden, int minimum, int maximum, int position) {
        if (s->displayFlags & hidden) {
            gdi::SetScrollRange(window, bar, -1, -1, TRUE);  // hides the bar
            return;
        }
        gdi::SetScrollRange(window, bar, minimum, maximum, FALSE);
        gdi::SetScrollPos(window, bar, position, TRUE);
    };
    if (axis == kVerticalBar || axis == kBothBars)
        apply(SB_VERT, DF_NO_VSCROLL, s->scrollMinY, s->scrollMaxY, s->scrollY);
    if (axis == kHorizontalBar || axis == kBothBars)
        apply(SB_HORZ, DF_NO_HSCROLL, s->scrollMinX, s->scrollMaxX, s->scrollX);
}

int SetDisplayZoom(HWND window, const int* zoom, DisplayState* s) {
    Zoom(s, zoom);
    gdi::WindowDC dc(window);
    RemapDisplay(dc.get(), s);
    return 0;
}

// DisplayStart(window, bitmap, palette, dpi, origin, zoom, flags, state):
// fills the host's record for a device bitmap and shows it: mapping,
// scroll ranges and bars, and a repaint of the whole window.  The origin
// array, when given, asks for a logical point at the top left and gets
// viewLeft, viewTop, originX, originY back.  Returns the record's flags,
// 0 for a null record.
PRISM_API UINT WINAPI DisplayStart(HWND window, HBITMAP bitmap, HPALETTE palette, const int* dpi, int* origin,
                                   const int* zoom, UINT flags, DisplayState* state) {
    if (!state) return 0;
    StartDisplay(window, origin, flags, state, [&](HDC dc, const RECT& client) {
        InitBitmapDisplay(state, dc, bitmap, palette, dpi, client, origin, zoom, flags);
    });
    return state->displayFlags;
}

// DisplayDIBStart(window, dib, origin, zoom, flags, state): the same for a
// DIB, with the image's own resolution and palette (made and owned by the
// record unless the host's is in use) and, with DF_MAKE_BITMAP, a device
// bitmap made from it.  Returns the flags as passed, 0 for a null record.
PRISM_API UINT WINAPI DisplayDIBStart(HWND window, HDIB dib, int* origin, const int* zoom, UINT flags,
                                      DisplayState* state) {
    if (!state) return 0;
    StartDisplay(window, origin, flags, state, [&](HDC dc, const RECT& client) {
        InitDIBDisplay(state, dc, dib, client, origin, zoom, flags);
    });
    return flags;
}

// MapDisplayDC(dc, state): puts the record's mapping into a context the
// host holds, without working out the centre or window origin anew.
PRISM_API void WINAPI MapDisplayDC(HDC dc, DisplayState* state) {
    if (state) MapDisplayCore(dc, state, 0);
}

}  // namespace prism
