// Two users of one stored diagram, in one process: two modules of the same name on two owners (and,
// for tables, on two connections), each loading, changing and saving. With the conflict check off
// the last save wins; with it on, a save over a diagram someone else saved in between writes
// nothing and asks, or raises without a dialog service. Every answer on files, SQLite and
// PostgreSQL.

#include "actions_test_util.h"
#include "common/db_test_util.h"

#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <functional>

using namespace vde;
using namespace vde::test;

namespace {

enum class Medium { File, SQLite, PostgreSQL };

struct MediumName {
    template <class Info> std::string operator()(const Info& info) const {
        switch (info.param) {
        case Medium::File:
            return "File";
        case Medium::SQLite:
            return "SQLite";
        case Medium::PostgreSQL:
            return "PostgreSQL";
        }
        return "?";
    }
};

void PrintTo(Medium m, std::ostream* os) {
    *os << (m == Medium::File ? "File" : m == Medium::SQLite ? "SQLite" : "PostgreSQL");
}

const QString kName = QStringLiteral("Chart");
const QString kSection = QStringLiteral("frmMain.frmConfig.Chart");

// SHA-256 in hex as Qt works it out, the empty text for no bytes.
QString Sha(const QByteArray& b) {
    return b.isEmpty() ? QString()
                       : QString::fromLatin1(
                             QCryptographicHash::hash(b, QCryptographicHash::Sha256).toHex());
}

QByteArray Bytes(const std::vector<uint8_t>& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

// Neither an installed dialog service nor the default one, for as long as it lives.
class NoDialogService {
public:
    NoDialogService() : FDefault(DefaultDialogService()), FInstalled(nullptr) {
        SetDefaultDialogService(nullptr);
    }
    ~NoDialogService() { SetDefaultDialogService(FDefault); }

private:
    IDialogService* FDefault;
    TScopedDialogService FInstalled;
};

// A scripted service that lets a test act while the question is on screen.
class ActingDialogService : public TScriptedDialogService {
public:
    std::function<void()> WhileAsking;
    TConflictChoice AskSaveConflict(const QString& Msg) override {
        if (WhileAsking) {
            auto act = std::move(WhileAsking);
            WhileAsking = nullptr;
            act();
        }
        return TScriptedDialogService::AskSaveConflict(Msg);
    }
};

class ConflictTest : public ::testing::TestWithParam<Medium> {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel hostA, hostB;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    ActingDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject ownerA, ownerB;
    TMenuItem andItem{nullptr};

    std::unique_ptr<TestDatabase> db;
    QString table;
    std::unique_ptr<TDataSet> dataA, dataB;
    QPointer<TdmDiagActions> a, b;

    bool IsFile() const { return GetParam() == Medium::File; }

    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        andItem.Tag = doAndLogic;
        SetDataFieldSuffix(QString());
        if (!IsFile()) {
            const DbKind kind = GetParam() == Medium::SQLite ? DbKind::SQLite : DbKind::PostgreSQL;
            VDE_SKIP_WITHOUT_PG(kind);
            db = std::make_unique<TestDatabase>(kind);
            if (!db->Error().isEmpty())
                FAIL() << db->Error().toStdString();
            table = db->NewTableName(QStringLiteral("Config"));
            db->CreateConfigTable(table, QStringLiteral("\"BinData\" %1").arg(db->BlobType()));
            dataA = std::make_unique<TDataSet>(db->AddConnection(), table);
            dataB = std::make_unique<TDataSet>(db->AddConnection(), table);
        }
        a = User(ownerA, hostA, dataA.get(), kName);
        b = User(ownerB, hostB, dataB.get(), kName);
    }

    void TearDown() override {
        delete a.data();
        delete b.data();
        dataA.reset();
        dataB.reset();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    TdmDiagActions* User(QObject& owner, HostPanel& host, TDataSet* data, const QString& name) {
        TdmDiagActions* m = IsFile() ? new TdmDiagActions(&owner)
                                     : new TdmTableDiagActions(&owner, data, QStringLiteral("C"));
        m->SetName(name);
        m->CreateContainer(&host.panel, &host.canvas);
        return m;
    }

    // The user loads the diagram and starts editing it (which marks it to be saved).
    static void Open(TdmDiagActions* m) {
        m->LoadDiagram(QString());
        m->DiagContr->UndoStack()->clear();
        m->SetDesignMode(true);
    }

    // An AND gate from the objects menu: one undo step.
    void AddBlock(TdmDiagActions* m, int x, int y) {
        m->DiagContr->FClickPoint = {x, y};
        m->DiagContr->CreateDiagObEvent(&andItem);
    }

    static void Save(TdmDiagActions* m) {
        m->FNeedSave = true;
        m->SaveDiagram(QString());
    }

    QString File(const QString& name) const { return dir.filePath(name + QStringLiteral(".dgm")); }
    QString Place(const QString& name = kName) const {
        return IsFile() ? File(name)
                        : QStringLiteral("frmMain.frmConfig.%1|DiagramChart").arg(name);
    }

    // What is stored for the diagram `name`, read without the library; empty when nothing is.
    QByteArray Stored(const QString& name = kName) const {
        if (IsFile())
            return Bytes(FileBytes(File(name)));
        QSqlQuery q(db->Db());
        q.prepare(QStringLiteral("SELECT \"BinData\" FROM %1 WHERE \"Section\" = ? AND "
                                 "\"Key\" = 'DiagramChart'")
                      .arg(db->Quote(table)));
        q.addBindValue(QStringLiteral("frmMain.frmConfig.") + name);
        EXPECT_TRUE(q.exec()) << q.lastError().text().toStdString();
        return q.next() ? q.value(0).toByteArray() : QByteArray();
    }

    bool Exists(const QString& name) const {
        if (IsFile())
            return QFileInfo::exists(File(name));
        QSqlQuery q(db->Db());
        q.prepare(QStringLiteral("SELECT 1 FROM %1 WHERE \"Section\" = ?").arg(db->Quote(table)));
        q.addBindValue(QStringLiteral("frmMain.frmConfig.") + name);
        EXPECT_TRUE(q.exec());
        return q.next();
    }

    // Someone else removes the diagram.
    void Remove() {
        if (IsFile()) {
            ASSERT_TRUE(QFile::remove(File(kName)));
            return;
        }
        QSqlQuery q(db->Db());
        q.prepare(QStringLiteral("DELETE FROM %1 WHERE \"Section\" = ?").arg(db->Quote(table)));
        q.addBindValue(kSection);
        ASSERT_TRUE(q.exec());
        ASSERT_EQ(q.numRowsAffected(), 1);
    }

    int Blocks(TdmDiagActions* m) const { return m->DiagContr->ObjList->Count(); }

    // A first version of the diagram, stored by A: one gate.
    QByteArray StoreFirstVersion() {
        Open(a);
        AddBlock(a, 10, 10);
        Save(a);
        return Stored();
    }

    // The first version, as stored.
    QByteArray first;

    // A and B both have the first version; A adds a gate and saves; B adds another. Gives A's
    // bytes as stored.
    QByteArray RaceToTheSecondSave() {
        first = StoreFirstVersion();
        Open(a);
        Open(b);
        EXPECT_EQ(Blocks(b), 1);
        AddBlock(a, 100, 10);
        AddBlock(b, 10, 120);
        Save(a);
        return Stored();
    }

    void CheckOn() {
        a->SetConflictCheck(true);
        b->SetConflictCheck(true);
    }
};

INSTANTIATE_TEST_SUITE_P(Media, ConflictTest,
                         ::testing::Values(Medium::File, Medium::SQLite, Medium::PostgreSQL),
                         MediumName());

} // namespace

// ---- the check off: the last save wins, as it always has
// ------------------------------------------

TEST_P(ConflictTest, WithTheCheckOffTheSecondSaveWinsAndTheFirstUsersGateIsGone) {
    const QByteArray fromA = RaceToTheSecondSave();
    ASSERT_NE(fromA, first);
    const QByteArray mine = Bytes(DiagramBytes(*b->DiagContr));
    Save(b);
    EXPECT_EQ(Stored(), mine);
    EXPECT_TRUE(dialogs.Asked().empty());
    // What is stored now has B's two gates; A's second gate is in no stored diagram.
    Open(a);
    EXPECT_EQ(Blocks(a), 2);
    EXPECT_EQ(Bytes(DiagramBytes(*a->DiagContr)), mine);
}

TEST_P(ConflictTest, LoadsAndSavesRememberTheFingerprintOfTheBytesTheyMoved) {
    Open(a);
    EXPECT_EQ(a->GetStoredPlace(), Place());
    EXPECT_EQ(a->GetStoredFingerprint(), QString()); // nothing stored yet
    AddBlock(a, 10, 10);
    Save(a);
    const QByteArray stored = Stored();
    ASSERT_FALSE(stored.isEmpty());
    EXPECT_EQ(a->GetStoredFingerprint(), Sha(stored));
    EXPECT_EQ(a->GetStoredFingerprint().size(), 64);
    Open(b);
    EXPECT_EQ(b->GetStoredFingerprint(), Sha(stored));
    EXPECT_EQ(b->GetStoredPlace(), Place());
}

// ---- the check on
// ------------------------------------------------------------------------------------

TEST_P(ConflictTest, WithoutADialogServiceTheSecondSaveRaisesWritesNothingAndStaysMarked) {
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    const int steps = b->DiagContr->UndoStack()->count();
    NoDialogService none;
    try {
        Save(b);
        FAIL() << "the save passed";
    } catch (const EDiagramConflict& e) {
        EXPECT_EQ(e.Record(), Place());
        EXPECT_EQ(e.Expected(), Sha(first));
        EXPECT_EQ(e.Stored(), Sha(fromA));
        EXPECT_TRUE(e.Message().contains(QStringLiteral("saved by someone else")))
            << e.Message().toStdString();
    }
    EXPECT_EQ(Stored(), fromA);
    EXPECT_TRUE(b->GetNeedSave());
    EXPECT_EQ(b->DiagContr->UndoStack()->count(), steps);
    EXPECT_EQ(Blocks(b), 2);
    EXPECT_EQ(b->GetStoredFingerprint(), Sha(first));
}

TEST_P(ConflictTest, EDiagramConflictIsAnErrorOfTheLibrarysHierarchy) {
    CheckOn();
    RaceToTheSecondSave();
    NoDialogService none;
    EXPECT_THROW(Save(b), Exception);
}

TEST_P(ConflictTest, OverwriteStoresMineAndKeepsMyUndoHistory) {
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    const QByteArray mine = Bytes(DiagramBytes(*b->DiagContr));
    const int steps = b->DiagContr->UndoStack()->count();
    ASSERT_GT(steps, 0);
    std::vector<TConflictChoice> told;
    b->OnConflictResolved = [&](TdmDiagActions* m, TConflictChoice c, const QString& copy) {
        EXPECT_EQ(m, b.data());
        EXPECT_TRUE(copy.isEmpty());
        told.push_back(c);
    };
    dialogs.Expect(TDialogAnswer::Conflict(ccOverwrite));
    Save(b);
    ASSERT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(dialogs.Asked()[0].Kind, dkSaveConflict);
    EXPECT_TRUE(dialogs.Asked()[0].Text.contains(QStringLiteral("\"Chart\"")));
    EXPECT_EQ(Stored(), mine);
    EXPECT_NE(Stored(), fromA);
    EXPECT_EQ(b->DiagContr->UndoStack()->count(), steps);
    // The mark is the table storage's; a file module writes whenever it is asked.
    EXPECT_TRUE(IsFile() || !b->GetNeedSave());
    EXPECT_EQ(b->GetStoredFingerprint(), Sha(mine));
    EXPECT_EQ(told, std::vector<TConflictChoice>{ccOverwrite});
    // The next save of B is over its own version: no question.
    AddBlock(b, 200, 200);
    Save(b);
    EXPECT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(Stored(), Bytes(DiagramBytes(*b->DiagContr)));
}

TEST_P(ConflictTest, OverwriteAsksAgainWhenTheDiagramChangesOnceMoreWhileTheQuestionIsOpen) {
    CheckOn();
    RaceToTheSecondSave();
    const QByteArray mine = Bytes(DiagramBytes(*b->DiagContr));
    // A saves a third version while B's question is on screen.
    dialogs.WhileAsking = [this] {
        AddBlock(a, 300, 10);
        Save(a);
    };
    dialogs.Expect(TDialogAnswer::Conflict(ccOverwrite));
    dialogs.Expect(TDialogAnswer::Conflict(ccOverwrite));
    Save(b);
    EXPECT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(Stored(), mine);
}

TEST_P(ConflictTest, ReloadDropsMineLoadsTheirsAndClearsTheUndoHistory) {
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    dialogs.Expect(TDialogAnswer::Conflict(ccReload));
    Save(b);
    EXPECT_EQ(Stored(), fromA);
    EXPECT_EQ(Bytes(DiagramBytes(*b->DiagContr)), Bytes(DiagramBytes(*a->DiagContr)));
    EXPECT_EQ(Blocks(b), 2);
    EXPECT_EQ(b->DiagContr->UndoStack()->count(), 0);
    EXPECT_TRUE(b->DiagContr->UndoStack()->isClean());
    // The mark is the table storage's; a file module writes whenever it is asked.
    EXPECT_TRUE(IsFile() || !b->GetNeedSave());
    EXPECT_EQ(b->GetStoredFingerprint(), Sha(fromA));
    // B now saves over A's version without a question.
    AddBlock(b, 10, 220);
    Save(b);
    EXPECT_EQ(dialogs.Asked().size(), 1u);
    EXPECT_EQ(Stored(), Bytes(DiagramBytes(*b->DiagContr)));
}

TEST_P(ConflictTest, SaveAsCopyKeepsTheirsAndStoresMineUnderTheFirstFreeCopyName) {
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    const QByteArray mine = Bytes(DiagramBytes(*b->DiagContr));
    const int steps = b->DiagContr->UndoStack()->count();
    QString copyName;
    b->OnConflictResolved = [&](TdmDiagActions*, TConflictChoice c, const QString& copy) {
        EXPECT_EQ(c, ccSaveAsCopy);
        copyName = copy;
    };
    dialogs.Expect(TDialogAnswer::Conflict(ccSaveAsCopy));
    Save(b);
    EXPECT_EQ(copyName, QStringLiteral("Chart_copy1"));
    EXPECT_EQ(Stored(), fromA);
    EXPECT_EQ(Stored(QStringLiteral("Chart_copy1")), mine);
    EXPECT_EQ(b->DiagContr->UndoStack()->count(), steps);
    // The mark is the table storage's; a file module writes whenever it is asked.
    EXPECT_TRUE(IsFile() || !b->GetNeedSave());
    // Both users' second gates are kept: A's in the diagram, B's in the copy.
    HostPanel scratch;
    TdmDiagActions* reader = User(ownerA, scratch, dataA.get(), QStringLiteral("Chart_copy1"));
    reader->LoadDiagram(QString());
    EXPECT_EQ(Blocks(reader), 2);
    EXPECT_EQ(Bytes(DiagramBytes(*reader->DiagContr)), mine);
    delete reader;

    // A second conflict of the same kind goes to the next free name.
    AddBlock(a, 300, 10);
    Save(a);
    dialogs.Expect(TDialogAnswer::Conflict(ccSaveAsCopy));
    Save(b);
    EXPECT_EQ(copyName, QStringLiteral("Chart_copy2"));
    EXPECT_EQ(Stored(QStringLiteral("Chart_copy1")), mine);
    EXPECT_EQ(Stored(QStringLiteral("Chart_copy2")), mine);
}

TEST_P(ConflictTest, CancelRaisesAndWritesNothing) {
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    dialogs.Expect(TDialogAnswer::Conflict(ccCancel));
    EXPECT_THROW(Save(b), EDiagramConflict);
    EXPECT_EQ(Stored(), fromA);
    EXPECT_FALSE(Exists(QStringLiteral("Chart_copy1")));
    EXPECT_TRUE(b->GetNeedSave());
}

TEST_P(ConflictTest, ADiagramNeverStoredSavesWithoutACheck) {
    CheckOn();
    ASSERT_FALSE(Exists(kName));
    // Never loaded either: nothing remembered, nothing stored.
    b->SetDesignMode(true);
    AddBlock(b, 10, 10);
    Save(b);
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_EQ(Stored(), Bytes(DiagramBytes(*b->DiagContr)));
}

TEST_P(ConflictTest, ADiagramStoredBySomeoneElseAfterAnEmptyLoadIsAConflict) {
    CheckOn();
    Open(a);
    Open(b);
    AddBlock(a, 10, 10);
    Save(a);
    AddBlock(b, 10, 100);
    NoDialogService none;
    try {
        Save(b);
        FAIL() << "the save passed";
    } catch (const EDiagramConflict& e) {
        EXPECT_EQ(e.Expected(), QString());
        EXPECT_EQ(e.Stored(), Sha(Stored()));
    }
}

TEST_P(ConflictTest, ADiagramRemovedBySomeoneElseIsAConflict) {
    first = StoreFirstVersion();
    CheckOn();
    Open(b);
    AddBlock(b, 10, 100);
    Remove();
    {
        NoDialogService none;
        try {
            Save(b);
            FAIL() << "the save passed";
        } catch (const EDiagramConflict& e) {
            EXPECT_EQ(e.Expected(), Sha(first));
            EXPECT_EQ(e.Stored(), QString());
            EXPECT_TRUE(e.Message().contains(QStringLiteral("removed")))
                << e.Message().toStdString();
        }
    }
    EXPECT_FALSE(Exists(kName));
    // Reload of a removed diagram empties the surface.
    dialogs.Expect(TDialogAnswer::Conflict(ccReload));
    Save(b);
    EXPECT_EQ(Blocks(b), 0);
    EXPECT_EQ(b->GetStoredFingerprint(), QString());
}

TEST_P(ConflictTest, SavesOverOnesOwnVersionNeverAsk) {
    CheckOn();
    Open(a);
    for (int i = 0; i < 4; ++i) {
        AddBlock(a, 10 + 70 * i, 10);
        Save(a);
        EXPECT_EQ(Stored(), Bytes(DiagramBytes(*a->DiagContr)));
    }
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_P(ConflictTest, TheDefaultAnswerGoesThroughTheItemListOfAnyService) {
    // A service with no question of its own offers the three answers as a list.
    CheckOn();
    const QByteArray fromA = RaceToTheSecondSave();
    const QByteArray mine = Bytes(DiagramBytes(*b->DiagContr));
    struct ListOnly : TScriptedDialogService {
        TConflictChoice AskSaveConflict(const QString& Msg) override {
            return IDialogService::AskSaveConflict(Msg);
        }
    } lists;
    TScopedDialogService guard(&lists);
    lists.Expect(TDialogAnswer::Item(0));
    Save(b);
    ASSERT_EQ(lists.Asked().size(), 1u);
    EXPECT_EQ(lists.Asked()[0].Kind, dkSelectItem);
    EXPECT_EQ(lists.Asked()[0].Items,
              QStringList({QStringLiteral("Overwrite"), QStringLiteral("Reload"),
                           QStringLiteral("Save as copy")}));
    EXPECT_EQ(Stored(), mine);
    EXPECT_NE(Stored(), fromA);
}
