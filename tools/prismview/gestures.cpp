// The zoom gestures and the lens, each one call of the library: the
// rubber band (Zoom), stepped zoom (BZoomStep) and the magnifier (M_*).
#include "viewer.h"

#include <algorithm>
#include <numeric>

namespace viewer {
namespace {

// The image point under a client point, through the record's mapping.
POINT ImagePoint(Viewer& v, POINT client) {
    HDC dc = GetDC(v.window);
    const int saved = SaveDC(dc);
    MapDisplayDC(dc, &v.display);
    DPtoLP(dc, &client, 1);
    RestoreDC(dc, saved);
    ReleaseDC(v.window, dc);
    return client;
}

void SetZoom(Viewer& v, int num, int den) {
    const int g = std::gcd(num, den);
    v.view.fit = false;
    v.view.zoomNum = num / g;
    v.view.zoomDen = den / g;
}

}  // namespace

// A left button press with Ctrl: the band the user drags fills the window.
void BandZoom(Viewer& v, POINT from) {
    if (!v.dib || v.view.lowMem) return;
    int zoom[4] = {v.view.zoomNum, v.view.zoomDen, v.view.zoomNum, v.view.zoomDen};
    const POINT corner = ImagePoint(v, from);
    Zoom(v.window, MAKELPARAM(from.x, from.y), zoom);
    if (zoom[0] <= 0 || zoom[1] <= 0) return;
    SetZoom(v, zoom[0], zoom[1]);
    const int topLeft[2] = {std::max<int>(0, corner.x), std::max<int>(0, corner.y)};
    ApplyView(v, topLeft);
    UpdateTitle(v);
}

// One step of the library's zoom table, in (direction > 0) or out, about
// a client point (the pointer for the wheel) or the middle of the window.
void ZoomStep(Viewer& v, int direction, const POINT* about) {
    if (!v.dib) return;
    RECT rc;
    GetClientRect(v.window, &rc);
    int scale[4] = {v.view.zoomNum, v.view.zoomDen, v.view.zoomNum, v.view.zoomDen};
    if (v.view.fit) {
        // The shown scale in tenths, where the steps begin.
        const double shown = std::min(static_cast<double>(rc.right) / std::max(1, v.imageWidth),
                                      static_cast<double>(rc.bottom) / std::max(1, v.imageHeight));
        scale[0] = scale[2] = std::max(1, static_cast<int>(shown * 10 + 0.5));
        scale[1] = scale[3] = 10;
    }
    POINT point = about ? *about : POINT{rc.right / 2, rc.bottom / 2};
    // A step without the mouse gesture, ended at the point: the state gets
    // the new scale and the top left that keeps the point in the middle.
    BZoomState step = {};
    BZoomStart(v.window, &point, scale, direction > 0 ? 34 : 35, &step, FALSE);
    BZoomEnd(v.window, &point, &step, &v.display);
    if (step.scaleNumX <= 0 || step.scaleDenX <= 0) return;
    SetZoom(v, step.scaleNumX, step.scaleDenX);
    const int topLeft[2] = {std::max(0, step.targetX), std::max(0, step.targetY)};
    ApplyView(v, v.view.lowMem ? nullptr : topLeft);
    UpdateTitle(v);
}

// The lens: on, it needs a device bitmap of the image to enlarge.
void SetLens(Viewer& v, bool on) {
    if (on == v.lens) return;
    v.lens = on;
    if (!on) {
        M_StopMagnify();
        InvalidateRect(v.window, nullptr, FALSE);
        return;
    }
    ApplyView(v, nullptr);
    UpdateWindow(v.window);
    M_StartMagnify(v.window, v.display.palette);
}

// The lens centred on a client point, showing the image there at twice
// the size.
void LensAt(Viewer& v, POINT at) {
    if (!v.lens || v.view.lowMem || !v.display.bitmap) return;
    const POINT p = ImagePoint(v, at);
    int zoom[4] = {20, 10, 20, 10};
    RECT source;
    if (!M_CalcRect(p.x, p.y, zoom, &source)) return;
    M_StretchBitmap(v.display.bitmap, source.left, source.top, source.right - source.left, source.bottom - source.top);
    M_CopyBitmap(v.window, at.x - static_cast<int>(M_GetWidth()) / 2, at.y - static_cast<int>(M_GetHeight()) / 2);
}

}  // namespace viewer
