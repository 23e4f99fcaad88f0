// The stepped zoom on a host's ScreenZoomState: the scroll position both
// ways, and the scale a band asks for, with and without the resolution.
#include "zoom/screen_scale.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using V = std::vector<int>;
const RECT kClient = {0, 0, 400, 300};

// A 1000 x 500 image, device 96 and image 48 dpi, scroll maxima 100.
ScreenZoomState Record(double scale, int flags = 0) {
    return ScreenZoomState{flags, scale, scale, 1000, 500, 96, 96, 48, 48, 0, 0, 0, 0, 0, 0, 100, 100, 0};
}

TEST(ScreenScale, ScrollPositionAndImagePositionBothWays) {
    // At scale 2 the image is 2000 x 1000: 1600 and 700 past the client area.
    ScreenZoomState s = Record(2.0);
    s.scrollPosX = 50;
    s.scrollPosY = 150;  // limited to the maximum
    prism::ScreenFromScroll(kClient, &s);
    EXPECT_EQ(V({s.scrollPosY, s.pixelOffsetX, s.pixelOffsetY, s.imagePosX, s.imagePosY}), V({100, 800, 700, 400, 350}));
    prism::ScreenToScroll(kClient, &s);
    EXPECT_EQ(V({s.scrollPosX, s.scrollPosY, s.barFlags}), V({50, 100, 3}));
    ScreenZoomState none = Record(2.0);  // a maximum of 0: position 0, scroll position as it was
    none.scrollMaxY = 0;
    none.scrollPosX = 40;
    none.imagePosX = 9;
    prism::ScreenFromScroll(kClient, &none);
    EXPECT_EQ(V({none.imagePosX, none.scrollPosX}), V({0, 40}));
}

TEST(ScreenScale, BandToScaleAndPointToPosition) {
    const struct {
        RECT band;
        double scale;
        int flags, num, den;
    } cases[] = {{{10, 10, 110, 60}, 1.0, 0, 40, 10},     {{10, 10, 210, 160}, 2.0, 0, 40, 10},
                 {{10, 10, 10, 10}, 1.0, 0, 80, 10},      {{0, 0, 800, 600}, 1.0, 0, 10, 20},
                 {{10, 10, 110, 60}, 1.0, 0x04, 20, 10}};  // device over image resolution halves it
    for (const auto& c : cases) {
        BZoomState z = {};
        z.band = c.band;
        prism::ScreenBandToScale(kClient, &z, Record(c.scale, c.flags));
        EXPECT_EQ(V({z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}), V({c.num, c.den, c.num, c.den}));
    }
    const int numbers[4] = {20, 10, 30, 10};
    ScreenZoomState s = Record(1.0, 0x04);
    prism::ScreenLoadScale(numbers, 96, 96, &s);
    EXPECT_EQ(std::vector<double>({s.scaleX, s.scaleY}), std::vector<double>({4.0, 6.0}));
    // A point near the image's bottom right: the view held inside the image.
    BZoomState z = {};
    z.scaleNumX = z.scaleNumY = 20;
    z.scaleDenX = z.scaleDenY = 10;
    s = Record(1.0);
    s.imagePosX = 900;
    s.imagePosY = 400;
    prism::ScreenApplyAtPoint({400, 300}, kClient, 96, 96, z, &s);
    EXPECT_EQ(V({s.imagePosX, s.imagePosY}), V({800, 350}));
}

}  // namespace
