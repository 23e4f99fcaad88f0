// The stepped zoom on a host's ScreenZoomState: scales with and without the
// resolution correction, the scroll position both ways, a band and a point.
#include "zoom/screen_scale.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

const RECT kClient = {0, 0, 400, 300};

ScreenZoomState Record(double scale) {
    ScreenZoomState s = {};
    s.scaleX = s.scaleY = scale;
    s.imageWidth = 1000;
    s.imageHeight = 500;
    s.scrollMaxX = s.scrollMaxY = 100;
    return s;
}

TEST(ScreenScale, LoadedFromNumbersAndResolution) {
    struct Case {
        int flags;
        std::vector<int> numbers;  // empty: none
        int imageDpi;
        double x, y;
        int flagsAfter;
    } cases[] = {
        {0, {20, 10, 30, 10}, 0, 2.0, 3.0, 0x10},
        {0, {}, 0, 1.0, 1.0, 0x10},
        {0, {-2, 1, 3, 0}, 0, 1.0, 1.0, 0x10},  // non-positive pairs count as 1
        {0x04, {20, 10, 30, 10}, 48, 4.0, 6.0, 0x04},
        {0x04, {20, 10, 30, 10}, 0, 2.0, 3.0, 0x04},  // no image resolution: no correction
    };
    for (const Case& c : cases) {
        ScreenZoomState s = Record(7.0);
        s.flags = c.flags;
        s.imageDpiX = s.imageDpiY = c.imageDpi;
        prism::ScreenLoadScale(c.numbers.empty() ? nullptr : c.numbers.data(), 96, 96, &s);
        EXPECT_EQ(s.scaleX, c.x);
        EXPECT_EQ(s.scaleY, c.y);
        EXPECT_EQ(s.flags, c.flagsAfter);
        EXPECT_EQ(s.deviceDpiX, 96);
    }
}

TEST(ScreenScale, ScrollPositionAndImagePositionBothWays) {
    // 1000 x 500 at scale 2 is 2000 x 1000 screen pixels: 1600 and 700 past
    // the client area.
    ScreenZoomState s = Record(2.0);
    s.scrollPosX = 50;
    s.scrollPosY = 150;  // limited to the maximum
    prism::ScreenFromScroll(kClient, &s);
    EXPECT_EQ((std::vector<int>{s.scrollPosY, s.pixelOffsetX, s.pixelOffsetY, s.imagePosX, s.imagePosY}),
              (std::vector<int>{100, 800, 700, 400, 350}));
    prism::ScreenToScroll(kClient, &s);
    EXPECT_EQ((std::vector<int>{s.scrollPosX, s.scrollPosY, s.barFlags}), (std::vector<int>{50, 100, 3}));

    // Everything fits: no bars, no offsets.
    ScreenZoomState small = Record(0.25);
    small.scrollPosX = 30;
    prism::ScreenFromScroll(kClient, &small);
    EXPECT_EQ(small.pixelOffsetX, 0);
    prism::ScreenToScroll(kClient, &small);
    EXPECT_EQ((std::vector<int>{small.scrollPosX, small.barFlags}), (std::vector<int>{0, 0}));

    // A maximum of 0 leaves position 0 and the scroll position untouched.
    ScreenZoomState none = Record(2.0);
    none.scrollMaxY = 0;
    none.scrollPosX = 40;
    none.imagePosX = 9;
    prism::ScreenFromScroll(kClient, &none);
    EXPECT_EQ((std::vector<int>{none.imagePosX, none.scrollPosX}), (std::vector<int>{0, 40}));
}

TEST(ScreenScale, BandFillsTheClientArea) {
    struct Case {
        RECT band;
        double scale;
        int flags, num, den;
    } cases[] = {
        {{10, 10, 110, 60}, 1.0, 0, 40, 10},     // 4 and 6: the smaller
        {{10, 10, 210, 160}, 2.0, 0, 40, 10},    // the band is 100 x 75 image pixels
        {{10, 10, 10, 10}, 1.0, 0, 80, 10},      // no size: the largest scale
        {{0, 0, 800, 600}, 1.0, 0, 10, 20},
        {{10, 10, 110, 60}, 1.0, 0x04, 20, 10},  // device 96 over image 48 dpi halves it
    };
    for (const Case& c : cases) {
        ScreenZoomState s = Record(c.scale);
        s.flags = c.flags;
        s.deviceDpiX = s.deviceDpiY = 96;
        s.imageDpiX = s.imageDpiY = 48;
        BZoomState z = {};
        z.band = c.band;
        prism::ScreenBandToScale(kClient, &z, s);
        EXPECT_EQ((std::vector<int>{z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}),
                  (std::vector<int>{c.num, c.den, c.num, c.den}))
            << c.band.right;
    }
}

TEST(ScreenScale, PointComesToTheCentreWithinTheImage) {
    struct Case {
        POINT p, start, want;
    } cases[] = {
        {{200, 150}, {0, 0}, {100, 75}},       // image point (200, 150) centred at scale 2
        {{0, 0}, {0, -50}, {0, 0}},            // held at the image's top left
        {{400, 300}, {900, 400}, {800, 350}},  // and at its bottom right: 1000 - 200, 500 - 150
    };
    for (const Case& c : cases) {
        ScreenZoomState s = Record(1.0);
        s.imagePosX = c.start.x;
        s.imagePosY = c.start.y;
        BZoomState z = {};
        z.scaleNumX = z.scaleNumY = 20;
        z.scaleDenX = z.scaleDenY = 10;
        prism::ScreenApplyAtPoint(c.p, kClient, 96, 96, z, &s);
        EXPECT_EQ(s.scaleX, 2.0);
        EXPECT_EQ((std::vector<int>{s.imagePosX, s.imagePosY}), (std::vector<int>{c.want.x, c.want.y})) << c.p.x;
    }
}

}  // namespace
