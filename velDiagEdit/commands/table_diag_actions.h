#pragma once
// The command module that keeps its diagram in a record of a host's configuration table instead
// of a file. Everything but LoadDiagram and SaveDiagram (menus, dialogs, the file commands) is the
// plain command module's.
//
// The record is found by two text columns: "Section" = "frmMain." + tab name + "." + diagram name
// and "Key" = "DiagramChart". The diagram's container stream, byte for byte, is in the blob column
// "BinData", or "BinData_" + suffix when the package-wide field suffix is set. Loading a diagram
// that has no record appends one (keys filled, no data) and leaves the surface as an empty stream
// leaves it. Saving writes only when the diagram may have changed (design mode was switched on,
// or a file was loaded through the dialog): a diagram that was only viewed is never written back.
//
// Errors: the dataset's failures (no connection, no such table or key column, a failed post) pass
// through as EDatabaseError; a stored blob that is not a diagram raises EReadError (EFormatError)
// or shows "Invalid file format", as loading a file does. In every case the open diagram stays as
// it was, and a save that failed keeps the diagram marked as to be saved, so it can be made again.
// A missing data column, or one that is not a blob, makes load and save do nothing.
//
// With the conflict check on (TdmDiagActions::SetConflictCheck) the compare of the record's
// fingerprint and the write are one transaction (TDataSet::WriteBlobIfUnchanged); a record that
// someone else deleted is a conflict too.
//
// Live reload (TdmDiagActions::SetLiveReload): on SQLite the database file (and its folder) is
// watched; on PostgreSQL the module listens on the channel kDiagramSavedChannel, on which every
// save of a diagram through this module (with live reload on or off) and through "veldiag db put"
// sends the record's key values ("<section>|<key>") once the new bytes are committed. A
// connection that was closed and opened again is subscribed again within a second, and the
// record is then compared, since a save may have gone by unheard.
//
// The dataset is the host's and must outlive the module.

#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QSqlDriver>
#include <QString>
#include <QTimer>
#include <memory>

namespace vde {

class TDataSet;
class TField;

// The PostgreSQL notification channel of saved diagrams.
VELDIAGEDIT_EXPORT extern const char* const kDiagramSavedChannel;
// Tells the listeners on kDiagramSavedChannel that the record with AKeyValues was saved; does
// nothing on a connection that is not PostgreSQL. A notification that cannot be sent is not an
// error: the save itself is done, and listeners compare fingerprints anyway.
VELDIAGEDIT_EXPORT void NotifyDiagramSaved(TDataSet* ADataSet, const QString& AKeyValues);

// The package-wide suffix of the data column; set by CreateDiagActionsList.
VELDIAGEDIT_EXPORT void SetDataFieldSuffix(const QString& Suffix);
VELDIAGEDIT_EXPORT QString GetDataFieldSuffix();
// "BinData_" + the suffix, or "BinData" when the suffix is empty.
VELDIAGEDIT_EXPORT QString DataFieldName();

class VELDIAGEDIT_EXPORT TdmTableDiagActions : public TdmDiagActions {
    Q_OBJECT
public:
    // ADataStore is the configuration table (not owned); AModuleName is kept, it does not enter
    // the keys or the column name.
    TdmTableDiagActions(QObject* AOwner, TDataSet* ADataStore, const QString& AModuleName);

    // KeyFields := "Section;Key"; KeyValues := the template "frmMain.@T.@C|DiagramChart" with
    // the first "@T" replaced by the tab name (made "frmConfig" when empty) and then the first
    // "@C" by AName. The order is kept: an "@C" inside the tab name is the one replaced.
    void GenKeyFieldsAndValues(const QString& AName);
    // Remembers the tab name (kept for later calls), then LoadDiagram(AName).
    void LoadDiagramEx(const QString& AName, const QString& ATabName) override;
    // From the table, or from the file beside the host program with UseDefaultSaveLoadProc; an
    // empty name means this module's name.
    void LoadDiagram(const QString& AName) override;
    void SaveDiagram(const QString& AName) override;

    TDataSet* GetDataStore() const { return FDataStore; }
    const QString& GetModuleName() const { return FModuleName; }
    const QString& GetTabName() const { return FTabName; }

    QString FTabName;
    TDataSet* FDataStore = nullptr;
    QString FModuleName;
    QString KeyFields;
    QString KeyValues;

protected:
    TStorageKind CurrentStorage() override;
    void WatchStoredPlace() override;
    void StopWatching() override;

private:
    // The key values of the record for AName (the tab name as GenKeyFieldsAndValues has it).
    QString KeyValuesFor(const QString& AName);
    // The table as a checked save sees it.
    TStorageKind TableStorage(TField* AField);
    // Reads the record for AName into the surface and remembers its fingerprint.
    void LoadRecord(const QString& AName, TField* AField, bool AClearWhenEmpty);
    // The dataset opened; raises EDatabaseError when the module was given none.
    TDataSet& OpenDataStore();
    // Raises EInvalidOperation before any dataset call when there is no surface.
    void CheckContainer() const;
    // The data column, checked; raises EDatabaseError when the table has none.
    TField* DataField();

    // PostgreSQL: the driver listened to, and the check that the subscription survives a
    // reconnect.
    QPointer<QSqlDriver> FNotifyDriver;
    QMetaObject::Connection FNotifyConnection;
    std::unique_ptr<QTimer> FSubscriptionTimer;
    void CheckSubscription();
};

} // namespace vde
