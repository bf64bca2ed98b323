#pragma once
// Controls on Qt. Our blocks are graphic controls (TGraphicControl: no window, drawn by and
// living inside the host's widget, see graphic_host.h); every QWidget of the host is a windowed
// control. Mouse events of controls are std::function members; a foreign widget gets them
// through an event filter that takes over its mouse handling while any handler is set.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QPaintDevice>
#include <QWidget>
#include <cstdint>
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

class TGraphicHost;

// A graphic control: it has no window of its own. It lives on a parent widget, which paints it
// after painting itself and its paint handler (the wires), in z-order, and hands it the mouse
// events that fall on it (from a press to the release, whatever the mouse crosses). Its API
// answers to the names of the QWidget calls it stands in for, in the parent's coordinates. It
// is a paint device only so that its Canvas can be lent the parent's painter: it never opens a
// painter on itself.
class VELDIAGEDIT_EXPORT TGraphicControl : public QObject, public QPaintDevice {
    Q_OBJECT
public:
    explicit TGraphicControl(QWidget* parent = nullptr);
    ~TGraphicControl() override;

    TCanvas* Canvas() { return &FCanvas; }
    TMouseHandlers MouseHandlers;

    // Drawing outside the parent's paint is not possible on Qt; Invalidate asks the parent to
    // repaint the control's rectangle, and Paint runs from that paint.
    void Invalidate() { update(); }
    virtual void Paint() {}
    // True when Paint draws only through Canvas(): what it draws can then be told before it
    // is drawn, and its picture kept (picture_cache.h).
    virtual bool DrawsOnlyOnCanvas() const { return false; }

    QWidget* parentWidget() const { return FParent; }
    // Moves the control onto another parent (or none), keeping its place and visibility.
    void setParent(QWidget* parent);

    QRect geometry() const { return FGeometry; }
    int x() const { return FGeometry.x(); }
    int y() const { return FGeometry.y(); }
    int width() const { return FGeometry.width(); }
    int height() const { return FGeometry.height(); }
    QPoint pos() const { return FGeometry.topLeft(); }
    QSize size() const { return FGeometry.size(); }
    QRect rect() const { return QRect(QPoint(0, 0), FGeometry.size()); }
    void setGeometry(const QRect& r);
    void setGeometry(int x, int y, int w, int h) { setGeometry(QRect(x, y, w, h)); }
    void move(int x, int y) { setGeometry(QRect(QPoint(x, y), FGeometry.size())); }
    void move(const QPoint& p) { move(p.x(), p.y()); }
    void resize(int w, int h) { setGeometry(QRect(FGeometry.topLeft(), QSize(w, h))); }
    void resize(const QSize& s) { resize(s.width(), s.height()); }

    // Shown unless hidden: a new control is visible wherever its parent is.
    void setVisible(bool visible);
    void show() { setVisible(true); }
    void hide() { setVisible(false); }
    bool isHidden() const { return !FVisible; }
    bool isVisible() const;
    bool isVisibleTo(const QWidget* ancestor) const;

    // Moves with no button held (hover) come to the control only when it tracks the mouse;
    // the parent is made to track for it.
    void setMouseTracking(bool enable);
    bool hasMouseTracking() const { return FTracking; }

    // Top of (or bottom of) the graphic controls of its parent; windowed controls stay above.
    void raise();
    void lower();

    void update();
    void update(const QRect& r);
    void repaint() { update(); }

    QPoint mapToParent(const QPoint& p) const { return p + FGeometry.topLeft(); }
    QPoint mapFromParent(const QPoint& p) const { return p - FGeometry.topLeft(); }
    QPoint mapToGlobal(const QPoint& p) const;
    QPoint mapFromGlobal(const QPoint& p) const;

    // Paints the control with the parent's painter, translated to the control and clipped to
    // it; the host calls it, and so can a picture of the diagram.
    void PaintWith(QPainter& painter);
    // The part of PaintWith after placing the painter at the control's origin: clipped to the
    // control, its canvas lent the painter (its fills held when it draws only on the canvas),
    // Paint run. False when Paint raised; the event boundary has shown it.
    bool PaintAtOrigin(QPainter& painter);

    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    friend class TGraphicHost;
    TCanvas FCanvas;
    QWidget* FParent = nullptr;
    QRect FGeometry;
    bool FVisible = true;
    bool FTracking = false;
    // Kept by the host: z-order, the grid cells the control is filed under, and the last query
    // that met it.
    int64_t FZ = 0;
    QRect FCells;
    bool FLarge = false;
    uint64_t FSeen = 0;
};

// A TGraphicControl's place in its parent's terms, and the QWidget helpers over it.
VELDIAGEDIT_EXPORT TRect BoundsRect(const TGraphicControl* c);
VELDIAGEDIT_EXPORT void SetBounds(TGraphicControl* c, int32_t left, int32_t top, int32_t width,
                                  int32_t height);
VELDIAGEDIT_EXPORT TPoint ClientToScreen(const TGraphicControl* c, TPoint p);
VELDIAGEDIT_EXPORT TPoint ScreenToClient(const TGraphicControl* c, TPoint p);

// True for a QWidget (any widget of the host): our graphic controls are not widgets.
VELDIAGEDIT_EXPORT bool IsWindowedControl(const QObject* object);

VELDIAGEDIT_EXPORT TRect BoundsRect(const QWidget* w);
VELDIAGEDIT_EXPORT void SetBounds(QWidget* w, int32_t left, int32_t top, int32_t width,
                                  int32_t height);
VELDIAGEDIT_EXPORT TPoint ClientToScreen(const QWidget* w, TPoint p);
VELDIAGEDIT_EXPORT TPoint ScreenToClient(const QWidget* w, TPoint p);

// The mouse handlers of any control: a graphic control's own members, or for a foreign widget
// a hook that is installed on first use. While a foreign widget has any handler, its own mouse
// handling is replaced (a button does not click); when all are cleared it gets it back.
VELDIAGEDIT_EXPORT void SetMouseHandlers(QObject* control, const TMouseHandlers& handlers);
VELDIAGEDIT_EXPORT TMouseHandlers GetMouseHandlers(QObject* control);
VELDIAGEDIT_EXPORT bool HasMouseHook(const QWidget* w);

// Raises a Qt mouse event (in the sender's coordinates) to the handlers, inside the event
// boundary; false when it is not a mouse event.
VELDIAGEDIT_EXPORT bool DispatchMouseEvent(QObject* sender, const TMouseHandlers& h, QEvent* ev);

} // namespace vde
