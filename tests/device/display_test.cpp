// The window display in a real window whose procedure forwards to the
// handlers, as a host's does: the client area read back pixel by pixel
// against the image through the mapping, the bars, and direct painting
// with and without the low-memory stretchers.  Under wine and Xvfb; the
// window is made once and reused (destroying one is slow there).
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

using namespace testing_support;

namespace {

using Pixels = Colors;
constexpr std::uint32_t kBrush = 0x102030;  // the class background, 0xRRGGBB

DisplayState gState;
bool gForward = true;

LRESULT CALLBACK Forward(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    if (gForward) switch (m) {
            case WM_PAINT: return DisplayWmPaint(w, &gState);
            case WM_SIZE: return DisplayWmSize(w, wp, lp, &gState);
            case WM_HSCROLL: return DisplayWmHorzScroll(w, wp, lp, &gState);
            case WM_VSCROLL: return DisplayWmVertScroll(w, wp, lp, &gState);
            default: break;
        }
    return DefWindowProcA(w, m, wp, lp);
}

HWND TestWindow() {
    static HWND window = [] {
        WNDCLASSA c = {};
        c.lpfnWndProc = Forward;
        c.hInstance = GetModuleHandleA(nullptr);
        c.hbrBackground = CreateSolidBrush(RGB(0x10, 0x20, 0x30));
        c.lpszClassName = "PrismDisplayTest";
        RegisterClassA(&c);
        HWND w = CreateWindowA("PrismDisplayTest", "display", WS_OVERLAPPED | WS_HSCROLL | WS_VSCROLL, 0, 0, 260, 200,
                               nullptr, nullptr, c.hInstance, nullptr);
        // Without bars the client area is 240 by 160, whatever frame the
        // window gets.
        ShowScrollBar(w, SB_BOTH, FALSE);
        RECT client, outer;
        GetClientRect(w, &client);
        GetWindowRect(w, &outer);
        SetWindowPos(w, nullptr, 0, 0, outer.right - outer.left + 240 - client.right,
                     outer.bottom - outer.top + 160 - client.bottom, SWP_NOMOVE | SWP_NOZORDER);
        ShowWindow(w, SW_SHOWNORMAL);
        // Let the window reach the screen before anything is read back.
        for (int i = 0; i < 50; ++i) {
            MSG m;
            while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&m);
            Sleep(10);
        }
        return w;
    }();
    return window;
}

// Pumps what the window has queued, so sizes and paints happen.
void Settle(HWND w) {
    MSG m;
    while (PeekMessageA(&m, w, 0, 0, PM_REMOVE)) DispatchMessageA(&m);
    UpdateWindow(w);
}

// An image whose every pixel differs from its neighbours and the brush.
unsigned Pattern(int x, int y) { return (x * 37 + y * 101) % 251; }

// Colour of image pixel (x, y from the top) of a packed DIB.
std::uint32_t ColourAt(const Bytes& dib, int x, int y) {
    const int h = static_cast<int>(dib[8] | dib[9] << 8);
    const unsigned v = PixelAt(dib, x, h - 1 - y);
    if (dib[14] > 8) return v;
    const unsigned char* q = dib.data() + 40 + 4 * v;
    return q[2] << 16 | q[1] << 8 | q[0];
}

// What the client area must show: device pixel (x, y) is image pixel
// ((x + ox) * den / num, (y + oy) * den / num), the brush elsewhere; with
// `centres`, the pixel whose centre is nearest, as the software stretchers
// sample.
Pixels Expected(const Bytes& dib, const RECT& c, int ox, int oy, int num, int den, bool negative,
                std::uint32_t brush = kBrush, bool centres = false) {
    const int w = static_cast<int>(dib[4] | dib[5] << 8), h = static_cast<int>(dib[8] | dib[9] << 8);
    Pixels p;
    for (int y = 0; y < c.bottom; ++y)
        for (int x = 0; x < c.right; ++x) {
            auto source = [&](int d) { return d < 0 ? -1 : centres ? (num + 2 * den * d) / (2 * num) : d * den / num; };
            const int ix = source(x + ox), iy = source(y + oy);
            const bool inside = x + ox < w * num / den && y + oy < h * num / den;
            if (centres && inside && (ix >= w || iy >= h))  // a stretcher leaves pixel 0 past its last source
                p.push_back(dib[42] << 16 | dib[41] << 8 | dib[40]);
            else if (ix < 0 || iy < 0 || ix >= w || iy >= h)
                p.push_back(brush);
            else
                p.push_back(negative ? ~ColourAt(dib, ix, iy) & 0xFFFFFF : ColourAt(dib, ix, iy));
        }
    return p;
}

// The device offset of the image: its window origin, a whole logical
// point, through the zoom.  A scroll position between two units (or the -1
// of an image with nothing to scroll) lands on the nearest one.
int Offset(int windowOrg, int num, int den) { return windowOrg * num / den; }

struct Shown {
    HWND window;
    HDIB dib;
    Shown(const Bytes& bytes, const int* zoom, UINT flags) : window(TestWindow()), dib(BlockFrom(bytes)) {
        DisplayWmCreate(window, 0, 0, &gState);
        DisplayDIBStart(window, dib, nullptr, zoom, flags, &gState);
        Settle(window);
    }
    ~Shown() {
        DisplayWmDestroy(window, 0, 0, &gState);
        GlobalFree(dib);
    }
};

TEST(WindowDisplay, ClientAreaShowsTheImageThroughTheMapping) {
    struct Case {
        const char* name;
        int width, height, bits, num, den;
        UINT flags;
    };
    const Case cases[] = {
        {"small, 1:1", 40, 30, 24, 1, 1, 0},       {"small, 3:1", 21, 13, 8, 3, 1, 0},
        {"negative 2:1", 30, 20, 4, 2, 1, DF_NEGATIVE}, {"1-bit 2:1", 33, 17, 1, 2, 1, 0},
        {"large 2:1 scrolls", 160, 120, 24, 2, 1, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes dib = PackedDib({c.width, c.height, c.bits}, Pattern);
        const int zoom[4] = {c.num, c.den, c.num, c.den};
        Shown shown(dib, zoom, c.flags);
        RECT client;
        const Pixels got = ColorsOf(shown.window, &client);
        EXPECT_EQ(got, Expected(dib, client, Offset(gState.windowOrgX, c.num, c.den), Offset(gState.windowOrgY, c.num, c.den),
                                c.num, c.den, c.flags & DF_NEGATIVE));
        // Scroll ranges: the image's device size less the client size, or
        // -1 and -1 with nothing to scroll.
        const int over = c.width * c.num / c.den - client.right;
        EXPECT_EQ(gState.scrollMaxX, over < 1 ? -1 : over);
        SCROLLINFO bar = {};
        bar.cbSize = sizeof(bar);
        bar.fMask = SIF_RANGE;
        GetScrollInfo(shown.window, SB_HORZ, &bar);
        if (over >= 1) {
            EXPECT_EQ(bar.nMax, over);
        }
    }
}

TEST(WindowDisplay, ScrollCodesMoveThePictureAndRepaintWhatTheyUncover) {
    // At 1:1 the unit of scrolling is one pixel, so every position is
    // reached and the moved and repainted parts must join without a seam.
    const Bytes dib = PackedDib({400, 300, 24}, Pattern);
    Shown shown(dib, nullptr, 0);
    RECT client;
    GetClientRect(shown.window, &client);
    const int maxX = 400 - client.right, maxY = 300 - client.bottom;
    struct Step {
        bool vertical;
        WPARAM code;
        int target;  // where the code asks to go; -1: stays
    };
    const Step steps[] = {
        {true, SB_LINEDOWN, 8},  // a line is at least 8 pixels
        {false, SB_PAGEDOWN, client.right / 2},
        {false, MAKEWPARAM(SB_THUMBPOSITION, 7), 7},
        {true, SB_BOTTOM, maxY},
        {true, SB_ENDSCROLL, -1},
        {false, MAKEWPARAM(SB_THUMBTRACK, 1000), maxX},
        {true, SB_TOP, 0},
    };
    int x = 0, y = 0;
    for (const Step& s : steps) {
        SCOPED_TRACE(::testing::Message() << (s.vertical ? "vertical " : "horizontal ") << LOWORD(s.code));
        SendMessageA(shown.window, s.vertical ? WM_VSCROLL : WM_HSCROLL, s.code, 0);
        Settle(shown.window);
        if (s.target >= 0) (s.vertical ? y : x) = s.target;
        EXPECT_EQ(gState.scrollX, x);
        EXPECT_EQ(gState.scrollY, y);
        EXPECT_EQ(ColorsOf(shown.window, &client), Expected(dib, client, x, y, 1, 1, false));
        EXPECT_EQ(GetScrollPos(shown.window, s.vertical ? SB_VERT : SB_HORZ), s.vertical ? y : x);
    }
    const int to[2] = {41, 33};
    EXPECT_EQ(DisplaySetScrollPos(shown.window, &gState, to), 0);
    Settle(shown.window);
    EXPECT_EQ(ColorsOf(shown.window, &client), Expected(dib, client, 41, 33, 1, 1, false));
}

TEST(WindowDisplay, FitAndCentrePlaceTheImageAsTheClientAllows) {
    HWND w = TestWindow();
    RECT client;
    // Fit: the bars go, and an image of a quarter of the client's size in
    // each direction is shown four times as large.
    const Bytes quarter = PackedDib({60, 40, 24}, Pattern);
    {
        Shown shown(quarter, nullptr, DF_FIT);
        const Pixels got = ColorsOf(w, &client);
        ASSERT_EQ(client.right * 1000 + client.bottom, 240160) << "the window was not given its size";
        EXPECT_EQ(got, Expected(quarter, client, 0, 0, 4, 1, false));
    }
    // Centre: a small image sits at (client - image) / 2; with nothing to
    // scroll the position is -1, which moves it one pixel further.
    const Bytes small = PackedDib({30, 20, 8}, Pattern);
    Shown shown(small, nullptr, DF_CENTRE);
    EXPECT_EQ(gState.scrollX, -1);
    EXPECT_EQ(gState.centreX, (30 - client.right) / 2);
    EXPECT_EQ(ColorsOf(w, &client), Expected(small, client, gState.windowOrgX, gState.windowOrgY, 1, 1, false));
    EXPECT_EQ(gState.windowOrgX, gState.centreX - 1);
}

// Direct painting: the window procedure paints through DisplayDIBImage.
TEST(DirectPaint, LowMemoryStretchersDrawWhatTheGraphicsSystemDraws) {
    HWND w = TestWindow();
    Bytes dib = PackedDib({50, 40, 8}, Pattern);
    std::fill_n(dib.begin() + 24, 8, 0);  // no resolution: one image pixel per screen pixel, before the zoom
    HDIB block = BlockFrom(dib);
    const int zoom[4] = {2, 1, 2, 1}, position[4] = {0, 0, 0, 0};
    gForward = false;
    auto paint = [&](int lowMem) {
        SetLowMemStretch(lowMem);
        InvalidateRect(w, nullptr, FALSE);
        DisplayDIBImage(w, block, position, zoom, 0);
        RECT client;
        Pixels p = ColorsOf(w, &client);
        // The stretchers sample pixel centres (0, 1, 1, 2, 2...); the
        // graphics system repeats (0, 0, 1, 1...).  Around the image is
        // the paint context's own brush, white.
        return p == Expected(dib, client, 0, 0, 2, 1, false, 0xFFFFFF, lowMem != 0);
    };
    EXPECT_TRUE(paint(0));
    EXPECT_TRUE(paint(1));
    EXPECT_EQ(SetLowMemStretch(0), 1);
    gForward = true;
    GlobalFree(block);
}

TEST(WindowDisplay, NullWindowsAndRecordsAreQuiet) {
    HDIB dib = BlockFrom(PackedDib({4, 4, 8}));
    const int pos[2] = {1, 1};
    EXPECT_EQ(DisplayDIBStart(nullptr, dib, nullptr, nullptr, 0, nullptr), 0u);
    EXPECT_EQ(DisplayWmSize(nullptr, 0, 0, &gState), 1);
    EXPECT_EQ(DisplayWmHorzScroll(nullptr, SB_LINEDOWN, 0, &gState), 1);
    EXPECT_EQ(DisplayWmVertScroll(TestWindow(), SB_LINEDOWN, 0, nullptr), 0);
    EXPECT_EQ(DisplaySetScrollPos(TestWindow(), &gState, nullptr), 1);
    EXPECT_EQ(DisplaySetScrollPos(nullptr, nullptr, pos), 0);
    EXPECT_EQ(DisplayDIBImageDC(nullptr, nullptr), 0u);
    // A zoom of 0/0 reaches the graphics system as it is, and must not stop
    // the record from working.
    HWND gone = CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(gone);
    const int zero[4] = {0, 0, 0, 0}, tiny[4] = {1, 1000000, 1, 1000000};
    for (const int* zoom : {zero, tiny}) {
        DisplayWmCreate(nullptr, 0, 0, &gState);
        EXPECT_EQ(DisplayDIBStart(TestWindow(), dib, nullptr, zoom, 0, &gState), 0u);
        Settle(TestWindow());
        EXPECT_EQ(DisplayDIBStart(gone, dib, nullptr, zoom, DF_CENTRE, &gState), UINT(DF_CENTRE));
        EXPECT_EQ(DisplayWmVertScroll(gone, SB_PAGEDOWN, 0, &gState), 0);
        DisplayWmDestroy(nullptr, 0, 0, &gState);
    }
    GlobalFree(dib);
}

}  // namespace
