// Direct editing of the diagram surface, and the container's signals.
//
// With direct editing on (and design mode), the container's mouse handlers hand the events
// here, in the parent's coordinates: a press on a marker draws a wire, on a block selects and
// moves it, on the corner handle of the selected block resizes it, on empty surface starts a
// rubber band. Each gesture that changes the diagram is one undo step from the press to the
// release. The right button keeps its classic menus.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/diag_messages.h"
#include "velDiagEdit/editor/direct_editing_p.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/graphic_host.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QPainter>
#include <QPen>
#include <QRectF>
#include <QRegion>
#include <algorithm>
#include <cstdlib>

namespace vde {

namespace {

// The mouse must travel this far (Chebyshev, pixels) before a press becomes a drag.
constexpr int kDragThreshold = 3;
// The outward stub of a drawn wire before it turns.
constexpr int kStub = 16;
// How close to the bottom-right corner of the selected block a press resizes it (screen
// pixels), and the side of the handle drawn there, just outside the corner so that the block
// does not paint over it.
constexpr int kHandleZone = 6;
constexpr int kHandleSide = 8;
// Clearance of routes between two markers, as the demo's wires have it.
constexpr TPoint kRouteTol{12, 10};
// Merge id of arrow-key moves of a selection.
constexpr int kGroupKeyMoveMergeId = 2;

int SignOf(int v) {
    return v < 0 ? -1 : v > 0 ? 1 : 0;
}

int Snap(int v, int g) {
    if (g <= 0)
        return v;
    const int64_t q = (int64_t(v) + (v >= 0 ? g / 2 : -(g / 2))) / g;
    return int(std::clamp<int64_t>(q * g, INT32_MIN, INT32_MAX));
}

QRect ToQRect(const TRect& r) {
    return QRect(QPoint(r.Left, r.Top), QPoint(r.Right - 1, r.Bottom - 1));
}

// Where a wire leaves or reaches the marker: one pixel back through it, as the model routes.
TPoint WireEnd(TDiagObject* b, int marker) {
    TPoint p{};
    if (b && b->GetConPoint(marker, p, false))
        p.X = WrapSub(p.X, SignOf(marker));
    return p;
}

QString MarkerName(int marker) {
    return marker < 0 ? TDiagContainer::tr("input %1").arg(-marker)
                      : TDiagContainer::tr("output %1").arg(marker);
}

// Drops repeated points and the middle of three points on one line.
TPoints Squeeze(const TPoints& in) {
    TPoints r;
    for (const TPoint& p : in) {
        if (!r.empty() && r.back() == p)
            continue;
        if (r.size() >= 2) {
            const TPoint a = r[r.size() - 2], b = r.back();
            if ((a.X == b.X && b.X == p.X) || (a.Y == b.Y && b.Y == p.Y))
                r.back() = p;
            else
                r.push_back(p);
        } else {
            r.push_back(p);
        }
    }
    return r;
}

// A square route from a marker (leaving outward, Dir +1 right, -1 left) to C, its last segment
// horizontal.
TPoints RouteEndingHorizontal(TPoint P0, int Dir, TPoint C) {
    if (C.Y == P0.Y && Dir * (int64_t(C.X) - P0.X) > 0)
        return {P0, C};
    const int64_t ahead = Dir * (int64_t(C.X) - P0.X);
    const int xm = ahead >= 2 * kStub ? int(P0.X + (int64_t(C.X) - P0.X) / 2) : P0.X + Dir * kStub;
    return Squeeze({P0, {xm, P0.Y}, {xm, C.Y}, C});
}

// The same with the last segment vertical (to meet a horizontal segment square).
TPoints RouteEndingVertical(TPoint P0, int Dir, TPoint C) {
    if (Dir * (int64_t(C.X) - P0.X) >= kStub)
        return Squeeze({P0, {C.X, P0.Y}, C});
    const int x1 = P0.X + Dir * kStub;
    const int yq = C.Y >= P0.Y ? C.Y - kStub : C.Y + kStub;
    return Squeeze({P0, {x1, P0.Y}, {x1, yq}, {C.X, yq}, C});
}

QRect BoxOf(const TPoints& pts) {
    if (pts.empty())
        return {};
    int l = pts[0].X, t = pts[0].Y, r = l, b = t;
    for (const TPoint& p : pts) {
        l = std::min(l, p.X);
        r = std::max(r, p.X);
        t = std::min(t, p.Y);
        b = std::max(b, p.Y);
    }
    return QRect(QPoint(l, t), QPoint(r, b));
}

// A wire between two blocks' markers gets the model's square route again when a block moves;
// re-anchoring its ends alone (what a wire read from a stream does) slants its end segments. A
// wire that ends on another wire, or nowhere, keeps its shape and is re-anchored.
void RouteSquare(TDiagConnection* w) {
    if (!w->FSource || !w->FDest || !w->FSrcCrossInfo.IsZero() || !w->FDstCrossInfo.IsZero()) {
        w->MakePath();
        return;
    }
    const bool editable = w->FIsEditable;
    if (w->FTol == TPoint{})
        w->FTol = kRouteTol;
    w->FIsEditable = false;
    w->MakePath();
    w->FIsEditable = editable;
}

// The wires ending on any of `moved` (a junction), and on those in turn, each after the wire
// it ends on.
std::vector<TDiagConnection*> JunctionsOn(const TDiagConnectList& list,
                                          const std::vector<TDiagConnection*>& moved) {
    QHash<const TDiagConnection*, std::vector<TDiagConnection*>> onWire;
    for (int i = 0; i < list.Count(); ++i) {
        TDiagConnection* j = list.Items(i);
        const LongRec lr = j->FDstCrossInfo;
        if (!lr.IsZero() && lr.Hi >= 1 && lr.Hi <= list.Count())
            onWire[list.Items(lr.Hi - 1)].push_back(j);
    }
    std::vector<TDiagConnection*> out;
    if (onWire.isEmpty())
        return out;
    QSet<const TDiagConnection*> seen(moved.begin(), moved.end());
    std::vector<const TDiagConnection*> queue(moved.begin(), moved.end());
    for (size_t k = 0; k < queue.size(); ++k)
        for (TDiagConnection* j : onWire.value(queue[k]))
            if (!seen.contains(j)) {
                seen.insert(j);
                out.push_back(j);
                queue.push_back(j);
            }
    return out;
}

// A junction's end moves along its own last segment onto the segment it sat on; when that
// segment no longer meets the line (the wire below took another route), onto the nearest
// segment that does. Where none does, the end stays.
void ReLand(TDiagConnectList& list, TDiagConnection* j) {
    const LongRec lr = j->FDstCrossInfo;
    if (lr.IsZero() || lr.Hi < 1 || lr.Hi > list.Count() || j->FPoints.size() < 2)
        return;
    const TDiagConnection* w = list.Items(lr.Hi - 1);
    const int dir = j->GetLastDirection();
    if (w == j || dir == 0)
        return;
    const TPoint old = j->FPoints.back();
    int bestSegment = -1;
    TPoint best{};
    int64_t bestDistance = 0;
    for (int k = 0; k + 1 < int(w->FPoints.size()); ++k) {
        TPoint p = old;
        if (!w->FindCrossPoint(k, p, dir))
            continue;
        const TPoint a = w->FPoints[size_t(k)], b = w->FPoints[size_t(k) + 1];
        if (p.X < std::min(a.X, b.X) || p.X > std::max(a.X, b.X) || p.Y < std::min(a.Y, b.Y) ||
            p.Y > std::max(a.Y, b.Y))
            continue;
        const int64_t distance =
            k == lr.Lo - 1 ? -1 : std::abs(int64_t(p.X) - old.X) + std::abs(int64_t(p.Y) - old.Y);
        if (bestSegment < 0 || distance < bestDistance) {
            bestSegment = k;
            best = p;
            bestDistance = distance;
        }
    }
    if (bestSegment < 0)
        return;
    j->FPoints.back() = best;
    j->FDstCrossInfo.Lo = uint16_t(bestSegment + 1);
    list.PathChanged(j);
}

} // namespace

// ---- finding what lies under the mouse ---------------------------------------------------------

namespace {

// The block with a marker within the pick distance of P (the topmost such), other than Skip.
TDiagObject* MarkerBlockAt(QWidget* Parent, TPoint P, const TDiagObject* Skip, int& Marker) {
    Marker = 0;
    TGraphicHost* host = Parent ? TGraphicHost::Find(Parent) : nullptr;
    if (!host)
        return nullptr;
    const int reach = int(kMarkerPickDistance) + 12;
    const auto near = host->ControlsIn(QRect(P.X - reach, P.Y - reach, 2 * reach, 2 * reach));
    for (auto it = near.rbegin(); it != near.rend(); ++it) {
        auto* b = dynamic_cast<TDiagObject*>(*it);
        if (!b || b == Skip)
            continue;
        const int m = b->NearestMarkerIndex(P, kMarkerPickDistance);
        if (m != 0) {
            Marker = m;
            return b;
        }
    }
    return nullptr;
}

TDiagObject* BlockAt(QWidget* Parent, TPoint P) {
    TGraphicHost* host = Parent ? TGraphicHost::Find(Parent) : nullptr;
    return host ? dynamic_cast<TDiagObject*>(host->ControlAt(QPoint(P.X, P.Y))) : nullptr;
}

// The handle of block b at the zoom Scale, in diagram pixels.
QRectF HandleRect(const TDiagObject* b, double Scale) {
    const TRect r = b->BoundsRect();
    return QRectF(r.Right, r.Bottom, kHandleSide / Scale, kHandleSide / Scale);
}

// On the handle (or a little around it), or within the zone around the corner.
bool OnHandle(const TDiagObject* b, TPoint P, double Scale) {
    const TRect r = b->BoundsRect();
    const double zone = kHandleZone / Scale;
    if (std::abs(double(P.X) - r.Right) <= zone && std::abs(double(P.Y) - r.Bottom) <= zone)
        return true;
    const double grip = 2 / Scale;
    return HandleRect(b, Scale)
        .adjusted(-grip, -grip, grip + 1, grip + 1)
        .contains(QPointF(P.X, P.Y));
}

} // namespace

// ---- switching and the public queries -----------------------------------------------------------

void TDiagContainer::SetDirectEditing(bool Value) {
    if (Value == FDirectOn)
        return;
    if (FDirect)
        TDirectEditing::Cancel(*this);
    FDirectOn = Value;
    if (!FDirect)
        FDirect = std::make_unique<TDirectEditing>();
    // Hover sets the surface's tooltip; the host's own comes back when direct editing ends.
    if (FParent) {
        if (Value)
            FSavedToolTip = FParent->toolTip();
        else if (FDirect->OwnsTip && FParent->toolTip() == FDirect->OwnTip)
            FParent->setToolTip(FSavedToolTip);
        FDirect->OwnsTip = false;
    }
    if (!Value)
        EnableDisabledMenuItems();
    if (!Value && ObjList) {
        // The classic gestures know one selected block: the others are let go.
        TDiagObject* keep = SelObj && SelObj->FSelected ? SelObj.data() : nullptr;
        ObjList->DeselectAll(keep);
        FDirect->Wires.clear();
        NoteSelection();
    }
    HookParentForDirect();
    ZoomDirectChanged();
    if (Value)
        NoteDiagramChanged();
    if (FParent)
        FParent->update();
}

void TDiagContainer::SetGridSize(int Value) {
    FGridSize = std::clamp(Value, 0, 1000);
}

QRect TDiagContainer::DiagramRect() const {
    QRect r;
    if (ObjList)
        for (int i = 0; i < ObjList->Count(); ++i) {
            TDiagObject* b = ObjList->Items(i);
            QRect br = ToQRect(b->BoundsRect());
            // Markers stand out of the block's sides.
            for (int m = -int(b->FInputs.size()); m <= int(b->FOutputs.size()); ++m) {
                TPoint p;
                if (m != 0 && b->GetConPoint(m, p, false))
                    br = br.united(QRect(p.X, p.Y, 1, 1));
            }
            r = r.united(br);
        }
    if (ConList)
        for (int i = 0; i < ConList->Count(); ++i)
            r = r.united(BoxOf(ConList->Items(i)->FPoints));
    return r;
}

std::vector<TDiagObject*> TDiagContainer::SelectedBlocks() const {
    std::vector<TDiagObject*> r;
    if (ObjList)
        for (int i = 0; i < ObjList->Count(); ++i)
            if (ObjList->Items(i)->FSelected)
                r.push_back(ObjList->Items(i));
    return r;
}

std::vector<TDiagConnection*> TDiagContainer::SelectedWires() const {
    std::vector<TDiagConnection*> r;
    if (!FDirect || !ConList || FDirect->Wires.isEmpty())
        return r;
    for (int i = 0; i < ConList->Count(); ++i)
        if (FDirect->Wires.contains(ConList->Items(i)))
            r.push_back(ConList->Items(i));
    return r;
}

void TDiagContainer::SelectAll() {
    if (!ObjList || !ConList)
        return;
    if (!FDirect)
        FDirect = std::make_unique<TDirectEditing>();
    for (int i = 0; i < ObjList->Count(); ++i)
        ObjList->Items(i)->SetSelected(true);
    FDirect->Wires.clear();
    for (int i = 0; i < ConList->Count(); ++i)
        FDirect->Wires.insert(ConList->Items(i));
    if (!SelObj && ObjList->Count() > 0)
        SelObj = ObjList->Items(0);
    if (FParent)
        FParent->update();
    NoteSelection();
}

void TDiagContainer::SetSelectedBlocks(const std::vector<TDiagObject*>& Blocks,
                                       TDiagObject* Current) {
    if (!ObjList)
        return;
    const QSet<const TDiagObject*> chosen(Blocks.begin(), Blocks.end());
    for (int i = 0; i < ObjList->Count(); ++i) {
        TDiagObject* b = ObjList->Items(i);
        if (b->FSelected != chosen.contains(b))
            b->SetSelected(chosen.contains(b));
    }
    SelObj = Current && ObjList->IndexOf(Current) >= 0 ? Current : nullptr;
    if (FParent)
        FParent->update();
    NoteSelection();
}

// ---- signals ----------------------------------------------------------------------------------

void TDiagContainer::SetHint(const QString& Text) {
    if (Text == FHint)
        return;
    FHint = Text;
    Q_EMIT hintChanged(FHint);
}

void TDiagContainer::ClassicHint(TDiagObject* Block, int X, int Y) {
    if (!Block || !FDesignMode) {
        SetHint(QString());
        return;
    }
    const TPoint P{WrapAdd(X, Block->x()), WrapAdd(Y, Block->y())};
    const int m = Block->NearestMarkerIndex(P, kMarkerPickDistance);
    if (Block->FSelected && m != 0)
        SetHint(TDiagContainer::tr("Click to select %1; right-click for the wire commands")
                    .arg(MarkerName(m)));
    else
        SetHint(TDiagContainer::tr("Click to select %1; Shift-drag to move, Shift-drag the "
                                   "bottom-right corner to resize")
                    .arg(DiagObjTypeCaption(Block->GetDiagObjType()).Translated()));
}

void TDiagContainer::NoteSelection() {
    quint64 h = 1469598103934665603ull;
    auto mix = [&h](quint64 v) { h = (h ^ v) * 1099511628211ull; };
    mix(quint64(quintptr(SelObj.data())));
    mix(SelInfo.Value());
    if (ObjList)
        for (int i = 0; i < ObjList->Count(); ++i)
            if (ObjList->Items(i)->FSelected)
                mix(quint64(i) + 7);
    if (FDirect)
        for (TDiagConnection* w : SelectedWires())
            mix(quint64(quintptr(w)));
    if (h == FSelectionSeen)
        return;
    FSelectionSeen = h;
    Q_EMIT selectionChanged();
}

void TDiagContainer::NoteDiagramChanged() {
    if (FDirect) {
        // Wires of the diagram before may be gone; keep those still in the list.
        QSet<const TDiagConnection*> keep;
        if (ConList && !FDirect->Wires.isEmpty())
            for (int i = 0; i < ConList->Count(); ++i)
                if (FDirect->Wires.contains(ConList->Items(i)))
                    keep.insert(ConList->Items(i));
        FDirect->Wires = keep;
    }
    Q_EMIT diagramChanged();
    const QRect r = DiagramRect();
    if (r != FLastExtent) {
        FLastExtent = r;
        Q_EMIT extentChanged(r);
    }
    // The surface grows to hold the diagram and a margin, so that a scroll area around it
    // scrolls; it never shrinks below what the host made it.
    if (FDirectOn && FParent && r.isValid())
        GrowSurface(r);
    NoteSelection();
}

// ---- hooks ------------------------------------------------------------------------------------

void TDiagContainer::HookParentForDirect() {
    if (!FParent || !ObjList || !ConList)
        return;
    const bool want = DirectActive();
    if (!want && !FParentDirectHooked)
        return;
    TMouseHandlers h = GetMouseHandlers(FParent);
    if (want) {
        h.OnMouseDown = [this](QObject*, TMouseButton Button, TShiftState Shift, int X, int Y) {
            if (DirectActive())
                DirectMouseDown(Button, Shift, TPoint{X, Y}, nullptr);
        };
        h.OnMouseMove = [this](QObject*, TShiftState Shift, int X, int Y) {
            if (DirectActive())
                DirectMouseMove(Shift, TPoint{X, Y});
        };
        // The release on the parent comes through ParentMouseUp, which needs the hook.
        if (!h.OnMouseUp) {
            h.OnMouseUp = TParentMouseUpThunk{this};
            FMouseUpHooked = true;
        }
        // Hover over empty surface names what a press would do there.
        FSavedTracking = FParent->hasMouseTracking();
        if (TGraphicHost* host = TGraphicHost::Find(FParent)) {
            FSavedTracking = host->WidgetWantsHover();
            host->SetWidgetWantsHover(true);
        }
        FParent->setMouseTracking(true);
    } else {
        if (TGraphicHost* host = TGraphicHost::Find(FParent))
            host->SetWidgetWantsHover(FSavedTracking);
        else
            FParent->setMouseTracking(FSavedTracking);
        h.OnMouseDown = {};
        h.OnMouseMove = {};
        if (!(pmConnections && pmObjects && FDesignMode)) {
            h.OnMouseUp = {};
            FMouseUpHooked = false;
        }
    }
    SetMouseHandlers(FParent, h);
    FParentDirectHooked = want;
    WatchLeave(want);
}

// ---- the mouse --------------------------------------------------------------------------------

void TDiagContainer::DirectMouseDown(TMouseButton Button, TShiftState Shift, TPoint P,
                                     TDiagObject* On) {
    TDirectEditing& d = *FDirect;
    if (Button != mbLeft || d.Kind != TDirectEditing::gkNone)
        return;
    d.Start = d.Last = P;
    d.Ctrl = (Shift & ssCtrl) != 0;
    d.Block = nullptr;
    d.Marker = 0;
    d.Applied = {};
    d.Preview.clear();
    d.HotBlock = nullptr;
    d.HotMarker = 0;
    d.HotSegment = {};
    int m = 0;
    if (TDiagObject* mb = MarkerBlockAt(FParent, P, nullptr, m)) {
        d.Kind = TDirectEditing::gkMarkerPress;
        d.Block = mb;
        d.Marker = m;
        return;
    }
    // The handle stands outside the selected block's corner.
    if (TDiagObject* s = SelObj.data(); s && s->FSelected && !d.Ctrl &&
                                        OnHandle(s, P, SurfaceScale()) &&
                                        ObjList->IndexOf(s) >= 0) {
        d.Block = s;
        d.Kind = TDirectEditing::gkResizePress;
        d.ResizeFrom = s->BoundsRect();
        return;
    }
    if (!On)
        On = BlockAt(FParent, P);
    if (On && ObjList->IndexOf(On) >= 0) {
        d.Block = On;
        d.WasSelected = On->FSelected;
        d.Kind = TDirectEditing::gkBlockPress;
        if (!d.Ctrl) {
            if (!On->FSelected)
                TDirectEditing::SelectOnly(*this, On);
            SelObj = On;
            NoteSelection();
        }
        return;
    }
    d.Kind = TDirectEditing::gkEmptyPress;
}

void TDiagContainer::DirectMouseMove(TShiftState Shift, TPoint P) {
    NoteMouseForZoom(Shift, P);
    TDirectEditing& d = *FDirect;
    const bool far = std::max(std::llabs(int64_t(P.X) - d.Start.X),
                              std::llabs(int64_t(P.Y) - d.Start.Y)) >= kDragThreshold;
    switch (d.Kind) {
    case TDirectEditing::gkNone:
        TDirectEditing::Hover(*this, P);
        return;
    case TDirectEditing::gkMarkerPress:
        if (!far)
            return;
        d.Kind = TDirectEditing::gkWire;
        [[fallthrough]];
    case TDirectEditing::gkWire:
        TDirectEditing::WireStep(*this, P);
        return;
    case TDirectEditing::gkBlockPress:
        if (!far)
            return;
        if (d.Ctrl) {
            // A Ctrl-drag moves the selection with the pressed block in it.
            if (d.Block && !d.Block->FSelected)
                d.Block->SetSelected(true);
        }
        TDirectEditing::BeginMove(*this);
        d.Kind = TDirectEditing::gkMove;
        [[fallthrough]];
    case TDirectEditing::gkMove:
        TDirectEditing::MoveStep(*this, P);
        return;
    case TDirectEditing::gkResizePress:
        if (!far)
            return;
        FUndoStack->BeginStep(TDiagContainer::tr("Resize"));
        d.Kind = TDirectEditing::gkResize;
        if (d.Block)
            d.Landed = JunctionsOn(*ConList, ConList->ConnectionsAt(d.Block));
        [[fallthrough]];
    case TDirectEditing::gkResize:
        TDirectEditing::ResizeStep(*this, P);
        return;
    case TDirectEditing::gkEmptyPress:
        if (!far)
            return;
        d.BaseBlocks.clear();
        d.BaseWires.clear();
        if (d.Ctrl) {
            for (TDiagObject* b : SelectedBlocks())
                d.BaseBlocks.insert(b);
            d.BaseWires = d.Wires;
        } else {
            ObjList->DeselectAll(nullptr);
            d.Wires.clear();
        }
        d.BandBlocks.clear();
        d.Kind = TDirectEditing::gkBand;
        [[fallthrough]];
    case TDirectEditing::gkBand:
        TDirectEditing::BandStep(*this, P);
        return;
    }
}

void TDiagContainer::DirectMouseUp(TMouseButton Button, TShiftState Shift, TPoint P,
                                   TDiagObject* On) {
    TDirectEditing& d = *FDirect;
    if (Button == mbRight) {
        if (d.Kind != TDirectEditing::gkNone)
            return;
        // The classic menus, on what is under the mouse; a block not yet selected becomes
        // the selection first.
        int m = 0;
        TDiagObject* b = MarkerBlockAt(FParent, P, nullptr, m);
        if (!b)
            b = On ? On : BlockAt(FParent, P);
        if (b) {
            if (!b->FSelected)
                TDirectEditing::SelectOnly(*this, b);
            SelObj = b;
            if (m != 0)
                b->SetSelMarkerIndex(m);
            const TPoint s = SurfaceToScreen(P);
            TPopupMenu* menu = m != 0 ? pmConnections.data() : pmObjects.data();
            NoteSelection();
            PrepareDirectMenu(menu);
            if (menu)
                menu->Popup(s.X, s.Y);
            return;
        }
        ParentMouseUp(nullptr, Button, Shift, P.X, P.Y);
        return;
    }
    if (Button != mbLeft)
        return;
    const TDirectEditing::TKind kind = d.Kind;
    d.Kind = TDirectEditing::gkNone;
    switch (kind) {
    case TDirectEditing::gkNone:
        return;
    case TDirectEditing::gkMarkerPress:
        // A click on a marker selects the block and the marker, for the menu commands.
        if (d.Block) {
            if (!d.Block->FSelected)
                TDirectEditing::SelectOnly(*this, d.Block);
            SelObj = d.Block;
            d.Block->SetSelMarkerIndex(d.Marker);
        }
        break;
    case TDirectEditing::gkWire:
        d.Kind = TDirectEditing::gkWire;
        TDirectEditing::DropWire(*this, P);
        d.Kind = TDirectEditing::gkNone;
        break;
    case TDirectEditing::gkBlockPress:
        if (!d.Block)
            break;
        if (d.Ctrl) {
            d.Block->SetSelected(!d.Block->FSelected);
            SelObj = d.Block->FSelected ? d.Block.data() : nullptr;
        } else {
            // A click on a block of a selection keeps that block alone.
            TDirectEditing::SelectOnly(*this, d.Block);
            SelObj = d.Block;
        }
        break;
    case TDirectEditing::gkResizePress:
        break;
    case TDirectEditing::gkMove:
        FResizeMode = kDragNone;
        FUndoStack->EndStep();
        break;
    case TDirectEditing::gkResize:
        FUndoStack->EndStep();
        break;
    case TDirectEditing::gkEmptyPress:
        // A click on empty surface clears the selection, and picks a wire's segment as the
        // classic click does.
        if (!d.Ctrl) {
            ObjList->DeselectAll(nullptr);
            d.Wires.clear();
            SelObj = nullptr;
        }
        SelectBestSegment(P);
        break;
    case TDirectEditing::gkBand:
        d.Band = QRect();
        TDirectEditing::Repaint(*this, QRect());
        // The menus act on one block: the first selected one.
        if (!SelObj || !SelObj->FSelected) {
            const std::vector<TDiagObject*> sel = SelectedBlocks();
            SelObj = sel.empty() ? nullptr : sel.front();
        }
        break;
    }
    if (FParent)
        FParent->update();
    NoteSelection();
    // The hint is about what the mouse would do next, where it is.
    TDirectEditing::Hover(*this, P);
}

// ---- the gestures -----------------------------------------------------------------------------

void TDirectEditing::SelectOnly(TDiagContainer& C, TDiagObject* Block) {
    C.ObjList->DeselectAll(Block);
    if (Block && !Block->FSelected)
        Block->SetSelected(true);
    C.FDirect->Wires.clear();
}

void TDirectEditing::Repaint(TDiagContainer& C, const QRect& Now) {
    TDirectEditing& d = *C.FDirect;
    if (!C.FParent)
        return;
    const QRect dirty = d.Painted.united(Now);
    if (!dirty.isNull())
        C.UpdateSurface(dirty.adjusted(-8, -8, 8, 8));
    d.Painted = Now;
}

void TDirectEditing::Hover(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    int m = 0;
    TDiagObject* mb = MarkerBlockAt(C.FParent, P, nullptr, m);
    LongRec seg{};
    QString hint;
    TDiagObject* sel = C.SelObj.data();
    if (mb) {
        hint = TDiagContainer::tr("Drag to draw a wire from %1").arg(MarkerName(m));
    } else if (sel && sel->FSelected && OnHandle(sel, P, C.SurfaceScale())) {
        hint = TDiagContainer::tr("Drag to resize");
    } else if (TDiagObject* b = BlockAt(C.FParent, P)) {
        hint = TDiagContainer::tr("Click to select %1, drag to move it, Ctrl-click to add it")
                   .arg(DiagObjTypeCaption(b->GetDiagObjType()).Translated());
    }
    // The tooltip names the block under the mouse: its kind and its counts.
    TDiagObject* under = mb ? mb : BlockAt(C.FParent, P);
    const QString tip = under ? TDiagContainer::tr("%1: %2 input(s), %3 output(s)")
                                    .arg(DiagObjTypeCaption(under->GetDiagObjType()).Translated())
                                    .arg(under->FInputs.size())
                                    .arg(under->FOutputs.size())
                              : QString();
    if (C.FParent->toolTip() != tip) {
        C.FParent->setToolTip(tip);
        d.OwnTip = tip;
        d.OwnsTip = true;
    }
    if (hint.isEmpty()) {
        seg = C.ConList->FindBestSegment(P, nullptr, true, 0);
        hint = seg.IsZero() ? TDiagContainer::tr("Drag to select blocks and wires")
                            : TDiagContainer::tr("Click to select this segment");
    }
    C.SetHint(hint);
    if (mb == d.HotBlock && m == d.HotMarker && seg == d.HotSegment)
        return;
    d.HotBlock = mb;
    d.HotMarker = m;
    d.HotSegment = seg;
    QRect now;
    if (mb) {
        const TPoint p = WireEnd(mb, m);
        now = QRect(p.X - 7, p.Y - 7, 15, 15);
    } else if (!seg.IsZero()) {
        TRect r{};
        C.ConList->GetSegmentRect(seg, r);
        now = ToQRect(r).adjusted(-3, -3, 3, 3);
    }
    Repaint(C, now);
}

void TDirectEditing::WireStep(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    d.Last = P;
    if (!d.Block) {
        Cancel(C);
        return;
    }
    int m = 0;
    TDiagObject* target = MarkerBlockAt(C.FParent, P, d.Block, m);
    d.HotBlock = target;
    d.HotMarker = m;
    d.HotSegment = {};
    const TPoint P0 = WireEnd(d.Block, d.Marker);
    const int dir = SignOf(d.Marker);
    if (target) {
        // The route the model makes between the two markers, made on a scratch list.
        TDiagConnectList scratch(static_cast<TCanvas*>(nullptr));
        auto* c =
            new TDiagObjConnection(&scratch, d.Block, d.Marker, target, m, kRouteTol, 0, 0, 0);
        d.Preview = c->FPoints;
        C.SetHint(TDiagContainer::tr("Release to wire %1 to %2 of %3")
                      .arg(MarkerName(d.Marker), MarkerName(m),
                           DiagObjTypeCaption(target->GetDiagObjType()).Translated()));
    } else {
        const LongRec seg = C.ConList->FindBestSegment(P, nullptr, true, 0);
        TDiagConnection* on = seg.IsZero() ? nullptr : C.ConList->Items(seg.Hi - 1);
        const int i = seg.Lo - 1;
        if (on && i >= 0 && i + 1 < int(on->FPoints.size())) {
            d.HotSegment = seg;
            const TPoint a = on->FPoints[size_t(i)], b = on->FPoints[size_t(i) + 1];
            if (a.Y == b.Y) {
                const TPoint c{std::clamp(P.X, std::min(a.X, b.X), std::max(a.X, b.X)), a.Y};
                d.Preview = RouteEndingVertical(P0, dir, c);
            } else if (a.X == b.X) {
                const TPoint c{a.X, std::clamp(P.Y, std::min(a.Y, b.Y), std::max(a.Y, b.Y))};
                d.Preview = RouteEndingHorizontal(P0, dir, c);
            } else {
                d.Preview = RouteEndingHorizontal(P0, dir, P);
            }
            C.SetHint(TDiagContainer::tr("Release to end the wire on this one, with a junction"));
        } else {
            const TPoint c{Snap(P.X, C.FGridSize), Snap(P.Y, C.FGridSize)};
            d.Preview = RouteEndingHorizontal(P0, dir, c);
            C.SetHint(TDiagContainer::tr("Release to end the wire here; Escape cancels"));
        }
    }
    QRect now = BoxOf(d.Preview);
    if (target) {
        const TPoint t = WireEnd(target, m);
        now = now.united(QRect(t.X - 7, t.Y - 7, 15, 15));
    }
    if (!d.HotSegment.IsZero()) {
        TRect r{};
        C.ConList->GetSegmentRect(d.HotSegment, r);
        now = now.united(ToQRect(r));
    }
    Repaint(C, now.adjusted(-3, -3, 3, 3));
}

void TDirectEditing::DropWire(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    WireStep(C, P);
    const TPoints route = d.Preview;
    TDiagObject* src = d.Block;
    const int si = d.Marker;
    TDiagObject* dst = d.HotBlock;
    const int di = d.HotMarker;
    const LongRec seg = d.HotSegment;
    d.Preview.clear();
    d.HotBlock = nullptr;
    d.HotMarker = 0;
    d.HotSegment = {};
    Repaint(C, QRect());
    if (!src || route.size() < 2)
        return;
    TDiagConnectList& list = *C.ConList;
    if (dst) {
        if ((si < 0) == (di < 0)) {
            ErrorMessageDlg(si < 0 ? TDiagContainer::tr("An input cannot be wired to an input")
                                   : TDiagContainer::tr("An output cannot be wired to an output"));
            return;
        }
        if (list.ConnectIndex(src, si) != 0 || list.ConnectIndex(dst, di) != 0) {
            ErrorMessageDlg(TDiagContainer::tr("Marker is not free"));
            return;
        }
        const TUndoStepScope step(C.UndoStack(), TDiagContainer::tr("Add Connection"));
        // Wires run from the output to the input, whichever end was pressed.
        TDiagObject* from = si > 0 ? src : dst;
        TDiagObject* to = si > 0 ? dst : src;
        const int fi = si > 0 ? si : di, ti = si > 0 ? di : si;
        auto* c = new TDiagObjConnection(&list, from, fi, to, ti, kRouteTol, 0, 0, 0);
        c->FSrcKey = from->FObjKey;
        c->FDstKey = to->FObjKey;
        // As a wire read from a stream is: re-anchored, not re-routed, when a block moves, so
        // it behaves the same before and after a save or an undo.
        c->FIsEditable = true;
        list.PathChanged(c);
        return;
    }
    if (list.ConnectIndex(src, si) != 0) {
        ErrorMessageDlg(TDiagContainer::tr("Marker is not free"));
        return;
    }
    const TUndoStepScope step(C.UndoStack(), seg.IsZero() ? TDiagContainer::tr("Add Connection")
                                                          : TDiagContainer::tr("End with Cross"));
    const int k = list.AddConnection(src, si, kStub);
    TDiagConnection* c = list.Items(k);
    TPoints pts = route;
    pts.front() = c->FPoints.front();
    c->FPoints = Squeeze(pts);
    if (c->FPoints.size() < 2)
        c->FPoints.push_back(route.back());
    list.PathChanged(c);
    if (!seg.IsZero()) {
        const int n = int(c->FPoints.size());
        list.EndConnectionByLongRec(LongRec{uint16_t(n - 1), uint16_t(k + 1)}, nullptr, nullptr);
    }
}

void TDirectEditing::BeginMove(TDiagContainer& C) {
    TDirectEditing& d = *C.FDirect;
    C.FUndoStack->BeginStep(TDiagContainer::tr("Move"));
    d.Origin = d.Block ? d.Block->GetLocation() : d.Start;
    d.Applied = {};
    d.Moving.clear();
    d.Inner.clear();
    d.Outer.clear();
    QSet<const QObject*> moving;
    for (TDiagObject* b : C.SelectedBlocks()) {
        d.Moving.emplace_back(b);
        moving.insert(b);
    }
    QSet<TDiagConnection*> seen;
    for (const auto& b : d.Moving)
        for (TDiagConnection* w : C.ConList->ConnectionsAt(b)) {
            if (seen.contains(w))
                continue;
            seen.insert(w);
            const bool s = w->FSource && moving.contains(w->FSource.data());
            const bool t = w->FDest && moving.contains(w->FDest.data());
            // A wire that ends on another wire keeps that end; it is routed, not shifted.
            if (s && (t || (!w->FDest && w->FDstCrossInfo.IsZero())))
                d.Inner.push_back(w);
            else
                d.Outer.push_back(w);
        }
    std::vector<TDiagConnection*> moved = d.Inner;
    moved.insert(moved.end(), d.Outer.begin(), d.Outer.end());
    d.Landed = JunctionsOn(*C.ConList, moved);
}

void TDirectEditing::MoveBlocks(TDiagContainer& C, int DX, int DY) {
    TDirectEditing& d = *C.FDirect;
    if (DX == 0 && DY == 0)
        return;
    // The blocks' own bounds notification would route every wire at each block; the wires
    // are placed once below instead.
    const int32_t saved = C.FResizeMode;
    C.FResizeMode = kDragMove;
    for (const auto& b : d.Moving)
        if (b)
            b->SetBounds(WrapAdd(b->x(), DX), WrapAdd(b->y(), DY), b->width(), b->height());
    C.FResizeMode = saved;
    for (TDiagConnection* w : d.Inner) {
        for (TPoint& p : w->FPoints)
            p = {WrapAdd(p.X, DX), WrapAdd(p.Y, DY)};
        C.ConList->PathChanged(w);
    }
    for (TDiagConnection* w : d.Outer)
        RouteSquare(w);
    for (TDiagConnection* j : d.Landed)
        ReLand(*C.ConList, j);
    if (C.FParent)
        C.FParent->update();
}

void TDirectEditing::MoveStep(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    d.Last = P;
    const int g = C.FGridSize;
    // The pressed block's top-left follows the mouse onto the grid; the others keep their
    // distance to it.
    const int nx = Snap(WrapAdd(d.Origin.X, WrapSub(P.X, d.Start.X)), g);
    const int ny = Snap(WrapAdd(d.Origin.Y, WrapSub(P.Y, d.Start.Y)), g);
    const TPoint want{WrapSub(nx, d.Origin.X), WrapSub(ny, d.Origin.Y)};
    MoveBlocks(C, WrapSub(want.X, d.Applied.X), WrapSub(want.Y, d.Applied.Y));
    d.Applied = want;
    C.SetHint(TDiagContainer::tr("Moving %1 block(s) by %2, %3; Escape puts them back")
                  .arg(d.Moving.size())
                  .arg(want.X)
                  .arg(want.Y));
}

void TDirectEditing::ResizeStep(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    if (!d.Block)
        return;
    const TRect& r = d.ResizeFrom;
    const int g = C.FGridSize;
    const int right = Snap(WrapAdd(r.Right, WrapSub(P.X, d.Start.X)), g);
    const int bottom = Snap(WrapAdd(r.Bottom, WrapSub(P.Y, d.Start.Y)), g);
    const int w = std::max(kMinBlockSize, WrapSub(right, r.Left));
    const int h = std::max(kMinBlockSize, WrapSub(bottom, r.Top));
    {
        // Routed square below, not re-anchored by the bounds notification.
        const int32_t saved = C.FResizeMode;
        C.FResizeMode = kDragResize;
        d.Block->SetBounds(r.Left, r.Top, w, h);
        C.FResizeMode = saved;
    }
    for (TDiagConnection* c : C.ConList->ConnectionsAt(d.Block))
        RouteSquare(c);
    for (TDiagConnection* j : d.Landed)
        ReLand(*C.ConList, j);
    C.SetHint(QStringLiteral("%1 x %2").arg(w).arg(h));
    if (C.FParent)
        C.FParent->update();
}

void TDirectEditing::BandStep(TDiagContainer& C, TPoint P) {
    TDirectEditing& d = *C.FDirect;
    d.Last = P;
    d.Band = QRect(QPoint(d.Start.X, d.Start.Y), QPoint(P.X, P.Y)).normalized();
    QSet<TDiagObject*> inside;
    if (TGraphicHost* host = TGraphicHost::Find(C.FParent))
        for (TGraphicControl* g : host->ControlsIn(d.Band))
            if (auto* b = dynamic_cast<TDiagObject*>(g); b && d.Band.contains(b->geometry()))
                inside.insert(b);
    for (TDiagObject* b : std::as_const(d.BandBlocks))
        if (!inside.contains(b) && !d.BaseBlocks.contains(b) && C.ObjList->IndexOf(b) >= 0)
            b->SetSelected(false);
    for (TDiagObject* b : std::as_const(inside))
        if (!b->FSelected)
            b->SetSelected(true);
    d.BandBlocks = inside;
    const QSet<const TDiagConnection*> was = d.Wires;
    d.Wires = d.BaseWires;
    const TRect br{d.Band.left(), d.Band.top(), d.Band.right() + 1, d.Band.bottom() + 1};
    for (TDiagConnection* w : C.ConList->ConnectionsNear(br, 0))
        if (!w->FPoints.empty() && d.Band.contains(BoxOf(w->FPoints)))
            d.Wires.insert(w);
    C.SetHint(TDiagContainer::tr("%1 block(s), %2 wire(s)").arg(inside.size()).arg(d.Wires.size()));
    // Only what changed is repainted: the strips between the band before and now, and the wires
    // that entered or left the selection (blocks repaint themselves when they do).
    const QRect before = d.Painted;
    const QRect now = d.Band.adjusted(-1, -1, 1, 1);
    QRegion dirty = QRegion(before).united(now);
    const QRect inner = before.intersected(now).adjusted(2, 2, -2, -2);
    if (before.isValid() && inner.isValid())
        dirty -= inner;
    for (const TDiagConnection* w : std::as_const(d.Wires))
        if (!was.contains(w))
            dirty += BoxOf(w->FPoints).adjusted(-3, -3, 3, 3);
    for (const TDiagConnection* w : was)
        if (!d.Wires.contains(w))
            dirty += BoxOf(w->FPoints).adjusted(-3, -3, 3, 3);
    d.Painted = now;
    C.UpdateSurface(dirty);
}

void TDirectEditing::Cancel(TDiagContainer& C) {
    TDirectEditing& d = *C.FDirect;
    switch (d.Kind) {
    case gkMove:
        MoveBlocks(C, -d.Applied.X, -d.Applied.Y);
        d.Applied = {};
        C.FUndoStack->EndStep();
        break;
    case gkResize:
        if (d.Block)
            d.Block->SetBounds(d.ResizeFrom.Left, d.ResizeFrom.Top,
                               WrapSub(d.ResizeFrom.Right, d.ResizeFrom.Left),
                               WrapSub(d.ResizeFrom.Bottom, d.ResizeFrom.Top));
        for (TDiagConnection* j : d.Landed)
            ReLand(*C.ConList, j);
        C.FUndoStack->EndStep();
        break;
    case gkBand:
        for (TDiagObject* b : std::as_const(d.BandBlocks))
            if (!d.BaseBlocks.contains(b) && C.ObjList->IndexOf(b) >= 0)
                b->SetSelected(false);
        d.Wires = d.BaseWires;
        break;
    default:
        break;
    }
    d.Kind = gkNone;
    d.Preview.clear();
    d.Band = QRect();
    d.HotBlock = nullptr;
    d.HotMarker = 0;
    d.HotSegment = {};
    Repaint(C, QRect());
    if (C.FParent)
        C.FParent->update();
}

void TDirectEditing::DeleteSelected(TDiagContainer& C) {
    TDirectEditing& d = *C.FDirect;
    const std::vector<TDiagObject*> blocks = C.SelectedBlocks();
    const std::vector<TDiagConnection*> wires = C.SelectedWires();
    if (blocks.empty() && wires.empty()) {
        // Nothing selected as a group: the classic key, on the selected segment.
        if (!C.SelInfo.IsZero())
            C.DeleteCurSegment();
        return;
    }
    const TUndoStepScope step(C.UndoStack(), TDiagContainer::tr("Delete"));
    QSet<TDiagConnection*> doomed(wires.begin(), wires.end());
    for (TDiagObject* b : blocks)
        for (TDiagConnection* w : C.ConList->ConnectionsAt(b))
            doomed.insert(w);
    for (TDiagConnection* w : doomed)
        (void)C.ConList->Remove(w);
    for (TDiagObject* b : blocks)
        C.ObjList->DeleteObject(b, true);
    d.Wires.clear();
    C.SelObj = nullptr;
    C.SelInfo = LongRec{};
    C.ConList->DeselectAll(nullptr);
    if (C.FParent)
        C.FParent->update();
}

// ---- keys -------------------------------------------------------------------------------------

bool TDiagContainer::IsDirectKey(int Key, Qt::KeyboardModifiers Modifiers) const {
    if (!DirectActive() || !IsCustomDrawnControl(FParent))
        return false;
    const Qt::KeyboardModifiers mods = Modifiers & ~Qt::KeypadModifier;
    if (mods == Qt::ControlModifier &&
        (Key == Qt::Key_A || Key == Qt::Key_C || Key == Qt::Key_X || Key == Qt::Key_V))
        return true;
    if (IsZoomKey(Key, Modifiers))
        return true;
    // Escape during a gesture cancels it.
    return Key == Qt::Key_Escape && FDirect && FDirect->Kind != TDirectEditing::gkNone;
}

bool TDiagContainer::DirectKeyDown(int Key, Qt::KeyboardModifiers Modifiers) {
    if (!DirectActive())
        return false;
    TDirectEditing& d = *FDirect;
    const Qt::KeyboardModifiers mods = Modifiers & ~Qt::KeypadModifier;
    if (Key == Qt::Key_Escape && d.Kind != TDirectEditing::gkNone) {
        TDirectEditing::Cancel(*this);
        return true;
    }
    // No other key (an undo least of all) while a gesture is under way.
    if (d.Kind != TDirectEditing::gkNone)
        return true;
    if (mods == Qt::ControlModifier && Key == Qt::Key_A) {
        SelectAll();
        return true;
    }
    if (ZoomKeyDown(Key, Modifiers))
        return true;
    if (mods == Qt::ControlModifier && Key == Qt::Key_C) {
        CopySelection();
        return true;
    }
    if (mods == Qt::ControlModifier && Key == Qt::Key_X) {
        CutSelection();
        return true;
    }
    if (mods == Qt::ControlModifier && Key == Qt::Key_V) {
        PasteClipboard();
        return true;
    }
    if (mods & Qt::ControlModifier)
        return false;
    const int step = (mods & Qt::ShiftModifier) ? 10 : 1;
    int dx = 0, dy = 0;
    switch (Key) {
    case Qt::Key_Left:
        dx = -step;
        break;
    case Qt::Key_Right:
        dx = step;
        break;
    case Qt::Key_Up:
        dy = -step;
        break;
    case Qt::Key_Down:
        dy = step;
        break;
    case Qt::Key_Delete:
        TDirectEditing::DeleteSelected(*this);
        return true;
    case Qt::Key_Escape:
        d.Wires.clear();
        return false; // the classic key deselects the rest
    default:
        return false;
    }
    if (SelectedBlocks().empty())
        return true;
    const QByteArray before = FUndoStack->Snapshot();
    d.Block = nullptr;
    TDirectEditing::BeginMove(*this);
    // BeginMove opened a step around the move; the key's own step replaces it so that a burst
    // of keys merges into one.
    FUndoStack->AbandonStep();
    TDirectEditing::MoveBlocks(*this, dx, dy);
    uint32_t key = 0;
    for (const auto& b : d.Moving)
        key = key * 31u + uint32_t(b ? b->FObjKey : 0);
    FUndoStack->PushStep(TDiagContainer::tr("Move"), before, kGroupKeyMoveMergeId, key);
    return true;
}

// ---- painting ---------------------------------------------------------------------------------

void TDiagContainer::PaintDirect() {
    QPainter* p = TPaintScope::PainterFor(FParent);
    if (!p || !FDirect)
        return;
    const TDirectEditing& d = *FDirect;
    p->save();
    p->setRenderHint(QPainter::Antialiasing, false);
    const QColor accent(0, 120, 215);
    // The set holds live wires only: every change of the diagram sifts it.
    for (const TDiagConnection* w : d.Wires) {
        p->setPen(QPen(accent, 3));
        for (size_t i = 0; i + 1 < w->FPoints.size(); ++i)
            p->drawLine(QPoint(w->FPoints[i].X, w->FPoints[i].Y),
                        QPoint(w->FPoints[i + 1].X, w->FPoints[i + 1].Y));
    }
    if (!d.HotSegment.IsZero()) {
        TRect r{-1, -1, -1, -1};
        ConList->GetSegmentRect(d.HotSegment, r);
        if (r.Left >= 0 || r.Right >= 0) {
            TDiagConnection* w = ConList->Items(d.HotSegment.Hi - 1);
            const int i = d.HotSegment.Lo - 1;
            if (i >= 0 && i + 1 < int(w->FPoints.size())) {
                p->setPen(QPen(QColor(255, 140, 0), 4));
                p->drawLine(QPoint(w->FPoints[size_t(i)].X, w->FPoints[size_t(i)].Y),
                            QPoint(w->FPoints[size_t(i) + 1].X, w->FPoints[size_t(i) + 1].Y));
            }
        }
    }
    if (d.HotBlock && d.HotMarker != 0) {
        const TPoint m = WireEnd(d.HotBlock, d.HotMarker);
        p->setPen(QPen(QColor(0, 160, 0), 2));
        p->setBrush(Qt::NoBrush);
        p->drawEllipse(QPoint(m.X, m.Y), 6, 6);
    }
    if (d.Preview.size() >= 2) {
        QPen pen(accent, 2, Qt::DashLine);
        p->setPen(pen);
        for (size_t i = 0; i + 1 < d.Preview.size(); ++i)
            p->drawLine(QPoint(d.Preview[i].X, d.Preview[i].Y),
                        QPoint(d.Preview[i + 1].X, d.Preview[i + 1].Y));
    }
    if (d.Kind == TDirectEditing::gkBand && d.Band.isValid()) {
        p->setPen(QPen(accent, 1, Qt::DashLine));
        p->setBrush(QColor(0, 120, 215, 40));
        p->drawRect(d.Band);
    }
    // The corner handle of the selected block, the same size on screen at any zoom so that it
    // stays easy to take.
    if (TDiagObject* b = SelObj.data(); b && b->FSelected && b->parentWidget() == FParent) {
        const double s = SurfaceScale();
        QPen pen(accent, 1);
        pen.setCosmetic(true);
        p->setPen(pen);
        p->setBrush(Qt::white);
        p->drawRect(HandleRect(b, s));
    }
    p->restore();
}

} // namespace vde
