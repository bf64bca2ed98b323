#include "velDiagEdit/commands/table_diag_actions.h"

#include "velDiagEdit/commands/bin_utils.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

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

} // namespace

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
    RememberStored(KeyValues, ContentFingerprint(bytes));
}

TdmDiagActions::TStorageKind TdmTableDiagActions::TableStorage(TField* AField) {
    TStorageKind kind;
    kind.Place = [this](const QString& AName) { return KeyValuesFor(AName); };
    kind.Store = [this, AField](const QString& AName, const QByteArray& Bytes,
                                const QString& Expected) {
        QVariantList values;
        for (const QString& v : KeyValuesFor(AName).split(QLatin1Char('|')))
            values.append(QVariant(v));
        return AField->DataSet()->WriteBlobIfUnchanged(kKeyFields, values, AField, Bytes, Expected);
    };
    kind.Reload = [this, AField](const QString& AName) { LoadRecord(AName, AField, true); };
    return kind;
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
            RememberStored(KeyValues, ContentFingerprint(bytes));
        }
    }
    // Only reached when the record holds the new bytes (or the conflict was answered): a failed
    // save stays to be made.
    FNeedSave = false;
}

} // namespace vde
