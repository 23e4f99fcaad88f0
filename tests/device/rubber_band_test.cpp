// The blocking rubber-band zoom in a real window: mouse messages posted to
// the window before the call drive its loop, under a watchdog.
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace zoom_testing;

namespace {

LPARAM At(int x, int y) { return MAKELPARAM(x, y); }

TEST(RubberBandZoom, ZoomArrayFromTheBandAndARepaint) {
    using Moves = std::vector<std::pair<int, int>>;
    struct Case {
        POINT press;
        Moves moves;  // the last one is where the button comes up
        std::vector<int> before, after;
    } cases[] = {
        // 240 x 160 client area, band 100 x 50: 2.4 and 3.2, the smaller
        {{20, 20}, {{60, 40}, {90, 60}, {120, 70}}, {1, 1, 1, 1}, {240, 100, 240, 100}},
        {{120, 70}, {{60, 40}, {20, 20}}, {1, 1, 1, 1}, {240, 100, 240, 100}},  // up and to the left
        {{20, 20}, {{20, 20}}, {1, 1, 1, 1}, {500, 100, 500, 100}},             // a click
        {{0, 0}, {{239, 159}}, {1, 1, 1, 1}, {100, 100, 100, 100}},             // nearly the whole area
        {{20, 20}, {{120, 70}}, {300, 100, 300, 100}, {500, 100, 500, 100}},    // never past 5
        {{20, 20}, {{120, 70}}, {0, 0, 0, 0}, {240, 100, 240, 100}},            // 0/0 counts as 1
    };
    for (const Case& c : cases) {
        TestWindow window;
        RECT before;
        GetClipCursor(&before);
        for (std::size_t i = 0; i < c.moves.size(); ++i) {
            const LPARAM at = At(c.moves[i].first, c.moves[i].second);
            PostMessageA(window.get(), i + 1 < c.moves.size() ? WM_MOUSEMOVE : WM_LBUTTONUP, 0, at);
        }
        const int paints = window.paints, erasures = window.erasures;
        std::vector<int> zoom = c.before;
        {
            Watchdog watchdog(window.get());
            Zoom(window.get(), At(c.press.x, c.press.y), zoom.data());
            ASSERT_FALSE(watchdog.fired()) << "the loop did not end at the button release";
        }
        EXPECT_EQ(zoom, c.after) << c.press.x << "," << c.press.y;
        EXPECT_EQ(window.paints, paints + 1);
        EXPECT_EQ(window.erasures, erasures + 1);
        // The mouse is free again, and the band is gone from the picture.
        RECT after;
        GetClipCursor(&after);
        EXPECT_TRUE(EqualRect(&before, &after));
        EXPECT_EQ(window.Screen(), TestWindow::Pattern());
    }
}

TEST(RubberBandZoom, ConfinesTheMouseWhileTheButtonIsDown) {
    TestWindow window;
    // A second thread reads the clip rectangle while the loop runs, then
    // lets the button up.
    RECT during = {};
    std::thread reader([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        GetClipCursor(&during);
        PostMessageA(window.get(), WM_LBUTTONUP, 0, At(50, 50));
    });
    int zoom[4] = {1, 1, 1, 1};
    {
        Watchdog watchdog(window.get());
        Zoom(window.get(), At(10, 10), zoom);
        EXPECT_FALSE(watchdog.fired());
    }
    reader.join();
    const RECT client = {0, 0, TestWindow::kWidth, TestWindow::kHeight};  // the popup stands at (0, 0)
    EXPECT_TRUE(EqualRect(&during, &client)) << during.left << "," << during.top << "," << during.right << ","
                                              << during.bottom;
    EXPECT_EQ(zoom[0], 400);  // the release point ends the band: 40 x 40, 6 and 4
}

TEST(RubberBandZoom, PressOutsideTheClientAreaReturnsAtOnce) {
    TestWindow window;
    int zoom[4] = {3, 4, 5, 6};
    const int paints = window.paints;
    for (LPARAM outside : {At(240, 10), At(10, 160), At(0xFFFF, 10), At(500, 500)}) {
        Watchdog watchdog(window.get(), std::chrono::milliseconds(1000));
        Zoom(window.get(), outside, zoom);
        EXPECT_FALSE(watchdog.fired());
    }
    EXPECT_EQ((std::vector<int>(zoom, zoom + 4)), (std::vector<int>{3, 4, 5, 6}));
    EXPECT_EQ(window.paints, paints);
}

}  // namespace
