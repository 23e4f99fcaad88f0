// The magnifying lens on the screen: started over a window, filled with an
// enlarged part of a bitmap, moved over the window, and stopped.  The screen
// under the lens comes back from a copy of the client area taken at the
// start, so the host need not repaint while the lens moves.
#include "platform/export.h"
#include "platform/gdi.h"
#include "zoom/magnifier.h"

#include <algorithm>
#include <cstdint>

namespace prism {
namespace {

Magnifier& M = TheMagnifier;

// The host's palette as a background palette of a context, realised, for a
// scope; nothing without one.
class HostPalette {
public:
    explicit HostPalette(HDC dc) : selected_(dc, M.palette, true) {
        if (M.palette) gdi::RealizePalette(dc);
    }

private:
    gdi::PaletteSelection selected_;
};

// A copy of the whole client area, replacing any earlier one.
void CaptureClient() {
    if (M.backing) ::DeleteObject(M.backing);
    M.backing = nullptr;
    RECT client = {};
    gdi::GetClientRect(M.window, &client);
    gdi::WindowDC window(M.window);
    M.backing = gdi::CreateCompatibleBitmap(window.get(), client.right, client.bottom);
    gdi::MemoryDC memory(window.get());
    gdi::Selection selected(memory.get(), M.backing);
    HostPalette windowPalette(window.get());
    HostPalette memoryPalette(memory.get());
    gdi::BitBlt(memory.get(), 0, 0, client.right, client.bottom, window.get(), 0, 0, SRCCOPY);
}

// Puts back the screen under the lens at its last position.
void RestoreBacking(HDC dc) {
    if (!M.backing) return;
    gdi::MemoryDC memory(dc);
    gdi::Selection selected(memory.get(), M.backing);
    HostPalette palette(dc);
    HostPalette memoryPalette(memory.get());
    gdi::BitBlt(dc, M.lensX, M.lensY, LensWidth(), LensHeight(), memory.get(), M.lensX, M.lensY, SRCCOPY);
}

void Line(HDC dc, int x0, int y0, int x1, int y1) {
    gdi::MoveToEx(dc, x0, y0, nullptr);
    gdi::LineTo(dc, x1, y1);
}

// Four rings from the edge inwards, black outside and at the fourth, white
// and grey between them for a raised look.
void DrawLensFrame(HDC dc) {
    const int w = LensWidth(), h = LensHeight();
    gdi::Owned<HPEN> white(gdi::CreatePen(PS_SOLID, 0, RGB(255, 255, 255)));
    gdi::Owned<HPEN> grey(gdi::CreatePen(PS_SOLID, 0, RGB(128, 128, 128)));
    // Declared after the pens, so the pen found is back before they go.
    gdi::Selection pen(dc, gdi::GetStockObject(BLACK_PEN));
    gdi::MoveToEx(dc, 0, 0, nullptr);
    for (const POINT p : {POINT{w - 1, 0}, POINT{w - 1, h - 1}, POINT{0, h - 1}, POINT{0, 0}}) gdi::LineTo(dc, p.x, p.y);
    gdi::MoveToEx(dc, 3, 3, nullptr);
    for (const POINT p : {POINT{w - 4, 3}, POINT{w - 4, h - 4}, POINT{3, h - 4}, POINT{3, 3}}) gdi::LineTo(dc, p.x, p.y);
    ::SelectObject(dc, white.get());
    Line(dc, 1, 1, w - 2, 1);
    ::SelectObject(dc, grey.get());
    gdi::LineTo(dc, w - 2, h - 2);
    gdi::LineTo(dc, 0, h - 2);
    ::SelectObject(dc, white.get());
    Line(dc, 1, h - 3, 1, 1);
    ::SelectObject(dc, grey.get());
    Line(dc, 2, 2, w - 3, 2);
    ::SelectObject(dc, white.get());
    gdi::LineTo(dc, w - 3, h - 3);
    gdi::LineTo(dc, 1, h - 3);
    ::SelectObject(dc, grey.get());
    Line(dc, 2, h - 4, 2, 2);
}

// A blit the driver refuses, as some do for a large stretch, is retried at
// the largest width and then height that it takes.  The sizes are bounded
// by the image, so the search ends.
void BlitShrinking(HDC lens, POINT to, RECT d, HDC source, POINT from) {
    while (d.right >= d.left && !gdi::BitBlt(lens, to.x, to.y, d.right - d.left, 1, source, from.x, from.y, BLACKNESS))
        --d.right;
    while (d.bottom >= d.top && !gdi::BitBlt(lens, to.x, to.y, 1, d.bottom - d.top, source, from.x, from.y, SRCCOPY))
        --d.bottom;
    gdi::BitBlt(lens, to.x, to.y, d.right - d.left, d.bottom - d.top, source, from.x, from.y, SRCCOPY);
}

LONG Limited(std::int64_t v, LONG high) { return static_cast<LONG>(std::min<std::int64_t>(v, high)); }

// a + b held to the 32-bit range.
int Beyond(int a, int b) {
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{a} + b, INT32_MIN, INT32_MAX));
}

// Fills the lens with the source rectangle (x, y, w, h) of the bitmap,
// stretched to the lens; light grey where the rectangle leaves the image.
void StretchIntoLens(HDC lens, HDC source, const BITMAP& bm, int x, int y, int w, int h) {
    gdi::SavedState saved(lens);
    {
        gdi::Selection brush(lens, gdi::GetStockObject(LTGRAY_BRUSH));
        gdi::PatBlt(lens, 0, 0, LensWidth(), LensHeight(), PATCOPY);
    }
    // Logical units of the lens are source pixels from (x, y): a blit in
    // them is a stretch from the source.
    gdi::SetMapMode(lens, MM_ANISOTROPIC);
    gdi::SetWindowOrgEx(lens, 0, 0, nullptr);
    gdi::SetViewportExtEx(lens, LensWidth(), LensHeight(), nullptr);
    gdi::SetWindowExtEx(lens, w, h, nullptr);
    // The part of the rectangle inside the image, placed in the lens at its
    // offset from (x, y): a rectangle reaching past the image's left or top
    // keeps the image's edge at its place.
    const RECT r = {std::max(x, 0), std::max(y, 0), Limited(std::int64_t{x} + w, bm.bmWidth),
                    Limited(std::int64_t{y} + h, bm.bmHeight)};
    const POINT to = {static_cast<LONG>(std::int64_t{r.left} - x), static_cast<LONG>(std::int64_t{r.top} - y)};
    const POINT from = {r.left, r.top};
    if (r.right <= r.left || r.bottom <= r.top) return;  // nothing of the image: all grey
    if (!gdi::BitBlt(lens, to.x, to.y, r.right - r.left, r.bottom - r.top, source, from.x, from.y, SRCCOPY))
        BlitShrinking(lens, to, r, source, from);
}

}  // namespace
}  // namespace prism

// M_StartMagnify(window, palette): starts the lens over the window.  The
// window is brought up to date and its client area copied, the mouse
// pointer hidden (the one in force kept for the stop), and the lens bitmap
// made at the lens size.  The palette, if any, is the host's and is used as
// a background palette by every drawing.  A second start without a stop
// takes a new copy of the client area and keeps the hidden pointer as the
// one to restore.  Always 1.
PRISM_API BOOL WINAPI M_StartMagnify(HWND window, HPALETTE palette) {
    using namespace prism;
    M.window = window;
    M.palette = palette;
    gdi::UpdateWindow(window);
    CaptureClient();
    // A lens of a start without a stop is replaced here rather than leaked.
    if (M.active && M.lensBitmap) ::DeleteObject(M.lensBitmap);
    M.lensBitmap = nullptr;
    M.active = 1;
    M.savedCursor = gdi::SetCursor(nullptr);
    gdi::WindowDC dc(window);
    M.lensBitmap = gdi::CreateCompatibleBitmap(dc.get(), LensWidth(), LensHeight());
    return 1;
}

// M_StopMagnify(): takes the lens off the window, shows the mouse pointer
// kept at the start and deletes the copy of the client area and the lens
// bitmap.  Always 1, also without a start.
PRISM_API BOOL WINAPI M_StopMagnify(void) {
    using namespace prism;
    M.active = 0;
    {
        gdi::WindowDC dc(M.window);
        RestoreBacking(dc.get());
    }
    gdi::SetCursor(M.savedCursor);
    M.savedCursor = nullptr;
    if (M.backing) ::DeleteObject(M.backing);
    if (M.lensBitmap) ::DeleteObject(M.lensBitmap);
    M.backing = M.lensBitmap = nullptr;
    M.palette = nullptr;
    return 1;
}

// M_StretchBitmap(bitmap, x, y, width, height): draws the source rectangle
// of the bitmap into the lens, enlarged to the lens size, and the frame over
// it.  Where the rectangle leaves the bitmap the lens shows light grey.
// Nothing without a started lens.
PRISM_API void WINAPI M_StretchBitmap(HBITMAP bitmap, int x, int y, int width, int height) {
    using namespace prism;
    if (!M.active) return;
    BITMAP bm = {};
    // A handle that is no bitmap leaves an image of no size: all grey.
    if (!bitmap || !gdi::BitmapRecord(bitmap, &bm)) bm = BITMAP{};
    gdi::WindowDC window(M.window);
    gdi::MemoryDC lens(window.get());
    gdi::MemoryDC source(window.get());
    gdi::Selection lensSelected(lens.get(), M.lensBitmap);
    gdi::Selection sourceSelected(source.get(), bitmap);
    HostPalette lensPalette(lens.get());
    HostPalette sourcePalette(source.get());
    StretchIntoLens(lens.get(), source.get(), bm, x, y, width, height);
    DrawLensFrame(lens.get());
}

// M_CopyBitmap(window, x, y): shows the lens with its top left corner at
// (x, y) in the window's client area.  The screen under the old position
// comes back from the copy, except where the new lens will stand, so
// nothing flickers.  Nothing without a started lens.
PRISM_API void WINAPI M_CopyBitmap(HWND window, int x, int y) {
    using namespace prism;
    if (!M.active) return;
    gdi::WindowDC dc(window);
    {
        gdi::SavedState saved(dc.get());
        gdi::ExcludeClipRect(dc.get(), x, y, Beyond(x, LensWidth()), Beyond(y, LensHeight()));
        RestoreBacking(dc.get());
    }
    {
        gdi::MemoryDC lens(dc.get());
        gdi::Selection selected(lens.get(), M.lensBitmap);
        HostPalette palette(dc.get());
        HostPalette lensPalette(lens.get());
        gdi::BitBlt(dc.get(), x, y, LensWidth(), LensHeight(), lens.get(), 0, 0, SRCCOPY);
    }
    M.lensX = x;
    M.lensY = y;
}
