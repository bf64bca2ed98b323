#pragma once
// Logs every canvas operation with the pen, brush and font in force, for exact tests.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QStringList>
#include <vector>

namespace vde {

enum TCanvasOpKind { opMoveTo, opLine, opRectangle, opEllipse, opPolygon, opFillRect, opTextOut };

struct VELDIAGEDIT_EXPORT TCanvasOp {
    TCanvasOpKind Kind;
    std::vector<TPoint> Points; // MoveTo: 1; Line: from, to; Polygon: all; TextOut: 1
    TRect R;                    // Rectangle, Ellipse, FillRect
    TPen Pen;
    TBrush Brush;
    TFont Font;
    QString Text;
    // A compact text form, e.g. "Line 1,2 5,2 w2 c$000000" or "Rect 0,0,10,10 w1 c$0000FF
    // b$C0C0C0".
    QString ToString() const;
};

class VELDIAGEDIT_EXPORT TRecordingBackend : public ICanvasBackend {
public:
    std::vector<TCanvasOp> Ops;

    void MoveTo(TPoint p) override;
    void Line(TPoint from, TPoint to, const TPen& pen) override;
    void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) override;
    void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) override;
    void FillRect(const TRect& r, const TBrush& brush) override;
    void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) override;

    QStringList Strings() const;
    // Only the operations of one kind.
    std::vector<TCanvasOp> OfKind(TCanvasOpKind kind) const;
    void Clear() { Ops.clear(); }
};

} // namespace vde
