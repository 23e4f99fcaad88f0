// DisplayImage and DisplayDIBImage: one call from a host's paint handler
// that measures the window, sets the bars, draws and fills the rest, in
// the plain device mapping with float scales.
#include "core/dib.h"
#include "display/dib_paint.h"
#include "display/display_math.h"
#include "display/low_mem_stretch.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <algorithm>

namespace prism {
namespace {

// Flags of this family: the fit mode only as the exact value 8.
constexpr WORD kFitOnly = DF_FIT;

int Trunc(float v) { return TruncateToInt(static_cast<double>(v)); }
int Round(float v) { return TruncateToInt(static_cast<double>(v + 0.5f)); }
int Width(const RECT& r) { return r.right - r.left; }
int Height(const RECT& r) { return r.bottom - r.top; }

DWORD RasterOp(WORD flags) { return (flags & DF_NEGATIVE) ? NOTSRCCOPY : SRCCOPY; }

// What lies outside the drawn rectangle gets the context's brush.
void FillAround(HDC dc, const RECT& drawn, const RECT& area) {
    gdi::ExcludeClipRect(dc, drawn.left, drawn.top, drawn.right, drawn.bottom);
    gdi::PatBlt(dc, area.left, area.top, Width(area) + 1, Height(area) + 1, PATCOPY);
}

void SetBar(HWND window, int bar, int maximum, int position) {
    gdi::SetScrollRange(window, bar, 0, maximum, FALSE);
    gdi::SetScrollPos(window, bar, position, TRUE);
}

// The source and destination of DisplayImage outside the fit mode, in
// hundredths of an inch on the way; sets the bars.
void ScrollLayout(HWND window, RECT* rc, RECT* r, int* position, float x1, float y1, float x2, float y2, float b,
                  float a) {
    rc->right = Trunc(static_cast<float>(rc->right) / x1 * b);
    rc->bottom = Trunc(static_cast<float>(rc->bottom) / y1 * a);
    int ox = position[0] < 0 ? position[2]
                             : Round(static_cast<float>(position[2]) / x1) + Round(static_cast<float>(position[0]) / x2);
    int oy = position[1] < 0 ? position[3]
                             : Round(static_cast<float>(position[3]) / y1) + Round(static_cast<float>(position[1]) / y2);
    position[2] = position[3] = 0;
    const int overX = std::max<int>(r->right - rc->right, 0), overY = std::max<int>(r->bottom - rc->bottom, 0);
    ox = std::max(std::min(ox, overX), 0);
    oy = std::max(std::min(oy, overY), 0);
    SetBar(window, SB_VERT, overY, overY ? oy : 0);
    SetBar(window, SB_HORZ, overX, overX ? ox : 0);
    gdi::OffsetRect(rc, ox, oy);
    gdi::IntersectRect(r, r, rc);
    gdi::IntersectRect(rc, r, rc);
    gdi::OffsetRect(rc, -ox, -oy);
    rc->right = Trunc(static_cast<float>(rc->right) / b * x1);
    rc->bottom = Trunc(static_cast<float>(rc->bottom) / a * y1);
    *r = RECT{Trunc(static_cast<float>(r->left) * x2), Trunc(static_cast<float>(r->top) * y2),
              Trunc(static_cast<float>(r->right) * x2), Trunc(static_cast<float>(r->bottom) * y2)};
    position[0] = r->left;
    position[1] = r->top;
}

// The zoom of one axis from a pair of numbers, used when both are non-zero.
float Ratio(const int* zoom, int top, int bottom) {
    return zoom && zoom[top] && zoom[bottom] ? static_cast<float>(zoom[top]) / static_cast<float>(zoom[bottom]) : 1.0f;
}

// DisplayDIBImage outside the fit mode: source r in image pixels and the
// destination rc, with the bars shown where the image is larger.
void DibScrollLayout(HWND window, RECT* rc, RECT* r, const RECT& whole, const int* position, float sx, float sy) {
    r->right = Trunc(static_cast<float>(whole.right) * sx);
    r->bottom = Trunc(static_cast<float>(whole.bottom) * sy);
    const float ox = static_cast<float>(position[2]) * sx, oy = static_cast<float>(position[3]) * sy;
    gdi::ShowScrollBar(window, SB_HORZ, rc->right < r->right);
    gdi::ValidateRect(window, nullptr);
    gdi::GetClientRect(window, rc);
    gdi::ShowScrollBar(window, SB_VERT, rc->bottom < r->bottom);
    gdi::ValidateRect(window, nullptr);
    gdi::GetClientRect(window, rc);
    // The position counts as a share of the scaled size.
    if (rc->right < r->right) {
        const int over = std::max<int>(r->right - rc->right, 0);
        r->left = Round(static_cast<float>(over) / static_cast<float>(r->right) * ox);
        r->right = std::min<LONG>(rc->right + r->left, r->right);
    }
    if (rc->bottom < r->bottom) {
        const int over = std::max<int>(r->bottom - rc->bottom, 0);
        r->top = Round(static_cast<float>(over) / static_cast<float>(r->bottom) * oy);
        r->bottom = std::min<LONG>(rc->bottom + r->top, r->bottom);
    }
    const int dx = r->left, dy = r->top;
    gdi::OffsetRect(rc, dx, dy);
    gdi::IntersectRect(rc, rc, r);
    gdi::OffsetRect(rc, -dx, -dy);
    *r = RECT{Round(static_cast<float>(r->left) / sx), Round(static_cast<float>(r->top) / sy),
              Round(static_cast<float>(r->right) / sx), Round(static_cast<float>(r->bottom) / sy)};
    r->right = std::min<LONG>(r->right, whole.right);
    r->bottom = std::min<LONG>(r->bottom, whole.bottom);
}

}  // namespace

// Draws the source rectangle r of a DIB into rc: through the low-memory
// stretcher of its depth when the switch is on (and one exists), else by
// the graphics system.  Shared with the DisplayCPP family, which passes a
// destination one pixel smaller to the stretcher.
void StretchDibInto(HDC dc, const DibView& v, const RECT& r, const RECT& rc, int stretchW, int stretchH, DWORD rop) {
    const auto* info = reinterpret_cast<const BITMAPINFO*>(v.header);
    const StretchRowsFn stretch = LowMemStretchFlag && v.compression == 0 ? StretchRowsFor(v.bitCount) : nullptr;
    OwnedBlock small(stretch ? stretch(v.header, v.bits, r.left, r.top, Width(r), Height(r), stretchW, stretchH)
                             : nullptr);
    BlockLock done(small.get());
    if (done) {
        DibView s;
        if (ViewDib(done.get(), done.size(), &s) == DibStatus::kOk) {
            gdi::StretchDIBits(dc, rc.left, rc.top, Width(rc), Height(rc), 0, 0, static_cast<int>(s.width),
                               static_cast<int>(s.height), s.bits, static_cast<const BITMAPINFO*>(done.get()),
                               DIB_RGB_COLORS, rop);
            return;
        }
    }
    gdi::StretchDIBits(dc, rc.left, rc.top, Width(rc), Height(rc), r.left, static_cast<int>(v.height) - r.bottom,
                       Width(r), Height(r), v.bits, info, DIB_RGB_COLORS, rop);
}

// DisplayImage(window, bitmap, palette, position, dpi, zoom, flags): paints
// a device bitmap into the window, fitted (flags exactly 8: shrunk to the
// client area, never enlarged) or at the zoom from the position asked for,
// with the bars in hundredths of an inch.  The position array gets the
// source point used.  Always 1.
PRISM_API int WINAPI DisplayImage(HWND window, HBITMAP bitmap, HPALETTE palette, int* position, const int* dpi,
                                  const int* zoom, WORD flags) {
    gdi::PaintContext paint(window);
    HDC dc = paint.get();
    BITMAP bm;
    if (!bitmap || !dc || !gdi::BitmapRecord(bitmap, &bm) || (flags != kFitOnly && !position)) return 1;
    const float b = Ratio(zoom, 1, 0), a = Ratio(zoom, 3, 2);
    gdi::SetMapMode(dc, MM_TEXT);
    gdi::SetStretchBltMode(dc, COLORONCOLOR);
    RECT rc;
    gdi::GetClientRect(window, &rc);
    const float x1 = static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSX)) * 0.01f;
    const float y1 = static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSY)) * 0.01f;
    const float x2 = dpi && dpi[0] ? static_cast<float>(dpi[0]) * 0.01f : x1;
    const float y2 = dpi && dpi[1] ? static_cast<float>(dpi[1]) * 0.01f : y1;
    RECT r = {0, 0, Trunc(static_cast<float>(bm.bmWidth) / x2), Trunc(static_cast<float>(bm.bmHeight) / y2)};
    if (flags == kFitOnly) {
        const float cw = static_cast<float>(rc.right) / x1, ch = static_cast<float>(rc.bottom) / y1;
        const float s = std::min({1.0f, ch / static_cast<float>(r.bottom), cw / static_cast<float>(r.right)});
        rc = RECT{0, 0, Trunc(s * x1 * static_cast<float>(r.right)), Trunc(s * y1 * static_cast<float>(r.bottom))};
        r = RECT{0, 0, bm.bmWidth, bm.bmHeight};
        gdi::IntersectRect(&rc, &rc, &r);
    } else {
        ScrollLayout(window, &rc, &r, position, x1, y1, x2, y2, b, a);
    }
    gdi::MemoryDC memory(dc);
    gdi::PaletteSelection windowPalette(dc, palette, true);
    {
        gdi::PaletteSelection memoryPalette(memory.get(), palette, true);
        if (palette) {
            gdi::RealizePalette(dc);
            gdi::RealizePalette(memory.get());
        }
        gdi::Selection held(memory.get(), bitmap);
        gdi::StretchBlt(dc, rc.left, rc.top, Width(rc), Height(rc), memory.get(), r.left, r.top, Width(r), Height(r),
                        RasterOp(flags));
    }
    FillAround(dc, rc, paint.area());
    return 1;
}

// DisplayDIBImage(window, dib, position, zoom, flags): paints a DIB into the
// window, fitted (flags exactly 8: enlarged or reduced to the client area)
// or at its resolution and zoom from the position in image pixels, with
// scroll bars shown where it is larger than the window.  A block the
// graphics system could not read whole is not drawn.  Always 1.
PRISM_API int WINAPI DisplayDIBImage(HWND window, HDIB dib, const int* position, const int* zoom, WORD flags) {
    gdi::PaintContext paint(window);
    HDC dc = paint.get();
    if (!dib || !dc || (flags != kFitOnly && !position)) return 1;
    RECT rc;
    gdi::GetClientRect(window, &rc);
    gdi::SetMapMode(dc, MM_TEXT);
    gdi::SetStretchBltMode(dc, COLORONCOLOR);
    const float devX = static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSX));
    const float devY = static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSY));
    gdi::Owned<HPALETTE> palette(CreateDIBPalette(dib));
    BlockLock lock(dib);
    DibView v;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk || !PixelsForDevice(v)) return 1;
    BITMAPINFOHEADER h;
    CopyHeaderBytes(lock.get(), lock.size(), &h);
    float imgX = static_cast<float>(h.biXPelsPerMeter) * 0.0254000518f;
    float imgY = static_cast<float>(h.biYPelsPerMeter) * 0.0254000518f;
    if (imgX == 0.0f) imgX = devX;
    if (imgY == 0.0f) imgY = devY;
    const RECT whole = {0, 0, static_cast<LONG>(v.width), static_cast<LONG>(v.height)};
    RECT r = whole;
    if (flags == kFitOnly) {
        gdi::ShowScrollBar(window, SB_BOTH, FALSE);
        gdi::ValidateRect(window, nullptr);
        gdi::GetClientRect(window, &rc);
        // The height, too, goes by the X resolution.
        const float w = static_cast<float>(whole.right) / imgX * devX, hh = static_cast<float>(whole.bottom) / imgX * devX;
        const float s = std::min(static_cast<float>(rc.bottom) / hh, static_cast<float>(rc.right) / w);
        const RECT rd = {0, 0, Trunc(s * w), Trunc(s * hh)};
        gdi::IntersectRect(&rc, &rc, &rd);
    } else {
        const float sx = devX / imgX * Ratio(zoom, 0, 1), sy = devY / imgY * Ratio(zoom, 2, 3);
        DibScrollLayout(window, &rc, &r, whole, position, sx, sy);
    }
    gdi::PaletteSelection selected(dc, palette.get(), true);
    if (palette) gdi::RealizePalette(dc);
    StretchDibInto(dc, v, r, rc, Width(rc), Height(rc), RasterOp(flags));
    FillAround(dc, rc, paint.area());
    return 1;
}

}  // namespace prism
