#pragma once
// Cursor position, keyboard shift state, the screen cursor and mouse capture, behind one
// replaceable interface: the default reads Qt; tests install a scripted one.

#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QStringList>
#include <Qt>

class QWidget;

namespace vde {

using TCursor = int;
constexpr TCursor crDefault = 0, crNone = -1, crArrow = -2, crCross = -3, crIBeam = -4,
                  crSizeNESW = -6, crSizeNS = -7, crSizeNWSE = -8, crSizeWE = -9, crUpArrow = -10,
                  crHourGlass = -11, crDrag = -12, crNoDrop = -13, crHSplit = -14, crVSplit = -15,
                  crMultiDrag = -16, crSQLWait = -17, crNo = -18, crAppStart = -19, crHelp = -20,
                  crHandPoint = -21, crSizeAll = -22;

VELDIAGEDIT_EXPORT Qt::CursorShape CursorShape(TCursor cursor);

class VELDIAGEDIT_EXPORT IInputState {
public:
    virtual ~IInputState() = default;
    virtual TPoint CursorPos() = 0; // screen coordinates
    virtual TShiftState KeyboardShift() = 0;
    virtual TCursor ScreenCursor() = 0;
    virtual void SetScreenCursor(TCursor cursor) = 0;
    virtual void SetCapture(QWidget* w) = 0;
    virtual void ReleaseCapture() = 0;
    virtual QWidget* Capture() = 0;
};

// The input state in force (the Qt one unless a test installed another).
VELDIAGEDIT_EXPORT IInputState& InputState();
// Installs `state` (not owned); nullptr goes back to the Qt one.
VELDIAGEDIT_EXPORT void SetInputState(IInputState* state);

class VELDIAGEDIT_EXPORT TQtInputState : public IInputState {
public:
    TPoint CursorPos() override;
    TShiftState KeyboardShift() override;
    TCursor ScreenCursor() override { return FCursor; }
    void SetScreenCursor(TCursor cursor) override;
    void SetCapture(QWidget* w) override;
    void ReleaseCapture() override;
    QWidget* Capture() override;

private:
    TCursor FCursor = crDefault;
};

// Answers from its fields and logs every change, e.g. "Cursor -22", "Capture _Node_3",
// "Release".
class VELDIAGEDIT_EXPORT TScriptedInputState : public IInputState {
public:
    TPoint Pos;
    TShiftState Shift = 0;
    TCursor Cursor = crDefault;
    QWidget* Captured = nullptr;
    QStringList Log;

    TPoint CursorPos() override { return Pos; }
    TShiftState KeyboardShift() override { return Shift; }
    TCursor ScreenCursor() override { return Cursor; }
    void SetScreenCursor(TCursor cursor) override;
    void SetCapture(QWidget* w) override;
    void ReleaseCapture() override;
    QWidget* Capture() override { return Captured; }
};

// Installs a scripted state for the lifetime of the guard.
class VELDIAGEDIT_EXPORT TScopedInputState {
public:
    explicit TScopedInputState(IInputState* s) { SetInputState(s); }
    ~TScopedInputState() { SetInputState(nullptr); }
};

} // namespace vde
