// The stepped zoom's tables and steps: the sequences a host sees stepping
// again and again, the tables it may set, and ratios made scales.
#include "zoom/scale_steps.h"

#include <gtest/gtest.h>

#include <cmath>
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
    struct Case {
        int num, den, mode;
        bool dens;
        V want;
    } cases[] = {
        {10, 10, 18, false, {20, 40, 60, 80, 80}},
        {10, 10, 19, true, {15, 30, 40, 50, 50}},
        {10, 30, 18, true, {15, 10, 10}},  // then the numerator moves: 20/10
        {10, 50, 34, true, {40, 30}},      // without the mouse alike
        {25, 10, 18, false, {40}},         // between two steps: the next, no further
        {25, 10, 19, false, {20}},
        {30, 20, 18, false, {20}},  // normalised to 15/10 first
        {30, 20, 19, false, {10}},
        {30, 20, 20, true, {18}},  // fine steps do not normalise
        {20, 10, 21, false, {18, 16}},
        {10, 10, 37, true, {12, 14}},
        {0, 7, 18, false, {20}},  // a 0 normalises to base / base
        {10, 10, 20, false, {12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40,
                             42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 63, 66, 69, 72, 75, 78, 81, 80, 80}},
    };
    for (const Case& c : cases)
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
    } cases[] = {{0, {}, 0},         {1001, {}, 0},      {4, {0, 4}, 0},          {4, {2, 5, 8}, 0},
                 {4, {3, 4, 8, 8}, 0}, {4, {2, 4, 3}, 0}, {4, {11, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}, 0},
                 {4, {1, 4}, 1},     {1000, {}, 1}};  // a null table stays, even off the new base
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

}  // namespace
