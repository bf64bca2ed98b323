#include "velDiagEdit/commands/table_diag_actions.h"

#include "velDiagEdit/commands/bin_utils.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

#include <QSqlDatabase>
#include <QSqlQuery>

namespace vde {

namespace {

const QString kKeyFields = QStringLiteral("Section;Key");
const QString kKeyTemplate = QStringLiteral("frmMain.@T.@C|DiagramChart");
const QString kDefaultTabName = QStringLiteral("frmConfig");

QString& FieldSuffix() {
    static QString suffix;
    return suffix;
}

// The first occurrence only, with case.
QString ReplaceFirst(QString Text, const QString& What, const QString& By) {
    const qsizetype at = Text.indexOf(What, 0, Qt::CaseSensitive);
    if (at >= 0)
        Text.replace(at, What.size(), By);
    return Text;
}

QVariantList SplitKeyValues(const QString& KeyValues) {
    QVariantList values;
    for (const QString& v : KeyValues.split(QLatin1Char('|')))
        values.append(QVariant(v));
    return values;
}

// How often a PostgreSQL listener checks that its subscription is still in place.
constexpr int kSubscriptionCheckMs = 1000;

QSqlDatabase ConnectionOf(const TDataSet* ds) {
    return QSqlDatabase::database(ds->ConnectionName(), false);
}

} // namespace

const char* const kDiagramSavedChannel = "veldiagedit_diagram_saved";

void NotifyDiagramSaved(TDataSet* ADataSet, const QString& AKeyValues) {
    if (!ADataSet)
        return;
    QSqlDatabase db = ConnectionOf(ADataSet);
    if (!db.isOpen() || db.driverName() != QLatin1String("QPSQL"))
        return;
    QSqlQuery q(db);
    q.prepare(QStringLiteral("SELECT pg_notify(?, ?)"));
    q.addBindValue(QString::fromLatin1(kDiagramSavedChannel));
    q.addBindValue(AKeyValues);
    // The bytes are stored already; a listener that misses this compares on its next check.
    (void)q.exec();
}

void SetDataFieldSuffix(const QString& Suffix) {
    FieldSuffix() = Suffix;
}

QString GetDataFieldSuffix() {
    return FieldSuffix();
}

QString DataFieldName() {
    return FieldSuffix().isEmpty() ? QStringLiteral("BinData")
                                   : QStringLiteral("BinData_") + FieldSuffix();
}

TdmTableDiagActions::TdmTableDiagActions(QObject* AOwner, TDataSet* ADataStore,
                                         const QString& AModuleName)
    : TdmDiagActions(AOwner), FDataStore(ADataStore), FModuleName(AModuleName) {}

void TdmTableDiagActions::GenKeyFieldsAndValues(const QString& AName) {
    KeyFields = kKeyFields;
    KeyValues = KeyValuesFor(AName);
}

QString TdmTableDiagActions::KeyValuesFor(const QString& AName) {
    if (FTabName.isEmpty())
        FTabName = kDefaultTabName;
    // "|" separates the key values: a tab named "frmConfig.Victim|DiagramChart|x" would address
    // another diagram's record.
    if (FTabName.contains(QLatin1Char('|')))
        throw EInvalidOperation(QStringLiteral("The tab name \"%1\" holds \"|\", which separates "
                                               "the key values of a diagram's record")
                                    .arg(FTabName));
    return ReplaceFirst(ReplaceFirst(kKeyTemplate, QStringLiteral("@T"), FTabName),
                        QStringLiteral("@C"), AName);
}

void TdmTableDiagActions::LoadDiagramEx(const QString& AName, const QString& ATabName) {
    FTabName = ATabName;
    LoadDiagram(AName);
}

TDataSet& TdmTableDiagActions::OpenDataStore() {
    if (!FDataStore)
        throw EDatabaseError(
            QStringLiteral("The diagram \"%1\" is kept in a table, but no dataset was given")
                .arg(GetName()));
    FDataStore->Open();
    return *FDataStore;
}

void TdmTableDiagActions::CheckContainer() const {
    if (!DiagContr)
        throw EInvalidOperation(
            QStringLiteral("The diagram \"%1\" has no surface: its container was not created")
                .arg(GetName()));
}

void TdmTableDiagActions::LoadDiagram(const QString& AName) {
    if (GetUseDefaultSaveLoadProc()) {
        TdmDiagActions::LoadDiagram(AName);
        return;
    }
    CheckContainer();
    const QString name = AName.isEmpty() ? GetName() : AName;
    TDataSet& ds = OpenDataStore();
    TField* field = ds.FindField(DataFieldName());
    if (field && field->IsBlob())
        LoadRecord(name, field, false);
    FNeedSave = false;
}

void TdmTableDiagActions::LoadRecord(const QString& AName, TField* AField, bool AClearWhenEmpty) {
    TMemoryStream stream;
    GenKeyFieldsAndValues(AName);
    ReadDataToStream(AField, &stream, KeyFields, KeyValues);
    const QByteArray bytes(reinterpret_cast<const char*>(stream.Memory()),
                           qsizetype(stream.Bytes().size()));
    // The container reads the whole stream before it changes anything, so a blob that is not a
    // diagram leaves the open one as it was.
    LoadStoredBytes(bytes, AClearWhenEmpty);
    RememberStored(AName, KeyValues, ContentFingerprint(bytes));
}

TdmDiagActions::TStorageKind TdmTableDiagActions::TableStorage(TField* AField) {
    TStorageKind kind;
    kind.Place = [this](const QString& AName) { return KeyValuesFor(AName); };
    kind.Store = [this, AField](const QString& AName, const QByteArray& Bytes,
                                const QString& Expected) {
        const QString keyValues = KeyValuesFor(AName);
        const TConditionalWrite done = AField->DataSet()->WriteBlobIfUnchanged(
            kKeyFields, SplitKeyValues(keyValues), AField, Bytes, Expected);
        if (done.Written)
            NotifyDiagramSaved(AField->DataSet(), keyValues);
        return done;
    };
    kind.Reload = [this, AField](const QString& AName) { LoadRecord(AName, AField, true); };
    kind.Fingerprint = [this, AField](const QString& AName) {
        // Located, not appended: reading must not change the table.
        TDataSet* ds = AField->DataSet();
        if (!ds->Locate(kKeyFields, SplitKeyValues(KeyValuesFor(AName))))
            return QString();
        TBytes bytes;
        if (ReadBlobData(AField, bytes) <= 0)
            return QString();
        return ContentFingerprint(bytes.data(), int64_t(bytes.size()));
    };
    return kind;
}

TField* TdmTableDiagActions::DataField() {
    TDataSet& ds = OpenDataStore();
    TField* field = ds.FindField(DataFieldName());
    if (!field || !field->IsBlob())
        throw EDatabaseError(QStringLiteral("The table \"%1\" has no blob column \"%2\"")
                                 .arg(ds.TableName(), DataFieldName()));
    return field;
}

TdmDiagActions::TStorageKind TdmTableDiagActions::CurrentStorage() {
    if (GetUseDefaultSaveLoadProc())
        return TdmDiagActions::CurrentStorage();
    CheckContainer();
    return TableStorage(DataField());
}

void TdmTableDiagActions::WatchStoredPlace() {
    if (GetUseDefaultSaveLoadProc() || !FDataStore) {
        TdmDiagActions::WatchStoredPlace();
        return;
    }
    QSqlDatabase db = ConnectionOf(FDataStore);
    if (db.driverName() == QLatin1String("QSQLITE")) {
        const QString file = db.databaseName();
        if (file.isEmpty() || file == QLatin1String(":memory:"))
            return;
        // In write-ahead mode a commit changes only the log beside the database.
        WatchFiles({file, file + QStringLiteral("-wal")});
        return;
    }
    if (db.driverName() != QLatin1String("QPSQL") || !db.isOpen())
        return;
    QSqlDriver* driver = db.driver();
    const QString channel = QString::fromLatin1(kDiagramSavedChannel);
    if (!driver->subscribedToNotifications().contains(channel))
        driver->subscribeToNotification(channel);
    if (driver != FNotifyDriver) {
        disconnect(FNotifyConnection);
        FNotifyDriver = driver;
        FNotifyConnection = connect(
            driver, &QSqlDriver::notification, this,
            [this](const QString& Name, QSqlDriver::NotificationSource, const QVariant& Payload) {
                if (Name == QLatin1String(kDiagramSavedChannel) &&
                    Payload.toString() == GetStoredPlace())
                    StoredPlaceTouched();
            });
    }
    if (!FSubscriptionTimer) {
        FSubscriptionTimer = std::make_unique<QTimer>();
        connect(FSubscriptionTimer.get(), &QTimer::timeout, this, [this] { CheckSubscription(); });
        FSubscriptionTimer->start(kSubscriptionCheckMs);
    }
}

void TdmTableDiagActions::CheckSubscription() {
    if (!FDataStore || !GetLiveReload())
        return;
    QSqlDatabase db = ConnectionOf(FDataStore);
    // A closed connection is opened again by the dataset's next call; it is listened to then.
    if (!db.isOpen())
        return;
    QSqlDriver* driver = db.driver();
    if (driver != FNotifyDriver ||
        !driver->subscribedToNotifications().contains(QLatin1String(kDiagramSavedChannel))) {
        WatchStoredPlace();
        // Saves made while nobody listened are found by comparing.
        StoredPlaceTouched();
        return;
    }
    // A notification that arrived while a statement of this connection ran waits in the
    // client library's queue, and no socket activity announces it; the driver's handler
    // drains that queue.
    QMetaObject::invokeMethod(driver, "_q_handleNotification", Qt::DirectConnection);
}

void TdmTableDiagActions::StopWatching() {
    TdmDiagActions::StopWatching();
    FSubscriptionTimer.reset();
    disconnect(FNotifyConnection);
    if (FNotifyDriver &&
        FNotifyDriver->subscribedToNotifications().contains(QLatin1String(kDiagramSavedChannel)))
        FNotifyDriver->unsubscribeFromNotification(QLatin1String(kDiagramSavedChannel));
    FNotifyDriver = nullptr;
}

void TdmTableDiagActions::SaveDiagram(const QString& AName) {
    if (GetUseDefaultSaveLoadProc()) {
        TdmDiagActions::SaveDiagram(AName);
        return;
    }
    if (!FNeedSave)
        return;
    CheckContainer();
    const QString name = AName.isEmpty() ? GetName() : AName;
    TDataSet& ds = OpenDataStore();
    TField* field = ds.FindField(DataFieldName());
    if (field && field->IsBlob()) {
        GenKeyFieldsAndValues(name);
        if (GetConflictCheck()) {
            SaveChecked(name, TableStorage(field));
        } else {
            const QByteArray bytes = DiagramBytes();
            TMemoryStream stream(std::vector<uint8_t>(bytes.begin(), bytes.end()));
            WriteDataFromStream(field, &stream, KeyFields, KeyValues);
            NotifyDiagramSaved(&ds, KeyValues);
            RememberStored(name, KeyValues, ContentFingerprint(bytes));
        }
    }
    // Only reached when the record holds the new bytes (or the conflict was answered): a failed
    // save stays to be made.
    FNeedSave = false;
}

} // namespace vde
