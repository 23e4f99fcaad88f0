// The stepped zoom gesture in a real window: steps without the mouse, a
// click and a dragged band on a displayed image, the same on a host's
// ScreenZoomState, and the calls that must do nothing.
#include "support/test_support.h"
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

using namespace zoom_testing;

namespace {

using V = std::vector<int>;
V ScaleOf(const BZoomState& z) { return {z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}; }
V ZoomOf(const DisplayState& d) { return {d.zoomNumX, d.zoomDenX, d.zoomNumY, d.zoomDenY}; }
const int kStart[4] = {10, 10, 10, 10};

// A 400 x 300 image at zoom 1 in the 240 x 160 window, bars kept hidden so
// that the client area stays whole.
class SteppedZoom : public ::testing::Test {
protected:
    void SetUp() override {
        DisplayWmCreate(window_.get(), 0, 0, &display_);
        const int one[4] = {1, 1, 1, 1};
        DisplayDIBStart(window_.get(), dib_, nullptr, one, DF_NO_HSCROLL | DF_NO_VSCROLL, &display_);
        UpdateWindow(window_.get());
    }
    void TearDown() override {
        DisplayWmDestroy(window_.get(), 0, 0, &display_);
        GlobalFree(dib_);
    }
    TestWindow window_;
    HDIB dib_ = testing_support::BlockFrom(testing_support::PackedDib({400, 300, 24}));
    DisplayState display_ = {};
};

TEST_F(SteppedZoom, StepsWithoutTheMouseLeaveTheRecordToTheHost) {
    V scale(kStart, kStart + 4);
    display_.viewLeft = 7;
    const DisplayState before = display_;
    for (const auto& [mode, num, den] : {std::tuple{34, 20, 10}, {34, 40, 10}, {35, 20, 10}, {35, 10, 10}, {35, 10, 15}}) {
        BZoomState z;
        BZoomStep(window_.get(), scale.data(), mode, &z, &display_);
        EXPECT_EQ((scale = ScaleOf(z)), V({num, den, num, den})) << "mode " << mode;
        EXPECT_EQ(z.targetX, 7);
        EXPECT_EQ(std::memcmp(&before, &display_, sizeof(display_)), 0);
    }
}

TEST_F(SteppedZoom, ClickStepsAndCentresThePoint) {
    BZoomState z;
    POINT p = {120, 80};
    BZoomStart(window_.get(), &p, kStart, 18, &z, FALSE);
    EXPECT_EQ(GetCapture(), window_.get());
    BZoomEnd(window_.get(), &p, &z, &display_);
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(ScaleOf(z), V({20, 10, 20, 10}));
    EXPECT_EQ(ZoomOf(display_), ScaleOf(z));
    // Image point (120, 80) centred in 120 x 80 image pixels: the view starts at (60, 40).
    EXPECT_EQ(V({z.targetX, z.targetY}), V({60, 40}));
    display_.displayFlags |= DF_FIT;  // a fitted view leaves fitting once zoomed
    BZoomStart(window_.get(), &p, kStart, 19, &z, FALSE);
    BZoomEnd(window_.get(), &p, &z, &display_);
    EXPECT_EQ(display_.displayFlags & (DF_FIT | DF_ZOOMED), static_cast<UINT>(DF_ZOOMED));
    EXPECT_EQ(ZoomOf(display_), V({10, 15, 10, 15}));
}

TEST_F(SteppedZoom, DraggedBandZoomsToTheBandAndIsErased) {
    const Pixels before = window_.Screen();
    const struct {
        POINT end, centre;
        V scale, target;
    } cases[] = {
        {{140, 80}, {80, 50}, {20, 10, 20, 10}, {20, 10}},    // 120 x 60 in 240 x 160: 2
        {{23, 100}, {23, 100}, {20, 10, 20, 10}, {-37, 60}},  // pulled back to 3 pixels wide: a click
        {{0, 0}, {10, 10}, {80, 10, 80, 10}, {-2, 2}},        // 20 x 20 up and left: 8 at most, shown as 10:1
    };
    for (const auto& c : cases) {
        DisplayState display = display_;
        BZoomState z;
        POINT p = {20, 20};
        BZoomStart(window_.get(), &p, kStart, 18, &z, FALSE);
        p = {60, 50};
        BZoomUpdate(window_.get(), &p, &z);
        EXPECT_NE(window_.Screen(), before) << "no band";
        p = c.end;
        BZoomEnd(window_.get(), &p, &z, &display);
        EXPECT_EQ(window_.Screen(), before) << "the band stays on screen";
        EXPECT_EQ(ScaleOf(z), c.scale) << c.end.x;
        EXPECT_EQ(ZoomOf(display), c.scale);
        EXPECT_EQ(V({p.x, p.y, z.targetX, z.targetY}), V({c.centre.x, c.centre.y, c.target[0], c.target[1]}));
    }
}

TEST_F(SteppedZoom, ScreenRecordStepsAndClicks) {
    ScreenZoomState screen = {};
    screen.imageWidth = 1000;
    screen.imageHeight = 500;
    screen.scrollMaxX = screen.scrollMaxY = 100;
    BZoomState z;
    BZoomScreenStep(window_.get(), kStart, 34, &z, &screen);
    EXPECT_EQ(ScaleOf(z), V({20, 10, 20, 10}));
    EXPECT_EQ(V({screen.flags, screen.scrollPosX, screen.barFlags}), V({0x10, 0, 3}));
    POINT p = {120, 80};
    BZoomStart(window_.get(), &p, kStart, 18, &z, FALSE);
    BZoomScreenEnd(window_.get(), &p, &z, &screen);
    EXPECT_EQ(screen.scaleX, 2.0);
    // Image point (120, 80) centred: position (60, 40); 120 and 80 screen
    // pixels into 1760 and 840 of scrolling.
    EXPECT_EQ(V({screen.imagePosX, screen.imagePosY, screen.scrollPosX, screen.scrollPosY}), V({60, 40, 6, 9}));
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

}  // namespace
