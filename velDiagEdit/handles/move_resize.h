#pragma once
// Move and resize handles for the host's own widgets. A widget taken under control
// (AssignControlEvents) is dragged around with the mouse; the last one pressed is surrounded by
// eight small black panels, the handles, which resize it when dragged. Everything works by
// re-wiring mouse events: the widgets' and the handles' presses, moves and releases come here.
//
// Positions are always read from the global cursor (InputState().CursorPos()), never from the
// event's X, Y. Edges follow the cursor exactly: there is no drag threshold, no clamping to the
// parent and no minimum size; a width or height that goes negative is handed to
// SetControlBounds as it is (plain Qt then clamps it to zero when it sets the geometry).
//
// Ownership: FNodes owns the handle panels and frees them in DataModuleDestroy. A panel is also
// listed with the owner given to CreateNodes and is a Qt child of the parent given there; if
// either of those goes first and takes the panel with it, the panel leaves FNodes at once, so
// nothing is freed twice. The controls are never owned; the current one is watched, so a control
// deleted while it carries the handles reads as none.

#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/panel.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

namespace vde {

// An object list that owns its panels. A panel destroyed by someone else leaves the list.
class VELDIAGEDIT_EXPORT TNodeList : public QObject {
public:
    TNodeList() = default;
    ~TNodeList() override;
    TNodeList(const TNodeList&) = delete;
    TNodeList& operator=(const TNodeList&) = delete;

    int Count() const { return int(FItems.size()); }
    TPanel* Items(int index) const;
    int IndexOf(const QObject* item) const;
    void Add(TPanel* item);
    // Frees every panel and empties the list.
    void Clear();

private:
    void Remove(const QObject* item);
    std::vector<TPanel*> FItems;
};

class VELDIAGEDIT_EXPORT TdmMoveResize : public QObject {
    Q_OBJECT
public:
    // A data module: owned (and freed) by AOwner when one is given.
    explicit TdmMoveResize(QObject* AOwner = nullptr);
    ~TdmMoveResize() override;

    void DataModuleCreate(QObject* Sender);
    void DataModuleDestroy(QObject* Sender);

    // Makes sure the eight handles `_Node_0` .. `_Node_7` exist: a panel of that name already
    // among AOwner's components is taken over as it is; a component of that name that is not a
    // panel raises EInvalidCast.
    void CreateNodes(QObject* AOwner, QWidget* AParent);
    // Hooks (SetEmpty false) or unhooks (true) the control's mouse events; true exactly when the
    // control is now under move/resize control. A handle, or no control, gives false.
    bool AssignControlEvents(QObject* Control, bool SetEmpty);
    void SetNodesVisible(bool Visible);
    void PositionNodes(QWidget* C);

    void ControlMouseDown(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void ControlMouseMove(QObject* Sender, TShiftState Shift, int X, int Y);
    void ControlMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void NodeMouseDown(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);
    void NodeMouseMove(QObject* Sender, TShiftState Shift, int X, int Y);
    void NodeMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y);

    bool GetEnableMoveResize() const { return FEnableMoveResize; }
    void SetEnableMoveResize(bool value) { FEnableMoveResize = value; }
    // True while a control is being moved (not while a handle is dragged).
    bool GetInResizeMode() const { return inReposition; }
    QWidget* GetCurrentNodeControl() const { return FCurrentNodeControl.data(); }

    // Read-only views of the state, for hosts and tests.
    const TNodeList* Nodes() const { return FNodes.get(); }
    bool NodePositioning() const { return FNodePositioning; }
    TPoint OldPos() const { return oldPos; }

protected:
    // Where a resize sets the control's bounds (left, top, width, height as computed, possibly
    // negative). The default is SetBounds; a host that gives negative sizes a meaning of its own
    // overrides it.
    virtual void SetControlBounds(QWidget* Control, int32_t Left, int32_t Top, int32_t Width,
                                  int32_t Height);

private:
    TMouseHandlers ControlHandlers();
    TMouseHandlers NodeHandlers();

    bool inReposition = false;
    bool FNodePositioning = false;
    TPoint oldPos;
    std::unique_ptr<TNodeList> FNodes;
    QPointer<QWidget> FCurrentNodeControl;
    bool FEnableMoveResize = false;
};

} // namespace vde
