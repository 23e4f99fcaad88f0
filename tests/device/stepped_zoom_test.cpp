// The stepped zoom gesture in a real window: steps without the mouse, a
// click and a dragged band applied to a displayed image, the same on a
// host's ScreenZoomState, and the calls that must do nothing.
#include "support/test_support.h"
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace zoom_testing;

namespace {

std::vector<int> ScaleOf(const BZoomState& z) { return {z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}; }
std::vector<int> ZoomOf(const DisplayState& d) { return {d.zoomNumX, d.zoomDenX, d.zoomNumY, d.zoomDenY}; }

// A 400 x 300 image shown at zoom 1 in the 240 x 160 window, bars kept
// hidden so that the client area stays whole.
class SteppedZoom : public ::testing::Test {
protected:
    void SetUp() override {
        dib_ = testing_support::BlockFrom(testing_support::PackedDib({400, 300, 24}));
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
    HDIB dib_ = nullptr;
    DisplayState display_ = {};
};

TEST_F(SteppedZoom, StepsWithoutTheMouseLeaveTheRecordToTheHost) {
    struct Case {
        int mode;
        std::vector<int> want;
    } cases[] = {{34, {20, 10, 20, 10}}, {34, {40, 10, 40, 10}}, {35, {20, 10, 20, 10}}, {35, {10, 10, 10, 10}},
                 {35, {10, 15, 10, 15}}, {36, {10, 13, 10, 13}}, {33, {10, 13, 10, 13}}};
    std::vector<int> scale = {10, 10, 10, 10};
    display_.viewLeft = 7;
    display_.viewTop = 9;
    const DisplayState before = display_;
    for (const Case& c : cases) {
        BZoomState z;
        BZoomStep(window_.get(), scale.data(), c.mode, &z, &display_);
        EXPECT_EQ(ScaleOf(z), c.want) << "mode " << c.mode;
        EXPECT_EQ((std::vector<int>{z.targetX, z.targetY}), (std::vector<int>{7, 9}));
        EXPECT_EQ(std::memcmp(&before, &display_, sizeof(display_)), 0);
        scale = ScaleOf(z);
    }
}

TEST_F(SteppedZoom, ClickStepsAndCentresThePoint) {
    const int start[4] = {10, 10, 10, 10};
    BZoomState z;
    POINT p = {120, 80};
    BZoomStart(window_.get(), &p, start, 18, &z, FALSE);
    EXPECT_EQ(GetCapture(), window_.get());
    BZoomEnd(window_.get(), &p, &z, &display_);
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(ScaleOf(z), (std::vector<int>{20, 10, 20, 10}));
    EXPECT_EQ(ZoomOf(display_), ScaleOf(z));
    EXPECT_EQ(display_.displayFlags & (DF_FIT | DF_ZOOMED), static_cast<UINT>(DF_ZOOMED));
    // (120, 80) at zoom 1 is image point (120, 80); at zoom 2 the client
    // area is 120 x 80 image pixels, so the centred view starts at (60, 40).
    EXPECT_EQ((std::vector<int>{z.targetX, z.targetY}), (std::vector<int>{60, 40}));
    // A fitted view leaves fitting once zoomed.
    display_.displayFlags |= DF_FIT;
    BZoomStart(window_.get(), &p, start, 19, &z, FALSE);
    BZoomEnd(window_.get(), &p, &z, &display_);
    EXPECT_EQ(display_.displayFlags & (DF_FIT | DF_ZOOMED), static_cast<UINT>(DF_ZOOMED));
    EXPECT_EQ(ZoomOf(display_), (std::vector<int>{10, 15, 10, 15}));
}

TEST_F(SteppedZoom, DraggedBandZoomsToTheBandAndIsErased) {
    const Pixels before = window_.Screen();
    struct Case {
        POINT end;
        std::vector<int> scale, target;
        POINT centre;
    } cases[] = {
        {{140, 80}, {20, 10, 20, 10}, {20, 10}, {80, 50}},    // 120 x 60 in 240 x 160: 2
        {{23, 100}, {20, 10, 20, 10}, {-37, 60}, {23, 100}},  // pulled back to 3 pixels wide: a click
        {{0, 0}, {80, 10, 80, 10}, {}, {10, 10}},             // 20 x 20 up and left: 8 at most
    };
    for (const Case& c : cases) {
        DisplayState display = display_;
        const int start[4] = {10, 10, 10, 10};
        BZoomState z;
        POINT p = {20, 20};
        BZoomStart(window_.get(), &p, start, 18, &z, FALSE);
        p = {60, 50};
        BZoomUpdate(window_.get(), &p, &z);
        EXPECT_EQ(z.bandVisible, 1);
        EXPECT_NE(window_.Screen(), before);
        p = c.end;
        BZoomEnd(window_.get(), &p, &z, &display);
        EXPECT_EQ(window_.Screen(), before) << "the band stays on screen";
        EXPECT_EQ(ScaleOf(z), c.scale) << c.end.x;
        EXPECT_EQ(ZoomOf(display), c.scale);
        EXPECT_EQ((std::vector<int>{p.x, p.y}), (std::vector<int>{c.centre.x, c.centre.y}));
        if (!c.target.empty()) {
            EXPECT_EQ((std::vector<int>{z.targetX, z.targetY}), c.target);
        }
    }
}

TEST_F(SteppedZoom, ScreenRecordStepsAndClicks) {
    ScreenZoomState screen = {};
    screen.imageWidth = 1000;
    screen.imageHeight = 500;
    screen.scrollMaxX = screen.scrollMaxY = 100;
    const int start[4] = {10, 10, 10, 10};
    BZoomState z;
    BZoomScreenStep(window_.get(), start, 34, &z, &screen);
    EXPECT_EQ(ScaleOf(z), (std::vector<int>{20, 10, 20, 10}));
    EXPECT_EQ(screen.flags, 0x10);
    EXPECT_GT(screen.deviceDpiX, 0);
    EXPECT_EQ((std::vector<int>{screen.scrollPosX, screen.scrollPosY, screen.barFlags}), (std::vector<int>{0, 0, 3}));

    POINT p = {120, 80};
    BZoomStart(window_.get(), &p, start, 18, &z, FALSE);
    BZoomScreenEnd(window_.get(), &p, &z, &screen);
    EXPECT_EQ(screen.scaleX, 2.0);
    // Image point (120, 80) centred: position (60, 40), 120 and 80 screen
    // pixels into 1760 and 840 of scrolling.
    EXPECT_EQ((std::vector<int>{screen.imagePosX, screen.imagePosY, screen.scrollPosX, screen.scrollPosY}),
              (std::vector<int>{60, 40, 6, 9}));
}

TEST_F(SteppedZoom, MissingPiecesAndMouseModesDoNothing) {
    BZoomState z;
    std::memset(&z, 0x5A, sizeof(z));
    const BZoomState untouched = z;
    const int start[4] = {10, 10, 10, 10};
    POINT p = {50, 50};
    BZoomStep(window_.get(), start, 18, &z, &display_);  // a mouse mode: nothing at all
    BZoomScreenStep(window_.get(), start, 17, &z, nullptr);
    BZoomUpdate(window_.get(), nullptr, &z);
    BZoomEnd(window_.get(), &p, &z, nullptr);
    BZoomScreenEnd(window_.get(), &p, &z, nullptr);
    EXPECT_EQ(std::memcmp(&z, &untouched, sizeof(z)), 0);
    BZoomStart(window_.get(), &p, start, 18, nullptr, FALSE);
    BZoomUpdate(window_.get(), &p, nullptr);
    EXPECT_EQ(GetCapture(), nullptr);
    // A step mode does not track the mouse.
    BZoomStart(window_.get(), &p, start, 34, &z, FALSE);
    p = {150, 150};
    BZoomUpdate(window_.get(), &p, &z);
    EXPECT_EQ(z.bandVisible, 0);
}

TEST_F(SteppedZoom, WindowDestroyedInTheMiddleOfAGesture) {
    TestWindow doomed;
    DisplayState display = display_;
    const int start[4] = {0, 0, 0, 0};
    BZoomState z;
    POINT p = {20, 20};
    BZoomStart(doomed.get(), &p, start, 17, &z, TRUE);
    DestroyWindow(doomed.get());
    p = {100, 100};
    BZoomUpdate(doomed.get(), &p, &z);
    BZoomEnd(doomed.get(), &p, &z, &display);
    ScreenZoomState screen = {};
    BZoomStart(doomed.get(), &p, start, 17, &z, TRUE);
    BZoomScreenEnd(doomed.get(), &p, &z, &screen);
    EXPECT_EQ(GetCapture(), nullptr);
}

}  // namespace
