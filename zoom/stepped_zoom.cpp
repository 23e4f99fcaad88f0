// The stepped zoom gesture on a window: a click that steps the scale along
// the tables, a dragged band that zooms to a rectangle, or a step without
// the mouse; the result applied to a DisplayState or a ScreenZoomState.
#include "display/display_map.h"
#include "platform/export.h"
#include "platform/gdi.h"
#include "zoom/scale_steps.h"
#include "zoom/screen_scale.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace prism {
namespace {

// The host's point in client coordinates.
POINT ClientPoint(HWND window, const POINT* point, const BZoomState& state) {
    POINT p = *point;
    if (state.screenCoords) gdi::ScreenToClient(window, &p);
    return p;
}

// Left plus half the width, top plus half the height, truncating.
POINT CentreOf(const RECT& r) {
    return POINT{static_cast<LONG>(r.left + (std::int64_t{r.right} - r.left) / 2),
                 static_cast<LONG>(r.top + (std::int64_t{r.bottom} - r.top) / 2)};
}

// The band's four sides, inverted: drawing it twice removes it.
void DrawBand(HWND window, const RECT& band) {
    gdi::WindowDC dc(window);
    gdi::DrawMode invert(dc.get(), R2_NOTXORPEN);
    gdi::MoveToEx(dc.get(), band.left, band.top, nullptr);
    gdi::LineTo(dc.get(), band.right, band.top);
    gdi::LineTo(dc.get(), band.right, band.bottom);
    gdi::LineTo(dc.get(), band.left, band.bottom);
    gdi::LineTo(dc.get(), band.left, band.top);
}

// The client rectangle in the logical units of a mapped context.
RECT LogicalClient(HWND window, HDC dc) {
    RECT client = {};
    gdi::GetClientRect(window, &client);
    gdi::DPtoLP(dc, reinterpret_cast<POINT*>(&client), 2);
    return client;
}

// Ends the mouse part of a gesture: capture released, band removed.  True
// when it was a band gesture, decided by the final point alone: a band
// pulled back to below 6 pixels, or a gesture ended without a point, is a
// click.
bool EndMouse(HWND window, const POINT* point, const BZoomState& state) {
    if (!(state.mode & kMouseGesture)) return false;
    gdi::ReleaseCapture();
    DrawBand(window, state.band);
    return point && BandIsLargeEnough(ClientPoint(window, point, state), state.band);
}

// The scale at which the band (from its start to the point) fills the
// client area.  The band's centre goes back into the host's point.
void BandToScale(HWND window, POINT* point, BZoomState* state, DisplayState* display) {
    const POINT p = ClientPoint(window, point, *state);
    RECT r = {state->band.left, state->band.top, p.x, p.y};
    OrderRect(&r);
    gdi::WindowDC dc(window);
    MapDisplayCore(dc.get(), display, 0);
    gdi::DPtoLP(dc.get(), reinterpret_cast<POINT*>(&r), 2);
    const double bandWidth = static_cast<double>(r.right) - r.left, bandHeight = static_cast<double>(r.bottom) - r.top;
    POINT centre = CentreOf(r);
    gdi::LPtoDP(dc.get(), &centre, 1);
    // Given in screen coordinates, the point goes back in them.
    if (state->screenCoords) gdi::ClientToScreen(window, &centre);
    *point = centre;
    // The client area at scale 1, in image pixels.
    int zoom[4];
    std::memcpy(zoom, &display->zoomNumX, sizeof(zoom));
    const UINT flags = display->displayFlags;
    display->zoomNumX = display->zoomDenX = display->zoomNumY = display->zoomDenY = 1;
    display->displayFlags &= ~DF_FIT;
    MapDisplayCore(dc.get(), display, 0);
    const RECT client = LogicalClient(window, dc.get());
    const float fx = static_cast<float>(RatioOf(static_cast<double>(client.right) - client.left, bandWidth));
    const float fy = static_cast<float>(RatioOf(static_cast<double>(client.bottom) - client.top, bandHeight));
    std::memcpy(&display->zoomNumX, zoom, sizeof(zoom));
    display->displayFlags = flags;
    RatioToScale(std::min(fx, fy), &state->scaleNumX);
}

// Applies the state's scale to the record and sets the target: the top left
// corner of a view that centres the point, in image pixels.
void ApplyScaleAtPoint(HWND window, const POINT* point, BZoomState* state, DisplayState* display) {
    POINT p = ClientPoint(window, point, *state);
    gdi::WindowDC dc(window);
    MapDisplayCore(dc.get(), display, 0);
    gdi::DPtoLP(dc.get(), &p, 1);
    const int scale[4] = {state->scaleNumX, state->scaleDenX, state->scaleNumY, state->scaleDenY};
    SetDisplayZoom(window, scale, display);
    display->displayFlags = (display->displayFlags & ~DF_FIT) | DF_ZOOMED;
    MapDisplayCore(dc.get(), display, 0);
    const RECT client = LogicalClient(window, dc.get());
    state->targetX = static_cast<int>(p.x + (std::int64_t{client.left} - client.right) / 2);
    state->targetY = static_cast<int>(p.y + (std::int64_t{client.top} - client.bottom) / 2);
}

// The display's resolution, LOGPIXELSX and LOGPIXELSY.
void DeviceDpi(HWND window, int* x, int* y) {
    gdi::WindowDC dc(window);
    *x = gdi::GetDeviceCaps(dc.get(), LOGPIXELSX);
    *y = gdi::GetDeviceCaps(dc.get(), LOGPIXELSY);
}

void ScreenApply(HWND window, const POINT* point, const BZoomState& state, const RECT& client, ScreenZoomState* screen) {
    int dpiX, dpiY;
    DeviceDpi(window, &dpiX, &dpiY);
    ScreenApplyAtPoint(ClientPoint(window, point, state), client, dpiX, dpiY, state, screen);
}

// The band from its start to the point, ordered, into the state; its centre
// back into the host's point, in the host's coordinates.
void ScreenBand(HWND window, POINT* point, BZoomState* state, const RECT& client, const ScreenZoomState& screen) {
    const POINT p = ClientPoint(window, point, *state);
    state->band.right = p.x;
    state->band.bottom = p.y;
    OrderRect(&state->band);
    POINT centre = CentreOf(state->band);
    if (state->screenCoords) gdi::ClientToScreen(window, &centre);
    *point = centre;
    ScreenBandToScale(client, state, screen);
}

}  // namespace
}  // namespace prism

// BZoomStart(window, point, scale, mode, state, screenCoords): begins a
// gesture.  The state is cleared; the band starts at the point (client
// coordinates, converted from screen ones with screenCoords; (0, 0) without
// a point); the start scale is the four numbers or the base four times.  A
// mode with the bit 0x10 (17..21) captures the mouse for the window.
PRISM_API void WINAPI BZoomStart(HWND window, const POINT* point, const int* scale, int mode, BZoomState* state,
                                 BOOL screenCoords) {
    using namespace prism;
    if (!state) return;
    *state = BZoomState{};
    state->screenCoords = screenCoords;
    const POINT p = point ? ClientPoint(window, point, *state) : POINT{0, 0};
    state->band = RECT{p.x, p.y, p.x, p.y};
    for (int i = 0; i < 4; ++i) state->startScale[i] = scale ? scale[i] : ZoomBase;
    if (mode & kMouseGesture) gdi::SetCapture(window);
    state->mode = mode;
}

// BZoomUpdate(window, point, state): follows the mouse during a gesture.
// The band shows once the point is 6 pixels or more from the start on both
// axes, and then follows the point.  Nothing without point and state, or
// outside a mouse gesture.
PRISM_API void WINAPI BZoomUpdate(HWND window, const POINT* point, BZoomState* state) {
    using namespace prism;
    if (!point || !state || !(state->mode & kMouseGesture)) return;
    const POINT p = ClientPoint(window, point, *state);
    RECT& b = state->band;
    if (!state->bandVisible) {
        if (!BandIsLargeEnough(p, b)) return;
        state->bandVisible = 1;
        b.right += 5;
        b.bottom += 5;
        DrawBand(window, b);
    }
    {
        // The old band inverted back and the new one drawn, in one run.
        gdi::WindowDC dc(window);
        gdi::DrawMode invert(dc.get(), R2_NOTXORPEN);
        gdi::MoveToEx(dc.get(), b.left, b.top, nullptr);
        const POINT run[] = {{b.right, b.top}, {b.right, b.bottom}, {b.left, b.bottom}, {b.left, b.top},
                             {p.x, b.top},     {p.x, p.y},          {b.left, p.y},     {b.left, b.top}};
        for (const POINT& q : run) gdi::LineTo(dc.get(), q.x, q.y);
    }
    b.right = p.x;
    b.bottom = p.y;
}

// BZoomEnd(window, point, state, display): ends a gesture on a displayed
// image.  A click (or a step) steps the start scale as the mode says; a
// band zooms to the band, and its centre goes back into the point.  With a
// point the new scale is applied to the record (DF_FIT cleared, DF_ZOOMED
// set) and the target is the top left corner of the view centred on the
// point; without one the record stays as it is and the target is its view
// corner.  Nothing without state and record.
PRISM_API void WINAPI BZoomEnd(HWND window, POINT* point, BZoomState* state, DisplayState* display) {
    using namespace prism;
    if (!state || !display) return;
    const bool band = EndMouse(window, point, *state);
    state->targetX = display->viewLeft;
    state->targetY = display->viewTop;
    if (band) {
        BandToScale(window, point, state, display);
        ApplyScaleAtPoint(window, point, state, display);
        return;
    }
    StepScale(state);
    if (point) ApplyScaleAtPoint(window, point, state, display);
}

// BZoomScreenEnd(window, point, state, screen): the same for a record with
// floating scales and a scroll position of its own.  The scale and image
// position are worked out from the start scale and the scroll position,
// changed by the gesture, and turned back into a scroll position.
PRISM_API void WINAPI BZoomScreenEnd(HWND window, POINT* point, BZoomState* state, ScreenZoomState* screen) {
    using namespace prism;
    if (!state || !screen) return;
    const bool band = EndMouse(window, point, *state);
    int dpiX, dpiY;
    DeviceDpi(window, &dpiX, &dpiY);
    ScreenLoadScale(state->startScale, dpiX, dpiY, screen);
    RECT client = {};
    gdi::GetClientRect(window, &client);
    ScreenFromScroll(client, screen);
    if (band) {
        ScreenBand(window, point, state, client, *screen);
        ScreenApply(window, point, *state, client, screen);
    } else {
        StepScale(state);
        if (point) ScreenApply(window, point, *state, client, screen);
    }
    ScreenToScroll(client, screen);
}

// BZoomStep(window, scale, mode, state, display): one step without the
// mouse (modes 33..37): a start without a point, then an end without one;
// the new scale is left in the state.  Nothing for a mode with the bit 0x10.
PRISM_API void WINAPI BZoomStep(HWND window, const int* scale, int mode, BZoomState* state, DisplayState* display) {
    if (mode & prism::kMouseGesture) return;
    BZoomStart(window, nullptr, scale, mode, state, 0);
    BZoomEnd(window, nullptr, state, display);
}

// BZoomScreenStep(window, scale, mode, state, screen): the same with a
// ScreenZoomState.
PRISM_API void WINAPI BZoomScreenStep(HWND window, const int* scale, int mode, BZoomState* state,
                                      ScreenZoomState* screen) {
    if (mode & prism::kMouseGesture) return;
    BZoomStart(window, nullptr, scale, mode, state, 0);
    BZoomScreenEnd(window, nullptr, state, screen);
}
