// The lens size and the source rectangle a lens shows at a zoom.
#include "prism32.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using V = std::vector<int>;

TEST(LensRect, SourceRectangleInsideTheFrame) {
    ASSERT_EQ(V({static_cast<int>(M_GetWidth()), static_cast<int>(M_GetHeight())}), V({180, 80}));
    const struct {
        UINT w, h;
        V zoom, zoomAfter, sides;
    } cases[] = {
        {180, 80, {20, 10, 20, 10}, {20, 10, 20, 10}, {457, 282, 543, 318}},  // 86 x 36 around (500, 300)
        {180, 80, {30, 10, 20, 10}, {30, 10, 20, 10}, {472, 282, 529, 318}},
        {180, 80, {10, 20, 10, 20}, {10, 10, 10, 10}, {414, 264, 586, 336}},  // reductions become 10/10
        {180, 80, {0, 0, 5, 1}, {10, 10, 5, 1}, {414, 293, 586, 307}},
        {180, 80, {-4, -8, 1, 1}, {-4, -8, 1, 1}, {328, 264, 672, 336}},
        {0, 0, {20, 10, 20, 10}, {20, 10, 20, 10}, {502, 302, 498, 298}},  // no room inside the frame
        {100000, 100000, {20, 10, 20, 10}, {20, 10, 20, 10}, {-24498, -24698, 25498, 25298}},
        {0xFFFFFFFFu, 8, {20, 10, 20, 10}, {20, 10, 20, 10}, {502, 300, 498, 300}},  // a width read as -1
    };
    for (const auto& c : cases) {
        EXPECT_EQ(M_SetSizes(c.w, c.h), 1);
        EXPECT_EQ(M_GetWidth(), c.w);
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
