// Painting of the blocks, operation by operation, through the recording canvas.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/recording_backend.h"

#include <QTest>
#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class BlockPaintTest : public BlockListTest {
protected:
    static QStringList PaintLog(TDiagObject* o) {
        TRecordingBackend rec;
        o->Canvas()->SetBackend(&rec);
        o->Paint();
        o->Canvas()->SetBackend(nullptr);
        return rec.Strings();
    }
    static QString TextOp(const TDiagLabel& l, int h, const QString& brush = "$C0C0C0") {
        return QStringLiteral("Text %1,%2 \"%3\" h%4 c$000000 b%5")
            .arg(l.Start.X)
            .arg(l.Start.Y)
            .arg(l.Text)
            .arg(h)
            .arg(brush);
    }
    TDiagObject* Gate(TDiagObjectType kind) {
        return List.CreateObjByDiagType(kind, {0, 0, 60, 100});
    }
};

const QString kBody60x100 = QStringLiteral("Rect 9,3,52,98 w2 c$000000 b$C0C0C0");
const QString kFrame60x100 = QStringLiteral("Rect 1,1,60,100 w1 c$0000FF b$FF00000F");

// --- each kind, plain

TEST_F(BlockPaintTest, AndGatePaintsBodyTitleAndLeads) {
    TDiagObject* g = Gate(doAndLogic);
    EXPECT_EQ(PaintLog(g), QStringList({
                               kBody60x100,
                               TextOp(g->FLabels[0], 26),
                               "MoveTo 0,25",
                               "Line 0,25 9,25 w2 c$000000",
                               "MoveTo 0,71",
                               "Line 0,71 9,71 w2 c$000000",
                               "MoveTo 58,48",
                               "Line 58,48 52,48 w2 c$000000",
                           }));
    EXPECT_EQ(g->FLabels[0].Text, QStringLiteral("&"));
    EXPECT_EQ(g->FLabels[0].Start.Y, 18);
}

TEST_F(BlockPaintTest, OrGatePaintsBodyTitleAndLeads) {
    TDiagObject* g = Gate(doOrLogic);
    EXPECT_EQ(PaintLog(g), QStringList({
                               kBody60x100,
                               TextOp(g->FLabels[0], 26),
                               "MoveTo 0,25",
                               "Line 0,25 9,25 w2 c$000000",
                               "MoveTo 0,71",
                               "Line 0,71 9,71 w2 c$000000",
                               "MoveTo 58,48",
                               "Line 58,48 52,48 w2 c$000000",
                           }));
    EXPECT_EQ(g->FLabels[0].Text, QStringLiteral("1"));
}

TEST_F(BlockPaintTest, TextBlockPaintsBodyTextAndLeads) {
    auto* t = static_cast<TDiagText*>(List.CreateObjByDiagType(doText, {0, 0, 120, 60}));
    t->SetInCount(1);
    t->SetOutCount(1);
    EXPECT_EQ(PaintLog(t), QStringList({
                               "Rect 9,3,112,58 w2 c$000000 b$C0C0C0",
                               TextOp(t->FLabels[0], 26),
                               "MoveTo 0,28",
                               "Line 0,28 9,28 w2 c$000000",
                               "MoveTo 118,28",
                               "Line 118,28 112,28 w2 c$000000",
                           }));
}

TEST_F(BlockPaintTest, RSTriggerPaintsMidLinesLast) {
    TDiagObject* r = List.CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    // Split 54 and 98 used as block coordinates: left of and above the region borders
    // (63 and 101) by the body's offset (9, 3).
    EXPECT_EQ(PaintLog(r), QStringList({
                               "Rect 9,3,92,198 w2 c$000000 b$C0C0C0",
                               TextOp(r->FLabels[0], 26),
                               TextOp(r->FLabels[1], 26),
                               TextOp(r->FLabels[2], 26),
                               "MoveTo 0,50",
                               "Line 0,50 9,50 w2 c$000000",
                               "MoveTo 0,146",
                               "Line 0,146 9,146 w2 c$000000",
                               "MoveTo 98,98",
                               "Line 98,98 92,98 w2 c$000000",
                               "MoveTo 9,98",
                               "Line 9,98 54,98 w2 c$000000",
                               "MoveTo 54,3",
                               "Line 54,3 54,197 w2 c$000000",
                           }));
    EXPECT_EQ(r->GetTextValues(), QStringLiteral("R|S|T"));
}

TEST_F(BlockPaintTest, RSTriggerMidLinesUseTheCurrentPen) {
    TDiagObject* r = List.CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    r->SetSelMarkerIndex(1);
    const QStringList log = PaintLog(r);
    ASSERT_GE(log.size(), 4);
    EXPECT_EQ(log.mid(log.size() - 6), QStringList({
                                           "MoveTo 98,98",
                                           "Line 98,98 92,98 w6 c$FF00FF",
                                           "MoveTo 9,98",
                                           "Line 9,98 54,98 w2 c$FF00FF",
                                           "MoveTo 54,3",
                                           "Line 54,3 54,197 w2 c$FF00FF",
                                       }));
}

// --- selection, marker kinds

TEST_F(BlockPaintTest, SelectedGateGetsTheRedFrameFirst) {
    TDiagObject* g = Gate(doAndLogic);
    g->SetSelected(true);
    const QStringList log = PaintLog(g);
    ASSERT_GE(log.size(), 2);
    EXPECT_EQ(log[0], kFrame60x100);
    EXPECT_EQ(log[1], kBody60x100);
    EXPECT_EQ(log.size(), 9);
}

TEST_F(BlockPaintTest, SelectedMarkerIsWideAndMagenta) {
    TDiagObject* g = Gate(doAndLogic);
    g->SetSelected(true);
    g->SetSelMarkerIndex(-2);
    const QStringList log = PaintLog(g);
    EXPECT_EQ(log.mid(3), QStringList({
                              "MoveTo 0,25",
                              "Line 0,25 9,25 w2 c$000000",
                              "MoveTo 0,71",
                              "Line 0,71 9,71 w6 c$FF00FF",
                              "MoveTo 58,48",
                              "Line 58,48 52,48 w2 c$000000",
                          }));
    g->SetSelMarkerIndex(1);
    EXPECT_EQ(PaintLog(g).mid(7), QStringList({"MoveTo 58,48", "Line 58,48 52,48 w6 c$FF00FF"}));
}

TEST_F(BlockPaintTest, InversionIsAWhiteCircleOnTheBodyEdgeAndTheBrushComesBack) {
    auto* g = static_cast<TDiagText*>(Gate(doAndLogic));
    g->AllInputsType(itInversion, 0, 0);
    g->AllOutputsType(itInversion, 0, 0);
    EXPECT_EQ(PaintLog(g).mid(2), QStringList({
                                      "MoveTo 0,25",
                                      "Line 0,25 9,25 w2 c$000000",
                                      "Ellipse 3,19,16,32 w2 c$000000 b$FFFFFF",
                                      "MoveTo 0,71",
                                      "Line 0,71 9,71 w2 c$000000",
                                      "MoveTo 58,48",
                                      "Line 58,48 52,48 w2 c$000000",
                                      "Ellipse 46,42,59,55 w2 c$000000 b$FFFFFF",
                                  }));
    EXPECT_EQ(g->GetBrush().Color, 0xC0C0C0u);
}

TEST_F(BlockPaintTest, SelectedInversionMarkerDrawsItsCircleInTheMarkerColour) {
    auto* g = static_cast<TDiagText*>(Gate(doAndLogic));
    g->AllInputsType(itInversion, 0, 0);
    g->SetSelMarkerIndex(-1);
    g->SetSelMarkerSize(3);
    EXPECT_EQ(PaintLog(g).mid(2, 3), QStringList({
                                         "MoveTo 0,25",
                                         "Line 0,25 9,25 w6 c$FF00FF",
                                         "Ellipse 6,22,13,29 w2 c$FF00FF b$FFFFFF",
                                     }));
}

TEST_F(BlockPaintTest, ArrowWingsStartOnePixelAboveTheLead) {
    auto* g = static_cast<TDiagText*>(Gate(doAndLogic));
    g->AllInputsType(itArrow, 0, 0);
    g->AllOutputsType(itArrow, 0, 0);
    // Size 6: L = 12, h = round(4.8) = 5.
    EXPECT_EQ(PaintLog(g).mid(2), QStringList({
                                      "MoveTo 0,25",
                                      "Line 0,25 9,25 w2 c$000000",
                                      "MoveTo 9,24",
                                      "Line 9,24 -3,20 w2 c$000000",
                                      "MoveTo 9,24",
                                      "Line 9,24 -3,30 w2 c$000000",
                                      "MoveTo 0,71",
                                      "Line 0,71 9,71 w2 c$000000",
                                      "MoveTo 58,48",
                                      "Line 58,48 52,48 w2 c$000000",
                                      "MoveTo 52,47",
                                      "Line 52,47 64,43 w2 c$000000",
                                      "MoveTo 52,47",
                                      "Line 52,47 64,53 w2 c$000000",
                                  }));
}

TEST_F(BlockPaintTest, ArrowWingHeightIsRoundedFromTheLength) {
    auto* g = static_cast<TDiagText*>(Gate(doAndLogic));
    g->AllInputsType(itArrow, 0, 0);
    const std::pair<uint8_t, int> cases[] = {{1, 1}, {3, 2}, {4, 3}, {5, 4}, {10, 8}};
    for (const auto& [size, h] : cases) {
        g->FInputs[0].Size = size;
        const int L = 2 * size;
        const QStringList log = PaintLog(g);
        EXPECT_EQ(log.mid(4, 4),
                  QStringList({
                      "MoveTo 9,24",
                      QStringLiteral("Line 9,24 %1,%2 w2 c$000000").arg(9 - L).arg(25 - h),
                      "MoveTo 9,24",
                      QStringLiteral("Line 9,24 %1,%2 w2 c$000000").arg(9 - L).arg(25 + h),
                  }))
            << "size " << int(size);
    }
}

TEST_F(BlockPaintTest, BodyFollowsDeltaWidthAndColours) {
    TDiagObject* g = Gate(doOrLogic);
    g->SetDeltaWidth(5);
    g->FMainColor = 0x123456;
    g->FBorderColor = 0x00FF00;
    g->FPenWidth = 3;
    const QStringList log = PaintLog(g);
    // Pen 3: frame (1, 1, 59, 99), body (6, 3, 54, 97).
    EXPECT_EQ(log[0], QStringLiteral("Rect 6,3,54,97 w3 c$00FF00 b$123456"));
    EXPECT_EQ(log[3], QStringLiteral("Line 0,25 6,25 w2 c$000000"));
    EXPECT_EQ(g->FPaintCount, 0);
}

// --- order and suppression

TEST_F(BlockPaintTest, PaintOrderIsMainPaintSegmentsLabelsInputsOutputs) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    ASSERT_TRUE(b->SetMainRect()); // body (8, 2, 52, 38)
    b->SetVisibleBorder(true);
    b->FSegments = {{{1, 1}, {5, 5}}};
    b->AddLabel({3, 4}, QStringLiteral("L"), 0, false);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    b->FOutputs = {{{59, 20}, itDirect, 0}};
    EXPECT_EQ(PaintLog(b), QStringList({
                               "Rect 0,0,60,40 w1 c$0000FF b$FF00000F",
                               "MoveTo 1,1",
                               "Line 1,1 5,5 w1 c$0000FF",
                               "Text 3,4 \"L\" h26 c$000000 b$FF00000F",
                               "MoveTo 0,20",
                               "Line 0,20 8,20 w2 c$000000",
                               "MoveTo 59,20",
                               "Line 59,20 52,20 w2 c$000000",
                           }));
    EXPECT_EQ(b->FShapeRect, (TRect{0, 0, 60, 40}));
}

TEST_F(BlockPaintTest, BaseBlockWithoutBorderPaintsNoFrame) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AddLabel({3, 4}, QStringLiteral("L"), 12, false);
    const QStringList log = PaintLog(b);
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(log[0].startsWith(QStringLiteral("Text 3,4 \"L\" h12 ")));
}

TEST_F(BlockPaintTest, LabelsUseTheirOwnHeightOrTheBlockTextHeight) {
    TDiagObject* g = Gate(doAndLogic);
    g->FLabels[0].Height = 0;
    g->FTextHeight = 31;
    g->AddLabel({2, 3}, QStringLiteral("x"), 14, false);
    const QStringList log = PaintLog(g);
    EXPECT_EQ(log[1], TextOp(g->FLabels[0], 31));
    EXPECT_EQ(log[2], TextOp(g->FLabels[1], 14));
}

TEST_F(BlockPaintTest, PaintRegionsDrawsEachRegionWithTheCurrentPenAndBrush) {
    TDiagObject* r = List.CreateObjByDiagType(doRSTrigger, {0, 0, 100, 200});
    TRecordingBackend rec;
    r->Canvas()->SetBackend(&rec);
    r->GetPen().Width = 1;
    r->GetPen().Color = 0x00FF00;
    r->GetBrush().Color = 0xFFFFFF;
    r->PaintRegions();
    r->Canvas()->SetBackend(nullptr);
    EXPECT_EQ(rec.Strings(), QStringList({
                                 "Rect 9,3,63,101 w1 c$00FF00 b$FFFFFF",
                                 "Rect 9,101,63,197 w1 c$00FF00 b$FFFFFF",
                                 "Rect 63,3,82,197 w1 c$00FF00 b$FFFFFF",
                             }));
}

TEST_F(BlockPaintTest, RaisedPaintCountPaintsNothing) {
    std::vector<TDiagObject*> blocks;
    for (int k = 1; k <= 4; ++k)
        blocks.push_back(List.CreateObjByDiagType(TDiagObjectType(k), {0, 0, 100, 200}));
    blocks.push_back(NewBase(0, 0, 60, 40));
    for (TDiagObject* o : blocks) {
        o->SetSelected(true);
        o->FPaintCount = 1;
        EXPECT_TRUE(PaintLog(o).isEmpty()) << int(o->GetDiagObjType());
        o->FPaintCount = 2;
        EXPECT_TRUE(PaintLog(o).isEmpty()) << int(o->GetDiagObjType());
        o->FPaintCount = 0;
        EXPECT_FALSE(PaintLog(o).isEmpty()) << int(o->GetDiagObjType());
    }
}

TEST_F(BlockPaintTest, DisabledFullPaintDrawsOnlyMainPaint) {
    // The base main paint is the red frame; the kinds draw their body only when full painting
    // is on, so with it off a selected block shows its frame and nothing else.
    for (int k = 1; k <= 4; ++k) {
        TDiagObject* o = List.CreateObjByDiagType(TDiagObjectType(k), {0, 0, 60, 100});
        o->SetDisableFullPaint(true);
        EXPECT_TRUE(o->GetDisableFullPaint());
        EXPECT_TRUE(PaintLog(o).isEmpty()) << k;
        o->SetSelected(true);
        o->SetSelMarkerIndex(-1);
        EXPECT_EQ(PaintLog(o), QStringList({kFrame60x100})) << k;
    }
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->SetMainRect();
    b->SetVisibleBorder(true);
    b->FSegments = {{{1, 1}, {5, 5}}};
    b->AddLabel({3, 4}, QStringLiteral("L"), 0, false);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    b->SetDisableFullPaint(true);
    EXPECT_EQ(PaintLog(b), QStringList({"Rect 0,0,60,40 w1 c$0000FF b$FF00000F"}));
}

TEST_F(BlockPaintTest, APaintEventOfTheWidgetPaintsThroughTheCanvas) {
    Parent.resize(200, 200);
    TDiagObject* g = List.CreateObjByDiagType(doAndLogic, {10, 10, 70, 110});
    Parent.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&Parent));
    TRecordingBackend rec;
    g->Canvas()->SetBackend(&rec);
    // The block has no window: its parent's paint of the block's rectangle paints it.
    Parent.repaint(g->geometry());
    g->Canvas()->SetBackend(nullptr);
    ASSERT_FALSE(rec.Ops.empty());
    EXPECT_EQ(rec.Strings()[0], kBody60x100);
    EXPECT_EQ(rec.Strings().size(), 8);
}

} // namespace
