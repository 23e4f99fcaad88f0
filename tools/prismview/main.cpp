// prismview: an image viewer over the library's display exports.  With
// --screenshot it runs once without a user: opens, paints, saves the client
// area and exits.
#include "options.h"
#include "resource.h"
#include "viewer.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace viewer {
namespace {

// A windows program has no console of its own: text goes to the standard
// handle it was given, or to the console of the program that started it.
void Print(DWORD which, const std::string& text) {
    HANDLE out = GetStdHandle(which);
    if (!out || out == INVALID_HANDLE_VALUE) {
        AttachConsole(ATTACH_PARENT_PROCESS);
        out = GetStdHandle(which);
    }
    DWORD written = 0;
    if (out && out != INVALID_HANDLE_VALUE) WriteFile(out, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

// Runs the messages already waiting, so that painting has happened.
void DispatchPending() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

// The gestures a user would make, in order: the band (its moves and the
// release queued before the press, as the blocking loop reads them), the
// zoom steps, the lens.
void Gestures(Viewer& v, const Options& o) {
    if (o.hasBand) {
        const LPARAM end = MAKELPARAM(o.band[2], o.band[3]);
        PostMessageA(v.window, WM_MOUSEMOVE, MK_LBUTTON, end);
        PostMessageA(v.window, WM_LBUTTONUP, 0, end);
        BandZoom(v, POINT{o.band[0], o.band[1]});
    }
    for (int step : o.steps) ZoomStep(v, step);
    UpdateWindow(v.window);
    DispatchPending();
    if (o.lens) {
        SetLens(v, true);
        LensAt(v, POINT{o.lensX, o.lensY});
    }
}

int RunScripted(const Options& o, HINSTANCE instance) {
    Viewer v;
    v.view = o.view;
    if (!CreateViewerWindow(&v, instance, o.width, o.height, true)) {
        Print(STD_ERROR_HANDLE, "prismview: the window cannot be made\n");
        return 1;
    }
    ShowWindow(v.window, SW_SHOWNOACTIVATE);
    UpdateWindow(v.window);
    DispatchPending();
    std::string error;
    bool ok = OpenImage(v, o.file, &error);
    if (ok && o.scroll) ScrollTo(v, o.scrollX, o.scrollY);
    if (ok) Gestures(v, o);
    if (ok && o.print) {
        const int code = PrintImage(v, false);
        if (code) error = PrintFailure(code);
        ok = code == 0;
    }
    if (ok) {
        UpdateWindow(v.window);
        DispatchPending();
        GdiFlush();
        ok = SaveClientArea(v.window, o.screenshot, &error);
    }
    DestroyWindow(v.window);
    if (!ok) Print(STD_ERROR_HANDLE, "prismview: " + error + "\n");
    return ok ? 0 : 1;
}

int RunInteractive(const Options& o, HINSTANCE instance, int show) {
    Viewer v;
    v.view = o.view;
    if (!CreateViewerWindow(&v, instance, o.width, o.height, false)) return 1;
    ShowWindow(v.window, show);
    UpdateWindow(v.window);
    std::string error;
    if (!o.file.empty()) {
        if (!OpenImage(v, o.file, &error))
            ShowError(v.window, error);
        else if (o.scroll)
            ScrollTo(v, o.scrollX, o.scrollY);
    }
    HACCEL accel = LoadAcceleratorsA(instance, MAKEINTRESOURCEA(IDR_ACCEL));
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (v.window && TranslateAcceleratorA(v.window, accel, &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return static_cast<int>(msg.wParam);
}

}  // namespace
}  // namespace viewer

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    using namespace viewer;
    const std::vector<std::string> args(__argv + 1, __argv + __argc);
    Options o;
    std::string error;
    if (!ParseOptions(args, &o, &error)) {
        Print(STD_ERROR_HANDLE, "prismview: " + error + "\n" + kUsage);
        return 2;
    }
    if (o.help) {
        Print(STD_OUTPUT_HANDLE, kUsage);
        return 0;
    }
    if (!RegisterViewerClass(instance)) {
        Print(STD_ERROR_HANDLE, "prismview: the window class cannot be registered\n");
        return 1;
    }
    return o.screenshot.empty() ? RunInteractive(o, instance, show) : RunScripted(o, instance);
}
