#include "velDiagEdit/platform/paint_hook.h"

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/event_boundary.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QEvent>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QVariant>

namespace vde {

namespace {

const char* const kHookName = "vde_paint_hook";

class TPaintHook : public QObject {
public:
    explicit TPaintHook(QWidget* w) : QObject(w) {
        setObjectName(QLatin1String(kHookName));
        w->installEventFilter(this);
    }
    std::function<void()> Handler;

protected:
    bool eventFilter(QObject* watched, QEvent* ev) override {
        if (ev->type() != QEvent::Paint || watched != parent() || FBusy || !Handler)
            return false;
        auto* w = static_cast<QWidget*>(watched);
        FBusy = true;
        // The widget paints itself first, with this filter standing aside.
        QCoreApplication::sendEvent(w, ev);
        FBusy = false;
        {
            QPainter p(w);
            const QRect pr = static_cast<QPaintEvent*>(ev)->rect();
            const TRect rect{pr.left(), pr.top(), pr.left() + pr.width(), pr.top() + pr.height()};
            TPaintScope scope(w, &p, &rect);
            const auto h = Handler;
            RunInEventBoundary("paint", h);
        }
        return true;
    }

private:
    bool FBusy = false;
};

TPaintHook* FindHook(const QWidget* w) {
    return w->findChild<TPaintHook*>(QLatin1String(kHookName), Qt::FindDirectChildrenOnly);
}

bool Override(const QWidget* w, const char* name, bool& answer) {
    const QVariant v = w->property(name);
    if (!v.isValid())
        return false;
    answer = v.toBool();
    return true;
}

} // namespace

void SetPaintHandler(QWidget* w, std::function<void()> handler) {
    TPaintHook* hook = FindHook(w);
    if (!handler) {
        if (hook) {
            w->removeEventFilter(hook);
            hook->setObjectName(QString());
            hook->Handler = {};
            hook->deleteLater();
        }
        w->update();
        return;
    }
    if (!hook)
        hook = new TPaintHook(w);
    hook->Handler = std::move(handler);
    w->update();
}

bool HasPaintHandler(const QWidget* w) {
    return FindHook(w) != nullptr;
}

std::function<void()> GetPaintHandler(const QWidget* w) {
    const TPaintHook* hook = FindHook(w);
    return hook ? hook->Handler : std::function<void()>();
}

bool PublishesOnPaint(const QWidget* w) {
    if (!w)
        return false;
    bool answer;
    if (Override(w, "vdePublishesOnPaint", answer))
        return answer;
    if (!IsWindowedControl(w))
        return false;
    return qobject_cast<const QAbstractScrollArea*>(w) == nullptr;
}

bool IsCustomDrawnControl(const QWidget* w) {
    if (!w)
        return false;
    bool answer;
    if (Override(w, "vdeCustomDrawn", answer))
        return answer;
    if (!IsWindowedControl(w))
        return false;
    if (qobject_cast<const QGroupBox*>(w))
        return true;
    if (qobject_cast<const QLabel*>(w) || qobject_cast<const QAbstractScrollArea*>(w))
        return false;
    if (qobject_cast<const QFrame*>(w))
        return true;
    // A plain QWidget or a host subclass of it; Qt's other widget classes are something else.
    const QMetaObject* mo = w->metaObject();
    while (mo && !QByteArray(mo->className()).startsWith('Q'))
        mo = mo->superClass();
    return mo == &QWidget::staticMetaObject;
}

} // namespace vde
