// Fingerprints of stored bytes, the file write that replaces a file only while it still holds
// what was seen, and the dataset's blob write of the same kind.

#include "common/db_test_util.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/stored_bytes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/file.h>

using namespace vde;
using vde::test::DbKind;
using vde::test::TestDatabase;

namespace {

QString QtSha(const QByteArray& b) {
    return QString::fromLatin1(QCryptographicHash::hash(b, QCryptographicHash::Sha256).toHex());
}

QByteArray Read(const QString& name) {
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void Write(const QString& name, const QByteArray& b) {
    QFile f(name);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(b);
}

} // namespace

TEST(Fingerprint, IsTheSha256OfTheBytesInLowerCaseHex) {
    // The FIPS 180-2 example "abc".
    EXPECT_EQ(ContentFingerprint(QByteArray("abc")),
              QStringLiteral("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    QByteArray large(3'000'000, '\0');
    for (qsizetype i = 0; i < large.size(); ++i)
        large[i] = char((i * 7919) >> 3);
    EXPECT_EQ(ContentFingerprint(large), QtSha(large));
}

TEST(Fingerprint, NoBytesAreNothingStored) {
    EXPECT_EQ(ContentFingerprint(QByteArray()), QString());
    EXPECT_EQ(ShortFingerprint(QString()), QStringLiteral("nothing stored"));
    EXPECT_EQ(ShortFingerprint(QStringLiteral("0123456789abcdef")), QStringLiteral("0123456789ab"));
}

TEST(Fingerprint, OfAFileIsThatOfItsBytesAndEmptyForAMissingOrEmptyFile) {
    QTemporaryDir dir;
    const QString f = dir.filePath(QStringLiteral("a.dgm"));
    EXPECT_EQ(FileFingerprint(f), QString());
    Write(f, QByteArray());
    EXPECT_EQ(FileFingerprint(f), QString());
    Write(f, QByteArray("diagram"));
    EXPECT_EQ(FileFingerprint(f), QtSha("diagram"));
}

TEST(WriteFileIfUnchanged, WritesWhenTheFileHoldsWhatWasExpected) {
    QTemporaryDir dir;
    const QString f = dir.filePath(QStringLiteral("a.dgm"));
    // Nothing there, nothing expected.
    TConditionalWrite w = WriteFileIfUnchanged(f, "one", QString());
    EXPECT_TRUE(w.Written);
    EXPECT_EQ(w.Found, QString());
    EXPECT_EQ(Read(f), QByteArray("one"));
    w = WriteFileIfUnchanged(f, "two", QtSha("one"));
    EXPECT_TRUE(w.Written);
    EXPECT_EQ(w.Found, QtSha("one"));
    EXPECT_EQ(Read(f), QByteArray("two"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("a.dgm")});
}

TEST(WriteFileIfUnchanged, WritesNothingAndLeavesNoTemporaryFileWhenTheFileChanged) {
    QTemporaryDir dir;
    const QString f = dir.filePath(QStringLiteral("a.dgm"));
    Write(f, "theirs");
    TConditionalWrite w = WriteFileIfUnchanged(f, "mine", QtSha("what I loaded"));
    EXPECT_FALSE(w.Written);
    EXPECT_EQ(w.Found, QtSha("theirs"));
    EXPECT_EQ(Read(f), QByteArray("theirs"));
    // A file that is gone while something was expected.
    ASSERT_TRUE(QFile::remove(f));
    w = WriteFileIfUnchanged(f, "mine", QtSha("theirs"));
    EXPECT_FALSE(w.Written);
    EXPECT_EQ(w.Found, QString());
    EXPECT_FALSE(QFile::exists(f));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST(WriteFileIfUnchanged, AFolderThatCannotBeWrittenRaises) {
    QTemporaryDir dir;
    EXPECT_THROW(
        WriteFileIfUnchanged(dir.filePath(QStringLiteral("missing/a.dgm")), "x", QString()),
        EFCreateError);
}

TEST(ReplaceFileBytes, ReplacesTheBytesKeepsThePermissionsAndLeavesNothingBeside) {
    QTemporaryDir dir;
    const QString f = dir.filePath(QStringLiteral("a.dgm"));
    ReplaceFileBytes(f, "first");
    EXPECT_EQ(Read(f), QByteArray("first"));
    ASSERT_TRUE(QFile::setPermissions(f, QFile::ReadOwner | QFile::WriteOwner));
    ReplaceFileBytes(f, "second");
    EXPECT_EQ(Read(f), QByteArray("second"));
    EXPECT_EQ(QFile::permissions(f) & 0x7077,
              QFileDevice::Permissions(QFile::ReadOwner | QFile::WriteOwner) & 0x7077);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("a.dgm")});
    EXPECT_THROW(ReplaceFileBytes(dir.filePath(QStringLiteral("missing/a.dgm")), "x"),
                 EFCreateError);
}

TEST(RemoveStaleSaves, RemovesWhatADeadWriterLeftAndNothingElse) {
    QTemporaryDir dir;
    const QString f = dir.filePath(QStringLiteral("a.dgm"));
    Write(f, "stored");
    Write(dir.filePath(QStringLiteral("a.dgm.vde-save-Dead01")), "new");
    Write(dir.filePath(QStringLiteral("a.dgm.backup")), "mine");
    Write(dir.filePath(QStringLiteral("b.dgm.vde-save-Other1")), "other file's");
    // A writer at work holds a lock on its file.
    const QString live = dir.filePath(QStringLiteral("a.dgm.vde-save-Live01"));
    Write(live, "being written");
    QFile held(live);
    ASSERT_TRUE(held.open(QIODevice::ReadOnly));
    ASSERT_EQ(::flock(held.handle(), LOCK_EX), 0);
    EXPECT_EQ(RemoveStaleSaves(f), 1);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
              (QStringList{QStringLiteral("a.dgm"), QStringLiteral("a.dgm.backup"),
                           QStringLiteral("a.dgm.vde-save-Live01"),
                           QStringLiteral("b.dgm.vde-save-Other1")}));
    held.close();
    // Every replace of the file removes them first.
    ReplaceFileBytes(f, "next");
    EXPECT_FALSE(QFile::exists(live));
    EXPECT_TRUE(QFile::exists(dir.filePath(QStringLiteral("b.dgm.vde-save-Other1"))));
}

// ---- the dataset ------------------------------------------------------------------------------

namespace {

class BlobIfUnchanged : public ::testing::TestWithParam<DbKind> {
protected:
    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam());
        FDb = std::make_unique<TestDatabase>(GetParam());
        if (!FDb->Error().isEmpty())
            FAIL() << FDb->Error().toStdString();
        FTable = FDb->NewTableName(QStringLiteral("Config"));
        FDb->CreateConfigTable(FTable, QStringLiteral("\"BinData\" %1").arg(FDb->BlobType()));
        FData = std::make_unique<TDataSet>(FDb->ConnectionName(), FTable);
        FData->Open();
    }
    void Insert(const QString& section, const QVariant& blob) {
        QSqlQuery q(FDb->Db());
        q.prepare(QStringLiteral("INSERT INTO %1 (\"Section\", \"Key\", \"BinData\") "
                                 "VALUES (?, 'K', ?)")
                      .arg(FDb->Quote(FTable)));
        q.addBindValue(section);
        q.addBindValue(blob);
        ASSERT_TRUE(q.exec()) << q.lastError().text().toStdString();
    }
    TConditionalWrite Write(const QString& section, const QByteArray& bytes,
                            const QString& expected) {
        return FData->WriteBlobIfUnchanged(
            QStringLiteral("Section;Key"), {QVariant(section), QVariant(QStringLiteral("K"))},
            FData->FindField(QStringLiteral("BinData")), bytes, expected);
    }
    QByteArray Blob(const QString& section) {
        QSqlQuery q(FDb->Db());
        q.prepare(QStringLiteral("SELECT \"BinData\" FROM %1 WHERE \"Section\" = ?")
                      .arg(FDb->Quote(FTable)));
        q.addBindValue(section);
        EXPECT_TRUE(q.exec());
        return q.next() ? q.value(0).toByteArray() : QByteArray();
    }
    std::unique_ptr<TestDatabase> FDb;
    QString FTable;
    std::unique_ptr<TDataSet> FData;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Db, BlobIfUnchanged, ::testing::Values(DbKind::SQLite, DbKind::PostgreSQL),
                         vde::test::DbKindName());

TEST_P(BlobIfUnchanged, AppendsTheRecordWhenThereIsNoneAndNothingWasExpected) {
    const TConditionalWrite w = Write(QStringLiteral("s"), "new", QString());
    EXPECT_TRUE(w.Written);
    EXPECT_EQ(w.Found, QString());
    EXPECT_EQ(Blob(QStringLiteral("s")), QByteArray("new"));
    EXPECT_EQ(FDb->RowCount(FTable), 1);
    // The record written is the current one.
    EXPECT_EQ(FData->FieldValue(QStringLiteral("Section")).toString(), QStringLiteral("s"));
    EXPECT_EQ(FData->FieldValue(QStringLiteral("BinData")).toByteArray(), QByteArray("new"));
}

TEST_P(BlobIfUnchanged, AMissingRecordWhileSomethingWasExpectedIsNotAppended) {
    const TConditionalWrite w = Write(QStringLiteral("s"), "new", QtSha("old"));
    EXPECT_FALSE(w.Written);
    EXPECT_EQ(w.Found, QString());
    EXPECT_EQ(FDb->RowCount(FTable), 0);
}

TEST_P(BlobIfUnchanged, TheServersFingerprintIsTheOneWorkedOutHere) {
    QByteArray bytes(200'000, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i * 131);
    Insert(QStringLiteral("s"), bytes);
    TConditionalWrite w = Write(QStringLiteral("s"), "other", QtSha("not it"));
    EXPECT_FALSE(w.Written);
    EXPECT_EQ(w.Found, QtSha(bytes));
    EXPECT_EQ(Blob(QStringLiteral("s")), bytes);
    w = Write(QStringLiteral("s"), "other", QtSha(bytes));
    EXPECT_TRUE(w.Written);
    EXPECT_EQ(Blob(QStringLiteral("s")), QByteArray("other"));
    EXPECT_EQ(FDb->RowCount(FTable), 1);
}

TEST_P(BlobIfUnchanged, ANullOrEmptyBlobIsNothingStored) {
    Insert(QStringLiteral("null"), QVariant(QMetaType::fromType<QByteArray>()));
    Insert(QStringLiteral("empty"), QVariant(QByteArray("")));
    EXPECT_TRUE(Write(QStringLiteral("null"), "a", QString()).Written);
    EXPECT_TRUE(Write(QStringLiteral("empty"), "b", QString()).Written);
    EXPECT_EQ(Blob(QStringLiteral("null")), QByteArray("a"));
    EXPECT_EQ(Blob(QStringLiteral("empty")), QByteArray("b"));
    EXPECT_EQ(FDb->RowCount(FTable), 2);
}

TEST_P(BlobIfUnchanged, KeysAreComparedExactlyAsText) {
    Insert(QStringLiteral("Chart"), QByteArray("upper"));
    // "chart" is another record, whatever the collation says.
    EXPECT_TRUE(Write(QStringLiteral("chart"), "lower", QString()).Written);
    EXPECT_EQ(Blob(QStringLiteral("Chart")), QByteArray("upper"));
    EXPECT_EQ(Blob(QStringLiteral("chart")), QByteArray("lower"));
}

TEST_P(BlobIfUnchanged, AWriteTheServerRefusesLeavesTheOldBytesAndTheConnectionUsable) {
    // A table that takes no blob of 100 bytes or more.
    FTable = FDb->NewTableName(QStringLiteral("Small"));
    const QString length =
        GetParam() == DbKind::SQLite ? QStringLiteral("length") : QStringLiteral("octet_length");
    FDb->CreateConfigTable(FTable, QStringLiteral("\"BinData\" %1 CHECK (%2(\"BinData\") < 100)")
                                       .arg(FDb->BlobType(), length));
    FData = std::make_unique<TDataSet>(FDb->ConnectionName(), FTable);
    FData->Open();
    Insert(QStringLiteral("s"), QByteArray("old"));
    EXPECT_THROW(Write(QStringLiteral("s"), QByteArray(200, 'x'), QtSha("old")), EDatabaseError);
    EXPECT_EQ(Blob(QStringLiteral("s")), QByteArray("old"));
    // No transaction was left open: the next write goes through and is seen by others.
    EXPECT_TRUE(Write(QStringLiteral("s"), "new", QtSha("old")).Written);
    EXPECT_EQ(Blob(QStringLiteral("s")), QByteArray("new"));
}

TEST_P(BlobIfUnchanged, ANulInAKeyIsRefusedByPostgreSQLAndKeptBySQLite) {
    const QString withNul = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    if (GetParam() == DbKind::PostgreSQL) {
        try {
            Write(withNul, "x", QString());
            FAIL() << "written";
        } catch (const EDatabaseError& e) {
            EXPECT_TRUE(e.Message().contains(QStringLiteral("NUL character")))
                << e.Message().toStdString();
        }
        EXPECT_THROW(FData->Locate(QStringLiteral("Section;Key"),
                                   {QVariant(withNul), QVariant(QStringLiteral("K"))}),
                     EDatabaseError);
        EXPECT_EQ(FDb->RowCount(FTable), 0);
        return;
    }
    EXPECT_TRUE(Write(withNul, "x", QString()).Written);
    EXPECT_TRUE(FData->Locate(QStringLiteral("Section;Key"),
                              {QVariant(withNul), QVariant(QStringLiteral("K"))}));
    EXPECT_EQ(FData->FieldValue(QStringLiteral("Section")).toString(), withNul);
}
