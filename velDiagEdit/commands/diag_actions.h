#pragma once
// The command module of one diagram: it owns the diagram surface (TDiagContainer) on a host
// panel and the move/resize handles, holds the two context menus the surface pops up and the
// open/save dialogs, and forwards every menu command to the surface. It also saves and loads the
// diagram by name beside the host program and through the file dialogs.
//
// Ownership: the module is a component of the owner given to the constructor, which frees it
// when it goes (unless it was freed before). The module owns its menus, their items, the
// move/resize module and the container; the container goes first, in DataModuleDestroy.
//
// Errors: the operations a host calls (SaveDiagram, LoadDiagram, SaveDiagramToFile, ...) raise
// the platform's typed errors (EStreamError and its kinds for files that cannot be created or
// opened, EReadError for a malformed diagram, EComponentError for a bad name,
// EInvalidOperation when there is no container). The menu handlers never let an error out: a
// file command shows the file name and the reason in one error message and the open diagram
// stays as it was; any other command's error is shown by the menus' event boundary.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/handles/move_resize.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/menus.h"
#include "velDiagEdit/platform/stored_bytes.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

namespace vde {

class TCanvas;

class VELDIAGEDIT_EXPORT TdmDiagActions : public QObject {
    Q_OBJECT
public:
    // Builds the menus and dialogs and the move/resize module; no container yet. The module is
    // listed as a component of AOwner (may be null).
    explicit TdmDiagActions(QObject* AOwner);
    ~TdmDiagActions() override;
    TdmDiagActions(const TdmDiagActions&) = delete;
    TdmDiagActions& operator=(const TdmDiagActions&) = delete;

    QObject* Owner() const { return FOwner.data(); }
    // The component name: a valid identifier unique among the owner's components (or empty);
    // anything else raises EComponentError and the name stays as it was.
    QString GetName() const { return objectName(); }
    void SetName(const QString& Value);

    // ---- the surface
    // A container on AParent drawing its wires with ACanvas (none: a container of the parent's
    // own widgets only), with this module's move/resize handles; then LinkEvents. A container
    // made before is freed first.
    void CreateContainer(QWidget* AParent, TCanvas* ACanvas);
    void FreeContainer();
    // With a container that has a canvas: hands it the two menus and fills the submenus.
    void LinkEvents();
    void UnlinkEvents();
    // Link 0 on a submenu already filled unbinds its items; see the definition.
    void FillCreateMenu(int Link);
    void FillMarkerMenu(int Link);

    // Design mode of the container; switching it on marks the diagram as to be saved.
    void SetDesignMode(bool Value);
    bool GetDesignMode() const;
    // The control that carries the move/resize handles now; none without a container.
    QWidget* GetCurrentNodeControl() const;
    bool GetUseDefaultSaveLoadProc() const { return FUseDefaultSaveLoadProc; }
    void SetUseDefaultSaveLoadProc(bool Value) { FUseDefaultSaveLoadProc = Value; }
    bool GetNeedSave() const { return FNeedSave; }

    // Kept for hosts: creates a block of the kind in Sender's Tag at the last click point. The
    // filled menu items call the container's own handler instead.
    void CreateDiagObEvent(QObject* Sender);
    // Kept for hosts; not bound to anything by this module: selects the segment nearest (X, Y).
    void ParentMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);

    // ---- storage
    // By name, as <host program directory>/<name>.dgm; an empty name means this module's name.
    // Saving always writes; loading skips a missing file without a word. A storage of another
    // kind (a table) overrides both; every caller goes through these two. Both remember the
    // fingerprint of the bytes they moved (see GetStoredFingerprint).
    virtual void SaveDiagram(const QString& AName);
    virtual void LoadDiagram(const QString& AName);
    // Loading for a host window that names a tab as well: here LoadDiagram(""); a table storage
    // overrides it to find the record by AName and ATabName.
    virtual void LoadDiagramEx(const QString& AName, const QString& ATabName);
    // The file SaveDiagram and LoadDiagram use for AName.
    // EInvalidOperation for a name holding a path separator or NUL, or "." or "..".
    QString DiagramFileName(const QString& AName) const;

    // ---- several users of one stored diagram
    // Off (the default), a save writes whatever is stored: the last save wins. On, a save
    // writes only while the stored diagram is still the one this module last loaded or saved
    // there (by fingerprint), compared in the same transaction as the write, or just before the
    // file is replaced; a diagram never stored there expects nothing stored. When someone else
    // changed or removed it, nothing is written and the dialog service in force is asked
    // (AskSaveConflict): Overwrite stores this diagram anyway, Reload drops it and loads the
    // stored one (its undo steps go with it), Save as copy stores it under the first free name
    // <name>_copy<N> and leaves the stored one as it is. Cancel, or no dialog service at all,
    // raises EDiagramConflict and the diagram stays to be saved.
    void SetConflictCheck(bool Value) { FConflictCheck = Value; }
    bool GetConflictCheck() const { return FConflictCheck; }
    // The fingerprint (platform/stored_bytes.h) of the bytes last loaded from or saved to the
    // storage, and the place they belong to (the file, or a record's key values): both empty
    // before the first load or save; an empty fingerprint with a place: nothing was stored
    // there.
    const QString& GetStoredFingerprint() const { return FStoredFingerprint; }
    const QString& GetStoredPlace() const { return FStoredPlace; }
    // After a conflict was answered with anything but Cancel: the answer and, for Save as copy,
    // the name the copy was stored under.
    std::function<void(TdmDiagActions* Module, TConflictChoice Choice, const QString& CopyName)>
        OnConflictResolved;

    // ---- live reload
    // Off (the default): nothing watches the stored diagram. On, the place it was last loaded
    // from or saved to is watched (a file or an SQLite database file through a file system
    // watcher; a PostgreSQL table through the server's notifications, see the table storage),
    // and when what is stored there no longer has the remembered fingerprint, someone else
    // saved it:
    //  - with no unsaved change (the undo stack is at its clean state) the diagram reloads at
    //    once on the same surface, keeping the scroll position of an enclosing scroll area and
    //    the selection of the blocks whose keys are still there; its undo steps go, and
    //    OnReloaded is called;
    //  - with unsaved changes nothing is loaded: OnChangedElsewhere is called, once per stored
    //    version, and the host answers with ReloadChangedDiagram or KeepMine.
    // The module's own saves change the remembered fingerprint first, so they are no news.
    void SetLiveReload(bool Value);
    bool GetLiveReload() const { return FLiveReload; }
    std::function<void(TdmDiagActions* Module)> OnChangedElsewhere;
    std::function<void(TdmDiagActions* Module)> OnReloaded;
    // A change by someone else was reported and not yet answered.
    bool HasChangeElsewhere() const { return FElsewhere.has_value(); }
    // Drops this diagram and its undo steps and loads the stored one, keeping the view as a
    // live reload does. Raises what a load raises; the diagram stays as it was then.
    void ReloadChangedDiagram();
    // Keeps this diagram as it is; the remembered fingerprint stays the loaded one, so with the
    // conflict check on the next save is a conflict. The same stored version is not reported
    // again.
    void KeepMine();
    // Compares the stored fingerprint now, as a watcher event does (after a short delay that
    // gathers the events of one save). Errors are shown as an event's are, never raised.
    void CheckStoredDiagram();

    // Through the save and open dialogs; see the definitions for the names they propose.
    void SaveDiagramToFile();
    void LoadDiagramFromFile();
    // The container's default file: the host program's path with the extension ".dgm".
    void SaveDefaultDiagramFile();
    void LoadDefaultDiagramFile();

    void DataModuleDestroy(QObject* Sender);

    // Makes a menu item named AName under AParent, owned by AParent's owner (or, when that is a
    // menu bar, by the bar's owner), inserted at APos when 0 <= APos <= AParent's count, else
    // appended. Nothing is made (nullptr) when AParent has no owner.
    static TMenuItem* CreateMenuItem(TMenuItem* AParent, const QString& AName,
                                     const QString& ACaption, int APos);

    // ---- menu handlers, one line each
    void mnuAddSegmentClick(QObject* Sender);
    void mnuEditSegmentClick(QObject* Sender);
    void mnuGetSegmentIndexClick(QObject* Sender);
    void mnuGetSegmentRectClick(QObject* Sender);
    void mnuDelSegmentClick(QObject* Sender);
    void mnuAlignSegmentClick(QObject* Sender);
    void mnuEndConnectionClick(QObject* Sender);
    void mnuEndWithCrossClick(QObject* Sender);
    void mnuEndWithSegmentClick(QObject* Sender);
    void mnuChangeConSizeClick(QObject* Sender);
    void mnuChangeConPosClick(QObject* Sender);
    void mnuDeleteClick(QObject* Sender);
    void mnuShiftByClick(QObject* Sender);
    void mnuRefreshClick(QObject* Sender);
    void mnuSetInputCountClick(QObject* Sender);
    void mnuSetOutputCountClick(QObject* Sender);
    void mnuHorizMarginClick(QObject* Sender);
    void mnuSetTitlesClick(QObject* Sender);
    void mnuSetTextSizeClick(QObject* Sender);
    void mnuSetTextPosClick(QObject* Sender);
    void mnuAlignTitlesClick(QObject* Sender);
    void mnuSaveToFileClick(QObject* Sender);
    void mnuLoadFromFileClick(QObject* Sender);
    // An empty command, bound to no item.
    void mnuAddConnectionClick(QObject* Sender);

    // ---- design-time components, in declaration order
    TPopupMenu* pmConnections = nullptr;
    TPopupMenu* pmObjects = nullptr;
    TMenuItem* mnuAddSegment = nullptr;
    TMenuItem* mnuEditSegment = nullptr;
    TMenuItem* mnuGetSegmentIndex = nullptr;
    TMenuItem* mnuGetSegmentRect = nullptr;
    TMenuItem* mnuDelSegment = nullptr;
    TMenuItem* mnuAlignSegment = nullptr;
    TMenuItem* mnuEndConnections = nullptr;
    TMenuItem* mnuEndConnection = nullptr;
    TMenuItem* mnuEndWithCross = nullptr;
    TMenuItem* mnuEndWithSegment = nullptr;
    TMenuItem* mnuConnection = nullptr;
    TMenuItem* mnuChangeConType = nullptr;
    TMenuItem* mnuChangeConSize = nullptr;
    TMenuItem* mnuChangeConPos = nullptr;
    TMenuItem* mnuCreate = nullptr;
    TMenuItem* mnuDelete = nullptr;
    TMenuItem* mnuShiftBy = nullptr;
    TMenuItem* mnuRefresh = nullptr;
    TMenuItem* mnuInputs = nullptr;
    TMenuItem* mnuSetInputCount = nullptr;
    TMenuItem* mnuOutputs = nullptr;
    TMenuItem* mnuSetOutputCount = nullptr;
    TMenuItem* mnuMargins = nullptr;
    TMenuItem* mnuHorizMargin = nullptr;
    TMenuItem* mnuTextParams = nullptr;
    TMenuItem* mnuSetTitles = nullptr;
    TMenuItem* mnuSetTextSize = nullptr;
    TMenuItem* mnuSetTextPos = nullptr;
    TMenuItem* mnuAlignTitles = nullptr;
    TMenuItem* mnuFile = nullptr;
    TMenuItem* mnuSaveToFile = nullptr;
    TMenuItem* mnuLoadFromFile = nullptr;
    TOpenDialog dlgOpen;
    TSaveDialog dlgSave;

    // ---- run-time fields
    QPointer<TdmMoveResize> FMoveResize;
    std::unique_ptr<TDiagContainer> DiagContr;
    // In a table storage, true sends LoadDiagram/SaveDiagram to the file-based versions.
    bool FUseDefaultSaveLoadProc = false;
    // The diagram may have changed and should be written by a table storage.
    bool FNeedSave = false;

protected:
    // One kind of storage as a checked save sees it.
    struct TStorageKind {
        // Where a diagram of that name is kept: a file name, or a record's key values.
        std::function<QString(const QString& AName)> Place;
        // Writes the bytes there when the stored ones still have the fingerprint Expected.
        std::function<TConditionalWrite(const QString& AName, const QByteArray& Bytes,
                                        const QString& Expected)>
            Store;
        // Loads what is stored there, the surface emptied when nothing is.
        std::function<void(const QString& AName)> Reload;
        // The fingerprint of what is stored there now, read without changing anything.
        std::function<QString(const QString& AName)> Fingerprint;
    };
    // The storage the diagram is kept in now; see TStorageKind.
    virtual TStorageKind CurrentStorage();
    // Starts watching the place last loaded from or saved to (live reload on); the file storage
    // watches the file and its folder.
    virtual void WatchStoredPlace();
    // Stops every watch WatchStoredPlace started.
    virtual void StopWatching();
    // A watcher saw something: checks soon, once for a burst of events.
    void StoredPlaceTouched();
    // Watches the files given (those that exist) and the folders they are in.
    void WatchFiles(const QStringList& Files);
    // The file storage beside the host program.
    TStorageKind FileStorage();
    // A save with the check on, through the storage given; see SetConflictCheck.
    void SaveChecked(const QString& AName, const TStorageKind& Storage);
    // AName: the diagram's name as given to the load or save (empty: this module's name).
    void RememberStored(const QString& AName, const QString& Place, const QString& Fingerprint);
    // The container's stream, as stored.
    QByteArray DiagramBytes();
    // Loads stored bytes into the surface; none empties it when AClearWhenEmpty is set, and
    // leaves it as it is otherwise.
    void LoadStoredBytes(const QByteArray& Bytes, bool AClearWhenEmpty);

private:
    void BuildComponents();
    // ACaption: the source text, translated in this class's context (see translations.h).
    TMenuItem* DesignItem(TMenuItem* AParent, const QString& AName, const char* ACaption,
                          void (TdmDiagActions::*Handler)(QObject*));
    TDiagContainer& Container() const;
    // Runs a file command of a menu: an error is shown once, with the file name and the reason.
    void RunFileCommand(void (TdmDiagActions::*Command)(), const QString& Action,
                        const TFileDialog& Dialog);

    // Loads the file for AName, remembering its fingerprint.
    void LoadDiagramFile(const QString& AName, bool AClearWhenMissing);

    QPointer<QObject> FOwner;
    bool FConflictCheck = false;
    QString FStoredFingerprint;
    QString FStoredPlace;
    QString FStoredName;
    bool FLiveReload = false;
    // The stored version last reported through OnChangedElsewhere, and the one kept by
    // KeepMine (an empty fingerprint: removed).
    std::optional<QString> FElsewhere;
    std::optional<QString> FKept;
    std::unique_ptr<QFileSystemWatcher> FWatcher;
    std::unique_ptr<QTimer> FCheckTimer;
    // Set while a reload runs, so that its own events are not taken for news.
    bool FReloading = false;
    int FCheckFailures = 0;
    // CheckStoredDiagram without its error handling.
    void CheckStoredNow();
    void ReloadKeepingView(const TStorageKind& Storage);
};

} // namespace vde
