#pragma once
// Drawing on top of a host widget: the widget paints itself first, then a handler draws with a
// painter open on it, so any TCanvas whose handle is that widget draws for real. This is what
// "the parent's OnPaint event" means on Qt.
//
// Two questions the editor asks of a host widget are answered here, once:
//  - PublishesOnPaint: whether a paint handler can be attached. True for every widget that
//    paints its own area; false for scroll areas (they paint on their viewport, which is the
//    widget to pass instead) and for our own graphic controls.
//  - IsCustomDrawnControl: whether the widget is a surface meant to hold and draw child
//    controls (a panel, a frame, a group box, a plain QWidget or a host subclass of these), as
//    opposed to a standard input or display widget (buttons, edits, labels, views).
// A host can override either answer with the dynamic properties "vdePublishesOnPaint" and
// "vdeCustomDrawn" (bool) on the widget.

#include "velDiagEdit/velDiagEdit_export.h"
#include <QWidget>
#include <functional>

namespace vde {

// An empty handler removes the hook.
VELDIAGEDIT_EXPORT void SetPaintHandler(QWidget* w, std::function<void()> handler);
VELDIAGEDIT_EXPORT bool HasPaintHandler(const QWidget* w);
// The handler installed on the widget (a copy); empty when there is none.
VELDIAGEDIT_EXPORT std::function<void()> GetPaintHandler(const QWidget* w);

VELDIAGEDIT_EXPORT bool PublishesOnPaint(const QWidget* w);
VELDIAGEDIT_EXPORT bool IsCustomDrawnControl(const QWidget* w);

} // namespace vde
