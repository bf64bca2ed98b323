// Block, marker, text, count and margin commands of the surface.

#include "commands_test_util.h"

using namespace vde;
using namespace vde::test;

namespace {

class BlockCommands : public CommandsFixture {
protected:
    TDiagObject* a = nullptr; // AND gate at (50, 60)
    TDiagObject* b = nullptr; // AND gate at (250, 120)

    void SetUp() override {
        CommandsFixture::SetUp();
        a = Place(doAndLogic, 50, 60);
        b = Place(doAndLogic, 250, 120);
    }

    // A hand-drawn wire from `from`'s marker with a stub of `size`, ended on `to`'s marker.
    TDiagConnection* Connect(TDiagObject* from, int fromMarker, TDiagObject* to, int toMarker,
                             int size = 20) {
        const int k = dc->ConList->AddConnection(from, fromMarker, size);
        TDiagConnection* c = dc->ConList->Items(k);
        const int keep = to->GetSelMarkerIndex();
        to->SetSelMarkerIndex(toMarker);
        c->EndConnection(to, false);
        to->SetSelMarkerIndex(keep);
        return c;
    }

    static TPoints Moved(TPoints p, std::initializer_list<size_t> which, TPoint d) {
        for (size_t i : which)
            p[i] = {p[i].X + d.X, p[i].Y + d.Y};
        return p;
    }

    TMenuItem* TypeItem(intptr_t tag) {
        items.push_back(std::make_unique<TMenuItem>(nullptr));
        items.back()->Tag = tag;
        return items.back().get();
    }
    std::vector<std::unique_ptr<TMenuItem>> items;
};

} // namespace

// ---- delete -----------------------------------------------------------------------------------

TEST_F(BlockCommands, DelSelectedObjectDropsLooseWiresAndTurnsOrDetachesTheOthers) {
    // 0: from a's output, ending nowhere; 1: from b's output to a's input 1; 2: from a's input 2
    // to b's input 2.
    auto* loose = dc->ConList->Items(dc->ConList->AddConnection(a, 1, 20));
    auto* intoA = Connect(b, 1, a, -1);
    auto* fromA = Connect(a, -2, b, -2);
    const TPoints intoPath = intoA->FPoints;
    TPoints fromPath = fromA->FPoints;
    std::reverse(fromPath.begin(), fromPath.end());
    QPointer<TDiagObject> gone = a;
    dc->SelObj = a;
    dc->SelInfo = LR(3, 1);
    EXPECT_TRUE(Invalidates([&] { dc->DelSelectedObject(); }));
    EXPECT_TRUE(gone.isNull());
    EXPECT_EQ(dc->SelObj, nullptr);
    ASSERT_EQ(dc->ObjList->Count(), 1);
    ASSERT_EQ(dc->ConList->Count(), 2);
    EXPECT_EQ(dc->ConList->IndexOf(loose), -1);
    // The wire into the deleted block keeps its path without an end.
    EXPECT_EQ(dc->ConList->Items(0), intoA);
    EXPECT_EQ(intoA->FPoints, intoPath);
    EXPECT_EQ(intoA->GetSrcObject(), b);
    EXPECT_EQ(intoA->GetDstObject(), nullptr);
    // The wire out of it now runs from its other end, which is both of its ends.
    EXPECT_EQ(dc->ConList->Items(1), fromA);
    EXPECT_EQ(fromA->FPoints, fromPath);
    EXPECT_EQ(fromA->GetSrcObject(), b);
    EXPECT_EQ(fromA->FSrcConIdx, -2);
    EXPECT_EQ(fromA->GetDstObject(), b);
    // A wire went, so the segment address no longer says what it said.
    EXPECT_EQ(dc->SelInfo, LR(0, 0));
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(BlockCommands, DelSelectedObjectWithoutWiresKeepsTheSegmentSelection) {
    Connect(b, 1, b, -1);
    dc->SelObj = a;
    dc->SelInfo = LR(1, 1);
    dc->DelSelectedObject();
    EXPECT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->SelInfo, LR(1, 1));
}

TEST_F(BlockCommands, BlockCommandsWithoutASelectedBlockDoNothingAndAskNothing) {
    Connect(a, 1, b, -1);
    const auto before = State();
    auto* item = TypeItem(1);
    const std::vector<std::function<void()>> commands = {
        [&] { dc->DelSelectedObject(); },    [&] { dc->AlignTitles(); },
        [&] { dc->ShiftByDelta(); },         [&] { dc->SetObjTitle(); },
        [&] { dc->ChangeMarkerSize(); },     [&] { dc->ChangeMarkerPos(); },
        [&] { dc->ChangeMarkerType(item); }, [&] { dc->SetTextValues(); },
        [&] { dc->SetTextPosValues(); },     [&] { dc->SetTextHeights(); },
        [&] { dc->SetHorizMargin(); },       [&] { dc->SetInputCount(); },
        [&] { dc->SetOutputCount(); }};
    for (size_t i = 0; i < commands.size(); ++i) {
        EXPECT_FALSE(Invalidates(commands[i])) << "command " << i;
        EXPECT_EQ(State(), before) << "command " << i;
    }
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- titles -----------------------------------------------------------------------------------

TEST_F(BlockCommands, AlignTitlesPutsTheTitlesBackWhereTheBlockAlignsThem) {
    const TPoint aligned = a->FLabels.at(0).Start;
    a->FLabels[0].Start = {0, 0};
    dc->SelObj = a;
    EXPECT_TRUE(Invalidates([&] { dc->AlignTitles(); }));
    EXPECT_EQ(a->FLabels.at(0).Start, aligned);
}

TEST_F(BlockCommands, SetObjTitleNeverChangesAnything) {
    auto* t = Place<TDiagText>(doText, 100, 200);
    for (TDiagObject* obj : {static_cast<TDiagObject*>(t), a}) {
        dc->SelObj = obj;
        obj->SetSelected(true);
        const auto before = State();
        EXPECT_FALSE(Invalidates([&] { dc->SetObjTitle(); }));
        EXPECT_EQ(State(), before);
    }
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- shift ------------------------------------------------------------------------------------

TEST_F(BlockCommands, ShiftByDeltaFiveMinusThreeMovesTheBlockAndItsWireEndsOnceAndSetsTextPos) {
    auto* out = Connect(a, 1, b, -1);  // a is where it starts
    auto* into = Connect(b, 1, a, -2); // a is where it ends
    const TPoints outPath = out->FPoints, intoPath = into->FPoints;
    ASSERT_EQ(outPath.size(), 3u);
    ASSERT_EQ(intoPath.size(), 3u);
    const TRect bBounds = b->BoundsRect();
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
    EXPECT_TRUE(Invalidates([&] { dc->ShiftByDelta(); }));
    EXPECT_EQ(LastAsked(), QStringLiteral("InputQuery \"Shift x,y Values\" \"Values:\" \"0,0\""));
    EXPECT_EQ(a->BoundsRect(), (TRect{55, 57, 115, 157}));
    EXPECT_EQ(b->BoundsRect(), bBounds);
    // The two points at a's end of each wire move with it, once; the far ends stay.
    EXPECT_EQ(out->FPoints, Moved(outPath, {0, 1}, {5, -3}));
    EXPECT_EQ(into->FPoints, Moved(intoPath, {1, 2}, {5, -3}));
    EXPECT_EQ(into->FPoints.back(), MarkerAt(a, -2));
    // The text typed is also the title's position in the block.
    EXPECT_EQ(a->GetTextPosValues(), QStringLiteral("5,-3"));
    EXPECT_EQ(a->FLabels.at(0).Start, (TPoint{5, -3}));
}

TEST_F(BlockCommands, ShiftByDeltaLeavesTheBlockReportingItsMovesAfterwards) {
    auto* out = Connect(a, 1, b, -1);
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")));
    dc->ShiftByDelta();
    ASSERT_TRUE(bool(a->GetOnModifyBounds()));
    // A later move of the block reroutes its wire onto the marker again.
    a->SetLocation({70, 40});
    EXPECT_EQ(out->FPoints.front(), MarkerAt(a, 1));
}

TEST_F(BlockCommands, ShiftByDeltaWithTypedGarbageRaisesTheConversionErrorAndChangesNothing) {
    Connect(a, 1, b, -1);
    dc->SelObj = a;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("abc")));
    try {
        dc->ShiftByDelta();
        ADD_FAILURE() << "no conversion error";
    } catch (const EConvertError& e) {
        EXPECT_EQ(e.Message(), PointErrorText(QStringLiteral("abc")));
        EXPECT_TRUE(e.Message().contains(QStringLiteral("abc")));
    }
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, ShiftByDeltaWhoseTextFailsAsTitlePositionsPutsEverythingBack) {
    // "5,3,x|y" is a good point (the third piece is not read) but not good title positions:
    // the second title's position "y" is no point. The trigger has three titles.
    auto* rs = Place(doRSTrigger, 120, 40);
    auto* out = Connect(rs, 1, b, -1);
    dc->SelObj = rs;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("5,3,x|y")));
    EXPECT_THROW(dc->ShiftByDelta(), EConvertError);
    EXPECT_EQ(State(), before);
    // Still bound: a move reroutes the wire.
    rs->SetLocation({100, 30});
    EXPECT_EQ(out->FPoints.front(), MarkerAt(rs, 1));
}

TEST_F(BlockCommands, ShiftByDeltaToTheIntegerLimitWrapsTheWireEndsAsTheBlockDoes) {
    auto* out = Connect(a, 1, b, -1);
    const TPoints path = out->FPoints;
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("2147483647,0")));
    dc->ShiftByDelta();
    // For a positive x, x + (2^31 - 1) passes the largest 32-bit value and wraps by 2^32.
    auto wrapped = [](int32_t x) { return int32_t(int64_t(x) + 2147483647 - 4294967296LL); };
    EXPECT_EQ(out->FPoints[0], (TPoint{wrapped(path[0].X), path[0].Y}));
    EXPECT_EQ(out->FPoints[1], (TPoint{wrapped(path[1].X), path[1].Y}));
    EXPECT_EQ(out->FPoints[2], path[2]);
}

TEST_F(BlockCommands, ShiftByDeltaCancelledChangesNothing) {
    Connect(a, 1, b, -1);
    dc->SelObj = a;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    EXPECT_FALSE(Invalidates([&] { dc->ShiftByDelta(); }));
    EXPECT_EQ(State(), before);
}

// ---- markers ----------------------------------------------------------------------------------

TEST_F(BlockCommands, ChangeMarkerSizeAsksForTheSelectedInputsSizeFrom4To30) {
    SelectMarker(a, -2);
    dialogs.Expect(TDialogAnswer::SizeValue(12));
    EXPECT_TRUE(Invalidates([&] { dc->ChangeMarkerSize(); }));
    EXPECT_EQ(
        LastAsked(),
        QStringLiteral("EditSizeValue \"Input #2 Size\" Size=6 Min=4 Max=30 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(a->FInputs.at(1).Size, 12);
    EXPECT_EQ(a->FInputs.at(0).Size, 6);
}

TEST_F(BlockCommands, ChangeMarkerSizeOfAnOutputSaysOutput) {
    SelectMarker(a, 1);
    dialogs.Expect(TDialogAnswer::SizeValue(4));
    dc->ChangeMarkerSize();
    EXPECT_EQ(
        LastAsked(),
        QStringLiteral("EditSizeValue \"Output #1 Size\" Size=6 Min=4 Max=30 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(a->FOutputs.at(0).Size, 4);
}

TEST_F(BlockCommands, ChangeMarkerSizeCancelledChangesNothing) {
    SelectMarker(a, 1);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    EXPECT_FALSE(Invalidates([&] { dc->ChangeMarkerSize(); }));
    EXPECT_EQ(State(), before);
    EXPECT_EQ(a->FOutputs.at(0).Size, 6);
}

TEST_F(BlockCommands, WithNoMarkerChangeMarkerSizeIsSilentButChangeMarkerPosSaysThereAreNone) {
    SelectMarker(a, 0);
    const auto before = State();
    dc->ChangeMarkerSize();
    EXPECT_TRUE(dialogs.Asked().empty());
    dialogs.Expect(TDialogAnswer::Error());
    dc->ChangeMarkerPos();
    EXPECT_EQ(Log(),
              QStringList{QStringLiteral("ErrorMessageDlg \"There is no markers available\"")});
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, ChangeMarkerPosOffersTheCurrentPositionPlusMinus100) {
    auto* out = Connect(a, 1, b, -1);
    SelectMarker(a, 1);
    const int pos = a->FOutputs.at(0).P.Y;
    dialogs.Expect(TDialogAnswer::SizeValue(pos + 7));
    EXPECT_TRUE(Invalidates([&] { dc->ChangeMarkerPos(); }));
    EXPECT_EQ(LastAsked(), QStringLiteral("EditSizeValue \"Output #1 Pos\" Size=%1 Min=%2 Max=%3 "
                                          "Inc=1 Pos=-1,-1")
                               .arg(pos)
                               .arg(pos - 100)
                               .arg(pos + 100));
    EXPECT_EQ(a->FOutputs.at(0).P.Y, pos + 7);
    // The block reports the moved marker: the wire starts at it again.
    EXPECT_EQ(out->FPoints.front(), MarkerAt(a, 1));
}

TEST_F(BlockCommands, ChangeMarkerPosOfAnInputSaysInput) {
    SelectMarker(a, -1);
    const int pos = a->FInputs.at(0).P.Y;
    dialogs.Expect(TDialogAnswer::SizeValue(pos - 100));
    dc->ChangeMarkerPos();
    EXPECT_EQ(dialogs.Asked().at(0).Caption, QStringLiteral("Input #1 Pos"));
    EXPECT_EQ(a->FInputs.at(0).P.Y, pos - 100);
}

TEST_F(BlockCommands, ChangeMarkerPosOfAMarkerAboveTheBlockSaysMarkerWasNotFound) {
    SelectMarker(a, -1);
    a->SetSelMarkerPos(-5);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Error());
    dc->ChangeMarkerPos();
    EXPECT_EQ(Log(), QStringList{QStringLiteral("ErrorMessageDlg \"Marker was not found\"")});
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, ChangeMarkerPosCancelledChangesNothing) {
    Connect(a, 1, b, -1);
    SelectMarker(a, 1);
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    EXPECT_FALSE(Invalidates([&] { dc->ChangeMarkerPos(); }));
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, ChangeMarkerTypeSetsTheTypeInTheItemsTagOnTheSelectedMarkerOnly) {
    SelectMarker(a, -2);
    EXPECT_TRUE(Invalidates([&] { dc->ChangeMarkerType(TypeItem(itArrow)); }));
    EXPECT_EQ(a->FInputs.at(1).IOType, itArrow);
    EXPECT_EQ(a->FInputs.at(0).IOType, itDirect);
    EXPECT_EQ(a->FOutputs.at(0).IOType, itDirect);
    SelectMarker(a, 1);
    dc->ChangeMarkerType(TypeItem(itInversion));
    EXPECT_EQ(a->FOutputs.at(0).IOType, itInversion);
    EXPECT_EQ(a->FInputs.at(1).IOType, itArrow);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(BlockCommands, ChangeMarkerTypeWithNoMarkerSelectedDoesNothing) {
    SelectMarker(a, 0);
    const auto before = State();
    EXPECT_FALSE(Invalidates([&] { dc->ChangeMarkerType(TypeItem(itArrow)); }));
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, ChangeMarkerTypeWithATagThatIsNoMarkerTypeDoesNothing) {
    SelectMarker(a, -1);
    const auto before = State();
    for (intptr_t tag : {intptr_t(3), intptr_t(-1), intptr_t(255), intptr_t(1) << 40}) {
        dc->ChangeMarkerType(TypeItem(tag));
        EXPECT_EQ(State(), before) << tag;
        EXPECT_EQ(a->FInputs.at(0).IOType, itDirect);
    }
    // Nor does a sender that is no menu item.
    dc->ChangeMarkerType(nullptr);
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, MarkerAndCountCommandsLeaveABlockThatIsNoTextBlockAlone) {
    auto* plain = new TDiagObject(dc->ObjList.get(), 150, 200, 60, 60, doNone, true);
    plain->FInputs.push_back(TDotMarker{{0, 20}, itDirect, 6});
    SelectMarker(plain, -1);
    const auto before = State();
    dc->ChangeMarkerSize();
    dc->ChangeMarkerPos();
    dc->ChangeMarkerType(TypeItem(itArrow));
    dc->SetHorizMargin();
    dc->SetInputCount();
    dc->SetOutputCount();
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_EQ(State(), before);
    EXPECT_EQ(plain->FInputs.at(0), (TDotMarker{{0, 20}, itDirect, 6}));
}

// ---- texts ------------------------------------------------------------------------------------

namespace {
class TextCommands : public BlockCommands {
protected:
    TDiagObject* rs = nullptr; // RS trigger, titles R, S, T

    void SetUp() override {
        BlockCommands::SetUp();
        rs = Place(doRSTrigger, 120, 40);
        dc->SelObj = rs;
    }

    std::vector<TPoint> Starts() const {
        std::vector<TPoint> r;
        for (const TDiagLabel& l : rs->FLabels)
            r.push_back(l.Start);
        return r;
    }
    std::vector<int> Heights() const {
        std::vector<int> r;
        for (const TDiagLabel& l : rs->FLabels)
            r.push_back(l.Height);
        return r;
    }
};
} // namespace

TEST_F(TextCommands, SetTextValuesGivesNewTitlesTheOldPositions) {
    const std::vector<TPoint> starts = Starts();
    ASSERT_EQ(starts.size(), 3u);
    // On its own the block centres longer titles elsewhere.
    auto* twin = Place(doRSTrigger, 250, 40);
    twin->SetTextValues(QStringLiteral("Reset|Set|Toggle"));
    std::vector<TPoint> twinStarts;
    for (const TDiagLabel& l : twin->FLabels)
        twinStarts.push_back(l.Start);
    ASSERT_NE(twinStarts, starts);

    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("Reset|Set|Toggle")));
    EXPECT_TRUE(Invalidates([&] { dc->SetTextValues(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("InputQuery \"Text Titles\" \"Values, delimited by |\" \"R|S|T\""));
    EXPECT_EQ(rs->GetTextValues(), QStringLiteral("Reset|Set|Toggle"));
    EXPECT_EQ(Starts(), starts);
}

TEST_F(TextCommands, SetTextValuesCancelledChangesNothing) {
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    EXPECT_FALSE(Invalidates([&] { dc->SetTextValues(); }));
    EXPECT_EQ(State(), before);
}

TEST_F(TextCommands, SetTextPosValuesShowsThePositionsAndSetsThoseTyped) {
    const std::vector<TPoint> s = Starts();
    const QString shown = QStringLiteral("%1,%2|%3,%4|%5,%6")
                              .arg(s[0].X)
                              .arg(s[0].Y)
                              .arg(s[1].X)
                              .arg(s[1].Y)
                              .arg(s[2].X)
                              .arg(s[2].Y);
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("1,2|3,-4")));
    EXPECT_TRUE(Invalidates([&] { dc->SetTextPosValues(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("InputQuery \"Text Pos Values\" \"Values, delimited by |\" \"%1\"")
                  .arg(shown));
    EXPECT_EQ(Starts(), (std::vector<TPoint>{{1, 2}, {3, -4}, s[2]}));
}

TEST_F(TextCommands, SetTextPosValuesWithABadPieceRaisesTheConversionErrorAndChangesNothing) {
    const auto before = State();
    const std::vector<TPoint> starts = Starts();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("1,2|x")));
    EXPECT_THROW(dc->SetTextPosValues(), EConvertError);
    EXPECT_EQ(Starts(), starts);
    EXPECT_EQ(State(), before);
}

TEST_F(TextCommands, SetTextPosValuesCancelledChangesNothing) {
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    dc->SetTextPosValues();
    EXPECT_EQ(State(), before);
}

TEST_F(TextCommands, SetTextHeightsShowsTheHeightsAndSetsThoseTyped) {
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("12|14")));
    EXPECT_TRUE(Invalidates([&] { dc->SetTextHeights(); }));
    EXPECT_EQ(
        LastAsked(),
        QStringLiteral("InputQuery \"Text Heights\" \"Values, delimited by |\" \"26|26|26\""));
    EXPECT_EQ(Heights(), (std::vector<int>{12, 14, 26}));
}

TEST_F(TextCommands, SetTextHeightsWithABadPieceRaisesTheConversionErrorAndChangesNothing) {
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Query(QStringLiteral("12|zz")));
    EXPECT_THROW(dc->SetTextHeights(), EConvertError);
    EXPECT_EQ(Heights(), (std::vector<int>{26, 26, 26}));
    EXPECT_EQ(State(), before);
}

TEST_F(TextCommands, SetTextHeightsCancelledChangesNothing) {
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkInputQuery));
    dc->SetTextHeights();
    EXPECT_EQ(State(), before);
}

// ---- counts and margins -----------------------------------------------------------------------

TEST_F(BlockCommands, SetHorizMarginAsksFrom4To30AndSetsTheLeadLength) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(12));
    EXPECT_TRUE(Invalidates([&] { dc->SetHorizMargin(); }));
    EXPECT_EQ(LastAsked(),
              QStringLiteral("EditSizeValue \"Horiz Margin\" Size=8 Min=4 Max=30 Inc=1 Pos=-1,-1"));
    EXPECT_EQ(a->GetDeltaWidth(), 12);
}

TEST_F(BlockCommands, SetHorizMarginCancelledChangesNothing) {
    dc->SelObj = a;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    dc->SetHorizMargin();
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, SetInputCountThenAsksOneTypeForAllInputs) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(4)).Expect(TDialogAnswer::Item(1));
    EXPECT_TRUE(Invalidates([&] { dc->SetInputCount(); }));
    EXPECT_EQ(
        Log(),
        (QStringList{
            QStringLiteral("EditSizeValue \"Input Count\" Size=2 Min=0 Max=30 Inc=1 Pos=-1,-1"),
            QStringLiteral("SelectItem \"Select marker type\" [Direct|Inversion|Arrow] Default=0"),
        }));
    auto* t = dynamic_cast<TDiagText*>(a);
    EXPECT_EQ(t->FInCount, 4);
    ASSERT_EQ(a->FInputs.size(), 4u);
    for (const TDotMarker& m : a->FInputs)
        EXPECT_EQ(m.IOType, itInversion);
    EXPECT_EQ(a->FOutputs.at(0).IOType, itDirect);
}

TEST_F(BlockCommands, SetInputCountWithTheTypeNotChosenKeepsTheNewCountAndRepaints) {
    dc->SelObj = a;
    a->FInputs.at(0).IOType = itArrow;
    dialogs.Expect(TDialogAnswer::SizeValue(3)).Expect(TDialogAnswer::Cancel(dkSelectItem));
    EXPECT_TRUE(Invalidates([&] { dc->SetInputCount(); }));
    ASSERT_EQ(a->FInputs.size(), 3u);
    for (const TDotMarker& m : a->FInputs)
        EXPECT_EQ(m.IOType, itDirect);
}

TEST_F(BlockCommands, SetInputCountCancelledChangesNothing) {
    dc->SelObj = a;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    EXPECT_FALSE(Invalidates([&] { dc->SetInputCount(); }));
    EXPECT_EQ(State(), before);
}

TEST_F(BlockCommands, SetOutputCountAsksNoType) {
    dc->SelObj = a;
    dialogs.Expect(TDialogAnswer::SizeValue(3));
    EXPECT_TRUE(Invalidates([&] { dc->SetOutputCount(); }));
    EXPECT_EQ(Log(), QStringList{QStringLiteral(
                         "EditSizeValue \"Output Count\" Size=1 Min=0 Max=30 Inc=1 Pos=-1,-1")});
    EXPECT_EQ(dynamic_cast<TDiagText*>(a)->FOutCount, 3);
    EXPECT_EQ(a->FOutputs.size(), 3u);
}

TEST_F(BlockCommands, SetOutputCountCancelledChangesNothing) {
    dc->SelObj = a;
    const auto before = State();
    dialogs.Expect(TDialogAnswer::Cancel(dkEditSizeValue));
    dc->SetOutputCount();
    EXPECT_EQ(State(), before);
}
