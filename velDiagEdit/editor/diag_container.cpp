#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/direct_editing_p.h"
#include "velDiagEdit/editor/zoom_state_p.h"

#include "velDiagEdit/editor/diag_accessible.h"
#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/graphic_host.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QWidget>

namespace vde {

TDiagContainer::TDiagContainer(QWidget* AParent, TCanvas* ACanvas, TdmMoveResize* AMoveResize) {
    FParent = AParent;
    FCanvas = ACanvas;
    if (FCanvas) {
        ConList = std::make_unique<TDiagConnectList>(ACanvas);
        ObjList = std::make_unique<TDiagObjectList>(AParent);
        ObjList->SetParentCanvas(ACanvas);
    }
    AssignPaintEvent();
    CntList = std::make_unique<TControlList>(AParent);
    dmMoveResize = AMoveResize;
    AssignControlEventsForParent();
    InitUndo();
    FDirect = std::make_unique<TDirectEditing>();
    // Every step, undo and redo changes the diagram.
    QObject::connect(FUndoStack.get(), &QUndoStack::indexChanged, this,
                     [this] { NoteDiagramChanged(); });
    if (FParent && FCanvas)
        RegisterDiagSurface(FParent, this);
}

TDiagContainer::~TDiagContainer() {
    // The stack clears itself as it goes, after the parts its signal would reach are gone.
    if (FUndoStack)
        FUndoStack->disconnect(this);
    // A live simulator may outlive the container; its signals must not reach it any more.
    for (const QMetaObject::Connection& c : FLiveConnections)
        QObject::disconnect(c);
    // The handlers on the parent call back into this object; a parent that outlives the
    // container must not call them any more. Only what is still this container's own is taken
    // off: another container on the same parent may have hooked its own since, and it stays.
    if (FParent) {
        if (FPaintHooked) {
            const std::function<void()> paint = GetPaintHandler(FParent);
            const auto* mine = paint.target<TParentPaintThunk>();
            if (mine && mine->Self == this)
                SetPaintHandler(FParent, {});
        }
        if (FParentDirectHooked) {
            TMouseHandlers h = GetMouseHandlers(FParent);
            h.OnMouseDown = {};
            h.OnMouseMove = {};
            SetMouseHandlers(FParent, h);
        }
        if (FMouseUpHooked) {
            const TMouseHandlers h = GetMouseHandlers(FParent);
            const auto* mine = h.OnMouseUp.target<TParentMouseUpThunk>();
            if (mine && mine->Self == this)
                SetParentMouseUp(false);
        }
    }
    if (FParent)
        UnregisterDiagSurface(FParent, this);
    // The parent's paint goes back to the colours as given once its diagram is gone.
    if (FParent && FFollowsPalette)
        if (TGraphicHost* h = TGraphicHost::Find(FParent))
            h->SetFollowPalette(false);
    ConList.reset();
    ObjList.reset();
    CntList.reset();
}

void TDiagContainer::Clear(bool OnlySizeAndPos) {
    if (!OnlySizeAndPos) {
        if (ObjList)
            ObjList->Clear();
        if (ConList)
            ConList->Clear();
    }
    CntList->Clear();
    SelInfo = LongRec{};
    if (FParent)
        FParent->update();
    NoteDiagramChanged();
}

void TDiagContainer::Refresh() {
    if (!FCanvas)
        return;
    if (ObjList)
        ObjList->Refresh();
    if (ConList)
        ConList->Refresh();
    if (FParent)
        FParent->update();
}

bool TDiagContainer::SetPublishedMethod(QWidget* Instance, const QString& PropName,
                                        std::function<void()> Method) {
    // The only event the container sets by name is the parent's paint.
    if (!Instance || PropName != QLatin1String("OnPaint") || !PublishesOnPaint(Instance))
        return false;
    SetPaintHandler(Instance, std::move(Method));
    return true;
}

void TDiagContainer::AssignPaintEvent() {
    if (!FCanvas) {
        SetPublishedMethod(FParent, QStringLiteral("OnPaint"), {});
        FPaintHooked = false;
        return;
    }
    FPaintHooked =
        SetPublishedMethod(FParent, QStringLiteral("OnPaint"), TParentPaintThunk{this, FParent});
}

void TDiagContainer::SetFollowPalette(bool Value) {
    if (!FParent)
        return;
    TGraphicHost::For(FParent)->SetFollowPalette(Value);
    FFollowsPalette = Value;
}

bool TDiagContainer::GetFollowPalette() const {
    const TGraphicHost* h = FParent ? TGraphicHost::Find(FParent) : nullptr;
    return h && h->GetFollowPalette();
}

void TDiagContainer::PaintEvent(QObject* /*Sender*/) {
    if (ConList && ConList->Count() > 0 && FResizeMode == kDragNone)
        ConList->Paint();
    if (DirectActive())
        PaintDirect();
}

void TDiagContainer::AssignControlEventsForParent() {
    if (!dmMoveResize)
        return;
    dmMoveResize->CreateNodes(FParent, FParent);
    AssignControlEventsForChildren(false);
}

void TDiagContainer::AssignControlEventsForChildren(bool Clear) {
    if (!dmMoveResize || !FParent)
        return;
    if (CntList->Count() > 0) {
        for (int i = 0; i < CntList->Count(); ++i)
            if (auto* c = qobject_cast<QWidget*>(CntList->Items(i)))
                dmMoveResize->AssignControlEvents(c, Clear);
        return;
    }
    const QObjectList children = FParent->children();
    for (QObject* child : children) {
        if (!IsWindowedControl(child))
            continue;
        auto* w = static_cast<QWidget*>(child);
        if (w->isWindow())
            continue;
        if (dmMoveResize->AssignControlEvents(w, false))
            CntList->Add(w);
    }
}

void TDiagContainer::AssignContextMenus(TPopupMenu* ConnectionsMenu, TPopupMenu* ObjectsMenu) {
    pmConnections = ConnectionsMenu;
    pmObjects = ObjectsMenu;
    SetParentMouseUp(pmConnections && pmObjects && FDesignMode);
}

void TDiagContainer::SetParentMouseUp(bool Hook) {
    if (!FParent)
        return;
    TMouseHandlers h = GetMouseHandlers(FParent);
    // Direct editing ends its gestures on the parent's release, menus or not.
    Hook = Hook || DirectActive();
    if (Hook)
        h.OnMouseUp = TParentMouseUpThunk{this};
    else
        h.OnMouseUp = {};
    SetMouseHandlers(FParent, h);
    FMouseUpHooked = Hook;
}

TDiagObject* TDiagContainer::BlockOf(QObject* Sender) const {
    return dynamic_cast<TDiagObject*>(Sender);
}

void TDiagContainer::AssignObjEventsEx(QObject* Obj, bool Clear) {
    TDiagObject* block = BlockOf(Obj);
    if (!block)
        return;
    if (Clear) {
        block->SetOnModifyBounds({});
        block->SetOnModifyMarkers({});
        SetMouseHandlers(block, {});
        if (ObjList)
            ObjList->SetOnDeleteObject({});
        return;
    }
    TNotifyEvent modified = [this](QObject* Sender) { OnModifyBounds(Sender); };
    block->SetOnModifyBounds(modified);
    block->SetOnModifyMarkers(modified);
    TMouseHandlers h;
    h.OnMouseDown = [this](QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y) {
        DiagMouseDown(Sender, Button, Shift, X, Y);
    };
    h.OnMouseMove = [this](QObject* Sender, TShiftState Shift, int X, int Y) {
        DiagMouseMove(Sender, Shift, X, Y);
        if (!DirectActive())
            ClassicHint(BlockOf(Sender), X, Y);
    };
    h.OnMouseUp = [this](QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y) {
        DiagMouseUp(Sender, Button, Shift, X, Y);
        NoteSelection();
    };
    SetMouseHandlers(block, h);
    // Hover over a block shows the resize cursor with Shift held, so moves are wanted without a
    // button pressed too.
    block->setMouseTracking(true);
    if (ObjList) {
        TDiagConnectList* cons = ConList.get();
        ObjList->SetOnDeleteObject([cons](QObject* Sender) {
            if (cons)
                cons->UpdateBeforeDelete(Sender);
        });
    }
}

void TDiagContainer::AssignObjEvents(QObject* Obj) {
    AssignObjEventsEx(Obj, false);
}

void TDiagContainer::AssignObjEventsForDesignMode(QObject* Obj) {
    AssignObjEventsEx(Obj, !FDesignMode);
}

void TDiagContainer::CreateDiagObEvent(QObject* Sender) {
    auto* item = qobject_cast<TMenuItem*>(Sender);
    if (!item || item->Tag < 0 || item->Tag > 255)
        return;
    const auto kind = TDiagObjectType(uint8_t(item->Tag));
    const TUndoStepScope step(UndoStack(),
                              tr("Create %1").arg(DiagObjTypeCaption(kind).Translated()));
    TDiagObject* obj = CreateObjectAtMousePos(kind);
    if (obj)
        AssignObjEvents(obj);
}

void TDiagContainer::OnModifyBounds(QObject* Sender) {
    if (FResizeMode != kDragNone || !ConList)
        return;
    ConList->UpdatePath(Sender);
}

QWidget* TDiagContainer::GetCurrentNodeControl() const {
    return dmMoveResize ? dmMoveResize->GetCurrentNodeControl() : nullptr;
}

void TDiagContainer::ResolveObjLinks(TDiagConnection* Obj) {
    if (!Obj || !ObjList)
        return;
    Obj->SetSrcObject(ObjList->FindObjByKey(Obj->GetSrcKey()));
    Obj->SetDstObject(ObjList->FindObjByKey(Obj->GetDstKey()));
}

TDiagObject* TDiagContainer::CreateObjectAtMousePos(TDiagObjectType ObjType) {
    const TPoint size = DefaultObjectSize(ObjType);
    const TRect R{FClickPoint.X, FClickPoint.Y, WrapAdd(FClickPoint.X, size.X),
                  WrapAdd(FClickPoint.Y, size.Y)};
    return CreateObjByDiagType(ObjType, R);
}

TDiagObject* TDiagContainer::CreateObjByDiagType(TDiagObjectType ObjType, const TRect& R) {
    if (!ObjList)
        return nullptr;
    return ObjList->CreateObjByDiagType(ObjType, R);
}

} // namespace vde
