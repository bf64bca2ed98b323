#pragma once
// Controls on Qt. Every QWidget is a control; our blocks are graphic controls (TGraphicControl,
// drawn on and living inside the host's widget); any other QWidget of the host is a windowed
// control. Mouse events of controls are std::function members; a foreign widget gets them
// through an event filter that takes over its mouse handling while any handler is set.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QWidget>
#include <functional>

namespace vde {

enum TMouseButton : uint8_t { mbLeft, mbRight, mbMiddle };

using TShiftState = uint8_t;
constexpr TShiftState ssShift = 1, ssAlt = 2, ssCtrl = 4, ssLeft = 8, ssRight = 16, ssMiddle = 32,
                      ssDouble = 64;

using TNotifyEvent = std::function<void(QObject* Sender)>;
using TMouseEvent =
    std::function<void(QObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y)>;
using TMouseMoveEvent = std::function<void(QObject* Sender, TShiftState Shift, int X, int Y)>;

struct TMouseHandlers {
    TMouseEvent OnMouseDown;
    TMouseMoveEvent OnMouseMove;
    TMouseEvent OnMouseUp;
    bool Empty() const { return !OnMouseDown && !OnMouseMove && !OnMouseUp; }
};

VELDIAGEDIT_EXPORT TShiftState ShiftStateFromQt(Qt::KeyboardModifiers mods,
                                                Qt::MouseButtons buttons);
VELDIAGEDIT_EXPORT TMouseButton MouseButtonFromQt(Qt::MouseButton b);

// A graphic control: paints through its Canvas in Paint, raises its mouse events to the
// handlers. It is shown as a child widget of the host's parent, which it never covers with
// anything but its own drawing.
class VELDIAGEDIT_EXPORT TGraphicControl : public QWidget {
    Q_OBJECT
public:
    explicit TGraphicControl(QWidget* parent = nullptr);
    ~TGraphicControl() override;

    TCanvas* Canvas() { return &FCanvas; }
    TMouseHandlers MouseHandlers;

    // Drawing outside the paint event is not possible on Qt; Invalidate asks for a repaint and
    // Paint runs from it.
    void Invalidate() { update(); }
    virtual void Paint() {}

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    TCanvas FCanvas;
};

// True for a QWidget that is not one of our graphic controls.
VELDIAGEDIT_EXPORT bool IsWindowedControl(const QObject* object);

VELDIAGEDIT_EXPORT TRect BoundsRect(const QWidget* w);
VELDIAGEDIT_EXPORT void SetBounds(QWidget* w, int32_t left, int32_t top, int32_t width,
                                  int32_t height);
VELDIAGEDIT_EXPORT TPoint ClientToScreen(const QWidget* w, TPoint p);
VELDIAGEDIT_EXPORT TPoint ScreenToClient(const QWidget* w, TPoint p);

// The mouse handlers of any control: a graphic control's own members, or for a foreign widget
// a hook that is installed on first use. While a foreign widget has any handler, its own mouse
// handling is replaced (a button does not click); when all are cleared it gets it back.
VELDIAGEDIT_EXPORT void SetMouseHandlers(QWidget* w, const TMouseHandlers& handlers);
VELDIAGEDIT_EXPORT TMouseHandlers GetMouseHandlers(QWidget* w);
VELDIAGEDIT_EXPORT bool HasMouseHook(const QWidget* w);

} // namespace vde
