// The table storage module on SQLite and on PostgreSQL: the record a diagram goes to, when it is
// written, what a stored blob that is not a diagram does, outages, two users of one table, and
// the actions list and package functions that make such modules.

#include "actions_test_util.h"
#include "common/db_test_util.h"

#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"

#include <QRandomGenerator>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

using namespace vde;
using namespace vde::test;

namespace {

const QString kSection = QStringLiteral("Section");
const QString kKey = QStringLiteral("Key");

std::vector<uint8_t> ToVector(const QByteArray& b) {
    return std::vector<uint8_t>(b.begin(), b.end());
}

QByteArray ToQBytes(const std::vector<uint8_t>& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

QString Example(const char* name) {
    return qEnvironmentVariable("VDE_SOURCE_DIR") + QStringLiteral("/examples/") +
           QString::fromLatin1(name);
}

// One stored record as plain SQL reads it.
struct Row {
    QString Section, Key;
    QVariant Data;
};

class TableActionsTest : public ::testing::TestWithParam<DbKind> {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel host;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject owner;

    std::unique_ptr<TestDatabase> db;
    QString table;
    std::unique_ptr<TDataSet> data;
    QPointer<TdmTableDiagActions> dm;

    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        SetDataFieldSuffix(QString());
        VDE_SKIP_WITHOUT_PG(GetParam());
        db = std::make_unique<TestDatabase>(GetParam());
        if (!db->Error().isEmpty())
            FAIL() << db->Error().toStdString();
        table = db->NewTableName(QStringLiteral("Config"));
        db->CreateConfigTable(table, QStringLiteral("\"BinData\" %1, \"BinData_Main\" %1, "
                                                    "\"Note\" TEXT")
                                         .arg(db->BlobType()));
        data = std::make_unique<TDataSet>(db->ConnectionName(), table);
        dm = new TdmTableDiagActions(&owner, data.get(), QStringLiteral("Config"));
        dm->SetName(QStringLiteral("Main"));
    }

    void TearDown() override {
        FreeDiagActionsList();
        delete dm.data();
        SetDataFieldSuffix(QString());
        data.reset();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    TDiagContainer& dc() { return *dm->DiagContr; }

    void Surface() {
        dm->CreateContainer(&host.panel, &host.canvas);
        host.Show();
    }

    // A text block at (x, y) made as the objects menu makes it.
    void Text(TDiagContainer& c, int x, int y) {
        c.FClickPoint = {x, y};
        c.AssignObjEvents(c.CreateObjectAtMousePos(doText));
    }

    std::vector<Row> Rows() const {
        QSqlQuery q(db->Db());
        EXPECT_TRUE(q.exec(QStringLiteral("SELECT \"Section\", \"Key\", \"BinData\" FROM %1 "
                                          "ORDER BY \"id\"")
                               .arg(db->Quote(table))));
        std::vector<Row> out;
        while (q.next())
            out.push_back({q.value(0).toString(), q.value(1).toString(), q.value(2)});
        return out;
    }

    // The data column of the one record with these keys (fails unless there is exactly one).
    QVariant Stored(const QString& section, const QString& column = QStringLiteral("BinData"),
                    const QString& key = QStringLiteral("DiagramChart")) const {
        QSqlQuery q(db->Db());
        q.prepare(QStringLiteral("SELECT %1 FROM %2 WHERE \"Section\" = ? AND \"Key\" = ?")
                      .arg(db->Quote(column), db->Quote(table)));
        q.addBindValue(section);
        q.addBindValue(key);
        EXPECT_TRUE(q.exec());
        QVariantList found;
        while (q.next())
            found << q.value(0);
        EXPECT_EQ(found.size(), 1) << section.left(200).toStdString();
        return found.isEmpty() ? QVariant() : found.first();
    }

    void Insert(const QString& section, const QVariant& blob,
                const QString& key = QStringLiteral("DiagramChart")) {
        QSqlQuery q(db->Db());
        q.prepare(QStringLiteral("INSERT INTO %1 (\"Section\", \"Key\", \"BinData\") "
                                 "VALUES (?, ?, ?)")
                      .arg(db->Quote(table)));
        q.addBindValue(section);
        q.addBindValue(key);
        q.addBindValue(blob.isValid() ? blob : QVariant(QMetaType::fromType<QByteArray>()));
        ASSERT_TRUE(q.exec()) << q.lastError().text().toStdString();
    }

    // The bytes of a diagram with `blocks` text blocks, made on a scratch surface.
    std::vector<uint8_t> DiagramWith(int blocks) {
        HostPanel scratch;
        TDiagContainer c(&scratch.panel, &scratch.canvas, nullptr);
        for (int i = 0; i < blocks; ++i)
            Text(c, 20 + 60 * i, 40);
        return DiagramBytes(c);
    }

    // An empty "Invalid file format" error acknowledged.
    void ExpectInvalidFormat() { dialogs.Expect(TDialogAnswer::Error()); }
    void CheckInvalidFormatShownOnce() {
        ASSERT_EQ(dialogs.Asked().size(), 1u);
        EXPECT_EQ(dialogs.Asked()[0].Kind, dkErrorMessageDlg);
        EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("Invalid file format"));
    }
};

INSTANTIATE_TEST_SUITE_P(Db, TableActionsTest,
                         ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL), DbKindName());

// ---- keys and the data column ------------------------------------------------------------------

TEST_P(TableActionsTest, KeysForChart1WithAnEmptyTabNameAreFrmConfigAndDiagramChart) {
    dm->GenKeyFieldsAndValues(QStringLiteral("Chart1"));
    EXPECT_EQ(dm->KeyFields, QStringLiteral("Section;Key"));
    EXPECT_EQ(dm->KeyValues, QStringLiteral("frmMain.frmConfig.Chart1|DiagramChart"));
    // The default stays once made.
    EXPECT_EQ(dm->FTabName, QStringLiteral("frmConfig"));
}

TEST_P(TableActionsTest, Chart1LoadedWithAnEmptyTabNameIsStoredUnderFrmMainFrmConfigChart1) {
    Surface();
    dm->LoadDiagramEx(QStringLiteral("Chart1"), QString());
    dm->SetDesignMode(true);
    Text(dc(), 30, 30);
    dm->SaveDiagram(QStringLiteral("Chart1"));
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.frmConfig.Chart1"));
    EXPECT_EQ(rows[0].Key, QStringLiteral("DiagramChart"));
    EXPECT_EQ(ToVector(rows[0].Data.toByteArray()), DiagramBytes(dc()));
}

TEST_P(TableActionsTest, AnAtCInTheTabNameIsTheOneTheDiagramNameReplaces) {
    dm->FTabName = QStringLiteral("Tab@CEnd");
    dm->GenKeyFieldsAndValues(QStringLiteral("N"));
    EXPECT_EQ(dm->KeyValues, QStringLiteral("frmMain.TabNEnd.@C|DiagramChart"));
}

TEST_P(TableActionsTest, AnAtTInTheTabNameIsNotReplacedAgain) {
    dm->FTabName = QStringLiteral("x@Ty");
    dm->GenKeyFieldsAndValues(QStringLiteral("N"));
    EXPECT_EQ(dm->KeyValues, QStringLiteral("frmMain.x@Ty.N|DiagramChart"));
}

TEST_P(TableActionsTest, AnAtCInTheDiagramNameIsKeptAndMarkersAreCaseSensitive) {
    dm->FTabName = QStringLiteral("@t@c");
    dm->GenKeyFieldsAndValues(QStringLiteral("a@Cb"));
    EXPECT_EQ(dm->KeyValues, QStringLiteral("frmMain.@t@c.a@Cb|DiagramChart"));
}

TEST_P(TableActionsTest, TheTabNameStaysForLaterCalls) {
    Surface();
    dm->LoadDiagramEx(QStringLiteral("Main"), QStringLiteral("frmTools"));
    dm->SetDesignMode(true);
    dm->SaveDiagram(QString());
    dm->GenKeyFieldsAndValues(QStringLiteral("Other"));
    EXPECT_EQ(dm->KeyValues, QStringLiteral("frmMain.frmTools.Other|DiagramChart"));
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.frmTools.Main"));
}

TEST_P(TableActionsTest, AnEmptyNameIsTheModulesComponentName) {
    Surface();
    dm->LoadDiagramEx(QString(), QStringLiteral("T"));
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.T.Main"));
}

TEST_P(TableActionsTest, WithTheSuffixMainTheDataColumnIsBinData_Main) {
    SetDataFieldSuffix(QStringLiteral("Main"));
    EXPECT_EQ(DataFieldName(), QStringLiteral("BinData_Main"));
    Surface();
    dm->LoadDiagram(QString());
    dm->SetDesignMode(true);
    Text(dc(), 10, 10);
    dm->SaveDiagram(QString());
    const QString section = QStringLiteral("frmMain.frmConfig.Main");
    EXPECT_EQ(ToVector(Stored(section, QStringLiteral("BinData_Main")).toByteArray()),
              DiagramBytes(dc()));
    EXPECT_TRUE(Stored(section, QStringLiteral("BinData")).isNull());
}

TEST_P(TableActionsTest, WithAnEmptySuffixTheDataColumnIsBinData) {
    EXPECT_EQ(DataFieldName(), QStringLiteral("BinData"));
    Surface();
    dm->LoadDiagram(QString());
    dm->SetDesignMode(true);
    Text(dc(), 10, 10);
    dm->SaveDiagram(QString());
    const QString section = QStringLiteral("frmMain.frmConfig.Main");
    EXPECT_EQ(ToVector(Stored(section, QStringLiteral("BinData")).toByteArray()),
              DiagramBytes(dc()));
    EXPECT_TRUE(Stored(section, QStringLiteral("BinData_Main")).isNull());
}

TEST_P(TableActionsTest, TheModuleNameEntersNeitherTheKeysNorTheColumn) {
    TdmTableDiagActions other(&owner, data.get(), QStringLiteral("SomethingElse"));
    other.SetName(QStringLiteral("Main2"));
    other.GenKeyFieldsAndValues(QStringLiteral("Chart1"));
    dm->GenKeyFieldsAndValues(QStringLiteral("Chart1"));
    EXPECT_EQ(other.KeyValues, dm->KeyValues);
    EXPECT_EQ(other.GetModuleName(), QStringLiteral("SomethingElse"));
}

TEST_P(TableActionsTest, HostileNamesAndTabNamesRoundTripUnderTheirExactSection) {
    // A table that SQL built from the names would drop.
    const QString sentinel = db->NewTableName(QStringLiteral("sentinel"));
    db->Exec(QStringLiteral("CREATE TABLE %1 (x INTEGER)").arg(db->Quote(sentinel)));
    Surface();
    QStringList values = HostileValues();
    values << QStringLiteral("'); DROP TABLE \"%1\"; --").arg(sentinel)
           << QStringLiteral("\"; DROP TABLE \"%1\"; --").arg(sentinel);
    int blocks = 0;
    for (const QString& v : values) {
        // As a diagram name and as a tab name, each in its own record.
        for (bool asTab : {false, true}) {
            const QString name = asTab ? QStringLiteral("D") : v;
            const QString tab = asTab ? v : QStringLiteral("T");
            dm->LoadDiagramEx(name, tab);
            dm->SetDesignMode(true);
            Text(dc(), 10 + 3 * (blocks % 50), 10);
            ++blocks;
            const std::vector<uint8_t> bytes = DiagramBytes(dc());
            dm->SaveDiagram(name);
            // An empty tab name is the default one.
            const QString section = QStringLiteral("frmMain.") +
                                    (tab.isEmpty() ? QStringLiteral("frmConfig") : tab) +
                                    QLatin1Char('.') + (name.isEmpty() ? dm->GetName() : name);
            EXPECT_EQ(ToVector(Stored(section).toByteArray()), bytes) << v.left(80).toStdString();
        }
    }
    EXPECT_EQ(db->RowCount(sentinel), 0); // still there
    // Every record is read back by a fresh module as it was stored.
    HostPanel other;
    TdmTableDiagActions reader(&owner, data.get(), QStringLiteral("Config"));
    reader.SetName(QStringLiteral("Reader"));
    reader.CreateContainer(&other.panel, &other.canvas);
    for (const QString& v : values) {
        reader.LoadDiagramEx(v.isEmpty() ? QStringLiteral("Main") : v, QStringLiteral("T"));
        const QString section =
            QStringLiteral("frmMain.T.") + (v.isEmpty() ? QStringLiteral("Main") : v);
        EXPECT_EQ(DiagramBytes(*reader.DiagContr), ToVector(Stored(section).toByteArray()));
    }
}

TEST_P(TableActionsTest, ABarInTheNameSplitsTheValues) {
    Surface();
    dm->LoadDiagramEx(QStringLiteral("Left|Right"), QString());
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.frmConfig.Left"));
    EXPECT_EQ(rows[0].Key, QStringLiteral("Right"));
}

TEST_P(TableActionsTest, ABarInTheTabNameIsRefusedBeforeAnyRecordIsTouched) {
    Surface();
    dm->LoadDiagramEx(QStringLiteral("Victim"), QStringLiteral("frmConfig"));
    dm->SetDesignMode(true);
    Text(dc(), 10, 10);
    dm->SaveDiagram(QStringLiteral("Victim"));
    const std::vector<Row> victim = Rows();
    ASSERT_EQ(victim.size(), 1u);
    // The tab name that would split into the victim's section and key.
    EXPECT_THROW(
        dm->LoadDiagramEx(QStringLiteral("x"), QStringLiteral("frmConfig.Victim|DiagramChart|x")),
        EInvalidOperation);
    dm->SetDesignMode(true);
    Text(dc(), 200, 10);
    EXPECT_THROW(dm->SaveDiagram(QStringLiteral("x")), EInvalidOperation);
    const std::vector<Row> after = Rows();
    ASSERT_EQ(after.size(), 1u);
    EXPECT_EQ(after[0].Section, QStringLiteral("frmMain.frmConfig.Victim"));
    EXPECT_EQ(after[0].Data, victim[0].Data);
    EXPECT_TRUE(dm->FNeedSave); // the refused save is still to be made
}

// ---- when it writes
// ------------------------------------------------------------------------------

TEST_P(TableActionsTest, SaveRightAfterALoadWritesNothing) {
    const std::vector<uint8_t> stored = DiagramWith(2);
    Insert(QStringLiteral("frmMain.frmConfig.Main"), ToQBytes(stored));
    Surface();
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), stored);
    EXPECT_FALSE(dm->GetNeedSave());
    Text(dc(), 200, 100); // changed in memory, but never in design mode
    // The table is gone: any dataset call would now raise.
    db->Exec(QStringLiteral("DROP TABLE %1").arg(db->Quote(table)));
    EXPECT_NO_THROW(dm->SaveDiagram(QString()));
}

TEST_P(TableActionsTest, SaveRightAfterALoadLeavesTheStoredBytes) {
    const std::vector<uint8_t> stored = DiagramWith(1);
    Insert(QStringLiteral("frmMain.frmConfig.Main"), ToQBytes(stored));
    Surface();
    dm->LoadDiagram(QString());
    Text(dc(), 200, 100);
    dm->SaveDiagram(QString());
    EXPECT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Main")).toByteArray()), stored);
}

TEST_P(TableActionsTest, DesignModeMarksTheDiagramAndASaveWritesAndClearsTheMark) {
    Surface();
    dm->LoadDiagram(QString());
    dm->SetDesignMode(true);
    dm->SetDesignMode(false); // leaving design mode keeps the mark
    EXPECT_TRUE(dm->GetNeedSave());
    Text(dc(), 40, 40);
    dm->SaveDiagram(QString());
    EXPECT_FALSE(dm->GetNeedSave());
    const std::vector<uint8_t> first = DiagramBytes(dc());
    EXPECT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Main")).toByteArray()), first);
    // A second save without a new mark writes nothing.
    Text(dc(), 140, 40);
    dm->SaveDiagram(QString());
    EXPECT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Main")).toByteArray()), first);
}

TEST_P(TableActionsTest, ALoadThroughTheOpenDialogMarksTheDiagramForTheTable) {
    Surface();
    dm->LoadDiagram(QString());
    dialogs.Expect(TDialogAnswer::Open(Example("half_adder.dgm")));
    dm->LoadDiagramFromFile();
    EXPECT_TRUE(dm->GetNeedSave());
    dm->SaveDiagram(QString());
    EXPECT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Main")).toByteArray()),
              FileBytes(Example("half_adder.dgm")));
}

TEST_P(TableActionsTest, TheStoredBytesAreTheContainerStreamAndLoadBackIntoAnotherModule) {
    Surface();
    dc().LoadDiagramFromFile(Example("half_adder.dgm"));
    const std::vector<uint8_t> bytes = DiagramBytes(dc());
    ASSERT_EQ(bytes, FileBytes(Example("half_adder.dgm")));
    dm->FNeedSave = true;
    dm->SaveDiagram(QString());
    EXPECT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Main")).toByteArray()), bytes);

    HostPanel other;
    TDataSet otherData(db->AddConnection(), table);
    TdmTableDiagActions reader(&owner, &otherData, QStringLiteral("Config"));
    reader.SetName(QStringLiteral("Reader"));
    reader.CreateContainer(&other.panel, &other.canvas);
    reader.LoadDiagram(QStringLiteral("Main"));
    EXPECT_EQ(DiagramBytes(*reader.DiagContr), bytes);
    EXPECT_EQ(reader.DiagContr->ObjList->Count(), dc().ObjList->Count());
}

// ---- a diagram that has no record
// ----------------------------------------------------------------

TEST_P(TableActionsTest, LoadingADiagramWithoutARecordAppendsItAndLeavesTheDiagram) {
    Insert(QStringLiteral("frmMain.frmConfig.Other"), QByteArray("x"));
    Surface();
    Text(dc(), 30, 30);
    const std::vector<uint8_t> before = DiagramBytes(dc());
    dm->FNeedSave = true;
    dm->LoadDiagramEx(QStringLiteral("Chart1"), QString());
    // An empty stream loads as nothing: the diagram is as it was, and nobody was told anything.
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_FALSE(dm->GetNeedSave());
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].Section, QStringLiteral("frmMain.frmConfig.Chart1"));
    EXPECT_EQ(rows[1].Key, QStringLiteral("DiagramChart"));
    EXPECT_TRUE(rows[1].Data.isNull() || rows[1].Data.toByteArray().isEmpty());
    // Loading again finds that record: no second one.
    dm->LoadDiagramEx(QStringLiteral("Chart1"), QString());
    EXPECT_EQ(Rows().size(), 2u);
}

// ---- data column missing or not a blob
// ------------------------------------------------------------

TEST_P(TableActionsTest, WithoutTheDataColumnLoadAndSaveDoNothingButClearTheMark) {
    SetDataFieldSuffix(QStringLiteral("Missing"));
    Surface();
    Text(dc(), 30, 30);
    const std::vector<uint8_t> before = DiagramBytes(dc());
    dm->SetDesignMode(true);
    dm->LoadDiagram(QString());
    EXPECT_FALSE(dm->GetNeedSave());
    EXPECT_EQ(DiagramBytes(dc()), before);
    dm->FNeedSave = true;
    dm->SaveDiagram(QString());
    EXPECT_FALSE(dm->GetNeedSave());
    EXPECT_EQ(db->RowCount(table), 0);
}

TEST_P(TableActionsTest, ADataColumnThatIsNotABlobMakesLoadAndSaveDoNothing) {
    SetDataFieldSuffix(QStringLiteral("Text"));
    db->Exec(
        QStringLiteral("ALTER TABLE %1 ADD COLUMN \"BinData_Text\" TEXT").arg(db->Quote(table)));
    Surface();
    Text(dc(), 30, 30);
    dm->LoadDiagram(QString());
    dm->SetDesignMode(true);
    dm->SaveDiagram(QString());
    EXPECT_FALSE(dm->GetNeedSave());
    EXPECT_EQ(db->RowCount(table), 0);
    EXPECT_EQ(dc().ObjList->Count(), 1);
}

// ---- files instead of the table
// ------------------------------------------------------------------

TEST_P(TableActionsTest, UseDefaultSaveLoadProcUsesFilesAndNeverTheDataset) {
    // A dataset on a table that does not exist: opening it would raise.
    TDataSet missing(db->ConnectionName(), QStringLiteral("no_such_table_here"));
    TdmTableDiagActions files(&owner, &missing, QStringLiteral("Config"));
    files.SetName(QStringLiteral("Files"));
    files.CreateContainer(&host.panel, &host.canvas);
    EXPECT_THROW(files.LoadDiagram(QString()), EDatabaseError);

    files.SetUseDefaultSaveLoadProc(true);
    Text(*files.DiagContr, 30, 30);
    const std::vector<uint8_t> bytes = DiagramBytes(*files.DiagContr);
    // Written although the diagram was never marked: the file-based save always writes.
    files.SaveDiagram(QString());
    const QString file = dir.filePath(QStringLiteral("Files.dgm"));
    EXPECT_EQ(FileBytes(file), bytes);
    EXPECT_FALSE(missing.Active());

    files.DiagContr->Clear(false);
    files.FNeedSave = true;
    files.LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(*files.DiagContr), bytes);
    EXPECT_TRUE(files.GetNeedSave()); // a file load does not touch the mark
    EXPECT_FALSE(missing.Active());
}

// ---- stored bytes that are not a diagram
// ---------------------------------------------------------

class BadBlobTest : public TableActionsTest {
protected:
    std::vector<uint8_t> before;

    void Prepare(const QVariant& blob) {
        Insert(QStringLiteral("frmMain.frmConfig.Main"), blob);
        Surface();
        dc().LoadDiagramFromFile(Example("half_adder.dgm"));
        before = DiagramBytes(dc());
        dm->FNeedSave = true;
    }
};

INSTANTIATE_TEST_SUITE_P(Db, BadBlobTest, ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL),
                         DbKindName());

TEST_P(BadBlobTest, RandomBytesShowInvalidFileFormatOnceAndKeepTheDiagram) {
    QByteArray random(4096, '\0');
    QRandomGenerator gen(20240611u);
    for (char& c : random)
        c = char(gen.bounded(256));
    random[0] = 0x12; // never the signature's first byte (0x4E)
    Prepare(random);
    ExpectInvalidFormat();
    dm->LoadDiagram(QString());
    CheckInvalidFormatShownOnce();
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_FALSE(dm->GetNeedSave());
}

TEST_P(BadBlobTest, ATruncatedDiagramRaisesAReadErrorAndKeepsTheDiagram) {
    std::vector<uint8_t> whole = FileBytes(Example("rs_latch.dgm"));
    ASSERT_GT(whole.size(), 40u);
    whole.resize(whole.size() - 7);
    Prepare(ToQBytes(whole));
    EXPECT_THROW(dm->LoadDiagram(QString()), EReadError);
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dm->GetNeedSave()); // the failed load did not finish
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_P(BadBlobTest, TheSignatureAndOneMoreByteRaiseAReadError) {
    Prepare(QByteArray("\x4E\x5D\xF3\x98\x01", 5));
    EXPECT_THROW(dm->LoadDiagram(QString()), EReadError);
    EXPECT_EQ(DiagramBytes(dc()), before);
}

TEST_P(BadBlobTest, AnEmptyBlobLoadsAsNothing) {
    Prepare(QByteArray(""));
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_FALSE(dm->GetNeedSave());
}

TEST_P(BadBlobTest, ANullBlobLoadsAsNothing) {
    Prepare(QVariant());
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_P(BadBlobTest, OneByteLoadsAsNothing) {
    Prepare(QByteArray("\x4E", 1));
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_P(BadBlobTest, TheSignatureAloneLoadsAsNothing) {
    Prepare(QByteArray("\x4E\x5D\xF3\x98", 4));
    dm->LoadDiagram(QString());
    EXPECT_EQ(DiagramBytes(dc()), before);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_P(BadBlobTest, FourOtherBytesAndMoreShowInvalidFileFormat) {
    Prepare(QByteArray("abcde", 5));
    ExpectInvalidFormat();
    dm->LoadDiagram(QString());
    CheckInvalidFormatShownOnce();
    EXPECT_EQ(DiagramBytes(dc()), before);
}

// ---- faults
// --------------------------------------------------------------------------------------

TEST_P(TableActionsTest, ASaveTheServerRefusesKeepsTheOldBytesAndStaysToBeMade) {
    const std::vector<uint8_t> small = DiagramWith(1);
    const std::vector<uint8_t> big = FileBytes(Example("half_adder.dgm"));
    ASSERT_GT(big.size(), small.size());
    // The server takes blobs up to the small diagram's size only.
    const QString length =
        GetParam() == DbKind::SQLite ? QStringLiteral("length") : QStringLiteral("octet_length");
    const QString limited = db->NewTableName(QStringLiteral("Limited"));
    db->CreateConfigTable(limited, QStringLiteral("\"BinData\" %1 CHECK (%2(\"BinData\") <= %3)")
                                       .arg(db->BlobType(), length)
                                       .arg(small.size()));
    TDataSet limitedData(db->ConnectionName(), limited);
    dm->FDataStore = &limitedData;
    Surface();
    dm->LoadDiagram(QString());
    TMemoryStream smallStream(small);
    dc().LoadFromStream(smallStream);
    dm->FNeedSave = true;
    dm->SaveDiagram(QString());
    ASSERT_EQ(ToVector(db->Column(limited, QStringLiteral("BinData")).value(0).toByteArray()),
              small);

    dc().LoadDiagramFromFile(Example("half_adder.dgm"));
    ASSERT_EQ(DiagramBytes(dc()), big);
    dm->FNeedSave = true;
    EXPECT_THROW(dm->SaveDiagram(QString()), EDatabaseError);
    EXPECT_TRUE(dm->GetNeedSave());
    EXPECT_EQ(DiagramBytes(dc()), big);
    EXPECT_EQ(ToVector(db->Column(limited, QStringLiteral("BinData")).value(0).toByteArray()),
              small);
    EXPECT_EQ(limitedData.State(), dsBrowse);
    dm->FDataStore = data.get();
}

TEST_P(TableActionsTest, ANullDatasetRaisesADatabaseError) {
    TdmTableDiagActions none(&owner, nullptr, QStringLiteral("Config"));
    none.SetName(QStringLiteral("None"));
    none.CreateContainer(&host.panel, &host.canvas);
    EXPECT_THROW(none.LoadDiagram(QString()), EDatabaseError);
    none.FNeedSave = true;
    EXPECT_THROW(none.SaveDiagram(QString()), EDatabaseError);
    EXPECT_TRUE(none.GetNeedSave());
}

TEST_P(TableActionsTest, WithoutASurfaceLoadAndSaveRaiseBeforeTouchingTheTable) {
    EXPECT_THROW(dm->LoadDiagram(QString()), EInvalidOperation);
    dm->FNeedSave = true;
    EXPECT_THROW(dm->SaveDiagram(QString()), EInvalidOperation);
    EXPECT_EQ(db->RowCount(table), 0);
}

TEST_P(TableActionsTest, TwoModulesOnTwoConnectionsSavingIntoOneTableLoseNothing) {
    HostPanel leftHost, rightHost;
    TDataSet leftData(db->AddConnection(), table);
    TDataSet rightData(db->AddConnection(), table);
    TdmTableDiagActions left(&owner, &leftData, QStringLiteral("Config"));
    TdmTableDiagActions right(&owner, &rightData, QStringLiteral("Config"));
    left.SetName(QStringLiteral("Left"));
    right.SetName(QStringLiteral("Right"));
    left.CreateContainer(&leftHost.panel, &leftHost.canvas);
    right.CreateContainer(&rightHost.panel, &rightHost.canvas);

    // Both records are appended by the loads, one from each connection.
    left.LoadDiagram(QString());
    right.LoadDiagram(QString());
    left.SetDesignMode(true);
    right.SetDesignMode(true);
    std::vector<uint8_t> leftBytes, rightBytes;
    for (int round = 0; round < 5; ++round) {
        Text(*left.DiagContr, 10 + 20 * round, 10);
        Text(*right.DiagContr, 10 + 20 * round, 100);
        Text(*right.DiagContr, 10 + 20 * round, 200);
        leftBytes = DiagramBytes(*left.DiagContr);
        rightBytes = DiagramBytes(*right.DiagContr);
        // Alternate which one writes first.
        if (round % 2 == 0) {
            left.SaveDiagram(QString());
            right.SaveDiagram(QString());
        } else {
            right.SaveDiagram(QString());
            left.SaveDiagram(QString());
        }
        left.FNeedSave = right.FNeedSave = true;
        ASSERT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Left")).toByteArray()),
                  leftBytes);
        ASSERT_EQ(ToVector(Stored(QStringLiteral("frmMain.frmConfig.Right")).toByteArray()),
                  rightBytes);
    }
    EXPECT_NE(leftBytes, rightBytes);
    EXPECT_EQ(db->RowCount(table), 2);
}

// The server stopped between a load and a save: a typed error, the diagram kept, and the same
// save succeeding once the server is back.
TEST(TableActionsOutage, ASaveWhileThePostgreSQLServerIsDownRaisesAndSucceedsLater) {
    VDE_SKIP_WITHOUT_PG(DbKind::PostgreSQL);
    if (qEnvironmentVariableIsEmpty("VDE_PG_URL"))
        FAIL() << MissingServerMessage().toStdString();
    PrivatePgServer server;
    ASSERT_TRUE(server.Error().isEmpty()) << server.Error().toStdString();
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    TestDatabase db(DbKind::PostgreSQL, server.Url());
    ASSERT_TRUE(db.Error().isEmpty()) << db.Error().toStdString();
    const QString table = db.NewTableName(QStringLiteral("Config"));
    db.CreateConfigTable(table, QStringLiteral("\"BinData\" BYTEA"));

    HostPanel host;
    QObject owner;
    TDataSet data(db.ConnectionName(), table);
    {
        TdmTableDiagActions dm(&owner, &data, QStringLiteral("Config"));
        dm.SetName(QStringLiteral("Main"));
        dm.CreateContainer(&host.panel, &host.canvas);
        dm.LoadDiagram(QString());
        const std::vector<uint8_t> oldBytes = DiagramBytes(*dm.DiagContr);
        dm.SetDesignMode(true);
        dm.DiagContr->LoadDiagramFromFile(Example("ripple_counter.dgm"));
        const std::vector<uint8_t> bytes = DiagramBytes(*dm.DiagContr);
        ASSERT_NE(bytes, oldBytes);

        ASSERT_TRUE(server.Halt()) << server.Error().toStdString();
        EXPECT_THROW(dm.SaveDiagram(QString()), EDatabaseError);
        EXPECT_EQ(DiagramBytes(*dm.DiagContr), bytes);
        EXPECT_TRUE(dm.GetNeedSave());

        ASSERT_TRUE(server.Resume()) << server.Error().toStdString();
        dm.SaveDiagram(QString());
        EXPECT_FALSE(dm.GetNeedSave());
        QSqlDatabase check = db.Db();
        if (!check.isOpen())
            check.open();
        const QVariantList stored = db.Column(table, QStringLiteral("BinData"));
        ASSERT_EQ(stored.size(), 1);
        EXPECT_EQ(ToVector(stored[0].toByteArray()), bytes);
    }
    EXPECT_TRUE(dialogs.Failures().isEmpty());
}

// ---- the actions list and the package functions
// ---------------------------------------------------

TEST_P(TableActionsTest, AListWithADatasetAndAModuleNameMakesTableModules) {
    TDiagActionsList list(&owner, data.get(), QStringLiteral("Config"));
    TdmDiagActions* m = list.CreateDiagActions(QStringLiteral("Chart1"), &host.panel, &host.canvas);
    auto* t = dynamic_cast<TdmTableDiagActions*>(m);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->GetDataStore(), data.get());
    EXPECT_EQ(t->GetModuleName(), QStringLiteral("Config"));
}

TEST_P(TableActionsTest, AListWithADatasetButNoModuleNameMakesFileModules) {
    TDiagActionsList list(&owner, data.get(), QString());
    TdmDiagActions* m = list.CreateDiagActions(QStringLiteral("Chart1"), &host.panel, &host.canvas);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(dynamic_cast<TdmTableDiagActions*>(m), nullptr);
}

TEST_P(TableActionsTest, ThePackageFunctionsKeepDiagramsInTheTableUnderTheSuffixGiven) {
    CreateDiagActionsList(&owner, data.get(), QStringLiteral("Config"), QStringLiteral("Main"));
    EXPECT_EQ(GetDataFieldSuffix(), QStringLiteral("Main"));
    // A second call changes nothing, not even the suffix.
    CreateDiagActionsList(&owner, nullptr, QString(), QStringLiteral("Other"));
    EXPECT_EQ(GetDataFieldSuffix(), QStringLiteral("Main"));

    host.Show();
    TdmDiagActions* m = CreateAndLoadDiagActionsEx(
        QStringLiteral("Chart1"), QStringLiteral("frmTab"), &host.panel, &host.canvas, false, true);
    ASSERT_NE(dynamic_cast<TdmTableDiagActions*>(m), nullptr);
    std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.frmTab.Chart1"));

    // Only viewed: saving writes nothing.
    Text(*m->DiagContr, 30, 30);
    SaveDiagActionsDiagrams(QString());
    EXPECT_TRUE(
        Stored(QStringLiteral("frmMain.frmTab.Chart1"), QStringLiteral("BinData_Main")).isNull());
    // Design mode for the current diagram marks it; now it is written, into BinData_Main.
    EnableDesignMode(true, false);
    SaveDiagActionsDiagrams(QStringLiteral("Chart1"));
    EXPECT_EQ(
        ToVector(Stored(QStringLiteral("frmMain.frmTab.Chart1"), QStringLiteral("BinData_Main"))
                     .toByteArray()),
        DiagramBytes(*m->DiagContr));
    EXPECT_TRUE(
        Stored(QStringLiteral("frmMain.frmTab.Chart1"), QStringLiteral("BinData")).isNull());
}

TEST_P(TableActionsTest, CreateAndLoadExWithoutLoadingTouchesNoRecordButSetsDesignMode) {
    CreateDiagActionsList(&owner, data.get(), QStringLiteral("Config"), QString());
    TdmDiagActions* m = CreateAndLoadDiagActionsEx(QStringLiteral("Chart1"), QStringLiteral("T"),
                                                   &host.panel, &host.canvas, true, false);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(GetCurrentDiagActions(), m);
    EXPECT_TRUE(IsDesignModeEnabled());
    EXPECT_EQ(db->RowCount(table), 0);
    // Design mode marked it: the save by name appends its record with the diagram.
    SaveDiagActionsDiagrams(QStringLiteral("Chart1"));
    const std::vector<Row> rows = Rows();
    ASSERT_EQ(rows.size(), 1u);
    // No load named the tab, so the default one is used.
    EXPECT_EQ(rows[0].Section, QStringLiteral("frmMain.frmConfig.Chart1"));
    EXPECT_EQ(ToVector(rows[0].Data.toByteArray()), DiagramBytes(*m->DiagContr));
}

TEST_P(TableActionsTest, CreateAndLoadWithoutATabLoadsByTheModulesName) {
    const std::vector<uint8_t> stored = DiagramWith(3);
    Insert(QStringLiteral("frmMain.frmConfig.Chart1"), ToQBytes(stored));
    CreateDiagActionsList(&owner, data.get(), QStringLiteral("Config"), QString());
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Chart1"), &host.panel, &host.canvas, false);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(DiagramBytes(*m->DiagContr), stored);
    EXPECT_FALSE(m->GetNeedSave());
}

} // namespace
