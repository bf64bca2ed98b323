#include "velDiagEdit/platform/picture_cache.h"

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/painter_backend.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vde {

namespace {

// A picture this large costs more to keep than to paint.
constexpr int kMaxPictureSide = 512;

// A key's bytes; kept between paints so that its storage is reused.
class TKeyBytes {
public:
    void Clear() { FSize = 0; }
    void Append(const void* data, size_t n) {
        std::memcpy(Room(n), data, n);
        FSize += n;
    }
    template <class T> void Put(const T& v) {
        static_assert(std::is_trivially_copyable_v<T>);
        std::memcpy(Room(sizeof v), &v, sizeof v);
        FSize += sizeof v;
    }
    std::string_view View() const { return {FBytes.data(), FSize}; }

private:
    char* Room(size_t n) {
        if (FSize + n > FBytes.size()) [[unlikely]]
            FBytes.resize(std::max(FBytes.size() * 2, FSize + n + 256));
        return FBytes.data() + FSize;
    }
    std::string FBytes;
    size_t FSize = 0;
};

// Writes each canvas operation, with its colours as the painter would paint them, into a key.
class TKeyBackend : public ICanvasBackend {
public:
    TKeyBackend(const QPainter* painter, TKeyBytes& key)
        : FPalette(TPaletteScope::PaletteFor(painter)), FKey(key) {}

    void MoveTo(TPoint) override {}
    void Line(TPoint from, TPoint to, const TPen& pen) override {
        FKey.Put(uint8_t('L'));
        Put(from);
        Put(to);
        Put(pen);
    }
    void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) override {
        FKey.Put(uint8_t('R'));
        Put(r);
        Put(pen);
        Put(brush);
    }
    void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) override {
        FKey.Put(uint8_t('E'));
        Put(r);
        Put(pen);
        Put(brush);
    }
    void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) override {
        FKey.Put(uint8_t('P'));
        FKey.Put(uint64_t(points.size()));
        for (const TPoint& p : points)
            Put(p);
        Put(pen);
        Put(brush);
    }
    void FillRect(const TRect& r, const TBrush& brush) override {
        FKey.Put(uint8_t('F'));
        Put(r);
        Put(brush);
    }
    void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) override {
        FKey.Put(uint8_t('T'));
        Put(p);
        Put(text);
        Put(font.Name);
        FKey.Put(font.Height);
        FKey.Put(Painted(font.Color, cuText));
        Put(brush);
    }

private:
    // The colour as painted (what PaintedColor gives, as a plain RGB value).
    TColor Painted(TColor c, TColorUse use) const {
        return ColorToRGB(FPalette ? PaletteColor(*FPalette, c, use) : c);
    }
    void Put(TPoint p) {
        FKey.Put(p.X);
        FKey.Put(p.Y);
    }
    void Put(const TRect& r) {
        FKey.Put(r.Left);
        FKey.Put(r.Top);
        FKey.Put(r.Right);
        FKey.Put(r.Bottom);
    }
    void Put(const TPen& pen) {
        FKey.Put(pen.Width);
        FKey.Put(uint8_t(pen.Style));
        FKey.Put(Painted(pen.Color, cuPen));
    }
    void Put(const TBrush& brush) {
        FKey.Put(uint8_t(brush.Style));
        FKey.Put(Painted(brush.Color, cuBrush));
    }
    void Put(const QString& s) {
        FKey.Put(uint64_t(s.size()));
        FKey.Append(s.utf16(), size_t(s.size()) * sizeof(char16_t));
    }

    const QPalette* FPalette;
    TKeyBytes& FKey;
};

// Pixels of a look that only partly cover what lies below (the smoothed edge of a glyph
// outside its box); more than this and the look is painted directly.
constexpr int kMaxPartial = 64;
// Looks kept at most, however small their pictures.
constexpr size_t kMaxLooks = 16384;
// Variants of one look over different grounds under its partial pixels.
constexpr size_t kMaxVariants = 8;

struct Look {
    // Covered pixels opaque, untouched ones transparent, partial ones transparent too until a
    // variant fills them in. Null: the look is painted directly.
    QImage Picture;
    std::vector<QPoint> Partial;
    // Per ground under the partial pixels (their values, in order), the picture with those
    // pixels as painting over that ground makes them; the newest last.
    std::vector<std::pair<std::string, QImage>> Variants;
    std::list<std::string>::iterator Use;

    size_t Bytes() const {
        size_t n = size_t(Picture.sizeInBytes());
        for (const auto& v : Variants)
            n += size_t(v.second.sizeInBytes()) + v.first.size();
        return n;
    }
};

struct Cache {
    bool Enabled = true;
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view v) const { return std::hash<std::string_view>{}(v); }
    };
    std::unordered_map<std::string, Look, Hash, std::equal_to<>> Looks;
    std::list<std::string> ByUse; // most recently used first
    TPictureCacheStats Stats;
    int MadeInPaint = 0;

    void Touch(Look& l) { ByUse.splice(ByUse.begin(), ByUse, l.Use); }

    // Never the most recently used look: it is the one being painted.
    void MakeRoom(size_t bytes) {
        while (ByUse.size() > 1 &&
               (Stats.Bytes + bytes > kPictureCacheBudget || Looks.size() >= kMaxLooks)) {
            auto it = Looks.find(ByUse.back());
            Stats.Bytes -= it->second.Bytes();
            Looks.erase(it);
            ByUse.pop_back();
        }
    }

    Look& Keep(std::string key, Look look) {
        const size_t bytes = look.Bytes();
        MakeRoom(bytes);
        ByUse.push_front(key);
        look.Use = ByUse.begin();
        Stats.Bytes += bytes;
        Look& kept = Looks.emplace(std::move(key), std::move(look)).first->second;
        Stats.Pictures = Looks.size();
        return kept;
    }

    void Clear() {
        Looks.clear();
        ByUse.clear();
        Stats.Bytes = 0;
        Stats.Pictures = 0;
    }
};

Cache& TheCache() {
    static Cache c;
    return c;
}

// The control painted over `image` as PaintWith paints it with the same painter settings,
// shifted by a whole number of device pixels.
bool PaintOver(TGraphicControl* c, const QPainter& like, QImage& image, double scale,
               QPointF phase) {
    QPainter ip(&image);
    ip.setRenderHints(like.renderHints());
    ip.setLayoutDirection(like.layoutDirection());
    ip.setTransform(QTransform(scale, 0, 0, scale, phase.x(), phase.y()));
    std::optional<TPaletteScope> colours;
    if (const QPalette* palette = TPaletteScope::PaletteFor(&like))
        colours.emplace(&ip, *palette);
    return c->PaintAtOrigin(ip);
}

// Painting is per pixel: a covered pixel comes out the same over any ground, an untouched
// one is the ground. Over black and over white tell which pixel is which; any other pixel
// depends on what lies below it, and on nothing else.
void Separate(const QImage& overWhite, const QImage& overBlack, Look& look) {
    QImage out(overWhite.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < out.height(); ++y) {
        const auto* w = reinterpret_cast<const QRgb*>(overWhite.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(overBlack.constScanLine(y));
        auto* o = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            if (w[x] == b[x] && qAlpha(w[x]) == 255) {
                o[x] = w[x];
            } else if (w[x] == 0xFFFFFFFFu && b[x] == 0xFF000000u) {
                o[x] = 0;
            } else {
                if (look.Partial.size() >= size_t(kMaxPartial)) {
                    look.Partial.clear();
                    return;
                }
                look.Partial.emplace_back(x, y);
                o[x] = 0;
            }
        }
    }
    look.Picture = std::move(out);
}

// What lies below the partial pixels on the target, in order.
std::string GroundUnder(const Look& look, const QImage& target, int ix, int iy) {
    std::string ground;
    ground.reserve(look.Partial.size() * sizeof(QRgb));
    for (const QPoint& at : look.Partial) {
        const int x = ix + at.x(), y = iy + at.y();
        // Off the device nothing is drawn; any opaque ground will do.
        QRgb v = 0xFF000000u;
        if (x >= 0 && y >= 0 && x < target.width() && y < target.height())
            v = reinterpret_cast<const QRgb*>(target.constScanLine(y))[x];
        ground.append(reinterpret_cast<const char*>(&v), sizeof v);
    }
    return ground;
}

} // namespace

bool PaintFromPictureCache(TGraphicControl* c, QPainter& p) {
    Cache& cache = TheCache();
    if (!cache.Enabled || c->Canvas()->Backend())
        return false;
    // The scale first: an unscaled paint (every paint at 100%) leaves here at once.
    const QTransform& t = p.deviceTransform();
    const double s = t.m11();
    if (t.type() != QTransform::TxScale || s != t.m22() || !(s > 0) || s > 16 || !OnGrid256(s))
        return false;
    const QPaintDevice* target = TargetDevice(&p);
    if (!target || target->devType() != QInternal::Image)
        return false;
    const auto* image = static_cast<const QImage*>(target);
    const QImage::Format format = image->format();
    if ((format != QImage::Format_RGB32 && format != QImage::Format_ARGB32_Premultiplied) ||
        image->devicePixelRatio() != 1.0)
        return false;
    if (p.opacity() != 1.0 || p.compositionMode() != QPainter::CompositionMode_SourceOver ||
        p.backgroundMode() != Qt::TransparentMode)
        return false;
    // The control's origin on the device; its whole pixel and what is left of it.
    const double ox = s * c->x() + t.dx(), oy = s * c->y() + t.dy();
    if (!OnGrid256(ox) || !OnGrid256(oy))
        return false;
    const double ix = std::floor(ox), iy = std::floor(oy);
    const QPointF phase(ox - ix, oy - iy);
    const QSize size(int(std::ceil(s * c->width() + phase.x())) + 1,
                     int(std::ceil(s * c->height() + phase.y())) + 1);
    if (size.width() > kMaxPictureSide || size.height() > kMaxPictureSide)
        return false;

    static TKeyBytes key;
    key.Clear();
    key.Put(s);
    key.Put(phase.x());
    key.Put(phase.y());
    key.Put(c->width());
    key.Put(c->height());
    key.Put(int(format));
    key.Put(int(p.renderHints()));
    key.Put(int(p.layoutDirection()));
    {
        TKeyBackend keyer(&p, key);
        c->Canvas()->SetBackend(&keyer);
        const int errors = EventBoundaryErrorCount();
        RunInEventBoundary("paint", [c] { c->Paint(); });
        c->Canvas()->SetBackend(nullptr);
        // The error is shown; a direct paint would only raise it again.
        if (EventBoundaryErrorCount() != errors)
            return true;
    }

    auto it = cache.Looks.find(key.View());
    bool kept = it != cache.Looks.end();
    Look* look = kept ? &it->second : nullptr;
    if (!look) {
        if (cache.MadeInPaint >= kPicturesMadePerPaint)
            return false;
        ++cache.MadeInPaint;
        QImage overWhite(size, format), overBlack(size, format);
        overWhite.fill(0xFFFFFFFFu);
        overBlack.fill(0xFF000000u);
        if (!PaintOver(c, p, overWhite, s, phase) || !PaintOver(c, p, overBlack, s, phase))
            return true;
        Look made;
        Separate(overWhite, overBlack, made);
        if (made.Picture.isNull())
            ++cache.Stats.Refused;
        else
            ++cache.Stats.Made;
        look = &cache.Keep(std::string(key.View()), std::move(made));
    } else {
        cache.Touch(*look);
    }
    if (look->Picture.isNull())
        return false;
    const QImage* picture = &look->Picture;
    if (!look->Partial.empty()) {
        std::string ground = GroundUnder(*look, *image, int(ix), int(iy));
        auto v = std::find_if(look->Variants.begin(), look->Variants.end(),
                              [&](const auto& e) { return e.first == ground; });
        if (v == look->Variants.end()) {
            kept = false;
            // Painted over that ground, the partial pixels come out as they would on the target.
            QImage over(size, format);
            over.fill(0xFFFFFFFFu);
            const char* g = ground.data();
            for (const QPoint& at : look->Partial) {
                QRgb value;
                std::memcpy(&value, g, sizeof value);
                g += sizeof value;
                reinterpret_cast<QRgb*>(over.scanLine(at.y()))[at.x()] = value;
            }
            if (!PaintOver(c, p, over, s, phase))
                return true;
            QImage variant = look->Picture.copy();
            for (const QPoint& at : look->Partial) {
                const QRgb painted =
                    reinterpret_cast<const QRgb*>(over.constScanLine(at.y()))[at.x()];
                // Over a see-through ground (a translucent window) the pixel would be blended
                // once more when the picture goes out: over that ground the look is painted
                // directly (kept as a null variant).
                if (qAlpha(painted) != 255) {
                    variant = QImage();
                    break;
                }
                reinterpret_cast<QRgb*>(variant.scanLine(at.y()))[at.x()] = painted;
            }
            if (look->Variants.size() >= kMaxVariants) {
                cache.Stats.Bytes -= size_t(look->Variants.front().second.sizeInBytes()) +
                                     look->Variants.front().first.size();
                look->Variants.erase(look->Variants.begin());
            }
            cache.MakeRoom(size_t(variant.sizeInBytes()) + ground.size());
            cache.Stats.Bytes += size_t(variant.sizeInBytes()) + ground.size();
            look->Variants.emplace_back(std::move(ground), std::move(variant));
            v = look->Variants.end() - 1;
        }
        if (v->second.isNull())
            return false;
        picture = &v->second;
    }
    if (kept)
        ++cache.Stats.Hits;
    p.save();
    p.resetTransform();
    // What is left is the redirection's whole-pixel offset.
    const QTransform& rest = p.deviceTransform();
    p.drawImage(QPointF(ix - rest.dx(), iy - rest.dy()), *picture);
    p.restore();
    return true;
}

void NotePicturePaint() {
    TheCache().MadeInPaint = 0;
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
