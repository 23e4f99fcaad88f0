// The DisplayCPP family: paint, size and scroll for hosts that keep the
// position and zoom in their own arrays.
#include "core/dib.h"
#include "display/cpp_layout.h"
#include "display/dib_paint.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <algorithm>

namespace prism {
namespace {

int DotsPerInch(LONG perMetre) { return static_cast<int>(perMetre * 0.0254 + 0.5); }

// The layout's image rectangle and resolution from a header.
CppLayout LayoutOf(const BITMAPINFOHEADER& h, const RECT& client) {
    CppLayout l = {};
    l.client = client;
    l.image = RECT{0, 0, h.biWidth, h.biHeight};
    l.resolution[0] = DotsPerInch(h.biXPelsPerMeter);
    l.resolution[1] = DotsPerInch(h.biYPelsPerMeter);
    return l;
}

// The common end of size and scroll: lay out, set both bars, repaint.
// Each call leaves the image locked once more, as hosts of this family
// expect.
UINT LayoutAndBars(HWND window, HDIB dib, int* position, const int* zoom, WORD flags, const RECT& client, BOOL erase) {
    BlockLock lock(dib);
    BITMAPINFOHEADER h;
    CopyHeaderBytes(lock.get(), lock.size(), &h);
    lock.Release();
    CppLayout l = LayoutOf(h, client);
    UINT result;
    {
        gdi::WindowDC dc(window);
        result = ComputeCppLayout(gdi::GetDeviceCaps(dc.get(), LOGPIXELSX), gdi::GetDeviceCaps(dc.get(), LOGPIXELSY),
                                  &l, zoom, position, true, flags);
    }
    gdi::SetScrollRange(window, SB_HORZ, l.scrollRange[0], l.scrollRange[2], FALSE);
    gdi::SetScrollPos(window, SB_HORZ, l.scrollPos[0], TRUE);
    gdi::SetScrollRange(window, SB_VERT, l.scrollRange[1], l.scrollRange[3], FALSE);
    gdi::SetScrollPos(window, SB_VERT, l.scrollPos[1], TRUE);
    gdi::InvalidateRect(window, nullptr, erase);
    return result;
}

// Moves the pending position of one axis by a scroll code.
void ApplyScrollCode(HWND window, int* position, bool vertical, UINT code, WORD thumb) {
    RECT client = {};
    gdi::GetClientRect(window, &client);
    int& source = position[vertical ? 1 : 0];
    int& pending = position[vertical ? 3 : 2];
    const int half = (vertical ? client.bottom : client.right) / 2;
    switch (code) {
        case SB_LINEUP: pending -= 1; break;
        case SB_LINEDOWN: pending += 1; break;
        case SB_PAGEUP: pending -= half; break;
        case SB_PAGEDOWN: pending += half; break;
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK:
            source = -1;
            pending = thumb;
            break;
        case SB_TOP: source = pending = 0; break;
        case SB_BOTTOM: {
            int minimum = 0, maximum = 0;
            gdi::GetScrollRange(window, vertical ? SB_VERT : SB_HORZ, &minimum, &maximum);
            source = -1;
            pending = maximum;
            break;
        }
        default: break;
    }
}

UINT Scroll(HWND window, HDIB dib, int* position, const int* zoom, WORD flags, UINT code, WORD thumb, bool vertical) {
    if (!position) return 0;
    ApplyScrollCode(window, position, vertical, code, thumb);
    if (!dib) return 0;
    RECT client = {};
    gdi::GetClientRect(window, &client);
    return LayoutAndBars(window, dib, position, zoom, flags, client, FALSE);
}

}  // namespace

// DisplayCPPImage(window, dib, position, zoom, flags): paints the DIB as
// the layout places it (no background is filled) and returns the layout's
// flags; 0 for a null image.  When nothing of the client area is to be
// painted the image stays locked once, as hosts of this family expect.
PRISM_API UINT WINAPI DisplayCPPImage(HWND window, HDIB dib, int* position, const int* zoom, WORD flags) {
    gdi::PaintContext paint(window);
    HDC dc = paint.get();
    if (!dib || !dc || !position) return 0;
    gdi::SetMapMode(dc, MM_TEXT);
    gdi::SetStretchBltMode(dc, COLORONCOLOR);
    RECT client;
    gdi::GetClientRect(window, &client);
    BlockLock lock(dib);
    DibView v;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk || !PixelsForDevice(v)) return 0;
    gdi::Owned<HPALETTE> palette(CreateDIBPalette(dib));
    BITMAPINFOHEADER h;
    CopyHeaderBytes(lock.get(), lock.size(), &h);
    CppLayout l = LayoutOf(h, client);
    const UINT result = ComputeCppLayout(gdi::GetDeviceCaps(dc, LOGPIXELSX), gdi::GetDeviceCaps(dc, LOGPIXELSY), &l,
                                         zoom, position, false, flags);
    RECT visible;
    if (!gdi::IntersectRect(&visible, &l.client, &paint.area())) {
        lock.Release();
        return result;
    }
    gdi::ValidateRect(window, &l.client);
    l.image.right = std::min<LONG>(l.image.right, h.biWidth);
    l.image.bottom = std::min<LONG>(l.image.bottom, h.biHeight);
    gdi::PaletteSelection selected(dc, palette.get(), true);
    gdi::RealizePalette(dc);
    const DWORD rop = (flags & DF_NEGATIVE) ? NOTSRCCOPY : SRCCOPY;
    StretchDibInto(dc, v, l.image, l.client, l.client.right - l.client.left - 1, l.client.bottom - l.client.top - 1, rop);
    return result;
}

// DisplayCPPSize(window, dib, position, zoom, flags, lParam): lays the
// image out in the new client size (low and high word of lParam), sets
// the bars in hundredths of an inch (none in the fit and stretch modes)
// and repaints with erasing.  The layout's flags; 0 for a null image.
PRISM_API UINT WINAPI DisplayCPPSize(HWND window, HDIB dib, int* position, const int* zoom, WORD flags, LPARAM lParam) {
    if (!dib || !position) return 0;
    const RECT client = {0, 0, LOWORD(lParam), HIWORD(lParam)};
    return LayoutAndBars(window, dib, position, zoom, flags, client, TRUE);
}

// DisplayCPPHScroll, DisplayCPPVScroll(window, dib, position, zoom, flags,
// code, thumb): move the position by a scroll code (a line is one pixel,
// or a hundredth of an inch after a thumb drag), then lay out and set the
// bars as on a size message, repainting without erasing.
PRISM_API UINT WINAPI DisplayCPPHScroll(HWND window, HDIB dib, int* position, const int* zoom, WORD flags,
                                        UINT scrollCode, WORD thumb) {
    return Scroll(window, dib, position, zoom, flags, scrollCode, thumb, false);
}

PRISM_API UINT WINAPI DisplayCPPVScroll(HWND window, HDIB dib, int* position, const int* zoom, WORD flags,
                                        UINT scrollCode, WORD thumb) {
    return Scroll(window, dib, position, zoom, flags, scrollCode, thumb, true);
}

}  // namespace prism
