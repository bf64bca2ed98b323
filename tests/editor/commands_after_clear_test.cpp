// After Clear(false) the blocks are freed while the selected block is not reset by Clear itself:
// every command and every click must then find no selection and change nothing (the sanitizer
// build catches any use of the freed block).

#include "commands_test_util.h"

#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class AfterClear : public CommandsFixture {
protected:
    TMenuItem typeItem{nullptr};

    void SetUp() override {
        CommandsFixture::SetUp();
        TDiagObject* a = Place(doAndLogic, 50, 60);
        TDiagObject* b = Place(doOrLogic, 250, 120);
        const int k = dc->ConList->AddConnection(a, 1, 20);
        b->SetSelMarkerIndex(-1);
        dc->ConList->Items(k)->EndConnection(b, false);
        // A selected block with a selected marker and a selected segment, as clicks leave them.
        a->SetSelected(true);
        a->SetSelMarkerIndex(-1);
        dc->SelObj = a;
        dc->SelInfo = LongRec{1, uint16_t(k + 1)};
        dc->ConList->SelectSegmentByLongRec(dc->SelInfo);
        dc->Clear(false);
        typeItem.Tag = itInversion;
    }
};

TEST_F(AfterClear, TheSelectedBlockReadsAsNoneAndNoSegmentIsSelected) {
    EXPECT_EQ(dc->ObjList->Count(), 0);
    EXPECT_EQ(dc->ConList->Count(), 0);
    EXPECT_TRUE(dc->SelObj.isNull());
    EXPECT_EQ(dc->SelInfo.Lo, 0);
    EXPECT_EQ(dc->SelInfo.Hi, 0);
}

TEST_F(AfterClear, EveryCommandChangesNothingAndAsksNothing) {
    const auto before = State();
    const std::vector<std::function<void()>> commands = {
        [&] { dc->DeleteCurSegment(); },
        [&] { dc->AlignCurSegment(); },
        [&] { dc->EndConnectionWithCross(); },
        [&] { dc->EndDiagConnection(); },
        [&] { dc->EditSegmentOfConnection(); },
        [&] { EXPECT_FALSE(dc->AddDiagConnection(20, true)); },
        [&] { dc->AddDiagConnections(20, true); },
        [&] { dc->DelSelectedObject(); },
        [&] { dc->AlignTitles(); },
        [&] { dc->ShiftByDelta(); },
        [&] { dc->SetObjTitle(); },
        [&] { dc->ChangeMarkerSize(); },
        [&] { dc->ChangeMarkerPos(); },
        [&] { dc->ChangeMarkerType(&typeItem); },
        [&] { dc->SetTextValues(); },
        [&] { dc->SetTextPosValues(); },
        [&] { dc->SetTextHeights(); },
        [&] { dc->SetHorizMargin(); },
        [&] { dc->SetInputCount(); },
        [&] { dc->SetOutputCount(); }};
    for (size_t i = 0; i < commands.size(); ++i) {
        commands[i]();
        EXPECT_EQ(State(), before) << "command " << i;
    }
    EXPECT_TRUE(dialogs.Log().isEmpty()) << dialogs.Log().join(u'\n').toStdString();
}

TEST_F(AfterClear, TheSegmentPromptsSayThatNoSegmentIsSelected) {
    const auto before = State();
    const std::vector<std::function<void()>> commands = {[&] { dc->ShowSegmentRect(); },
                                                         [&] { dc->ShowSegmentIndex(); },
                                                         [&] { dc->EndConnectionWithSegment(); }};
    for (size_t i = 0; i < commands.size(); ++i) {
        dialogs.Expect(TDialogAnswer::Message());
        commands[i]();
        EXPECT_EQ(LastAsked(), QStringLiteral("ShowMessage \"No any segment selected\""))
            << "command " << i;
        EXPECT_EQ(State(), before) << "command " << i;
    }
}

TEST_F(AfterClear, AddSegmentWithNoSelectionAsksForTheSizeOnlyAndAddsNothing) {
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Segment(100, 0));
    dc->AddSegmentToConnection();
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSegmentParams \"\" Size=100 Angle=0 OnlySize=1 Pos=-1,-1"));
    EXPECT_EQ(State(), before);
    EXPECT_EQ(dc->ConList->Count(), 0);
}

} // namespace
