#include "common/db_test_util.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"

#include <QSqlQuery>
#include <QtEndian>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::DbKind;
using vde::test::TestDatabase;

namespace {

QByteArray StreamBytes(TStream& s) {
    QByteArray b(qsizetype(s.Size()), '\0');
    s.SetPosition(0);
    s.ReadBuffer(b.data(), b.size());
    return b;
}

class DataSetTest : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam());
        FDb = std::make_unique<TestDatabase>(GetParam());
        if (!FDb->Error().isEmpty())
            FAIL() << FDb->Error().toStdString();
        FTable = FDb->NewTableName(QStringLiteral("Config"));
        FDb->CreateConfigTable(
            FTable, QStringLiteral("\"BinData\" %1, \"n\" INTEGER DEFAULT 7").arg(FDb->BlobType()));
    }
    void Insert(const QString& section, const QString& key) {
        QSqlQuery q(FDb->Db());
        q.prepare(QStringLiteral("INSERT INTO %1 (\"Section\", \"Key\") VALUES (?, ?)")
                      .arg(FDb->Quote(FTable)));
        q.addBindValue(section);
        q.addBindValue(key);
        ASSERT_TRUE(q.exec());
    }
    std::unique_ptr<TestDatabase> FDb;
    QString FTable;
};

TEST_P(DataSetTest, OpenRefusesATableWithoutPrimaryKey) {
    const QString t = FDb->NewTableName(QStringLiteral("NoKey"));
    FDb->Exec(
        QStringLiteral("CREATE TABLE %1 (\"Section\" TEXT, \"Key\" TEXT)").arg(FDb->Quote(t)));
    TDataSet ds(FDb->ConnectionName(), t);
    try {
        ds.Open();
        FAIL() << "opened a table without a primary key";
    } catch (const EDatabaseError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("no primary key"))) << e.what();
        EXPECT_TRUE(e.Message().contains(t)) << e.what();
    }
    EXPECT_FALSE(ds.Active());
}

TEST_P(DataSetTest, OpenRefusesAnUnknownTableAndConnection) {
    TDataSet ds(FDb->ConnectionName(), QStringLiteral("NoSuchTable"));
    EXPECT_THROW(ds.Open(), EDatabaseError);
    TDataSet ds2(QStringLiteral("no such connection"), FTable);
    EXPECT_THROW(ds2.Open(), EDatabaseError);
}

TEST_P(DataSetTest, OpenOnEmptyTableHasNoCurrentRecord) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_EQ(ds.State(), dsBrowse);
    EXPECT_TRUE(ds.IsEmpty());
    EXPECT_TRUE(ds.FieldByName(QStringLiteral("Section")).IsNull());
    EXPECT_THROW(ds.Edit(), EDatabaseError);
}

TEST_P(DataSetTest, OpenStandsOnTheFirstRecordByPrimaryKey) {
    Insert(QStringLiteral("first"), QStringLiteral("k"));
    Insert(QStringLiteral("second"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_FALSE(ds.IsEmpty());
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Section")).toString(), QStringLiteral("first"));
    EXPECT_EQ(ds.FieldCount(), 5);
}

TEST_P(DataSetTest, OperationsOnAClosedDataSetRaise) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    EXPECT_THROW(ds.Locate(QStringLiteral("Section"), {QStringLiteral("x")}), EDatabaseError);
    EXPECT_THROW(ds.Append(), EDatabaseError);
    EXPECT_THROW(ds.Edit(), EDatabaseError);
    EXPECT_THROW(ds.Post(), EDatabaseError);
    EXPECT_EQ(ds.FindField(QStringLiteral("Section")), nullptr);
    EXPECT_THROW(ds.FieldByName(QStringLiteral("Section")), EDatabaseError);
}

TEST_P(DataSetTest, AppendPostMakesTheNewRecordCurrentWithItsDefaults) {
    Insert(QStringLiteral("before"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ds.Append();
    EXPECT_EQ(ds.State(), dsInsert);
    EXPECT_TRUE(ds.FieldByName(QStringLiteral("Section")).IsNull());
    ds.SetFieldValue(QStringLiteral("Section"), QStringLiteral("new"));
    ds.Post();
    EXPECT_EQ(ds.State(), dsBrowse);
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Section")).toString(), QStringLiteral("new"));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("n")).toInt(), 7); // the column's default
    EXPECT_EQ(ds.FieldValue(QStringLiteral("id")).toInt(), 2);
    EXPECT_TRUE(ds.FieldByName(QStringLiteral("BinData")).IsNull());
    EXPECT_EQ(FDb->RowCount(FTable), 2);
}

TEST_P(DataSetTest, AppendWithNothingAssignedStoresADefaultRecord) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ds.Append();
    ds.Post();
    EXPECT_EQ(FDb->RowCount(FTable), 1);
    EXPECT_EQ(ds.FieldValue(QStringLiteral("n")).toInt(), 7);
}

TEST_P(DataSetTest, AssigningOutsideEditOrInsertStateRaises) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_THROW(ds.SetFieldValue(QStringLiteral("Section"), QStringLiteral("x")), EDatabaseError);
    EXPECT_THROW(ds.Post(), EDatabaseError);
}

TEST_P(DataSetTest, EditPostChangesOnlyTheCurrentRecord) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    Insert(QStringLiteral("b"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("b")}));
    ds.Edit();
    EXPECT_EQ(ds.State(), dsEdit);
    ds.SetFieldValue(QStringLiteral("Key"), QStringLiteral("changed"));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Key")).toString(), QStringLiteral("changed"));
    ds.Post();
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Key")),
              (QVariantList{QStringLiteral("k"), QStringLiteral("changed")}));
}

TEST_P(DataSetTest, CancelDropsThePendingEdit) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("Key"), QStringLiteral("changed"));
    ds.Cancel();
    EXPECT_EQ(ds.State(), dsBrowse);
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Key")).toString(), QStringLiteral("k"));
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Key")), QVariantList{QStringLiteral("k")});
}

TEST_P(DataSetTest, LocateComparesEveryKeyExactlyAsAString) {
    Insert(QStringLiteral("Chart"), QStringLiteral("DiagramChart"));
    Insert(QStringLiteral("chart"), QStringLiteral("DiagramChart"));
    Insert(QStringLiteral("chart "), QStringLiteral("DiagramChart"));
    Insert(QStringLiteral("chart"), QStringLiteral("Other"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section;Key"),
                          {QStringLiteral("chart"), QStringLiteral("DiagramChart")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("id")).toInt(), 2);
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section;Key"),
                          {QStringLiteral("chart "), QStringLiteral("DiagramChart")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("id")).toInt(), 3);
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section;Key"),
                          {QStringLiteral("chart"), QStringLiteral("Other")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("id")).toInt(), 4);
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section;Key"),
                           {QStringLiteral("CHART"), QStringLiteral("DiagramChart")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section;Key"),
                           {QStringLiteral("chart"), QStringLiteral("diagramchart")}));
}

TEST_P(DataSetTest, LocateOnANumberColumnComparesItsText) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_TRUE(ds.Locate(QStringLiteral("id"), {QStringLiteral("1")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("id"), {QStringLiteral("01")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("id"), {QStringLiteral("1.0")}));
}

TEST_P(DataSetTest, FailedLocateKeepsThePosition) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    Insert(QStringLiteral("b"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("b")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("c")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Section")).toString(), QStringLiteral("b"));
}

TEST_P(DataSetTest, LocateRaisesForAnUnknownFieldOrTooFewValues) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_THROW(
        ds.Locate(QStringLiteral("Section;Nope"), {QStringLiteral("a"), QStringLiteral("b")}),
        EDatabaseError);
    EXPECT_THROW(ds.Locate(QStringLiteral("Section;Key"), {QStringLiteral("a")}), EDatabaseError);
    EXPECT_THROW(ds.Locate(QString(), {QStringLiteral("a")}), EDatabaseError);
}

TEST_P(DataSetTest, LocatePostsAPendingEditFirst) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("Key"), QStringLiteral("posted"));
    EXPECT_TRUE(ds.Locate(QStringLiteral("Key"), {QStringLiteral("posted")}));
    EXPECT_EQ(ds.State(), dsBrowse);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Key")), QVariantList{QStringLiteral("posted")});
}

TEST_P(DataSetTest, HostileKeyValuesRoundTripAndNeverChangeTheSql) {
    const QString sentinel = FDb->NewTableName(QStringLiteral("sentinel"));
    FDb->Exec(QStringLiteral("CREATE TABLE %1 (x INTEGER)").arg(FDb->Quote(sentinel)));
    QStringList values = vde::test::HostileValues();
    values << QStringLiteral("'); DROP TABLE \"%1\"; --").arg(sentinel)
           << QStringLiteral("\"; DROP TABLE \"%1\"; --").arg(sentinel);
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    for (const QString& v : values) {
        ds.Append();
        ds.SetFieldValue(QStringLiteral("Section"), v);
        ds.SetFieldValue(QStringLiteral("Key"), v);
        ds.Post();
    }
    EXPECT_EQ(FDb->RowCount(FTable), values.size());
    EXPECT_EQ(FDb->RowCount(sentinel), 0); // still there
    const QVariantList stored = FDb->Column(FTable, QStringLiteral("Section"));
    for (qsizetype i = 0; i < values.size(); ++i) {
        EXPECT_EQ(stored[i].toString(), values[i]) << "value " << i;
        ASSERT_TRUE(ds.Locate(QStringLiteral("Section;Key"), {values[i], values[i]}))
            << "value " << i;
        EXPECT_EQ(ds.FieldValue(QStringLiteral("id")).toInt(), i + 1) << "value " << i;
        EXPECT_EQ(ds.FieldValue(QStringLiteral("Key")).toString(), values[i]);
    }
    // Wildcards are plain characters: "%" and "_" match only themselves.
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("%%")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("abc")}));
    EXPECT_FALSE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("abc_")}));
}

TEST_P(DataSetTest, HostileTableAndColumnNamesAreQuoted) {
    const QString t = FDb->NewTableName(QStringLiteral("odd \"name\"; -- x"));
    FDb->Exec(QStringLiteral("CREATE TABLE %1 (\"my id\" INTEGER PRIMARY KEY, \"we\"\"ird' --\" "
                             "TEXT, \"Select\" %2)")
                  .arg(FDb->Quote(t), FDb->BlobType()));
    TDataSet ds(FDb->ConnectionName(), t);
    ds.Open();
    ds.Append();
    ds.SetFieldValue(QStringLiteral("my id"), 5);
    ds.SetFieldValue(QStringLiteral("we\"ird' --"), QStringLiteral("v"));
    ds.SetFieldValue(QStringLiteral("Select"), QByteArray("\x01\x02", 2));
    ds.Post();
    ASSERT_TRUE(ds.Locate(QStringLiteral("we\"ird' --"), {QStringLiteral("v")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("my id")).toInt(), 5);
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Select")).toByteArray(), QByteArray("\x01\x02", 2));
}

TEST_P(DataSetTest, FindFieldPrefersExactNameThenIgnoresCase) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    TField* f = ds.FindField(QStringLiteral("bindata"));
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->FieldName(), QStringLiteral("BinData"));
    EXPECT_EQ(f->DataSet(), &ds);
    EXPECT_EQ(ds.FindField(QStringLiteral("Missing")), nullptr);
    EXPECT_THROW(ds.FieldByName(QStringLiteral("Missing")), EDatabaseError);
}

TEST_P(DataSetTest, OnlyBinaryColumnsAreBlobs) {
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_TRUE(ds.FieldByName(QStringLiteral("BinData")).IsBlob());
    EXPECT_FALSE(ds.FieldByName(QStringLiteral("Section")).IsBlob());
    EXPECT_FALSE(ds.FieldByName(QStringLiteral("n")).IsBlob());
}

TEST_P(DataSetTest, BlobStreamReadsTheBlobAndWriteEmptiesItAtOnce) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    TField* blob = ds.FindField(QStringLiteral("BinData"));
    ds.Edit();
    blob->SetValue(QByteArray("\x00\xFFxyz", 5));
    ds.Post();
    EXPECT_EQ(StreamBytes(*ds.CreateBlobStream(blob, bmRead)), QByteArray("\x00\xFFxyz", 5));

    EXPECT_THROW(ds.CreateBlobStream(blob, bmWrite), EDatabaseError); // browse state
    ds.Edit();
    {
        auto w = ds.CreateBlobStream(blob, bmWrite);
        EXPECT_EQ(blob->Value().toByteArray(), QByteArray());
        EXPECT_FALSE(blob->IsNull());
        w->WriteBuffer("new", 3);
    }
    EXPECT_EQ(blob->Value().toByteArray(), QByteArray("new"));
    ds.Post();
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("BinData")), QVariantList{QByteArray("new")});
}

TEST_P(DataSetTest, BlobStreamRefusesOtherFields) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    TDataSet other(FDb->ConnectionName(), FTable);
    ds.Open();
    other.Open();
    EXPECT_THROW(ds.CreateBlobStream(ds.FindField(QStringLiteral("Section")), bmRead),
                 EDatabaseError);
    EXPECT_THROW(ds.CreateBlobStream(other.FindField(QStringLiteral("BinData")), bmRead),
                 EDatabaseError);
    EXPECT_THROW(ds.CreateBlobStream(nullptr, bmRead), EDatabaseError);
}

TEST_P(DataSetTest, BlobWriterAbandonedByAnExceptionLeavesTheBlobEmpty) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    TField* blob = ds.FindField(QStringLiteral("BinData"));
    ds.Edit();
    try {
        auto w = ds.CreateBlobStream(blob, bmWrite);
        w->WriteBuffer("half", 4);
        throw EWriteError(QStringLiteral("simulated"));
    } catch (const EWriteError&) {
    }
    EXPECT_EQ(blob->Value().toByteArray(), QByteArray());
}

TEST_P(DataSetTest, NativeFormatOfNumbersIsLittleEndianFixedSize) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    TField& n = ds.FieldByName(QStringLiteral("n"));
    EXPECT_EQ(n.DataSize(), 4);
    uint8_t buf[4] = {};
    ASSERT_TRUE(n.GetData(buf, 4));
    EXPECT_EQ(std::vector<uint8_t>(buf, buf + 4), (std::vector<uint8_t>{7, 0, 0, 0}));
    ds.Edit();
    const uint8_t v[6] = {0x01, 0x02, 0x03, 0x80, 0xEE, 0xEE}; // extra bytes are not used
    n.SetData(v, 6);
    ds.Post();
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("n")).at(0).toLongLong(),
              qlonglong(int32_t(0x80030201)));
    ds.Edit();
    EXPECT_THROW(n.SetData(v, 3), EDatabaseError);
    EXPECT_THROW(n.GetData(buf, 3), EDatabaseError);
    n.SetData(nullptr, 0);
    EXPECT_TRUE(n.IsNull());
    EXPECT_FALSE(n.GetData(buf, 4));
}

TEST_P(DataSetTest, NativeFormatOfTextIsUtf8) {
    Insert(QString::fromUtf8("\xC3\xA9\xF0\x9F\x98\x80"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    TField& s = ds.FieldByName(QStringLiteral("Section"));
    EXPECT_EQ(s.DataSize(), 6);
    uint8_t buf[6] = {};
    ASSERT_TRUE(s.GetData(buf, 6));
    EXPECT_EQ(std::vector<uint8_t>(buf, buf + 6),
              (std::vector<uint8_t>{0xC3, 0xA9, 0xF0, 0x9F, 0x98, 0x80}));
    ds.Edit();
    const uint8_t bad[2] = {0xC3, 0x28};
    EXPECT_THROW(s.SetData(bad, 2), EDatabaseError);
    const uint8_t good[2] = {'o', 'k'};
    s.SetData(good, 2);
    ds.Post();
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")), QVariantList{QStringLiteral("ok")});
}

TEST_P(DataSetTest, RefreshReadsChangesMadeByAnotherConnection) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Key")).toString(), QStringLiteral("k"));
    TDataSet other(FDb->AddConnection(), FTable);
    other.Open();
    other.Edit();
    other.SetFieldValue(QStringLiteral("Key"), QStringLiteral("theirs"));
    other.Post();
    ds.Refresh();
    EXPECT_EQ(ds.FieldValue(QStringLiteral("Key")).toString(), QStringLiteral("theirs"));
}

TEST_P(DataSetTest, TwoConnectionsSavingDifferentRecordsLoseNothing) {
    Insert(QStringLiteral("one"), QStringLiteral("k"));
    Insert(QStringLiteral("two"), QStringLiteral("k"));
    TDataSet a(FDb->ConnectionName(), FTable);
    TDataSet b(FDb->AddConnection(), FTable);
    a.Open();
    b.Open();
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(a.Locate(QStringLiteral("Section"), {QStringLiteral("one")}));
        ASSERT_TRUE(b.Locate(QStringLiteral("Section"), {QStringLiteral("two")}));
        a.Edit();
        b.Edit();
        a.SetFieldValue(QStringLiteral("BinData"), QByteArray(100 + round, char('a' + round)));
        b.SetFieldValue(QStringLiteral("BinData"), QByteArray(200 + round, char('A' + round)));
        a.Post();
        b.Post();
    }
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("BinData")),
              (QVariantList{QByteArray(104, 'e'), QByteArray(204, 'E')}));
}

TEST_P(DataSetTest, FailedCommitLeavesTheOldBlobAndTheEditCanBeRetried) {
    // A deferred foreign key is checked only at commit: the UPDATE itself succeeds, the commit
    // fails, and the whole Post must be undone.
    const QString parent = FDb->NewTableName(QStringLiteral("Parent"));
    FDb->Exec(
        QStringLiteral("CREATE TABLE %1 (\"pid\" INTEGER PRIMARY KEY)").arg(FDb->Quote(parent)));
    FDb->Exec(QStringLiteral("INSERT INTO %1 VALUES (1)").arg(FDb->Quote(parent)));
    const QString t = FDb->NewTableName(QStringLiteral("Child"));
    FDb->CreateConfigTable(
        t, QStringLiteral("\"BinData\" %1, \"ref\" INTEGER REFERENCES %2 (\"pid\") DEFERRABLE "
                          "INITIALLY DEFERRED")
               .arg(FDb->BlobType(), FDb->Quote(parent)));
    FDb->Exec(QStringLiteral("INSERT INTO %1 (\"Section\", \"BinData\", \"ref\") VALUES ('s', "
                             "%2, 1)")
                  .arg(FDb->Quote(t), GetParam() == DbKind::SQLite ? "X'0102'" : "'\\x0102'"));
    TDataSet ds(FDb->ConnectionName(), t);
    ds.Open();
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("BinData"), QByteArray("new bytes"));
    ds.SetFieldValue(QStringLiteral("ref"), 99);
    EXPECT_THROW(ds.Post(), EDatabaseError);
    EXPECT_EQ(FDb->Column(t, QStringLiteral("BinData")), QVariantList{QByteArray("\x01\x02", 2)});
    EXPECT_EQ(ds.State(), dsEdit);
    ds.SetFieldValue(QStringLiteral("ref"), 1);
    ds.Post();
    EXPECT_EQ(FDb->Column(t, QStringLiteral("BinData")), QVariantList{QByteArray("new bytes")});
}

TEST_P(DataSetTest, EditOfARecordDeletedMeanwhileRaises) {
    Insert(QStringLiteral("a"), QStringLiteral("k"));
    TDataSet ds(FDb->ConnectionName(), FTable);
    ds.Open();
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("Key"), QStringLiteral("x"));
    FDb->Exec(QStringLiteral("DELETE FROM %1").arg(FDb->Quote(FTable)));
    EXPECT_THROW(ds.Post(), EDatabaseError);
    EXPECT_EQ(FDb->RowCount(FTable), 0);
}

TEST_P(DataSetTest, ACompositeTextPrimaryKeyIdentifiesTheRecord) {
    const QString t = FDb->NewTableName(QStringLiteral("Composite"));
    FDb->Exec(QStringLiteral("CREATE TABLE %1 (\"Section\" TEXT, \"Key\" TEXT, \"BinData\" %2, "
                             "PRIMARY KEY (\"Section\", \"Key\"))")
                  .arg(FDb->Quote(t), FDb->BlobType()));
    TDataSet ds(FDb->ConnectionName(), t);
    ds.Open();
    for (const char* section : {"b", "a"}) {
        ds.Append();
        ds.SetFieldValue(QStringLiteral("Section"), QString::fromLatin1(section));
        ds.SetFieldValue(QStringLiteral("Key"), QStringLiteral("k"));
        ds.Post();
    }
    ASSERT_TRUE(
        ds.Locate(QStringLiteral("Section;Key"), {QStringLiteral("b"), QStringLiteral("k")}));
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("BinData"), QByteArray("for b"));
    ds.Post();
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("a")}));
    EXPECT_TRUE(ds.FieldByName(QStringLiteral("BinData")).IsNull());
    ASSERT_TRUE(ds.Locate(QStringLiteral("Section"), {QStringLiteral("b")}));
    EXPECT_EQ(ds.FieldValue(QStringLiteral("BinData")).toByteArray(), QByteArray("for b"));
}

TEST_P(DataSetTest, AppendingADuplicateUnderAUniqueKeyRaisesAndStoresNothing) {
    const QString t = FDb->NewTableName(QStringLiteral("Unique"));
    FDb->CreateConfigTable(t, QStringLiteral("UNIQUE (\"Section\", \"Key\")"));
    TDataSet a(FDb->ConnectionName(), t);
    TDataSet b(FDb->AddConnection(), t);
    a.Open();
    b.Open();
    for (TDataSet* ds : {&a, &b}) {
        ds->Append();
        ds->SetFieldValue(QStringLiteral("Section"), QStringLiteral("frmMain.frmConfig.Chart1"));
        ds->SetFieldValue(QStringLiteral("Key"), QStringLiteral("DiagramChart"));
    }
    a.Post();
    EXPECT_THROW(b.Post(), EDatabaseError);
    EXPECT_EQ(b.State(), dsInsert);
    EXPECT_EQ(FDb->RowCount(t), 1);
}

INSTANTIATE_TEST_SUITE_P(Databases, DataSetTest,
                         ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL),
                         vde::test::DbKindName());

TEST(DataSetServerOutage, PostWhileTheServerIsDownRaisesAndSucceedsAfterItIsBack) {
    VDE_SKIP_WITHOUT_PG(DbKind::PostgreSQL);
    vde::test::PrivatePgServer server;
    ASSERT_TRUE(server.Error().isEmpty()) << server.Error().toStdString();
    TestDatabase db(DbKind::PostgreSQL, server.Url());
    ASSERT_TRUE(db.Error().isEmpty()) << db.Error().toStdString();
    const QString t = db.NewTableName(QStringLiteral("Config"));
    db.CreateConfigTable(t, QStringLiteral("\"BinData\" BYTEA"));
    db.Exec(QStringLiteral("INSERT INTO %1 (\"Section\", \"BinData\") VALUES ('s', '\\x01')")
                .arg(db.Quote(t)));
    TDataSet ds(db.ConnectionName(), t);
    ds.Open();
    ds.Edit();
    ds.SetFieldValue(QStringLiteral("BinData"), QByteArray("new"));
    ASSERT_TRUE(server.Halt()) << server.Error().toStdString();
    EXPECT_THROW(ds.Post(), EDatabaseError);
    EXPECT_THROW(ds.Post(), EDatabaseError); // still down: reopening fails, typed as well
    EXPECT_EQ(ds.State(), dsEdit);
    ASSERT_TRUE(server.Resume()) << server.Error().toStdString();
    ds.Post();
    EXPECT_EQ(db.Column(t, QStringLiteral("BinData")), QVariantList{QByteArray("new")});
}

TEST(DatabaseUrl, SqliteUrlNamesTheFileAndTable) {
    const TDatabaseUrl u = ParseDatabaseUrl(QStringLiteral("sqlite:/tmp/a b.db?table=Config"));
    EXPECT_EQ(u.Driver, QStringLiteral("QSQLITE"));
    EXPECT_EQ(u.DatabaseName, QStringLiteral("/tmp/a b.db"));
    EXPECT_EQ(u.TableName, QStringLiteral("Config"));
    EXPECT_EQ(ParseDatabaseUrl(QStringLiteral("sqlite:rel.db")).TableName, QString());
}

TEST(DatabaseUrl, PostgresqlUrlNamesUserHostPortDatabaseAndTable) {
    const TDatabaseUrl u =
        ParseDatabaseUrl(QStringLiteral("postgresql://me:pw@127.0.0.1:5433/cfg?table=Diagrams"));
    EXPECT_EQ(u.Driver, QStringLiteral("QPSQL"));
    EXPECT_EQ(u.UserName, QStringLiteral("me"));
    EXPECT_EQ(u.Password, QStringLiteral("pw"));
    EXPECT_EQ(u.HostName, QStringLiteral("127.0.0.1"));
    EXPECT_EQ(u.Port, 5433);
    EXPECT_EQ(u.DatabaseName, QStringLiteral("cfg"));
    EXPECT_EQ(u.TableName, QStringLiteral("Diagrams"));
}

TEST(DatabaseUrl, MalformedUrlsRaise) {
    EXPECT_THROW(ParseDatabaseUrl(QStringLiteral("mysql://x@y/z")), EDatabaseError);
    EXPECT_THROW(ParseDatabaseUrl(QStringLiteral("sqlite:")), EDatabaseError);
    EXPECT_THROW(ParseDatabaseUrl(QStringLiteral("postgresql://me@host")), EDatabaseError);
    EXPECT_THROW(ParseDatabaseUrl(QStringLiteral("postgresql:///db")), EDatabaseError);
}

} // namespace
