#include "velDiagEdit/platform/dataset.h"

#include "velDiagEdit/platform/errors.h"

#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlIndex>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringDecoder>
#include <QStringList>
#include <QUrl>
#include <QUrlQuery>
#include <QtEndian>
#include <cstring>
#include <exception>
#include <libpq-fe.h>
#include <limits>

Q_LOGGING_CATEGORY(lcSql, "veldiagedit.sql", QtWarningMsg)

namespace vde {

namespace {

bool IsBinaryType(QMetaType type) {
    return type.id() == QMetaType::QByteArray;
}

bool IsTextType(QMetaType type) {
    return type.id() == QMetaType::QString;
}

QByteArray VariableBytes(const QVariant& v) {
    if (v.metaType().id() == QMetaType::QByteArray)
        return v.toByteArray();
    return v.toString().toUtf8();
}

int32_t CheckedSize(qsizetype n, const QString& field) {
    if (n > std::numeric_limits<int32_t>::max())
        throw EDatabaseError(
            QStringLiteral("Field \"%1\" holds %2 bytes, more than a 32-bit size can count")
                .arg(field)
                .arg(n));
    return static_cast<int32_t>(n);
}

QString DriverReason(const QSqlError& e) {
    QString s = e.text().trimmed();
    return s.isEmpty() ? QStringLiteral("unknown database error") : s;
}

// The libpq connection under a Qt PostgreSQL connection, or none.
PGconn* PgConnection(const QSqlDatabase& db) {
    if (db.driver()->dbmsType() != QSqlDriver::PostgreSQL)
        return nullptr;
    const QVariant h = db.driver()->handle();
    // Qt registers the handle under the name of the struct behind libpq's typedef.
    if (!h.isValid() ||
        (qstrcmp(h.typeName(), "PGconn*") != 0 && qstrcmp(h.typeName(), "pg_conn*") != 0))
        return nullptr;
    return *static_cast<PGconn* const*>(h.constData());
}

// The statement's "?" marks as libpq's $1, $2, ...; marks inside quoted names or strings stay.
QByteArray NumberedMarks(const QString& sql) {
    QString out;
    out.reserve(sql.size() + 16);
    QChar quote;
    int n = 0;
    for (const QChar c : sql) {
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
            out += c;
        } else if (c == u'"' || c == u'\'') {
            quote = c;
            out += c;
        } else if (c == u'?') {
            out += QLatin1Char('$') + QString::number(++n);
        } else {
            out += c;
        }
    }
    return out.toUtf8();
}

// Values libpq takes as they are: blobs in binary form, text and numbers as text.
bool PlainValue(const QVariant& v) {
    switch (v.metaType().id()) {
    case QMetaType::UnknownType:
    case QMetaType::QByteArray:
    case QMetaType::QString:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

struct TPgResultFree {
    void operator()(PGresult* r) const { PQclear(r); }
};
using TPgResult = std::unique_ptr<PGresult, TPgResultFree>;

// Runs a statement through libpq; null with the reason in `error` when it failed. A connection
// that broke is closed, so that the next call opens it again as after any other failure.
TPgResult PgExec(QSqlDatabase& db, PGconn* conn, const QString& sql,
                 const std::vector<QVariant>& values, bool binaryResult, QString& error) {
    std::vector<QByteArray> storage(values.size());
    std::vector<const char*> data(values.size(), nullptr);
    std::vector<int> lengths(values.size(), 0), formats(values.size(), 0);
    for (size_t i = 0; i < values.size(); ++i) {
        const QVariant& v = values[i];
        if (v.isNull())
            continue;
        if (v.metaType().id() == QMetaType::QByteArray) {
            storage[i] = v.toByteArray();
            formats[i] = 1;
        } else {
            storage[i] = v.toString().toUtf8();
        }
        data[i] = storage[i].constData();
        lengths[i] = int(storage[i].size());
    }
    const QByteArray text = NumberedMarks(sql);
    TPgResult r(PQexecParams(conn, text.constData(), int(values.size()), nullptr, data.data(),
                             lengths.data(), formats.data(), binaryResult ? 1 : 0));
    const ExecStatusType status = r ? PQresultStatus(r.get()) : PGRES_FATAL_ERROR;
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK)
        return r;
    error = QString::fromUtf8(r ? PQresultErrorMessage(r.get()) : PQerrorMessage(conn));
    if (PQstatus(conn) != CONNECTION_OK)
        db.close();
    return nullptr;
}

} // namespace

// --- TBlobStream: the bytes of one blob; in write mode they go back into the field when freed.

class TBlobStream : public TMemoryStream {
public:
    TBlobStream(TDataSet* dataSet, int index, TBlobStreamMode mode, QByteArray bytes)
        : TMemoryStream(std::vector<uint8_t>(bytes.begin(), bytes.end())), FDataSet(dataSet),
          FIndex(index), FMode(mode), FSerial(dataSet->FEditSerial),
          FExceptions(std::uncaught_exceptions()) {}

    ~TBlobStream() override {
        // A writer abandoned by an exception leaves the blob emptied, never half-written; nor does
        // it touch an edit that ended while it was open.
        if (FMode != bmWrite || std::uncaught_exceptions() > FExceptions)
            return;
        if (FDataSet->FEditSerial != FSerial ||
            (FDataSet->FState != dsEdit && FDataSet->FState != dsInsert))
            return;
        try {
            const auto& b = Bytes();
            FDataSet->Assign(
                FIndex, QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size())));
        } catch (...) {
            qCWarning(lcSql) << "blob could not be stored; it stays empty";
        }
    }

private:
    TDataSet* FDataSet;
    int FIndex;
    TBlobStreamMode FMode;
    uint64_t FSerial;
    int FExceptions;
};

// --- TField

bool TField::IsBlob() const {
    return IsBinaryType(FType);
}

bool TField::IsNull() const {
    return Value().isNull();
}

int TField::FixedSize() const {
    switch (FType.id()) {
    case QMetaType::Bool:
        return 1;
    case QMetaType::Int:
    case QMetaType::UInt:
        return 4;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return 8;
    default:
        return 0;
    }
}

int32_t TField::DataSize() const {
    if (const int n = FixedSize())
        return n;
    const QVariant v = Value();
    if (v.isNull())
        return 0;
    return CheckedSize(VariableBytes(v).size(), FFieldName);
}

bool TField::GetData(void* buffer, int64_t bufferSize) const {
    const QVariant v = Value();
    if (v.isNull())
        return false;
    const int fixed = FixedSize();
    const QByteArray var = fixed ? QByteArray() : VariableBytes(v);
    const int64_t need = fixed ? fixed : var.size();
    if (bufferSize < need)
        throw EDatabaseError(QStringLiteral("Field \"%1\" needs %2 bytes, the buffer has %3")
                                 .arg(FFieldName)
                                 .arg(need)
                                 .arg(bufferSize));
    auto* out = static_cast<uint8_t*>(buffer);
    bool ok = true;
    switch (FType.id()) {
    case QMetaType::Bool:
        out[0] = v.toBool() ? 1 : 0;
        break;
    case QMetaType::Int:
    case QMetaType::UInt: {
        const qlonglong x = v.toLongLong(&ok);
        const bool fits = FType.id() == QMetaType::Int
                              ? x >= std::numeric_limits<int32_t>::min() &&
                                    x <= std::numeric_limits<int32_t>::max()
                              : x >= 0 && x <= qlonglong(std::numeric_limits<uint32_t>::max());
        if (!ok || !fits)
            throw EDatabaseError(
                QStringLiteral("Field \"%1\" holds %2, which does not fit in 4 bytes")
                    .arg(FFieldName, v.toString()));
        qToLittleEndian<uint32_t>(static_cast<uint32_t>(x), out);
        break;
    }
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        qToLittleEndian<uint64_t>(static_cast<uint64_t>(v.toLongLong(&ok)), out);
        break;
    case QMetaType::Double: {
        const double d = v.toDouble(&ok);
        uint64_t bits;
        std::memcpy(&bits, &d, 8);
        qToLittleEndian<uint64_t>(bits, out);
        break;
    }
    default:
        if (!var.isEmpty())
            std::memcpy(out, var.constData(), size_t(var.size()));
        break;
    }
    if (!ok)
        throw EDatabaseError(QStringLiteral("Field \"%1\" holds \"%2\", which is not a number")
                                 .arg(FFieldName, v.toString()));
    return true;
}

void TField::SetData(const void* buffer, int64_t size) {
    if (!buffer) {
        SetValue(QVariant());
        return;
    }
    const auto* in = static_cast<const uint8_t*>(buffer);
    if (const int fixed = FixedSize(); fixed && size < fixed)
        throw EDatabaseError(QStringLiteral("Field \"%1\" takes %2 bytes, %3 were given")
                                 .arg(FFieldName)
                                 .arg(fixed)
                                 .arg(size));
    if (size < 0)
        throw EDatabaseError(QStringLiteral("Negative size for field \"%1\"").arg(FFieldName));
    switch (FType.id()) {
    case QMetaType::Bool:
        SetValue(QVariant(in[0] != 0));
        return;
    case QMetaType::Int:
        SetValue(QVariant(static_cast<int32_t>(qFromLittleEndian<uint32_t>(in))));
        return;
    case QMetaType::UInt:
        SetValue(QVariant(qFromLittleEndian<uint32_t>(in)));
        return;
    case QMetaType::LongLong:
        SetValue(QVariant(qlonglong(qFromLittleEndian<uint64_t>(in))));
        return;
    case QMetaType::ULongLong:
        SetValue(QVariant(qulonglong(qFromLittleEndian<uint64_t>(in))));
        return;
    case QMetaType::Double: {
        const uint64_t bits = qFromLittleEndian<uint64_t>(in);
        double d;
        std::memcpy(&d, &bits, 8);
        SetValue(QVariant(d));
        return;
    }
    default:
        break;
    }
    const QByteArray bytes(reinterpret_cast<const char*>(in), qsizetype(size));
    if (IsBlob()) {
        SetValue(QVariant(bytes));
        return;
    }
    auto decode = QStringDecoder(QStringDecoder::Utf8);
    const QString text = decode(bytes);
    if (decode.hasError())
        throw EDatabaseError(
            QStringLiteral("The bytes for field \"%1\" are not valid UTF-8 text").arg(FFieldName));
    SetValue(QVariant(text));
}

QVariant TField::Value() const {
    const TDataSet& ds = *FDataSet;
    if (ds.FState == dsEdit || ds.FState == dsInsert)
        return ds.BufferValue(FIndex);
    return ds.CurrentValue(FIndex);
}

void TField::SetValue(const QVariant& value) {
    FDataSet->CheckEditing("assign a field value");
    FDataSet->Assign(FIndex, value);
}

// --- TDataSet

TDataSet::TDataSet(QString connectionName, QString tableName)
    : FConnectionName(std::move(connectionName)), FTableName(std::move(tableName)) {}

TDataSet::~TDataSet() {
    Close();
}

void TDataSet::Fail(const QString& what, const QString& reason) const {
    throw EDatabaseError(
        QStringLiteral("Table \"%1\": %2: %3").arg(FTableName, what, reason.trimmed()));
}

QSqlDatabase TDataSet::Connection() const {
    QSqlDatabase db = QSqlDatabase::database(FConnectionName, false);
    if (!db.isValid())
        throw EDatabaseError(
            QStringLiteral("There is no database connection named \"%1\"").arg(FConnectionName));
    // A connection the server dropped is closed by the driver; the next call opens it again.
    if (!db.isOpen() && !db.open())
        throw EDatabaseError(QStringLiteral("Cannot open the database of connection \"%1\": %2")
                                 .arg(FConnectionName, DriverReason(db.lastError())));
    return db;
}

void TDataSet::CheckActive(const char* what) const {
    if (FState == dsInactive)
        throw EDatabaseError(QStringLiteral("Table \"%1\": cannot %2: the dataset is not open")
                                 .arg(FTableName, QLatin1String(what)));
}

void TDataSet::CheckEditing(const char* what) const {
    CheckActive(what);
    if (FState != dsEdit && FState != dsInsert)
        throw EDatabaseError(
            QStringLiteral("Table \"%1\": cannot %2: the dataset is not in edit or insert state")
                .arg(FTableName, QLatin1String(what)));
}

void TDataSet::CheckBrowseMode() {
    if (FState != dsEdit && FState != dsInsert)
        return;
    bool modified = false;
    for (bool a : FAssigned)
        modified = modified || a;
    if (modified)
        Post();
    else
        Cancel();
}

QString TDataSet::QuoteField(int index) const {
    const QString& q = FQuoted[size_t(index)];
    if (q.isEmpty())
        Fail(QStringLiteral("column \"%1\"").arg(FFields[size_t(index)]->FieldName()),
             QStringLiteral("this column name cannot be quoted safely (it contains a dot or "
                            "is written in quotes); rename the column"));
    return q;
}

QString TDataSet::KeyCondition() const {
    QStringList parts;
    for (int k : FKeyColumns)
        parts << QuoteField(k) + QStringLiteral(" = ?");
    return parts.join(QStringLiteral(" AND "));
}

void TDataSet::Open() {
    if (FState != dsInactive)
        return;
    QSqlDatabase db = Connection();
    // The name goes into SQL only when it is one of the tables the server lists.
    if (!db.tables(QSql::Tables).contains(FTableName))
        throw EDatabaseError(QStringLiteral("Table \"%1\" was not found in the database of "
                                            "connection \"%2\"")
                                 .arg(FTableName, FConnectionName));
    QSqlDriver* driver = db.driver();
    if (driver->isIdentifierEscaped(FTableName, QSqlDriver::TableName))
        throw EDatabaseError(
            QStringLiteral("Table \"%1\": a table name written in quotes is not supported")
                .arg(FTableName));
    const QSqlRecord rec = db.record(FTableName);
    if (rec.isEmpty())
        throw EDatabaseError(QStringLiteral("Table \"%1\" has no columns").arg(FTableName));
    const QSqlIndex pk = db.primaryIndex(FTableName);
    if (pk.isEmpty())
        throw EDatabaseError(QStringLiteral("Table \"%1\" has no primary key; the dataset needs "
                                            "one to tell its records apart")
                                 .arg(FTableName));

    FQuotedTable = driver->escapeIdentifier(FTableName, QSqlDriver::TableName);
    FFields.clear();
    FQuoted.clear();
    FIsBlob.clear();
    FKeyColumns.clear();
    for (int i = 0; i < rec.count(); ++i) {
        const QSqlField f = rec.field(i);
        FFields.push_back(std::unique_ptr<TField>(new TField(this, i, f.name(), f.metaType())));
        FIsBlob.push_back(IsBinaryType(f.metaType()));
        const bool unsafe = f.name().isEmpty() || f.name().contains(QLatin1Char('.')) ||
                            driver->isIdentifierEscaped(f.name(), QSqlDriver::FieldName);
        FQuoted.push_back(unsafe ? QString()
                                 : driver->escapeIdentifier(f.name(), QSqlDriver::FieldName));
    }
    for (int i = 0; i < pk.count(); ++i) {
        const int at = rec.indexOf(pk.fieldName(i));
        if (at < 0)
            throw EDatabaseError(QStringLiteral("Table \"%1\": primary key column \"%2\" is not "
                                                "among its columns")
                                     .arg(FTableName, pk.fieldName(i)));
        FKeyColumns.push_back(at);
    }
    FState = dsBrowse;
    FHasRecord = false;
    FAssigned.assign(FFields.size(), false);
    FBuffer.assign(FFields.size(), QVariant());
    FCurrent.assign(FFields.size(), QVariant());
    FLoaded.assign(FFields.size(), false);
    try {
        QStringList keyCols;
        for (int k : FKeyColumns)
            keyCols << QuoteField(k);
        QSqlQuery q(db);
        const QString sql = QStringLiteral("SELECT %1 FROM %2 ORDER BY %1 LIMIT 1")
                                .arg(keyCols.join(QStringLiteral(", ")), FQuotedTable);
        if (!q.exec(sql))
            Fail(QStringLiteral("cannot read the first record"), DriverReason(q.lastError()));
        if (q.next()) {
            std::vector<QVariant> key;
            for (int i = 0; i < int(FKeyColumns.size()); ++i)
                key.push_back(q.value(i));
            q.finish();
            ReadRecord(key);
        }
    } catch (...) {
        Close();
        throw;
    }
}

void TDataSet::Close() {
    if (FState == dsInactive)
        return;
    ++FEditSerial;
    FState = dsInactive;
    FHasRecord = false;
    FFields.clear();
    FQuoted.clear();
    FIsBlob.clear();
    FKeyColumns.clear();
    FKey.clear();
    FCurrent.clear();
    FLoaded.clear();
    FBuffer.clear();
    FAssigned.clear();
}

// Reads the non-blob columns of the record with primary key `key`; blobs are marked unread.
bool TDataSet::ReadRecord(const std::vector<QVariant>& key) {
    QSqlDatabase db = Connection();
    QStringList cols;
    std::vector<int> which;
    for (int i = 0; i < FieldCount(); ++i)
        if (!FIsBlob[size_t(i)] && !FQuoted[size_t(i)].isEmpty()) {
            cols << FQuoted[size_t(i)];
            which.push_back(i);
        }
    if (cols.isEmpty())
        cols << QuoteField(FKeyColumns.front());
    QSqlQuery q(db);
    q.prepare(QStringLiteral("SELECT %1 FROM %2 WHERE %3")
                  .arg(cols.join(QStringLiteral(", ")), FQuotedTable, KeyCondition()));
    for (const QVariant& v : key)
        q.addBindValue(v);
    if (!q.exec())
        Fail(QStringLiteral("cannot read a record"), DriverReason(q.lastError()));
    if (!q.next()) {
        FHasRecord = false;
        FKey.clear();
        FCurrent.assign(FFields.size(), QVariant());
        FLoaded.assign(FFields.size(), false);
        return false;
    }
    FCurrent.assign(FFields.size(), QVariant());
    FLoaded.assign(FFields.size(), false);
    for (size_t j = 0; j < which.size(); ++j) {
        FCurrent[size_t(which[j])] = q.value(int(j));
        FLoaded[size_t(which[j])] = true;
    }
    FKey = key;
    FHasRecord = true;
    return true;
}

const QVariant& TDataSet::CurrentValue(int index) const {
    static const QVariant null;
    const auto i = size_t(index);
    if (!FHasRecord)
        return null;
    if (!FLoaded[i] && FIsBlob[i] && ReadPgBlob(index, FCurrent[i])) {
        FLoaded[i] = true;
    } else if (!FLoaded[i]) {
        QSqlQuery q(Connection());
        q.prepare(QStringLiteral("SELECT %1 FROM %2 WHERE %3")
                      .arg(QuoteField(index), FQuotedTable, KeyCondition()));
        for (const QVariant& v : FKey)
            q.addBindValue(v);
        if (!q.exec())
            Fail(QStringLiteral("cannot read column \"%1\"").arg(FFields[i]->FieldName()),
                 DriverReason(q.lastError()));
        if (!q.next())
            Fail(QStringLiteral("cannot read column \"%1\"").arg(FFields[i]->FieldName()),
                 QStringLiteral("the current record no longer exists"));
        FCurrent[i] = q.value(0);
        FLoaded[i] = true;
    }
    return FCurrent[i];
}

bool TDataSet::ReadPgBlob(int index, QVariant& value) const {
    QSqlDatabase db = Connection();
    PGconn* conn = PgConnection(db);
    if (!conn)
        return false;
    const QString what =
        QStringLiteral("cannot read column \"%1\"").arg(FFields[size_t(index)]->FieldName());
    QString error;
    const TPgResult r = PgExec(db, conn,
                               QStringLiteral("SELECT %1 FROM %2 WHERE %3")
                                   .arg(QuoteField(index), FQuotedTable, KeyCondition()),
                               FKey, true, error);
    if (!r)
        Fail(what, error);
    if (PQntuples(r.get()) < 1)
        Fail(what, QStringLiteral("the current record no longer exists"));
    value = PQgetisnull(r.get(), 0, 0)
                ? QVariant(QMetaType::fromType<QByteArray>())
                : QVariant(QByteArray(PQgetvalue(r.get(), 0, 0), PQgetlength(r.get(), 0, 0)));
    return true;
}

std::vector<QMetaType> TDataSet::KeyTypes() const {
    std::vector<QMetaType> types;
    for (int k : FKeyColumns)
        types.push_back(FFields[size_t(k)]->DataType());
    return types;
}

TDataSet::TWriteResult TDataSet::ExecWrite(QSqlDatabase& db, const QString& sql,
                                           const std::vector<QVariant>& values,
                                           const std::vector<QMetaType>& returnTypes,
                                           const QString& what) const {
    TWriteResult result;
    bool blob = false, plain = true;
    for (const QVariant& v : values) {
        blob = blob || v.metaType().id() == QMetaType::QByteArray;
        plain = plain && PlainValue(v);
    }
    if (PGconn* conn = blob && plain ? PgConnection(db) : nullptr) {
        QString error;
        const TPgResult r = PgExec(db, conn, sql, values, false, error);
        if (!r)
            Fail(what, error);
        const char* affected = PQcmdTuples(r.get());
        result.Affected = affected && *affected ? std::atoi(affected) : -1;
        for (int row = 0; row < PQntuples(r.get()); ++row) {
            std::vector<QVariant> out;
            for (int c = 0; c < int(returnTypes.size()) && c < PQnfields(r.get()); ++c) {
                if (PQgetisnull(r.get(), row, c)) {
                    out.emplace_back(returnTypes[size_t(c)]);
                    continue;
                }
                QVariant v(QString::fromUtf8(PQgetvalue(r.get(), row, c)));
                v.convert(returnTypes[size_t(c)]);
                out.push_back(v);
            }
            result.Rows.push_back(std::move(out));
        }
        return result;
    }
    QSqlQuery q(db);
    q.setForwardOnly(true);
    q.prepare(sql);
    for (const QVariant& v : values)
        q.addBindValue(v);
    if (!q.exec())
        Fail(what, DriverReason(q.lastError()));
    result.Affected = q.numRowsAffected();
    while (q.next()) {
        std::vector<QVariant> out;
        for (int c = 0; c < int(returnTypes.size()); ++c)
            out.push_back(q.value(c));
        result.Rows.push_back(std::move(out));
    }
    // A statement still open keeps SQLite from committing.
    q.finish();
    return result;
}

const QVariant& TDataSet::BufferValue(int index) const {
    static const QVariant null;
    const auto i = size_t(index);
    if (FAssigned[i])
        return FBuffer[i];
    if (FState == dsInsert)
        return null;
    return CurrentValue(index);
}

// The SQL drivers bind a null QString or QByteArray as NULL. An empty text or blob is still a
// value: a key stored as NULL could never be located again, and an empty blob is not a null one.
static QVariant NonNullEmpty(const QVariant& v) {
    if (v.metaType().id() == QMetaType::QString && v.toString().isNull())
        return QVariant(QStringLiteral(""));
    if (v.metaType().id() == QMetaType::QByteArray && v.toByteArray().isNull())
        return QVariant(QByteArray(""));
    return v;
}

void TDataSet::Assign(int index, const QVariant& value) {
    FBuffer[size_t(index)] = NonNullEmpty(value);
    FAssigned[size_t(index)] = true;
}

TField* TDataSet::Fields(int index) const {
    if (index < 0 || index >= FieldCount())
        throw EDatabaseError(QStringLiteral("Table \"%1\": field index %2 out of range (0..%3)")
                                 .arg(FTableName)
                                 .arg(index)
                                 .arg(FieldCount() - 1));
    return FFields[size_t(index)].get();
}

TField* TDataSet::FindField(const QString& name) const {
    for (const auto& f : FFields)
        if (f->FieldName() == name)
            return f.get();
    for (const auto& f : FFields)
        if (f->FieldName().compare(name, Qt::CaseInsensitive) == 0)
            return f.get();
    return nullptr;
}

TField& TDataSet::FieldByName(const QString& name) const {
    if (TField* f = FindField(name))
        return *f;
    if (FState == dsInactive)
        throw EDatabaseError(
            QStringLiteral("Table \"%1\": field \"%2\" asked for while the dataset is not open")
                .arg(FTableName, name));
    throw EDatabaseError(QStringLiteral("Table \"%1\" has no field \"%2\"").arg(FTableName, name));
}

void TDataSet::CheckText(const QVariant& value, const char* what) const {
    if (value.metaType().id() != QMetaType::QString || !value.toString().contains(QChar(0)))
        return;
    if (Connection().driver()->dbmsType() == QSqlDriver::PostgreSQL)
        Fail(QStringLiteral("cannot ") + QLatin1String(what),
             QStringLiteral("a text value holds the NUL character, which PostgreSQL text "
                            "cannot hold"));
}

TDataSet::TKeyMatch TDataSet::MatchKeys(const QString& keyFields, const QVariantList& keyValues,
                                        const char* what) const {
    TKeyMatch m;
    const QStringList names = keyFields.split(QLatin1Char(';'));
    for (const QString& n : names)
        m.Columns.push_back(FieldByName(n).FIndex);
    if (keyValues.size() < qsizetype(m.Columns.size()))
        throw EDatabaseError(QStringLiteral("Table \"%1\": %2 on %3 fields with %4 values")
                                 .arg(FTableName, QLatin1String(what))
                                 .arg(m.Columns.size())
                                 .arg(keyValues.size()));
    QStringList conds;
    for (size_t i = 0; i < m.Columns.size(); ++i) {
        m.Wanted.push_back(keyValues[qsizetype(i)].toString());
        CheckText(QVariant(m.Wanted.back()), what);
        const QString q = QuoteField(m.Columns[i]);
        // A text column is compared as it is (its indexes stay usable); anything else as text.
        conds << (IsTextType(FFields[size_t(m.Columns[i])]->DataType())
                      ? q + QStringLiteral(" = ?")
                      : QStringLiteral("CAST(%1 AS TEXT) = ?").arg(q));
    }
    m.Condition = conds.join(QStringLiteral(" AND "));
    QStringList select;
    for (int k : FKeyColumns)
        select << QuoteField(k);
    for (int c : m.Columns)
        select << (FIsBlob[size_t(c)] ? QStringLiteral("CAST(%1 AS TEXT)").arg(QuoteField(c))
                                      : QuoteField(c));
    m.SelectKeys = select.join(QStringLiteral(", "));
    return m;
}

QString TDataSet::OrderByKey() const {
    QStringList keyCols;
    for (int k : FKeyColumns)
        keyCols << QuoteField(k);
    return keyCols.join(QStringLiteral(", "));
}

bool TDataSet::Locate(const QString& keyFields, const QVariantList& keyValues) {
    CheckActive("locate");
    CheckBrowseMode();
    const TKeyMatch m = MatchKeys(keyFields, keyValues, "locate");
    QSqlQuery q(Connection());
    q.setForwardOnly(true);
    q.prepare(QStringLiteral("SELECT %1 FROM %2 WHERE %3 ORDER BY %4")
                  .arg(m.SelectKeys, FQuotedTable, m.Condition, OrderByKey()));
    for (const QString& w : m.Wanted)
        q.addBindValue(NonNullEmpty(QVariant(w)));
    if (!q.exec())
        Fail(QStringLiteral("cannot locate a record"), DriverReason(q.lastError()));
    // The server narrows the search; the exact comparison is made here, so that no collation
    // (case-insensitive, padding) can match a record whose text differs.
    const int nk = int(FKeyColumns.size());
    while (q.next()) {
        bool same = true;
        for (size_t i = 0; same && i < m.Columns.size(); ++i)
            same = q.value(nk + int(i)).toString() == m.Wanted[i];
        if (!same)
            continue;
        std::vector<QVariant> key;
        for (int i = 0; i < nk; ++i)
            key.push_back(q.value(i));
        q.finish();
        return ReadRecord(key);
    }
    return false;
}

TConditionalWrite TDataSet::WriteBlobIfUnchanged(const QString& keyFields,
                                                 const QVariantList& keyValues, TField* field,
                                                 const QByteArray& bytes, const QString& expected) {
    CheckActive("write a blob");
    CheckBrowseMode();
    if (!field || field->FDataSet != this || !field->IsBlob())
        Fail(QStringLiteral("cannot write a blob"),
             QStringLiteral("the field is not a blob field of this dataset"));
    const int blob = field->FIndex;
    const TKeyMatch m = MatchKeys(keyFields, keyValues, "write a blob");
    QSqlDatabase db = Connection();
    const QSqlDriver::DbmsType dbms = db.driver()->dbmsType();
    const bool sqlite = dbms == QSqlDriver::SQLite;
    const bool postgres = dbms == QSqlDriver::PostgreSQL;
    const bool tx = db.driver()->hasFeature(QSqlDriver::Transactions);
    // SQLite's plain BEGIN takes the write lock only at the first write, after the compare; an
    // immediate one takes it at once, so a second writer waits before it reads.
    const auto run = [&](const QString& sql, const char* what) {
        QSqlQuery t(db);
        if (!t.exec(sql))
            Fail(QString::fromLatin1(what), DriverReason(t.lastError()));
    };
    if (sqlite)
        run(QStringLiteral("BEGIN IMMEDIATE"), "cannot start a transaction");
    else if (tx && !db.transaction())
        Fail(QStringLiteral("cannot start a transaction"), DriverReason(db.lastError()));
    const bool inTransaction = sqlite || tx;
    TConditionalWrite result;
    std::vector<QVariant> key;
    try {
        {
            // PostgreSQL works the fingerprint out itself, so that the old blob never travels.
            const QString quotedBlob = QuoteField(blob);
            const QString print =
                postgres ? QStringLiteral("CASE WHEN %1 IS NULL OR octet_length(%1) = 0 THEN '' "
                                          "ELSE encode(sha256(%1), 'hex') END")
                               .arg(quotedBlob)
                         : quotedBlob;
            QSqlQuery q(db);
            q.setForwardOnly(true);
            q.prepare(QStringLiteral("SELECT %1, %2 FROM %3 WHERE %4 ORDER BY %5%6")
                          .arg(m.SelectKeys, print, FQuotedTable, m.Condition, OrderByKey(),
                               postgres ? QStringLiteral(" FOR UPDATE") : QString()));
            for (const QString& w : m.Wanted)
                q.addBindValue(NonNullEmpty(QVariant(w)));
            if (!q.exec())
                Fail(QStringLiteral("cannot read the stored blob"), DriverReason(q.lastError()));
            const int nk = int(FKeyColumns.size());
            const int at = nk + int(m.Columns.size());
            while (q.next()) {
                bool same = true;
                for (size_t i = 0; same && i < m.Columns.size(); ++i)
                    same = q.value(nk + int(i)).toString() == m.Wanted[i];
                if (!same)
                    continue;
                for (int i = 0; i < nk; ++i)
                    key.push_back(q.value(i));
                result.Found = postgres ? q.value(at).toString()
                                        : ContentFingerprint(q.value(at).toByteArray());
                break;
            }
        }
        if (result.Found == expected) {
            if (!key.empty()) {
                std::vector<QVariant> values{NonNullEmpty(QVariant(bytes))};
                values.insert(values.end(), key.begin(), key.end());
                const TWriteResult w =
                    ExecWrite(db,
                              QStringLiteral("UPDATE %1 SET %2 = ? WHERE %3")
                                  .arg(FQuotedTable, QuoteField(blob), KeyCondition()),
                              values, {}, QStringLiteral("cannot write the blob"));
                if (w.Affected != 1)
                    Fail(QStringLiteral("cannot write the blob"),
                         QStringLiteral("the record no longer exists"));
            } else {
                QStringList cols, marks;
                std::vector<QVariant> values;
                for (size_t i = 0; i < m.Columns.size(); ++i) {
                    cols << QuoteField(m.Columns[i]);
                    marks << QStringLiteral("?");
                    values.push_back(NonNullEmpty(QVariant(m.Wanted[i])));
                }
                cols << QuoteField(blob);
                marks << QStringLiteral("?");
                values.push_back(NonNullEmpty(QVariant(bytes)));
                const TWriteResult w =
                    ExecWrite(db,
                              QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) RETURNING %4")
                                  .arg(FQuotedTable, cols.join(QStringLiteral(", ")),
                                       marks.join(QStringLiteral(", ")), OrderByKey()),
                              values, KeyTypes(), QStringLiteral("cannot append a record"));
                if (w.Rows.empty())
                    Fail(QStringLiteral("cannot append a record"),
                         QStringLiteral("the server did not return the new record's key"));
                key = w.Rows.front();
            }
            result.Written = true;
        }
        if (sqlite)
            run(result.Written ? QStringLiteral("COMMIT") : QStringLiteral("ROLLBACK"),
                "cannot commit");
        else if (tx && result.Written && !db.commit())
            Fail(QStringLiteral("cannot commit"), DriverReason(db.lastError()));
        else if (tx && !result.Written)
            db.rollback();
    } catch (...) {
        if (inTransaction && db.isOpen()) {
            if (sqlite) {
                QSqlQuery r(db);
                r.exec(QStringLiteral("ROLLBACK"));
            } else {
                db.rollback();
            }
        }
        throw;
    }
    if (!key.empty() && ReadRecord(key) && result.Written) {
        FCurrent[size_t(blob)] = NonNullEmpty(QVariant(bytes));
        FLoaded[size_t(blob)] = true;
    }
    return result;
}

void TDataSet::Append() {
    CheckActive("append");
    CheckBrowseMode();
    FBuffer.assign(FFields.size(), QVariant());
    FAssigned.assign(FFields.size(), false);
    ++FEditSerial;
    FState = dsInsert;
}

void TDataSet::Edit() {
    CheckActive("edit");
    if (FState == dsEdit || FState == dsInsert)
        return;
    if (!FHasRecord)
        throw EDatabaseError(QStringLiteral("Table \"%1\": cannot edit: there is no current record")
                                 .arg(FTableName));
    FBuffer.assign(FFields.size(), QVariant());
    FAssigned.assign(FFields.size(), false);
    ++FEditSerial;
    FState = dsEdit;
}

void TDataSet::LeaveEditing() {
    FBuffer.assign(FFields.size(), QVariant());
    FAssigned.assign(FFields.size(), false);
    ++FEditSerial;
    FState = dsBrowse;
}

void TDataSet::Cancel() {
    if (FState == dsEdit || FState == dsInsert)
        LeaveEditing();
}

void TDataSet::Post() {
    CheckEditing("post");
    std::vector<int> set;
    for (int i = 0; i < FieldCount(); ++i)
        if (FAssigned[size_t(i)])
            set.push_back(i);
    if (FState == dsEdit && set.empty()) {
        LeaveEditing();
        return;
    }
    for (int i : set)
        CheckText(FBuffer[size_t(i)], "post");
    QSqlDatabase db = Connection();
    const bool tx = db.driver()->hasFeature(QSqlDriver::Transactions);
    // Kept to put back when the transaction is rolled back.
    const bool hadRecord = FHasRecord;
    const std::vector<QVariant> oldKey = FKey, oldCurrent = FCurrent;
    const std::vector<bool> oldLoaded = FLoaded;
    if (tx && !db.transaction())
        Fail(QStringLiteral("cannot start a transaction"), DriverReason(db.lastError()));
    try {
        std::vector<QVariant> key;
        const QString what = QStringLiteral("cannot post");
        if (FState == dsEdit) {
            QStringList assigns;
            std::vector<QVariant> values;
            for (int i : set) {
                assigns << QuoteField(i) + QStringLiteral(" = ?");
                values.push_back(FBuffer[size_t(i)]);
            }
            for (const QVariant& v : FKey)
                values.push_back(v);
            const TWriteResult w = ExecWrite(
                db,
                QStringLiteral("UPDATE %1 SET %2 WHERE %3")
                    .arg(FQuotedTable, assigns.join(QStringLiteral(", ")), KeyCondition()),
                values, {}, what);
            if (w.Affected != 1)
                Fail(what, QStringLiteral("the record being edited no longer exists"));
            key = FKey;
            // Primary key columns may have been assigned too.
            for (size_t k = 0; k < FKeyColumns.size(); ++k)
                if (FAssigned[size_t(FKeyColumns[k])])
                    key[k] = FBuffer[size_t(FKeyColumns[k])];
        } else {
            const QString returning = QStringLiteral(" RETURNING ") + OrderByKey();
            QString sql;
            std::vector<QVariant> values;
            if (set.empty()) {
                sql = QStringLiteral("INSERT INTO %1 DEFAULT VALUES").arg(FQuotedTable) + returning;
            } else {
                QStringList cols, marks;
                for (int i : set) {
                    cols << QuoteField(i);
                    marks << QStringLiteral("?");
                    values.push_back(FBuffer[size_t(i)]);
                }
                sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                          .arg(FQuotedTable, cols.join(QStringLiteral(", ")),
                               marks.join(QStringLiteral(", "))) +
                      returning;
            }
            const TWriteResult w = ExecWrite(db, sql, values, KeyTypes(), what);
            if (w.Rows.empty())
                Fail(what, QStringLiteral("the server did not return the new record's key"));
            key = w.Rows.front();
        }
        // The written values stand for the current record; the rest (defaults, other columns) is
        // read back.
        std::vector<QVariant> written(FFields.size());
        for (int i : set)
            written[size_t(i)] = FBuffer[size_t(i)];
        if (!ReadRecord(key))
            Fail(QStringLiteral("cannot post"),
                 QStringLiteral("the posted record cannot be read back"));
        for (int i : set)
            if (FIsBlob[size_t(i)]) {
                FCurrent[size_t(i)] = written[size_t(i)];
                FLoaded[size_t(i)] = true;
            }
        if (tx && !db.commit())
            Fail(QStringLiteral("cannot commit"), DriverReason(db.lastError()));
    } catch (...) {
        // The pending edit stays, so that the same Post can be tried again.
        if (tx && db.isOpen())
            db.rollback();
        FHasRecord = hadRecord;
        FKey = oldKey;
        FCurrent = oldCurrent;
        FLoaded = oldLoaded;
        throw;
    }
    LeaveEditing();
}

void TDataSet::Refresh() {
    CheckActive("refresh");
    CheckBrowseMode();
    if (FHasRecord) {
        const std::vector<QVariant> key = FKey;
        ReadRecord(key);
    }
}

std::unique_ptr<TStream> TDataSet::CreateBlobStream(TField* field, TBlobStreamMode mode) {
    CheckActive("open a blob stream");
    if (!field || field->FDataSet != this)
        Fail(QStringLiteral("cannot open a blob stream"),
             QStringLiteral("the field does not belong to this dataset"));
    if (!field->IsBlob())
        Fail(QStringLiteral("cannot open a blob stream"),
             QStringLiteral("field \"%1\" is not a blob field").arg(field->FieldName()));
    if (mode == bmWrite) {
        CheckEditing("write a blob");
        Assign(field->FIndex, QByteArray(""));
        return std::make_unique<TBlobStream>(this, field->FIndex, mode, QByteArray());
    }
    const QVariant v = field->Value();
    return std::make_unique<TBlobStream>(this, field->FIndex, mode, v.toByteArray());
}

// --- URLs

TDatabaseUrl ParseDatabaseUrl(const QString& url) {
    const auto bad = [&](const QString& why) {
        return EDatabaseError(QStringLiteral("Database URL \"%1\": %2; expected sqlite:PATH or "
                                             "postgresql://USER@HOST:PORT/DB, optionally "
                                             "followed by ?table=NAME")
                                  .arg(url, why));
    };
    TDatabaseUrl r;
    QString rest;
    if (url.startsWith(QLatin1String("sqlite:"))) {
        r.Driver = QStringLiteral("QSQLITE");
        rest = url.mid(7);
        const qsizetype q = rest.lastIndexOf(QLatin1String("?table="));
        if (q >= 0) {
            r.TableName = rest.mid(q + 7);
            rest.truncate(q);
        }
        if (rest.isEmpty())
            throw bad(QStringLiteral("no database file"));
        r.DatabaseName = rest;
        return r;
    }
    if (url.startsWith(QLatin1String("postgresql://")) ||
        url.startsWith(QLatin1String("postgres://"))) {
        const QUrl u(url, QUrl::StrictMode);
        if (!u.isValid())
            throw bad(u.errorString());
        r.Driver = QStringLiteral("QPSQL");
        r.HostName = u.host();
        r.Port = u.port(-1);
        r.UserName = u.userName();
        r.Password = u.password();
        r.DatabaseName = u.path().mid(1);
        r.TableName = QUrlQuery(u).queryItemValue(QStringLiteral("table"), QUrl::FullyDecoded);
        if (r.HostName.isEmpty())
            throw bad(QStringLiteral("no host"));
        if (r.DatabaseName.isEmpty())
            throw bad(QStringLiteral("no database name"));
        return r;
    }
    throw bad(QStringLiteral("unknown kind of database"));
}

QSqlDatabase AddDatabase(const TDatabaseUrl& url, const QString& connectionName) {
    if (!QSqlDatabase::isDriverAvailable(url.Driver))
        throw EDatabaseError(
            QStringLiteral("The Qt SQL driver %1 is not installed (Debian: libqt6sql6-%2)")
                .arg(url.Driver, url.Driver == QLatin1String("QPSQL") ? QStringLiteral("psql")
                                                                      : QStringLiteral("sqlite")));
    QSqlDatabase db = QSqlDatabase::addDatabase(url.Driver, connectionName);
    db.setDatabaseName(url.DatabaseName);
    if (!url.HostName.isEmpty())
        db.setHostName(url.HostName);
    if (url.Port >= 0)
        db.setPort(url.Port);
    if (!url.UserName.isEmpty())
        db.setUserName(url.UserName);
    if (!url.Password.isEmpty())
        db.setPassword(url.Password);
    return db;
}

} // namespace vde
