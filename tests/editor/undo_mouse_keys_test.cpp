// Mouse edits and keys of the surface with undo: a drag from press to release is one step; the
// keys, pressed with QTest on the surface, work in design mode and change nothing outside it.

#include "commands_test_util.h"
#include "common/mouse_util.h"
#include "undo_test_util.h"

#include <QAction>
#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class UndoSurface : public CommandsFixture {
protected:
    TDiagObject* a = nullptr; // AND gate at (50, 60), 60 x 100 by default
    TDiagObject* b = nullptr; // AND gate at (250, 120)
    TDiagUndoStack* stack = nullptr;

    void SetUp() override {
        CommandsFixture::SetUp();
        a = Place(doAndLogic, 50, 60);
        b = Place(doAndLogic, 250, 120);
        const int k = dc->ConList->AddConnection(a, 1, 20);
        b->SetSelMarkerIndex(-1);
        dc->ConList->Items(k)->EndConnection(b, false);
        b->SetSelMarkerIndex(0);
        // Routed as a move of either block routes it.
        dc->ConList->UpdatePath(b);
        dc->AssignContextMenus(&menuConnections, &menuObjects);
        dc->SetDesignMode(true);
        stack = dc->UndoStack();
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

    void Select(TDiagObject* block) {
        dc->SelObj = block;
        block->SetSelected(true);
        dc->ObjList->DeselectAll(block);
    }

    TDiagObject* Block(int i) const { return dc->ObjList->Items(i); }
    TDiagConnection* Con(int i) const { return dc->ConList->Items(i); }

    // A Shift-drag of `block` by (dx, dy) in `steps` mouse moves, grabbed `grab` pixels inside
    // its top-left corner (block coordinates).
    void Drag(TDiagObject* block, QPoint grab, int dx, int dy, int steps) {
        input.Shift = ssShift;
        input.Pos = Screen({block->x() + grab.x(), block->y() + grab.y()});
        vde::test::MousePress(block, Qt::LeftButton, Qt::NoModifier, grab);
        QPoint local = grab;
        for (int i = 1; i <= steps; ++i) {
            const int sx = dx * i / steps - dx * (i - 1) / steps;
            const int sy = dy * i / steps - dy * (i - 1) / steps;
            input.Pos = {input.Pos.X + sx, input.Pos.Y + sy};
            local += QPoint(sx, sy);
            vde::test::MouseMove(block, local);
        }
        vde::test::MouseRelease(block, Qt::LeftButton, Qt::NoModifier, local);
        input.Shift = 0;
    }

    void Key(int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::keyClick(&panel, Qt::Key(key), mods);
    }
};

} // namespace

// ---- drags ------------------------------------------------------------------------------------

TEST_F(UndoSurface, AMoveDragIsOneStepFromPressToRelease) {
    const auto before = Stream();
    Drag(a, QPoint(20, 10), 30, 17, 5);
    EXPECT_EQ(Block(0)->BoundsRect(), (TRect{80, 77, 140, 177}));
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Move"));
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(Block(0)->BoundsRect(), (TRect{50, 60, 110, 160}));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(UndoSurface, AResizeDragIsOneStepNamedResize) {
    const auto before = Stream();
    // 3 pixels inside the bottom-right corner: a resize.
    Drag(a, QPoint(57, 97), 25, 40, 4);
    EXPECT_EQ(Block(0)->BoundsRect(), (TRect{50, 60, 135, 200}));
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Resize"));
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
    // Bounds alone give a resized gate's record back: its markers follow its size.
    EXPECT_EQ(Block(0), a);
    EXPECT_EQ(dc->FullRestoreCount(), 0);
}

TEST_F(UndoSurface, TheWiresOfADraggedBlockComeBackRoutedAsBefore) {
    const TPoints path = Con(0)->FPoints;
    Drag(b, QPoint(20, 10), -40, 60, 3);
    ASSERT_NE(Con(0)->FPoints, path);
    stack->undo();
    EXPECT_EQ(Con(0)->FPoints, path);
    EXPECT_EQ(Con(0)->GetDstObject(), Block(1));
}

TEST_F(UndoSurface, ADragThatEndsWhereItBeganLeavesNoStep) {
    const auto before = Stream();
    Drag(a, QPoint(20, 10), 0, 0, 2);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(UndoSurface, AClickThatOnlySelectsLeavesNoStep) {
    vde::test::MouseClick(a, Qt::LeftButton, Qt::NoModifier, QPoint(30, 50));
    EXPECT_TRUE(a->FSelected);
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(UndoSurface, ADragsStepHoldsTheBlockAndItsWiresNotTheWholeDiagram) {
    // 300 more blocks: the stream grows by their records, the step by nothing.
    for (int i = 0; i < 300; ++i)
        Place(doAndLogic, 400 + 70 * (i % 20), 300 + 110 * (i / 20));
    const auto before = Stream();
    Drag(a, QPoint(20, 10), 30, 17, 2);
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    // Two AND gate records and two records of its one wire, a few hundred bytes at most.
    EXPECT_LT(stack->MemoryUsed(), 1000);
    EXPECT_GT(int64_t(before.size()), 300 * 60);
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), after));
    // The block and the wire are the same objects, moved back and forth.
    EXPECT_EQ(Block(0), a);
    EXPECT_EQ(dc->FullRestoreCount(), 0);
}

TEST_F(UndoSurface, ASelectionMadeAfterADragComesBackWithItsRedo) {
    Drag(a, QPoint(20, 10), 30, 17, 2);
    const auto afterDrag = Stream();
    SelectSegment(LR(1, 1));
    Select(b);
    const auto selected = Stream();
    ASSERT_FALSE(SameBytes(selected, afterDrag));
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), selected));
}

TEST_F(UndoSurface, DragStepsSurviveTheOldestStepsBeingDroppedForMemory) {
    std::vector<std::vector<uint8_t>> states{Stream()};
    for (int i = 0; i < 4; ++i) {
        Drag(i % 2 ? b : a, QPoint(20, 10), 10 + i, 5, 1);
        states.push_back(Stream());
    }
    ASSERT_EQ(stack->count(), 4);
    // Room for about two of them: the oldest go, the rest still undo exactly.
    stack->SetMemoryLimit(stack->MemoryUsed() / 2);
    ASSERT_LT(stack->count(), 4);
    ASSERT_GT(stack->count(), 0);
    const int kept = stack->count();
    for (int i = 0; i < kept; ++i) {
        stack->undo();
        EXPECT_TRUE(SameBytes(Stream(), states[size_t(4 - i - 1)])) << i;
    }
    for (int i = 0; i < kept; ++i)
        stack->redo();
    EXPECT_TRUE(SameBytes(Stream(), states[4]));
}

TEST_F(UndoSurface, ADragUndoneAfterTheHostRemovedItsBlockBehindTheStackChangesNothing) {
    Drag(b, QPoint(20, 10), 30, 17, 2);
    delete a; // not through the stack: the step's block is no longer where it was
    const auto now = Stream();
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), now));
}

// ---- undo and redo keys -----------------------------------------------------------------------

TEST_F(UndoSurface, CtrlZUndoesAndCtrlShiftZAndCtrlYRedo) {
    const auto before = Stream();
    Drag(a, QPoint(20, 10), 30, 0, 1);
    const auto after = Stream();
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(SameBytes(Stream(), after));
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    Key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(UndoSurface, TheSurfaceKeysComeBeforeAHostShortcutWithTheSameKeysInDesignMode) {
    QAction hostUndo(&panel);
    hostUndo.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    hostUndo.setShortcutContext(Qt::WindowShortcut);
    panel.addAction(&hostUndo);
    int triggered = 0;
    QObject::connect(&hostUndo, &QAction::triggered, [&] { ++triggered; });
    const auto before = Stream();
    Drag(a, QPoint(20, 10), 30, 0, 1);
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(triggered, 0);
}

// ---- Delete -----------------------------------------------------------------------------------

TEST_F(UndoSurface, DeleteDeletesTheSelectedBlockAsTheDeleteCommandDoes) {
    Select(a);
    const auto before = Stream();
    Key(Qt::Key_Delete);
    EXPECT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->ObjList->Items(0), b);
    EXPECT_EQ(dc->SelObj, nullptr);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Delete"));
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(UndoSurface, DeleteWithASegmentSelectedAndNoBlockDeletesTheSegment) {
    Wire(*dc->ConList, {{20, 250}, {120, 250}, {120, 280}});
    SelectSegment(LR(2, 2));
    Key(Qt::Key_Delete);
    EXPECT_EQ(Con(1)->FPoints, (TPoints{{20, 250}, {120, 250}}));
    EXPECT_EQ(dc->ObjList->Count(), 2);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Del. Segment"));
}

TEST_F(UndoSurface, DeleteWithABlockClickedOffAgainDeletesNoBlock) {
    vde::test::MouseClick(a, Qt::LeftButton, Qt::NoModifier, QPoint(30, 50));
    vde::test::MouseClick(a, Qt::LeftButton, Qt::NoModifier, QPoint(30, 50));
    ASSERT_EQ(dc->SelObj, a);
    ASSERT_FALSE(a->FSelected);
    const auto before = Stream();
    Key(Qt::Key_Delete);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

// ---- arrows -----------------------------------------------------------------------------------

TEST_F(UndoSurface, ArrowsMoveTheSelectedBlockByOnePixelAndWithShiftByTen) {
    Select(a);
    Key(Qt::Key_Right);
    EXPECT_EQ(a->GetLocation(), (TPoint{51, 60}));
    Key(Qt::Key_Down);
    EXPECT_EQ(a->GetLocation(), (TPoint{51, 61}));
    Key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(a->GetLocation(), (TPoint{41, 61}));
    Key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(a->GetLocation(), (TPoint{41, 51}));
    EXPECT_EQ(a->width(), 60);
    EXPECT_EQ(a->height(), 100);
}

TEST_F(UndoSurface, ArrowsRerouteTheWiresOfTheMovedBlock) {
    Select(b);
    const TPoint end = Con(0)->FPoints.back();
    ASSERT_EQ(end, MarkerAt(b, -1));
    Key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(Con(0)->FPoints.back(), MarkerAt(b, -1));
    EXPECT_EQ(Con(0)->FPoints.back(), (TPoint{end.X, end.Y + 10}));
}

TEST_F(UndoSurface, ABurstOfArrowPressesIsOneStep) {
    Select(a);
    const auto before = Stream();
    for (int i = 0; i < 4; ++i)
        Key(Qt::Key_Right);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    const auto after = Stream();
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Move"));
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    Key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), after));
}

TEST_F(UndoSurface, ArrowsMovingAnotherBlockStartAnotherStep) {
    Select(a);
    Key(Qt::Key_Right);
    Select(b);
    Key(Qt::Key_Right);
    EXPECT_EQ(stack->count(), 2);
}

TEST_F(UndoSurface, ArrowsWithoutASelectedBlockMoveNothing) {
    const auto before = Stream();
    Key(Qt::Key_Right);
    Key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

// ---- Escape -----------------------------------------------------------------------------------

TEST_F(UndoSurface, EscapeDeselectsBlockMarkerAndSegment) {
    Select(a);
    a->SetSelMarkerIndex(-1);
    SelectSegment(LR(1, 1));
    Key(Qt::Key_Escape);
    EXPECT_EQ(dc->SelObj, nullptr);
    EXPECT_EQ(dc->SelInfo, LongRec{});
    EXPECT_FALSE(a->FSelected);
    EXPECT_FALSE(b->FSelected);
    EXPECT_EQ(Con(0)->FSelectedIndex, -1);
    // Selecting is not a change of the diagram.
    EXPECT_EQ(stack->count(), 0);
}

// ---- outside design mode ----------------------------------------------------------------------

TEST_F(UndoSurface, OutsideDesignModeNoKeyChangesAnything) {
    Drag(a, QPoint(20, 10), 30, 0, 1);
    dc->SetDesignMode(false);
    // Selected by a host after design mode was left.
    Select(a);
    SelectSegment(LR(1, 1));
    const auto before = Stream();
    const int steps = stack->count();
    const int index = stack->index();
    for (int key : {int(Qt::Key_Delete), int(Qt::Key_Left), int(Qt::Key_Right), int(Qt::Key_Up),
                    int(Qt::Key_Down), int(Qt::Key_Escape)}) {
        Key(key);
        Key(key, Qt::ShiftModifier);
    }
    Key(Qt::Key_Z, Qt::ControlModifier);
    Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    Key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), steps);
    EXPECT_EQ(stack->index(), index);
    EXPECT_EQ(dc->SelObj, a);
    EXPECT_TRUE(a->FSelected);
}

TEST_F(UndoSurface, OutsideDesignModeAHostShortcutGetsItsKeys) {
    dc->SetDesignMode(false);
    QAction hostAction(&panel);
    hostAction.setShortcut(QKeySequence(Qt::Key_Delete));
    panel.addAction(&hostAction);
    int triggered = 0;
    QObject::connect(&hostAction, &QAction::triggered, [&] { ++triggered; });
    Key(Qt::Key_Delete);
    EXPECT_EQ(triggered, 1);
}

// ---- focus ------------------------------------------------------------------------------------

TEST_F(UndoSurface, InDesignModeTheSurfaceTakesTheFocusWhenClickedAndGivesThePolicyBackAfter) {
    EXPECT_EQ(panel.focusPolicy(), Qt::ClickFocus);
    dc->SetDesignMode(false);
    EXPECT_EQ(panel.focusPolicy(), Qt::NoFocus);
    dc->SetDesignMode(true);
    EXPECT_EQ(panel.focusPolicy(), Qt::ClickFocus);
}

TEST_F(UndoSurface, AClickOnABlockGivesTheSurfaceTheKeyboardFocus) {
    panel.activateWindow();
    vde::test::MouseClick(a, Qt::LeftButton, Qt::NoModifier, QPoint(30, 50));
    EXPECT_TRUE(panel.hasFocus());
}
