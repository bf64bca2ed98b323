#include "velDiagEdit/platform/painter_backend.h"

#include <QPaintDevice>
#include <QPainter>
#include <QPolygon>
#include <cstdlib>

namespace vde {

namespace {

// On/off run lengths of the dashed styles, in pen widths.
std::span<const int> DashPattern(TPenStyle style) {
    static const int dash[] = {18, 6};
    static const int dot[] = {3, 3};
    static const int dashDot[] = {9, 6, 3, 6};
    static const int dashDotDot[] = {9, 3, 3, 3, 3, 3};
    switch (style) {
    case psDash:
        return dash;
    case psDot:
        return dot;
    case psDashDot:
        return dashDot;
    case psDashDotDot:
        return dashDotDot;
    default:
        return {};
    }
}

bool IsRaster(QPainter* p) {
    const int t = p->device() ? p->device()->devType() : 0;
    return t == QInternal::Image || t == QInternal::Widget || t == QInternal::Pixmap;
}

// Keeps the host's painter state intact around each operation.
struct StateGuard {
    QPainter* p;
    explicit StateGuard(QPainter* painter) : p(painter) {
        p->save();
        p->setRenderHint(QPainter::Antialiasing, false);
    }
    ~StateGuard() { p->restore(); }
};

} // namespace

TPainterBackend::TPainterBackend(QPainter* painter)
    : FPainter(painter), FRaster(IsRaster(painter)) {}

void TPainterBackend::Stamp(int x, int y, int w, const QColor& c) {
    const int off = w / 2;
    FPainter->fillRect(QRect(x - off, y - off, w, w), c);
}

// A run of pixels from (x0, y0) to (x1, y1), stamped with the pen; the end pixel only when
// includeEnd.
void TPainterBackend::Span(int x0, int y0, int x1, int y1, const TPen& pen, bool includeEnd) {
    const int w = pen.Width < 1 ? 1 : pen.Width;
    const QColor c = ToQColor(pen.Color);
    const int off = w / 2;
    const auto pattern = DashPattern(pen.Style);
    if (pattern.empty() && (x0 == x1 || y0 == y1)) {
        if (!includeEnd) {
            if (x0 == x1 && y0 == y1)
                return;
            x1 -= Sign(x1 - x0);
            y1 -= Sign(y1 - y0);
        }
        const int l = std::min(x0, x1), r = std::max(x0, x1);
        const int t = std::min(y0, y1), b = std::max(y0, y1);
        FPainter->fillRect(QRect(l - off, t - off, r - l + w, b - t + w), c);
        return;
    }
    // Bresenham, with the dash pattern counted in steps along the line.
    const int dx = std::abs(x1 - x0), sx = x0 < x1 ? 1 : -1;
    const int dy = -std::abs(y1 - y0), sy = y0 < y1 ? 1 : -1;
    int err = dx + dy;
    int x = x0, y = y0;
    size_t run = 0;
    int left = pattern.empty() ? 0 : pattern[0] * w;
    for (;;) {
        const bool atEnd = x == x1 && y == y1;
        if (atEnd && !includeEnd)
            break;
        if (pattern.empty() || run % 2 == 0)
            Stamp(x, y, w, c);
        if (!pattern.empty() && --left <= 0) {
            run = (run + 1) % pattern.size();
            left = pattern[run] * w;
        }
        if (atEnd)
            break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += sy;
        }
    }
}

void TPainterBackend::Line(TPoint from, TPoint to, const TPen& pen) {
    if (pen.Style == psClear)
        return;
    const int w = pen.Width < 1 ? 1 : pen.Width;
    if (FRaster) {
        // Pixel runs go out as solid fills, which use none of the painter's pen, brush or font:
        // only antialiasing has to be off, and it is put back as it was.
        const bool aa = FPainter->testRenderHint(QPainter::Antialiasing);
        if (aa)
            FPainter->setRenderHint(QPainter::Antialiasing, false);
        // A thin line leaves out its end pixel; a wide one is stamped over its whole length.
        Span(from.X, from.Y, to.X, to.Y, pen, w > 1);
        if (aa)
            FPainter->setRenderHint(QPainter::Antialiasing, true);
        return;
    }
    StateGuard g(FPainter);
    {
        if (w == 1 && from == to)
            return;
        QPen qp(ToQColor(pen.Color));
        qp.setWidth(w);
        qp.setCapStyle(w > 1 ? Qt::SquareCap : Qt::FlatCap);
        if (!DashPattern(pen.Style).empty())
            qp.setStyle(Qt::DashLine);
        FPainter->setPen(qp);
        FPainter->drawLine(QPointF(from.X + 0.5, from.Y + 0.5), QPointF(to.X + 0.5, to.Y + 0.5));
    }
}

void TPainterBackend::Rectangle(const TRect& r0, const TPen& pen, const TBrush& brush) {
    const TRect r = NormalizedRect({r0.Left, r0.Top}, {r0.Right, r0.Bottom});
    if (r.Width() == 0 || r.Height() == 0)
        return;
    StateGuard g(FPainter);
    if (brush.Style != bsClear)
        FPainter->fillRect(QRect(r.Left, r.Top, r.Width(), r.Height()), ToQColor(brush.Color));
    if (pen.Style == psClear)
        return;
    if (!FRaster) {
        QPen qp(ToQColor(pen.Color));
        qp.setWidth(pen.Width < 1 ? 1 : pen.Width);
        qp.setJoinStyle(Qt::MiterJoin);
        FPainter->setPen(qp);
        FPainter->setBrush(Qt::NoBrush);
        FPainter->drawRect(QRectF(r.Left + 0.5, r.Top + 0.5, r.Width() - 1, r.Height() - 1));
        return;
    }
    const int R = r.Right - 1, B = r.Bottom - 1;
    Span(r.Left, r.Top, R, r.Top, pen, true);
    Span(R, r.Top, R, B, pen, true);
    Span(r.Left, B, R, B, pen, true);
    Span(r.Left, r.Top, r.Left, B, pen, true);
}

void TPainterBackend::Ellipse(const TRect& r0, const TPen& pen, const TBrush& brush) {
    const TRect r = NormalizedRect({r0.Left, r0.Top}, {r0.Right, r0.Bottom});
    if (r.Width() == 0 || r.Height() == 0)
        return;
    StateGuard g(FPainter);
    if (pen.Style == psClear) {
        FPainter->setPen(Qt::NoPen);
    } else {
        QPen qp(ToQColor(pen.Color));
        qp.setWidth(pen.Width < 1 ? 1 : pen.Width);
        FPainter->setPen(qp);
    }
    FPainter->setBrush(brush.Style == bsClear ? QBrush(Qt::NoBrush)
                                              : QBrush(ToQColor(brush.Color)));
    FPainter->drawEllipse(QRectF(r.Left + 0.5, r.Top + 0.5, r.Width() - 1, r.Height() - 1));
}

void TPainterBackend::Polygon(std::span<const TPoint> points, const TPen& pen,
                              const TBrush& brush) {
    if (points.empty())
        return;
    StateGuard g(FPainter);
    QPolygonF poly;
    for (const TPoint& p : points)
        poly << QPointF(p.X + 0.5, p.Y + 0.5);
    if (pen.Style == psClear) {
        FPainter->setPen(Qt::NoPen);
    } else {
        QPen qp(ToQColor(pen.Color));
        qp.setWidth(pen.Width < 1 ? 1 : pen.Width);
        FPainter->setPen(qp);
    }
    FPainter->setBrush(brush.Style == bsClear ? QBrush(Qt::NoBrush)
                                              : QBrush(ToQColor(brush.Color)));
    FPainter->drawPolygon(poly);
}

void TPainterBackend::FillRect(const TRect& r0, const TBrush& brush) {
    const TRect r = NormalizedRect({r0.Left, r0.Top}, {r0.Right, r0.Bottom});
    if (r.Width() == 0 || r.Height() == 0 || brush.Style == bsClear)
        return;
    StateGuard g(FPainter);
    FPainter->fillRect(QRect(r.Left, r.Top, r.Width(), r.Height()), ToQColor(brush.Color));
}

void TPainterBackend::TextOut(TPoint p, const QString& text, const TFont& font,
                              const TBrush& brush) {
    StateGuard g(FPainter);
    const QFont qf = ToQFont(font);
    const QFontMetrics& fm = FontMetricsOf(font);
    if (brush.Style != bsClear)
        FPainter->fillRect(QRect(p.X, p.Y, FontTextWidth(font, text), fm.height()),
                           ToQColor(brush.Color));
    FPainter->setFont(qf);
    FPainter->setPen(ToQColor(font.Color));
    FPainter->drawText(QPoint(p.X, p.Y + fm.ascent()), text);
}

} // namespace vde
