// The block core: marker addressing, bounds, rectangles, labels and their text forms,
// alignment and selection.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/platform/errors.h"

#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class DiagObjectTest : public BlockListTest {
protected:
    // A block at (100, 50), 60 x 60, with inputs at (0, 10) and (0, 30) and an output at (59, 20).
    TDiagObject* MarkedBlock() {
        TDiagObject* b = NewBase(100, 50, 60, 60);
        b->FInputs = {{{0, 10}, itDirect, 4}, {{0, 30}, itInversion, 5}};
        b->FOutputs = {{{59, 20}, itArrow, 6}};
        return b;
    }
};

} // namespace

// --- marker addressing

TEST_F(DiagObjectTest, MarkersPtrPicksTheArrayBySignAndChecksTheLength) {
    TDiagObject* b = MarkedBlock();
    EXPECT_EQ(b->GetMarkersPtr(-1), &b->FInputs);
    EXPECT_EQ(b->GetMarkersPtr(-2), &b->FInputs);
    EXPECT_EQ(b->GetMarkersPtr(1), &b->FOutputs);
    EXPECT_EQ(b->GetMarkersPtr(0), nullptr);
    EXPECT_EQ(b->GetMarkersPtr(-3), nullptr);
    EXPECT_EQ(b->GetMarkersPtr(2), nullptr);
}

TEST_F(DiagObjectTest, ConPointOfIndexZeroIsFalse) {
    TDiagObject* b = MarkedBlock();
    TPoint p;
    EXPECT_FALSE(b->GetConPoint(0, p, true));
    EXPECT_FALSE(b->GetConPoint(0, p, false));
}

TEST_F(DiagObjectTest, ConPointOfMissingInputIsFalse) {
    TDiagObject* b = MarkedBlock();
    ASSERT_EQ(b->FInputs.size(), 2u);
    TPoint p;
    EXPECT_FALSE(b->GetConPoint(-3, p, true));
    EXPECT_FALSE(b->GetConPoint(2, p, true));
    EXPECT_TRUE(b->GetConPoint(-2, p, true));
    EXPECT_TRUE(b->GetConPoint(1, p, true));
}

TEST_F(DiagObjectTest, ConPointMovesOntoTheBodyEdgeWithMainRect) {
    TDiagObject* b = NewBase(100, 50, 60, 40);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    b->FOutputs = {{{59, 10}, itDirect, 0}};
    ASSERT_EQ(b->FDeltaWidth, 8);
    TPoint p;
    ASSERT_TRUE(b->GetConPoint(-1, p, true));
    EXPECT_EQ(p, (TPoint{108, 70}));
    ASSERT_TRUE(b->GetConPoint(-1, p, false));
    EXPECT_EQ(p, (TPoint{100, 70}));
    // An output's point moves left by the lead length.
    ASSERT_TRUE(b->GetConPoint(1, p, true));
    EXPECT_EQ(p, (TPoint{151, 60}));
    ASSERT_TRUE(b->GetConPoint(1, p, false));
    EXPECT_EQ(p, (TPoint{159, 60}));
}

TEST_F(DiagObjectTest, ConPointFollowsDeltaWidthAndLocation) {
    TDiagObject* b = NewBase(100, 50, 60, 40);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    b->SetDeltaWidth(12);
    EXPECT_EQ(b->GetDeltaWidth(), 12);
    b->SetLocation({10, 5});
    TPoint p;
    ASSERT_TRUE(b->GetConPoint(-1, p, true));
    EXPECT_EQ(p, (TPoint{22, 25}));
}

TEST_F(DiagObjectTest, NearestMarkerTieGoesToTheHighestNumberedInput) {
    TDiagObject* b = MarkedBlock();
    // Connection points (body edge): input 1 (108, 60), input 2 (108, 80), output 1 (151, 70).
    // From (108, 70) the inputs are both 10 away; the output is 43 away.
    EXPECT_EQ(b->NearestMarkerIndex({108, 70}, 50.0), -2);
    // Output 1 moved to 10 away as well: still input 2, the first visited.
    b->FOutputs[0].P = {26, 20}; // point (118, 70)
    EXPECT_EQ(b->NearestMarkerIndex({108, 70}, 50.0), -2);
}

TEST_F(DiagObjectTest, NearestMarkerTakesTheClosestWithinMinDist) {
    TDiagObject* b = MarkedBlock();
    EXPECT_EQ(b->NearestMarkerIndex({108, 62}, 50.0), -1);
    EXPECT_EQ(b->NearestMarkerIndex({108, 78}, 50.0), -2);
    EXPECT_EQ(b->NearestMarkerIndex({150, 70}, 50.0), 1);
    // The bound is inclusive.
    EXPECT_EQ(b->NearestMarkerIndex({108, 62}, 2.0), -1);
    EXPECT_EQ(b->NearestMarkerIndex({108, 62}, 1.5), 0);
    EXPECT_EQ(b->NearestMarkerIndex({500, 500}, 50.0), 0);
}

TEST_F(DiagObjectTest, NearestMarkerOfBlockWithoutMarkersIsZero) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    EXPECT_EQ(b->NearestMarkerIndex({0, 0}, 1e9), 0);
}

TEST_F(DiagObjectTest, SelectNearestMarkerIgnoresMinDistAndFindsNothingElevenPixelsAway) {
    TDiagObject* b = NewBase(100, 50, 60, 40);
    b->FInputs = {{{0, 20}, itDirect, 0}}; // point (108, 70)
    EXPECT_EQ(b->SelectNearestMarker({119, 70}, true, 50.0), 0);
    EXPECT_EQ(b->GetSelMarkerIndex(), 0);
}

TEST_F(DiagObjectTest, SelectNearestMarkerFindsAMarkerTenPixelsAwayWhateverMinDist) {
    TDiagObject* b = NewBase(100, 50, 60, 40);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    EXPECT_EQ(b->SelectNearestMarker({118, 70}, false, 1.0), -1);
    EXPECT_EQ(b->GetSelMarkerIndex(), -1);
    b->SetSelMarkerIndex(0);
    EXPECT_EQ(b->SelectNearestMarker({108, 60}, true, 0.0), -1);
    EXPECT_EQ(b->GetSelMarkerIndex(), -1);
}

TEST_F(DiagObjectTest, SelectNearestMarkerMissKeepsTheSelection) {
    TDiagObject* b = MarkedBlock();
    b->SetSelMarkerIndex(1);
    EXPECT_EQ(b->SelectNearestMarker({400, 400}, true, 10.0), 0);
    EXPECT_EQ(b->GetSelMarkerIndex(), 1);
}

TEST_F(DiagObjectTest, SelectNearestMarkerWithNoPointClearsOnlyWhenUpdating) {
    TDiagObject* b = MarkedBlock();
    b->SetSelMarkerIndex(-2);
    EXPECT_EQ(b->SelectNearestMarker({-1, -1}, false, 10.0), 0);
    EXPECT_EQ(b->GetSelMarkerIndex(), -2);
    EXPECT_EQ(b->SelectNearestMarker({-1, -1}, true, 10.0), 0);
    EXPECT_EQ(b->GetSelMarkerIndex(), 0);
}

TEST_F(DiagObjectTest, SelectNearestMarkerTakesAnXOfMinusOneAsNoPoint) {
    // The input's connection point is exactly (-1, 70), yet X = -1 means "no point".
    TDiagObject* b = NewBase(-9, 50, 60, 40);
    b->FInputs = {{{0, 20}, itDirect, 0}};
    TPoint p;
    ASSERT_TRUE(b->GetConPoint(-1, p, true));
    ASSERT_EQ(p, (TPoint{-1, 70}));
    EXPECT_EQ(b->SelectNearestMarker({-1, 70}, false, 10.0), 0);
    EXPECT_EQ(b->GetSelMarkerIndex(), 0);
}

TEST_F(DiagObjectTest, SelMarkerSizeAndPosReadTheSelectedMarker) {
    TDiagObject* b = MarkedBlock();
    EXPECT_EQ(b->GetSelMarkerSize(), 0);
    EXPECT_EQ(b->GetSelMarkerPos(), 0);
    b->SetSelMarkerIndex(-2);
    EXPECT_EQ(b->GetSelMarkerSize(), 5);
    EXPECT_EQ(b->GetSelMarkerPos(), 30);
    b->SetSelMarkerSize(9);
    EXPECT_EQ(b->FInputs[1].Size, 9);
    b->SetSelMarkerIndex(1);
    EXPECT_EQ(b->GetSelMarkerSize(), 6);
    EXPECT_EQ(b->GetSelMarkerPos(), 20);
}

TEST_F(DiagObjectTest, SelMarkerSizeWithoutSelectionChangesNothing) {
    TDiagObject* b = MarkedBlock();
    const TDotMarkers in = b->FInputs, out = b->FOutputs;
    b->SetSelMarkerSize(9);
    b->SetSelMarkerIndex(-5); // no such input
    b->SetSelMarkerSize(9);
    EXPECT_EQ(b->GetSelMarkerSize(), 0);
    EXPECT_EQ(b->FInputs, in);
    EXPECT_EQ(b->FOutputs, out);
}

TEST_F(DiagObjectTest, SettingSelMarkerPosFiresModifyMarkers) {
    TDiagObject* b = MarkedBlock();
    std::vector<QObject*> senders;
    std::vector<int> seenY;
    b->SetOnModifyMarkers([&](QObject* s) {
        senders.push_back(s);
        seenY.push_back(b->FInputs[0].P.Y);
    });
    b->SetSelMarkerIndex(-1);
    b->SetSelMarkerPos(33);
    EXPECT_EQ(b->FInputs[0].P.Y, 33);
    EXPECT_EQ(b->FInputs[0].P.X, 0);
    ASSERT_EQ(senders.size(), 1u);
    EXPECT_EQ(senders[0], b);
    // The marker had moved when the event came.
    EXPECT_EQ(seenY[0], 33);
}

TEST_F(DiagObjectTest, SelMarkerPosWithoutSelectionFiresNothing) {
    TDiagObject* b = MarkedBlock();
    int fired = 0;
    b->SetOnModifyMarkers([&](QObject*) { ++fired; });
    b->SetSelMarkerPos(33);
    EXPECT_EQ(fired, 0);
    EXPECT_EQ(b->FInputs[0].P.Y, 10);
}

// --- bounds

TEST_F(DiagObjectTest, SetBoundsKeepsSizesLessOneInInitRect) {
    TDiagObject* b = NewBase(0, 0, 10, 10);
    b->SetBounds(10, 20, 150, 50);
    EXPECT_EQ(b->FInitRect, (TRect{10, 20, 149, 49}));
    EXPECT_EQ(b->GetLocation(), (TPoint{10, 20}));
    EXPECT_EQ(b->GetSize(), (TPoint{150, 50}));
    EXPECT_EQ(b->geometry(), QRect(10, 20, 150, 50));
}

TEST_F(DiagObjectTest, ModifyBoundsFiresOnEveryBoundsChange) {
    TDiagObject* b = NewBase(40, 16, 150, 50);
    QStringList log;
    b->SetOnModifyBounds([&](QObject* s) {
        EXPECT_EQ(s, b);
        log << QStringLiteral("%1,%2 %3x%4")
                   .arg(b->x())
                   .arg(b->y())
                   .arg(b->width())
                   .arg(b->height());
    });
    b->SetBounds(1, 2, 30, 40);
    b->SetLocation({5, 6});
    b->SetSize({70, 80});
    b->ShiftByDelta({3, -2});
    EXPECT_EQ(log, QStringList({"1,2 30x40", "5,6 30x40", "5,6 70x80", "8,4 70x80"}));
    EXPECT_EQ(b->FInitRect, (TRect{8, 4, 69, 79}));
}

TEST_F(DiagObjectTest, BoundsTextIsLeftTopRightBottom) {
    TDiagObject* b = NewBase(40, 16, 150, 50);
    EXPECT_EQ(b->SaveBoundsToStr(), QStringLiteral("40,16,190,66"));
    EXPECT_EQ(b->BoundsRect(), (TRect{40, 16, 190, 66}));
}

TEST_F(DiagObjectTest, LoadBoundsFromStrSetsTheRectangle) {
    TDiagObject* b = NewBase(40, 16, 150, 50);
    int fired = 0;
    b->SetOnModifyBounds([&](QObject*) { ++fired; });
    b->LoadBoundsFromStr(QStringLiteral(" 5, 6 ,105,86"));
    EXPECT_EQ(b->GetLocation(), (TPoint{5, 6}));
    EXPECT_EQ(b->GetSize(), (TPoint{100, 80}));
    EXPECT_EQ(b->FInitRect, (TRect{5, 6, 99, 79}));
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(b->SaveBoundsToStr(), QStringLiteral("5,6,105,86"));
}

TEST_F(DiagObjectTest, LoadBoundsFromBadTextIsAConversionError) {
    TDiagObject* b = NewBase(40, 16, 150, 50);
    EXPECT_THROW(b->LoadBoundsFromStr(QStringLiteral("1,2,x,4")), EConvertError);
}

// --- rectangles

TEST_F(DiagObjectTest, ShapeRectForPenWidthsZeroToThree) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    const std::pair<int, TRect> cases[] = {{0, {0, 0, 60, 40}},
                                           {1, {0, 0, 60, 40}},
                                           {2, {1, 1, 60, 40}},
                                           {3, {1, 1, 59, 39}},
                                           {4, {2, 2, 59, 39}}};
    for (const auto& [w, r] : cases) {
        b->FPenWidth = w;
        EXPECT_EQ(b->GetShapeRect(), r) << "pen width " << w;
    }
}

TEST_F(DiagObjectTest, MainRectIsTheShapeInsetByTheDeltas) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    EXPECT_EQ(b->GetMainRect(), (TRect{8, 2, 52, 38}));
    EXPECT_TRUE(b->SetMainRect());
    EXPECT_EQ(b->FMainRect, (TRect{8, 2, 52, 38}));
    b->FDeltaShift = 5;
    b->FDeltaWidth = 3;
    EXPECT_EQ(b->ShapeToMainRect({10, 20, 30, 40}), (TRect{13, 25, 27, 35}));
}

TEST_F(DiagObjectTest, SetMainRectFailsWhenTheBodyHasNoArea) {
    TDiagObject* narrow = NewBase(0, 0, 16, 40); // body (8, 2, 8, 38)
    EXPECT_FALSE(narrow->SetMainRect());
    EXPECT_EQ(narrow->FMainRect, (TRect{8, 2, 8, 38}));
    TDiagObject* flat = NewBase(0, 0, 60, 4); // body (8, 2, 52, 2)
    EXPECT_FALSE(flat->SetMainRect());
    TDiagObject* small = NewBase(0, 0, 17, 5); // body (8, 2, 9, 3)
    EXPECT_TRUE(small->SetMainRect());
}

// --- labels

TEST_F(DiagObjectTest, AddLabelKeeps32CharactersOfTheText) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    const QString forty = QStringLiteral("0123456789abcdefghijklmnopqrstuvwxyzABCD");
    ASSERT_EQ(forty.size(), 40);
    b->AddLabel({3, 4}, forty, 12, false);
    ASSERT_EQ(b->FLabels.size(), 1u);
    EXPECT_EQ(b->FLabels[0].Text, forty.left(32));
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{3, 4}));
    EXPECT_EQ(b->FLabels[0].Height, 12);
}

TEST_F(DiagObjectTest, LabelCutNeverSplitsASurrogatePair) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    const QString text = QString(31, QLatin1Char('a')) + QString::fromUtf8("\xF0\x9F\x98\x80") +
                         QStringLiteral("zz");
    ASSERT_EQ(text.size(), 35);
    b->AddLabel({0, 0}, text, 0, false);
    EXPECT_EQ(b->FLabels[0].Text, QString(31, QLatin1Char('a')));
}

TEST_F(DiagObjectTest, LabelHeightZeroUsesTheBlockTextHeight) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AddLabel({0, 0}, QStringLiteral("a"), 0, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 14, false);
    EXPECT_EQ(b->GetTextHeight(), 26);
    EXPECT_EQ(b->GetLabelHeight(b->FLabels[0]), 26);
    EXPECT_EQ(b->GetLabelHeight(b->FLabels[1]), 14);
}

TEST_F(DiagObjectTest, SetTextHeightWithTwoLabelsChangesNoLabelHeight) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AddLabel({0, 0}, QStringLiteral("a"), 10, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 0, false);
    b->SetTextHeight(30);
    EXPECT_EQ(b->GetTextHeight(), 30);
    EXPECT_EQ(b->FLabels[0].Height, 10);
    EXPECT_EQ(b->FLabels[1].Height, 0);
    EXPECT_EQ(b->GetLabelHeight(b->FLabels[1]), 30);
}

TEST_F(DiagObjectTest, SetTextHeightWithOneLabelChangesItsHeight) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AddLabel({0, 0}, QStringLiteral("a"), 10, false);
    b->SetTextHeight(30);
    EXPECT_EQ(b->GetTextHeight(), 30);
    EXPECT_EQ(b->FLabels[0].Height, 30);
}

TEST_F(DiagObjectTest, SetTextHeightWithoutLabelsOnlyStoresIt) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->SetTextHeight(17);
    EXPECT_EQ(b->GetTextHeight(), 17);
    EXPECT_TRUE(b->FLabels.empty());
}

TEST_F(DiagObjectTest, TextValuesJoinTheLabelTextsWithBars) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    EXPECT_EQ(b->GetTextValues(), QString());
    b->AddLabel({0, 0}, QStringLiteral("R"), 0, false);
    b->AddLabel({0, 0}, QString(), 0, false);
    b->AddLabel({0, 0}, QStringLiteral("T x"), 0, false);
    EXPECT_EQ(b->GetTextValues(), QStringLiteral("R||T x"));
}

TEST_F(DiagObjectTest, SetTextValuesFillsLabelsInOrderAndIgnoresExtraPieces) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AddLabel({0, 0}, QStringLiteral("a"), 0, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 0, false);
    b->SetTextValues(QStringLiteral("X|Y|Z"));
    ASSERT_EQ(b->FLabels.size(), 2u);
    EXPECT_EQ(b->GetTextValues(), QStringLiteral("X|Y"));
    // Fewer pieces than labels: the others keep their text.
    b->SetTextValues(QStringLiteral("Q"));
    EXPECT_EQ(b->GetTextValues(), QStringLiteral("Q|Y"));
}

TEST_F(DiagObjectTest, FortyCharacterTextValueKeeps32) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AddLabel({0, 0}, QStringLiteral("a"), 0, false);
    const QString forty(40, QLatin1Char('w'));
    b->SetTextValues(forty);
    EXPECT_EQ(b->FLabels[0].Text.size(), 32);
    EXPECT_EQ(b->GetTextValues(), QString(32, QLatin1Char('w')));
}

TEST_F(DiagObjectTest, SetTextValuesRealignsTheLabels) {
    TDiagObject* b = NewBase(0, 0, 200, 100); // body (8, 2, 192, 98)
    b->AlignHoriz = 3;
    b->AlignVert = 4;
    b->AddLabel({50, 50}, QStringLiteral("a"), 0, false);
    b->SetTextValues(QStringLiteral("W"));
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{11, 6}));
}

TEST_F(DiagObjectTest, TextHeightsAreTheLabelHeightsJoinedWithBars) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    EXPECT_EQ(b->GetTextHeights(), QString());
    b->AddLabel({0, 0}, QStringLiteral("a"), 26, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 0, false);
    b->AddLabel({0, 0}, QStringLiteral("c"), 255, false);
    EXPECT_EQ(b->GetTextHeights(), QStringLiteral("26|0|255"));
}

TEST_F(DiagObjectTest, SetTextHeightsSetsLabelsInOrderAndIgnoresExtraPieces) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AddLabel({0, 0}, QStringLiteral("a"), 26, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 0, false);
    b->SetTextHeights(QStringLiteral("12|14|99"));
    EXPECT_EQ(b->GetTextHeights(), QStringLiteral("12|14"));
    b->SetTextHeights(QStringLiteral("7"));
    EXPECT_EQ(b->GetTextHeights(), QStringLiteral("7|14"));
}

TEST_F(DiagObjectTest, SetTextHeightsRealignsTheLabels) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AlignHoriz = 2;
    b->AlignVert = 3;
    b->AddLabel({40, 40}, QStringLiteral("a"), 26, false);
    b->SetTextHeights(QStringLiteral("12"));
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{10, 5}));
}

TEST_F(DiagObjectTest, TextHeightPieceThatIsNoNumberIsAConversionError) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AddLabel({0, 0}, QStringLiteral("a"), 26, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 26, false);
    EXPECT_THROW(b->SetTextHeights(QStringLiteral("12|x")), EConvertError);
    EXPECT_THROW(b->SetTextHeights(QStringLiteral("|12")), EConvertError);
    // The pieces are not trimmed: a trailing blank is no number.
    EXPECT_THROW(b->SetTextHeights(QStringLiteral("12 |13")), EConvertError);
}

TEST_F(DiagObjectTest, TextPosValuesAreTheLabelStartsJoinedWithBars) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    EXPECT_EQ(b->GetTextPosValues(), QString());
    b->AddLabel({5, 3}, QStringLiteral("a"), 0, false);
    b->AddLabel({5, 40}, QStringLiteral("b"), 0, false);
    EXPECT_EQ(b->GetTextPosValues(), QStringLiteral("5,3|5,40"));
}

TEST_F(DiagObjectTest, SetTextPosValuesSetsStartsWithoutRealigning) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AlignHoriz = 2;
    b->AlignVert = 3;
    b->AddLabel({5, 3}, QStringLiteral("a"), 0, false);
    b->AddLabel({5, 40}, QStringLiteral("b"), 0, false);
    b->SetTextPosValues(QStringLiteral("1,2|-3,400|7,7"));
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{1, 2}));
    EXPECT_EQ(b->FLabels[1].Start, (TPoint{-3, 400}));
    b->SetTextPosValues(QStringLiteral("9,8"));
    EXPECT_EQ(b->GetTextPosValues(), QStringLiteral("9,8|-3,400"));
}

TEST_F(DiagObjectTest, TextPosPieceThatIsNoPointIsAConversionError) {
    TDiagObject* b = NewBase(0, 0, 200, 100);
    b->AddLabel({5, 3}, QStringLiteral("a"), 0, false);
    EXPECT_THROW(b->SetTextPosValues(QStringLiteral("1,x")), EConvertError);
    EXPECT_THROW(b->SetTextPosValues(QStringLiteral("12")), EConvertError);
    EXPECT_THROW(b->SetTextPosValues(QStringLiteral("1, 2 ")), EConvertError);
}

// --- alignment

namespace {

const QString kWide = QStringLiteral("MMMMMMMM");
constexpr int kWideHeight = 20;

TDiagLabel WideLabel() {
    return {{0, 0}, kWide, uint8_t(kWideHeight)};
}

} // namespace

TEST_F(DiagObjectTest, AlignPositiveValuesAreOffsetsFromTheTopLeft) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AlignHoriz = 5;
    b->AlignVert = 7;
    TDiagLabel l = WideLabel();
    b->AlignLabelInRect({10, 20, 300, 200}, l);
    EXPECT_EQ(l.Start, (TPoint{15, 27}));
}

TEST_F(DiagObjectTest, AlignNegativeValuesMeasureFromTheRightAndBottom) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AlignHoriz = -4;
    b->AlignVert = -6;
    TDiagLabel l = WideLabel();
    b->AlignLabelInRect({10, 20, 300, 200}, l);
    const int tw = TextW(kWide, kWideHeight), th = TextH(kWideHeight);
    EXPECT_EQ(l.Start, (TPoint{10 + 290 - 4 - tw, 20 + 180 - 6 - th}));
}

TEST_F(DiagObjectTest, AlignZeroCentresHorizontallyOnlyWhenWiderThanTheText) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AlignVert = 1;
    const int tw = TextW(kWide, kWideHeight);
    TDiagLabel l = WideLabel();
    b->AlignLabelInRect({10, 0, 10 + tw + 11, 100}, l);
    EXPECT_EQ(l.Start.X, 10 + 5); // 11 div 2
    b->AlignLabelInRect({10, 0, 10 + tw, 100}, l);
    EXPECT_EQ(l.Start.X, 10);
    b->AlignLabelInRect({10, 0, 10 + tw - 7, 100}, l);
    EXPECT_EQ(l.Start.X, 10);
}

TEST_F(DiagObjectTest, AlignZeroCentresVerticallyOnlyWhenTallerThanTheTextWidth) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AlignHoriz = 1;
    const int tw = TextW(kWide, kWideHeight), th = TextH(kWideHeight);
    ASSERT_GT(tw, th + 10) << "the text must be much wider than high for this case";
    TDiagLabel l = WideLabel();
    // Higher than the text, but not higher than its width: no centring.
    b->AlignLabelInRect({0, 30, 500, 30 + th + 10}, l);
    EXPECT_EQ(l.Start.Y, 30);
    b->AlignLabelInRect({0, 30, 500, 30 + tw}, l);
    EXPECT_EQ(l.Start.Y, 30);
    // One pixel higher than the text's width: centred.
    b->AlignLabelInRect({0, 30, 500, 30 + tw + 1}, l);
    EXPECT_EQ(l.Start.Y, 30 + (tw + 1 - th) / 2);
}

TEST_F(DiagObjectTest, AlignMeasuresWithTheBlockTextHeightForHeightZero) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->AlignHoriz = -1;
    b->AlignVert = -1;
    b->FTextHeight = 40;
    TDiagLabel l{{0, 0}, QStringLiteral("Ab"), 0};
    b->AlignLabelInRect({0, 0, 300, 200}, l);
    EXPECT_EQ(l.Start, (TPoint{299 - TextW(l.Text, 40), 199 - TextH(40)}));
}

TEST_F(DiagObjectTest, AlignFloatRoundsHalfToEven) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    const int tw = TextW(kWide, kWideHeight), th = TextH(kWideHeight);
    TDiagLabel l = WideLabel();
    b->AlignLabelInRectFloat({10, 20, 10 + tw + 5, 20 + th + 3}, l, 0.5, 0.5);
    EXPECT_EQ(l.Start, (TPoint{10 + 2, 20 + 2})); // 2.5 -> 2, 1.5 -> 2
    b->AlignLabelInRectFloat({10, 20, 10 + tw + 7, 20 + th + 5}, l, 0.5, 0.5);
    EXPECT_EQ(l.Start, (TPoint{10 + 4, 20 + 2})); // 3.5 -> 4, 2.5 -> 2
    b->AlignLabelInRectFloat({10, 20, 10 + tw + 10, 20 + th + 10}, l, 0.2, 0.65);
    EXPECT_EQ(l.Start, (TPoint{10 + 2, 20 + 6})); // 2.0, 6.5 -> 6
}

TEST_F(DiagObjectTest, AlignFloatGivesNegativeOffsetsForTextLargerThanTheRect) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    const int tw = TextW(kWide, kWideHeight), th = TextH(kWideHeight);
    TDiagLabel l = WideLabel();
    b->AlignLabelInRectFloat({10, 20, 10 + tw - 10, 20 + th - 3}, l, 0.5, 1.0);
    EXPECT_EQ(l.Start, (TPoint{10 - 5, 20 - 3}));
    b->AlignLabelInRectFloat({10, 20, 10 + tw - 9, 20 + th - 5}, l, 0.5, 0.5);
    EXPECT_EQ(l.Start, (TPoint{10 - 4, 20 - 2})); // -4.5 -> -4, -2.5 -> -2
}

TEST_F(DiagObjectTest, ChangeAlignmentAlignsInTheBody) {
    TDiagObject* b = NewBase(0, 0, 200, 100); // body (8, 2, 192, 98)
    b->AlignHoriz = 3;
    b->AlignVert = 4;
    TDiagLabel l = WideLabel();
    b->ChangeAlignment(l);
    EXPECT_EQ(l.Start, (TPoint{11, 6}));
}

TEST_F(DiagObjectTest, ChangeAlignmentWithoutBodyLeavesTheLabel) {
    TDiagObject* b = NewBase(0, 0, 16, 100);
    b->AlignHoriz = 3;
    TDiagLabel l = WideLabel();
    l.Start = {70, 80};
    b->ChangeAlignment(l);
    EXPECT_EQ(l.Start, (TPoint{70, 80}));
}

TEST_F(DiagObjectTest, UpdateAlignmentsUsesRegionsThenTheBody) {
    TDiagObject* b = NewBase(0, 0, 300, 200); // body (8, 2, 292, 198)
    b->AlignHoriz = 3;
    b->AlignVert = 4;
    b->AddLabel({0, 0}, kWide, kWideHeight, false);
    b->AddLabel({0, 0}, QStringLiteral("b"), 0, false);
    const int tw = TextW(kWide, kWideHeight), th = TextH(kWideHeight);
    b->FRegions = {{{20, 30, 20 + tw + 40, 30 + th + 20}, 0.25, 0.5}};
    b->UpdateAlignments();
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{20 + 10, 30 + 10}));
    EXPECT_EQ(b->FLabels[1].Start, (TPoint{11, 6}));
}

TEST_F(DiagObjectTest, UpdateAlignmentsWithoutBodyLeavesTheLabels) {
    TDiagObject* b = NewBase(0, 0, 300, 4);
    b->AlignHoriz = 3;
    b->AddLabel({70, 80}, QStringLiteral("a"), 0, false);
    b->UpdateAlignments();
    EXPECT_EQ(b->FLabels[0].Start, (TPoint{70, 80}));
}

// --- selection

TEST_F(DiagObjectTest, DeselectingClearsTheSelectedMarker) {
    TDiagObject* b = MarkedBlock();
    b->SetSelMarkerIndex(-1);
    b->SetSelected(true);
    EXPECT_TRUE(b->GetSelected());
    EXPECT_TRUE(b->GetVisibleBorder());
    EXPECT_EQ(b->GetSelMarkerIndex(), -1);
    b->SetSelected(false);
    EXPECT_FALSE(b->GetSelected());
    EXPECT_FALSE(b->GetVisibleBorder());
    EXPECT_EQ(b->GetSelMarkerIndex(), 0);
}

TEST_F(DiagObjectTest, VisibleBorderIsIndependentOfSelectionOnceSet) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    b->SetVisibleBorder(true);
    EXPECT_TRUE(b->GetVisibleBorder());
    EXPECT_FALSE(b->GetSelected());
    b->SetVisibleBorder(false);
    EXPECT_FALSE(b->GetVisibleBorder());
}

TEST_F(DiagObjectTest, ConstructorDefaults) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    EXPECT_EQ(b->FOwner, &List);
    EXPECT_EQ(b->parentWidget(), &Parent);
    EXPECT_EQ(b->FParentColor, clBtnFace);
    EXPECT_EQ(b->FMainColor, 0xC0C0C0u);
    EXPECT_EQ(b->FBorderColor, 0x0000FFu);
    EXPECT_EQ(b->FMarkerColor, 0xFF00FFu);
    EXPECT_EQ(b->FDeltaWidth, 8);
    EXPECT_EQ(b->FDeltaShift, 2);
    EXPECT_EQ(b->FPenWidth, 1);
    EXPECT_EQ(b->FTextHeight, 26);
    EXPECT_EQ(b->FSelMarkerIndex, 0);
    EXPECT_FALSE(b->FSelected);
    EXPECT_FALSE(b->FVisibleBorder);
    EXPECT_EQ(List.IndexOf(b), 0);

    auto* plain = new TDiagObject(&List, doText);
    EXPECT_EQ(plain->GetDiagObjType(), doText);
    EXPECT_EQ(List.IndexOf(plain), 1);
    EXPECT_EQ(plain->parentWidget(), &Parent);
}

TEST_F(DiagObjectTest, PenAndBrushAreTheCanvas) {
    TDiagObject* b = NewBase(0, 0, 60, 40);
    EXPECT_EQ(&b->GetPen(), &b->Canvas()->Pen);
    EXPECT_EQ(&b->GetBrush(), &b->Canvas()->Brush);
}
