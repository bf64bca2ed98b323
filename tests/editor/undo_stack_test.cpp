// The snapshot undo stack on its own, over a document that is nothing but its bytes.

#include "velDiagEdit/editor/undo_stack.h"

#include <QAction>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace vde;

namespace {

class UndoStackTest : public ::testing::Test {
protected:
    QByteArray doc = QByteArray(1000, 'a');
    int restores = 0;
    bool failSave = false;
    std::unique_ptr<TDiagUndoStack> stack;

    void SetUp() override {
        stack = std::make_unique<TDiagUndoStack>(
            [this] {
                if (failSave)
                    throw std::runtime_error("out of memory");
                return doc;
            },
            [this](const QByteArray& b) {
                doc = b;
                ++restores;
            });
    }

    // One change of the document, recorded as one step.
    void Edit(const QString& text, char fill, int size = 1000) {
        const TUndoStepScope step(stack.get(), text);
        doc = QByteArray(size, fill);
    }
};

} // namespace

TEST_F(UndoStackTest, AChangeIsOneStepWithItsText) {
    Edit(QStringLiteral("Add Segment"), 'b');
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->text(0), QStringLiteral("Add Segment"));
    EXPECT_EQ(stack->undoText(), QStringLiteral("Add Segment"));
    EXPECT_TRUE(stack->canUndo());
    EXPECT_FALSE(stack->canRedo());
    // Pushing does not load anything: the document already is in the state after.
    EXPECT_EQ(restores, 0);
}

TEST_F(UndoStackTest, WorkThatChangesNothingPushesNothing) {
    Edit(QStringLiteral("Delete"), 'a');
    EXPECT_EQ(stack->count(), 0);
    EXPECT_FALSE(stack->canUndo());
}

TEST_F(UndoStackTest, UndoGivesBackTheBytesBeforeAndRedoTheBytesAfter) {
    Edit(QStringLiteral("One"), 'b');
    Edit(QStringLiteral("Two"), 'c', 10);
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'b'));
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'a'));
    EXPECT_FALSE(stack->canUndo());
    stack->redo();
    EXPECT_EQ(doc, QByteArray(1000, 'b'));
    stack->redo();
    EXPECT_EQ(doc, QByteArray(10, 'c'));
    EXPECT_FALSE(stack->canRedo());
}

TEST_F(UndoStackTest, AStepInsideAStepBelongsToTheOuterOne) {
    {
        const TUndoStepScope outer(stack.get(), QStringLiteral("Add Segment"));
        doc = QByteArray(5, 'x');
        Edit(QStringLiteral("Add Connection"), 'y');
        EXPECT_EQ(stack->count(), 0);
        EXPECT_EQ(stack->StepDepth(), 1);
    }
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->text(0), QStringLiteral("Add Segment"));
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'a'));
}

TEST_F(UndoStackTest, ANullStackMakesTheScopeDoNothing) {
    const TUndoStepScope step(nullptr, QStringLiteral("Delete"));
    doc = "changed";
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(UndoStackTest, AFailedSnapshotLeavesTheChangeUnrecordedWithoutThrowing) {
    failSave = true;
    EXPECT_NO_THROW(Edit(QStringLiteral("Delete"), 'b'));
    EXPECT_EQ(stack->count(), 0);
    EXPECT_EQ(stack->StepDepth(), 0);
    failSave = false;
    Edit(QStringLiteral("Move"), 'c');
    EXPECT_EQ(stack->count(), 1);
}

TEST_F(UndoStackTest, ChangesSinceTheNewestStepAreRedoneToo) {
    Edit(QStringLiteral("One"), 'b');
    // A change without a step of its own, such as a new selection.
    doc = QByteArray(1000, 's');
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'a'));
    stack->redo();
    EXPECT_EQ(doc, QByteArray(1000, 's'));
}

TEST_F(UndoStackTest, ANewStepAfterUndoDropsTheStepsUndone) {
    Edit(QStringLiteral("One"), 'b');
    Edit(QStringLiteral("Two"), 'c');
    stack->undo();
    Edit(QStringLiteral("Three"), 'd');
    ASSERT_EQ(stack->count(), 2);
    EXPECT_EQ(stack->text(1), QStringLiteral("Three"));
    EXPECT_FALSE(stack->canRedo());
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'b'));
}

// ---- merging bursts ----------------------------------------------------------------------------

TEST_F(UndoStackTest, ContiguousMovesOfOneBlockMergeIntoOneStep) {
    for (char c : {'b', 'c', 'd'}) {
        const QByteArray before = stack->Snapshot();
        doc = QByteArray(1000, c);
        EXPECT_TRUE(stack->PushStep(QStringLiteral("Move"), before, 1, 77));
    }
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'a'));
    stack->redo();
    EXPECT_EQ(doc, QByteArray(1000, 'd'));
}

TEST_F(UndoStackTest, MovesOfAnotherBlockOrAfterAnotherChangeDoNotMerge) {
    QByteArray before = stack->Snapshot();
    doc = QByteArray(1000, 'b');
    stack->PushStep(QStringLiteral("Move"), before, 1, 77);
    before = stack->Snapshot();
    doc = QByteArray(1000, 'c');
    stack->PushStep(QStringLiteral("Move"), before, 1, 78); // another block
    EXPECT_EQ(stack->count(), 2);
    doc = QByteArray(1000, 's'); // a selection between two presses
    before = stack->Snapshot();
    doc = QByteArray(1000, 'd');
    stack->PushStep(QStringLiteral("Move"), before, 1, 78);
    EXPECT_EQ(stack->count(), 3);
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 's'));
}

TEST_F(UndoStackTest, ABurstThatEndsWhereItBeganLeavesNoStep) {
    QByteArray before = stack->Snapshot();
    doc = QByteArray(1000, 'b');
    stack->PushStep(QStringLiteral("Move"), before, 1, 5);
    before = stack->Snapshot();
    doc = QByteArray(1000, 'a');
    stack->PushStep(QStringLiteral("Move"), before, 1, 5);
    EXPECT_EQ(stack->count(), 0);
    EXPECT_FALSE(stack->canUndo());
}

// ---- memory ------------------------------------------------------------------------------------

TEST_F(UndoStackTest, NeighbouringStepsShareTheBytesBetweenThem) {
    Edit(QStringLiteral("One"), 'b');
    Edit(QStringLiteral("Two"), 'c');
    Edit(QStringLiteral("Three"), 'd');
    // States a, b, c, d of 1000 bytes each, each held once.
    EXPECT_EQ(stack->MemoryUsed(), 4000);
}

TEST_F(UndoStackTest, WithASmallLimitTheOldestStepsGoAndTheNewestStillUndoExactly) {
    stack->SetMemoryLimit(3500);
    const char fills[] = {'b', 'c', 'd', 'e', 'f'};
    for (char c : fills)
        Edit(QString(QChar(c)), c);
    // Two steps hold three states (3000 bytes); a third would need 4000.
    ASSERT_EQ(stack->count(), 2);
    EXPECT_LE(stack->MemoryUsed(), 3500);
    EXPECT_EQ(stack->text(0), QStringLiteral("e"));
    EXPECT_EQ(stack->text(1), QStringLiteral("f"));
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'e'));
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'd'));
    EXPECT_FALSE(stack->canUndo());
    stack->redo();
    stack->redo();
    EXPECT_EQ(doc, QByteArray(1000, 'f'));
}

TEST_F(UndoStackTest, TheNewestStepStaysEvenWhenItAloneIsOverTheLimit) {
    stack->SetMemoryLimit(100);
    Edit(QStringLiteral("One"), 'b');
    Edit(QStringLiteral("Two"), 'c');
    ASSERT_EQ(stack->count(), 1);
    stack->undo();
    EXPECT_EQ(doc, QByteArray(1000, 'b'));
}

TEST_F(UndoStackTest, LoweringTheLimitDropsAtOnce) {
    for (char c : {'b', 'c', 'd', 'e'})
        Edit(QString(QChar(c)), c);
    EXPECT_EQ(stack->count(), 4);
    stack->SetMemoryLimit(2000);
    EXPECT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("e"));
}

TEST_F(UndoStackTest, NoLimitKeepsEveryStep) {
    stack->SetMemoryLimit(0);
    for (int i = 0; i < 40; ++i)
        Edit(QString::number(i), char('A' + i));
    EXPECT_EQ(stack->count(), 40);
    EXPECT_EQ(stack->MemoryUsed(), 41 * 1000);
}

TEST_F(UndoStackTest, DroppingStepsKeepsACleanStateThatIsStillThere) {
    stack->SetMemoryLimit(3500);
    Edit(QStringLiteral("b"), 'b');
    Edit(QStringLiteral("c"), 'c');
    stack->setClean(); // saved in state c
    Edit(QStringLiteral("d"), 'd');
    // Steps c and d are left; the saved state c is the start of step d.
    ASSERT_EQ(stack->count(), 2);
    EXPECT_FALSE(stack->isClean());
    stack->undo();
    EXPECT_TRUE(stack->isClean());
    EXPECT_EQ(doc, QByteArray(1000, 'c'));
}

TEST_F(UndoStackTest, DroppingTheCleanStateLeavesNoCleanState) {
    stack->SetMemoryLimit(2500);
    stack->setClean(); // saved in state a
    Edit(QStringLiteral("b"), 'b');
    Edit(QStringLiteral("c"), 'c');
    Edit(QStringLiteral("d"), 'd');
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->cleanIndex(), -1);
    stack->undo();
    EXPECT_FALSE(stack->isClean());
}

TEST_F(UndoStackTest, HostActionsShowTheStepText) {
    std::unique_ptr<QAction> undo(stack->createUndoAction(nullptr));
    std::unique_ptr<QAction> redo(stack->createRedoAction(nullptr));
    EXPECT_FALSE(undo->isEnabled());
    Edit(QStringLiteral("Shift By Delta"), 'b');
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Shift By Delta"));
    undo->trigger();
    EXPECT_EQ(doc, QByteArray(1000, 'a'));
    EXPECT_EQ(redo->text(), QStringLiteral("Redo Shift By Delta"));
    redo->trigger();
    EXPECT_EQ(doc, QByteArray(1000, 'b'));
}
