#pragma once
// A drawing surface with the classic raster conventions:
//  - a rectangle or ellipse given as (L, T, R, B) covers columns L..R-1 and rows T..B-1;
//  - LineTo with a 1-pixel pen does not draw its end pixel;
//  - a pen of width w > 1 is a w x w square centred on the line (offsets -w/2 .. w-1-w/2),
//    stamped along it from start to end inclusive, so the corners of a wire join cleanly;
//  - TextOut fills the text cell with the brush (unless the brush is clear), then draws the text
//    with its top-left corner at the given point; TextWidth/TextHeight measure that same cell.
// Drawing goes through a backend: a QPainter (a widget during its paint, an image, an SVG
// generator, a printer) or a recorder that logs every operation for exact tests.

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QFont>
#include <QFontMetrics>
#include <QString>
#include <functional>
#include <memory>
#include <span>
#include <vector>

class QPainter;
class QPaintDevice;
class QWidget;

namespace vde {

enum TPenStyle : uint8_t {
    psSolid,
    psDash,
    psDot,
    psDashDot,
    psDashDotDot,
    psClear,
    psInsideFrame
};
enum TBrushStyle : uint8_t { bsSolid, bsClear };

struct TPen {
    int32_t Width = 1;
    TColor Color = clBlack;
    TPenStyle Style = psSolid;
    friend bool operator==(const TPen&, const TPen&) = default;
};

struct TBrush {
    TColor Color = clWhite;
    TBrushStyle Style = bsSolid;
    friend bool operator==(const TBrush&, const TBrush&) = default;
};

// Height > 0 is the cell height (ascent + descent) in pixels, < 0 the character (em) height,
// 0 the default of 13 pixels cell height.
struct TFont {
    QString Name = QStringLiteral("DejaVu Sans");
    int32_t Height = -11;
    TColor Color = clWindowText;
    friend bool operator==(const TFont&, const TFont&) = default;
};

// The Qt font that a TFont draws with, and its metrics; shared by every backend so that
// measuring never depends on where the text goes. Needs a QGuiApplication.
VELDIAGEDIT_EXPORT QFont ToQFont(const TFont& font);
// The metrics of that font; the reference stays valid until many other fonts were asked for.
VELDIAGEDIT_EXPORT const QFontMetrics& FontMetricsOf(const TFont& font);
VELDIAGEDIT_EXPORT int FontTextWidth(const TFont& font, const QString& text);
VELDIAGEDIT_EXPORT int FontTextHeight(const TFont& font);
VELDIAGEDIT_EXPORT int FontAscent(const TFont& font);

class VELDIAGEDIT_EXPORT ICanvasBackend {
public:
    virtual ~ICanvasBackend() = default;
    virtual void MoveTo(TPoint p) = 0;
    // A line from `from` to `to` with the raster conventions above.
    virtual void Line(TPoint from, TPoint to, const TPen& pen) = 0;
    virtual void Rectangle(const TRect& r, const TPen& pen, const TBrush& brush) = 0;
    virtual void Ellipse(const TRect& r, const TPen& pen, const TBrush& brush) = 0;
    virtual void Polygon(std::span<const TPoint> points, const TPen& pen, const TBrush& brush) = 0;
    virtual void FillRect(const TRect& r, const TBrush& brush) = 0;
    virtual void TextOut(TPoint p, const QString& text, const TFont& font, const TBrush& brush) = 0;
    // The part of the drawing coordinates that can still reach the target (the device through
    // the transform and the clip); false when the backend draws nowhere in particular.
    virtual bool VisibleRect(TRect& R) const {
        (void)R;
        return false;
    }
    // While held, plain fills may wait and go out together; letting go sends them.
    virtual void Hold(bool on) { (void)on; }
};

// While alive, every canvas whose handle is `device` draws through `painter`: how a paint
// event (of a graphic control, or a hooked host widget) lends its painter to the canvases.
class VELDIAGEDIT_EXPORT TPaintScope {
public:
    // `paintRect`, when given, is the part of the device that this paint renews (a paint
    // event's rectangle); drawing wholly outside it can be left out.
    TPaintScope(QPaintDevice* device, QPainter* painter, const TRect* paintRect = nullptr);
    ~TPaintScope();
    TPaintScope(const TPaintScope&) = delete;
    TPaintScope& operator=(const TPaintScope&) = delete;
    static QPainter* PainterFor(const QPaintDevice* device);
    // The rectangle being painted on the device, when a scope for it named one.
    static bool PaintRectFor(const QPaintDevice* device, TRect& R);
};

class VELDIAGEDIT_EXPORT TCanvas {
public:
    TCanvas();
    ~TCanvas();
    TCanvas(const TCanvas&) = delete;
    TCanvas& operator=(const TCanvas&) = delete;

    TPen Pen;
    TBrush Brush;
    TFont Font;
    TPoint PenPos;

    void MoveTo(int32_t x, int32_t y);
    void LineTo(int32_t x, int32_t y);
    void Rectangle(int32_t l, int32_t t, int32_t r, int32_t b);
    void Rectangle(const TRect& r) { Rectangle(r.Left, r.Top, r.Right, r.Bottom); }
    void Ellipse(int32_t l, int32_t t, int32_t r, int32_t b);
    void Ellipse(const TRect& r) { Ellipse(r.Left, r.Top, r.Right, r.Bottom); }
    void Polygon(std::span<const TPoint> points);
    void Polyline(std::span<const TPoint> points);
    void FillRect(const TRect& r);
    void TextOut(int32_t x, int32_t y, const QString& text);
    int TextWidth(const QString& text) const;
    int TextHeight(const QString& text) const;
    // The part of the drawing surface that drawing can still change: what the painter drawing
    // now can reach (its device through its transform and clip), within the rectangle of the
    // paint under way. False when no bound is known (a recorder, no painter at work): then
    // everything counts. Never the widget's own size: a painter lent to the canvas may draw a
    // diagram far larger than the widget.
    bool ClipRect(TRect& R);

    // An explicit backend (a recorder, or a painter the caller holds); not owned.
    void SetBackend(ICanvasBackend* backend) { FBackend = backend; }
    ICanvasBackend* Backend() const { return FBackend; }

    // "A device context": the canvas draws on the device. While someone paints on the device
    // (a widget in its paint event, an image the host paints on) the canvas uses that painter;
    // a widget outside its paint is asked to repaint instead; any other device gets a painter
    // of the canvas's own, kept open until the handle changes or the canvas goes.
    void SetHandle(QPaintDevice* device);
    QPaintDevice* Handle() const { return FHandle; }
    // Ends the canvas's own painter, if any, so an SVG file or printer page is finished.
    void ReleaseHandlePainter();

    // Called, when assigned, for drawing that found nowhere to draw.
    std::function<void()> OnRequestPaint;

    // Between these (nested; see TCanvasBatch) plain fills may wait and go out together,
    // which costs far less than one by one. Only for drawing that goes through this canvas
    // alone: a waiting fill lands after whatever is drawn on the painter directly meanwhile.
    void BeginBatch();
    void EndBatch();

private:
    // The backend drawing goes to; a painter of its own is begun on an image only when mayBegin.
    ICanvasBackend* Resolve(bool mayBegin = true);
    void Unresolved();

    ICanvasBackend* FBackend = nullptr;
    int FBatchDepth = 0;
    QPaintDevice* FHandle = nullptr;
    std::unique_ptr<QPainter> FOwnPainter;
    std::unique_ptr<ICanvasBackend> FOwnBackend;
    QPainter* FForeignPainter = nullptr;
    QPaintDevice* FForeignDevice = nullptr;
    std::unique_ptr<ICanvasBackend> FForeignBackend;
};

class VELDIAGEDIT_EXPORT TCanvasBatch {
public:
    explicit TCanvasBatch(TCanvas* canvas) : FCanvas(canvas) {
        if (FCanvas)
            FCanvas->BeginBatch();
    }
    ~TCanvasBatch() {
        if (FCanvas)
            FCanvas->EndBatch();
    }
    TCanvasBatch(const TCanvasBatch&) = delete;
    TCanvasBatch& operator=(const TCanvasBatch&) = delete;

private:
    TCanvas* FCanvas;
};

} // namespace vde
