#include "velDiagEdit/geometry/geometry.h"

#include <cfloat>
#include <gtest/gtest.h>

using namespace vde;

namespace {
// Two segments, both 5 pixels from (5, 5): (0,0)-(10,0) and (10,0)-(10,10).
const TPoint kCorner[] = {{0, 0}, {10, 0}, {10, 10}};
} // namespace

TEST(IndexOfMinDistanceQuick, EqualDistancesLowerIndexWins) {
    double d = -1;
    EXPECT_EQ(IndexOfMinDistanceQuick(kCorner, 2, {5, 5}, &d), 0);
    EXPECT_EQ(d, 5.0);
}

TEST(IndexOfMinDistance, EqualDistancesHigherIndexWins) {
    double d = -1;
    EXPECT_EQ(IndexOfMinDistance(kCorner, 2, {5, 5}, &d, 0), 1);
    EXPECT_DOUBLE_EQ(d, 5.0);
    EXPECT_EQ(IndexOfMinDistance(kCorner, 2, {5, 5}, &d, 4), 1);
}

TEST(IndexOfMinDistanceQuick, PointLevelWithUpperEndCountsOneBeyondDoesNot) {
    const TPoint vertical[] = {{10, 20}, {10, 40}};
    double d = 0;
    EXPECT_EQ(IndexOfMinDistanceQuick(vertical, 1, {4, 20}, &d), 0);
    EXPECT_EQ(d, 6.0);
    EXPECT_EQ(IndexOfMinDistanceQuick(vertical, 1, {4, 19}, &d), -1);
    EXPECT_EQ(d, 2147483647.0);
}

TEST(IndexOfMinDistanceQuick, ZeroLengthSegmentNeverQualifies) {
    const TPoint pts[] = {{3, 3}, {3, 3}};
    EXPECT_EQ(IndexOfMinDistanceQuick(pts, 1, {3, 3}, nullptr), -1);
}

TEST(IndexOfMinDistanceQuick, VerticalTestComesFirst) {
    // A zero-height vertical run is taken as vertical: X equal, Y signs -1 vs +1 needed.
    const TPoint pts[] = {{0, 0}, {0, 10}, {20, 10}};
    double d = 0;
    EXPECT_EQ(IndexOfMinDistanceQuick(pts, 2, {3, 5}, &d), 0);
    EXPECT_EQ(d, 3.0);
}

TEST(MinDistance, SinglePointGivesMinusOneAndLeavesDist) {
    const TPoint one[] = {{1, 1}};
    double d = 123.0;
    EXPECT_EQ(IndexOfMinDistanceQuick(one, 0, {0, 0}, &d), -1);
    EXPECT_EQ(IndexOfMinDistance(one, 0, {0, 0}, &d, 0), -1);
    EXPECT_EQ(d, 123.0);
}

TEST(IndexOfMinDistance, DistanceIsToTheInfiniteLine) {
    const TPoint seg[] = {{0, 0}, {10, 0}};
    double d = -1;
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {50, 0}, &d, 0), 0);
    EXPECT_EQ(d, 0.0);
    // Mode 1 keeps the far-off segment out.
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {50, 0}, &d, 1), -1);
    EXPECT_EQ(d, DBL_MAX);
}

TEST(IndexOfMinDistance, ModesFilterByRange) {
    const TPoint seg[] = {{0, 0}, {10, 10}};
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {5, 20}, nullptr, 1), 0);
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {5, 20}, nullptr, 2), -1);
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {20, 5}, nullptr, 2), 0);
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {20, 5}, nullptr, 3), -1);
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {20, 5}, nullptr, 4), 0);
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {20, 5}, nullptr, -1), 0);
    // bounds are inclusive
    EXPECT_EQ(IndexOfMinDistance(seg, 1, {10, 0}, nullptr, 3), 0);
}

TEST(IndexOfMinDistance, ZeroLengthSegmentHasLargestDistance) {
    const TPoint pts[] = {{3, 3}, {3, 3}};
    double d = 0;
    EXPECT_EQ(IndexOfMinDistance(pts, 1, {3, 3}, &d, 0), -1);
    EXPECT_EQ(d, DBL_MAX);
}

TEST(IndexOfMinDistance, PointOnTheSegmentIsDistanceZero) {
    const TPoint pts[] = {{0, 0}, {7, 3}};
    double d = -1;
    EXPECT_EQ(IndexOfMinDistance(pts, 1, {14, 6}, &d, 0), 0);
    EXPECT_NEAR(d, 0.0, 1e-6);
}

TEST(IndexOfMinDistance, HeightOntoSlopedLine) {
    const TPoint pts[] = {{0, 0}, {10, 10}};
    double d = 0;
    IndexOfMinDistance(pts, 1, {10, 0}, &d, 0);
    EXPECT_NEAR(d, std::sqrt(50.0), 1e-12);
}

TEST(QuickCrossCalc, ModeOneOnVerticalSegment) {
    const TIntSegment v{{{5, 0}, {5, 10}}};
    EXPECT_EQ(QuickCrossCalc(v, {7, 3}, 1), (TPoint{7, -1}));
}

TEST(QuickCrossCalc, ModeZeroGivesMinusOnes) {
    const TIntSegment s{{{0, 0}, {10, 10}}};
    EXPECT_EQ(QuickCrossCalc(s, {7, 3}, 0), (TPoint{-1, -1}));
    EXPECT_EQ(QuickCrossCalc(s, {7, 3}, -5), (TPoint{-1, -1}));
}

TEST(QuickCrossCalc, KeepsOneCoordinate) {
    const TIntSegment s{{{0, 0}, {10, 5}}};
    EXPECT_EQ(QuickCrossCalc(s, {4, 99}, 1), (TPoint{4, 2}));
    EXPECT_EQ(QuickCrossCalc(s, {99, 3}, 2), (TPoint{6, 3}));
    EXPECT_EQ(QuickCrossCalc(s, {99, 3}, 3), (TPoint{99, 3}));
}

TEST(QuickCrossCalc, ModeTwoOnHorizontalSegment) {
    const TIntSegment h{{{0, 4}, {10, 4}}};
    EXPECT_EQ(QuickCrossCalc(h, {3, 9}, 2), (TPoint{-1, 9}));
    EXPECT_EQ(QuickCrossCalc(h, {3, 9}, 1), (TPoint{3, 4}));
}

TEST(QuickCrossCalc, RoundsHalfToEven) {
    // Y = 0 + 1 * (x / 2): x = 1 gives 0.5 -> 0, x = 3 gives 1.5 -> 2, x = 5 gives 2.5 -> 2
    const TIntSegment s{{{0, 0}, {2, 1}}};
    EXPECT_EQ(QuickCrossCalc(s, {1, 0}, 1).Y, 0);
    EXPECT_EQ(QuickCrossCalc(s, {3, 0}, 1).Y, 2);
    EXPECT_EQ(QuickCrossCalc(s, {5, 0}, 1).Y, 2);
}

TEST(TriangleSides, SideIOppositeVertexI) {
    const TSides s = TriangleSides({{{0, 0}, {3, 0}, {0, 4}}});
    EXPECT_DOUBLE_EQ(s[0], 5.0);
    EXPECT_DOUBLE_EQ(s[1], 4.0);
    EXPECT_DOUBLE_EQ(s[2], 3.0);
}
