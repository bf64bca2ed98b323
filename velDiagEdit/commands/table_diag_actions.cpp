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
    if (FTabName.isEmpty())
        FTabName = kDefaultTabName;
    // "|" separates the key values: a tab named "frmConfig.Victim|DiagramChart|x" would address
    // another diagram's record.
    if (FTabName.contains(QLatin1Char('|')))
        throw EInvalidOperation(QStringLiteral("The tab name \"%1\" holds \"|\", which separates "
                                               "the key values of a diagram's record")
                                    .arg(FTabName));
    KeyValues = ReplaceFirst(kKeyTemplate, QStringLiteral("@T"), FTabName);
    KeyValues = ReplaceFirst(KeyValues, QStringLiteral("@C"), AName);
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
    TMemoryStream stream;
    TDataSet& ds = OpenDataStore();
    TField* field = ds.FindField(DataFieldName());
    if (field && field->IsBlob()) {
        GenKeyFieldsAndValues(name);
        ReadDataToStream(field, &stream, KeyFields, KeyValues);
        stream.SetPosition(0);
        // The container reads the whole stream before it changes anything, so a blob that is
        // not a diagram leaves the open one as it was.
        DiagContr->LoadFromStream(stream);
    }
    FNeedSave = false;
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
    TMemoryStream stream;
    TDataSet& ds = OpenDataStore();
    TField* field = ds.FindField(DataFieldName());
    if (field && field->IsBlob()) {
        DiagContr->SaveToStream(stream);
        GenKeyFieldsAndValues(name);
        stream.SetPosition(0);
        WriteDataFromStream(field, &stream, KeyFields, KeyValues);
    }
    // Only reached when the record holds the new bytes: a failed save stays to be made.
    FNeedSave = false;
}

} // namespace vde
