// The viewer's window: its class, and a window procedure that hands each
// message to a small function, most of them straight to the library's
// DisplayWm* handlers.
#include "resource.h"
#include "viewer.h"

#include <commdlg.h>

namespace viewer {
namespace {

constexpr char kClassName[] = "PrismViewWindow";
constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_HSCROLL | WS_VSCROLL;
constexpr UINT kRepaint = WM_APP + 1;  // repaint the whole window, posted

Viewer* ViewerOf(HWND window) { return reinterpret_cast<Viewer*>(GetWindowLongPtrA(window, GWLP_USERDATA)); }

LRESULT OnCreate(Viewer& v, HWND window, WPARAM wParam, LPARAM lParam) {
    v.window = window;
    DisplayWmCreate(window, wParam, lParam, &v.display);
    UpdateTitle(v);
    return 0;
}

LRESULT OnPaint(Viewer& v) {
    if (v.view.lowMem && v.dib) {
        const int zoom[4] = {v.view.zoomNum, v.view.zoomDen, v.view.zoomNum, v.view.zoomDen};
        // The fit mode of this export is the flags value 8 alone.
        const WORD flags = static_cast<WORD>((v.view.fit ? DF_FIT : 0) | (v.view.negative ? DF_NEGATIVE : 0));
        DisplayDIBImage(v.window, v.dib, v.position, zoom, flags);
    } else {
        DisplayWmPaint(v.window, &v.display);
    }
    return 0;
}

LRESULT OnSize(Viewer& v, WPARAM wParam, LPARAM lParam) {
    if (!v.view.lowMem) {
        DisplayWmSize(v.window, wParam, lParam, &v.display);
        SettleSize(v);
    }
    // The size handler leaves the window as it is; a fitted or centred
    // image moves with the window.
    if (v.view.fit || v.view.centre) InvalidateRect(v.window, nullptr, FALSE);
    // Low-memory painting shows and hides the scroll bars inside its own
    // paint and then validates the window, so the strip a vanished bar
    // leaves would stay unpainted: paint again once this paint is over.
    if (v.view.lowMem) PostMessageA(v.window, kRepaint, 0, 0);
    return 0;
}

LRESULT OnScroll(Viewer& v, int bar, WPARAM wParam, LPARAM lParam) {
    if (v.view.lowMem)
        LowMemScroll(v, bar, wParam);
    else if (bar == SB_HORZ)
        DisplayWmHorzScroll(v.window, wParam, lParam, &v.display);
    else
        DisplayWmVertScroll(v.window, wParam, lParam, &v.display);
    return 0;
}

// Arrow and paging keys act as the scroll bars do.
LRESULT OnKeyDown(Viewer& v, WPARAM key) {
    struct Move {
        WPARAM key;
        UINT message;
        WORD code;
    };
    static const Move kMoves[] = {{VK_LEFT, WM_HSCROLL, SB_LINELEFT},  {VK_RIGHT, WM_HSCROLL, SB_LINERIGHT},
                                  {VK_UP, WM_VSCROLL, SB_LINEUP},      {VK_DOWN, WM_VSCROLL, SB_LINEDOWN},
                                  {VK_PRIOR, WM_VSCROLL, SB_PAGEUP},   {VK_NEXT, WM_VSCROLL, SB_PAGEDOWN},
                                  {VK_HOME, WM_VSCROLL, SB_TOP},       {VK_END, WM_VSCROLL, SB_BOTTOM}};
    for (const Move& m : kMoves)
        if (m.key == key) SendMessageA(v.window, m.message, m.code, 0);
    return 0;
}

void OpenWithDialog(Viewer& v) {
    char path[MAX_PATH] = {};
    OPENFILENAMEA ofn = {};
    ofn.lStructSize = sizeof(ofn);
    ofn.hwndOwner = v.window;
    ofn.lpstrFilter =
        "Images\0*.bmp;*.dib;*.rle;*.tif;*.tiff;*.pcx;*.dcx;*.gif;*.tga;*.wmf;*.clp;*.jpg;*.jpeg;*.cal;*.txt\0"
        "All files\0*.*\0";
    ofn.lpstrFile = path;
    ofn.nMaxFile = sizeof(path);
    ofn.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
    if (!GetOpenFileNameA(&ofn)) return;
    std::string error;
    if (!OpenImage(v, path, &error)) ShowError(v.window, error);
}

LRESULT OnCommand(Viewer& v, int id) {
    ViewSettings& s = v.view;
    switch (id) {
        case IDM_OPEN: OpenWithDialog(v); return 0;
        case IDM_EXIT: DestroyWindow(v.window); return 0;
        case IDM_PRINT:
            if (const int code = PrintImage(v, true)) ShowError(v.window, PrintFailure(code));
            return 0;
        case IDM_PRINTER_SETUP: SetUpPrinter(v); return 0;
        case IDM_FIT: s.fit = true; break;
        case IDM_ACTUAL: s.fit = false; s.zoomNum = s.zoomDen = 1; break;
        case IDM_ZOOM_IN: ZoomStep(v, 1); return 0;
        case IDM_ZOOM_OUT: ZoomStep(v, -1); return 0;
        case IDM_CENTRE: s.centre = !s.centre; break;
        case IDM_NEGATIVE: s.negative = !s.negative; break;
        case IDM_LOWMEM: s.lowMem = !s.lowMem; break;
        case IDM_LENS: SetLens(v, !v.lens); return 0;
        default: return 0;
    }
    ApplyView(v, nullptr);
    UpdateTitle(v);
    return 0;
}

LRESULT OnInitMenu(const Viewer& v, HMENU menu) {
    auto check = [menu](int id, bool on) { CheckMenuItem(menu, id, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED)); };
    check(IDM_FIT, v.view.fit);
    check(IDM_ACTUAL, !v.view.fit && v.view.zoomNum == v.view.zoomDen);
    check(IDM_CENTRE, v.view.centre);
    check(IDM_NEGATIVE, v.view.negative);
    check(IDM_LOWMEM, v.view.lowMem);
    check(IDM_LENS, v.lens);
    return 0;
}

// Ctrl and the left button: a rubber band to zoom into; the wheel steps
// the zoom; with the lens on, it follows the pointer.
LRESULT OnMouse(Viewer& v, UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT at = {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
    if (message == WM_LBUTTONDOWN && (wParam & MK_CONTROL)) BandZoom(v, at);
    if (message == WM_MOUSEMOVE) LensAt(v, at);
    if (message == WM_MOUSEWHEEL) {
        POINT client = at;  // the wheel tells screen coordinates
        ScreenToClient(v.window, &client);
        ZoomStep(v, static_cast<short>(HIWORD(wParam)) > 0 ? 1 : -1, &client);
    }
    return 0;
}

LRESULT OnDestroy(Viewer& v, WPARAM wParam, LPARAM lParam) {
    SetLens(v, false);
    DisplayWmDestroy(v.window, wParam, lParam, &v.display);
    if (v.dib) GlobalFree(v.dib);
    v.dib = nullptr;
    v.window = nullptr;
    PostQuitMessage(0);
    return 0;
}

LRESULT CALLBACK ViewerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    Viewer* v = ViewerOf(window);
    if (!v) return DefWindowProcA(window, message, wParam, lParam);
    switch (message) {
        case WM_CREATE: return OnCreate(*v, window, wParam, lParam);
        case WM_PAINT: return OnPaint(*v);
        case WM_ERASEBKGND: return 1;  // painting covers the whole client area
        case WM_SIZE: return OnSize(*v, wParam, lParam);
        case WM_HSCROLL: return OnScroll(*v, SB_HORZ, wParam, lParam);
        case WM_VSCROLL: return OnScroll(*v, SB_VERT, wParam, lParam);
        case WM_KEYDOWN: return OnKeyDown(*v, wParam);
        case WM_LBUTTONDOWN:
        case WM_MOUSEMOVE:
        case WM_MOUSEWHEEL: return OnMouse(*v, message, wParam, lParam);
        case WM_COMMAND: return OnCommand(*v, LOWORD(wParam));
        case WM_INITMENUPOPUP: return OnInitMenu(*v, reinterpret_cast<HMENU>(wParam));
        case WM_DESTROY: return OnDestroy(*v, wParam, lParam);
        case kRepaint: InvalidateRect(window, nullptr, FALSE); return 0;
        default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

}  // namespace

bool RegisterViewerClass(HINSTANCE instance) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = ViewerProc;
    wc.hInstance = instance;
    wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
    wc.hIcon = LoadIcon(nullptr, IDI_APPLICATION);
    // The display fills what lies outside the image with the class brush.
    wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(DKGRAY_BRUSH));
    wc.lpszMenuName = MAKEINTRESOURCEA(IDR_MENU);
    wc.lpszClassName = kClassName;
    return RegisterClassA(&wc) != 0;
}

// A window whose client area, without scroll bars, is the size asked for
// (the system may still make it larger).
HWND CreateViewerWindow(Viewer* v, HINSTANCE instance, int clientWidth, int clientHeight, bool placeAtOrigin) {
    RECT r = {0, 0, clientWidth, clientHeight};
    AdjustWindowRectEx(&r, WS_OVERLAPPEDWINDOW, TRUE, 0);
    const int x = placeAtOrigin ? 0 : CW_USEDEFAULT, y = placeAtOrigin ? 0 : CW_USEDEFAULT;
    return CreateWindowExA(0, kClassName, "prismview", kStyle, x, y, r.right - r.left, r.bottom - r.top, nullptr,
                           nullptr, instance, v);
}

void ShowError(HWND owner, const std::string& text) {
    MessageBoxA(owner, text.c_str(), "prismview", MB_OK | MB_ICONERROR);
}

}  // namespace viewer
