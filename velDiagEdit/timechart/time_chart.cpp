#include "velDiagEdit/timechart/time_chart.h"

#include "velDiagEdit/platform/painter_backend.h"

#include <QFont>
#include <QPainter>
#include <QWidget>

namespace vde {

namespace {

// Puts the brush colour back however the drawing in between ends.
class TBrushColorKeeper {
public:
    explicit TBrushColorKeeper(TCanvas& canvas) : FCanvas(canvas), FColor(canvas.Brush.Color) {}
    ~TBrushColorKeeper() { FCanvas.Brush.Color = FColor; }
    TBrushColorKeeper(const TBrushColorKeeper&) = delete;
    TBrushColorKeeper& operator=(const TBrushColorKeeper&) = delete;

private:
    TCanvas& FCanvas;
    TColor FColor;
};

// The label is set up from every paint; touching only what differs keeps a label that stands
// on the painted widget from asking that widget to repaint again and again.
void SetLabelFontHeight(TLabel* label, uint8_t height) {
    TFont tf;
    tf.Name = label->font().family();
    tf.Height = height;
    QFont f = label->font();
    const int px = ToQFont(tf).pixelSize();
    if (f.pixelSize() != px) {
        f.setPixelSize(px);
        label->setFont(f);
    }
}

void SetLabelGeometry(TLabel* label, const QRect& r) {
    if (label->geometry() != r)
        label->setGeometry(r);
}

} // namespace

TTimeChart::TTimeChart(QPaintDevice* DC) : fCanvas(std::make_unique<TCanvas>()) {
    fCanvas->SetHandle(DC);
    // Qt 6 does not let anyone reach the painter a widget is being painted with: unless the host
    // lends its painter (TPaintScope), the chart opens one of its own during the paint.
    if (DC && DC->devType() == QInternal::Widget) {
        auto* widget = static_cast<QWidget*>(DC);
        if (widget->testAttribute(Qt::WA_WState_InPaintEvent) && !TPaintScope::PainterFor(widget)) {
            fWidgetPainter = std::make_unique<QPainter>();
            if (fWidgetPainter->begin(widget)) {
                fWidgetBackend = std::make_unique<TPainterBackend>(fWidgetPainter.get());
                fCanvas->SetBackend(fWidgetBackend.get());
            } else {
                fWidgetPainter.reset();
            }
        }
    }
}

// Freeing the canvas ends its own painter, which is what finishes an SVG file or a printed page.
TTimeChart::~TTimeChart() {
    fCanvas.reset();
    fWidgetBackend.reset();
    if (fWidgetPainter)
        fWidgetPainter->end();
}

void TTimeChart::SetTextHeight(uint8_t Value) {
    fTextHeight = Value;
}

void TTimeChart::SetDeltaWidth(int32_t Value) {
    fDeltaWidth = Value;
}

void TTimeChart::SetCaptionLabel(TLabel* Value) {
    fCaptionLabel = Value;
    if (!Value)
        return;
    if (Value->isHidden())
        Value->setVisible(true);
    // A QLabel never sizes itself to its text; the chart gives it its bounds in Paint.
    const Qt::Alignment align = Qt::AlignLeft | Qt::AlignVCenter;
    if (Value->alignment() != align)
        Value->setAlignment(align);
    if (!Value->wordWrap())
        Value->setWordWrap(true);
}

int32_t TTimeChart::PercentX(int p) const {
    return RoundHalfEven(double(p) * double(fRect.Width()) / 100.0);
}

int32_t TTimeChart::PercentY(int h) const {
    return RoundHalfEven(double(h) * double(fRect.Height()) / 100.0);
}

void TTimeChart::PrepareRectArea(int ATextHeight, int ADeltaWidth, int XOffset, int YOffset,
                                 int AWidth, int AHeight, TLabel* ALabel,
                                 const QString& HorizAxisText, TColor AParentColor,
                                 bool ShowArrowY) {
    fTextHeight = static_cast<uint8_t>(ATextHeight & 0xFF);
    fDeltaWidth = ADeltaWidth;
    fParentColor = AParentColor;
    fArrowY = ShowArrowY;
    fRect = {XOffset, YOffset, XOffset + AWidth, YOffset + AHeight};
    SetCaptionLabel(ALabel);
    fHorizCaption = HorizAxisText;
    fTextXOfset = XOffset;
    Paint();
}

void TTimeChart::ShiftRectArea(int XOffset, int YOffset, int AWidth, int AHeight, TLabel* ALabel,
                               const QString& HorizAxisText, bool ShowArrowY) {
    fRect.Left += XOffset;
    fRect.Right += XOffset;
    fRect.Top += YOffset;
    fRect.Bottom += YOffset;
    if (AWidth > 0)
        fRect.Right = fRect.Left + AWidth;
    if (AHeight > 0)
        fRect.Bottom = fRect.Top + AHeight;
    fArrowY = ShowArrowY;
    SetCaptionLabel(ALabel);
    if (!HorizAxisText.isEmpty())
        fHorizCaption = HorizAxisText;
    Paint();
}

void TTimeChart::Paint() {
    TCanvas& c = *fCanvas;
    const int32_t L = fRect.Left, T = fRect.Top, R = fRect.Right, B = fRect.Bottom;
    const int32_t D = fDeltaWidth;
    const TPoint P0{L + D, T};
    const TPoint P1{L + D, B - D};
    const TPoint P2{R, B - D};

    c.Pen.Width = 2;
    c.Pen.Color = clBlack;
    if (fArrowY) {
        c.MoveTo(P0.X - D / 2, P0.Y + D);
        c.LineTo(P0.X, P0.Y);
        c.LineTo(P0.X + D / 2, P0.Y + D);
    }
    c.MoveTo(P0.X, P0.Y);
    c.LineTo(P1.X, P1.Y);
    c.LineTo(P2.X, P2.Y);
    c.MoveTo(P2.X - D, P2.Y - D / 2);
    c.LineTo(P2.X, P2.Y);
    c.LineTo(P2.X - D, P2.Y + D / 2);

    c.Pen.Width = 1;
    c.Font.Height = fTextHeight;
    c.Brush.Color = fParentColor;
    c.TextOut(R - c.TextWidth(fHorizCaption), B, fHorizCaption);

    if (TLabel* label = fCaptionLabel.data()) {
        SetLabelFontHeight(label, fTextHeight);
        SetLabelGeometry(label, QRect(L - fTextXOfset, T, fTextXOfset, fRect.Height()));
    }
}

void TTimeChart::PaintLines(std::span<const uint8_t> LineAr, uint8_t ALineTickness,
                            TPenStyle ALineStyle) {
    TCanvas& c = *fCanvas;
    c.Pen.Style = ALineStyle;
    c.Pen.Width = ALineTickness;
    for (const uint8_t p : LineAr) {
        const int32_t x = fRect.Left + PercentX(p);
        c.MoveTo(x, fRect.Top);
        c.LineTo(x, fRect.Bottom);
    }
}

void TTimeChart::FillBetweenLines(int Line1, int Line2, int H, TColor C) {
    const int32_t x1 = PercentX(Line1);
    const int32_t x2 = PercentX(Line2);
    const int32_t h = PercentY(H);
    const int32_t left = fRect.Left + x1;
    const int32_t top = fRect.Bottom - fDeltaWidth - h;
    TBrushColorKeeper keep(*fCanvas);
    fCanvas->Brush.Color = C;
    fCanvas->FillRect({left, top, left + (x2 - x1), top + (h - 1)});
}

void TTimeChart::TextBetweenLines(int Line1, int Line2, int H, const QString& Str, TColor C) {
    TCanvas& c = *fCanvas;
    // Measured from the bottom edge itself, not from the axis as the bars are.
    const TPoint A{fRect.Left + PercentX(Line1), fRect.Bottom - PercentY(H)};
    const TPoint Bp{fRect.Left + PercentX(Line2), A.Y};

    const TColor penColor = c.Pen.Color;
    const TColor fontColor = c.Font.Color;
    c.Pen.Width = 1;
    c.Pen.Color = C;
    c.Pen.Style = psSolid;
    PaintArrow(A.X, A.Y, true, fDeltaWidth);
    c.MoveTo(A.X, A.Y);
    c.LineTo(Bp.X, Bp.Y);
    PaintArrow(Bp.X, Bp.Y, false, fDeltaWidth);

    c.Font.Color = C;
    const int32_t x = A.X + (Bp.X - A.X - c.TextWidth(Str)) / 2;
    const int32_t y = A.Y - RoundHalfEven(1.5 * double(c.TextHeight(Str)));
    c.TextOut(x, y, Str);

    c.Pen.Color = penColor;
    c.Font.Color = fontColor;
}

void TTimeChart::PaintArrow(int X, int Y, bool Left, int Size) {
    TCanvas& c = *fCanvas;
    const int32_t s = RoundHalfEven(double(Size) * 0.4);
    const int32_t barbX = Left ? X + Size : X - Size;
    c.MoveTo(X, Y - 1);
    c.LineTo(barbX, Y - s);
    c.MoveTo(X, Y - 1);
    c.LineTo(barbX, Y + s);
}

void TTimeChart::ShowRectWithArrow(int Line1, int Line2, int AHeight, int TextPos, TColor FillColor,
                                   TColor ArrowColor, const QString& ArrowText, bool ShowBoundLines,
                                   uint8_t ALineTickness, TPenStyle ALineStyle) {
    FillBetweenLines(Line1, Line2, AHeight, FillColor);
    if (ShowBoundLines) {
        // The line list holds bytes, as the positions of a chart never pass 100.
        const uint8_t lines[] = {static_cast<uint8_t>(Line1 & 0xFF),
                                 static_cast<uint8_t>(Line2 & 0xFF)};
        PaintLines(lines, ALineTickness, ALineStyle);
    }
    if (ArrowColor != clNone)
        TextBetweenLines(Line1, Line2, TextPos, ArrowText, ArrowColor);
}

} // namespace vde
