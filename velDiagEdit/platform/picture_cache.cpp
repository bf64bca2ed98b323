#include "velDiagEdit/platform/picture_cache.h"

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/painter_backend.h"

#include <QImage>
#include <QPainter>
#include <cmath>
#include <cstring>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>

namespace vde {

namespace {

// A picture this large costs more to keep than to paint.
constexpr int kMaxPictureSide = 512;

// Writes each canvas operation, with its colours as the painter would paint them, into a key.
class TKeyBackend : public ICanvasBackend {
public:
    TKeyBackend(const QPainter* painter, std::string& key) : FPainter(painter), FKey(key) {}

    void MoveTo(TPoint) override {}
    void Line(TPoint from, TPoint to, const TPen& pen) override {
        Put(uint8_t('L'));
        Put(from);
        Put(to);
        Put(pen);
    }
    void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) override {
        Put(uint8_t('R'));
        Put(r);
        Put(pen);
        Put(brush);
    }
    void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) override {
        Put(uint8_t('E'));
        Put(r);
        Put(pen);
        Put(brush);
    }
    void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) override {
        Put(uint8_t('P'));
        Put(uint64_t(points.size()));
        for (const TPoint& p : points)
            Put(p);
        Put(pen);
        Put(brush);
    }
    void FillRect(const TRect& r, const TBrush& brush) override {
        Put(uint8_t('F'));
        Put(r);
        Put(brush);
    }
    void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) override {
        Put(uint8_t('T'));
        Put(p);
        Put(text);
        Put(font.Name);
        Put(font.Height);
        Put(PaintedColor(FPainter, font.Color, cuText).rgba());
        Put(brush);
    }

private:
    template <class T> void Put(const T& v) {
        static_assert(std::is_trivially_copyable_v<T>);
        FKey.append(reinterpret_cast<const char*>(&v), sizeof v);
    }
    void Put(TPoint p) {
        Put(p.X);
        Put(p.Y);
    }
    void Put(const TRect& r) {
        Put(r.Left);
        Put(r.Top);
        Put(r.Right);
        Put(r.Bottom);
    }
    void Put(const TPen& pen) {
        Put(pen.Width);
        Put(uint8_t(pen.Style));
        Put(PaintedColor(FPainter, pen.Color, cuPen).rgba());
    }
    void Put(const TBrush& brush) {
        Put(uint8_t(brush.Style));
        Put(PaintedColor(FPainter, brush.Color, cuBrush).rgba());
    }
    void Put(const QString& s) {
        Put(uint64_t(s.size()));
        FKey.append(reinterpret_cast<const char*>(s.utf16()), size_t(s.size()) * sizeof(char16_t));
    }

    const QPainter* FPainter;
    std::string& FKey;
};

struct Entry {
    QImage Picture; // null: the look depends on what lies below
    std::list<std::string>::iterator Use;
};

struct Cache {
    bool Enabled = true;
    std::unordered_map<std::string, Entry> Entries;
    std::list<std::string> ByUse; // most recently used first
    TPictureCacheStats Stats;

    void Touch(Entry& e) { ByUse.splice(ByUse.begin(), ByUse, e.Use); }

    void Keep(std::string key, QImage picture) {
        const size_t bytes = size_t(picture.sizeInBytes());
        while (!ByUse.empty() &&
               (Stats.Bytes + bytes > kPictureCacheBudget || Entries.size() >= 16384)) {
            auto it = Entries.find(ByUse.back());
            Stats.Bytes -= size_t(it->second.Picture.sizeInBytes());
            Entries.erase(it);
            ByUse.pop_back();
        }
        ByUse.push_front(key);
        Stats.Bytes += bytes;
        Entries.emplace(std::move(key), Entry{std::move(picture), ByUse.begin()});
        Stats.Pictures = Entries.size();
    }

    void Clear() {
        Entries.clear();
        ByUse.clear();
        Stats.Bytes = 0;
        Stats.Pictures = 0;
    }
};

Cache& TheCache() {
    static Cache c;
    return c;
}

// v * 256 is a whole number, and small enough that sums of such values stay exact.
bool OnGrid(double v) {
    const double s = v * 256.0;
    return std::abs(s) < double(int64_t(1) << 40) && s == std::floor(s);
}

// Runs c's Paint through p (already placed and clipped); false when it raised, which the
// event boundary has shown.
bool RunPaint(TGraphicControl* c) {
    const int errors = EventBoundaryErrorCount();
    RunInEventBoundary("paint", [c] { c->Paint(); });
    return EventBoundaryErrorCount() == errors;
}

// The control painted into a device-sized picture over `ground`, as PaintWith would paint it
// with the same painter settings, shifted by a whole number of device pixels.
QImage PaintOver(TGraphicControl* c, const QPainter& like, QImage::Format format, QSize size,
                 double scale, QPointF phase, QRgb ground, bool& ok) {
    QImage image(size, format);
    image.fill(ground);
    QPainter ip(&image);
    ip.setRenderHints(like.renderHints());
    ip.setLayoutDirection(like.layoutDirection());
    ip.setTransform(QTransform(scale, 0, 0, scale, phase.x(), phase.y()));
    ip.setClipRect(c->rect(), Qt::IntersectClip);
    std::optional<TPaletteScope> colours;
    if (const QPalette* palette = TPaletteScope::PaletteFor(&like))
        colours.emplace(&ip, *palette);
    {
        const TPaintScope scope(c, &ip);
        const TCanvasBatch batch(c->Canvas());
        ok = RunPaint(c);
    }
    c->Canvas()->ReleaseHandlePainter();
    return image;
}

// The kept picture: covered pixels opaque, untouched ones transparent; null when any pixel
// came out different over black and over white without being the background in both.
QImage Separate(const QImage& overWhite, const QImage& overBlack) {
    QImage out(overWhite.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < out.height(); ++y) {
        const auto* w = reinterpret_cast<const QRgb*>(overWhite.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(overBlack.constScanLine(y));
        auto* o = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            if (w[x] == b[x] && qAlpha(w[x]) == 255)
                o[x] = w[x];
            else if (w[x] == 0xFFFFFFFFu && b[x] == 0xFF000000u)
                o[x] = 0;
            else
                return {};
        }
    }
    return out;
}

} // namespace

bool PaintFromPictureCache(TGraphicControl* c, QPainter& p) {
    Cache& cache = TheCache();
    if (!cache.Enabled || c->Canvas()->Backend())
        return false;
    const QPaintDevice* target = TargetDevice(&p);
    if (!target || target->devType() != QInternal::Image)
        return false;
    const auto* image = static_cast<const QImage*>(target);
    const QImage::Format format = image->format();
    if ((format != QImage::Format_RGB32 && format != QImage::Format_ARGB32_Premultiplied) ||
        image->devicePixelRatio() != 1.0)
        return false;
    const QTransform& t = p.deviceTransform();
    const double s = t.m11();
    if (t.type() != QTransform::TxScale || s != t.m22() || !(s > 0) || s > 16 || !OnGrid(s))
        return false;
    if (p.opacity() != 1.0 || p.compositionMode() != QPainter::CompositionMode_SourceOver ||
        p.backgroundMode() != Qt::TransparentMode)
        return false;
    // The control's origin on the device; its whole pixel and what is left of it.
    const double ox = s * c->x() + t.dx(), oy = s * c->y() + t.dy();
    if (!OnGrid(ox) || !OnGrid(oy))
        return false;
    const double ix = std::floor(ox), iy = std::floor(oy);
    const QPointF phase(ox - ix, oy - iy);
    const QSize size(int(std::ceil(s * c->width() + phase.x())) + 1,
                     int(std::ceil(s * c->height() + phase.y())) + 1);
    if (size.width() > kMaxPictureSide || size.height() > kMaxPictureSide)
        return false;

    // Kept between paints so that its storage is reused.
    static std::string key;
    key.clear();
    const auto put = [](const auto& v) { key.append(reinterpret_cast<const char*>(&v), sizeof v); };
    put(s);
    put(phase.x());
    put(phase.y());
    put(c->width());
    put(c->height());
    put(int(format));
    put(int(p.renderHints()));
    put(int(p.layoutDirection()));
    {
        TKeyBackend keyer(&p, key);
        c->Canvas()->SetBackend(&keyer);
        const bool ok = RunPaint(c);
        c->Canvas()->SetBackend(nullptr);
        if (!ok)
            return true; // the error is shown; a direct paint would only raise it again
    }

    auto it = cache.Entries.find(key);
    const bool kept = it != cache.Entries.end();
    if (!kept) {
        bool okWhite = false, okBlack = false;
        const QImage overWhite = PaintOver(c, p, format, size, s, phase, 0xFFFFFFFFu, okWhite);
        const QImage overBlack = PaintOver(c, p, format, size, s, phase, 0xFF000000u, okBlack);
        if (!okWhite || !okBlack)
            return true;
        QImage picture = Separate(overWhite, overBlack);
        if (picture.isNull())
            ++cache.Stats.Refused;
        else
            ++cache.Stats.Made;
        cache.Keep(key, std::move(picture));
        it = cache.Entries.find(key);
    } else {
        cache.Touch(it->second);
    }
    if (it->second.Picture.isNull())
        return false;
    if (kept)
        ++cache.Stats.Hits;
    p.save();
    p.resetTransform();
    // What is left is the redirection's whole-pixel offset.
    const QTransform& rest = p.deviceTransform();
    p.drawImage(QPointF(ix - rest.dx(), iy - rest.dy()), it->second.Picture);
    p.restore();
    return true;
}

TPictureCacheStats PictureCacheStats() {
    return TheCache().Stats;
}

void SetPictureCacheEnabled(bool enabled) {
    TheCache().Enabled = enabled;
}

bool PictureCacheEnabled() {
    return TheCache().Enabled;
}

void ClearPictureCache() {
    TheCache().Clear();
}

} // namespace vde
