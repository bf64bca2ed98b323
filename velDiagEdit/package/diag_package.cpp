#include "velDiagEdit/package/diag_package.h"

#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/package/diag_storage_events.h"

#include <QCoreApplication>
#include <QPointer>
#include <algorithm>
#include <memory>
#include <vector>

namespace vde {

namespace {

struct TPackageState {
    std::unique_ptr<TDiagActionsList> DiagActionsList;
    // Watched, so that a module freed with its list reads as none.
    QPointer<TdmDiagActions> CurrentDiagActions;
    bool ConflictCheck = false;
    bool LiveReload = false;

    ~TPackageState() {
        // A host that did not free the list: at program exit its widgets may be gone with the
        // application, so the modules are left to the system rather than freed.
        if (!QCoreApplication::instance())
            (void)DiagActionsList.release();
    }
};

TPackageState& State() {
    static TPackageState state;
    return state;
}

TdmDiagActions* CurrentWithContainer() {
    TdmDiagActions* m = State().CurrentDiagActions.data();
    return m && m->DiagContr ? m : nullptr;
}

TdmDiagActions* CreateAndLoad(const QString& AName, const QString& ATabName, QWidget* AParent,
                              TCanvas* ACanvas, bool ADesignMode, bool ALoad, bool AByTab) {
    TDiagActionsList* list = State().DiagActionsList.get();
    if (!list)
        return nullptr;
    // Design mode is exclusive: only the diagram made or found now may have it.
    list->EnableDesignMode(false);
    TdmDiagActions* m = list->CreateDiagActions(AName, AParent, ACanvas);
    if (!m)
        return nullptr;
    State().CurrentDiagActions = m;
    if (ALoad) {
        if (AByTab)
            m->LoadDiagramEx(AName, ATabName);
        else
            m->LoadDiagram(QString());
        // A diagram loaded for the host starts with nothing to undo, and unchanged.
        if (m->DiagContr) {
            m->DiagContr->UndoStack()->clear();
            m->DiagContr->UndoStack()->setClean();
        }
    }
    m->SetDesignMode(ADesignMode);
    return m;
}

} // namespace

void CreateDiagActionsList(QObject* AOwner, TDataSet* ADataStore, const QString& AModuleName,
                           const QString& AFieldSuffix) {
    if (State().DiagActionsList)
        return;
    State().DiagActionsList = std::make_unique<TDiagActionsList>(AOwner, ADataStore, AModuleName);
    State().DiagActionsList->SetConflictCheck(State().ConflictCheck);
    State().DiagActionsList->SetOnConflictResolved(
        [](TdmDiagActions* Module, TConflictChoice Choice, const QString& CopyName) {
            emit DiagStorageEvents()->ConflictResolved(Module->GetName(), int(Choice), CopyName);
        });
    State().DiagActionsList->SetOnLiveReload(
        [](TdmDiagActions* Module) {
            emit DiagStorageEvents()->ChangedElsewhere(Module->GetName());
        },
        [](TdmDiagActions* Module) { emit DiagStorageEvents()->Reloaded(Module->GetName()); });
    State().DiagActionsList->SetLiveReload(State().LiveReload);
    // Kept beside the table storage, which names its data column by it.
    SetDataFieldSuffix(AFieldSuffix);
}

void FreeDiagActionsList() {
    State().DiagActionsList.reset();
}

TdmDiagActions* CreateDiagActions(const QString& AName, QWidget* AParent, TCanvas* ACanvas) {
    TDiagActionsList* list = State().DiagActionsList.get();
    return list ? list->CreateDiagActions(AName, AParent, ACanvas) : nullptr;
}

TdmDiagActions* CreateAndLoadDiagActions(const QString& AName, QWidget* AParent, TCanvas* ACanvas,
                                         bool ADesignMode) {
    return CreateAndLoad(AName, QString(), AParent, ACanvas, ADesignMode, true, false);
}

TdmDiagActions* CreateAndLoadDiagActionsEx(const QString& AName, const QString& ATabName,
                                           QWidget* AParent, TCanvas* ACanvas, bool ADesignMode,
                                           bool ALoad) {
    return CreateAndLoad(AName, ATabName, AParent, ACanvas, ADesignMode, ALoad, true);
}

void ClearDiagActionsDiagram(bool AOnlySizeAndPos) {
    if (TdmDiagActions* m = CurrentWithContainer())
        m->DiagContr->Clear(AOnlySizeAndPos);
}

void SaveDiagActionsDiagrams(const QString& AName) {
    TDiagActionsList* list = State().DiagActionsList.get();
    if (!list)
        return;
    // A table module not marked as to be saved writes nothing: its changes stay unsaved.
    std::vector<bool> writes(size_t(std::max(0, list->Count())), false);
    for (int i = 0; i < list->Count(); ++i) {
        TdmDiagActions* m = list->Objects(i);
        const bool table = dynamic_cast<TdmTableDiagActions*>(m) != nullptr;
        writes[size_t(i)] = m && (!table || m->GetUseDefaultSaveLoadProc() || m->GetNeedSave());
    }
    list->SaveDiagActions(AName);
    // What was saved is the state a host asks about for unsaved changes.
    auto markClean = [list, &writes](int Index) {
        TdmDiagActions* m = list->Objects(Index);
        if (m && m->DiagContr && Index < int(writes.size()) && writes[size_t(Index)])
            m->DiagContr->UndoStack()->setClean();
    };
    int index = 0;
    if (AName.isEmpty()) {
        for (int i = 0; i < list->Count(); ++i)
            markClean(i);
    } else if (list->Find(AName, index)) {
        markClean(index);
    }
}

void EnableDesignMode(bool AEnable, bool AForAll) {
    if (AForAll) {
        if (TDiagActionsList* list = State().DiagActionsList.get())
            list->EnableDesignMode(AEnable);
        return;
    }
    if (TdmDiagActions* m = CurrentWithContainer()) {
        if (AEnable)
            m->FNeedSave = true;
        m->DiagContr->SetDesignMode(AEnable);
    }
}

bool IsDesignModeEnabled() {
    TdmDiagActions* m = CurrentWithContainer();
    return m && m->DiagContr->GetDesignMode();
}

void SaveDiagramToFile() {
    if (TdmDiagActions* m = CurrentWithContainer())
        m->SaveDiagramToFile();
}

void LoadDiagramFromFile() {
    if (TdmDiagActions* m = CurrentWithContainer())
        m->LoadDiagramFromFile();
}

QWidget* GetCurrentNodeControl() {
    TdmDiagActions* m = State().CurrentDiagActions.data();
    return m ? m->GetCurrentNodeControl() : nullptr;
}

void SetConflictCheck(bool AEnable) {
    State().ConflictCheck = AEnable;
    if (TDiagActionsList* list = State().DiagActionsList.get())
        list->SetConflictCheck(AEnable);
}

bool GetConflictCheck() {
    return State().ConflictCheck;
}

void SetLiveReload(bool AEnable) {
    State().LiveReload = AEnable;
    if (TDiagActionsList* list = State().DiagActionsList.get())
        list->SetLiveReload(AEnable);
}

bool GetLiveReload() {
    return State().LiveReload;
}

namespace {

TdmDiagActions* ModuleNamed(const QString& AName) {
    TDiagActionsList* list = State().DiagActionsList.get();
    int index = 0;
    if (!list || AName.isEmpty() || !list->Find(AName, index))
        return nullptr;
    TdmDiagActions* m = list->Objects(index);
    return m && m->DiagContr ? m : nullptr;
}

} // namespace

void ReloadChangedDiagram(const QString& AName) {
    if (TdmDiagActions* m = ModuleNamed(AName))
        m->ReloadChangedDiagram();
}

void KeepMyDiagram(const QString& AName) {
    if (TdmDiagActions* m = ModuleNamed(AName))
        m->KeepMine();
}

TDiagStorageEvents* DiagStorageEvents() {
    static TDiagStorageEvents events;
    return &events;
}

TDiagActionsList* GetDiagActionsList() {
    return State().DiagActionsList.get();
}

TdmDiagActions* GetCurrentDiagActions() {
    return State().CurrentDiagActions.data();
}

} // namespace vde
