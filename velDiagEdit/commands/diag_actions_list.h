#pragma once
// The command modules of a host, one per diagram name, kept sorted by name. Names are compared
// without regard to case, so "Main" and "MAIN" are the same diagram. The list owns its modules:
// they go when the list is cleared or freed, never one by one. The owner given to the list owns
// the modules as components too and must outlive the list; if it goes first, its modules read as
// none here and are skipped.
//
// A module is a plain file-based TdmDiagActions unless the list was given a dataset and a module
// name; then it is a TdmTableDiagActions on that dataset, or what the factory installed with
// SetTableDiagActionsFactory makes instead.

#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vde {

class TCanvas;
class TDataSet;

// Makes the table-storage module for a list with a dataset and a module name.
using TTableDiagActionsFactory = std::function<std::unique_ptr<TdmDiagActions>(
    QObject* AOwner, TDataSet* ADataStore, const QString& AModuleName)>;
// Installs the factory (an empty one removes it); the table storage registers itself here.
VELDIAGEDIT_EXPORT void SetTableDiagActionsFactory(TTableDiagActionsFactory Factory);
VELDIAGEDIT_EXPORT bool HasTableDiagActionsFactory();

class VELDIAGEDIT_EXPORT TDiagActionsList {
public:
    // AOwner owns every module as a component as well; it must outlive the list.
    TDiagActionsList(QObject* AOwner, TDataSet* ADataStore, const QString& AModuleName);
    virtual ~TDiagActionsList();
    TDiagActionsList(const TDiagActionsList&) = delete;
    TDiagActionsList& operator=(const TDiagActionsList&) = delete;

    // ---- the string list
    int Count() const { return int(FItems.size()); }
    QString Strings(int Index) const;
    TdmDiagActions* Objects(int Index) const;
    // Sorted search: true with Index at the name, or false with Index where it would go.
    bool Find(const QString& S, int& Index) const;
    int IndexOf(const QString& S) const;
    // Frees every module in list order, then empties the list.
    void Clear();

    // The module for AName: the one in the list (the parent and canvas are then ignored), else
    // nullptr for an empty name or no parent, else a new module named AName with its container
    // on AParent. A name that is not a valid component name, or one the owner already has,
    // raises EComponentError and nothing is added.
    TdmDiagActions* CreateDiagActions(const QString& AName, QWidget* AParent, TCanvas* ACanvas);
    // An empty name saves every diagram; an unknown one nothing.
    void SaveDiagActions(const QString& AName);
    void SaveDiagrams();
    void EnableDesignMode(bool Enable);

    // The conflict check (TdmDiagActions::SetConflictCheck) of every module, and of those made
    // later.
    void SetConflictCheck(bool Value);
    bool GetConflictCheck() const { return FConflictCheck; }
    // Given to every module, and to those made later, as its OnConflictResolved.
    void SetOnConflictResolved(decltype(TdmDiagActions::OnConflictResolved) Handler);
    // Live reload (TdmDiagActions::SetLiveReload) of every module, and of those made later,
    // with these handlers.
    void SetLiveReload(bool Value);
    bool GetLiveReload() const { return FLiveReload; }
    void SetOnLiveReload(decltype(TdmDiagActions::OnChangedElsewhere) ChangedElsewhere,
                         decltype(TdmDiagActions::OnReloaded) Reloaded);

    QObject* GetOwner() const { return FOwner.data(); }
    TDataSet* GetDataStore() const { return FDataStore; }
    const QString& GetModuleName() const { return FModuleName; }

protected:
    // The module a new name gets, not yet named; see the header comment.
    virtual std::unique_ptr<TdmDiagActions> NewDiagActions();

private:
    QPointer<QObject> FOwner;
    TDataSet* FDataStore = nullptr;
    QString FModuleName;
    bool FConflictCheck = false;
    bool FLiveReload = false;
    decltype(TdmDiagActions::OnChangedElsewhere) FOnChangedElsewhere;
    decltype(TdmDiagActions::OnReloaded) FOnReloaded;
    decltype(TdmDiagActions::OnConflictResolved) FOnConflictResolved;
    // Owned; watched as well, so that a module its owner freed too early reads as none here
    // instead of being freed twice.
    std::vector<std::pair<QString, QPointer<TdmDiagActions>>> FItems;
};

} // namespace vde
