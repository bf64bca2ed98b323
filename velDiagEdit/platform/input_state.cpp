#include "velDiagEdit/platform/input_state.h"

#include <QCursor>
#include <QGuiApplication>
#include <QWidget>

namespace vde {

Qt::CursorShape CursorShape(TCursor cursor) {
    switch (cursor) {
    case crNone:
        return Qt::BlankCursor;
    case crCross:
        return Qt::CrossCursor;
    case crIBeam:
        return Qt::IBeamCursor;
    case crSizeNESW:
        return Qt::SizeBDiagCursor;
    case crSizeNS:
        return Qt::SizeVerCursor;
    case crSizeNWSE:
        return Qt::SizeFDiagCursor;
    case crSizeWE:
        return Qt::SizeHorCursor;
    case crUpArrow:
        return Qt::UpArrowCursor;
    case crHourGlass:
    case crSQLWait:
        return Qt::WaitCursor;
    case crDrag:
    case crMultiDrag:
        return Qt::DragCopyCursor;
    case crNoDrop:
    case crNo:
        return Qt::ForbiddenCursor;
    case crHSplit:
        return Qt::SplitHCursor;
    case crVSplit:
        return Qt::SplitVCursor;
    case crAppStart:
        return Qt::BusyCursor;
    case crHelp:
        return Qt::WhatsThisCursor;
    case crHandPoint:
        return Qt::PointingHandCursor;
    case crSizeAll:
        return Qt::SizeAllCursor;
    default:
        return Qt::ArrowCursor;
    }
}

namespace {
TQtInputState& QtState() {
    static TQtInputState s;
    return s;
}
IInputState* g_state = nullptr;
} // namespace

IInputState& InputState() {
    return g_state ? *g_state : QtState();
}

void SetInputState(IInputState* state) {
    g_state = state;
}

TPoint TQtInputState::CursorPos() {
    const QPoint p = QCursor::pos();
    return {p.x(), p.y()};
}

TShiftState TQtInputState::KeyboardShift() {
    return ShiftStateFromQt(QGuiApplication::queryKeyboardModifiers(), Qt::NoButton);
}

void TQtInputState::SetScreenCursor(TCursor cursor) {
    if (cursor == FCursor)
        return;
    const bool had = FCursor != crDefault;
    FCursor = cursor;
    if (cursor == crDefault) {
        if (had)
            QGuiApplication::restoreOverrideCursor();
    } else if (had) {
        QGuiApplication::changeOverrideCursor(QCursor(CursorShape(cursor)));
    } else {
        QGuiApplication::setOverrideCursor(QCursor(CursorShape(cursor)));
    }
}

void TQtInputState::SetCapture(QWidget* w) {
    if (w)
        w->grabMouse();
}

void TQtInputState::ReleaseCapture() {
    if (QWidget* g = QWidget::mouseGrabber())
        g->releaseMouse();
}

QWidget* TQtInputState::Capture() {
    return QWidget::mouseGrabber();
}

void TScriptedInputState::SetScreenCursor(TCursor cursor) {
    Cursor = cursor;
    Log << QStringLiteral("Cursor %1").arg(cursor);
}

void TScriptedInputState::SetCapture(QWidget* w) {
    Captured = w;
    Log << QStringLiteral("Capture %1").arg(w ? w->objectName() : QString());
}

void TScriptedInputState::ReleaseCapture() {
    Captured = nullptr;
    Log << QStringLiteral("Release");
}

} // namespace vde
