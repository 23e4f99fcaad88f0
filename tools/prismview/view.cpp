// Opening an image and turning the user's view settings into calls of the
// display exports: DisplayDIBStart for the mapped display, SetLowMemStretch
// and the window's scroll bars for painting through DisplayDIBImage.
#include "viewer.h"

#include <algorithm>

namespace viewer {
namespace {

UINT DisplayFlags(const Viewer& v) {
    const ViewSettings& s = v.view;
    // The lens enlarges a device bitmap of the image.
    return (s.fit ? DF_FIT : 0) | (s.centre ? DF_CENTRE : 0) | (s.negative ? DF_NEGATIVE : 0) |
           (v.lens ? DF_MAKE_BITMAP : 0);
}

// Low-memory painting sets no scroll ranges of its own, only shows and
// hides the bars: the ranges are the image's width and height.
void SetLowMemBars(Viewer& v) {
    if (v.view.fit) return;  // DisplayDIBImage hides both bars when fitting
    SetScrollRange(v.window, SB_HORZ, 0, v.imageWidth, FALSE);
    SetScrollPos(v.window, SB_HORZ, v.position[2], TRUE);
    SetScrollRange(v.window, SB_VERT, 0, v.imageHeight, FALSE);
    SetScrollPos(v.window, SB_VERT, v.position[3], TRUE);
}

}  // namespace

// Showing or hiding a scroll bar sends a size message at once, and the
// library drops a size message that arrives while it handles another: the
// record can keep the client area from before the bars settled.  Measuring
// again until it holds the real one gives the right scroll ranges.
void SettleSize(Viewer& v) {
    for (int i = 0; i < 3; ++i) {
        RECT rc;
        GetClientRect(v.window, &rc);
        if (EqualRect(&rc, &v.display.clientRect)) return;
        DisplayWmSize(v.window, SIZE_RESTORED, MAKELPARAM(rc.right, rc.bottom), &v.display);
    }
}

std::string LibraryError() {
    char text[128] = {};
    const int code = ImgError();
    ImgErrorString(text, code);
    if (!text[0]) return "error " + std::to_string(code);
    return text;
}

bool OpenImage(Viewer& v, const std::string& path, std::string* error) {
    SetImgError(0);
    int status = 0;
    HDIB dib = LoadImageIntoDIB(path.c_str(), 0, &status);
    if (!dib) {
        *error = path + ": " + LibraryError();
        return false;
    }
    const auto* header = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    if (!header) {
        GlobalFree(dib);
        *error = path + ": the image cannot be locked";
        return false;
    }
    v.imageWidth = header->biWidth;
    v.imageHeight = header->biHeight;
    v.bitCount = header->biBitCount;
    GlobalUnlock(dib);

    // The record does not own the image: the old one goes once the record
    // names the new one.
    HDIB old = v.dib;
    v.dib = dib;
    v.file = path;
    v.position[2] = v.position[3] = 0;
    // A new image starts at its top left corner; a centred one where the
    // record's scroll position leaves it (0 on a fresh record: centred).
    const int topLeft[2] = {0, 0};
    ApplyView(v, v.view.centre ? nullptr : topLeft);
    if (old) GlobalFree(old);
    UpdateTitle(v);
    return true;
}

// Restarts the display for the current settings.  topLeft, when given, is
// the image point to bring to the top left corner of the window.
void ApplyView(Viewer& v, const int* topLeft) {
    SetLowMemStretch(v.view.lowMem ? 1 : 0);
    if (!v.dib) {
        InvalidateRect(v.window, nullptr, TRUE);
        return;
    }
    if (v.view.lowMem) {
        SetLowMemBars(v);
        InvalidateRect(v.window, nullptr, TRUE);
        return;
    }
    const int zoom[4] = {v.view.zoomNum, v.view.zoomDen, v.view.zoomNum, v.view.zoomDen};
    int origin[4] = {topLeft ? topLeft[0] : 0, topLeft ? topLeft[1] : 0, 0, 0};
    DisplayDIBStart(v.window, v.dib, topLeft ? origin : nullptr, zoom, DisplayFlags(v), &v.display);
    SettleSize(v);
}

// Scrolls as a user would: through DisplaySetScrollPos (device pixels) on
// the mapped display, through the scroll-bar messages (image pixels) when
// painting in low memory.
void ScrollTo(Viewer& v, int x, int y) {
    if (v.view.lowMem) {
        SendMessageA(v.window, WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, std::clamp(x, 0, 0xFFFF)), 0);
        SendMessageA(v.window, WM_VSCROLL, MAKEWPARAM(SB_THUMBPOSITION, std::clamp(y, 0, 0xFFFF)), 0);
        return;
    }
    const int to[2] = {x, y};
    DisplaySetScrollPos(v.window, &v.display, to);
}

// A scroll-bar message while painting in low memory: a line is 1/32 of the
// image, a page 1/8.
void LowMemScroll(Viewer& v, int bar, WPARAM wParam) {
    const int extent = bar == SB_HORZ ? v.imageWidth : v.imageHeight;
    int& pos = v.position[bar == SB_HORZ ? 2 : 3];
    const int line = std::max(1, extent / 32), page = std::max(1, extent / 8);
    switch (LOWORD(wParam)) {
        case SB_LINEUP: pos -= line; break;
        case SB_LINEDOWN: pos += line; break;
        case SB_PAGEUP: pos -= page; break;
        case SB_PAGEDOWN: pos += page; break;
        case SB_THUMBPOSITION:
        case SB_THUMBTRACK: pos = HIWORD(wParam); break;
        case SB_TOP: pos = 0; break;
        case SB_BOTTOM: pos = extent; break;
        default: return;
    }
    pos = std::clamp(pos, 0, std::max(0, extent));
    SetScrollPos(v.window, bar, pos, TRUE);
    InvalidateRect(v.window, nullptr, FALSE);
}

void UpdateTitle(const Viewer& v) {
    std::string title = "prismview";
    if (v.dib) {
        const size_t slash = v.file.find_last_of("/\\");
        title += " - " + (slash == std::string::npos ? v.file : v.file.substr(slash + 1));
        title += " (" + std::to_string(v.imageWidth) + " x " + std::to_string(v.imageHeight) + ", " +
                 std::to_string(v.bitCount) + " bit, ";
        title += v.view.fit ? std::string("fit")
                            : std::to_string(v.view.zoomNum * 100 / v.view.zoomDen) + " %";
        if (v.view.lowMem) title += ", low memory";
        title += ")";
    }
    SetWindowTextA(v.window, title.c_str());
}

}  // namespace viewer
