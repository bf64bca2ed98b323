// Undo and redo of every editing command and every mouse edit of the surface: each is one step
// with its menu's text, undo gives back the container stream as it was before, byte for byte,
// and redo the stream as it was after. Work that changes nothing leaves no step.

#include "commands_test_util.h"
#include "undo_test_util.h"

#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class UndoCommands : public CommandsFixture {
protected:
    TDiagObject* a = nullptr;  // AND gate at (50, 60)
    TDiagObject* b = nullptr;  // AND gate at (250, 120)
    TDiagText* text = nullptr; // text block at (150, 220) with five inputs
    TDiagUndoStack* stack = nullptr;

    void SetUp() override {
        CommandsFixture::SetUp();
        a = Place(doAndLogic, 50, 60);
        b = Place(doAndLogic, 250, 120);
        text = Place<TDiagText>(doText, 150, 220);
        text->SetInCount(5);
        // A wire from a's output to b's first input, rerouted whenever either block moves.
        const int k = dc->ConList->AddConnection(a, 1, 20);
        b->SetSelMarkerIndex(-1);
        dc->ConList->Items(k)->EndConnection(b, false);
        b->SetSelMarkerIndex(0);
        stack = dc->UndoStack();
        ASSERT_NE(stack, nullptr);
        // The set-up is not a user's change.
        stack->clear();
    }

    // Selects a segment as a click near it does: the address and the highlight.
    void SelectSegment(LongRec lr) {
        dc->SelInfo = lr;
        dc->ConList->SelectSegmentByLongRec(lr);
    }

    std::vector<uint8_t> Stream() const {
        TMemoryStream s;
        dc->SaveToStream(s);
        return s.Bytes();
    }

    // Runs `edit`, which must change the diagram, and checks that it made exactly one step
    // named `name` whose undo and redo give back the bytes before and after, twice over.
    void ExpectOneExactStep(const QString& name, const std::function<void()>& edit) {
        const std::vector<uint8_t> before = Stream();
        const int steps = stack->index();
        edit();
        const std::vector<uint8_t> after = Stream();
        ASSERT_NE(after, before) << "the edit changed nothing";
        ASSERT_EQ(stack->index(), steps + 1);
        ASSERT_EQ(stack->count(), steps + 1);
        EXPECT_EQ(stack->undoText(), name);
        for (int round = 0; round < 2; ++round) {
            stack->undo();
            EXPECT_TRUE(SameBytes(Stream(), before)) << "undo, round " << round;
            EXPECT_EQ(stack->redoText(), name);
            stack->redo();
            EXPECT_TRUE(SameBytes(Stream(), after)) << "redo, round " << round;
        }
        EXPECT_EQ(stack->count(), steps + 1);
        // Every restore kept the unchanged blocks and came out exact without a full load.
        EXPECT_EQ(dc->FullRestoreCount(), 0);
    }

    // Runs `work`, which must leave the diagram as it was, and checks that it left no step.
    void ExpectNoStep(const std::function<void()>& work) {
        const std::vector<uint8_t> before = Stream();
        const int steps = stack->count();
        work();
        EXPECT_TRUE(SameBytes(Stream(), before));
        EXPECT_EQ(stack->count(), steps);
    }

    // The connection at index k.
    TDiagConnection* Con(int k) const { return dc->ConList->Items(k); }
};

} // namespace

// ---- segment commands -------------------------------------------------------------------------

TEST_F(UndoCommands, AddSegmentOnTheSelectedConnectionUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{20, 250}, {120, 250}});
    SelectSegment(LR(2, 1));
    dialogs.Expect(TDialogAnswer::Segment(30, 90));
    ExpectOneExactStep(QStringLiteral("Add Segment"), [&] { dc->AddSegmentToConnection(); });
}

TEST_F(UndoCommands, AddSegmentFromAFreeMarkerIsOneStep) {
    SelectMarker(a, -1);
    dialogs.Expect(TDialogAnswer::Segment(40, 0));
    ExpectOneExactStep(QStringLiteral("Add Segment"), [&] { dc->AddSegmentToConnection(); });
}

TEST_F(UndoCommands, AddSegmentConnectingSeveralMarkersIsOneStepNamedAddSegment) {
    SelectMarker(text, -2);
    dialogs.Expect(TDialogAnswer::Segment(20, 0));
    dialogs.Expect(TDialogAnswer::Modal(mrYes));
    dialogs.Expect(TDialogAnswer::SizeValue(4));
    ExpectOneExactStep(QStringLiteral("Add Segment"), [&] { dc->AddSegmentToConnection(); });
    stack->undo();
    EXPECT_EQ(dc->ConList->Count(), 1);
    stack->redo();
    EXPECT_EQ(dc->ConList->Count(), 4);
}

TEST_F(UndoCommands, EditSegmentUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{100, 300}, {200, 300}, {200, 380}});
    SelectSegment(LR(2, 1));
    dialogs.Expect(TDialogAnswer::Segment(40, 90));
    ExpectOneExactStep(QStringLiteral("Edit Segment"), [&] { dc->EditSegmentOfConnection(); });
}

TEST_F(UndoCommands, DeleteSegmentUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{20, 20}, {120, 20}, {120, 40}});
    SelectSegment(LR(2, 2));
    ExpectOneExactStep(QStringLiteral("Del. Segment"), [&] { dc->DeleteCurSegment(); });
}

TEST_F(UndoCommands, AlignSegmentUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{10, 250}, {60, 262}, {60, 280}});
    SelectSegment(LR(2, 1));
    ExpectOneExactStep(QStringLiteral("Align Segment"), [&] { dc->AlignCurSegment(); });
}

TEST_F(UndoCommands, EndWithCrossUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{20, 290}, {380, 290}});
    Wire(*dc->ConList, {{100, 240}, {150, 240}, {150, 282}});
    SelectSegment(LR(3, 2));
    ExpectOneExactStep(QStringLiteral("End with Cross"), [&] { dc->EndConnectionWithCross(); });
}

TEST_F(UndoCommands, EndConnectionOnAMarkerUndoesAndRedoesExactly) {
    SelectMarker(b, -2);
    Wire(*dc->ConList, {{300, 20}, {330, 20}, {330, 60}});
    SelectSegment(LR(2, 2));
    ExpectOneExactStep(QStringLiteral("End Connection"), [&] { dc->EndDiagConnection(); });
}

TEST_F(UndoCommands, EndWithSegmentUndoesAndRedoesExactly) {
    Wire(*dc->ConList, {{20, 290}, {380, 290}});
    Wire(*dc->ConList, {{100, 240}, {150, 240}, {150, 282}});
    SelectSegment(LR(3, 2));
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("2,1")));
    ExpectOneExactStep(QStringLiteral("End with Segment"), [&] { dc->EndConnectionWithSegment(); });
}

// ---- connection-building commands -------------------------------------------------------------

TEST_F(UndoCommands, AddConnectionCalledByAHostIsOneStep) {
    SelectMarker(a, -2);
    ExpectOneExactStep(QStringLiteral("Add Connection"), [&] { dc->AddDiagConnection(30, true); });
}

TEST_F(UndoCommands, AddConnectionsCalledByAHostIsOneStep) {
    SelectMarker(text, -2);
    dialogs.Expect(TDialogAnswer::SizeValue(5));
    ExpectOneExactStep(QStringLiteral("Add Connections"),
                       [&] { dc->AddDiagConnections(30, true); });
}

// ---- block commands ---------------------------------------------------------------------------

TEST_F(UndoCommands, DeleteUndoesAndRedoesExactlyWiresIncluded) {
    dc->SelObj = a;
    a->SetSelected(true);
    ExpectOneExactStep(QStringLiteral("Delete"), [&] { dc->DelSelectedObject(); });
    stack->undo();
    // The wire is attached to both blocks again.
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(Con(0)->GetSrcObject(), dc->ObjList->Items(0));
    EXPECT_EQ(Con(0)->GetDstObject(), dc->ObjList->Items(1));
}

TEST_F(UndoCommands, AlignTitlesUndoesAndRedoesExactly) {
    dc->SelObj = text;
    text->SetTextPosValues(QStringLiteral("3,4"));
    ExpectOneExactStep(QStringLiteral("Align Titles"), [&] { dc->AlignTitles(); });
}

TEST_F(UndoCommands, ShiftByDeltaUndoesAndRedoesExactly) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
    ExpectOneExactStep(QStringLiteral("Shift By Delta"), [&] { dc->ShiftByDelta(); });
}

TEST_F(UndoCommands, UndoOfABlockSharingAnEarlierBlocksKeyKeepsThatKey) {
    // b holds a's key, as a block of a loaded file may: the restored b must hold it again.
    b->SetObjKey(a->GetObjKey());
    stack->clear();
    dc->SelObj = b;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
    ExpectOneExactStep(QStringLiteral("Shift By Delta"), [&] { dc->ShiftByDelta(); });
    EXPECT_EQ(dc->ObjList->Items(1)->GetObjKey(), a->GetObjKey());
    EXPECT_EQ(dc->ObjList->FindObjByKey(a->GetObjKey()), a);
}

// ---- marker commands --------------------------------------------------------------------------

TEST_F(UndoCommands, ChangeSizeUndoesAndRedoesExactly) {
    SelectMarker(a, -1);
    dialogs.Expect(TDialogAnswer::SizeValue(9));
    ExpectOneExactStep(QStringLiteral("Change Size"), [&] { dc->ChangeMarkerSize(); });
}

TEST_F(UndoCommands, ChangePosUndoesAndRedoesExactly) {
    SelectMarker(b, -1);
    dialogs.Expect(TDialogAnswer::SizeValue(b->GetSelMarkerPos() + 7));
    ExpectOneExactStep(QStringLiteral("Change Pos"), [&] { dc->ChangeMarkerPos(); });
}

TEST_F(UndoCommands, ChangeTypeUndoesAndRedoesExactly) {
    SelectMarker(a, -1);
    TMenuItem item(nullptr);
    item.Tag = itInversion;
    ExpectOneExactStep(QStringLiteral("Change Type"), [&] { dc->ChangeMarkerType(&item); });
}

// ---- text commands ----------------------------------------------------------------------------

TEST_F(UndoCommands, SetTitleUndoesAndRedoesExactly) {
    dc->SelObj = text;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("Hello")));
    ExpectOneExactStep(QStringLiteral("Set Title"), [&] { dc->SetTextValues(); });
}

TEST_F(UndoCommands, SetTextPosUndoesAndRedoesExactly) {
    dc->SelObj = text;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("6,7")));
    ExpectOneExactStep(QStringLiteral("Set Text Pos"), [&] { dc->SetTextPosValues(); });
}

TEST_F(UndoCommands, SetTextSizesUndoesAndRedoesExactly) {
    dc->SelObj = text;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("21")));
    ExpectOneExactStep(QStringLiteral("Set Text Sizes"), [&] { dc->SetTextHeights(); });
}

// ---- count and margin commands ----------------------------------------------------------------

TEST_F(UndoCommands, HorizMarginUndoesAndRedoesExactly) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(17));
    ExpectOneExactStep(QStringLiteral("Horiz. Margin"), [&] { dc->SetHorizMargin(); });
}

TEST_F(UndoCommands, SetInCountUndoesAndRedoesExactlyWithTheTypeChosen) {
    dc->SelObj = b;
    dialogs.Expect(TDialogAnswer::SizeValue(4));
    dialogs.Expect(TDialogAnswer::Item(2));
    ExpectOneExactStep(QStringLiteral("Set In Count"), [&] { dc->SetInputCount(); });
}

TEST_F(UndoCommands, SetOutCountUndoesAndRedoesExactly) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(3));
    ExpectOneExactStep(QStringLiteral("Set Out Count"), [&] { dc->SetOutputCount(); });
}

// ---- blocks created from the menu -------------------------------------------------------------

TEST_F(UndoCommands, ABlockCreatedFromTheMenuIsOneStepNamedForItsKind) {
    TMenuItem item(nullptr);
    item.Tag = doOrLogic;
    dc->FClickPoint = {300, 230};
    ExpectOneExactStep(QStringLiteral("Create OrLogic"), [&] { dc->CreateDiagObEvent(&item); });
    EXPECT_EQ(dc->ObjList->Count(), 4);
    stack->undo();
    EXPECT_EQ(dc->ObjList->Count(), 3);
}

// ---- nothing changed, nothing pushed ----------------------------------------------------------

TEST_F(UndoCommands, ACancelledDialogLeavesNoStep) {
    Wire(*dc->ConList, {{100, 300}, {200, 300}, {200, 380}});
    SelectSegment(LR(2, 1));
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSegmentParams));
    ExpectNoStep([&] { dc->EditSegmentOfConnection(); });
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    ExpectNoStep([&] { dc->ShiftByDelta(); });
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    ExpectNoStep([&] { dc->SetInputCount(); });
}

TEST_F(UndoCommands, ARefusedCommandLeavesNoStep) {
    // a's output already starts the wire.
    SelectMarker(a, 1);
    dialogs.Expect(TDialogAnswer::Error());
    ExpectNoStep([&] { dc->AddDiagConnection(20, true); });
    EXPECT_EQ(LastAsked(), QStringLiteral("ErrorMessageDlg \"Marker is not free\""));
    SelectMarker(a, 0);
    ExpectNoStep([&] { dc->ChangeMarkerSize(); });
}

TEST_F(UndoCommands, CommandsThatOnlyShowLeaveNoStep) {
    Wire(*dc->ConList, {{20, 20}, {120, 20}, {120, 40}});
    SelectSegment(LR(2, 2));
    dialogs.Expect(TDialogAnswer::Box(QStringLiteral("2,2")));
    ExpectNoStep([&] { dc->ShowSegmentIndex(); });
    dialogs.Expect(TDialogAnswer::Box(QString()));
    ExpectNoStep([&] { dc->ShowSegmentRect(); });
    dc->SelObj = text;
    ExpectNoStep([&] { dc->SetObjTitle(); });
}

TEST_F(UndoCommands, AMenuItemOfNoBlockKindLeavesNoStep) {
    TMenuItem item(nullptr);
    item.Tag = doNone;
    ExpectNoStep([&] { dc->CreateDiagObEvent(&item); });
}

TEST_F(UndoCommands, AConversionErrorOfTypedTextLeavesNoStep) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("five,3")));
    ExpectNoStep([&] { EXPECT_THROW(dc->ShiftByDelta(), EConvertError); });
}

// ---- memory bound -----------------------------------------------------------------------------

TEST_F(UndoCommands, WithASmallLimitOldStepsGoAndTheNewestStillUndoExactly) {
    // One stream of this diagram is a few hundred bytes; three of them fit, a fourth does not.
    const auto size = int64_t(Stream().size());
    stack->SetMemoryLimit(3 * size + size / 2);
    dc->SelObj = a;
    std::vector<std::vector<uint8_t>> states{Stream()};
    for (int i = 1; i <= 5; ++i) {
        dialogs.Expect(TDialogAnswer::SizeValue(4 + i));
        dc->SetHorizMargin();
        states.push_back(Stream());
    }
    ASSERT_EQ(stack->count(), 2);
    EXPECT_LE(stack->MemoryUsed(), 3 * size + size / 2);
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), states[4]));
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), states[3]));
    EXPECT_FALSE(stack->canUndo());
    stack->redo();
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), states[5]));
}

TEST_F(UndoCommands, AStepCostsOneStreamWhenNothingElseChangedInBetween) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(9));
    dc->SetHorizMargin();
    const auto first = int64_t(Stream().size());
    EXPECT_EQ(stack->MemoryUsed(), 2 * first);
    dialogs.Expect(TDialogAnswer::SizeValue(11));
    dc->SetHorizMargin();
    EXPECT_EQ(stack->MemoryUsed(), 3 * first);
}

// ---- what comes back --------------------------------------------------------------------------

TEST_F(UndoCommands, UndoGivesBackTheSelectionAsItWasBeforeTheStep) {
    SelectMarker(a, -2);
    Wire(*dc->ConList, {{20, 20}, {120, 20}, {120, 40}});
    SelectSegment(LR(2, 2));
    dialogs.Expect(TDialogAnswer::SizeValue(9));
    dc->ChangeMarkerSize();
    dc->SelObj = b;
    dc->SelInfo = LongRec{};
    stack->undo();
    ASSERT_NE(dc->SelObj, nullptr);
    EXPECT_EQ(dc->ObjList->IndexOf(dc->SelObj), 0);
    EXPECT_TRUE(dc->SelObj->FSelected);
    EXPECT_EQ(dc->SelInfo, LR(2, 2));
    // And redo gives back the selection undo started from.
    stack->redo();
    EXPECT_EQ(dc->ObjList->IndexOf(dc->SelObj), 1);
    EXPECT_EQ(dc->SelInfo, LongRec{});
}

TEST_F(UndoCommands, BlocksBroughtBackByUndoAnswerTheMouseAndTheCommands) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
    dc->ShiftByDelta();
    stack->undo();
    // A command on a block brought back makes a further step that undoes exactly too.
    TDiagObject* back = dc->ObjList->Items(1);
    dc->SelObj = back;
    dialogs.Expect(TDialogAnswer::SizeValue(3));
    ExpectOneExactStep(QStringLiteral("Set Out Count"), [&] { dc->SetOutputCount(); });
    EXPECT_FALSE(stack->canRedo());
}

TEST_F(UndoCommands, UndoKeepsTheBlocksItDoesNotChange) {
    dc->SelObj = b;
    dialogs.Expect(TDialogAnswer::SizeValue(17));
    dc->SetHorizMargin();
    const QPointer<TDiagObject> keptA = a, keptText = text;
    stack->undo();
    // Only the changed block was made anew, in its place in the list.
    EXPECT_EQ(dc->ObjList->Items(0), keptA.data());
    EXPECT_EQ(dc->ObjList->Items(2), keptText.data());
    EXPECT_NE(dc->ObjList->Items(1), nullptr);
    EXPECT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->FullRestoreCount(), 0);
}

TEST_F(UndoCommands, UndoOfDeletingABlockInTheMiddlePutsItBackInItsPlace) {
    dc->SelObj = b;
    b->SetSelected(true);
    const TObjKey key = b->GetObjKey();
    const QPointer<TDiagObject> keptA = a, keptText = text;
    const auto before = Stream();
    dc->DelSelectedObject();
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    ASSERT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->ObjList->Items(0), keptA.data());
    EXPECT_EQ(dc->ObjList->Items(1)->GetObjKey(), key);
    EXPECT_EQ(dc->ObjList->Items(2), keptText.data());
    // The wire is attached to the block brought back.
    EXPECT_EQ(Con(0)->GetDstObject(), dc->ObjList->Items(1));
    EXPECT_EQ(dc->FullRestoreCount(), 0);
}
