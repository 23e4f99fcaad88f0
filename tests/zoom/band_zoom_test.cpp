// The rubber band's enlargement: the zoom array a band leaves behind.
#include "zoom/band_zoom.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(BandZoom, BandFillsTheClientAreaUpToFiveTimes) {
    const RECT client = {0, 0, 200, 100};
    const int kMin = -2147483647 - 1;
    const struct {
        RECT band;
        std::vector<int> before, after;
    } cases[] = {
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
        std::vector<int> zoom = c.before;
        prism::WriteBandZoom(client, c.band, zoom.data());
        EXPECT_EQ(zoom, c.after) << c.band.left << "," << c.band.top << " " << c.before[0] << "/" << c.before[1];
    }
}

}  // namespace
