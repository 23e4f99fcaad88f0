// The viewer: one window showing one image through the library's display
// record and window-message handlers.  Everything about mapping, scrolling
// and painting is the library's; the viewer keeps the settings a user picks.
#pragma once

#include <prism32.h>

#include <string>

namespace viewer {

// What the user has chosen to see.
struct ViewSettings {
    bool fit = true;                // whole image in the window
    int zoomNum = 1, zoomDen = 1;   // device pixels per image pixel when not fitting
    bool centre = false;
    bool negative = false;
    bool lowMem = false;            // paint through DisplayDIBImage and the software stretchers
};

struct Viewer {
    HWND window = nullptr;
    DisplayState display;           // the library's record for this window
    HDIB dib = nullptr;             // the image, owned here
    int imageWidth = 0, imageHeight = 0, bitCount = 0;
    std::string file;
    ViewSettings view;
    // Low-memory painting keeps its position itself: [2], [3] are image
    // pixels along the whole width and height, as DisplayDIBImage reads them.
    int position[4] = {};
    bool lens = false;              // the magnifier follows the pointer
};

// window.cpp
bool RegisterViewerClass(HINSTANCE instance);
HWND CreateViewerWindow(Viewer* v, HINSTANCE instance, int clientWidth, int clientHeight, bool placeAtOrigin);
void ShowError(HWND owner, const std::string& text);

// view.cpp
std::string LibraryError();
bool OpenImage(Viewer& v, const std::string& path, std::string* error);
void ApplyView(Viewer& v, const int* topLeft);
void SettleSize(Viewer& v);
void ScrollTo(Viewer& v, int x, int y);
void LowMemScroll(Viewer& v, int bar, WPARAM wParam);
void UpdateTitle(const Viewer& v);

// gestures.cpp
void BandZoom(Viewer& v, POINT from);
void ZoomStep(Viewer& v, int direction, const POINT* about = nullptr);
void SetLens(Viewer& v, bool on);
void LensAt(Viewer& v, POINT at);

// printing.cpp
int PrintImage(Viewer& v, bool ask);
std::string PrintFailure(int code);
void SetUpPrinter(Viewer& v);

// screenshot.cpp
bool SaveClientArea(HWND window, const std::string& path, std::string* error);

}  // namespace viewer
