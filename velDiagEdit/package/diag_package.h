#pragma once
// The package's functions for a host: one list of diagrams by name, one diagram per host panel,
// design mode, saving, and the file dialogs of the diagram made last. A host calls
// CreateDiagActionsList once, CreateAndLoadDiagActions (or ...Ex) per panel, the design-mode and
// file functions as the user asks, SaveDiagActionsDiagrams("") before closing and
// FreeDiagActionsList at the end. Every function does nothing (or gives nullptr / false) without
// a list or without a current diagram.
//
// Errors reach the host as typed exceptions (platform/errors.h):
//  - CreateDiagActions, CreateAndLoadDiagActions(Ex): EComponentError for a name that is not a
//    valid component name or that the owner already has (nothing is added);
//  - CreateAndLoadDiagActions(Ex), LoadDiagramFromFile: EFOpenError for a file that cannot be
//    opened, EReadError (EFormatError) for a malformed diagram; the open diagram stays as it was;
//  - SaveDiagActionsDiagrams, SaveDiagramToFile: EFCreateError / EWriteError for a file that
//    cannot be written.
// The diagrams' own menus never raise: they show such errors to the user.
//
// All of it runs on the GUI thread; the state here is not guarded.

#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/commands/diag_actions_list.h"
#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QObject>
#include <QString>
#include <QWidget>

namespace vde {

class TCanvas;
class TDataSet;

// Makes the list unless one exists (then nothing changes, not even the suffix). With a dataset
// and a module name the diagrams are kept in that table, in the blob field "BinData_" +
// AFieldSuffix ("BinData" for an empty suffix); with no dataset, in files beside the program.
VELDIAGEDIT_EXPORT void CreateDiagActionsList(QObject* AOwner, TDataSet* ADataStore = nullptr,
                                              const QString& AModuleName = QString(),
                                              const QString& AFieldSuffix = QString());
// Frees the list and every diagram on it.
VELDIAGEDIT_EXPORT void FreeDiagActionsList();
// The list's module for AName, made with its surface on AParent when new; no loading, no design
// mode, the current diagram stays.
VELDIAGEDIT_EXPORT TdmDiagActions* CreateDiagActions(const QString& AName, QWidget* AParent,
                                                     TCanvas* ACanvas);
// Every diagram out of design mode, then the module for AName (found or made) becomes the
// current one, loads its diagram and gets ADesignMode.
VELDIAGEDIT_EXPORT TdmDiagActions* CreateAndLoadDiagActions(const QString& AName, QWidget* AParent,
                                                            TCanvas* ACanvas, bool ADesignMode);
// As CreateAndLoadDiagActions, loading only when ALoad is set (a table storage by AName and
// ATabName); the design mode is set in both cases.
VELDIAGEDIT_EXPORT TdmDiagActions* CreateAndLoadDiagActionsEx(const QString& AName,
                                                              const QString& ATabName,
                                                              QWidget* AParent, TCanvas* ACanvas,
                                                              bool ADesignMode, bool ALoad);
// Clears the current diagram (see TDiagContainer::Clear).
VELDIAGEDIT_EXPORT void ClearDiagActionsDiagram(bool AOnlySizeAndPos);
// Saves the diagram AName, or every diagram for an empty name; an unknown name saves nothing.
VELDIAGEDIT_EXPORT void SaveDiagActionsDiagrams(const QString& AName);
// For all diagrams, or for the current one (switching it on marks it as to be saved).
VELDIAGEDIT_EXPORT void EnableDesignMode(bool AEnable, bool AForAll);
VELDIAGEDIT_EXPORT bool IsDesignModeEnabled();
// The current diagram through its save and open dialogs.
VELDIAGEDIT_EXPORT void SaveDiagramToFile();
VELDIAGEDIT_EXPORT void LoadDiagramFromFile();
// The control that carries the move/resize handles on the current diagram's panel.
VELDIAGEDIT_EXPORT QWidget* GetCurrentNodeControl();

// Undo and redo on the current diagram: the step back or forward that its undo stack offers
// (TDiagContainer::UndoStack). Nothing happens, and the answers are false, without a list, a
// current diagram or a step to take.
VELDIAGEDIT_EXPORT void UndoDiagram();
VELDIAGEDIT_EXPORT void RedoDiagram();
VELDIAGEDIT_EXPORT bool CanUndoDiagram();
VELDIAGEDIT_EXPORT bool CanRedoDiagram();

// Several users of one stored diagram. On, every diagram of the list (and of lists made later)
// is saved only over the version it loaded or saved last; when someone else saved in between,
// the user is asked (Overwrite / Reload / Save as copy) through the dialog service, and without
// one the save raises EDiagramConflict. See TdmDiagActions::SetConflictCheck. Off (the default):
// the last save wins. DiagStorageEvents() (package/diag_storage_events.h) reports the answers.
VELDIAGEDIT_EXPORT void SetConflictCheck(bool AEnable);
VELDIAGEDIT_EXPORT bool GetConflictCheck();

// Live reload. On, every diagram of the list (and of lists made later) watches where it is
// stored: a save by someone else reloads a diagram that has no unsaved change at once (keeping
// the view and the selection), and for one with unsaved changes DiagStorageEvents() sends
// ChangedElsewhere instead. See TdmDiagActions::SetLiveReload. Off (the default): nothing is
// watched or listened to.
VELDIAGEDIT_EXPORT void SetLiveReload(bool AEnable);
VELDIAGEDIT_EXPORT bool GetLiveReload();
// The answers to ChangedElsewhere for the diagram AName: load the stored one (this diagram and
// its undo steps go), or keep this one (with the conflict check on, its next save is then a
// conflict). An unknown name does nothing; the reload raises what a load raises.
VELDIAGEDIT_EXPORT void ReloadChangedDiagram(const QString& AName);
VELDIAGEDIT_EXPORT void KeepMyDiagram(const QString& AName);

// The state the functions above share.
VELDIAGEDIT_EXPORT TDiagActionsList* GetDiagActionsList();
// The module of the last create-and-load call; none once it is freed.
VELDIAGEDIT_EXPORT TdmDiagActions* GetCurrentDiagActions();
// GetDataFieldSuffix() is declared with the table storage (commands/table_diag_actions.h).

} // namespace vde
