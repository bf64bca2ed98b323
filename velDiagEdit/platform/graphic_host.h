#pragma once
// One host per parent widget paints the widget's graphic controls and hands them their mouse
// events. A paint of the widget runs in one pass: the widget paints itself, then its paint
// handler (SetPaintHandler: the wires), then the visible graphic controls that meet the painted
// rectangle, in z-order. A press goes to the topmost visible graphic control under the point,
// which then gets every move and the release (capture); anything else goes on to the widget's
// own handling. A uniform grid of the controls' bounds answers "what meets this rectangle" and
// "what is under this point" from the cells concerned, so painting and hit tests cost what
// lies there, not what the diagram holds.

#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <functional>
#include <vector>

class QMouseEvent;
class QPaintEvent;

namespace vde {

class VELDIAGEDIT_EXPORT TGraphicHost : public QObject {
    Q_OBJECT
public:
    // The host of `w`, made on first use; Find gives none when there is none.
    static TGraphicHost* For(QWidget* w);
    static TGraphicHost* Find(const QWidget* w);
    ~TGraphicHost() override;

    void SetPaintHandler(std::function<void()> handler);
    bool HasPaintHandler() const { return bool(FPaintHandler); }
    const std::function<void()>& PaintHandler() const { return FPaintHandler; }

    // Asks for a repaint of r (widget coordinates). Past a few dozen rectangles before the next
    // paint the whole widget is asked for once instead: Qt's dirty region costs in the number of
    // rectangles it holds, and a load of many blocks into a shown widget would be quadratic.
    void Invalidate(const QRect& r);

    // The topmost visible graphic control whose rectangle holds p (parent coordinates).
    TGraphicControl* ControlAt(const QPoint& p) const;
    // The visible graphic controls meeting r, bottom first.
    std::vector<TGraphicControl*> ControlsIn(const QRect& r) const;
    int Count() const { return FCount; }
    // Every graphic control of the widget, shown or hidden, bottom first.
    std::vector<TGraphicControl*> Controls() const;
    // The same for any widget; none for a widget that never had one.
    static std::vector<TGraphicControl*> ControlsOf(const QWidget* w);

    // Whether the widget itself wants hover moves that fall on no control (it is made to track
    // the mouse for its controls; their hover is otherwise not the widget's to see).
    void SetWidgetWantsHover(bool On) { FWidgetTracks = On; }
    bool WidgetWantsHover() const { return !FTrackingForControls || FWidgetTracks; }

    // Hands a mouse event of the widget to the control it concerns; false when it concerns
    // none (the widget's own handling then takes it).
    bool DispatchMouse(QMouseEvent* e);

    // With this on, the paint draws the handler's and the controls' default colours from the
    // widget's palette (see PaletteColor in colors.h); off, as always, the colours as given.
    void SetFollowPalette(bool Value);
    bool GetFollowPalette() const { return FFollowPalette; }

    // Zoom of the widget's contents: the paint handler and the controls draw in their own
    // coordinates through a painter scaled by this, asked-for repaints are mapped onto the
    // widget, and mouse positions are divided by it before a control or the widget's mouse
    // handlers see them. The widget paints its own background unscaled. 1 (the default) leaves
    // every path exactly as it is without a zoom.
    void SetScale(double Value);
    double Scale() const { return FScale; }
    // A point of the widget in the controls' coordinates, and a rectangle of theirs on the
    // widget (every pixel it touches) and back.
    QPointF ToLogical(const QPointF& p) const { return FScale == 1.0 ? p : p / FScale; }
    QPoint PointAt(const QPointF& p) const;
    QRect ToDevice(const QRect& r) const;
    QRect ToLogical(const QRect& r) const;
    // The scale of a widget's host; 1 for a widget without one.
    static double ScaleOf(const QWidget* w);

    // Side of a grid cell, in pixels.
    static constexpr int kCell = 128;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class TGraphicControl;
    explicit TGraphicHost(QWidget* w);
    void Add(TGraphicControl* c);
    void Remove(TGraphicControl* c);
    void Refile(TGraphicControl* c);
    void Unfile(TGraphicControl* c);
    void Raise(TGraphicControl* c);
    void Lower(TGraphicControl* c);
    void Paint(QPaintEvent* e);
    // Makes the widget track the mouse for its controls, remembering whether it did so itself.
    void TrackForControls();
    template <class F> void ForEachIn(const QRect& r, F f) const;

    QWidget* FWidget;
    std::function<void()> FPaintHandler;
    QHash<quint64, std::vector<TGraphicControl*>> FGrid;
    // Controls spanning too many cells to file: looked at on every query.
    std::vector<TGraphicControl*> FLarge;
    int FCount = 0;
    int64_t FTopZ = 0;
    int64_t FBottomZ = 0;
    mutable uint64_t FQuery = 0;
    QPointer<TGraphicControl> FCapture;
    bool FCapturing = false;
    bool FPainting = false;
    int FPendingRects = 0;
    bool FWholePending = false;
    bool FTrackingForControls = false;
    bool FWidgetTracks = false;
    bool FFollowPalette = false;
    double FScale = 1.0;
};

} // namespace vde
