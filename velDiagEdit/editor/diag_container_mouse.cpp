// Mouse handling and design mode of the diagram surface.

#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <algorithm>
#include <cstdlib>

namespace vde {

bool TDiagContainer::IsShiftDown() {
    return (InputState().KeyboardShift() & ssShift) != 0;
}

int TDiagContainer::CornerDistance(TGraphicControl* Control, bool BottomRight) const {
    if (!Control || !Control->parentWidget())
        return 0;
    const TPoint cursor = InputState().CursorPos();
    const TRect r = BoundsRect(Control);
    const TPoint corner = BottomRight ? TPoint{r.Right, r.Bottom} : TPoint{r.Left, r.Top};
    const TPoint s = ClientToScreen(Control->parentWidget(), corner);
    const int64_t dx = std::llabs(int64_t(cursor.X) - s.X);
    const int64_t dy = std::llabs(int64_t(cursor.Y) - s.Y);
    return int(std::min<int64_t>(std::max(dx, dy), INT32_MAX));
}

void TDiagContainer::SetDesignMode(bool Value) {
    const bool changed = FDesignMode != Value;
    FDesignMode = Value;
    // Direct editing lives in design mode only; the signal goes out once all is in place.
    struct TAfter {
        TDiagContainer* Self;
        bool Changed;
        ~TAfter() {
            Self->HookParentForDirect();
            if (Changed)
                Q_EMIT Self->designModeChanged(Self->FDesignMode);
        }
    } after{this, changed};
    if (!IsCustomDrawnControl(FParent))
        return;
    UpdateSurfaceFocus();
    const bool lists = ObjList && ConList;
    const TNotifyEvent bind = [this](QObject* Obj) { AssignObjEventsForDesignMode(Obj); };
    if (Value) {
        if (lists) {
            SetParentMouseUp(true);
            ObjList->AssignObjEvents(bind);
            AssignContextMenus(pmConnections, pmObjects);
        }
        AssignControlEventsForChildren(false);
        return;
    }
    SetParentMouseUp(false);
    SelObj = nullptr;
    SelInfo = LongRec{};
    if (lists) {
        ObjList->DeselectAll(nullptr);
        ConList->DeselectAll(nullptr);
        ObjList->AssignObjEvents(bind);
        AssignContextMenus(pmConnections, pmObjects);
    }
    if (dmMoveResize)
        dmMoveResize->SetNodesVisible(false);
    AssignControlEventsForChildren(true);
    if (FParent)
        FParent->update();
}

void TDiagContainer::DiagMouseDown(QObject* Sender, TMouseButton Button, TShiftState Shift, int X,
                                   int Y) {
    TDiagObject* block = BlockOf(Sender);
    if (DirectActive()) {
        if (block)
            DirectMouseDown(Button, Shift, TPoint{WrapAdd(X, block->x()), WrapAdd(Y, block->y())},
                            block);
        return;
    }
    if (!block || FResizeMode != kDragNone || !IsShiftDown() || !FDesignMode)
        return;
    block->DisablePaint = false;
    FOldPos = InputState().CursorPos();
    const int distance = CornerDistance(block, true);
    FResizeMode = distance < kResizeZone ? kDragResize : kDragMove;
    block->FResizeMode = FResizeMode;
    BeginDragStep(block);
    // The wires are left out while the block is dragged; take them off the screen now.
    if (FParent)
        FParent->update();
}

void TDiagContainer::DiagMouseMove(QObject* Sender, TShiftState Shift, int X, int Y) {
    if (DirectActive()) {
        if (TDiagObject* b = BlockOf(Sender))
            DirectMouseMove(Shift, TPoint{WrapAdd(X, b->x()), WrapAdd(Y, b->y())});
        return;
    }
    if (FResizeMode > kDragNone) {
        MoveDiagObj(Sender);
        return;
    }
    TDiagObject* block = BlockOf(Sender);
    if (!block)
        return;
    if (IsShiftDown() && CornerDistance(block, true) < kResizeZone)
        InputState().SetScreenCursor(crSizeNWSE);
    else
        InputState().SetScreenCursor(crDefault);
}

void TDiagContainer::MoveDiagObj(QObject* Sender) {
    if (FResizeMode <= kDragNone)
        return;
    TDiagObject* block = BlockOf(Sender);
    if (!block)
        return;
    const TPoint P = InputState().CursorPos();
    InputState().SetScreenCursor(FResizeMode == kDragMove ? crSizeAll : crSizeNWSE);
    const int32_t dx = WrapSub(P.X, FOldPos.X);
    const int32_t dy = WrapSub(P.Y, FOldPos.Y);
    if (FResizeMode == kDragResize) {
        block->SetBounds(block->x(), block->y(),
                         std::max(kMinBlockSize, WrapAdd(block->width(), dx)), block->height());
        block->SetBounds(block->x(), block->y(), block->width(),
                         std::max(kMinBlockSize, WrapAdd(block->height(), dy)));
    } else {
        block->SetBounds(WrapAdd(block->x(), dx), block->y(), block->width(), block->height());
        block->SetBounds(block->x(), WrapAdd(block->y(), dy), block->width(), block->height());
    }
    FOldPos = P;
}

void TDiagContainer::DiagMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X,
                                 int Y) {
    TDiagObject* block = BlockOf(Sender);
    if (DirectActive()) {
        if (block)
            DirectMouseUp(Button, Shift, TPoint{WrapAdd(X, block->x()), WrapAdd(Y, block->y())},
                          block);
        return;
    }
    if (FResizeMode != kDragNone) {
        InputState().SetScreenCursor(crDefault);
        FResizeMode = kDragNone;
        if (block) {
            block->DisablePaint = false;
            block->FResizeMode = kDragNone;
            if (ConList)
                ConList->UpdatePath(block);
        }
        if (FParent)
            FParent->update();
        EndDragStep();
        return;
    }
    if (!block || !ObjList || ObjList->IndexOf(block) < 0)
        return;
    SelObj = block;
    const bool wasSelected = block->FSelected;
    const TPoint P{WrapAdd(X, block->x()), WrapAdd(Y, block->y())};
    const int idx = block->SelectNearestMarker(P, false, kMarkerPickDistance);
    switch (Button) {
    case mbLeft:
        if (wasSelected && idx != 0) {
            block->SetSelMarkerIndex(idx);
            return;
        }
        block->SetSelected(!wasSelected);
        if (block->FSelected)
            ObjList->DeselectAll(block);
        return;
    case mbRight: {
        TPopupMenu* menu = (wasSelected && idx != 0) ? pmConnections.data() : pmObjects.data();
        if (!menu)
            return;
        const TPoint s = ClientToScreen(block, TPoint{X, Y});
        menu->Popup(s.X, s.Y);
        return;
    }
    case mbMiddle:
        return;
    }
}

void TDiagContainer::ParentMouseUp(QObject* Sender, TMouseButton Button, TShiftState Shift, int X,
                                   int Y) {
    if (!FCanvas || !ConList)
        return;
    // The direct release of a right click on empty surface comes back here (Sender none).
    if (DirectActive() && Sender) {
        DirectMouseUp(Button, Shift, TPoint{X, Y}, nullptr);
        return;
    }
    FClickPoint = TPoint{X, Y};
    SelectBestSegment(FClickPoint);
    if (Button != mbRight || !FParent)
        return;
    TPopupMenu* menu = SelInfo.Value() != 0 ? pmConnections.data() : pmObjects.data();
    if (!menu)
        return;
    PrepareDirectMenu(menu);
    const TPoint s = SurfaceToScreen(TPoint{X, Y});
    menu->Popup(s.X, s.Y);
}

void TDiagContainer::SelectBestSegment(TPoint P) {
    if (!ConList)
        return;
    const LongRec LR = ConList->FindBestSegment(P, nullptr, true, 0);
    if (LR.Value() != 0) {
        ConList->SelectSegmentByLongRec(LR);
        if (FParent)
            FParent->update();
    }
    SelInfo = LR;
}

} // namespace vde
