#include "velDiagEdit/platform/panel.h"

#include "velDiagEdit/platform/components.h"

namespace vde {

TPanel::TPanel(QObject* AOwner) : QFrame(nullptr), FOwner(AOwner) {
    InsertComponent(AOwner, this);
    setAutoFillBackground(true);
    resize(185, 41);
    SetBevelOuter(bvRaised);
}

TPanel::~TPanel() = default;

void TPanel::SetBevelOuter(TBevelCut value) {
    FBevelOuter = value;
    switch (value) {
    case bvNone:
        setFrameStyle(QFrame::NoFrame);
        break;
    case bvLowered:
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        break;
    case bvRaised:
        setFrameStyle(QFrame::Panel | QFrame::Raised);
        break;
    case bvSpace:
        // A bevel of one pixel that is drawn in the panel's own colour.
        setFrameStyle(QFrame::Box | QFrame::Plain);
        break;
    }
    setLineWidth(1);
    SetColor(FColor);
}

void TPanel::SetColor(TColor value) {
    FColor = value;
    QPalette pal = palette();
    pal.setColor(QPalette::Window, ToQColor(value));
    if (FBevelOuter == bvSpace)
        pal.setColor(QPalette::WindowText, ToQColor(value));
    setPalette(pal);
}

void TPanel::SetCursor(TCursor value) {
    FCursor = value;
    if (value == crDefault)
        unsetCursor();
    else
        setCursor(QCursor(CursorShape(value)));
}

void TPanel::SetParent(QWidget* AParent) {
    const bool explicitlyHidden =
        testAttribute(Qt::WA_WState_ExplicitShowHide) && testAttribute(Qt::WA_WState_Hidden);
    setParent(AParent);
    // A panel is visible unless it was hidden: on a parent it shows with the parent (Qt would
    // keep it hidden on a parent that is already shown). Without a parent it would be a window
    // of its own, which it only becomes when shown explicitly.
    if (AParent && !explicitlyHidden)
        show();
}

} // namespace vde
