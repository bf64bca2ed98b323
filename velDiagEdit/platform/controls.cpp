#include "velDiagEdit/platform/controls.h"

#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/graphic_host.h"
#include "velDiagEdit/platform/picture_cache.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <optional>

namespace vde {

TShiftState ShiftStateFromQt(Qt::KeyboardModifiers mods, Qt::MouseButtons buttons) {
    TShiftState s = 0;
    if (mods & Qt::ShiftModifier)
        s |= ssShift;
    if (mods & Qt::AltModifier)
        s |= ssAlt;
    if (mods & Qt::ControlModifier)
        s |= ssCtrl;
    if (buttons & Qt::LeftButton)
        s |= ssLeft;
    if (buttons & Qt::RightButton)
        s |= ssRight;
    if (buttons & Qt::MiddleButton)
        s |= ssMiddle;
    return s;
}

TMouseButton MouseButtonFromQt(Qt::MouseButton b) {
    switch (b) {
    case Qt::RightButton:
        return mbRight;
    case Qt::MiddleButton:
        return mbMiddle;
    default:
        return mbLeft;
    }
}

namespace {

TShiftState EventShift(const QMouseEvent* e) {
    // The pressed or released button counts as held, as the classic events report it.
    return ShiftStateFromQt(e->modifiers(), e->buttons() | e->button());
}

bool DispatchUnguarded(QObject* sender, const TMouseHandlers& h, QEvent* ev) {
    switch (ev->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        auto* e = static_cast<QMouseEvent*>(ev);
        TShiftState s = EventShift(e);
        if (ev->type() == QEvent::MouseButtonDblClick)
            s |= ssDouble;
        if (h.OnMouseDown)
            h.OnMouseDown(sender, MouseButtonFromQt(e->button()), s, int(e->position().x()),
                          int(e->position().y()));
        return true;
    }
    case QEvent::MouseMove: {
        auto* e = static_cast<QMouseEvent*>(ev);
        if (h.OnMouseMove)
            h.OnMouseMove(sender, ShiftStateFromQt(e->modifiers(), e->buttons()),
                          int(e->position().x()), int(e->position().y()));
        return true;
    }
    case QEvent::MouseButtonRelease: {
        auto* e = static_cast<QMouseEvent*>(ev);
        if (h.OnMouseUp)
            h.OnMouseUp(sender, MouseButtonFromQt(e->button()),
                        ShiftStateFromQt(e->modifiers(), e->buttons() | e->button()),
                        int(e->position().x()), int(e->position().y()));
        return true;
    }
    default:
        return false;
    }
}

} // namespace

bool DispatchMouseEvent(QObject* sender, const TMouseHandlers& h, QEvent* ev) {
    const QEvent::Type t = ev->type();
    bool handled = t == QEvent::MouseButtonPress || t == QEvent::MouseButtonDblClick ||
                   t == QEvent::MouseMove || t == QEvent::MouseButtonRelease;
    if (!handled)
        return false;
    RunInEventBoundary("mouse", [&] { handled = DispatchUnguarded(sender, h, ev); });
    return handled;
}

namespace {

class TMouseHook : public QObject {
public:
    explicit TMouseHook(QWidget* w) : QObject(w) {
        setObjectName(QStringLiteral("vde_mouse_hook"));
        w->installEventFilter(this);
    }
    TMouseHandlers Handlers;

protected:
    bool eventFilter(QObject* watched, QEvent* ev) override {
        if (watched != parent())
            return false;
        // The widget's graphic controls take what falls on them, whichever filter runs first.
        auto* w = static_cast<QWidget*>(watched);
        if (TGraphicHost* host = TGraphicHost::Find(w)) {
            const QEvent::Type t = ev->type();
            if ((t == QEvent::MouseButtonPress || t == QEvent::MouseButtonDblClick ||
                 t == QEvent::MouseMove || t == QEvent::MouseButtonRelease) &&
                host->DispatchMouse(static_cast<QMouseEvent*>(ev)))
                return true;
        }
        // Copy: a handler may replace or remove this hook.
        const TMouseHandlers h = Handlers;
        const double scale = TGraphicHost::ScaleOf(w);
        const QEvent::Type t = ev->type();
        if (scale != 1.0 && (t == QEvent::MouseButtonPress || t == QEvent::MouseButtonDblClick ||
                             t == QEvent::MouseMove || t == QEvent::MouseButtonRelease)) {
            // A zoomed widget's handlers work in the coordinates of what it shows.
            const auto* e = static_cast<QMouseEvent*>(ev);
            QMouseEvent scaled(t, QPointF(TGraphicHost::Find(w)->PointAt(e->position())),
                               e->scenePosition(), e->globalPosition(), e->button(), e->buttons(),
                               e->modifiers(), e->pointingDevice());
            return DispatchMouseEvent(watched, h, &scaled);
        }
        return DispatchMouseEvent(watched, h, ev);
    }
};

TMouseHook* FindHook(const QWidget* w) {
    return w->findChild<TMouseHook*>(QStringLiteral("vde_mouse_hook"), Qt::FindDirectChildrenOnly);
}

} // namespace

TGraphicControl::TGraphicControl(QWidget* parent) {
    FCanvas.SetHandle(this);
    // Outside the parent's paint the canvas cannot draw: it asks for the paint instead.
    FCanvas.OnRequestPaint = [this] { update(); };
    setParent(parent);
}

TGraphicControl::~TGraphicControl() {
    update();
    if (TGraphicHost* h = TGraphicHost::Find(FParent))
        h->Remove(this);
}

void TGraphicControl::setParent(QWidget* parent) {
    if (parent == FParent)
        return;
    update();
    if (TGraphicHost* h = TGraphicHost::Find(FParent))
        h->Remove(this);
    FParent = parent;
    if (FParent) {
        TGraphicHost* h = TGraphicHost::For(FParent);
        h->Add(this);
        if (FTracking)
            h->TrackForControls();
    }
    update();
}

void TGraphicControl::setGeometry(const QRect& r) {
    // As a widget would: a negative size is an empty one.
    const QRect g(r.topLeft(), QSize(std::max(r.width(), 0), std::max(r.height(), 0)));
    if (g == FGeometry)
        return;
    update();
    FGeometry = g;
    if (TGraphicHost* h = TGraphicHost::Find(FParent))
        h->Refile(this);
    update();
}

void TGraphicControl::setVisible(bool visible) {
    if (visible == FVisible)
        return;
    if (!visible)
        update();
    FVisible = visible;
    if (visible)
        update();
}

bool TGraphicControl::isVisible() const {
    return FVisible && FParent && FParent->isVisible();
}

bool TGraphicControl::isVisibleTo(const QWidget* ancestor) const {
    if (!FVisible || !FParent)
        return false;
    return FParent == ancestor || FParent->isVisibleTo(ancestor);
}

void TGraphicControl::setMouseTracking(bool enable) {
    FTracking = enable;
    if (enable && FParent)
        TGraphicHost::For(FParent)->TrackForControls();
}

void TGraphicControl::raise() {
    if (TGraphicHost* h = TGraphicHost::Find(FParent)) {
        h->Raise(this);
        update();
    }
}

void TGraphicControl::lower() {
    if (TGraphicHost* h = TGraphicHost::Find(FParent)) {
        h->Lower(this);
        update();
    }
}

void TGraphicControl::update() {
    update(rect());
}

void TGraphicControl::update(const QRect& r) {
    if (!FParent || !FVisible || r.isEmpty())
        return;
    const QRect area = r.translated(FGeometry.topLeft()).intersected(FGeometry);
    if (TGraphicHost* h = TGraphicHost::Find(FParent))
        h->Invalidate(area);
    else
        FParent->update(area);
}

QPoint TGraphicControl::mapToGlobal(const QPoint& p) const {
    return FParent ? FParent->mapToGlobal(mapToParent(p)) : mapToParent(p);
}

QPoint TGraphicControl::mapFromGlobal(const QPoint& p) const {
    return mapFromParent(FParent ? FParent->mapFromGlobal(p) : p);
}

void TGraphicControl::PaintWith(QPainter& p) {
    if (DrawsOnlyOnCanvas() && PaintFromPictureCache(this, p))
        return;
    p.save();
    p.translate(FGeometry.topLeft());
    PaintAtOrigin(p);
    p.restore();
}

bool TGraphicControl::PaintAtOrigin(QPainter& p) {
    p.setClipRect(rect(), Qt::IntersectClip);
    const int errors = EventBoundaryErrorCount();
    {
        const TPaintScope scope(this, &p);
        // Drawing only through the canvas, the control's fills can go out together.
        std::optional<TCanvasBatch> batch;
        if (DrawsOnlyOnCanvas())
            batch.emplace(&FCanvas);
        RunInEventBoundary("paint", [this] { Paint(); });
    }
    FCanvas.ReleaseHandlePainter();
    return EventBoundaryErrorCount() == errors;
}

int TGraphicControl::metric(PaintDeviceMetric m) const {
    switch (m) {
    case PdmWidth:
        return width();
    case PdmHeight:
        return height();
    case PdmWidthMM:
    case PdmHeightMM:
        return FParent ? (m == PdmWidthMM
                              ? width() * FParent->widthMM() / std::max(FParent->width(), 1)
                              : height() * FParent->heightMM() / std::max(FParent->height(), 1))
                       : 0;
    case PdmNumColors:
        return FParent ? FParent->colorCount() : 0;
    case PdmDepth:
        return FParent ? FParent->depth() : 32;
    case PdmDpiX:
    case PdmPhysicalDpiX:
        return FParent ? FParent->logicalDpiX() : 96;
    case PdmDpiY:
    case PdmPhysicalDpiY:
        return FParent ? FParent->logicalDpiY() : 96;
    case PdmDevicePixelRatio:
        return FParent ? int(FParent->devicePixelRatio()) : 1;
    case PdmDevicePixelRatioScaled:
        return int(devicePixelRatioFScale() * (FParent ? FParent->devicePixelRatio() : 1.0));
    default:
        return 0;
    }
}

TRect BoundsRect(const TGraphicControl* c) {
    const QRect g = c->geometry();
    return {g.x(), g.y(), g.x() + g.width(), g.y() + g.height()};
}

void SetBounds(TGraphicControl* c, int32_t left, int32_t top, int32_t width, int32_t height) {
    // Kept within the range widgets keep, so that Qt's arithmetic on the rectangle is defined.
    constexpr int32_t lim = 16777215;
    c->setGeometry(std::clamp(left, -lim, lim), std::clamp(top, -lim, lim),
                   std::clamp(width, -lim, lim), std::clamp(height, -lim, lim));
}

TPoint ClientToScreen(const TGraphicControl* c, TPoint p) {
    const QPoint g = c->mapToGlobal(QPoint(p.X, p.Y));
    return {g.x(), g.y()};
}

TPoint ScreenToClient(const TGraphicControl* c, TPoint p) {
    const QPoint l = c->mapFromGlobal(QPoint(p.X, p.Y));
    return {l.x(), l.y()};
}

bool IsWindowedControl(const QObject* object) {
    return object && object->isWidgetType();
}

TRect BoundsRect(const QWidget* w) {
    const QRect g = w->geometry();
    return {g.x(), g.y(), g.x() + g.width(), g.y() + g.height()};
}

void SetBounds(QWidget* w, int32_t left, int32_t top, int32_t width, int32_t height) {
    // Qt keeps geometry within +-2^24; beyond that its own arithmetic would overflow. A negative
    // size is handed on and Qt makes it empty.
    constexpr int32_t lim = 16777215;
    w->setGeometry(std::clamp(left, -lim, lim), std::clamp(top, -lim, lim),
                   std::clamp(width, -lim, lim), std::clamp(height, -lim, lim));
}

TPoint ClientToScreen(const QWidget* w, TPoint p) {
    const QPoint g = w->mapToGlobal(QPoint(p.X, p.Y));
    return {g.x(), g.y()};
}

TPoint ScreenToClient(const QWidget* w, TPoint p) {
    const QPoint c = w->mapFromGlobal(QPoint(p.X, p.Y));
    return {c.x(), c.y()};
}

void SetMouseHandlers(QObject* control, const TMouseHandlers& handlers) {
    if (auto* g = qobject_cast<TGraphicControl*>(control)) {
        g->MouseHandlers = handlers;
        return;
    }
    auto* w = qobject_cast<QWidget*>(control);
    if (!w)
        return;
    TMouseHook* hook = FindHook(w);
    if (handlers.Empty()) {
        if (hook) {
            w->removeEventFilter(hook);
            hook->deleteLater();
            hook->setObjectName(QString());
            hook->Handlers = {};
        }
        return;
    }
    if (!hook)
        hook = new TMouseHook(w);
    hook->Handlers = handlers;
}

TMouseHandlers GetMouseHandlers(QObject* control) {
    if (auto* g = qobject_cast<TGraphicControl*>(control))
        return g->MouseHandlers;
    auto* w = qobject_cast<QWidget*>(control);
    if (!w)
        return {};
    if (TMouseHook* hook = FindHook(w))
        return hook->Handlers;
    return {};
}

bool HasMouseHook(const QWidget* w) {
    return FindHook(w) != nullptr;
}

} // namespace vde
