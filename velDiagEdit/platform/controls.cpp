#include "velDiagEdit/platform/controls.h"

#include "velDiagEdit/platform/event_boundary.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

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

// Delivers a mouse event to the handlers; true when it was one of the mouse events. A handler's
// error stops at the event boundary.
bool Dispatch(QObject* sender, const TMouseHandlers& h, QEvent* ev) {
    const QEvent::Type t = ev->type();
    bool handled = t == QEvent::MouseButtonPress || t == QEvent::MouseButtonDblClick ||
                   t == QEvent::MouseMove || t == QEvent::MouseButtonRelease;
    if (!handled)
        return false;
    RunInEventBoundary("mouse", [&] { handled = DispatchUnguarded(sender, h, ev); });
    return handled;
}

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
        // Copy: a handler may replace or remove this hook.
        const TMouseHandlers h = Handlers;
        return Dispatch(watched, h, ev);
    }
};

TMouseHook* FindHook(const QWidget* w) {
    return w->findChild<TMouseHook*>(QStringLiteral("vde_mouse_hook"), Qt::FindDirectChildrenOnly);
}

} // namespace

TGraphicControl::TGraphicControl(QWidget* parent) : QWidget(parent) {
    FCanvas.SetHandle(this);
    setAttribute(Qt::WA_NoSystemBackground);
}

TGraphicControl::~TGraphicControl() = default;

void TGraphicControl::paintEvent(QPaintEvent*) {
    QPainter p(this);
    {
        TPaintScope scope(this, &p);
        RunInEventBoundary("paint", [this] { Paint(); });
    }
    FCanvas.ReleaseHandlePainter();
}

void TGraphicControl::mousePressEvent(QMouseEvent* e) {
    Dispatch(this, TMouseHandlers(MouseHandlers), e);
}
void TGraphicControl::mouseMoveEvent(QMouseEvent* e) {
    Dispatch(this, TMouseHandlers(MouseHandlers), e);
}
void TGraphicControl::mouseReleaseEvent(QMouseEvent* e) {
    Dispatch(this, TMouseHandlers(MouseHandlers), e);
}
void TGraphicControl::mouseDoubleClickEvent(QMouseEvent* e) {
    Dispatch(this, TMouseHandlers(MouseHandlers), e);
}

bool IsWindowedControl(const QObject* object) {
    return object && object->isWidgetType() &&
           qobject_cast<const TGraphicControl*>(object) == nullptr;
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

void SetMouseHandlers(QWidget* w, const TMouseHandlers& handlers) {
    if (auto* g = qobject_cast<TGraphicControl*>(w)) {
        g->MouseHandlers = handlers;
        return;
    }
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

TMouseHandlers GetMouseHandlers(QWidget* w) {
    if (auto* g = qobject_cast<TGraphicControl*>(w))
        return g->MouseHandlers;
    if (TMouseHook* hook = FindHook(w))
        return hook->Handlers;
    return {};
}

bool HasMouseHook(const QWidget* w) {
    return FindHook(w) != nullptr;
}

} // namespace vde
