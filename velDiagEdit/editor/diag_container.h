#pragma once
// The diagram surface: turns a host widget (the parent) into an editor of blocks and the
// connections between them. It owns the block list, the connection list and the list of the
// parent's own child widgets, paints the connections on top of the parent after the parent has
// painted itself, and in design mode takes the mouse events of the parent and of every block:
// selection of blocks, markers and segments, Shift-drag to move or resize a block, and the two
// context menus that the command module supplies.
//
// Ownership: the three lists belong to the container and go with it (connections first). The
// parent, the canvas, the move/resize module and the menus are only referred to. Blocks are
// owned by the block list; the selected block is watched, so a block freed by any path reads as
// none afterwards.
// Loading a whole diagram (stream, file, record) keeps the ObjList and ConList objects and
// replaces their contents, so a host's pointers to the lists stay valid across a load; pointers
// to the blocks and connections of the diagram that was open do not.

#include "velDiagEdit/blocks/control_list.h"
#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/editor/undo_stack.h"
#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/handles/move_resize.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/menus.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QString>
#include <QWidget>
#include <memory>
#include <utility>
#include <vector>

class QMimeData;

namespace vde {

struct TDirectEditing;
class TDiagSimulator;

// Wire colours of the live view of a simulation.
constexpr TColor kLiveOneColor = 0x1E1EDC;  // a net at 1 (red)
constexpr TColor kLiveZeroColor = 0xA05000; // a net at 0 (blue)

// Drag state of a block (FResizeMode).
constexpr int32_t kDragNone = 0, kDragMove = 1, kDragResize = 2;
// A Shift-press closer than this (Chebyshev, screen pixels) to a block's bottom-right corner
// resizes; farther away it moves.
constexpr int kResizeZone = 15;
// Width and height never go below this while a block is resized by dragging.
constexpr int kMinBlockSize = 50;
// How close a click must come to a marker to pick it (the block looks within 10 pixels anyway).
constexpr double kMarkerPickDistance = 8.0;
// The first four bytes of a container stream.
constexpr uint32_t kContainerSignature = 0x98F35D4Eu;

class VELDIAGEDIT_EXPORT TDiagContainer : public QObject {
    // The texts the surface shows (prompts, messages, undo step names) are translated in the
    // context "vde::TDiagContainer"; see platform/translations.h.
    Q_OBJECT
public:
    // Without a canvas the container has no block or connection list: it only keeps the
    // parent's own child widgets under move/resize control and their bounds.
    TDiagContainer(QWidget* AParent, TCanvas* ACanvas, TdmMoveResize* AMoveResize);
    ~TDiagContainer() override;
    TDiagContainer(const TDiagContainer&) = delete;
    TDiagContainer& operator=(const TDiagContainer&) = delete;

    // ---- core and lifecycle
    // false: frees all blocks and connections. Both: forgets the foreign controls and the
    // selected segment and repaints; the selected block is not touched (it reads as none once
    // its block is gone).
    void Clear(bool OnlySizeAndPos);
    void Refresh();
    void AssignPaintEvent();
    void AssignControlEventsForParent();
    void AssignControlEventsForChildren(bool Clear);
    void AssignContextMenus(TPopupMenu* ConnectionsMenu, TPopupMenu* ObjectsMenu);
    void PaintEvent(QObject* Sender);
    void AssignObjEvents(QObject* Obj);
    void AssignObjEventsEx(QObject* Obj, bool Clear);
    void AssignObjEventsForDesignMode(QObject* Obj);
    void CreateDiagObEvent(QObject* Sender);
    void OnModifyBounds(QObject* Sender);
    QWidget* GetCurrentNodeControl() const;
    void ResolveObjLinks(TDiagConnection* Obj);

    // ---- persistence
    void SaveToStream(TStream& Stream);
    void LoadFromStream(TStream& Stream);
    void SaveInfoToStream(TStream& Stream);
    void LoadInfoFromStream(TStream& Stream);
    void SaveDiagramToFile(const QString& FileName);
    void LoadDiagramFromFile(const QString& FileName);
    void SaveDefaultDiagramFile();
    void LoadDefaultDiagramFile();
    void SaveDiagramToText(const QString& FileName);
    void LoadDiagramFromText(const QString& FileName);

    // ---- mouse and design mode
    bool GetDesignMode() const { return FDesignMode; }
    void SetDesignMode(bool Value);
    void DiagMouseDown(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void DiagMouseMove(QObject* Sender, TShiftState Shift, int X, int Y);
    void DiagMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void MoveDiagObj(QObject* Sender);
    void ParentMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void SelectBestSegment(TPoint P);
    TDiagObject* CreateObjectAtMousePos(TDiagObjectType ObjType);
    TDiagObject* CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R);

    // ---- editing commands: segments
    void DeleteCurSegment();
    void AlignCurSegment();
    void EndConnectionWithCross();
    void EndDiagConnection();
    void ShowSegmentRect();
    void ShowSegmentIndex();
    void EditSegmentOfConnection();
    void EndConnectionWithSegment();
    // ---- editing commands: building connections
    bool AddDiagConnection(int Size, bool DoRefresh);
    // Declared with a result that is never set; callers must not use it.
    bool AddDiagConnections(int Size, bool DoRefresh);
    void AddSegmentToConnection();
    // ---- editing commands: blocks
    void DelSelectedObject();
    void AlignTitles();
    void ShiftByDelta();
    void SetObjTitle();
    // ---- editing commands: markers
    void ChangeMarkerSize();
    void ChangeMarkerPos();
    void ChangeMarkerType(QObject* Sender);
    // ---- editing commands: texts
    void SetTextValues();
    void SetTextPosValues();
    void SetTextHeights();
    // ---- editing commands: counts and margins
    void SetHorizMargin();
    void SetInputCount();
    void SetOutputCount();

    // ---- undo, redo and keys
    // The diagram's undo stack: one step per user-level change (a command that changed
    // something, a block drag, a block created from the menu, a file loaded from the menu).
    // Hosts add Undo/Redo actions from it; it starts empty and never holds a step that
    // changed nothing.
    TDiagUndoStack* UndoStack() const;
    // The container stream as it is now, and bringing the diagram back to one such stream
    // exactly (blocks whose records did not change are kept).
    QByteArray SaveSnapshot();
    void RestoreSnapshot(const QByteArray& Bytes);
    // How many restores had to load the whole stream (none, unless something is amiss).
    int FullRestoreCount() const;
    // Whether the surface takes this key now: only in design mode, on a surface that is a
    // custom-drawn control. Ctrl+Z undoes, Ctrl+Shift+Z and Ctrl+Y redo, Delete deletes the
    // selected block (or else the selected segment), the arrows move the selected block by 1
    // pixel (10 with Shift), Escape deselects everything.
    bool IsSurfaceKey(int Key, Qt::KeyboardModifiers Modifiers) const;
    // Carries out a surface key; true when it was one.
    bool DiagKeyDown(int Key, Qt::KeyboardModifiers Modifiers);

    // ---- direct editing (diag_container_direct.cpp)
    // Off by default. On, and in design mode, the mouse draws wires from marker to marker,
    // selects (click, rubber band, Ctrl-click) and moves blocks without Shift; see
    // docs/editing.md. Off, every handler behaves as it always has.
    void SetDirectEditing(bool Value);
    bool DirectEditing() const { return FDirectOn; }
    // Moves, resizes and free wire ends snap to this many pixels in direct editing; 0 = none.
    void SetGridSize(int Value);
    int GridSize() const { return FGridSize; }
    // The rectangle holding every block (with its markers) and every wire, in the parent's
    // coordinates; empty for an empty diagram.
    QRect DiagramRect() const;
    // The blocks shown as selected, in list order (direct editing may select several).
    std::vector<TDiagObject*> SelectedBlocks() const;
    // The wires a rubber band selected, in list order.
    std::vector<TDiagConnection*> SelectedWires() const;
    void SelectAll();
    // Shows exactly Blocks as selected, with Current (or null) the block the commands act on, as a
    // host restores a view; selectionChanged follows if that differs.
    void SetSelectedBlocks(const std::vector<TDiagObject*>& Blocks, TDiagObject* Current);
    // What the mouse would do where it last was (also sent with hintChanged).
    QString Hint() const { return FHint; }
    // Pixels kept free right of and below the diagram when the surface grows to hold it.
    static constexpr int kSurfaceMargin = 40;

    // ---- zoom (diag_container_zoom.cpp)
    // 1 (100%) by default, held within kMinZoom..kMaxZoom. While direct editing is on, the
    // surface shows the diagram at this zoom: painting, hit tests, handles, previews and the
    // grid follow it, the surface is sized to the diagram plus the margin times the zoom, and
    // Ctrl+wheel, Ctrl++, Ctrl+- and Ctrl+0 step it around the mouse. The model, its streams
    // and files keep unscaled pixels. Direct editing off, the surface shows 100% (the classic
    // gestures work in screen pixels) and the zoom comes back with direct editing. The parent's
    // own child widgets are not zoomed.
    static constexpr double kMinZoom = 0.25;
    static constexpr double kMaxZoom = 4.0;
    // Keeps the middle of the visible part of the surface in place.
    void SetZoom(double Value);
    double Zoom() const { return FZoom; }
    // Zooms keeping the diagram point under Anchor (the surface's pixels) under it, by
    // scrolling the QAbstractScrollArea whose viewport holds the surface, if there is one.
    void ZoomAround(double Value, QPoint Anchor);
    // One step (25, 33, 50, 67, 75, 100, 125, 150, 200, 300, 400%) in or out, around the
    // mouse when it is over the surface, else around the middle of what shows.
    void ZoomIn();
    void ZoomOut();
    double NextZoomStep(int Direction) const;

    // ---- clipboard of direct editing (diag_container_clipboard.cpp)
    // The selected blocks travel with the wires whose ends are on them or on such wires, as a
    // container stream under this MIME type, with a PNG and an SVG picture beside it. Ctrl+C,
    // Ctrl+X and Ctrl+V do the same on the surface in direct editing; a host's Edit menu calls
    // these with direct editing on or off.
    static constexpr const char* kClipboardMimeType = "application/x-veldiagedit-diagram";
    // The container stream of the selection (the blocks keep their keys in it); empty when no
    // block is selected.
    QByteArray SelectionBytes();
    // What the clipboard gets from a copy: the stream and the two pictures; null when no block
    // is selected. The caller owns it.
    QMimeData* SelectionMimeData();
    // False when no block is selected.
    bool CopySelection();
    // Copies, then deletes the selection as Delete does: one undo step. Cut and paste change
    // the diagram in design mode only (false otherwise).
    bool CutSelection();
    // Pastes what the clipboard holds under kClipboardMimeType; a stream that fails the
    // loader's checks changes nothing and its error goes to the dialog service. False when
    // nothing was pasted.
    bool PasteClipboard();
    bool CanPaste() const;
    // Pastes a stream: with At, its top-left corner lands there (on the grid); without, in
    // place, or one grid step (16 pixels without a grid) further for each repeated paste. New
    // keys, the wires re-attached to the new blocks, the pasted items selected; one undo step.
    // A bad stream raises its typed error (EReadError, EFormatError) and changes nothing.
    void PasteBytes(const QByteArray& Bytes, const QPoint* At = nullptr);

Q_SIGNALS:
    // Anything in the diagram changed: a step, an undo or redo, a load.
    void diagramChanged();
    void selectionChanged();
    void extentChanged(QRect Rect);
    void hintChanged(QString Hint);
    void designModeChanged(bool On);
    void zoomChanged(double Zoom);

public:
    // ---- live view of a simulation
    // Off (null) by default. With a simulator, every wire is drawn in the one-colour while its
    // net is at 1 and in the zero-colour while it is at 0; a selected segment keeps the
    // selection colour and a wire on no net its own. The surface repaints after each step and
    // each reset of the simulator. The simulator must have been made (or rebuilt) from this
    // container's lists, and rebuilt after they change; it is watched, so one that goes away
    // turns the view off. Null turns it off and paints exactly as without it.
    void SetLiveSimulator(const TDiagSimulator* Simulator);
    const TDiagSimulator* LiveSimulator() const;
    void SetLiveColors(TColor One, TColor Zero);
    TColor LiveOneColor() const { return FLiveOne; }
    TColor LiveZeroColor() const { return FLiveZero; }
    // ---- keyboard navigation and reading order
    // Off (the default): Tab and Shift+Tab are not the surface's keys, and move the focus on as
    // in any form. On, in design mode they select the next and the previous block in reading
    // order (the first or the last when none is selected, round from the last to the first).
    void SetTabSelectsBlocks(bool Value) { FTabSelectsBlocks = Value; }
    bool GetTabSelectsBlocks() const { return FTabSelectsBlocks; }
    // The blocks as they are read: by their top edge, then by their left edge, then as listed.
    std::vector<TDiagObject*> BlocksInReadingOrder() const;

    // ---- palette
    // Off (the default): blocks and wires are drawn in their own colours, whatever the palette.
    // On: the library's default colours are taken from the parent's palette roles, so that
    // text and wires read at 4.5:1 or better on a light and on a dark palette alike (see
    // PaletteColor in platform/colors.h); colours a host gave a block stay as given.
    void SetFollowPalette(bool Value);
    bool GetFollowPalette() const;

    // ---- properties
    QWidget* GetParent() const { return FParent.data(); }
    LongRec GetSelectedInfo() const { return SelInfo; }
    TCanvas* GetCanvas() const { return FCanvas; }

    // ---- fields, reached directly by the command module and the tests
    QPointer<TPopupMenu> pmConnections;
    QPointer<TPopupMenu> pmObjects;
    std::unique_ptr<TDiagObjectList> ObjList;
    std::unique_ptr<TDiagConnectList> ConList;
    std::unique_ptr<TControlList> CntList;
    // Watched: becomes none when its block is freed, whoever frees it.
    QPointer<TDiagObject> SelObj;
    LongRec SelInfo;
    QPointer<QWidget> FParent;
    TCanvas* FCanvas = nullptr;
    QPointer<TdmMoveResize> dmMoveResize;
    TPoint FOldPos;
    TPoint FClickPoint;
    bool FDesignMode = false;
    // Kept for the interface; the container itself never reads or writes it.
    bool FEnableMoveResize = false;
    int32_t FResizeMode = kDragNone;

protected:
    // Chebyshev distance, in screen pixels, from the cursor to the control's bottom-right corner
    // (top-left with BottomRight false).
    int CornerDistance(TGraphicControl* Control, bool BottomRight) const;
    static bool IsShiftDown();

private:
    // Sets the parent's paint handler by name; false when the parent publishes no such event.
    static bool SetPublishedMethod(QWidget* Instance, const QString& PropName,
                                   std::function<void()> Method);
    void SetParentMouseUp(bool Hook);
    TDiagObject* BlockOf(QObject* Sender) const;
    // The handlers this container puts on its parent, as named types so that the destructor can
    // tell its own from another container's (std::function has no equality, but a target of a
    // known type can be read back).
    struct TParentPaintThunk {
        TDiagContainer* Self;
        QWidget* Parent;
        void operator()() const { Self->PaintEvent(Parent); }
    };
    struct TParentMouseUpThunk {
        TDiagContainer* Self;
        void operator()(QObject* Sender, TMouseButton Button, TShiftState Shift, int X,
                        int Y) const {
            Self->ParentMouseUp(Sender, Button, Shift, X, Y);
            Self->NoteSelection();
        }
    };
    // Set while this container's paint handler is hooked on the parent.
    bool FPaintHooked = false;
    bool FMouseUpHooked = false;
    bool FFollowsPalette = false;
    bool FTabSelectsBlocks = false;
    // Selects the block Step places further in reading order (Tab: 1, Shift+Tab: -1).
    void SelectBlockInReadingOrder(int Step);

    // ---- undo, redo and keys
    void InitUndo();
    void RestoreLooseEnds(TMemoryStream& Bytes);
    bool RestoreChangedBlocks(TMemoryStream& S);
    // A block drag is one step from the press to the release; it records the block's record,
    // those of its wires and the selection, before and after, not the whole diagram.
    friend class TDragStep;
    struct TDragState {
        int Block = -1;
        QByteArray Record;
        std::vector<std::pair<int, QByteArray>> Wires; // list index, record
        QByteArray Info;
        // Every wire with a selected segment (list index, segment): a click changes them without
        // a step of its own, anywhere in the diagram.
        std::vector<std::pair<int, int32_t>> Selected;
        bool operator==(const TDragState&) const = default;
    };
    void BeginDragStep(TDiagObject* Block);
    void EndDragStep();
    bool FitsDragState(int Block, const std::vector<int>& Wires) const;
    TDragState ReadDragState(int Block, const std::vector<int>& Wires);
    void ApplyDragState(const TDragState& S);
    QByteArray InfoBytes();
    // The selected block: SelObj while it is selected and in the list.
    TDiagObject* SelectedBlock() const;
    void MoveSelectedBlockBy(int DX, int DY);
    void DeleteSelection();
    void DeselectEverything();
    void UpdateSurfaceFocus();
    std::unique_ptr<TDiagUndoStack> FUndoStack;
    std::unique_ptr<QObject> FKeyFilter;
    std::unique_ptr<TDragState> FDragBefore;
    QString FDragText;
    Qt::FocusPolicy FSavedFocusPolicy = Qt::NoFocus;
    bool FFocusPolicySaved = false;
    int FFullRestores = 0;

    // ---- direct editing and the signals (diag_container_direct.cpp)
    friend struct TDirectEditing;
    bool DirectActive() const { return FDirectOn && FDesignMode && ObjList && ConList; }
    void DirectMouseDown(TMouseButton Button, TShiftState Shift, TPoint P, TDiagObject* On);
    void DirectMouseMove(TShiftState Shift, TPoint P);
    void DirectMouseUp(TMouseButton Button, TShiftState Shift, TPoint P, TDiagObject* On);
    bool IsDirectKey(int Key, Qt::KeyboardModifiers Modifiers) const;
    bool DirectKeyDown(int Key, Qt::KeyboardModifiers Modifiers);
    void PaintDirect();
    void HookParentForDirect();
    void ClassicHint(TDiagObject* Block, int X, int Y);
    void SetHint(const QString& Text);
    // Emits selectionChanged when the selection differs from the one last seen.
    void NoteSelection();
    // Emits diagramChanged, and extentChanged when the diagram's rectangle moved.
    void NoteDiagramChanged();
    // ---- zoom and autoscroll (diag_container_zoom.cpp)
    struct TZoomState;
    double SurfaceScale() const;
    QPoint ZoomAnchor() const;
    void ZoomDirectChanged();
    void ApplyZoom();
    // What the surface must be to hold R and the margin, at the zoom shown.
    QSize SurfaceNeed(const QRect& R) const;
    // Grows the surface (never shrinks it) to hold R and the margin.
    void GrowSurface(const QRect& R);
    // Sizes the surface for the zoom shown.
    void FitSurface();
    // Repaints R (diagram pixels) of the surface.
    void UpdateSurface(const QRect& R);
    void UpdateSurface(const QRegion& R);
    TPoint SurfaceToScreen(TPoint P) const;
    static bool IsZoomKey(int Key, Qt::KeyboardModifiers Modifiers);
    bool ZoomKeyDown(int Key, Qt::KeyboardModifiers Modifiers);
    void NoteMouseForZoom(TShiftState Shift, TPoint P);
    void AutoScrollTick();
    std::unique_ptr<TZoomState> FZoomState;
    double FZoom = 1.0;

    // Enables only the items of a context menu that apply to what is selected now (direct
    // editing); the classic gestures leave the menus alone.
    void PrepareDirectMenu(TPopupMenu* Menu);
    void EnableDisabledMenuItems();
    // The mouse left the surface: hover's highlight and hint go.
    void WatchLeave(bool On);
    void DirectMouseLeft();
    std::unique_ptr<QObject> FLeaveWatch;
    // Moves checked blocks and wires of a paste into the diagram, DX, DY further.
    void PlacePasted(TDiagObjectList& Blocks, TDiagConnectList& Wires, int DX, int DY);
    std::vector<QPointer<TMenuItem>> FMenuDisabled;
    // The last stream copied or pasted here, and how many times it was pasted since.
    size_t FPasteHash = 0;
    int FPasteCount = 0;
    std::unique_ptr<TDirectEditing> FDirect;
    bool FDirectOn = false;
    bool FParentDirectHooked = false;
    bool FSavedTracking = false;
    QString FSavedToolTip;
    int FGridSize = 0;
    QString FHint;
    QRect FLastExtent;
    quint64 FSelectionSeen = 0;
    // ---- live view
    void UpdateLiveView();
    QPointer<const TDiagSimulator> FLive;
    std::vector<QMetaObject::Connection> FLiveConnections;
    TColor FLiveOne = kLiveOneColor;
    TColor FLiveZero = kLiveZeroColor;
};

} // namespace vde
