#pragma once
// A painter of simple timing charts on a device context: two axes with arrowheads, a caption
// under the horizontal axis, a caption label beside the chart, vertical marker lines, filled
// bars and double-headed dimension arrows. Positions are percent of the chart's width, heights
// percent of its height. Nothing is remembered of what was drawn: a repaint is the host calling
// the same sequence again.

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QLabel>
#include <QPointer>
#include <QString>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>

class QPaintDevice;
class QPainter;

namespace vde {

using TLabel = QLabel;

// Declared next to the chart for hosts that name it; the chart itself has no use for it, so it
// carries nothing.
struct TTimeDiagram {};

class VELDIAGEDIT_EXPORT TTimeChart {
public:
    // DC is the device to draw on: a widget during its paint, an image, an SVG generator, a
    // printer. It may be null; then nothing is drawn until a backend is set on Canvas().
    // A widget can be drawn on only while it paints itself. A host that paints the widget too
    // lends its painter (TPaintScope) before making the chart, which then draws through it and
    // leaves it open; without a lent painter the chart opens one of its own for its lifetime,
    // and the host must then have none open on the widget.
    explicit TTimeChart(QPaintDevice* DC);
    virtual ~TTimeChart();
    TTimeChart(const TTimeChart&) = delete;
    TTimeChart& operator=(const TTimeChart&) = delete;

    uint8_t GetTextHeight() const { return fTextHeight; }
    void SetTextHeight(uint8_t Value);
    int32_t GetDeltaWidth() const { return fDeltaWidth; }
    void SetDeltaWidth(int32_t Value);
    TLabel* GetCaptionLabel() const { return fCaptionLabel.data(); }
    // Sets the label up as a caption column: visible, fixed size, text vertically centred,
    // left-aligned and wrapped. A null label leaves the chart without one.
    void SetCaptionLabel(TLabel* Value);
    TRect GetRect() const { return fRect; }
    QString GetHorizCaption() const { return fHorizCaption; }
    void SetHorizCaption(const QString& Value) { fHorizCaption = Value; }
    TColor GetParentColor() const { return fParentColor; }
    void SetParentColor(TColor Value) { fParentColor = Value; }
    bool GetArrowY() const { return fArrowY; }
    void SetArrowY(bool Value) { fArrowY = Value; }
    int32_t GetTextXOfset() const { return fTextXOfset; }
    void SetTextXOfset(int32_t Value) { fTextXOfset = Value; }

    // The chart's own canvas; a host (or a test) may set its pen colour or a backend on it.
    TCanvas& Canvas() { return *fCanvas; }

    void PrepareRectArea(int ATextHeight, int ADeltaWidth, int XOffset, int YOffset, int AWidth,
                         int AHeight, TLabel* ALabel, const QString& HorizAxisText,
                         TColor AParentColor, bool ShowArrowY);
    void ShiftRectArea(int XOffset, int YOffset, int AWidth, int AHeight, TLabel* ALabel,
                       const QString& HorizAxisText, bool ShowArrowY);
    virtual void Paint();
    void PaintLines(std::span<const uint8_t> LineAr, uint8_t ALineTickness, TPenStyle ALineStyle);
    void PaintLines(std::initializer_list<uint8_t> LineAr, uint8_t ALineTickness,
                    TPenStyle ALineStyle) {
        PaintLines(std::span<const uint8_t>(LineAr.begin(), LineAr.size()), ALineTickness,
                   ALineStyle);
    }
    void FillBetweenLines(int Line1, int Line2, int H, TColor C);
    void TextBetweenLines(int Line1, int Line2, int H, const QString& Str, TColor C);
    void PaintArrow(int X, int Y, bool Left, int Size);
    void ShowRectWithArrow(int Line1, int Line2, int AHeight, int TextPos, TColor FillColor,
                           TColor ArrowColor, const QString& ArrowText, bool ShowBoundLines,
                           uint8_t ALineTickness, TPenStyle ALineStyle);

private:
    // Offset of a percent position from the left edge, and of a percent height.
    int32_t PercentX(int p) const;
    int32_t PercentY(int h) const;

    std::unique_ptr<TCanvas> fCanvas;
    // The painter opened on a widget that is painting itself, and the canvas backend over it.
    std::unique_ptr<QPainter> fWidgetPainter;
    std::unique_ptr<ICanvasBackend> fWidgetBackend;
    uint8_t fTextHeight = 0;
    int32_t fDeltaWidth = 0;
    // Not owned; a label the host deletes simply drops out.
    QPointer<TLabel> fCaptionLabel;
    TRect fRect;
    QString fHorizCaption;
    TColor fParentColor = 0;
    bool fArrowY = false;
    int32_t fTextXOfset = 0;
};

} // namespace vde
