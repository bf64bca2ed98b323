// Direct editing: real mouse and key events on the surface, checked on the model, the stream and
// the undo stack; each gesture also with direct editing off, where the classic rules hold.

#include "direct_fixture.h"

#include "velDiagEdit/platform/translations.h"

#include <QSignalSpy>
#include <QTest>

using namespace vde;
using namespace vde::test;

// ---- wires by dragging ------------------------------------------------------------------------

TEST_F(DirectFixture, AWireDraggedBetweenMarkersAtDifferentHeightsIsSquareAndEndsOnThem) {
    const auto before = Stream();
    ASSERT_NE(Tip(a, 1).Y, Tip(b, -1).Y);
    DragPanel(Aim(a, 1), Aim(b, -1), 6);
    ASSERT_EQ(dc->ConList->Count(), 1);
    const TDiagConnection* w = Con(0);
    EXPECT_TRUE(Square(w->FPoints));
    // One pixel back through each marker, the model's rule for a wire's end.
    const TPoint s = Tip(a, 1), t = Tip(b, -1);
    EXPECT_EQ(w->FPoints.front(), (TPoint{s.X - 1, s.Y}));
    EXPECT_EQ(w->FPoints.back(), (TPoint{t.X + 1, t.Y}));
    EXPECT_EQ(w->GetSrcObject(), a);
    EXPECT_EQ(w->GetDstObject(), b);
    EXPECT_EQ(w->GetSrcKey(), a->GetObjKey());
    EXPECT_EQ(w->GetDstKey(), b->GetObjKey());
    EXPECT_EQ(w->FSrcConIdx, 1);
    EXPECT_EQ(w->FDstConIdx, -1);
    // One step, undone and redone byte for byte.
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Add Connection"));
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(DirectFixture, AWireDraggedFromAnInputRunsFromTheOutput) {
    DragPanel(Aim(b, -2), Aim(a, 1), 4);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(Con(0)->GetSrcObject(), a);
    EXPECT_EQ(Con(0)->FSrcConIdx, 1);
    EXPECT_EQ(Con(0)->GetDstObject(), b);
    EXPECT_EQ(Con(0)->FDstConIdx, -2);
    EXPECT_TRUE(Square(Con(0)->FPoints));
}

TEST_F(DirectFixture, TheSameDragWithDirectEditingOffOnlySelectsTheBlock) {
    dc->SetDirectEditing(false);
    const auto before = Stream();
    DragPanel(Aim(a, 1), Aim(b, -1), 6);
    // Classic: no Shift, no drag; the release on the pressed block selects it.
    EXPECT_EQ(dc->ConList->Count(), 0);
    EXPECT_TRUE(a->GetSelected());
    EXPECT_FALSE(b->GetSelected());
    EXPECT_EQ(dc->SelObj.data(), a);
    EXPECT_EQ(stack->count(), 0);
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 110, 160}));
    EXPECT_EQ(b->BoundsRect(), (TRect{250, 120, 310, 220}));
    // What the stream holds changed only by the selected block.
    dc->SelObj = nullptr;
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(DirectFixture, ADropOnASegmentEndsTheWireWithAJunction) {
    DragPanel(Aim(a, 1), Aim(b, -1), 6);
    ASSERT_EQ(dc->ConList->Count(), 1);
    // A third gate below; its output is dragged onto the first wire's vertical segment.
    TDiagObject* c = Place(doAndLogic, 40, 200);
    stack->clear();
    const TPoints first = Con(0)->FPoints;
    int vertical = -1;
    for (size_t i = 0; i + 1 < first.size(); ++i)
        if (first[i].X == first[i + 1].X && first[i].Y != first[i + 1].Y)
            vertical = int(i);
    ASSERT_GE(vertical, 0);
    const int x = first[size_t(vertical)].X;
    const int y = (first[size_t(vertical)].Y + first[size_t(vertical) + 1].Y) / 2;
    DragPanel(Aim(c, 1), QPoint(x + 2, y), 5);
    ASSERT_EQ(dc->ConList->Count(), 2);
    const TDiagConnection* w = Con(1);
    EXPECT_EQ(w->GetSrcObject(), c);
    EXPECT_EQ(w->FDstCrossInfo, (LongRec{uint16_t(vertical + 1), 1}));
    EXPECT_TRUE(Square(w->FPoints));
    // It ends on the segment's line, between its ends.
    EXPECT_EQ(w->FPoints.back().X, x);
    EXPECT_EQ(w->FPoints.back().Y, y);
    EXPECT_EQ(stack->count(), 1);
}

TEST_F(DirectFixture, ADropOnEmptySurfaceLeavesASquareWireEndingThere) {
    DragPanel(Aim(a, 1), QPoint(200, 40), 5);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_TRUE(Square(Con(0)->FPoints));
    EXPECT_EQ(Con(0)->FPoints.back(), (TPoint{200, 40}));
    EXPECT_EQ(Con(0)->GetDstObject(), nullptr);
    EXPECT_EQ(stack->count(), 1);
}

TEST_F(DirectFixture, AFreeEndSnapsToTheGrid) {
    dc->SetGridSize(8);
    DragPanel(Aim(a, 1), QPoint(203, 37), 5);
    ASSERT_EQ(dc->ConList->Count(), 1);
    // 203 is nearest 200 and 37 nearest 40 on an 8-pixel grid.
    EXPECT_EQ(Con(0)->FPoints.back(), (TPoint{200, 40}));
}

TEST_F(DirectFixture, AnInputDroppedOnAnInputIsRefusedWithAMessage) {
    const auto before = Stream();
    dialogs.Expect(TDialogAnswer::Error());
    DragPanel(Aim(a, -1), Aim(b, -1), 5);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("An input cannot be wired to an input"));
}

TEST_F(DirectFixture, AMarkerThatIsNotFreeRefusesTheDropWithTheCommandsMessage) {
    DragPanel(Aim(a, 1), Aim(b, -1), 5);
    ASSERT_EQ(dc->ConList->Count(), 1);
    const auto before = Stream();
    stack->clear();
    dialogs.Expect(TDialogAnswer::Error());
    DragPanel(Aim(a, 1), Aim(b, -2), 5);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("Marker is not free"));
}

TEST_F(DirectFixture, EscapeCancelsAWireUnderWay) {
    const auto before = Stream();
    const QPoint from = Aim(a, 1);
    Press(from);
    MoveTo(from + QPoint(30, 10));
    MoveTo(from + QPoint(60, 20));
    Key(Qt::Key_Escape);
    Release(from + QPoint(60, 20));
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(DirectFixture, AWireDragShowsAPreviewWhileUnderWay) {
    const QPoint from = Aim(a, 1);
    Press(from);
    MoveTo(from + QPoint(40, 0));
    MoveTo(Aim(b, -1));
    Flush();
    // The preview is drawn over the empty stretch between the gates, where nothing else is.
    const QImage img = Render();
    const TPoint s = Tip(a, 1), t = Tip(b, -1);
    int coloured = 0;
    for (int x = s.X + 5; x < t.X - 5; ++x)
        for (int y = std::min(s.Y, t.Y); y <= std::max(s.Y, t.Y); ++y)
            if (img.pixelColor(x, y) != QColor(Qt::white))
                ++coloured;
    EXPECT_GT(coloured, 20);
    EXPECT_TRUE(dc->Hint().startsWith(QStringLiteral("Release to wire output 1 to input 1")))
        << dc->Hint().toStdString();
    Key(Qt::Key_Escape);
    Release(Aim(b, -1));
    Flush();
    const QImage clean = Render();
    int left = 0;
    for (int x = s.X + 5; x < t.X - 5; ++x)
        for (int y = std::min(s.Y, t.Y); y <= std::max(s.Y, t.Y); ++y)
            if (clean.pixelColor(x, y) != QColor(Qt::white))
                ++left;
    EXPECT_EQ(left, 0);
}

// ---- selecting and moving ---------------------------------------------------------------------

TEST_F(DirectFixture, AClickSelectsABlockAndASecondClickKeepsIt) {
    Click(QPoint(80, 100));
    EXPECT_TRUE(a->GetSelected());
    EXPECT_EQ(dc->SelObj.data(), a);
    Click(QPoint(80, 100));
    EXPECT_TRUE(a->GetSelected());
    Click(QPoint(280, 160));
    EXPECT_FALSE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(DirectFixture, WithDirectEditingOffASecondClickDeselects) {
    dc->SetDirectEditing(false);
    Click(QPoint(80, 100));
    EXPECT_TRUE(a->GetSelected());
    Click(QPoint(80, 100));
    EXPECT_FALSE(a->GetSelected());
}

TEST_F(DirectFixture, CtrlClickTogglesBlocksInTheSelection) {
    Click(QPoint(80, 100));
    Click(QPoint(280, 160), Qt::ControlModifier);
    EXPECT_TRUE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
    Click(QPoint(80, 100), Qt::ControlModifier);
    EXPECT_FALSE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
}

TEST_F(DirectFixture, ADragMovesABlockWithoutShiftInOneStep) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    Click(QPoint(70, 120));
    const auto before = Stream();
    stack->clear();
    DragPanel(QPoint(70, 120), QPoint(100, 137), 5);
    EXPECT_EQ(a->BoundsRect(), (TRect{80, 77, 140, 177}));
    // The wire between the two gates is routed square again, one pixel back through each marker.
    const TPoint s = Tip(a, 1), t = Tip(b, -1);
    EXPECT_EQ(Con(0)->FPoints.front(), (TPoint{s.X - 1, s.Y}));
    EXPECT_EQ(Con(0)->FPoints.back(), (TPoint{t.X + 1, t.Y}));
    EXPECT_TRUE(Square(Con(0)->FPoints));
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Move"));
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(DirectFixture, WithDirectEditingOffADragWithoutShiftMovesNothing) {
    dc->SetDirectEditing(false);
    DragPanel(QPoint(70, 120), QPoint(100, 137), 5);
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 110, 160}));
    EXPECT_EQ(stack->count(), 0);
    // The release selects it, as a click does.
    EXPECT_TRUE(a->GetSelected());
}

TEST_F(DirectFixture, AMoveSnapsToTheGrid) {
    dc->SetGridSize(8);
    DragPanel(QPoint(70, 120), QPoint(93, 131), 3);
    // 50 + 23 = 73 -> 72, 60 + 11 = 71 -> 72.
    EXPECT_EQ(a->BoundsRect(), (TRect{72, 72, 132, 172}));
}

TEST_F(DirectFixture, EscapePutsAMovedBlockBack) {
    Press(QPoint(70, 120));
    MoveTo(QPoint(90, 130));
    MoveTo(QPoint(110, 140));
    Key(Qt::Key_Escape);
    Release(QPoint(110, 140));
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 110, 160}));
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(DirectFixture, TheCornerHandleOfTheSelectedBlockResizesWithTheMinimumHeld) {
    Click(QPoint(80, 100));
    const auto before = Stream();
    DragPanel(QPoint(110, 160), QPoint(135, 200), 4);
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 135, 200}));
    EXPECT_EQ(dc->Hint(), QStringLiteral("Drag to resize"));
    DragPanel(QPoint(135, 200), QPoint(20, 20), 4);
    // 50 pixels is as small as a block gets.
    EXPECT_EQ(a->BoundsRect(), (TRect{50, 60, 100, 110}));
    ASSERT_EQ(stack->count(), 2);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Resize"));
    stack->undo();
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(DirectFixture, ARubberBandSelectsTheBlocksAndWiresInsideIt) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    TDiagObject* c = Place(doAndLogic, 300, 10); // partly outside the band below
    stack->clear();
    DragPanel(QPoint(20, 40), QPoint(340, 250), 6);
    EXPECT_TRUE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
    EXPECT_FALSE(c->GetSelected());
    ASSERT_EQ(dc->SelectedWires().size(), 1u);
    EXPECT_EQ(dc->SelectedWires()[0], Con(0));
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(DirectFixture, WithDirectEditingOffARubberBandSelectsNothing) {
    dc->SetDirectEditing(false);
    DragPanel(QPoint(20, 40), QPoint(340, 250), 6);
    EXPECT_FALSE(a->GetSelected());
    EXPECT_FALSE(b->GetSelected());
    EXPECT_TRUE(dc->SelectedBlocks().empty());
}

TEST_F(DirectFixture, AGroupMovesAsOneStepAndItsInnerWireShiftsWhole) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    const TPoints path = Con(0)->FPoints;
    DragPanel(QPoint(20, 40), QPoint(340, 250), 6);
    const auto before = Stream();
    stack->clear();
    DragPanel(QPoint(80, 100), QPoint(70, 130), 3);
    EXPECT_EQ(a->BoundsRect(), (TRect{40, 90, 100, 190}));
    EXPECT_EQ(b->BoundsRect(), (TRect{240, 150, 300, 250}));
    ASSERT_EQ(Con(0)->FPoints.size(), path.size());
    for (size_t i = 0; i < path.size(); ++i)
        EXPECT_EQ(Con(0)->FPoints[i], (TPoint{path[i].X - 10, path[i].Y + 30}));
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(DirectFixture, DeletingAGroupDeletesTheWiresEndingOnIt) {
    TDiagObject* c = Place(doAndLogic, 150, 200);
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    DragPanel(Aim(c, 1), Aim(b, -2), 4);
    ASSERT_EQ(dc->ConList->Count(), 2);
    Click(QPoint(80, 100));
    Click(QPoint(280, 160), Qt::ControlModifier);
    const auto before = Stream();
    stack->clear();
    Key(Qt::Key_Delete);
    ASSERT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->ObjList->Items(0), c);
    EXPECT_EQ(dc->ConList->Count(), 0);
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(DirectFixture, ArrowKeysMoveTheWholeSelectionAndMerge) {
    Click(QPoint(80, 100));
    Click(QPoint(280, 160), Qt::ControlModifier);
    const auto before = Stream();
    Key(Qt::Key_Right);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    Key(Qt::Key_Up);
    EXPECT_EQ(a->BoundsRect(), (TRect{61, 59, 121, 159}));
    EXPECT_EQ(b->BoundsRect(), (TRect{261, 119, 321, 219}));
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(DirectFixture, CtrlASelectsEverything) {
    DragPanel(Aim(a, 1), Aim(b, -1), 4);
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(a->GetSelected());
    EXPECT_TRUE(b->GetSelected());
    EXPECT_EQ(dc->SelectedWires().size(), 1u);
}

TEST_F(DirectFixture, WithDirectEditingOffCtrlADoesNothing) {
    dc->SetDirectEditing(false);
    Key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_FALSE(a->GetSelected());
    EXPECT_FALSE(b->GetSelected());
}

// ---- signals, extent and hints ----------------------------------------------------------------

TEST_F(DirectFixture, SignalsComeInBothModes) {
    for (bool direct : {true, false}) {
        dc->SetDirectEditing(direct);
        QSignalSpy changed(dc.get(), &TDiagContainer::diagramChanged);
        QSignalSpy selection(dc.get(), &TDiagContainer::selectionChanged);
        QSignalSpy design(dc.get(), &TDiagContainer::designModeChanged);
        Click(QPoint(80, 100));
        EXPECT_GE(selection.count(), 1) << direct;
        Key(Qt::Key_Right);
        EXPECT_GE(changed.count(), 1) << direct;
        dc->SetDesignMode(false);
        dc->SetDesignMode(true);
        ASSERT_EQ(design.count(), 2) << direct;
        EXPECT_EQ(design[0][0].toBool(), false);
        EXPECT_EQ(design[1][0].toBool(), true);
        Key(Qt::Key_Escape);
    }
}

TEST_F(DirectFixture, TheExtentFollowsTheDiagramAndTheSurfaceGrowsToHoldIt) {
    QSignalSpy extent(dc.get(), &TDiagContainer::extentChanged);
    const QRect r0 = dc->DiagramRect();
    // Gate b's body reaches 309, 219; its marker tips stand out to the right.
    EXPECT_LE(r0.left(), 50);
    EXPECT_EQ(r0.top(), 60);
    EXPECT_GE(r0.right(), 309);
    EXPECT_EQ(r0.bottom(), 219);
    DragPanel(QPoint(280, 160), QPoint(380, 280), 5);
    ASSERT_GE(extent.count(), 1);
    const QRect r1 = extent.last()[0].toRect();
    EXPECT_EQ(r1, dc->DiagramRect());
    // Moved by 100, 120: the body now reaches 409, 339.
    EXPECT_EQ(r1.bottom(), 339);
    EXPECT_GE(r1.right(), 409);
    EXPECT_GE(panel.width(), r1.right() + 1 + TDiagContainer::kSurfaceMargin);
    EXPECT_EQ(panel.height(), 339 + 1 + TDiagContainer::kSurfaceMargin);
}

TEST_F(DirectFixture, WithDirectEditingOffTheExtentIsReportedButTheSurfaceKeepsItsSize) {
    dc->SetDirectEditing(false);
    b->SetBounds(330, 250, 60, 100);
    QSignalSpy extent(dc.get(), &TDiagContainer::extentChanged);
    // The classic click selects the block and the arrow key moves it one pixel right.
    Click(QPoint(360, 280));
    ASSERT_TRUE(b->GetSelected());
    Key(Qt::Key_Right);
    ASSERT_EQ(extent.count(), 1);
    EXPECT_EQ(extent[0][0].toRect().bottom(), 349);
    EXPECT_EQ(panel.size(), QSize(400, 300));
}

TEST_F(DirectFixture, HoverNamesWhatAPressWouldDo) {
    QSignalSpy hints(dc.get(), &TDiagContainer::hintChanged);
    MoveTo(Aim(a, 1));
    EXPECT_EQ(dc->Hint(), QStringLiteral("Drag to draw a wire from output 1"));
    MoveTo(QPoint(200, 260));
    EXPECT_EQ(dc->Hint(), QStringLiteral("Drag to select blocks and wires"));
    EXPECT_GE(hints.count(), 2);
}

TEST_F(DirectFixture, ABlocksTooltipNamesItsKindAndCounts) {
    dc->SetDirectEditing(false);
    panel.setToolTip(QStringLiteral("host"));
    dc->SetDirectEditing(true);
    MoveTo(QPoint(80, 100));
    // An AND gate has two inputs and one output.
    EXPECT_EQ(panel.toolTip(), QStringLiteral("AndLogic: 2 input(s), 1 output(s)"));
    // With the library's English texts installed the kind is named as the menus name it.
    ASSERT_TRUE(InstallTranslations(QLocale(QLocale::English)));
    MoveTo(QPoint(200, 260));
    MoveTo(QPoint(80, 100));
    const QString tip = panel.toolTip(), hint = dc->Hint();
    RemoveTranslations();
    EXPECT_EQ(tip, QStringLiteral("AND gate: 2 input(s), 1 output(s)"));
    EXPECT_EQ(hint,
              QStringLiteral("Click to select AND gate, drag to move it, Ctrl-click to add it"));
    MoveTo(QPoint(200, 260));
    EXPECT_EQ(panel.toolTip(), QString());
    dc->SetDirectEditing(false);
    EXPECT_EQ(panel.toolTip(), QStringLiteral("host"));
    // A tooltip the host set meanwhile stays.
    dc->SetDirectEditing(true);
    panel.setToolTip(QStringLiteral("mine"));
    dc->SetDirectEditing(false);
    EXPECT_EQ(panel.toolTip(), QStringLiteral("mine"));
}
