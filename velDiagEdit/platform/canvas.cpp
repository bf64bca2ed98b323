#include "velDiagEdit/platform/canvas.h"

#include "velDiagEdit/platform/painter_backend.h"

#include <QFontMetrics>
#include <QHash>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>

namespace vde {

namespace {

constexpr int kDefaultCellHeight = 13;

QFont BaseFont(const TFont& font) {
    QFont f(font.Name);
    f.setStyleHint(QFont::SansSerif);
    f.setHintingPreference(QFont::PreferFullHinting);
    return f;
}

// Largest pixel size whose cell (ascent + descent) fits the asked height; computed once per
// family and height, since every label paint asks again.
int PixelSizeForCell(const TFont& font, int cell) {
    static QHash<QString, int> cache;
    const QString key = font.Name + QLatin1Char('/') + QString::number(cell);
    auto it = cache.constFind(key);
    if (it != cache.constEnd())
        return *it;
    QFont f = BaseFont(font);
    int best = 1;
    for (int px = 1; px <= cell; ++px) {
        f.setPixelSize(px);
        if (QFontMetrics(f).height() <= cell)
            best = px;
        else
            break;
    }
    cache.insert(key, best);
    return best;
}

} // namespace

namespace {

QFont MakeQFont(const TFont& font) {
    QFont f = BaseFont(font);
    int px;
    if (font.Height > 0)
        px = PixelSizeForCell(font, font.Height);
    else if (font.Height < 0)
        px = -font.Height;
    else
        px = PixelSizeForCell(font, kDefaultCellHeight);
    f.setPixelSize(px < 1 ? 1 : px);
    return f;
}

// A font and its metrics, built once per family and height: text is measured and drawn far
// more often than fonts change, and building a QFont and its metrics is what costs.
struct FontEntry {
    QFont font;
    QFontMetrics metrics;
    explicit FontEntry(const QFont& f) : font(f), metrics(f) {}
};

using FontKey = QPair<QString, int32_t>;

FontEntry& CachedFont(const TFont& font) {
    // Kept for the life of the program (never destroyed after the application object).
    static auto* cache = new QHash<FontKey, FontEntry*>;
    const FontKey key(font.Name, font.Height);
    auto it = cache->constFind(key);
    if (it != cache->constEnd())
        return **it;
    if (cache->size() >= 256) {
        qDeleteAll(*cache);
        cache->clear();
    }
    auto* e = new FontEntry(MakeQFont(font));
    cache->insert(key, e);
    return *e;
}

} // namespace

QFont ToQFont(const TFont& font) {
    return CachedFont(font).font;
}

const QFontMetrics& FontMetricsOf(const TFont& font) {
    return CachedFont(font).metrics;
}

int FontTextWidth(const TFont& font, const QString& text) {
    // Labels are measured again on every alignment; their widths are kept until the text or the
    // font changes.
    static auto* widths = new QHash<QPair<FontKey, QString>, int>;
    const QPair<FontKey, QString> key(FontKey(font.Name, font.Height), text);
    auto it = widths->constFind(key);
    if (it != widths->constEnd())
        return *it;
    if (widths->size() >= 8192)
        widths->clear();
    const int w = FontMetricsOf(font).horizontalAdvance(text);
    widths->insert(key, w);
    return w;
}

int FontTextHeight(const TFont& font) {
    return FontMetricsOf(font).height();
}

int FontAscent(const TFont& font) {
    return FontMetricsOf(font).ascent();
}

namespace {
struct ScopeEntry {
    QPaintDevice* device;
    QPainter* painter;
    bool hasRect;
    TRect rect;
};
std::vector<ScopeEntry>& Scopes() {
    static std::vector<ScopeEntry> scopes;
    return scopes;
}
} // namespace

TPaintScope::TPaintScope(QPaintDevice* device, QPainter* painter, const TRect* paintRect) {
    Scopes().push_back({device, painter, paintRect != nullptr, paintRect ? *paintRect : TRect{}});
}

TPaintScope::~TPaintScope() {
    Scopes().pop_back();
}

QPainter* TPaintScope::PainterFor(const QPaintDevice* device) {
    const auto& s = Scopes();
    for (auto it = s.rbegin(); it != s.rend(); ++it)
        if (it->device == device)
            return it->painter;
    return nullptr;
}

bool TPaintScope::PaintRectFor(const QPaintDevice* device, TRect& R) {
    const auto& s = Scopes();
    for (auto it = s.rbegin(); it != s.rend(); ++it)
        if (it->device == device) {
            if (!it->hasRect)
                return false;
            R = it->rect;
            return true;
        }
    return false;
}

TCanvas::TCanvas() = default;

TCanvas::~TCanvas() {
    ReleaseHandlePainter();
}

void TCanvas::SetHandle(QPaintDevice* device) {
    if (device == FHandle)
        return;
    ReleaseHandlePainter();
    FHandle = device;
}

void TCanvas::ReleaseHandlePainter() {
    FOwnBackend.reset();
    if (FOwnPainter) {
        FOwnPainter->end();
        FOwnPainter.reset();
    }
    FForeignBackend.reset();
    FForeignPainter = nullptr;
    FForeignDevice = nullptr;
}

ICanvasBackend* TCanvas::Resolve(bool mayBegin) {
    if (FBackend)
        return FBackend;
    if (!FHandle)
        return nullptr;
    if (FOwnPainter)
        return FOwnBackend.get();
    QPainter* lent = TPaintScope::PainterFor(FHandle);
    if (lent || FHandle->paintingActive()) {
        QPainter* p =
            lent ? lent : (FHandle->paintEngine() ? FHandle->paintEngine()->painter() : nullptr);
        if (!p)
            return nullptr;
        if (p != FForeignPainter || p->device() != FForeignDevice) {
            FForeignPainter = p;
            FForeignDevice = p->device();
            FForeignBackend = std::make_unique<TPainterBackend>(p);
            FForeignBackend->Hold(FBatchDepth > 0);
        }
        return FForeignBackend.get();
    }
    // A widget can only be drawn on during its paint, and a graphic control only with the
    // painter its parent lends it.
    if (!mayBegin || FHandle->devType() == QInternal::Widget || !FHandle->paintEngine())
        return nullptr;
    FOwnPainter = std::make_unique<QPainter>();
    if (!FOwnPainter->begin(FHandle)) {
        FOwnPainter.reset();
        return nullptr;
    }
    FOwnBackend = std::make_unique<TPainterBackend>(FOwnPainter.get());
    FOwnBackend->Hold(FBatchDepth > 0);
    return FOwnBackend.get();
}

void TCanvas::BeginBatch() {
    if (FBatchDepth++ > 0)
        return;
    if (ICanvasBackend* b = FBackend      ? FBackend
                            : FOwnPainter ? FOwnBackend.get()
                                          : FForeignBackend.get())
        b->Hold(true);
}

void TCanvas::EndBatch() {
    if (FBatchDepth == 0 || --FBatchDepth > 0)
        return;
    for (ICanvasBackend* b : {FBackend, FOwnBackend.get(), FForeignBackend.get()})
        if (b)
            b->Hold(false);
}

void TCanvas::Unresolved() {
    if (OnRequestPaint) {
        OnRequestPaint();
    } else if (FHandle && FHandle->devType() == QInternal::Widget) {
        static_cast<QWidget*>(FHandle)->update();
    }
}

void TCanvas::MoveTo(int32_t x, int32_t y) {
    PenPos = {x, y};
    if (auto* b = Resolve())
        b->MoveTo(PenPos);
}

void TCanvas::LineTo(int32_t x, int32_t y) {
    const TPoint from = PenPos;
    PenPos = {x, y};
    if (auto* b = Resolve())
        b->Line(from, PenPos, Pen);
    else
        Unresolved();
}

void TCanvas::Rectangle(int32_t l, int32_t t, int32_t r, int32_t b) {
    if (auto* be = Resolve())
        be->Rectangle({l, t, r, b}, Pen, Brush);
    else
        Unresolved();
}

void TCanvas::Ellipse(int32_t l, int32_t t, int32_t r, int32_t b) {
    if (auto* be = Resolve())
        be->Ellipse({l, t, r, b}, Pen, Brush);
    else
        Unresolved();
}

void TCanvas::Polygon(std::span<const TPoint> points) {
    if (auto* b = Resolve())
        b->Polygon(points, Pen, Brush);
    else
        Unresolved();
}

void TCanvas::Polyline(std::span<const TPoint> points) {
    if (points.empty())
        return;
    MoveTo(points[0].X, points[0].Y);
    for (size_t i = 1; i < points.size(); ++i)
        LineTo(points[i].X, points[i].Y);
}

void TCanvas::FillRect(const TRect& r) {
    if (auto* b = Resolve())
        b->FillRect(r, Brush);
    else
        Unresolved();
}

void TCanvas::TextOut(int32_t x, int32_t y, const QString& text) {
    if (auto* b = Resolve())
        b->TextOut({x, y}, text, Font, Brush);
    else
        Unresolved();
    PenPos = {WrapAdd(x, TextWidth(text)), y};
}

int TCanvas::TextWidth(const QString& text) const {
    return FontTextWidth(Font, text);
}

bool TCanvas::ClipRect(TRect& R) {
    TRect paint;
    const bool hasPaint = !FBackend && FHandle && TPaintScope::PaintRectFor(FHandle, paint);
    TRect area;
    const ICanvasBackend* b = Resolve(false);
    bool hasArea = b && b->VisibleRect(area);
    if (!b && FHandle && FHandle->devType() != QInternal::Widget && FHandle->paintEngine()) {
        // An image or picture is drawn on by a painter of the canvas's own, over all of it.
        area = {0, 0, FHandle->width(), FHandle->height()};
        hasArea = true;
    }
    if (hasPaint && hasArea) {
        R = {std::max(paint.Left, area.Left), std::max(paint.Top, area.Top),
             std::min(paint.Right, area.Right), std::min(paint.Bottom, area.Bottom)};
        if (R.Right < R.Left || R.Bottom < R.Top)
            R = {R.Left, R.Top, R.Left, R.Top};
        return true;
    }
    if (hasPaint || hasArea) {
        R = hasPaint ? paint : area;
        return true;
    }
    return false;
}

int TCanvas::TextHeight(const QString&) const {
    return FontTextHeight(Font);
}

} // namespace vde
