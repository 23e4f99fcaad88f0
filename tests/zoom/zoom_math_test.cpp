// The zoom arithmetic without a window: the stepped zoom's tables and the
// sequences a host sees stepping again and again, ratios made scales, the
// scroll position of a host's ScreenZoomState both ways, the zoom a rubber
// band leaves behind, and the rectangle a lens shows.
#include "zoom/band_zoom.h"
#include "zoom/scale_steps.h"
#include "zoom/screen_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

using V = std::vector<int>;

// Every test leaves the library's tables as it found them.
class ZoomTables : public ::testing::Test {
protected:
    void SetUp() override { base_ = BZoomGetScaleSteps(in_, out_); }
    void TearDown() override { ASSERT_EQ(BZoomSetScaleSteps(base_, in_, out_), 1); }
    int base_ = 0, in_[11] = {}, out_[11] = {};
};

// Steps num / den n times in one mode, each step from the last result: the
// numerators (or, with dens, the denominators) seen.
V Steps(int num, int den, int mode, size_t n, bool dens = false) {
    V seen;
    BZoomState s = {};
    s.mode = mode;
    for (size_t i = 0; i < n; ++i) {
        s.startScale[0] = num;
        s.startScale[1] = den;
        prism::StepScale(&s);
        EXPECT_EQ(V({s.scaleNumY, s.scaleDenY}), V({s.scaleNumX, s.scaleDenX}));  // uniform
        num = s.scaleNumX;
        den = s.scaleDenX;
        seen.push_back(dens ? den : num);
    }
    return seen;
}

TEST_F(ZoomTables, StepSequences) {
    const struct { int num, den, mode; bool dens; V want; } cases[] = {
        {10, 10, 18, false, {20, 40, 60, 80, 80}}, {10, 10, 19, true, {15, 30, 40, 50, 50}},
        {10, 30, 18, true, {15, 10, 10}},  // then the numerator moves: 20/10
        {10, 50, 34, true, {40, 30}},      // without the mouse alike
        {25, 10, 18, false, {40}},         // between two steps: the next, no further
        {25, 10, 19, false, {20}},         {30, 20, 18, false, {20}},  // normalised to 15/10 first
        {30, 20, 19, false, {10}},         {30, 20, 20, true, {18}},   // fine steps do not normalise
        {20, 10, 21, false, {18, 16}},     {10, 10, 37, true, {12, 14}},
        {0, 7, 18, false, {20}},  // a 0 normalises to base / base
        {10, 10, 20, false, {12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40,
                             42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 63, 66, 69, 72, 75, 78, 81, 80, 80}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Steps(c.num, c.den, c.mode, c.want.size(), c.dens), c.want) << c.num << "/" << c.den << " " << c.mode;
    for (int mode : {0, 16, 22, 32, 38, -1}) {  // no step: the start scale, its own Y values kept
        BZoomState s = {mode, 0, 0, 0, 0, 0, 0, 0, {}, {30, 20, 7, 3}, 0};
        prism::StepScale(&s);
        EXPECT_EQ(V({s.scaleNumX, s.scaleDenX, s.scaleNumY, s.scaleDenY}), V({30, 20, 7, 3})) << mode;
    }
}

TEST_F(ZoomTables, OnlyWellFormedTablesAreTaken) {
    const int in[11] = {3, 4, 8, 12}, out[11] = {2, 4, 9};
    struct Case {
        int base;
        V table;  // as the in-table; empty: null
        BOOL want;
    } cases[] = {{0, {}, 0},           {1001, {}, 0},      {4, {0, 4}, 0},          {4, {2, 5, 8}, 0},
                 {4, {3, 4, 8, 8}, 0}, {4, {2, 4, 3}, 0}, {4, {11, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}, 0},
                 {4, {1, 4}, 1},       {1000, {}, 1}};  // a null table stays, even off the new base
    for (Case& c : cases) {
        ASSERT_EQ(BZoomSetScaleSteps(4, in, out), 1);
        if (!c.table.empty()) c.table.resize(11);
        EXPECT_EQ(BZoomSetScaleSteps(c.base, c.table.empty() ? nullptr : c.table.data(), nullptr), c.want) << c.base;
        int got[11], gotOut[11];
        EXPECT_EQ(BZoomGetScaleSteps(got, gotOut), c.want ? c.base : 4);
        EXPECT_EQ(V(got, got + 11), c.want && !c.table.empty() ? c.table : V(in, in + 11)) << c.base;
        EXPECT_EQ(gotOut[2], 9);
    }
    ASSERT_EQ(BZoomSetScaleSteps(4, in, out), 1);
    EXPECT_EQ(Steps(4, 4, 18, 3), V({8, 12, 12}));
    EXPECT_EQ(Steps(4, 4, 19, 2, true), V({9, 9}));
    const int huge[11] = {2, 4, 2147483647};  // absurd, yet rising: fine steps stop at the largest number
    ASSERT_EQ(BZoomSetScaleSteps(4, huge, nullptr), 1);
    EXPECT_EQ(Steps(2147000000, 4, 20, 2), V({2147483647, 2147483647}));
}

TEST_F(ZoomTables, RatiosBecomeScalesWithinTheTables) {
    const struct {
        double f;
        int num, den;
    } cases[] = {{1.0, 10, 10},  {1.26, 13, 10}, {8.0, 80, 10}, {100.0, 80, 10}, {INFINITY, 80, 10}, {NAN, 80, 10},
                 {0.5, 10, 20},  {0.3, 10, 33},  {0.2, 10, 50}, {0.01, 10, 50},  {-3.0, 10, 50}};
    for (const auto& c : cases) {
        int scale[4] = {};
        prism::RatioToScale(c.f, scale);
        EXPECT_EQ(V(scale, scale + 4), V({c.num, c.den, c.num, c.den})) << c.f;
    }
    const int in[11] = {2, 4, 12}, out[11] = {2, 4, 9};  // limits from the host's tables
    ASSERT_EQ(BZoomSetScaleSteps(4, in, out), 1);
    int high[4], low[4];
    prism::RatioToScale(100.0, high);
    prism::RatioToScale(0.0, low);
    EXPECT_EQ(V({high[0], high[1], low[0], low[1]}), V({12, 4, 4, 9}));
}

// A 1000 x 500 image, device 96 and image 48 dpi, scroll maxima 100, in a
// client area of 400 x 300.
const RECT kClient = {0, 0, 400, 300};
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
    } cases[] = {{{10, 10, 110, 60}, 1.0, 0, 40, 10}, {{10, 10, 210, 160}, 2.0, 0, 40, 10},
                 {{10, 10, 10, 10}, 1.0, 0, 80, 10},  {{0, 0, 800, 600}, 1.0, 0, 10, 20},
                 {{10, 10, 110, 60}, 1.0, 0x04, 20, 10}};  // device over image resolution halves it
    for (const auto& c : cases) {
        BZoomState z = {0, 0, 0, 0, 0, 0, 0, 0, c.band, {}, 0};
        prism::ScreenBandToScale(kClient, &z, Record(c.scale, c.flags));
        EXPECT_EQ(V({z.scaleNumX, z.scaleDenX, z.scaleNumY, z.scaleDenY}), V({c.num, c.den, c.num, c.den}));
    }
    const int numbers[4] = {20, 10, 30, 10};
    ScreenZoomState s = Record(1.0, 0x04);
    prism::ScreenLoadScale(numbers, 96, 96, &s);
    EXPECT_EQ(std::vector<double>({s.scaleX, s.scaleY}), std::vector<double>({4.0, 6.0}));
    // A point near the image's bottom right: the view held inside the image.
    const BZoomState z = {0, 20, 10, 20, 10, 0, 0, 0, {}, {}, 0};
    s = Record(1.0);
    s.imagePosX = 900;
    s.imagePosY = 400;
    prism::ScreenApplyAtPoint({400, 300}, kClient, 96, 96, z, &s);
    EXPECT_EQ(V({s.imagePosX, s.imagePosY}), V({800, 350}));
}

// The band fills the client area up to five times, the same percentage on
// both axes over 100; a den of 0 counts as 1, a zoom of 0 stays 0.
TEST(BandZoom, BandFillsTheClientAreaUpToFiveTimes) {
    const int kMin = -2147483647 - 1;
    const struct { RECT band; V before, after; } cases[] = {
        {{10, 10, 110, 60}, {1, 1, 1, 1}, {200, 100, 200, 100}},
        {{110, 60, 10, 10}, {1, 1, 1, 1}, {200, 100, 200, 100}},          // dragged up and left
        {{50, 50, 50, 50}, {1, 1, 1, 1}, {500, 100, 500, 100}},           // a click
        {{10, 10, 60, 60}, {1, 1, 1, 1}, {200, 100, 200, 100}},           // 4 and 2: the smaller
        {{10, 10, 110, 60}, {300, 100, 300, 100}, {500, 100, 500, 100}},  // the total is limited
        {{10, 10, 110, 60}, {150, 100, 7, 0}, {200, 100, 200, 100}},      // X 1.5 gives 3, Y 0/0 as 1 gives 2
        {{10, 10, 110, 60}, {0, 1, 1, 1}, {0, 100, 0, 100}},
        {{50, 50, 50, 50}, {0, 1, 0, 1}, {0, 100, 0, 100}},  // zoom 0 stays 0 for a click too
        {{10, 10, 110, 60}, {kMin, 1, 1, 1}, {kMin, 100, kMin, 100}},
    };
    for (const auto& c : cases) {
        V zoom = c.before;
        prism::WriteBandZoom({0, 0, 200, 100}, c.band, zoom.data());
        EXPECT_EQ(zoom, c.after) << c.band.left << "," << c.band.top << " " << c.before[0] << "/" << c.before[1];
    }
}

// The lens (180 x 80 until set, a frame of 4) shows a rectangle around the
// point; reductions become 10/10.
TEST(LensRect, SourceRectangleInsideTheFrame) {
    ASSERT_EQ(V({static_cast<int>(M_GetWidth()), static_cast<int>(M_GetHeight())}), V({180, 80}));
    const struct { UINT w, h; V zoom, zoomAfter, sides; } cases[] = {
        {180, 80, {20, 10, 20, 10}, {20, 10, 20, 10}, {457, 282, 543, 318}},  // 86 x 36 around (500, 300)
        {180, 80, {30, 10, 20, 10}, {30, 10, 20, 10}, {472, 282, 529, 318}},
        {180, 80, {10, 20, 10, 20}, {10, 10, 10, 10}, {414, 264, 586, 336}},
        {180, 80, {0, 0, 5, 1}, {10, 10, 5, 1}, {414, 293, 586, 307}},
        {180, 80, {-4, -8, 1, 1}, {-4, -8, 1, 1}, {328, 264, 672, 336}},
        {0, 0, {20, 10, 20, 10}, {20, 10, 20, 10}, {502, 302, 498, 298}},  // no room inside the frame
        {100000, 100000, {20, 10, 20, 10}, {20, 10, 20, 10}, {-24498, -24698, 25498, 25298}},
        {0xFFFFFFFFu, 8, {20, 10, 20, 10}, {20, 10, 20, 10}, {502, 300, 498, 300}},  // a width read as -1
    };
    for (const auto& c : cases) {
        EXPECT_EQ(std::vector<UINT>({UINT(M_SetSizes(c.w, c.h)), M_GetWidth()}), std::vector<UINT>({1, c.w}));
        V zoom = c.zoom;
        RECT r = {};
        EXPECT_EQ(M_CalcRect(500, 300, zoom.data(), &r), 1);
        EXPECT_EQ(zoom, c.zoomAfter);
        EXPECT_EQ(V({r.left, r.top, r.right, r.bottom}), c.sides) << c.w << " " << c.zoom[0] << "/" << c.zoom[1];
    }
    M_SetSizes(180, 80);
    // Refused: nothing to divide by in Y, or nowhere to read or write.
    int zeroY[4] = {20, 10, 0, 10}, zeroDen[4] = {20, 10, 20, 0}, fine[4] = {20, 10, 20, 10};
    RECT r = {1, 2, 3, 4};
    for (auto [zoom, rect] : {std::pair<int*, RECT*>{zeroY, &r}, {zeroDen, &r}, {nullptr, &r}, {fine, nullptr}})
        EXPECT_EQ(M_CalcRect(0, 0, zoom, rect), 0);
    EXPECT_EQ(V({r.left, r.top, r.right, r.bottom}), V({1, 2, 3, 4}));
}

}  // namespace
