// Undo and redo for a host: the package functions on the current diagram, a host's load that
// starts a diagram with nothing to undo, saving that marks it clean, and "Load From ..." as a
// step of its own.

#include "commands/actions_test_util.h"
#include "common/db_test_util.h"

#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/dataset.h"

#include <QAction>

using namespace vde;
using namespace vde::test;

namespace {

class UndoPackage : public ::testing::Test {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel left, right;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject owner;
    TMenuItem andItem{nullptr};

    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        andItem.Tag = doAndLogic;
    }

    void TearDown() override {
        FreeDiagActionsList();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    // A block made from the objects menu of the diagram: one step.
    static void CreateBlock(TdmDiagActions* m, TMenuItem& item, int x, int y) {
        m->DiagContr->FClickPoint = {x, y};
        m->DiagContr->CreateDiagObEvent(&item);
    }
};

} // namespace

TEST_F(UndoPackage, TheFunctionsDoNothingWithoutAListOrACurrentDiagram) {
    EXPECT_NO_THROW(UndoDiagram());
    EXPECT_NO_THROW(RedoDiagram());
    EXPECT_FALSE(CanUndoDiagram());
    EXPECT_FALSE(CanRedoDiagram());
    CreateDiagActionsList(&owner);
    EXPECT_NO_THROW(UndoDiagram());
    EXPECT_NO_THROW(RedoDiagram());
    EXPECT_FALSE(CanUndoDiagram());
    EXPECT_FALSE(CanRedoDiagram());
    // A module made without create-and-load is not the current diagram.
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    CreateBlock(m, andItem, 10, 10);
    ASSERT_TRUE(m->DiagContr->UndoStack()->canUndo());
    EXPECT_FALSE(CanUndoDiagram());
}

TEST_F(UndoPackage, UndoAndRedoActOnTheCurrentDiagramOnly) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    const std::vector<uint8_t> empty = DiagramBytes(*l->DiagContr);
    CreateBlock(l, andItem, 10, 10);
    const std::vector<uint8_t> one = DiagramBytes(*l->DiagContr);
    EXPECT_TRUE(CanUndoDiagram());
    EXPECT_FALSE(CanRedoDiagram());
    UndoDiagram();
    EXPECT_EQ(DiagramBytes(*l->DiagContr), empty);
    EXPECT_FALSE(CanUndoDiagram());
    EXPECT_TRUE(CanRedoDiagram());
    RedoDiagram();
    EXPECT_EQ(DiagramBytes(*l->DiagContr), one);
    // Another diagram becomes the current one; the first keeps its step.
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    EXPECT_FALSE(CanUndoDiagram());
    UndoDiagram();
    EXPECT_EQ(DiagramBytes(*l->DiagContr), one);
    EXPECT_TRUE(l->DiagContr->UndoStack()->canUndo());
    EXPECT_EQ(r->DiagContr->ObjList->Count(), 0);
}

TEST_F(UndoPackage, ADiagramSavedAndLoadedAgainStartsWithAnEmptyCleanStack) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateBlock(m, andItem, 10, 10);
    CreateBlock(m, andItem, 100, 10);
    SaveDiagActionsDiagrams(QString());
    FreeDiagActionsList();
    CreateDiagActionsList(&owner);
    m = CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    EXPECT_EQ(m->DiagContr->ObjList->Count(), 2);
    EXPECT_EQ(m->DiagContr->UndoStack()->count(), 0);
    EXPECT_TRUE(m->DiagContr->UndoStack()->isClean());
    EXPECT_FALSE(CanUndoDiagram());
}

TEST_F(UndoPackage, CreateAndLoadOfADiagramAlreadyOpenForgetsItsSteps) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateBlock(m, andItem, 10, 10);
    SaveDiagActionsDiagrams(QStringLiteral("Left"));
    CreateBlock(m, andItem, 100, 10);
    ASSERT_TRUE(CanUndoDiagram());
    // Found by name and loaded again from its file: the block made after the save is gone.
    EXPECT_EQ(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true), m);
    EXPECT_EQ(m->DiagContr->ObjList->Count(), 1);
    EXPECT_FALSE(CanUndoDiagram());
}

TEST_F(UndoPackage, SavingMarksTheSavedDiagramsClean) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    CreateBlock(l, andItem, 10, 10);
    CreateBlock(r, andItem, 10, 10);
    EXPECT_FALSE(l->DiagContr->UndoStack()->isClean());
    EXPECT_FALSE(r->DiagContr->UndoStack()->isClean());
    SaveDiagActionsDiagrams(QStringLiteral("Nowhere"));
    EXPECT_FALSE(l->DiagContr->UndoStack()->isClean());
    SaveDiagActionsDiagrams(QStringLiteral("right"));
    EXPECT_FALSE(l->DiagContr->UndoStack()->isClean());
    EXPECT_TRUE(r->DiagContr->UndoStack()->isClean());
    // Undoing past the save leaves the saved state: there are unsaved changes again.
    r->DiagContr->UndoStack()->undo();
    EXPECT_FALSE(r->DiagContr->UndoStack()->isClean());
    r->DiagContr->UndoStack()->redo();
    EXPECT_TRUE(r->DiagContr->UndoStack()->isClean());
    SaveDiagActionsDiagrams(QString());
    EXPECT_TRUE(l->DiagContr->UndoStack()->isClean());
}

TEST_F(UndoPackage, LoadFromIsOneStepBackToTheDiagramItReplaced) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateBlock(m, andItem, 10, 10);
    const QString file = dir.filePath(QStringLiteral("other.dgm"));
    m->DiagContr->SaveDiagramToFile(file);
    CreateBlock(m, andItem, 150, 40);
    const std::vector<uint8_t> twoBlocks = DiagramBytes(*m->DiagContr);
    dialogs.Expect(TDialogAnswer::Open(file));
    m->mnuLoadFromFile->trigger();
    const std::vector<uint8_t> loaded = DiagramBytes(*m->DiagContr);
    EXPECT_EQ(m->DiagContr->ObjList->Count(), 1);
    EXPECT_EQ(m->DiagContr->UndoStack()->undoText(), QStringLiteral("Load From other.dgm"));
    UndoDiagram();
    EXPECT_EQ(DiagramBytes(*m->DiagContr), twoBlocks);
    RedoDiagram();
    EXPECT_EQ(DiagramBytes(*m->DiagContr), loaded);
}

TEST_F(UndoPackage, ACancelledOrFailedLoadFromLeavesNoStep) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateBlock(m, andItem, 10, 10);
    dialogs.Expect(TDialogAnswer::Cancel(dkOpenDialog));
    m->mnuLoadFromFile->trigger();
    const QString bad = dir.filePath(QStringLiteral("bad.dgm"));
    WriteFile(bad, {1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0});
    dialogs.Expect(TDialogAnswer::Open(bad));
    dialogs.Expect(TDialogAnswer::Error());
    m->mnuLoadFromFile->trigger();
    EXPECT_EQ(m->DiagContr->UndoStack()->count(), 1);
    EXPECT_EQ(m->DiagContr->UndoStack()->undoText(), QStringLiteral("Create AndLogic"));
}

TEST_F(UndoPackage, AHostsUndoActionShowsTheStepText) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    std::unique_ptr<QAction> undo(m->DiagContr->UndoStack()->createUndoAction(nullptr));
    CreateBlock(m, andItem, 10, 10);
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Create AndLogic"));
    undo->trigger();
    EXPECT_EQ(m->DiagContr->ObjList->Count(), 0);
}

// A table module writes only what is marked as to be saved, and its save clears the mark while
// design mode stays on: a gate added after that save is not written by the next save, so its
// step must not be taken for saved.
TEST_F(UndoPackage, ASaveThatWritesNothingLeavesTheChangesUnsaved) {
    TestDatabase db(DbKind::SQLite);
    ASSERT_TRUE(db.Error().isEmpty()) << db.Error().toStdString();
    const QString table = db.NewTableName(QStringLiteral("Config"));
    db.CreateConfigTable(table, QStringLiteral("\"BinData\" %1").arg(db.BlobType()));
    TDataSet data(db.ConnectionName(), table);
    CreateDiagActionsList(&owner, &data, QStringLiteral("Config"));
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    ASSERT_NE(m, nullptr);
    CreateBlock(m, andItem, 10, 10);
    SaveDiagActionsDiagrams(QString());
    EXPECT_TRUE(m->DiagContr->UndoStack()->isClean());
    EXPECT_FALSE(m->GetNeedSave());
    CreateBlock(m, andItem, 100, 10);
    SaveDiagActionsDiagrams(QString());
    EXPECT_FALSE(m->DiagContr->UndoStack()->isClean());
    // Marked again (as entering design mode does), the next save writes it and it is saved.
    m->SetDesignMode(true);
    SaveDiagActionsDiagrams(QString());
    EXPECT_TRUE(m->DiagContr->UndoStack()->isClean());
    FreeDiagActionsList();
}
