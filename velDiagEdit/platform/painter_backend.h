#pragma once
// Draws canvas operations through a QPainter. On raster devices (images, widgets, pixmaps)
// lines and rectangle frames are laid pixel by pixel so the raster conventions hold exactly;
// on vector devices (SVG, printers) the same shapes go out as vector primitives. Every shape is
// first cut to the device (and the painter's clip), so a repaint costs what it draws.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QColor>
#include <QRect>
#include <QSize>
#include <QTransform>
#include <utility>
#include <vector>

class QPainter;
class QRect;
class QRectF;

namespace vde {

// The colour c comes out as through painter: with the palette lent to it, if any.
VELDIAGEDIT_EXPORT QColor PaintedColor(const QPainter* painter, TColor c, TColorUse use);
// Where painter's pixels really go: with redirection (a widget rendered into an image) that is
// the engine's device, and the device transform maps onto it.
VELDIAGEDIT_EXPORT const QPaintDevice* TargetDevice(const QPainter* painter);

// v is a whole number of 256ths (every zoom step but 1/3 and 2/3), and small enough that sums
// of such values stay exact in a double.
VELDIAGEDIT_EXPORT bool OnGrid256(double v);

// How a scaled painter lays one axis of a fill on device pixels (see FillPixels).
struct TAxisMap {
    double S = 1, D = 0;
    bool Grid = false;
    int64_t K = 256, G = 128; // S and D + 1/2 in 256ths, when Grid

    // The painter's clip on this axis (logical, and on the device as Qt rounds it): a thin run
    // that meets it stays within it on the device.
    bool Clipped = false;
    int64_t ClipL = 0, ClipR = 0;
    int DevL = 0, DevR = 0;

    static TAxisMap Of(double s, double d);
    void SetClip(double lo, double hi);
    int Edge(int64_t v) const;
    std::pair<int, int> Span(int64_t l, int64_t w, bool atEnd = false) const;
    static constexpr int64_t kThinRun = 8;
};

class VELDIAGEDIT_EXPORT TPainterBackend : public ICanvasBackend {
public:
    explicit TPainterBackend(QPainter* painter);
    ~TPainterBackend() override;
    TPainterBackend(const TPainterBackend&) = delete;
    TPainterBackend& operator=(const TPainterBackend&) = delete;
    void MoveTo(TPoint) override {}
    void Line(TPoint from, TPoint to, const TPen& pen) override;
    void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) override;
    void FillRect(const TRect& r, const TBrush& brush) override;
    void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) override;
    bool VisibleRect(TRect& R) const override;
    void Hold(bool on) override;

private:
    // A pixel area in the painter's coordinates, left/top inclusive, right/bottom exclusive.
    struct TArea {
        int64_t L, T, R, B;
    };
    static TArea Grown(const QRectF& area, int64_t margin);
    TArea ClipArea(int64_t margin) const;
    // The device alone, without the clip: Qt clips fills itself, and this one is kept while
    // the transform stays, so a fill does not pay for the clip's bookkeeping.
    TArea DeviceArea(int64_t margin) const;
    // Fills the painter-coordinate pixels q (already cut to an area).
    // Zoomed, a thin run keeps to the device edge of its start or, with endX / endY, of its
    // end (a frame's right and bottom lines keep to the edge of the box they close).
    void FillPixels(const QRect& q, const QColor& c, bool endX = false, bool endY = false);
    // Sends the fills that wait; anything else drawn on the painter must come after them.
    void Flush();
    static bool ClipToArea(int64_t l, int64_t t, int64_t r, int64_t b, const TArea& a, QRect& out);
    void Span(int x0, int y0, int x1, int y1, const TPen& pen, bool includeEnd, bool endX = false,
              bool endY = false);
    void Stamp(int64_t x, int64_t y, int w, const QColor& c, const TArea& area);
    QColor Color(TColor c, TColorUse use) const;
    QPainter* FPainter;
    bool FRaster;
    mutable bool FDeviceKnown = false;
    mutable QTransform FDeviceTransform;
    // A kept backend serves the next paint with the same painter: the device may differ.
    mutable const QPaintDevice* FDeviceTarget = nullptr;
    mutable QSize FDeviceSize;
    mutable TArea FDevice{};
    bool FHeld = false;
    // How fills go while held, taken from the painter at the first one.
    struct {
        bool Known = false, Wait = false, Scaled = false;
        TAxisMap X, Y;      // scaled
        int Ox = 0, Oy = 0; // unscaled: the whole-pixel offset
    } FMode;
    mutable struct {
        bool Known = false;
        TColor From = 0;
        TColorUse Use = cuPen;
        QColor To;
    } FLastColor;
    // Waiting fills: device rectangles (before the painter's redirection), all of one colour.
    std::vector<QRect> FWaiting;
    QColor FWaitingColor;
};

} // namespace vde
