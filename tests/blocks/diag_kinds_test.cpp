// The block kinds: marker layout of the text block and the gates, their defaults, and the
// RS flip-flop's regions.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"

#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class DiagKindsTest : public BlockListTest {
protected:
    TDiagText* NewText(int w, int h, const QString& text = QString()) {
        return new TDiagText(&List, 0, 0, w, h, text, 0, 0, true);
    }
    static std::vector<TPoint> Points(const TDotMarkers& m) {
        std::vector<TPoint> out;
        for (const auto& d : m)
            out.push_back(d.P);
        return out;
    }
    static std::vector<TIOType> Types(const TDotMarkers& m) {
        std::vector<TIOType> out;
        for (const auto& d : m)
            out.push_back(d.IOType);
        return out;
    }
};

using Pts = std::vector<TPoint>;
using IOTypes = std::vector<TIOType>;

} // namespace

// --- marker layout

TEST_F(DiagKindsTest, TextBlockLaysThreeInputsInEqualCellsOnTheFrameEdge) {
    TDiagText* t = NewText(150, 50);
    ASSERT_EQ(t->FPenWidth, 2);
    t->SetInCount(3);
    EXPECT_EQ(t->FShapeRect, (TRect{1, 1, 150, 50}));
    EXPECT_EQ(t->FMainRect, (TRect{9, 3, 142, 48}));
    // Y0 = 2, Y1 = 44, Step = 7.
    EXPECT_EQ(Points(t->FInputs), (Pts{{0, 9}, {0, 23}, {0, 37}}));
    EXPECT_EQ(t->GetInCount(), 3);
    // The defaults are exactly Y0 = 2 and Y1 = 44.
    for (auto& m : t->FInputs)
        m.P = {};
    t->SetInPosEx(2, 44, 0, 2);
    EXPECT_EQ(Points(t->FInputs), (Pts{{0, 9}, {0, 23}, {0, 37}}));
}

TEST_F(DiagKindsTest, MarkerStepRoundsTowardZeroAndY1IsNotRelativeToY0) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    // Step = (44 - 10) div 6 = 5.
    t->SetInPosEx(10, -1, 0, -1);
    EXPECT_EQ(Points(t->FInputs), (Pts{{0, 15}, {0, 25}, {0, 35}}));
}

TEST_F(DiagKindsTest, DefaultY1IsTheBodyHeightLessOne) {
    // Height 49: frame (1, 1, 150, 49), body (9, 3, 142, 47), Y1 = 43; Step = 41 div 6 = 6.
    TDiagText* t = NewText(150, 49);
    t->SetInCount(3);
    EXPECT_EQ(t->FMainRect, (TRect{9, 3, 142, 47}));
    EXPECT_EQ(Points(t->FInputs), (Pts{{0, 8}, {0, 20}, {0, 32}}));
}

TEST_F(DiagKindsTest, OutputsSitOnTheRightEdgeOfTheFrame) {
    TDiagText* t = NewText(150, 50);
    t->SetOutCount(2);
    // X = width of the frame - 1 = 148; Step = 42 div 4 = 10.
    EXPECT_EQ(Points(t->FOutputs), (Pts{{148, 12}, {148, 32}}));
    EXPECT_EQ(t->GetOutCount(), 2);
}

TEST_F(DiagKindsTest, MarkersTakeTheBlockMarkerSize) {
    TDiagText* t = NewText(150, 50);
    t->FMarkerSize = 9;
    t->SetInCount(2);
    t->SetOutCount(1);
    for (const auto& m : t->FInputs)
        EXPECT_EQ(m.Size, 9);
    EXPECT_EQ(t->FOutputs[0].Size, 9);
}

TEST_F(DiagKindsTest, CountChangeResetsEveryMarkerToDirect) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(1);
    t->AllInputsType(itInversion, 0, -1);
    ASSERT_EQ(Types(t->FInputs), (IOTypes{itInversion}));
    t->SetInCount(3);
    EXPECT_EQ(Types(t->FInputs), (IOTypes{itDirect, itDirect, itDirect}));
    t->SetOutCount(2);
    t->AllOutputsType(itArrow, 0, -1);
    t->SetOutCount(2);
    EXPECT_EQ(Types(t->FOutputs), (IOTypes{itDirect, itDirect}));
}

TEST_F(DiagKindsTest, SetInCountOfZeroOrLessRemovesTheInputs) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(2);
    t->SetInCount(0);
    EXPECT_TRUE(t->FInputs.empty());
    EXPECT_EQ(t->GetInCount(), 0);
}

TEST_F(DiagKindsTest, LayoutWithLastBeforeFirstChangesNothing) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    for (auto& m : t->FInputs)
        m.P = {5, 5};
    t->SetInPosEx(-1, -1, 2, 1);
    EXPECT_EQ(Points(t->FInputs), (Pts{{5, 5}, {5, 5}, {5, 5}}));
    // First or Last beyond the markers also changes nothing.
    t->SetInPosEx(-1, -1, 3, -1);
    t->SetInPosEx(-1, -1, 0, 3);
    EXPECT_EQ(Points(t->FInputs), (Pts{{5, 5}, {5, 5}, {5, 5}}));
}

TEST_F(DiagKindsTest, LayoutOfARangeLeavesTheOtherMarkers) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    for (auto& m : t->FInputs)
        m.P = {5, 5};
    // Two cells over 2..44: Step = 42 div 4 = 10.
    t->SetInPosEx(-1, -1, 1, 2);
    EXPECT_EQ(Points(t->FInputs), (Pts{{5, 5}, {0, 12}, {0, 32}}));
}

TEST_F(DiagKindsTest, LayoutKeepsTheMarkerTypes) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(2);
    t->FInputs[1].IOType = itArrow;
    t->SetInPosEx(-1, -1, 0, -1);
    EXPECT_EQ(Types(t->FInputs), (IOTypes{itDirect, itArrow}));
}

TEST_F(DiagKindsTest, AllInputsTypeSetsTheGivenRange) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    t->AllInputsType(itArrow, 1, -1);
    EXPECT_EQ(Types(t->FInputs), (IOTypes{itDirect, itArrow, itArrow}));
    t->AllInputsType(itInversion, 0, 0);
    EXPECT_EQ(Types(t->FInputs), (IOTypes{itInversion, itArrow, itArrow}));
    t->SetOutCount(3);
    t->AllOutputsType(itInversion, 1, 1);
    EXPECT_EQ(Types(t->FOutputs), (IOTypes{itDirect, itInversion, itDirect}));
}

TEST_F(DiagKindsTest, ResizingLaysTheMarkersOutAgain) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    t->SetOutCount(1);
    t->SetBounds(0, 0, 150, 100);
    // Body (9, 3, 142, 98): Y1 = 94, Step = 92 div 6 = 15.
    EXPECT_EQ(Points(t->FInputs), (Pts{{0, 17}, {0, 47}, {0, 77}}));
    EXPECT_EQ(Points(t->FOutputs), (Pts{{148, 48}}));
    t->SetSize({80, 100});
    EXPECT_EQ(Points(t->FOutputs), (Pts{{78, 48}}));
}

TEST_F(DiagKindsTest, ResizeModeOneKeepsTheMarkerPositions) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    t->SetOutCount(1);
    const TDotMarkers in = t->FInputs, out = t->FOutputs;
    t->SetResizeMode(1);
    t->SetBounds(0, 0, 300, 200);
    EXPECT_EQ(t->GetSize(), (TPoint{300, 200}));
    EXPECT_EQ(t->FInputs, in);
    EXPECT_EQ(t->FOutputs, out);
    t->SetResizeMode(0);
    t->SetBounds(0, 0, 300, 200);
    EXPECT_NE(t->FOutputs, out);
}

TEST_F(DiagKindsTest, DisabledMarkerRecalcKeepsTheMarkerPositions) {
    TDiagText* t = NewText(150, 50);
    t->SetInCount(3);
    const TDotMarkers in = t->FInputs;
    t->DisableRecalcMarkers = true;
    t->SetBounds(0, 0, 300, 200);
    EXPECT_EQ(t->FInputs, in);
}

TEST_F(DiagKindsTest, SetBoundsOfATextBlockFiresModifyBoundsAndEndsWithPaintEnabled) {
    TDiagText* t = NewText(150, 50);
    int fired = 0;
    t->SetOnModifyBounds([&](QObject* s) {
        EXPECT_EQ(s, t);
        ++fired;
    });
    t->SetBounds(5, 6, 70, 80);
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(t->DisablePaint);
    EXPECT_EQ(t->FInitRect, (TRect{5, 6, 69, 79}));
}

// --- defaults of the kinds

TEST_F(DiagKindsTest, TextBlockDefaults) {
    auto* t = new TDiagText(&List, 10, 20, 120, 60, QStringLiteral("Text"), 0, 0, true);
    EXPECT_EQ(t->GetDiagObjType(), doText);
    EXPECT_EQ(t->FMainColor, 0xC0C0C0u);
    EXPECT_EQ(t->FParentColor, clBtnFace);
    EXPECT_EQ(t->FBorderColor, 0x000000u);
    EXPECT_EQ(t->FPenWidth, 2);
    EXPECT_EQ(t->AlignHoriz, 0);
    EXPECT_EQ(t->AlignVert, 0);
    EXPECT_TRUE(t->FInputs.empty());
    EXPECT_TRUE(t->FOutputs.empty());
    EXPECT_TRUE(t->FRegions.empty());
    EXPECT_FALSE(t->DisablePaint);
    ASSERT_EQ(t->FLabels.size(), 1u);
    EXPECT_EQ(t->FLabels[0].Text, QStringLiteral("Text"));
    EXPECT_EQ(t->FLabels[0].Height, 26);
    EXPECT_EQ(t->GetLocation(), (TPoint{10, 20}));
    EXPECT_EQ(t->GetSize(), (TPoint{120, 60}));
    EXPECT_EQ(t->FInitRect, (TRect{10, 20, 119, 59}));
}

TEST_F(DiagKindsTest, TextBlockLabelIsAlignedInTheBody) {
    auto* t = new TDiagText(&List, 0, 0, 120, 60, QStringLiteral("Text"), 0, 0, true);
    // Body (9, 3, 112, 58): 103 x 55.
    const int tw = TextW(QStringLiteral("Text"), 26), th = TextH(26);
    const int dx = 103 > tw ? (103 - tw) / 2 : 0;
    const int dy = 55 > tw ? (55 - th) / 2 : 0;
    EXPECT_EQ(t->FLabels[0].Start, (TPoint{9 + dx, 3 + dy}));

    auto* a = new TDiagText(&List, 0, 0, 120, 60, QStringLiteral("Text"), 4, -5, true);
    EXPECT_EQ(a->FLabels[0].Start, (TPoint{9 + 4, 3 + 55 - 5 - th}));
}

TEST_F(DiagKindsTest, TextBlockWithEmptyTextHasNoLabel) {
    TDiagText* t = NewText(120, 60);
    EXPECT_TRUE(t->FLabels.empty());
}

TEST_F(DiagKindsTest, AlignedLabelKeeps32Characters) {
    TDiagText* t = NewText(120, 60);
    t->AddAlignedLabel(QString(40, QLatin1Char('x')));
    ASSERT_EQ(t->FLabels.size(), 1u);
    EXPECT_EQ(t->FLabels[0].Text, QString(32, QLatin1Char('x')));
    EXPECT_EQ(t->FLabels[0].Height, t->FTextHeight);
}

TEST_F(DiagKindsTest, AndGateDefaults) {
    auto* g = new TDiagAndLogic(&List, 40, 16, 60, 100, 0, 15, true);
    EXPECT_EQ(g->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(g->FMarkerSize, 6);
    EXPECT_EQ(g->FPenWidth, 2);
    EXPECT_FALSE(g->DisablePaint);
    ASSERT_EQ(g->FLabels.size(), 1u);
    EXPECT_EQ(g->FLabels[0].Text, QStringLiteral("&"));
    EXPECT_EQ(g->FLabels[0].Height, 26);
    // Body (9, 3, 52, 98): 43 wide; AVert 15 puts the title 15 below the body top.
    const int tw = TextW(QStringLiteral("&"), 26);
    EXPECT_EQ(g->FLabels[0].Start, (TPoint{9 + (43 > tw ? (43 - tw) / 2 : 0), 18}));
    // Span 2..94: two inputs with Step 23, one output with Step 46.
    EXPECT_EQ(g->FInputs, (TDotMarkers{{{0, 25}, itDirect, 6}, {{0, 71}, itDirect, 6}}));
    EXPECT_EQ(g->FOutputs, (TDotMarkers{{{58, 48}, itDirect, 6}}));
    EXPECT_EQ(g->GetInCount(), 2);
    EXPECT_EQ(g->GetOutCount(), 1);
}

TEST_F(DiagKindsTest, OrGateDefaults) {
    auto* g = new TDiagOrLogic(&List, 0, 0, 60, 100, 0, 15, true);
    EXPECT_EQ(g->GetDiagObjType(), doOrLogic);
    ASSERT_EQ(g->FLabels.size(), 1u);
    EXPECT_EQ(g->FLabels[0].Text, QStringLiteral("1"));
    EXPECT_EQ(g->FInputs.size(), 2u);
    EXPECT_EQ(g->FOutputs.size(), 1u);
    EXPECT_EQ(g->FMarkerSize, 6);
}

TEST_F(DiagKindsTest, PlainLogicBlockIsOfTheTextKind) {
    auto* g = new TDiagLogic(&List, 0, 0, 60, 100, 0, 15, true, QStringLiteral("=1"));
    EXPECT_EQ(g->GetDiagObjType(), doText);
    ASSERT_EQ(g->FLabels.size(), 1u);
    EXPECT_EQ(g->FLabels[0].Text, QStringLiteral("=1"));
    EXPECT_EQ(Types(g->FInputs), (IOTypes{itDirect, itDirect}));
    EXPECT_EQ(Types(g->FOutputs), (IOTypes{itDirect}));
}

// --- the RS flip-flop

TEST_F(DiagKindsTest, RSTriggerWithThreePiecesHasThreeLabels) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    EXPECT_EQ(r->GetDiagObjType(), doRSTrigger);
    EXPECT_EQ(r->GetTextValues(), QStringLiteral("R|S|T"));
    EXPECT_EQ(r->GetTextHeights(), QStringLiteral("26|26|26"));
    EXPECT_EQ(r->HorizRatio, 0.65);
    EXPECT_EQ(r->VertRatio, 0.5);
    EXPECT_EQ(r->AlignHoriz, 0);
    EXPECT_EQ(r->AlignVert, 15);
    EXPECT_EQ(r->FRegions.size(), 3u);
    EXPECT_EQ(r->FInputs.size(), 2u);
    EXPECT_EQ(r->FOutputs.size(), 1u);
    EXPECT_EQ(r->FMarkerSize, 6);
}

TEST_F(DiagKindsTest, RSTriggerRegionsAndSplitFor100By200) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    // Body (9, 3, 92, 198): W 83, H 195; 83 x 0.65 = 53.95 -> 54, 195 x 0.5 = 97.5 -> 98.
    EXPECT_EQ(r->FMainRect, (TRect{9, 3, 92, 198}));
    EXPECT_EQ(r->FMidHoriz, 54);
    EXPECT_EQ(r->FMidVert, 98);
    EXPECT_EQ(r->FRegions[0].R, (TRect{9, 3, 63, 101}));
    EXPECT_EQ(r->FRegions[1].R, (TRect{9, 101, 63, 197}));
    // The right part ends at W - 1 = 82, not at the body's right.
    EXPECT_EQ(r->FRegions[2].R, (TRect{63, 3, 82, 197}));
    for (const auto& g : r->FRegions) {
        EXPECT_EQ(g.QHoriz, 0.5);
        EXPECT_EQ(g.QVert, 0.2);
    }
}

TEST_F(DiagKindsTest, RSTriggerSplitRoundsHalfToEven) {
    // Body (9, 3, 92, 196): H 193, 193 x 0.5 = 96.5 -> 96.
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 198, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    EXPECT_EQ(r->FMidVert, 96);
    EXPECT_EQ(r->FRegions[0].R, (TRect{9, 3, 63, 99}));
    EXPECT_EQ(r->FRegions[1].R, (TRect{9, 99, 63, 195}));
    // Body 51 wide: 51 x 0.5 = 25.5 -> 26.
    auto* s = new TDiagRSTrigger(&List, 0, 0, 68, 100, 0.5, 0.5, true, QStringLiteral("R|S|T"));
    EXPECT_EQ(s->FMainRect.Width(), 51);
    EXPECT_EQ(s->FMidHoriz, 26);
}

TEST_F(DiagKindsTest, RSTriggerLabelsArePlacedInTheirRegions) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    const int th = TextH(26);
    const QString texts[] = {QStringLiteral("R"), QStringLiteral("S"), QStringLiteral("T")};
    for (int i = 0; i < 3; ++i) {
        const TRect g = r->FRegions[size_t(i)].R;
        const int tw = TextW(texts[i], 26);
        const TPoint want{g.Left + RoundHalfEven((g.Width() - tw) * 0.5),
                          g.Top + RoundHalfEven((g.Height() - th) * 0.2)};
        EXPECT_EQ(r->FLabels[size_t(i)].Start, want) << "label " << i;
    }
}

TEST_F(DiagKindsTest, RSTriggerWithTwoPiecesHasTwoLabelsAndTheThirdRegionPlacesNone) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("A|B"));
    ASSERT_EQ(r->FLabels.size(), 2u);
    EXPECT_EQ(r->GetTextValues(), QStringLiteral("A|B"));
    EXPECT_EQ(r->FRegions.size(), 3u);
    const int th = TextH(26);
    const TRect g = r->FRegions[1].R;
    EXPECT_EQ(r->FLabels[1].Start,
              (TPoint{g.Left + RoundHalfEven((g.Width() - TextW(QStringLiteral("B"), 26)) * 0.5),
                      g.Top + RoundHalfEven((g.Height() - th) * 0.2)}));
}

TEST_F(DiagKindsTest, RSTriggerWithEmptyTextHasNoLabels) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QString());
    EXPECT_TRUE(r->FLabels.empty());
    EXPECT_EQ(r->FRegions.size(), 3u);
}

TEST_F(DiagKindsTest, RSTriggerRegionsFollowAResize) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    r->SetBounds(0, 0, 120, 100);
    // Body (9, 3, 112, 98): W 103 -> 66.95 -> 67, H 95 -> 47.5 -> 48.
    EXPECT_EQ(r->FMidHoriz, 67);
    EXPECT_EQ(r->FMidVert, 48);
    EXPECT_EQ(r->FRegions[0].R, (TRect{9, 3, 76, 51}));
    EXPECT_EQ(r->FRegions[1].R, (TRect{9, 51, 76, 97}));
    EXPECT_EQ(r->FRegions[2].R, (TRect{76, 3, 102, 97}));
    EXPECT_EQ(r->FRegions.size(), 3u);
}

TEST_F(DiagKindsTest, DisabledRegionBuildingKeepsTheRegions) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 100, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    r->DisableMakeRegions = true;
    r->SetBounds(0, 0, 120, 100);
    EXPECT_EQ(r->FRegions[2].R, (TRect{63, 3, 82, 197}));
    EXPECT_EQ(r->FMidHoriz, 54);
}

TEST_F(DiagKindsTest, RSTriggerWithoutBodyMakesNoRegions) {
    auto* r = new TDiagRSTrigger(&List, 0, 0, 18, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    // Frame (1, 1, 18, 200), body 9..10: one pixel wide, still a body.
    EXPECT_EQ(r->FRegions.size(), 3u);
    auto* z = new TDiagRSTrigger(&List, 0, 0, 17, 200, 0.65, 0.5, true, QStringLiteral("R|S|T"));
    EXPECT_TRUE(z->FRegions.empty());
    EXPECT_EQ(z->FMidHoriz, 0);
}
