// The blocking rubber-band zoom in a real window: mouse messages posted to
// the window drive its loop, always under a watchdog.
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

using namespace zoom_testing;

namespace {

using V = std::vector<int>;

TEST(RubberBandZoom, ZoomArrayFromTheBandAndARepaint) {
    const struct {
        POINT press;
        std::vector<POINT> moves;  // the button comes up at the last
        V before, after;
    } cases[] = {
        // 240 x 160 client area, band 100 x 50: 2.4 and 3.2, the smaller
        {{20, 20}, {{60, 40}, {90, 60}, {120, 70}}, {1, 1, 1, 1}, {240, 100, 240, 100}},
        {{120, 70}, {{60, 40}, {20, 20}}, {1, 1, 1, 1}, {240, 100, 240, 100}},  // up and to the left
        {{20, 20}, {{20, 20}}, {1, 1, 1, 1}, {500, 100, 500, 100}},             // a click
        {{0, 0}, {{239, 159}}, {1, 1, 1, 1}, {100, 100, 100, 100}},             // nearly the whole area
        {{20, 20}, {{120, 70}}, {300, 100, 300, 100}, {500, 100, 500, 100}},    // never past 5
        {{20, 20}, {{120, 70}}, {0, 0, 0, 0}, {240, 100, 240, 100}},            // 0/0 counts as 1
    };
    for (const auto& c : cases) {
        TestWindow window;
        RECT freeBefore, freeAfter;
        GetClipCursor(&freeBefore);
        for (size_t i = 0; i < c.moves.size(); ++i)
            PostMessageA(window.get(), i + 1 < c.moves.size() ? WM_MOUSEMOVE : WM_LBUTTONUP, 0,
                         MAKELPARAM(c.moves[i].x, c.moves[i].y));
        const int paints = window.paints, erasures = window.erasures;
        V zoom = c.before;
        {
            Watchdog watchdog(window.get());
            Zoom(window.get(), MAKELPARAM(c.press.x, c.press.y), zoom.data());
            ASSERT_FALSE(watchdog.fired()) << "the loop did not end at the button release";
        }
        EXPECT_EQ(zoom, c.after) << c.press.x << "," << c.press.y;
        EXPECT_EQ(V({window.paints, window.erasures}), V({paints + 1, erasures + 1}));
        GetClipCursor(&freeAfter);  // ClipCursor(NULL) gives back the whole screen
        EXPECT_TRUE(EqualRect(&freeBefore, &freeAfter));
        EXPECT_EQ(window.Screen(), TestWindow::Pattern());
    }
}

TEST(RubberBandZoom, PressOutsideTheClientAreaReturnsAtOnce) {
    TestWindow window;
    int zoom[4] = {3, 4, 5, 6};
    const int paints = window.paints;
    Watchdog watchdog(window.get(), std::chrono::milliseconds(1000));
    for (LPARAM outside : {MAKELPARAM(240, 10), MAKELPARAM(10, 160), MAKELPARAM(0xFFFF, 10)}) Zoom(window.get(), outside, zoom);
    EXPECT_FALSE(watchdog.fired());
    EXPECT_EQ(V(zoom, zoom + 4), V({3, 4, 5, 6}));
    EXPECT_EQ(window.paints, paints);
}

}  // namespace
