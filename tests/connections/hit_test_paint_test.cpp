// Hit testing of segments (GetSegmentRect, PointInSegmentRect, FindNearestSegment) and the
// painting of a connection, checked operation by operation on a recording canvas.

#include "connection_test_util.h"

#include <cmath>

using namespace vde;
using namespace vde::test;

namespace {

class HitTest : public ::testing::Test {
protected:
    RecordingCanvas rc;
    TDiagConnectList cl{&rc.canvas};
};

using Strings = QStringList;

} // namespace

TEST_F(HitTest, SegmentRectIsNormalisedAndGrown) {
    auto* c = Wire(cl, {{50, 40}, {10, 40}, {10, 90}});
    TRect r{1, 2, 3, 4};
    ASSERT_TRUE(c->GetSegmentRect(0, r, 0));
    EXPECT_EQ(r, (TRect{10, 40, 50, 40}));
    ASSERT_TRUE(c->GetSegmentRect(1, r, 10));
    EXPECT_EQ(r, (TRect{0, 30, 20, 100}));
    r = {1, 2, 3, 4};
    EXPECT_FALSE(c->GetSegmentRect(2, r, 0));
    EXPECT_FALSE(c->GetSegmentRect(-1, r, 0));
    EXPECT_EQ(r, (TRect{1, 2, 3, 4}));
}

TEST_F(HitTest, SegmentRectEdgesCountAsInside) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}});
    EXPECT_TRUE(c->PointInSegmentRect(0, {-10, -10}, 10));
    EXPECT_TRUE(c->PointInSegmentRect(0, {110, 10}, 10));
    EXPECT_FALSE(c->PointInSegmentRect(0, {111, 0}, 10));
    EXPECT_FALSE(c->PointInSegmentRect(0, {50, -11}, 10));
    EXPECT_FALSE(c->PointInSegmentRect(0, {50, 11}, 10));
    EXPECT_FALSE(c->PointInSegmentRect(1, {50, 0}, 10));
}

TEST_F(HitTest, OnePointPathHasNoSegmentsAndPaintsNothing) {
    auto* c = Wire(cl, {{5, 5}});
    TRect r{7, 7, 7, 7};
    EXPECT_FALSE(c->GetSegmentRect(0, r, 10));
    EXPECT_EQ(r, (TRect{7, 7, 7, 7}));
    EXPECT_FALSE(c->PointInSegmentRect(0, {5, 5}, 10));
    EXPECT_EQ(c->FindNearestSegment({5, 5}, nullptr, false, 0), -1);
    c->FDstCrossInfo = LR(1, 1);
    c->Paint();
    EXPECT_TRUE(rc.rec.Ops.empty());
    auto* empty = Wire(cl, {});
    EXPECT_EQ(empty->FindNearestSegment({5, 5}, nullptr, true, 0), -1);
    empty->Paint();
    EXPECT_TRUE(rc.rec.Ops.empty());
}

// Sides 26, 26, 48: Heron gives exactly area 240, height 10.
TEST_F(HitTest, ExactlyTenPixelsOffAHorizontalSegmentSelectsIt) {
    auto* c = Wire(cl, {{0, 0}, {48, 0}});
    double d = -1;
    EXPECT_EQ(c->FindNearestSegment({24, 10}, &d, true, 0), 0);
    EXPECT_EQ(d, 10.0);
    d = -1;
    EXPECT_EQ(c->FindNearestSegment({24, -10}, &d, true, 0), 0);
    EXPECT_EQ(d, 10.0);
    EXPECT_EQ(c->FindNearestSegment({24, 11}, nullptr, true, 0), -1);
    EXPECT_EQ(c->FindNearestSegment({24, -11}, nullptr, true, 0), -1);
}

TEST_F(HitTest, ExactlyTenPixelsOffAVerticalSegmentSelectsIt) {
    auto* c = Wire(cl, {{100, 0}, {100, 48}});
    double d = -1;
    EXPECT_EQ(c->FindNearestSegment({110, 24}, &d, true, 0), 0);
    EXPECT_EQ(d, 10.0);
    d = -1;
    EXPECT_EQ(c->FindNearestSegment({90, 24}, &d, true, 0), 0);
    EXPECT_EQ(d, 10.0);
    EXPECT_EQ(c->FindNearestSegment({111, 24}, nullptr, true, 0), -1);
    EXPECT_EQ(c->FindNearestSegment({89, 24}, nullptr, true, 0), -1);
}

TEST_F(HitTest, JustOverTenPixelsOffIsRejected) {
    // A sloped segment along (2, 3): the distance of P is |3x - 2y| / sqrt(13).
    auto* c = Wire(cl, {{0, 0}, {200, 300}});
    const TPoint over{126, 170};   // 38 / sqrt(13) = 10.54
    const TPoint within{112, 150}; // 36 / sqrt(13) = 9.98
    double d = -1;
    ASSERT_EQ(c->FindNearestSegment(over, &d, false, 0), 0);
    EXPECT_NEAR(d, 38.0 / std::sqrt(13.0), 1e-9);
    EXPECT_EQ(c->FindNearestSegment(over, nullptr, true, 0), -1);
    EXPECT_EQ(c->FindNearestSegment(within, &d, true, 0), 0);
    EXPECT_NEAR(d, 36.0 / std::sqrt(13.0), 1e-9);
    // Along (9, 10): 141 / sqrt(181) = 10.48, also over.
    auto* e = Wire(cl, {{0, 0}, {180, 200}});
    ASSERT_EQ(e->FindNearestSegment({15, 1}, &d, false, 0), 0);
    EXPECT_NEAR(d, 141.0 / std::sqrt(181.0), 1e-9);
    EXPECT_EQ(e->FindNearestSegment({15, 1}, nullptr, true, 0), -1);
}

TEST_F(HitTest, PointBeyondTheEndOutsideTheGrownRectIsRejected) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}});
    double d = -1;
    // On the segment's line, so the distance is 0, but outside its rectangle grown by 10.
    EXPECT_EQ(c->FindNearestSegment({111, 0}, &d, false, 0), 0);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(c->FindNearestSegment({111, 0}, nullptr, true, 0), -1);
    EXPECT_EQ(c->FindNearestSegment({110, 0}, nullptr, true, 0), 0);
    EXPECT_EQ(c->FindNearestSegment({-10, 3}, nullptr, true, 0), 0);
    EXPECT_EQ(c->FindNearestSegment({-11, 3}, nullptr, true, 0), -1);
}

TEST_F(HitTest, DistanceIsNotWrittenWhenRejected) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}});
    double d = -7;
    EXPECT_EQ(c->FindNearestSegment({50, 30}, &d, true, 0), -1);
    EXPECT_EQ(d, -7);
}

TEST_F(HitTest, ContainTypeFiltersTheSegments) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}, {100, 100}});
    double d = 0;
    // Without a filter the horizontal segment's line is nearest to (150, 5).
    EXPECT_EQ(c->FindNearestSegment({150, 5}, &d, false, 0), 0);
    EXPECT_EQ(d, 5.0);
    // Mode 2 keeps segments whose Y range holds P.Y: only the vertical one.
    EXPECT_EQ(c->FindNearestSegment({150, 5}, &d, false, 2), 1);
    EXPECT_EQ(d, 50.0);
    // Mode 1 keeps segments whose X range holds P.X: neither holds 150.
    EXPECT_EQ(c->FindNearestSegment({150, 5}, &d, false, 1), -1);
    EXPECT_EQ(c->FindNearestSegment({150, 5}, &d, false, 3), -1);
    EXPECT_EQ(c->FindNearestSegment({50, 5}, &d, false, 1), 0);
    EXPECT_EQ(d, 5.0);
}

TEST_F(HitTest, ExactModePrefersTheHigherIndexQuickModeTheLower) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}, {100, 20}, {0, 20}});
    double d = 0;
    EXPECT_EQ(c->FindNearestSegment({50, 10}, &d, true, 0), 2);
    EXPECT_EQ(d, 10.0);
    c->FExactDistCalc = false;
    d = 0;
    EXPECT_EQ(c->FindNearestSegment({50, 10}, &d, true, 0), 0);
    EXPECT_EQ(d, 10.0);
}

TEST_F(HitTest, QuickModeOnlyCountsSegmentsAlongsideThePoint) {
    auto* c = Wire(cl, {{0, 0}, {100, 0}});
    c->FExactDistCalc = false;
    double d = 0;
    EXPECT_EQ(c->FindNearestSegment({40, 7}, &d, true, 0), 0);
    EXPECT_EQ(d, 7.0);
    // Beyond the end the quick rule does not count the segment at all.
    EXPECT_EQ(c->FindNearestSegment({105, 0}, &d, false, 0), -1);
    EXPECT_EQ(c->FindNearestSegment({40, 11}, nullptr, true, 0), -1);
    EXPECT_EQ(c->FindNearestSegment({40, 10}, nullptr, true, 0), 0);
}

TEST_F(HitTest, ActiveColorMarksTheSegmentEndingAtThePoint) {
    auto* c = Wire(cl, {{0, 0}, {10, 0}, {10, 10}});
    c->FSelectedIndex = 1;
    EXPECT_EQ(c->GetActiveColor(2), 0xFF00FFu);
    EXPECT_EQ(c->GetActiveColor(1), 0u);
    c->FSelSegmentColor = 0x123456;
    EXPECT_EQ(c->GetActiveColor(2), 0x123456u);
    c->FSelectedIndex = -1;
    EXPECT_EQ(c->GetActiveColor(1), 0u);
    EXPECT_EQ(c->GetActiveColor(2), 0u);
    // Index 0 ends no segment; with nothing selected the rule still matches it.
    EXPECT_EQ(c->GetActiveColor(0), 0x123456u);
}

TEST_F(HitTest, PaintDrawsEachSegmentInItsColour) {
    auto* c = Wire(cl, {{10, 20}, {60, 20}, {60, 80}, {90, 80}});
    c->FSelectedIndex = 1;
    rc.canvas.Brush.Color = 0x445566;
    c->Paint();
    EXPECT_EQ(rc.rec.Strings(),
              (Strings{"MoveTo 10,20", "Line 10,20 60,20 w2 c$000000",
                       "Line 60,20 60,80 w2 c$FF00FF", "Line 60,80 90,80 w2 c$000000"}));
    EXPECT_EQ(rc.canvas.Brush.Color, 0x445566u);
}

TEST_F(HitTest, PaintUsesThePenWidthOfTheConnection) {
    auto* c = Wire(cl, {{0, 0}, {5, 0}});
    c->FPenWidth = 3;
    c->Paint();
    EXPECT_EQ(rc.rec.Strings(), (Strings{"MoveTo 0,0", "Line 0,0 5,0 w3 c$000000"}));
}

TEST_F(HitTest, PaintDrawsTheJunctionDotAndRestoresTheBrush) {
    auto* c = Wire(cl, {{10, 20}, {60, 20}, {60, 80}});
    c->FDstCrossInfo = LR(2, 1);
    rc.canvas.Brush.Color = 0x445566;
    c->FSelectedIndex = 1;
    c->Paint();
    EXPECT_EQ(rc.rec.Strings(), (Strings{"MoveTo 10,20", "Line 10,20 60,20 w2 c$000000",
                                         "Line 60,20 60,80 w2 c$FF00FF",
                                         "Ellipse 56,76,64,84 w2 c$FF00FF b$FF00FF"}));
    EXPECT_EQ(rc.canvas.Brush.Color, 0x445566u);
    rc.rec.Clear();
    c->FSelectedIndex = 0;
    c->Paint();
    EXPECT_EQ(rc.rec.Strings(), (Strings{"MoveTo 10,20", "Line 10,20 60,20 w2 c$FF00FF",
                                         "Line 60,20 60,80 w2 c$000000",
                                         "Ellipse 56,76,64,84 w2 c$000000 b$000000"}));
    EXPECT_EQ(rc.canvas.Brush.Color, 0x445566u);
}

TEST_F(HitTest, SettingTheSelectedIndexRepaints) {
    auto* c = Wire(cl, {{0, 0}, {10, 0}, {10, 10}});
    c->SetSelectedIndex(0);
    EXPECT_EQ(c->GetSelectedIndex(), 0);
    EXPECT_EQ(rc.rec.Strings(),
              (Strings{"MoveTo 0,0", "Line 0,0 10,0 w2 c$FF00FF", "Line 10,0 10,10 w2 c$000000"}));
}

TEST_F(HitTest, ListCanvasGetsTheConnectionPen) {
    TCanvas canvas;
    TRecordingBackend rec;
    canvas.SetBackend(&rec);
    canvas.Pen.Width = 5;
    canvas.Pen.Color = 0x00FF00;
    TDiagConnectList list(&canvas);
    EXPECT_EQ(list.GetCanvas(), &canvas);
    EXPECT_FALSE(list.GetFreeCanvas());
    EXPECT_EQ(canvas.Pen.Width, 2);
    EXPECT_EQ(canvas.Pen.Color, 0u);
}

TEST_F(HitTest, ListPaintsItsConnectionsInOrder) {
    Wire(cl, {{0, 0}, {10, 0}});
    Wire(cl, {{0, 5}, {0, 15}});
    cl.Paint();
    EXPECT_EQ(rc.rec.Strings(), (Strings{"MoveTo 0,0", "Line 0,0 10,0 w2 c$000000", "MoveTo 0,5",
                                         "Line 0,5 0,15 w2 c$000000"}));
}
