// Building connections from block markers, and adding segments to the selected connection.

#include "commands_test_util.h"

using namespace vde;
using namespace vde::test;

namespace {

const QString kSeveral = QStringLiteral(
    "MessageDlg \"Add several connections\" Confirmation [Yes,No] Default=No Help=0");

class ConnectCommands : public CommandsFixture {
protected:
    TDiagObject* gate = nullptr; // AND gate at (50, 50): inputs -1, -2, output 1

    void SetUp() override {
        CommandsFixture::SetUp();
        gate = Place(doAndLogic, 50, 50);
    }

    // A text block with n inputs and n outputs.
    TDiagText* TextBlock(int x, int y, int n) {
        auto* t = Place<TDiagText>(doText, x, y);
        t->SetInCount(n);
        t->SetOutCount(n);
        return t;
    }

    // Where a new wire from the marker starts: one pixel inside the marker's outer end.
    static TPoint Start(const TDiagObject* b, int marker) {
        const TPoint m = MarkerAt(b, marker);
        return {m.X + (marker < 0 ? 1 : -1), m.Y};
    }

    static TPoint Off(TPoint p, int dx, int dy) { return {p.X + dx, p.Y + dy}; }

    // The markers, on their own side, that start a wire of the block.
    std::vector<int> Sources(const TDiagObject* b) const {
        std::vector<int> r;
        for (int i = 0; i < dc->ConList->Count(); ++i)
            if (dc->ConList->Items(i)->GetSrcObject() == b)
                r.push_back(dc->ConList->Items(i)->FSrcConIdx);
        return r;
    }
};

} // namespace

// ---- one connection ---------------------------------------------------------------------------

TEST_F(ConnectCommands, AddDiagConnectionOnAFreeMarkerSelectsSegmentOneOfTheNewConnection) {
    auto* old = Wire(*dc->ConList, {{200, 250}, {300, 250}});
    old->SetSelectedIndex(0);
    SelectMarker(gate, 1);
    bool added = false;
    EXPECT_TRUE(Invalidates([&] { added = dc->AddDiagConnection(30, true); }));
    EXPECT_TRUE(added);
    ASSERT_EQ(dc->ConList->Count(), 2);
    // The new connection is number 1 in the list: Hi is 2, and its first segment is Lo 1.
    EXPECT_EQ(dc->SelInfo, LR(2, 1));
    TDiagConnection* c = dc->ConList->Items(1);
    EXPECT_EQ(c->GetSrcObject(), gate);
    EXPECT_EQ(c->FSrcConIdx, 1);
    EXPECT_EQ(c->FPoints, (TPoints{Start(gate, 1), Off(Start(gate, 1), 30, 0)}));
    EXPECT_EQ(c->GetSelectedIndex(), 0);
    EXPECT_EQ(old->GetSelectedIndex(), -1);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(ConnectCommands, AddDiagConnectionRepaintsOnlyWhenAskedTo) {
    SelectMarker(gate, -1);
    EXPECT_FALSE(Invalidates([&] { EXPECT_TRUE(dc->AddDiagConnection(30, false)); }));
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(ConnectCommands, AddDiagConnectionOnAMarkerThatStartsAWireSaysMarkerIsNotFree) {
    SelectMarker(gate, 1);
    ASSERT_TRUE(dc->AddDiagConnection(30, true));
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Error());
    EXPECT_FALSE(dc->AddDiagConnection(30, true));
    EXPECT_EQ(LastAsked(), QStringLiteral("ErrorMessageDlg \"Marker is not free\""));
    EXPECT_EQ(State(), before);
}

TEST_F(ConnectCommands, AddDiagConnectionOnAMarkerWhereAWireEndsSaysMarkerIsNotFree) {
    auto* w = Wire(*dc->ConList, {{10, 10}, {30, 10}});
    w->SetDstObject(gate);
    w->FDstConIdx = -2;
    SelectMarker(gate, -2);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Error());
    EXPECT_FALSE(dc->AddDiagConnection(30, true));
    EXPECT_EQ(dialogs.Asked().at(0).Text, QStringLiteral("Marker is not free"));
    EXPECT_EQ(State(), before);
}

TEST_F(ConnectCommands, AddDiagConnectionWithoutASelectedMarkerOfASelectedBlockDoesNothing) {
    const auto none = State();
    EXPECT_FALSE(dc->AddDiagConnection(30, true)); // no block
    EXPECT_EQ(State(), none);
    dc->SelObj = gate;
    gate->SetSelMarkerIndex(1); // the block itself is not selected
    const auto unselected = State();
    EXPECT_FALSE(dc->AddDiagConnection(30, true));
    EXPECT_EQ(State(), unselected);
    SelectMarker(gate, 0);
    const auto noMarker = State();
    EXPECT_FALSE(dc->AddDiagConnection(30, true));
    EXPECT_EQ(State(), noMarker);
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- several connections ----------------------------------------------------------------------

TEST_F(ConnectCommands, AddDiagConnectionsFromInputTwoOfFiveConfirmedWithFourConnectsTwoThreeFour) {
    TDiagText* t = TextBlock(200, 100, 5);
    // Input 3 already starts a wire: it is skipped.
    dc->ConList->AddConnection(t, -3, 10);
    dc->SelInfo = LR(1, 1);
    SelectMarker(t, -2);
    dialogs.Expect(TDialogAnswer::SizeValue(4));
    EXPECT_TRUE(Invalidates([&] { dc->AddDiagConnections(25, true); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSizeValue \"Set Max Index\" Size=5 Min=2 Max=5 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(Sources(t), (std::vector<int>{-3, -2, -4}));
    EXPECT_EQ(dc->ConList->Items(1)->FPoints, (TPoints{Start(t, -2), Off(Start(t, -2), -25, 0)}));
    EXPECT_EQ(dc->ConList->Items(2)->FPoints, (TPoints{Start(t, -4), Off(Start(t, -4), -25, 0)}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(ConnectCommands, AddDiagConnectionsOnOutputsConnectsFromTheMarkerToTheNumberConfirmed) {
    TDiagText* t = TextBlock(200, 100, 3);
    SelectMarker(t, 1);
    dialogs.Expect(TDialogAnswer::SizeValue(3));
    dc->AddDiagConnections(15, false);
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSizeValue \"Set Max Index\" Size=3 Min=1 Max=3 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(Sources(t), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(dc->ConList->Items(2)->FPoints, (TPoints{Start(t, 3), Off(Start(t, 3), 15, 0)}));
}

TEST_F(ConnectCommands, AddDiagConnectionsCancelledChangesNothing) {
    TDiagText* t = TextBlock(200, 100, 5);
    SelectMarker(t, -2);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    EXPECT_FALSE(Invalidates([&] { dc->AddDiagConnections(25, true); }));
    EXPECT_EQ(State(), before);
}

TEST_F(ConnectCommands, AddDiagConnectionsWithoutASelectedMarkerAsksNothing) {
    SelectMarker(gate, 0);
    const auto before = State();
    dc->AddDiagConnections(25, true);
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_EQ(State(), before);
}

// ---- add segment ------------------------------------------------------------------------------

TEST_F(ConnectCommands, AddSegmentOnASideWithTwoMarkersMakesOneConnectionWithoutAsking) {
    SelectMarker(gate, -1);
    dialogs.Expect(TDialogAnswer::Segment(60, 90));
    EXPECT_TRUE(Invalidates([&] { dc->AddSegmentToConnection(); }));
    // Nothing was selected on the wires: only the size is asked.
    EXPECT_EQ(Log(), QStringList{QStringLiteral(
                         "EditSegmentParams \"\" Size=100 Angle=0 OnlySize=1 Pos=-1,-1")});
    ASSERT_EQ(dc->ConList->Count(), 1);
    // An input's wire leaves to the left, 60 pixels; the angle plays no part.
    EXPECT_EQ(dc->ConList->Items(0)->FPoints,
              (TPoints{Start(gate, -1), Off(Start(gate, -1), -60, 0)}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(ConnectCommands, AddSegmentOnASideWithThreeMarkersAsksWithNoAsTheDefault) {
    TDiagText* t = TextBlock(200, 100, 3);
    SelectMarker(t, -1);
    dialogs.Expect(TDialogAnswer::Segment(40, 0)).Expect(TDialogAnswer::Modal(mrNo));
    dc->AddSegmentToConnection();
    ASSERT_EQ(Log().size(), 2);
    EXPECT_EQ(Log()[1], kSeveral);
    // No: one connection, from the selected marker.
    EXPECT_EQ(Sources(t), (std::vector<int>{-1}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(ConnectCommands, AddSegmentAnsweredYesConnectsSeveralMarkers) {
    TDiagText* t = TextBlock(200, 100, 3);
    SelectMarker(t, 1);
    dialogs.Expect(TDialogAnswer::Segment(40, 0))
        .Expect(TDialogAnswer::Modal(mrYes))
        .Expect(TDialogAnswer::SizeValue(3));
    dc->AddSegmentToConnection();
    EXPECT_EQ(Log().back(),
              QStringLiteral("EditSizeValue \"Set Max Index\" Size=3 Min=1 Max=3 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(Sources(t), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(dc->ConList->Items(0)->FPoints, (TPoints{Start(t, 1), Off(Start(t, 1), 40, 0)}));
    // Several connections select none of them.
    EXPECT_EQ(dc->SelInfo, LR(0, 0));
}

TEST_F(ConnectCommands, AddSegmentWithTheQuestionClosedDoesNothing) {
    TDiagText* t = TextBlock(200, 100, 3);
    SelectMarker(t, -1);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Segment(40, 0)).Expect(TDialogAnswer::Cancel(dkMessageDlg));
    dc->AddSegmentToConnection();
    EXPECT_EQ(State(), before);
}

TEST_F(ConnectCommands, AddSegmentOnTheSelectedConnectionAppendsATurnAndSelectsIt) {
    dc->ConList->AddConnection(gate, 1, 20);
    dc->SelInfo = LR(1, 1);
    dialogs.Expect(TDialogAnswer::Segment(30, 90));
    EXPECT_TRUE(Invalidates([&] { dc->AddSegmentToConnection(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=0 Pos=-1,-1"));
    // 90 degrees is a right turn: the rightward stub turns down.
    const TPoint s = Start(gate, 1);
    EXPECT_EQ(dc->ConList->Items(0)->FPoints, (TPoints{s, Off(s, 20, 0), Off(s, 20, 30)}));
    EXPECT_EQ(dc->SelInfo, LR(1, 2));
    EXPECT_EQ(dc->ConList->Items(0)->GetSelectedIndex(), 1);
}

TEST_F(ConnectCommands, AddSegmentWithMinus90DegreesTurnsLeft) {
    dc->ConList->AddConnection(gate, 1, 20);
    dc->SelInfo = LR(1, 1);
    dialogs.Expect(TDialogAnswer::Segment(30, -90));
    dc->AddSegmentToConnection();
    const TPoint s = Start(gate, 1);
    EXPECT_EQ(dc->ConList->Items(0)->FPoints, (TPoints{s, Off(s, 20, 0), Off(s, 20, -30)}));
}

TEST_F(ConnectCommands, AddSegmentStraightOnLengthensTheLastSegment) {
    dc->ConList->AddConnection(gate, 1, 20);
    dc->SelInfo = LR(1, 1);
    dialogs.Expect(TDialogAnswer::Segment(30, 0));
    dc->AddSegmentToConnection();
    const TPoint s = Start(gate, 1);
    EXPECT_EQ(dc->ConList->Items(0)->FPoints, (TPoints{s, Off(s, 50, 0)}));
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(ConnectCommands, AddSegmentOnATakenMarkerGoesToTheSelectedConnection) {
    SelectMarker(gate, 1);
    ASSERT_TRUE(dc->AddDiagConnection(20, true));
    dialogs.Expect(TDialogAnswer::Segment(30, 90));
    dc->AddSegmentToConnection();
    ASSERT_EQ(dc->ConList->Count(), 1);
    const TPoint s = Start(gate, 1);
    EXPECT_EQ(dc->ConList->Items(0)->FPoints, (TPoints{s, Off(s, 20, 0), Off(s, 20, 30)}));
}

TEST_F(ConnectCommands, AddSegmentWithNothingSelectedDropsTheValues) {
    Wire(*dc->ConList, {{200, 250}, {300, 250}});
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Segment(30, 0));
    EXPECT_FALSE(Invalidates([&] { dc->AddSegmentToConnection(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=1 Pos=-1,-1"));
    EXPECT_EQ(State(), before);
}

TEST_F(ConnectCommands, AddSegmentCancelledChangesNothing) {
    dc->ConList->AddConnection(gate, 1, 20);
    dc->SelInfo = LR(1, 1);
    SelectMarker(gate, -1);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSegmentParams));
    EXPECT_FALSE(Invalidates([&] { dc->AddSegmentToConnection(); }));
    EXPECT_EQ(State(), before);
}
