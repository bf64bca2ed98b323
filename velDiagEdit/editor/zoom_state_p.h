#pragma once
// The container's zoom state: the wheel filter on the surface, the autoscroll timer and where
// the mouse last was. Private to the container.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/event_boundary.h"

#include <QEvent>
#include <QTimer>
#include <QWheelEvent>
#include <cstdlib>

namespace vde {

// The sizes are those the host gave the surface before the zoom changed them.
struct TDiagContainer::TZoomState : QObject {
    explicit TZoomState(TDiagContainer* C) : Owner(C) {
        Timer.setInterval(30); // the autoscroll's tick, ms
        QObject::connect(&Timer, &QTimer::timeout, this, [this] {
            RunInEventBoundary("mouse", [this] { Owner->AutoScrollTick(); });
        });
    }
    bool eventFilter(QObject* Watched, QEvent* Event) override {
        if (Event->type() != QEvent::Wheel || Watched != Owner->GetParent())
            return false;
        auto* w = static_cast<QWheelEvent*>(Event);
        if (!(w->modifiers() & Qt::ControlModifier) || !Owner->DirectActive())
            return false;
        // A wheel notch is 120; a touchpad sends less, collected until a notch is full.
        WheelRest += w->angleDelta().y();
        const QPoint at = w->position().toPoint();
        RunInEventBoundary("mouse", [&] {
            while (std::abs(WheelRest) >= 120) {
                const bool in = WheelRest > 0;
                WheelRest += in ? -120 : 120;
                Owner->ZoomAround(Owner->NextZoomStep(in ? 1 : -1), at);
            }
        });
        w->accept();
        return true;
    }
    TDiagContainer* Owner;
    QTimer Timer;
    int WheelRest = 0;
    // The mouse's last place, on the surface (its pixels) and in the scroll area's viewport.
    QPoint LastSurface;
    QPoint LastViewport;
    bool MouseKnown = false;
    TShiftState LastShift = 0;
    // What the host made the surface, and what the zoom made it last (a change since is the
    // host's, and becomes its own again).
    QSize HostMin, HostSize, SetMin, SetSize;
    bool HostKnown = false;
    bool Hooked = false;
};

} // namespace vde
