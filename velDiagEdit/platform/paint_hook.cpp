#include "velDiagEdit/platform/paint_hook.h"

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/graphic_host.h"

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

bool Override(const QWidget* w, const char* name, bool& answer) {
    const QVariant v = w->property(name);
    if (!v.isValid())
        return false;
    answer = v.toBool();
    return true;
}

} // namespace

void SetPaintHandler(QWidget* w, std::function<void()> handler) {
    if (!handler) {
        if (TGraphicHost* host = TGraphicHost::Find(w))
            host->SetPaintHandler({});
        else
            w->update();
        return;
    }
    TGraphicHost::For(w)->SetPaintHandler(std::move(handler));
}

bool HasPaintHandler(const QWidget* w) {
    const TGraphicHost* host = TGraphicHost::Find(w);
    return host && host->HasPaintHandler();
}

std::function<void()> GetPaintHandler(const QWidget* w) {
    const TGraphicHost* host = TGraphicHost::Find(w);
    return host ? host->PaintHandler() : std::function<void()>();
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
