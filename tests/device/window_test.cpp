// Images and gestures in real windows, under wine and Xvfb.  The window
// display, in a window whose procedure forwards to the handlers as a
// host's does: the client area read back pixel by pixel against the image
// through the mapping, the bars, and direct painting with and without the
// low-memory stretchers (that window is made once and reused: destroying
// one is slow there).  The zoom gestures: the stepped zoom (steps without
// the mouse, a click and a dragged band on a displayed image, the same on a
// host's ScreenZoomState), the blocking rubber band driven by mouse
// messages under a watchdog, and the magnifying lens (the enlarged source
// in its frame, light grey beyond the image, the screen under an old lens
// position restored exactly); and the calls that must do nothing.
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <vector>

using namespace testing_support;

namespace {

// Pumps what a window has queued, so that sizes and paints happen.
void Settle(HWND window) {
    MSG m;
    while (PeekMessageA(&m, window, 0, 0, PM_REMOVE)) DispatchMessageA(&m);
    UpdateWindow(window);
}

using V = std::vector<int>;

// A DIB shown in a window through the host's record, as a host shows it;
// at the end the record closed and the block freed.
struct ShownImage {
    ShownImage(HWND w, DisplayState* s, const Bytes& bytes, const int* zoom, UINT flags)
        : window(w), state(s), dib(BlockFrom(bytes)) {
        DisplayWmCreate(window, 0, 0, state);
        DisplayDIBStart(window, dib, nullptr, zoom, flags, state);
        Settle(window);
    }
    ~ShownImage() { DisplayWmDestroy(window, 0, 0, state), GlobalFree(dib); }
    HWND window;
    DisplayState* state;
    HDIB dib;
};

constexpr std::uint32_t kBrush = 0x102030;  // the window class's background, 0xRRGGBB
DisplayState gState;
bool gForward = true;

// The host's procedure: the display's handlers (unless painting directly).
bool Forward(HWND w, UINT m, WPARAM wp, LPARAM lp, LRESULT* result) {
    *result = !gForward        ? DefWindowProcA(w, m, wp, lp)
              : m == WM_PAINT   ? DisplayWmPaint(w, &gState)
              : m == WM_SIZE    ? DisplayWmSize(w, wp, lp, &gState)
              : m == WM_HSCROLL ? DisplayWmHorzScroll(w, wp, lp, &gState)
              : m == WM_VSCROLL ? DisplayWmVertScroll(w, wp, lp, &gState)
                                : DefWindowProcA(w, m, wp, lp);
    return true;
}

HWND Window() {
    static TestWindow* window = [] {
        auto* w = new TestWindow(Forward, CreateSolidBrush(RGB(0x10, 0x20, 0x30)));
        for (int i = 0; i < 50; ++i) Settle(w->get()), Sleep(10);  // until it reaches the screen
        return w;
    }();
    return window->get();
}

// An image whose every pixel differs from its neighbours and the brush.
unsigned Pattern(int x, int y) { return (x * 37 + y * 101) % 251; }

// What the client area must show: device pixel (x, y) is image pixel
// ((x + ox) * den / num, (y + oy) * den / num), the brush elsewhere; with
// `centres`, the pixel whose centre is nearest, as the software stretchers
// sample.
Colors Expected(const Bytes& dib, const RECT& c, int ox, int oy, int num, int den, bool negative,
                std::uint32_t brush = kBrush, bool centres = false) {
    const int w = Field(dib, 4), h = Field(dib, 8);
    const Colors image = ColorsOf(dib);
    Colors p;
    for (int y = 0; y < c.bottom; ++y)
        for (int x = 0; x < c.right; ++x) {
            auto source = [&](int d) { return d < 0 ? -1 : centres ? (num + 2 * den * d) / (2 * num) : d * den / num; };
            const int ix = source(x + ox), iy = source(y + oy);
            // Inside the image's device size, a stretcher leaves pixel 0 (table
            // entry 0) past its last source.
            const bool past = centres && x + ox < w * num / den && y + oy < h * num / den && (ix >= w || iy >= h);
            const bool off = ix < 0 || iy < 0 || ix >= w || iy >= h;
            p.push_back(past  ? Get32(dib, 40) & 0xFFFFFF
                        : off ? brush
                              : image[static_cast<size_t>(iy) * w + ix] ^ (negative ? 0xFFFFFF : 0));
        }
    return p;
}

// The device offset of the image is its window origin, a whole logical
// point, through the zoom; scroll ranges are the image's device size less
// the client size, or -1 with nothing to scroll, where the position -1
// moves the image one pixel further.  Fit drops the bars and the zoom: an
// image of a quarter of the client's size each way is shown four times as
// large.  A centred small image sits at (client - image) / 2.
TEST(WindowDisplay, ClientAreaShowsTheImageThroughTheMapping) {
    // org: the window origin, logical.
    const struct { const char* name; int width, height, bits, num, den; UINT flags; POINT org; } cases[] = {
        {"small, 1:1", 40, 30, 24, 1, 1, 0, {-1, -1}},         {"small, 3:1", 21, 13, 8, 3, 1, 0, {0, 0}},
        {"negative 2:1", 30, 20, 4, 2, 1, DF_NEGATIVE, {0, 0}}, {"1-bit 2:1", 33, 17, 1, 2, 1, 0, {0, 0}},
        {"fit, zoom ignored", 60, 40, 24, 4, 1, DF_FIT, {0, 0}},
        {"centred in 240 x 160", 30, 20, 8, 1, 1, DF_CENTRE, {(30 - 240) / 2 - 1, (20 - 160) / 2 - 1}},
        {"large 2:1 scrolls", 160, 120, 24, 2, 1, 0, {0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Bytes dib = PackedDib({c.width, c.height, c.bits}, Pattern);
        const int zoom[4] = {c.num, c.den, c.num, c.den};
        ShownImage shown(Window(), &gState, dib, zoom, c.flags);
        RECT client;
        const Colors got = ColorsOf(shown.window, &client);  // before the expectation reads `client`
        EXPECT_EQ(got, Expected(dib, client, c.org.x * c.num / c.den, c.org.y * c.num / c.den, c.num, c.den,
                                c.flags & DF_NEGATIVE));
        EXPECT_EQ(V({gState.windowOrgX, gState.windowOrgY}), V({c.org.x, c.org.y}));
        const int over = c.width * c.num / c.den - client.right, max = over < 1 ? -1 : over;
        int low, high;
        GetScrollRange(shown.window, SB_HORZ, &low, &high);
        EXPECT_EQ(V({gState.scrollMaxX, high}), V({max, max}));
        // A thumb position moves in whole units of the mapping (at 2:1, two
        // device pixels); with nothing to scroll, nowhere.
        const int unmoved = gState.scrollX;
        SendMessageA(shown.window, WM_HSCROLL, MAKEWPARAM(SB_THUMBPOSITION, 7), 0);
        EXPECT_EQ(gState.scrollX, max < 0 ? unmoved : 7 / c.num * c.num);
    }
}

TEST(WindowDisplay, ScrollCodesMoveThePictureAndRepaintWhatTheyUncover) {
    // At 1:1 the unit of scrolling is one pixel, so every position is
    // reached and the moved and repainted parts must join without a seam.
    const Bytes dib = PackedDib({400, 300, 24}, Pattern);
    ShownImage shown(Window(), &gState, dib, nullptr, 0);
    // Shown again, as a host would once the bars have come: the record
    // keeps the client area measured before them.
    DisplayDIBStart(shown.window, shown.dib, nullptr, nullptr, 0, &gState);
    RECT client;
    GetClientRect(shown.window, &client);
    // target: where the code asks to go; -1: stays.
    const struct { bool vertical; WPARAM code; int target; } steps[] = {
        {true, SB_LINEDOWN, 8},  // a line is at least 8 pixels
        {false, SB_PAGEDOWN, client.right / 2},
        {false, MAKEWPARAM(SB_THUMBPOSITION, 7), 7},
        {true, SB_BOTTOM, 300 - client.bottom},
        {true, SB_ENDSCROLL, -1},
        {false, MAKEWPARAM(SB_THUMBTRACK, 1000), 400 - client.right},
        {true, SB_TOP, 0},
    };
    int x = 0, y = 0;
    for (const auto& s : steps) {
        SCOPED_TRACE(::testing::Message() << (s.vertical ? "vertical " : "horizontal ") << LOWORD(s.code));
        SendMessageA(shown.window, s.vertical ? WM_VSCROLL : WM_HSCROLL, s.code, 0);
        Settle(shown.window);
        if (s.target >= 0) (s.vertical ? y : x) = s.target;
        EXPECT_EQ(V({gState.scrollX, gState.scrollY, GetScrollPos(shown.window, SB_HORZ),
                     GetScrollPos(shown.window, SB_VERT)}),
                  V({x, y, x, y}));
        const Colors got = ColorsOf(shown.window, &client);  // before the expectation reads `client`
        EXPECT_EQ(got, Expected(dib, client, x, y, 1, 1, false));
    }
    const int to[2] = {41, 33};
    EXPECT_EQ(DisplaySetScrollPos(shown.window, &gState, to), 0);
    Settle(shown.window);
    EXPECT_EQ(ColorsOf(shown.window, &client), Expected(dib, client, 41, 33, 1, 1, false));
}

// Direct painting through DisplayDIBImage: the stretchers sample pixel
// centres (0, 1, 1, 2, 2...), the graphics system repeats (0, 0, 1, 1...).
// Around the image is the paint context's own brush, white.
TEST(DirectPaint, LowMemoryStretchersDrawWhatTheGraphicsSystemDraws) {
    HWND w = Window();
    Bytes dib = PackedDib({50, 40, 8}, Pattern);
    std::fill_n(dib.begin() + 24, 8, 0);  // no resolution: one image pixel per screen pixel, before the zoom
    HDIB block = BlockFrom(dib);
    const int zoom[4] = {2, 1, 2, 1}, position[4] = {0, 0, 0, 0};
    gForward = false;
    for (int lowMem : {0, 1}) {
        SetLowMemStretch(lowMem);
        InvalidateRect(w, nullptr, FALSE);
        DisplayDIBImage(w, block, position, zoom, 0);
        RECT client;
        const Colors got = ColorsOf(w, &client);
        EXPECT_TRUE(got == Expected(dib, client, 0, 0, 2, 1, false, 0xFFFFFF, lowMem != 0)) << lowMem;
    }
    EXPECT_EQ(SetLowMemStretch(0), 1);
    gForward = true;
    GlobalFree(block);
}

TEST(WindowDisplay, NullWindowsAndRecordsAreQuiet) {
    HDIB dib = BlockFrom(PackedDib({4, 4, 8}));
    const int pos[2] = {1, 1};
    EXPECT_EQ(std::vector<long long>({DisplayDIBStart(nullptr, dib, nullptr, nullptr, 0, nullptr),
                                      DisplayWmSize(nullptr, 0, 0, &gState),
                                      DisplayWmHorzScroll(nullptr, SB_LINEDOWN, 0, &gState),
                                      DisplayWmVertScroll(Window(), SB_LINEDOWN, 0, nullptr),
                                      DisplaySetScrollPos(Window(), &gState, nullptr),
                                      DisplaySetScrollPos(nullptr, nullptr, pos), DisplayDIBImageDC(nullptr, nullptr)}),
              std::vector<long long>({0, 1, 1, 0, 1, 0, 0}));
    // A zoom of 0/0 reaches the graphics system as it is, and must not stop
    // the record from working.
    HWND gone = CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    DestroyWindow(gone);
    const int zero[4] = {0, 0, 0, 0}, tiny[4] = {1, 1000000, 1, 1000000};
    for (const int* zoom : {zero, tiny}) {
        DisplayWmCreate(nullptr, 0, 0, &gState);
        EXPECT_EQ(DisplayDIBStart(Window(), dib, nullptr, zoom, 0, &gState), 0u);
        Settle(Window());
        EXPECT_EQ(DisplayDIBStart(gone, dib, nullptr, zoom, DF_CENTRE, &gState), UINT(DF_CENTRE));
        EXPECT_EQ(DisplayWmVertScroll(gone, SB_PAGEDOWN, 0, &gState), 0);
        DisplayWmDestroy(nullptr, 0, 0, &gState);
    }
    GlobalFree(dib);
}

V ScaleOf(const BZoomState& z) { return {z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}; }
V ZoomOf(const DisplayState& d) { return {d.zoomNumX, d.zoomDenX, d.zoomNumY, d.zoomDenY}; }
const int kStart[4] = {10, 10, 10, 10};

// A 400 x 300 image at zoom 1 in the 240 x 160 window, bars kept hidden so
// that the client area stays whole.
class SteppedZoom : public ::testing::Test {
protected:
    TestWindow window_;
    DisplayState display_ = {};
    const int one_[4] = {1, 1, 1, 1};
    ShownImage shown_{window_.get(), &display_, PackedDib({400, 300, 24}), one_, DF_NO_HSCROLL | DF_NO_VSCROLL};
};

// A step without the mouse leaves the record to the host, and a click on
// a fitted view leaves fitting (a click on a displayed image is a row of
// the band test).  On a host's ScreenZoomState a click steps and centres
// the point: image point (120, 80) in 120 x 80 image pixels puts the view
// at (60, 40), 120 and 80 screen pixels into 1760 and 840 of scrolling.
TEST_F(SteppedZoom, ClickStepsAndCentresThePoint) {
    BZoomState z;
    DisplayState record = display_;
    record.viewLeft = 7;
    const DisplayState before = record;
    BZoomStep(window_.get(), kStart, 35, &z, &record);
    EXPECT_EQ(V({z.scaleNumX, z.scaleDenX, z.targetX, std::memcmp(&before, &record, sizeof(record))}), V({10, 15, 7, 0}));
    POINT p = {120, 80};
    display_.displayFlags |= DF_FIT;
    BZoomStart(window_.get(), &p, kStart, 19, &z, FALSE);
    BZoomEnd(window_.get(), &p, &z, &display_);
    EXPECT_EQ(display_.displayFlags & (DF_FIT | DF_ZOOMED), static_cast<UINT>(DF_ZOOMED));
    EXPECT_EQ(ZoomOf(display_), V({10, 15, 10, 15}));

    ScreenZoomState screen = {0, 0, 0, 1000, 500, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 100, 100, 0};  // scroll maxima 100
    BZoomScreenStep(window_.get(), kStart, 34, &z, &screen);
    EXPECT_EQ(ScaleOf(z), V({20, 10, 20, 10}));
    EXPECT_EQ(V({screen.flags, screen.scrollPosX, screen.barFlags}), V({0x10, 0, 3}));
    BZoomStart(window_.get(), &p, kStart, 18, &z, FALSE);
    BZoomScreenEnd(window_.get(), &p, &z, &screen);
    EXPECT_EQ(screen.scaleX, 2.0);
    EXPECT_EQ(V({screen.imagePosX, screen.imagePosY, screen.scrollPosX, screen.scrollPosY}), V({60, 40, 6, 9}));
}

TEST_F(SteppedZoom, DraggedBandZoomsToTheBandAndIsErased) {
    const Colors before = window_.Screen();
    const struct { POINT end, centre; V scale, target; } cases[] = {
        {{140, 80}, {80, 50}, {20, 10, 20, 10}, {20, 10}},    // 120 x 60 in 240 x 160: 2
        {{23, 100}, {23, 100}, {20, 10, 20, 10}, {-37, 60}},  // pulled back to 3 pixels wide: a click
        {{0, 0}, {10, 10}, {80, 10, 80, 10}, {-2, 2}},        // 20 x 20 up and left: 8 at most, shown as 10:1
    };
    for (const auto& c : cases) {
        DisplayState display = display_;
        BZoomState z;
        POINT p = {20, 20};
        BZoomStart(window_.get(), &p, kStart, 18, &z, FALSE);
        EXPECT_EQ(GetCapture(), window_.get());
        p = {60, 50};
        BZoomUpdate(window_.get(), &p, &z);
        EXPECT_NE(window_.Screen(), before) << "no band";
        p = c.end;
        BZoomEnd(window_.get(), &p, &z, &display);
        EXPECT_EQ(GetCapture(), nullptr);
        EXPECT_EQ(window_.Screen(), before) << "the band stays on screen";
        EXPECT_EQ(ScaleOf(z), c.scale) << c.end.x;
        EXPECT_EQ(ZoomOf(display), c.scale);
        EXPECT_EQ(V({p.x, p.y, z.targetX, z.targetY}), V({c.centre.x, c.centre.y, c.target[0], c.target[1]}));
    }
}

TEST_F(SteppedZoom, MissingPiecesMouseModesAndDestroyedWindows) {
    BZoomState z;
    std::memset(&z, 0x5A, sizeof(z));
    const BZoomState untouched = z;
    POINT p = {50, 50};
    BZoomStep(window_.get(), kStart, 18, &z, &display_);  // a mouse mode: nothing at all
    BZoomScreenStep(window_.get(), kStart, 17, &z, nullptr);
    BZoomUpdate(window_.get(), nullptr, &z);
    BZoomEnd(window_.get(), &p, &z, nullptr);
    BZoomScreenEnd(window_.get(), &p, &z, nullptr);
    EXPECT_EQ(std::memcmp(&z, &untouched, sizeof(z)), 0);
    BZoomStart(window_.get(), &p, kStart, 18, nullptr, FALSE);
    EXPECT_EQ(GetCapture(), nullptr);
    BZoomStart(window_.get(), &p, kStart, 34, &z, FALSE);  // a step mode does not track the mouse
    p = {150, 150};
    BZoomUpdate(window_.get(), &p, &z);
    EXPECT_EQ(z.bandVisible, 0);
    // A window that goes in the middle of a gesture, zero scales, screen coordinates.
    TestWindow doomed;
    const int zero[4] = {0, 0, 0, 0};
    ScreenZoomState screen = {};
    BZoomStart(doomed.get(), &p, zero, 17, &z, TRUE);
    DestroyWindow(doomed.get());
    p = {10, 10};
    BZoomUpdate(doomed.get(), &p, &z);
    BZoomEnd(doomed.get(), &p, &z, &display_);
    BZoomStart(doomed.get(), &p, zero, 17, &z, TRUE);
    BZoomScreenEnd(doomed.get(), &p, &z, &screen);
    EXPECT_EQ(GetCapture(), nullptr);
}

// The limits of the zoom a band leaves are pinned with the arithmetic.  A
// press outside the client area returns at once and changes nothing.
TEST(RubberBandZoom, ZoomArrayFromTheBandAndARepaint) {
    const struct {
        POINT press;
        std::vector<POINT> moves;  // the button comes up at the last
        int percent;               // of zoom 1; 0: outside, no zoom and no repaint
    } cases[] = {
        {{20, 20}, {{60, 40}, {90, 60}, {120, 70}}, 240},  // band 100 x 50 in 240 x 160: 2.4 and 3.2, the smaller
        {{120, 70}, {{60, 40}, {20, 20}}, 240},            // up and to the left
        {{20, 20}, {{20, 20}}, 500},                       // a click
        {{0, 0}, {{239, 159}}, 100},                       // nearly the whole area
        {{240, 10}, {}, 0}, {{10, 160}, {}, 0}, {{0xFFFF, 10}, {}, 0},  // outside
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.press.x << "," << c.press.y);
        TestWindow window;
        RECT freeBefore, freeAfter;
        GetClipCursor(&freeBefore);
        for (size_t i = 0; i < c.moves.size(); ++i)
            PostMessageA(window.get(), i + 1 < c.moves.size() ? WM_MOUSEMOVE : WM_LBUTTONUP, 0,
                         MAKELPARAM(c.moves[i].x, c.moves[i].y));
        const int paints = window.paints, erasures = window.erasures, repaints = c.percent ? 1 : 0;
        V zoom = {1, 1, 1, 1};
        {
            Watchdog watchdog(window.get());
            Zoom(window.get(), MAKELPARAM(c.press.x, c.press.y), zoom.data());
            ASSERT_FALSE(watchdog.fired()) << "the loop did not end at the button release";
        }
        EXPECT_EQ(zoom, c.percent ? V({c.percent, 100, c.percent, 100}) : V({1, 1, 1, 1}));
        EXPECT_EQ(V({window.paints, window.erasures}), V({paints + repaints, erasures + repaints}));
        GetClipCursor(&freeAfter);  // ClipCursor(NULL) gives back the whole screen
        EXPECT_TRUE(EqualRect(&freeBefore, &freeAfter));
        EXPECT_EQ(window.Screen(), TestWindow::Pattern());
    }
}

constexpr int kLensW = 48, kLensH = 40, kW = TestWindow::kWidth;  // twice a source rectangle of 24 x 20
constexpr std::uint32_t kGrey = 0xC0C0C0;

std::uint32_t SourceAt(int x, int y) {
    return x < 0 || y < 0 || x >= 64 || y >= 48 ? kGrey : static_cast<std::uint32_t>(x * 4 << 16 | y * 5 << 8 | 0x64);
}

class Magnifier : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(M_SetSizes(kLensW, kLensH), 1);
        Colors bits(64 * 48);
        for (int i = 0; i < 64 * 48; ++i) bits[i] = SourceAt(i % 64, i / 64);
        source_ = CreateBitmap(64, 48, 1, 32, bits.data());  // 32 bits a pixel, as the display; top row first
    }
    void TearDown() override {
        M_StopMagnify();
        M_SetSizes(180, 80);
        SetCursor(LoadCursor(nullptr, IDC_ARROW));
        DeleteObject(source_);
    }
    TestWindow window_;
    HBITMAP source_ = nullptr;
};

TEST_F(Magnifier, LensShowsTheEnlargedSourceInItsFrameAndRestoresTheScreen) {
    HCURSOR cross = LoadCursor(nullptr, IDC_CROSS);
    SetCursor(cross);
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    EXPECT_EQ(GetCursor(), nullptr);  // the pointer is hidden while the lens is up
    const struct { int x, y, lx, ly; } steps[] = {  // source rectangle corner, lens position
        {8, 6, 10, 10},
        {8, 6, 30, 20},     // moved by less than its size: the strip it left is restored
        {-6, -4, 150, 90},  // past the image's top left: grey there, the image's edge in place
        {50, 40, 0, 0},     // past its bottom right
    };
    for (const auto& s : steps) {
        SCOPED_TRACE(testing::Message() << "source " << s.x << "," << s.y << " lens " << s.lx << "," << s.ly);
        M_StretchBitmap(source_, s.x, s.y, kLensW / 2, kLensH / 2);
        M_CopyBitmap(window_.get(), s.lx, s.ly);
        // The pattern, or inside the lens the source from (x, y) enlarged
        // twice in a frame of four rings: black outside and at the fourth,
        // between them lit on the top and left and shaded on the bottom and
        // right, then the other way round.
        Colors screen = window_.Screen(), want = TestWindow::Pattern();
        for (int j = 0; j < kLensH; ++j)
            for (int i = 0; i < kLensW; ++i) {
                const int ring = std::min({i, j, kLensW - 1 - i, kLensH - 1 - j});
                const bool shaded = i == kLensW - 1 - ring || j == kLensH - 1 - ring;
                want[static_cast<size_t>(s.ly + j) * kW + s.lx + i] =
                    ring >= 4 ? SourceAt(s.x + i / 2, s.y + j / 2)
                    : ring % 3 == 0 ? 0
                    : (ring == 1) == shaded ? 0x808080 : 0xFFFFFF;
            }
        EXPECT_TRUE(screen == want) << "first difference at pixel "
                                    << std::mismatch(screen.begin(), screen.end(), want.begin()).first - screen.begin();
    }
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), TestWindow::Pattern());
    EXPECT_EQ(GetCursor(), cross);
}

TEST_F(Magnifier, NoStartBadSourcesHugeLensesDestroyedWindows) {
    const Colors pattern = TestWindow::Pattern();
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    // No bitmap, no size, negative size, not a bitmap, far outside: all grey.
    for (auto [bitmap, w, h] : {std::tuple<HBITMAP, int, int>{nullptr, 24, 20}, {source_, 0, 0}, {source_, -24, -20},
                                {reinterpret_cast<HBITMAP>(window_.get()), 24, 20}, {source_, 0x7FFFFFFF, 0x7FFFFFFF}}) {
        M_StretchBitmap(bitmap, 0x7FFFFFF0, 5, w, h);
        M_CopyBitmap(window_.get(), 100, 50);
        EXPECT_EQ(window_.Screen()[(50 + 20) * kW + 100 + 24], kGrey) << w;
    }
    M_CopyBitmap(window_.get(), 0x7FFFFFFF, -0x7FFFFFFF);
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), pattern);
    M_StretchBitmap(source_, 0, 0, 24, 20);  // after a stop: nothing
    M_CopyBitmap(window_.get(), 10, 10);
    EXPECT_EQ(window_.Screen(), pattern);
    M_SetSizes(100000, 100000);  // a lens too large to make, over a window that goes
    TestWindow doomed;
    ASSERT_EQ(M_StartMagnify(doomed.get(), nullptr), 1);
    DestroyWindow(doomed.get());
    M_StretchBitmap(source_, 0, 0, 24, 20);
    M_CopyBitmap(doomed.get(), 5, 5);
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(M_StopMagnify(), 1);
}

}  // namespace
