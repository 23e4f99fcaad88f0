// The rubber-band zoom: a blocking gesture from a button press to its
// release that zooms the band the user drags to the size of the client area.
#include "platform/export.h"
#include "platform/gdi.h"
#include "zoom/band_zoom.h"

namespace prism {
namespace {

// The mouse messages, the only ones the loop takes.
constexpr UINT kFirstMouse = 0x200;
constexpr UINT kLastMouse = 0x209;

// Drags the band from the start point until the left button comes up,
// on a context whose mix inverts what it draws twice.  The band is a
// filled rectangle, so each move inverts the old area back and the new one.
// Returns the band's final corners.
RECT TrackBand(HWND window, HDC dc, POINT start) {
    POINT current = start;
    MSG msg = {};
    // Waits only while no mouse message is queued: WaitMessage does not
    // return for messages already queued and looked at.  A window destroyed
    // meanwhile ends the gesture.
    while (msg.message != WM_LBUTTONUP && gdi::IsWindow(window)) {
        if (!gdi::PeekMessageA(&msg, nullptr, kFirstMouse, kLastMouse, PM_REMOVE)) {
            gdi::WaitMessage();
            continue;
        }
        POINT p = {static_cast<short>(LOWORD(msg.lParam)), static_cast<short>(HIWORD(msg.lParam))};
        gdi::DPtoLP(dc, &p, 1);
        if (p.x == current.x && p.y == current.y) continue;
        gdi::Rectangle(dc, start.x, start.y, current.x, current.y);
        current = p;
        gdi::Rectangle(dc, start.x, start.y, current.x, current.y);
    }
    gdi::Rectangle(dc, start.x, start.y, current.x, current.y);
    return RECT{start.x, start.y, current.x, current.y};
}

}  // namespace
}  // namespace prism

// Zoom(window, lParam, zoom): at a left button press (lParam: x in the low
// word, y in the high word, client pixels, unsigned), keeps the mouse inside
// the client area and tracks a band until the button comes up, taking only
// mouse messages and passing none on.  The zoom array (z0 / z1 in X, z2 / z3
// in Y) then becomes the zoom that makes the band fill the client area,
// the same percentage on both axes over 100, at most 500 / 100, and the
// window is repainted.  A press outside the client area beeps and returns.
PRISM_API void WINAPI Zoom(HWND window, LPARAM lParam, int* zoom) {
    using namespace prism;
    RECT client = {};
    gdi::GetClientRect(window, &client);
    const POINT start = {LOWORD(lParam), HIWORD(lParam)};
    if (!gdi::PtInRect(&client, start)) {
        gdi::MessageBeep(0);
        return;
    }
    RECT confine = client;
    gdi::ClientToScreen(window, reinterpret_cast<POINT*>(&confine.left));
    gdi::ClientToScreen(window, reinterpret_cast<POINT*>(&confine.right));
    gdi::ClipCursor(&confine);
    RECT band;
    {
        gdi::WindowDC dc(window);
        gdi::DrawMode invert(dc.get(), R2_NOTXORPEN);
        band = TrackBand(window, dc.get(), start);
        gdi::ClipCursor(nullptr);
        gdi::GetClientRect(window, &client);
    }
    // Without a zoom array there is nothing to write; the gesture still ran.
    if (zoom) WriteBandZoom(client, band, zoom);
    gdi::InvalidateRect(window, nullptr, TRUE);
    gdi::UpdateWindow(window);
}
