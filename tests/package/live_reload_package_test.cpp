// Live reload for a host, in one process: off until asked for, the selection of a block that
// someone else deleted goes with the reload, the bar's answers, and a PostgreSQL listener that
// hears saves again after its connection was closed and opened.

#include "commands/actions_test_util.h"
#include "common/db_test_util.h"

#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/package/changed_elsewhere_bar.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/package/diag_storage_events.h"
#include "velDiagEdit/platform/dataset.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QTest>

using namespace vde;
using namespace vde::test;

namespace {

class LiveReloadPackage : public ::testing::Test {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel mine;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject owner;

    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    void TearDown() override {
        FreeDiagActionsList();
        SetLiveReload(false);
        SetConflictCheck(false);
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
    }

    // Another user's module on the same storage: loads Name, lets Change work on it, saves.
    template <class F> void SomeoneElse(const QString& name, F change) {
        HostPanel scratch;
        QObject otherOwner;
        TdmDiagActions m(&otherOwner);
        m.SetName(name);
        m.CreateContainer(&scratch.panel, &scratch.canvas);
        m.LoadDiagram(QString());
        change(*m.DiagContr);
        m.SaveDiagram(QString());
    }

    static void Gate(TDiagContainer& dc, int x, int y) {
        dc.FClickPoint = {x, y};
        dc.CreateObjectAtMousePos(doAndLogic);
    }

    static TDiagObject* BlockAt(TDiagContainer& dc, int x, int y) {
        for (int i = 0; i < dc.ObjList->Count(); ++i)
            if (dc.ObjList->Items(i)->pos() == QPoint(x, y))
                return dc.ObjList->Items(i);
        return nullptr;
    }

    static void Select(TDiagContainer& dc, TDiagObject* b) {
        dc.ObjList->DeselectAll(b);
        b->SetSelected(true);
        dc.SelObj = b;
    }
};

} // namespace

TEST_F(LiveReloadPackage, IsOffUntilAHostSwitchesItOnAndThenNothingIsReloaded) {
    EXPECT_FALSE(GetLiveReload());
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& dc) { Gate(dc, 50, 50); });
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &mine.panel, &mine.canvas, false);
    EXPECT_FALSE(m->GetLiveReload());
    QSignalSpy reloaded(DiagStorageEvents(), &TDiagStorageEvents::Reloaded);
    QSignalSpy changed(DiagStorageEvents(), &TDiagStorageEvents::ChangedElsewhere);
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& dc) { Gate(dc, 150, 50); });
    QTest::qWait(1500);
    EXPECT_EQ(m->DiagContr->ObjList->Count(), 1);
    EXPECT_EQ(reloaded.count(), 0);
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(LiveReloadPackage, TheSelectionOfABlockSomeoneElseDeletedGoesAndTheOtherStays) {
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& dc) {
        Gate(dc, 50, 50);
        Gate(dc, 150, 50);
    });
    CreateDiagActionsList(&owner);
    SetLiveReload(true);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &mine.panel, &mine.canvas, false);
    ASSERT_TRUE(m->GetLiveReload());
    TDiagContainer& dc = *m->DiagContr;
    ASSERT_EQ(dc.ObjList->Count(), 2);
    Select(dc, BlockAt(dc, 50, 50));
    QSignalSpy reloaded(DiagStorageEvents(), &TDiagStorageEvents::Reloaded);
    // The other user deletes the gate selected here.
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& other) {
        Select(other, BlockAt(other, 50, 50));
        other.DelSelectedObject();
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return reloaded.count() == 1; }, 10000));
    ASSERT_EQ(dc.ObjList->Count(), 1);
    EXPECT_TRUE(dc.SelectedBlocks().empty());
    EXPECT_TRUE(dc.SelObj.isNull());

    // Now the remaining gate is selected, and the other user adds one: it stays selected.
    TDiagObject* kept = BlockAt(dc, 150, 50);
    ASSERT_NE(kept, nullptr);
    const TObjKey key = kept->GetObjKey();
    Select(dc, kept);
    // What a listener to the selection saw last, each time it was told.
    std::vector<std::vector<TObjKey>> told;
    QObject::connect(&dc, &TDiagContainer::selectionChanged, &dc, [&] {
        std::vector<TObjKey> keys;
        for (TDiagObject* b : dc.SelectedBlocks())
            keys.push_back(b->GetObjKey());
        told.push_back(keys);
    });
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& other) { Gate(other, 50, 200); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return reloaded.count() == 2; }, 10000));
    // The reload emptied the selection and gave it back: the listener's last word is the
    // restored selection.
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told.back(), std::vector<TObjKey>{key});
    ASSERT_EQ(dc.ObjList->Count(), 2);
    ASSERT_EQ(dc.SelectedBlocks().size(), 1u);
    EXPECT_EQ(dc.SelectedBlocks()[0]->GetObjKey(), key);
    EXPECT_EQ(dc.SelectedBlocks()[0]->pos(), QPoint(150, 50));
    ASSERT_FALSE(dc.SelObj.isNull());
    EXPECT_EQ(dc.SelObj->GetObjKey(), key);
}

TEST_F(LiveReloadPackage, TheBarShowsForAChangeElsewhereAndItsButtonsAnswer) {
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& dc) { Gate(dc, 50, 50); });
    CreateDiagActionsList(&owner);
    SetLiveReload(true);
    SetConflictCheck(true);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &mine.panel, &mine.canvas, true);
    TDiagContainer& dc = *m->DiagContr;
    TChangedElsewhereBar bar;
    QObject::connect(DiagStorageEvents(), &TDiagStorageEvents::ChangedElsewhere, &bar,
                     &TChangedElsewhereBar::ShowFor);
    EXPECT_TRUE(bar.isHidden());
    EXPECT_EQ(bar.KeepButton()->text(), QStringLiteral("Keep mine"));
    EXPECT_EQ(bar.ReloadButton()->text(), QStringLiteral("Reload"));

    // An unsaved gate here; the other user's save shows the bar and loads nothing.
    {
        const TUndoStepScope step(dc.UndoStack(), QStringLiteral("Add"));
        Gate(dc, 300, 300);
    }
    ASSERT_FALSE(dc.UndoStack()->isClean());
    SomeoneElse(QStringLiteral("Left"), [](TDiagContainer& other) { Gate(other, 150, 50); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !bar.isHidden(); }, 10000));
    EXPECT_EQ(bar.DiagramName(), QStringLiteral("Left"));
    EXPECT_EQ(dc.ObjList->Count(), 2);
    EXPECT_NE(BlockAt(dc, 300, 300), nullptr);

    // Reload: theirs is shown, the bar goes.
    QSignalSpy answered(&bar, &TChangedElsewhereBar::Answered);
    bar.ReloadButton()->click();
    EXPECT_TRUE(bar.isHidden());
    ASSERT_EQ(answered.count(), 1);
    EXPECT_EQ(answered[0][1].toBool(), true);
    EXPECT_EQ(dc.ObjList->Count(), 2);
    EXPECT_NE(BlockAt(dc, 150, 50), nullptr);
    EXPECT_EQ(BlockAt(dc, 300, 300), nullptr);
    EXPECT_FALSE(CanUndoDiagram());
}

namespace {

// A module of the table storage on its own connection, for the diagram "Chart".
struct TableUser {
    HostPanel host;
    QObject owner;
    TDataSet data;
    TdmTableDiagActions module;
    TableUser(const QString& connection, const QString& table)
        : data(connection, table), module(&owner, &data, QStringLiteral("Config")) {
        module.SetName(QStringLiteral("Chart"));
        module.CreateContainer(&host.panel, &host.canvas);
    }
    void AddGateAndSave(int x, int y) {
        module.LoadDiagram(QString());
        module.DiagContr->FClickPoint = {x, y};
        module.DiagContr->CreateObjectAtMousePos(doAndLogic);
        module.FNeedSave = true;
        module.SaveDiagram(QString());
    }
};

} // namespace

TEST_F(LiveReloadPackage, APostgreSQLListenerHearsSavesAgainAfterItsConnectionWasReopened) {
    VDE_SKIP_WITHOUT_PG(DbKind::PostgreSQL);
    TestDatabase db(DbKind::PostgreSQL);
    ASSERT_TRUE(db.Error().isEmpty()) << db.Error().toStdString();
    const QString table = db.NewTableName(QStringLiteral("Config"));
    db.CreateConfigTable(table, QStringLiteral("\"BinData\" BYTEA, UNIQUE (\"Section\", \"Key\")"));
    const QString otherConnection = db.AddConnection();

    TableUser me(db.ConnectionName(), table);
    TableUser other(otherConnection, table);
    other.AddGateAndSave(10, 10);
    me.module.LoadDiagram(QString());
    me.module.DiagContr->UndoStack()->setClean();
    ASSERT_EQ(me.module.DiagContr->ObjList->Count(), 1);
    int reloads = 0;
    me.module.OnReloaded = [&](TdmDiagActions*) { ++reloads; };
    me.module.SetLiveReload(true);

    other.AddGateAndSave(100, 10);
    ASSERT_TRUE(QTest::qWaitFor([&] { return reloads == 1; }, 10000));
    EXPECT_EQ(me.module.DiagContr->ObjList->Count(), 2);

    // The connection goes and comes back (as after a lost server): its listening went with it.
    QSqlDatabase conn = QSqlDatabase::database(db.ConnectionName(), false);
    conn.close();
    ASSERT_TRUE(conn.open());
    ASSERT_TRUE(conn.driver()->subscribedToNotifications().isEmpty());
    // Within a second or so it listens again; nothing changed meanwhile, so nothing reloads.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !conn.driver()->subscribedToNotifications().isEmpty(); }, 10000));
    QTest::qWait(300);
    EXPECT_EQ(reloads, 1);
    // A save now is heard through the notification.
    other.AddGateAndSave(200, 10);
    ASSERT_TRUE(QTest::qWaitFor([&] { return reloads == 2; }, 10000));
    EXPECT_EQ(me.module.DiagContr->ObjList->Count(), 3);
}
