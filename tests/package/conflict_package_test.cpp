// The conflict check for a host: one call switches it on for every diagram of the list, made
// before or after; the answers reach the host as signals of the package's storage events; the
// check stays off until asked for.

#include "commands/actions_test_util.h"

#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/package/diag_storage_events.h"
#include "velDiagEdit/platform/errors.h"

#include <QSignalSpy>

using namespace vde;
using namespace vde::test;

namespace {

class ConflictPackage : public ::testing::Test {
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
        SetConflictCheck(false);
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    QString File(const QString& name) const { return dir.filePath(name + QStringLiteral(".dgm")); }

    // Another user, with a module of its own, stores a diagram with one gate at (x, y).
    void SomeoneElseSaves(const QString& name, int x, int y) {
        HostPanel scratch;
        QObject otherOwner;
        TdmDiagActions m(&otherOwner);
        m.SetName(name);
        m.CreateContainer(&scratch.panel, &scratch.canvas);
        m.DiagContr->FClickPoint = {x, y};
        m.DiagContr->CreateObjectAtMousePos(doAndLogic);
        m.SaveDiagram(QString());
    }

    void AddBlock(TdmDiagActions* m, int x, int y) {
        m->DiagContr->FClickPoint = {x, y};
        m->DiagContr->CreateDiagObEvent(&andItem);
    }
};

} // namespace

TEST_F(ConflictPackage, TheCheckIsOffUntilAHostSwitchesItOn) {
    EXPECT_FALSE(GetConflictCheck());
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    EXPECT_FALSE(m->GetConflictCheck());
    SomeoneElseSaves(QStringLiteral("Left"), 50, 50);
    AddBlock(m, 10, 10);
    const std::vector<uint8_t> mine = DiagramBytes(*m->DiagContr);
    SaveDiagActionsDiagrams(QString());
    EXPECT_EQ(FileBytes(File(QStringLiteral("Left"))), mine);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(ConflictPackage, OneCallSwitchesItOnForDiagramsMadeBeforeAndAfter) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* before =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    SetConflictCheck(true);
    EXPECT_TRUE(GetConflictCheck());
    TdmDiagActions* after =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    EXPECT_TRUE(before->GetConflictCheck());
    EXPECT_TRUE(after->GetConflictCheck());
    // A list made later has it too.
    FreeDiagActionsList();
    CreateDiagActionsList(&owner);
    EXPECT_TRUE(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true)
                    ->GetConflictCheck());
    SetConflictCheck(false);
    EXPECT_FALSE(GetCurrentDiagActions()->GetConflictCheck());
}

TEST_F(ConflictPackage, AConflictRaisesToTheHostWithoutADialogServiceAndStaysUnsaved) {
    CreateDiagActionsList(&owner);
    SetConflictCheck(true);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    AddBlock(m, 10, 10);
    SomeoneElseSaves(QStringLiteral("Left"), 50, 50);
    const std::vector<uint8_t> theirs = FileBytes(File(QStringLiteral("Left")));
    IDialogService* defaultService = DefaultDialogService();
    SetDefaultDialogService(nullptr);
    {
        TScopedDialogService none(nullptr);
        EXPECT_THROW(SaveDiagActionsDiagrams(QString()), EDiagramConflict);
    }
    SetDefaultDialogService(defaultService);
    EXPECT_EQ(FileBytes(File(QStringLiteral("Left"))), theirs);
    EXPECT_FALSE(m->DiagContr->UndoStack()->isClean());
}

TEST_F(ConflictPackage, TheAnswerIsSignalledWithTheCopysName) {
    CreateDiagActionsList(&owner);
    SetConflictCheck(true);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    AddBlock(m, 10, 10);
    const std::vector<uint8_t> mine = DiagramBytes(*m->DiagContr);
    SomeoneElseSaves(QStringLiteral("Left"), 50, 50);
    const std::vector<uint8_t> theirs = FileBytes(File(QStringLiteral("Left")));
    QSignalSpy spy(DiagStorageEvents(), &TDiagStorageEvents::ConflictResolved);
    dialogs.Expect(TDialogAnswer::Conflict(ccSaveAsCopy));
    SaveDiagActionsDiagrams(QString());
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy[0][0].toString(), QStringLiteral("Left"));
    EXPECT_EQ(spy[0][1].toInt(), int(ccSaveAsCopy));
    EXPECT_EQ(spy[0][2].toString(), QStringLiteral("Left_copy1"));
    EXPECT_EQ(FileBytes(File(QStringLiteral("Left"))), theirs);
    EXPECT_EQ(FileBytes(File(QStringLiteral("Left_copy1"))), mine);
    // Saved, as a copy: nothing is lost, and undo still has the gate.
    EXPECT_TRUE(m->DiagContr->UndoStack()->isClean());
    EXPECT_TRUE(CanUndoDiagram());
}
