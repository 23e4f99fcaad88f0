// The display's arithmetic: extent reduction, fitting, scroll steps, and
// the DisplayCPP layout, against cases worked out by hand.
#include "display/cpp_layout.h"
#include "display/display_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using prism::Extents;

TEST(DisplayMath, ExtentsReduceToSixteenOrBelowWithoutLosingTheWindow) {
    const struct {
        Extents in, out;
    } cases[] = {
        {{3, 3, 4, 4}, {3, 3, 4, 4}},           {{300, 300, 96, 96}, {37, 37, 12, 12}},
        {{1000, 1000, 1000, 1000}, {15, 15, 15, 15}}, {{1, 1, 64, 64}, {1, 1, 64, 64}},
        {{2, 2, 64, 1}, {1, 1, 32, 1}},          // a viewport value of 0 becomes 1
    };
    for (const auto& c : cases) {
        const Extents e = prism::ReduceExtents(c.in);
        EXPECT_EQ((std::array<int, 4>{e.windowX, e.windowY, e.viewportX, e.viewportY}),
                  (std::array<int, 4>{c.out.windowX, c.out.windowY, c.out.viewportX, c.out.viewportY}));
    }
}

TEST(DisplayMath, FitKeepsProportionsAndCorrectsUnlikeResolutions) {
    const struct {
        int w, h, idx, idy, cw, ch, fw, fh;
    } cases[] = {
        {100, 50, 96, 96, 200, 200, 200, 100},  // width decides
        {100, 50, 96, 96, 400, 100, 200, 100},  // height decides
        {100, 100, 200, 100, 100, 100, 50, 100},  // twice the dots across: half as wide
        {100, 100, 100, 200, 100, 100, 100, 50},
        {0, 50, 96, 96, 200, 200, 0, 200},      // no width, or no resolution: no division by zero reaches an int
        {100, 50, 96, 0, 200, 200, 0, 200},
    };
    for (const auto& c : cases) {
        const prism::FitSize f = prism::FitViewport(c.w, c.h, c.idx, c.idy, 96, 96, c.cw, c.ch);
        EXPECT_EQ(f.width, c.fw) << c.w << "x" << c.h << " at " << c.idx << ":" << c.idy;
        EXPECT_EQ(f.height, c.fh);
    }
}

TEST(DisplayMath, ScrollCodesThenLimitAndSnap) {
    const struct {
        int code, old, step, thumb, min, max;
        bool vertical;
        int want;
    } cases[] = {
        {1, 0, 3, 0, 0, 100, true, 6},      // a line of 8, snapped to 3s
        {0, 50, 15, 0, 0, 100, true, 35},
        {3, 0, 1, 0, 0, 100, true, 60},     // half of a 120-pixel page
        {2, 90, 1, 0, 0, 100, true, 30},
        {4, 0, 4, 100, 0, 100, true, 100},  // at the maximum one more step, then snapped back in range
        {4, 40, 4, 10, 10, 100, true, 10},  // at the minimum the vertical bar steps below it, so it gets there
        {4, 40, 4, 10, 10, 100, false, 12},  // the horizontal one does not
        {7, 0, 4, 0, 0, 99, true, 96},      // the end snaps short of the bound
        {8, 20, 4, 0, 0, 99, true, 20},     // end of scrolling moves nothing
        {1, -1, 5, 0, -1, -1, true, -1},    // nothing to scroll
    };
    for (const auto& c : cases) {
        const int asked = prism::ScrollRequest(c.code, c.old, c.step, 120, c.thumb, c.min, c.max, c.vertical);
        // then limited to the range, as the record's positions are
        const int snapped = prism::LimitAndSnap(asked, c.old, c.step, c.min, c.max);
        EXPECT_EQ(std::min(std::max(snapped, c.min), c.max), c.want) << "code " << c.code << " from " << c.old;
    }
}

prism::CppLayout Layout(int cw, int ch, int iw, int ih, int resX, int resY) {
    prism::CppLayout l = {};
    l.client = RECT{0, 0, cw, ch};
    l.image = RECT{0, 0, iw, ih};
    l.resolution[0] = resX;
    l.resolution[1] = resY;
    return l;
}

TEST(CppLayout, ModesZoomAndPositions) {
    int position[4] = {0, 0, 0, 0};
    // Stretch ignores everything but the negative bit.
    prism::CppLayout l = Layout(100, 100, 50, 50, 0, 0);
    EXPECT_EQ(prism::ComputeCppLayout(96, 96, &l, nullptr, position, true, DF_STRETCH | DF_NEGATIVE | DF_CENTRE),
              UINT(DF_STRETCH | DF_NEGATIVE));
    // Without a resolution of its own the image takes the device's; physical
    // size is dropped and 0x04 set.
    l = Layout(100, 100, 50, 50, 0, 0);
    EXPECT_EQ(prism::ComputeCppLayout(96, 96, &l, nullptr, position, true, DF_PHYSICAL), UINT(DF_ZOOMED));
    EXPECT_EQ(l.resolution[0], 96);
    // Fit, centred: 200 by 100 into 100 by 100 gives 100 by 50, 25 down.
    l = Layout(100, 100, 200, 100, 96, 96);
    prism::ComputeCppLayout(96, 96, &l, nullptr, position, false, DF_FIT | DF_CENTRE);
    EXPECT_EQ((std::array<LONG, 4>{l.client.left, l.client.top, l.client.right, l.client.bottom}),
              (std::array<LONG, 4>{0, 25, 100, 75}));
    // A position beyond the image is pulled back to show its last client
    // width; the bar range is in hundredths of an inch.
    int beyond[4] = {500, 0, 0, 0};
    const int zoom[4] = {2, 1, 2, 1};
    l = Layout(100, 100, 200, 100, 96, 96);
    prism::ComputeCppLayout(96, 96, &l, zoom, beyond, true, 0);
    const std::array<LONG, 4> pulledBack = {l.image.left, l.image.right, beyond[0], l.scrollRange[2]};
    EXPECT_EQ(pulledBack, (std::array<LONG, 4>{150, 200, 150, 156}));  // the bar's maximum: (400 - 100) / 2 / 96 * 100
    // A zoom that makes the image wider than 32767 pixels is dropped.
    const int huge[4] = {1000, 1, 1000, 1};
    int origin[4] = {0, 0, 0, 0};
    l = Layout(100, 100, 200, 100, 96, 96);
    prism::ComputeCppLayout(96, 96, &l, huge, origin, false, 0);
    EXPECT_EQ(l.image.right, 100);
}

}  // namespace
