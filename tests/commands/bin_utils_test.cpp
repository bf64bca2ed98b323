#include "common/db_test_util.h"
#include "velDiagEdit/commands/bin_utils.h"
#include "velDiagEdit/platform/errors.h"

#include <QRandomGenerator>
#include <QSqlQuery>
#include <cstring>
#include <gtest/gtest.h>

using namespace vde;
using vde::test::DbKind;
using vde::test::TestDatabase;

namespace {

const QString kKeyFields = QStringLiteral("Section;Key");

QByteArray ToQBytes(const TBytes& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

TBytes FromText(const char* s) {
    return TBytes(s, s + std::strlen(s));
}

class BinUtilsTest : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam());
        FDb = std::make_unique<TestDatabase>(GetParam());
        if (!FDb->Error().isEmpty())
            FAIL() << FDb->Error().toStdString();
        FTable = FDb->NewTableName(QStringLiteral("Config"));
        FDb->CreateConfigTable(FTable, QStringLiteral("\"BinData\" %1, \"Size\" INTEGER, "
                                                      "\"Note\" TEXT")
                                           .arg(FDb->BlobType()));
        FData = std::make_unique<TDataSet>(FDb->ConnectionName(), FTable);
        FData->Open();
        FBlob = FData->FindField(QStringLiteral("BinData"));
    }
    void TearDown() override { FData.reset(); }

    // A record made with plain SQL; `blob` null stores NULL.
    void Insert(const QString& section, const QString& key, const QVariant& blob,
                const QVariant& size = QVariant()) {
        QSqlQuery q(FDb->Db());
        q.prepare(QStringLiteral("INSERT INTO %1 (\"Section\", \"Key\", \"BinData\", \"Size\") "
                                 "VALUES (?, ?, ?, ?)")
                      .arg(FDb->Quote(FTable)));
        q.addBindValue(section);
        q.addBindValue(key);
        q.addBindValue(blob.isValid() ? blob : QVariant(QMetaType::fromType<QByteArray>()));
        q.addBindValue(size);
        ASSERT_TRUE(q.exec()) << q.lastQuery().toStdString();
    }
    QVariantList Blobs() const { return FDb->Column(FTable, QStringLiteral("BinData")); }
    bool BlobIsNull(int id) const {
        QSqlQuery q(FDb->Db());
        q.exec(QStringLiteral("SELECT \"BinData\" IS NULL FROM %1 WHERE \"id\" = %2")
                   .arg(FDb->Quote(FTable))
                   .arg(id));
        return q.next() && q.value(0).toBool();
    }
    void Reopen() {
        FData = std::make_unique<TDataSet>(FDb->ConnectionName(), FTable);
        FData->Open();
        FBlob = FData->FindField(QStringLiteral("BinData"));
    }

    std::unique_ptr<TestDatabase> FDb;
    QString FTable;
    std::unique_ptr<TDataSet> FData;
    TField* FBlob = nullptr;
};

// --- ReadBlobData / WriteBlobData

TEST_P(BinUtilsTest, WriteBlobDataWithAnEmptyArrayReturnsZeroAndStoresAnEmptyNonNullBlob) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("old"));
    Reopen();
    EXPECT_EQ(WriteBlobData(FBlob, TBytes{}), 0);
    EXPECT_EQ(FData->State(), dsBrowse); // posted
    EXPECT_EQ(Blobs(), QVariantList{QByteArray()});
    EXPECT_FALSE(BlobIsNull(1));
    EXPECT_FALSE(FBlob->IsNull());
}

TEST_P(BinUtilsTest, WriteBlobDataStoresExactlyTheBytesWithoutAnyHeader) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant());
    Reopen();
    const TBytes bytes{0x00, 0x01, 0xFF, 0x4E, 0x5D, 0x00};
    EXPECT_EQ(WriteBlobData(FBlob, bytes), 6);
    EXPECT_EQ(Blobs(), QVariantList{ToQBytes(bytes)});
}

TEST_P(BinUtilsTest, ReadBlobDataOnANullBlobReturnsMinusOneAndLeavesTheArray) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant());
    Reopen();
    TBytes data{9, 8, 7};
    EXPECT_EQ(ReadBlobData(FBlob, data), -1);
    EXPECT_EQ(data, (TBytes{9, 8, 7}));
}

TEST_P(BinUtilsTest, ReadBlobDataOnAnEmptyBlobReturnsZeroAndLeavesTheArray) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray(""));
    Reopen();
    TBytes data{9, 8, 7};
    EXPECT_EQ(ReadBlobData(FBlob, data), 0);
    EXPECT_EQ(data, (TBytes{9, 8, 7}));
}

TEST_P(BinUtilsTest, ReadBlobDataGivesTheStoredBytes) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("\x00\xFF\x10", 3));
    Reopen();
    TBytes data{1, 2, 3, 4, 5, 6, 7};
    EXPECT_EQ(ReadBlobData(FBlob, data), 3);
    EXPECT_EQ(data, (TBytes{0x00, 0xFF, 0x10}));
}

TEST_P(BinUtilsTest, BlobRoutinesDoNothingForNoFieldOrANonBlobField) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("old"));
    Reopen();
    TField* text = FData->FindField(QStringLiteral("Section"));
    TBytes data{5};
    TMemoryStream stream(TBytes{1, 2});
    EXPECT_EQ(ReadBlobData(nullptr, data), -1);
    EXPECT_EQ(ReadBlobData(text, data), -1);
    EXPECT_EQ(WriteBlobData(nullptr, data), -1);
    EXPECT_EQ(WriteBlobData(text, data), -1);
    EXPECT_EQ(ReadBlobToStream(nullptr, &stream), -1);
    EXPECT_EQ(ReadBlobToStream(text, &stream), -1);
    EXPECT_EQ(ReadBlobToStream(FBlob, nullptr), -1);
    EXPECT_EQ(WriteBlobFromStream(nullptr, &stream), -1);
    EXPECT_EQ(WriteBlobFromStream(text, &stream), -1);
    EXPECT_EQ(WriteBlobFromStream(FBlob, nullptr), -1);
    EXPECT_EQ(data, TBytes{5});
    EXPECT_EQ(stream.Bytes(), (TBytes{1, 2}));
    EXPECT_EQ(FData->State(), dsBrowse);
    EXPECT_EQ(Blobs(), QVariantList{QByteArray("old")});
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")), QVariantList{QStringLiteral("s")});
}

TEST_P(BinUtilsTest, AWriteWhileAnInsertIsPendingPostsThatInsertFirst) {
    FData->Append();
    FData->SetFieldValue(QStringLiteral("Section"), QStringLiteral("pending"));
    EXPECT_EQ(WriteBlobData(FBlob, FromText("bytes")), 5);
    EXPECT_EQ(FData->State(), dsBrowse);
    EXPECT_EQ(FDb->RowCount(FTable), 1);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")),
              QVariantList{QStringLiteral("pending")});
    EXPECT_EQ(Blobs(), QVariantList{QByteArray("bytes")});
}

TEST_P(BinUtilsTest, AWriteWhileAnEditIsPendingPostsThatEditFirst) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant());
    Reopen();
    FData->Edit();
    FData->SetFieldValue(QStringLiteral("Note"), QStringLiteral("edited"));
    TMemoryStream src(FromText("xy"));
    EXPECT_EQ(WriteBlobFromStream(FBlob, &src), 2);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Note")), QVariantList{QStringLiteral("edited")});
    EXPECT_EQ(Blobs(), QVariantList{QByteArray("xy")});
}

// --- ReadBlobToStream / WriteBlobFromStream

TEST_P(BinUtilsTest, ReadBlobToStreamReplacesTheStreamAndEndsAfterTheData) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("abc"));
    Reopen();
    TMemoryStream stream(FromText("0123456789"));
    stream.SetPosition(7);
    EXPECT_EQ(ReadBlobToStream(FBlob, &stream), 3);
    EXPECT_EQ(stream.Bytes(), FromText("abc"));
    EXPECT_EQ(stream.Position(), 3);
}

TEST_P(BinUtilsTest, ReadBlobToStreamOfAnEmptyOrNullBlobLeavesTheStreamAsItWas) {
    Insert(QStringLiteral("empty"), QStringLiteral("k"), QByteArray(""));
    Insert(QStringLiteral("null"), QStringLiteral("k"), QVariant());
    Reopen();
    for (const char* section : {"empty", "null"}) {
        ASSERT_TRUE(FData->Locate(QStringLiteral("Section"), {QString::fromLatin1(section)}));
        TMemoryStream stream(FromText("keep"));
        stream.SetPosition(2);
        EXPECT_EQ(ReadBlobToStream(FBlob, &stream), 0) << section;
        EXPECT_EQ(stream.Bytes(), FromText("keep")) << section;
        EXPECT_EQ(stream.Position(), 2) << section;
    }
}

TEST_P(BinUtilsTest, WriteBlobFromStreamStoresTheWholeStreamFromItsStart) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("a much longer old value"));
    Reopen();
    TMemoryStream src(FromText("new"));
    src.SetPosition(0);
    EXPECT_EQ(WriteBlobFromStream(FBlob, &src), 3);
    EXPECT_EQ(FData->State(), dsBrowse);
    EXPECT_EQ(Blobs(), QVariantList{QByteArray("new")});
}

TEST_P(BinUtilsTest, WriteBlobFromAnEmptyStreamStoresAnEmptyNonNullBlob) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("old"));
    Reopen();
    TMemoryStream src;
    EXPECT_EQ(WriteBlobFromStream(FBlob, &src), 0);
    EXPECT_EQ(Blobs(), QVariantList{QByteArray()});
    EXPECT_FALSE(BlobIsNull(1));
}

TEST_P(BinUtilsTest, WriteBlobFromAStreamNotAtItsStartRaisesAndKeepsTheOldBlob) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QByteArray("old"));
    Reopen();
    TMemoryStream src(FromText("new bytes"));
    src.SetPosition(4); // the size is 9, but only 5 bytes remain
    EXPECT_THROW(WriteBlobFromStream(FBlob, &src), EReadError);
    EXPECT_EQ(FData->State(), dsBrowse);
    EXPECT_EQ(FBlob->Value().toByteArray(), QByteArray("old"));
    EXPECT_EQ(Blobs(), QVariantList{QByteArray("old")});
}

// --- LocateOrAppendRecord and the keyed variants

TEST_P(BinUtilsTest, ReadDataToStreamForMissingKeysAppendsExactlyOneRecordAndLeavesTheStream) {
    TMemoryStream stream(FromText("keep"));
    stream.SetPosition(2);
    const QString values = QStringLiteral("frmMain.frmConfig.Chart1|DiagramChart");
    ReadDataToStream(FBlob, &stream, kKeyFields, values);
    EXPECT_EQ(FDb->RowCount(FTable), 1);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")),
              QVariantList{QStringLiteral("frmMain.frmConfig.Chart1")});
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Key")),
              QVariantList{QStringLiteral("DiagramChart")});
    EXPECT_TRUE(BlobIsNull(1));
    EXPECT_EQ(stream.Bytes(), FromText("keep"));
    EXPECT_EQ(stream.Position(), 2);
    // Reading again finds that record instead of appending another.
    ReadDataToStream(FBlob, &stream, kKeyFields, values);
    EXPECT_EQ(FDb->RowCount(FTable), 1);
    EXPECT_EQ(FData->State(), dsBrowse);
}

TEST_P(BinUtilsTest, LocateOrAppendRecordHandsBackTheValuesAsStringsAndStandsOnTheRecord) {
    Insert(QStringLiteral("other"), QStringLiteral("k"), QVariant());
    Insert(QStringLiteral("a"), QStringLiteral("b"), QVariant());
    QVariantList located{42};
    LocateOrAppendRecord(FData.get(), kKeyFields, QStringLiteral("a|b"), located);
    EXPECT_EQ(located, (QVariantList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(located[0].metaType().id(), QMetaType::QString);
    EXPECT_EQ(FDb->RowCount(FTable), 2);
    EXPECT_EQ(FData->FieldValue(QStringLiteral("id")).toInt(), 2);

    LocateOrAppendRecord(FData.get(), kKeyFields, QStringLiteral("c|d"), located);
    EXPECT_EQ(FDb->RowCount(FTable), 3);
    EXPECT_EQ(FData->FieldValue(QStringLiteral("id")).toInt(), 3);
    EXPECT_EQ(FData->FieldValue(QStringLiteral("Section")).toString(), QStringLiteral("c"));
    EXPECT_EQ(FData->State(), dsBrowse);
}

TEST_P(BinUtilsTest, AKeyValueHoldingASemicolonIsFine) {
    const QString values = QStringLiteral("frmMain.tab;1.Chart|DiagramChart");
    WriteDataFromStream(FBlob, std::make_unique<TMemoryStream>(FromText("data")).get(), kKeyFields,
                        values);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")),
              QVariantList{QStringLiteral("frmMain.tab;1.Chart")});
    TMemoryStream back;
    ReadDataToStream(FBlob, &back, kKeyFields, values);
    EXPECT_EQ(back.Bytes(), FromText("data"));
    EXPECT_EQ(FDb->RowCount(FTable), 1);
}

TEST_P(BinUtilsTest, AKeyValueHoldingAPipeSplitsIntoTwoValues) {
    // "frmMain.a|b.Chart" is two values: the section is cut at the pipe and the key is the rest;
    // the third value has no key field and is not used.
    TMemoryStream src(FromText("data"));
    WriteDataFromStream(FBlob, &src, kKeyFields, QStringLiteral("frmMain.a|b.Chart|DiagramChart"));
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Section")),
              QVariantList{QStringLiteral("frmMain.a")});
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Key")), QVariantList{QStringLiteral("b.Chart")});
    TMemoryStream back;
    ReadDataToStream(FBlob, &back, kKeyFields, QStringLiteral("frmMain.a|b.Chart"));
    EXPECT_EQ(back.Bytes(), FromText("data"));
    EXPECT_EQ(FDb->RowCount(FTable), 1);
}

TEST_P(BinUtilsTest, FewerKeyValuesThanKeyFieldsRaiseAndAppendNothing) {
    TMemoryStream stream;
    EXPECT_THROW(ReadDataToStream(FBlob, &stream, kKeyFields, QStringLiteral("only one")),
                 EDatabaseError);
    EXPECT_EQ(FDb->RowCount(FTable), 0);
}

TEST_P(BinUtilsTest, AnUnknownKeyFieldRaises) {
    TMemoryStream stream;
    EXPECT_THROW(
        ReadDataToStream(FBlob, &stream, QStringLiteral("Section;Nope"), QStringLiteral("a|b")),
        EDatabaseError);
    EXPECT_EQ(FDb->RowCount(FTable), 0);
}

TEST_P(BinUtilsTest, KeyedVariantsWithNoFieldDoNothing) {
    TBytes data{1};
    TMemoryStream stream(FromText("s"));
    const QString values = QStringLiteral("a|b");
    EXPECT_EQ(ReadDataToArray(nullptr, data, kKeyFields, values, true), -1);
    EXPECT_EQ(WriteDataFromArray(nullptr, data, kKeyFields, values, true), -1);
    ReadDataToStream(nullptr, &stream, kKeyFields, values);
    WriteDataFromStream(nullptr, &stream, kKeyFields, values);
    EXPECT_EQ(FDb->RowCount(FTable), 0);
    EXPECT_EQ(data, TBytes{1});
    EXPECT_EQ(stream.Bytes(), FromText("s"));
}

TEST_P(BinUtilsTest, WriteDataFromStreamReplacesOnlyTheLocatedRecordsBlob) {
    Insert(QStringLiteral("frmMain.t.A"), QStringLiteral("DiagramChart"), QByteArray("A old"));
    Insert(QStringLiteral("frmMain.t.B"), QStringLiteral("DiagramChart"), QByteArray("B old"));
    TMemoryStream src(FromText("B new"));
    WriteDataFromStream(FBlob, &src, kKeyFields, QStringLiteral("frmMain.t.B|DiagramChart"));
    EXPECT_EQ(Blobs(), (QVariantList{QByteArray("A old"), QByteArray("B new")}));
    EXPECT_EQ(FData->FieldValue(QStringLiteral("Section")).toString(),
              QStringLiteral("frmMain.t.B"));
    EXPECT_EQ(FData->State(), dsBrowse);
}

TEST_P(BinUtilsTest, WriteDataFromStreamForMissingKeysAppendsTheRecordWithTheBytes) {
    Insert(QStringLiteral("frmMain.t.A"), QStringLiteral("DiagramChart"), QByteArray("A"));
    TMemoryStream src(FromText("fresh"));
    WriteDataFromStream(FBlob, &src, kKeyFields, QStringLiteral("frmMain.t.C|DiagramChart"));
    EXPECT_EQ(FDb->RowCount(FTable), 2);
    EXPECT_EQ(Blobs(), (QVariantList{QByteArray("A"), QByteArray("fresh")}));
}

TEST_P(BinUtilsTest, ArraysAsBlobRoundTripThroughTheKeyedVariants) {
    const TBytes bytes{0, 1, 2, 3, 0xFE, 0xFF};
    EXPECT_EQ(WriteDataFromArray(FBlob, bytes, kKeyFields, QStringLiteral("s|k"), true), 6);
    TBytes back;
    EXPECT_EQ(ReadDataToArray(FBlob, back, kKeyFields, QStringLiteral("s|k"), true), 6);
    EXPECT_EQ(back, bytes);
    EXPECT_EQ(FDb->RowCount(FTable), 1);
}

TEST_P(BinUtilsTest, ReadDataToArrayOfAFixedSizeFieldGivesItsNativeBytes) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant(), 0x01020304);
    TBytes data{9};
    EXPECT_EQ(ReadDataToArray(FData->FindField(QStringLiteral("Size")), data, kKeyFields,
                              QStringLiteral("s|k"), false),
              4);
    EXPECT_EQ(data, (TBytes{4, 3, 2, 1}));
}

TEST_P(BinUtilsTest, WriteDataFromArrayOfAFixedSizeFieldStoresItAndGivesTheArrayLength) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant(), 5);
    // The length is not compared with the field's size: the first four bytes are the value.
    const TBytes data{0x2A, 0, 0, 0, 0x77, 0x77};
    EXPECT_EQ(WriteDataFromArray(FData->FindField(QStringLiteral("Size")), data, kKeyFields,
                                 QStringLiteral("s|k"), false),
              6);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Size")).at(0).toInt(), 42);
    EXPECT_EQ(FData->State(), dsBrowse);
}

TEST_P(BinUtilsTest, WriteDataFromAnArrayTooShortForTheFieldRaisesAndKeepsTheOldValue) {
    Insert(QStringLiteral("s"), QStringLiteral("k"), QVariant(), 5);
    EXPECT_THROW(WriteDataFromArray(FData->FindField(QStringLiteral("Size")), TBytes{1, 2},
                                    kKeyFields, QStringLiteral("s|k"), false),
                 EDatabaseError);
    EXPECT_EQ(FDb->Column(FTable, QStringLiteral("Size")).at(0).toInt(), 5);
    EXPECT_EQ(FData->State(), dsBrowse);
}

TEST_P(BinUtilsTest, HostileKeyValuesRoundTripThroughTheCodec) {
    const QStringList values = vde::test::HostileValues();
    for (qsizetype i = 0; i < values.size(); ++i) {
        TMemoryStream src(TBytes{uint8_t(i), 0xAB});
        WriteDataFromStream(FBlob, &src, kKeyFields,
                            QStringLiteral("frmMain.%1.Chart|DiagramChart").arg(values[i]));
    }
    EXPECT_EQ(FDb->RowCount(FTable), values.size());
    const QVariantList sections = FDb->Column(FTable, QStringLiteral("Section"));
    for (qsizetype i = 0; i < values.size(); ++i) {
        EXPECT_EQ(sections[i].toString(), QStringLiteral("frmMain.%1.Chart").arg(values[i]));
        TMemoryStream back;
        ReadDataToStream(FBlob, &back, kKeyFields,
                         QStringLiteral("frmMain.%1.Chart|DiagramChart").arg(values[i]));
        EXPECT_EQ(back.Bytes(), (TBytes{uint8_t(i), 0xAB})) << "value " << i;
    }
    EXPECT_EQ(FDb->RowCount(FTable), values.size());
}

TEST_P(BinUtilsTest, ALargeBlobRoundTripsUnchanged) {
    TBytes big(3 * 1024 * 1024 + 17);
    QRandomGenerator rng(7);
    for (auto& b : big)
        b = uint8_t(rng.bounded(256));
    TMemoryStream src(big);
    WriteDataFromStream(FBlob, &src, kKeyFields, QStringLiteral("big|DiagramChart"));
    Reopen();
    TMemoryStream back;
    ReadDataToStream(FBlob, &back, kKeyFields, QStringLiteral("big|DiagramChart"));
    EXPECT_TRUE(back.Bytes() == big);
}

TEST_P(BinUtilsTest, TwoConnectionsSavingDifferentDiagramsLoseNothing) {
    TDataSet other(FDb->AddConnection(), FTable);
    other.Open();
    TField* otherBlob = other.FindField(QStringLiteral("BinData"));
    for (uint8_t round = 0; round < 8; ++round) {
        TMemoryStream a(TBytes(50, round)), b(TBytes(70, uint8_t(100 + round)));
        WriteDataFromStream(FBlob, &a, kKeyFields, QStringLiteral("frmMain.t.A|DiagramChart"));
        WriteDataFromStream(otherBlob, &b, kKeyFields, QStringLiteral("frmMain.t.B|DiagramChart"));
    }
    EXPECT_EQ(FDb->RowCount(FTable), 2);
    TMemoryStream a, b;
    ReadDataToStream(otherBlob, &a, kKeyFields, QStringLiteral("frmMain.t.A|DiagramChart"));
    ReadDataToStream(FBlob, &b, kKeyFields, QStringLiteral("frmMain.t.B|DiagramChart"));
    EXPECT_EQ(a.Bytes(), TBytes(50, 7));
    EXPECT_EQ(b.Bytes(), TBytes(70, 107));
}

TEST_P(BinUtilsTest, AWriteTheDatabaseRefusesLeavesTheOldBlob) {
    const QString t = FDb->NewTableName(QStringLiteral("Checked"));
    FDb->CreateConfigTable(
        t, QStringLiteral("\"BinData\" %1 CHECK (length(\"BinData\") <= 64)").arg(FDb->BlobType()));
    TDataSet ds(FDb->ConnectionName(), t);
    ds.Open();
    TField* blob = ds.FindField(QStringLiteral("BinData"));
    TMemoryStream small(TBytes(10, 1)), big(TBytes(100, 2));
    WriteDataFromStream(blob, &small, kKeyFields, QStringLiteral("s|k"));
    EXPECT_THROW(WriteDataFromStream(blob, &big, kKeyFields, QStringLiteral("s|k")),
                 EDatabaseError);
    EXPECT_EQ(ds.State(), dsBrowse);
    EXPECT_EQ(FDb->Column(t, QStringLiteral("BinData")), QVariantList{QByteArray(10, '\1')});
    TMemoryStream next(TBytes(20, 3));
    WriteDataFromStream(blob, &next, kKeyFields, QStringLiteral("s|k"));
    EXPECT_EQ(FDb->Column(t, QStringLiteral("BinData")), QVariantList{QByteArray(20, '\3')});
}

INSTANTIATE_TEST_SUITE_P(Databases, BinUtilsTest,
                         ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL),
                         vde::test::DbKindName());

TEST(BinUtilsServerOutage, ASaveWhileTheServerIsDownRaisesAndTheSameSaveWorksLater) {
    VDE_SKIP_WITHOUT_PG(DbKind::PostgreSQL);
    vde::test::PrivatePgServer server;
    ASSERT_TRUE(server.Error().isEmpty()) << server.Error().toStdString();
    TestDatabase db(DbKind::PostgreSQL, server.Url());
    ASSERT_TRUE(db.Error().isEmpty()) << db.Error().toStdString();
    const QString t = db.NewTableName(QStringLiteral("Config"));
    db.CreateConfigTable(t, QStringLiteral("\"BinData\" BYTEA"));
    TDataSet ds(db.ConnectionName(), t);
    ds.Open();
    TField* blob = ds.FindField(QStringLiteral("BinData"));
    const QString keys = QStringLiteral("frmMain.frmConfig.Chart1|DiagramChart");
    TMemoryStream first(FromText("loaded"));
    WriteDataFromStream(blob, &first, kKeyFields, keys);
    TMemoryStream loaded;
    ReadDataToStream(blob, &loaded, kKeyFields, keys);
    ASSERT_EQ(loaded.Bytes(), FromText("loaded"));

    ASSERT_TRUE(server.Halt()) << server.Error().toStdString();
    TMemoryStream save(FromText("saved later"));
    EXPECT_THROW(WriteDataFromStream(blob, &save, kKeyFields, keys), EDatabaseError);
    EXPECT_EQ(save.Bytes(), FromText("saved later")); // the caller's bytes are kept
    ASSERT_TRUE(server.Resume()) << server.Error().toStdString();
    save.SetPosition(0);
    WriteDataFromStream(blob, &save, kKeyFields, keys);
    EXPECT_EQ(db.Column(t, QStringLiteral("BinData")), QVariantList{QByteArray("saved later")});
    EXPECT_EQ(db.RowCount(t), 1);
}

} // namespace
