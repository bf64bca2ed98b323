// Routing and building of a connection's path: MakePath, AddSegment, NextPoint,
// GetLastDirection, AdjustPath, the constructors of the kinds.

#include "connection_test_util.h"

#include "velDiagEdit/platform/streams.h"

#include <random>

using namespace vde;
using namespace vde::test;

namespace {

using Path = std::vector<TPoint>;

class Routing : public ::testing::Test {
protected:
    TDiagObjectList list{nullptr};
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
};

} // namespace

TEST_F(Routing, AndGateMarkersStandWhereTheBlocksPutThem) {
    // The routes below are computed from these marker positions.
    TDiagObject* a = AndGate(list, 20, 40);
    EXPECT_EQ(MarkerAt(a, 1), (TPoint{78, 88}));
    EXPECT_EQ(MarkerAt(a, -1), (TPoint{20, 65}));
    EXPECT_EQ(MarkerAt(a, -2), (TPoint{20, 111}));
    TPoint p;
    ASSERT_TRUE(a->GetConPoint(1, p, false));
    EXPECT_EQ(p, MarkerAt(a, 1));
}

TEST_F(Routing, FacingBlocksGetStubsAndOneVerticalRun) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    const TPoint out = MarkerAt(a, 1), in = MarkerAt(b, -1);
    // One pixel back through each marker: left of the output, right of the input.
    const TPoint p1{out.X - 1, out.Y}, p2{in.X + 1, in.Y};
    EXPECT_EQ(p1, (TPoint{77, 88}));
    EXPECT_EQ(p2, (TPoint{201, 85}));
    const Path expected{
        p1, {p1.X + 10, p1.Y}, {p1.X + 10, p2.Y}, {p1.X + 10, p2.Y}, {p2.X - 10, p2.Y}, p2};
    EXPECT_EQ(c->FPoints, expected);
    EXPECT_EQ(c->P1, p1);
    EXPECT_EQ(c->P2, p2);
    EXPECT_FALSE(c->GetIsEditable());
    EXPECT_TRUE(rc.rec.Ops.empty()) << "routing does not paint";
}

TEST_F(Routing, DestinationLeftOfSourceRoutesFromTheDestination) {
    TDiagObject* s = AndGate(list, 200, 60);
    TDiagObject* d = AndGate(list, 20, 40);
    auto* c = new TDiagObjConnection(&cl, s, -1, d, 1, {10, 10}, 0, 0, 0);
    const TPoint in = MarkerAt(s, -1), out = MarkerAt(d, 1);
    const TPoint first{out.X - 1, out.Y}, last{in.X + 1, in.Y};
    const Path expected{first,
                        {first.X + 10, first.Y},
                        {first.X + 10, last.Y},
                        {first.X + 10, last.Y},
                        {last.X - 10, last.Y},
                        last};
    EXPECT_EQ(c->FPoints, expected);
    // Only the ends were swapped; the blocks stay where they were given.
    EXPECT_EQ(c->FSource.data(), s);
    EXPECT_EQ(c->FDest.data(), d);
    EXPECT_EQ(c->FSrcConIdx, -1);
    EXPECT_EQ(c->FDstConIdx, 1);
    EXPECT_EQ(c->P1, first);
    EXPECT_EQ(c->P2, last);
}

TEST_F(Routing, InputLeftOfOutputDetoursAboveTheSourceBlock) {
    TDiagObject* s = AndGate(list, 100, 50);
    TDiagObject* d = AndGate(list, 90, 200);
    auto* c = new TDiagObjConnection(&cl, s, -1, d, 1, {10, 6}, 0, 0, 0);
    const TPoint p1{MarkerAt(s, -1).X + 1, MarkerAt(s, -1).Y};
    const TPoint p2{MarkerAt(d, 1).X - 1, MarkerAt(d, 1).Y};
    const int above = s->BoundsRect().Top - 6;
    // The run round the right side clears the source's right edge by the vertical clearance.
    const int x1 = s->BoundsRect().Right + 6;
    ASSERT_GT(x1, p2.X + 10) << "the clearance must decide for the test to show it";
    const Path expected{
        p1, {p1.X - 10, p1.Y}, {p1.X - 10, above}, {x1, above}, {x1, p2.Y}, {p2.X + 10, p2.Y}, p2};
    EXPECT_EQ(c->FPoints, expected);
    EXPECT_EQ(c->FPoints,
              (Path{{101, 75}, {91, 75}, {91, 44}, {166, 44}, {166, 248}, {157, 248}, {147, 248}}));
}

TEST_F(Routing, InputLeftOfOutputDetoursBelowTheDestinationBlock) {
    TDiagObject* s = AndGate(list, 100, 250);
    TDiagObject* d = AndGate(list, 90, 50);
    auto* c = new TDiagObjConnection(&cl, s, -1, d, 1, {10, 6}, 0, 0, 0);
    const int below = d->BoundsRect().Bottom + 6;
    EXPECT_EQ(
        c->FPoints,
        (Path{{101, 275}, {91, 275}, {91, below}, {166, below}, {166, 98}, {157, 98}, {147, 98}}));
    EXPECT_EQ(below, 156);
}

TEST_F(Routing, DetourAsksTheSourceAndDestinationFieldsNotTheSwappedEnds) {
    TDiagObject* s = AndGate(list, 200, 60); // output on the right
    TDiagObject* d = AndGate(list, 20, 40);  // input on the left
    auto* c = new TDiagObjConnection(&cl, s, 1, d, -1, {10, 6}, 0, 0, 0);
    // After the swap the left end is d's input and the right end s's output: a detour whose
    // height comes from s's top (the source field), not from d's.
    const int top = s->BoundsRect().Top - 6;
    const int x1 = s->BoundsRect().Right + 6;
    EXPECT_EQ(
        c->FPoints,
        (Path{{21, 65}, {11, 65}, {11, top}, {267, top}, {267, 108}, {267, 108}, {257, 108}}));
    EXPECT_EQ(top, 54);
    EXPECT_LT(x1, 267);

    // With the source end lower, the detour goes below the destination field's block.
    c->FAutoSrc = 10;
    c->MakePath();
    const int bottom = d->BoundsRect().Bottom + 6;
    EXPECT_EQ(
        c->FPoints,
        (Path{
            {21, 65}, {11, 65}, {11, bottom}, {267, bottom}, {267, 108}, {267, 108}, {257, 108}}));
}

TEST_F(Routing, NegativeAutoDstTakesTheHigherOfBothTargets) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, -5, -1, 0);
    // ys = 88 - 50 = 38, yd = 85 - 10 = 75: the middle run takes min = ys.
    EXPECT_EQ(c->FPoints,
              (Path{{77, 88}, {87, 88}, {87, 85}, {87, 38}, {191, 38}, {191, 85}, {201, 85}}));
}

TEST_F(Routing, PositiveAutoDstTakesTheLowerOfBothTargets) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 3, 1, 0);
    // ys = 88 + 30 = 118, yd = 85 + 10 = 95: max = ys.
    EXPECT_EQ(c->FPoints,
              (Path{{77, 88}, {87, 88}, {87, 85}, {87, 118}, {191, 118}, {191, 85}, {201, 85}}));
}

TEST_F(Routing, ZeroAutoDstRunsAtTheDestinationTargetWhateverAutoSrc) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 5, 0, 0);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {87, 88}, {87, 85}, {87, 85}, {191, 85}, {201, 85}}));
}

TEST_F(Routing, TwoOutputsShareTheOuterStub) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, 1, {10, 10}, 0, 0, 0);
    EXPECT_EQ(c->FPoints,
              (Path{{77, 88}, {267, 88}, {267, 108}, {267, 108}, {267, 108}, {257, 108}}));
}

TEST_F(Routing, TwoInputsShareTheOuterStub) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, -1, b, -2, {10, 10}, 0, 0, 0);
    EXPECT_EQ(MarkerAt(b, -2), (TPoint{200, 131}));
    EXPECT_EQ(c->FPoints, (Path{{21, 65}, {11, 65}, {11, 131}, {11, 131}, {191, 131}, {201, 131}}));
}

TEST_F(Routing, MissingMarkerLeavesThePathEmpty) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    ASSERT_EQ(c->FPoints.size(), 6u);
    c->FDstConIdx = -3; // an AND gate has two inputs
    c->MakePath();
    EXPECT_TRUE(c->FPoints.empty());
    c->FDstConIdx = -1;
    c->FSrcConIdx = 0;
    c->MakePath();
    EXPECT_TRUE(c->FPoints.empty());
}

TEST_F(Routing, MakePathFollowsAMovedBlock) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    b->SetLocation({220, 100});
    c->MakePath();
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {87, 88}, {87, 125}, {87, 125}, {211, 125}, {221, 125}}));
}

// --- constructors

TEST_F(Routing, BaseConnectionStartsWithItsDefaultsInTheList) {
    auto* c = new TDiagConnection(&cl);
    ASSERT_EQ(cl.Count(), 1);
    EXPECT_EQ(cl.Items(0), c);
    EXPECT_EQ(c->FOwner, &cl);
    EXPECT_TRUE(c->FPoints.empty());
    EXPECT_EQ(c->FPenWidth, 2);
    EXPECT_EQ(c->FSelSegmentColor, 0xFF00FFu);
    EXPECT_EQ(c->FSelPointColor, 0u);
    EXPECT_TRUE(c->FIsEditable);
    EXPECT_EQ(c->FSelectedIndex, -1);
    EXPECT_TRUE(c->FSrcCrossInfo.IsZero());
    EXPECT_TRUE(c->FDstCrossInfo.IsZero());
    EXPECT_EQ(c->FSrcKey, 0u);
    EXPECT_EQ(c->FDstKey, 0u);
    EXPECT_FALSE(c->FSelFirstPoint);
    EXPECT_TRUE(c->FExactDistCalc);
    EXPECT_EQ(c->FSource.data(), nullptr);
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_EQ(c->FSrcConIdx, 0);
    EXPECT_EQ(c->FDstConIdx, 0);
    EXPECT_EQ(c->FTol, (TPoint{0, 0}));
    EXPECT_EQ(c->FAutoSrc, 0);
    EXPECT_EQ(c->FAutoDst, 0);
    EXPECT_EQ(c->P1, (TPoint{0, 0}));
    EXPECT_EQ(c->P2, (TPoint{0, 0}));
}

TEST_F(Routing, AutomaticConnectionKeepsItsArgumentsButNoKeys) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -2, {7, 9}, 2, -3, 5);
    EXPECT_EQ(c->FSource.data(), a);
    EXPECT_EQ(c->FSrcConIdx, 1);
    EXPECT_EQ(c->FDest.data(), b);
    EXPECT_EQ(c->FDstConIdx, -2);
    EXPECT_EQ(c->FTol, (TPoint{7, 9}));
    EXPECT_EQ(c->FAutoSrc, 2);
    EXPECT_EQ(c->FAutoDst, -3);
    EXPECT_FALSE(c->GetIsEditable());
    EXPECT_EQ(c->FSrcKey, 0u);
    EXPECT_EQ(c->FDstKey, 0u);
    EXPECT_GE(c->FPoints.size(), 6u);
}

TEST_F(Routing, AutomaticConnectionWithoutDestinationIsEditableAndNotRouted) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagObjConnection(&cl, a, 1, nullptr, 0, {10, 10}, 0, 0, 0);
    EXPECT_TRUE(c->GetIsEditable());
    EXPECT_TRUE(c->FPoints.empty());
}

TEST_F(Routing, HandDrawnConnectionStartsWithOneOutwardStub) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* out = new TDiagObjConnection(&cl, a, 1, 25);
    EXPECT_TRUE(out->GetIsEditable());
    EXPECT_EQ(out->FSrcKey, a->FObjKey);
    EXPECT_EQ(out->GetSrcKey(), a->GetObjKey());
    EXPECT_EQ(out->FDstKey, 0u);
    EXPECT_EQ(out->FPoints, (Path{{77, 88}, {102, 88}}));
    auto* in = new TDiagObjConnection(&cl, a, -2, 25);
    EXPECT_EQ(in->FPoints, (Path{{21, 111}, {-4, 111}}));
    EXPECT_EQ(cl.Count(), 2);
}

TEST_F(Routing, LineConnectionKeepsNothingOfItsArguments) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* target = new TDiagObjConnection(&cl, a, 1, 30);
    auto* line = new TDiagLineConnection(&cl, a, 1, target, 1, {10, 10}, 0.5, 4);
    EXPECT_EQ(cl.Count(), 2);
    EXPECT_EQ(cl.Items(1), line);
    EXPECT_TRUE(line->FPoints.empty());
    EXPECT_EQ(line->FSource.data(), nullptr);
    EXPECT_EQ(line->FDest.data(), nullptr);
    EXPECT_EQ(line->FSrcConIdx, 0);
    EXPECT_EQ(line->FDstConIdx, 0);
    EXPECT_EQ(line->FTol, (TPoint{0, 0}));
    EXPECT_TRUE(line->FDstCrossInfo.IsZero());
    EXPECT_TRUE(line->GetIsEditable());
}

TEST_F(Routing, SettingAnEndBlockToNoneClearsItsMarkerIndex) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    c->SetSrcObject(b);
    EXPECT_EQ(c->GetSrcObject(), b);
    EXPECT_EQ(c->FSrcConIdx, 1);
    c->SetSrcObject(nullptr);
    EXPECT_EQ(c->GetSrcObject(), nullptr);
    EXPECT_EQ(c->FSrcConIdx, 0);
    c->SetDstObject(a);
    EXPECT_EQ(c->GetDstObject(), a);
    EXPECT_EQ(c->FDstConIdx, -1);
    c->SetDstObject(nullptr);
    EXPECT_EQ(c->FDstConIdx, 0);
    c->SetSelFirstPoint(true);
    EXPECT_TRUE(c->FSelFirstPoint);
}

// --- the incremental builder

TEST_F(Routing, AddSegmentStartsAtTheMarkerAndStretchesTheStub) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagConnection(&cl);
    c->FSource = a;
    c->FSrcConIdx = 1;
    EXPECT_EQ(c->AddSegment(20, 0), 0);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}}));
    EXPECT_EQ(c->AddSegment(20, 0), 0);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {117, 88}}));
}

TEST_F(Routing, AddSegmentFromAnInputGoesLeft) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagConnection(&cl);
    c->FSource = a;
    c->FSrcConIdx = -1;
    EXPECT_EQ(c->AddSegment(20, 2), 0);
    // The first stub is horizontal and outward whatever the angle.
    EXPECT_EQ(c->FPoints, (Path{{21, 65}, {1, 65}}));
}

TEST_F(Routing, AddSegmentWithoutAMarkerPositionReturnsMinusTwo) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagConnection(&cl);
    c->FSource = a;
    c->FSrcConIdx = 2; // one output only
    EXPECT_EQ(c->AddSegment(20, 0), -2);
    EXPECT_TRUE(c->FPoints.empty());
    auto* none = new TDiagConnection(&cl);
    EXPECT_EQ(none->AddSegment(20, 0), -2);
    EXPECT_TRUE(none->FPoints.empty());
}

TEST_F(Routing, AddSegmentTurnsRightAndLeft) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20); // eastward stub to (97, 88)
    EXPECT_EQ(c->AddSegment(20, 2), 1);
    EXPECT_EQ(c->FPoints.back(), (TPoint{97, 108})) << "a right turn from east is south";
    EXPECT_EQ(c->AddSegment(30, 2), 2);
    EXPECT_EQ(c->FPoints.back(), (TPoint{67, 108})) << "a right turn from south is west";
    EXPECT_EQ(c->AddSegment(10, 0), 2);
    EXPECT_EQ(c->FPoints.back(), (TPoint{57, 108})) << "straight on stretches in place";

    auto* d = new TDiagObjConnection(&cl, a, 1, 20);
    EXPECT_EQ(d->AddSegment(20, -2), 1);
    EXPECT_EQ(d->FPoints.back(), (TPoint{97, 68})) << "a left turn from east is north";
    EXPECT_EQ(d->AddSegment(15, -2), 2);
    EXPECT_EQ(d->FPoints.back(), (TPoint{82, 68})) << "a left turn from north is west";
}

TEST_F(Routing, OtherAnglesAppendStraightOn) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    EXPECT_EQ(c->AddSegment(10, 1), 1);
    EXPECT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}, {107, 88}}));
}

TEST_F(Routing, NextPointAndLastDirection) {
    auto* c = Wire(cl, {{0, 0}});
    EXPECT_EQ(c->GetLastDirection(), 0);
    c->FPoints = {{0, 0}, {10, 0}};
    EXPECT_EQ(c->GetLastDirection(), 2);
    EXPECT_EQ(c->NextPoint(5, 0), (TPoint{15, 0}));
    EXPECT_EQ(c->NextPoint(5, 2), (TPoint{10, 5}));
    EXPECT_EQ(c->NextPoint(5, -2), (TPoint{10, -5}));
    EXPECT_EQ(c->NextPoint(5, 3), (TPoint{15, 0}));
    c->FPoints = {{0, 0}, {0, -10}};
    EXPECT_EQ(c->GetLastDirection(), 1);
    EXPECT_EQ(c->NextPoint(5, 2), (TPoint{5, -10})) << "right turn from north is east";
    EXPECT_EQ(c->NextPoint(5, -2), (TPoint{-5, -10}));
    c->FPoints = {{0, 0}, {7, 7}, {7, 7}};
    EXPECT_EQ(c->GetLastDirection(), 1) << "a zero-length last segment counts as vertical";
    c->FPoints = {{0, 0}, {7, 3}};
    EXPECT_EQ(c->GetLastDirection(), 0);
    EXPECT_EQ(c->NextPoint(2, 0), (TPoint{9, 5})) << "direction by signs only";
    c->FPoints.clear();
    EXPECT_EQ(c->GetLastDirection(), 0);
}

// --- re-anchoring

TEST_F(Routing, AdjustPathMovesBothEndsAndStraightensTheirSegments) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 110);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    c->AddSegment(40, 2);
    c->AddSegment(60, -2);
    b->FSelMarkerIndex = -1;
    c->EndConnection(b, false);
    ASSERT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}, {97, 128}, {157, 128}, {200, 135}}));
    a->SetLocation({30, 50});
    b->SetLocation({210, 100});
    c->MakePath(); // editable: only re-anchors
    const TPoint s = MarkerAt(a, 1), e = MarkerAt(b, -1);
    EXPECT_EQ(c->FPoints, (Path{s, {97, s.Y}, {97, 128}, {157, e.Y}, e}));
    EXPECT_EQ(s, (TPoint{88, 98}));
    EXPECT_EQ(e, (TPoint{210, 125}));
}

TEST_F(Routing, AdjustPathOnThreePointsOnlyMovesTheLastPoint) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 110);
    auto* c = new TDiagObjConnection(&cl, a, 1, 20);
    b->FSelMarkerIndex = -1;
    c->EndConnection(b, false);
    ASSERT_EQ(c->FPoints, (Path{{77, 88}, {97, 88}, {200, 135}}));
    b->SetLocation({210, 100});
    c->AdjustPath(false);
    EXPECT_EQ(c->FPoints, (Path{{78, 88}, {97, 88}, {210, 125}}));
}

TEST_F(Routing, AdjustPathLeavesShortPathsAndMissingMarkersAlone) {
    TDiagObject* a = AndGate(list, 20, 40);
    auto* one = Wire(cl, {{5, 5}});
    one->FSource = a;
    one->FSrcConIdx = 1;
    one->AdjustPath(true);
    EXPECT_EQ(one->FPoints, (Path{{5, 5}}));
    auto* bad = Wire(cl, {{5, 5}, {25, 5}, {25, 40}});
    bad->FSource = a;
    bad->FSrcConIdx = 4;
    bad->AdjustPath(true);
    EXPECT_EQ(bad->FPoints, (Path{{5, 5}, {25, 5}, {25, 40}}));
}

TEST_F(Routing, ALoadedConnectionIsEditableSoMakePathOnlyReanchors) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* routed = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    const Path route = routed->FPoints;
    TMemoryStream ms;
    routed->SaveToStream(ms);
    ms.SetPosition(0);
    TDiagConnection* loaded = TDiagConnection::LoadFromStream(ms, &cl);
    EXPECT_TRUE(loaded->GetIsEditable());
    EXPECT_EQ(loaded->FPoints, route);
    // Re-attached as the editor does after loading.
    loaded->FSource = a;
    loaded->FDest = b;
    a->SetLocation({20, 50});
    loaded->MakePath();
    routed->MakePath();
    ASSERT_EQ(loaded->FPoints.size(), 6u);
    // Point 0 sits on the marker itself (no pull-back) and its stub follows; the rest stays.
    EXPECT_EQ(loaded->FPoints[0], MarkerAt(a, 1));
    EXPECT_EQ(loaded->FPoints[1], (TPoint{route[1].X, 98}));
    for (size_t i = 2; i + 1 < route.size(); ++i)
        EXPECT_EQ(loaded->FPoints[i], route[i]) << i;
    EXPECT_EQ(loaded->FPoints[5], MarkerAt(b, -1));
    EXPECT_NE(routed->FPoints, loaded->FPoints) << "the automatic one was routed anew";
}

TEST_F(Routing, ReversePointsReversesThePath) {
    auto* c = Wire(cl, {{1, 2}, {3, 4}, {5, 6}});
    c->ReversePoints();
    EXPECT_EQ(c->FPoints, (Path{{5, 6}, {3, 4}, {1, 2}}));
}

TEST_F(Routing, RefreshAndUpdatePathReroute) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    TDiagObject* other = AndGate(list, 400, 60);
    auto* ab = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    auto* bo = new TDiagObjConnection(&cl, b, 1, other, -1, {10, 10}, 0, 0, 0);
    const Path before = bo->FPoints;
    a->SetLocation({20, 80});
    QObject notABlock;
    cl.UpdatePath(&notABlock);
    EXPECT_EQ(ab->FPoints[0], (TPoint{77, 88}));
    cl.UpdatePath(a);
    EXPECT_EQ(ab->FPoints[0], (TPoint{77, 128}));
    EXPECT_EQ(bo->FPoints, before);
    other->SetLocation({400, 100});
    rc.rec.Clear();
    cl.Refresh();
    EXPECT_EQ(bo->FPoints.back(), (TPoint{401, 125}));
    EXPECT_TRUE(rc.rec.Ops.empty()) << "Refresh does not paint";
}

// --- properties

TEST(RoutingProperty, RoutesAreSixToEightAxisParallelPointsBetweenTheMarkers) {
    std::mt19937 rng(20240611u);
    auto rnd = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    TDiagObjectList list(nullptr);
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    int swapped = 0, detours = 0;
    for (int iter = 0; iter < 300; ++iter) {
        auto block = [&]() -> TDiagObject* {
            const int l = rnd(-50, 600), t = rnd(-50, 400);
            if (rnd(0, 1) == 0)
                return AndGate(list, l, t, rnd(30, 120), rnd(30, 160));
            auto* tb = new TDiagText(&list, l, t, rnd(30, 160), rnd(30, 160), "T", 0, 0, true);
            tb->SetInCount(rnd(1, 4));
            tb->SetOutCount(rnd(1, 4));
            return tb;
        };
        auto marker = [&](TDiagObject* b) {
            const int ins = int(b->FInputs.size()), outs = int(b->FOutputs.size());
            const int k = rnd(1, ins + outs);
            return k <= ins ? -k : k - ins;
        };
        TDiagObject* s = block();
        TDiagObject* d = block();
        const int si = marker(s), di = marker(d);
        const TPoint tol{rnd(0, 25), rnd(0, 25)};
        auto* c = new TDiagObjConnection(&cl, s, si, d, di, tol, rnd(-3, 3), rnd(-3, 3), 0);
        const TPoint sp{MarkerAt(s, si).X - Sign(si), MarkerAt(s, si).Y};
        const TPoint dp{MarkerAt(d, di).X - Sign(di), MarkerAt(d, di).Y};
        const auto& pts = c->FPoints;
        SCOPED_TRACE(::testing::Message() << "case " << iter << " markers " << si << "," << di);
        ASSERT_GE(pts.size(), 6u);
        ASSERT_LE(pts.size(), 8u);
        for (size_t i = 0; i + 1 < pts.size(); ++i)
            EXPECT_TRUE(pts[i].X == pts[i + 1].X || pts[i].Y == pts[i + 1].Y) << "segment " << i;
        if (sp.X > dp.X) {
            ++swapped;
            EXPECT_EQ(pts.front(), dp);
            EXPECT_EQ(pts.back(), sp);
        } else {
            EXPECT_EQ(pts.front(), sp);
            EXPECT_EQ(pts.back(), dp);
        }
        if (pts.size() >= 7 && pts[2].Y != pts.back().Y && pts[1].X == pts[2].X &&
            pts[2].X != pts[3].X)
            ++detours;
        cl.Clear();
        list.Clear();
    }
    // The generator reaches both orders and the detour.
    EXPECT_GT(swapped, 20);
    EXPECT_GT(detours, 5);
}
