#include "velDiagEdit/platform/painter_backend.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPalette>
#include <QPolygon>
#include <algorithm>
#include <cmath>
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

// Coordinates reach Qt only inside this range: within it a QRect's own arithmetic (x + w - 1, a
// width of r - l) cannot overflow, whatever a stream stored. Drawing is clipped to the device
// first, so on any real device nothing that shows is lost; only the area Qt is handed saturates.
constexpr int64_t kQtReach = (int64_t(1) << 30) - 1;

int64_t Reachable(double v) {
    if (!(v == v))
        return 0;
    return int64_t(std::clamp(v, double(-kQtReach), double(kQtReach)));
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

const QPaintDevice* TargetDevice(const QPainter* p) {
    const QPaintEngine* engine = p->paintEngine();
    return engine && engine->paintDevice() ? engine->paintDevice() : p->device();
}

// A surface that follows its palette lends it to its painter for the paint (TPaletteScope).
QColor PaintedColor(const QPainter* painter, TColor c, TColorUse use) {
    const QPalette* palette = TPaletteScope::PaletteFor(painter);
    return ToQColor(palette ? PaletteColor(*palette, c, use) : c);
}

TPainterBackend::TPainterBackend(QPainter* painter)
    : FPainter(painter), FRaster(IsRaster(painter)) {}

// The device's area in the painter's coordinates (within the painter's clip, if it has one),
// grown by margin pixels; nothing outside it can show.
TPainterBackend::TArea TPainterBackend::ClipArea(int64_t margin) const {
    TArea a{-kQtReach, -kQtReach, kQtReach, kQtReach};
    const QPaintDevice* dev = TargetDevice(FPainter);
    if (!dev)
        return a;
    bool invertible = false;
    const QTransform toLogical = FPainter->deviceTransform().inverted(&invertible);
    if (!invertible)
        return a;
    QRectF area = toLogical.mapRect(QRectF(0, 0, dev->width(), dev->height()));
    if (FPainter->hasClipping())
        area = area.intersected(FPainter->clipBoundingRect());
    return Grown(area, margin);
}

// A logical area, whole pixels outward, grown by margin.
TPainterBackend::TArea TPainterBackend::Grown(const QRectF& area, int64_t margin) {
    return {Reachable(std::floor(area.left()) - double(margin)),
            Reachable(std::floor(area.top()) - double(margin)),
            Reachable(std::ceil(area.right()) + double(margin)),
            Reachable(std::ceil(area.bottom()) + double(margin))};
}

TPainterBackend::TArea TPainterBackend::DeviceArea(int64_t margin) const {
    // While held and once known, the painter stays put (see FillPixels).
    const bool settled = FHeld && FMode.Known && FDeviceKnown;
    if (!settled) {
        const QTransform& t = FPainter->deviceTransform();
        const QPaintDevice* dev = TargetDevice(FPainter);
        const QSize size = dev ? QSize(dev->width(), dev->height()) : QSize();
        if (!FDeviceKnown || t != FDeviceTransform || dev != FDeviceTarget || size != FDeviceSize) {
            FDeviceKnown = true;
            FDeviceTransform = t;
            FDeviceTarget = dev;
            FDeviceSize = size;
            FDevice = {-kQtReach, -kQtReach, kQtReach, kQtReach};
            bool invertible = false;
            const QTransform toLogical = t.inverted(&invertible);
            if (dev && invertible)
                FDevice = Grown(toLogical.mapRect(QRectF(0, 0, size.width(), size.height())), 0);
        }
    }
    const auto grow = [margin](int64_t v, int64_t by) {
        return std::clamp(v + by * margin, -kQtReach, kQtReach);
    };
    return {grow(FDevice.L, -1), grow(FDevice.T, -1), grow(FDevice.R, 1), grow(FDevice.B, 1)};
}

TPainterBackend::~TPainterBackend() {
    Flush();
}

// Fills wait only on raster devices (a vector device keeps each fill as it came) and only
// when they would come out opaque, as they do one by one.
void TPainterBackend::Hold(bool on) {
    if (!on)
        Flush();
    FHeld = on && FRaster;
    FMode.Known = false;
    FLastColor.Known = false;
}

bool OnGrid256(double v) {
    const double k = v * 256.0;
    return std::abs(k) < double(int64_t(1) << 40) && k == std::floor(k);
}

// device = s * logical + d, or in 256ths when both are whole 256ths, where the sums are exact.
TAxisMap TAxisMap::Of(double s, double d) {
    TAxisMap m;
    m.S = s;
    m.D = d;
    m.Grid = OnGrid256(s) && OnGrid256(d) && s <= 64;
    if (m.Grid) {
        m.K = int64_t(s * 256);
        m.G = int64_t(d * 256) + 128;
    }
    return m;
}

// The device edge at logical v: s * v + d rounded half up, as Qt rounds a fill's edges. Fills
// reach here cut to the device, so the value is well within an int.
int TAxisMap::Edge(int64_t v) const {
    if (Grid)
        return int((K * v + G) >> 8);
    const double x = S * double(v) + D + 0.5;
    const auto i = int64_t(x);
    return int(double(i) > x ? i - 1 : i);
}

// The device pixels of logical [l, l + w), as first pixel and count. A thin run (a line's
// width) is as wide wherever it lies, its width scaled and rounded half up, and never less
// than one pixel; a longer one runs from edge to edge, so that what abuts stays abutting.
std::pair<int, int> TAxisMap::Span(int64_t l, int64_t w, bool atEnd) const {
    int a = Edge(l);
    if (w <= kThinRun) {
        int n = Grid ? int((K * w + 128) >> 8) : int(std::floor(S * double(w) + 0.5));
        n = std::max(n, 1);
        if (atEnd)
            a = Edge(l + w) - n;
        // A block's frame at its right edge would start on the first device pixel the clip
        // leaves out: it is drawn on the last one inside instead.
        if (Clipped && l < ClipR && l + w > ClipL && n <= DevR - DevL) {
            if (a + n > DevR)
                a = DevR - n;
            if (a < DevL)
                a = DevL;
        }
        return {a, n};
    }
    return {a, std::max(Edge(l + w) - a, 1)};
}

void TAxisMap::SetClip(double lo, double hi) {
    if (!(std::abs(lo) < 1e9 && std::abs(hi) < 1e9))
        return;
    ClipL = std::llround(lo);
    ClipR = std::llround(hi);
    DevL = Edge(ClipL);
    DevR = Edge(ClipR);
    Clipped = DevR > DevL;
}

namespace {

QRect MapFill(const QRect& q, const TAxisMap& x, const TAxisMap& y, bool endX, bool endY) {
    const auto [l, w] = x.Span(q.x(), q.width(), endX);
    const auto [t, h] = y.Span(q.y(), q.height(), endY);
    return QRect(l, t, w, h);
}

} // namespace

// A diagram pixel zoomed is a fraction of device pixels: a fill is laid on whole device pixels
// by the rules of TAxisMap, so that lines keep one width and never vanish. Unscaled painting
// fills what Qt's own fill of q would.
void TPainterBackend::FillPixels(const QRect& q, const QColor& c, bool endX, bool endY) {
    if (FHeld && !FMode.Known) {
        // A held batch draws through this backend alone, so the painter's state stays put.
        FMode.Known = true;
        FMode.Wait = false;
        const QTransform& t = FPainter->deviceTransform();
        if (FPainter->opacity() == 1.0 &&
            FPainter->compositionMode() == QPainter::CompositionMode_SourceOver) {
            if (t.type() == QTransform::TxScale && t.m11() > 0 && t.m22() > 0) {
                FMode.Wait = true;
                FMode.Scaled = true;
                FMode.X = TAxisMap::Of(t.m11(), t.dx());
                FMode.Y = TAxisMap::Of(t.m22(), t.dy());
                if (FPainter->hasClipping()) {
                    const QRectF clip = FPainter->clipBoundingRect();
                    FMode.X.SetClip(clip.left(), clip.right());
                    FMode.Y.SetClip(clip.top(), clip.bottom());
                }
            } else if (t.type() <= QTransform::TxTranslate && t.dx() == std::floor(t.dx()) &&
                       t.dy() == std::floor(t.dy()) && std::abs(t.dx()) < 1e9 &&
                       std::abs(t.dy()) < 1e9) {
                FMode.Wait = true;
                FMode.Scaled = false;
                FMode.Ox = int(t.dx());
                FMode.Oy = int(t.dy());
            }
        }
    }
    if (FHeld && FMode.Wait) {
        const QRect device = FMode.Scaled ? MapFill(q, FMode.X, FMode.Y, endX, endY)
                                          : q.translated(FMode.Ox, FMode.Oy);
        if (!FWaiting.empty() && c != FWaitingColor)
            Flush();
        FWaitingColor = c;
        FWaiting.push_back(device);
        return;
    }
    Flush();
    const QTransform& t = FPainter->deviceTransform();
    if (t.type() == QTransform::TxScale && t.m11() > 0 && t.m22() > 0) {
        const double sx = t.m11(), sy = t.m22(), dx = t.dx(), dy = t.dy();
        const QRect d = MapFill(q, TAxisMap::Of(sx, dx), TAxisMap::Of(sy, dy), endX, endY);
        // The device rectangle said in the painter's terms; Qt maps it back to whole pixels.
        FPainter->fillRect(
            QRectF((d.x() - dx) / sx, (d.y() - dy) / sy, d.width() / sx, d.height() / sy), c);
        return;
    }
    FPainter->fillRect(q, c);
}

void TPainterBackend::Flush() {
    if (FWaiting.empty())
        return;
    QPainter* p = FPainter;
    p->save();
    p->resetTransform();
    // What is left after a reset: the redirection's offset, and the device's pixel ratio.
    const QTransform rest = p->deviceTransform();
    const double ox = rest.dx(), oy = rest.dy();
    if (rest.type() <= QTransform::TxTranslate && ox == std::floor(ox) && oy == std::floor(oy)) {
        if (ox != 0 || oy != 0)
            for (QRect& r : FWaiting)
                r.translate(-int(ox), -int(oy));
        p->setRenderHint(QPainter::Antialiasing, false);
        p->setPen(Qt::NoPen);
        p->setBrush(FWaitingColor);
        p->drawRects(FWaiting.data(), int(FWaiting.size()));
        p->restore();
    } else {
        // One by one, each device rectangle said in the painter's terms.
        p->restore();
        const StateGuard g(p);
        const QTransform& t = p->deviceTransform();
        const double sx = t.m11(), sy = t.m22(), dx = t.dx(), dy = t.dy();
        for (const QRect& r : FWaiting)
            p->fillRect(
                QRectF((r.x() - dx) / sx, (r.y() - dy) / sy, r.width() / sx, r.height() / sy),
                FWaitingColor);
    }
    FWaiting.clear();
}

bool TPainterBackend::VisibleRect(TRect& R) const {
    const TArea a = ClipArea(0);
    const auto clamp = [](int64_t v) {
        return int32_t(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
    };
    R = {clamp(a.L), clamp(a.T), clamp(a.R), clamp(a.B)};
    return true;
}

// The part of the pixel span l..r-1 x t..b-1 inside the area; false when none is.
bool TPainterBackend::ClipToArea(int64_t l, int64_t t, int64_t r, int64_t b, const TArea& a,
                                 QRect& out) {
    l = std::max(l, a.L);
    t = std::max(t, a.T);
    r = std::min(r, a.R);
    b = std::min(b, a.B);
    if (l >= r || t >= b)
        return false;
    out = QRect(int(l), int(t), int(r - l), int(b - t));
    return true;
}

// One pen square centred on (x, y), reckoned in 64 bits and clipped to the area before Qt sees
// it: a pixel at the edge of the 32-bit range does not overflow QRect's arithmetic.
void TPainterBackend::Stamp(int64_t x, int64_t y, int w, const QColor& c, const TArea& area) {
    const int64_t l = x - w / 2, t = y - w / 2;
    QRect q;
    if (ClipToArea(l, t, l + w, t + w, area, q))
        FillPixels(q, c);
}

// A run of pixels from (x0, y0) to (x1, y1), stamped with the pen; the end pixel only when
// includeEnd. Only the part that can reach the device is stepped, so the cost follows the
// pixels drawn whatever the coordinates are.
void TPainterBackend::Span(int x0, int y0, int x1, int y1, const TPen& pen, bool includeEnd,
                           bool endX, bool endY) {
    const int w = pen.Width < 1 ? 1 : pen.Width;
    const QColor c = Color(pen.Color, cuPen);
    const int off = w / 2;
    const auto pattern = DashPattern(pen.Style);
    if (pattern.empty() && (x0 == x1 || y0 == y1)) {
        const TArea area = DeviceArea(int64_t(w) + 2);
        int64_t ex = x1, ey = y1;
        if (!includeEnd) {
            if (x0 == x1 && y0 == y1)
                return;
            ex -= Sign(int64_t(x1) - x0);
            ey -= Sign(int64_t(y1) - y0);
        }
        const int64_t l = std::min<int64_t>(x0, ex), r = std::max<int64_t>(x0, ex);
        const int64_t t = std::min<int64_t>(y0, ey), b = std::max<int64_t>(y0, ey);
        QRect q;
        if (ClipToArea(l - off, t - off, r - off + w, b - off + w, area, q))
            FillPixels(q, c, endX, endY);
        return;
    }
    const TArea area = ClipArea(int64_t(w) + 2);
    // Bresenham (the error-term form: err = dx - |dy| to start, + dx on a minor step, - |dy| on
    // a major one). Its pixel at major step k has the closed form used below, so only the steps
    // whose major coordinate lies within the area are visited, and each gives exactly the pixel
    // the step-by-step walk from the line's own start would give.
    const int64_t adx = std::abs(int64_t(x1) - x0), ady = std::abs(int64_t(y1) - y0);
    const int64_t stepX = x0 < x1 ? 1 : -1, stepY = y0 < y1 ? 1 : -1;
    const bool xMajor = adx >= ady;
    const int64_t major = xMajor ? adx : ady, minor = xMajor ? ady : adx;
    const int64_t majorStart = xMajor ? x0 : y0, majorStep = xMajor ? stepX : stepY;
    const int64_t lo = xMajor ? area.L : area.T, hi = (xMajor ? area.R : area.B) - 1;
    // Steps k in [first, last] put the major coordinate within lo..hi.
    int64_t first = majorStep > 0 ? lo - majorStart : majorStart - hi;
    int64_t last = majorStep > 0 ? hi - majorStart : majorStart - lo;
    first = std::max<int64_t>(first, 0);
    last = std::min<int64_t>(last, includeEnd ? major : major - 1);
    if (first > last)
        return;
    // Minor steps taken by major step k: floor((2 * minor * k + major) / (2 * major)); a
    // y-major line takes its x step on ties, as the error-term walk does.
    __extension__ typedef __int128 Wide;
    auto minorAt = [&](int64_t k) -> int64_t {
        if (major == 0)
            return 0;
        return int64_t((Wide(2) * minor * k + major) / (Wide(2) * major));
    };
    int64_t period = 0;
    for (int v : pattern)
        period += int64_t(v) * w;
    for (int64_t k = first; k <= last; ++k) {
        if (period > 0) {
            // Dashes are counted in steps from the line's start.
            int64_t at = k % period;
            size_t run = 0;
            while (at >= int64_t(pattern[run]) * w) {
                at -= int64_t(pattern[run]) * w;
                ++run;
            }
            if (run % 2 != 0)
                continue;
        }
        const int64_t m = minorAt(k);
        const int64_t x = xMajor ? x0 + stepX * k : x0 + stepX * m;
        const int64_t y = xMajor ? y0 + stepY * m : y0 + stepY * k;
        Stamp(x, y, w, c, area);
    }
}

QColor TPainterBackend::Color(TColor c, TColorUse use) const {
    // Within a held batch the palette lent to the painter stays: the last answer holds.
    if (FHeld && FLastColor.Known && FLastColor.From == c && FLastColor.Use == use)
        return FLastColor.To;
    const QColor to = PaintedColor(FPainter, c, use);
    if (FHeld)
        FLastColor = {true, c, use, to};
    return to;
}

void TPainterBackend::Line(TPoint from, TPoint to, const TPen& pen) {
    if (pen.Style == psClear)
        return;
    const int w = pen.Width < 1 ? 1 : pen.Width;
    if (FRaster && FHeld && FMode.Known && FMode.Wait) {
        // Waiting fills go out with antialiasing off whatever the painter's setting.
        Span(from.X, from.Y, to.X, to.Y, pen, w > 1);
        return;
    }
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
    Flush();
    StateGuard g(FPainter);
    {
        if (w == 1 && from == to)
            return;
        QPen qp(Color(pen.Color, cuPen));
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
    if (r.Left == r.Right || r.Top == r.Bottom)
        return;
    StateGuard g(FPainter);
    const int pw = pen.Width < 1 ? 1 : pen.Width;
    const TArea area = DeviceArea(int64_t(pw) + 2);
    QRect fill;
    if (!ClipToArea(int64_t(r.Left) - pw, int64_t(r.Top) - pw, int64_t(r.Right) + pw,
                    int64_t(r.Bottom) + pw, area, fill))
        return;
    if (brush.Style != bsClear && ClipToArea(r.Left, r.Top, r.Right, r.Bottom, area, fill))
        FillPixels(fill, Color(brush.Color, cuBrush));
    if (pen.Style == psClear)
        return;
    if (!FRaster) {
        Flush();
        QPen qp(Color(pen.Color, cuPen));
        qp.setWidth(pw);
        qp.setJoinStyle(Qt::MiterJoin);
        FPainter->setPen(qp);
        FPainter->setBrush(Qt::NoBrush);
        FPainter->drawRect(QRectF(r.Left + 0.5, r.Top + 0.5, double(r.Right) - r.Left - 1,
                                  double(r.Bottom) - r.Top - 1));
        return;
    }
    const int R = r.Right - 1, B = r.Bottom - 1;
    Span(r.Left, r.Top, R, r.Top, pen, true);
    Span(R, r.Top, R, B, pen, true, true, false);
    Span(r.Left, B, R, B, pen, true, false, true);
    Span(r.Left, r.Top, r.Left, B, pen, true);
}

void TPainterBackend::Ellipse(const TRect& r0, const TPen& pen, const TBrush& brush) {
    const TRect r = NormalizedRect({r0.Left, r0.Top}, {r0.Right, r0.Bottom});
    if (r.Left == r.Right || r.Top == r.Bottom)
        return;
    const int pw = pen.Width < 1 ? 1 : pen.Width;
    QRect seen;
    if (!ClipToArea(int64_t(r.Left) - pw, int64_t(r.Top) - pw, int64_t(r.Right) + pw,
                    int64_t(r.Bottom) + pw, ClipArea(int64_t(pw) + 2), seen))
        return;
    Flush();
    StateGuard g(FPainter);
    if (pen.Style == psClear) {
        FPainter->setPen(Qt::NoPen);
    } else {
        QPen qp(Color(pen.Color, cuPen));
        qp.setWidth(pw);
        FPainter->setPen(qp);
    }
    FPainter->setBrush(brush.Style == bsClear ? QBrush(Qt::NoBrush)
                                              : QBrush(Color(brush.Color, cuBrush)));
    FPainter->drawEllipse(QRectF(r.Left + 0.5, r.Top + 0.5, double(r.Right) - r.Left - 1,
                                 double(r.Bottom) - r.Top - 1));
}

void TPainterBackend::Polygon(std::span<const TPoint> points, const TPen& pen,
                              const TBrush& brush) {
    if (points.empty())
        return;
    int64_t l = points[0].X, t = points[0].Y, r = l, b = t;
    for (const TPoint& p : points) {
        l = std::min<int64_t>(l, p.X);
        t = std::min<int64_t>(t, p.Y);
        r = std::max<int64_t>(r, p.X);
        b = std::max<int64_t>(b, p.Y);
    }
    const int pw = pen.Width < 1 ? 1 : pen.Width;
    QRect seen;
    if (!ClipToArea(l - pw, t - pw, r + pw + 1, b + pw + 1, ClipArea(int64_t(pw) + 2), seen))
        return;
    Flush();
    StateGuard g(FPainter);
    QPolygonF poly;
    for (const TPoint& p : points)
        poly << QPointF(p.X + 0.5, p.Y + 0.5);
    if (pen.Style == psClear) {
        FPainter->setPen(Qt::NoPen);
    } else {
        QPen qp(Color(pen.Color, cuPen));
        qp.setWidth(pen.Width < 1 ? 1 : pen.Width);
        FPainter->setPen(qp);
    }
    FPainter->setBrush(brush.Style == bsClear ? QBrush(Qt::NoBrush)
                                              : QBrush(Color(brush.Color, cuBrush)));
    FPainter->drawPolygon(poly);
}

void TPainterBackend::FillRect(const TRect& r0, const TBrush& brush) {
    const TRect r = NormalizedRect({r0.Left, r0.Top}, {r0.Right, r0.Bottom});
    if (r.Left == r.Right || r.Top == r.Bottom || brush.Style == bsClear)
        return;
    QRect fill;
    if (!ClipToArea(r.Left, r.Top, r.Right, r.Bottom, DeviceArea(0), fill))
        return;
    StateGuard g(FPainter);
    FillPixels(fill, Color(brush.Color, cuBrush));
}

void TPainterBackend::TextOut(TPoint p, const QString& text, const TFont& font,
                              const TBrush& brush) {
    const QFont qf = ToQFont(font);
    const QFontMetrics& fm = FontMetricsOf(font);
    const int64_t width = FontTextWidth(font, text), height = fm.height();
    QRect seen;
    if (!ClipToArea(p.X, p.Y, p.X + width + height, p.Y + height, ClipArea(int(height)), seen))
        return;
    StateGuard g(FPainter);
    QRect fill;
    if (brush.Style != bsClear &&
        ClipToArea(p.X, p.Y, p.X + width, p.Y + height, DeviceArea(0), fill))
        FillPixels(fill, Color(brush.Color, cuBrush));
    Flush();
    FPainter->setFont(qf);
    FPainter->setPen(Color(font.Color, cuText));
    FPainter->drawText(QPoint(p.X, WrapAdd(p.Y, fm.ascent())), text);
}

} // namespace vde
