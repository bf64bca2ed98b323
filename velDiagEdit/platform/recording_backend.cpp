#include "velDiagEdit/platform/recording_backend.h"

namespace vde {

namespace {

QString Hex(TColor c) {
    return QStringLiteral("$%1").arg(c, 6, 16, QLatin1Char('0')).toUpper();
}
QString Pt(TPoint p) {
    return QStringLiteral("%1,%2").arg(p.X).arg(p.Y);
}
QString Rc(const TRect& r) {
    return QStringLiteral("%1,%2,%3,%4").arg(r.Left).arg(r.Top).arg(r.Right).arg(r.Bottom);
}
QString PenText(const TPen& p) {
    QString s = QStringLiteral(" w%1 c%2").arg(p.Width).arg(Hex(p.Color));
    if (p.Style != psSolid)
        s += QStringLiteral(" s%1").arg(int(p.Style));
    return s;
}
QString BrushText(const TBrush& b) {
    return b.Style == bsClear ? QStringLiteral(" bclear")
                              : QStringLiteral(" b%1").arg(Hex(b.Color));
}

} // namespace

QString TCanvasOp::ToString() const {
    switch (Kind) {
    case opMoveTo:
        return QStringLiteral("MoveTo ") + Pt(Points[0]);
    case opLine:
        return QStringLiteral("Line ") + Pt(Points[0]) + QLatin1Char(' ') + Pt(Points[1]) +
               PenText(Pen);
    case opRectangle:
        return QStringLiteral("Rect ") + Rc(R) + PenText(Pen) + BrushText(Brush);
    case opEllipse:
        return QStringLiteral("Ellipse ") + Rc(R) + PenText(Pen) + BrushText(Brush);
    case opPolygon: {
        QString s = QStringLiteral("Polygon");
        for (const TPoint& p : Points)
            s += QLatin1Char(' ') + Pt(p);
        return s + PenText(Pen) + BrushText(Brush);
    }
    case opFillRect:
        return QStringLiteral("Fill ") + Rc(R) + BrushText(Brush);
    case opTextOut:
        return QStringLiteral("Text ") + Pt(Points[0]) + QStringLiteral(" \"") + Text +
               QStringLiteral("\" h%1 c%2").arg(Font.Height).arg(Hex(Font.Color)) +
               BrushText(Brush);
    }
    return {};
}

void TRecordingBackend::MoveTo(TPoint p) {
    TCanvasOp op{opMoveTo, {p}, {}, {}, {}, {}, {}};
    Ops.push_back(op);
}

void TRecordingBackend::Line(TPoint from, TPoint to, const TPen& pen) {
    Ops.push_back({opLine, {from, to}, {}, pen, {}, {}, {}});
}

void TRecordingBackend::Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) {
    Ops.push_back({opRectangle, {}, r, pen, brush, {}, {}});
}

void TRecordingBackend::Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) {
    Ops.push_back({opEllipse, {}, r, pen, brush, {}, {}});
}

void TRecordingBackend::Polygon(std::span<const TPoint> points, const TPen& pen,
                                const TBrush& brush) {
    Ops.push_back({opPolygon, {points.begin(), points.end()}, {}, pen, brush, {}, {}});
}

void TRecordingBackend::FillRect(const TRect& r, const TBrush& brush) {
    Ops.push_back({opFillRect, {}, r, {}, brush, {}, {}});
}

void TRecordingBackend::TextOut(TPoint p, const QString& text, const TFont& font,
                                const TBrush& brush) {
    Ops.push_back({opTextOut, {p}, {}, {}, brush, font, text});
}

QStringList TRecordingBackend::Strings() const {
    QStringList out;
    for (const auto& op : Ops)
        out << op.ToString();
    return out;
}

std::vector<TCanvasOp> TRecordingBackend::OfKind(TCanvasOpKind kind) const {
    std::vector<TCanvasOp> out;
    for (const auto& op : Ops)
        if (op.Kind == kind)
            out.push_back(op);
    return out;
}

} // namespace vde
