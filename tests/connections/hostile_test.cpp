// Connections loaded from a hostile stream, or driven by a host to the ends of the 32-bit
// range: arithmetic wraps as 32-bit integers do, and counts that a LongRec cannot address are
// refused on loading and on adding. Also who owns a connection.

#include "connection_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

#include <QWidget>
#include <memory>

using namespace vde;
using namespace vde::test;

namespace {

constexpr int32_t kMax = INT32_MAX;

struct Wires {
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
};

} // namespace

// --- arithmetic at the ends of the range

TEST(HostileConnection, JunctionDotAtTheLargestCoordinatesWraps) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{kMax - 10, kMax}, {kMax, kMax}});
    c->FDstCrossInfo = LR(1, 1);
    c->Paint();
    const auto& ops = w.rc.rec.Ops;
    ASSERT_FALSE(ops.empty());
    ASSERT_EQ(ops.back().Kind, opEllipse);
    // 2147483647 - 4 and 2147483647 + 4 (= -2147483645 in 32 bits).
    EXPECT_EQ(ops.back().R, (TRect{2147483643, 2147483643, -2147483645, -2147483645}));
}

TEST(HostileConnection, ShiftByDeltaPastTheLargestXWraps) {
    QWidget parent;
    TDiagObjectList blocks(&parent);
    TDiagObject* b = AndGate(blocks, 0, 0);
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{2147483640, 0}, {2147483645, 0}, {2147483645, 50}});
    c->FSource = b;
    w.cl.ShiftByDelta(b, {10, -3});
    // 2147483650 and 2147483655 are -2147483646 and -2147483641 in 32 bits.
    EXPECT_EQ(c->FPoints,
              (std::vector<TPoint>{{-2147483646, -3}, {-2147483641, -3}, {2147483645, 50}}));
}

TEST(HostileConnection, MakePathWithAMarkerAtTheLargestXWraps) {
    QWidget parent;
    TDiagObjectList blocks(&parent);
    TDiagObject* a = AndGate(blocks, 0, 0);
    TDiagObject* b = AndGate(blocks, 100, 0);
    // As a block record read from a stream may hold it.
    a->FOutputs[0].P = {kMax, 20};
    Wires w;
    auto* c = new TDiagObjConnection(&w.cl, a, 1, b, -1, {10, 10}, 0, 0, 0);
    ASSERT_GE(c->FPoints.size(), 2u);
    // The output's point (2147483647, 20), pulled one pixel back, is the right end after the
    // swap; its stub end 2147483646 + 10 is -2147483640 in 32 bits.
    EXPECT_EQ(c->FPoints.back(), (TPoint{2147483646, 20}));
    EXPECT_EQ(c->FPoints[c->FPoints.size() - 2], (TPoint{-2147483640, 20}));
}

TEST(HostileConnection, EditSegmentWritePastTheLargestXWraps) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{2147483640, 0}, {2147483640, 10}, {2147483645, 10}});
    int size = 20, angle = 0;
    w.cl.EditSegmentOfConnection(LR(1, 2), size, angle, false);
    // 2147483640 + 20 = -2147483636 in 32 bits.
    EXPECT_EQ(c->FPoints[2], (TPoint{-2147483636, 10}));
}

TEST(HostileConnection, EditSegmentReadOfASegmentSpanningTheRangeIsDefined) {
    Wires w;
    Wire(w.cl, {{INT32_MIN, 0}, {kMax, 0}});
    int size = 0, angle = 7;
    w.cl.EditSegmentOfConnection(LR(1, 1), size, angle, true);
    // 4294967295 pixels do not fit: the size stops at the largest value.
    EXPECT_EQ(size, kMax);
    EXPECT_EQ(angle, 0);
}

TEST(HostileConnection, AddSegmentPastTheLargestXWraps) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{2147483640, 0}, {2147483645, 0}});
    EXPECT_EQ(c->AddSegment(20, 0), 0);
    // Lengthened in place: 2147483665 is -2147483631 in 32 bits.
    EXPECT_EQ(c->FPoints.back(), (TPoint{-2147483631, 0}));
}

TEST(HostileConnection, AddSegmentOfTheSmallestSizeWestwardWraps) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{10, 0}, {0, 0}});
    c->AddSegment(INT32_MIN, 0);
    // -2147483648 times the westward step -1 is 2147483648, which is -2147483648 again.
    EXPECT_EQ(c->FPoints.back(), (TPoint{INT32_MIN, 0}));
}

TEST(HostileConnection, SegmentRectGrownPastTheLargestCoordinateWraps) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {{kMax - 5, 0}, {kMax, 0}});
    TRect r;
    ASSERT_TRUE(c->GetSegmentRect(0, r, 10));
    EXPECT_EQ(r, (TRect{2147483632, -10, -2147483639, 10}));
}

TEST(HostileConnection, PaintingAHugeLoadedPathIntoAnImageEnds) {
    QImage img = WhiteImage(64, 48);
    TDiagConnectList cl(&img);
    Wire(cl, {{-2000000000, 10},
              {2000000000, 10},
              {2000000000, -2000000000},
              {-2000000000, 2000000000}});
    cl.Paint();
    cl.GetCanvas()->ReleaseHandlePainter();
    // The 2-pixel pen covers rows 9 and 10 of the first segment across the image.
    for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(PixelColor(img, x, 9), clBlack) << x;
        EXPECT_EQ(PixelColor(img, x, 10), clBlack) << x;
    }
    EXPECT_EQ(PixelColor(img, 5, 20), clWhite);
}

// --- counts a LongRec can address

namespace {

// A connection record with n points, all at (1, 2).
std::vector<uint8_t> RecordWithPoints(int32_t n) {
    Bytes b;
    b.i32(7).i32(8).i32(0).i32(0).i32(n);
    for (int32_t i = 0; i < n; ++i)
        b.i32(1).i32(2);
    b.i32(1).i32(-1).i32(-1);
    return b.data();
}

} // namespace

TEST(HostileConnectionCounts, PathOf65536PointsLoads) {
    TMemoryStream ms(RecordWithPoints(65536));
    Wires w;
    TDiagConnection* c = TDiagConnection::LoadFromStream(ms, &w.cl);
    EXPECT_EQ(c->FPoints.size(), 65536u);
}

TEST(HostileConnectionCounts, PathOf65537PointsIsAFormatErrorAtItsCount) {
    TMemoryStream ms(RecordWithPoints(65537));
    Wires w;
    try {
        TDiagConnection::LoadFromStream(ms, &w.cl);
        FAIL() << "no error";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), 16);
        EXPECT_TRUE(e.Message().contains(QStringLiteral("65537"))) << e.Message().toStdString();
    }
    EXPECT_EQ(w.cl.Count(), 0);
}

TEST(HostileConnectionCounts, ListCountAbove65535IsAFormatErrorEvenWhenTheStreamIsShort) {
    {
        TMemoryStream ms(Bytes().i32(65536).data());
        Wires w;
        Wire(w.cl, {{0, 0}, {1, 0}});
        try {
            w.cl.LoadFromStream(ms, [](TDiagConnection*) {});
            FAIL() << "no error";
        } catch (const EFormatError& e) {
            EXPECT_EQ(e.Offset(), 0);
        }
        EXPECT_EQ(w.cl.Count(), 0);
    }
    {
        TMemoryStream ms;
        Wires w;
        EXPECT_THROW(w.cl.LoadFromStream(
                         ms, [](TDiagConnection*) {}, 70000),
                     EFormatError);
    }
}

TEST(HostileConnectionCounts, ListCountLargerThanTheStreamKeepsTheRecordsRead) {
    // Count 1000, then two whole records of one point each and half a third.
    Bytes b;
    b.i32(1000);
    for (int i = 0; i < 2; ++i)
        b.i32(i).i32(0).i32(0).i32(0).i32(1).i32(5).i32(6).i32(0).i32(0).i32(-1);
    b.i32(9).i32(9);
    TMemoryStream ms(b.data());
    Wires w;
    int events = 0;
    EXPECT_THROW(w.cl.LoadFromStream(ms, [&events](TDiagConnection*) { ++events; }), EReadError);
    ASSERT_EQ(w.cl.Count(), 2);
    EXPECT_EQ(events, 2);
    EXPECT_EQ(w.cl.Items(1)->GetSrcKey(), 1u);
    EXPECT_EQ(w.cl.Items(1)->FPoints, (std::vector<TPoint>{{5, 6}}));
}

TEST(HostileConnectionCounts, AddingThe65536thConnectionIsAListError) {
    Wires w;
    for (int i = 0; i < 65535; ++i)
        new TDiagConnection(&w.cl);
    ASSERT_EQ(w.cl.Count(), 65535);
    EXPECT_THROW(new TDiagConnection(&w.cl), EListError);
    QWidget parent;
    TDiagObjectList blocks(&parent);
    TDiagObject* g = AndGate(blocks, 0, 0);
    EXPECT_THROW(w.cl.AddConnection(g, 1, 10), EListError);
    auto spare = std::make_unique<TDiagConnection>(nullptr);
    EXPECT_THROW(w.cl.Add(std::move(spare)), EListError);
    EXPECT_EQ(w.cl.Count(), 65535);
}

TEST(HostileConnectionCounts, TheLastOf65535ConnectionsIsFoundUnderItsOwnAddress) {
    Wires w;
    for (int i = 0; i < 65534; ++i)
        Wire(w.cl, {{0, 0}, {10, 0}});
    TDiagConnection* last = Wire(w.cl, {{0, 1000}, {10, 1000}, {10, 1100}});
    const LongRec lr = w.cl.FindBestSegment({10, 1050}, nullptr, true, 0);
    EXPECT_EQ(lr, LR(65535, 2));
    w.cl.SelectSegmentByLongRec(lr);
    EXPECT_EQ(last->GetSelectedIndex(), 1);
    EXPECT_EQ(w.cl.Items(0)->GetSelectedIndex(), -1);
}

TEST(HostileConnectionCounts, AddingThe65537thPointIsAListError) {
    Wires w;
    TDiagConnection* c = Wire(w.cl, {});
    c->FPoints.assign(65535, TPoint{0, 0});
    c->FPoints.push_back({10, 0});
    ASSERT_EQ(c->FPoints.size(), 65536u);
    EXPECT_THROW(c->AddSegment(5, 2), EListError);
    EXPECT_EQ(c->FPoints.size(), 65536u);
    // Lengthening the last segment adds no point.
    EXPECT_EQ(c->AddSegment(5, 0), 65534);
    EXPECT_EQ(c->FPoints.back(), (TPoint{15, 0}));
}

// --- ownership

TEST(ConnectionOwnership, AConnectionDeletedByItsHolderLeavesTheList) {
    Wires w;
    TDiagConnection* a = Wire(w.cl, {{0, 0}, {1, 0}});
    TDiagConnection* b = Wire(w.cl, {{0, 5}, {1, 5}});
    delete a;
    ASSERT_EQ(w.cl.Count(), 1);
    EXPECT_EQ(w.cl.Items(0), b);
}

TEST(ConnectionOwnership, RemoveHandsTheConnectionOverAndAddTakesItBack) {
    Wires w;
    TDiagConnection* a = Wire(w.cl, {{0, 0}, {1, 0}});
    Wire(w.cl, {{0, 5}, {1, 5}});
    std::unique_ptr<TDiagConnection> mine = w.cl.Remove(a);
    ASSERT_EQ(mine.get(), a);
    EXPECT_EQ(a->Owner(), nullptr);
    EXPECT_EQ(w.cl.Count(), 1);
    EXPECT_EQ(w.cl.Remove(a), nullptr);
    w.cl.Add(std::move(mine));
    ASSERT_EQ(w.cl.Count(), 2);
    EXPECT_EQ(w.cl.Items(1), a);
    EXPECT_EQ(a->Owner(), &w.cl);
}

TEST(ConnectionOwnership, ListOverADeviceOwnsItsCanvasAndAListOverACanvasDoesNot) {
    QImage img = WhiteImage(8, 8);
    TDiagConnectList own(&img);
    EXPECT_TRUE(own.GetFreeCanvas());
    TCanvas theirs;
    TDiagConnectList lent(&theirs);
    EXPECT_FALSE(lent.GetFreeCanvas());
    EXPECT_EQ(lent.GetCanvas(), &theirs);
}
