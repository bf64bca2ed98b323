// Editing an existing path: ending it on a block or another wire, aligning, editing, deleting
// and shifting segments, and what a deleted block does to a connection.

#include "connection_test_util.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace vde;
using namespace vde::test;

namespace {

using Path = std::vector<TPoint>;
using Strings = QStringList;

class Editing : public ::testing::Test {
protected:
    TDiagObjectList list{nullptr};
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
};

} // namespace

// --- ending on another wire

TEST_F(Editing, EndingDownwardsOnAHorizontalSegmentAppendsTheCrossingAndDrawsTheDot) {
    Wire(cl, {{0, 0}, {0, 100}, {200, 100}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    w->EndConnection(nullptr, false);
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 95}, {50, 100}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(1, 2));
    EXPECT_EQ(w->FDest.data(), nullptr);
    EXPECT_EQ(rc.rec.Strings(), (Strings{"MoveTo 50,20", "Line 50,20 50,95 w2 c$000000",
                                         "Line 50,95 50,100 w2 c$000000",
                                         "Ellipse 46,96,54,104 w2 c$000000 b$000000"}));
}

TEST_F(Editing, EndingSidewaysOnAVerticalSegmentKeepsTheRow) {
    Wire(cl, {{100, 0}, {100, 200}});
    auto* w = Wire(cl, {{10, 50}, {92, 50}});
    w->EndConnection(nullptr, false);
    EXPECT_EQ(w->FPoints, (Path{{10, 50}, {92, 50}, {100, 50}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(1, 1));
}

TEST_F(Editing, EndingOnTheLastPointMovesItOntoTheSegment) {
    Wire(cl, {{0, 100}, {200, 100}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    w->EndConnection(nullptr, true);
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 100}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(1, 1));
}

TEST_F(Editing, EndingWithNoSegmentWithinTenPixelsChangesNothing) {
    Wire(cl, {{0, 100}, {200, 100}});
    auto* w = Wire(cl, {{50, 20}, {50, 89}});
    w->EndConnection(nullptr, false);
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 89}}));
    EXPECT_TRUE(w->FDstCrossInfo.IsZero());
    EXPECT_TRUE(rc.rec.Ops.empty());
    // A diagonal last segment does not look for a target.
    auto* diag = Wire(cl, {{40, 80}, {45, 95}});
    diag->EndConnection(nullptr, false);
    EXPECT_EQ(diag->FPoints.size(), 2u);
    // Nor does a path of one point.
    auto* one = Wire(cl, {{50, 95}});
    one->EndConnection(nullptr, false);
    EXPECT_EQ(one->FPoints.size(), 1u);
}

TEST_F(Editing, EndWithSegmentStretchesTheLastSegmentOntoTheChosenOne) {
    Wire(cl, {{0, 100}, {200, 100}});
    Wire(cl, {{0, 140}, {200, 140}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    w->EndConnectionWithSegment(LR(2, 1)); // the farther one, chosen by the caller
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 140}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(2, 1));
    EXPECT_EQ(rc.rec.OfKind(opEllipse).size(), 1u);
}

TEST_F(Editing, EndWithSegmentOnAWireThatAlreadyEndsOnAWireChangesNothing) {
    Wire(cl, {{0, 100}, {200, 100}});
    Wire(cl, {{0, 140}, {200, 140}});
    auto* w = Wire(cl, {{50, 20}, {50, 100}});
    w->FDstCrossInfo = LR(1, 1);
    w->EndConnectionWithSegment(LR(2, 1));
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 100}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(1, 1));
    EXPECT_TRUE(rc.rec.Ops.empty());
}

TEST_F(Editing, EndWithSegmentNeedsAnAddressAStraightLastSegmentAndACrossing) {
    Wire(cl, {{0, 100}, {200, 100}});
    Wire(cl, {{300, 0}, {300, 200}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    w->EndConnectionWithSegment(LongRec{});
    EXPECT_EQ(w->FPoints.back(), (TPoint{50, 95}));
    // A vertical wire cannot cross a vertical segment.
    w->EndConnectionWithSegment(LR(2, 1));
    EXPECT_EQ(w->FPoints.back(), (TPoint{50, 95}));
    EXPECT_TRUE(w->FDstCrossInfo.IsZero());
    auto* diag = Wire(cl, {{40, 80}, {45, 95}});
    diag->EndConnectionWithSegment(LR(1, 1));
    EXPECT_EQ(diag->FPoints.back(), (TPoint{45, 95}));
    EXPECT_TRUE(rc.rec.Ops.empty());
}

TEST_F(Editing, FindCrossPointKeepsOneCoordinate) {
    auto* t = Wire(cl, {{0, 0}, {100, 50}});
    TPoint p{40, 7};
    EXPECT_TRUE(t->FindCrossPoint(0, p, 1));
    EXPECT_EQ(p, (TPoint{40, 20}));
    p = {3, 30};
    EXPECT_TRUE(t->FindCrossPoint(0, p, 2));
    EXPECT_EQ(p, (TPoint{60, 30}));
    auto* v = Wire(cl, {{10, 0}, {10, 100}});
    p = {40, 7};
    EXPECT_FALSE(v->FindCrossPoint(0, p, 1));
    EXPECT_EQ(p, (TPoint{40, -1})) << "the point changes even when there is no crossing";
    auto* empty = Wire(cl, {});
    p = {1, 1};
    EXPECT_FALSE(empty->FindCrossPoint(0, p, 1));
    EXPECT_EQ(p, (TPoint{1, 1}));
    // A crossing at a negative coordinate does not count.
    auto* h = Wire(cl, {{-50, -5}, {50, -5}});
    p = {0, 3};
    EXPECT_FALSE(h->FindCrossPoint(0, p, 1));
}

TEST_F(Editing, LookForBestSegmentReportsTheDirectionAndTheTarget) {
    Wire(cl, {{0, 100}, {200, 100}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    LongRec lr = LR(9, 9);
    EXPECT_EQ(w->LookForBestSegment(lr, false), 1);
    EXPECT_TRUE(lr.IsZero());
    EXPECT_EQ(w->LookForBestSegment(lr, true), 1);
    EXPECT_EQ(lr, LR(1, 1));
    auto* diag = Wire(cl, {{40, 80}, {45, 95}});
    lr = LR(9, 9);
    EXPECT_EQ(diag->LookForBestSegment(lr, true), 0);
    EXPECT_TRUE(lr.IsZero());
}

// --- ending on a block

TEST_F(Editing, EndingTwiceOnTheSameBlockOnlyMovesTheLastPoint) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    b->FSelMarkerIndex = -1;
    c->EndConnection(b, false);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}, MarkerAt(b, -1)}));
    EXPECT_EQ(c->FDest.data(), b);
    EXPECT_EQ(c->FDstConIdx, -1);
    EXPECT_EQ(c->FDstKey, b->FObjKey);
    EXPECT_FALSE(rc.rec.Ops.empty());
    b->FSelMarkerIndex = -2;
    c->EndConnection(b, false);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}, MarkerAt(b, -2)}));
    EXPECT_EQ(c->FDstConIdx, -1) << "re-ending on the same block keeps its marker index";
    EXPECT_EQ(c->FDstKey, b->FObjKey);
}

TEST_F(Editing, EndingOnABlockByTheLastPointKeepsTheEnds) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    b->FSelMarkerIndex = -2;
    c->EndConnection(b, true);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, MarkerAt(b, -2)}));
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_EQ(c->FDstConIdx, 0);
    EXPECT_EQ(c->FDstKey, 0u);
}

TEST_F(Editing, EndingOnABlockWithoutASelectedMarkerChangesNothing) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    rc.rec.Clear();
    c->EndConnection(b, false);
    EXPECT_EQ(c->FPoints.size(), 2u);
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_TRUE(rc.rec.Ops.empty());
}

TEST_F(Editing, EndingOnAnotherBlockAppendsAndMovesTheEnd) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    TDiagObject* d = AndGate(list, 300, 200);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    b->FSelMarkerIndex = -1;
    d->FSelMarkerIndex = -2;
    c->EndConnection(b, false);
    c->EndConnection(d, false);
    EXPECT_EQ(c->FPoints.size(), 4u);
    EXPECT_EQ(c->FPoints.back(), MarkerAt(d, -2));
    EXPECT_EQ(c->FDest.data(), d);
    EXPECT_EQ(c->FDstConIdx, -2);
    EXPECT_EQ(c->FDstKey, d->FObjKey);
}

// --- aligning

TEST_F(Editing, AlignWithABlockTakesTheSelectedMarkersRow) {
    TDiagObject* a = AndGate(list, 20, 40);
    a->FSelMarkerIndex = 1;
    auto* w = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    w->AlignSegmentByDiagObject(1, a);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}, {50, 88}, {100, 40}}));
    EXPECT_FALSE(rc.rec.Ops.empty());
}

TEST_F(Editing, AlignWithoutABlockOnlyStraightensTheEndSegments) {
    auto* w = Wire(cl, {{0, 10}, {50, 0}, {50, 40}, {100, 45}});
    w->AlignSegmentByDiagObject(1, nullptr);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 0}, {50, 40}, {100, 45}}));
    EXPECT_TRUE(rc.rec.Ops.empty()) << "a middle segment without a block is left alone";
    w->AlignSegmentByDiagObject(0, nullptr);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 40}, {100, 45}}));
    // The last segment takes the last point's row into the last point itself: no change.
    w->AlignSegmentByDiagObject(2, nullptr);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 40}, {100, 45}}));
    w->AlignSegmentByDiagObject(3, nullptr);
    w->AlignSegmentByDiagObject(-1, nullptr);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 40}, {100, 45}}));
}

TEST_F(Editing, AlignKeepsAnEndThatSitsOnADestinationMarker) {
    TDiagObject* b = AndGate(list, 200, 60);
    auto* w = Wire(cl, {{0, 10}, {50, 10}, {50, 40}, {100, 45}});
    w->FDest = b;
    w->FDstConIdx = -1;
    w->AlignSegmentByDiagObject(2, nullptr);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 45}, {100, 45}}));
    b->FSelMarkerIndex = -2;
    w->AlignSegmentByDiagObject(2, b);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 131}, {100, 45}}));
}

TEST_F(Editing, AlignWithABlockWithoutAMarkerFallsBackToTheEndRule) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* w = Wire(cl, {{0, 10}, {50, 0}, {50, 40}});
    w->AlignSegmentByDiagObject(0, a);
    EXPECT_EQ(w->FPoints, (Path{{0, 10}, {50, 10}, {50, 40}}));
}

// --- editing a segment

TEST_F(Editing, EditSegmentReadsSizeAndAngle) {
    auto* w = Wire(cl, {{0, 0}, {0, -30}, {10, -20}, {-10, -20}});
    int size = 0, angle = 0;
    w->EditSegment(0, size, angle, true);
    EXPECT_EQ(size, 30);
    EXPECT_EQ(angle, -2);
    w->EditSegment(1, size, angle, true);
    EXPECT_EQ(size, 14);
    EXPECT_EQ(angle, 1);
    w->EditSegment(2, size, angle, true);
    EXPECT_EQ(size, 20);
    EXPECT_EQ(angle, 4);
    EXPECT_TRUE(rc.rec.Ops.empty()) << "reading does not paint";
    size = 77;
    angle = 5;
    w->EditSegment(3, size, angle, true);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(angle, 5);
}

TEST_F(Editing, EditSegmentRoundsTheDegreesHalfToEven) {
    // Single-precision degrees of exactly 44.5 and 134.5: half to even gives 44 and 134, so
    // the angles are 0 and 2 (half away from zero would give 1 and 3).
    const auto degrees = [](int dx, int dy) {
        return std::atan2(float(dy), float(dx)) * (180.0f / std::numbers::pi_v<float>);
    };
    ASSERT_EQ(degrees(2254, 2215), 44.5f);
    ASSERT_EQ(degrees(-1931, 1965), 134.5f);
    auto* w = Wire(cl, {{0, 0}, {2254, 2215}});
    int size = 0, angle = 0;
    w->EditSegment(0, size, angle, true);
    EXPECT_EQ(angle, 0);
    EXPECT_EQ(size, 3160);
    w->FPoints = {{0, 0}, {-1931, 1965}};
    w->EditSegment(0, size, angle, true);
    EXPECT_EQ(angle, 2);
    EXPECT_EQ(size, 2755);
}

TEST_F(Editing, EditSegmentWriteMovesTheEndOfAMiddleSegment) {
    auto* w = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    int size = 20, angle = 2;
    w->EditSegment(1, size, angle, false);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}, {50, 20}, {100, 40}}));
    EXPECT_FALSE(rc.rec.Ops.empty());
    size = 30;
    angle = 4;
    w->EditSegment(0, size, angle, false);
    EXPECT_EQ(w->FPoints[1], (TPoint{-30, 0}));
    size = 10;
    angle = 1;
    w->EditSegment(0, size, angle, false);
    EXPECT_EQ(w->FPoints[1], (TPoint{7, 7}));
    size = 10;
    angle = -2;
    w->EditSegment(0, size, angle, false);
    EXPECT_EQ(w->FPoints[1], (TPoint{0, -10}));
    // The last segment without a fixed end moves its end.
    size = 15;
    angle = 0;
    w->EditSegment(2, size, angle, false);
    EXPECT_EQ(w->FPoints[3], (TPoint{65, 20}));
}

TEST_F(Editing, EditSegmentWriteOnAFixedLastSegmentMovesItsStart) {
    TDiagObject* b = AndGate(list, 200, 60);
    auto* w = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    w->FDest = b;
    int size = 20, angle = 0;
    w->EditSegment(2, size, angle, false);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}, {80, 40}, {100, 40}}));
    auto* x = Wire(cl, {{0, 0}, {50, 0}, {50, 40}});
    x->FDstCrossInfo = LR(1, 1);
    size = 10;
    angle = 2;
    x->EditSegment(1, size, angle, false);
    EXPECT_EQ(x->FPoints, (Path{{0, 0}, {50, 30}, {50, 40}}));
}

TEST_F(Editing, EditSegmentIgnoresAnIndexOutOfRange) {
    auto* w = Wire(cl, {{0, 0}, {50, 0}});
    int size = 20, angle = 2;
    w->EditSegment(1, size, angle, false);
    w->EditSegment(-1, size, angle, false);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}}));
    EXPECT_TRUE(rc.rec.Ops.empty());
}

// --- deleting a segment

TEST_F(Editing, DeletingTheOnlySegmentEmptiesThePathAndClearsBothEnds) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* w = Wire(cl, {{0, 0}, {50, 0}});
    w->FSource = a;
    w->FSrcConIdx = 1;
    w->FSrcCrossInfo = LR(3, 4);
    w->FDest = b;
    w->FDstConIdx = -1;
    w->FDstCrossInfo = LR(5, 6);
    EXPECT_EQ(w->DeleteSegment(0), 0);
    EXPECT_TRUE(w->FPoints.empty());
    EXPECT_EQ(w->FSource.data(), nullptr);
    EXPECT_EQ(w->FSrcConIdx, 0);
    EXPECT_TRUE(w->FSrcCrossInfo.IsZero());
    EXPECT_EQ(w->FDest.data(), nullptr);
    EXPECT_EQ(w->FDstConIdx, 0);
    EXPECT_TRUE(w->FDstCrossInfo.IsZero());
}

TEST_F(Editing, DeletingTheLastSegmentDetachesTheWireFromItsBlock) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* w = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    w->FSource = a;
    w->FSrcConIdx = 1;
    w->FDest = b;
    w->FDstConIdx = -1;
    w->FDstCrossInfo = LR(1, 1);
    EXPECT_EQ(w->DeleteSegment(2), 1);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}, {50, 40}}));
    EXPECT_EQ(w->FDest.data(), nullptr);
    EXPECT_EQ(w->FDstConIdx, 0);
    EXPECT_TRUE(w->FDstCrossInfo.IsZero());
    EXPECT_EQ(w->FSource.data(), a);
    EXPECT_EQ(w->FSrcConIdx, 1);
    EXPECT_FALSE(rc.rec.Ops.empty());
}

TEST_F(Editing, DeletingAMiddleSegmentMergesItIntoTheNext) {
    TDiagObject* b = AndGate(list, 200, 60);
    auto* w = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    w->FDest = b;
    EXPECT_EQ(w->DeleteSegment(1), 0);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {50, 0}, {100, 40}}));
    EXPECT_EQ(w->FDest.data(), b);
    EXPECT_EQ(w->DeleteSegment(0), 0);
    EXPECT_EQ(w->FPoints, (Path{{0, 0}, {100, 40}}));
    EXPECT_EQ(w->DeleteSegment(1), -1);
    EXPECT_EQ(w->DeleteSegment(-1), -1);
    EXPECT_EQ(w->FPoints.size(), 2u);
}

// --- a block moved or deleted

TEST_F(Editing, ShiftByDeltaMovesTheEndStubsOfTheMovedBlock) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    const Path r = c->FPoints;
    ASSERT_EQ(r.size(), 6u);
    rc.rec.Clear();
    c->ShiftByDelta(a, {5, 7});
    EXPECT_EQ(c->FPoints,
              (Path{{r[0].X + 5, r[0].Y + 7}, {r[1].X + 5, r[1].Y + 7}, r[2], r[3], r[4], r[5]}));
    c->FPoints = r;
    c->ShiftByDelta(b, {-3, 2});
    EXPECT_EQ(c->FPoints,
              (Path{r[0], r[1], r[2], r[3], {r[4].X - 3, r[4].Y + 2}, {r[5].X - 3, r[5].Y + 2}}));
    c->FPoints = r;
    QObject other;
    c->ShiftByDelta(&other, {9, 9});
    EXPECT_EQ(c->FPoints, r);
    EXPECT_TRUE(rc.rec.Ops.empty()) << "shifting leaves drawing to the caller";
}

TEST_F(Editing, ShiftByDeltaMovesBothEndsOfABlockThatIsBothEnds) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    c->OnDeleteDiagObject(a);
    ASSERT_EQ(c->FSource.data(), b);
    ASSERT_EQ(c->FDest.data(), b);
    const Path r = c->FPoints;
    c->ShiftByDelta(b, {4, -6});
    EXPECT_EQ(c->FPoints, (Path{{r[0].X + 4, r[0].Y - 6},
                                {r[1].X + 4, r[1].Y - 6},
                                r[2],
                                r[3],
                                {r[4].X + 4, r[4].Y - 6},
                                {r[5].X + 4, r[5].Y - 6}}));
}

TEST_F(Editing, ShiftByDeltaNeedsASegment) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* w = Wire(cl, {{3, 3}});
    w->FSource = a;
    w->ShiftByDelta(a, {1, 1});
    EXPECT_EQ(w->FPoints, (Path{{3, 3}}));
}

TEST_F(Editing, DeletingTheSourceOfAWireWithADestinationReversesIt) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    c->FSrcKey = 11;
    c->FDstKey = 22;
    c->FSrcCrossInfo = LR(1, 2);
    Path r = c->FPoints;
    rc.rec.Clear();
    c->OnDeleteDiagObject(a);
    std::reverse(r.begin(), r.end());
    EXPECT_EQ(c->FPoints, r);
    EXPECT_EQ(c->FSource.data(), b);
    EXPECT_EQ(c->FSrcConIdx, -1);
    EXPECT_EQ(c->FDest.data(), b);
    EXPECT_EQ(c->FDstConIdx, -1);
    EXPECT_EQ(c->FSrcKey, 11u);
    EXPECT_EQ(c->FDstKey, 22u);
    EXPECT_EQ(c->FSrcCrossInfo, LR(1, 2));
    EXPECT_TRUE(rc.rec.Ops.empty());
}

TEST_F(Editing, DeletingTheSourceOfAWireWithoutADestinationEmptiesIt) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    c->OnDeleteDiagObject(a);
    EXPECT_TRUE(c->FPoints.empty());
    EXPECT_EQ(c->FSource.data(), nullptr);
    EXPECT_EQ(c->FSrcConIdx, 0);
}

TEST_F(Editing, DeletingTheDestinationDetachesTheEndAndKeepsThePath) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    TDiagObject* other = AndGate(list, 300, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    const Path r = c->FPoints;
    c->OnDeleteDiagObject(other);
    EXPECT_EQ(c->FDest.data(), b);
    c->OnDeleteDiagObject(b);
    EXPECT_EQ(c->FPoints, r);
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_EQ(c->FDstConIdx, 0);
    EXPECT_EQ(c->FSource.data(), a);
    EXPECT_EQ(c->FSrcConIdx, 1);
}
