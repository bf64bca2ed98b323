#pragma once
// Mouse events as a user's mouse makes them. A graphic control has no window: the press, the
// moves and the release reach its parent widget at the control's place, and the parent hands
// them on. Widgets are targeted directly, as QTest does.

#include "velDiagEdit/platform/controls.h"

#include <QTest>
#include <QWidget>

namespace vde::test {

// The widget that receives the events meant for `target`, and `local` in its coordinates; a
// null point means the target's centre, as with QTest.
inline QWidget* MouseReceiver(QObject* target, QPoint& local) {
    if (auto* c = qobject_cast<TGraphicControl*>(target)) {
        if (local.isNull())
            local = c->rect().center();
        local = c->mapToParent(local);
        return c->parentWidget();
    }
    auto* w = qobject_cast<QWidget*>(target);
    if (w && local.isNull())
        local = w->rect().center();
    return w;
}

inline void MousePress(QObject* target, Qt::MouseButton button,
                       Qt::KeyboardModifiers mods = Qt::NoModifier, QPoint local = QPoint()) {
    QWidget* w = MouseReceiver(target, local);
    QTest::mousePress(w, button, mods, local);
}

inline void MouseRelease(QObject* target, Qt::MouseButton button,
                         Qt::KeyboardModifiers mods = Qt::NoModifier, QPoint local = QPoint()) {
    QWidget* w = MouseReceiver(target, local);
    QTest::mouseRelease(w, button, mods, local);
}

inline void MouseClick(QObject* target, Qt::MouseButton button,
                       Qt::KeyboardModifiers mods = Qt::NoModifier, QPoint local = QPoint()) {
    QWidget* w = MouseReceiver(target, local);
    QTest::mouseClick(w, button, mods, local);
}

inline void MouseMove(QObject* target, QPoint local = QPoint()) {
    QWidget* w = MouseReceiver(target, local);
    QTest::mouseMove(w, local);
}

} // namespace vde::test
