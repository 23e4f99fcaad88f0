// The lens size and the source rectangle a lens shows at a zoom.
#include "prism32.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> Sides(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }

TEST(LensRect, SourceRectangleInsideTheFrame) {
    ASSERT_EQ(M_GetWidth(), 180u);  // the sizes the library starts with
    ASSERT_EQ(M_GetHeight(), 80u);
    struct Case {
        std::vector<int> zoom, zoomAfter, sides;
    } cases[] = {
        {{20, 10, 20, 10}, {20, 10, 20, 10}, {457, 282, 543, 318}},  // 86 x 36 around (500, 300)
        {{10, 10, 10, 10}, {10, 10, 10, 10}, {414, 264, 586, 336}},
        {{30, 10, 20, 10}, {30, 10, 20, 10}, {472, 282, 529, 318}},  // 172 / 3 = 57
        {{10, 20, 10, 20}, {10, 10, 10, 10}, {414, 264, 586, 336}},  // reductions become 10/10
        {{0, 0, 5, 1}, {10, 10, 5, 1}, {414, 293, 586, 307}},
        {{-4, -8, 1, 1}, {-4, -8, 1, 1}, {328, 264, 672, 336}},  // a negative pair is taken as it comes
    };
    for (const Case& c : cases) {
        std::vector<int> zoom = c.zoom;
        RECT r = {};
        EXPECT_EQ(M_CalcRect(500, 300, zoom.data(), &r), 1);
        EXPECT_EQ(zoom, c.zoomAfter);
        EXPECT_EQ(Sides(r), c.sides) << c.zoom[0] << "/" << c.zoom[1];
    }
}

TEST(LensRect, RefusesWhatItCannotDivideBy) {
    int zeroY[4] = {20, 10, 0, 10}, zeroDen[4] = {20, 10, 20, 0}, fine[4] = {20, 10, 20, 10};
    RECT r = {1, 2, 3, 4};
    EXPECT_EQ(M_CalcRect(0, 0, zeroY, &r), 0);
    EXPECT_EQ(M_CalcRect(0, 0, zeroDen, &r), 0);
    EXPECT_EQ(M_CalcRect(0, 0, nullptr, &r), 0);
    EXPECT_EQ(M_CalcRect(0, 0, fine, nullptr), 0);
    EXPECT_EQ(Sides(r), (std::vector<int>{1, 2, 3, 4}));
}

TEST(LensRect, SizesOfAnyValueAreKeptAndUsed) {
    struct Case {
        UINT w, h;
        std::vector<int> sides;
    } cases[] = {
        {0, 0, {2, 2, -2, -2}},  // no room inside the frame: an inverted rectangle
        {100000, 100000, {-24998, -24998, 24998, 24998}},
        {0xFFFFFFFFu, 8, {2, 0, -2, 0}},  // a width read as -1
    };
    for (const Case& c : cases) {
        EXPECT_EQ(M_SetSizes(c.w, c.h), 1);
        EXPECT_EQ(M_GetWidth(), c.w);
        EXPECT_EQ(M_GetHeight(), c.h);
        int zoom[4] = {20, 10, 20, 10};
        RECT r = {};
        EXPECT_EQ(M_CalcRect(0, 0, zoom, &r), 1);
        EXPECT_EQ(Sides(r), c.sides) << c.w;
    }
    M_SetSizes(180, 80);
}

}  // namespace
