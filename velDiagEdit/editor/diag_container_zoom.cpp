// Zoom and autoscroll of the diagram surface in direct editing.
//
// The zoom lives in the surface's graphic host: it paints the wires and the blocks through a
// scaled painter and divides mouse positions before anyone sees them, so every gesture, hit test
// and snap works in the diagram's own pixels, and the model and its streams never see the zoom.
// Here the container keeps the zoom, sizes the surface for it, keeps the point under the mouse
// in place by scrolling an enclosing scroll area, and scrolls that area while a drag is held
// near its edge.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/direct_editing_p.h"
#include "velDiagEdit/editor/zoom_state_p.h"

#include "velDiagEdit/platform/graphic_host.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <algorithm>
#include <array>
#include <cmath>

namespace vde {

namespace {

// The zoom steps of the keys and the wheel.
constexpr std::array<double, 11> kZoomSteps{0.25, 1.0 / 3, 0.5, 2.0 / 3, 0.75, 1.0,
                                            1.25, 1.5,     2.0, 3.0,     4.0};
// How near the visible edge (pixels) a held drag starts the view scrolling, and how often.
constexpr int kEdgeZone = 24;
// Scrolling per tick: a little at the edge, more the farther out the mouse is.
constexpr int kMinScrollStep = 4;
constexpr int kMaxScrollStep = 60;

// The scroll area whose viewport holds the surface, if any.
QAbstractScrollArea* ScrollAreaOf(QWidget* Surface) {
    QWidget* vp = Surface ? Surface->parentWidget() : nullptr;
    auto* area = vp ? qobject_cast<QAbstractScrollArea*>(vp->parentWidget()) : nullptr;
    return area && area->viewport() == vp ? area : nullptr;
}

// Scrolling for one tick along one axis: 0 while the mouse is inside the zone's bounds.
int EdgeStep(int Pos, int Size) {
    int past = 0;
    if (Pos < kEdgeZone)
        past = Pos - kEdgeZone;
    else if (Pos >= Size - kEdgeZone)
        past = Pos - (Size - kEdgeZone) + 1;
    if (past == 0)
        return 0;
    const int step =
        std::clamp(std::abs(past) / 2 + kMinScrollStep, kMinScrollStep, kMaxScrollStep);
    return past < 0 ? -step : step;
}

bool IsDragKind(TDirectEditing::TKind k) {
    return k == TDirectEditing::gkMove || k == TDirectEditing::gkResize ||
           k == TDirectEditing::gkWire || k == TDirectEditing::gkBand;
}

} // namespace

double TDiagContainer::SurfaceScale() const {
    return FDirectOn ? FZoom : 1.0;
}

void TDiagContainer::SetZoom(double Value) {
    QPoint anchor;
    if (FParent) {
        // The middle of what the user sees of the surface stays where it is.
        const QRect seen = FParent->visibleRegion().boundingRect();
        anchor = seen.isValid() ? seen.center() : FParent->rect().center();
    }
    ZoomAround(Value, anchor);
}

double TDiagContainer::NextZoomStep(int Direction) const {
    constexpr double eps = 1e-6;
    if (Direction > 0) {
        for (double s : kZoomSteps)
            if (s > FZoom + eps)
                return s;
        return kMaxZoom;
    }
    for (auto it = kZoomSteps.rbegin(); it != kZoomSteps.rend(); ++it)
        if (*it < FZoom - eps)
            return *it;
    return kMinZoom;
}

void TDiagContainer::ZoomIn() {
    ZoomAround(NextZoomStep(1), ZoomAnchor());
}

void TDiagContainer::ZoomOut() {
    ZoomAround(NextZoomStep(-1), ZoomAnchor());
}

QPoint TDiagContainer::ZoomAnchor() const {
    if (!FParent)
        return {};
    const QRect seen = FParent->visibleRegion().boundingRect();
    // The mouse, when it is over the part of the surface that shows; else the middle of it.
    if (FZoomState && FZoomState->MouseKnown && seen.contains(FZoomState->LastSurface))
        return FZoomState->LastSurface;
    return seen.isValid() ? seen.center() : FParent->rect().center();
}

void TDiagContainer::ZoomAround(double Value, QPoint Anchor) {
    if (!(Value == Value))
        return;
    const double z = std::clamp(Value, kMinZoom, kMaxZoom);
    if (z == FZoom)
        return;
    const double before = SurfaceScale();
    FZoom = z;
    QAbstractScrollArea* area = FParent ? ScrollAreaOf(FParent) : nullptr;
    const QPointF diagramPoint = QPointF(Anchor) / before;
    ApplyZoom();
    // The diagram point that was under the anchor is brought back under it.
    if (area && FDirectOn) {
        const QPointF now = diagramPoint * SurfaceScale();
        const QPoint shift(int(std::lround(now.x() - Anchor.x())),
                           int(std::lround(now.y() - Anchor.y())));
        if (QScrollBar* h = area->horizontalScrollBar())
            h->setValue(h->value() + shift.x());
        if (QScrollBar* v = area->verticalScrollBar())
            v->setValue(v->value() + shift.y());
    }
    if (FZoomState && FZoomState->MouseKnown && FDirectOn)
        FZoomState->LastSurface =
            (QPointF(FZoomState->LastSurface) / before * SurfaceScale()).toPoint();
    Q_EMIT zoomChanged(FZoom);
}

void TDiagContainer::ZoomDirectChanged() {
    if (!FParent)
        return;
    if (!FZoomState)
        FZoomState = std::make_unique<TZoomState>(this);
    TZoomState& z = *FZoomState;
    if (FDirectOn && !z.Hooked) {
        FParent->installEventFilter(&z);
        z.Hooked = true;
        // The sizes the host gave, before the diagram or the zoom grow the surface.
        z.HostMin = FParent->minimumSize();
        z.HostSize = FParent->size();
        z.SetMin = z.HostMin;
        z.SetSize = z.HostSize;
        z.HostKnown = true;
    } else if (!FDirectOn && z.Hooked) {
        FParent->removeEventFilter(&z);
        z.Hooked = false;
        z.Timer.stop();
        // A zoomed surface goes back to its size at 100%.
        if (FZoom != 1.0)
            FitSurface();
        z.HostKnown = false;
    }
    ApplyZoom();
}

QSize TDiagContainer::SurfaceNeed(const QRect& R) const {
    const double s = SurfaceScale();
    const int64_t w = int64_t(R.right()) + 1 + kSurfaceMargin;
    const int64_t h = int64_t(R.bottom()) + 1 + kSurfaceMargin;
    if (s == 1.0)
        return QSize(int(std::max<int64_t>(0, w)), int(std::max<int64_t>(0, h)));
    // Widgets are kept within 2^24 pixels.
    const auto fit = [](double v) { return int(std::clamp(v, 0.0, 16777215.0)); };
    return QSize(fit(std::ceil(double(w) * s)), fit(std::ceil(double(h) * s)));
}

void TDiagContainer::ApplyZoom() {
    if (!FParent)
        return;
    const double s = SurfaceScale();
    // A surface that never zoomed gets no host for it.
    if (TGraphicHost* host = s == 1.0 ? TGraphicHost::Find(FParent) : TGraphicHost::For(FParent))
        host->SetScale(s);
    if (FDirectOn)
        FitSurface();
}

void TDiagContainer::GrowSurface(const QRect& R) {
    const QSize need = SurfaceNeed(R);
    const bool ownMin = FZoomState && FParent->minimumSize() == FZoomState->SetMin;
    const bool ownSize = FZoomState && FParent->size() == FZoomState->SetSize;
    if (FParent->minimumWidth() < need.width() || FParent->minimumHeight() < need.height())
        FParent->setMinimumSize(FParent->minimumSize().expandedTo(need));
    if (FParent->width() < need.width() || FParent->height() < need.height())
        FParent->resize(FParent->size().expandedTo(need));
    // Grown for the diagram, not by the host: a zoom out may give it back.
    if (ownMin)
        FZoomState->SetMin = FParent->minimumSize();
    if (ownSize)
        FZoomState->SetSize = FParent->size();
}

void TDiagContainer::FitSurface() {
    if (!FZoomState || !FZoomState->HostKnown)
        return;
    TZoomState& z = *FZoomState;
    // A size the host set since the zoom last did is the host's own.
    if (FParent->minimumSize() != z.SetMin)
        z.HostMin = FParent->minimumSize();
    if (FParent->size() != z.SetSize)
        z.HostSize = FParent->size();
    const QRect r = DiagramRect();
    const QSize need = r.isValid() ? SurfaceNeed(r) : QSize(0, 0);
    QSize size = z.HostSize.expandedTo(need);
    // In a scroll area the surface fills at least the view.
    if (QAbstractScrollArea* area = ScrollAreaOf(FParent))
        size = need.expandedTo(area->viewport()->size()).expandedTo(z.HostMin);
    z.SetMin = z.HostMin.expandedTo(need);
    z.SetSize = size;
    FParent->setMinimumSize(z.SetMin);
    FParent->resize(size);
    FParent->update();
}

void TDiagContainer::UpdateSurface(const QRect& R) {
    if (!FParent)
        return;
    const TGraphicHost* host = SurfaceScale() == 1.0 ? nullptr : TGraphicHost::Find(FParent);
    FParent->update(host ? host->ToDevice(R) : R);
}

void TDiagContainer::UpdateSurface(const QRegion& R) {
    if (!FParent)
        return;
    const TGraphicHost* host = SurfaceScale() == 1.0 ? nullptr : TGraphicHost::Find(FParent);
    if (!host) {
        FParent->update(R);
        return;
    }
    QRegion scaled;
    for (const QRect& r : R)
        scaled += host->ToDevice(r);
    FParent->update(scaled);
}

TPoint TDiagContainer::SurfaceToScreen(TPoint P) const {
    const double s = SurfaceScale();
    if (s == 1.0)
        return ClientToScreen(FParent, P);
    return ClientToScreen(FParent, TPoint{int(std::lround(P.X * s)), int(std::lround(P.Y * s))});
}

bool TDiagContainer::IsZoomKey(int Key, Qt::KeyboardModifiers Modifiers) {
    const Qt::KeyboardModifiers mods = Modifiers & ~Qt::KeypadModifier;
    if (mods == Qt::ControlModifier)
        return Key == Qt::Key_Plus || Key == Qt::Key_Equal || Key == Qt::Key_Minus ||
               Key == Qt::Key_0;
    // Ctrl++ is typed with Shift on many layouts.
    return mods == (Qt::ControlModifier | Qt::ShiftModifier) && Key == Qt::Key_Plus;
}

bool TDiagContainer::ZoomKeyDown(int Key, Qt::KeyboardModifiers Modifiers) {
    if (!IsZoomKey(Key, Modifiers))
        return false;
    if (Key == Qt::Key_0)
        ZoomAround(1.0, ZoomAnchor());
    else if (Key == Qt::Key_Minus)
        ZoomOut();
    else
        ZoomIn();
    return true;
}

// ---- autoscroll -------------------------------------------------------------------------------

void TDiagContainer::NoteMouseForZoom(TShiftState Shift, TPoint P) {
    if (!FParent)
        return;
    if (!FZoomState)
        FZoomState = std::make_unique<TZoomState>(this);
    TZoomState& z = *FZoomState;
    const double s = SurfaceScale();
    z.LastSurface =
        s == 1.0 ? QPoint(P.X, P.Y) : QPoint(int(std::lround(P.X * s)), int(std::lround(P.Y * s)));
    z.MouseKnown = true;
    z.LastShift = Shift;
    QAbstractScrollArea* area = ScrollAreaOf(FParent);
    if (!area || !(Shift & ssLeft)) {
        z.Timer.stop();
        return;
    }
    z.LastViewport = FParent->mapTo(area->viewport(), z.LastSurface);
    const QSize vs = area->viewport()->size();
    const bool atEdge = EdgeStep(z.LastViewport.x(), vs.width()) != 0 ||
                        EdgeStep(z.LastViewport.y(), vs.height()) != 0;
    if (atEdge && !z.Timer.isActive())
        z.Timer.start();
    else if (!atEdge)
        z.Timer.stop();
}

void TDiagContainer::AutoScrollTick() {
    TZoomState& z = *FZoomState;
    QAbstractScrollArea* area = FParent ? ScrollAreaOf(FParent) : nullptr;
    if (!area || !DirectActive() || !FDirect || !IsDragKind(FDirect->Kind)) {
        z.Timer.stop();
        return;
    }
    const QSize vs = area->viewport()->size();
    const int dx = EdgeStep(z.LastViewport.x(), vs.width());
    const int dy = EdgeStep(z.LastViewport.y(), vs.height());
    QScrollBar* h = area->horizontalScrollBar();
    QScrollBar* v = area->verticalScrollBar();
    const int h0 = h->value(), v0 = v->value();
    if (dx != 0)
        h->setValue(h0 + dx);
    if (dy != 0)
        v->setValue(v0 + dy);
    if (h->value() == h0 && v->value() == v0)
        return; // at the end of the scroll range: nothing moved, nothing to follow
    // The mouse stays where it is on screen while the surface moves under it: the gesture
    // follows it as if it had moved.
    const QPoint on = FParent->mapFrom(area->viewport(), z.LastViewport);
    const double s = SurfaceScale();
    const TPoint P{int(std::floor(on.x() / s)), int(std::floor(on.y() / s))};
    DirectMouseMove(z.LastShift, P);
}

} // namespace vde
