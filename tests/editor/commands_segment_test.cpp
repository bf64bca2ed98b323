// The segment commands of the surface and the small prompts they use, driven through the
// scripted dialog service.

#include "commands_test_util.h"

#include "velDiagEdit/editor/diag_messages.h"

using namespace vde;
using namespace vde::test;

namespace {

class SegmentCommands : public CommandsFixture {
protected:
    TDiagConnection* first = nullptr;  // (20,20) right to (120,20), down to (120,120)
    TDiagConnection* second = nullptr; // (20,200) right to (300,200)

    void SetUp() override {
        CommandsFixture::SetUp();
        first = Wire(*dc->ConList, {{20, 20}, {120, 20}, {120, 120}});
        second = Wire(*dc->ConList, {{20, 200}, {300, 200}});
    }
};

} // namespace

// ---- the prompts ------------------------------------------------------------------------------

TEST_F(SegmentCommands, ShowRectParamsShowsTheFourSidesInAnInputBoxAndDropsTheAnswer) {
    dialogs.Expect(TDialogAnswer::Box(QStringLiteral("1,1,1,1")));
    ShowRectParams(TRect{4, 7, -1, 30}, QStringLiteral("Some Rect"));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("InputBox \"Some Rect\" \"Left, Top, Right, Bottom\" \"4,7,-1,30\""));
}

TEST_F(SegmentCommands, SetRectParamsOnOkReadsTheFourNumbersBackBlanksAllowed) {
    TRect r{10, 20, 30, 40};
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral(" 1, 2 ,3,4")));
    EXPECT_TRUE(SetRectParams(r, QStringLiteral("Bounds")));
    EXPECT_EQ(r, (TRect{1, 2, 3, 4}));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("InputQuery \"Bounds\" \"Left, Top, Right, Bottom\" \"10,20,30,40\""));
}

TEST_F(SegmentCommands, SetRectParamsWithTwoNumbersKeepsRightAndBottom) {
    TRect r{10, 20, 30, 40};
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,6")));
    EXPECT_TRUE(SetRectParams(r, QStringLiteral("Bounds")));
    EXPECT_EQ(r, (TRect{5, 6, 30, 40}));
}

TEST_F(SegmentCommands, SetRectParamsCancelledIsFalseAndLeavesTheRectangle) {
    TRect r{10, 20, 30, 40};
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    EXPECT_FALSE(SetRectParams(r, QStringLiteral("Bounds")));
    EXPECT_EQ(r, (TRect{10, 20, 30, 40}));
}

TEST_F(SegmentCommands, SetRectParamsWithABadNumberRaisesTheConversionErrorAndLeavesTheRectangle) {
    TRect r{10, 20, 30, 40};
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("1,2,x,4")));
    EXPECT_THROW(SetRectParams(r, QStringLiteral("Bounds")), EConvertError);
    EXPECT_EQ(r, (TRect{10, 20, 30, 40}));
}

TEST_F(SegmentCommands, ErrorMessageDlgIsAnErrorMessageWithItsTextAndGivesOk) {
    dialogs.Expect(TDialogAnswer::Error());
    EXPECT_EQ(ErrorMessageDlg(QStringLiteral("Something is wrong")), mrOk);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Kind, dkErrorMessageDlg);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("Something is wrong"));
}

TEST_F(SegmentCommands, QueryMessageDlgIsTrueExactlyWhenYesWasPressed) {
    dialogs.Expect(TDialogAnswer::Question(true)).Expect(TDialogAnswer::Question(false));
    EXPECT_TRUE(QueryMessageDlg(QStringLiteral("Go on?"), QStringLiteral("Title")));
    EXPECT_FALSE(QueryMessageDlg(QStringLiteral("Go on?"), QStringLiteral("Title")));
    EXPECT_EQ(LastAsked(), QStringLiteral("QueryMessageDlg \"Go on?\" \"Title\""));
}

// ---- showing the selected segment -------------------------------------------------------------

TEST_F(SegmentCommands, ShowSegmentIndexShowsOneCommaTwoForTheSecondSegmentOfTheFirstConnection) {
    // A click two pixels right of the vertical segment of the first wire.
    dc->SelectBestSegment({122, 70});
    ASSERT_EQ(dc->SelInfo, LR(1, 2));
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Box(QStringLiteral("2,1")));
    EXPECT_FALSE(Invalidates([&] { dc->ShowSegmentIndex(); }));
    EXPECT_EQ(LastAsked(), QStringLiteral("InputBox \"Segment Index\" \"Con,Idx\" \"1,2\""));
    // What was typed into the box is not used.
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, ShowSegmentIndexWithNoSegmentSelectedSaysSo) {
    dialogs.Expect(TDialogAnswer::Message());
    dc->ShowSegmentIndex();
    EXPECT_EQ(LastAsked(), QStringLiteral("ShowMessage \"No any segment selected\""));
}

TEST_F(SegmentCommands, ShowSegmentRectShowsTheSegmentsRectangleWithoutMargin) {
    dc->SelInfo = LR(1, 2);
    dialogs.Expect(TDialogAnswer::Box(QString()));
    dc->ShowSegmentRect();
    EXPECT_EQ(LastAsked(),
              QStringLiteral(
                  "InputBox \"Segment Rect\" \"Left, Top, Right, Bottom\" \"120,20,120,120\""));
}

TEST_F(SegmentCommands, ShowSegmentRectOfAnAddressTheListDoesNotKnowShowsMinusOnes) {
    dc->SelInfo = LR(3, 1);
    dialogs.Expect(TDialogAnswer::Box(QString()));
    dc->ShowSegmentRect();
    EXPECT_EQ(
        LastAsked(),
        QStringLiteral("InputBox \"Segment Rect\" \"Left, Top, Right, Bottom\" \"-1,-1,-1,-1\""));
}

TEST_F(SegmentCommands, ShowSegmentRectWithNoSegmentSelectedSaysSo) {
    dialogs.Expect(TDialogAnswer::Message());
    dc->ShowSegmentRect();
    EXPECT_EQ(LastAsked(), QStringLiteral("ShowMessage \"No any segment selected\""));
}

// ---- editing a segment ------------------------------------------------------------------------

TEST_F(SegmentCommands, EditSegmentShows135DegreesForDirection3AndStoresDirection2For100Degrees) {
    // Down and to the left: 30 left, 30 down, direction 3 (three 45-degree steps from right),
    // 42 pixels long (42.43 rounded).
    auto* w = Wire(*dc->ConList, {{100, 100}, {70, 130}, {70, 200}});
    dc->SelInfo = LR(3, 1);
    dialogs.Expect(TDialogAnswer::Segment(40, 100));
    EXPECT_TRUE(Invalidates([&] { dc->EditSegmentOfConnection(); }));
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=42 Angle=135 OnlySize=0 Pos=-1,-1"));
    // 100 degrees is two whole steps: straight down, 40 pixels from the segment's start.
    EXPECT_EQ(w->FPoints, (TPoints{{100, 100}, {100, 140}, {70, 200}}));
    int size = 0, steps = 0;
    dc->ConList->EditSegmentOfConnection(dc->SelInfo, size, steps, true);
    EXPECT_EQ(steps, 2);
    EXPECT_EQ(size, 40);
}

TEST_F(SegmentCommands, EditSegmentCancelledChangesNothing) {
    dc->SelInfo = LR(1, 1);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSegmentParams));
    EXPECT_FALSE(Invalidates([&] { dc->EditSegmentOfConnection(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=0 Pos=-1,-1"));
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, EditSegmentWithNoSegmentSelectedAsksNothing) {
    const auto before = State();
    dc->EditSegmentOfConnection();
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_EQ(State(), before);
}

// ---- deleting and aligning --------------------------------------------------------------------

TEST_F(SegmentCommands, DeleteCurSegmentMergesTheSegmentAndSelectsTheOneBefore) {
    auto* w = Wire(*dc->ConList, {{10, 250}, {60, 250}, {60, 280}, {150, 280}});
    dc->SelInfo = LR(3, 3);
    EXPECT_TRUE(Invalidates([&] { dc->DeleteCurSegment(); }));
    EXPECT_EQ(w->FPoints, (TPoints{{10, 250}, {60, 250}, {60, 280}}));
    EXPECT_EQ(dc->SelInfo, LR(3, 2));
    EXPECT_EQ(w->GetSelectedIndex(), 1);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(SegmentCommands, DeleteCurSegmentOfATwoPointWireEmptiesItAndSelectsItsFirstSegment) {
    dc->SelInfo = LR(2, 1);
    dc->DeleteCurSegment();
    EXPECT_TRUE(second->FPoints.empty());
    // The wire reports segment 0 as the one to select next.
    EXPECT_EQ(dc->SelInfo, LR(2, 1));
}

TEST_F(SegmentCommands, DeleteCurSegmentWithNoSegmentSelectedChangesNothing) {
    const auto before = State();
    EXPECT_FALSE(Invalidates([&] { dc->DeleteCurSegment(); }));
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, AlignCurSegmentGivesTheSegmentsEndTheHeightOfTheSelectedMarker) {
    TDiagObject* gate = Place(doAndLogic, 250, 40);
    SelectMarker(gate, -1);
    auto* w = Wire(*dc->ConList, {{10, 250}, {60, 250}, {60, 280}, {150, 280}});
    dc->SelInfo = LR(3, 2);
    EXPECT_TRUE(Invalidates([&] { dc->AlignCurSegment(); }));
    // Point 2 (the end of segment 1) takes the marker's Y; its X stays.
    EXPECT_EQ(w->FPoints, (TPoints{{10, 250}, {60, 250}, {60, MarkerAt(gate, -1).Y}, {150, 280}}));
}

TEST_F(SegmentCommands, AlignCurSegmentWithoutABlockStraightensTheFirstSegment) {
    auto* w = Wire(*dc->ConList, {{10, 250}, {60, 262}, {60, 280}});
    dc->SelInfo = LR(3, 1);
    dc->AlignCurSegment();
    EXPECT_EQ(w->FPoints, (TPoints{{10, 250}, {60, 250}, {60, 280}}));
}

// ---- ending a connection ----------------------------------------------------------------------

namespace {
// A wire whose last segment runs down to eight pixels above the second wire's segment.
TDiagConnection* Falling(TDiagConnectList& cl) {
    return Wire(cl, {{100, 150}, {150, 150}, {150, 192}});
}
} // namespace

TEST_F(SegmentCommands, EndConnectionWithCrossStretchesTheLastSegmentOntoTheNearestWire) {
    auto* w = Falling(*dc->ConList);
    dc->SelInfo = LR(3, 1);
    EXPECT_TRUE(Invalidates([&] { dc->EndConnectionWithCross(); }));
    EXPECT_EQ(w->FPoints, (TPoints{{100, 150}, {150, 150}, {150, 200}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(2, 1));
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(SegmentCommands, EndConnectionWithCrossWithNoSegmentSelectedChangesNothing) {
    Falling(*dc->ConList);
    const auto before = State();
    dc->EndConnectionWithCross();
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, EndDiagConnectionAppendsTheSelectedMarkersPointAndEndsOnTheBlock) {
    TDiagObject* gate = Place(doAndLogic, 250, 40);
    SelectMarker(gate, -2);
    auto* w = Wire(*dc->ConList, {{100, 150}, {200, 150}, {200, 111}});
    dc->SelInfo = LR(3, 2);
    EXPECT_TRUE(Invalidates([&] { dc->EndDiagConnection(); }));
    const TPoint m = MarkerAt(gate, -2);
    EXPECT_EQ(w->FPoints, (TPoints{{100, 150}, {200, 150}, {200, 111}, m}));
    EXPECT_EQ(w->GetDstObject(), gate);
    EXPECT_EQ(w->FDstConIdx, -2);
    EXPECT_EQ(w->GetDstKey(), gate->GetObjKey());
}

TEST_F(SegmentCommands, EndDiagConnectionNeedsASelectedBlockWithASelectedMarker) {
    TDiagObject* gate = Place(doAndLogic, 250, 40);
    Wire(*dc->ConList, {{100, 150}, {200, 150}, {200, 111}});
    dc->SelInfo = LR(3, 2);
    dc->SelObj = gate; // not selected
    gate->SetSelMarkerIndex(-1);
    const auto before = State();
    dc->EndDiagConnection();
    EXPECT_EQ(State(), before);
    gate->SetSelected(true);
    gate->SetSelMarkerIndex(0); // selected, no marker
    const auto selected = State();
    dc->EndDiagConnection();
    EXPECT_EQ(State(), selected);
    dc->SelObj = nullptr;
    const auto noBlock = State();
    dc->EndDiagConnection();
    EXPECT_EQ(State(), noBlock);
}

TEST_F(SegmentCommands, EndConnectionWithSegmentProposesTheNearestSegmentAndEndsOnTheOneTyped) {
    auto* w = Falling(*dc->ConList);
    // A third wire, a horizontal segment further down, to end on instead.
    Wire(*dc->ConList, {{120, 260}, {220, 260}});
    dc->SelInfo = LR(3, 2);
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("4,1")));
    EXPECT_TRUE(Invalidates([&] { dc->EndConnectionWithSegment(); }));
    EXPECT_EQ(LastAsked(), QStringLiteral("InputQuery \"Segment Index\" \"Con,Idx\" \"2,1\""));
    EXPECT_EQ(w->FPoints, (TPoints{{100, 150}, {150, 150}, {150, 260}}));
    EXPECT_EQ(w->FDstCrossInfo, LR(4, 1));
}

TEST_F(SegmentCommands, EndConnectionWithSegmentCancelledChangesNothing) {
    Falling(*dc->ConList);
    dc->SelInfo = LR(3, 2);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    EXPECT_FALSE(Invalidates([&] { dc->EndConnectionWithSegment(); }));
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, EndConnectionWithSegmentOnADiagonalLastSegmentAsksNothing) {
    Wire(*dc->ConList, {{100, 150}, {150, 150}, {160, 190}});
    dc->SelInfo = LR(3, 1);
    const auto before = State();
    dc->EndConnectionWithSegment();
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_EQ(State(), before);
}

TEST_F(SegmentCommands, EndConnectionWithSegmentWithNoSegmentSelectedSaysSo) {
    dialogs.Expect(TDialogAnswer::Message());
    dc->EndConnectionWithSegment();
    EXPECT_EQ(LastAsked(), QStringLiteral("ShowMessage \"No any segment selected\""));
}

TEST_F(SegmentCommands, EndConnectionWithSegmentTypedGarbageRaisesTheConversionErrorUnchanged) {
    Falling(*dc->ConList);
    dc->SelInfo = LR(3, 2);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("2;1")));
    EXPECT_THROW(dc->EndConnectionWithSegment(), EConvertError);
    EXPECT_EQ(State(), before);
}
