// The window-message handlers of the mapped display: destroy, paint, size,
// scrolling by bar and by position, and painting into a host's context.
#include "core/dib.h"
#include "display/display_map.h"
#include "display/display_math.h"
#include "platform/export.h"
#include "platform/gdi.h"

namespace prism {
namespace {

// Guards DisplayWmSize against the size message that showing or hiding a
// scroll bar sends from inside it.  One for all windows.
int InDisplaySize = 0;

RECT ToDeviceRect(HDC dc, int right, int bottom) {
    POINT p[2] = {{0, 0}, {right, bottom}};
    gdi::LPtoDP(dc, p, 2);
    return RECT{p[0].x, p[0].y, p[1].x, p[1].y};
}

// The part of the image to draw for a working rectangle of the device:
// one pixel of margin on both sides of the conversion, full rows for a
// DIB, the top left corner snapped to whole window extents, inside the image.
RECT SourceArea(HDC dc, const DisplayState* s, const RECT& work) {
    RECT image = ToDeviceRect(dc, s->imageWidth, s->imageHeight);
    RECT a;
    gdi::IntersectRect(&a, &image, &work);
    InflateRect(&a, 1, 1);
    gdi::DPtoLP(dc, reinterpret_cast<POINT*>(&a), 2);
    InflateRect(&a, 1, 1);
    if (!s->bitmap) {
        a.left = 0;
        a.right = s->imageWidth;
    }
    SIZE e = {};
    gdi::GetWindowExtEx(dc, &e);
    if (e.cx) a.left = a.left / e.cx * e.cx;
    if (e.cy) a.top = a.top / e.cy * e.cy;
    if (a.left < 0) a.left = 0;
    if (a.top < 0) a.top = 0;
    if (a.right > s->imageWidth) a.right = s->imageWidth;
    if (a.bottom > s->imageHeight) a.bottom = s->imageHeight;
    return a;
}

// Draws the rows of a DIB that lie in `a`; a block the graphics system
// could not read whole is not drawn.
void DrawDib(HDC dc, HDIB dib, const RECT& a, DWORD rop) {
    BlockLock lock(dib);
    DibView v;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk || !PixelsForDevice(v)) return;
    const auto* info = static_cast<const BITMAPINFO*>(lock.get());
    const int w = a.right - a.left, h = a.bottom - a.top;
    gdi::StretchDIBits(dc, a.left, a.top, w, h, a.left, static_cast<int>(v.height) - a.bottom, w, h, v.bits, info,
                       DIB_RGB_COLORS, rop);
}

// Paints the part of the image that lies in `rect` (the clip box, or the
// client area, when none is given) through the record's mapping.
void PaintDisplayRect(HDC dc, DisplayState* s, const RECT* rect) {
    gdi::SavedState saved(dc);
    RECT work = {};
    if (rect) {
        work = *rect;
    } else {
        gdi::GetClipBox(dc, &work);
        if (work.right <= work.left || work.bottom <= work.top) work = s->clientRect;
    }
    RemapDisplay(dc, s);
    if (s->bitCount == 1) {
        gdi::SetStretchBltMode(dc, BLACKONWHITE);
        gdi::SetBkColor(dc, 0xFFFFFF);
    } else {
        gdi::SetStretchBltMode(dc, COLORONCOLOR);
    }
    gdi::SetBkMode(dc, OPAQUE);
    gdi::PaletteSelection selected(dc, s->palette, true);
    if (s->palette) gdi::RealizePalette(dc);
    const RECT a = SourceArea(dc, s, work);
    const DWORD rop = (s->displayFlags & DF_NEGATIVE) ? NOTSRCCOPY : SRCCOPY;
    if (s->bitmap) {
        gdi::MemoryDC memory(dc);
        gdi::Selection held(memory.get(), s->bitmap);
        gdi::BitBlt(dc, a.left, a.top, a.right - a.left, a.bottom - a.top, memory.get(), a.left, a.top, rop);
    } else if (s->dib) {
        DrawDib(dc, s->dib, a, rop);
    }
}

// The unit of scrolling: the viewport extent of a fresh mapping, at least 1.
SIZE ScrollUnit(HDC dc, DisplayState* s) {
    gdi::SavedState saved(dc);
    RemapDisplay(dc, s);
    SIZE e = {};
    gdi::GetViewportExtEx(dc, &e);
    if (e.cx < 2) e.cx = 1;
    if (e.cy < 2) e.cy = 1;
    return e;
}

// One scroll-bar message on one axis.
int ScrollByBar(HWND window, WPARAM wParam, DisplayState* s, bool vertical) {
    gdi::WindowDC dc(window);
    const SIZE e = ScrollUnit(dc.get(), s);
    RECT client = {};
    gdi::GetClientRect(window, &client);
    int& position = vertical ? s->scrollY : s->scrollX;
    const int old = position, step = vertical ? e.cy : e.cx;
    const int minimum = vertical ? s->scrollMinY : s->scrollMinX, maximum = vertical ? s->scrollMaxY : s->scrollMaxX;
    const int page = vertical ? client.bottom - client.top : client.right - client.left;
    position = ScrollRequest(LOWORD(wParam), old, step, page, HIWORD(wParam), minimum, maximum, vertical);
    position = LimitAndSnap(position, old, step, minimum, maximum);
    ClampScrollPos(s);
    RECT uncovered = {};
    const int moved = old - position;
    if (moved) gdi::ScrollDC(dc.get(), vertical ? 0 : moved, vertical ? moved : 0, &client, nullptr, nullptr, &uncovered);
    dc.Release();
    if (!moved) return 0;
    ApplyScrollBars(window, vertical ? kVerticalBar : kHorizontalBar, s);
    gdi::InvalidateRect(window, &uncovered, FALSE);
    gdi::UpdateWindow(window);
    return 0;
}

// Repaints one strip of the uncovered area now and takes it out of the
// region left for later.
void PaintStrip(HWND window, const RECT& strip, HRGN rest) {
    gdi::InvalidateRect(window, &strip, FALSE);
    gdi::UpdateWindow(window);
    if (!rest) return;
    gdi::Owned<HRGN> done(gdi::CreateRectRgnIndirect(&strip));
    gdi::CombineRgn(rest, rest, done.get(), RGN_DIFF);
}

}  // namespace

// DisplayWmDestroy(window, wParam, lParam, state): deletes the bitmap and
// the palette the record owns and clears their handles; the DIB is the
// host's.  0.
PRISM_API int WINAPI DisplayWmDestroy(HWND, WPARAM, LPARAM, DisplayState* state) {
    if (!state) return 0;
    if ((state->ownership & 1) && state->bitmap) {
        gdi::DeleteObject(state->bitmap);
        state->bitmap = nullptr;
    }
    if ((state->ownership & 2) && state->palette) {
        gdi::DeleteObject(state->palette);
        state->palette = nullptr;
    }
    return 0;
}

// DisplayWmPaint(window, state): paints what the window asks for and fills
// the rest with the window class's background brush.  0.
PRISM_API int WINAPI DisplayWmPaint(HWND window, DisplayState* state) {
    gdi::PaintContext paint(window);
    if (!state || !paint.get()) return 0;
    HDC dc = paint.get();
    const auto brush = reinterpret_cast<HBRUSH>(gdi::GetClassLongPtrA(window, GCLP_HBRBACKGROUND));
    gdi::Selection withBrush(dc, brush);
    PaintDisplayRect(dc, state, nullptr);
    RECT image;
    {
        gdi::SavedState saved(dc);
        MapDisplayCore(dc, state, 0);
        image = ToDeviceRect(dc, state->imageWidth, state->imageHeight);
    }
    gdi::ExcludeClipRect(dc, image.left, image.top, image.right, image.bottom);
    const RECT& area = paint.area();
    gdi::PatBlt(dc, area.left, area.top, area.right - area.left + 1, area.bottom - area.top + 1, PATCOPY);
    return 0;
}

// DisplayWmSize(window, wParam, lParam, state): takes the new client size,
// remaps and sets the bars; the window is not repainted and the position
// not limited here.  1 for a null window; 0 otherwise, also when a size
// message arrives while one is handled.
PRISM_API int WINAPI DisplayWmSize(HWND window, WPARAM, LPARAM, DisplayState* state) {
    if (!state || InDisplaySize) return 0;
    if (!window) return 1;
    InDisplaySize = 1;
    gdi::GetClientRect(window, &state->clientRect);
    {
        gdi::WindowDC dc(window);
        gdi::SavedState saved(dc.get());
        RemapDisplay(dc.get(), state);
    }
    ApplyScrollBars(window, kBothBars, state);
    InDisplaySize = 0;
    return 0;
}

// DisplayWmHorzScroll, DisplayWmVertScroll(window, wParam, lParam, state):
// move by the scroll code in the low word of wParam (thumb position in the
// high word), in whole units of the mapping; the pixels still visible are
// moved and only the uncovered part is repainted.  1 for a null window.
PRISM_API int WINAPI DisplayWmHorzScroll(HWND window, WPARAM wParam, LPARAM, DisplayState* state) {
    if (!state) return 0;
    if (!window) return 1;
    return ScrollByBar(window, wParam, state, false);
}

PRISM_API int WINAPI DisplayWmVertScroll(HWND window, WPARAM wParam, LPARAM, DisplayState* state) {
    if (!state) return 0;
    if (!window) return 1;
    return ScrollByBar(window, wParam, state, true);
}

// DisplaySetScrollPos(window, state, position): scrolls to a position
// (scrollX, scrollY), limited and snapped as by the bars, repainting the
// uncovered strips one after the other.  1 for a null window or position.
PRISM_API int WINAPI DisplaySetScrollPos(HWND window, DisplayState* state, const int* position) {
    if (!state) return 0;
    if (!window || !position) return 1;
    gdi::WindowDC dc(window);
    const SIZE e = ScrollUnit(dc.get(), state);
    const int oldX = state->scrollX, oldY = state->scrollY;
    state->scrollX = LimitAndSnap(position[0], oldX, e.cx, state->scrollMinX, state->scrollMaxX);
    state->scrollY = LimitAndSnap(position[1], oldY, e.cy, state->scrollMinY, state->scrollMaxY);
    ClampScrollPos(state);
    const int dx = oldX - state->scrollX, dy = oldY - state->scrollY;
    if (!dx && !dy) return 0;
    RECT client = {}, u = {};
    gdi::GetClientRect(window, &client);
    gdi::Owned<HRGN> rest(gdi::CreateRectRgn(0, 0, 0, 0));
    gdi::ScrollDC(dc.get(), dx, dy, &client, nullptr, rest.get(), &u);
    dc.Release();
    gdi::ValidateRgn(window, rest.get());
    RECT strip = u;
    if (dy < 0) strip.top = u.bottom + dy;
    if (dy > 0) strip.bottom = u.top + dy;
    if (dy) PaintStrip(window, strip, rest.get());
    strip = u;
    if (dx < 0) {
        strip.left = u.right + dx;
        PaintStrip(window, strip, rest.get());
    } else if (dx > 0) {
        // The left strip stays in the region as well, and is painted twice.
        strip.right = u.left + dx;
        PaintStrip(window, strip, nullptr);
    }
    if (rest) {
        gdi::InvalidateRgn(window, rest.get(), FALSE);
        gdi::UpdateWindow(window);
    }
    ApplyScrollBars(window, kHorizontalBar, state);
    ApplyScrollBars(window, kVerticalBar, state);
    return 0;
}

// DisplayDIBImageDC(dc, state): paints the whole image into a context the
// host supplies (a printer's, a memory context) through the record's
// mapping.  The record's flags; 0 for a null record.
PRISM_API UINT WINAPI DisplayDIBImageDC(HDC dc, DisplayState* state) {
    if (!state) return 0;
    ClampScrollPos(state);
    PaintDisplayRect(dc, state, nullptr);
    return state->displayFlags;
}

PRISM_API UINT WINAPI DisplayImageDC(HDC dc, DisplayState* state) { return DisplayDIBImageDC(dc, state); }

}  // namespace prism
