// The connection list: lookups, segment commands addressed by LongRec, block events and the
// wires that end on other wires.

#include "connection_test_util.h"

#include "velDiagEdit/platform/errors.h"

#include <cfloat>
#include <random>

using namespace vde;
using namespace vde::test;

namespace {

using Path = std::vector<TPoint>;

class ConnectList : public ::testing::Test {
protected:
    TDiagObjectList list{nullptr};
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
};

} // namespace

// --- lookups

TEST_F(ConnectList, ConnectIndexStopsAtTheFirstConnectionThatMatchesEitherEnd) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    TDiagObject* c = AndGate(list, 400, 60);
    new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    new TDiagObjConnection(&cl, b, -1, c, -2, {10, 10}, 0, 0, 0);
    new TDiagObjConnection(&cl, c, 1, a, -2, {10, 10}, 0, 0, 0);
    EXPECT_EQ(cl.ConnectIndex(c, 1), -3) << "source of connection 2";
    EXPECT_EQ(cl.ConnectIndex(b, -1), 1) << "end of connection 0 and source of connection 1";
    EXPECT_EQ(cl.ConnectIndex(a, 1), -1);
    EXPECT_EQ(cl.ConnectIndex(a, -2), 3);
    EXPECT_EQ(cl.ConnectIndex(c, -2), 2);
    EXPECT_EQ(cl.ConnectIndex(a, -1), 0);
    c->FSelMarkerIndex = 1;
    EXPECT_EQ(cl.ConnectIndex(c, 0), -3) << "marker 0 means the selected marker";
    c->FSelMarkerIndex = -1;
    EXPECT_EQ(cl.ConnectIndex(c, 0), 0);
}

TEST_F(ConnectList, FindBestSegmentPrefersTheLowerIndexOnEqualDistances) {
    Wire(cl, {{0, 10}, {100, 10}});
    Wire(cl, {{0, 0}, {100, 0}});
    EXPECT_EQ(cl.FindBestSegment({50, 5}, nullptr, true, 0), LR(1, 1));
    // A strictly nearer later connection wins.
    Wire(cl, {{0, 6}, {100, 6}});
    EXPECT_EQ(cl.FindBestSegment({50, 5}, nullptr, true, 0), LR(3, 1));
    EXPECT_EQ(cl.FindBestSegment({50, 5}, cl.Items(2), true, 0), LR(1, 1));
    EXPECT_EQ(cl.FindBestSegment({50, 5}, cl.Items(0), true, 0), LR(3, 1));
}

TEST_F(ConnectList, FindBestSegmentSkippingTheOnlyConnectionFindsNothing) {
    auto* w = Wire(cl, {{0, 0}, {100, 0}});
    EXPECT_EQ(cl.FindBestSegment({50, 5}, nullptr, true, 0), LR(1, 1));
    EXPECT_TRUE(cl.FindBestSegment({50, 5}, w, true, 0).IsZero());
}

TEST_F(ConnectList, FindBestSegmentHonoursTheLimit) {
    Wire(cl, {{0, 0}, {100, 0}});
    Wire(cl, {{0, 0}, {0, 30}, {100, 30}});
    EXPECT_TRUE(cl.FindBestSegment({50, 200}, nullptr, true, 0).IsZero());
    EXPECT_EQ(cl.FindBestSegment({50, 200}, nullptr, false, 0), LR(2, 1));
    EXPECT_EQ(cl.FindBestSegment({50, 25}, nullptr, true, 0), LR(2, 2));
}

TEST(ConnectListProperty, FindBestSegmentAgreesWithAskingEveryConnection) {
    std::mt19937 rng(777u);
    auto rnd = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    RecordingCanvas rc;
    TDiagConnectList cl(&rc.canvas);
    int found = 0;
    for (int iter = 0; iter < 300; ++iter) {
        cl.Clear();
        const int n = rnd(1, 6);
        for (int i = 0; i < n; ++i) {
            auto* c = new TDiagConnection(&cl);
            TPoint p{rnd(0, 300), rnd(0, 300)};
            c->FPoints.push_back(p);
            for (int k = rnd(0, 5); k > 0; --k) {
                if (rnd(0, 1))
                    p.X = rnd(0, 300);
                else
                    p.Y = rnd(0, 300);
                c->FPoints.push_back(p);
            }
            c->FExactDistCalc = rnd(0, 3) != 0;
        }
        const TPoint p{rnd(-20, 320), rnd(-20, 320)};
        const bool useLimit = rnd(0, 3) != 0;
        const int mode = rnd(0, 3);
        const TDiagConnection* skip = rnd(0, 2) == 0 ? cl.Items(rnd(0, n - 1)) : nullptr;
        double best = DBL_MAX;
        LongRec expected{};
        for (int i = 0; i < cl.Count(); ++i) {
            if (cl.Items(i) == skip)
                continue;
            double d = 0;
            const int s = cl.Items(i)->FindNearestSegment(p, &d, useLimit, mode);
            if (s >= 0 && d < best) {
                best = d;
                expected = LR(uint16_t(i + 1), uint16_t(s + 1));
            }
        }
        if (!expected.IsZero())
            ++found;
        EXPECT_EQ(cl.FindBestSegment(p, skip, useLimit, mode), expected) << "case " << iter;
    }
    EXPECT_GT(found, 50);
}

TEST_F(ConnectList, LookForBestSegmentAsksTheIndexedConnection) {
    Wire(cl, {{0, 100}, {200, 100}});
    Wire(cl, {{50, 20}, {50, 95}});
    LongRec lr = LR(7, 7);
    EXPECT_EQ(cl.LookForBestSegment(2, lr), 0);
    EXPECT_EQ(lr, LR(7, 7));
    EXPECT_EQ(cl.LookForBestSegment(1, lr), 1);
    EXPECT_EQ(lr, LR(1, 1));
}

TEST_F(ConnectList, GetSegmentRectAddressesASegment) {
    Wire(cl, {{0, 0}, {50, 0}, {50, -40}});
    TRect r{9, 9, 9, 9};
    cl.GetSegmentRect(LR(1, 2), r);
    EXPECT_EQ(r, (TRect{50, -40, 50, 0}));
    r = {9, 9, 9, 9};
    cl.GetSegmentRect(LongRec{}, r);
    EXPECT_EQ(r, (TRect{9, 9, 9, 9}));
    cl.GetSegmentRect(LR(2, 1), r);
    EXPECT_EQ(r, (TRect{9, 9, 9, 9}));
    cl.GetSegmentRect(LR(1, 3), r);
    EXPECT_EQ(r, (TRect{9, 9, 9, 9}));
    // Passes the list's check but the connection rejects segment -1.
    cl.GetSegmentRect(LR(1, 0), r);
    EXPECT_EQ(r, (TRect{-1, -1, -1, -1}));
}

// --- creation

TEST_F(ConnectList, AddConnectionStartsAHandDrawnWireAtAMarker) {
    TDiagObject* a = AndGate(list, 20, 40);
    EXPECT_EQ(cl.AddConnection(nullptr, 1, 20), 0);
    EXPECT_EQ(cl.Count(), 0);
    EXPECT_EQ(cl.AddConnection(a, 0, 20), 0) << "no marker given and none selected";
    EXPECT_EQ(cl.Count(), 0);
    EXPECT_EQ(cl.AddConnection(a, 1, 20), 0);
    ASSERT_EQ(cl.Count(), 1);
    EXPECT_EQ(cl.Items(0)->FPoints, (Path{{77, 88}, {97, 88}}));
    a->FSelMarkerIndex = -2;
    EXPECT_EQ(cl.AddConnection(a, 0, 15), 1);
    ASSERT_EQ(cl.Count(), 2);
    TDiagConnection* c = cl.Items(1);
    EXPECT_NE(dynamic_cast<TDiagObjConnection*>(c), nullptr);
    EXPECT_EQ(c->FSource.data(), a);
    EXPECT_EQ(c->FSrcConIdx, -2);
    EXPECT_EQ(c->FSrcKey, a->FObjKey);
    EXPECT_EQ(c->FPoints, (Path{{21, 111}, {6, 111}}));
    EXPECT_EQ(cl.AddConnection(a, -1, 15), 2);
}

// --- block events

TEST_F(ConnectList, DeletingTheSourceOfAHandDrawnWireFreesIt) {
    TDiagObject* a = AndGate(list, 20, 40);
    cl.AddConnection(a, 1, 20);
    cl.UpdateBeforeDelete(a);
    EXPECT_EQ(cl.Count(), 0);
}

TEST_F(ConnectList, DeletingTheSourceOfARoutedWireReversesIt) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    Path r = c->FPoints;
    cl.UpdateBeforeDelete(a);
    ASSERT_EQ(cl.Count(), 1);
    EXPECT_EQ(cl.Items(0), c);
    std::reverse(r.begin(), r.end());
    EXPECT_EQ(c->FPoints, r);
    EXPECT_EQ(c->FSource.data(), b);
    EXPECT_EQ(c->FSrcConIdx, -1);
    EXPECT_EQ(c->FDest.data(), b);
    EXPECT_EQ(c->FDstConIdx, -1);
}

TEST_F(ConnectList, UpdateBeforeDeleteShiftsLaterIndexesAndLeavesCrossInfos) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    TDiagObject* c = AndGate(list, 400, 60);
    auto* c0 = new TDiagObjConnection(&cl, b, 1, c, -1, {10, 10}, 0, 0, 0);
    cl.AddConnection(a, 1, 20);
    auto* c2 = Wire(cl, {{500, 0}, {500, 100}});
    c2->FSource = c;
    c2->FSrcConIdx = 1;
    c2->FDstCrossInfo = LR(4, 1);
    auto* c3 = Wire(cl, {{0, 300}, {300, 300}});
    c3->FSource = b;
    auto* loose = Wire(cl, {{0, 400}, {300, 400}});
    ASSERT_EQ(cl.Count(), 5);
    QObject notABlock;
    cl.UpdateBeforeDelete(&notABlock);
    EXPECT_EQ(cl.Count(), 5);
    cl.UpdateBeforeDelete(a);
    ASSERT_EQ(cl.Count(), 3) << "the wire from the deleted block and the wire with no end block go";
    EXPECT_EQ(cl.Items(0), c0);
    EXPECT_EQ(cl.Items(1), c2);
    EXPECT_EQ(cl.Items(2), c3);
    EXPECT_EQ(c2->FDstCrossInfo, LR(4, 1)) << "stored addresses are not corrected";
    (void)loose;
}

TEST_F(ConnectList, DeletingABlockThroughItsListDropsItsWires) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    list.SetOnDeleteObject([this](QObject* o) { cl.UpdateBeforeDelete(o); });
    new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    cl.AddConnection(b, 1, 20);
    list.DeleteObject(b, true);
    ASSERT_EQ(cl.Count(), 1);
    TDiagConnection* c = cl.Items(0);
    EXPECT_EQ(c->FSource.data(), a);
    EXPECT_EQ(c->FDest.data(), nullptr);
    EXPECT_EQ(c->FPoints.size(), 6u);
    list.DeleteObject(a, true);
    EXPECT_EQ(cl.Count(), 0);
}

TEST_F(ConnectList, ShiftByDeltaReachesEveryConnection) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    auto* c0 = new TDiagObjConnection(&cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    auto* c1 = new TDiagObjConnection(&cl, b, 1, a, -2, {10, 10}, 0, 0, 0);
    const Path r0 = c0->FPoints, r1 = c1->FPoints;
    cl.ShiftByDelta(b, {0, 10});
    EXPECT_EQ(c0->FPoints[5], (TPoint{r0[5].X, r0[5].Y + 10}));
    EXPECT_EQ(c0->FPoints[0], r0[0]);
    // c1 was routed from a's input (left end) to b's output: b is its source field.
    EXPECT_EQ(c1->FPoints[0], (TPoint{r1[0].X, r1[0].Y + 10}));
    EXPECT_EQ(c1->FPoints[1], (TPoint{r1[1].X, r1[1].Y + 10}));
}

// --- segment commands

TEST_F(ConnectList, SelectSegmentByLongRecSelectsOneAndDeselectsTheRest) {
    auto* w0 = Wire(cl, {{0, 0}, {10, 0}});
    auto* w1 = Wire(cl, {{0, 20}, {10, 20}, {10, 40}});
    auto* w2 = Wire(cl, {{0, 60}, {10, 60}});
    w0->FSelectedIndex = 0;
    w2->FSelectedIndex = 0;
    cl.SelectSegmentByLongRec(LR(2, 2));
    EXPECT_EQ(w0->GetSelectedIndex(), -1);
    EXPECT_EQ(w1->GetSelectedIndex(), 1);
    EXPECT_EQ(w2->GetSelectedIndex(), -1);
    EXPECT_TRUE(rc.rec.Strings().contains("Line 10,20 10,40 w2 c$FF00FF"));
    w0->FSelectedIndex = 0;
    cl.SelectSegmentByLongRec(LR(2, 3)); // segment index out of range
    EXPECT_EQ(w1->GetSelectedIndex(), 1);
    EXPECT_EQ(w0->GetSelectedIndex(), -1);
    w0->FSelectedIndex = 0;
    cl.SelectSegmentByLongRec(LongRec{});
    cl.SelectSegmentByLongRec(LR(4, 1));
    EXPECT_EQ(w0->GetSelectedIndex(), 0);
    cl.DeselectAll(w1);
    EXPECT_EQ(w0->GetSelectedIndex(), -1);
    EXPECT_EQ(w1->GetSelectedIndex(), 1);
    cl.DeselectAll(nullptr);
    EXPECT_EQ(w1->GetSelectedIndex(), -1);
}

TEST_F(ConnectList, DeleteSegmentByLongRecSelectsTheNeighbour) {
    auto* w0 = Wire(cl, {{0, 0}, {50, 0}, {50, 40}, {100, 40}});
    auto* w1 = Wire(cl, {{0, 100}, {50, 100}});
    w1->FSelectedIndex = 0;
    LongRec lr = LR(1, 3);
    cl.DeleteSegmentByLongRec(lr);
    EXPECT_EQ(w0->FPoints, (Path{{0, 0}, {50, 0}, {50, 40}}));
    EXPECT_EQ(lr, LR(1, 2));
    EXPECT_EQ(w0->GetSelectedIndex(), 1);
    EXPECT_EQ(w1->GetSelectedIndex(), -1);
    lr = LR(1, 0);
    cl.DeleteSegmentByLongRec(lr);
    EXPECT_TRUE(lr.IsZero()) << "no segment deleted: the address is cleared";
    EXPECT_EQ(w0->FPoints.size(), 3u);
    lr = LR(3, 1);
    cl.DeleteSegmentByLongRec(lr);
    EXPECT_EQ(lr, LR(3, 1));
    lr = LR(2, 1);
    cl.DeleteSegmentByLongRec(lr);
    EXPECT_TRUE(w1->FPoints.empty());
    EXPECT_EQ(lr, LR(2, 1));
}

TEST_F(ConnectList, EditSegmentOfConnectionAddressesTheSegment) {
    Wire(cl, {{0, 0}, {50, 0}, {50, 40}});
    int size = 0, angle = 0;
    cl.EditSegmentOfConnection(LR(1, 2), size, angle, true);
    EXPECT_EQ(size, 40);
    EXPECT_EQ(angle, 2);
    size = 25;
    angle = 0;
    cl.EditSegmentOfConnection(LR(1, 1), size, angle, false);
    EXPECT_EQ(cl.Items(0)->FPoints[1], (TPoint{25, 0}));
    size = 1;
    cl.EditSegmentOfConnection(LR(1, 3), size, angle, true);
    EXPECT_EQ(size, 1);
}

TEST_F(ConnectList, AddSegmentToConnectionAppendsAndPaints) {
    TDiagObject* a = AndGate(list, 20, 40);
    cl.AddConnection(a, 1, 20);
    EXPECT_EQ(cl.AddSegmentToConnection(1, 20, 2), -1);
    rc.rec.Clear();
    EXPECT_EQ(cl.AddSegmentToConnection(0, 20, 2), 1);
    EXPECT_EQ(cl.Items(0)->FPoints, (Path{{77, 88}, {97, 88}, {97, 108}}));
    EXPECT_EQ(rc.rec.Strings(), (QStringList{"MoveTo 77,88", "Line 77,88 97,88 w2 c$000000",
                                             "Line 97,88 97,108 w2 c$000000"}));
}

TEST_F(ConnectList, EndConnectionByLongRecEndsOnASegmentABlockOrTheNearestWire) {
    TDiagObject* a = AndGate(list, 20, 40);
    TDiagObject* b = AndGate(list, 200, 60);
    Wire(cl, {{0, 100}, {200, 100}});
    Wire(cl, {{0, 140}, {200, 140}});
    auto* w = Wire(cl, {{50, 20}, {50, 95}});
    const LongRec target = LR(2, 1);
    cl.EndConnectionByLongRec(LR(3, 1), nullptr, &target);
    EXPECT_EQ(w->FPoints, (Path{{50, 20}, {50, 140}}));
    EXPECT_EQ(w->FDstCrossInfo, target);

    auto* v = Wire(cl, {{150, 20}, {150, 95}});
    cl.EndConnectionByLongRec(LR(4, 1), nullptr, nullptr);
    EXPECT_EQ(v->FPoints, (Path{{150, 20}, {150, 100}})) << "no block: the last point moves";
    EXPECT_EQ(v->FDstCrossInfo, LR(1, 1));

    cl.AddConnection(a, 1, 20);
    b->FSelMarkerIndex = -1;
    cl.EndConnectionByLongRec(LR(5, 1), b, nullptr);
    EXPECT_EQ(cl.Items(4)->FPoints, (Path{{77, 88}, {97, 88}, MarkerAt(b, -1)}));
    EXPECT_EQ(cl.Items(4)->FDest.data(), b);

    // Lo must pass the range check even though it is not used.
    cl.AddConnection(a, 1, 20);
    cl.EndConnectionByLongRec(LR(6, 2), b, nullptr);
    EXPECT_EQ(cl.Items(5)->FPoints.size(), 2u);
}

TEST_F(ConnectList, AdjustEndConnectionsReattachesWiresEndingOnTheMovedSegments) {
    auto* base = Wire(cl, {{0, 0}, {0, 100}, {200, 100}});
    auto* w1 = Wire(cl, {{50, 20}, {50, 100}});
    w1->FDstCrossInfo = LR(1, 2);
    auto* w2 = Wire(cl, {{150, 20}, {150, 100}});
    w2->FDstCrossInfo = LR(1, 2);
    auto* w3 = Wire(cl, {{100, 200}, {100, 100}});
    w3->FDstCrossInfo = LR(1, 2);
    auto* onW1 = Wire(cl, {{0, 60}, {50, 60}});
    onW1->FDstCrossInfo = LR(2, 1);
    base->FPoints[1].Y = 105;
    base->FPoints[2].Y = 105;
    cl.UpdateEndConnections(LongRec{});
    EXPECT_EQ(w1->FPoints.back(), (TPoint{50, 100}));
    cl.AdjustEndConnections(0);
    EXPECT_EQ(w1->FPoints, (Path{{50, 20}, {50, 105}}));
    EXPECT_EQ(w2->FPoints, (Path{{150, 20}, {150, 105}}));
    EXPECT_EQ(w3->FPoints, (Path{{100, 200}, {100, 105}}));
    EXPECT_EQ(w1->FDstCrossInfo, LR(1, 2));
    EXPECT_EQ(onW1->FPoints, (Path{{0, 60}, {50, 60}}));
    EXPECT_THROW(cl.AdjustEndConnections(9), EListError);
}

TEST_F(ConnectList, AligningASegmentWithABlockCarriesTheWiresEndingOnIt) {
    TDiagObject* a = AndGate(list, 20, 40);
    a->FSelMarkerIndex = 1; // at (78, 88)
    auto* base = Wire(cl, {{0, 80}, {20, 80}, {20, 100}, {200, 100}, {200, 150}});
    auto* w = Wire(cl, {{100, 20}, {100, 100}});
    w->FDstCrossInfo = LR(1, 3);
    cl.AlignSegmentWithDiagObject(LR(1, 3), a);
    EXPECT_EQ(base->FPoints[3], (TPoint{200, 88}));
    // The segment now runs from (20, 100) to (200, 88); at X 100 its line is at 94.67.
    EXPECT_EQ(w->FPoints, (Path{{100, 20}, {100, 95}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(1, 3));
}

TEST_F(ConnectList, ZeroConnectionWithASegmentIndexIsAListIndexError) {
    TDiagObject* a = AndGate(list, 20, 40);
    Wire(cl, {{0, 0}, {50, 0}});
    const LongRec bad = LR(0, 1);
    TRect r;
    int size = 0, angle = 0;
    LongRec lr = bad;
    EXPECT_THROW(cl.SelectSegmentByLongRec(bad), EListError);
    EXPECT_THROW(cl.GetSegmentRect(bad, r), EListError);
    EXPECT_THROW(cl.DeleteSegmentByLongRec(lr), EListError);
    EXPECT_THROW(cl.AlignSegmentWithDiagObject(bad, a), EListError);
    EXPECT_THROW(cl.EditSegmentOfConnection(bad, size, angle, true), EListError);
    EXPECT_THROW(cl.EndConnectionByLongRec(bad, nullptr, nullptr), EListError);
    EXPECT_THROW(cl.Items(1), EListError);
    EXPECT_EQ(cl.Items(0)->FPoints.size(), 2u);
}

TEST_F(ConnectList, ClearFreesEveryConnection) {
    TDiagObject* a = AndGate(list, 20, 40);
    cl.AddConnection(a, 1, 20);
    Wire(cl, {{0, 0}, {5, 5}});
    cl.Clear();
    EXPECT_EQ(cl.Count(), 0);
    cl.AddConnection(a, 1, 20);
    EXPECT_EQ(cl.Count(), 1);
}
