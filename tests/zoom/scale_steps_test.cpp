// The stepped zoom's tables and steps: the sequences a host sees when it
// steps again and again, the tables it may set, and ratios made scales.
#include "zoom/scale_steps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

using Scale = std::pair<int, int>;

// Every test leaves the library's tables as it found them.
class ZoomTables : public ::testing::Test {
protected:
    void SetUp() override { base_ = BZoomGetScaleSteps(in_, out_); }
    void TearDown() override { ASSERT_EQ(BZoomSetScaleSteps(base_, in_, out_), 1); }
    int base_ = 0, in_[11] = {}, out_[11] = {};
};

// Steps a scale n times in one mode, each step from the last result.
std::vector<Scale> Steps(Scale start, int mode, int n) {
    std::vector<Scale> seen;
    BZoomState s = {};
    s.mode = mode;
    for (int i = 0; i < n; ++i) {
        s.startScale[0] = start.first;
        s.startScale[1] = start.second;
        prism::StepScale(&s);
        EXPECT_EQ(s.scaleNumY, s.scaleNumX);  // a step makes the scale uniform
        EXPECT_EQ(s.scaleDenY, s.scaleDenX);
        start = {s.scaleNumX, s.scaleDenX};
        seen.push_back(start);
    }
    return seen;
}

TEST_F(ZoomTables, StepSequencesFromTheDefaultTables) {
    struct Case {
        Scale start;
        int mode;
        std::vector<Scale> want;
    } cases[] = {
        {{10, 10}, 18, {{20, 10}, {40, 10}, {60, 10}, {80, 10}, {80, 10}}},
        {{10, 10}, 19, {{10, 15}, {10, 30}, {10, 40}, {10, 50}, {10, 50}}},
        {{10, 30}, 18, {{10, 15}, {10, 10}, {20, 10}}},
        {{10, 50}, 34, {{10, 40}, {10, 30}}},  // the step without the mouse does the same
        {{25, 10}, 18, {{40, 10}}},            // between two steps: the next one, no further
        {{25, 10}, 19, {{20, 10}}},
        {{30, 20}, 18, {{20, 10}}},  // normalised to 15/10 first
        {{30, 20}, 19, {{10, 10}}},
        {{30, 20}, 20, {{30, 18}}},  // fine steps do not normalise
        {{10, 20}, 20, {{10, 18}, {10, 16}}},
        {{20, 10}, 21, {{18, 10}, {16, 10}}},
        {{10, 10}, 37, {{10, 12}, {10, 14}}},
        {{0, 7}, 18, {{20, 10}}},  // a 0 normalises to base / base
        {{10, 10}, 17, {{10, 10}}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Steps(c.start, c.mode, static_cast<int>(c.want.size())), c.want)
            << c.start.first << "/" << c.start.second << " mode " << c.mode;
}

TEST_F(ZoomTables, FineStepsUpStopAtTheLargestScale) {
    std::vector<int> nums;
    for (const Scale& s : Steps({10, 10}, 20, 40)) nums.push_back(s.first);
    const std::vector<int> want = {12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40,
                                   42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 63, 66, 69, 72, 75, 78, 81, 80, 80, 80};
    EXPECT_EQ(nums, want);
}

TEST_F(ZoomTables, ModesWithoutAStepCopyTheStartScale) {
    for (int mode : {0, 16, 22, 32, 38, -1}) {
        BZoomState s = {};
        s.mode = mode;
        const int start[4] = {30, 20, 7, 3};
        std::copy(start, start + 4, s.startScale);
        prism::StepScale(&s);
        EXPECT_EQ((std::vector<int>{s.scaleNumX, s.scaleDenX, s.scaleNumY, s.scaleDenY}),
                  (std::vector<int>{30, 20, 7, 3}))
            << "mode " << mode;
    }
}

TEST_F(ZoomTables, SettingTablesAcceptsOnlyWellFormedOnes) {
    const int good[11] = {3, 4, 8, 12};
    const int goodOut[11] = {2, 4, 9};
    struct Case {
        int base;
        std::vector<int> in, out;  // empty: a null table
        BOOL want;
    } cases[] = {
        {0, {}, {}, 0},
        {1001, {}, {}, 0},
        {-5, {}, {}, 0},
        {4, {0, 4}, {}, 0},                                 // no steps
        {4, {11, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}, {}, 0},  // too many
        {4, {2, 5, 8}, {}, 0},                              // first step not the base
        {4, {3, 4, 8, 8}, {}, 0},                           // not strictly rising
        {4, {}, {3, 4, 9, 6}, 0},                           // falling
        {4, {1, 4}, {1, 4}, 1},
        {1000, {}, {}, 1},  // null tables pass, even no longer starting at the base
    };
    for (const Case& c : cases) {
        ASSERT_EQ(BZoomSetScaleSteps(4, good, goodOut), 1);
        std::vector<int> in(c.in), out(c.out);
        in.resize(c.in.empty() ? 0 : 11);
        out.resize(c.out.empty() ? 0 : 11);
        EXPECT_EQ(BZoomSetScaleSteps(c.base, in.empty() ? nullptr : in.data(), out.empty() ? nullptr : out.data()), c.want)
            << "base " << c.base;
        int gotIn[11], gotOut[11];
        const int base = BZoomGetScaleSteps(gotIn, gotOut);
        EXPECT_EQ(base, c.want ? c.base : 4);
        const std::vector<int> wantIn = c.want && !in.empty() ? in : std::vector<int>(good, good + 11);
        const std::vector<int> wantOut = c.want && !out.empty() ? out : std::vector<int>(goodOut, goodOut + 11);
        EXPECT_EQ(std::vector<int>(gotIn, gotIn + 11), wantIn) << "base " << c.base;
        EXPECT_EQ(std::vector<int>(gotOut, gotOut + 11), wantOut) << "base " << c.base;
    }
    EXPECT_EQ(BZoomGetScaleSteps(nullptr, nullptr), 1000);
}

TEST_F(ZoomTables, StepsFollowTablesTheHostSet) {
    const int in[11] = {3, 4, 8, 12}, out[11] = {2, 4, 9};
    ASSERT_EQ(BZoomSetScaleSteps(4, in, out), 1);
    EXPECT_EQ(Steps({4, 4}, 18, 3), (std::vector<Scale>{{8, 4}, {12, 4}, {12, 4}}));
    EXPECT_EQ(Steps({4, 4}, 19, 2), (std::vector<Scale>{{4, 9}, {4, 9}}));
    int scale[4];
    prism::RatioToScale(100.0, scale);  // limited to 12 / 4
    EXPECT_EQ(scale[0], 12);
    prism::RatioToScale(0.0, scale);  // limited to 4 / 9
    EXPECT_EQ(scale[1], 9);
    // Steps of absurd size do not overflow: the fine step is held at the
    // largest number.
    const int huge[11] = {2, 4, 2147483647};
    ASSERT_EQ(BZoomSetScaleSteps(4, huge, nullptr), 1);
    EXPECT_EQ(Steps({2147000000, 4}, 20, 2), (std::vector<Scale>{{2147483647, 4}, {2147483647, 4}}));
}

TEST_F(ZoomTables, RatiosBecomeScalesWithinTheTables) {
    struct Case {
        double f;
        int num, den;
    } cases[] = {
        {1.0, 10, 10},  {2.0, 20, 10},   {1.26, 13, 10}, {8.0, 80, 10}, {100.0, 80, 10}, {INFINITY, 80, 10},
        {NAN, 80, 10},  {0.5, 10, 20},   {0.3, 10, 33},  {0.2, 10, 50}, {0.01, 10, 50},  {-3.0, 10, 50},
    };
    for (const Case& c : cases) {
        int scale[4] = {};
        prism::RatioToScale(c.f, scale);
        EXPECT_EQ((std::vector<int>(scale, scale + 4)), (std::vector<int>{c.num, c.den, c.num, c.den})) << c.f;
    }
}

TEST(BandSize, SixPixelsOnBothAxesMakeABand) {
    const RECT band = {100, 100, 100, 100};
    struct Case {
        POINT p;
        bool want;
    } cases[] = {{{106, 106}, true}, {{94, 94}, true}, {{105, 200}, false}, {{200, 105}, false}, {{100, 100}, false}};
    for (const Case& c : cases) EXPECT_EQ(prism::BandIsLargeEnough(c.p, band), c.want) << c.p.x << "," << c.p.y;
}

}  // namespace
