#pragma once
// Draws canvas operations through a QPainter. On raster devices (images, widgets, pixmaps)
// lines and rectangle frames are laid pixel by pixel so the raster conventions hold exactly;
// on vector devices (SVG, printers) the same shapes go out as vector primitives. Every shape is
// first cut to the device (and the painter's clip), so a repaint costs what it draws.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/velDiagEdit_export.h"

class QPainter;
class QRect;

namespace vde {

class VELDIAGEDIT_EXPORT TPainterBackend : public ICanvasBackend {
public:
    explicit TPainterBackend(QPainter* painter);
    void MoveTo(TPoint) override {}
    void Line(TPoint from, TPoint to, const TPen& pen) override;
    void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) override;
    void FillRect(const TRect& r, const TBrush& brush) override;
    void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) override;
    bool VisibleRect(TRect& R) const override;

private:
    // A pixel area in the painter's coordinates, left/top inclusive, right/bottom exclusive.
    struct TArea {
        int64_t L, T, R, B;
    };
    TArea ClipArea(int64_t margin) const;
    static bool ClipToArea(int64_t l, int64_t t, int64_t r, int64_t b, const TArea& a, QRect& out);
    void Span(int x0, int y0, int x1, int y1, const TPen& pen, bool includeEnd);
    void Stamp(int64_t x, int64_t y, int w, const QColor& c, const TArea& area);
    QColor Color(TColor c, TColorUse use) const;
    QPainter* FPainter;
    bool FRaster;
};

} // namespace vde
